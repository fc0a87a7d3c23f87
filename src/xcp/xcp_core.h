#pragma once
// The XCP slave's protocol core: one session, its connection and resource protection,
// and the table that hands each command to its handler.
#include "xcp_cal.h"
#include "xcp_can.h"
#include "xcp_daq.h"
#include "xcp_types.h"

// The transport's part of a session: its buffers and its own commands.
typedef Xcp_Packet_t* (*Xcp_GetBuf_t)(U32 sessionId, U32 channelId);
typedef Xcp_Packet_t* (*Xcp_PeekRxBuf_t)(U32 sessionId, U32 channelId, U32 peekIdx);
typedef void (*Xcp_TxNext_t)(U32 sessionId, U32 channelId, U32 bufferLen);
typedef void (*Xcp_RxNext_t)(U32 sessionId, U32 channelId);
typedef U32 (*Xcp_ResumeFn_t)(U32 sessionId, U32 daqListId, U32 nvIdx);
typedef void (*Xcp_ResetDaqListFn_t)(U32 sessionId, U32 daqListId);

struct Xcp_SessionCfg_t {
    const XcpCan_SessionCfg_t* pTransportCfg;
    XcpCan_Session_t* pTransport;
    Xcp_GetBuf_t pGetTxBuf;
    Xcp_GetBuf_t pGetRxBuf;
    Xcp_PeekRxBuf_t pPeekRxBuf;
    Xcp_TxNext_t pTxNext;
    Xcp_RxNext_t pRxNext;
    Xcp_CmdHandler_t pCmdProc;
    Xcp_ResumeFn_t pPrepareResume;
    Xcp_ResumeFn_t pDoResume;
    Xcp_ResetDaqListFn_t pResetDaqList;
    Xcp_OdtEntryAddr_t* pOdtEntryAddrs;
    Xcp_OdtEntryCfg_t* pOdtEntryCfgs;
    const Xcp_DaqCfg_t* pDaqConfigs;
    Xcp_DaqDynConfig_t* pDaqDynConfigs;
    Xcp_Daq_t* pDaqStates;
    U16 numStatDaqLists;
    U16 maxDynDaqLists;
    U32 totOdtEntries;
    U16 maxDtoLen;
    U8 maxCtoLen;
    U8 defResourceProtection;  // locked at start and after a disconnect
    U8 eventPendingTimeout;    // passes of a busy command before XCP_EV_CMD_PENDING
    U8 numBytesTimestamp;
    U8 maxOdtEntryLen;
    U8 numSegs;
    const Xcp_SegCfg_t* pSegConfigs;
    Xcp_SegState_t* pSegStates;
    U32 nvStartIdx;  // XCP_INVALID_NV_IDX switches resume off
    Xcp_TransportLayer_t transportLayerId;
};

struct Xcp_Session_t {
    Xcp_Addr_t mta;
    U8 sessionStatus;
    U8 ctResourceProtection;  // resources now locked
    U8 unlockResource;        // resource of the seed in progress
    U8 seedRemainBytes;
    union {
        U8* pRemainSeed;
        U8* pKey;
    } seedOrKey;
    U16 sessionCfgId;
    U16 ctDaqListId;  // XCP_DAQLIST_UNDEF if none
    U8 ctOdtId;
    U8 ctOdtEntryId;
    U8 isConnected;
    U8 prevCmd;  // XCP_CMD_CURR_CMD while a command is still at work
    U8 timeoutCounter;
    U8 downloadRemainBytes;
    U16 numDynDaqLists;
};

extern const Xcp_SessionCfg_t Xcp_SessionConfigs[XCP_NUM_SESSIONS];
extern Xcp_Session_t Xcp_Sessions[XCP_NUM_SESSIONS];

// The DAQ lists a session can hold: the static ones and room for the dynamic ones.
inline U32 Xcp_NumDaqLists(const Xcp_SessionCfg_t& cfg)
{
    return (U32)cfg.numStatDaqLists + cfg.maxDynDaqLists;
}
// The DAQ lists a session has now: the static ones and the dynamic ones allocated.
inline U32 Xcp_NumAllocatedDaqLists(const Xcp_SessionCfg_t& cfg, const Xcp_Session_t& session)
{
    return (U32)cfg.numStatDaqLists + session.numDynDaqLists;
}

// The resume image's header, at nvStartIdx.
constexpr U32 XCP_NVMEM_MAGIC_NUMBER = 0xDEADBEEF;
struct Xcp_NvSession_t {
    U32 magicNumber;
    U16 sessionCfgId;
    U16 numDynDaqLists;
    U16 numResumeDaqLists;
    U8 padding[2];
};
static_assert(sizeof(Xcp_NvSession_t) == 12);
static_assert(offsetof(Xcp_NvSession_t, numResumeDaqLists) == 8);

// A list's state in the resume image.
struct XCP_PACKED Xcp_NvDaqState_t {
    U8 maxOdtIdUsed;
    U8 daqListMode;
    U16 daqListId;
    U16 daqEvent;
};
static_assert(sizeof(Xcp_NvDaqState_t) == 6);
static_assert(offsetof(Xcp_NvDaqState_t, daqEvent) == 4);

// Transport, session, and a resumed DAQ configuration if the store holds one.
void Xcp_Initialize(void);
// One pass over the session: takes at most one command.
void Xcp_CmdProcessor(void);
// Ends the session: lists reset, status cleared, every resource locked again.
void Xcp_DoDisconnect(U32 sessionId);

// Helpers of every handler: an error response of two bytes, and a positive one of one.
U32 Xcp_ErrorResponse(Xcp_Packet_t* pTxPacket, U8 errorCode, U32* pTxPacketSize);
U32 Xcp_PositiveResponse(Xcp_Packet_t* pTxPacket, U32* pTxPacketSize);

// The handlers of the core.
U32 Xcp_CmdConnect(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdDisconnect(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize);
U32 Xcp_CmdGetStatus(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                     U32* pTxPacketSize);
U32 Xcp_CmdSynch(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdGetCommModeInfo(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                           U32* pTxPacketSize);
U32 Xcp_CmdGetId(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdSetRequest(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize);
U32 Xcp_CmdSetMta(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdTransportLayer(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdUnknown(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);

// The command table: one handler for each PID from 0xFF down to 0xC8, at 0xFF - PID.
constexpr U32 XCP_NUM_CMDS = 0xFF - XCP_CMD_LOWEST + 1;
static_assert(XCP_NUM_CMDS == 56);
extern const Xcp_CmdHandler_t Xcp_CmdList[XCP_NUM_CMDS];
// The resource a PID needs unlocked, 0 for none.
U8 Xcp_CmdResource(U8 pid);
