#pragma once
// The XCP protocol's numbers and the shapes every part of the slave shares: packets,
// addresses, command handlers, and the results of the application's callbacks.
#include <bit>
#include <cstddef>
#include <cstring>

#include "dash_types.h"

// Multi-byte fields of every packet are in the processor's own order, and the CONNECT
// response tells the master that this is Intel order.
static_assert(std::endian::native == std::endian::little, "XCP packets are sent in the host's byte order");

// ---- Sizes ------------------------------------------------------------------------

constexpr U32 XCP_NUM_SESSIONS = 1;
constexpr U8 XCP0_MAXCTO = 8;
constexpr U16 XCP0_MAXDTO = 8;
constexpr U32 XCP_MAX_CHECKSUM_BLOCKSIZE = 0xFFFF;
constexpr U32 XCP_INVALID_NV_IDX = 0xFFFFFFFFu;

// An address in the calibration link's own address space, never a machine address.
typedef uintptr_t Xcp_Addr_t;

// A packet as the transport holds it: the PID, then the data bytes.
struct Xcp_Packet_t {
    U8 pid;
    U8 data[XCP0_MAXCTO - 1];
};
static_assert(sizeof(Xcp_Packet_t) == XCP0_MAXCTO);
static_assert(offsetof(Xcp_Packet_t, data) == 1);

// ---- PIDs ---------------------------------------------------------------------------

enum : U8 {
    XCP_PID_RESPONSE = 0xFF,
    XCP_PID_ERROR = 0xFE,
    XCP_PID_EVENT = 0xFD,
    XCP_PID_SERVICE_REQUEST = 0xFC,
};

enum : U8 {
    XCP_CMD_CONNECT = 0xFF,
    XCP_CMD_DISCONNECT = 0xFE,
    XCP_CMD_GET_STATUS = 0xFD,
    XCP_CMD_SYNCH = 0xFC,
    XCP_CMD_GET_COMM_MODE_INFO = 0xFB,
    XCP_CMD_GET_ID = 0xFA,
    XCP_CMD_SET_REQUEST = 0xF9,
    XCP_CMD_GET_SEED = 0xF8,
    XCP_CMD_UNLOCK = 0xF7,
    XCP_CMD_SET_MTA = 0xF6,
    XCP_CMD_UPLOAD = 0xF5,
    XCP_CMD_SHORT_UPLOAD = 0xF4,
    XCP_CMD_BUILD_CHECKSUM = 0xF3,
    XCP_CMD_TRANSPORT_LAYER_CMD = 0xF2,
    XCP_CMD_USER_CMD = 0xF1,
    XCP_CMD_DOWNLOAD = 0xF0,
    XCP_CMD_DOWNLOAD_NEXT = 0xEF,
    XCP_CMD_DOWNLOAD_MAX = 0xEE,
    XCP_CMD_SHORT_DOWNLOAD = 0xED,
    XCP_CMD_MODIFY_BITS = 0xEC,
    XCP_CMD_SET_CAL_PAGE = 0xEB,
    XCP_CMD_GET_CAL_PAGE = 0xEA,
    XCP_CMD_GET_PAG_PROCESSOR_INFO = 0xE9,
    XCP_CMD_GET_SEGMENT_INFO = 0xE8,
    XCP_CMD_GET_PAGE_INFO = 0xE7,
    XCP_CMD_SET_SEGMENT_MODE = 0xE6,
    XCP_CMD_GET_SEGMENT_MODE = 0xE5,
    XCP_CMD_COPY_CAL_PAGE = 0xE4,
    XCP_CMD_CLEAR_DAQ_LIST = 0xE3,
    XCP_CMD_SET_DAQ_PTR = 0xE2,
    XCP_CMD_WRITE_DAQ = 0xE1,
    XCP_CMD_SET_DAQ_LIST_MODE = 0xE0,
    XCP_CMD_GET_DAQ_LIST_MODE = 0xDF,
    XCP_CMD_START_STOP_DAQ_LIST = 0xDE,
    XCP_CMD_START_STOP_SYNCH = 0xDD,
    XCP_CMD_GET_DAQ_CLOCK = 0xDC,
    XCP_CMD_READ_DAQ = 0xDB,
    XCP_CMD_GET_DAQ_PROCESSOR_INFO = 0xDA,
    XCP_CMD_GET_DAQ_RESOLUTION_INFO = 0xD9,
    XCP_CMD_GET_DAQ_LIST_INFO = 0xD8,
    XCP_CMD_GET_DAQ_EVENT_INFO = 0xD7,
    XCP_CMD_FREE_DAQ = 0xD6,
    XCP_CMD_ALLOC_DAQ = 0xD5,
    XCP_CMD_ALLOC_ODT = 0xD4,
    XCP_CMD_ALLOC_ODT_ENTRY = 0xD3,
    XCP_CMD_PROGRAM_START = 0xD2,
    XCP_CMD_PROGRAM_CLEAR = 0xD1,
    XCP_CMD_PROGRAM = 0xD0,
    XCP_CMD_PROGRAM_RESET = 0xCF,
    XCP_CMD_GET_PGM_PROCESSOR_INFO = 0xCE,
    XCP_CMD_GET_SECTOR_INFO = 0xCD,
    XCP_CMD_PROGRAM_PREPARE = 0xCC,
    XCP_CMD_PROGRAM_FORMAT = 0xCB,
    XCP_CMD_PROGRAM_NEXT = 0xCA,
    XCP_CMD_PROGRAM_MAX = 0xC9,
    XCP_CMD_PROGRAM_VERIFY = 0xC8,
};
// The lowest PID with a row in the command table.
constexpr U8 XCP_CMD_LOWEST = XCP_CMD_PROGRAM_VERIFY;
// `prevCmd` while a command is still at work.
constexpr U8 XCP_CMD_CURR_CMD = 0x01;

