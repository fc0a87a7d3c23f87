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
