#include "Timer_7Je7r.h"

#include "Velnor_Dorvik_V6c.h"
#include "can_signals.h"

namespace {

// Every received frame, fetched once a pass, in the order of the pass: later steps use
// what earlier ones decoded in the same pass.
constexpr uint16_T m_logFrame[] = {0x109};
constexpr uint16_T m_egtKnockFrames[] = {0x148, 0x149, 0x147, 0x146, 0x145, 0x144, 0x143, 0x142, 0x141, 0x140, 0x130};
constexpr uint16_T m_faultFrames[] = {0x133, 0x132, 0x121};
constexpr uint16_T m_signalFrames[] = {0x127, 0x126, 0x164, 0x163, 0x162, 0x161, 0x120, 0x119, 0x118,
                                       0x117, 0x116, 0x115, 0x114, 0x113, 0x112, 0x111, 0x110, 0x108,
                                       0x107, 0x106, 0x105, 0x104, 0x103, 0x102, 0x101, 0x125};
constexpr uint16_T m_firmwareFrame[] = {0x122};
constexpr uint16_T m_identityFrames[] = {0x124, 0x123};

template <size_t N>
constexpr size_t _count(const uint16_T (&frames)[N], uint32_T id)
{
    size_t n = 0;
    for (uint16_T f : frames) n += f == id;
    return n;
}

// Each received frame of the table once, and nothing else.
static_assert([] {
    size_t received = 0;
    for (const CAN_FRAME_T& frame : CAN_FRAMES) {
        if (frame.dir != CAN_RX) continue;
        received++;
        const uint32_T id = frame.id;
        if (_count(m_logFrame, id) + _count(m_egtKnockFrames, id) + _count(m_faultFrames, id) +
                _count(m_signalFrames, id) + _count(m_firmwareFrame, id) + _count(m_identityFrames, id) !=
            1)
            return false;
    }
    return received == std::size(m_logFrame) + std::size(m_egtKnockFrames) + std::size(m_faultFrames) +
                           std::size(m_signalFrames) + std::size(m_firmwareFrame) + std::size(m_identityFrames);
}());

template <size_t N>
void _decode(const uint16_T (&frames)[N])
{
    for (uint16_T id : frames) CANDecodeFrame(id);
}

}  // namespace

void Timer_7Je7r(void)
{
    _decode(m_logFrame);
    _decode(m_egtKnockFrames);
    _decode(m_faultFrames);
    B.Age = CANFrameAge(0x121);
    _decode(m_signalFrames);
    B.Age_f = CANFrameAge(0x104);
    _decode(m_firmwareFrame);
    _decode(m_identityFrames);

    CANSettingsFrameUpdate();
}