// The highest PID of each resource class: above 0xF0 none, then CAL_PAG, DAQ, PGM.
constexpr U8 MAX_CALPAGCMD_PID = 0xF0;
constexpr U8 MAX_DAQCMD_PID = 0xE3;
constexpr U8 MAX_PGMCMD_PID = 0xD2;

// ---- Errors and events ------------------------------------------------------------

enum : U8 {
    XCP_ERR_CMD_SYNCH = 0x00,
    XCP_ERR_CMD_BUSY = 0x10,
    XCP_ERR_DAQ_ACTIVE = 0x11,
    XCP_ERR_PGM_ACTIVE = 0x12,
    XCP_ERR_CMD_UNKNOWN = 0x20,
    XCP_ERR_CMD_SYNTAX = 0x21,
    XCP_ERR_OUT_OF_RANGE = 0x22,
    XCP_ERR_WRITE_PROTECTED = 0x23,
    XCP_ERR_ACCESS_DENIED = 0x24,
    XCP_ERR_ACCESS_LOCKED = 0x25,
    XCP_ERR_PAGE_NOT_VALID = 0x26,
    XCP_ERR_MODE_NOT_VALID = 0x27,
    XCP_ERR_SEGMENT_NOT_VALID = 0x28,
    XCP_ERR_SEQUENCE = 0x29,
    XCP_ERR_DAQ_CONFIG = 0x2A,
    XCP_ERR_MEMORY_OVERFLOW = 0x30,
    XCP_ERR_GENERIC = 0x31,
    XCP_ERR_VERIFY = 0x32,
};

enum : U8 {
    XCP_EV_RESUME_MODE = 0x00,
    XCP_EV_CLEAR_DAQ = 0x01,
    XCP_EV_STORE_DAQ = 0x02,
    XCP_EV_STORE_CAL = 0x03,
    XCP_EV_CMD_PENDING = 0x05,
    XCP_EV_DAQ_OVERLOAD = 0x06,
    XCP_EV_SESSION_TERMINATED = 0x07,
    XCP_EV_USER = 0xFE,
    XCP_EV_TRANSPORT = 0xFF,
};

// ---- Resources and session state --------------------------------------------------

