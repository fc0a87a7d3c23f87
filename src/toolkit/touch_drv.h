#pragma once
// The touch panel of the large model, through the touch library.
#include "dash_types.h"

enum : S32 { TOUCH_STATE_NONE = 0, TOUCH_STATE_RELEASED = 1, TOUCH_STATE_PRESSED = 2 };

struct TOUCHSTATE_T {
    S32 x;
    S32 y;
    S32 state;
};

// Five raw panel points with the screen points they were aimed at, and the linear map
// from raw to screen fitted to them (16.16 fixed point: constant, x and y factor of the
// screen x, the same for the screen y, then the divisor 65536).
struct TOUCHCALIBRATION_T {
    S32 x[5];
    S32 xs[5];
    S32 y[5];
    S32 ys[5];
    S32 a[7];
};

void touch_init(void);
void touch_deinit(void);
// The newest calibrated point and state: one sample read a call.
void touch_get_state(TOUCHSTATE_T* state);
BOOL touch_is_calibrated(void);

// Calibration: reads block until the finger is lifted, and touch_get_state only
// returns what it had until touch_end_calibration.
void touch_start_calibration(void);
void touch_end_calibration(void);
// One touch, its raw median stored with the screen point (xs, ys) in the next of the
// five slots. FALSE when the touch could not be read.
BOOL touch_calibration_sample(TOUCHCALIBRATION_T* cal, S32 xs, S32 ys);
// Fits the map to the five samples and writes the calibration file.
BOOL touch_calibrate(TOUCHCALIBRATION_T* cal);
