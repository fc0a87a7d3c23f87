#include "xcp_core.h"

#include <cstring>

#include "SeednKey.h"
#include "xcp_callbacks.h"
#include "xcp_cmdflash.h"
#include "xcp_cmdseednkey.h"

constexpr Xcp_SessionCfg_t Xcp_SessionConfigs[XCP_NUM_SESSIONS] = {{
    .pTransportCfg = &XcpCan0_SessionCfg,
    .pTransport = &XcpCan0_Session,
    .pGetTxBuf = XcpCan_GetTxBuf,
    .pGetRxBuf = XcpCan_GetRxBuf,
    .pPeekRxBuf = XcpCan_PeekRxBuf,
    .pTxNext = XcpCan_TxNext,
    .pRxNext = XcpCan_RxNext,
    .pCmdProc = XcpCan_CmdProc,
    .pPrepareResume = XcpCan_PrepareResume,
    .pDoResume = XcpCan_DoResume,
    .pResetDaqList = XcpCan_ResetDaqList,
    .pOdtEntryAddrs = Xcp0_OdtEntryAddrs,
    .pOdtEntryCfgs = Xcp0_OdtEntryCfgs,
    .pDaqConfigs = Xcp0_DaqConfigs,
    .pDaqDynConfigs = Xcp0_DaqDynConfigs,
    .pDaqStates = Xcp0_DaqStates,
    .numStatDaqLists = XCP0_NUM_STATIC_DAQ,
    .maxDynDaqLists = XCP0_NUM_DYN_DAQ,
    .totOdtEntries = XCP0_ODT_LIST_SIZE,
    .maxDtoLen = XCP0_MAXDTO,
    .maxCtoLen = XCP0_MAXCTO,
    .defResourceProtection = XCP_RESOURCE_CAL_PAG | XCP_RESOURCE_DAQ | XCP_RESOURCE_STIM | XCP_RESOURCE_PGM,
    .eventPendingTimeout = 20,
    .numBytesTimestamp = 4,
    .maxOdtEntryLen = 8,
    .numSegs = XCP0_NUM_SEGS,
    .pSegConfigs = Xcp0_SegConfigs,
    .pSegStates = Xcp0_SegStates,
    .nvStartIdx = 0,
    .transportLayerId = XCP_CAN,
}};

// As Xcp_Initialize leaves it: everything locked before the first start, too.
constinit Xcp_Session_t Xcp_Sessions[XCP_NUM_SESSIONS] = {{
    .mta = 0,
    .sessionStatus = 0,
    .ctResourceProtection = Xcp_SessionConfigs[0].defResourceProtection,
    .unlockResource = 0,
    .seedRemainBytes = 0,
    .seedOrKey = {nullptr},
    .sessionCfgId = 0,
    .ctDaqListId = XCP_DAQLIST_UNDEF,
    .ctOdtId = 0,
    .ctOdtEntryId = 0,
    .isConnected = 0,
    .prevCmd = 0,
    .timeoutCounter = 0,
    .downloadRemainBytes = 0,
    .numDynDaqLists = 0,
}};

