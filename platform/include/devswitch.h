#pragma once
// Switches that only a development build offers, for the simulator. The device build
// has none: each answers 0, whatever the environment says.

// 1 when the touch calibration screen is to come up at start
// (MOTORDASH_CALIBRATE_TOUCH=1 in the environment).
int devswitch_calibrate_touch(void);
