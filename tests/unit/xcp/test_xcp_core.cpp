// The XCP library on its own, against a fake application: the transport's queues and
// routing, the core's session and protection, seed and key, the memory commands, pages
// and segments, and a resumed DAQ setup sampled on its event.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "SeednKey.h"
#include "xcp_core.h"
#include "xcp_fake_app.h"

namespace {

typedef std::vector<uint8_t> BYTES_T;

class XcpCore : public ::testing::Test {
protected:
    void SetUp() override
    {
        FakeAppReset();
        Xcp_Initialize();
    }
    // A frame as the receive path hands it over; no pass of the processor.
    static void In(uint32_t id, BYTES_T bytes) { XcpCan_RxCallback(id, (U8)bytes.size(), bytes.data()); }
    // A frame and the one pass it triggers: what went out.
    static std::vector<FAKE_FRAME_T> Send(BYTES_T bytes, uint32_t id = 0x200)
    {
        FakeApp.sent.clear();
        In(id, bytes);
        Xcp_CmdProcessor();
        return FakeApp.sent;
    }
    // A command that must be answered by one response on 0x300.
    static BYTES_T Ask(BYTES_T bytes, uint32_t id = 0x200)
    {
        const std::vector<FAKE_FRAME_T> out = Send(bytes, id);
        EXPECT_EQ(out.size(), 1u) << "command " << std::hex << (int)bytes.at(0);
        if (out.size() != 1) return {};
        EXPECT_EQ(out[0].id, 0x300u);
        return out[0].data;
    }
    static void Connect() { ASSERT_EQ(Ask({0xFF, 0x00}), (BYTES_T{0xFF, 0x15, 0xC0, 8, 8, 0, 1, 1})); }
    static BYTES_T SetMta(uint32_t a)
    {
        return Ask({0xF6, 0, 0, 0, (uint8_t)a, (uint8_t)(a >> 8), (uint8_t)(a >> 16), (uint8_t)(a >> 24)});
    }
    static BYTES_T Mem(size_t at, size_t n) { return BYTES_T(FakeApp.memory + at, FakeApp.memory + at + n); }
    static BYTES_T Positive(const BYTES_T& data)
    {
        BYTES_T r = data;
        r.insert(r.begin(), 0xFF);
        return r;
    }
};

const BYTES_T OK = {0xFF};
BYTES_T Error(uint8_t code)
{
    return {0xFE, code};
}

// ---- Transport ---------------------------------------------------------------------

TEST_F(XcpCore, GetSlaveIdGivesTheCommandIdentifierThenOneInverseEcho)
{
    const BYTES_T identify = {0xF2, 0xFF, 'X', 'C', 'P', 0};
    const BYTES_T confirm = {0xF2, 0xFF, 'X', 'C', 'P', 1};
    EXPECT_EQ(Ask(identify, 0x100), (BYTES_T{0xFF, 'X', 'C', 'P', 0x00, 0x02, 0x00, 0x00}));
    EXPECT_EQ(Ask(confirm, 0x100), (BYTES_T{0xFF, 0xA7, 0xBC, 0xAF, 0x00, 0x02, 0x00, 0x00}));
    EXPECT_TRUE(Send(confirm, 0x100).empty()) << "the echo was used up";
    EXPECT_TRUE(Send({0xF2, 0xFF, 'X', 'C', 'Q', 0}, 0x100).empty()) << "wrong signature";
    EXPECT_TRUE(Send(confirm, 0x100).empty()) << "a refused identify allows no echo";
    EXPECT_TRUE(Send({0xF2, 0xFF, 'X', 'C', 'P', 2}, 0x100).empty()) << "unknown mode";
    EXPECT_TRUE(Send({0xF2, 0xFF, 'X'}, 0x100).empty()) << "cut short";
    // Also on the command identifier, and still before any CONNECT.
    EXPECT_EQ(Ask(identify), (BYTES_T{0xFF, 'X', 'C', 'P', 0x00, 0x02, 0x00, 0x00}));
    EXPECT_EQ(XcpCan_GetRxBuf(0, XCP_RX_CMD_CHANNEL), nullptr) << "every one was consumed";
}

TEST_F(XcpCore, FramesThatAreNoCommandNeverReachTheQueue)
{
    Connect();
    In(0x100, {0xFF, 0x00});                // CONNECT on the broadcast identifier
    In(0x100, {0xF2, 0xFE, 0x00, 0x00});    // another transport command there
    In(0x100, {0xF2});                      // too short to be GET_SLAVE_ID
    In(0x200, {0x3F, 0x01});                // below 0xC0: not a command
    In(0x200, {});                          // empty
    In(0x80000200u, {0xFD});                // the command identifier as a 29-bit one
    In(0x201, {0xFD});
    EXPECT_EQ(XcpCan_GetRxBuf(0, XCP_RX_CMD_CHANNEL), nullptr);
    // A frame longer than a packet is cut to eight bytes.
    uint8_t nine[9] = {0xFD, 1, 2, 3, 4, 5, 6, 7, 8};
    XcpCan_RxCallback(0x200, 9, nine);
    FakeApp.sent.clear();
    Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 1u);
    EXPECT_EQ(FakeApp.sent[0].data, (BYTES_T{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00}));
}

TEST_F(XcpCore, TheCommandRingHoldsFourAndDropsTheFifth)
{
    Connect();
    for (uint8_t a = 1; a <= 5; a++) In(0x200, {0xF4, 1, 0, 0, a, 0, 0, 0});
    FakeApp.sent.clear();
    for (int pass = 0; pass < 6; pass++) Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 4u);
    for (uint8_t i = 0; i < 4; i++) EXPECT_EQ(FakeApp.sent[i].data, (BYTES_T{0xFF, (uint8_t)(i + 1)})) << i;

    // A long upload holds its slot until its last frame: three more fit behind it.
    ASSERT_EQ(SetMta(1), OK);
    In(0x200, {0xF5, 21});
    for (uint8_t a = 10; a < 14; a++) In(0x200, {0xF4, 1, 0, 0, a, 0, 0, 0});
    FakeApp.sent.clear();
    for (int pass = 0; pass < 10; pass++) Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 6u);
    for (int i = 0; i < 3; i++) EXPECT_EQ(FakeApp.sent[i].data, Positive(Mem(1 + 7 * i, 7)));
    EXPECT_EQ(FakeApp.sent[3].data, (BYTES_T{0xFF, 10}));
    EXPECT_EQ(FakeApp.sent[5].data, (BYTES_T{0xFF, 12})) << "the fourth behind the upload was lost";
}

TEST_F(XcpCore, ATransmitBufferIsHandedOutUntilItIsSent)
{
    Xcp_Packet_t* first = XcpCan_GetTxBuf(0, XCP_FIRST_DAQ_CHANNEL);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(XcpCan_GetTxBuf(0, XCP_FIRST_DAQ_CHANNEL), first);
    FakeApp.deferTxCallbacks = true;
    first->pid = 0;
    XcpCan_TxNext(0, XCP_FIRST_DAQ_CHANNEL, 1);
    Xcp_Packet_t* second = XcpCan_GetTxBuf(0, XCP_FIRST_DAQ_CHANNEL);
    EXPECT_NE(second, first);
    second->pid = 2;
    XcpCan_TxNext(0, XCP_FIRST_DAQ_CHANNEL, 1);
    ASSERT_EQ(FakeApp.sent.size(), 1u) << "the second waits for the first to leave";
    FakeAppDeliverTxCallback();
    ASSERT_EQ(FakeApp.sent.size(), 2u);
    EXPECT_EQ(FakeApp.sent[0].data, BYTES_T{0});
    EXPECT_EQ(FakeApp.sent[1].data, BYTES_T{2});
}

TEST_F(XcpCore, WaitingFramesLeaveLowestIdentifierFirstThenLowestChannel)
{
    Connect();
    Xcp_Sessions[0].numDynDaqLists = 1;
    ASSERT_EQ(Ask({0xF2, 0xFD, 0, 0, 0x50, 0x02, 0, 0}), OK) << "list 0 on 0x250";
    FakeApp.deferTxCallbacks = true;
    FakeApp.sent.clear();
    auto queue = [](U32 channel, BYTES_T bytes) {
        Xcp_Packet_t* p = XcpCan_GetTxBuf(0, channel);
        ASSERT_NE(p, nullptr);
        memcpy(p, bytes.data(), bytes.size());
        XcpCan_TxNext(0, channel, (U32)bytes.size());
    };
    queue(XCP_TX_CRM_CHANNEL, {0xFE, 0x00});  // goes at once: nothing pending
    queue(XCP_TX_CRM_CHANNEL, {0xFF});
    queue(XCP_TX_EVENT_CHANNEL, {0xFD, 0x05});
    queue(XCP_FIRST_DAQ_CHANNEL, {0x00, 0x11});
    for (int i = 0; i < 4; i++) FakeAppDeliverTxCallback();
    ASSERT_EQ(FakeApp.sent.size(), 4u);
    EXPECT_EQ(FakeApp.sent[1].id, 0x250u);
    EXPECT_EQ(FakeApp.sent[2].data, (BYTES_T{0xFD, 0x05})) << "the event channel before the response channel";
    EXPECT_EQ(FakeApp.sent[3].data, OK);
    EXPECT_EQ(XcpCan_TxPendingOnMsgObj[1], 0);
}

