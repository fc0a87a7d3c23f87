#pragma once
// XCP on CAN: the channels and their ring queues, the routing of received frames to a
// channel, the order of transmission, and the transport's own commands. The protocol
// core never sees a frame: it takes buffers from here through its session's table.
#include "xcp_types.h"

// ---- Identifiers --------------------------------------------------------------------

constexpr U32 XCP0_CAN_BROADCAST_MSGID = 0x100;  // GET_SLAVE_ID from any master
constexpr U32 XCP0_CAN_RX_MSGID = 0x200;         // commands
constexpr U32 XCP0_CAN_TX_MSGID = 0x300;         // responses, errors, events
constexpr U32 XCP0_CAN_DYNDAQ_MSGID = 0x300;     // DAQ lists without an identifier of their own
constexpr U32 XCPCAN_INVALID_MSGID = 0xFFFFFFFFu;
// An identifier word may hold a 29-bit identifier, marked by bit 31.
constexpr U32 XCPCAN_EXTENDED_FLAG = 0x80000000u;
// On the command identifier a lower first byte would be STIM data, not a command.
constexpr U8 XCPCAN_MIN_CMD_PID = 0xC0;

// ---- Channels -----------------------------------------------------------------------

enum : U32 {
    XCP_RX_CMD_CHANNEL = 0,
    XCP_TX_EVENT_CHANNEL = 1,
    XCP_TX_CRM_CHANNEL = 2,
    XCP_FIRST_DAQ_CHANNEL = 3,  // channel of DAQ list n is n + 3
};

constexpr U32 XCP0_CAN_NUM_CHANNELS = 6;
constexpr U32 XCP0_CAN_QUEUEALL_NUMBUF = 30;
constexpr U32 XCP0_CAN_NUM_DYNDAQ = 3;

typedef U8 XcpCan_MsgObjId_t;
constexpr XcpCan_MsgObjId_t XCP_CAN_MAX_TXMSGOBJID = 1;
constexpr XcpCan_MsgObjId_t XCPCAN_NO_MSGOBJ = 255;

struct XcpCan_ChannelCfg_t {
    U32 idxStart;
    U32 idxEnd;  // inclusive
    U32 msgId;
    XcpCan_MsgObjId_t msgObjId;
};

// Each side writes only its own position.
struct XcpCan_QueuePos_t {
    U32 ctXcpPos;  // where the protocol side works
    U32 ctCanPos;  // where the CAN side works
};

// Eight bytes of packet.
union XcpCan_QueueBuf_t {
    U32 words[2];
    Xcp_Packet_t packet;
};
static_assert(sizeof(XcpCan_QueueBuf_t) == 8);

// Low four bits the state; high four bits the packet length while it waits for or is
// on the bus.
typedef U8 XcpCan_QueueBufProps_t;
enum : U8 {
    XCPCAN_TXRXFREE = 0,
    XCPCAN_TXALLOC = 1,
    XCPCAN_TXNOTSENT = 2,
    XCPCAN_TXINPROGRESS = 3,
    XCPCAN_RXDATA = 4,
};
constexpr U8 XCPCAN_STATE_MASK = 0x0F;

typedef U32 XcpCan_DynDaqMsgId_t;

struct XcpCan_SessionCfg_t {
    const XcpCan_ChannelCfg_t* pChannelCfgs;
    XcpCan_QueuePos_t* pQueuePositions;
    XcpCan_QueueBuf_t* pQueueBuffers;
    XcpCan_QueueBufProps_t* pQueueBufferStates;
    XcpCan_DynDaqMsgId_t* pDynDaqMsgIds;
    U32 broadcastMsgId;
    U16 numChannels;
    U16 firstRxStimChannel;  // equal to numChannels: no channel receives STIM data
    U16 lastTxChannel;
};

struct XcpCan_Session_t {
    U8 echoRequested;  // a GET_SLAVE_ID in echo mode was answered: the inverse echo may follow
};

extern const XcpCan_ChannelCfg_t XcpCan0_ChannelCfg[XCP0_CAN_NUM_CHANNELS];
extern XcpCan_QueuePos_t XcpCan0_QueuePositions[XCP0_CAN_NUM_CHANNELS];
extern XcpCan_QueueBuf_t XcpCan0_QueueBuffers[XCP0_CAN_QUEUEALL_NUMBUF];
extern XcpCan_QueueBufProps_t XcpCan0_QueueBufferStates[XCP0_CAN_QUEUEALL_NUMBUF];
extern XcpCan_DynDaqMsgId_t XcpCan0_DynDaqMsgIds[XCP0_CAN_NUM_DYNDAQ];
extern const XcpCan_SessionCfg_t XcpCan0_SessionCfg;
extern XcpCan_Session_t XcpCan0_Session;
// Frames handed to each message object and not yet reported sent.
extern U8 XcpCan_TxPendingOnMsgObj[XCP_CAN_MAX_TXMSGOBJID + 1];

