#include "xcp_can.h"

#include <cstring>

#include "xcp_callbacks.h"
#include "xcp_core.h"

// The channels' buffers lie one after the other in one array: commands, events,
// responses, and eight for each DAQ list, one for each of its ODTs.
constexpr XcpCan_ChannelCfg_t XcpCan0_ChannelCfg[XCP0_CAN_NUM_CHANNELS] = {
    {0, 3, XCP0_CAN_RX_MSGID, XCPCAN_NO_MSGOBJ},
    {4, 4, XCP0_CAN_TX_MSGID, 1},
    {5, 5, XCP0_CAN_TX_MSGID, 1},
    {6, 13, XCP0_CAN_DYNDAQ_MSGID, 1},
    {14, 21, XCP0_CAN_DYNDAQ_MSGID, 1},
    {22, 29, XCP0_CAN_DYNDAQ_MSGID, 1},
};
static_assert([] {
    U32 next = 0;
    for (const XcpCan_ChannelCfg_t& c : XcpCan0_ChannelCfg) {
        if (c.idxStart != next || c.idxEnd < c.idxStart) return false;
        next = c.idxEnd + 1;
    }
    return next == XCP0_CAN_QUEUEALL_NUMBUF;
}(), "the channels share the buffers without gap or overlap");

// As XcpCan_Initialize leaves them, so that a pass before it finds empty queues.
#define XCPCAN_START(c) {XcpCan0_ChannelCfg[c].idxStart, XcpCan0_ChannelCfg[c].idxStart}
constinit XcpCan_QueuePos_t XcpCan0_QueuePositions[XCP0_CAN_NUM_CHANNELS] = {
    XCPCAN_START(0), XCPCAN_START(1), XCPCAN_START(2), XCPCAN_START(3), XCPCAN_START(4), XCPCAN_START(5),
};
#undef XCPCAN_START
XcpCan_QueueBuf_t XcpCan0_QueueBuffers[XCP0_CAN_QUEUEALL_NUMBUF];
XcpCan_QueueBufProps_t XcpCan0_QueueBufferStates[XCP0_CAN_QUEUEALL_NUMBUF];
constinit XcpCan_DynDaqMsgId_t XcpCan0_DynDaqMsgIds[XCP0_CAN_NUM_DYNDAQ] = {
    XCPCAN_INVALID_MSGID, XCPCAN_INVALID_MSGID, XCPCAN_INVALID_MSGID};
XcpCan_Session_t XcpCan0_Session;
U8 XcpCan_TxPendingOnMsgObj[XCP_CAN_MAX_TXMSGOBJID + 1];

constinit const XcpCan_SessionCfg_t XcpCan0_SessionCfg = {
    .pChannelCfgs = XcpCan0_ChannelCfg,
    .pQueuePositions = XcpCan0_QueuePositions,
    .pQueueBuffers = XcpCan0_QueueBuffers,
    .pQueueBufferStates = XcpCan0_QueueBufferStates,
    .pDynDaqMsgIds = XcpCan0_DynDaqMsgIds,
    .broadcastMsgId = XCP0_CAN_BROADCAST_MSGID,
    .numChannels = XCP0_CAN_NUM_CHANNELS,
    .firstRxStimChannel = XCP0_CAN_NUM_CHANNELS,
    .lastTxChannel = XCP0_CAN_NUM_CHANNELS - 1,
};

namespace {

constexpr U8 XCP_SIGNATURE[3] = {'X', 'C', 'P'};

}  // namespace

static const XcpCan_SessionCfg_t& _cfg(U32 sessionId)
{
    return *Xcp_SessionConfigs[sessionId].pTransportCfg;
}

static U8 _state(const XcpCan_SessionCfg_t& cfg, U32 idx)
{
    return cfg.pQueueBufferStates[idx] & XCPCAN_STATE_MASK;
}

// On its way to the bus; the length stays in the high bits.
static void _markInProgress(const XcpCan_SessionCfg_t& cfg, U32 idx)
{
    cfg.pQueueBufferStates[idx] = (U8)((cfg.pQueueBufferStates[idx] & 0xF0) | XCPCAN_TXINPROGRESS);
}

static U32 _next(const XcpCan_ChannelCfg_t& ch, U32 idx)
{
    return idx >= ch.idxEnd ? ch.idxStart : idx + 1;
}

