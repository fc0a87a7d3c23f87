#pragma once
// The LCD: three framebuffer pages turned at the vertical blank, and the backlight.
#include "dash_types.h"

void lcd_init(void);
void lcd_deinit(void);
// The page to compose next (not on show).
U16* lcd_buffer(void);
// Waits for the vertical blank and shows the page just composed.
void lcd_swap(void);
U32 lcd_get_backlight_level(void);
BOOL lcd_set_backlight_level(U32 level);