// ---- Sub-commands of TRANSPORT_LAYER_CMD --------------------------------------------

enum : U8 {
    XCPCAN_CMD_GET_SLAVE_ID = 0xFF,
    XCPCAN_CMD_GET_DAQ_ID = 0xFE,
    XCPCAN_CMD_SET_DAQ_ID = 0xFD,
};

struct XCP_PACKED XcpCan_GetSlaveIdCmd_t {
    U8 pid;
    U8 subCommand;
    U8 signature[3];  // 'X' 'C' 'P'
    U8 mode;          // 0 identify, 1 the inverse echo
};
static_assert(sizeof(XcpCan_GetSlaveIdCmd_t) == 6);
static_assert(offsetof(XcpCan_GetSlaveIdCmd_t, mode) == 5);

struct XCP_PACKED XcpCan_GetSlaveIdResp_t {
    U8 pid;
    U8 echo[3];
    U32 cmdMsgId;
};
static_assert(sizeof(XcpCan_GetSlaveIdResp_t) == 8);
static_assert(offsetof(XcpCan_GetSlaveIdResp_t, cmdMsgId) == 4);

struct XCP_PACKED XcpCan_GetDaqIdCmd_t {
    U8 pid;
    U8 subCommand;
    U16 daqListId;
};
static_assert(sizeof(XcpCan_GetDaqIdCmd_t) == 4);
static_assert(offsetof(XcpCan_GetDaqIdCmd_t, daqListId) == 2);

struct XCP_PACKED XcpCan_GetDaqIdResp_t {
    U8 pid;
    U8 canIdFixed;
    U16 reserved;
    U32 dtoCanMsgId;
};
static_assert(sizeof(XcpCan_GetDaqIdResp_t) == 8);
static_assert(offsetof(XcpCan_GetDaqIdResp_t, dtoCanMsgId) == 4);

struct XCP_PACKED XcpCan_SetDaqIdCmd_t {
    U8 pid;
    U8 subCommand;
    U16 daqListId;
    U32 dtoCanMsgId;
};
static_assert(sizeof(XcpCan_SetDaqIdCmd_t) == 8);
static_assert(offsetof(XcpCan_SetDaqIdCmd_t, daqListId) == 2);
static_assert(offsetof(XcpCan_SetDaqIdCmd_t, dtoCanMsgId) == 4);

// ---- Towards the protocol core (sessionId is always 0) -------------------------------

Xcp_Packet_t* XcpCan_GetRxBuf(U32 sessionId, U32 channelId);
void XcpCan_RxNext(U32 sessionId, U32 channelId);
Xcp_Packet_t* XcpCan_PeekRxBuf(U32 sessionId, U32 channelId, U32 peekIdx);
// The buffer to fill next; the same one again until XcpCan_TxNext. Null when the
// channel's queue is full.
Xcp_Packet_t* XcpCan_GetTxBuf(U32 sessionId, U32 channelId);
void XcpCan_TxNext(U32 sessionId, U32 channelId, U32 bufferLen);
// TRANSPORT_LAYER_CMD, by its second byte.
U32 XcpCan_CmdProc(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
void XcpCan_ResetDaqList(U32 sessionId, U32 daqListId);
// The list's identifier in the resume image: the bytes used.
U32 XcpCan_PrepareResume(U32 sessionId, U32 daqListId, U32 nvIdx);
U32 XcpCan_DoResume(U32 sessionId, U32 daqListId, U32 nvIdx);

// ---- Towards the system ---------------------------------------------------------------

void XcpCan_Initialize(void);
// A received frame; bit 31 of msgId marks a 29-bit identifier.
void XcpCan_RxCallback(U32 msgId, U8 msgLen, U8* msgData);
// One frame of this message object is on its way.
void XcpCan_TxCallback(XcpCan_MsgObjId_t msgObjId);

// Valid: a 29-bit identifier with bit 31 set and bits 30 and 29 clear, or an 11-bit one.
BOOL Xcp_CheckCanId(U32 msgId);
