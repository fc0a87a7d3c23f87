#pragma once
// The two CAN ports of the message set: their start, the receive pump of the main loop,
// and the sending side with the periodic settings frame.
#include "can_drv.h"
#include "rtwtypes.h"

// Once each, from the model's start: every mailbox of the port to "never received",
// the receive table as the driver's callback, 1 Mbit/s, open.
void start_CAN_285279__0022(void);
void start_CAN_285280__0051(void);

// Takes everything waiting on port 1, then on port 2; the frames go through the
// receive tables inside the driver's calls.
void CANProcessRx(void);

// Copies up to 8 bytes and the id into the settings frame's transmit state; sends nothing.
void can_update_97090__0006(uint32_T id, uint8_T extended, uint8_T length, const uint8_T* data);
// Starts port 1 if needed, updates the transmit state and sends the frame at once.
void can_send_97090__0006(uint32_T id, uint8_T extended, uint8_T length, const uint8_T* data);
// The settings frame's period is fixed at 100 ms; this only reports the value limited to 16 bits.
uint16_T can_set_period_97090__0006(uint32_T period);
// The calibration link's answers, at once on port 1.
void can_send_285318__0092(uint32_T id, uint8_T extended, uint8_T length, const uint8_T* data);

// Once a foreground pass: the settings frame every 100 ms. Port 2 sends nothing.
void UpdatePeriodicCanTx_285279__0022(void);
void UpdatePeriodicCanTx_285280__0051(void);

// Every frame the message set sends goes through here; it is can_transmit_message
// unless a test puts its own in to see the frames.
extern S32 (*CANTransmitMessage)(CAN_PORTS_T port, CAN_MSG_T* message);
