#include "xcp_cal.h"

#include "xcp_callbacks.h"
#include "xcp_core.h"
#include "xcp_map.h"

// Every segment names an init segment for pages 0 and 1, whatever its page count.
constexpr U8 XCP0_PAGES_LISTED = 2;
constinit const Xcp_PageCfg_t Xcp0_PageConfigs0[XCP0_PAGES_LISTED] = {{0}, {1}};
constinit const Xcp_PageCfg_t Xcp0_PageConfigs1[XCP0_PAGES_LISTED] = {{1}, {1}};
constinit const Xcp_SegCfg_t Xcp0_SegConfigs[XCP0_NUM_SEGS] = {{Xcp0_PageConfigs0, 1}, {Xcp0_PageConfigs1, 2}};
Xcp_SegState_t Xcp0_SegStates[XCP0_NUM_SEGS];

namespace {

// A checksum's result, kept for a pass that only asks whether it is done.
U8 m_checksumType;
U32 m_checksum;

}  // namespace

// One frame of an upload: as many bytes as fit from mta, and the command stays at the
// head of the queue until its count is used up.
static U32 Xcp_ReadUploadData(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                              U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    const U8 count = pRxPacket->data[0];
    const U8 room = cfg.maxCtoLen - 1;
    const U8 now = count < room ? count : room;
    const Xcp_CalMemState state = prevCmd == XCP_CMD_CURR_CMD ? XcpApp_CalMemGetRequestState()
                                                              : XcpApp_CalMemRead(session.mta, now, pTxPacket->data);
    switch (state) {
    case CALMEM_FINISHED:
        session.mta += now;
        pRxPacket->data[0] = count - now;
        pTxPacket->pid = XCP_PID_RESPONSE;
        *pTxPacketSize = 1u + now;
        return pRxPacket->data[0] > 0 ? XCP_ACTION_SEND : XCP_ACTION_DONE;
    case CALMEM_BUSY: return 0;
    case CALMEM_REJECTED: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_CMD_BUSY, pTxPacketSize);
    default: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_ACCESS_DENIED, pTxPacketSize);
    }
}

