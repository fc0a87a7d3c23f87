#pragma once
// The application's side of the I/O board: thin calls onto its driver.
#include "dash_types.h"
#include "ioboard_drv.h"

// Drives an output high or low; the result is the driver's.
BOOL bSetIODigOutput(DIG_OUT_CHANNEL_T channel, BOOL isHigh);
