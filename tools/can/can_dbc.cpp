#include "can_dbc.h"

#include <cerrno>
#include <charconv>
#include <cstring>

#include "can_signals.h"

namespace {

constexpr const char* NODE_DASH = "DASH";
constexpr const char* NODE_ECU = "ECU";

// Shortest text that reads back as the same double, so the file is the same on every
// machine.
struct NUMBER_T {
    char text[32];
};
NUMBER_T _number(double value)
{
    NUMBER_T n = {};
    std::to_chars(n.text, n.text + sizeof(n.text) - 1, value);
    return n;
}

}  // namespace

// The field's range: raw, exact for a field that is not scaled (a double cannot hold the
// top of a 64-bit field), otherwise scaled as the dash scales it.
static void _range(const CAN_SIGNAL_T& s, char* low, char* high, size_t size)
{
    const uint64_t top = s.isSigned ? (1ull << (s.width - 1)) - 1 : CANFieldMask(s);
    const int64_t bottom = s.isSigned ? -(int64_t)(1ull << (s.width - 1)) : 0;
    if (s.divisor == 1 && s.offset == 0) {
        snprintf(low, size, "%lld", (long long)bottom);
        snprintf(high, size, "%llu", (unsigned long long)top);
        return;
    }
    snprintf(low, size, "%s", _number((double)bottom / s.divisor + s.offset).text);
    snprintf(high, size, "%s", _number((double)top / s.divisor + s.offset).text);
}

static void _signal(FILE* out, const CAN_FRAME_T& frame, const CAN_SIGNAL_T& s)
{
    char low[32], high[32];
    _range(s, low, high, sizeof(low));
    // The start bit in the DBC numbering is byte * 8 + bit in both orders: the field's
    // most significant bit for big-endian (@0), its least significant for little-endian (@1).
    fprintf(out, " SG_ %s : %d|%d@%c%c (%s,%s) [%s|%s] \"%s\" %s\n", s.target.name, s.byte * 8 + s.bit, s.width,
            frame.order == CAN_BIG_ENDIAN ? '0' : '1', s.isSigned ? '-' : '+', _number(1.0 / s.divisor).text,
            _number(s.offset).text, low, high, s.unit, frame.dir == CAN_RX ? NODE_DASH : NODE_ECU);
}

void can_dbc_write(FILE* out)
{
    fprintf(out, "VERSION \"\"\n\n\nNS_ :\n\tCM_\n\nBS_:\n\nBU_: %s %s\n", NODE_DASH, NODE_ECU);
    for (size_t f = 0; f < CAN_FRAME_COUNT; f++) {
        const CAN_FRAME_T& frame = CAN_FRAMES[f];
        const bool rx = frame.dir == CAN_RX;
        fprintf(out, "\nBO_ %u %s_0x%03X: 8 %s\n", frame.id, rx ? NODE_ECU : NODE_DASH, frame.id,
                rx ? NODE_ECU : NODE_DASH);
        const CAN_ROWS_T rows = CAN_FRAME_ROWS[f];
        for (size_t i = rows.first; i < rows.first + rows.count; i++) _signal(out, frame, CAN_SIGNALS[i]);
    }
    fprintf(out, "\n\nCM_ BU_ %s \"The dash\";\n", NODE_DASH);
    fprintf(out, "CM_ BU_ %s \"The engine controller\";\n", NODE_ECU);
    for (const CAN_FRAME_T& frame : CAN_FRAMES) {
        if (frame.port == CAN_PORT1) continue;
        fprintf(out, "CM_ BO_ %u \"On CAN port %d%s\";\n", frame.id, frame.port + 1,
                frame.gate == CAN_GATE_TPS_ABOVE_70 ? ", taken only while the throttle is above 70 %" : "");
    }
    for (const CAN_SIGNAL_T& s : CAN_SIGNALS) {
        if (s.target.kind != CAN_KIND_TEXT) continue;
        fprintf(out, "CM_ SG_ %u %s \"ASCII text, one character a byte in wire order\";\n", s.frame, s.target.name);
    }
}

int can_dbc(int argc, char** argv)
{
    if (argc > 1) {
        fprintf(stderr, "usage: motordash-can dbc [FILE]\n");
        return 2;
    }
    if (argc == 0) {
        can_dbc_write(stdout);
        return 0;
    }
    FILE* out = fopen(argv[0], "w");
    if (!out) {
        fprintf(stderr, "motordash-can dbc: cannot write %s: %s\n", argv[0], strerror(errno));
        return 1;
    }
    can_dbc_write(out);
    const bool ok = ferror(out) == 0;
    if (fclose(out) != 0 || !ok) {
        fprintf(stderr, "motordash-can dbc: cannot write %s: %s\n", argv[0], strerror(errno));
        return 1;
    }
    return 0;
}