// Whether the DAQ list of a channel has an identifier of its own. Every list of this
// system is dynamic, so list n has the n-th identifier word.
static bool _ownDaqMsgId(const XcpCan_SessionCfg_t& cfg, U32 channelId, U32* msgId)
{
    if (channelId < XCP_FIRST_DAQ_CHANNEL) return false;
    const U32 list = channelId - XCP_FIRST_DAQ_CHANNEL;
    if (list >= XCP0_CAN_NUM_DYNDAQ || cfg.pDynDaqMsgIds[list] == XCPCAN_INVALID_MSGID) return false;
    *msgId = cfg.pDynDaqMsgIds[list];
    return true;
}

// The identifier a channel transmits on.
static U32 _txMsgId(const XcpCan_SessionCfg_t& cfg, U32 channelId)
{
    U32 msgId = cfg.pChannelCfgs[channelId].msgId;
    if (msgId == XCPCAN_INVALID_MSGID) msgId = cfg.pChannelCfgs[XCP_TX_CRM_CHANNEL].msgId;
    _ownDaqMsgId(cfg, channelId, &msgId);
    return msgId;
}

Xcp_Packet_t* XcpCan_GetRxBuf(U32 sessionId, U32 channelId)
{
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    if (channelId >= cfg.numChannels) return nullptr;
    const U32 idx = cfg.pQueuePositions[channelId].ctXcpPos;
    return _state(cfg, idx) == XCPCAN_RXDATA ? &cfg.pQueueBuffers[idx].packet : nullptr;
}

void XcpCan_RxNext(U32 sessionId, U32 channelId)
{
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    if (channelId >= cfg.numChannels) return;
    XcpCan_QueuePos_t& pos = cfg.pQueuePositions[channelId];
    if (_state(cfg, pos.ctXcpPos) != XCPCAN_RXDATA) return;
    cfg.pQueueBufferStates[pos.ctXcpPos] = XCPCAN_TXRXFREE;
    pos.ctXcpPos = _next(cfg.pChannelCfgs[channelId], pos.ctXcpPos);
}

Xcp_Packet_t* XcpCan_PeekRxBuf(U32 sessionId, U32 channelId, U32 peekIdx)
{
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    if (channelId >= cfg.numChannels) return nullptr;
    const XcpCan_ChannelCfg_t& ch = cfg.pChannelCfgs[channelId];
    const U32 count = ch.idxEnd - ch.idxStart + 1;
    const U32 idx = ch.idxStart + (cfg.pQueuePositions[channelId].ctXcpPos - ch.idxStart + peekIdx) % count;
    return _state(cfg, idx) == XCPCAN_RXDATA ? &cfg.pQueueBuffers[idx].packet : nullptr;
}

Xcp_Packet_t* XcpCan_GetTxBuf(U32 sessionId, U32 channelId)
{
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    if (channelId >= cfg.numChannels) return nullptr;
    const U32 idx = cfg.pQueuePositions[channelId].ctXcpPos;
    const U8 state = _state(cfg, idx);
    if (state != XCPCAN_TXRXFREE && state != XCPCAN_TXALLOC) return nullptr;
    cfg.pQueueBufferStates[idx] = XCPCAN_TXALLOC;
    return &cfg.pQueueBuffers[idx].packet;
}

// Sends the buffer at the channel's CAN position, then frees it zeroed: the zeros are
// what a later, shorter use of the buffer leaves in its unused bytes.
static void XcpCan_DoTransmit(U32 sessionId, U32 channelId)
{
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    const XcpCan_ChannelCfg_t& ch = cfg.pChannelCfgs[channelId];
    XcpCan_QueuePos_t& pos = cfg.pQueuePositions[channelId];
    const U32 idx = pos.ctCanPos;
    U8 bytes[XCP0_MAXCTO];
    memcpy(bytes, &cfg.pQueueBuffers[idx], sizeof(bytes));
    XcpApp_CanTransmit(ch.msgObjId, _txMsgId(cfg, channelId), (U8)(cfg.pQueueBufferStates[idx] >> 4), bytes);
    memset(&cfg.pQueueBuffers[idx], 0, sizeof(XcpCan_QueueBuf_t));
    cfg.pQueueBufferStates[idx] = XCPCAN_TXRXFREE;
    pos.ctCanPos = _next(ch, idx);
}