TEST_F(XcpCore, EveryResponseWritesItsReservedBytes)
{
    Connect();
    // Whatever an earlier use left in the response buffer.
    memset(&XcpCan0_QueueBuffers[XcpCan0_ChannelCfg[XCP_TX_CRM_CHANNEL].idxStart], 0xAA, sizeof(XcpCan_QueueBuf_t));
    EXPECT_EQ(Ask({0xFA, 200}), (BYTES_T{0xFF, 0, 0, 0, 0, 0, 0, 0}));
    memset(&XcpCan0_QueueBuffers[XcpCan0_ChannelCfg[XCP_TX_CRM_CHANNEL].idxStart], 0xAA, sizeof(XcpCan_QueueBuf_t));
    EXPECT_EQ(Ask({0xFD}), (BYTES_T{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00}));
    memset(&XcpCan0_QueueBuffers[XcpCan0_ChannelCfg[XCP_TX_CRM_CHANNEL].idxStart], 0xAA, sizeof(XcpCan_QueueBuf_t));
    EXPECT_EQ(Ask({0xFB}), (BYTES_T{0xFF, 0x00, 0x01, 0x00, 0xFF, 0x64, 0x00, 0x10}));
    memset(&XcpCan0_QueueBuffers[XcpCan0_ChannelCfg[XCP_TX_CRM_CHANNEL].idxStart], 0xAA, sizeof(XcpCan_QueueBuf_t));
    EXPECT_EQ(Ask({0xF2, 0xFE, 0, 0}), (BYTES_T{0xFF, 0x00, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00}));
    // A short command reads as zeros behind its end, not as the bytes of whatever held
    // its slot of the ring before.
    for (int slot = 0; slot < 4; slot++) ASSERT_EQ(SetMta(0x123), OK);
    EXPECT_EQ(Ask({0xF6}), Error(0x22)) << "SET_MTA without its address is address 0";
}

TEST_F(XcpCore, DaqListIdentifiers)
{
    Connect();
    EXPECT_EQ(Ask({0xF2, 0xFE, 3, 0}), Error(0x22)) << "no fourth list";
    EXPECT_EQ(Ask({0xF2, 0xFD, 0, 0, 0x50, 0x02, 0, 0}), Error(0x22)) << "no list allocated";
    Xcp_Sessions[0].numDynDaqLists = 2;
    EXPECT_EQ(Ask({0xF2, 0xFD, 0, 0, 0x34, 0x12, 0x00, 0x80}), OK) << "29-bit";
    EXPECT_EQ(Ask({0xF2, 0xFE, 0, 0}), (BYTES_T{0xFF, 0x00, 0x00, 0x00, 0x34, 0x12, 0x00, 0x80}));
    EXPECT_EQ(Ask({0xF2, 0xFD, 1, 0, 0xFF, 0x07, 0, 0}), OK) << "11-bit";
    EXPECT_EQ(Ask({0xF2, 0xFD, 1, 0, 0x00, 0x08, 0, 0}), Error(0x22)) << "0x800 without bit 31";
    EXPECT_EQ(Ask({0xF2, 0xFD, 1, 0, 0x00, 0x00, 0x00, 0xA0}), Error(0x22)) << "bits 31 and 29";
    EXPECT_EQ(Ask({0xF2, 0xFD, 2, 0, 0x50, 0x02, 0, 0}), Error(0x22)) << "list 2 not allocated";
    EXPECT_EQ(Ask({0xF2, 0xFC}), Error(0x20)) << "unknown transport command";
    Xcp_ResetDaqList(0, 0);
    EXPECT_EQ(Ask({0xF2, 0xFE, 0, 0}), (BYTES_T{0xFF, 0x00, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF2, 0xFE, 1, 0}), (BYTES_T{0xFF, 0x00, 0x00, 0x00, 0xFF, 0x07, 0x00, 0x00}));

    EXPECT_TRUE(Xcp_CheckCanId(0x000));
    EXPECT_TRUE(Xcp_CheckCanId(0x7FF));
    EXPECT_FALSE(Xcp_CheckCanId(0x800));
    EXPECT_TRUE(Xcp_CheckCanId(0x9FFFFFFF));
    EXPECT_FALSE(Xcp_CheckCanId(0xC0000000));
    EXPECT_FALSE(Xcp_CheckCanId(0xFFFFFFFF));
}

// ---- Session and protection --------------------------------------------------------

TEST_F(XcpCore, BeforeConnectOnlyConnectAndTransportCommandsAreAnswered)
{
    EXPECT_TRUE(Send({0xFD}).empty()) << "GET_STATUS";
    EXPECT_TRUE(Send({0xF6, 0, 0, 0, 1, 0, 0, 0}).empty()) << "SET_MTA";
    EXPECT_TRUE(Send({0xC5}).empty());
    EXPECT_EQ(XcpCan_GetRxBuf(0, XCP_RX_CMD_CHANNEL), nullptr) << "dropped, not kept for later";
    EXPECT_EQ(Ask({0xF2, 0x10}), Error(0x20));
    Connect();
    EXPECT_EQ(FakeApp.connects, 1);
    // A second CONNECT answers the same and resets nothing.
    ASSERT_EQ(SetMta(0x100), OK);
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(0x100, 1)));
    EXPECT_EQ(Ask({0xFF, 0x01}), (BYTES_T{0xFF, 0x15, 0xC0, 8, 8, 0, 1, 1}));
    EXPECT_EQ(FakeApp.userConnects, 1);
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(0x101, 1)));
    EXPECT_EQ(FakeApp.disconnects, 0);
}

TEST_F(XcpCore, LockedResourcesAnswerAccessLockedWhetherServedOrNot)
{
    Connect();
    for (int pid = 0xC8; pid <= 0xF0; pid++)
        EXPECT_EQ(Ask({(uint8_t)pid}), Error(0x25)) << std::hex << pid;
    EXPECT_EQ(Ask({0xC5}), Error(0x20)) << "below the table: unknown, whatever is locked";
    EXPECT_EQ(Ask({0xF1}), Error(0x20)) << "USER_CMD needs no resource";
    EXPECT_EQ(Ask({0xF5, 0}), OK) << "reading needs no unlock";
    Xcp_Sessions[0].ctResourceProtection = 0;
    EXPECT_EQ(Ask({0xED, 1, 0, 0, 0, 0, 0, 0}), Error(0x20)) << "SHORT_DOWNLOAD unlocked";
    EXPECT_EQ(Ask({0xC8}), Error(0x20));
    EXPECT_EQ(Ask({0xC5}), Error(0x20));
    // DISCONNECT locks everything again and ends the session.
    EXPECT_EQ(Ask({0xFE}), OK);
    EXPECT_EQ(FakeApp.disconnects, 1);
    EXPECT_TRUE(Send({0xFD}).empty());
    Connect();
    EXPECT_EQ(Ask({0xFD}), (BYTES_T{0xFF, 0x00, 0x1D, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xED, 1, 0, 0, 0, 0, 0, 0}), Error(0x25));
}

