#include "xcp_daq.h"

#include <cstring>

#include "xcp_callbacks.h"
#include "xcp_core.h"
#include "xcp_map.h"

// Each list has its own PID range and its own stretch of the entry tables, reserved
// whether the list is allocated or not.
constexpr Xcp_DaqCfg_t Xcp0_DaqConfigs[XCP0_NUM_DAQ] = {
    {0, XCP0_NUM_ODT_DYNDAQ, 0, XCP0_NUM_ODT_ENTRIES_DYNDAQ, XCP_DAQLISTPROPERTY_DAQ, 0},
    {8, XCP0_NUM_ODT_DYNDAQ, 56, XCP0_NUM_ODT_ENTRIES_DYNDAQ, XCP_DAQLISTPROPERTY_DAQ, 0},
    {16, XCP0_NUM_ODT_DYNDAQ, 112, XCP0_NUM_ODT_ENTRIES_DYNDAQ, XCP_DAQLISTPROPERTY_DAQ, 0},
};
static_assert([] {
    U32 nextPid = 0, nextEntry = 0;
    for (const Xcp_DaqCfg_t& c : Xcp0_DaqConfigs) {
        if (c.firstPid != nextPid || c.idxDaqStart != nextEntry) return false;
        nextPid += c.numOdt;
        nextEntry += (U32)c.numOdt * c.numOdtEntries;
    }
    return nextEntry == XCP0_ODT_LIST_SIZE;
}(), "PIDs unique over the lists, entries without overlap");

Xcp_OdtEntryAddr_t Xcp0_OdtEntryAddrs[XCP0_ODT_LIST_SIZE];
Xcp_OdtEntryCfg_t Xcp0_OdtEntryCfgs[XCP0_ODT_LIST_SIZE];
Xcp_Daq_t Xcp0_DaqStates[XCP0_NUM_DAQ];
Xcp_DaqDynConfig_t Xcp0_DaqDynConfigs[XCP0_NUM_DYN_DAQ];

void Xcp_ResetDaqList(U32 sessionId, U32 daqListId)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    if (daqListId >= (U32)cfg.numStatDaqLists + cfg.maxDynDaqLists) return;
    const Xcp_DaqCfg_t& daq = cfg.pDaqConfigs[daqListId];
    Xcp_Daq_t& state = cfg.pDaqStates[daqListId];
    state.daqListMode = (daq.properties & XCP_DAQLISTPROPERTY_DAQ) ? 0 : XCP_DAQLISTMODE_DIRECTION;
    state.maxOdtIdUsed = 0;
    state.daqEvent = daq.defaultEvent;
    cfg.pResetDaqList(sessionId, daqListId);
}

U32 Xcp_GetTimestamp(const Xcp_SessionCfg_t* pSessionCfg, U8* dest)
{
    const U32 n = pSessionCfg->numBytesTimestamp;
    if (n != 1 && n != 2 && n != 4) return 0;
    const U32 now = XcpApp_GetTimestamp();
    for (U32 i = 0; i < n; i++) dest[i] = (U8)(now >> (8 * i));
    return n;
}

U32 Xcp_DaqProcessor(U32 daqListId, U32 sessionId, const Xcp_SessionCfg_t* pSessionCfg)
{
    const Xcp_SessionCfg_t& cfg = *pSessionCfg;
    const Xcp_DaqCfg_t& daq = cfg.pDaqConfigs[daqListId];
    const U8 mode = cfg.pDaqStates[daqListId].daqListMode;
    const bool dynamic = daqListId >= cfg.numStatDaqLists;
    const Xcp_DaqDynConfig_t* dyn = dynamic ? &cfg.pDaqDynConfigs[daqListId - cfg.numStatDaqLists] : nullptr;
    const Xcp_OdtEntryCfg_t* entryCfgs = &cfg.pOdtEntryCfgs[daq.idxDaqStart];
    const Xcp_OdtEntryAddr_t* entryAddrs = &cfg.pOdtEntryAddrs[daq.idxDaqStart];
    if (!dynamic && entryCfgs[0] == 0) return XCPEVENT_DAQSTIM_NOT_EXECUTED;
    const U32 numOdt = dynamic && dyn->numOdt < daq.numOdt ? dyn->numOdt : daq.numOdt;
    const U32 channelId = daqListId + XCP_FIRST_DAQ_CHANNEL;
    U32 flags = XCPEVENT_DAQSTIM_NOT_EXECUTED;
    for (U32 odt = 0; odt < numOdt; odt++) {
        const U32 first = odt * daq.numOdtEntries;
        // An empty ODT sends nothing and the PIDs of the others stay as they are.
        if (entryCfgs[first] == 0) continue;
        Xcp_Packet_t* packet = cfg.pGetTxBuf(sessionId, channelId);
        if (!packet) return flags | XCPEVENT_DAQ_OVERLOAD;
        U8 frame[XCP0_MAXDTO] = {};
        U32 length = 0;
        if (!(mode & XCP_DAQLISTMODE_PIDOFF)) frame[length++] = (U8)(daq.firstPid + odt);
        if (odt == 0 && (mode & XCP_DAQLISTMODE_TIMESTAMP)) length += Xcp_GetTimestamp(&cfg, frame + length);
        U32 numEntries = daq.numOdtEntries;
        if (dynamic && dyn->odtEntryNums[odt] < numEntries) numEntries = dyn->odtEntryNums[odt];
        U32 used = 0;
        for (U32 e = 0; e < numEntries; e++) {
            const U8 entry = entryCfgs[first + e];
            if (entry == 0) break;
            const bool bit = entry & XCP_ODTENTRY_SINGLE_BIT;
            const U32 size = bit ? 1 : entry;
            if (length + size > cfg.maxDtoLen || length + size > sizeof(frame)) {
                flags |= XCPEVENT_DTO_OVERFILL;
                break;
            }
            // An address outside the maps leaves zeros.
            if (bit) {
                U8 byte = 0;
                XcpApp_CalMemRead(entryAddrs[first + e], 1, &byte);
                frame[length] = (byte >> (entry & XCP_ODTENTRY_BITOFFSET_MASK)) & 1;
            } else {
                XcpApp_CalMemRead(entryAddrs[first + e], size, frame + length);
            }
            length += size;
            used++;
        }
        if (used == 0) continue;
        U32 ignored;
        Xcp_PutPacket(packet, frame, &ignored);
        cfg.pTxNext(sessionId, channelId, length);
        flags |= XCPEVENT_DAQSTIM_EXECUTED;
    }
    return flags;
}

U32 Xcp_Event(U32 eventId, U32 doStim)
{
    U32 flags = XCPEVENT_DAQSTIM_NOT_EXECUTED;
    for (U32 sessionId = 0; sessionId < XCP_NUM_SESSIONS; sessionId++) {
        const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
        const U32 lists = (U32)cfg.numStatDaqLists + Xcp_Sessions[sessionId].numDynDaqLists;
        for (U32 list = 0; list < lists; list++) {
            const Xcp_Daq_t& state = cfg.pDaqStates[list];
            if (!(state.daqListMode & XCP_DAQLISTMODE_RUNNING) || state.daqEvent != eventId) continue;
            // Every list of this system is DAQ only: none ever runs in the STIM direction.
            const bool stim = state.daqListMode & XCP_DAQLISTMODE_DIRECTION;
            if (!doStim && !stim) flags |= Xcp_DaqProcessor(list, sessionId, &cfg);
        }
    }
    return flags;
}
