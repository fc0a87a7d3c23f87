#include "xcp_callbacks.h"

#include "can_ports.h"
#include "main.h"
#include "xcp_map.h"

constinit const Xcp_SlaveId_t Xcp_SlaveIds[XCP_NUM_SESSIONS] = {{
    .idStringLen = (U8)XcpMapFindField("SwIdTxt")->size,
    .idString = XcpMapAddressOf("SwIdTxt"),
    .hardwareType = XcpMapAddressOf("HardwareType"),
    .ecuAddr = XcpMapAddressOf("EcuAddr"),
    .asamMC2StringLen = 0,
    .asamMC2String = 0,
}};
constinit const Xcp_Addr_t Xcp_IdTableRevPtr = XcpMapAddressOf("IdTableRev");

void XcpApp_CanTransmit(XcpCan_MsgObjId_t msgObjId, U32 msgId, U8 numBytes, U8* bytes)
{
    const uint8_T extended = (msgId & XCPCAN_EXTENDED_FLAG) ? 1 : 0;
    can_send_285318__0092(msgId & 0x1FFFFFFFu, extended, numBytes, bytes);
    // The socket took the frame or lost it; either way this one is done.
    XcpCan_TxCallback(msgObjId);
}

Xcp_Addr_t XcpApp_ConvertAddress(U32 address, U8)
{
    return address;
}

// A DAQ entry is checked once, when it is written: it must lie in the address space.
BOOL XcpApp_IsRegionMeasurable(U32 address, U8, U32 numBytes)
{
    return address < EEEnd && numBytes <= EEEnd - address;
}

void XcpApp_OnNormalCxn(U32)
{
}

void XcpApp_OnUserDefinedCxn(U32)
{
}

void XcpApp_OnDisconnect(U32)
{
}

U32 XcpApp_GetTimestamp(void)
{
    return ticks();
}

void XcpApp_NvMemWrite(U32, const U8*, U32)
{
}

void XcpApp_NvMemRead(U32, U8*, U32)
{
}

void XcpApp_NvMemClear(U32, U32)
{
}

Xcp_CalMemState XcpApp_CalSegFreeze(U8, U8)
{
    return CALMEM_REQUESTNOTVALID;
}

Xcp_CalMemState XcpApp_CalMemModifyBits(Xcp_Addr_t, U8, U16, U16)
{
    return CALMEM_REQUESTNOTVALID;
}

Xcp_CalMemState XcpApp_CalPageCopy(U8, U8, U8, U8)
{
    return CALMEM_REQUESTNOTVALID;
}

Xcp_CalPageErr XcpApp_SetEcuCalPage(U8, U8)
{
    return CALPAGE_REQUESTINVALID;
}

Xcp_CalPageErr XcpApp_SetEcuCalPageAllSegs(U8)
{
    return CALPAGE_REQUESTINVALID;
}

Xcp_CalPageErr XcpApp_SetToolCalPage(U8, U8)
{
    return CALPAGE_REQUESTINVALID;
}

Xcp_CalPageErr XcpApp_SetToolCalPageAllSegs(U8)
{
    return CALPAGE_REQUESTINVALID;
}

U8 XcpApp_GetEcuCalPage(U8)
{
    return 0;
}

Xcp_ProgramState XcpApp_ProgramStart(Xcp_Addr_t)
{
    return PROGRAM_INVALIDSTATE;
}

Xcp_ProgramState XcpApp_ProgramClear(Xcp_Addr_t, U32)
{
    return PROGRAM_INVALIDSTATE;
}

Xcp_ProgramState XcpApp_Program(Xcp_Addr_t, U8, const U8*)
{
    return PROGRAM_INVALIDSTATE;
}

Xcp_ProgramState XcpApp_ProgramReset(void)
{
    return PROGRAM_INVALIDSTATE;
}

Xcp_ProgramState XcpApp_ProgramGetRequestState(void)
{
    return PROGRAM_INVALIDSTATE;
}

Xcp_ProgramState XcpApp_ProgramPrepare(Xcp_Addr_t, U16)
{
    return PROGRAM_INVALIDSTATE;
}
