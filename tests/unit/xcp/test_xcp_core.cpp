// The XCP library on its own, against a fake application: the transport's queues and
// routing, the core's session and protection, the memory commands, and a resumed DAQ
// setup sampled on its event.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

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