TEST_F(XcpCore, GetStatusRecomputesRunningListsAndHidesProgramming)
{
    Connect();
    Xcp_Sessions[0].sessionStatus = XCP_SESSION_STATE_PGM | XCP_SESSION_STATE_STORE_CAL;
    Xcp_Sessions[0].sessionCfgId = 0x1234;
    Xcp0_DaqStates[2].daqListMode = XCP_DAQLISTMODE_RUNNING;
    EXPECT_EQ(Ask({0xFD}), (BYTES_T{0xFF, 0x41, 0x1D, 0x00, 0x34, 0x12}));
    EXPECT_EQ(Ask({0xFE}), Error(0x12)) << "no DISCONNECT while programming";
    Xcp0_DaqStates[2].daqListMode = 0;
    Xcp_Sessions[0].sessionStatus = 0;
    EXPECT_EQ(Ask({0xFD}), (BYTES_T{0xFF, 0x00, 0x1D, 0x00, 0x34, 0x12}));
    EXPECT_EQ(Ask({0xFC}), Error(0x00)) << "SYNCH";
    // A DISCONNECT resets the lists, their entries and their identifiers.
    Xcp_Sessions[0].numDynDaqLists = 1;
    Xcp0_DaqStates[0].daqListMode = XCP_DAQLISTMODE_RUNNING | XCP_DAQLISTMODE_SELECTED;
    Xcp0_OdtEntryCfgs[3] = 4;
    ASSERT_EQ(Ask({0xF2, 0xFD, 0, 0, 0x50, 0x02, 0, 0}), OK);
    EXPECT_EQ(Ask({0xFE}), OK);
    EXPECT_EQ(Xcp0_DaqStates[0].daqListMode, 0);
    EXPECT_EQ(Xcp0_OdtEntryCfgs[3], 0);
    EXPECT_EQ(Xcp_Sessions[0].numDynDaqLists, 0);
    EXPECT_EQ(Xcp_Sessions[0].sessionCfgId, 0);
    EXPECT_EQ(XcpCan0_DynDaqMsgIds[0], XCPCAN_INVALID_MSGID);
}

TEST_F(XcpCore, GetIdPointsTheMtaAtEachValue)
{
    Connect();
    EXPECT_EQ(Ask({0xFA, 0}), (BYTES_T{0xFF, 0, 0, 0, 5, 0, 0, 0}));
    EXPECT_EQ(Ask({0xF5, 5}), Positive(Mem(600, 5)));
    EXPECT_EQ(Ask({0xFA, 128}), (BYTES_T{0xFF, 0, 0, 0, 2, 0, 0, 0}));
    EXPECT_EQ(Ask({0xF5, 2}), Positive(Mem(650, 2)));
    EXPECT_EQ(Ask({0xFA, 129}), (BYTES_T{0xFF, 0, 0, 0, 4, 0, 0, 0}));
    EXPECT_EQ(Ask({0xF5, 4}), Positive(Mem(700, 4)));
    EXPECT_EQ(Ask({0xFA, 130}), (BYTES_T{0xFF, 0, 0, 0, 0, 0, 0, 0})) << "no ECU address: length 0";
    // Type 1 sets the MTA to 0, which SET_MTA refuses.
    EXPECT_EQ(Ask({0xFA, 1}), (BYTES_T{0xFF, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Ask({0xF5, 3}), Positive(Mem(0, 3)));
    ASSERT_EQ(SetMta(300), OK);
    EXPECT_EQ(SetMta(0), Error(0x22));
    EXPECT_EQ(Ask({0xFA, 200}), (BYTES_T{0xFF, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(300, 1))) << "neither SET_MTA 0 nor an unknown type moved the MTA";
}

TEST_F(XcpCore, SetRequest)
{
    Connect();
    EXPECT_EQ(Ask({0xF9, 0x00, 0, 0}), OK);
    EXPECT_EQ(Ask({0xF9, 0x05, 0, 0}), Error(0x22));
    EXPECT_EQ(Ask({0xF9, 0x09, 0, 0}), Error(0x22));
    EXPECT_EQ(Ask({0xF9, 0x01, 0, 0}), OK) << "no segment in freeze mode";
    Xcp0_SegStates[0].mode = XCP_SEGMODE_FREEZE;
    EXPECT_EQ(Ask({0xF9, 0x01, 0, 0}), Error(0x23)) << "freezing is refused";
    EXPECT_EQ(Xcp_Sessions[0].sessionStatus & XCP_SESSION_STATE_STORE_CAL, 0);
    // A slow freeze: the request waits, then finishes without freezing again.
    FakeApp.freezeResult = CALMEM_BUSY;
    EXPECT_TRUE(Send({0xF9, 0x01, 0, 0}).empty());
    EXPECT_TRUE(Xcp0_SegStates[0].mode & XCP_SEGMODE_FREEZE_PENDING);
    FakeApp.sent.clear();
    Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 1u);
    EXPECT_EQ(FakeApp.sent[0].data, OK);
    EXPECT_EQ(Xcp0_SegStates[0].mode, XCP_SEGMODE_FREEZE);
}

TEST_F(XcpCore, ABusyCommandKeepsItsPlaceAndReportsPendingEvery21Passes)
{
    Connect();
    ASSERT_EQ(SetMta(5), OK);
    FakeApp.busyPasses = 50;
    In(0x200, {0xF5, 3});
    In(0x200, {0xFC});
    std::vector<int> events;
    FakeApp.sent.clear();
    for (int pass = 1; pass <= 50; pass++) {
        Xcp_CmdProcessor();
        for (const FAKE_FRAME_T& f : FakeApp.sent) {
            EXPECT_EQ(f.data, (BYTES_T{0xFD, 0x05})) << "pass " << pass;
            events.push_back(pass);
        }
        FakeApp.sent.clear();
    }
    EXPECT_EQ(events, (std::vector<int>{21, 42}));
    Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 1u);
    EXPECT_EQ(FakeApp.sent[0].data, Positive(Mem(5, 3)));
    FakeApp.sent.clear();
    Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 1u);
    EXPECT_EQ(FakeApp.sent[0].data, Error(0x00)) << "the SYNCH waited its turn";
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(8, 1))) << "the MTA moved once";
}

TEST_F(XcpCore, ABlockRemainderLastsOnlyUntilAnotherCommand)
{
    Connect();
    Xcp_Sessions[0].downloadRemainBytes = 4;
    Xcp_Sessions[0].prevCmd = XCP_CMD_DOWNLOAD;
    EXPECT_EQ(Ask({0xEF, 4}), Error(0x25));
    EXPECT_EQ(Xcp_Sessions[0].downloadRemainBytes, 4) << "DOWNLOAD_NEXT continues a DOWNLOAD";
    EXPECT_EQ(Ask({0xFD}).size(), 6u);
    EXPECT_EQ(Xcp_Sessions[0].downloadRemainBytes, 0);
}

// ---- Memory commands ---------------------------------------------------------------

TEST_F(XcpCore, UploadSendsOneFrameEachPass)
{
    Connect();
    ASSERT_EQ(SetMta(1), OK);
    In(0x200, {0xF5, 20});
    for (int frame = 0; frame < 3; frame++) {
        FakeApp.sent.clear();
        Xcp_CmdProcessor();
        ASSERT_EQ(FakeApp.sent.size(), 1u) << frame;
        EXPECT_EQ(FakeApp.sent[0].data, Positive(Mem(1 + 7 * frame, frame < 2 ? 7 : 6)));
    }
    FakeApp.sent.clear();
    Xcp_CmdProcessor();
    EXPECT_TRUE(FakeApp.sent.empty());
    EXPECT_EQ(Ask({0xF5, 0}), OK) << "count 0";
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(21, 1)));
    ASSERT_EQ(SetMta(1020), OK);
    EXPECT_EQ(Ask({0xF5, 7}), Error(0x24)) << "past the end of the memory";
    ASSERT_EQ(SetMta(10), OK);
    FakeApp.forced = CALMEM_REJECTED;
    EXPECT_EQ(Ask({0xF5, 1}), Error(0x10));
}

TEST_F(XcpCore, ShortUpload)
{
    Connect();
    EXPECT_EQ(Ask({0xF4, 7, 0, 0, 0x23, 0x01, 0, 0}), Positive(Mem(0x123, 7)));
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(0x12A, 1)));
    EXPECT_EQ(Ask({0xF4, 1, 0, 0, 0, 0, 0, 0}), Error(0x22)) << "address 0";
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(0x12B, 1))) << "the MTA stayed";
    EXPECT_EQ(Ask({0xF4, 8, 0, 0, 0xF4, 0x01, 0, 0}), Error(0x22)) << "eight bytes do not fit";
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(500, 1))) << "the MTA moved all the same";
}

TEST_F(XcpCore, BuildChecksum)
{
    Connect();
    FakeApp.memory[10] = 1;
    FakeApp.memory[11] = 2;
    FakeApp.memory[12] = 255;
    ASSERT_EQ(SetMta(10), OK);
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 3, 0, 0, 0}), (BYTES_T{0xFF, 0x01, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF5, 1}), Positive(Mem(13, 1))) << "the MTA moved past the block";
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 0, 0, 1, 0}), (BYTES_T{0xFE, 0x22, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 0, 0, 0, 0}), (BYTES_T{0xFF, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}));
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 0xFF, 0xFF, 0, 0}), (BYTES_T{0xFE, 0x22, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00}))
        << "a block past the end of the memory";
    FakeApp.forced = CALMEM_REJECTED;
    EXPECT_EQ(Ask({0xF3, 0, 0, 0, 1, 0, 0, 0}), Error(0x10));
}

