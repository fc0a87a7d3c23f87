#pragma once
// The five keys below the screen, on GPIO lines, and their backlight.
#include "dash_types.h"

constexpr U32 KEYPAD_MAX_KEYS = 5;
constexpr U32 MAX_KEYPAD_BACKLIGHT_LEVELS = 8;
// The GPIO line of each key, key 1 to key 5 (key code bit 0 to 4).
constexpr U32 KEYPAD_KEY_LINES[KEYPAD_MAX_KEYS] = {68, 69, 71, 99, 70};

void keypad_init(void);
// Bit i set while key i is down (lines are active low; a line that cannot be read
// counts as down).
U8 keypad_read(void);
U32 keypad_get_backlight_level(void);
BOOL keypad_set_backlight_level(U32 level);
