#include "http_server.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr size_t REQUEST_HEAD_LIMIT = 16384;

const char* _reason(int status)
{
    switch (status) {
    case 200: return "OK";
    case 204: return "No Content";
    case 400: return "Bad Request";
    case 404: return "Not Found";
    case 405: return "Method Not Allowed";
    case 409: return "Conflict";
    case 500: return "Internal Server Error";
    case 503: return "Service Unavailable";
    default: return "Status";
    }
}

bool _sendAll(int fd, const char* data, size_t length)
{
    while (length > 0) {
        const ssize_t n = send(fd, data, length, MSG_NOSIGNAL);
        if (n <= 0) return false;
        data += n;
        length -= (size_t)n;
    }
    return true;
}

// The file goes from the page cache to the socket; false when it ends early (it was cut
// short meanwhile) or the peer went away, since the length was promised.
bool _sendFile(int fd, int file, uint64_t length)
{
    off_t offset = 0;
    while ((uint64_t)offset < length) {
        const size_t chunk = length - (uint64_t)offset < (1u << 30) ? (size_t)(length - (uint64_t)offset) : 1u << 30;
        if (sendfile(fd, file, &offset, chunk) <= 0) return false;
    }
    return true;
}

// Reads one request head; false when the peer closed or sent something unusable.
bool _readHead(int fd, std::string* buffer, std::string* head, const std::atomic<bool>* stop)
{
    for (;;) {
        const size_t end = buffer->find("\r\n\r\n");
        if (end != std::string::npos) {
            *head = buffer->substr(0, end);
            buffer->erase(0, end + 4);
            return true;
        }
        if (buffer->size() > REQUEST_HEAD_LIMIT || stop->load()) return false;
        struct pollfd p = {fd, POLLIN, 0};
        if (poll(&p, 1, 500) == 0) continue;
        char chunk[4096];
        const ssize_t n = recv(fd, chunk, sizeof(chunk), 0);
        if (n <= 0) return false;
        buffer->append(chunk, (size_t)n);
    }
}

// The connections still being served. The server waits for them before it returns, so
// that nothing a handler reads is torn down under it at the program's exit.
struct CONNECTIONS_T {
    std::mutex lock;
    std::condition_variable ended;
    int open = 0;
};
CONNECTIONS_T m_connections;

void _serveConnection(int fd, HTTP_HANDLER_T handler, void* ctx, const std::atomic<bool>* stop)
{
    std::string buffer, head;
    while (_readHead(fd, &buffer, &head, stop)) {
        HTTP_REQUEST_T request;
        HTTP_RESPONSE_T response;
        const size_t sp1 = head.find(' '), sp2 = sp1 == std::string::npos ? sp1 : head.find(' ', sp1 + 1);
        if (sp2 == std::string::npos) {
            response.status = 400;
            response.body = "bad request\n";
        } else {
            request.method = head.substr(0, sp1);
            std::string target = head.substr(sp1 + 1, sp2 - sp1 - 1);
            const size_t q = target.find('?');
            if (q != std::string::npos) {
                request.query = target.substr(q + 1);
                target.resize(q);
            }
            request.path = target;
            // Bodies are not used by this API; skip any that is announced.
            const size_t cl = head.find("\r\nContent-Length:");
            if (cl != std::string::npos) {
                const size_t length = strtoul(head.c_str() + cl + 17, nullptr, 10);
                if (length > REQUEST_HEAD_LIMIT) break;
                while (buffer.size() < length) {
                    char chunk[4096];
                    const ssize_t n = recv(fd, chunk, sizeof(chunk), 0);
                    if (n <= 0) break;
                    buffer.append(chunk, (size_t)n);
                }
                buffer.erase(0, length < buffer.size() ? length : buffer.size());
            }
            handler(request, &response, ctx);
        }
        char line[256];
        std::string out;
        const bool file = response.bodyFile >= 0;
        snprintf(line, sizeof(line), "HTTP/1.1 %d %s\r\nContent-Type: %s\r\nContent-Length: %llu\r\n", response.status,
                 _reason(response.status), response.contentType.c_str(),
                 (unsigned long long)(file ? response.bodyFileLength : response.body.size()));
        out = line;
        out += "Cache-Control: no-store\r\nConnection: keep-alive\r\n";
        for (const auto& h : response.headers) out += h.first + ": " + h.second + "\r\n";
        out += "\r\n";
        bool sent = _sendAll(fd, out.data(), out.size());
        if (file) {
            sent = sent && _sendFile(fd, response.bodyFile, response.bodyFileLength);
            close(response.bodyFile);
        } else {
            sent = sent && _sendAll(fd, response.body.data(), response.body.size());
        }
        if (!sent) break;
    }
    close(fd);
    std::lock_guard<std::mutex> guard(m_connections.lock);
    m_connections.open--;
    m_connections.ended.notify_all();
}

}  // namespace

int http_listen(uint16_t port, std::string* error)
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        *error = strerror(errno);
        return -1;
    }
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    struct sockaddr_in addr = {};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0 || listen(fd, 16) != 0) {
        *error = errno == EADDRINUSE ? "port " + std::to_string(port) + " is busy (another simulator?); choose one with --port"
                                     : std::string(strerror(errno));
        close(fd);
        return -1;
    }
    return fd;
}

void http_serve(int listenFd, HTTP_HANDLER_T handler, void* ctx, const std::atomic<bool>* stop)
{
    while (!stop->load()) {
        struct pollfd p = {listenFd, POLLIN, 0};
        if (poll(&p, 1, 250) <= 0) continue;
        const int fd = accept4(listenFd, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) continue;
        {
            std::lock_guard<std::mutex> guard(m_connections.lock);
            m_connections.open++;
        }
        std::thread(_serveConnection, fd, handler, ctx, stop).detach();
    }
    // Each connection sees the stop within half a second of waiting for a request.
    std::unique_lock<std::mutex> guard(m_connections.lock);
    m_connections.ended.wait_for(guard, std::chrono::seconds(5), [] { return m_connections.open == 0; });
}