void XcpCan_TxNext(U32 sessionId, U32 channelId, U32 bufferLen)
{
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    if (channelId >= cfg.numChannels) return;
    const XcpCan_ChannelCfg_t& ch = cfg.pChannelCfgs[channelId];
    if (ch.msgObjId > XCP_CAN_MAX_TXMSGOBJID) return;
    XcpCan_QueuePos_t& pos = cfg.pQueuePositions[channelId];
    if (bufferLen > XCP0_MAXCTO) bufferLen = XCP0_MAXCTO;
    cfg.pQueueBufferStates[pos.ctXcpPos] = (XcpCan_QueueBufProps_t)(bufferLen << 4 | XCPCAN_TXNOTSENT);
    pos.ctXcpPos = _next(ch, pos.ctXcpPos);
    const bool start = _state(cfg, pos.ctCanPos) == XCPCAN_TXNOTSENT && XcpCan_TxPendingOnMsgObj[ch.msgObjId] == 0;
    if (start) _markInProgress(cfg, pos.ctCanPos);
    XcpCan_TxPendingOnMsgObj[ch.msgObjId]++;
    if (start) XcpCan_DoTransmit(sessionId, channelId);
}

void XcpCan_TxCallback(XcpCan_MsgObjId_t msgObjId)
{
    if (msgObjId > XCP_CAN_MAX_TXMSGOBJID) return;
    U8& pending = XcpCan_TxPendingOnMsgObj[msgObjId];
    if (pending > 0) pending--;
    if (pending == 0) return;
    // More frames wait on this object: the lowest identifier goes first, as it would
    // win the bus; among equals the lowest channel.
    for (U32 sessionId = 0; sessionId < XCP_NUM_SESSIONS; sessionId++) {
        const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
        U32 best = 0;
        U32 bestMsgId = 0;
        for (U32 channelId = XCP_TX_EVENT_CHANNEL; channelId <= cfg.lastTxChannel; channelId++) {
            if (cfg.pChannelCfgs[channelId].msgObjId != msgObjId) continue;
            const U32 idx = cfg.pQueuePositions[channelId].ctCanPos;
            if (_state(cfg, idx) != XCPCAN_TXNOTSENT) continue;
            const U32 msgId = _txMsgId(cfg, channelId);
            if (best == 0 || msgId < bestMsgId) {
                best = channelId;
                bestMsgId = msgId;
            }
        }
        if (best == 0) continue;
        _markInProgress(cfg, cfg.pQueuePositions[best].ctCanPos);
        XcpCan_DoTransmit(sessionId, best);
        return;
    }
    pending = 0;
}

// A channel from firstRxStimChannel on takes a frame for its running STIM list.
static bool _isStimFrame(U32 sessionId, U32 channelId, U32 msgId, U8 msgLen, const U8* msgData)
{
    const Xcp_SessionCfg_t& session = Xcp_SessionConfigs[sessionId];
    const XcpCan_SessionCfg_t& cfg = *session.pTransportCfg;
    const U32 list = channelId - XCP_FIRST_DAQ_CHANNEL;
    if (list >= (U32)session.numStatDaqLists + session.maxDynDaqLists) return false;
    const U8 mode = session.pDaqStates[list].daqListMode;
    if (!(mode & XCP_DAQLISTMODE_RUNNING) || !(mode & XCP_DAQLISTMODE_DIRECTION)) return false;
    U32 expected = cfg.pChannelCfgs[channelId].msgId;
    if (expected == XCPCAN_INVALID_MSGID) expected = cfg.pChannelCfgs[XCP_RX_CMD_CHANNEL].msgId;
    _ownDaqMsgId(cfg, channelId, &expected);
    if (msgId != expected) return false;
    if (mode & XCP_DAQLISTMODE_PIDOFF) return true;
    const Xcp_DaqCfg_t& daq = session.pDaqConfigs[list];
    return msgLen > 0 && (U8)(msgData[0] - daq.firstPid) < daq.numOdt;
}

