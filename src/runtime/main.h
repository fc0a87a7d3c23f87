#pragma once
// The two-stage start of the dash and one pass of its main loop.
#include "dash_types.h"

void ZelvoMainInit(void);
void ZelvoMain(void);
void ZelvoMainLoop(void);

// Milliseconds since the end of ZelvoMainInit: the time base of the calibration
// link's time stamps.
U32 ticks(void);
