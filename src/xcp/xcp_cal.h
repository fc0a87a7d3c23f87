#pragma once
// Calibration memory access: the commands that move bytes between the master and the
// address space, and the calibration segments with their pages.
#include "xcp_types.h"

constexpr U8 XCP0_NUM_SEGS = 2;

enum : U8 {
    XCP_SEGMODE_FREEZE = 0x01,
    XCP_SEGMODE_FREEZE_PENDING = 0x80,
};

struct Xcp_PageCfg_t {
    U8 initSegment;
};

struct Xcp_SegCfg_t {
    const Xcp_PageCfg_t* pPageConfigs;
    U8 numPages;
};

struct Xcp_SegState_t {
    U8 mode;
    U8 toolPage;
};

extern const Xcp_PageCfg_t Xcp0_PageConfigs0[2];
extern const Xcp_PageCfg_t Xcp0_PageConfigs1[2];
extern const Xcp_SegCfg_t Xcp0_SegConfigs[XCP0_NUM_SEGS];
extern Xcp_SegState_t Xcp0_SegStates[XCP0_NUM_SEGS];

// Reading: open to any connected master.
U32 Xcp_CmdUpload(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdShortUpload(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize);
U32 Xcp_CmdBuildChecksum(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                         U32* pTxPacketSize);

// Writing: needs CAL_PAG unlocked. A DOWNLOAD of more than six bytes is a block that
// its DOWNLOAD_NEXT frames complete.
U32 Xcp_CmdDownload(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdDownloadNext(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                        U32* pTxPacketSize);
U32 Xcp_CmdDownloadMax(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize);
U32 Xcp_CmdModifyBits(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize);

// Pages and segments, as far as the application offers them.
U32 Xcp_CmdSetCalPage(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize);
U32 Xcp_CmdGetCalPage(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize);
U32 Xcp_CmdGetPagProcInfo(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdSetSegmentMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdGetSegmentMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdCopyCalPage(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize);

// The calibration branch of SET_REQUEST: freezes every segment in freeze mode.
U32 Xcp_StoreCalReq(U32 sessionId, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