enum : U8 {
    XCP_RESOURCE_CAL_PAG = 0x01,
    XCP_RESOURCE_DAQ = 0x04,
    XCP_RESOURCE_STIM = 0x08,
    XCP_RESOURCE_PGM = 0x10,
};
// What CONNECT offers: STIM is not.
constexpr U8 XCP_RESOURCES_AVAILABLE = XCP_RESOURCE_CAL_PAG | XCP_RESOURCE_DAQ | XCP_RESOURCE_PGM;

enum : U8 {
    XCP_SESSION_STATE_STORE_CAL = 0x01,
    XCP_SESSION_STATE_STORE_DAQ = 0x04,
    XCP_SESSION_STATE_CLEAR_DAQ = 0x08,
    XCP_SESSION_STATE_PGM = 0x10,
    XCP_SESSION_STATE_DAQ_RUNNING = 0x40,
    XCP_SESSION_STATE_RESUME = 0x80,
};

constexpr U8 XCP_PROTOCOL_VERSION = 1;
constexpr U8 XCP_TRANSPORTLAYER_CAN = 1;
constexpr U8 XCP_DRIVER_VERSION_MAJOR = 1;
constexpr U8 XCP_DRIVER_VERSION_MINOR = 0;

enum Xcp_TransportLayer_t : U8 { XCP_CAN = 0, XCP_IP = 1 };

// ---- Command handlers -------------------------------------------------------------

// What a handler's result asks of the processor. 3 is the usual answer; 0 is a busy
// command that runs again on the next pass.
enum : U32 {
    XCP_ACTION_RX_DONE = 0x01,  // free the command's receive buffer
    XCP_ACTION_SEND = 0x02,     // send the response
    XCP_ACTION_DONE = XCP_ACTION_RX_DONE | XCP_ACTION_SEND,
};

typedef U32 (*Xcp_CmdHandler_t)(U32 sessionId, Xcp_Packet_t* pRxPacket, Xcp_Packet_t* pTxPacket, U32 prevCmd,
                                U32* pTxPacketSize);

// ---- Results of the application's memory callbacks --------------------------------

enum Xcp_CalMemState : U8 {
    CALMEM_FINISHED = 0,
    CALMEM_BUSY = 1,
    CALMEM_OUTOFRAM = 2,
    CALMEM_REJECTED = 3,
    CALMEM_PAGENOTVALID = 4,
    CALMEM_SEGNOTVALID = 5,
    CALMEM_REQUESTNOTVALID = 6,
};

enum Xcp_CalPageErr : U8 {
    CALPAGE_OK = 0,
    CALPAGE_PAGEINVALID = 1,
    CALPAGE_SEGINVALID = 2,
    CALPAGE_REQUESTINVALID = 3,
};

constexpr U8 XCP_CHECKSUM_TYPE_ADD_11 = 0x01;

// The slave's identification: texts and values are addresses in the address space.
struct Xcp_SlaveId_t {
    U8 idStringLen;
    Xcp_Addr_t idString;
    Xcp_Addr_t hardwareType;
    Xcp_Addr_t ecuAddr;
    U8 asamMC2StringLen;
    Xcp_Addr_t asamMC2String;
};

// ---- Packet layouts ---------------------------------------------------------------

// Commands and responses with more than a PID, as they lie in the 8 bytes of a frame.
// They are copied in and out of the transport's buffers with memcpy, so a handler
// writes every byte of its response, the reserved ones included.
#define XCP_PACKED __attribute__((packed))

struct XCP_PACKED Xcp_ErrorResp_t {
    U8 pid;
    U8 errorCode;
};
static_assert(sizeof(Xcp_ErrorResp_t) == 2);

struct XCP_PACKED Xcp_EventPacket_t {
    U8 pid;
    U8 eventCode;
};
static_assert(sizeof(Xcp_EventPacket_t) == 2);

struct XCP_PACKED Xcp_ConnectResp_t {
    U8 pid;
    U8 resource;
    U8 commModeBasic;
    U8 maxCto;
    U16 maxDto;
    U8 protocolLayerVersion;
    U8 transportLayerVersion;
};
static_assert(sizeof(Xcp_ConnectResp_t) == 8);
static_assert(offsetof(Xcp_ConnectResp_t, maxDto) == 4);
static_assert(offsetof(Xcp_ConnectResp_t, transportLayerVersion) == 7);

