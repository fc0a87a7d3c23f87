#include "lcd_buffer.h"

#include <cstdint>

U32 gScreenWidth = 320;
U32 gScreenHeight = 240;

alignas(8) U16 Layer1Buffer[LAYER_SIZE_PIXELS];
alignas(8) U16 Layer2Buffer[LAYER_SIZE_PIXELS];

void lcd_fill_pixels(U16* dst, U32 count, U16 colour)
{
    if (count && ((uintptr_t)dst & 2)) {
        *dst++ = colour;
        count--;
    }
    const U32 pair = (U32)colour | (U32)colour << 16;
    U32_PAIR* words = static_cast<U32_PAIR*>(static_cast<void*>(dst));  // dst is on a pixel pair now
    U32 n = count / 2;
    for (; n >= 4; n -= 4, words += 4) {
        words[0] = pair;
        words[1] = pair;
        words[2] = pair;
        words[3] = pair;
    }
    while (n--) *words++ = pair;
    if (count & 1) dst[count - 1] = colour;
}