// Indexed by 0xFF - PID. Commands this slave does not serve answer ERR_CMD_UNKNOWN,
// or ERR_ACCESS_LOCKED while their resource is locked: the processor looks at the
// resource before the handler.
constexpr Xcp_CmdHandler_t Xcp_CmdList[XCP_NUM_CMDS] = {
    Xcp_CmdConnect,          // 0xFF CONNECT
    Xcp_CmdDisconnect,       // 0xFE DISCONNECT
    Xcp_CmdGetStatus,        // 0xFD GET_STATUS
    Xcp_CmdSynch,            // 0xFC SYNCH
    Xcp_CmdGetCommModeInfo,  // 0xFB GET_COMM_MODE_INFO
    Xcp_CmdGetId,            // 0xFA GET_ID
    Xcp_CmdSetRequest,       // 0xF9 SET_REQUEST
    Xcp_CmdGetSeed,          // 0xF8 GET_SEED
    Xcp_CmdUnlock,           // 0xF7 UNLOCK
    Xcp_CmdSetMta,           // 0xF6 SET_MTA
    Xcp_CmdUpload,           // 0xF5 UPLOAD
    Xcp_CmdShortUpload,      // 0xF4 SHORT_UPLOAD
    Xcp_CmdBuildChecksum,    // 0xF3 BUILD_CHECKSUM
    Xcp_CmdTransportLayer,   // 0xF2 TRANSPORT_LAYER_CMD
    Xcp_CmdUnknown,          // 0xF1 USER_CMD
    Xcp_CmdDownload,         // 0xF0 DOWNLOAD
    Xcp_CmdDownloadNext,     // 0xEF DOWNLOAD_NEXT
    Xcp_CmdDownloadMax,      // 0xEE DOWNLOAD_MAX
    Xcp_CmdUnknown,          // 0xED SHORT_DOWNLOAD
    Xcp_CmdModifyBits,       // 0xEC MODIFY_BITS
    Xcp_CmdSetCalPage,       // 0xEB SET_CAL_PAGE
    Xcp_CmdGetCalPage,       // 0xEA GET_CAL_PAGE
    Xcp_CmdGetPagProcInfo,   // 0xE9 GET_PAG_PROCESSOR_INFO
    Xcp_CmdUnknown,          // 0xE8 GET_SEGMENT_INFO
    Xcp_CmdUnknown,          // 0xE7 GET_PAGE_INFO
    Xcp_CmdSetSegmentMode,   // 0xE6 SET_SEGMENT_MODE
    Xcp_CmdGetSegmentMode,   // 0xE5 GET_SEGMENT_MODE
    Xcp_CmdCopyCalPage,      // 0xE4 COPY_CAL_PAGE
    Xcp_CmdClearDaqList,     // 0xE3 CLEAR_DAQ_LIST
    Xcp_CmdSetDaqPtr,        // 0xE2 SET_DAQ_PTR
    Xcp_CmdWriteDaq,         // 0xE1 WRITE_DAQ
    Xcp_CmdSetDaqListMode,   // 0xE0 SET_DAQ_LIST_MODE
    Xcp_CmdGetDaqListMode,   // 0xDF GET_DAQ_LIST_MODE
    Xcp_CmdStartStopDaqList, // 0xDE START_STOP_DAQ_LIST
    Xcp_CmdStartStopSynch,   // 0xDD START_STOP_SYNCH
    Xcp_CmdGetDaqClock,      // 0xDC GET_DAQ_CLOCK
    Xcp_CmdUnknown,          // 0xDB READ_DAQ
    Xcp_CmdGetDaqProcessorInfo,   // 0xDA GET_DAQ_PROCESSOR_INFO
    Xcp_CmdGetDaqResolutionInfo,  // 0xD9 GET_DAQ_RESOLUTION_INFO
    Xcp_CmdGetDaqListInfo,   // 0xD8 GET_DAQ_LIST_INFO
    Xcp_CmdUnknown,          // 0xD7 GET_DAQ_EVENT_INFO
    Xcp_CmdFreeDaq,          // 0xD6 FREE_DAQ
    Xcp_CmdAllocDaq,         // 0xD5 ALLOC_DAQ
    Xcp_CmdAllocOdt,         // 0xD4 ALLOC_ODT
    Xcp_CmdAllocOdtEntry,    // 0xD3 ALLOC_ODT_ENTRY
    Xcp_CmdProgramStart,     // 0xD2 PROGRAM_START
    Xcp_CmdProgramClear,     // 0xD1 PROGRAM_CLEAR
    Xcp_CmdProgram,          // 0xD0 PROGRAM
    Xcp_CmdProgramReset,     // 0xCF PROGRAM_RESET
    Xcp_CmdUnknown,          // 0xCE GET_PGM_PROCESSOR_INFO
    Xcp_CmdUnknown,          // 0xCD GET_SECTOR_INFO
    Xcp_CmdProgramPrepare,   // 0xCC PROGRAM_PREPARE
    Xcp_CmdProgramFormat,    // 0xCB PROGRAM_FORMAT
    Xcp_CmdProgramNext,      // 0xCA PROGRAM_NEXT
    Xcp_CmdProgramMax,       // 0xC9 PROGRAM_MAX
    Xcp_CmdUnknown,          // 0xC8 PROGRAM_VERIFY
};
static_assert(Xcp_CmdList[0xFF - XCP_CMD_CONNECT] == Xcp_CmdConnect);
static_assert(Xcp_CmdList[0xFF - XCP_CMD_TRANSPORT_LAYER_CMD] == Xcp_CmdTransportLayer);
static_assert(Xcp_CmdList[0xFF - XCP_CMD_BUILD_CHECKSUM] == Xcp_CmdBuildChecksum);
static_assert(Xcp_CmdList[0xFF - XCP_CMD_UNLOCK] == Xcp_CmdUnlock);
static_assert(Xcp_CmdList[0xFF - XCP_CMD_COPY_CAL_PAGE] == Xcp_CmdCopyCalPage);
static_assert(Xcp_CmdList[0xFF - XCP_CMD_ALLOC_ODT_ENTRY] == Xcp_CmdAllocOdtEntry);
static_assert(Xcp_CmdList[0xFF - XCP_CMD_PROGRAM_MAX] == Xcp_CmdProgramMax);