U32 Xcp_CmdUpload(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    return Xcp_ReadUploadData(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
}

U32 Xcp_CmdShortUpload(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize)
{
    if (prevCmd != XCP_CMD_CURR_CMD) {
        const Xcp_ShortUploadCmd_t cmd = Xcp_GetPacket<Xcp_ShortUploadCmd_t>(pRxPacket);
        const Xcp_Addr_t mta = XcpApp_ConvertAddress(cmd.address, cmd.addressExtension);
        if (mta == 0) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
        Xcp_Sessions[sessionId].mta = mta;
        if (cmd.numElements > Xcp_SessionConfigs[sessionId].maxCtoLen - 1)
            return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    }
    return Xcp_ReadUploadData(sessionId, pRxPacket, pTxPacket, prevCmd, pTxPacketSize);
}

// The error of a block the slave will not sum, with the largest block it would.
static U32 _checksumRefused(Xcp_Packet_t* pTxPacket, U32* pTxPacketSize)
{
    const Xcp_BuildChecksumResp_t resp = {XCP_PID_ERROR, XCP_ERR_OUT_OF_RANGE, 0, XCP_MAX_CHECKSUM_BLOCKSIZE};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdBuildChecksum(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                         U32* pTxPacketSize)
{
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    const Xcp_BuildChecksumCmd_t cmd = Xcp_GetPacket<Xcp_BuildChecksumCmd_t>(pRxPacket);
    if (cmd.blockSize > XCP_MAX_CHECKSUM_BLOCKSIZE) return _checksumRefused(pTxPacket, pTxPacketSize);
    const Xcp_CalMemState state = prevCmd == XCP_CMD_CURR_CMD
                                      ? XcpApp_CalMemGetRequestState()
                                      : XcpApp_CalMemGetChecksum(session.mta, cmd.blockSize, &m_checksumType,
                                                                 &m_checksum);
    switch (state) {
    case CALMEM_FINISHED: {
        session.mta += cmd.blockSize;
        const Xcp_BuildChecksumResp_t resp = {XCP_PID_RESPONSE, m_checksumType, 0, m_checksum};
        Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
        return XCP_ACTION_DONE;
    }
    case CALMEM_BUSY: return 0;
    case CALMEM_REJECTED: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_CMD_BUSY, pTxPacketSize);
    default: return _checksumRefused(pTxPacket, pTxPacketSize);
    }
}

// ---- Writing ------------------------------------------------------------------------

namespace {

enum : U8 {
    XCP_CALPAGE_MODE_ECU = 0x01,
    XCP_CALPAGE_MODE_XCP = 0x02,
    XCP_CALPAGE_MODE_ALL = 0x80,
};
enum : U8 {
    XCP_CALPAGE_ACCESS_ECU = 1,
    XCP_CALPAGE_ACCESS_XCP = 2,
};
constexpr U8 XCP_PAG_PROPERTY_FREEZE_SUPPORTED = 0x01;

// The error of a write that did not finish.
U8 _writeError(Xcp_CalMemState state)
{
    switch (state) {
    case CALMEM_OUTOFRAM: return XCP_ERR_MEMORY_OVERFLOW;
    case CALMEM_REJECTED: return XCP_ERR_CMD_BUSY;
    default: return XCP_ERR_ACCESS_DENIED;
    }
}

}  // namespace

// One frame's bytes to mta. A middle frame of a block is not answered; a failed one ends
// the block, leaving what was written before in place.
static U32 Xcp_WriteDownloadData(U32 sessionId, const U8* data, U8 numBytes, U32 prevCmd, Xcp_Packet_t* pTxPacket,
                                 U32* pTxPacketSize)
{
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    const Xcp_CalMemState state = prevCmd == XCP_CMD_CURR_CMD ? XcpApp_CalMemGetRequestState()
                                                              : XcpApp_CalMemWrite(session.mta, numBytes, data);
    switch (state) {
    case CALMEM_FINISHED:
        session.mta += numBytes;
        if (session.downloadRemainBytes > 0) return XCP_ACTION_RX_DONE;
        return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
    case CALMEM_BUSY: return 0;
    default:
        session.downloadRemainBytes = 0;
        return Xcp_ErrorResponse(pTxPacket, _writeError(state), pTxPacketSize);
    }
}

// As many of the count's bytes as fit in the frame; the rest is left to DOWNLOAD_NEXT.
static U32 _downloadFrame(U32 sessionId, Xcp_Packet_t* pRxPacket, U32 prevCmd, Xcp_Packet_t* pTxPacket,
                          U32* pTxPacketSize)
{
    const Xcp_DownloadCmd_t cmd = Xcp_GetPacket<Xcp_DownloadCmd_t>(pRxPacket);
    const U8 room = Xcp_SessionConfigs[sessionId].maxCtoLen - 2;
    const U8 now = cmd.numElements < room ? cmd.numElements : room;
    Xcp_Sessions[sessionId].downloadRemainBytes = cmd.numElements - now;
    return Xcp_WriteDownloadData(sessionId, cmd.data, now, prevCmd, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdDownload(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    return _downloadFrame(sessionId, pRxPacket, prevCmd, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdDownloadNext(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                        U32* pTxPacketSize)
{
    const U8 expected = Xcp_Sessions[sessionId].downloadRemainBytes;
    if (prevCmd != XCP_CMD_CURR_CMD && (expected == 0 || pRxPacket->data[0] != expected)) {
        Xcp_PutPacket(pTxPacket, Xcp_DownloadNextErr_t{XCP_PID_ERROR, XCP_ERR_SEQUENCE, expected}, pTxPacketSize);
        return XCP_ACTION_DONE;
    }
    return _downloadFrame(sessionId, pRxPacket, prevCmd, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdDownloadMax(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize)
{
    Xcp_Sessions[sessionId].downloadRemainBytes = 0;
    const U8 length = Xcp_SessionConfigs[sessionId].maxCtoLen - 1;
    return Xcp_WriteDownloadData(sessionId, pRxPacket->data, length, prevCmd, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdModifyBits(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize)
{
    const Xcp_ModifyBitsCmd_t cmd = Xcp_GetPacket<Xcp_ModifyBitsCmd_t>(pRxPacket);
    const Xcp_CalMemState state =
        prevCmd == XCP_CMD_CURR_CMD
            ? XcpApp_CalMemGetRequestState()
            : XcpApp_CalMemModifyBits(Xcp_Sessions[sessionId].mta, cmd.shiftValue, cmd.andMask, cmd.xorMask);
    switch (state) {
    case CALMEM_FINISHED: return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
    case CALMEM_BUSY: return 0;
    default: return Xcp_ErrorResponse(pTxPacket, _writeError(state), pTxPacketSize);
    }
}

// ---- Pages and segments ---------------------------------------------------------------

U32 Xcp_CmdSetCalPage(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    const Xcp_SetCalPageCmd_t cmd = Xcp_GetPacket<Xcp_SetCalPageCmd_t>(pRxPacket);
    if (!(cmd.mode & (XCP_CALPAGE_MODE_ECU | XCP_CALPAGE_MODE_XCP)))
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_MODE_NOT_VALID, pTxPacketSize);
    const bool all = cmd.mode & XCP_CALPAGE_MODE_ALL;
    Xcp_CalPageErr result = CALPAGE_OK;
    if (cmd.mode & XCP_CALPAGE_MODE_ECU)
        result = all ? XcpApp_SetEcuCalPageAllSegs(cmd.page) : XcpApp_SetEcuCalPage(cmd.segment, cmd.page);
    if (result == CALPAGE_OK && (cmd.mode & XCP_CALPAGE_MODE_XCP)) {
        result = all ? XcpApp_SetToolCalPageAllSegs(cmd.page) : XcpApp_SetToolCalPage(cmd.segment, cmd.page);
        // Only segments that exist, whatever the application accepted.
        if (result == CALPAGE_OK)
            for (U32 seg = 0; seg < cfg.numSegs; seg++)
                if (all || seg == cmd.segment) cfg.pSegStates[seg].toolPage = cmd.page;
    }
    switch (result) {
    case CALPAGE_OK: return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
    case CALPAGE_PAGEINVALID: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_PAGE_NOT_VALID, pTxPacketSize);
    case CALPAGE_SEGINVALID: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_SEGMENT_NOT_VALID, pTxPacketSize);
    default: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_MODE_NOT_VALID, pTxPacketSize);
    }
}

U32 Xcp_CmdGetCalPage(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    const Xcp_SegmentCmd_t cmd = Xcp_GetPacket<Xcp_SegmentCmd_t>(pRxPacket);
    if (cmd.segment >= cfg.numSegs) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_SEGMENT_NOT_VALID, pTxPacketSize);
    U8 page;
    if (cmd.mode == XCP_CALPAGE_ACCESS_ECU) {
        page = XcpApp_GetEcuCalPage(cmd.segment);
    } else if (cmd.mode == XCP_CALPAGE_ACCESS_XCP) {
        page = cfg.pSegStates[cmd.segment].toolPage;
    } else {
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_MODE_NOT_VALID, pTxPacketSize);
    }
    Xcp_PutPacket(pTxPacket, Xcp_GetCalPageResp_t{XCP_PID_RESPONSE, {0, 0}, page}, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdGetPagProcInfo(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_GetPagProcInfoResp_t resp = {XCP_PID_RESPONSE, Xcp_SessionConfigs[sessionId].numSegs,
                                           XCP_PAG_PROPERTY_FREEZE_SUPPORTED};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdSetSegmentMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    const Xcp_SegmentCmd_t cmd = Xcp_GetPacket<Xcp_SegmentCmd_t>(pRxPacket);
    if (cmd.segment >= cfg.numSegs) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    // Also ends a freeze still pending.
    cfg.pSegStates[cmd.segment].mode = cmd.mode & XCP_SEGMODE_FREEZE;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdGetSegmentMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    const Xcp_SegmentCmd_t cmd = Xcp_GetPacket<Xcp_SegmentCmd_t>(pRxPacket);
    if (cmd.segment >= cfg.numSegs) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    const Xcp_GetSegmentModeResp_t resp = {XCP_PID_RESPONSE, 0,
                                           (U8)(cfg.pSegStates[cmd.segment].mode & XCP_SEGMODE_FREEZE)};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdCopyCalPage(U32, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    const Xcp_CopyCalPageCmd_t cmd = Xcp_GetPacket<Xcp_CopyCalPageCmd_t>(pRxPacket);
    const Xcp_CalMemState state = prevCmd == XCP_CMD_CURR_CMD
                                      ? XcpApp_CalMemGetRequestState()
                                      : XcpApp_CalPageCopy(cmd.dstSegment, cmd.dstPage, cmd.srcSegment, cmd.srcPage);
    switch (state) {
    case CALMEM_FINISHED: return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
    case CALMEM_BUSY: return 0;
    case CALMEM_REJECTED: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_CMD_BUSY, pTxPacketSize);
    case CALMEM_PAGENOTVALID: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_PAGE_NOT_VALID, pTxPacketSize);
    case CALMEM_SEGNOTVALID: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_SEGMENT_NOT_VALID, pTxPacketSize);
    default: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_WRITE_PROTECTED, pTxPacketSize);
    }
}

// ---- Storing ----------------------------------------------------------------------------

U32 Xcp_StoreCalReq(U32 sessionId, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    bool repeated = prevCmd == XCP_CMD_CURR_CMD;
    for (U32 seg = 0; seg < cfg.numSegs; seg++) {
        Xcp_SegState_t& segState = cfg.pSegStates[seg];
        if (!(segState.mode & XCP_SEGMODE_FREEZE)) continue;
        Xcp_CalMemState state;
        if (!(segState.mode & XCP_SEGMODE_FREEZE_PENDING)) {
            // Frozen in an earlier pass of this same request.
            if (repeated) continue;
            session.sessionStatus |= XCP_SESSION_STATE_STORE_CAL;
            const U8 page = segState.toolPage < XCP0_PAGES_LISTED ? segState.toolPage : 0;
            state = XcpApp_CalSegFreeze((U8)seg, cfg.pSegConfigs[seg].pPageConfigs[page].initSegment);
        } else {
            segState.mode &= (U8)~XCP_SEGMODE_FREEZE_PENDING;
            state = XcpApp_CalMemGetRequestState();
        }
        repeated = false;
        U8 error;
        switch (state) {
        case CALMEM_FINISHED: continue;
        case CALMEM_BUSY: segState.mode |= XCP_SEGMODE_FREEZE_PENDING; return 0;
        case CALMEM_REJECTED: error = XCP_ERR_CMD_BUSY; break;
        case CALMEM_SEGNOTVALID: error = XCP_ERR_SEGMENT_NOT_VALID; break;
        default: error = XCP_ERR_WRITE_PROTECTED; break;
        }
        session.sessionStatus &= (U8)~XCP_SESSION_STATE_STORE_CAL;
        return Xcp_ErrorResponse(pTxPacket, error, pTxPacketSize);
    }
    session.sessionStatus &= (U8)~XCP_SESSION_STATE_STORE_CAL;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}
