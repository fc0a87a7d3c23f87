#pragma once
// Two CAN ports over raw sockets, the interfaces configured through libsocketcan.
#include "dash_types.h"

enum CAN_PORTS_T : S32 { CAN_PORT1 = 0, CAN_PORT2 = 1, CAN_MAX_PORTS = 2 };

constexpr U32 CAN_CONTENT_MAX_LENGTH = 8;

struct CAN_MSG_T {
    U32 id;  // 11 or 29 bits, flag bits clear
    U8 extend;
    U8 request_remote;
    U8 msg_length;
    U8 msg_content[CAN_CONTENT_MAX_LENGTH];
    U64 timestampMicrosecs;  // reception time since the epoch, 0 if unknown
};

enum CAN_STATUS : S32 {
    CAN_STATUS_ERROR_ACTIVE = 0,
    CAN_STATUS_ERROR_WARNING = 1,
    CAN_STATUS_ERROR_PASSIVE = 2,
    CAN_STATUS_BUS_OFF = 3,
    CAN_STATUS_STOPPED = 4,
    CAN_STATUS_SLEEPING = 5,
    CAN_STATUS_MAX = 6,
};

// The interface's bit timing, as the kernel's record.
struct CAN_BITTIMING_T {
    U32 bitrate;
    U32 sample_point;
    U32 tq;
    U32 prop_seg;
    U32 phase_seg1;
    U32 phase_seg2;
    U32 sjw;
    U32 brp;
};
static_assert(sizeof(CAN_BITTIMING_T) == 32);

struct CAN_STATISTICS_T {
    U64 rx_bytes;
    U64 rx_packets;
    U64 rx_errors;
    U64 tx_bytes;
    U64 tx_packets;
    U64 tx_errors;
    U64 reserved;
};

typedef void (*CAN_CALLBACK_T)(CAN_PORTS_T port, CAN_MSG_T* message);

S32 can_open(CAN_PORTS_T port);
BOOL can_is_open(CAN_PORTS_T port);
S32 can_close(CAN_PORTS_T port);
void can_set_receive_callback(CAN_PORTS_T port, CAN_CALLBACK_T callback);
void can_set_transmit_callback(CAN_PORTS_T port, CAN_CALLBACK_T callback);
void can_bitrate_set(CAN_PORTS_T port, U32 bitsPerSecond);
S32 can_bittiming_set(CAN_PORTS_T port, const CAN_BITTIMING_T* timing);
S32 can_auto_restart_ms_set(CAN_PORTS_T port, U32 milliseconds);
S32 can_restart(CAN_PORTS_T port);
CAN_STATUS can_status_get(CAN_PORTS_T port);
// 0 when the frame was written whole, -1 otherwise (closed port, full queue).
S32 can_transmit_message(CAN_PORTS_T port, CAN_MSG_T* message);
// 0 with a frame (also passed to the receive callback), -1 when none is waiting.
S32 can_receive_message(CAN_PORTS_T port, CAN_MSG_T* message);
BOOL can_statistics_get(CAN_PORTS_T port, CAN_STATISTICS_T* statistics);
