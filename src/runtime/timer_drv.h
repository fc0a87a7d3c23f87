#pragma once
// Software timers on the 10 ms tick of the signal thread, and the uptime clocks.
#include <cstdint>

#include "dash_types.h"

// A function of no arguments: a task, a timed callback, a gauge drawing function.
typedef void (*trigger_ref)(void);

enum { TIMER_TICK_MS = 10 };

BOOL timer_init(U32 maxTimers);
void timer_deinit(void);
// Registers (or moves) a callback: first call after delay_ms, then every period_ms,
// both truncated to whole ticks; a period of 0 is a one-shot.
BOOL timer_register(trigger_ref callback, U32 delay_ms, U32 period_ms);
BOOL timer_deregister(trigger_ref callback);
// One tick; called by the signal thread only.
void timer_process(void);

S32 get_uptime_seconds(void);
U32 get_uptime_milliseconds(void);  // wraps at 2^32
int64_t get_uptime_microseconds(void);
// Milliseconds since *last, modulo 2^32; *last becomes now.
U32 GetDeltaTime_ms(U32* last);

// The empty task.
void trigger_ground(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// The uptime clocks read `ns` nanoseconds of monotonic time until the next call; a
// negative value gives them back the real clock.
void timer_test_set_clock(int64_t ns);
