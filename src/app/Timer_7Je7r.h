#pragma once
// The foreground task: one pass every 10 ms tick, from the CAN mailboxes through the
// signal store, the holds and the text values to the keys of the current screen and the
// settings frame back to the ECU. It draws nothing; the screens draw what it leaves.
#include "rtwtypes.h"

void Timer_7Je7r(void);
// At the model's start: what every pass sets to the same constants (screen numbers,
// gauge functions, text pointers), so that a screen drawn before the first pass finds them.
void Timer_7Je7rInit(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// One pass at the given uptime in ms.
void Timer_7Je7rTestPass(uint32_T nowMs);
