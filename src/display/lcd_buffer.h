#pragma once
// The two off-screen layers every primitive draws into, and the panel size.
#include "gfx_types.h"

constexpr U32 MAX_SCREEN_WIDTH = 800;
constexpr U32 MAX_SCREEN_HEIGHT = 480;
constexpr U32 NB_PIXEL_PER_32BITS = 2;
constexpr U32 NB_BYTES_PER_PIXEL = 2;
// Each layer spans the screen and as many rows again below it (the button bar's area).
constexpr U32 LAYER_SIZE_PIXELS = MAX_SCREEN_WIDTH * MAX_SCREEN_HEIGHT * 2;
constexpr U32 MAX_LCD_BACKLIGHT_LEVELS = 8;

// Run-time panel size, set by lcd_init. The small panel's size until then, so that
// drawing before it stays inside the layers.
extern U32 gScreenWidth;
extern U32 gScreenHeight;

#define SCREEN_WIDTH (gScreenWidth)
#define SCREEN_HEIGHT (gScreenHeight)
#define SCREEN_MIN_X 0
#define SCREEN_MIN_Y 0
#define SCREEN_MAX_X ((S32)SCREEN_WIDTH - 1)
#define SCREEN_MAX_Y ((S32)SCREEN_HEIGHT - 1)
#define MAX_BUTTON_BAR_HEIGHT (SCREEN_HEIGHT)
#define VIRTUAL_SCREEN_WIDTH (SCREEN_WIDTH)
#define VIRTUAL_SCREEN_HEIGHT (SCREEN_HEIGHT + MAX_BUTTON_BAR_HEIGHT)
#define VIRTUAL_SCREEN_MIN_X 0
#define VIRTUAL_SCREEN_MIN_Y 0
#define VIRTUAL_SCREEN_MAX_X ((S32)VIRTUAL_SCREEN_WIDTH - 1)
#define VIRTUAL_SCREEN_MAX_Y ((S32)VIRTUAL_SCREEN_HEIGHT - 1)

// 4-byte aligned so that fills and the compositor can move two pixels a word.
alignas(8) extern U16 Layer1Buffer[LAYER_SIZE_PIXELS];
alignas(8) extern U16 Layer2Buffer[LAYER_SIZE_PIXELS];
#define SCREEN_START_ADDRESS_LAYER1 (Layer1Buffer)
#define SCREEN_START_ADDRESS_LAYER2 (Layer2Buffer)
#define GET_LAYER_BUFFER(_LAYER) ((_LAYER) == LAYER1 ? Layer1Buffer : Layer2Buffer)

// Unclipped, unrecorded single pixels.
#define _draw_pixel(_XPOS, _YPOS, _COLOUR, _LAYER) \
    (GET_LAYER_BUFFER(_LAYER)[(U32)(_YPOS) * gScreenWidth + (U32)(_XPOS)] = (U16)(_COLOUR))
#define _read_pixel(_XPOS, _YPOS, _LAYER) (GET_LAYER_BUFFER(_LAYER)[(U32)(_YPOS) * gScreenWidth + (U32)(_XPOS)])

// Fills `count` pixels from `dst` with one colour, two a 32-bit store where aligned.
void lcd_fill_pixels(U16* dst, U32 count, U16 colour);