namespace {

// The comm mode of CONNECT: Intel byte order, byte granularity, slave block mode,
// GET_COMM_MODE_INFO available.
constexpr U8 XCP_COMM_MODE_BASIC = 0xC0;
// What GET_STATUS shows of the session status: the PGM bit is not told.
constexpr U8 XCP_STATUS_MASK = 0xCD;
constexpr U8 XCP_COMM_MODE_OPTIONAL_MASTER_BLOCK = 0x01;
constexpr U8 XCP_MAX_BS = 255;
constexpr U8 XCP_MIN_ST = 100;

enum : U8 {
    XCP_SET_REQUEST_STORE_CAL = 0x01,
    XCP_SET_REQUEST_STORE_DAQ = 0x04,
    XCP_SET_REQUEST_CLEAR_DAQ = 0x08,
};

enum : U8 {
    XCP_IDT_ASCII = 0,
    XCP_IDT_ASAM_MC2 = 1,
    XCP_IDT_TABLE_REV = 128,
    XCP_IDT_HARDWARE_TYPE = 129,
    XCP_IDT_ECU_ADDR = 130,
};

}  // namespace

U8 Xcp_CmdResource(U8 pid)
{
    if (pid > MAX_CALPAGCMD_PID) return 0;
    if (pid > MAX_DAQCMD_PID) return XCP_RESOURCE_CAL_PAG;
    if (pid > MAX_PGMCMD_PID) return XCP_RESOURCE_DAQ;
    return XCP_RESOURCE_PGM;
}

