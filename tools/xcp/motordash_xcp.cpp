// motordash-xcp: an XCP master for the dash's calibration link. It finds the slave,
// shows its identification, reads its variables by name through the dash's own address
// map, and with the resources' secrets unlocks them and writes variables and settings.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <csignal>
#include <cstring>
#include <string>
#include <strings.h>
#include <vector>

#include "xcp_a2l.h"
#include "xcp_map.h"
#include "xcp_master.h"
#include "tool_clock.h"
#include "xcp_types.h"

namespace {

const char* const USAGE =
    "usage: motordash-xcp [--timeout MS] [--secrets CAL,DAQ,STIM,PGM] ROOT|--can IFACE COMMAND [ARGS]\n"
    "       motordash-xcp a2l FILE   the dash's description file for calibration tools\n"
    "  ROOT          a simulated device root: its virtual bus, port can0\n"
    "  --can IFACE   a SocketCAN interface (the dash's bus, as can0)\n"
    "  --secrets     the dash's four resource secrets, decimal or 0x hex; without it\n"
    "                $XCP_SECRETS. Needed to unlock, and so to write\n"
    "commands:\n"
    "  probe            find the slave: GET_SLAVE_ID on the broadcast identifier\n"
    "  info             connect, status and identification\n"
    "  list             the variables of the address map: address, size, type, record\n"
    "  read NAME...     the values of variables (RPM or RAMVariables.RPM)\n"
    "  dump ADDR LEN    LEN bytes of the address space from ADDR, in hex\n"
    "  unlock RES...    unlock resources (CAL, DAQ, STIM, PGM) to check the secrets\n"
    "  write NAME VALUE one value into a variable; NAME[I] for an element of an array\n"
    "  get [NAME...]    settings, each as a line that set takes; all without NAME\n"
    "  set NAME VALUE.. a whole setting, every element\n"
    "  daq NAME... [--event N] [--seconds S]\n"
    "                   measure variables as the dash samples them: CSV on stdout, the\n"
    "                   dash's time stamp in ms then a column each; event 0 or 1 every\n"
    "                   10 ms, 2 (the default) every 100 ms; until S seconds or Ctrl-C\n";

struct TOOL_T {
    XCP_MASTER_T master;
    const char* root = nullptr;
    const char* iface = nullptr;
    const char* secrets = nullptr;  // "CAL,DAQ,STIM,PGM"
    bool connected = false;         // a session to end with DISCONNECT
};

// The resources by the names a user gives them, in the order of the secrets.
struct RESOURCE_NAME_T {
    uint8_t bit;
    const char* name;
};
constexpr RESOURCE_NAME_T m_resources[] = {
    {XCP_RESOURCE_CAL_PAG, "CAL/PAG"},
    {XCP_RESOURCE_DAQ, "DAQ"},
    {XCP_RESOURCE_STIM, "STIM"},
    {XCP_RESOURCE_PGM, "PGM"},
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

// Opens the link and connects; false with a message on either.
bool _connect(TOOL_T* t, XCP_REPLY_T* r)
{
    if (!_open(t)) return false;
    *r = XcpMasterConnect(&t->master);
    t->connected = r->status == XCP_MASTER_OK && r->packet.size() == 8;
    if (t->connected) return true;
    _failed(*t, "CONNECT", *r);
    return false;
}

// The session ends with the command; a failed DISCONNECT changes nothing of the result.
int _end(TOOL_T* t, int code)
{
    if (t->connected) XcpMasterDisconnect(&t->master);
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
    const uint8_t identify[] = {XCP_CMD_TRANSPORT_LAYER_CMD, XCPCAN_CMD_GET_SLAVE_ID, 'X', 'C', 'P', 0};
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
    for (const RESOURCE_NAME_T& n : m_resources) {
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

// The variable of a name, or a message why there is none.
const XCP_MAP_FIELD_T* _field(const TOOL_T& t, const char* name)
{
    const XCP_MAP_FIELD_T* f = XcpMapFindField(name);
    if (!f)
        fprintf(stderr, "motordash-xcp: no variable '%s' in the address map (see: motordash-xcp %s list)\n", name,
                t.root ? t.root : "--can IFACE");
    return f;
}

// A setting is a field of the stored settings record.
const XCP_MAP_FIELD_T* _setting(const TOOL_T& t, const char* name)
{
    const XCP_MAP_FIELD_T* f = _field(t, name);
    if (f && f->record != XCP_RECORD_EE) {
        fprintf(stderr, "motordash-xcp: %s is no setting: settings are the fields of %s\n", f->name,
                XcpMapRecordNames[XCP_RECORD_EE]);
        return nullptr;
    }
    return f;
}

// `count` bytes of a variable from `offset` into it, or a message.
bool _readField(TOOL_T* t, const XCP_MAP_FIELD_T& f, uint32_t offset, uint32_t count, std::vector<uint8_t>* bytes)
{
    const XCP_REPLY_T r = XcpMasterRead(&t->master, f.addr + offset, count, bytes);
    if (r.status == XCP_MASTER_OK) return true;
    _failed(*t, (std::string("reading ") + f.name).c_str(), r);
    return false;
}

// One session that reads the fields and prints each as NAME, `between`, its value.
int _readAndPrint(TOOL_T* t, const std::vector<const XCP_MAP_FIELD_T*>& fields, const char* between)
{
    XCP_REPLY_T r;
    if (!_connect(t, &r)) return _end(t, 1);
    for (const XCP_MAP_FIELD_T* f : fields) {
        std::vector<uint8_t> bytes;
        if (!_readField(t, *f, 0, f->size, &bytes)) return _end(t, 1);
        printf("%s%s%s\n", f->name, between, _value(*f, bytes).c_str());
    }
    return _end(t, 0);
}

int _read(TOOL_T* t, int argc, char** argv)
{
    if (argc == 0) {
        fputs(USAGE, stderr);
        return 2;
    }
    std::vector<const XCP_MAP_FIELD_T*> fields;
    for (int i = 0; i < argc; i++) {
        const XCP_MAP_FIELD_T* f = _field(*t, argv[i]);
        if (!f) return 2;
        fields.push_back(f);
    }
    return _readAndPrint(t, fields, " = ");
}

bool _number(const char* text, uint32_t* value)
{
    char* end = nullptr;
    errno = 0;
    // 64 bits whatever the machine's long, so that a negative number wraps past the range
    // rather than to a valid 32-bit value.
    const unsigned long long v = strtoull(text, &end, 0);
    if (errno || !end || *end || end == text || v > 0xFFFFFFFFull) return false;
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

// ---- Unlocking and writing ----------------------------------------------------------

// The four secrets, from --secrets or $XCP_SECRETS.
bool _secrets(const TOOL_T& t, uint32_t secrets[4])
{
    const char* text = t.secrets ? t.secrets : getenv("XCP_SECRETS");
    if (!text || !*text) {
        fprintf(stderr, "motordash-xcp: no secrets: give --secrets CAL,DAQ,STIM,PGM or set XCP_SECRETS\n");
        return false;
    }
    if (XcpMasterSecrets(text, secrets)) return true;
    fprintf(stderr, "motordash-xcp: bad secrets '%s': four numbers CAL,DAQ,STIM,PGM, decimal or 0x hex\n", text);
    return false;
}

// The position of a resource in m_resources by a name a user gives it; -1 for none.
int _resourceIndex(const char* name)
{
    const char* const names[] = {"CAL", "CAL/PAG", "CAL_PAG", "PAG", "DAQ", "STIM", "PGM"};
    const int index[] = {0, 0, 0, 0, 1, 2, 3};
    for (size_t i = 0; i < sizeof(names) / sizeof(names[0]); i++)
        if (!strcasecmp(name, names[i])) return index[i];
    return -1;
}

bool _unlock(TOOL_T* t, int resource, const uint32_t secrets[4])
{
    const RESOURCE_NAME_T& res = m_resources[resource];
    const XCP_REPLY_T r = XcpMasterUnlock(&t->master, res.bit, secrets[resource]);
    if (r.status == XCP_MASTER_OK) return true;
    _failed(*t, (std::string("unlocking ") + res.name).c_str(), r);
    if (r.status == XCP_MASTER_ERROR && r.error == XCP_ERR_ACCESS_LOCKED) {
        fprintf(stderr, "motordash-xcp: the secret of %s is not the dash's\n", res.name);
        t->connected = false;  // a wrong key ends the session
    }
    return false;
}

int _unlockCommand(TOOL_T* t, int argc, char** argv)
{
    if (argc == 0) {
        fputs(USAGE, stderr);
        return 2;
    }
    std::vector<int> which;
    for (int i = 0; i < argc; i++) {
        which.push_back(_resourceIndex(argv[i]));
        if (which.back() < 0) {
            fprintf(stderr, "motordash-xcp: unknown resource '%s' (CAL, DAQ, STIM or PGM)\n", argv[i]);
            return 2;
        }
    }
    uint32_t secrets[4];
    if (!_secrets(*t, secrets)) return 2;
    XCP_REPLY_T r;
    if (!_connect(t, &r)) return _end(t, 1);
    for (int resource : which) {
        if (!_unlock(t, resource, secrets)) return _end(t, 1);
        printf("unlocked       %s\n", m_resources[resource].name);
    }
    r = XcpMasterCommand(&t->master, {XCP_CMD_GET_STATUS});
    if (r.status != XCP_MASTER_OK || r.packet.size() != 6) {
        _failed(*t, "GET_STATUS", r);
        return _end(t, 1);
    }
    printf("locked         %s\n", _resources(r.packet[2]).c_str());
    return _end(t, 0);
}

// The bytes of one element from its text, if the element's type holds the value.
bool _encode(const XCP_MAP_FIELD_T& f, const char* text, std::vector<uint8_t>* out)
{
    uint32_t bits;
    if (f.kind == XCP_KIND_F32) {
        char* end = nullptr;
        errno = 0;
        const float v = strtof(text, &end);
        if (end == text || *end || errno == ERANGE || !std::isfinite(v)) {
            fprintf(stderr, "motordash-xcp: %s: '%s' is no number an f32 holds\n", f.name, text);
            return false;
        }
        memcpy(&bits, &v, sizeof(bits));
    } else {
        long long lo = 0, hi = 0xFFFFFFFFll;
        switch (f.kind) {
        case XCP_KIND_BOOL: hi = 1; break;
        case XCP_KIND_U8: hi = 0xFF; break;
        case XCP_KIND_S16: lo = -32768, hi = 32767; break;
        case XCP_KIND_U16: hi = 0xFFFF; break;
        default: break;
        }
        long long v;
        if (!XcpMasterInteger(text, &v) || v < lo || v > hi) {
            fprintf(stderr, "motordash-xcp: %s: '%s' is outside %s (%lld to %lld)\n", f.name, text,
                    _kindName(f.kind), lo, hi);
            return false;
        }
        bits = (uint32_t)v;
    }
    for (uint32_t i = 0; i < XcpMapKindSize(f.kind); i++) out->push_back((uint8_t)(bits >> (8 * i)));
    return true;
}

// Connected, with CAL/PAG unlocked and the writes' block mode known.
bool _calibrate(TOOL_T* t, const uint32_t secrets[4])
{
    XCP_REPLY_T r;
    if (!_connect(t, &r)) return false;
    XcpMasterCommModeInfo(&t->master);
    return _unlock(t, 0, secrets);
}

// Writes bytes into a variable from `offset` on and reads them back.
bool _writeField(TOOL_T* t, const XCP_MAP_FIELD_T& f, uint32_t offset, const std::vector<uint8_t>& bytes,
                 std::vector<uint8_t>* back)
{
    const XCP_REPLY_T r = XcpMasterWrite(&t->master, f.addr + offset, bytes);
    if (r.status != XCP_MASTER_OK) {
        _failed(*t, (std::string("writing ") + f.name).c_str(), r);
        return false;
    }
    return _readField(t, f, offset, (uint32_t)bytes.size(), back);
}

int _write(TOOL_T* t, int argc, char** argv)
{
    if (argc != 2) {
        fputs(USAGE, stderr);
        return 2;
    }
    // NAME or NAME[I].
    std::string name = argv[0];
    long long index = -1;
    const size_t bracket = name.find('[');
    if (bracket != std::string::npos) {
        const std::string digits = name.substr(bracket + 1, name.size() - bracket - 2);
        if (name.back() != ']' || !XcpMasterInteger(digits.c_str(), &index) || index < 0) {
            fprintf(stderr, "motordash-xcp: '%s': an element is NAME[INDEX]\n", argv[0]);
            return 2;
        }
        name.resize(bracket);
    }
    const XCP_MAP_FIELD_T* f = _field(*t, name.c_str());
    if (!f) return 2;
    if (f->record == XCP_RECORD_CONST) {
        fprintf(stderr, "motordash-xcp: %s is a constant of the build, read only\n", f->name);
        return 2;
    }
    if (index < 0 && f->elements > 1) {
        fprintf(stderr, "motordash-xcp: %s has %u elements: write %s[I] VALUE, or set all of them\n", f->name,
                f->elements, f->name);
        return 2;
    }
    if (index >= f->elements) {
        fprintf(stderr, "motordash-xcp: %s has elements 0 to %u\n", f->name, f->elements - 1u);
        return 2;
    }
    std::vector<uint8_t> bytes, back;
    uint32_t secrets[4];
    if (!_encode(*f, argv[1], &bytes) || !_secrets(*t, secrets)) return 2;
    if (!_calibrate(t, secrets)) return _end(t, 1);
    const uint32_t offset = index > 0 ? (uint32_t)index * XcpMapKindSize(f->kind) : 0;
    if (!_writeField(t, *f, offset, bytes, &back)) return _end(t, 1);
    if (index >= 0) printf("%s[%lld] = %s\n", f->name, index, _value(*f, back).c_str());
    else printf("%s = %s\n", f->name, _value(*f, back).c_str());
    return _end(t, 0);
}

int _get(TOOL_T* t, int argc, char** argv)
{
    std::vector<const XCP_MAP_FIELD_T*> fields;
    for (int i = 0; i < argc; i++) {
        fields.push_back(_setting(*t, argv[i]));
        if (!fields.back()) return 2;
    }
    if (argc == 0)
        for (const XCP_MAP_FIELD_T& f : XcpMapFields)
            if (f.record == XCP_RECORD_EE) fields.push_back(&f);
    return _readAndPrint(t, fields, " ");
}

int _set(TOOL_T* t, int argc, char** argv)
{
    if (argc < 2) {
        fputs(USAGE, stderr);
        return 2;
    }
    const XCP_MAP_FIELD_T* f = _setting(*t, argv[0]);
    if (!f) return 2;
    if (argc - 1 != f->elements) {
        fprintf(stderr, "motordash-xcp: %s takes %u values, not %d\n", f->name, f->elements, argc - 1);
        return 2;
    }
    std::vector<uint8_t> bytes, back;
    for (int i = 1; i < argc; i++)
        if (!_encode(*f, argv[i], &bytes)) return 2;
    uint32_t secrets[4];
    if (!_secrets(*t, secrets)) return 2;
    if (!_calibrate(t, secrets)) return _end(t, 1);
    if (!_writeField(t, *f, 0, bytes, &back)) return _end(t, 1);
    printf("%s %s\n", f->name, _value(*f, back).c_str());
    return _end(t, 0);
}

volatile sig_atomic_t m_stop = 0;

void _onSignal(int)
{
    m_stop = 1;
}

int _daq(TOOL_T* t, int argc, char** argv)
{
    std::vector<const XCP_MAP_FIELD_T*> fields;
    uint32_t event = 2, seconds = 0;
    for (int i = 0; i < argc; i++) {
        const bool option = !strcmp(argv[i], "--event") || !strcmp(argv[i], "--seconds");
        if (option && i + 1 < argc) {
            uint32_t* value = !strcmp(argv[i], "--event") ? &event : &seconds;
            if (!_number(argv[++i], value) || (value == &event && event > 2)) {
                fprintf(stderr, "motordash-xcp: bad %s '%s'\n", argv[i - 1], argv[i]);
                return 2;
            }
            continue;
        }
        const XCP_MAP_FIELD_T* f = _field(*t, argv[i]);
        if (!f) return 2;
        if (f->kind == XCP_KIND_TEXT || f->elements != 1) {
            fprintf(stderr, "motordash-xcp: %s is %s: only single numbers are measured\n", f->name,
                    _typeName(*f).c_str());
            return 2;
        }
        fields.push_back(f);
    }
    std::vector<uint32_t> addrs;
    std::vector<uint8_t> sizes;
    for (const XCP_MAP_FIELD_T* f : fields) addrs.push_back(f->addr), sizes.push_back((uint8_t)f->size);
    std::vector<XCP_DAQ_PLACE_T> places;
    uint8_t numOdt = 0;
    if (fields.empty() || !XcpMasterDaqLayout(sizes, &places, &numOdt)) {
        fprintf(stderr, "motordash-xcp: %s\n",
                fields.empty() ? "no variable to measure" : "too many variables for one list");
        return 2;
    }
    uint32_t secrets[4];
    if (!_secrets(*t, secrets)) return 2;
    XCP_REPLY_T r;
    if (!_connect(t, &r) || !_unlock(t, 1, secrets)) return _end(t, 1);
    r = XcpMasterDaqStart(&t->master, addrs, sizes, (uint8_t)event);
    if (r.status != XCP_MASTER_OK) {
        _failed(*t, "building the list", r);
        XcpMasterDaqStop(&t->master);
        return _end(t, 1);
    }
    signal(SIGINT, _onSignal);
    signal(SIGTERM, _onSignal);
    printf("time_ms");
    for (const XCP_MAP_FIELD_T* f : fields) printf(",%s", f->name);
    printf("\n");
    const uint64_t end = seconds ? tool_monotonic_ms() + 1000ull * seconds : UINT64_MAX;
    // A row is printed once its last frame is in; a set with a frame missing is dropped.
    std::vector<std::vector<uint8_t>> set(numOdt);
    uint8_t expected = 0;
    unsigned long samples = 0;
    int code = 0;
    while (!m_stop && tool_monotonic_ms() < end) {
        std::vector<uint8_t> frame;
        if (!XcpMasterDaqFrame(&t->master, &frame, 200)) continue;
        const uint8_t pid = frame[0];
        if (pid >= numOdt) continue;
        if (pid != expected) {
            expected = 0;
            if (pid != 0) continue;
        }
        set[pid] = frame;
        if (++expected < numOdt) continue;
        expected = 0;
        if (set[0].size() < 5) continue;
        printf("%u", _le(&set[0][1], 4));
        for (size_t i = 0; i < fields.size(); i++) {
            const std::vector<uint8_t>& f = set[places[i].odt];
            if (f.size() < (size_t)places[i].offset + sizes[i]) {
                printf(",");
                continue;
            }
            printf(",%s", _element(fields[i]->kind, &f[places[i].offset], false).c_str());
        }
        printf("\n");
        fflush(stdout);
        if (++samples % 10 == 0) fprintf(stderr, "\rsamples %lu", samples);
    }
    fprintf(stderr, "\rsamples %lu\n", samples);
    r = XcpMasterDaqStop(&t->master);
    if (r.status != XCP_MASTER_OK) {
        _failed(*t, "stopping the lists", r);
        code = 1;
    }
    return _end(t, code);
}

struct COMMAND_T {
    const char* name;
    int (*run)(TOOL_T* t, int argc, char** argv);
};
constexpr COMMAND_T m_commands[] = {
    {"probe", _probe}, {"info", _info},   {"list", _list}, {"read", _read}, {"dump", _dump},
    {"unlock", _unlockCommand}, {"write", _write}, {"get", _get}, {"set", _set}, {"daq", _daq},
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
    if (i < argc && !strcmp(argv[i], "a2l")) {
        if (argc != i + 2) {
            fputs(USAGE, stderr);
            return 2;
        }
        FILE* f = fopen(argv[i + 1], "w");
        const std::string a2l = XcpA2lDescription();
        if (!f || fwrite(a2l.data(), 1, a2l.size(), f) != a2l.size() || fclose(f) != 0) {
            fprintf(stderr, "motordash-xcp: cannot write %s: %s\n", argv[i + 1], strerror(errno));
            return 1;
        }
        return 0;
    }
    for (; i + 1 < argc && argv[i][0] == '-' && strcmp(argv[i], "--can"); i += 2) {
        if (!strcmp(argv[i], "--timeout")) {
            uint32_t ms;
            if (!_number(argv[i + 1], &ms) || ms == 0 || ms > 600000) {
                fprintf(stderr, "motordash-xcp: bad time-out '%s' (milliseconds)\n", argv[i + 1]);
                return 2;
            }
            tool.master.timeoutMs = (int)ms;
        } else if (!strcmp(argv[i], "--secrets")) {
            tool.secrets = argv[i + 1];
        } else {
            fprintf(stderr, "motordash-xcp: unknown option '%s'\n", argv[i]);
            fputs(USAGE, stderr);
            return 2;
        }
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
