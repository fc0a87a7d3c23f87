#include "freetype_api.h"

#include <cstdint>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_CACHE_H

#include "alphablend.h"
#include "dash_assert.h"
#include "dirtyrect.h"
#include "elements.h"
#include "lcd_buffer.h"
#include "rectangl.h"
#include "b_fill.h"

namespace {

// Rendered glyphs and character lookups held by the caches, in bytes.
constexpr FT_ULong FTF_CACHE_MAX_BYTES = 0x100000;

// One glyph of a laid-out string.
struct GLYPH_T {
    FT_UInt index;
    S64 pen;
    FTC_SBit sbit;
    FTC_Node node;
};

}  // namespace

static const FTF_FONT_DATA_T* m_paFontData;
static U32 m_NumFonts;
static FT_Library m_FTLibrary;
static FTC_Manager m_FTCManager;
static FTC_CMapCache m_FTCCMapCache;
static FTC_SBitCache m_FTCSBitCache;
static BOOL m_Initialised;

// The current text and number fonts.
struct FONT_CHOICE_T {
    FONT_INDEX_T font;
    U32 size;
    FTF_HORIZONTAL_ALIGNMENT_T align;
    U32 spacing;
};
static constexpr FONT_CHOICE_T TEXT_FONT_DEFAULT = {FONT_INDEX_TTARIAL, 10, HORIZONTAL_ALIGNMENT_LEFT, 0};
static constexpr FONT_CHOICE_T NUM_FONT_DEFAULT = {FONT_INDEX_TTCOURIERBDNUM, 10, HORIZONTAL_ALIGNMENT_LEFT, 3};
static FONT_CHOICE_T m_textFont = TEXT_FONT_DEFAULT;
static FONT_CHOICE_T m_numFont = NUM_FONT_DEFAULT;

// The face id of the caches is the index into the font table.
static FT_Error FTCFaceRequester(FTC_FaceID face_id, FT_Library library, FT_Pointer request_data, FT_Face* aface)
{
    (void)request_data;
    const uintptr_t index = (uintptr_t)face_id;
    if (index >= m_NumFonts || m_paFontData[index].pFontDataLength == nullptr) return FT_Err_Invalid_Argument;
    const FTF_FONT_DATA_T& font = m_paFontData[index];
    return FT_New_Memory_Face(library, font.pFontData, (FT_Long)*font.pFontDataLength, 0, aface);
}

static void _FTFRelease(void)
{
    m_Initialised = FALSE;
    // The manager takes its caches, faces and sizes with it.
    if (m_FTCManager) FTC_Manager_Done(m_FTCManager);
    if (m_FTLibrary) FT_Done_FreeType(m_FTLibrary);
    m_FTCManager = nullptr;
    m_FTCCMapCache = nullptr;
    m_FTCSBitCache = nullptr;
    m_FTLibrary = nullptr;
}

S32 FTFInit(const FTF_FONT_DATA_T* pFontTable, U32 numFonts)
{
    _FTFRelease();
    m_paFontData = pFontTable;
    m_NumFonts = pFontTable ? numFonts : 0;
    FT_Error error = FT_Init_FreeType(&m_FTLibrary);
    if (!error) {
        error = FTC_Manager_New(m_FTLibrary, 0, 0, FTF_CACHE_MAX_BYTES, FTCFaceRequester, nullptr, &m_FTCManager);
    }
    if (!error) error = FTC_CMapCache_New(m_FTCManager, &m_FTCCMapCache);
    if (!error) error = FTC_SBitCache_New(m_FTCManager, &m_FTCSBitCache);
    if (error) return error;
    m_Initialised = TRUE;
    return 0;
}

void FTFTestDone(void)
{
    _FTFRelease();
    m_paFontData = nullptr;
    m_NumFonts = 0;
    m_textFont = TEXT_FONT_DEFAULT;
    m_numFont = NUM_FONT_DEFAULT;
}

