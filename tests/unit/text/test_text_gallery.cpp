// The six fonts at sizes 60, 24 and 10 on one large-panel page, composed as the dash
// composes it. Set MOTORDASH_TEXT_PNG to a file name to look at it.
#include <cstdlib>
#include <cstring>

#include "lcd_blan.h"
#include "line.h"
#include "b_fill.h"
#include "png_io.h"
#include "text_fixture.h"

namespace {

struct SAMPLE_T {
    const char* number;
    const char* words;
    const char* small;
    const char* label;
};

constexpr SAMPLE_T SAMPLES[6] = {
    {"7500", "Oil Press 4.2 bar  AVATAR To", "Coolant 92\xC2\xB0" "C  Fuel 48.5 L  Boost 1.85 bar  \xC3\x89tat OK",
     "0  proportional sans-serif, kerning"},
    {"7500", "Oil Press 4.2 bar  AVATAR To", "Coolant 92\xC2\xB0" "C  Fuel 48.5 L  Boost 1.85 bar", "1  monospaced"},
    {"-12.5", "12:34.56  -0.8  100", "0123456789 -.: 12:34.5 -0.8", "2  monospaced bold, numbers only"},
    {"7500", "Oil Press 4.2 bar  AVATAR To", "Coolant 92\xC2\xB0" "C  Fuel 48.5 L  Boost 1.85 bar",
     "3  square display face"},
    {"7500", "Oil Press 4.2 bar  AVATAR To", "Coolant 92\xC2\xB0" "C  Fuel 48.5 L  Boost 1.85 bar",
     "4  casual hand-lettered"},
    {"7500", "Oil Press 4.2 bar  AVATAR To", "Coolant 92\xC2\xB0" "C  Fuel 48.5 L  Boost 1.85 bar",
     "5  extended bold, kerning"},
};

U32 Glyphs(const char* s)
{
    U32 n = 0;
    for (U32 cp; *s; n++) s += FTFTestDecodeUtf8(s, &cp);
    return n;
}

TEST_F(TextTest, EveryFontAtThreeSizesOnOnePage)
{
    ResetDisplay(800, 480);
    vLcdBlankerEx(MAKERGB565(14, 18, 26), ALPHA_COLOR);
    for (S32 row = 0; row < 6; row++) {
        const S32 y0 = 80 * row;
        if (row % 2) blockfillEx(0, y0, 799, y0 + 79, MAKERGB565(24, 30, 42), 100, LAYER1);
        lineEx(280, y0 + 6, 280, y0 + 73, NORMAL, DOTTED, DARK_GRAY, 100, LAYER1);
        const SAMPLE_T& s = SAMPLES[row];
        const FTF_TEXTBOX_T number = Box(12, y0 + 2, 275, y0 + 79, (U32)row, 60, HORIZONTAL_ALIGNMENT_LEFT,
                                         VERTICAL_ALIGNMENT_TOP, 0, LAYER2, YELLOW);
        const FTF_TEXTBOX_T words = Box(292, y0 + 8, 799, y0 + 79, (U32)row, 24, HORIZONTAL_ALIGNMENT_LEFT,
                                        VERTICAL_ALIGNMENT_TOP, 0, LAYER2, WHITE_TEXT);
        const FTF_TEXTBOX_T small = Box(292, y0 + 50, 799, y0 + 79, (U32)row, 10, HORIZONTAL_ALIGNMENT_LEFT,
                                        VERTICAL_ALIGNMENT_TOP, 0, LAYER2, LIGHT_GRAY);
        EXPECT_EQ(FTFBlitTextBox(&number, s.number), Glyphs(s.number)) << row;
        EXPECT_EQ(FTFBlitTextBox(&words, s.words), Glyphs(s.words)) << row;
        EXPECT_EQ(FTFBlitTextBox(&small, s.small), Glyphs(s.small)) << row;
        outtextxyEx(790, y0 + 60, s.label, FONT_INDEX_TTARIAL, 10, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP, 0,
                    MAKERGB565(120, 170, 255), 100, LAYER2);
    }
    std::vector<U16> page(800 * 480);
    LayerMergerTestCompose(page.data());
    // Every band holds yellow digits.
    for (S32 row = 0; row < 6; row++) {
        int yellow = 0;
        for (S32 y = 80 * row; y < 80 * row + 80; y++) {
            for (S32 x = 0; x < 280; x++) yellow += page[(U32)y * 800 + (U32)x] == YELLOW;
        }
        EXPECT_GT(yellow, 500) << row;
    }
    if (const char* png = getenv("MOTORDASH_TEXT_PNG")) {
        EXPECT_EQ(png_write_rgb565(png, page.data(), 800, 480, 800), "");
    }
}

}  // namespace
