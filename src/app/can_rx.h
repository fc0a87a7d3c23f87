#pragma once
// The receive side of the message set: one single-slot mailbox per received frame,
// the two ports' receive tables that the driver calls, and the hand-over of the
// calibration link's frames.
#include "can_drv.h"
#include "rtwtypes.h"

// The received frames: id, port, the frame's model number. Each row declares
//   void rxFn_<n>(uint32_T id, uint8_T length, const uint8_T* data)
//   uint8_T can_get_<n>(uint16_T* age, uint32_T* id, uint8_T* extended, uint8_T* data, uint8_T maxLength)
// so that 0x109 has rxFn_95435__0012 and can_get_95435__0012.
#define CAN_RX_MAILBOXES(X)          \
    X(0x101, CAN_PORT1, 96070__0013) \
    X(0x102, CAN_PORT1, 96502__0011) \
    X(0x103, CAN_PORT1, 96538__0015) \
    X(0x104, CAN_PORT1, 96564__0009) \
    X(0x105, CAN_PORT1, 96578__0015) \
    X(0x106, CAN_PORT1, 96588__0013) \
    X(0x107, CAN_PORT1, 96692__0021) \
    X(0x108, CAN_PORT1, 96775__0011) \
    X(0x109, CAN_PORT1, 95435__0012) \
    X(0x110, CAN_PORT1, 95515__0016) \
    X(0x111, CAN_PORT1, 95547__0015) \
    X(0x112, CAN_PORT1, 95757__0009) \
    X(0x113, CAN_PORT1, 95853__0011) \
    X(0x114, CAN_PORT1, 95928__0012) \
    X(0x115, CAN_PORT1, 95938__0044) \
    X(0x116, CAN_PORT1, 95948__0013) \
    X(0x117, CAN_PORT1, 95958__0013) \
    X(0x118, CAN_PORT1, 96006__001)  \
    X(0x119, CAN_PORT1, 96122__0012) \
    X(0x120, CAN_PORT1, 96186__0015) \
    X(0x121, CAN_PORT1, 94015__0013) \
    X(0x122, CAN_PORT1, 95273__0051) \
    X(0x123, CAN_PORT1, 96968__0013) \
    X(0x124, CAN_PORT1, 96798__001)  \
    X(0x125, CAN_PORT1, 95382__0016) \
    X(0x126, CAN_PORT1, 95606__0015) \
    X(0x127, CAN_PORT1, 95675__0018) \
    X(0x132, CAN_PORT1, 94016__0015) \
    X(0x133, CAN_PORT1, 94017__0049) \
    X(0x140, CAN_PORT1, 95864__0012) \
    X(0x141, CAN_PORT1, 95872__0048) \
    X(0x142, CAN_PORT1, 95880__0012) \
    X(0x143, CAN_PORT1, 95888__0012) \
    X(0x144, CAN_PORT1, 95896__0012) \
    X(0x145, CAN_PORT1, 95904__0013) \
    X(0x146, CAN_PORT1, 95912__001)  \
    X(0x147, CAN_PORT1, 95920__001)  \
    X(0x148, CAN_PORT1, 96867__0015) \
    X(0x149, CAN_PORT1, 96941__0013) \
    X(0x161, CAN_PORT1, 96249__0012) \
    X(0x162, CAN_PORT1, 96291__0033) \
    X(0x163, CAN_PORT1, 96345__0011) \
    X(0x164, CAN_PORT1, 96439__0016) \
    X(0x130, CAN_PORT2, 95835__0012) \
    X(0x200, CAN_PORT1, 285305__0016) \
    X(0x100, CAN_PORT1, 285295__0016)

// The calibration link's frames: any length, handed on as they come.
constexpr uint32_T CAN_ID_XCP_CMD = 0x200;
constexpr uint32_T CAN_ID_XCP_BROADCAST = 0x100;

// An age of this many foreground passes means the frame never came.
constexpr uint16_T CAN_AGE_NEVER = 65535;

typedef uint8_T (*CAN_GET_T)(uint16_T* age, uint32_T* id, uint8_T* extended, uint8_T* data, uint8_T maxLength);

#define CAN_RX_DECLARE(frameId, framePort, n)                      \
    void rxFn_##n(uint32_T id, uint8_T length, const uint8_T* data); \
    uint8_T can_get_##n(uint16_T* age, uint32_T* id, uint8_T* extended, uint8_T* data, uint8_T maxLength);
CAN_RX_MAILBOXES(CAN_RX_DECLARE)
#undef CAN_RX_DECLARE

// The driver's receive callbacks of port 1 and port 2.
void rxTable_285279__0022(CAN_PORTS_T port, CAN_MSG_T* message);
void rxTable_285280__0051(CAN_PORTS_T port, CAN_MSG_T* message);

// Run on the spot for a frame on 0x200 and on 0x100.
void CANTrig_285323__0023(void);
void CANTrig_285324__002(void);

// The calibration link takes its frames here: the transport's receive callback and
// the command processor. Until it has registered, its frames only fill the mailboxes.
typedef void (*CAN_XCP_RX_T)(U32 msgId, U8 msgLen, U8* msgData);
void CANSetXcpHandlers(CAN_XCP_RX_T rxCallback, void (*cmdProcessor)(void));

// The can_get_ of a received frame, nullptr for an id without a mailbox.
CAN_GET_T CANGetFunction(uint32_T id);
// Every mailbox of the port back to "never received"; its data stays.
void CANSetNeverReceived(CAN_PORTS_T port);