U32 Xcp_ErrorResponse(Xcp_Packet_t* pTxPacket, U8 errorCode, U32* pTxPacketSize)
{
    Xcp_PutPacket(pTxPacket, Xcp_ErrorResp_t{XCP_PID_ERROR, errorCode}, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_PositiveResponse(Xcp_Packet_t* pTxPacket, U32* pTxPacketSize)
{
    pTxPacket->pid = XCP_PID_RESPONSE;
    *pTxPacketSize = 1;
    return XCP_ACTION_DONE;
}

// ---- Session lifecycle -------------------------------------------------------------

void Xcp_DoDisconnect(U32 sessionId)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    XcpApp_OnDisconnect(sessionId);
    Xcp_FreeDaq(sessionId);
    session.sessionStatus = 0;
    session.isConnected = 0;
    session.downloadRemainBytes = 0;
    session.unlockResource = 0;
    session.seedRemainBytes = 0;
    session.seedOrKey.pKey = nullptr;
    session.sessionCfgId = 0;
    session.ctResourceProtection = cfg.defResourceProtection;
}

// Reads back a DAQ setup that SET_REQUEST stored, and starts its lists.
static void Xcp_DoResume(U32 sessionId)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    Xcp_NvSession_t header = {};
    XcpApp_NvMemRead(cfg.nvStartIdx, reinterpret_cast<U8*>(&header), sizeof(header));
    if (header.magicNumber != XCP_NVMEM_MAGIC_NUMBER) return;
    session.sessionCfgId = header.sessionCfgId;
    session.numDynDaqLists = header.numDynDaqLists < cfg.maxDynDaqLists ? header.numDynDaqLists : cfg.maxDynDaqLists;
    session.sessionStatus = XCP_SESSION_STATE_RESUME | XCP_SESSION_STATE_DAQ_RUNNING;
    U32 nvIdx = cfg.nvStartIdx + sizeof(header);
    for (U32 i = 0; i < header.numResumeDaqLists; i++) {
        Xcp_NvDaqState_t state = {};
        XcpApp_NvMemRead(nvIdx, reinterpret_cast<U8*>(&state), sizeof(state));
        nvIdx += sizeof(state);
        // A list this session cannot hold means the image is not ours: stop there.
        const U32 list = state.daqListId;
        if (list >= Xcp_NumAllocatedDaqLists(cfg, session)) break;
        const Xcp_DaqCfg_t& daq = cfg.pDaqConfigs[list];
        if (state.maxOdtIdUsed >= daq.numOdt) break;
        Xcp_Daq_t& daqState = cfg.pDaqStates[list];
        daqState.daqEvent = state.daqEvent;
        daqState.maxOdtIdUsed = state.maxOdtIdUsed;
        daqState.daqListMode = state.daqListMode | XCP_DAQLISTMODE_RUNNING;
        if (list >= cfg.numStatDaqLists) {
            Xcp_DaqDynConfig_t& dyn = cfg.pDaqDynConfigs[list - cfg.numStatDaqLists];
            XcpApp_NvMemRead(nvIdx, reinterpret_cast<U8*>(&dyn), sizeof(dyn));
            nvIdx += sizeof(dyn);
        }
        const U32 entries = (state.maxOdtIdUsed + 1u) * daq.numOdtEntries;
        XcpApp_NvMemRead(nvIdx, reinterpret_cast<U8*>(&cfg.pOdtEntryAddrs[daq.idxDaqStart]),
                         entries * sizeof(Xcp_OdtEntryAddr_t));
        nvIdx += entries * sizeof(Xcp_OdtEntryAddr_t);
        XcpApp_NvMemRead(nvIdx, &cfg.pOdtEntryCfgs[daq.idxDaqStart], entries);
        nvIdx += entries;
        nvIdx += cfg.pDoResume(sessionId, list, nvIdx);
    }
    Xcp_Packet_t* event = cfg.pGetTxBuf(sessionId, XCP_TX_EVENT_CHANNEL);
    if (!event) return;
    Xcp_ResumeEvent_t packet = {XCP_PID_EVENT, XCP_EV_RESUME_MODE, session.sessionCfgId, {0, 0, 0, 0}};
    const U32 size = 4 + Xcp_GetTimestamp(&cfg, packet.timestamp);
    U32 ignored;
    Xcp_PutPacket(event, packet, &ignored);
    cfg.pTxNext(sessionId, XCP_TX_EVENT_CHANNEL, size);
}

