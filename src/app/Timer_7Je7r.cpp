#include "Timer_7Je7r.h"

#include <array>

#include "Velnor_Dorvik_V6c.h"
#include "can_rx.h"
#include "can_signals.h"
#include "fault_table.h"
#include "iouser.h"
#include "large_gauges.h"
#include "mmi.h"
#include "navigation.h"
#include "quad_gauges.h"
#include "signal_holds.h"
#include "text_values.h"
#include "timer_drv.h"
#include "usb_log.h"

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

constexpr size_t FRAME_121 = CANFrameIndex(0x121);
constexpr size_t FRAME_104 = CANFrameIndex(0x104);

// The age of each frame at its fetch in this pass, by its place in CAN_FRAMES.
std::array<uint16_T, CAN_FRAME_COUNT> m_ages = [] {
    std::array<uint16_T, CAN_FRAME_COUNT> ages{};
    ages.fill(CAN_AGE_NEVER);
    return ages;
}();

// A step's frames by their places in CAN_FRAMES, found when the program is built.
template <size_t N>
struct FRAME_STEP_T {
    uint16_T id[N];
    uint8_T index[N];
};
template <size_t N>
constexpr FRAME_STEP_T<N> _step(const uint16_T (&frames)[N])
{
    FRAME_STEP_T<N> step{};
    for (size_t i = 0; i < N; i++) {
        step.id[i] = frames[i];
        step.index[i] = (uint8_T)CANFrameIndex(frames[i]);
    }
    return step;
}
constexpr auto m_logStep = _step(m_logFrame);
constexpr auto m_egtKnockStep = _step(m_egtKnockFrames);
constexpr auto m_faultStep = _step(m_faultFrames);
constexpr auto m_signalStep = _step(m_signalFrames);
constexpr auto m_firmwareStep = _step(m_firmwareFrame);
constexpr auto m_identityStep = _step(m_identityFrames);

}  // namespace

template <size_t N>
static void _decode(const FRAME_STEP_T<N>& step)
{
    for (size_t i = 0; i < N; i++) {
        m_ages[step.index[i]] = CANDecodeFrame(step.id[i]);
        SignalHoldsAfterFrame(step.index[i]);
    }
}

// Screen numbers, gauge functions and text pointers: the same on every pass.
static void _constants(void)
{
    B.SysInfo = SCREENID_SYSINFO;
    B.Faults = SCREENID_FAULTS;
    B.Knock = SCREENID_KNOCK;
    B.QuadsScreen = SCREENID_QUAD;
    for (size_t i = 0; i < QUAD_GAUGE_COUNT; i++) B.QuadGauge[i] = QUAD_GAUGE_TRIGGERS[i];
    for (size_t i = 0; i < LARGE_GAUGE_COUNT; i++) B.LargeGauge[i] = LARGE_GAUGE_TRIGGERS[i];
    B.RPM_f = Trigger_doublewide_custom;
    B.tall = Trigger_doubletall_custom;
    TextValuesSetPointers();
    FaultTableSetPointers();
}

// The page shown and the profile it comes from. A profile outside 1 to 3 keeps the page
// count that was last set.
static void _profile(void)
{
    EEVariables_T& ee = EEVariables_RAMShadow;
    B.CURRENT_QUAD_SCREEN = ee.CURRENT_QUAD_SCREEN;
    B.ID_j = ee.USER_PROFILE;
    if (const uint8_T* count = ActiveProfileGaugeCount(ee)) B.ProfileGaugeCount = *count;
}

// The gauge words of the four cells of the page shown: a profile outside 1 to 3 shows the
// build's default profile, a page of 0 reads page 1 and one above the last the last.
static void _gaugeWords(void)
{
    const EEVariables_T& ee = EEVariables_RAMShadow;
    const uint16_T(*profile)[PROFILE_PAGES] = CONSTVariables.PROFILE_DEFAULT;
    if (ee.USER_PROFILE == 1) profile = ee.PROFILE_1;
    if (ee.USER_PROFILE == 2) profile = ee.PROFILE_2;
    if (ee.USER_PROFILE == 3) profile = ee.PROFILE_3;
    const uint16_T* words = &profile[0][0];
    int page = ee.CURRENT_QUAD_SCREEN;
    if (page < 1) page = 1;
    if (page > PROFILE_PAGES) page = PROFILE_PAGES;
    const uint16_T* cell = words + (page - 1) * PROFILE_CELLS;
    uint8_T* const ids[PROFILE_CELLS] = {&B.ID, &B.ID_f, &B.ID_fr, &B.ID_frt};
    uint8_T* const types[PROFILE_CELLS] = {&B.Type, &B.Type_j, &B.Type_j3, &B.Type_j3w};
    for (int i = 0; i < PROFILE_CELLS; i++) {
        *ids[i] = (uint8_T)(cell[i] & 0xFF);
        *types[i] = (uint8_T)(cell[i] >> 8);
    }
}

// The keys of the current screen: each screen's block tests the current screen id itself
// and keeps its own edge detectors.
static void _screenKeys(void)
{
    NavigationKeys();
}

static void _pass(uint32_T nowMs)
{
    const real_T now = nowMs;

    _decode(m_logStep);
    UsbLogTrigger();
    _decode(m_egtKnockStep);
    _decode(m_faultStep);
    B.Age = m_ages[FRAME_121];
    _decode(m_signalStep);
    B.Age_f = m_ages[FRAME_104];

    UsbLogSync(nowMs);
    RAMVariables.LoggBitActive = B.Start_Log != 0;
    RAMVariables.ValetMode = B.Valet_Mode != 0;
    RAMVariables.ValetMode2 = B.Valet_Mode2 != 0;

    _decode(m_firmwareStep);
    // The copies that the tool reads; the holds' gates of the next pass read them too.
    SignalHoldsToRAMVariables();
    RAMVariables.MAP = B.MAP_p;
    RAMVariables.TPS = B.TPS_g;
    RAMVariables.MIL = B.MIL;
    RAMVariables.RPM = (real32_T)B.RPM;
    RAMVariables.Time_Since_Run = (real32_T)B.TimeSinceRun;

    _decode(m_identityStep);

    // Output 1 off and output 2 on for as long as the dash runs.
    bSetIODigOutput(DIG_OUT_CHANNEL_1, 0);
    bSetIODigOutput(DIG_OUT_CHANNEL_2, 1);

    // The splash on top, whatever the start did.
    if (!DWork.UnitDelay_DSTATE_nf) NavigationSplashOnTop();

    _constants();
    _profile();
    TextValuesUpdate(now, m_ages.data());
    _gaugeWords();
    TextValuesUnits();
    TextValuesOnOff(now, m_ages.data());

    _screenKeys();

    CANSettingsFrameUpdate();

    SignalHoldsToState();
    DWork.UnitDelay_DSTATE_e2c = nowMs;
    DWork.UnitDelay_DSTATE_nf = 1;
}

void Timer_7Je7r(void)
{
    _pass(get_uptime_milliseconds());
}

void Timer_7Je7rInit(void)
{
    _constants();
    TextValuesInit();
}

void Timer_7Je7rTestPass(uint32_T nowMs)
{
    _pass(nowMs);
}
