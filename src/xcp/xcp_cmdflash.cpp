#include "xcp_cmdflash.h"

#include "xcp_callbacks.h"
#include "xcp_core.h"

namespace {

// PROGRAM_START's answer: master and slave block mode, as fast as the slave allows.
constexpr U8 XCP_COMM_MODE_PGM = 0x41;
constexpr U8 XCP_MAX_BS_PGM = 255;
constexpr U8 XCP_MIN_ST_PGM = 100;
constexpr U8 XCP_PROGRAM_CLEAR_FUNCTIONAL = 1;

void _leavePgm(U32 sessionId)
{
    Xcp_Sessions[sessionId].sessionStatus &= (U8)~XCP_SESSION_STATE_PGM;
}

bool _inPgm(U32 sessionId)
{
    return Xcp_Sessions[sessionId].sessionStatus & XCP_SESSION_STATE_PGM;
}

// A repeated pass of a busy command only asks how it is going.
Xcp_ProgramState _state(U32 prevCmd, Xcp_ProgramState (*start)())
{
    return prevCmd == XCP_CMD_CURR_CMD ? XcpApp_ProgramGetRequestState() : start();
}

// The answer of a finished, busy or rejected request; `other` for the rest, which also
// ends the sequence when `closes` says so.
U32 _answer(U32 sessionId, Xcp_ProgramState state, U8 other, bool closes, Xcp_Packet_t* pTxPacket,
            U32* pTxPacketSize)
{
    switch (state) {
    case PROGRAM_FINISHED: return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
    case PROGRAM_BUSY: return 0;
    case PROGRAM_REJECTED: return Xcp_ErrorResponse(pTxPacket, XCP_ERR_CMD_BUSY, pTxPacketSize);
    default:
        if (closes) _leavePgm(sessionId);
        return Xcp_ErrorResponse(pTxPacket, other, pTxPacketSize);
    }
}

// One frame's bytes to mta, for PROGRAM, PROGRAM_NEXT and PROGRAM_MAX. A middle frame of
// a block is not answered.
U32 Xcp_WriteFlashData(U32 sessionId, const U8* data, U8 numBytes, U32 prevCmd, Xcp_Packet_t* pTxPacket,
                       U32* pTxPacketSize)
{
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    if (!_inPgm(sessionId)) {
        session.downloadRemainBytes = 0;
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    }
    const Xcp_ProgramState state = prevCmd == XCP_CMD_CURR_CMD ? XcpApp_ProgramGetRequestState()
                                                               : XcpApp_Program(session.mta, numBytes, data);
    if (state == PROGRAM_FINISHED) {
        session.mta += numBytes;
        if (session.downloadRemainBytes > 0) return XCP_ACTION_RX_DONE;
    } else if (state != PROGRAM_BUSY) {
        session.downloadRemainBytes = 0;
    }
    return _answer(sessionId, state, XCP_ERR_ACCESS_DENIED, true, pTxPacket, pTxPacketSize);
}

// As many of the count's bytes as fit in the frame; the rest is left to PROGRAM_NEXT.
U32 _programFrame(U32 sessionId, Xcp_Packet_t* pRxPacket, U32 prevCmd, Xcp_Packet_t* pTxPacket, U32* pTxPacketSize)
{
    const Xcp_DownloadCmd_t cmd = Xcp_GetPacket<Xcp_DownloadCmd_t>(pRxPacket);
    const U8 room = Xcp_SessionConfigs[sessionId].maxCtoLen - 2;
    const U8 now = cmd.numElements < room ? cmd.numElements : room;
    Xcp_Sessions[sessionId].downloadRemainBytes = cmd.numElements - now;
    return Xcp_WriteFlashData(sessionId, cmd.data, now, prevCmd, pTxPacket, pTxPacketSize);
}

}  // namespace

U32 Xcp_CmdProgramStart(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    for (U32 other = 0; other < XCP_NUM_SESSIONS; other++)
        if (other != sessionId && _inPgm(other)) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_GENERIC, pTxPacketSize);
    const Xcp_Addr_t mta = Xcp_Sessions[sessionId].mta;
    const Xcp_ProgramState state =
        prevCmd == XCP_CMD_CURR_CMD ? XcpApp_ProgramGetRequestState() : XcpApp_ProgramStart(mta);
    if (state != PROGRAM_FINISHED) return _answer(sessionId, state, XCP_ERR_GENERIC, false, pTxPacket, pTxPacketSize);
    Xcp_Sessions[sessionId].sessionStatus |= XCP_SESSION_STATE_PGM;
    const U8 maxCto = Xcp_SessionConfigs[sessionId].maxCtoLen;
    const Xcp_ProgramStartResp_t resp = {XCP_PID_RESPONSE, 0, XCP_COMM_MODE_PGM, maxCto, XCP_MAX_BS_PGM, XCP_MIN_ST_PGM, 0};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdProgramClear(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                        U32* pTxPacketSize)
{
    const Xcp_ProgramClearCmd_t cmd = Xcp_GetPacket<Xcp_ProgramClearCmd_t>(pRxPacket);
    if (cmd.mode == XCP_PROGRAM_CLEAR_FUNCTIONAL) {
        _leavePgm(sessionId);
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    }
    if (!_inPgm(sessionId)) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    const Xcp_ProgramState state = prevCmd == XCP_CMD_CURR_CMD
                                       ? XcpApp_ProgramGetRequestState()
                                       : XcpApp_ProgramClear(Xcp_Sessions[sessionId].mta, cmd.clearRange);
    return _answer(sessionId, state, XCP_ERR_ACCESS_DENIED, true, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdProgram(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    return _programFrame(sessionId, pRxPacket, prevCmd, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdProgramNext(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize)
{
    const U8 expected = Xcp_Sessions[sessionId].downloadRemainBytes;
    if (prevCmd != XCP_CMD_CURR_CMD && (expected == 0 || pRxPacket->data[0] != expected)) {
        _leavePgm(sessionId);
        Xcp_PutPacket(pTxPacket, Xcp_DownloadNextErr_t{XCP_PID_ERROR, XCP_ERR_SEQUENCE, expected}, pTxPacketSize);
        return XCP_ACTION_DONE;
    }
    return _programFrame(sessionId, pRxPacket, prevCmd, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdProgramMax(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                      U32* pTxPacketSize)
{
    Xcp_Sessions[sessionId].downloadRemainBytes = 0;
    const U8 length = Xcp_SessionConfigs[sessionId].maxCtoLen - 1;
    return Xcp_WriteFlashData(sessionId, pRxPacket->data, length, prevCmd, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdProgramReset(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize)
{
    const Xcp_ProgramState state = _state(prevCmd, XcpApp_ProgramReset);
    if (state == PROGRAM_FINISHED) {
        _leavePgm(sessionId);
        Xcp_DoDisconnect(sessionId);
    }
    return _answer(sessionId, state, XCP_ERR_GENERIC, true, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdProgramPrepare(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize)
{
    const U16 codeSize = Xcp_GetPacket<Xcp_ProgramPrepareCmd_t>(pRxPacket).codeSize;
    const Xcp_ProgramState state = prevCmd == XCP_CMD_CURR_CMD
                                       ? XcpApp_ProgramGetRequestState()
                                       : XcpApp_ProgramPrepare(Xcp_Sessions[sessionId].mta, codeSize);
    return _answer(sessionId, state, XCP_ERR_GENERIC, false, pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdProgramFormat(U32, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    // Compression, encryption, programming and access method: only the plain ones.
    for (U32 i = 0; i < 4; i++)
        if (pRxPacket->data[i] != 0) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}
