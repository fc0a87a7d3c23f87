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
    if (daqListId >= Xcp_NumDaqLists(cfg)) return;
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

// The entries of one ODT, as many as are allocated, up to the first unused one:
// fn(entry, address, its place in the frame) for each that fits in maxLength bytes.
// XCPEVENT_DTO_OVERFILL when one did not, and the rest are left.
template <typename ENTRY_FN_T>
static U32 _walkOdt(const Xcp_SessionCfg_t& cfg, U32 daqListId, U32 odt, U32 at, U32 maxLength, ENTRY_FN_T fn)
{
    const Xcp_DaqCfg_t& daq = cfg.pDaqConfigs[daqListId];
    const bool dynamic = daqListId >= cfg.numStatDaqLists;
    U32 numEntries = daq.numOdtEntries;
    if (dynamic) {
        const U8 allocated = cfg.pDaqDynConfigs[daqListId - cfg.numStatDaqLists].odtEntryNums[odt];
        if (allocated < numEntries) numEntries = allocated;
    }
    const U32 first = daq.idxDaqStart + odt * daq.numOdtEntries;
    for (U32 e = 0; e < numEntries; e++) {
        const U8 entry = cfg.pOdtEntryCfgs[first + e];
        if (entry == 0) break;
        const U32 size = (entry & XCP_ODTENTRY_SINGLE_BIT) ? 1 : entry;
        if (at + size > maxLength) return XCPEVENT_DTO_OVERFILL;
        fn(entry, cfg.pOdtEntryAddrs[first + e], at);
        at += size;
    }
    return XCPEVENT_DAQSTIM_NOT_EXECUTED;
}

U32 Xcp_DaqProcessor(U32 daqListId, U32 sessionId, const Xcp_SessionCfg_t* pSessionCfg)
{
    const Xcp_SessionCfg_t& cfg = *pSessionCfg;
    const Xcp_DaqCfg_t& daq = cfg.pDaqConfigs[daqListId];
    const U8 mode = cfg.pDaqStates[daqListId].daqListMode;
    const bool dynamic = daqListId >= cfg.numStatDaqLists;
    const Xcp_DaqDynConfig_t* dyn = dynamic ? &cfg.pDaqDynConfigs[daqListId - cfg.numStatDaqLists] : nullptr;
    const Xcp_OdtEntryCfg_t* entryCfgs = &cfg.pOdtEntryCfgs[daq.idxDaqStart];
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
        U32 used = 0;
        const U32 maxLength = cfg.maxDtoLen < sizeof(frame) ? cfg.maxDtoLen : sizeof(frame);
        flags |= _walkOdt(cfg, daqListId, odt, length, maxLength, [&](U8 entry, Xcp_OdtEntryAddr_t addr, U32 pos) {
            // An address outside the maps leaves zeros.
            if (entry & XCP_ODTENTRY_SINGLE_BIT) {
                U8 byte = 0;
                XcpApp_CalMemRead(addr, 1, &byte);
                frame[pos] = (byte >> (entry & XCP_ODTENTRY_BITOFFSET_MASK)) & 1;
                length = pos + 1;
            } else {
                XcpApp_CalMemRead(addr, entry, frame + pos);
                length = pos + entry;
            }
            used++;
        });
        if (used == 0) continue;
        U32 ignored;
        Xcp_PutPacket(packet, frame, &ignored);
        cfg.pTxNext(sessionId, channelId, length);
        flags |= XCPEVENT_DAQSTIM_EXECUTED;
    }
    return flags;
}

