#pragma once
// A small HTTP/1.1 server on the loopback interface, for the simulator's page and API.
#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct HTTP_REQUEST_T {
    std::string method;  // "GET", "POST"
    std::string path;    // without the query
    std::string query;   // after '?', if any
};

struct HTTP_RESPONSE_T {
    int status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
    // Or, for a file too large to hold: the first bodyFileLength bytes of this descriptor,
    // which the server closes when they are sent.
    int bodyFile = -1;
    uint64_t bodyFileLength = 0;
    std::vector<std::pair<std::string, std::string>> headers;
};

typedef void (*HTTP_HANDLER_T)(const HTTP_REQUEST_T& request, HTTP_RESPONSE_T* response, void* ctx);

// A listening socket on 127.0.0.1:port, or -1 with the reason in *error.
int http_listen(uint16_t port, std::string* error);
// Serves connections (each on a thread of its own, with keep-alive) until *stop, then
// waits up to 5 s for the open ones to end.
void http_serve(int listenFd, HTTP_HANDLER_T handler, void* ctx, const std::atomic<bool>* stop);
