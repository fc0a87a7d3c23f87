// The DBC description of the message set: the shipped file is what the table gives, and
// a tool reading a frame by the file's numbers gets what the dash decoded.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "can_dbc.h"
#include "can_fixture.h"
#include "data.h"
#include "test_root.h"

namespace {

std::string Generated()
{
    char* text = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&text, &size);
    can_dbc_write(out);
    fclose(out);
    std::string s(text, size);
    free(text);
    return s;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(CanDbc, ShippedFileIsTheGeneratedOne)
{
    const std::string shipped = ReadFile(MOTORDASH_SOURCE_DIR "/resources/can/motordash.dbc");
    ASSERT_FALSE(shipped.empty());
    EXPECT_TRUE(shipped == Generated()) << "regenerate resources/can/motordash.dbc with motordash-can dbc FILE";
}

TEST(CanDbc, CommandWritesTheFileOrStandardOutput)
{
    TestRoot root;
    std::string path = root.Abs("out.dbc");
    char* args[] = {path.data()};
    EXPECT_EQ(can_dbc(1, args), 0);
    EXPECT_EQ(ReadFile(path), Generated());

    char* two[] = {path.data(), path.data()};
    EXPECT_EQ(can_dbc(2, two), 2);
    std::string missing = root.Abs("no/such/folder/out.dbc");
    char* bad[] = {missing.data()};
    EXPECT_EQ(can_dbc(1, bad), 1);
}

TEST(CanDbc, SettingsFrameIsSentByTheDashToTheEcu)
{
    const std::string text = Generated();
    const size_t at = text.find("BO_ 305 ");
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(text.substr(at, text.find('\n', at) - at), "BO_ 305 DASH_0x131: 8 DASH");
    EXPECT_NE(text.find(" SG_ TractionControl : 48|1@0+ (1,0) [0|1] \"on/off\" ECU\n"), std::string::npos);
    EXPECT_NE(text.find(" SG_ BoostControl : 63|8@0+ (1,0) [0|255] \"stage\" ECU\n"), std::string::npos);
    EXPECT_NE(text.find(" SG_ O2SensorTemp2 : 24|16@1+ "), std::string::npos) << "port 2 is little-endian";
}

// ---- Reading frames by the file ------------------------------------------------

struct DBC_SIGNAL_T {
    std::string name;
    int start, length;
    bool intel, isSigned;
    double factor, offset;
};

bool ParseSignal(const std::string& line, DBC_SIGNAL_T* s)
{
    char name[128], order, sign;
    if (sscanf(line.c_str(), " SG_ %127s : %d|%d@%c%c (%lf,%lf)", name, &s->start, &s->length, &order, &sign,
               &s->factor, &s->offset) != 7)
        return false;
    s->name = name;
    s->intel = order == '1';
    s->isSigned = sign == '-';
    return true;
}

// The usual reading of the two bit orders: a big-endian field starts at its most
// significant bit and goes on to bit 7 of the next byte after bit 0.
double ReadByDbc(const DBC_SIGNAL_T& s, const uint8_T* data)
{
    uint64_t raw = 0;
    if (s.intel) {
        for (int i = s.length - 1; i >= 0; i--) raw = raw << 1 | ((data[(s.start + i) / 8] >> ((s.start + i) % 8)) & 1);
    } else {
        int pos = s.start;
        for (int i = 0; i < s.length; i++) {
            raw = raw << 1 | ((data[pos / 8] >> (pos % 8)) & 1);
            pos = pos % 8 == 0 ? pos + 15 : pos - 1;
        }
    }
    double value = (double)raw;
    if (s.isSigned && (raw >> (s.length - 1)) & 1) value = (double)((int64_t)raw - ((int64_t)1 << s.length));
    return value * s.factor + s.offset;
}

// What the dash holds for a field of the table.
bool Decoded(const std::string& name, uint32_T frame, double* value)
{
    for (const CAN_SIGNAL_T& s : CAN_SIGNALS) {
        if (s.frame != frame || name != s.target.name) continue;
        const uint8_T* base = nullptr;
        if (s.target.record == CAN_REC_B) base = reinterpret_cast<const uint8_T*>(&B);
        if (s.target.record == CAN_REC_INPUTS) base = reinterpret_cast<const uint8_T*>(&CANInputs);
        if (!base) return false;
        base += s.target.offset;
        real_T f64;
        uint16_T u16;
        uint32_T u32;
        switch (s.target.kind) {
        case CAN_KIND_F64: memcpy(&f64, base, sizeof(f64)); *value = f64; return true;
        case CAN_KIND_U8: *value = *base; return true;
        case CAN_KIND_U16: memcpy(&u16, base, sizeof(u16)); *value = u16; return true;
        case CAN_KIND_U32: memcpy(&u32, base, sizeof(u32)); *value = u32; return true;
        default: return false;
        }
    }
    return false;
}

TEST(CanDbc, EveryReceivedFieldReadsAsTheDashDecodedIt)
{
    RAMVariables.TPS = 100;
    uint32_T seed = 12345;
    std::istringstream lines(Generated());
    std::string line;
    uint32_T frame = 0;
    bool received = false;
    uint8_T data[8] = {};
    int checked = 0;
    while (std::getline(lines, line)) {
        unsigned id = 0;
        char sender[16];
        if (sscanf(line.c_str(), "BO_ %u %*s %*d %15s", &id, sender) == 2) {
            frame = id;
            received = std::string(sender) == "ECU";
            if (!received) continue;
            for (uint8_T& b : data) b = (uint8_T)((seed = seed * 1103515245 + 12345) >> 16);
            CAN_MSG_T m = Message(id, {data[0], data[1], data[2], data[3], data[4], data[5], data[6], data[7]});
            if (id == 0x130) rxTable_285280__0051(CAN_PORT2, &m);
            else rxTable_285279__0022(CAN_PORT1, &m);
            RAMVariables.TPS = 100;  // each pass copies the throttle of the last 0x101 here
            Pass();
            continue;
        }
        DBC_SIGNAL_T s;
        if (!received || !ParseSignal(line, &s)) continue;
        double dash = 0;
        if (!Decoded(s.name, frame, &dash)) continue;  // texts
        const double dbc = ReadByDbc(s, data);
        EXPECT_NEAR(dash, dbc, 1e-9 * std::max(1.0, std::fabs(dbc))) << std::hex << "0x" << frame << " " << s.name;
        checked++;
    }
    RAMVariables.TPS = 0;
    EXPECT_EQ(checked, 162 + 191 + 2) << "every signal, fault flag and field of port 2";
}

}  // namespace