// Writes every selected list, then the header, so that a half-written image has no
// valid header.
static void _storeDaq(U32 sessionId, U16 sessionConfigId)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    session.sessionStatus |= XCP_SESSION_STATE_STORE_DAQ;
    session.sessionCfgId = sessionConfigId;
    U32 nvIdx = cfg.nvStartIdx + sizeof(Xcp_NvSession_t);
    U16 numResume = 0;
    for (U32 list = 0; list < Xcp_NumAllocatedDaqLists(cfg, session); list++) {
        Xcp_Daq_t& daqState = cfg.pDaqStates[list];
        if (!(daqState.daqListMode & XCP_DAQLISTMODE_SELECTED)) continue;
        daqState.daqListMode = (U8)((daqState.daqListMode & ~XCP_DAQLISTMODE_SELECTED) | XCP_DAQLISTMODE_RESUME);
        const Xcp_NvDaqState_t state = {daqState.maxOdtIdUsed, daqState.daqListMode, (U16)list, daqState.daqEvent};
        XcpApp_NvMemWrite(nvIdx, reinterpret_cast<const U8*>(&state), sizeof(state));
        nvIdx += sizeof(state);
        if (list >= cfg.numStatDaqLists) {
            const Xcp_DaqDynConfig_t& dyn = cfg.pDaqDynConfigs[list - cfg.numStatDaqLists];
            XcpApp_NvMemWrite(nvIdx, reinterpret_cast<const U8*>(&dyn), sizeof(dyn));
            nvIdx += sizeof(dyn);
        }
        const Xcp_DaqCfg_t& daq = cfg.pDaqConfigs[list];
        const U32 odts = daqState.maxOdtIdUsed < daq.numOdt ? daqState.maxOdtIdUsed + 1u : daq.numOdt;
        const U32 entries = odts * daq.numOdtEntries;
        XcpApp_NvMemWrite(nvIdx, reinterpret_cast<const U8*>(&cfg.pOdtEntryAddrs[daq.idxDaqStart]),
                          entries * sizeof(Xcp_OdtEntryAddr_t));
        nvIdx += entries * sizeof(Xcp_OdtEntryAddr_t);
        XcpApp_NvMemWrite(nvIdx, &cfg.pOdtEntryCfgs[daq.idxDaqStart], entries);
        nvIdx += entries;
        nvIdx += cfg.pPrepareResume(sessionId, list, nvIdx);
        numResume++;
    }
    const Xcp_NvSession_t header = {XCP_NVMEM_MAGIC_NUMBER, session.sessionCfgId, session.numDynDaqLists, numResume,
                                    {0, 0}};
    XcpApp_NvMemWrite(cfg.nvStartIdx, reinterpret_cast<const U8*>(&header), sizeof(header));
    session.sessionStatus &= (U8)~XCP_SESSION_STATE_STORE_DAQ;
}

void Xcp_Initialize(void)
{
    XcpCan_Initialize();
    XcpApp_InitSeedKey();
    for (U32 sessionId = 0; sessionId < XCP_NUM_SESSIONS; sessionId++) {
        const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
        Xcp_Session_t& session = Xcp_Sessions[sessionId];
        session = Xcp_Session_t{};
        memset(cfg.pDaqStates, 0, sizeof(Xcp_Daq_t) * Xcp_NumDaqLists(cfg));
        memset(cfg.pDaqDynConfigs, 0, sizeof(Xcp_DaqDynConfig_t) * cfg.maxDynDaqLists);
        memset(cfg.pOdtEntryAddrs, 0, sizeof(Xcp_OdtEntryAddr_t) * cfg.totOdtEntries);
        memset(cfg.pOdtEntryCfgs, 0, sizeof(Xcp_OdtEntryCfg_t) * cfg.totOdtEntries);
        memset(cfg.pSegStates, 0, sizeof(Xcp_SegState_t) * cfg.numSegs);
        session.ctDaqListId = XCP_DAQLIST_UNDEF;
        session.ctResourceProtection = cfg.defResourceProtection;
        for (U32 list = 0; list < cfg.numStatDaqLists; list++) Xcp_ResetDaqList(sessionId, list);
        if (cfg.nvStartIdx != XCP_INVALID_NV_IDX) Xcp_DoResume(sessionId);
    }
}

// ---- The processor -------------------------------------------------------------------

// DOWNLOAD_NEXT and PROGRAM_NEXT continue a block; anything else abandons its rest.
static bool _continuesBlock(U8 pid, U8 prevCmd)
{
    if (pid == XCP_CMD_DOWNLOAD_NEXT) return prevCmd == XCP_CMD_DOWNLOAD_NEXT || prevCmd == XCP_CMD_DOWNLOAD;
    if (pid == XCP_CMD_PROGRAM_NEXT) return prevCmd == XCP_CMD_PROGRAM_NEXT || prevCmd == XCP_CMD_PROGRAM;
    return false;
}