U32 FTFTestDecodeUtf8(const char* p, U32* codePoint)
{
    const U8* s = (const U8*)p;
    const U32 first = s[0];
    U32 length, value;
    if (first < 0x80) {
        *codePoint = first;
        return 1;
    } else if (first >= 0xC2 && first <= 0xDF) {
        length = 2;
        value = first & 0x1F;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3;
        value = first & 0x0F;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4;
        value = first & 0x07;
    } else {
        return 0;
    }
    // The terminator is no continuation byte, so this never reads past it.
    for (U32 i = 1; i < length; i++) {
        if ((s[i] & 0xC0) != 0x80) return 0;
        value = (value << 6) | (s[i] & 0x3F);
    }
    *codePoint = value;
    return length;
}

static S32 _sat32(S64 v)
{
    return v > INT32_MAX ? INT32_MAX : v < INT32_MIN ? INT32_MIN : (S32)v;
}

// One row of coverage values into a layer. The front layer's transparent pixels blend
// against the back layer's pixel beneath them.
template <bool FRONT, bool TRANSLUCENT>
static inline void _FTFBlendRow(U16* dst, const U16* back, const U8* cover, S32 n, U16 colour, U32 factor)
{
#pragma GCC unroll 2
    for (S32 i = 0; i < n; i++) {
        U32 alpha = cover[i];
        if (TRANSLUCENT) alpha = (alpha * factor) >> 16;
        if (alpha == 0) continue;
        if (alpha == 255) {
            dst[i] = colour;
            continue;
        }
        U16 under = dst[i];
        if (FRONT && under == ALPHA_COLOR) under = back[i];
        const ALPHABLEND_T blend{&ALPHABLEND_LOOKUP_TABLE[alpha << 6], &ALPHABLEND_LOOKUP_TABLE[(255 - alpha) << 6]};
        dst[i] = alphablend_pixel(blend, colour, under);
    }
}

namespace {

// The visible part of one glyph bitmap and where it goes.
struct GLYPH_CLIP_T {
    S32 column;  // first screen column
    S32 row;     // first screen row
    S32 width;   // columns to draw
    S32 height;  // rows to draw
    S32 skipX;   // bitmap columns left of the first drawn one
    S32 skipY;   // bitmap rows above the first drawn one
};

}  // namespace

// The fonts are outlines rendered to 8-bit coverage; they carry no one-bit strikes.
template <bool FRONT, bool TRANSLUCENT>
static void _FTFDrawGlyph(const FTC_SBitRec& sbit, const GLYPH_CLIP_T& clip, U16 colour, U32 factor)
{
    U16* const layer = FRONT ? Layer2Buffer : Layer1Buffer;
    U32 index = (U32)clip.row * gScreenWidth + (U32)clip.column;
    const U8* src = sbit.buffer + (S64)clip.skipY * sbit.pitch + clip.skipX;
    for (S32 r = 0; r < clip.height; r++, src += sbit.pitch, index += gScreenWidth) {
        _FTFBlendRow<FRONT, TRANSLUCENT>(layer + index, Layer1Buffer + index, src, clip.width, colour, factor);
    }
}

