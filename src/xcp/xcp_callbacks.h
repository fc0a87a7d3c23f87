#pragma once
// What the dash supplies to its XCP slave: the frames out on port 1, the slave's
// identification, addresses, the clock, and the store of a resumable DAQ setup (which
// this dash does not keep). The memory callbacks are in xcp_map.
#include "xcp_can.h"
#include "xcp_types.h"

// Sends one frame: bit 31 of msgId marks a 29-bit identifier. Tells the transport at
// once that the frame is on its way; whether it reached the socket is not looked at.
void XcpApp_CanTransmit(XcpCan_MsgObjId_t msgObjId, U32 msgId, U8 numBytes, U8* bytes);

// The slave's identification: the texts and values of CONSTVariables by their XCP
// addresses.
extern const Xcp_SlaveId_t Xcp_SlaveIds[XCP_NUM_SESSIONS];
extern const Xcp_Addr_t Xcp_IdTableRevPtr;

// The address unchanged; the extension is not used. 0 is taken as invalid by callers.
Xcp_Addr_t XcpApp_ConvertAddress(U32 address, U8 extension);
BOOL XcpApp_IsRegionMeasurable(U32 address, U8 extension, U32 numBytes);

void XcpApp_OnNormalCxn(U32 sessionId);
void XcpApp_OnUserDefinedCxn(U32 sessionId);
void XcpApp_OnDisconnect(U32 sessionId);

// Milliseconds since start-up.
U32 XcpApp_GetTimestamp(void);

// The resume image's store: nothing is kept, so nothing resumes at start.
void XcpApp_NvMemWrite(U32 nvIdx, const U8* data, U32 numBytes);
void XcpApp_NvMemRead(U32 nvIdx, U8* data, U32 numBytes);
void XcpApp_NvMemClear(U32 nvIdx, U32 numBytes);

// One page per segment: bits are not modified in place, pages are neither switched nor
// copied, and segments are not frozen.
Xcp_CalMemState XcpApp_CalSegFreeze(U8 segment, U8 initSegment);
Xcp_CalMemState XcpApp_CalMemModifyBits(Xcp_Addr_t mta, U8 numShiftBits, U16 andMask, U16 xorMask);
Xcp_CalMemState XcpApp_CalPageCopy(U8 dstSegment, U8 dstPage, U8 srcSegment, U8 srcPage);
Xcp_CalPageErr XcpApp_SetEcuCalPage(U8 segment, U8 page);
Xcp_CalPageErr XcpApp_SetEcuCalPageAllSegs(U8 page);
Xcp_CalPageErr XcpApp_SetToolCalPage(U8 segment, U8 page);
Xcp_CalPageErr XcpApp_SetToolCalPageAllSegs(U8 page);
U8 XcpApp_GetEcuCalPage(U8 segment);

// Flash programming: the dash's software is not updated over XCP, so every request
// answers PROGRAM_INVALIDSTATE.
Xcp_ProgramState XcpApp_ProgramStart(Xcp_Addr_t mta);
Xcp_ProgramState XcpApp_ProgramClear(Xcp_Addr_t mta, U32 length);
Xcp_ProgramState XcpApp_Program(Xcp_Addr_t mta, U8 numBytes, const U8* bytes);
Xcp_ProgramState XcpApp_ProgramReset(void);
Xcp_ProgramState XcpApp_ProgramGetRequestState(void);
Xcp_ProgramState XcpApp_ProgramPrepare(Xcp_Addr_t mta, U16 codeSize);
