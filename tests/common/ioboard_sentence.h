#pragma once
// A sentence of the I/O board's link as either side sends it.
#include <cstdio>
#include <string>

// body + "*" + the two hex digits of the sum of all before them + carriage return.
inline std::string Sentence(const std::string& body)
{
    unsigned sum = '*';
    for (unsigned char c : body) sum += c;
    char tail[8];
    snprintf(tail, sizeof(tail), "*%02X\r", sum & 0xFF);
    return body + tail;
}