U32 Xcp_StimProcessor(U32 daqListId, U32 sessionId, const Xcp_SessionCfg_t* pSessionCfg)
{
    const Xcp_SessionCfg_t& cfg = *pSessionCfg;
    const Xcp_DaqCfg_t& daq = cfg.pDaqConfigs[daqListId];
    const U8 mode = cfg.pDaqStates[daqListId].daqListMode;
    const bool dynamic = daqListId >= cfg.numStatDaqLists;
    const U32 numOdt =
        dynamic ? cfg.pDaqDynConfigs[daqListId - cfg.numStatDaqLists].numOdt : (U32)daq.numOdt;
    const U32 channelId = daqListId + XCP_FIRST_DAQ_CHANNEL;
    const bool pids = !(mode & XCP_DAQLISTMODE_PIDOFF);
    auto used = [&](U32 odt) { return cfg.pOdtEntryCfgs[daq.idxDaqStart + odt * daq.numOdtEntries] != 0; };
    // All frames of a set have to be there, in order, before any is applied.
    U32 peek = 0;
    for (U32 odt = 0; odt < numOdt && odt < daq.numOdt; odt++) {
        if (!used(odt)) continue;
        const Xcp_Packet_t* packet = cfg.pPeekRxBuf(sessionId, channelId, peek);
        if (packet && (!pids || packet->pid == daq.firstPid + odt)) {
            peek++;
            continue;
        }
        // Out of order: drop up to the next set's start, and the broken set's own head
        // too, or it would block the list for good.
        if (packet) {
            cfg.pRxNext(sessionId, channelId);
            while ((packet = cfg.pPeekRxBuf(sessionId, channelId, 0)) && packet->pid != daq.firstPid)
                cfg.pRxNext(sessionId, channelId);
        }
        return XCPEVENT_MISSING_DTO;
    }
    U32 flags = XCPEVENT_DAQSTIM_NOT_EXECUTED;
    for (U32 odt = 0; odt < numOdt && odt < daq.numOdt; odt++) {
        if (!used(odt)) continue;
        U8 frame[XCP0_MAXDTO];
        memcpy(frame, cfg.pPeekRxBuf(sessionId, channelId, 0), sizeof(frame));
        U32 at = pids ? 1 : 0;
        if (odt == 0 && (mode & XCP_DAQLISTMODE_TIMESTAMP)) at += cfg.numBytesTimestamp;
        const U32 maxLength = cfg.maxDtoLen < sizeof(frame) ? cfg.maxDtoLen : sizeof(frame);
        flags |= _walkOdt(cfg, daqListId, odt, at, maxLength, [&](U8 entry, Xcp_OdtEntryAddr_t addr, U32 pos) {
            if (entry & XCP_ODTENTRY_SINGLE_BIT) {
                U8 byte = 0;
                if (XcpApp_CalMemRead(addr, 1, &byte) != CALMEM_FINISHED) return;
                const U8 mask = (U8)(1u << (entry & XCP_ODTENTRY_BITOFFSET_MASK));
                byte = frame[pos] ? (U8)(byte | mask) : (U8)(byte & ~mask);
                XcpApp_CalMemWrite(addr, 1, &byte);
            } else {
                XcpApp_CalMemWrite(addr, entry, frame + pos);
            }
        });
        cfg.pRxNext(sessionId, channelId);
        flags |= XCPEVENT_DAQSTIM_EXECUTED;
    }
    return flags;
}

U32 Xcp_Event(U32 eventId, U32 doStim)
{
    U32 flags = XCPEVENT_DAQSTIM_NOT_EXECUTED;
    for (U32 sessionId = 0; sessionId < XCP_NUM_SESSIONS; sessionId++) {
        const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
        const U32 lists = Xcp_NumAllocatedDaqLists(cfg, Xcp_Sessions[sessionId]);
        for (U32 list = 0; list < lists; list++) {
            const Xcp_Daq_t& state = cfg.pDaqStates[list];
            if (!(state.daqListMode & XCP_DAQLISTMODE_RUNNING) || state.daqEvent != eventId) continue;
            // Every list of this system is DAQ only, and nothing calls for STIM: the
            // reverse direction is there for a configuration that has it.
            const bool stim = state.daqListMode & XCP_DAQLISTMODE_DIRECTION;
            if (!doStim && !stim) flags |= Xcp_DaqProcessor(list, sessionId, &cfg);
            if (doStim && stim) flags |= Xcp_StimProcessor(list, sessionId, &cfg);
        }
    }
    return flags;
}

// ---- Commands ---------------------------------------------------------------------------

