#include "xcp_fake_app.h"

#include <cstring>

#include "xcp_callbacks.h"
#include "xcp_map.h"

FAKE_APP_T FakeApp;

// Identification at addresses of the fake memory.
constinit const Xcp_SlaveId_t Xcp_SlaveIds[XCP_NUM_SESSIONS] = {{
    .idStringLen = 5,
    .idString = 600,
    .hardwareType = 700,
    .ecuAddr = 0,  // this slave has no ECU address
    .asamMC2StringLen = 0,
    .asamMC2String = 0,
}};
constinit const Xcp_Addr_t Xcp_IdTableRevPtr = 650;

void FakeAppReset(void)
{
    FakeApp.sent.clear();
    for (size_t i = 0; i < sizeof(FakeApp.memory); i++) FakeApp.memory[i] = (uint8_t)i;
    FakeApp.busyPasses = 0;
    FakeApp.forced = CALMEM_FINISHED;
    FakeApp.deferTxCallbacks = false;
    FakeApp.deferredTxCallbacks = 0;
    FakeApp.nvKept = false;
    memset(FakeApp.nv, 0, sizeof(FakeApp.nv));
    FakeApp.freezeResult = CALMEM_REQUESTNOTVALID;
    FakeApp.pageCopyResult = CALMEM_REQUESTNOTVALID;
    FakeApp.ecuPageResult = FakeApp.toolPageResult = CALPAGE_REQUESTINVALID;
    FakeApp.ecuPage = 0;
    FakeApp.timestamp = 0;
    FakeApp.connects = FakeApp.userConnects = FakeApp.disconnects = 0;
    FakeApp.programResult = PROGRAM_INVALIDSTATE;
    FakeApp.programmed.clear();
}

void FakeAppDeliverTxCallback(void)
{
    if (FakeApp.deferredTxCallbacks == 0) return;
    FakeApp.deferredTxCallbacks--;
    XcpCan_TxCallback(1);
}

void XcpApp_CanTransmit(XcpCan_MsgObjId_t msgObjId, U32 msgId, U8 numBytes, U8* bytes)
{
    FakeApp.sent.push_back({msgId, std::vector<uint8_t>(bytes, bytes + numBytes)});
    if (FakeApp.deferTxCallbacks) {
        FakeApp.deferredTxCallbacks++;
        return;
    }
    XcpCan_TxCallback(msgObjId);
}

Xcp_Addr_t XcpApp_ConvertAddress(U32 address, U8)
{
    return address;
}

BOOL XcpApp_IsRegionMeasurable(U32 address, U8, U32 numBytes)
{
    return address < sizeof(FakeApp.memory) && numBytes <= sizeof(FakeApp.memory) - address;
}

void XcpApp_OnNormalCxn(U32)
{
    FakeApp.connects++;
}

void XcpApp_OnUserDefinedCxn(U32)
{
    FakeApp.userConnects++;
}

void XcpApp_OnDisconnect(U32)
{
    FakeApp.disconnects++;
}

U32 XcpApp_GetTimestamp(void)
{
    return FakeApp.timestamp;
}

void XcpApp_NvMemWrite(U32 nvIdx, const U8* data, U32 numBytes)
{
    if (FakeApp.nvKept && nvIdx + numBytes <= sizeof(FakeApp.nv)) memcpy(FakeApp.nv + nvIdx, data, numBytes);
}

void XcpApp_NvMemRead(U32 nvIdx, U8* data, U32 numBytes)
{
    if (FakeApp.nvKept && nvIdx + numBytes <= sizeof(FakeApp.nv)) memcpy(data, FakeApp.nv + nvIdx, numBytes);
}

void XcpApp_NvMemClear(U32 nvIdx, U32 numBytes)
{
    if (FakeApp.nvKept && nvIdx + numBytes <= sizeof(FakeApp.nv)) memset(FakeApp.nv + nvIdx, 0, numBytes);
}