static void _processSession(U32 sessionId)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    Xcp_Packet_t* rx = cfg.pGetRxBuf(sessionId, XCP_RX_CMD_CHANNEL);
    if (!rx) return;
    Xcp_Packet_t* tx = cfg.pGetTxBuf(sessionId, XCP_TX_CRM_CHANNEL);
    if (!tx) return;

    const U8 pid = rx->pid;
    U32 size = 0;
    U32 action;
    if (!session.isConnected && pid != XCP_CMD_CONNECT && pid != XCP_CMD_TRANSPORT_LAYER_CMD) {
        action = XCP_ACTION_RX_DONE;  // nobody to answer
    } else {
        if (session.prevCmd != XCP_CMD_CURR_CMD) session.timeoutCounter = 0;
        if (session.downloadRemainBytes != 0 && !_continuesBlock(pid, session.prevCmd)) session.downloadRemainBytes = 0;
        if (pid < XCP_CMD_LOWEST) {
            action = Xcp_CmdUnknown(sessionId, rx, tx, session.prevCmd, &size);
        } else if (Xcp_CmdResource(pid) & session.ctResourceProtection) {
            action = Xcp_ErrorResponse(tx, XCP_ERR_ACCESS_LOCKED, &size);
        } else {
            action = Xcp_CmdList[0xFF - pid](sessionId, rx, tx, session.prevCmd, &size);
        }
        session.prevCmd = action != 0 ? pid : XCP_CMD_CURR_CMD;
    }
    if (action & XCP_ACTION_RX_DONE) cfg.pRxNext(sessionId, XCP_RX_CMD_CHANNEL);
    if (action & XCP_ACTION_SEND) cfg.pTxNext(sessionId, XCP_TX_CRM_CHANNEL, size);

    // A command busy for long tells the master it is still at work.
    if (session.timeoutCounter < cfg.eventPendingTimeout) {
        session.timeoutCounter++;
        return;
    }
    Xcp_Packet_t* event = cfg.pGetTxBuf(sessionId, XCP_TX_EVENT_CHANNEL);
    if (!event) return;
    U32 eventSize;
    Xcp_PutPacket(event, Xcp_EventPacket_t{XCP_PID_EVENT, XCP_EV_CMD_PENDING}, &eventSize);
    cfg.pTxNext(sessionId, XCP_TX_EVENT_CHANNEL, eventSize);
    session.timeoutCounter = 0;
}

void Xcp_CmdProcessor(void)
{
    for (U32 sessionId = 0; sessionId < XCP_NUM_SESSIONS; sessionId++) _processSession(sessionId);
}

// ---- Handlers --------------------------------------------------------------------------

