#include "xcp_a2l.h"

#include <cfloat>
#include <cstdarg>
#include <cstdio>

#include "xcp_daq.h"
#include "xcp_map.h"
#include "xcp_master.h"
#include "xcp_types.h"

namespace {

// The CAN port the slave is on runs at this rate.
constexpr unsigned CAN_BITRATE = 1000000;

struct KIND_A2L_T {
    const char* datatype;
    const char* layout;  // the record layout of a single value
    double lower, upper;
};

KIND_A2L_T _kind(XCP_MAP_KIND_T kind)
{
    switch (kind) {
    case XCP_KIND_BOOL: return {"UBYTE", "RL_UBYTE", 0, 1};
    case XCP_KIND_S16: return {"SWORD", "RL_SWORD", -32768, 32767};
    case XCP_KIND_U16: return {"UWORD", "RL_UWORD", 0, 65535};
    case XCP_KIND_U32: return {"ULONG", "RL_ULONG", 0, 4294967295.0};
    case XCP_KIND_F32: return {"FLOAT32_IEEE", "RL_FLOAT32_IEEE", -FLT_MAX, FLT_MAX};
    default: return {"UBYTE", "RL_UBYTE", 0, 255};  // U8, and the characters of a text
    }
}

void _add(std::string* out, const char* format, ...) __attribute__((format(printf, 2, 3)));
void _add(std::string* out, const char* format, ...)
{
    char line[512];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof(line), format, args);
    va_end(args);
    *out += line;
}

// The events as the foreground task fires them: 0 and 1 on every 10 ms pass, 2 on
// every tenth.
struct EVENT_A2L_T {
    const char* name;
    const char* shortName;
    unsigned cycleMs;
};
constexpr EVENT_A2L_T m_events[XCP_NUM_EVENTS] = {
    {"foreground pass (5 ms timer)", "fg_5ms", 10},
    {"foreground pass", "fg_10ms", 10},
    {"every 100 ms", "fg_100ms", 100},
};
constexpr unsigned XCP_TIME_UNIT_1MS = 6;

const char* const m_optionalCmds[] = {
    "GET_COMM_MODE_INFO", "GET_ID", "SET_REQUEST", "GET_SEED", "UNLOCK", "SET_MTA", "UPLOAD", "SHORT_UPLOAD",
    "BUILD_CHECKSUM", "TRANSPORT_LAYER_CMD", "DOWNLOAD", "DOWNLOAD_NEXT", "DOWNLOAD_MAX", "MODIFY_BITS",
    "SET_CAL_PAGE", "GET_CAL_PAGE", "GET_PAG_PROCESSOR_INFO", "SET_SEGMENT_MODE", "GET_SEGMENT_MODE",
    "COPY_CAL_PAGE", "CLEAR_DAQ_LIST", "SET_DAQ_PTR", "WRITE_DAQ", "SET_DAQ_LIST_MODE", "GET_DAQ_LIST_MODE",
    "START_STOP_DAQ_LIST", "START_STOP_SYNCH", "GET_DAQ_CLOCK", "GET_DAQ_PROCESSOR_INFO",
    "GET_DAQ_RESOLUTION_INFO", "GET_DAQ_LIST_INFO", "FREE_DAQ", "ALLOC_DAQ", "ALLOC_ODT", "ALLOC_ODT_ENTRY",
};

