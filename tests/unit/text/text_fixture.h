#pragma once
// Text tests: a clean display engine with the dash's fonts, and FreeType used straight
// (without the caches) as the measure of where glyphs belong.
#include <ft2build.h>
#include FT_FREETYPE_H

#include "display_fixture.h"
#include "freetype_api.h"
#include "ttfonts.h"

class TextTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetDisplay();
        ASSERT_EQ(FTFInit(gpaFreetypeFontData, 6), 0);
    }
    void TearDown() override
    {
        FTFTestDone();
        ResetDisplay();
    }
};

// Metrics of one glyph as FreeType renders it.
struct GLYPH_REF_T {
    int advance;  // whole pixels
    int left;
    int top;
    int width;
    int rows;
};

// One font at one pixel size, opened from the embedded data.
class FontRef {
public:
    FontRef(U32 font, U32 size)
    {
        EXPECT_EQ(FT_Init_FreeType(&m_library), 0);
        const FTF_FONT_DATA_T& data = gpaFreetypeFontData[font];
        EXPECT_EQ(FT_New_Memory_Face(m_library, data.pFontData, (FT_Long)*data.pFontDataLength, 0, &m_face), 0);
        EXPECT_EQ(FT_Set_Pixel_Sizes(m_face, 0, size), 0);
    }
    ~FontRef() { FT_Done_FreeType(m_library); }
    FontRef(const FontRef&) = delete;
    FontRef& operator=(const FontRef&) = delete;

    FT_Face Face() const { return m_face; }
    int Ascender() const { return (int)(m_face->size->metrics.ascender >> 6); }
    int Descender() const { return (int)((-m_face->size->metrics.descender) >> 6); }
    GLYPH_REF_T Glyph(U32 codePoint) const
    {
        EXPECT_EQ(FT_Load_Char(m_face, codePoint, FT_LOAD_RENDER), 0);
        const FT_GlyphSlot g = m_face->glyph;
        return {(int)((g->advance.x + 32) >> 6), g->bitmap_left, g->bitmap_top, (int)g->bitmap.width,
                (int)g->bitmap.rows};
    }
    int Kerning(U32 a, U32 b) const
    {
        FT_Vector delta{0, 0};
        FT_Get_Kerning(m_face, FT_Get_Char_Index(m_face, a), FT_Get_Char_Index(m_face, b), FT_KERNING_DEFAULT, &delta);
        return (int)(delta.x >> 6);
    }

private:
    FT_Library m_library = nullptr;
    FT_Face m_face = nullptr;
};

// The bounding box of the pixels of the virtual screen that differ from `background`;
// Left > Right when there are none.
inline GFX_RECT_T InkBox(const U16* layer, U16 background = 0)
{
    GFX_RECT_T box = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    for (S32 y = 0; y < 2 * (S32)gScreenHeight; y++) {
        for (S32 x = 0; x < (S32)gScreenWidth; x++) {
            if (layer[(U32)y * gScreenWidth + (U32)x] == background) continue;
            box.Left = std::min(box.Left, x);
            box.Right = std::max(box.Right, x);
            box.Top = std::min(box.Top, y);
            box.Bottom = std::max(box.Bottom, y);
        }
    }
    return box;
}

// The virtual screen of a layer.
inline std::vector<U16> Snapshot(const U16* layer)
{
    return std::vector<U16>(layer, layer + (size_t)gScreenWidth * 2 * gScreenHeight);
}

inline FTF_TEXTBOX_T Box(S32 left, S32 top, S32 right, S32 bottom, U32 font = 0, U32 size = 24,
                         FTF_HORIZONTAL_ALIGNMENT_T h = HORIZONTAL_ALIGNMENT_LEFT,
                         FTF_VERTICAL_ALIGNMENT_T v = VERTICAL_ALIGNMENT_TOP, int spacing = 0, LAYER_T layer = LAYER1,
                         U16 colour = WHITE)
{
    return FTF_TEXTBOX_T{{left, top, right, bottom}, font, size, layer, colour, h, v, spacing};
}
