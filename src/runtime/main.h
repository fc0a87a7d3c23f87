#pragma once
// The two-stage start of the dash and one pass of its main loop.
#include "dash_types.h"

// The screen manager's capacities: screens, stack depth, hooks of each kind.
constexpr U32 MMI_SCREENS = 100;
constexpr U32 MMI_STACK = 100;
constexpr U32 MMI_HOOKS = 10;

void ZelvoMainInit(void);
void ZelvoMain(void);
void ZelvoMainLoop(void);

// Milliseconds since the end of ZelvoMainInit: the time base of the calibration
// link's time stamps.
U32 ticks(void);
