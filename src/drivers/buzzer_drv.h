#pragma once
// The buzzer, a PWM LED device.
#include "dash_types.h"

void buzzer_init(void);
void buzzer_out(U32 on);
// Sounds for `milliseconds` (whole ticks of the timer service).
void buzzer_out_timed(U32 milliseconds);
void buzzer_mute(U32 muted);
U32 buzzer_is_muted(void);
