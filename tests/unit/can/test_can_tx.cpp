// The settings frame 0x131 as the foreground task sends it, and the other senders, seen
// through the message set's transmit seam.
#include <gtest/gtest.h>

#include <vector>

#include "can_fixture.h"
#include "can_ports.h"
#include "data.h"
#include "hw_user.h"
#include "test_root.h"

namespace {

struct SENT_T {
    CAN_PORTS_T port;
    CAN_MSG_T message;
    int pass;  // foreground pass it went out in
};
std::vector<SENT_T> m_sent;
int m_pass;

S32 _seen(CAN_PORTS_T port, CAN_MSG_T* message)
{
    m_sent.push_back({port, *message, m_pass});
    return 0;
}

class CanTx : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_sent.clear();
        m_pass = 0;
        CANTransmitMessage = _seen;
        app_is_in_shutdown = 0;
        EEVariables_RAMShadow = EEVariables_DEFAULT;
    }
    void TearDown() override
    {
        CANTransmitMessage = can_transmit_message;
        app_is_in_shutdown = 0;
    }
    void Passes(int n)
    {
        for (int i = 0; i < n; i++) {
            m_pass++;
            Thread_Foreground();
        }
    }
    // The port opens for real on the first send; there is no bus in this root.
    TestRoot root_;
};

BYTES_T Data(const CAN_MSG_T& m)
{
    BYTES_T d;
    memcpy(d.data(), m.msg_content, 8);
    return d;
}

TEST_F(CanTx, SettingsFrameEveryTenPasses)
{
    Passes(100);
    ASSERT_EQ(m_sent.size(), 10u);
    for (size_t i = 1; i < m_sent.size(); i++) EXPECT_EQ(m_sent[i].pass - m_sent[i - 1].pass, 10);
    for (const SENT_T& s : m_sent) {
        EXPECT_EQ(s.port, CAN_PORT1);
        EXPECT_EQ(s.message.id, 0x131u);
        EXPECT_EQ(s.message.extend, 0);
        EXPECT_EQ(s.message.msg_length, 8);
    }
}

TEST_F(CanTx, SettingsFrameContent)
{
    EEVariables_RAMShadow.ALT_TIRE = 1;
    EEVariables_RAMShadow.HighOctane = 0;
    EEVariables_RAMShadow.TractionControl = 7;  // a switch above 1 counts as on
    EEVariables_RAMShadow.BoostControl = 0xA5;  // the whole byte
    Passes(10);
    ASSERT_EQ(m_sent.size(), 1u);
    EXPECT_EQ(Data(m_sent[0].message), (BYTES_T{0, 0, 0, 0, 0x01, 0x00, 0x01, 0xA5}));
}

TEST_F(CanTx, ChangedSettingGoesOutWithTheNextPeriod)
{
    Passes(20);
    ASSERT_EQ(m_sent.size(), 2u);
    EXPECT_EQ(Data(m_sent[1].message), (BYTES_T{0, 0, 0, 0, 0, 0, 1, 1})) << "the factory settings";
    EEVariables_RAMShadow.HighOctane = 1;
    EEVariables_RAMShadow.BoostControl = 5;
    Passes(10);
    ASSERT_EQ(m_sent.size(), 3u);
    EXPECT_EQ(Data(m_sent[2].message), (BYTES_T{0, 0, 0, 0, 0, 1, 1, 5}));
}

TEST_F(CanTx, NothingGoesOutAndNothingIsDecodedInShutdown)
{
    Passes(10);
    FrameAndPass(0x108, {0x03, 0xE8, 0, 0, 0, 0, 0, 0});
    m_sent.clear();
    app_is_in_shutdown = 1;
    Frame(0x108, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0});
    Passes(30);
    EXPECT_TRUE(m_sent.empty());
    EXPECT_EQ(B.RPM, 1000);
}

TEST_F(CanTx, UpdateAloneSendsNothing)
{
    const uint8_T data[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    can_update_97090__0006(0x131, 0, 8, data);
    EXPECT_TRUE(m_sent.empty());
}

TEST_F(CanTx, CalibrationAnswersGoAtOnce)
{
    const uint8_T answer[3] = {0xFF, 0x10, 0x20};
    can_send_285318__0092(0x300, 0, 3, answer);
    ASSERT_EQ(m_sent.size(), 1u);
    EXPECT_EQ(m_sent[0].port, CAN_PORT1);
    EXPECT_EQ(m_sent[0].message.id, 0x300u);
    EXPECT_EQ(m_sent[0].message.msg_length, 3);
    EXPECT_EQ(m_sent[0].message.msg_content[2], 0x20);
}

TEST(CanTxPeriod, IsReportedLimitedTo16Bits)
{
    EXPECT_EQ(can_set_period_97090__0006(100), 100);
    EXPECT_EQ(can_set_period_97090__0006(70000), 65535);
}

}  // namespace
