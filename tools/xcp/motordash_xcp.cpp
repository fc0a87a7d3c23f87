// motordash-xcp: an XCP master for the dash's calibration link. It finds the slave,
// shows its identification and reads its variables by name through the dash's own
// address map.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "xcp_map.h"
#include "xcp_master.h"
#include "xcp_types.h"

namespace {

const char* const USAGE =
    "usage: motordash-xcp [--timeout MS] ROOT|--can IFACE COMMAND [ARGS]\n"
    "  ROOT          a simulated device root: its virtual bus, port can0\n"
    "  --can IFACE   a SocketCAN interface (the dash's bus, as can0)\n"
    "commands:\n"
    "  probe          find the slave: GET_SLAVE_ID on the broadcast identifier\n"
    "  info           connect, status and identification\n"
    "  list           the variables of the address map: address, size, type, record\n"
    "  read NAME...   the values of variables (RPM or RAMVariables.RPM)\n"
    "  dump ADDR LEN  LEN bytes of the address space from ADDR, in hex\n";

constexpr uint8_t XCPCAN_GET_SLAVE_ID = 0xFF;

struct TOOL_T {
    XCP_MASTER_T master;
    const char* root = nullptr;
    const char* iface = nullptr;
};

const char* _kindName(XCP_MAP_KIND_T kind)
{
    switch (kind) {
    case XCP_KIND_BOOL: return "bool";
    case XCP_KIND_U8: return "u8";
    case XCP_KIND_S16: return "s16";
    case XCP_KIND_U16: return "u16";
    case XCP_KIND_U32: return "u32";
    case XCP_KIND_F32: return "f32";
    default: return "text";
    }
}

std::string _typeName(const XCP_MAP_FIELD_T& f)
{
    std::string name = _kindName(f.kind);
    if (f.elements > 1) name += "[" + std::to_string(f.elements) + "]";
    return name;
}

uint32_t _le(const uint8_t* bytes, uint32_t n)
{
    uint32_t v = 0;
    for (uint32_t i = 0; i < n; i++) v |= (uint32_t)bytes[i] << (8 * i);
    return v;
}

// One element of a field, as the dash holds it (little-endian). Arrays of words are
// gauge words, read best in hex: type in the high byte, index in the low.
std::string _element(XCP_MAP_KIND_T kind, const uint8_t* bytes, bool array)
{
    char text[48];
    switch (kind) {
    case XCP_KIND_S16: snprintf(text, sizeof(text), "%d", (int16_t)_le(bytes, 2)); break;
    case XCP_KIND_U16: snprintf(text, sizeof(text), array ? "0x%04X" : "%u", _le(bytes, 2)); break;
    case XCP_KIND_U32: snprintf(text, sizeof(text), "%u", _le(bytes, 4)); break;
    case XCP_KIND_F32: {
        const uint32_t bits = _le(bytes, 4);
        float value;
        memcpy(&value, &bits, sizeof(value));
        snprintf(text, sizeof(text), "%g", (double)value);
        break;
    }
    default: snprintf(text, sizeof(text), "%u", bytes[0]); break;
    }
    return text;
}

std::string _value(const XCP_MAP_FIELD_T& f, const std::vector<uint8_t>& bytes)
{
    if (f.kind == XCP_KIND_TEXT) {
        std::string text = "\"";
        for (uint8_t c : bytes) {
            if (c >= 0x20 && c < 0x7F && c != '"' && c != '\\') {
                text += (char)c;
            } else {
                char esc[8];
                snprintf(esc, sizeof(esc), "\\x%02X", c);
                text += esc;
            }
        }
        return text + "\"";
    }
    const uint32_t size = XcpMapKindSize(f.kind);
    std::string text;
    for (uint32_t i = 0; i + size <= bytes.size(); i += size) {
        if (!text.empty()) text += ' ';
        text += _element(f.kind, &bytes[i], f.elements > 1);
    }
    return text;
}

bool _open(TOOL_T* t)
{
    std::string error;
    if (XcpMasterOpen(&t->master, t->root, t->iface, &error)) return true;
    fprintf(stderr, "motordash-xcp: %s\n", error.c_str());
    return false;
}

// Says why a command failed.
void _failed(const TOOL_T& t, const char* what, const XCP_REPLY_T& r)
{
    fprintf(stderr, "motordash-xcp: %s: %s\n", what, XcpMasterDescribe(t.master, r).c_str());
    if (r.status == XCP_MASTER_TIMEOUT)
        fprintf(stderr, "motordash-xcp: is the dash running on %s?\n", t.root ? t.root : t.iface);
}

bool _connect(TOOL_T* t, XCP_REPLY_T* r)
{
    *r = XcpMasterConnect(&t->master);
    if (r->status == XCP_MASTER_OK && r->packet.size() == 8) return true;
    _failed(*t, "CONNECT", *r);
    return false;
}

// The session ends with the command; a failed DISCONNECT changes nothing of the result.
int _end(TOOL_T* t, int code)
{
    XcpMasterDisconnect(&t->master);
    XcpMasterClose(&t->master);
    return code;
}

int _probe(TOOL_T* t, int argc, char**)
{
    if (argc != 0) {
        fputs(USAGE, stderr);
        return 2;
    }
    if (!_open(t)) return 1;
    const uint8_t identify[] = {XCP_CMD_TRANSPORT_LAYER_CMD, XCPCAN_GET_SLAVE_ID, 'X', 'C', 'P', 0};
    if (!XcpMasterSendFrame(&t->master, t->master.broadcastId, identify, sizeof(identify))) {
        fprintf(stderr, "motordash-xcp: cannot send on the bus\n");
        return 1;
    }
    // Every slave on the bus answers; one is expected.
    std::vector<uint8_t> packet;
    uint32_t found = 0;
    while (XcpMasterReceiveFrame(&t->master, t->master.respId, &packet, t->master.timeoutMs)) {
        if (packet.size() != 8 || packet[0] != XCP_PID_RESPONSE || memcmp(&packet[1], "XCP", 3) != 0) continue;
        const uint32_t cmdId = _le(&packet[4], 4);
        printf("slave: commands on 0x%X, responses on 0x%X\n", cmdId & 0x1FFFFFFFu, t->master.respId);
        found++;
    }
    XcpMasterClose(&t->master);
    if (found > 0) return 0;
    fprintf(stderr, "motordash-xcp: no slave answered GET_SLAVE_ID on 0x%X within %d ms\n", t->master.broadcastId,
            t->master.timeoutMs);
    return 1;
}

// Reads a value of the identification: GET_ID sets the MTA, UPLOAD fetches it.
bool _identification(TOOL_T* t, uint8_t type, std::vector<uint8_t>* bytes)
{
    XCP_REPLY_T r = XcpMasterCommand(&t->master, {XCP_CMD_GET_ID, type});
    if (r.status == XCP_MASTER_OK && r.packet.size() == 8) {
        r = XcpMasterUpload(&t->master, _le(&r.packet[4], 4), bytes);
        if (r.status == XCP_MASTER_OK) return true;
        _failed(*t, "UPLOAD", r);
    } else {
        _failed(*t, "GET_ID", r);
    }
    return false;
}

std::string _resources(uint8_t mask)
{
    std::string text;
    const struct {
        uint8_t bit;
        const char* name;
    } names[] = {{XCP_RESOURCE_CAL_PAG, "CAL/PAG"}, {XCP_RESOURCE_DAQ, "DAQ"}, {XCP_RESOURCE_STIM, "STIM"},
                 {XCP_RESOURCE_PGM, "PGM"}};
    for (const auto& n : names) {
        if (!(mask & n.bit)) continue;
        if (!text.empty()) text += ' ';
        text += n.name;
    }
    return text.empty() ? "none" : text;
}

int _info(TOOL_T* t, int argc, char**)
{
    if (argc != 0) {
        fputs(USAGE, stderr);
        return 2;
    }
    if (!_open(t)) return 1;
    XCP_REPLY_T r;
    if (!_connect(t, &r)) return _end(t, 1);
    const std::vector<uint8_t> c = r.packet;
    printf("slave          XCP %u.0 on CAN (transport %u), commands on 0x%X, responses on 0x%X\n", c[6], c[7],
           t->master.cmdId, t->master.respId);
    printf("resources      %s\n", _resources(c[1]).c_str());
    printf("comm mode      %s byte order, max CTO %u, max DTO %u%s\n", (c[2] & 0x01) ? "Motorola" : "Intel", c[3],
           _le(&c[4], 2), (c[2] & 0x40) ? ", slave block mode" : "");

    r = XcpMasterCommand(&t->master, {XCP_CMD_GET_STATUS});
    if (r.status != XCP_MASTER_OK || r.packet.size() != 6) {
        _failed(*t, "GET_STATUS", r);
        return _end(t, 1);
    }
    printf("status         session 0x%02X, configuration %u\n", r.packet[1], _le(&r.packet[4], 2));
    printf("locked         %s\n", _resources(r.packet[2]).c_str());

    r = XcpMasterCommand(&t->master, {XCP_CMD_GET_COMM_MODE_INFO});
    if (r.status == XCP_MASTER_OK && r.packet.size() >= 8)
        printf("block mode     %s, max BS %u, min ST %u, driver %u.%u\n",
               (r.packet[2] & 0x01) ? "master block mode" : "no master block mode", r.packet[4], r.packet[5],
               r.packet[7] >> 4, r.packet[7] & 0x0F);

    std::vector<uint8_t> bytes;
    if (!_identification(t, 0, &bytes)) return _end(t, 1);
    printf("identifier     %s\n", std::string(bytes.begin(), bytes.end()).c_str());
    const struct {
        uint8_t type;
        const char* label;
    } values[] = {{128, "id table rev"}, {129, "hardware type"}, {130, "ECU address"}};
    for (const auto& v : values) {
        if (!_identification(t, v.type, &bytes)) return _end(t, 1);
        if (bytes.empty()) continue;
        printf("%-14s %u\n", v.label, _le(bytes.data(), (uint32_t)bytes.size()));
    }
    return _end(t, 0);
}

int _list(TOOL_T*, int argc, char**)
{
    if (argc != 0) {
        fputs(USAGE, stderr);
        return 2;
    }
    printf("%-7s %-5s %-9s %-22s %s\n", "ADDRESS", "SIZE", "TYPE", "RECORD", "NAME");
    for (const XCP_MAP_FIELD_T& f : XcpMapFields)
        printf("%-7u %-5u %-9s %-22s %s\n", f.addr, f.size, _typeName(f).c_str(), XcpMapRecordNames[f.record], f.name);
    return 0;
}

int _read(TOOL_T* t, int argc, char** argv)
{
    if (argc == 0) {
        fputs(USAGE, stderr);
        return 2;
    }
    std::vector<const XCP_MAP_FIELD_T*> fields;
    for (int i = 0; i < argc; i++) {
        const XCP_MAP_FIELD_T* f = XcpMapFindField(argv[i]);
        if (!f) {
            fprintf(stderr, "motordash-xcp: no variable '%s' in the address map (see: motordash-xcp %s list)\n",
                    argv[i], t->root ? t->root : "--can IFACE");
            return 2;
        }
        fields.push_back(f);
    }
    if (!_open(t)) return 1;
    XCP_REPLY_T r;
    if (!_connect(t, &r)) return _end(t, 1);
    for (const XCP_MAP_FIELD_T* f : fields) {
        std::vector<uint8_t> bytes;
        r = XcpMasterRead(&t->master, f->addr, f->size, &bytes);
        if (r.status != XCP_MASTER_OK) {
            _failed(*t, (std::string("reading ") + f->name).c_str(), r);
            return _end(t, 1);
        }
        printf("%s = %s\n", f->name, _value(*f, bytes).c_str());
    }
    return _end(t, 0);
}

bool _number(const char* text, uint32_t* value)
{
    char* end = nullptr;
    errno = 0;
    const unsigned long v = strtoul(text, &end, 0);
    if (errno || !end || *end || end == text || v > 0xFFFFFFFFul) return false;
    *value = (uint32_t)v;
    return true;
}

int _dump(TOOL_T* t, int argc, char** argv)
{
    uint32_t addr, length;
    if (argc != 2 || !_number(argv[0], &addr) || !_number(argv[1], &length)) {
        fputs(USAGE, stderr);
        return 2;
    }
    if (!_open(t)) return 1;
    XCP_REPLY_T r;
    if (!_connect(t, &r)) return _end(t, 1);
    std::vector<uint8_t> bytes;
    r = XcpMasterRead(&t->master, addr, length, &bytes);
    if (r.status != XCP_MASTER_OK) {
        char what[64];
        snprintf(what, sizeof(what), "reading %u bytes at %u", length, addr);
        _failed(*t, what, r);
        return _end(t, 1);
    }
    for (size_t row = 0; row < bytes.size(); row += 16) {
        printf("%6zu ", addr + row);
        std::string ascii;
        for (size_t i = row; i < row + 16; i++) {
            if (i < bytes.size()) {
                printf(" %02X", bytes[i]);
                ascii += bytes[i] >= 0x20 && bytes[i] < 0x7F ? (char)bytes[i] : '.';
            } else {
                printf("   ");
            }
        }
        printf("  %s\n", ascii.c_str());
    }
    return _end(t, 0);
}

struct COMMAND_T {
    const char* name;
    int (*run)(TOOL_T* t, int argc, char** argv);
};
constexpr COMMAND_T m_commands[] = {
    {"probe", _probe}, {"info", _info}, {"list", _list}, {"read", _read}, {"dump", _dump},
};

}  // namespace

int main(int argc, char** argv)
{
    TOOL_T tool;
    int i = 1;
    if (i < argc && (!strcmp(argv[i], "--help") || !strcmp(argv[i], "-h"))) {
        fputs(USAGE, stdout);
        return 0;
    }
    if (i + 1 < argc && !strcmp(argv[i], "--timeout")) {
        uint32_t ms;
        if (!_number(argv[i + 1], &ms) || ms == 0 || ms > 600000) {
            fprintf(stderr, "motordash-xcp: bad time-out '%s' (milliseconds)\n", argv[i + 1]);
            return 2;
        }
        tool.master.timeoutMs = (int)ms;
        i += 2;
    }
    if (i + 1 < argc && !strcmp(argv[i], "--can")) {
        tool.iface = argv[i + 1];
        i += 2;
    } else if (i < argc) {
        tool.root = argv[i++];
    }
    if (i >= argc) {
        fputs(USAGE, stderr);
        return 2;
    }
    for (const COMMAND_T& c : m_commands)
        if (!strcmp(argv[i], c.name)) return c.run(&tool, argc - i - 1, argv + i + 1);
    fprintf(stderr, "motordash-xcp: unknown command '%s'\n", argv[i]);
    fputs(USAGE, stderr);
    return 2;
}
