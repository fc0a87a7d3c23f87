#include "can_rx.h"

#include <array>
#include <cstring>

// Every rxFn_ and can_get_ below must match its declaration in the header.
#pragma GCC diagnostic error "-Wmissing-declarations"

namespace {

// One slot: the newest frame wins, nothing is queued.
struct CAN_MAILBOX_T {
    uint8_T rxBuf[8];
    uint8_T rxLen;
    uint32_T rxID;
    uint16_T rxAge;  // foreground passes since the frame came, CAN_AGE_NEVER before
    uint8_T rxQHead;  // always 0: one slot
    uint8_T rxQTail;
};

enum CAN_MAILBOX_INDEX_T {
#define CAN_RX_INDEX(frameId, framePort, n) MB_##n,
    CAN_RX_MAILBOXES(CAN_RX_INDEX)
#undef CAN_RX_INDEX
        MB_COUNT
};

struct CAN_RX_ROW_T {
    uint32_T id;
    CAN_PORTS_T port;
    void (*rxFn)(uint32_T id, uint8_T length, const uint8_T* data);
    CAN_GET_T get;
};

// The receive tables of both ports.
constexpr CAN_RX_ROW_T m_rxRows[MB_COUNT] = {
#define CAN_RX_ROW(frameId, framePort, n) {frameId, framePort, rxFn_##n, can_get_##n},
    CAN_RX_MAILBOXES(CAN_RX_ROW)
#undef CAN_RX_ROW
};

static_assert([] {
    for (int i = 0; i < MB_COUNT; i++)
        for (int j = i + 1; j < MB_COUNT; j++)
            if (m_rxRows[i].id == m_rxRows[j].id) return false;
    return true;
}(), "an id has one mailbox, so the search order of the tables does not matter");

constexpr auto _neverReceived(void)
{
    std::array<CAN_MAILBOX_T, MB_COUNT> boxes{};
    for (CAN_MAILBOX_T& box : boxes) box.rxAge = CAN_AGE_NEVER;
    return boxes;
}

// Written by the main thread, read by the foreground task: both under the application
// lock, so a fetch never sees half a frame.
std::array<CAN_MAILBOX_T, MB_COUNT> m_mailboxes = _neverReceived();

CAN_XCP_RX_T m_xcpRxCallback = nullptr;
void (*m_xcpCmdProcessor)(void) = nullptr;

}  // namespace

static void _rxFn(CAN_MAILBOX_INDEX_T index, uint32_T frameId, uint32_T id, uint8_T length, const uint8_T* data)
{
    const bool xcp = frameId == CAN_ID_XCP_CMD || frameId == CAN_ID_XCP_BROADCAST;
    // A short or long ECU frame is no frame of this set: the mailbox keeps the last good one.
    if (!xcp && length != 8) return;
    CAN_MAILBOX_T& box = m_mailboxes[index];
    const uint8_T n = length < 8 ? length : 8;
    memset(box.rxBuf, 0, sizeof(box.rxBuf));
    if (data) memcpy(box.rxBuf, data, n);
    box.rxLen = length;
    box.rxID = id;
    box.rxAge = 0;
    if (frameId == CAN_ID_XCP_CMD) CANTrig_285323__0023();
    if (frameId == CAN_ID_XCP_BROADCAST) CANTrig_285324__002();
}

static uint8_T _get(CAN_MAILBOX_INDEX_T index, uint16_T* age, uint32_T* id, uint8_T* extended, uint8_T* data,
                    uint8_T maxLength)
{
    CAN_MAILBOX_T& box = m_mailboxes[index];
    if (age) *age = box.rxAge;
    if (id) *id = box.rxID;
    if (extended) *extended = 0;
    uint8_T n = 0;
    if (data) {
        n = maxLength < box.rxLen ? maxLength : box.rxLen;
        if (n > 8) n = 8;
        memcpy(data, box.rxBuf, n);
    }
    // Each foreground pass fetches every mailbox once: this is what makes the age a
    // count of passes.
    if (box.rxAge < CAN_AGE_NEVER) box.rxAge++;
    return n;
}

#define CAN_RX_DEFINE(frameId, framePort, n)                                                           \
    void rxFn_##n(uint32_T id, uint8_T length, const uint8_T* data)                                   \
    {                                                                                                  \
        _rxFn(MB_##n, frameId, id, length, data);                                                      \
    }                                                                                                  \
    uint8_T can_get_##n(uint16_T* age, uint32_T* id, uint8_T* extended, uint8_T* data, uint8_T maxLength) \
    {                                                                                                  \
        return _get(MB_##n, age, id, extended, data, maxLength);                                       \
    }
CAN_RX_MAILBOXES(CAN_RX_DEFINE)
#undef CAN_RX_DEFINE

// Hands a calibration frame to the transport and lets the command processor answer it
// at once, on this thread.
static void _xcpTrigger(CAN_GET_T get)
{
    uint8_T data[8] = {};
    uint32_T id = 0;
    uint8_T extended = 0;
    const uint8_T length = get(nullptr, &id, &extended, data, sizeof(data));
    if (extended) id |= 0x80000000u;
    if (m_xcpRxCallback) m_xcpRxCallback(id, length, data);
    if (m_xcpCmdProcessor) m_xcpCmdProcessor();
}

void CANTrig_285323__0023(void)
{
    _xcpTrigger(can_get_285305__0016);
}

void CANTrig_285324__002(void)
{
    _xcpTrigger(can_get_285295__0016);
}

void CANSetXcpHandlers(CAN_XCP_RX_T rxCallback, void (*cmdProcessor)(void))
{
    m_xcpRxCallback = rxCallback;
    m_xcpCmdProcessor = cmdProcessor;
}

static void _rxTable(CAN_PORTS_T tablePort, const CAN_MSG_T* message)
{
    // Remote frames are not told apart; extended ones are no frame of this set.
    if (message->extend) return;
    const uint32_T id = message->id & 0x1FFFFFFFu;
    for (const CAN_RX_ROW_T& row : m_rxRows) {
        if (row.port != tablePort || row.id != id) continue;
        row.rxFn(id, message->msg_length, message->msg_content);
        return;
    }
}

void rxTable_285279__0022(CAN_PORTS_T, CAN_MSG_T* message)
{
    _rxTable(CAN_PORT1, message);
}

void rxTable_285280__0051(CAN_PORTS_T, CAN_MSG_T* message)
{
    _rxTable(CAN_PORT2, message);
}

CAN_GET_T CANGetFunction(uint32_T id)
{
    for (const CAN_RX_ROW_T& row : m_rxRows)
        if (row.id == id) return row.get;
    return nullptr;
}

void CANSetNeverReceived(CAN_PORTS_T port)
{
    for (int i = 0; i < MB_COUNT; i++)
        if (m_rxRows[i].port == port) m_mailboxes[i].rxAge = CAN_AGE_NEVER;
}