// ---- Seed and key ------------------------------------------------------------------

// 32-bit FNV-1a, as the protocol between master and slave defines the key.
uint32_t Fnv1a(const BYTES_T& bytes)
{
    uint32_t hash = 2166136261u;
    for (uint8_t b : bytes) {
        hash ^= b;
        hash *= 16777619u;
    }
    return hash;
}

// The secret a resource is keyed with: the build's, unless the build kept the library's
// own project id.
uint32_t SecretOf(uint8_t resource)
{
    const bool builtIn = XcpProjectId == XCP_DEFAULT_PROJECT_ID;
    switch (resource) {
    case 0x01: return builtIn ? XcpLibrarySecrets[0] : XcpCALSecret;
    case 0x04: return builtIn ? XcpLibrarySecrets[1] : XcpDAQSecret;
    case 0x08: return builtIn ? XcpLibrarySecrets[2] : XcpSTIMSecret;
    default: return builtIn ? XcpLibrarySecrets[3] : XcpPGMSecret;
    }
}

// The key a master answers a seed with: secret most significant byte first, the seed,
// the resource; the hash most significant byte first.
BYTES_T KeyFor(uint8_t resource, const BYTES_T& seed)
{
    const uint32_t s = SecretOf(resource);
    BYTES_T in = {(uint8_t)(s >> 24), (uint8_t)(s >> 16), (uint8_t)(s >> 8), (uint8_t)s};
    in.insert(in.end(), seed.begin(), seed.end());
    in.push_back(resource);
    const uint32_t h = Fnv1a(in);
    return {(uint8_t)(h >> 24), (uint8_t)(h >> 16), (uint8_t)(h >> 8), (uint8_t)h};
}

class XcpSeedKey : public XcpCore {
protected:
    // GET_SEED mode 0: the six seed bytes.
    static BYTES_T Seed(uint8_t resource)
    {
        const BYTES_T r = Ask({0xF8, 0, resource});
        EXPECT_EQ(r.size(), 8u);
        if (r.size() != 8 || r[0] != 0xFF || r[1] != 6) return {};
        return BYTES_T(r.begin() + 2, r.end());
    }
    static BYTES_T Unlock(const BYTES_T& key, uint8_t length)
    {
        BYTES_T cmd = {0xF7, length};
        cmd.insert(cmd.end(), key.begin(), key.end());
        return Ask(cmd);
    }
    static BYTES_T Unlock(const BYTES_T& key) { return Unlock(key, (uint8_t)key.size()); }
    static BYTES_T Status() { return Ask({0xFD}); }
};

TEST_F(XcpSeedKey, TheKeyIsTheHashOfSecretSeedAndResourceForEachResource)
{
    const uint8_t order[] = {0x01, 0x04, 0x08, 0x10};
    for (uint32_t t : {0u, 1234u, 0xFFFFFFFFu}) {
        Connect();
        uint8_t locked = 0x1D;
        for (uint8_t resource : order) {
            FakeApp.timestamp = t + resource;
            const BYTES_T seed = Seed(resource);
            ASSERT_EQ(seed.size(), 6u);
            // The project id, then two numbers of rand seeded by the clock.
            EXPECT_EQ(seed[0], XcpProjectId >> 8);
            EXPECT_EQ(seed[1], XcpProjectId & 0xFF);
            srand(t + resource);
            const int r1 = rand(), r2 = rand();
            EXPECT_EQ(seed, (BYTES_T{seed[0], seed[1], (uint8_t)r1, (uint8_t)(r1 >> 8), (uint8_t)r2,
                                     (uint8_t)(r2 >> 8)}));
            locked &= (uint8_t)~resource;
            EXPECT_EQ(Unlock(KeyFor(resource, seed)), (BYTES_T{0xFF, locked})) << (int)resource << " at " << t;
        }
        EXPECT_EQ(Status(), (BYTES_T{0xFF, 0x00, 0x00, 0x00, 0x00, 0x00}));
        EXPECT_EQ(Ask({0xFE}), OK);
    }
}

TEST(XcpSecrets, TheBuildsSettingsReachTheLibraryInOrder)
{
    const std::string id = XCP_BUILD_PROJECT_ID, secrets = XCP_BUILD_SECRETS;
    if (id.empty()) {
        EXPECT_EQ(XcpProjectId, XCP_DEFAULT_PROJECT_ID);
        EXPECT_EQ(XcpResourceSecret(XCP_RESOURCE_PGM), XcpLibrarySecrets[3]);
        return;
    }
    // Decimal or 0x hex, as the build takes them; a leading zero is not octal.
    auto number = [](const std::string& text) {
        const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
        return (uint32_t)strtoul(text.c_str(), nullptr, hex ? 16 : 10);
    };
    EXPECT_EQ(XcpProjectId, number(id));
    std::vector<uint32_t> values;
    for (size_t at = 0, comma; at <= secrets.size(); at = comma + 1) {
        comma = secrets.find(',', at);
        if (comma == std::string::npos) comma = secrets.size();
        values.push_back(number(secrets.substr(at, comma - at)));
    }
    EXPECT_EQ(values, (std::vector<uint32_t>{XcpCALSecret, XcpDAQSecret, XcpSTIMSecret, XcpPGMSecret}));
    EXPECT_EQ(XcpResourceSecret(XCP_RESOURCE_STIM), XcpSTIMSecret);
    EXPECT_EQ(XcpResourceSecret(0x02), 0u);
}

TEST_F(XcpSeedKey, GetSeedByModeAndResource)
{
    Connect();
    EXPECT_EQ(Ask({0xF8, 1, 0}), Error(0x29)) << "the rest of a seed never begun";
    EXPECT_EQ(Ask({0xF7, 4, 1, 2, 3, 4}), Error(0x29)) << "a key before any seed";
    EXPECT_EQ(Ask({0xF8, 0, 0x05}), Error(0x22)) << "two resources";
    EXPECT_EQ(Ask({0xF8, 0, 0x00}), Error(0x22));
    EXPECT_EQ(Ask({0xF8, 0, 0x02}), (BYTES_T{0xFF, 0})) << "a bit that is never locked";
    const BYTES_T seed = Seed(0x01);
    ASSERT_EQ(seed.size(), 6u);
    EXPECT_EQ(Ask({0xF8, 1, 0}), Error(0x29)) << "the seed went whole in one frame";
    ASSERT_EQ(Unlock(KeyFor(0x01, seed)), (BYTES_T{0xFF, 0x1C}));
    EXPECT_EQ(Ask({0xF8, 0, 0x01}), (BYTES_T{0xFF, 0})) << "unlocked: no seed";
    // A DISCONNECT locks all again.
    EXPECT_EQ(Ask({0xFE}), OK);
    Connect();
    EXPECT_EQ(Status()[2], 0x1D);
    EXPECT_EQ(Seed(0x01).size(), 6u);
}

TEST_F(XcpSeedKey, AWrongKeyOrLengthEndsTheSessionAndASeedServesOneAttempt)
{
    Connect();
    BYTES_T seed = Seed(0x01);
    BYTES_T key = KeyFor(0x01, seed);
    key[3] ^= 0x01;
    EXPECT_EQ(Unlock(key), Error(0x25));
    EXPECT_TRUE(Send({0xFD}).empty()) << "disconnected";

    Connect();
    seed = Seed(0x01);
    key = KeyFor(0x01, seed);
    EXPECT_EQ(Unlock(BYTES_T(key.begin(), key.begin() + 3)), Error(0x25)) << "three bytes of the right key";
    EXPECT_TRUE(Send({0xFD}).empty());

    // A key for an older seed, and a key replayed after its success.
    Connect();
    const BYTES_T old = KeyFor(0x04, Seed(0x04));
    FakeApp.timestamp = 99;
    seed = Seed(0x04);
    ASSERT_NE(KeyFor(0x04, seed), old);
    EXPECT_EQ(Unlock(old), Error(0x25));
    Connect();
    seed = Seed(0x04);
    ASSERT_EQ(Unlock(KeyFor(0x04, seed)), (BYTES_T{0xFF, 0x19}));
    EXPECT_EQ(Unlock(KeyFor(0x04, seed)), Error(0x29)) << "the replay needs a new seed";
    EXPECT_EQ(Status()[2], 0x19) << "and costs nothing";

    // Keys longer than a frame: the frames must count down exactly, and the whole is
    // compared by its length too.
    seed = Seed(0x10);
    EXPECT_EQ(Unlock({1, 2, 3, 4, 5, 6}, 10), (BYTES_T{0xFF, 0x19}));
    EXPECT_EQ(Unlock({7, 8, 9, 10, 11}, 5), Error(0x25)) << "4 were left, not 5";
    EXPECT_TRUE(Send({0xFD}).empty());
    Connect();
    seed = Seed(0x10);
    EXPECT_EQ(Unlock({1, 2, 3, 4, 5, 6}, 255), (BYTES_T{0xFF, 0x1D}));
    for (uint8_t left = 249; left > 6; left -= 6) ASSERT_EQ(Unlock({0, 0, 0, 0, 0, 0}, left), (BYTES_T{0xFF, 0x1D}));
    EXPECT_EQ(Unlock({0, 0, 0}), Error(0x25)) << "255 bytes are no key of 4";
    Connect();
    Seed(0x10);
    EXPECT_EQ(Unlock({}), Error(0x25)) << "nor is none";
    // After all that, the right key of a fresh seed still works.
    Connect();
    seed = Seed(0x10);
    EXPECT_EQ(Unlock(KeyFor(0x10, seed)), (BYTES_T{0xFF, 0x0D}));
}

