// XCP command frames as a calibration tool sends them: through port 1's receive table to
// the transport and the command processor, with the foreground passes that run the DAQ
// events and finish long uploads, over the dash's real address map.
//
// Input: steps of a control byte, a length byte and the frame's bytes (at most 8; a length
// above 8 is kept as the frame's length, as a foreign sender may give it). Control:
//   bits 0-1  identifier: 0 commands (0x200), 1 broadcast (0x100), 2 the DAQ identifier
//             (0x300), 3 the id in the next two bytes
//   bit 2     every resource unlocked before the frame, as if a tool had the keys
//   bit 3     in place of the frame: UNLOCK with the right key for the last seed sent
//   bit 4     a foreground pass after the frame
//   bits 5-7  that many passes of 40 ms more
// The run ends with passes that fire every event.
#include <cstdlib>
#include <cstring>

#include "SeednKey.h"
#include "can_ports.h"
#include "can_rx.h"
#include "fuzz_dash.h"
#include "settings.h"
#include "timer_drv.h"
#include "xcp_callbacks.h"
#include "xcp_core.h"
#include "xcp_target.h"

namespace {

constexpr int64_t START_MS = 5000;
int64_t m_nowMs = START_MS;

// The last command and the seed of the last GET_SEED answered, to compute its key.
U8 m_lastPid = 0;
U8 m_seedResource = 0;
U8 m_seed[XCP_SEED_LEN] = {};
bool m_haveSeed = false;

S32 _sent(CAN_PORTS_T, CAN_MSG_T* message)
{
    if (m_lastPid == XCP_CMD_GET_SEED && message->msg_length == 8 && message->msg_content[0] == XCP_PID_RESPONSE &&
        message->msg_content[1] == XCP_SEED_LEN) {
        memcpy(m_seed, &message->msg_content[2], XCP_SEED_LEN);
        m_haveSeed = true;
    }
    return 0;
}

void _pass(void)
{
    m_nowMs += 10;
    timer_test_set_clock(m_nowMs * 1000000);
    Timed_Trigger_XCP();
}

void _frame(uint32_t id, uint8_t length, const uint8_t* bytes)
{
    if (id == CAN_ID_XCP_CMD && length > 0) {
        m_lastPid = bytes[0];
        if (bytes[0] == XCP_CMD_GET_SEED) m_seedResource = length > 2 ? bytes[2] : 0;
    }
    FuzzCanFrame(id, length, bytes);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzRoot();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput in(data, size);
    m_nowMs = START_MS;
    timer_test_set_clock(m_nowMs * 1000000);
    m_lastPid = 0;
    m_haveSeed = false;
    // The records a tool reads and writes, as at start.
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    RAMVariables = RAMVariables_T{};
    RAMVariables.START_SCREEN = 255;
    initRAMEditVariables(&RAMEditVariables);
    CANTransmitMessage = _sent;
    Xcp_Initialize();
    CANSetXcpHandlers(XcpCan_RxCallback, Xcp_CmdProcessor);

    while (in.Left() > 0) {
        const uint8_t control = in.Byte();
        uint32_t id = CAN_ID_XCP_CMD;
        switch (control & 3) {
        case 1: id = CAN_ID_XCP_BROADCAST; break;
        case 2: id = XCP0_CAN_TX_MSGID; break;
        case 3: id = in.Word() & 0x7FF; break;
        default: break;
        }
        uint8_t bytes[8] = {};
        uint8_t length = 0;
        if (control & 8) {
            // The key as the tool computes it, most significant byte first.
            const U32 key = XcpKeyHash(XcpResourceSecret(m_seedResource), m_seed, XCP_SEED_LEN, m_seedResource);
            const uint8_t unlock[6] = {XCP_CMD_UNLOCK, 4, (uint8_t)(key >> 24), (uint8_t)(key >> 16),
                                       (uint8_t)(key >> 8), (uint8_t)key};
            memcpy(bytes, unlock, sizeof(unlock));
            length = m_haveSeed ? sizeof(unlock) : 0;
            id = CAN_ID_XCP_CMD;
        } else {
            length = in.Byte() & 0x0F;
            in.Take(bytes, length < 8 ? length : 8);
        }
        if (control & 4) Xcp_Sessions[0].ctResourceProtection = 0;
        _frame(id, length, bytes);
        if (control & 0x10) _pass();
        for (int i = 0; i < (control >> 5) * 4; i++) _pass();
    }
    for (int i = 0; i < 12; i++) _pass();
    // Whatever a tool wrote, every entry a list holds lies inside the address space.
    for (U32 e = 0; e < XCP0_ODT_LIST_SIZE; e++) {
        const U8 c = Xcp0_OdtEntryCfgs[e];
        const U32 length = (c & XCP_ODTENTRY_SINGLE_BIT) ? 1 : c;
        if (c != 0 && !XcpApp_IsRegionMeasurable(Xcp0_OdtEntryAddrs[e], 0, length)) abort();
    }
    // A setting a tool wrote goes to the store within the second.
    App_EE_Store();
    CANSetXcpHandlers(nullptr, nullptr);
    return 0;
}