void _interface(std::string* out)
{
    _add(out, "    /begin IF_DATA XCP\n");
    _add(out, "      /begin PROTOCOL_LAYER 0x0100 1000 1000 0 0 0 0 0 %u %u BYTE_ORDER_MSB_LAST "
              "ADDRESS_GRANULARITY_BYTE\n", (unsigned)XCP0_MAXCTO, (unsigned)XCP0_MAXDTO);
    for (const char* cmd : m_optionalCmds) _add(out, "        OPTIONAL_CMD %s\n", cmd);
    _add(out, "      /end PROTOCOL_LAYER\n");
    _add(out, "      /* %u dynamic lists of %u ODTs of %u entries, entries of up to 8 bytes */\n",
         (unsigned)XCP0_NUM_DYN_DAQ, (unsigned)XCP0_NUM_ODT_DYNDAQ, (unsigned)XCP0_NUM_ODT_ENTRIES_DYNDAQ);
    _add(out, "      /begin DAQ DYNAMIC %u %u %u OPTIMISATION_TYPE_DEFAULT ADDRESS_EXTENSION_DAQ "
              "IDENTIFICATION_FIELD_TYPE_ABSOLUTE GRANULARITY_ODT_ENTRY_SIZE_DAQ_BYTE 8 NO_OVERLOAD_INDICATION\n",
         (unsigned)XCP0_NUM_DAQ, (unsigned)XCP_NUM_EVENTS, (unsigned)XCP0_NUM_STATIC_DAQ);
    _add(out, "        /begin TIMESTAMP_SUPPORTED 1 SIZE_DWORD UNIT_1MS /end TIMESTAMP_SUPPORTED\n");
    for (unsigned e = 0; e < XCP_NUM_EVENTS; e++)
        _add(out, "        /begin EVENT \"%s\" \"%s\" %u DAQ %u %u %u 0 /end EVENT\n", m_events[e].name,
             m_events[e].shortName, e, (unsigned)XCP0_NUM_DAQ, m_events[e].cycleMs, XCP_TIME_UNIT_1MS);
    _add(out, "      /end DAQ\n");
    _add(out, "      /begin XCP_ON_CAN 0x0100 CAN_ID_BROADCAST 0x%03X CAN_ID_MASTER 0x%03X CAN_ID_SLAVE 0x%03X "
              "BAUDRATE %u /end XCP_ON_CAN\n", XCP0_CAN_BROADCAST_MSGID, XCP0_CAN_RX_MSGID, XCP0_CAN_TX_MSGID,
         CAN_BITRATE);
    _add(out, "    /end IF_DATA\n");
}

}  // namespace

std::string XcpA2lDescription(void)
{
    std::string out;
    _add(&out, "ASAP2_VERSION 1 71\n");
    _add(&out, "/* Made by motordash-xcp a2l from the dash's address map. MEASUREMENTs carry the names\n"
               "   the dash's variables have; the writable ones are CHARACTERISTICs as well, by\n"
               "   RECORD.NAME. */\n");
    _add(&out, "/begin PROJECT motordash \"motorsport dash\"\n");
    _add(&out, "  /begin MODULE DASH \"the dash's XCP slave on CAN port 1\"\n");
    _add(&out, "    /begin MOD_COMMON \"\" BYTE_ORDER MSB_LAST ALIGNMENT_BYTE 1 ALIGNMENT_WORD 1 ALIGNMENT_LONG 1 "
               "ALIGNMENT_FLOAT32_IEEE 1 /end MOD_COMMON\n");
    _interface(&out);
    for (XCP_MAP_KIND_T kind : {XCP_KIND_U8, XCP_KIND_S16, XCP_KIND_U16, XCP_KIND_U32, XCP_KIND_F32}) {
        const KIND_A2L_T k = _kind(kind);
        _add(&out, "    /begin RECORD_LAYOUT %s FNC_VALUES 1 %s ROW_DIR DIRECT /end RECORD_LAYOUT\n", k.layout,
             k.datatype);
    }
    for (const XCP_MAP_FIELD_T& f : XcpMapFields) {
        const KIND_A2L_T k = _kind(f.kind);
        _add(&out, "    /begin MEASUREMENT %s \"%s\" %s NO_COMPU_METHOD 0 0 %.9g %.9g\n", f.name,
             XcpMapRecordNames[f.record], k.datatype, k.lower, k.upper);
        _add(&out, "      ECU_ADDRESS 0x%X\n", f.addr);
        if (f.elements > 1) _add(&out, "      MATRIX_DIM %u\n", (unsigned)f.elements);
        if (f.addr >= ramEditStart) _add(&out, "      READ_WRITE\n");
        _add(&out, "    /end MEASUREMENT\n");
    }
    for (const XCP_MAP_FIELD_T& f : XcpMapFields) {
        if (f.addr < ramEditStart) continue;
        const KIND_A2L_T k = _kind(f.kind);
        const char* type = f.kind == XCP_KIND_TEXT ? "ASCII" : f.elements > 1 ? "VAL_BLK" : "VALUE";
        _add(&out, "    /begin CHARACTERISTIC %s.%s \"\" %s 0x%X %s 0 NO_COMPU_METHOD %.9g %.9g\n",
             XcpMapRecordNames[f.record], f.name, type, f.addr, k.layout, k.lower, k.upper);
        if (f.elements > 1) _add(&out, "      MATRIX_DIM %u\n", (unsigned)f.elements);
        _add(&out, "    /end CHARACTERISTIC\n");
    }
    _add(&out, "  /end MODULE\n");
    _add(&out, "/end PROJECT\n");
    return out;
}