U32 FTFBlitTextBoxExEle(U32 elementId, const FTF_TEXTBOX_T* pTextBox, const char* pText, U32 opacity)
{
    if (opacity == 0 || !m_Initialised || pTextBox == nullptr || pTextBox->FontIndex >= m_NumFonts) return 0;
    const FTF_TEXTBOX_T& box = *pTextBox;

    FTC_ScalerRec scaler;
    scaler.face_id = (FTC_FaceID)(uintptr_t)box.FontIndex;
    scaler.width = 0;
    scaler.height = box.FontHeight;
    scaler.pixel = 1;
    scaler.x_res = 0;
    scaler.y_res = 0;
    FT_Size size;
    // A font whose data FreeType cannot read draws nothing, as an unknown one.
    if (FTC_Manager_LookupSize(m_FTCManager, &scaler, &size) != 0) return 0;
    const FT_Face face = size->face;
    const bool kerning = FT_HAS_KERNING(face);
    const S64 ascender = size->metrics.ascender >> 6;
    const S64 descender = (-size->metrics.descender) >> 6;

    // Lay out: whole pixels, spacing and kerning only between two drawn glyphs.
    GLYPH_T glyphs[FTF_MAX_GLYPHS];
    U32 count = 0;
    S64 pen = 0;
    FT_UInt previous = 0;
    const char* p = pText ? pText : "";
    while (count < FTF_MAX_GLYPHS) {
        U32 codePoint;
        const U32 length = FTFTestDecodeUtf8(p, &codePoint);
        if (length == 0 || codePoint == 0) break;
        p += length;
        const FT_UInt index = FTC_CMapCache_Lookup(m_FTCCMapCache, scaler.face_id, 0, codePoint);
        if (previous != 0) {
            if (kerning && index != 0) {
                FT_Vector delta;
                if (FT_Get_Kerning(face, previous, index, FT_KERNING_DEFAULT, &delta) == 0) pen += delta.x >> 6;
            }
            pen += box.CharSpacingAdjust;
        }
        FTC_SBit sbit;
        FTC_Node node = nullptr;
        if (FTC_SBitCache_LookupScaler(m_FTCSBitCache, &scaler, FT_LOAD_RENDER, index, &sbit, &node) != 0) continue;
        // The cache marks a glyph too large for its small bitmaps (over 255 pixels, or
        // an advance over 127) by width 255 and no buffer: left out like a failed one.
        if (sbit->buffer == nullptr && sbit->width == 255) {
            FTC_Node_Unref(node, m_FTCManager);
            continue;
        }
        glyphs[count++] = GLYPH_T{index, pen, sbit, node};
        previous = index;
        pen += sbit->xadvance;
    }

    // The box's alignment, on the font's metrics rather than the string's ink.
    const FTF_RECT_T& rect = box.Rect;
    const S64 width = pen;
    S64 originX;
    if (box.TextHorizontalAlignment == HORIZONTAL_ALIGNMENT_RIGHT) {
        originX = (S64)rect.Right - width;
    } else if (box.TextHorizontalAlignment == HORIZONTAL_ALIGNMENT_CENTRE) {
        originX = (S64)rect.Left + ((S64)rect.Right - rect.Left) / 2 - width / 2;
    } else {
        originX = rect.Left;
    }
    S64 baseline;
    if (box.TextVerticalAlignment == VERTICAL_ALIGNMENT_TOP) {
        baseline = (S64)rect.Top + ascender;
    } else if (box.TextVerticalAlignment == VERTICAL_ALIGNMENT_CENTRE) {
        baseline = (S64)rect.Bottom - (((S64)rect.Bottom - rect.Top - ascender) >> 1);
    } else {
        baseline = (S64)rect.Bottom - descender;
    }

    const S32 screenW = (S32)gScreenWidth, screenH = (S32)gScreenHeight;
    GFX_RECT_T bounds = {screenW, screenH, 0, 0};
    if (count == 0) {
        DirtyRectAddFromRect(&bounds);
        ElementUpdateFromRect(elementId, &bounds);
        return 0;
    }

    // The clip: the box, the screen's columns, the virtual screen's rows.
    const S64 clipLeft = rect.Left > 0 ? rect.Left : 0;
    const S64 clipRight = rect.Right < screenW - 1 ? rect.Right : screenW - 1;
    const S64 clipTop = rect.Top > 0 ? rect.Top : 0;
    const S64 clipBottom = rect.Bottom < 2 * screenH - 1 ? rect.Bottom : 2 * screenH - 1;
    const bool front = box.Layer != LAYER1;
    const bool translucent = opacity < 100;
    const U32 factor = translucent ? (opacity << 16) / 100 : 0;

    for (U32 g = 0; g < count; g++) {
        const FTC_SBitRec& sbit = *glyphs[g].sbit;
        const S64 x0 = originX + glyphs[g].pen + sbit.left;
        const S64 y0 = baseline - sbit.top;
        const S64 x1 = x0 + sbit.width - 1, y1 = y0 + sbit.height - 1;
        if (sbit.width > 0 && sbit.height > 0) {
            bounds.Left = CLAMPMAX(bounds.Left, _sat32(x0));
            bounds.Top = CLAMPMAX(bounds.Top, _sat32(y0));
            bounds.Right = CLAMPMIN(bounds.Right, _sat32(x1));
            bounds.Bottom = CLAMPMIN(bounds.Bottom, _sat32(y1));
        }
        const S64 c0 = CLAMPMIN(x0, clipLeft), c1 = CLAMPMAX(x1, clipRight);
        const S64 r0 = CLAMPMIN(y0, clipTop), r1 = CLAMPMAX(y1, clipBottom);
        if (sbit.buffer != nullptr && sbit.format == FT_PIXEL_MODE_GRAY && sbit.pitch > 0 && c0 <= c1 && r0 <= r1) {
            const GLYPH_CLIP_T clip{(S32)c0, (S32)r0, (S32)(c1 - c0 + 1), (S32)(r1 - r0 + 1), (S32)(c0 - x0),
                                    (S32)(r0 - y0)};
            if (front) {
                if (translucent) {
                    _FTFDrawGlyph<true, true>(sbit, clip, box.TextColour, factor);
                } else {
                    _FTFDrawGlyph<true, false>(sbit, clip, box.TextColour, factor);
                }
            } else {
                if (translucent) {
                    _FTFDrawGlyph<false, true>(sbit, clip, box.TextColour, factor);
                } else {
                    _FTFDrawGlyph<false, false>(sbit, clip, box.TextColour, factor);
                }
            }
        }
        FTC_Node_Unref(glyphs[g].node, m_FTCManager);
    }

    DirtyRectAddFromRect(&bounds);
    ElementUpdateFromRect(elementId, &bounds);
    return count;
}

