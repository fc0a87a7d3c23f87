// The font table and what FreeType's caches can hold of it.
#include <malloc.h>

#include <cstring>
#include <string>

#include "text_fixture.h"

#include FT_FONT_FORMATS_H

namespace {

// Printable ASCII, the degree sign and a few accented capitals: what screens may write.
std::string Repertoire(U32 font)
{
    std::string s;
    if (font == FONT_INDEX_TTCOURIERBDNUM) return " -.0123456789:\xC2\xAD";
    for (char c = ' '; c <= '~'; c++) s += c;
    return s + "\xC2\xB0\xC3\x89\xC3\x85\xC3\x96";
}

// Every size a screen asks for, and the largest.
constexpr U32 SIZES_IN_USE[] = {8, 10, 11, 12, 14, 15, 16, 17, 18, 20, 22, 24, 30, 32, 40, 60, 110};

TEST(FontTable, SixTrueTypeFacesWithKerningWhereTheRoleNeedsIt)
{
    ASSERT_EQ(gFreetypeNumFonts, 6u);
    for (U32 font = 0; font < 6; font++) {
        EXPECT_EQ(gpaFreetypeFontData[font].RenderMode, FTF_RENDER_TYPE_ALPHABLEND);
        FontRef ref(font, 24);
        EXPECT_STREQ(FT_Get_Font_Format(ref.Face()), "TrueType") << font;
        EXPECT_TRUE(FT_IS_SCALABLE(ref.Face())) << font;
        EXPECT_EQ(ref.Face()->num_fixed_sizes, 0) << "no embedded strikes in font " << font;
        const bool kerning = FT_HAS_KERNING(ref.Face());
        EXPECT_EQ(kerning, font == FONT_INDEX_TTARIAL || font == FONT_INDEX_TTMICRO) << font;
    }
    FontRef mono(FONT_INDEX_TTCOURIER, 24);
    EXPECT_TRUE(FT_IS_FIXED_WIDTH(mono.Face()));
    FontRef numbers(FONT_INDEX_TTCOURIERBDNUM, 24);
    EXPECT_TRUE(FT_IS_FIXED_WIDTH(numbers.Face()));
    EXPECT_TRUE(numbers.Face()->style_flags & FT_STYLE_FLAG_BOLD);
}

TEST(FontTable, TheNumbersFaceCoversNumbersOnly)
{
    FontRef ref(FONT_INDEX_TTCOURIERBDNUM, 24);
    const std::string has = " -.0123456789:";
    for (U32 c = 0x20; c < 0x7F; c++) {
        EXPECT_EQ(FT_Get_Char_Index(ref.Face(), c) != 0, has.find((char)c) != std::string::npos) << (char)c;
    }
    EXPECT_NE(FT_Get_Char_Index(ref.Face(), 0xAD), 0u) << "soft hyphen";
    // Monospaced: the digits, point and colon line up in columns.
    const int cell = ref.Glyph('0').advance;
    for (char c : has) EXPECT_EQ(ref.Glyph((U8)c).advance, cell) << c;
}

TEST_F(TextTest, EverySizeInUseFitsTheGlyphCacheInEveryFont)
{
    // The cache keeps glyphs of at most 255 rows and columns whose advance, left and
    // top fit a signed byte; anything larger would be left out of the string.
    for (U32 font = 0; font < 6; font++) {
        const std::string text = Repertoire(font);
        U32 glyphs = 0;
        for (U32 i = 0; i < text.size(); glyphs++) {
            U32 cp;
            i += FTFTestDecodeUtf8(text.c_str() + i, &cp);
        }
        for (U32 size : SIZES_IN_USE) {
            ResetDisplay();
            const FTF_TEXTBOX_T box = Box(0, 0, 319, 479, font, size);
            EXPECT_EQ(FTFBlitTextBox(&box, text.c_str()), glyphs) << "font " << font << " size " << size;
        }
    }
}

TEST_F(TextTest, AGlyphTooLargeForTheCacheIsLeftOutAndThePenStays)
{
    // At 400 pixels a W is far beyond the cache's limits, a full stop is not.
    FontRef ref(0, 400);
    const GLYPH_REF_T stop = ref.Glyph('.');
    ASSERT_LT(stop.advance, 128);
    const FTF_TEXTBOX_T box = Box(0, 0, 300, 479, 0, 400, HORIZONTAL_ALIGNMENT_RIGHT);
    EXPECT_EQ(FTFBlitTextBox(&box, "W.W"), 1u);
    const GFX_RECT_T ink = InkBox(Layer1Buffer);
    EXPECT_EQ(ink.Left, 300 - stop.advance + stop.left);
    EXPECT_EQ(ink.Right - ink.Left + 1, stop.width);
    ResetDisplay();
    EXPECT_EQ(FTFBlitTextBox(&box, "WWW"), 0u);
    EXPECT_EQ(InkBox(Layer1Buffer).Left, INT32_MAX);
    EXPECT_TRUE(CurrentDirty().empty());
}

TEST_F(TextTest, EveryCacheNodeIsReleasedSoTheCachesStayWithinTheirBound)
{
    // Every glyph of every size from 8 to 110 of the main font: some 15 MB of bitmaps.
    // Held nodes could not be flushed and the heap would grow by all of it.
    const std::string text = Repertoire(FONT_INDEX_TTARIAL);
    const FTF_TEXTBOX_T probe = Box(0, 0, 319, 479, 0, 8);
    FTFBlitTextBox(&probe, text.c_str());
    const size_t before = mallinfo2().uordblks;
    if (before == 0) GTEST_SKIP() << "no heap statistics here";
    for (U32 size = 8; size <= 110; size++) {
        const FTF_TEXTBOX_T box = Box(0, 0, 319, 479, 0, size);
        FTFBlitTextBox(&box, text.c_str());
    }
    const size_t after = mallinfo2().uordblks;
    EXPECT_LT(after, before + 4 * 1024 * 1024) << "heap grew by " << (after - before);
}

TEST_F(TextTest, FacesComeAndGoInTheCacheWithoutChangingThePicture)
{
    // Six faces share a manager that keeps only a few open at once.
    const auto drawAll = [] {
        ResetDisplay();
        for (U32 font = 0; font < 6; font++) {
            const FTF_TEXTBOX_T box = Box(5, 5 + 70 * (S32)font, 319, 479, font, 30, HORIZONTAL_ALIGNMENT_LEFT,
                                          VERTICAL_ALIGNMENT_TOP, 1);
            EXPECT_EQ(FTFBlitTextBox(&box, "To 12.5"), 7u);
        }
        return Snapshot(Layer1Buffer);
    };
    const std::vector<U16> first = drawAll();
    for (int round = 0; round < 3; round++) EXPECT_TRUE(drawAll() == first) << round;
}

TEST_F(TextTest, FontDataFreeTypeCannotReadDrawsNothing)
{
    static const unsigned char garbage[64] = {0x00, 0x01, 0x00, 0x00, 0x00, 0x09};
    static const unsigned int garbageSize = sizeof(garbage);
    const FTF_FONT_DATA_T table[3] = {
        {garbage, &garbageSize, FTF_RENDER_TYPE_ALPHABLEND},
        {TTFONT_ARIAL, nullptr, FTF_RENDER_TYPE_ALPHABLEND},
        {nullptr, &garbageSize, FTF_RENDER_TYPE_ALPHABLEND},
    };
    ASSERT_EQ(FTFInit(table, 3), 0);
    for (U32 font = 0; font < 4; font++) {
        const FTF_TEXTBOX_T box = Box(0, 0, 319, 479, font, 20);
        EXPECT_EQ(FTFBlitTextBoxEle(3, &box, "Text"), 0u) << font;
    }
    EXPECT_TRUE(CurrentDirty().empty());
    ASSERT_EQ(FTFInit(nullptr, 6), 0);
    const FTF_TEXTBOX_T box = Box(0, 0, 319, 479, 0, 20);
    EXPECT_EQ(FTFBlitTextBox(&box, "Text"), 0u);
    // A new table: text again.
    ASSERT_EQ(FTFInit(gpaFreetypeFontData, 6), 0);
    EXPECT_EQ(FTFBlitTextBox(&box, "Text"), 4u);
}

}  // namespace
