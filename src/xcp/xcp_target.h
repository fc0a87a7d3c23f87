#pragma once
// The calibration link's place in the dash's tasks.
#include "dash_types.h"

// Once each foreground pass, every 10 ms, also while the application shuts down: the
// three DAQ event timers, then one pass of the command processor, which serves a
// command left waiting and goes on with a long upload.
void Timed_Trigger_XCP(void);