struct XCP_PACKED Xcp_GetStatusResp_t {
    U8 pid;
    U8 sessionStatus;
    U8 protection;
    U8 reserved;
    U16 sessionCfgId;
};
static_assert(sizeof(Xcp_GetStatusResp_t) == 6);
static_assert(offsetof(Xcp_GetStatusResp_t, sessionCfgId) == 4);

struct XCP_PACKED Xcp_CommModeInfoResp_t {
    U8 pid;
    U8 reserved1;
    U8 commModeOptional;
    U8 reserved2;
    U8 maxBs;
    U8 minSt;
    U8 queueSize;
    U8 driverVer;
};
static_assert(sizeof(Xcp_CommModeInfoResp_t) == 8);
static_assert(offsetof(Xcp_CommModeInfoResp_t, maxBs) == 4);

struct XCP_PACKED Xcp_GetIdCmd_t {
    U8 pid;
    U8 requestedType;
};
static_assert(sizeof(Xcp_GetIdCmd_t) == 2);

struct XCP_PACKED Xcp_GetIdResp_t {
    U8 pid;
    U8 mode;
    U16 reserved;
    U32 length;
};
static_assert(sizeof(Xcp_GetIdResp_t) == 8);
static_assert(offsetof(Xcp_GetIdResp_t, length) == 4);

struct XCP_PACKED Xcp_SetRequestCmd_t {
    U8 pid;
    U8 mode;
    U16 sessionConfigId;
};
static_assert(sizeof(Xcp_SetRequestCmd_t) == 4);
static_assert(offsetof(Xcp_SetRequestCmd_t, sessionConfigId) == 2);

struct XCP_PACKED Xcp_SetMtaCmd_t {
    U8 pid;
    U16 reserved;
    U8 addressExtension;
    U32 address;
};
static_assert(sizeof(Xcp_SetMtaCmd_t) == 8);
static_assert(offsetof(Xcp_SetMtaCmd_t, addressExtension) == 3);
static_assert(offsetof(Xcp_SetMtaCmd_t, address) == 4);

struct XCP_PACKED Xcp_UploadCmd_t {
    U8 pid;
    U8 numElements;
};
static_assert(sizeof(Xcp_UploadCmd_t) == 2);

struct XCP_PACKED Xcp_ShortUploadCmd_t {
    U8 pid;
    U8 numElements;
    U8 reserved;
    U8 addressExtension;
    U32 address;
};
static_assert(sizeof(Xcp_ShortUploadCmd_t) == 8);
static_assert(offsetof(Xcp_ShortUploadCmd_t, addressExtension) == 3);
static_assert(offsetof(Xcp_ShortUploadCmd_t, address) == 4);

struct XCP_PACKED Xcp_BuildChecksumCmd_t {
    U8 pid;
    U8 reserved[3];
    U32 blockSize;
};
static_assert(sizeof(Xcp_BuildChecksumCmd_t) == 8);
static_assert(offsetof(Xcp_BuildChecksumCmd_t, blockSize) == 4);

// The positive response carries the checksum, the error response the largest block.
struct XCP_PACKED Xcp_BuildChecksumResp_t {
    U8 pid;
    U8 typeOrError;
    U16 reserved;
    U32 value;
};
static_assert(sizeof(Xcp_BuildChecksumResp_t) == 8);
static_assert(offsetof(Xcp_BuildChecksumResp_t, value) == 4);

struct XCP_PACKED Xcp_GetSeedCmd_t {
    U8 pid;
    U8 mode;
    U8 resource;
};
static_assert(sizeof(Xcp_GetSeedCmd_t) == 3);

// DOWNLOAD and DOWNLOAD_NEXT: a count, and as many of its bytes as fit.
struct XCP_PACKED Xcp_DownloadCmd_t {
    U8 pid;
    U8 numElements;
    U8 data[XCP0_MAXCTO - 2];
};
static_assert(sizeof(Xcp_DownloadCmd_t) == 8);
static_assert(offsetof(Xcp_DownloadCmd_t, data) == 2);

