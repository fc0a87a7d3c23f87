#include "xcp_cmdseednkey.h"

#include "SeednKey.h"
#include "xcp_core.h"

namespace {

enum : U8 {
    XCP_GET_SEED_FIRST = 0,  // a new seed; any other mode asks for the rest of one
};

// Key bytes still to come in the frames of an UNLOCK, for each session: a frame must
// say exactly this many, so that none can write past the buffer the first one sized.
U8 m_keyRemainBytes[XCP_NUM_SESSIONS];

bool _isOneResource(U8 resource)
{
    return resource == XCP_RESOURCE_CAL_PAG || resource == XCP_RESOURCE_DAQ || resource == XCP_RESOURCE_STIM ||
           resource == XCP_RESOURCE_PGM;
}

// The response of UNLOCK: what is still locked.
U32 _protection(const Xcp_Session_t& session, Xcp_Packet_t* pTxPacket, U32* pTxPacketSize)
{
    pTxPacket->pid = XCP_PID_RESPONSE;
    pTxPacket->data[0] = session.ctResourceProtection;
    *pTxPacketSize = 2;
    return XCP_ACTION_DONE;
}

// A wrong key, or a key of the wrong length: the session ends.
U32 _refused(U32 sessionId, Xcp_Packet_t* pTxPacket, U32* pTxPacketSize)
{
    Xcp_DoDisconnect(sessionId);
    return Xcp_ErrorResponse(pTxPacket, XCP_ERR_ACCESS_LOCKED, pTxPacketSize);
}

}  // namespace

U32 Xcp_CmdGetSeed(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    const Xcp_GetSeedCmd_t cmd = Xcp_GetPacket<Xcp_GetSeedCmd_t>(pRxPacket);
    const U8 resource = cmd.resource;
    pTxPacket->pid = XCP_PID_RESPONSE;
    if (resource != 0 && !(resource & session.ctResourceProtection)) {
        // Not locked: no seed is needed.
        pTxPacket->data[0] = 0;
        *pTxPacketSize = 2;
        return XCP_ACTION_DONE;
    }
    if (cmd.mode == XCP_GET_SEED_FIRST) {
        if (!_isOneResource(resource)) return Xcp_ErrorResponse(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
        XcpApp_GetSeed(sessionId, resource, &session.seedOrKey.pRemainSeed, &session.seedRemainBytes);
        session.unlockResource = resource;
    } else if (session.seedRemainBytes == 0) {
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    }
    const U8 room = cfg.maxCtoLen - 2;
    const U8 remain = session.seedRemainBytes;
    const U8 now = remain < room ? remain : room;
    pTxPacket->data[0] = remain;
    if (now > 0) memcpy(&pTxPacket->data[1], session.seedOrKey.pRemainSeed, now);
    *pTxPacketSize = 2u + now;
    if (remain <= room) {
        session.seedRemainBytes = 0;
        session.seedOrKey.pRemainSeed = nullptr;
    } else {
        session.seedRemainBytes -= now;
        session.seedOrKey.pRemainSeed += now;
    }
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdUnlock(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    Xcp_Session_t& session = Xcp_Sessions[sessionId];
    // A key needs a seed sent whole, and the last attempt used up the one before.
    if (session.unlockResource == 0 || session.seedRemainBytes != 0)
        return Xcp_ErrorResponse(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    const U8 length = pRxPacket->data[0];
    U8*& key = session.seedOrKey.pKey;
    if (!key) {
        XcpApp_GetKeyBuffer(sessionId, session.unlockResource, &key, length);
        if (!key) {
            session.unlockResource = 0;
            return Xcp_ErrorResponse(pTxPacket, XCP_ERR_MEMORY_OVERFLOW, pTxPacketSize);
        }
        m_keyRemainBytes[sessionId] = length;
    } else if (length != m_keyRemainBytes[sessionId]) {
        key = nullptr;
        return _refused(sessionId, pTxPacket, pTxPacketSize);
    }
    const U8 room = cfg.maxCtoLen - 2;
    const bool last = length <= room;
    const U8 now = last ? length : room;
    memcpy(key, &pRxPacket->data[1], now);
    if (!last) {
        key += now;
        m_keyRemainBytes[sessionId] -= now;
        return _protection(session, pTxPacket, pTxPacketSize);
    }
    key = nullptr;
    const U8 resource = session.unlockResource;
    session.unlockResource = 0;
    if (!XcpApp_UnlockResource(sessionId, resource)) return _refused(sessionId, pTxPacket, pTxPacketSize);
    session.ctResourceProtection &= (U8)~resource;
    return _protection(session, pTxPacket, pTxPacketSize);
}
