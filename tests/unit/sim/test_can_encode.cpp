// The encoder of the signal table against the dash's own decoder: every field of every
// frame the dash receives goes out through CANEncodeSignal and comes back through the
// receive table and CANDecodeFrame, so the two sides of the wire cannot drift apart.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "Velnor_Dorvik_V6c.h"
#include "can_rx.h"
#include "can_signals.h"
#include "data.h"

namespace {

int64_t Low(const CAN_SIGNAL_T& s)
{
    return s.isSigned ? -(int64_t(1) << (s.width - 1)) : 0;
}
int64_t High(const CAN_SIGNAL_T& s)
{
    return s.isSigned ? (int64_t(1) << (s.width - 1)) - 1 : (int64_t)((uint64_t(1) << s.width) - 1);
}
double Scaled(const CAN_SIGNAL_T& s, int64_t raw)
{
    return (double)raw / s.divisor + s.offset;
}

// The frame into the dash on its port, then the frame's part of a foreground pass.
void Decode(uint32_t id, const uint8_T* data)
{
    CAN_MSG_T message = {};
    message.id = id;
    message.msg_length = 8;
    memcpy(message.msg_content, data, 8);
    if (CAN_FRAMES[CANFrameIndex(id)].port == CAN_PORT1) rxTable_285279__0022(CAN_PORT1, &message);
    else rxTable_285280__0051(CAN_PORT2, &message);
    CANDecodeFrame(id);
}

template <typename T>
double Load(const uint8_T* at)
{
    T v;
    memcpy(&v, at, sizeof(v));
    return v;
}
// What the decoder left in a field's target: the value of a double, the raw of an integer.
double Target(const CAN_TARGET_T& t)
{
    const uint8_T* at = (t.record == CAN_REC_B ? reinterpret_cast<const uint8_T*>(&B)
                                               : reinterpret_cast<const uint8_T*>(&CANInputs)) + t.offset;
    switch (t.kind) {
    case CAN_KIND_F64:
        return Load<double>(at);
    case CAN_KIND_U16:
        return Load<uint16_T>(at);
    case CAN_KIND_U32:
        return Load<uint32_T>(at);
    default:
        return Load<uint8_T>(at);
    }
}

// A way to pick each field's value: the raw the field must read back, and the value sent.
typedef int64_t (*PICK_T)(const CAN_SIGNAL_T& s, size_t row, double* value);
struct CASE_T {
    const char* what;
    uint8_T filler;  // the bytes before the fields are written
    PICK_T pick;
};
const CASE_T CASES[] = {
    // Ends of the range over zeros and over ones: a field that spills into its
    // neighbour or leaves stale bits shows.
    {"top", 0x00, [](const CAN_SIGNAL_T& s, size_t, double* v) { return *v = Scaled(s, High(s)), High(s); }},
    {"bottom", 0xFF, [](const CAN_SIGNAL_T& s, size_t, double* v) { return *v = Scaled(s, Low(s)), Low(s); }},
    {"alternating", 0xA5,
     [](const CAN_SIGNAL_T& s, size_t i, double* v) {
         const int64_t raw = i % 2 ? High(s) : Low(s);
         return *v = Scaled(s, raw), raw;
     }},
    {"alternating the other way", 0x5A,
     [](const CAN_SIGNAL_T& s, size_t i, double* v) {
         const int64_t raw = i % 2 ? Low(s) : High(s);
         return *v = Scaled(s, raw), raw;
     }},
    // -1 sets every bit of a signed field; top - 1 and bottom + 1 catch a width off by one.
    {"-1 or top - 1", 0x00,
     [](const CAN_SIGNAL_T& s, size_t, double* v) {
         const int64_t raw = s.isSigned ? -1 : High(s) - 1;
         return *v = Scaled(s, raw), raw;
     }},
    {"bottom + 1", 0xFF,
     [](const CAN_SIGNAL_T& s, size_t, double* v) {
         const int64_t raw = s.isSigned ? Low(s) + 1 : 1;
         return *v = Scaled(s, raw), raw;
     }},
    // A value off a step comes back as the nearest step: a truncating encoder, or one that
    // divides where the decoder divides, fails here, most of all on the odd divisors of the
    // port-2 frame and on the axes with an offset.
    {"0.4 of a step off", 0x00,
     [](const CAN_SIGNAL_T& s, size_t i, double* v) {
         const int64_t raw = High(s) > 6 ? High(s) / 3 + (int64_t)(i % 3) : High(s);
         *v = Scaled(s, raw) + (i % 2 ? 0.4 : -0.4) / s.divisor;
         return raw;
     }},
    {"0.6 of a step up", 0x00,
     [](const CAN_SIGNAL_T& s, size_t, double* v) {
         const int64_t raw = s.isSigned ? -3 : std::min<int64_t>(3, High(s));
         *v = Scaled(s, raw) + 0.6 / s.divisor;
         return std::min(raw + 1, High(s));
     }},
    // Outside the field: held at its ends; not a number: 0.
    {"far above", 0x5A,
     [](const CAN_SIGNAL_T& s, size_t, double* v) { return *v = Scaled(s, High(s)) + 1e12, High(s); }},
    {"far below", 0x5A,
     [](const CAN_SIGNAL_T& s, size_t, double* v) { return *v = Scaled(s, Low(s)) - 1e12, Low(s); }},
    {"not a number", 0xFF, [](const CAN_SIGNAL_T&, size_t, double* v) { return *v = NAN, int64_t(0); }},
};

TEST(CanEncode, EveryFieldOfEveryFrameReadsBackThroughTheDash)
{
    const uint8_T tps = RAMVariables.TPS;
    RAMVariables.TPS = 100;  // the port-2 frame counts only under load
    for (const CASE_T& c : CASES) {
        for (size_t f = 0; f < CAN_FRAME_COUNT; f++) {
            if (CAN_FRAMES[f].dir != CAN_RX) continue;
            uint8_T data[8];
            memset(data, c.filler, sizeof(data));
            const CAN_ROWS_T rows = CAN_FRAME_ROWS[f];
            std::vector<int64_t> raws(rows.count);
            auto numeric = [](const CAN_SIGNAL_T& s) {
                return s.target.kind != CAN_KIND_TEXT && s.target.kind != CAN_KIND_NONE;
            };
            for (size_t i = 0; i < rows.count; i++) {
                const CAN_SIGNAL_T& s = CAN_SIGNALS[rows.first + i];
                if (!numeric(s)) continue;
                double value;
                raws[i] = c.pick(s, i, &value);
                CANEncodeSignal(s, value, data);
            }
            Decode(CAN_FRAMES[f].id, data);
            for (size_t i = 0; i < rows.count; i++) {
                const CAN_SIGNAL_T& s = CAN_SIGNALS[rows.first + i];
                if (!numeric(s)) continue;
                const double expected = s.target.kind == CAN_KIND_F64 ? Scaled(s, raws[i]) : (double)raws[i];
                EXPECT_EQ(Target(s.target), expected) << c.what << ": " << s.target.name;
                EXPECT_EQ(CANSignalValue(s, data), Scaled(s, raws[i])) << c.what << ": " << s.target.name;
            }
        }
    }
    RAMVariables.TPS = tps;
}

const CAN_SIGNAL_T& Signal(const char* name)
{
    return CAN_SIGNALS[CANSignalIndex(name)];
}
std::vector<uint8_T> Bytes(const uint8_T* data, size_t n)
{
    return std::vector<uint8_T>(data, data + n);
}

TEST(CanEncode, BytesOnTheWire)
{
    // Pinned by hand, so that a fault shared by encoder and decoder cannot hide: a field
    // across three bytes, a little-endian one on port 2, signed and offset fields.
    uint8_T data[8] = {};
    CANEncodeSignal(Signal("Transmission_Pressure"), 0xABCD, data);
    CANEncodeSignal(Signal("OnIdle"), 5, data);
    CANEncodeSignal(Signal("Stage4_Engaged"), 1, data);
    EXPECT_EQ(Bytes(data, 8), (std::vector<uint8_T>{0, 0, 0, 0, 0, 0x5A, 0xBC, 0xD1}));

    uint8_T port2[8] = {};
    CANEncodeSignal(Signal("O2SensorTemp2"), 0x1234 / Signal("O2SensorTemp2").divisor, port2);
    EXPECT_EQ(Bytes(port2 + 3, 2), (std::vector<uint8_T>{0x34, 0x12}));

    uint8_T axes[8] = {};
    CANEncodeSignal(Signal("X_Axis_AccelG"), -1.5, axes);  // (-1.5 + 4) x 100
    CANEncodeSignal(Signal("Y_Axis_AccelG"), 0, axes);
    CANEncodeSignal(Signal("Knock_CYL3_RTD"), -2, data);
    EXPECT_EQ(Bytes(axes, 4), (std::vector<uint8_T>{0x00, 0xFA, 0x01, 0x90}));
    EXPECT_EQ(data[2], 0xFE);
}

TEST(CanEncode, TextsReadBackAsSent)
{
    uint8_T data[8];
    memset(data, 0xFF, sizeof(data));
    CANEncodeText(Signal("SerialNumber"), "EC123456", data);
    Decode(0x123, data);
    EXPECT_STREQ(CANText_SerialNumber.string, "EC123456");

    // Shorter texts are padded with zeros, longer ones cut at the field.
    memset(data, 0xFF, sizeof(data));
    CANEncodeText(Signal("PartNumber"), "PN7", data);
    Decode(0x124, data);
    EXPECT_STREQ(CANText_PartNumber.string, "PN7");
    CANEncodeText(Signal("PartNumber"), "PN-123456789", data);
    Decode(0x124, data);
    EXPECT_STREQ(CANText_PartNumber.string, "PN-12345");

    // The version in two halves, D0 telling which.
    CANEncodeSignal(Signal("FirmwareVersionHalf"), 0, data);
    CANEncodeText(Signal("FirmwareVersion"), "v9.8.7-", data);
    Decode(0x122, data);
    CANEncodeSignal(Signal("FirmwareVersionHalf"), 1, data);
    CANEncodeText(Signal("FirmwareVersion"), "rc2", data);
    Decode(0x122, data);
    EXPECT_STREQ(CANText_FirmwareVersion.string, "v9.8.7-rc2");
}

}  // namespace