void XcpCan_RxCallback(U32 msgId, U8 msgLen, U8* msgData)
{
    if (!msgData || msgLen == 0) return;
    if (msgLen > XCP0_MAXCTO) msgLen = XCP0_MAXCTO;
    for (U32 sessionId = 0; sessionId < XCP_NUM_SESSIONS; sessionId++) {
        if (Xcp_SessionConfigs[sessionId].transportLayerId != XCP_CAN) continue;
        const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
        U32 channelId = cfg.numChannels;
        if (msgId == cfg.broadcastMsgId && msgLen >= 2 && msgData[0] == XCP_CMD_TRANSPORT_LAYER_CMD &&
            msgData[1] == XCPCAN_CMD_GET_SLAVE_ID) {
            channelId = XCP_RX_CMD_CHANNEL;
        } else if (msgData[0] >= XCPCAN_MIN_CMD_PID && msgId == cfg.pChannelCfgs[XCP_RX_CMD_CHANNEL].msgId) {
            channelId = XCP_RX_CMD_CHANNEL;
        } else {
            for (U32 c = cfg.firstRxStimChannel; c < cfg.numChannels; c++) {
                if (_isStimFrame(sessionId, c, msgId, msgLen, msgData)) {
                    channelId = c;
                    break;
                }
            }
        }
        if (channelId >= cfg.numChannels) continue;
        XcpCan_QueuePos_t& pos = cfg.pQueuePositions[channelId];
        // A buffer still held means the queue is full: the frame is lost.
        if (_state(cfg, pos.ctCanPos) != XCPCAN_TXRXFREE) continue;
        // A short command reads as if padded with zeros, never with an older one's bytes.
        XcpCan_QueueBuf_t& buf = cfg.pQueueBuffers[pos.ctCanPos];
        memset(&buf, 0, sizeof(buf));
        memcpy(&buf, msgData, msgLen);
        cfg.pQueueBufferStates[pos.ctCanPos] = XCPCAN_RXDATA;
        pos.ctCanPos = _next(cfg.pChannelCfgs[channelId], pos.ctCanPos);
    }
}

// ---- Transport-layer commands -------------------------------------------------------------