// ---- Writing -----------------------------------------------------------------------

class XcpWrite : public XcpCore {
protected:
    void SetUp() override
    {
        XcpCore::SetUp();
        Connect();
        Xcp_Sessions[0].ctResourceProtection = 0;
    }
};

TEST_F(XcpWrite, DownloadWritesFromTheMtaInFramesAndBlocks)
{
    ASSERT_EQ(SetMta(100), OK);
    EXPECT_EQ(Ask({0xF0, 3, 0xA1, 0xA2, 0xA3}), OK);
    EXPECT_EQ(Ask({0xF0, 1, 0xA4}), OK) << "the MTA moved on";
    EXPECT_EQ(Mem(100, 5), (BYTES_T{0xA1, 0xA2, 0xA3, 0xA4, 104}));

    // A block of 10: six bytes and no answer, then four and the answer.
    ASSERT_EQ(SetMta(200), OK);
    EXPECT_TRUE(Send({0xF0, 10, 1, 2, 3, 4, 5, 6}).empty());
    EXPECT_EQ(Ask({0xEF, 4, 7, 8, 9, 10}), OK);
    EXPECT_EQ(Mem(200, 11), (BYTES_T{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 210}));

    // The longest block, 255 bytes in 43 frames.
    ASSERT_EQ(SetMta(300), OK);
    BYTES_T expected;
    for (int left = 255; left > 0; left -= 6) {
        BYTES_T frame = {(uint8_t)(left == 255 ? 0xF0 : 0xEF), (uint8_t)left};
        for (int i = 0; i < 6; i++) frame.push_back((uint8_t)(left + i));
        expected.insert(expected.end(), frame.begin() + 2, frame.begin() + 2 + (left < 6 ? left : 6));
        const std::vector<FAKE_FRAME_T> out = Send(frame);
        ASSERT_EQ(out.size(), left <= 6 ? 1u : 0u) << left;
    }
    EXPECT_EQ(Mem(300, 255), expected);

    // DOWNLOAD_MAX: seven bytes from byte 1.
    ASSERT_EQ(SetMta(600), OK);
    EXPECT_EQ(Ask({0xEE, 11, 12, 13, 14, 15, 16, 17}), OK);
    EXPECT_EQ(Mem(600, 8), (BYTES_T{11, 12, 13, 14, 15, 16, 17, (uint8_t)607}));
}

TEST_F(XcpWrite, DownloadNextMustContinueItsBlockWithTheCountLeft)
{
    EXPECT_EQ(Ask({0xEF, 4, 1, 2, 3, 4}), (BYTES_T{0xFE, 0x29, 0})) << "no block";
    ASSERT_EQ(SetMta(200), OK);
    EXPECT_TRUE(Send({0xF0, 10, 1, 2, 3, 4, 5, 6}).empty());
    EXPECT_EQ(Ask({0xEF, 3, 7, 8, 9}), (BYTES_T{0xFE, 0x29, 4}));
    EXPECT_EQ(Mem(206, 1), BYTES_T{206}) << "nothing of the wrong frame written";
    EXPECT_EQ(Ask({0xEF, 4, 7, 8, 9, 10}), OK) << "the right count still completes it";
    // Any other command abandons the rest.
    EXPECT_TRUE(Send({0xF0, 10, 1, 2, 3, 4, 5, 6}).empty());
    EXPECT_EQ(Ask({0xFD}).size(), 6u);
    EXPECT_EQ(Ask({0xEF, 4, 7, 8, 9, 10}), (BYTES_T{0xFE, 0x29, 0}));
}

TEST_F(XcpWrite, FailedWritesAnswerByTheirCause)
{
    ASSERT_EQ(SetMta(1020), OK);
    EXPECT_EQ(Ask({0xF0, 5, 1, 2, 3, 4, 5}), Error(0x24)) << "past the end of the memory";
    EXPECT_EQ(Mem(1020, 4), (BYTES_T{(uint8_t)1020, (uint8_t)1021, (uint8_t)1022, (uint8_t)1023}));
    ASSERT_EQ(SetMta(10), OK);
    FakeApp.forced = CALMEM_OUTOFRAM;
    EXPECT_EQ(Ask({0xF0, 1, 0}), Error(0x30));
    FakeApp.forced = CALMEM_REJECTED;
    EXPECT_EQ(Ask({0xEE, 0, 0, 0, 0, 0, 0, 0}), Error(0x10));
    // A failed middle frame ends the block.
    EXPECT_EQ(Ask({0xF0, 10, 1, 2, 3, 4, 5, 6}), Error(0x10));
    FakeApp.forced = CALMEM_FINISHED;
    EXPECT_EQ(Ask({0xEF, 4, 7, 8, 9, 10}), (BYTES_T{0xFE, 0x29, 0}));
    // A slow memory: the answer comes on the pass that finds the write done, and the MTA
    // moves once.
    ASSERT_EQ(SetMta(50), OK);
    FakeApp.busyPasses = 2;
    EXPECT_TRUE(Send({0xF0, 2, 0xB1, 0xB2}).empty());
    EXPECT_TRUE(Send({0xF0, 1, 0xB3}).empty()) << "waits behind the busy one";
    FakeApp.sent.clear();
    Xcp_CmdProcessor();
    Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 2u);
    EXPECT_EQ(Mem(50, 4), (BYTES_T{0xB1, 0xB2, 0xB3, 53}));

    // MODIFY_BITS is as the application answers it.
    EXPECT_EQ(Ask({0xEC, 0, 0xFF, 0xFF, 0, 0}), Error(0x24));
    FakeApp.pageCopyResult = CALMEM_FINISHED;
    EXPECT_EQ(Ask({0xEC, 0, 0xFF, 0xFF, 0, 0}), OK);
}

