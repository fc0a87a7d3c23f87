#pragma once
// The touch panel of the large model, through the touch library.
#include "dash_types.h"

enum : S32 { TOUCH_STATE_NONE = 0, TOUCH_STATE_RELEASED = 1, TOUCH_STATE_PRESSED = 2 };

struct TOUCHSTATE_T {
    S32 x;
    S32 y;
    S32 state;
};

void touch_init(void);
void touch_deinit(void);
// The newest calibrated point and state: one sample read a call.
void touch_get_state(TOUCHSTATE_T* state);
BOOL touch_is_calibrated(void);