static U32 XcpCan_CmdGetSlaveId(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                                U32* pTxPacketSize)
{
    const XcpCan_GetSlaveIdCmd_t cmd = Xcp_GetPacket<XcpCan_GetSlaveIdCmd_t>(pRxPacket);
    XcpCan_Session_t& session = *Xcp_SessionConfigs[sessionId].pTransport;
    const bool signature = memcmp(cmd.signature, XCP_SIGNATURE, sizeof(XCP_SIGNATURE)) == 0;
    if (!signature || !(cmd.mode == 0 || (cmd.mode == 1 && session.echoRequested))) return XCP_ACTION_RX_DONE;
    XcpCan_GetSlaveIdResp_t resp = {};
    resp.pid = XCP_PID_RESPONSE;
    for (int i = 0; i < 3; i++) resp.echo[i] = cmd.mode == 0 ? XCP_SIGNATURE[i] : (U8)~XCP_SIGNATURE[i];
    resp.cmdMsgId = _cfg(sessionId).pChannelCfgs[XCP_RX_CMD_CHANNEL].msgId;
    session.echoRequested = cmd.mode ^ 1;
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

static U32 XcpCan_CmdGetDaqId(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                              U32* pTxPacketSize)
{
    const XcpCan_GetDaqIdCmd_t cmd = Xcp_GetPacket<XcpCan_GetDaqIdCmd_t>(pRxPacket);
    const Xcp_SessionCfg_t& session = Xcp_SessionConfigs[sessionId];
    const XcpCan_SessionCfg_t& cfg = *session.pTransportCfg;
    const U32 channelId = cmd.daqListId + XCP_FIRST_DAQ_CHANNEL;
    // A list beyond the channel table has no identifier to tell.
    if (cmd.daqListId >= (U32)session.numStatDaqLists + session.maxDynDaqLists || channelId >= cfg.numChannels)
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    XcpCan_GetDaqIdResp_t resp = {};
    resp.pid = XCP_PID_RESPONSE;
    resp.reserved = 0;
    const U32 msgId = cfg.pChannelCfgs[channelId].msgId;
    if (msgId == XCPCAN_INVALID_MSGID) {
        const bool stim = session.pDaqStates[cmd.daqListId].daqListMode & XCP_DAQLISTMODE_DIRECTION;
        resp.canIdFixed = 1;
        resp.dtoCanMsgId = cfg.pChannelCfgs[stim ? XCP_RX_CMD_CHANNEL : XCP_TX_CRM_CHANNEL].msgId;
    } else {
        resp.canIdFixed = 0;
        resp.dtoCanMsgId = msgId;
        U32 own;
        if (_ownDaqMsgId(cfg, channelId, &own)) resp.dtoCanMsgId = own;
    }
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

static U32 XcpCan_CmdSetDaqId(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                              U32* pTxPacketSize)
{
    const XcpCan_SetDaqIdCmd_t cmd = Xcp_GetPacket<XcpCan_SetDaqIdCmd_t>(pRxPacket);
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    if (cmd.daqListId >= Xcp_Sessions[sessionId].numDynDaqLists || cmd.daqListId >= XCP0_CAN_NUM_DYNDAQ ||
        !Xcp_CheckCanId(cmd.dtoCanMsgId))
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    cfg.pDynDaqMsgIds[cmd.daqListId] = cmd.dtoCanMsgId;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 XcpCan_CmdProc(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    switch (pRxPacket->data[0]) {
    case XCPCAN_CMD_GET_SLAVE_ID: return XcpCan_CmdGetSlaveId(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
    case XCPCAN_CMD_GET_DAQ_ID: return XcpCan_CmdGetDaqId(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
    case XCPCAN_CMD_SET_DAQ_ID: return XcpCan_CmdSetDaqId(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
    default: return Xcp_CmdUnknown(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
    }
}

void XcpCan_ResetDaqList(U32 sessionId, U32 daqListId)
{
    const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
    const U32 channelId = daqListId + XCP_FIRST_DAQ_CHANNEL;
    if (channelId >= cfg.numChannels) return;
    const XcpCan_ChannelCfg_t& ch = cfg.pChannelCfgs[channelId];
    for (U32 idx = ch.idxStart; idx <= ch.idxEnd; idx++) {
        cfg.pQueueBufferStates[idx] = XCPCAN_TXRXFREE;
        memset(&cfg.pQueueBuffers[idx], 0, sizeof(XcpCan_QueueBuf_t));
    }
    cfg.pQueuePositions[channelId] = {ch.idxStart, ch.idxStart};
    if (daqListId < XCP0_CAN_NUM_DYNDAQ) cfg.pDynDaqMsgIds[daqListId] = XCPCAN_INVALID_MSGID;
}

U32 XcpCan_PrepareResume(U32 sessionId, U32 daqListId, U32 nvIdx)
{
    if (daqListId >= XCP0_CAN_NUM_DYNDAQ) return 0;
    const XcpCan_DynDaqMsgId_t msgId = _cfg(sessionId).pDynDaqMsgIds[daqListId];
    XcpApp_NvMemWrite(nvIdx, reinterpret_cast<const U8*>(&msgId), sizeof(msgId));
    return sizeof(msgId);
}

U32 XcpCan_DoResume(U32 sessionId, U32 daqListId, U32 nvIdx)
{
    if (daqListId >= XCP0_CAN_NUM_DYNDAQ) return 0;
    XcpCan_DynDaqMsgId_t msgId = XCPCAN_INVALID_MSGID;
    XcpApp_NvMemRead(nvIdx, reinterpret_cast<U8*>(&msgId), sizeof(msgId));
    // An identifier the master could never have set is no identifier.
    _cfg(sessionId).pDynDaqMsgIds[daqListId] = Xcp_CheckCanId(msgId) ? msgId : XCPCAN_INVALID_MSGID;
    return sizeof(msgId);
}

void XcpCan_Initialize(void)
{
    for (U32 sessionId = 0; sessionId < XCP_NUM_SESSIONS; sessionId++) {
        if (Xcp_SessionConfigs[sessionId].transportLayerId != XCP_CAN) continue;
        const XcpCan_SessionCfg_t& cfg = _cfg(sessionId);
        for (U32 c = 0; c < cfg.numChannels; c++) {
            const XcpCan_ChannelCfg_t& ch = cfg.pChannelCfgs[c];
            cfg.pQueuePositions[c] = {ch.idxStart, ch.idxStart};
            for (U32 idx = ch.idxStart; idx <= ch.idxEnd; idx++) {
                cfg.pQueueBufferStates[idx] = XCPCAN_TXRXFREE;
                memset(&cfg.pQueueBuffers[idx], 0, sizeof(XcpCan_QueueBuf_t));
            }
        }
        for (U32 list = 0; list < XCP0_CAN_NUM_DYNDAQ; list++) cfg.pDynDaqMsgIds[list] = XCPCAN_INVALID_MSGID;
        Xcp_SessionConfigs[sessionId].pTransport->echoRequested = 0;
    }
    memset(XcpCan_TxPendingOnMsgObj, 0, sizeof(XcpCan_TxPendingOnMsgObj));
}

BOOL Xcp_CheckCanId(U32 msgId)
{
    if (msgId & XCPCAN_EXTENDED_FLAG) return (msgId & 0x60000000u) == 0;
    return (msgId & ~0x7FFu) == 0;
}