TEST_F(XcpWrite, PagesAndSegmentsAnswerAsTheApplicationDoes)
{
    EXPECT_EQ(Ask({0xE9}), (BYTES_T{0xFF, 2, 1}));
    EXPECT_EQ(Ask({0xEB, 0x80, 0, 1}), Error(0x27)) << "neither the ECU's nor the tool's page";
    EXPECT_EQ(Ask({0xEB, 0x03, 0, 1}), Error(0x27)) << "refused by the ECU side";
    FakeApp.ecuPageResult = CALPAGE_OK;
    FakeApp.toolPageResult = CALPAGE_PAGEINVALID;
    EXPECT_EQ(Ask({0xEB, 0x03, 0, 1}), Error(0x26));
    FakeApp.toolPageResult = CALPAGE_SEGINVALID;
    EXPECT_EQ(Ask({0xEB, 0x02, 0, 1}), Error(0x28));
    FakeApp.toolPageResult = CALPAGE_OK;
    EXPECT_EQ(Ask({0xEB, 0x02, 1, 7}), OK);
    EXPECT_EQ(Ask({0xEB, 0x02, 200, 5}), OK) << "an accepted segment that does not exist changes none";
    EXPECT_EQ(Ask({0xEA, 2, 0}), (BYTES_T{0xFF, 0, 0, 0}));
    EXPECT_EQ(Ask({0xEA, 2, 1}), (BYTES_T{0xFF, 0, 0, 7}));
    EXPECT_EQ(Ask({0xEB, 0x83, 0, 3}), OK);
    EXPECT_EQ(Ask({0xEA, 2, 0}), (BYTES_T{0xFF, 0, 0, 3})) << "all segments";
    FakeApp.ecuPage = 9;
    EXPECT_EQ(Ask({0xEA, 1, 1}), (BYTES_T{0xFF, 0, 0, 9}));
    EXPECT_EQ(Ask({0xEA, 3, 1}), Error(0x27));
    EXPECT_EQ(Ask({0xEA, 1, 2}), Error(0x28));

    EXPECT_EQ(Ask({0xE6, 1, 2}), Error(0x22));
    EXPECT_EQ(Ask({0xE5, 0, 2}), Error(0x22));
    Xcp0_SegStates[1].mode = XCP_SEGMODE_FREEZE_PENDING;
    EXPECT_EQ(Ask({0xE6, 0xFF, 1}), OK);
    EXPECT_EQ(Xcp0_SegStates[1].mode, XCP_SEGMODE_FREEZE) << "the low bit alone; a pending freeze is over";
    EXPECT_EQ(Ask({0xE5, 0, 1}), (BYTES_T{0xFF, 0, 1}));

    const std::pair<Xcp_CalMemState, BYTES_T> copies[] = {
        {CALMEM_FINISHED, OK},
        {CALMEM_REJECTED, Error(0x10)},
        {CALMEM_PAGENOTVALID, Error(0x26)},
        {CALMEM_SEGNOTVALID, Error(0x28)},
        {CALMEM_REQUESTNOTVALID, Error(0x23)},
        {CALMEM_OUTOFRAM, Error(0x23)},
    };
    for (const auto& [result, answer] : copies) {
        FakeApp.pageCopyResult = result;
        EXPECT_EQ(Ask({0xE4, 0, 0, 1, 0}), answer) << (int)result;
    }
    FakeApp.pageCopyResult = CALMEM_FINISHED;
    FakeApp.busyPasses = 1;
    EXPECT_TRUE(Send({0xE4, 0, 0, 1, 0}).empty());
    FakeApp.sent.clear();
    Xcp_CmdProcessor();
    ASSERT_EQ(FakeApp.sent.size(), 1u);
    EXPECT_EQ(FakeApp.sent[0].data, OK);
}

// ---- Measurement lists ---------------------------------------------------------------

class XcpDaq : public XcpWrite {
protected:
    static BYTES_T U16le(uint16_t v) { return {(uint8_t)v, (uint8_t)(v >> 8)}; }
    static BYTES_T AllocOdt(uint16_t list, uint8_t n) { return Ask({0xD4, 0, (uint8_t)list, (uint8_t)(list >> 8), n}); }
    static BYTES_T AllocEntries(uint16_t list, uint8_t odt, uint8_t n)
    {
        return Ask({0xD3, 0, (uint8_t)list, (uint8_t)(list >> 8), odt, n});
    }
    static BYTES_T Ptr(uint16_t list, uint8_t odt, uint8_t entry)
    {
        return Ask({0xE2, 0, (uint8_t)list, (uint8_t)(list >> 8), odt, entry});
    }
    static BYTES_T Write(uint32_t addr, uint8_t size, uint8_t bit = 0xFF)
    {
        return Ask({0xE1, bit, size, 0, (uint8_t)addr, (uint8_t)(addr >> 8), (uint8_t)(addr >> 16),
                    (uint8_t)(addr >> 24)});
    }
    static BYTES_T Mode(uint16_t list, uint8_t mode, uint16_t event, uint8_t prescaler = 1, uint8_t priority = 0)
    {
        return Ask({0xE0, mode, (uint8_t)list, (uint8_t)(list >> 8), (uint8_t)event, (uint8_t)(event >> 8), prescaler,
                    priority});
    }
    static BYTES_T StartStop(uint16_t list, uint8_t mode)
    {
        return Ask({0xDE, mode, (uint8_t)list, (uint8_t)(list >> 8)});
    }
};

TEST_F(XcpDaq, AllocationIsInOrderAndWithinTheTables)
{
    EXPECT_EQ(AllocOdt(0, 1), Error(0x29)) << "no list yet";
    EXPECT_EQ(AllocEntries(0, 0, 1), Error(0x29));
    EXPECT_EQ(Ask({0xD5, 0, 4, 0}), Error(0x30));
    EXPECT_EQ(Ask({0xD5, 0, 3, 0}), OK);
    EXPECT_EQ(AllocEntries(1, 0, 1), Error(0x29)) << "list without ODTs";
    EXPECT_EQ(AllocEntries(3, 0, 1), Error(0x22)) << "no such list";
    EXPECT_EQ(AllocOdt(3, 1), Error(0x22));
    EXPECT_EQ(AllocOdt(0, 9), Error(0x30));
    EXPECT_EQ(AllocOdt(0, 8), OK);
    EXPECT_EQ(AllocOdt(1, 2), OK);
    EXPECT_EQ(Ask({0xD5, 0, 3, 0}), Error(0x29)) << "lists have ODTs";
    EXPECT_EQ(AllocEntries(1, 2, 1), Error(0x22)) << "ODT 2 of 2";
    EXPECT_EQ(AllocEntries(1, 1, 8), Error(0x30));
    EXPECT_EQ(AllocEntries(1, 1, 7), OK);
    EXPECT_EQ(AllocOdt(2, 1), Error(0x29)) << "ODTs have entries";
    EXPECT_EQ(Ptr(1, 0, 0), Error(0x22)) << "ODT 0 of list 1 has no entries";
    EXPECT_EQ(Ptr(1, 1, 6), OK);
    EXPECT_EQ(Ask({0xD6}), OK);
    EXPECT_EQ(Write(100, 1), Error(0x23)) << "the pointer went with the lists";
    EXPECT_EQ(Ask({0xDF, 0, 0, 0}), Error(0x22)) << "no lists after FREE_DAQ";
    EXPECT_EQ(Ask({0xD5, 0, 1, 0}), OK);
    EXPECT_EQ(AllocOdt(0, 1), OK);
}

TEST_F(XcpDaq, WriteDaqFillsFromThePointerAndNeedsANewOneAfterTheLastEntry)
{
    ASSERT_EQ(Ask({0xD5, 0, 2, 0}), OK);
    ASSERT_EQ(AllocOdt(1, 2), OK);
    ASSERT_EQ(AllocEntries(1, 1, 3), OK);
    EXPECT_EQ(Write(100, 1), Error(0x23)) << "no SET_DAQ_PTR";
    EXPECT_EQ(Ptr(1, 1, 3), Error(0x22));
    EXPECT_EQ(Write(100, 1), Error(0x23)) << "a refused pointer leaves none";
    ASSERT_EQ(Ptr(1, 1, 0), OK);
    EXPECT_EQ(Write(100, 9), Error(0x22));
    EXPECT_EQ(Write(60, 1), OK);
    EXPECT_EQ(Write(1020, 8), Error(0x22)) << "past the end of the memory";
    EXPECT_EQ(Write(0xFFFFFFFC, 8), Error(0x22)) << "no wrap";
    EXPECT_EQ(Write(100, 2, 9), OK) << "bit 9: the next byte's bit 1";
    EXPECT_EQ(Write(300, 4), OK);
    EXPECT_EQ(Write(400, 1), Error(0x23)) << "ODT full";
    const U32 e = Xcp0_DaqConfigs[1].idxDaqStart + 7;
    EXPECT_EQ(Xcp0_OdtEntryCfgs[e], 1);
    EXPECT_EQ(Xcp0_OdtEntryAddrs[e + 1], 101u);
    EXPECT_EQ(Xcp0_OdtEntryCfgs[e + 1], 0x81);
    EXPECT_EQ(Xcp0_OdtEntryAddrs[e + 2], 300u);
    EXPECT_EQ(Xcp0_OdtEntryCfgs[e + 2], 4);
    EXPECT_EQ(Xcp0_DaqStates[1].maxOdtIdUsed, 1);

    EXPECT_EQ(Mode(1, 0x10, 0, 2), Error(0x22)) << "prescaler";
    EXPECT_EQ(Mode(1, 0x10, 0, 1, 1), Error(0x22)) << "priority";
    EXPECT_EQ(Mode(1, 0x10, 3), Error(0x22)) << "event";
    EXPECT_EQ(Mode(2, 0x10, 0), Error(0x22)) << "list";
    EXPECT_EQ(Mode(1, 0x12, 1), Error(0x27)) << "no STIM";
    EXPECT_EQ(Mode(1, 0x30, 2), OK) << "PID off ignored";
    EXPECT_EQ(Ask({0xDF, 0, 1, 0}), (BYTES_T{0xFF, 0x10, 0, 0, 2, 0, 1, 255}));
    EXPECT_EQ(StartStop(1, 3), Error(0x27));
    EXPECT_EQ(StartStop(1, 1), (BYTES_T{0xFF, 8}));
    EXPECT_EQ(Ptr(1, 1, 0), Error(0x11));
    EXPECT_EQ(Mode(1, 0x10, 1), Error(0x11));
    EXPECT_EQ(Ask({0xFD})[1] & 0x40, 0x40) << "GET_STATUS: running";

    // ODT 0 is empty: ODT 1 still goes out with its own PID, timestamp only in ODT 0.
    FakeApp.sent.clear();
    FakeApp.timestamp = 0x11223344;
    FakeApp.memory[101] = 0x02;
    EXPECT_EQ(Xcp_Event(2, 0), XCPEVENT_DAQSTIM_EXECUTED);
    ASSERT_EQ(FakeApp.sent.size(), 1u);
    EXPECT_EQ(FakeApp.sent[0].data, (BYTES_T{9, 60, 1, 44, 45, 46, 47}));
    // CLEAR_DAQ_LIST stops the list and empties it; the allocation stays.
    EXPECT_EQ(Ask({0xE3, 0, 1, 0}), OK);
    EXPECT_EQ(Xcp0_DaqStates[1].daqListMode & 0x40, 0);
    EXPECT_EQ(Ptr(1, 1, 2), OK);
    // An ODT whose first entry is unused sends nothing, whatever follows it.
    EXPECT_EQ(Write(60, 1), OK);
    EXPECT_EQ(StartStop(1, 1), (BYTES_T{0xFF, 8}));
    FakeApp.sent.clear();
    EXPECT_EQ(Xcp_Event(2, 0), XCPEVENT_DAQSTIM_NOT_EXECUTED);
    EXPECT_TRUE(FakeApp.sent.empty());
}

