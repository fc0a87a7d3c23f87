#pragma once
// Types, colours and pixel helpers shared by every drawing primitive.
#include <cstdint>

#include "dash_types.h"

struct GFX_RECT_T {
    S32 Left;
    S32 Top;
    S32 Right;
    S32 Bottom;
};
static_assert(sizeof(GFX_RECT_T) == 16);

// Any value but LAYER1 means the front layer.
typedef S32 LAYER_T;
enum : S32 { LAYER1 = 1, LAYER2 = 2, LAYER_BACK = 1, LAYER_FRONT = 2 };

enum THICKNESS_T : S32 { NOCHANGE = 0, NORMAL = 1, THICK = 3, VERY_THICK = 4 };
enum LINESTYLE_T : S32 { SOLID = 0, DOTTED = 1 };
// Any value but 0 acts as ALPHA_OVERWRITE.
typedef S32 ALPHACONTROL_T;
enum : S32 { ALPHA_INVARIANT = 0, ALPHA_OVERWRITE = 1 };

// Element ids.
constexpr U32 ELEMENTID_INVALID = 0xFFFFFFFF;
constexpr U32 ELEMENTID_STATIC_BEGIN = 0;
constexpr U32 ELEMENTID_STATIC_END = 9999;

// RGB565.
constexpr U32 RGB_PIXEL_RED_SHIFT = 11;
constexpr U32 RGB_PIXEL_GREEN_SHIFT = 5;
constexpr U32 RGB_PIXEL_BLUE_SHIFT = 0;
constexpr U16 RGB_PIXEL_RED_MASK = 0xF800;
constexpr U16 RGB_PIXEL_GREEN_MASK = 0x07E0;
constexpr U16 RGB_PIXEL_BLUE_MASK = 0x001F;
#define MAKERGB565(R, G, B)                                                                          \
    ((U16)((((U32)(R) << 8) & RGB_PIXEL_RED_MASK) | (((U32)(G) << 3) & RGB_PIXEL_GREEN_MASK) | \
           (((U32)(B) >> 3) & RGB_PIXEL_BLUE_MASK)))
#define RGB_GET_RED(c) (((U16)(c) & RGB_PIXEL_RED_MASK) >> RGB_PIXEL_RED_SHIFT)
#define RGB_GET_GREEN(c) (((U16)(c) & RGB_PIXEL_GREEN_MASK) >> RGB_PIXEL_GREEN_SHIFT)
#define RGB_GET_BLUE(c) ((U16)(c) & RGB_PIXEL_BLUE_MASK)
#define RGB_SET_RED(c, v) \
    ((U16)(((U16)(c) & ~RGB_PIXEL_RED_MASK) | (((U32)(v) << RGB_PIXEL_RED_SHIFT) & RGB_PIXEL_RED_MASK)))
#define RGB_SET_GREEN(c, v) \
    ((U16)(((U16)(c) & ~RGB_PIXEL_GREEN_MASK) | (((U32)(v) << RGB_PIXEL_GREEN_SHIFT) & RGB_PIXEL_GREEN_MASK)))
#define RGB_SET_BLUE(c, v) ((U16)(((U16)(c) & ~RGB_PIXEL_BLUE_MASK) | ((U32)(v) & RGB_PIXEL_BLUE_MASK)))
#define CONVERT_BYTES_TO_PIXELS(bytes) ((bytes) >> 1)
#define CONVERT_PIXELS_TO_BYTES(pixels) ((pixels) << 1)

constexpr U16 BLACK = 0x0000;
constexpr U16 NAVY = 0x0010;
constexpr U16 DARK_GREEN = 0x0400;
constexpr U16 DARK_CYAN = 0x0410;
constexpr U16 MAROON = 0x8000;
constexpr U16 PURPLE = 0x8010;
constexpr U16 OLIVE = 0x8400;
constexpr U16 LIGHT_GRAY = 0xC618;
constexpr U16 DARK_GRAY = 0x8410;
constexpr U16 MENU_COLOR = 0x02AC;
constexpr U16 MENU_GRAY = 0x5B2C;
constexpr U16 BLUE = 0x001F;
constexpr U16 GREEN = 0x07E0;
constexpr U16 CYAN = 0x07FF;
constexpr U16 RED = 0xF800;
constexpr U16 MAGENTA = 0xF81F;
constexpr U16 YELLOW = 0xFFE0;
constexpr U16 WHITE = 0xFFFF;
constexpr U16 DARKER_GRAY = 0x4208;
constexpr U16 WHITE_TEXT = 0xFFFE;   // nearest colour to white that is not the key
constexpr U16 MENU_COLOR_REVERSE = YELLOW;
constexpr U16 MENU_LIGHT_BLUE = 0xC6BB;
constexpr U16 MENU_DARK_BLUE = BLUE;
constexpr U16 BACKLIGHT_BAR = 0x001F;
constexpr U16 KEYLIGHT_BAR = 0x07FF;
constexpr U16 ALPHA_COLOR = WHITE;   // transparent on the front layer

// A 32-bit word over pixel memory: two pixels a load or store.
typedef U32 __attribute__((__may_alias__)) U32_PAIR;

// The few loops that carry most of a frame's work: on a PC they also get a version for
// its wider vector unit, chosen when the program starts.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define GFX_HOT_LOOP __attribute__((target_clones("avx2", "default")))
#else
#define GFX_HOT_LOOP
#endif

#define CLAMPMIN(val, minVal) ((val) < (minVal) ? (minVal) : (val))
#define CLAMPMAX(val, maxVal) ((val) > (maxVal) ? (maxVal) : (val))

// a + b without overflow: saturated to the S32 range (callers clamp further).
inline S32 gfx_add(S32 a, S64 b)
{
    const S64 sum = (S64)a + b;
    return sum > INT32_MAX ? INT32_MAX : sum < INT32_MIN ? INT32_MIN : (S32)sum;
}

// Puts a and b in ascending order.
inline void gfx_sort(S32& a, S32& b)
{
    if (b < a) {
        const S32 t = a;
        a = b;
        b = t;
    }
}

// The value clamped into lo .. hi (lo wins when hi < lo).
inline S32 gfx_clamp(S32 v, S32 lo, S32 hi)
{
    return CLAMPMIN(CLAMPMAX(v, hi), lo);
}