void TextSetFont(FONT_INDEX_T font, U32 size, FTF_HORIZONTAL_ALIGNMENT_T align, U32 spacing)
{
    DASH_ASSERT((U32)font < (U32)FONT_INDEX_END, "vSetTextFontIndex: Invalid Font Index!");
    m_textFont = {font, size, align, spacing};
}

void NumSetFont(FONT_INDEX_T font, U32 size, FTF_HORIZONTAL_ALIGNMENT_T align, U32 spacing)
{
    DASH_ASSERT((U32)font < (U32)FONT_INDEX_END, "vSetNumFontIndex: Invalid Font Index!");
    m_numFont = {font, size, align, spacing};
}

// The box of a text anchored at (x, y), which is clamped to the virtual screen first.
// A centred box is the widest one centred on the anchor that reaches both screen
// edges, or with `narrow` the narrowest one that stays on the screen.
static void _FTFTextAt(U32 elementId, S32 x, S32 y, const char* text, FONT_INDEX_T fontIndex, U32 font_size,
                       FTF_HORIZONTAL_ALIGNMENT_T hAlign, FTF_VERTICAL_ALIGNMENT_T vAlign, S32 spacing, U16 colour,
                       U32 opacity, LAYER_T layer, bool narrow)
{
    const S32 W = (S32)gScreenWidth, H = (S32)gScreenHeight;
    x = gfx_clamp(x, 0, W - 1);
    y = gfx_clamp(y, 0, 2 * H - 1);
    FTF_TEXTBOX_T box;
    if (hAlign == HORIZONTAL_ALIGNMENT_RIGHT) {
        box.Rect.Left = 0;
        box.Rect.Right = x;
    } else if (hAlign == HORIZONTAL_ALIGNMENT_CENTRE) {
        const bool leftHalf = x <= (W - 1) / 2;
        if (leftHalf != narrow) {
            box.Rect.Left = 2 * x + 1 - W;
            box.Rect.Right = W - 1;
        } else {
            box.Rect.Left = 0;
            box.Rect.Right = 2 * x;
        }
    } else {
        box.Rect.Left = x;
        box.Rect.Right = W - 1;
    }
    if (vAlign == VERTICAL_ALIGNMENT_TOP) {
        // Text anchored below the screen may run to the bottom of the virtual screen.
        box.Rect.Top = y;
        box.Rect.Bottom = y > H - 1 ? 2 * H - 1 : H - 1;
    } else if (vAlign == VERTICAL_ALIGNMENT_CENTRE) {
        if (y <= (2 * H - 1) / 2) {
            box.Rect.Top = 2 * y + 1 - 2 * H;
            box.Rect.Bottom = 2 * H - 1;
        } else {
            box.Rect.Top = 0;
            box.Rect.Bottom = 2 * y;
        }
    } else {
        box.Rect.Top = 0;
        box.Rect.Bottom = y;
    }
    box.FontIndex = (unsigned int)fontIndex;
    box.FontHeight = font_size;
    box.Layer = layer;
    box.TextColour = colour;
    box.TextHorizontalAlignment = hAlign;
    box.TextVerticalAlignment = vAlign;
    box.CharSpacingAdjust = spacing;
    FTFBlitTextBoxExEle(elementId, &box, text, opacity);
}

