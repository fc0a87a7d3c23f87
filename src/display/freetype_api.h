#pragma once
// TrueType text: one UTF-8 string into one text box through FreeType's caches, and the
// convenience calls that make the box from an anchor point and hold the current text
// and number fonts.
#include "gfx_types.h"

enum FTF_RENDER_TYPE_T : S32 { FTF_RENDER_TYPE_ALPHABLEND = 0 };

// One font of the font table: a TrueType file in constant memory.
struct FTF_FONT_DATA_T {
    const unsigned char* pFontData;
    const unsigned int* pFontDataLength;
    FTF_RENDER_TYPE_T RenderMode;
};

// The six fonts of the dash, by their place in the font table.
enum FONT_INDEX_T : S32 {
    FONT_INDEX_TTARIAL = 0,         // proportional sans-serif with kerning: nearly all text
    FONT_INDEX_TTCOURIER = 1,       // monospaced
    FONT_INDEX_TTCOURIERBDNUM = 2,  // monospaced bold, numbers only: " -.0123456789:" and soft hyphen
    FONT_INDEX_TTFUTURE = 3,        // square display face
    FONT_INDEX_TTCOMIC = 4,         // casual hand-lettered face
    FONT_INDEX_TTMICRO = 5,         // extended bold display face with kerning
    FONT_INDEX_END = 6
};

// Any value but centre and right lays out from the left.
enum FTF_HORIZONTAL_ALIGNMENT_T : S32 {
    HORIZONTAL_ALIGNMENT_LEFT = 0,
    HORIZONTAL_ALIGNMENT_CENTRE = 1,
    HORIZONTAL_ALIGNMENT_RIGHT = 2
};
enum FTF_VERTICAL_ALIGNMENT_T : S32 {
    VERTICAL_ALIGNMENT_TOP = 0,
    VERTICAL_ALIGNMENT_CENTRE = 1,
    VERTICAL_ALIGNMENT_BOTTOM = 2
};
constexpr FTF_HORIZONTAL_ALIGNMENT_T LEFT_TXT = HORIZONTAL_ALIGNMENT_LEFT;
constexpr FTF_HORIZONTAL_ALIGNMENT_T CENTER_TXT = HORIZONTAL_ALIGNMENT_CENTRE;
constexpr FTF_HORIZONTAL_ALIGNMENT_T RIGHT_TXT = HORIZONTAL_ALIGNMENT_RIGHT;

// Inclusive bounds, screen coordinates.
struct FTF_RECT_T {
    int Left;
    int Top;
    int Right;
    int Bottom;
};

struct FTF_TEXTBOX_T {
    FTF_RECT_T Rect;  // the box, and the clip
    unsigned int FontIndex;
    unsigned int FontHeight;  // pixel size
    LAYER_T Layer;
    U16 TextColour;
    FTF_HORIZONTAL_ALIGNMENT_T TextHorizontalAlignment;
    FTF_VERTICAL_ALIGNMENT_T TextVerticalAlignment;
    int CharSpacingAdjust;  // pixels between glyphs, may be negative
};

// Pixel sizes by name.
constexpr U32 FONT5 = 8;
constexpr U32 FONT7 = 10;
constexpr U32 FONT8 = 12;
constexpr U32 FONT10 = 14;
constexpr U32 FONT12 = 16;
constexpr U32 FONT14 = 20;
constexpr U32 NUM7 = 10;
constexpr U32 NUM12 = 14;
constexpr U32 NUM14 = 16;
constexpr U32 NUM19 = 22;
constexpr U32 NUM32 = 32;

// Glyphs one string may hold; further ones are not drawn.
constexpr U32 FTF_MAX_GLYPHS = 200;

// FreeType and its caches for this font table. Returns FreeType's error code, 0 on
// success; after a failure every blit draws nothing. A second call starts afresh.
S32 FTFInit(const FTF_FONT_DATA_T* pFontTable, U32 numFonts);
// Draws the text into the box; returns the number of glyphs drawn.
U32 FTFBlitTextBoxExEle(U32 elementId, const FTF_TEXTBOX_T* pTextBox, const char* pText, U32 opacity);

