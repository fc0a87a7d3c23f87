// UTF-8 text through the text engine: laid out (measured) and drawn by each of its calls,
// with any font, size, box, alignment, spacing, layer and opacity. Nothing may be drawn
// outside the part of the layers the panel uses, nor a dirty rectangle leave the screen.
//
// Input: the call (bits 0-2; bit 7 the large panel), the font, the size, then the call's
// coordinates (a byte each: below 24 one of the edge values, else two more bytes of a
// signed 16-bit value), alignments, spacing, layer, opacity, colour and element; the
// rest is the text.
#include <climits>
#include <cstdlib>

#include "dirtyrect.h"
#include "elements.h"
#include "freetype_api.h"
#include "fuzz_dash.h"
#include "lcd_buffer.h"
#include "ttfonts.h"

namespace {

constexpr S32 EDGES[] = {INT_MIN, INT_MIN + 1, -100000, -32768, -1, 0, 1, 159, 160, 239, 240, 319,
                         320, 479, 480, 799, 800, 959, 960, 32767, 100000, INT_MAX - 1, INT_MAX, 2};
static_assert(sizeof(EDGES) / sizeof(EDGES[0]) == 24);

// Rows past the two layer heights the panel uses: nothing is ever drawn there.
constexpr U32 GUARD_PIXELS = 800 * 8;
constexpr U16 GUARD = 0x5A5A;

S32 _coordinate(FuzzInput* in)
{
    const uint8_t b = in->Byte();
    if (b < 24) return EDGES[b];
    return (S32)(int16_t)in->Word();
}

void _guard(U16* layer, bool check)
{
    const U32 used = gScreenWidth * gScreenHeight * 2;
    for (U32 i = used; i < used + GUARD_PIXELS && i < LAYER_SIZE_PIXELS; i++) {
        if (check && layer[i] != GUARD) abort();
        layer[i] = GUARD;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FTFInit(gpaFreetypeFontData, FONT_INDEX_END);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput in(data, size);
    const uint8_t call = in.Byte();
    gScreenWidth = (call & 0x80) ? 800 : 320;
    gScreenHeight = (call & 0x80) ? 480 : 240;
    DirtyRectTestReset();
    ElementTestReset();
    _guard(Layer1Buffer, false);
    _guard(Layer2Buffer, false);

    const FONT_INDEX_T font = (FONT_INDEX_T)(in.Byte() % 8);
    const U32 fontSize = in.Byte();
    const S32 x = _coordinate(&in), y = _coordinate(&in);
    const S32 w = _coordinate(&in), h = _coordinate(&in);
    const uint8_t align = in.Byte();
    const auto hAlign = (FTF_HORIZONTAL_ALIGNMENT_T)(align & 3);
    const auto vAlign = (FTF_VERTICAL_ALIGNMENT_T)((align >> 2) & 3);
    const S32 spacing = (int8_t)in.Byte();
    const LAYER_T layer = (LAYER_T)(in.Byte() % 4);
    const U32 opacity = in.Byte();
    const U16 colour = in.Word();
    const uint8_t element = in.Byte();
    const U32 id = element == 0xFF ? ELEMENTID_INVALID : ElementGetNewId();
    const std::string text = in.Rest();

    switch (call & 7) {
    case 0:
    case 5: {
        const FTF_TEXTBOX_T box{{x, y, w, h}, (unsigned)font, fontSize, layer, colour, hAlign, vAlign, spacing};
        if (FTFBlitTextBoxExEle(id, &box, text.c_str(), opacity) > FTF_MAX_GLYPHS) abort();
        break;
    }
    case 1:
        outtextxyExEle(id, x, y, text.c_str(), font, fontSize, hAlign, vAlign, spacing, colour, opacity, layer);
        break;
    case 2:
        // The current fonts are the program's own choice: only real ones.
        TextSetFont((FONT_INDEX_T)(font % FONT_INDEX_END), fontSize, hAlign, (U32)spacing);
        outtextxyftExEle(id, x, y, text.c_str(), colour, opacity, layer);
        break;
    case 3:
        NumSetFont((FONT_INDEX_T)(font % FONT_INDEX_END), fontSize, hAlign, (U32)spacing);
        outnumxyftExEle(id, x, y, text.c_str(), colour, opacity, layer);
        break;
    default:
        DrawTextBoxExEle(id, x, y, w, h, (THICKNESS_T)(align >> 4), colour, fontSize, font, colour, text.c_str(), opacity,
                         layer);
        break;
    }
    for (DIRTYRECT_T* d = DirtyRectGetFirst(); d; d = d->pNext) {
        const GFX_RECT_T& r = d->rect;
        if (r.Left < 0 || r.Top < 0 || r.Right >= (S32)gScreenWidth || r.Bottom >= (S32)gScreenHeight || r.Left > r.Right ||
            r.Top > r.Bottom) {
            abort();
        }
    }
    _guard(Layer1Buffer, true);
    _guard(Layer2Buffer, true);
    // The element's rectangle is wiped on a later frame: that too must stay on the screen.
    DirtyRectFlip();
    ElementFlip();
    ElementFillPrevRect(id, colour, layer);
    _guard(Layer1Buffer, true);
    _guard(Layer2Buffer, true);
    return 0;
}