namespace {

// GET_DAQ_PROCESSOR_INFO: dynamic configuration, resume, bit STIM and timestamps;
// one address extension for a whole list and absolute ODT numbers.
constexpr U8 XCP_DAQ_PROPERTIES = 0x1D;
constexpr U8 XCP_DAQ_KEY_BYTE = 0x30;
// GET_DAQ_RESOLUTION_INFO: 1 ms units in the high nibble, 4 bytes in the low three bits.
constexpr U8 XCP_TIMESTAMP_UNIT = 6;
constexpr U16 XCP_TIMESTAMP_TICKS = 1;
constexpr U8 XCP_BIT_OFFSET_NONE = 32;  // from here on the entry is a byte entry

enum : U8 {
    XCP_DAQLIST_INFO_EVENTFIXED = 0x02,
    XCP_DAQLIST_INFO_DAQ = 0x04,
    XCP_DAQLIST_INFO_STIM = 0x08,
};

enum : U8 { XCP_STOP = 0, XCP_START = 1, XCP_SELECT = 2 };

struct DAQ_CTX_T {
    const Xcp_SessionCfg_t& cfg;
    Xcp_Session_t& session;
    U32 numLists() const { return Xcp_NumAllocatedDaqLists(cfg, session); }
    bool dynamic(U32 list) const { return list >= cfg.numStatDaqLists; }
    Xcp_DaqDynConfig_t& dyn(U32 list) const { return cfg.pDaqDynConfigs[list - cfg.numStatDaqLists]; }
    bool running(U32 list) const { return cfg.pDaqStates[list].daqListMode & XCP_DAQLISTMODE_RUNNING; }
    // The ODTs and entries a list has to offer: its allocation, or the fixed table.
    U32 odts(U32 list) const { return dynamic(list) ? dyn(list).numOdt : cfg.pDaqConfigs[list].numOdt; }
    U32 entries(U32 list, U32 odt) const
    {
        return dynamic(list) ? dyn(list).odtEntryNums[odt] : cfg.pDaqConfigs[list].numOdtEntries;
    }
};

DAQ_CTX_T _ctx(U32 sessionId)
{
    return {Xcp_SessionConfigs[sessionId], Xcp_Sessions[sessionId]};
}

U32 _error(Xcp_Packet_t* pTxPacket, U8 code, U32* pTxPacketSize)
{
    return Xcp_ErrorResponse(pTxPacket, code, pTxPacketSize);
}

}  // namespace

void Xcp_FreeDaq(U32 sessionId)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    for (U32 list = 0; list < Xcp_NumDaqLists(c.cfg); list++) Xcp_ResetDaqList(sessionId, list);
    memset(c.cfg.pDaqDynConfigs, 0, sizeof(Xcp_DaqDynConfig_t) * c.cfg.maxDynDaqLists);
    memset(c.cfg.pOdtEntryAddrs, 0, sizeof(Xcp_OdtEntryAddr_t) * c.cfg.totOdtEntries);
    memset(c.cfg.pOdtEntryCfgs, 0, sizeof(Xcp_OdtEntryCfg_t) * c.cfg.totOdtEntries);
    c.session.numDynDaqLists = 0;
    // The pointer pointed into lists that are gone.
    c.session.ctDaqListId = XCP_DAQLIST_UNDEF;
}