// The error of a DOWNLOAD_NEXT whose count is not the one expected, with that count.
struct XCP_PACKED Xcp_DownloadNextErr_t {
    U8 pid;
    U8 errorCode;
    U8 expected;
};
static_assert(sizeof(Xcp_DownloadNextErr_t) == 3);

struct XCP_PACKED Xcp_ModifyBitsCmd_t {
    U8 pid;
    U8 shiftValue;
    U16 andMask;
    U16 xorMask;
};
static_assert(sizeof(Xcp_ModifyBitsCmd_t) == 6);
static_assert(offsetof(Xcp_ModifyBitsCmd_t, andMask) == 2 && offsetof(Xcp_ModifyBitsCmd_t, xorMask) == 4);

struct XCP_PACKED Xcp_SetCalPageCmd_t {
    U8 pid;
    U8 mode;
    U8 segment;
    U8 page;
};
static_assert(sizeof(Xcp_SetCalPageCmd_t) == 4);

// GET_CAL_PAGE, SET_SEGMENT_MODE and GET_SEGMENT_MODE: a mode and a segment.
struct XCP_PACKED Xcp_SegmentCmd_t {
    U8 pid;
    U8 mode;
    U8 segment;
};
static_assert(sizeof(Xcp_SegmentCmd_t) == 3);

struct XCP_PACKED Xcp_GetCalPageResp_t {
    U8 pid;
    U8 reserved[2];
    U8 page;
};
static_assert(sizeof(Xcp_GetCalPageResp_t) == 4);

struct XCP_PACKED Xcp_GetPagProcInfoResp_t {
    U8 pid;
    U8 maxSegments;
    U8 properties;
};
static_assert(sizeof(Xcp_GetPagProcInfoResp_t) == 3);

struct XCP_PACKED Xcp_GetSegmentModeResp_t {
    U8 pid;
    U8 reserved;
    U8 mode;
};
static_assert(sizeof(Xcp_GetSegmentModeResp_t) == 3);

struct XCP_PACKED Xcp_CopyCalPageCmd_t {
    U8 pid;
    U8 srcSegment;
    U8 srcPage;
    U8 dstSegment;
    U8 dstPage;
};
static_assert(sizeof(Xcp_CopyCalPageCmd_t) == 5);

struct XCP_PACKED Xcp_ResumeEvent_t {
    U8 pid;
    U8 eventCode;
    U16 sessionCfgId;
    U8 timestamp[4];
};
static_assert(sizeof(Xcp_ResumeEvent_t) == 8);
static_assert(offsetof(Xcp_ResumeEvent_t, timestamp) == 4);

// ---- DAQ ------------------------------------------------------------------------------

// ALLOC_DAQ, FREE_DAQ's neighbours and every command that names only a list.
struct XCP_PACKED Xcp_DaqListCmd_t {
    U8 pid;
    U8 mode;  // START_STOP_DAQ_LIST only
    U16 daqListId;
};
static_assert(sizeof(Xcp_DaqListCmd_t) == 4);
static_assert(offsetof(Xcp_DaqListCmd_t, daqListId) == 2);

// ALLOC_ODT (count in odtId's place), ALLOC_ODT_ENTRY and SET_DAQ_PTR.
struct XCP_PACKED Xcp_DaqPtrCmd_t {
    U8 pid;
    U8 reserved;
    U16 daqListId;
    U8 odtId;
    U8 odtEntryId;
};
static_assert(sizeof(Xcp_DaqPtrCmd_t) == 6);
static_assert(offsetof(Xcp_DaqPtrCmd_t, odtId) == 4);

struct XCP_PACKED Xcp_WriteDaqCmd_t {
    U8 pid;
    U8 bitOffset;  // 0xFF for a byte entry
    U8 size;
    U8 addressExtension;
    U32 address;
};
static_assert(sizeof(Xcp_WriteDaqCmd_t) == 8);
static_assert(offsetof(Xcp_WriteDaqCmd_t, address) == 4);

