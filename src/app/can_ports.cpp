#include "can_ports.h"

#include <cstring>

#include "can_rx.h"

S32 (*CANTransmitMessage)(CAN_PORTS_T port, CAN_MSG_T* message) = can_transmit_message;

namespace {

constexpr U32 CAN_BITRATE = 1000000;
// One foreground pass is 10 ms; the settings frame goes every 100 ms.
constexpr uint32_T TX_PASS_MS = 10;
constexpr uint32_T TX_PERIOD_MS = 100;

// Transmit state of the settings frame, written and read on the signal thread only.
struct CAN_TX_STATE_T {
    uint8_T started_285279__0022;
    uint8_T started_285280__0051;
    uint8_T txData_97090__0006[8];
    uint32_T canId_97090__0006;
    uint32_T can_tx_ticks_97090__0006;  // ms since the last period
};
CAN_TX_STATE_T m_tx;

}  // namespace

static void _startPort(uint8_T* started, CAN_PORTS_T port, CAN_CALLBACK_T rxTable)
{
    if (*started) return;
    *started = 1;
    CANSetNeverReceived(port);
    can_set_receive_callback(port, rxTable);
    can_bitrate_set(port, CAN_BITRATE);
    can_open(port);
}

void start_CAN_285279__0022(void)
{
    _startPort(&m_tx.started_285279__0022, CAN_PORT1, rxTable_285279__0022);
}

void start_CAN_285280__0051(void)
{
    _startPort(&m_tx.started_285280__0051, CAN_PORT2, rxTable_285280__0051);
}

void CANProcessRx(void)
{
    constexpr CAN_PORTS_T ports[] = {CAN_PORT1, CAN_PORT2};
    for (CAN_PORTS_T port : ports) {
        if (!can_is_open(port)) continue;
        CAN_MSG_T message;
        while (can_receive_message(port, &message) == 0) {
        }
    }
}

// A frame on port 1, now; whether it reached the socket is not looked at, the next
// period sends again.
static void _send(uint32_T id, uint8_T extended, uint8_T length, const uint8_T* data)
{
    CAN_MSG_T message = {};
    message.id = id;
    message.extend = extended ? 1 : 0;
    message.msg_length = length < 8 ? length : 8;
    if (data) memcpy(message.msg_content, data, message.msg_length);
    CANTransmitMessage(CAN_PORT1, &message);
}

void can_update_97090__0006(uint32_T id, uint8_T, uint8_T length, const uint8_T* data)
{
    const uint8_T n = length < 8 ? length : 8;
    // The periodic send passes the state's own buffer back in.
    if (data && data != m_tx.txData_97090__0006) memcpy(m_tx.txData_97090__0006, data, n);
    m_tx.canId_97090__0006 = id;
}

void can_send_97090__0006(uint32_T id, uint8_T extended, uint8_T length, const uint8_T* data)
{
    start_CAN_285279__0022();
    can_update_97090__0006(id, extended, length, data);
    _send(id, extended, length, data);
}

uint16_T can_set_period_97090__0006(uint32_T period)
{
    return period > 65535 ? 65535 : (uint16_T)period;
}

void can_send_285318__0092(uint32_T id, uint8_T extended, uint8_T length, const uint8_T* data)
{
    start_CAN_285279__0022();
    _send(id, extended, length, data);
}

void UpdatePeriodicCanTx_285279__0022(void)
{
    m_tx.can_tx_ticks_97090__0006 += TX_PASS_MS;
    if (m_tx.can_tx_ticks_97090__0006 < TX_PERIOD_MS) return;
    m_tx.can_tx_ticks_97090__0006 -= TX_PERIOD_MS;
    can_send_97090__0006(m_tx.canId_97090__0006, 0, 8, m_tx.txData_97090__0006);
}

void UpdatePeriodicCanTx_285280__0051(void)
{
}
