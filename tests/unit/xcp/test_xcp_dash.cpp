// The dash's XCP slave: its address map over the real records, commands through the
// receive tables and out through the message set, a setting written by a tool, and
// storms of random frames, locked and unlocked.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "can_fixture.h"
#include "can_ports.h"
#include "SeednKey.h"
#include "data.h"
#include "settings.h"
#include "test_root.h"
#include "timer_drv.h"
#include "xcp_core.h"
#include "xcp_map.h"
#include "xcp_target.h"

namespace {

typedef std::vector<uint8_t> PACKET_T;

template <typename T>
PACKET_T BytesOf(const T& value)
{
    PACKET_T b(sizeof(T));
    memcpy(b.data(), &value, sizeof(T));
    return b;
}

PACKET_T Read(Xcp_Addr_t addr, U32 n)
{
    PACKET_T b(n, 0xEE);
    EXPECT_EQ(XcpApp_CalMemRead(addr, n, b.data()), CALMEM_FINISHED) << addr << "+" << n;
    return b;
}

PACKET_T Cat(std::initializer_list<PACKET_T> parts)
{
    PACKET_T all;
    for (const PACKET_T& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}

// ---- The address map ----------------------------------------------------------------

TEST(XcpAddressMap, EachVariableLiesAtItsAddress)
{
    initRAMEditVariables(&RAMEditVariables);
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    RAMVariables.RPM = 5200.5f;
    RAMVariables.LoggingActive = 1;
    RAMVariables.START_SCREEN = 7;
    EEVariables_RAMShadow.BoostControl = 4;
    EEVariables_RAMShadow.LogNumber = 0x01020304;
    EXPECT_EQ(Read(537, 4), BytesOf(RAMVariables.RPM));
    EXPECT_EQ(Read(302, 1), PACKET_T{1});
    EXPECT_EQ(Read(588, 1), PACKET_T{7});
    EXPECT_EQ(Read(971, 1), PACKET_T{4});
    EXPECT_EQ(Read(589, 4), BytesOf(EEVariables_RAMShadow.LogNumber)) << "the stored record's first row";
    EXPECT_EQ(Read(277, 2), BytesOf(RAMEditVariables.Abc));
    EXPECT_EQ(Read(189, 21), BytesOf(CONSTVariables.SwIdTxt));
    EXPECT_EQ(Read(0, 120), BytesOf(CONSTVariables.PROFILE_DEFAULT));
    EXPECT_EQ(Read(975, 1), PACKET_T{EEVariables_RAMShadow.EEPROM_State});
}

TEST(XcpAddressMap, ATransferCrossesRowsAndMapsByAddressNotByMemory)
{
    initRAMEditVariables(&RAMEditVariables);
    RAMVariables.FileOpen_Success = 1;
    RAMVariables.SyncCount = 0xA1B2C3D4;
    RAMVariables.SelectedGaugeIndex = 3;
    RAMVariables.EditMode = 1;
    RAMVariables.START_SCREEN = 2;
    EEVariables_RAMShadow.LogNumber = 0x11223344;
    // Across the padding behind a text, which has no address.
    EXPECT_EQ(Read(154, 7), Cat({PACKET_T(CONSTVariables.ModelName + 14, CONSTVariables.ModelName + 17),
                                 BytesOf(CONSTVariables.BuildNumber)}));
    // From the constants through the edit variable into the live values.
    EXPECT_EQ(Read(274, 7), Cat({PACKET_T(CONSTVariables.DateStamp + 8, CONSTVariables.DateStamp + 11),
                                 BytesOf(RAMEditVariables.Abc), PACKET_T{1}, PACKET_T{0xD4}}));
    // From the live values into the stored settings, past the record's unmapped head.
    EXPECT_EQ(Read(586, 7), Cat({PACKET_T{3, 1, 2}, BytesOf(EEVariables_RAMShadow.LogNumber)}));
}

TEST(XcpAddressMap, NothingOutsideTheSpaceIsRead)
{
    uint8_t b[8] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(XcpApp_CalMemRead(976, 1, b), CALMEM_REQUESTNOTVALID);
    EXPECT_EQ(XcpApp_CalMemRead(976, 0, b), CALMEM_REQUESTNOTVALID);
    EXPECT_EQ(XcpApp_CalMemRead(970, 7, b), CALMEM_REQUESTNOTVALID);
    EXPECT_EQ(XcpApp_CalMemRead(0xFFFFFFFFu, 7, b), CALMEM_REQUESTNOTVALID);
    EXPECT_EQ(b[0], 0xEE) << "a refused transfer copies nothing";
    EXPECT_EQ(XcpApp_CalMemRead(969, 7, b), CALMEM_FINISHED);
    EXPECT_EQ(XcpApp_CalMemRead(975, 0, b), CALMEM_FINISHED);

    U8 type = 0;
    U32 sum = 1;
    EXPECT_EQ(XcpApp_CalMemGetChecksum(970, 7, &type, &sum), CALMEM_REQUESTNOTVALID);
    EXPECT_EQ(XcpApp_CalMemGetChecksum(976, 0, &type, &sum), CALMEM_FINISHED);
    EXPECT_EQ(sum, 0u);
    EXPECT_EQ(type, XCP_CHECKSUM_TYPE_ADD_11);
    // The whole space, byte by byte, against the sum of the same bytes read at once.
    PACKET_T all(EEEnd);
    ASSERT_EQ(XcpApp_CalMemRead(0, EEEnd, all.data()), CALMEM_FINISHED);
    U32 expected = 0;
    for (uint8_t v : all) expected += v;
    EXPECT_EQ(XcpApp_CalMemGetChecksum(0, EEEnd, &type, &sum), CALMEM_FINISHED);
    EXPECT_EQ(sum, expected & 0xFF);
}

TEST(XcpAddressMap, WritesReachTheLiveRecordsFrom277To975AndNoByteWithoutAnAddress)
{
    initRAMEditVariables(&RAMEditVariables);
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    const EEVariables_T before = EEVariables_RAMShadow;
    const uint8_t b[7] = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(XcpApp_CalMemWrite(276, 1, b), CALMEM_REQUESTNOTVALID) << "the last constant";
    EXPECT_EQ(XcpApp_CalMemWrite(271, 7, b), CALMEM_REQUESTNOTVALID) << "from the constants on";
    EXPECT_EQ(XcpApp_CalMemWrite(970, 7, b), CALMEM_REQUESTNOTVALID) << "past the end";
    EXPECT_EQ(XcpApp_CalMemWrite(976, 0, b), CALMEM_REQUESTNOTVALID);
    EXPECT_EQ(XcpApp_CalMemWrite(0xFFFFFFFFu, 2, b), CALMEM_REQUESTNOTVALID);
    EXPECT_EQ(memcmp(&before, &EEVariables_RAMShadow, sizeof(before)), 0) << "a refused transfer writes nothing";

    EXPECT_EQ(XcpApp_CalMemWrite(277, 2, b), CALMEM_FINISHED);
    EXPECT_EQ(RAMEditVariables.Abc, 0x0201);
    EXPECT_EQ(RAMEditVariables.INIT_RAM_Variables, 55) << "has no address";
    EXPECT_EQ(XcpApp_CalMemWrite(969, 7, b), CALMEM_FINISHED);
    EXPECT_EQ(Read(970, 6), (PACKET_T{2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(EEVariables_RAMShadow.BoostControl, 3);
    EXPECT_EQ(EEVariables_RAMShadow.EEPROM_State, 7);
    // From the live values into the settings, past the record's head, which has no address.
    EXPECT_EQ(XcpApp_CalMemWrite(586, 7, b), CALMEM_FINISHED);
    EXPECT_EQ(RAMVariables.START_SCREEN, 3);
    EXPECT_EQ(EEVariables_RAMShadow.LogNumber, 0x07060504u);
    EXPECT_EQ(EEVariables_RAMShadow.uiCRC, before.uiCRC);
    EXPECT_EQ(EEVariables_RAMShadow.ulEECounter, before.ulEECounter);
    EXPECT_EQ(EEVariables_RAMShadow.EE_UniqID, before.EE_UniqID);
    // Across the settings' padding byte, which has no address either.
    EXPECT_EQ(XcpApp_CalMemWrite(607, 4, b), CALMEM_FINISHED);
    EXPECT_EQ(EEVariables_RAMShadow.Padding, before.Padding);
    EXPECT_EQ(EEVariables_RAMShadow.PROFILE_1[0][0], 0x04);
}

// ---- On the dash's CAN port -------------------------------------------------------------

std::vector<CAN_MSG_T> m_sent;

S32 _seen(CAN_PORTS_T port, CAN_MSG_T* message)
{
    EXPECT_EQ(port, CAN_PORT1);
    m_sent.push_back(*message);
    return 0;
}

PACKET_T Packet(const CAN_MSG_T& m)
{
    return PACKET_T(m.msg_content, m.msg_content + m.msg_length);
}

class XcpOnTheDash : public ::testing::Test {
protected:
    void SetUp() override
    {
        CANTransmitMessage = _seen;
        Xcp_Initialize();
        CANSetXcpHandlers(XcpCan_RxCallback, Xcp_CmdProcessor);
        m_sent.clear();
    }
    void TearDown() override
    {
        CANSetXcpHandlers(nullptr, nullptr);
        CANTransmitMessage = can_transmit_message;
    }
    // A command through port 1's receive table: what the dash sent for it.
    static std::vector<PACKET_T> Command(PACKET_T bytes, uint32_t id = 0x200)
    {
        m_sent.clear();
        BYTES_T data = {};
        memcpy(data.data(), bytes.data(), bytes.size() < 8 ? bytes.size() : 8);
        Frame(id, data, (uint8_t)bytes.size());
        std::vector<PACKET_T> out;
        for (const CAN_MSG_T& m : m_sent) {
            EXPECT_EQ(m.id, 0x300u);
            EXPECT_EQ(m.extend, 0);
            out.push_back(Packet(m));
        }
        return out;
    }
    TestRoot root_;  // the port opens on the first answer; there is no bus here
};

TEST_F(XcpOnTheDash, ACommandIsAnsweredOn0x300TheMomentItsFrameComesIn)
{
    EXPECT_EQ(Command({0xF2, 0xFF, 'X', 'C', 'P', 0}, 0x100),
              (std::vector<PACKET_T>{{0xFF, 'X', 'C', 'P', 0x00, 0x02, 0x00, 0x00}}));
    EXPECT_TRUE(Command({0xFD}).empty());
    EXPECT_EQ(Command({0xFF, 0x00}), (std::vector<PACKET_T>{{0xFF, 0x15, 0xC0, 8, 8, 0, 1, 1}}));
    EXPECT_EQ(Command({0xFD}), (std::vector<PACKET_T>{{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00}}));
    // The identification: 21 bytes in three frames of seven, one a pass.
    EXPECT_EQ(Command({0xFA, 0x00}), (std::vector<PACKET_T>{{0xFF, 0, 0, 0, 21, 0, 0, 0}}));
    std::vector<PACKET_T> frames = Command({0xF5, 21});
    for (int pass = 0; pass < 5; pass++) {
        m_sent.clear();
        Timed_Trigger_XCP();
        for (const CAN_MSG_T& m : m_sent) frames.push_back(Packet(m));
    }
    ASSERT_EQ(frames.size(), 3u);
    std::string text;
    for (const PACKET_T& f : frames) {
        ASSERT_EQ(f.size(), 8u);
        EXPECT_EQ(f[0], 0xFF);
        text.append(f.begin() + 1, f.end());
    }
    EXPECT_EQ(text, "Velnor_Dorvik_V6c_650");
    // A live value in the device's byte order.
    RAMVariables.RPM = 6100.0f;
    RAMVariables.LaunchTime_Max = 1.5f;
    EXPECT_EQ(Command({0xF6, 0, 0, 0, 0x19, 0x02, 0, 0}), (std::vector<PACKET_T>{{0xFF}}));
    EXPECT_EQ(Command({0xF5, 4}), (std::vector<PACKET_T>{Cat({PACKET_T{0xFF}, BytesOf(RAMVariables.RPM)})}));
    EXPECT_EQ(Command({0xF5, 1}), (std::vector<PACKET_T>{{0xFF, BytesOf(RAMVariables.LaunchTime_Max)[0]}}))
        << "the MTA moved on to the next variable";
}

TEST_F(XcpOnTheDash, AMasterThatVanishesMidUploadLeavesNoStuckSession)
{
    ASSERT_EQ(Command({0xFF, 0x00}).size(), 1u);
    ASSERT_EQ(Command({0xF6, 0, 0, 0, 1, 0, 0, 0}).size(), 1u);
    ASSERT_EQ(Command({0xF5, 255}).size(), 1u);
    // Nobody listens any more; the foreground passes finish the upload by themselves.
    int frames = 1;
    for (int pass = 0; pass < 60; pass++) {
        m_sent.clear();
        Timed_Trigger_XCP();
        frames += (int)m_sent.size();
    }
    EXPECT_EQ(frames, 37);
    EXPECT_EQ(XcpCan_GetRxBuf(0, XCP_RX_CMD_CHANNEL), nullptr);
    EXPECT_EQ(Command({0xFF, 0x00}).size(), 1u) << "a new master is answered at once";
}

// The key a master computes for the seed in a GET_SEED response.
PACKET_T KeyFor(uint8_t resource, const PACKET_T& seedResponse)
{
    const U32 key = XcpKeyHash(XcpResourceSecret(resource), &seedResponse[2], 6, resource);
    return {(uint8_t)(key >> 24), (uint8_t)(key >> 16), (uint8_t)(key >> 8), (uint8_t)key};
}

TEST_F(XcpOnTheDash, ASettingWrittenByAToolIsStoredWithinTheSecond)
{
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    App_EE_Store();
    const uint32_t stores = EEVariables_RAMShadow.ulEECounter;
    ASSERT_EQ(Command({0xFF, 0x00}).size(), 1u);
    ASSERT_EQ(Command({0xF6, 0, 0, 0, 0xCB, 0x03, 0, 0}), (std::vector<PACKET_T>{{0xFF}})) << "MTA 971";
    EXPECT_EQ(Command({0xF0, 1, 3}), (std::vector<PACKET_T>{{0xFE, 0x25}})) << "locked";

    const std::vector<PACKET_T> seed = Command({0xF8, 0, 0x01});
    ASSERT_EQ(seed.size(), 1u);
    ASSERT_EQ(seed[0].size(), 8u);
    const PACKET_T key = KeyFor(0x01, seed[0]);
    EXPECT_EQ(Command({0xF7, 4, key[0], key[1], key[2], key[3]}), (std::vector<PACKET_T>{{0xFF, 0x1C}}));
    EXPECT_EQ(Command({0xF0, 1, 3}), (std::vector<PACKET_T>{{0xFF}}));
    EXPECT_EQ(EEVariables_RAMShadow.BoostControl, 3);
    App_EE_Store();
    EXPECT_EQ(EEVariables_RAMShadow.ulEECounter, stores + 1) << "the 1 s task stored the change";

    // The constants stay as they are, and the dash offers no page switching.
    EXPECT_EQ(Command({0xF6, 0, 0, 0, 120, 0, 0, 0}).size(), 1u);
    EXPECT_EQ(Command({0xF0, 2, 0, 0}), (std::vector<PACKET_T>{{0xFE, 0x24}}));
    EXPECT_EQ(Command({0xED, 1, 0, 0, 0xCB, 3, 0, 0}), (std::vector<PACKET_T>{{0xFE, 0x20}})) << "SHORT_DOWNLOAD";
    EXPECT_EQ(Command({0xEB, 3, 0, 0}), (std::vector<PACKET_T>{{0xFE, 0x27}})) << "SET_CAL_PAGE";
    EXPECT_EQ(Command({0xE4, 0, 0, 1, 0}), (std::vector<PACKET_T>{{0xFE, 0x23}})) << "COPY_CAL_PAGE";
    EXPECT_EQ(Command({0xFE}), (std::vector<PACKET_T>{{0xFF}}));
}

// The clock is read after the foreground task's own work, which takes longer on some
// passes than on others: passes a tick apart read it a few ms apart either way, and a
// long pass is followed at once by the one whose tick waited for it.
TEST_F(XcpOnTheDash, EveryPassSamplesEvents0And1AndEveryTenthEvent2WhateverTheClockReads)
{
    ASSERT_EQ(Command({0xFF, 0x00}).size(), 1u);
    Xcp_Sessions[0].ctResourceProtection = 0;
    std::vector<PACKET_T> script = {{0xD6}, {0xD5, 0, 3, 0}};
    for (uint8_t list = 0; list < 3; list++) script.push_back({0xD4, 0, list, 0, 1});
    for (uint8_t list = 0; list < 3; list++) script.push_back({0xD3, 0, list, 0, 0, 1});
    for (uint8_t list = 0; list < 3; list++) {
        script.push_back({0xE2, 0, list, 0, 0, 0});
        script.push_back({0xE1, 0xFF, 1, 0, 0x2E, 0x01, 0, 0});  // LoggingActive, at 302
        script.push_back({0xE0, 0x10, list, 0, list, 0, 1, 0});  // list n on event n
        script.push_back({0xDE, 2, list, 0});
    }
    script.push_back({0xDD, 1});
    for (const PACKET_T& c : script) ASSERT_EQ(Command(c).at(0).at(0), 0xFF) << "command 0x" << std::hex << +c[0];

    int64_t clockMs = 100000;
    int samples[3] = {};
    auto pass = [&](int ms) {
        clockMs += ms;
        timer_test_set_clock(clockMs * 1000000);
        m_sent.clear();
        Timed_Trigger_XCP();
        for (const CAN_MSG_T& m : m_sent)
            if (m.msg_content[0] < 24) samples[m.msg_content[0] / 8]++;  // each list one ODT
    };
    pass(10);  // the first pass after a clock that went back counts no time
    samples[0] = samples[1] = samples[2] = 0;
    const int steps[] = {7, 13, 9, 11, 10, 12, 8, 10, 14, 6};
    for (int i = 0; i < 200; i++) pass(steps[i % 10]);
    EXPECT_EQ(samples[0], 200);
    EXPECT_EQ(samples[1], 200);
    EXPECT_EQ(samples[2], 20);
    pass(40);
    pass(1);
    EXPECT_EQ(samples[0], 202);
    EXPECT_EQ(samples[1], 202);
    timer_test_set_clock(-1);
    EXPECT_EQ(Command({0xFE}), (std::vector<PACKET_T>{{0xFF}}));
}

// ---- Random frames ------------------------------------------------------------------------

// Commands chosen to reach every handler, with lengths and fields anywhere, addresses
// mostly near and beyond the ends of the address space.
PACKET_T _randomFrame(std::mt19937& rng, uint32_t* id)
{
    static constexpr uint8_t PIDS[] = {0xFF, 0xFE, 0xFD, 0xFC, 0xFB, 0xFA, 0xF9, 0xF8, 0xF8, 0xF7, 0xF6,
                                       0xF6, 0xF5, 0xF4, 0xF3, 0xF2, 0xF2, 0xF0, 0xF0, 0xEF, 0xEF, 0xEE,
                                       0xED, 0xEC, 0xEB, 0xEA, 0xE9, 0xE6, 0xE5, 0xE4, 0xE3, 0xE2,
                                       0xE2, 0xE1, 0xE1, 0xE1, 0xE0, 0xE0, 0xDF, 0xDE, 0xDE, 0xDD,
                                       0xDC, 0xDA, 0xD9, 0xD8, 0xD6, 0xD5, 0xD5, 0xD4, 0xD4, 0xD3,
                                       0xD3, 0xD2, 0xD1, 0xD0, 0xCF, 0xCC, 0xCB, 0xCA, 0xC9};
    std::uniform_int_distribution<int> byte(0, 255);
    const int kind = byte(rng);
    *id = kind < 16 ? 0x100 : kind < 24 ? (uint32_t)byte(rng) << 3 : 0x200;
    PACKET_T f(std::uniform_int_distribution<int>(0, 9)(rng));
    for (uint8_t& b : f) b = (uint8_t)byte(rng);
    if (f.empty()) return f;
    if (kind % 4 != 0) f[0] = PIDS[byte(rng) % sizeof(PIDS)];
    if (*id == 0x100 && kind % 2) f[0] = 0xF2;
    if (f.size() >= 2 && f[0] == 0xF2 && kind % 3) f[1] = (uint8_t)(0xFD + byte(rng) % 3);
    // Small list, ODT and entry numbers, so that lists get built and started.
    if (f.size() >= 6 && f[0] >= 0xD3 && f[0] <= 0xE3 && f[0] != 0xE1 && kind % 2) {
        f[2] = (uint8_t)(byte(rng) % 4), f[3] = 0;
        f[4] = (uint8_t)(byte(rng) % 10), f[5] = (uint8_t)(byte(rng) % 9);
    }
    if (f.size() >= 3 && f[0] == 0xE1 && kind % 2) {
        f[1] = kind % 3 ? 0xFF : (uint8_t)(byte(rng) % 40);
        f[2] = (uint8_t)(byte(rng) % 10);
    }
    if (f.size() >= 2 && (f[0] == 0xDE || f[0] == 0xDD) && kind % 2) f[1] = (uint8_t)(byte(rng) % 4);
    if (f.size() >= 8 && kind % 5) {
        // An address near the space: 0, inside, or just past its end.
        const uint32_t addr = std::uniform_int_distribution<uint32_t>(0, 1100)(rng);
        memcpy(&f[4], &addr, 4);
    }
    return f;
}

// Random frames through port 1's receive table, a foreground pass after every third;
// with `unlocked` the calibration resource is open whenever a master is connected. The
// number of answers.
size_t m_measurements;  // DAQ frames the storms caused
int64_t m_clockMs = 1000;

// A well-formed setup of all three lists, started, with sizes and addresses anywhere
// near the end of the address space: what the random frames then break up.
std::vector<PACKET_T> _buildLists(std::mt19937& rng)
{
    std::uniform_int_distribution<int> byte(0, 255);
    std::vector<PACKET_T> script = {{0xFF, 0}, {0xD6}, {0xD5, 0, 3, 0}};
    for (uint8_t list = 0; list < 3; list++) script.push_back({0xD4, 0, list, 0, 2});
    for (uint8_t list = 0; list < 3; list++)
        for (uint8_t odt = 0; odt < 2; odt++) script.push_back({0xD3, 0, list, 0, odt, 7});
    for (uint8_t list = 0; list < 3; list++) {
        for (uint8_t odt = 0; odt < 2; odt++) {
            script.push_back({0xE2, 0, list, 0, odt, 0});
            for (int e = 0; e < 7; e++) {
                const uint32_t addr = std::uniform_int_distribution<uint32_t>(EEEnd - 40, EEEnd + 4)(rng);
                script.push_back({0xE1, (uint8_t)(byte(rng) % 4 ? 0xFF : byte(rng) % 40), (uint8_t)(1 + byte(rng) % 8),
                                  0, (uint8_t)addr, (uint8_t)(addr >> 8), 0, 0});
            }
        }
        script.push_back({0xE0, 0x10, list, 0, list, 0, 1, 0});
        script.push_back({0xDE, 2, list, 0});
    }
    script.push_back({0xDD, 1});
    return script;
}

size_t _storm(std::mt19937& rng, int frames, bool unlocked)
{
    size_t answers = 0;
    std::vector<PACKET_T> script;
    for (int i = 0; i < frames; i++) {
        uint32_t id = 0x200;
        if (unlocked && i % 500 == 0) script = _buildLists(rng);
        PACKET_T f;
        if (!script.empty()) {
            f = script.front();
            script.erase(script.begin());
        } else {
            f = _randomFrame(rng, &id);
        }
        m_sent.clear();
        CAN_MSG_T m = {};
        m.id = id;
        m.msg_length = (uint8_t)f.size();
        if (!f.empty()) memcpy(m.msg_content, f.data(), f.size() < 8 ? f.size() : 8);
        if (unlocked) Xcp_Sessions[0].ctResourceProtection = 0;
        rxTable_285279__0022(CAN_PORT1, &m);
        if (i % 3 == 0) {
            // A foreground pass every 10 ms of a controlled clock, so that every event fires.
            m_clockMs += 10;
            timer_test_set_clock(m_clockMs * 1000000);
            Timed_Trigger_XCP();
        }
        for (const CAN_MSG_T& s : m_sent) {
            EXPECT_GE(s.msg_length, 1);
            EXPECT_LE(s.msg_length, 8);
            if (s.msg_content[0] < 24) {  // a measurement, on its list's identifier
                m_measurements++;
                continue;
            }
            EXPECT_EQ(s.id, 0x300u);
            EXPECT_GE(s.msg_content[0], 0xFD) << "a response, an error or an event";
        }
        // Every entry a list holds lies inside the address space, whatever it was given.
        for (U32 e = 0; e < XCP0_ODT_LIST_SIZE; e++) {
            const U8 c = Xcp0_OdtEntryCfgs[e];
            const U32 size = (c & XCP_ODTENTRY_SINGLE_BIT) ? 1 : c;
            if (c != 0 && Xcp0_OdtEntryAddrs[e] + size > EEEnd) {
                ADD_FAILURE() << "entry " << e << " at " << Xcp0_OdtEntryAddrs[e];
                return answers;
            }
        }
        answers += m_sent.size();
    }
    timer_test_set_clock(-1);
    return answers;
}

TEST_F(XcpOnTheDash, RandomFramesNeitherCrashNorStickNorWrite)
{
    initRAMEditVariables(&RAMEditVariables);
    const RAMVariables_T ram = RAMVariables;
    const EEVariables_T ee = EEVariables_RAMShadow;
    const RAMEditVariables_T edit = RAMEditVariables;
    std::mt19937 rng(19);
    EXPECT_GT(_storm(rng, 300000, false), 50000u) << "the storm reached the handlers";
    EXPECT_EQ(memcmp(&ram, &RAMVariables, sizeof(ram)), 0);
    EXPECT_EQ(memcmp(&ee, &EEVariables_RAMShadow, sizeof(ee)), 0);
    EXPECT_EQ(memcmp(&edit, &RAMEditVariables, sizeof(edit)), 0);

    // Whatever is left in the queue ends within a few passes, and a master gets the
    // session back.
    for (int pass = 0; pass < 4 * 40; pass++) Timed_Trigger_XCP();
    EXPECT_EQ(XcpCan_GetRxBuf(0, XCP_RX_CMD_CHANNEL), nullptr);
    EXPECT_EQ(Command({0xFF, 0x00}), (std::vector<PACKET_T>{{0xFF, 0x15, 0xC0, 8, 8, 0, 1, 1}}));
    EXPECT_EQ(Command({0xFE}), (std::vector<PACKET_T>{{0xFF}}));
    EXPECT_EQ(Command({0xFF, 0x00}).size(), 1u);
    EXPECT_EQ(Command({0xFD}), (std::vector<PACKET_T>{{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00}}));
}

TEST_F(XcpOnTheDash, RandomWritesStayInsideTheMappedFields)
{
    initRAMEditVariables(&RAMEditVariables);
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    const RAMVariables_T ram = RAMVariables;
    std::mt19937 rng(20);
    m_measurements = 0;
    EXPECT_GT(_storm(rng, 100000, true), 20000u);
    EXPECT_GT(m_measurements, 100u) << "lists were built and ran";
    EXPECT_NE(memcmp(&EEVariables_RAMShadow, &EEVariables_DEFAULT, sizeof(EEVariables_T)), 0) << "writes happened";
    EXPECT_EQ(EEVariables_RAMShadow.uiCRC, EEVariables_DEFAULT.uiCRC);
    EXPECT_EQ(EEVariables_RAMShadow.ulEECounter, EEVariables_DEFAULT.ulEECounter);
    EXPECT_EQ(EEVariables_RAMShadow.EE_UniqID, EEVariables_DEFAULT.EE_UniqID);
    EXPECT_EQ(EEVariables_RAMShadow.Padding, EEVariables_DEFAULT.Padding);
    EXPECT_EQ(RAMEditVariables.INIT_RAM_Variables, 55);
    // Whatever the storm left running stops with the session.
    for (int pass = 0; pass < 4 * 40; pass++) Timed_Trigger_XCP();
    EXPECT_EQ(Command({0xFF, 0x00}).size(), 1u);
    EXPECT_EQ(Command({0xFE}), (std::vector<PACKET_T>{{0xFF}}));
    for (const Xcp_Daq_t& state : Xcp0_DaqStates) EXPECT_EQ(state.daqListMode & XCP_DAQLISTMODE_RUNNING, 0);
    m_sent.clear();
    for (int pass = 0; pass < 20; pass++) Timed_Trigger_XCP();
    EXPECT_TRUE(m_sent.empty()) << "nothing sampled after DISCONNECT";
    RAMVariables = ram;
    EEVariables_RAMShadow = EEVariables_DEFAULT;
}

}  // namespace
