#pragma once
// The flash programming commands. The work is the application's (XcpApp_Program...):
// these handlers only give the standard's answers around it. The dash refuses every
// request, so PROGRAM_START never opens a sequence and nothing is ever written.
#include "xcp_types.h"

U32 Xcp_CmdProgramStart(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                        U32* pTxPacketSize);
U32 Xcp_CmdProgramClear(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                        U32* pTxPacketSize);
U32 Xcp_CmdProgram(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdProgramNext(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize);
U32 Xcp_CmdProgramMax(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize);
U32 Xcp_CmdProgramReset(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                        U32* pTxPacketSize);
U32 Xcp_CmdProgramPrepare(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdProgramFormat(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                         U32* pTxPacketSize);