U32 Xcp_CmdConnect(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    if (pRxPacket->data[0] == 1) {
        XcpApp_OnUserDefinedCxn(sessionId);
    } else {
        XcpApp_OnNormalCxn(sessionId);
    }
    Xcp_Sessions[sessionId].isConnected = 1;
    const Xcp_ConnectResp_t resp = {XCP_PID_RESPONSE,     XCP_RESOURCES_AVAILABLE, XCP_COMM_MODE_BASIC,
                                    cfg.maxCtoLen,        cfg.maxDtoLen,           XCP_PROTOCOL_VERSION,
                                    XCP_TRANSPORTLAYER_CAN};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdDisconnect(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    if (Xcp_Sessions[sessionId].sessionStatus & XCP_SESSION_STATE_PGM)
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_PGM_ACTIVE, pTxPacketSize);
    Xcp_DoDisconnect(sessionId);
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdGetStatus(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    session.sessionStatus &= (U8)~XCP_SESSION_STATE_DAQ_RUNNING;
    for (U32 list = 0; list < Xcp_NumDaqLists(cfg); list++)
        if (cfg.pDaqStates[list].daqListMode & XCP_DAQLISTMODE_RUNNING)
            session.sessionStatus |= XCP_SESSION_STATE_DAQ_RUNNING;
    const Xcp_GetStatusResp_t resp = {XCP_PID_RESPONSE, (U8)(session.sessionStatus & XCP_STATUS_MASK),
                                      session.ctResourceProtection, 0, session.sessionCfgId};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdSynch(U32, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    return Xcp_ErrorResponse(pTxPacket, XCP_ERR_CMD_SYNCH, pTxPacketSize);
}

U32 Xcp_CmdGetCommModeInfo(U32, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_CommModeInfoResp_t resp = {XCP_PID_RESPONSE,
                                         0,
                                         XCP_COMM_MODE_OPTIONAL_MASTER_BLOCK,
                                         0,
                                         XCP_MAX_BS,
                                         XCP_MIN_ST,
                                         0,
                                         (U8)(XCP_DRIVER_VERSION_MAJOR << 4 | XCP_DRIVER_VERSION_MINOR)};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdGetId(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SlaveId_t& ids = Xcp_SlaveIds[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    const Xcp_GetIdCmd_t cmd = Xcp_GetPacket<Xcp_GetIdCmd_t>(pRxPacket);
    U32 length = 0;
    // The values: a missing one (address 0) has no length.
    auto value = [&](Xcp_Addr_t addr, U32 size) {
        session.mta = addr;
        length = addr != 0 ? size : 0;
    };
    switch (cmd.requestedType) {
    case XCP_IDT_ASCII:
        session.mta = ids.idString;
        length = ids.idStringLen;
        break;
    case XCP_IDT_ASAM_MC2:
        session.mta = ids.asamMC2String;
        length = ids.asamMC2StringLen;
        break;
    case XCP_IDT_TABLE_REV: value(Xcp_IdTableRevPtr, 2); break;
    case XCP_IDT_HARDWARE_TYPE: value(ids.hardwareType, 4); break;
    case XCP_IDT_ECU_ADDR: value(ids.ecuAddr, 4); break;
    default: break;
    }
    const Xcp_GetIdResp_t resp = {XCP_PID_RESPONSE, 0, 0, length};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdSetRequest(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    const Xcp_SetRequestCmd_t cmd = Xcp_GetPacket<Xcp_SetRequestCmd_t>(pRxPacket);
    if (cmd.mode & XCP_SET_REQUEST_STORE_CAL) {
        if (cmd.mode & (XCP_SET_REQUEST_STORE_DAQ | XCP_SET_REQUEST_CLEAR_DAQ))
            return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
        return Xcp_StoreCalReq(sessionId, pTxPacket, prevCmd, pTxPacketSize);
    }
    if (cfg.nvStartIdx == XCP_INVALID_NV_IDX) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    if (cmd.mode & XCP_SET_REQUEST_CLEAR_DAQ) {
        session.sessionStatus |= XCP_SESSION_STATE_CLEAR_DAQ;
        XcpApp_NvMemClear(cfg.nvStartIdx, sizeof(Xcp_NvSession_t));
        session.sessionStatus &= (U8)~XCP_SESSION_STATE_CLEAR_DAQ;
    }
    if (cmd.mode & XCP_SET_REQUEST_STORE_DAQ) _storeDaq(sessionId, cmd.sessionConfigId);
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdSetMta(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SetMtaCmd_t cmd = Xcp_GetPacket<Xcp_SetMtaCmd_t>(pRxPacket);
    const Xcp_Addr_t mta = XcpApp_ConvertAddress(cmd.address, cmd.addressExtension);
    if (mta == 0) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    Xcp_Sessions[sessionId].mta = mta;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdTransportLayer(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize)
{
    const Xcp_CmdHandler_t handler = Xcp_SessionConfigs[sessionId].pCmdProc;
    if (!handler) return Xcp_CmdUnknown(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
    return handler(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
}

U32 Xcp_CmdUnknown(U32, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    return Xcp_ErrorResponse(pTxPacket, XCP_ERR_CMD_UNKNOWN, pTxPacketSize);
}