Xcp_CalMemState XcpApp_CalSegFreeze(U8, U8)
{
    return FakeApp.freezeResult;
}

// A request first started answers BUSY while busyPasses lasts; the bytes are in place
// by then, as a slow memory would have them when it says it is done.
static Xcp_CalMemState _result(void)
{
    if (FakeApp.busyPasses > 0) {
        FakeApp.busyPasses--;
        return CALMEM_BUSY;
    }
    return FakeApp.forced;
}

Xcp_CalMemState XcpApp_CalMemRead(Xcp_Addr_t mta, U32 numBytes, U8* dest)
{
    if (mta >= sizeof(FakeApp.memory) || numBytes > sizeof(FakeApp.memory) - mta) return CALMEM_REQUESTNOTVALID;
    memcpy(dest, FakeApp.memory + mta, numBytes);
    return _result();
}

Xcp_CalMemState XcpApp_CalMemGetRequestState(void)
{
    return _result();
}

Xcp_CalMemState XcpApp_CalMemGetChecksum(Xcp_Addr_t address, U32 numBytes, U8* checksumType, U32* checksum)
{
    if (address >= sizeof(FakeApp.memory) || numBytes > sizeof(FakeApp.memory) - address)
        return CALMEM_REQUESTNOTVALID;
    U8 sum = 0;
    for (U32 i = 0; i < numBytes; i++) sum = (U8)(sum + FakeApp.memory[address + i]);
    *checksumType = XCP_CHECKSUM_TYPE_ADD_11;
    *checksum = sum;
    return _result();
}

Xcp_CalMemState XcpApp_CalMemWrite(Xcp_Addr_t mta, U32 numBytes, const U8* source)
{
    if (mta >= sizeof(FakeApp.memory) || numBytes > sizeof(FakeApp.memory) - mta) return CALMEM_REQUESTNOTVALID;
    memcpy(FakeApp.memory + mta, source, numBytes);
    return _result();
}

// Slow as the memory is, and then with the result asked for.
static Xcp_CalMemState _pageRequest(void)
{
    return _result() == CALMEM_BUSY ? CALMEM_BUSY : FakeApp.pageCopyResult;
}

Xcp_CalMemState XcpApp_CalMemModifyBits(Xcp_Addr_t, U8, U16, U16)
{
    return _pageRequest();
}

Xcp_CalMemState XcpApp_CalPageCopy(U8, U8, U8, U8)
{
    return _pageRequest();
}

Xcp_CalPageErr XcpApp_SetEcuCalPage(U8, U8)
{
    return FakeApp.ecuPageResult;
}

Xcp_CalPageErr XcpApp_SetEcuCalPageAllSegs(U8)
{
    return FakeApp.ecuPageResult;
}

Xcp_CalPageErr XcpApp_SetToolCalPage(U8, U8)
{
    return FakeApp.toolPageResult;
}

Xcp_CalPageErr XcpApp_SetToolCalPageAllSegs(U8)
{
    return FakeApp.toolPageResult;
}

U8 XcpApp_GetEcuCalPage(U8)
{
    return FakeApp.ecuPage;
}

Xcp_ProgramState XcpApp_ProgramStart(Xcp_Addr_t)
{
    return FakeApp.programResult;
}

Xcp_ProgramState XcpApp_ProgramClear(Xcp_Addr_t, U32)
{
    return FakeApp.programResult;
}

Xcp_ProgramState XcpApp_Program(Xcp_Addr_t, U8 numBytes, const U8* bytes)
{
    FakeApp.programmed.insert(FakeApp.programmed.end(), bytes, bytes + numBytes);
    return FakeApp.programResult;
}

Xcp_ProgramState XcpApp_ProgramReset(void)
{
    return FakeApp.programResult;
}

Xcp_ProgramState XcpApp_ProgramGetRequestState(void)
{
    return FakeApp.programResult;
}

Xcp_ProgramState XcpApp_ProgramPrepare(Xcp_Addr_t, U16)
{
    return FakeApp.programResult;
}