inline U32 FTFBlitTextBoxEx(const FTF_TEXTBOX_T* pTextBox, const char* pText, U32 opacity)
{
    return FTFBlitTextBoxExEle(ELEMENTID_INVALID, pTextBox, pText, opacity);
}
inline U32 FTFBlitTextBoxEle(U32 elementId, const FTF_TEXTBOX_T* pTextBox, const char* pText)
{
    return FTFBlitTextBoxExEle(elementId, pTextBox, pText, 100);
}
inline U32 FTFBlitTextBox(const FTF_TEXTBOX_T* pTextBox, const char* pText)
{
    return FTFBlitTextBoxExEle(ELEMENTID_INVALID, pTextBox, pText, 100);
}

// The current text and number fonts, used by outtextxyftExEle and outnumxyftExEle.
void TextSetFont(FONT_INDEX_T font, U32 size, FTF_HORIZONTAL_ALIGNMENT_T align, U32 spacing);
void NumSetFont(FONT_INDEX_T font, U32 size, FTF_HORIZONTAL_ALIGNMENT_T align, U32 spacing);

// Text at an anchor point: the box reaches from the anchor to the far screen edge, or
// is centred on it, so text near an edge is cut by the screen and not by the box.
void outtextxyExEle(U32 elementId, S32 x, S32 y, const char* text, FONT_INDEX_T fontIndex, U32 font_size,
                    FTF_HORIZONTAL_ALIGNMENT_T hAlign, FTF_VERTICAL_ALIGNMENT_T vAlign, S32 spacing, U16 colour,
                    U32 opacity, LAYER_T layer);
// In the current text font, top aligned.
void outtextxyftExEle(U32 elementId, S32 x, S32 y, const char* text, U16 colour, U32 opacity, LAYER_T layer);
// In the current number font, top aligned; centred numbers are cut on both sides alike.
void outnumxyftExEle(U32 elementId, S32 x, S32 y, const char* text, U16 colour, U32 opacity, LAYER_T layer);
// A cleared box, with a border when border_thickness is not 0, and the text in it.
void DrawTextBoxExEle(U32 elementId, S32 left, S32 top, S32 width, S32 height, THICKNESS_T border_thickness,
                      U16 border_colour, U32 font_size, FONT_INDEX_T font_type, U16 font_colour, const char* text,
                      U32 opacity, LAYER_T layer);

inline void outtextxyEx(S32 x, S32 y, const char* text, FONT_INDEX_T fontIndex, U32 font_size,
                        FTF_HORIZONTAL_ALIGNMENT_T hAlign, FTF_VERTICAL_ALIGNMENT_T vAlign, S32 spacing, U16 colour,
                        U32 opacity, LAYER_T layer)
{
    outtextxyExEle(ELEMENTID_INVALID, x, y, text, fontIndex, font_size, hAlign, vAlign, spacing, colour, opacity,
                   layer);
}
inline void outtextxyftEx(S32 x, S32 y, const char* text, U16 colour, U32 opacity, LAYER_T layer)
{
    outtextxyftExEle(ELEMENTID_INVALID, x, y, text, colour, opacity, layer);
}
inline void outnumxyftEx(S32 x, S32 y, const char* text, U16 colour, U32 opacity, LAYER_T layer)
{
    outnumxyftExEle(ELEMENTID_INVALID, x, y, text, colour, opacity, layer);
}
inline void DrawTextBoxEx(S32 left, S32 top, S32 width, S32 height, THICKNESS_T border_thickness, U16 border_colour,
                          U32 font_size, FONT_INDEX_T font_type, U16 font_colour, const char* text, U32 opacity,
                          LAYER_T layer)
{
    DrawTextBoxExEle(ELEMENTID_INVALID, left, top, width, height, border_thickness, border_colour, font_size,
                     font_type, font_colour, text, opacity, layer);
}

// Test hooks: for tests and benchmarks only, never called by the dash.
// Decodes one UTF-8 sequence at p into *codePoint; returns its length in bytes, or 0
// when the sequence is invalid. The terminator decodes as code point 0, length 1.
U32 FTFTestDecodeUtf8(const char* p, U32* codePoint);
// Back to the state at program load: caches and FreeType released, not initialised,
// text and number fonts at their first values.
void FTFTestDone(void);