void outtextxyExEle(U32 elementId, S32 x, S32 y, const char* text, FONT_INDEX_T fontIndex, U32 font_size,
                    FTF_HORIZONTAL_ALIGNMENT_T hAlign, FTF_VERTICAL_ALIGNMENT_T vAlign, S32 spacing, U16 colour,
                    U32 opacity, LAYER_T layer)
{
    _FTFTextAt(elementId, x, y, text, fontIndex, font_size, hAlign, vAlign, spacing, colour, opacity, layer, false);
}

void outtextxyftExEle(U32 elementId, S32 x, S32 y, const char* text, U16 colour, U32 opacity, LAYER_T layer)
{
    _FTFTextAt(elementId, x, y, text, m_textFont.font, m_textFont.size, m_textFont.align, VERTICAL_ALIGNMENT_TOP,
               (S32)m_textFont.spacing, colour, opacity, layer, false);
}

void outnumxyftExEle(U32 elementId, S32 x, S32 y, const char* text, U16 colour, U32 opacity, LAYER_T layer)
{
    _FTFTextAt(elementId, x, y, text, m_numFont.font, m_numFont.size, m_numFont.align, VERTICAL_ALIGNMENT_TOP,
               (S32)m_numFont.spacing, colour, opacity, layer, true);
}

void DrawTextBoxExEle(U32 elementId, S32 left, S32 top, S32 width, S32 height, THICKNESS_T border_thickness,
                      U16 border_colour, U32 font_size, FONT_INDEX_T font_type, U16 font_colour, const char* text,
                      U32 opacity, LAYER_T layer)
{
    FTF_TEXTBOX_T box;
    box.Rect.Left = left;
    box.Rect.Top = top;
    box.Rect.Right = gfx_add(left, (S64)width - 1);
    box.Rect.Bottom = gfx_add(top, (S64)height - 1);
    box.FontIndex = (unsigned int)font_type;
    box.FontHeight = font_size;
    box.Layer = layer;
    box.TextColour = font_colour;
    box.TextHorizontalAlignment = m_textFont.align;
    box.TextVerticalAlignment = VERTICAL_ALIGNMENT_TOP;
    box.CharSpacingAdjust = 0;
    blockclearExEle(elementId, box.Rect.Left, box.Rect.Top, box.Rect.Right, box.Rect.Bottom, ALPHA_COLOR, layer);
    if (border_thickness != 0) {
        draw_windowEle(elementId, left, top, width, height, border_thickness, border_colour, layer);
    }
    FTFBlitTextBoxExEle(elementId, &box, text, opacity);
}