TEST_F(XcpDaq, ListsStartTogetherSampleOnTheirEventAndStopOnDisconnect)
{
    ASSERT_EQ(Ask({0xD5, 0, 3, 0}), OK);
    ASSERT_EQ(AllocOdt(0, 1), OK);
    ASSERT_EQ(AllocOdt(1, 1), OK);
    for (uint16_t list = 0; list < 2; list++) {
        ASSERT_EQ(AllocEntries(list, 0, 2), OK);
        ASSERT_EQ(Ptr(list, 0, 0), OK);
        ASSERT_EQ(Write(210 + list, 1), OK);
        ASSERT_EQ(Write(200, 4), OK) << "four bytes do not fit behind a timestamp";
        ASSERT_EQ(Mode(list, 0x10, 1), OK);
        ASSERT_EQ(StartStop(list, 2), (BYTES_T{0xFF, (uint8_t)(8 * list)}));
    }
    EXPECT_EQ(StartStop(2, 1), (BYTES_T{0xFF, 16})) << "list 2 started empty";
    FakeApp.sent.clear();
    EXPECT_EQ(Xcp_Event(1, 0), XCPEVENT_DAQSTIM_NOT_EXECUTED) << "only the empty list runs";
    EXPECT_TRUE(FakeApp.sent.empty());
    EXPECT_EQ(Ask({0xDD, 3}), Error(0x27));
    EXPECT_EQ(Ask({0xDD, 1}), OK);
    EXPECT_EQ(Xcp0_DaqStates[0].daqListMode, 0x50) << "running, selection cleared";
    FakeApp.sent.clear();
    FakeApp.timestamp = 0x0A0B0C0D;
    EXPECT_EQ(Xcp_Event(0, 0), XCPEVENT_DAQSTIM_NOT_EXECUTED) << "another event";
    EXPECT_EQ(Xcp_Event(1, 0), XCPEVENT_DAQSTIM_EXECUTED | XCPEVENT_DTO_OVERFILL);
    ASSERT_EQ(FakeApp.sent.size(), 2u);
    EXPECT_EQ(FakeApp.sent[0].data, (BYTES_T{0, 0x0D, 0x0C, 0x0B, 0x0A, 210}));
    EXPECT_EQ(FakeApp.sent[1].data, (BYTES_T{8, 0x0D, 0x0C, 0x0B, 0x0A, 211}));
    // Selected and stopped together too.
    EXPECT_EQ(StartStop(0, 2), (BYTES_T{0xFF, 0}));
    EXPECT_EQ(Ask({0xDD, 2}), OK);
    EXPECT_EQ(Xcp0_DaqStates[0].daqListMode, 0x10);
    EXPECT_EQ(Xcp0_DaqStates[1].daqListMode, 0x50);
    EXPECT_EQ(Ask({0xFE}), OK);
    for (const Xcp_Daq_t& state : Xcp0_DaqStates) EXPECT_EQ(state.daqListMode, 0);
    FakeApp.sent.clear();
    EXPECT_EQ(Xcp_Event(1, 0), XCPEVENT_DAQSTIM_NOT_EXECUTED);
    EXPECT_TRUE(FakeApp.sent.empty());
}

TEST_F(XcpDaq, InfoCommandsAndClock)
{
    FakeApp.timestamp = 0x01020304;
    EXPECT_EQ(Ask({0xDC}), (BYTES_T{0xFF, 0, 0, 0, 4, 3, 2, 1}));
    EXPECT_EQ(Ask({0xDA}), (BYTES_T{0xFF, 0x1D, 3, 0, 3, 0, 0, 0x30}));
    EXPECT_EQ(Ask({0xD9}), (BYTES_T{0xFF, 1, 8, 1, 8, 0x64, 1, 0}));
    EXPECT_EQ(Ask({0xD8, 0, 0, 0}), Error(0x22)) << "not allocated";
    ASSERT_EQ(Ask({0xD5, 0, 1, 0}), OK);
    EXPECT_EQ(Ask({0xD8, 0, 0, 0}), (BYTES_T{0xFF, 0x04, 0, 0, 0, 0}));
    EXPECT_EQ(Ask({0xD7, 0, 0, 0}), Error(0x20)) << "no event info";
}

// STIM: this dash has no list that can do it, so a configuration of the test's own,
// with a receive queue of its own, carries the reverse direction.
std::vector<Xcp_Packet_t> m_stimQueue;

Xcp_Packet_t* StimPeek(U32, U32, U32 peekIdx)
{
    return peekIdx < m_stimQueue.size() ? &m_stimQueue[peekIdx] : nullptr;
}

void StimNext(U32, U32)
{
    m_stimQueue.erase(m_stimQueue.begin());
}

TEST_F(XcpDaq, StimAppliesACompleteSetInOrderAndResynchronisesOnABrokenOne)
{
    constexpr Xcp_DaqCfg_t stimList[] = {{4, 2, 0, 7, XCP_DAQLISTPROPERTY_DAQ | XCP_DAQLISTPROPERTY_STIM, 0}};
    Xcp_SessionCfg_t cfg = Xcp_SessionConfigs[0];
    cfg.pDaqConfigs = stimList;
    cfg.pPeekRxBuf = StimPeek;
    cfg.pRxNext = StimNext;
    Xcp0_DaqDynConfigs[0] = {2, {2, 1}};
    Xcp0_OdtEntryAddrs[0] = 100, Xcp0_OdtEntryCfgs[0] = 2;
    Xcp0_OdtEntryAddrs[1] = 200, Xcp0_OdtEntryCfgs[1] = XCP_ODTENTRY_SINGLE_BIT | 6;
    Xcp0_OdtEntryAddrs[7] = 300, Xcp0_OdtEntryCfgs[7] = 4;
    Xcp0_DaqStates[0].daqListMode = XCP_DAQLISTMODE_DIRECTION | XCP_DAQLISTMODE_TIMESTAMP;
    const Xcp_Packet_t odt0 = {4, {9, 9, 9, 9, 0xA1, 0xA2, 1}}, odt1 = {5, {0xB1, 0xB2, 0xB3, 0xB4}};
    FakeApp.memory[200] = 0;

    m_stimQueue = {odt0};
    EXPECT_EQ(Xcp_StimProcessor(0, 0, &cfg), XCPEVENT_MISSING_DTO);
    EXPECT_EQ(m_stimQueue.size(), 1u) << "kept for the rest of its set";
    EXPECT_EQ(Mem(100, 2), (BYTES_T{100, 101}));
    m_stimQueue = {odt1, odt1, odt0, odt1};
    EXPECT_EQ(Xcp_StimProcessor(0, 0, &cfg), XCPEVENT_MISSING_DTO);
    EXPECT_EQ(m_stimQueue.size(), 2u) << "dropped up to the next set";
    EXPECT_EQ(Xcp_StimProcessor(0, 0, &cfg), XCPEVENT_DAQSTIM_EXECUTED);
    EXPECT_TRUE(m_stimQueue.empty());
    EXPECT_EQ(Mem(100, 2), (BYTES_T{0xA1, 0xA2}));
    EXPECT_EQ(FakeApp.memory[200], 0x40);
    EXPECT_EQ(Mem(300, 4), (BYTES_T{0xB1, 0xB2, 0xB3, 0xB4}));
    // Only the STIM side of the event runs a STIM list.
    Xcp_Sessions[0].numDynDaqLists = 1;
    Xcp0_DaqStates[0].daqListMode |= XCP_DAQLISTMODE_RUNNING;
    FakeApp.sent.clear();
    EXPECT_EQ(Xcp_DoDaqForEvent(0), XCPEVENT_DAQSTIM_NOT_EXECUTED);
    EXPECT_TRUE(FakeApp.sent.empty());
}

