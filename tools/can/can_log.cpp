#include "can_log.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static int _hex(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool can_parse_frame(const char* text, struct can_frame* frame)
{
    if (!text || !frame) return false;
    memset(frame, 0, sizeof(*frame));
    const char* hash = strchr(text, '#');
    if (!hash) return false;
    const size_t idLength = (size_t)(hash - text);
    if (idLength != 3 && idLength != 8) return false;
    uint32_t id = 0;
    for (size_t i = 0; i < idLength; i++) {
        const int h = _hex(text[i]);
        if (h < 0) return false;
        id = id << 4 | (uint32_t)h;
    }
    if (idLength == 3) {
        if (id > CAN_SFF_MASK) return false;
        frame->can_id = id;
    } else {
        // Eight digits: an extended id, or an error frame as dumps show them.
        if (id & (CAN_EFF_FLAG | CAN_RTR_FLAG)) return false;
        frame->can_id = (id & CAN_ERR_FLAG) ? id : (id | CAN_EFF_FLAG);
    }
    const char* p = hash + 1;
    if (*p == 'R' || *p == 'r') {
        frame->can_id |= CAN_RTR_FLAG;
        p++;
        if (*p >= '0' && *p <= '8') frame->can_dlc = (uint8_t)(*p++ - '0');
        return *p == '\0' || isspace((unsigned char)*p);
    }
    uint8_t n = 0;
    while (*p && !isspace((unsigned char)*p)) {
        if (*p == '.') {
            p++;
            continue;
        }
        const int hi = _hex(p[0]), lo = hi < 0 ? -1 : _hex(p[1]);
        if (hi < 0 || lo < 0 || n == CAN_MAX_DLEN) return false;
        frame->data[n++] = (uint8_t)(hi << 4 | lo);
        p += 2;
    }
    frame->can_dlc = n;
    return true;
}

std::string can_format_frame(const struct can_frame& frame)
{
    char text[64];
    int n;
    if (frame.can_id & (CAN_EFF_FLAG | CAN_ERR_FLAG)) {
        n = snprintf(text, sizeof(text), "%08X#", (unsigned)(frame.can_id & (CAN_EFF_MASK | CAN_ERR_FLAG)));
    } else {
        n = snprintf(text, sizeof(text), "%03X#", (unsigned)(frame.can_id & CAN_SFF_MASK));
    }
    if (frame.can_id & CAN_RTR_FLAG) {
        snprintf(text + n, sizeof(text) - (size_t)n, "R");
    } else {
        const unsigned length = frame.can_dlc > CAN_MAX_DLEN ? CAN_MAX_DLEN : frame.can_dlc;
        for (unsigned i = 0; i < length; i++) n += snprintf(text + n, sizeof(text) - (size_t)n, "%02X", frame.data[i]);
    }
    return text;
}

bool can_parse_log_line(const char* line, CAN_LOG_LINE_T* out)
{
    if (!line || !out) return false;
    while (isspace((unsigned char)*line)) line++;
    if (*line != '(') return false;
    char* end = nullptr;
    out->time = strtod(line + 1, &end);
    if (!end || *end != ')') return false;
    const char* p = end + 1;
    while (*p == ' ') p++;
    const char* nameEnd = p;
    while (*nameEnd && !isspace((unsigned char)*nameEnd)) nameEnd++;
    if (nameEnd == p) return false;
    out->ifname.assign(p, (size_t)(nameEnd - p));
    while (*nameEnd == ' ') nameEnd++;
    return can_parse_frame(nameEnd, &out->frame);
}

std::string can_format_log_line(double time, const char* ifname, const struct can_frame& frame)
{
    char head[64];
    snprintf(head, sizeof(head), "(%.6f) %s ", time, ifname);
    return head + can_format_frame(frame);
}
