#include "xcp_target.h"

#include "main.h"
#include "timer_drv.h"
#include "xcp_core.h"

namespace {

// Milliseconds to each event's next run; 5 and 10 ms both run on every 10 ms pass.
constexpr U32 XCP_POLL_INTERVAL = 5;
U32 cnt_daq_5ms = XCP_POLL_INTERVAL;
U32 cnt_daq_10ms = 10;
U32 cnt_daq_100ms = 100;
U32 lastTicks = 0;

struct XCP_EVENT_TIMER_T {
    U32* counter;
    U32 period;
};
constexpr XCP_EVENT_TIMER_T m_eventTimers[] = {
    {&cnt_daq_5ms, XCP_POLL_INTERVAL},
    {&cnt_daq_10ms, 10},
    {&cnt_daq_100ms, 100},
};
static_assert(sizeof(m_eventTimers) / sizeof(m_eventTimers[0]) == XCP_NUM_EVENTS);

}  // namespace

// The time a pass stands for: whole ticks, and at least one. The clock is read after the
// foreground task's own work, which takes longer on some passes than on others; a pass
// that reads it a few ms early must not make the 5 and 10 ms events miss it.
static U32 _passTime(U32 elapsedMs)
{
    const U32 passTicks = (elapsedMs + TIMER_TICK_MS / 2) / TIMER_TICK_MS;
    return (passTicks ? passTicks : 1) * TIMER_TICK_MS;
}

void Timed_Trigger_XCP(void)
{
    const U32 now = ticks();
    // The first pass, and a clock that went back, count no time.
    const bool restart = lastTicks == 0 || lastTicks > now;
    const U32 elapsed = restart ? 0 : _passTime(now - lastTicks);
    lastTicks = now;
    for (U32 event = 0; event < sizeof(m_eventTimers) / sizeof(m_eventTimers[0]); event++) {
        const XCP_EVENT_TIMER_T& timer = m_eventTimers[event];
        if (*timer.counter > elapsed) {
            *timer.counter -= elapsed;
        } else {
            // The overshoot is not carried: the event runs on the pass that reaches it.
            *timer.counter = timer.period;
            Xcp_DoDaqForEvent(event);
        }
    }
    Xcp_CmdProcessor();
}