struct XCP_PACKED Xcp_SetDaqListModeCmd_t {
    U8 pid;
    U8 mode;
    U16 daqListId;
    U16 eventChannel;
    U8 prescaler;
    U8 priority;
};
static_assert(sizeof(Xcp_SetDaqListModeCmd_t) == 8);
static_assert(offsetof(Xcp_SetDaqListModeCmd_t, eventChannel) == 4);

struct XCP_PACKED Xcp_GetDaqListModeResp_t {
    U8 pid;
    U8 mode;
    U16 reserved;
    U16 eventChannel;
    U8 prescaler;
    U8 priority;
};
static_assert(sizeof(Xcp_GetDaqListModeResp_t) == 8);

struct XCP_PACKED Xcp_StartStopDaqListResp_t {
    U8 pid;
    U8 firstPid;
};
static_assert(sizeof(Xcp_StartStopDaqListResp_t) == 2);

struct XCP_PACKED Xcp_GetDaqClockResp_t {
    U8 pid;
    U8 reserved[3];
    U8 timestamp[4];
};
static_assert(sizeof(Xcp_GetDaqClockResp_t) == 8);

struct XCP_PACKED Xcp_GetDaqProcessorInfoResp_t {
    U8 pid;
    U8 properties;
    U16 maxDaq;
    U16 maxEventChannel;
    U8 minDaq;
    U8 daqKeyByte;
};
static_assert(sizeof(Xcp_GetDaqProcessorInfoResp_t) == 8);

struct XCP_PACKED Xcp_GetDaqResolutionInfoResp_t {
    U8 pid;
    U8 granularityDaq;
    U8 maxEntrySizeDaq;
    U8 granularityStim;
    U8 maxEntrySizeStim;
    U8 timestampMode;
    U16 timestampTicks;
};
static_assert(sizeof(Xcp_GetDaqResolutionInfoResp_t) == 8);

struct XCP_PACKED Xcp_GetDaqListInfoResp_t {
    U8 pid;
    U8 properties;
    U8 maxOdt;
    U8 maxOdtEntries;
    U16 fixedEvent;
};
static_assert(sizeof(Xcp_GetDaqListInfoResp_t) == 6);

// ---- Programming ------------------------------------------------------------------

// The result of a programming callback.
enum Xcp_ProgramState : U8 {
    PROGRAM_FINISHED = 0,
    PROGRAM_BUSY = 1,
    PROGRAM_REJECTED = 2,
    PROGRAM_BADADDRESS = 3,
    PROGRAM_INVALIDSTATE = 4,
};

struct XCP_PACKED Xcp_ProgramStartResp_t {
    U8 pid;
    U8 reserved;
    U8 commModePgm;
    U8 maxCtoPgm;
    U8 maxBsPgm;
    U8 minStPgm;
    U8 queueSizePgm;
};
static_assert(sizeof(Xcp_ProgramStartResp_t) == 7);

struct XCP_PACKED Xcp_ProgramClearCmd_t {
    U8 pid;
    U8 mode;
    U16 reserved;
    U32 clearRange;
};
static_assert(sizeof(Xcp_ProgramClearCmd_t) == 8);

struct XCP_PACKED Xcp_ProgramPrepareCmd_t {
    U8 pid;
    U8 reserved;
    U16 codeSize;
};
static_assert(sizeof(Xcp_ProgramPrepareCmd_t) == 4);

// Packs a layout into the start of a packet.
template <typename T>
inline void Xcp_PutPacket(Xcp_Packet_t* packet, const T& layout, U32* size)
{
    static_assert(sizeof(T) <= sizeof(Xcp_Packet_t));
    memcpy(packet, &layout, sizeof(T));
    *size = sizeof(T);
}

// Reads a command's layout out of its packet.
template <typename T>
inline T Xcp_GetPacket(const Xcp_Packet_t* packet)
{
    static_assert(sizeof(T) <= sizeof(Xcp_Packet_t));
    T layout;
    memcpy(&layout, packet, sizeof(T));
    return layout;
}