U32 Xcp_CmdFreeDaq(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    Xcp_FreeDaq(sessionId);
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdAllocDaq(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const U16 count = Xcp_GetPacket<Xcp_DaqListCmd_t>(pRxPacket).daqListId;
    for (U32 list = c.cfg.numStatDaqLists; list < c.numLists(); list++)
        if (c.dyn(list).numOdt != 0) return _error(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    if (count > c.cfg.maxDynDaqLists) return _error(pTxPacket, XCP_ERR_MEMORY_OVERFLOW, pTxPacketSize);
    c.session.numDynDaqLists = count;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdAllocOdt(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const Xcp_DaqPtrCmd_t cmd = Xcp_GetPacket<Xcp_DaqPtrCmd_t>(pRxPacket);
    const U8 count = cmd.odtId;
    if (c.session.numDynDaqLists == 0) return _error(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    for (U32 list = c.cfg.numStatDaqLists; list < c.numLists(); list++)
        for (U8 entries : c.dyn(list).odtEntryNums)
            if (entries != 0) return _error(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    if (cmd.daqListId >= c.numLists() || !c.dynamic(cmd.daqListId))
        return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    if (count > c.cfg.pDaqConfigs[cmd.daqListId].numOdt)
        return _error(pTxPacket, XCP_ERR_MEMORY_OVERFLOW, pTxPacketSize);
    c.dyn(cmd.daqListId).numOdt = count;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdAllocOdtEntry(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                         U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const Xcp_DaqPtrCmd_t cmd = Xcp_GetPacket<Xcp_DaqPtrCmd_t>(pRxPacket);
    const U8 count = cmd.odtEntryId;
    if (c.session.numDynDaqLists == 0) return _error(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    // A list that doesn't exist has no ODTs to look at: its number is out of range first.
    if (cmd.daqListId >= c.numLists() || !c.dynamic(cmd.daqListId))
        return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    Xcp_DaqDynConfig_t& dyn = c.dyn(cmd.daqListId);
    if (dyn.numOdt == 0) return _error(pTxPacket, XCP_ERR_SEQUENCE, pTxPacketSize);
    if (cmd.odtId >= dyn.numOdt) return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    if (count > c.cfg.pDaqConfigs[cmd.daqListId].numOdtEntries)
        return _error(pTxPacket, XCP_ERR_MEMORY_OVERFLOW, pTxPacketSize);
    dyn.odtEntryNums[cmd.odtId] = count;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdClearDaqList(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const U16 list = Xcp_GetPacket<Xcp_DaqListCmd_t>(pRxPacket).daqListId;
    if (list >= c.numLists()) return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    const Xcp_DaqCfg_t& daq = c.cfg.pDaqConfigs[list];
    Xcp_Daq_t& state = c.cfg.pDaqStates[list];
    state.daqListMode &= (U8)~XCP_DAQLISTMODE_RUNNING;
    state.maxOdtIdUsed = 0;
    const U32 entries = (U32)daq.numOdt * daq.numOdtEntries;
    memset(&c.cfg.pOdtEntryAddrs[daq.idxDaqStart], 0, sizeof(Xcp_OdtEntryAddr_t) * entries);
    memset(&c.cfg.pOdtEntryCfgs[daq.idxDaqStart], 0, sizeof(Xcp_OdtEntryCfg_t) * entries);
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdSetDaqPtr(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const Xcp_DaqPtrCmd_t cmd = Xcp_GetPacket<Xcp_DaqPtrCmd_t>(pRxPacket);
    const bool exists = cmd.daqListId < c.numLists();
    if (exists && c.running(cmd.daqListId)) return _error(pTxPacket, XCP_ERR_DAQ_ACTIVE, pTxPacketSize);
    if (!exists || cmd.odtId >= c.odts(cmd.daqListId) || cmd.odtEntryId >= c.entries(cmd.daqListId, cmd.odtId)) {
        c.session.ctDaqListId = XCP_DAQLIST_UNDEF;
        return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    }
    c.session.ctDaqListId = cmd.daqListId;
    c.session.ctOdtId = cmd.odtId;
    c.session.ctOdtEntryId = cmd.odtEntryId;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdWriteDaq(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const Xcp_WriteDaqCmd_t cmd = Xcp_GetPacket<Xcp_WriteDaqCmd_t>(pRxPacket);
    const U32 list = c.session.ctDaqListId;
    if (list == XCP_DAQLIST_UNDEF) return _error(pTxPacket, XCP_ERR_WRITE_PROTECTED, pTxPacketSize);
    // A bit entry names the byte that holds its bit.
    const bool bit = cmd.bitOffset < XCP_BIT_OFFSET_NONE;
    const U32 address = bit ? cmd.address + cmd.bitOffset / 8 : cmd.address;
    const U32 bytes = bit ? 1 : cmd.size;
    // The address is checked here, once, so that sampling never has to.
    if (cmd.size > c.cfg.maxOdtEntryLen || !XcpApp_IsRegionMeasurable(address, cmd.addressExtension, bytes))
        return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    if (c.running(list)) return _error(pTxPacket, XCP_ERR_DAQ_ACTIVE, pTxPacketSize);
    const Xcp_DaqCfg_t& daq = c.cfg.pDaqConfigs[list];
    const U32 idx = daq.idxDaqStart + (U32)c.session.ctOdtId * daq.numOdtEntries + c.session.ctOdtEntryId;
    c.cfg.pOdtEntryCfgs[idx] = bit ? (U8)(XCP_ODTENTRY_SINGLE_BIT | (cmd.bitOffset % 8)) : cmd.size;
    c.cfg.pOdtEntryAddrs[idx] = address;
    Xcp_Daq_t& state = c.cfg.pDaqStates[list];
    if (c.session.ctOdtId > state.maxOdtIdUsed) state.maxOdtIdUsed = c.session.ctOdtId;
    // After the ODT's last entry a further WRITE_DAQ needs a new SET_DAQ_PTR.
    if (c.session.ctOdtEntryId + 1u < c.entries(list, c.session.ctOdtId)) {
        c.session.ctOdtEntryId++;
    } else {
        c.session.ctDaqListId = XCP_DAQLIST_UNDEF;
    }
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdSetDaqListMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                          U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const Xcp_SetDaqListModeCmd_t cmd = Xcp_GetPacket<Xcp_SetDaqListModeCmd_t>(pRxPacket);
    // No prescaling and no priorities here.
    if (cmd.daqListId >= c.numLists() || cmd.priority != 0 || cmd.prescaler != 1 ||
        cmd.eventChannel >= XCP_NUM_EVENTS)
        return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    if (c.running(cmd.daqListId)) return _error(pTxPacket, XCP_ERR_DAQ_ACTIVE, pTxPacketSize);
    const Xcp_DaqCfg_t& daq = c.cfg.pDaqConfigs[cmd.daqListId];
    Xcp_Daq_t& state = c.cfg.pDaqStates[cmd.daqListId];
    if ((daq.properties & XCP_DAQLISTPROPERTY_EVENTFIXED) && cmd.eventChannel != daq.defaultEvent)
        return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    const bool stim = cmd.mode & XCP_DAQLISTMODE_DIRECTION;
    if (!(daq.properties & (stim ? XCP_DAQLISTPROPERTY_STIM : XCP_DAQLISTPROPERTY_DAQ)))
        return _error(pTxPacket, XCP_ERR_MODE_NOT_VALID, pTxPacketSize);
    // Without PIDs a tool could not tell the ODTs apart on CAN: a request for it is ignored.
    constexpr U8 fromCommand = XCP_DAQLISTMODE_TIMESTAMP | XCP_DAQLISTMODE_DIRECTION;
    state.daqListMode = (U8)((state.daqListMode & ~(fromCommand | XCP_DAQLISTMODE_PIDOFF)) | (cmd.mode & fromCommand));
    state.daqEvent = cmd.eventChannel;
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdGetDaqListMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                          U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const U16 list = Xcp_GetPacket<Xcp_DaqListCmd_t>(pRxPacket).daqListId;
    if (list >= c.numLists()) return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    const Xcp_Daq_t& state = c.cfg.pDaqStates[list];
    Xcp_PutPacket(pTxPacket, Xcp_GetDaqListModeResp_t{XCP_PID_RESPONSE, state.daqListMode, 0, state.daqEvent, 1, 255},
                  pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdStartStopDaqList(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                            U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const Xcp_DaqListCmd_t cmd = Xcp_GetPacket<Xcp_DaqListCmd_t>(pRxPacket);
    if (cmd.daqListId >= c.numLists()) return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    U8& mode = c.cfg.pDaqStates[cmd.daqListId].daqListMode;
    switch (cmd.mode) {
    case XCP_STOP: mode &= (U8)~XCP_DAQLISTMODE_RUNNING; break;
    case XCP_START: mode |= XCP_DAQLISTMODE_RUNNING; break;
    case XCP_SELECT: mode |= XCP_DAQLISTMODE_SELECTED; break;
    default: return _error(pTxPacket, XCP_ERR_MODE_NOT_VALID, pTxPacketSize);
    }
    Xcp_PutPacket(pTxPacket, Xcp_StartStopDaqListResp_t{XCP_PID_RESPONSE, c.cfg.pDaqConfigs[cmd.daqListId].firstPid},
                  pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdStartStopSynch(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32,
                          U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const U8 how = pRxPacket->data[0];
    if (how > 2) return _error(pTxPacket, XCP_ERR_MODE_NOT_VALID, pTxPacketSize);
    for (U32 list = 0; list < c.numLists(); list++) {
        U8& mode = c.cfg.pDaqStates[list].daqListMode;
        const bool selected = mode & XCP_DAQLISTMODE_SELECTED;
        if (how == 0 || (how == 2 && selected)) mode &= (U8)~XCP_DAQLISTMODE_RUNNING;
        if (how == 1 && selected) mode |= XCP_DAQLISTMODE_RUNNING;
        mode &= (U8)~XCP_DAQLISTMODE_SELECTED;
    }
    return Xcp_PositiveResponse(pTxPacket, pTxPacketSize);
}

U32 Xcp_CmdGetDaqClock(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    Xcp_GetDaqClockResp_t resp = {XCP_PID_RESPONSE, {0, 0, 0}, {0, 0, 0, 0}};
    if (Xcp_GetTimestamp(&Xcp_SessionConfigs[sessionId], resp.timestamp) == 0)
        return _error(pTxPacket, XCP_ERR_GENERIC, pTxPacketSize);
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdGetDaqProcessorInfo(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    const Xcp_GetDaqProcessorInfoResp_t resp = {XCP_PID_RESPONSE,
                                                XCP_DAQ_PROPERTIES,
                                                (U16)Xcp_NumDaqLists(cfg),
                                                (U16)XCP_NUM_EVENTS,
                                                (U8)cfg.numStatDaqLists,
                                                XCP_DAQ_KEY_BYTE};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdGetDaqResolutionInfo(U32 sessionId, Xcp_Packet_t*, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const Xcp_SessionCfg_t& cfg = Xcp_SessionConfigs[sessionId];
    const Xcp_GetDaqResolutionInfoResp_t resp = {XCP_PID_RESPONSE,
                                                 1,
                                                 cfg.maxOdtEntryLen,
                                                 1,
                                                 cfg.maxOdtEntryLen,
                                                 (U8)(XCP_TIMESTAMP_UNIT << 4 | (cfg.numBytesTimestamp & 0x07)),
                                                 XCP_TIMESTAMP_TICKS};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}

U32 Xcp_CmdGetDaqListInfo(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32, U32* pTxPacketSize)
{
    const DAQ_CTX_T c = _ctx(sessionId);
    const U16 list = Xcp_GetPacket<Xcp_DaqListCmd_t>(pRxPacket).daqListId;
    if (list >= c.numLists()) return _error(pTxPacket, XCP_ERR_OUT_OF_RANGE, pTxPacketSize);
    const Xcp_DaqCfg_t& daq = c.cfg.pDaqConfigs[list];
    const bool fixed = daq.properties & XCP_DAQLISTPROPERTY_EVENTFIXED;
    const U8 properties = (U8)((fixed ? XCP_DAQLIST_INFO_EVENTFIXED : 0) |
                               ((daq.properties & XCP_DAQLISTPROPERTY_DAQ) ? XCP_DAQLIST_INFO_DAQ : 0) |
                               ((daq.properties & XCP_DAQLISTPROPERTY_STIM) ? XCP_DAQLIST_INFO_STIM : 0));
    // A dynamic list has no fixed size to tell.
    const bool dynamic = c.dynamic(list);
    const Xcp_GetDaqListInfoResp_t resp = {XCP_PID_RESPONSE, properties, dynamic ? (U8)0 : daq.numOdt,
                                           dynamic ? (U8)0 : daq.numOdtEntries, fixed ? daq.defaultEvent : (U16)0};
    Xcp_PutPacket(pTxPacket, resp, pTxPacketSize);
    return XCP_ACTION_DONE;
}
