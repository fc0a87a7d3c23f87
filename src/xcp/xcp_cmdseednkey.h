#pragma once
// GET_SEED and UNLOCK: a master unlocks one resource at a time. A wrong key costs the
// session; a seed serves one attempt, so a key seen on the bus is no use again.
#include "xcp_types.h"

U32 Xcp_CmdGetSeed(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdUnlock(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
