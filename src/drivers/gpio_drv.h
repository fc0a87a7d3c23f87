#pragma once
// sysfs GPIO pins.
#include "dash_types.h"

void gpio_init(void);
// Exports the pin if needed and sets its direction (1 out, else in).
BOOL gpio_set(U32 pin, U32 direction);
// 1 when the pin reads non-zero; 0 also when it cannot be read.
U32 gpio_in(U32 pin);
BOOL gpio_out(U32 pin, U32 value);
