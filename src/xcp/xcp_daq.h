#pragma once
// DAQ: the lists a tool configures once and the slave then samples by itself on its
// event channels, each ODT a frame on the list's channel.
#include "xcp_types.h"

struct Xcp_SessionCfg_t;

constexpr U16 XCP0_NUM_STATIC_DAQ = 0;
constexpr U16 XCP0_NUM_DYN_DAQ = 3;
constexpr U8 XCP0_NUM_ODT_DYNDAQ = 8;
constexpr U8 XCP0_NUM_ODT_ENTRIES_DYNDAQ = 7;
constexpr U32 XCP0_NUM_DAQ = XCP0_NUM_STATIC_DAQ + XCP0_NUM_DYN_DAQ;
constexpr U32 XCP0_ODT_LIST_SIZE = XCP0_NUM_DYN_DAQ * XCP0_NUM_ODT_DYNDAQ * XCP0_NUM_ODT_ENTRIES_DYNDAQ;
static_assert(XCP0_ODT_LIST_SIZE == 168);
constexpr U32 XCP_NUM_EVENTS = 3;
constexpr U16 XCP_DAQLIST_UNDEF = 0xFFFF;

enum : U8 {
    XCP_DAQLISTPROPERTY_DAQ = 0x01,
    XCP_DAQLISTPROPERTY_STIM = 0x02,
    XCP_DAQLISTPROPERTY_EVENTFIXED = 0x04,
};

enum : U8 {
    XCP_DAQLISTMODE_SELECTED = 0x01,
    XCP_DAQLISTMODE_DIRECTION = 0x02,  // set for STIM
    XCP_DAQLISTMODE_TIMESTAMP = 0x10,
    XCP_DAQLISTMODE_PIDOFF = 0x20,
    XCP_DAQLISTMODE_RUNNING = 0x40,
    XCP_DAQLISTMODE_RESUME = 0x80,
};

// An entry's configuration byte: 0 unused (it ends its ODT), 1 to 8 a byte entry of
// that many bytes, or a bit entry.
enum : U8 {
    XCP_ODTENTRY_SINGLE_BIT = 0x80,
    XCP_ODTENTRY_BITOFFSET_MASK = 0x07,
};

// Results of Xcp_Event, OR-ed together.
enum : U32 {
    XCPEVENT_DAQSTIM_NOT_EXECUTED = 0x00,
    XCPEVENT_DAQ_OVERLOAD = 0x01,
    XCPEVENT_DTO_OVERFILL = 0x02,
    XCPEVENT_MISSING_DTO = 0x04,
    XCPEVENT_DAQSTIM_EXECUTED = 0x08,
};

struct Xcp_DaqCfg_t {
    U8 firstPid;
    U8 numOdt;
    U16 idxDaqStart;  // first entry of the list in the entry tables
    U8 numOdtEntries;
    U8 properties;
    U16 defaultEvent;
};

typedef U32 Xcp_OdtEntryAddr_t;
typedef U8 Xcp_OdtEntryCfg_t;

struct Xcp_Daq_t {
    U8 daqListMode;
    U8 maxOdtIdUsed;  // the highest ODT that WRITE_DAQ has touched
    U16 daqEvent;
};

struct Xcp_DaqDynConfig_t {
    U8 numOdt;  // ODTs allocated
    U8 odtEntryNums[XCP0_NUM_ODT_DYNDAQ];
};
static_assert(sizeof(Xcp_DaqDynConfig_t) == 9, "stored in the resume image as it lies");

extern const Xcp_DaqCfg_t Xcp0_DaqConfigs[XCP0_NUM_DAQ];
extern Xcp_OdtEntryAddr_t Xcp0_OdtEntryAddrs[XCP0_ODT_LIST_SIZE];
extern Xcp_OdtEntryCfg_t Xcp0_OdtEntryCfgs[XCP0_ODT_LIST_SIZE];
extern Xcp_Daq_t Xcp0_DaqStates[XCP0_NUM_DAQ];
extern Xcp_DaqDynConfig_t Xcp0_DaqDynConfigs[XCP0_NUM_DYN_DAQ];

// Mode and maxOdtIdUsed to 0, the default event, the direction by the list's
// properties, and the transport's channel of the list cleared.
void Xcp_ResetDaqList(U32 sessionId, U32 daqListId);
// Runs every running list of the event: DAQ lists with doStim 0.
U32 Xcp_Event(U32 eventId, U32 doStim);
// Samples one list into frames on its channel.
U32 Xcp_DaqProcessor(U32 daqListId, U32 sessionId, const Xcp_SessionCfg_t* pSessionCfg);
// Applies one set of a STIM list's received frames, once all of them are in.
U32 Xcp_StimProcessor(U32 daqListId, U32 sessionId, const Xcp_SessionCfg_t* pSessionCfg);
// Writes the timestamp, lowest byte first, in as many bytes as the session's
// timestamps have; returns that number.
U32 Xcp_GetTimestamp(const Xcp_SessionCfg_t* pSessionCfg, U8* dest);

#define Xcp_DoDaqForEvent(eventId) Xcp_Event((eventId), 0)
// Every list reset and the dynamic ones freed, the DAQ pointer with them.
void Xcp_FreeDaq(U32 sessionId);

// The commands that build, start and describe the lists; all need DAQ unlocked.
U32 Xcp_CmdClearDaqList(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                        U32* pTxPacketSize);
U32 Xcp_CmdSetDaqPtr(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                     U32* pTxPacketSize);
U32 Xcp_CmdWriteDaq(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                    U32* pTxPacketSize);
U32 Xcp_CmdSetDaqListMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdGetDaqListMode(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdStartStopDaqList(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                            U32* pTxPacketSize);
U32 Xcp_CmdStartStopSynch(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdGetDaqClock(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                       U32* pTxPacketSize);
U32 Xcp_CmdGetDaqProcessorInfo(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                               U32* pTxPacketSize);
U32 Xcp_CmdGetDaqResolutionInfo(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                                U32* pTxPacketSize);
U32 Xcp_CmdGetDaqListInfo(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                          U32* pTxPacketSize);
U32 Xcp_CmdFreeDaq(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd, U32* pTxPacketSize);
U32 Xcp_CmdAllocDaq(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                    U32* pTxPacketSize);
U32 Xcp_CmdAllocOdt(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                    U32* pTxPacketSize);
U32 Xcp_CmdAllocOdtEntry(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                         U32* pTxPacketSize);