// ---- Programming -----------------------------------------------------------------------

TEST_F(XcpWrite, ProgrammingIsRefusedWithTheStandardsAnswers)
{
    EXPECT_EQ(Ask({0xD2}), Error(0x31));
    EXPECT_EQ(Ask({0xD0, 2, 1, 2}), Error(0x29));
    EXPECT_EQ(Ask({0xC9, 1, 2, 3, 4, 5, 6, 7}), Error(0x29));
    EXPECT_EQ(Ask({0xD1, 0, 0, 0, 16, 0, 0, 0}), Error(0x29));
    EXPECT_EQ(Ask({0xD1, 1, 0, 0, 16, 0, 0, 0}), Error(0x22)) << "functional clear";
    EXPECT_EQ(Ask({0xCB, 0, 0, 0, 0}), OK);
    EXPECT_EQ(Ask({0xCB, 0, 0, 1, 0}), Error(0x22));
    EXPECT_EQ(Ask({0xCC, 0, 0x10, 0}), Error(0x31));
    EXPECT_EQ(Ask({0xCA, 3}), (BYTES_T{0xFE, 0x29, 0}));
    for (uint8_t pid : {0xCE, 0xCD, 0xC8}) EXPECT_EQ(Ask({pid}), Error(0x20));
    EXPECT_EQ(Ask({0xCF}), Error(0x31));
    EXPECT_EQ(Ask({0xFD}), (BYTES_T{0xFF, 0, 0, 0, 0, 0})) << "still connected";
    EXPECT_EQ(Ask({0xFE}), OK) << "DISCONNECT never blocked";
}

TEST_F(XcpWrite, AnApplicationThatProgramsGetsASequence)
{
    FakeApp.programResult = PROGRAM_REJECTED;
    EXPECT_EQ(Ask({0xD2}), Error(0x10));
    FakeApp.programResult = PROGRAM_FINISHED;
    EXPECT_EQ(Ask({0xD2}), (BYTES_T{0xFF, 0, 0x41, 8, 255, 100, 0}));
    ASSERT_EQ(SetMta(0x40), OK);
    EXPECT_TRUE(Send({0xD0, 8, 1, 2, 3, 4, 5, 6}).empty()) << "a block's first frame";
    EXPECT_EQ(Ask({0xCA, 3, 7, 8}), (BYTES_T{0xFE, 0x29, 2}));
    EXPECT_EQ(Ask({0xD0, 1, 9}), Error(0x29)) << "the wrong count closed the sequence";
    EXPECT_EQ(Ask({0xD2}), (BYTES_T{0xFF, 0, 0x41, 8, 255, 100, 0}));
    EXPECT_TRUE(Send({0xD0, 8, 1, 2, 3, 4, 5, 6}).empty());
    EXPECT_EQ(Ask({0xCA, 2, 7, 8}), OK);
    EXPECT_EQ(Xcp_Sessions[0].mta, 0x40u + 6 + 8) << "the broken block's first frame stands";
    EXPECT_EQ(FakeApp.programmed, (BYTES_T{1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(Ask({0xFE}), Error(0x12));
    FakeApp.programResult = PROGRAM_BADADDRESS;
    EXPECT_EQ(Ask({0xD1, 0, 0, 0, 16, 0, 0, 0}), Error(0x24));
    EXPECT_EQ(Ask({0xC9, 1, 2, 3, 4, 5, 6, 7}), Error(0x29)) << "the failed clear closed it";
    FakeApp.programResult = PROGRAM_FINISHED;
    EXPECT_EQ(Ask({0xCF}), OK);
    EXPECT_TRUE(Send({0xFD}).empty()) << "PROGRAM_RESET disconnects";
}

// ---- A stored DAQ setup --------------------------------------------------------------

TEST_F(XcpCore, ADaqSetupStoredBySetRequestResumesAtStartAndSamples)
{
    FakeApp.nvKept = true;
    Connect();
    // List 1: ODT 0 with a word, a bit and a byte that will not fit behind the
    // timestamp; ODT 1 with a long word.
    Xcp_Sessions[0].numDynDaqLists = 2;
    Xcp0_DaqDynConfigs[1] = {2, {3, 1}};
    const U32 e = Xcp0_DaqConfigs[1].idxDaqStart;
    const U32 n = Xcp0_DaqConfigs[1].numOdtEntries;
    Xcp0_OdtEntryAddrs[e + 0] = 100, Xcp0_OdtEntryCfgs[e + 0] = 2;
    Xcp0_OdtEntryAddrs[e + 1] = 200, Xcp0_OdtEntryCfgs[e + 1] = XCP_ODTENTRY_SINGLE_BIT | 3;
    Xcp0_OdtEntryAddrs[e + 2] = 300, Xcp0_OdtEntryCfgs[e + 2] = 1;
    Xcp0_OdtEntryAddrs[e + n] = 400, Xcp0_OdtEntryCfgs[e + n] = 4;
    Xcp0_DaqStates[1] = {XCP_DAQLISTMODE_SELECTED | XCP_DAQLISTMODE_TIMESTAMP, 1, 2};
    ASSERT_EQ(Ask({0xF2, 0xFD, 1, 0, 0x23, 0x01, 0, 0}), OK);
    EXPECT_EQ(Ask({0xF9, 0x04, 0x21, 0x43}), OK);
    EXPECT_EQ(Xcp0_DaqStates[1].daqListMode, XCP_DAQLISTMODE_RESUME | XCP_DAQLISTMODE_TIMESTAMP);

    FakeApp.sent.clear();
    FakeApp.timestamp = 0x01020304;
    Xcp_Initialize();
    ASSERT_EQ(FakeApp.sent.size(), 1u);
    EXPECT_EQ(FakeApp.sent[0].data, (BYTES_T{0xFD, 0x00, 0x21, 0x43, 0x04, 0x03, 0x02, 0x01}));
    EXPECT_TRUE(Send({0xFD}).empty()) << "lists run, but the master has to connect";
    Connect();
    EXPECT_EQ(Ask({0xFD}), (BYTES_T{0xFF, 0xC0, 0x1D, 0x00, 0x21, 0x43}));
    EXPECT_EQ(Ask({0xF2, 0xFE, 1, 0}), (BYTES_T{0xFF, 0x00, 0x00, 0x00, 0x23, 0x01, 0x00, 0x00}));

    FakeApp.sent.clear();
    EXPECT_EQ(Xcp_Event(1, 0), XCPEVENT_DAQSTIM_NOT_EXECUTED) << "another event";
    const U32 flags = Xcp_Event(2, 0);
    EXPECT_EQ(flags, XCPEVENT_DAQSTIM_EXECUTED | XCPEVENT_DTO_OVERFILL);
    ASSERT_EQ(FakeApp.sent.size(), 2u);
    const uint8_t bit3 = (FakeApp.memory[200] >> 3) & 1;
    EXPECT_EQ(FakeApp.sent[0].id, 0x123u);
    EXPECT_EQ(FakeApp.sent[0].data, (BYTES_T{8, 0x04, 0x03, 0x02, 0x01, 100, 101, bit3}));
    EXPECT_EQ(FakeApp.sent[1].data, (BYTES_T{9, 144, 145, 146, 147}));

    // Cleared, the image resumes nothing.
    EXPECT_EQ(Ask({0xF9, 0x08, 0, 0}), OK);
    FakeApp.sent.clear();
    Xcp_Initialize();
    EXPECT_TRUE(FakeApp.sent.empty());
    EXPECT_EQ(Xcp0_DaqStates[1].daqListMode, 0);
}

}  // namespace
