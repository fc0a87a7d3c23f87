#include "xcp_master.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <linux/can.h>
#include <linux/can/raw.h>
#include <net/if.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "SeednKey.h"
#include "can_bus.h"
#include "tool_clock.h"
#include "xcp_daq.h"
#include "xcp_types.h"

namespace {

constexpr uint8_t UPLOAD_MAX = 255;  // count byte of one UPLOAD
constexpr uint8_t GET_ID_ASAM_MC2 = 1;  // sets the MTA to this slave's address 0
constexpr uint8_t DOWNLOAD_MAX_COUNT = 255;  // count byte of one DOWNLOAD
constexpr uint8_t CTO_DATA = 6;              // bytes of seed, key or download in one frame
constexpr uint8_t COMM_MODE_MASTER_BLOCK = 0x01;

struct ERROR_NAME_T {
    uint8_t code;
    const char* name;
};
constexpr ERROR_NAME_T m_errorNames[] = {
    {XCP_ERR_CMD_SYNCH, "ERR_CMD_SYNCH"},
    {XCP_ERR_CMD_BUSY, "ERR_CMD_BUSY"},
    {XCP_ERR_DAQ_ACTIVE, "ERR_DAQ_ACTIVE"},
    {XCP_ERR_PGM_ACTIVE, "ERR_PGM_ACTIVE"},
    {XCP_ERR_CMD_UNKNOWN, "ERR_CMD_UNKNOWN"},
    {XCP_ERR_CMD_SYNTAX, "ERR_CMD_SYNTAX"},
    {XCP_ERR_OUT_OF_RANGE, "ERR_OUT_OF_RANGE"},
    {XCP_ERR_WRITE_PROTECTED, "ERR_WRITE_PROTECTED"},
    {XCP_ERR_ACCESS_DENIED, "ERR_ACCESS_DENIED"},
    {XCP_ERR_ACCESS_LOCKED, "ERR_ACCESS_LOCKED"},
    {XCP_ERR_PAGE_NOT_VALID, "ERR_PAGE_NOT_VALID"},
    {XCP_ERR_MODE_NOT_VALID, "ERR_MODE_NOT_VALID"},
    {XCP_ERR_SEGMENT_NOT_VALID, "ERR_SEGMENT_NOT_VALID"},
    {XCP_ERR_SEQUENCE, "ERR_SEQUENCE"},
    {XCP_ERR_DAQ_CONFIG, "ERR_DAQ_CONFIG"},
    {XCP_ERR_MEMORY_OVERFLOW, "ERR_MEMORY_OVERFLOW"},
    {XCP_ERR_GENERIC, "ERR_GENERIC"},
    {XCP_ERR_VERIFY, "ERR_VERIFY"},
};

int _openSocketCan(const char* iface, std::string* error)
{
    const int fd = socket(PF_CAN, SOCK_RAW | SOCK_CLOEXEC, CAN_RAW);
    if (fd < 0) {
        *error = std::string("cannot open a CAN socket: ") + strerror(errno);
        return -1;
    }
    struct sockaddr_can addr = {};
    addr.can_family = AF_CAN;
    addr.can_ifindex = (int)if_nametoindex(iface);
    if (addr.can_ifindex == 0) {
        *error = std::string("no CAN interface '") + iface + "'";
        close(fd);
        return -1;
    }
    if (bind(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0) {
        *error = std::string("cannot bind to ") + iface + ": " + strerror(errno);
        close(fd);
        return -1;
    }
    return fd;
}

XCP_REPLY_T _reply(XCP_MASTER_STATUS_T status, std::vector<uint8_t> packet = {})
{
    XCP_REPLY_T r = {status, 0, std::move(packet)};
    if (status == XCP_MASTER_ERROR && r.packet.size() >= 2) r.error = r.packet[1];
    return r;
}

}  // namespace

bool XcpMasterOpen(XCP_MASTER_T* m, const char* root, const char* iface, std::string* error)
{
    m->fd = root ? can_bus_connect(root, "can0", error) : _openSocketCan(iface, error);
    return m->fd >= 0;
}

void XcpMasterClose(XCP_MASTER_T* m)
{
    if (m->fd >= 0) close(m->fd);
    m->fd = -1;
}

bool XcpMasterSendFrame(XCP_MASTER_T* m, uint32_t id, const uint8_t* bytes, uint8_t length)
{
    struct can_frame frame = {};
    frame.can_id = id > CAN_SFF_MASK ? (id & CAN_EFF_MASK) | CAN_EFF_FLAG : id;
    frame.can_dlc = length > CAN_MAX_DLEN ? CAN_MAX_DLEN : length;
    if (frame.can_dlc > 0) memcpy(frame.data, bytes, frame.can_dlc);
    return send(m->fd, &frame, sizeof(frame), MSG_NOSIGNAL) == (ssize_t)sizeof(frame);
}

bool XcpMasterReceiveFrame(XCP_MASTER_T* m, uint32_t id, std::vector<uint8_t>* data, int timeoutMs)
{
    const uint64_t end = tool_monotonic_ms() + (uint64_t)(timeoutMs > 0 ? timeoutMs : 0);
    for (;;) {
        const uint64_t now = tool_monotonic_ms();
        if (now >= end) return false;
        struct pollfd p = {m->fd, POLLIN, 0};
        if (poll(&p, 1, (int)(end - now)) <= 0) continue;
        struct can_frame frame;
        const ssize_t got = recv(m->fd, &frame, sizeof(frame), 0);
        if (got <= 0) return false;  // the bus has gone
        if (got != (ssize_t)sizeof(frame)) continue;
        if (frame.can_id & (CAN_EFF_FLAG | CAN_RTR_FLAG | CAN_ERR_FLAG)) continue;
        if ((frame.can_id & CAN_SFF_MASK) != id) continue;
        const uint8_t n = frame.can_dlc > CAN_MAX_DLEN ? CAN_MAX_DLEN : frame.can_dlc;
        data->assign(frame.data, frame.data + n);
        return true;
    }
}

XCP_REPLY_T XcpMasterResponse(XCP_MASTER_T* m)
{
    std::vector<uint8_t> packet;
    for (;;) {
        if (!XcpMasterReceiveFrame(m, m->respId, &packet, m->timeoutMs)) return _reply(XCP_MASTER_TIMEOUT);
        if (packet.empty()) continue;
        if (packet[0] == XCP_PID_RESPONSE) return _reply(XCP_MASTER_OK, packet);
        if (packet[0] == XCP_PID_ERROR) return _reply(XCP_MASTER_ERROR, packet);
        // An event, a service request or DAQ data: not the answer. A pending command
        // goes on waiting afresh.
    }
}

XCP_REPLY_T XcpMasterCommand(XCP_MASTER_T* m, const std::vector<uint8_t>& command)
{
    if (!XcpMasterSendFrame(m, m->cmdId, command.data(), (uint8_t)command.size())) return _reply(XCP_MASTER_BUS);
    return XcpMasterResponse(m);
}

XCP_REPLY_T XcpMasterConnect(XCP_MASTER_T* m)
{
    return XcpMasterCommand(m, {XCP_CMD_CONNECT, 0});
}

XCP_REPLY_T XcpMasterDisconnect(XCP_MASTER_T* m)
{
    return XcpMasterCommand(m, {XCP_CMD_DISCONNECT});
}

XCP_REPLY_T XcpMasterUpload(XCP_MASTER_T* m, uint32_t length, std::vector<uint8_t>* out)
{
    out->clear();
    XCP_REPLY_T r = _reply(XCP_MASTER_OK);
    while (length > 0) {
        const uint8_t count = length < UPLOAD_MAX ? (uint8_t)length : UPLOAD_MAX;
        r = XcpMasterCommand(m, {XCP_CMD_UPLOAD, count});
        // One frame for each seven bytes, the first answering the command.
        for (uint32_t left = count;;) {
            if (r.status != XCP_MASTER_OK) return r;
            const uint32_t n = r.packet.size() - 1 < left ? (uint32_t)r.packet.size() - 1 : left;
            out->insert(out->end(), r.packet.begin() + 1, r.packet.begin() + 1 + n);
            if ((left -= n) == 0) break;
            r = XcpMasterResponse(m);
        }
        length -= count;
    }
    return r;
}

XCP_REPLY_T XcpMasterRead(XCP_MASTER_T* m, uint32_t addr, uint32_t length, std::vector<uint8_t>* out)
{
    out->clear();
    const std::vector<uint8_t> setMta = {XCP_CMD_SET_MTA,       0, 0, 0, (uint8_t)addr, (uint8_t)(addr >> 8),
                                         (uint8_t)(addr >> 16), (uint8_t)(addr >> 24)};
    const std::vector<uint8_t> getId = {XCP_CMD_GET_ID, GET_ID_ASAM_MC2};
    const XCP_REPLY_T r = XcpMasterCommand(m, addr == 0 ? getId : setMta);
    if (r.status != XCP_MASTER_OK) return r;
    return XcpMasterUpload(m, length, out);
}

XCP_REPLY_T XcpMasterCommModeInfo(XCP_MASTER_T* m)
{
    XCP_REPLY_T r = XcpMasterCommand(m, {XCP_CMD_GET_COMM_MODE_INFO});
    if (r.status == XCP_MASTER_OK && r.packet.size() >= 6) {
        m->blockMode = r.packet[2] & COMM_MODE_MASTER_BLOCK;
        m->minStUs = r.packet[5] * 100;  // in units of 100 us
    }
    return r;
}

XCP_REPLY_T XcpMasterUnlock(XCP_MASTER_T* m, uint8_t resource, uint32_t secret)
{
    // The seed, in as many frames as it takes.
    std::vector<uint8_t> seed;
    uint8_t mode = 0;
    for (;;) {
        const XCP_REPLY_T r = XcpMasterCommand(m, {XCP_CMD_GET_SEED, mode, resource});
        if (r.status != XCP_MASTER_OK || r.packet.size() < 2) return r;
        const uint32_t remain = r.packet[1];
        if (mode == 0 && remain == 0) return r;  // not locked
        const uint32_t now = r.packet.size() - 2 < remain ? (uint32_t)r.packet.size() - 2 : remain;
        seed.insert(seed.end(), r.packet.begin() + 2, r.packet.begin() + 2 + now);
        if (now == remain) break;
        mode = 1;
    }
    const uint32_t hash = XcpKeyHash(secret, seed.data(), (uint32_t)seed.size(), resource);
    const uint8_t key[4] = {(uint8_t)(hash >> 24), (uint8_t)(hash >> 16), (uint8_t)(hash >> 8), (uint8_t)hash};
    return XcpMasterCommand(m, {XCP_CMD_UNLOCK, sizeof(key), key[0], key[1], key[2], key[3]});
}

XCP_REPLY_T XcpMasterWrite(XCP_MASTER_T* m, uint32_t addr, const std::vector<uint8_t>& bytes)
{
    const std::vector<uint8_t> setMta = {XCP_CMD_SET_MTA,       0, 0, 0, (uint8_t)addr, (uint8_t)(addr >> 8),
                                         (uint8_t)(addr >> 16), (uint8_t)(addr >> 24)};
    XCP_REPLY_T r = XcpMasterCommand(m, setMta);
    const uint32_t blockMax = m->blockMode ? DOWNLOAD_MAX_COUNT : CTO_DATA;
    for (size_t at = 0; at < bytes.size() && r.status == XCP_MASTER_OK;) {
        const size_t left = bytes.size() - at;
        uint8_t count = (uint8_t)(left < blockMax ? left : blockMax);
        // A block: its frames go without answers, minStUs apart, and the last is answered.
        for (uint8_t pid = XCP_CMD_DOWNLOAD;; pid = XCP_CMD_DOWNLOAD_NEXT) {
            const uint8_t now = count < CTO_DATA ? count : CTO_DATA;
            std::vector<uint8_t> frame = {pid, count};
            frame.insert(frame.end(), bytes.begin() + (long)at, bytes.begin() + (long)(at + now));
            at += now;
            count -= now;
            if (count == 0) {
                r = XcpMasterCommand(m, frame);
                break;
            }
            if (!XcpMasterSendFrame(m, m->cmdId, frame.data(), (uint8_t)frame.size())) return _reply(XCP_MASTER_BUS);
            if (m->minStUs > 0) usleep((useconds_t)m->minStUs);
        }
    }
    return r;
}

bool XcpMasterInteger(const char* text, long long* value)
{
    const bool negative = text[0] == '-';
    const char* digits = negative ? text + 1 : text;
    const bool hex = digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    if (hex) digits += 2;
    if (!(hex ? isxdigit((unsigned char)digits[0]) : isdigit((unsigned char)digits[0]))) return false;
    char* end = nullptr;
    errno = 0;
    const unsigned long long v = strtoull(digits, &end, hex ? 16 : 10);
    if (errno || *end || v > 0xFFFFFFFFull) return false;
    *value = negative ? -(long long)v : (long long)v;
    return true;
}

bool XcpMasterSecrets(const char* text, uint32_t secrets[4])
{
    const std::string all = text;
    size_t at = 0;
    for (int i = 0; i < 4; i++) {
        const size_t comma = i < 3 ? all.find(',', at) : all.size();
        long long v;
        if (comma == std::string::npos || !XcpMasterInteger(all.substr(at, comma - at).c_str(), &v) || v < 0)
            return false;
        secrets[i] = (uint32_t)v;
        at = comma + 1;
    }
    return true;
}

std::string XcpErrorName(uint8_t code)
{
    for (const ERROR_NAME_T& e : m_errorNames)
        if (e.code == code) return e.name;
    char text[16];
    snprintf(text, sizeof(text), "ERR_0x%02X", code);
    return text;
}

std::string XcpMasterDescribe(const XCP_MASTER_T& m, const XCP_REPLY_T& reply)
{
    char text[160];
    switch (reply.status) {
    case XCP_MASTER_OK: return "positive response";
    case XCP_MASTER_ERROR:
        snprintf(text, sizeof(text), "%s (0x%02X)", XcpErrorName(reply.error).c_str(), reply.error);
        return text;
    case XCP_MASTER_TIMEOUT:
        snprintf(text, sizeof(text), "no response on 0x%X within %d ms", m.respId, m.timeoutMs);
        return text;
    default: return std::string("cannot send on the bus: ") + strerror(errno);
    }
}

// ---- Measurement ------------------------------------------------------------------

namespace {

constexpr uint8_t DAQ_TIMESTAMP_BYTES = 4;
constexpr uint8_t DAQ_START = 1, DAQ_SELECT = 2, DAQ_STOP_ALL = 0;

}  // namespace

bool XcpMasterDaqLayout(const std::vector<uint8_t>& sizes, std::vector<XCP_DAQ_PLACE_T>* places, uint8_t* numOdt)
{
    places->clear();
    // Each variable in the first frame with room for it: a frame holds eight bytes and
    // seven entries, the first frame a PID and a time stamp before them.
    uint8_t used[XCP0_NUM_ODT_DYNDAQ], entries[XCP0_NUM_ODT_DYNDAQ] = {};
    for (uint8_t odt = 0; odt < XCP0_NUM_ODT_DYNDAQ; odt++) used[odt] = odt == 0 ? 1 + DAQ_TIMESTAMP_BYTES : 1;
    *numOdt = 0;
    for (uint8_t size : sizes) {
        if (size == 0 || size > 7) return false;
        uint8_t odt = 0;
        while (odt < XCP0_NUM_ODT_DYNDAQ && (used[odt] + size > XCP0_MAXDTO || entries[odt] == XCP0_NUM_ODT_ENTRIES_DYNDAQ)) odt++;
        if (odt == XCP0_NUM_ODT_DYNDAQ) return false;
        places->push_back({odt, used[odt]});
        used[odt] = (uint8_t)(used[odt] + size);
        entries[odt]++;
        if (odt + 1 > *numOdt) *numOdt = (uint8_t)(odt + 1);
    }
    return true;
}

XCP_REPLY_T XcpMasterDaqStart(XCP_MASTER_T* m, const std::vector<uint32_t>& addrs, const std::vector<uint8_t>& sizes,
                              uint8_t event)
{
    std::vector<XCP_DAQ_LIST_T> lists = {{addrs, sizes, event, 0}};
    return XcpMasterDaqStartLists(m, &lists);
}

XCP_REPLY_T XcpMasterDaqStartLists(XCP_MASTER_T* m, std::vector<XCP_DAQ_LIST_T>* lists)
{
    // The entries of each list's ODTs, as WRITE_DAQ commands.
    std::vector<std::vector<std::vector<std::vector<uint8_t>>>> entries;
    for (const XCP_DAQ_LIST_T& list : *lists) {
        std::vector<XCP_DAQ_PLACE_T> places;
        uint8_t numOdt = 0;
        if (list.addrs.size() != list.sizes.size() || !XcpMasterDaqLayout(list.sizes, &places, &numOdt) ||
            numOdt == 0) {
            XCP_REPLY_T r = _reply(XCP_MASTER_ERROR);
            r.error = XCP_ERR_MEMORY_OVERFLOW;
            return r;
        }
        // The time stamp goes out only with a frame of ODT 0, and an ODT without entries
        // sends none: when no variable fits behind the stamp, the first one's first byte
        // holds its place.
        std::vector<std::vector<std::vector<uint8_t>>> odts(numOdt);
        for (size_t i = 0; i < places.size(); i++) {
            const uint32_t a = list.addrs[i];
            odts[places[i].odt].push_back({XCP_CMD_WRITE_DAQ, 0xFF, list.sizes[i], 0, (uint8_t)a, (uint8_t)(a >> 8),
                                           (uint8_t)(a >> 16), (uint8_t)(a >> 24)});
        }
        if (odts[0].empty()) {
            odts[0].push_back(odts[numOdt - 1].back());
            odts[0].back()[2] = 1;
        }
        entries.push_back(std::move(odts));
    }
    // The allocations go in the standard's order: lists, then every list's ODTs, then
    // every ODT's entries.
    const uint8_t numLists = (uint8_t)lists->size();
    std::vector<std::vector<uint8_t>> commands = {{XCP_CMD_FREE_DAQ}, {XCP_CMD_ALLOC_DAQ, 0, numLists, 0}};
    for (uint8_t l = 0; l < numLists; l++)
        commands.push_back({XCP_CMD_ALLOC_ODT, 0, l, 0, (uint8_t)entries[l].size()});
    for (uint8_t l = 0; l < numLists; l++)
        for (uint8_t odt = 0; odt < entries[l].size(); odt++)
            commands.push_back({XCP_CMD_ALLOC_ODT_ENTRY, 0, l, 0, odt, (uint8_t)entries[l][odt].size()});
    for (uint8_t l = 0; l < numLists; l++) {
        for (uint8_t odt = 0; odt < entries[l].size(); odt++) {
            commands.push_back({XCP_CMD_SET_DAQ_PTR, 0, l, 0, odt, 0});
            commands.insert(commands.end(), entries[l][odt].begin(), entries[l][odt].end());
        }
        commands.push_back({XCP_CMD_SET_DAQ_LIST_MODE, XCP_DAQLISTMODE_TIMESTAMP, l, 0, (*lists)[l].event, 0, 1, 0});
    }
    XCP_REPLY_T r = _reply(XCP_MASTER_OK);
    for (const std::vector<uint8_t>& c : commands) {
        r = XcpMasterCommand(m, c);
        if (r.status != XCP_MASTER_OK) return r;
    }
    for (uint8_t l = 0; l < numLists; l++) {
        r = XcpMasterCommand(m, {XCP_CMD_START_STOP_DAQ_LIST, DAQ_SELECT, l, 0});
        if (r.status != XCP_MASTER_OK) return r;
        (*lists)[l].firstPid = r.packet.size() >= 2 ? r.packet[1] : 0;
    }
    return XcpMasterCommand(m, {XCP_CMD_START_STOP_SYNCH, DAQ_START});
}

XCP_REPLY_T XcpMasterDaqStop(XCP_MASTER_T* m)
{
    const XCP_REPLY_T r = XcpMasterCommand(m, {XCP_CMD_START_STOP_SYNCH, DAQ_STOP_ALL});
    if (r.status != XCP_MASTER_OK) return r;
    return XcpMasterCommand(m, {XCP_CMD_FREE_DAQ});
}

bool XcpMasterDaqFrame(XCP_MASTER_T* m, std::vector<uint8_t>* frame, int timeoutMs)
{
    const uint64_t end = tool_monotonic_ms() + (uint64_t)(timeoutMs > 0 ? timeoutMs : 0);
    for (;;) {
        const uint64_t now = tool_monotonic_ms();
        if (now >= end || !XcpMasterReceiveFrame(m, m->respId, frame, (int)(end - now))) return false;
        if (!frame->empty() && frame->at(0) < XCP_PID_SERVICE_REQUEST) return true;
    }
}
