// Where text lands: baseline, alignment, spacing and kerning, clipping, the glyph list,
// the UTF-8 decoder.
#include <climits>
#include <cstring>
#include <string>

#include "text_fixture.h"

namespace {

TEST_F(TextTest, BaselineFollowsTheFontMetricsForEachVerticalAlignment)
{
    FontRef ref(0, 24);
    const GLYPH_REF_T h = ref.Glyph('H');
    const int A = ref.Ascender(), D = ref.Descender();
    ASSERT_GT(A, 15);
    ASSERT_GT(D, 3);
    const struct {
        FTF_VERTICAL_ALIGNMENT_T align;
        int baseline;
    } cases[] = {
        {VERTICAL_ALIGNMENT_TOP, 50 + A},
        {VERTICAL_ALIGNMENT_BOTTOM, 150 - D},
        {VERTICAL_ALIGNMENT_CENTRE, 150 - ((150 - 50 - A) >> 1)},
    };
    for (const auto& c : cases) {
        ResetDisplay();
        const FTF_TEXTBOX_T box = Box(10, 50, 300, 150, 0, 24, HORIZONTAL_ALIGNMENT_LEFT, c.align);
        EXPECT_EQ(FTFBlitTextBox(&box, "H"), 1u);
        const GFX_RECT_T ink = InkBox(Layer1Buffer);
        EXPECT_EQ(ink.Left, 10 + h.left) << c.align;
        EXPECT_EQ(ink.Top, c.baseline - h.top) << c.align;
        EXPECT_EQ(ink.Bottom, c.baseline - h.top + h.rows - 1) << c.align;
        // The bounding rectangle of the glyph boxes goes to both lists.
        ASSERT_EQ(CurrentDirty().size(), 1u);
        EXPECT_EQ(CurrentDirty()[0], ink);
    }
    // A box lower than the ascent, centred: the half of a negative odd room rounds down.
    ResetDisplay();
    const FTF_TEXTBOX_T low = Box(10, 50, 300, 61, 0, 24, HORIZONTAL_ALIGNMENT_LEFT, VERTICAL_ALIGNMENT_CENTRE);
    FTFBlitTextBox(&low, "H");
    ASSERT_EQ(CurrentDirty().size(), 1u);
    EXPECT_EQ(CurrentDirty()[0].Top, 61 - ((61 - 50 - A) >> 1) - h.top) << "glyph box, not the cut ink";
    EXPECT_EQ(InkBox(Layer1Buffer).Bottom, 61);
}

TEST_F(TextTest, SpacingAndKerningGoBetweenTwoGlyphsOnly)
{
    // Right aligned at column 200, the string starts at 200 - width.
    const auto start = [](const char* text, U32 font, int spacing) {
        ResetDisplay();
        const FTF_TEXTBOX_T box = Box(0, 20, 200, 120, font, 24, HORIZONTAL_ALIGNMENT_RIGHT, VERTICAL_ALIGNMENT_TOP,
                                      spacing);
        EXPECT_EQ(FTFBlitTextBox(&box, text), (U32)strlen(text)) << text;
        return InkBox(Layer1Buffer).Left;
    };
    for (U32 font : {0u, 5u}) {
        FontRef ref(font, 24);
        const int kern = ref.Kerning('T', 'o');
        ASSERT_LT(kern, 0) << "font " << font << " kerns T and o";
        const GLYPH_REF_T t = ref.Glyph('T'), o = ref.Glyph('o');
        EXPECT_EQ(start("To", font, 0), 200 - (t.advance + kern + o.advance) + t.left) << font;
        EXPECT_EQ(start("To", font, 3), 200 - (t.advance + kern + 3 + o.advance) + t.left) << font;
        EXPECT_EQ(start("To", font, -4), 200 - (t.advance + kern - 4 + o.advance) + t.left) << font;
        EXPECT_EQ(start("T", font, 3), 200 - t.advance + t.left) << "nothing after the last glyph";
        ResetDisplay();
        const FTF_TEXTBOX_T left =
            Box(20, 20, 300, 120, font, 24, HORIZONTAL_ALIGNMENT_LEFT, VERTICAL_ALIGNMENT_TOP, 3);
        FTFBlitTextBox(&left, "To");
        EXPECT_EQ(InkBox(Layer1Buffer).Left, 20 + t.left) << "nothing before the first";
    }
    // The monospaced face has no kerning table: two cells exactly.
    FontRef mono(1, 24);
    const GLYPH_REF_T t = mono.Glyph('T');
    EXPECT_EQ(start("To", 1, 0), 200 - 2 * t.advance + t.left);
}

TEST_F(TextTest, AMissingCharacterDrawsGlyphZeroAndNoSpacingFollowsIt)
{
    // The numbers face has no letters.
    FontRef ref(2, 24);
    const GLYPH_REF_T one = ref.Glyph('1'), none = ref.Glyph('A');
    ASSERT_GT(none.width, 0) << "glyph 0 is a visible box";
    const auto start = [](const char* text) {
        ResetDisplay();
        const FTF_TEXTBOX_T box = Box(0, 20, 200, 120, 2, 24, HORIZONTAL_ALIGNMENT_RIGHT, VERTICAL_ALIGNMENT_TOP, 3);
        EXPECT_EQ(FTFBlitTextBox(&box, text), 2u) << text;
        return InkBox(Layer1Buffer).Left;
    };
    EXPECT_EQ(start("11"), 200 - (2 * one.advance + 3) + one.left);
    EXPECT_EQ(start("1A"), 200 - (one.advance + 3 + none.advance) + one.left) << "spacing before glyph 0";
    EXPECT_EQ(start("A1"), 200 - (none.advance + one.advance) + none.left) << "none after it";
}

TEST_F(TextTest, GlyphsPastTheBoxAreCutPixelByPixel)
{
    // Each edge of the box in turn moves into the text while the text stays put: the
    // left and top edges with the text anchored bottom right, the others top left.
    const char* text = "WMWMWMW";
    for (int edge = 0; edge < 4; edge++) {
        FTF_TEXTBOX_T box = edge < 2 ? Box(0, 0, 300, 150, 0, 40, HORIZONTAL_ALIGNMENT_RIGHT, VERTICAL_ALIGNMENT_BOTTOM)
                                     : Box(10, 20, 319, 479, 0, 40);
        ResetDisplay();
        FTFBlitTextBox(&box, text);
        const std::vector<U16> full = Snapshot(Layer1Buffer);
        const GFX_RECT_T ink = InkBox(Layer1Buffer);
        ASSERT_GT(ink.Left, 5);
        ASSERT_LT(ink.Right, 310);
        if (edge == 0) box.Rect.Left = ink.Left + 20;
        if (edge == 1) box.Rect.Top = ink.Top + 9;
        if (edge == 2) box.Rect.Right = ink.Left + 101;
        if (edge == 3) box.Rect.Bottom = ink.Bottom - 7;
        ResetDisplay();
        FTFBlitTextBox(&box, text);
        int wrong = 0;
        for (S32 y = 0; y < 480; y++) {
            for (S32 x = 0; x < 320; x++) {
                const bool inside =
                    x >= box.Rect.Left && x <= box.Rect.Right && y >= box.Rect.Top && y <= box.Rect.Bottom;
                wrong += L1(x, y) != (inside ? full[(U32)y * 320 + (U32)x] : 0);
            }
        }
        EXPECT_EQ(wrong, 0) << "edge " << edge;
        // The dirty rectangle is still that of the whole glyph boxes.
        ASSERT_EQ(CurrentDirty().size(), 1u);
        EXPECT_EQ(CurrentDirty()[0], ink) << "edge " << edge;
    }
}

TEST_F(TextTest, GlyphsAboveTheFirstRowAreCutThere)
{
    FontRef ref(0, 40);
    const GLYPH_REF_T h = ref.Glyph('H');
    const FTF_TEXTBOX_T box = Box(10, -20, 319, 479, 0, 40);
    EXPECT_EQ(FTFBlitTextBox(&box, "H"), 1u);
    const GFX_RECT_T ink = InkBox(Layer1Buffer);
    EXPECT_EQ(ink.Top, 0);
    EXPECT_EQ(ink.Bottom, -20 + ref.Ascender() - h.top + h.rows - 1);
    ASSERT_EQ(CurrentDirty().size(), 1u);
    EXPECT_EQ(CurrentDirty()[0].Top, 0);
}

TEST_F(TextTest, AStringLongerThanTheGlyphListDrawsItsFirst200Glyphs)
{
    // Spacing that takes back all but one pixel of each advance: glyph n starts at n.
    FontRef ref(0, 10);
    const GLYPH_REF_T one = ref.Glyph('1');
    const int step = 1 - one.advance - ref.Kerning('1', '1');
    for (const std::string& text : {std::string(250, '1'), std::string(1000, '1')}) {
        ResetDisplay();
        const FTF_TEXTBOX_T box = Box(0, 20, 319, 100, 0, 10, HORIZONTAL_ALIGNMENT_LEFT, VERTICAL_ALIGNMENT_TOP, step);
        EXPECT_EQ(FTFBlitTextBox(&box, text.c_str()), FTF_MAX_GLYPHS);
        EXPECT_EQ(InkBox(Layer1Buffer).Right, (S32)FTF_MAX_GLYPHS - 1 + one.left + one.width - 1);
    }
    // Two-byte characters count as one glyph each.
    std::string accents;
    for (int i = 0; i < 250; i++) accents += "\xC3\xA9";
    const FTF_TEXTBOX_T box = Box(0, 20, 319, 100, 0, 10);
    EXPECT_EQ(FTFBlitTextBox(&box, accents.c_str()), FTF_MAX_GLYPHS);
}

TEST_F(TextTest, InvalidUtf8CutsTheStringWhereItStarts)
{
    const FTF_TEXTBOX_T box = Box(10, 20, 319, 100);
    FTFBlitTextBox(&box, "AB");
    const std::vector<U16> ab = Snapshot(Layer1Buffer);
    // The decoder's cases are below; here, that what came before is drawn.
    for (const char* text : {"AB\xFF" "CD", "AB\xC3", "AB\xE2\x82(", "AB\xE0\x80\x80" "CD"}) {
        ResetDisplay();
        EXPECT_EQ(FTFBlitTextBox(&box, text), 2u) << text;
        EXPECT_TRUE(Snapshot(Layer1Buffer) == ab) << text;
    }
    // Valid sequences of every length; the face lacks the last, which draws glyph 0.
    EXPECT_EQ(FTFBlitTextBox(&box, "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80" "B"), 5u);
}

TEST(Utf8Decoder, AssemblesCodePointsOfEveryLength)
{
    const struct {
        const char* bytes;
        U32 length;
        U32 codePoint;
    } cases[] = {
        {"", 1, 0},
        {"A", 1, 0x41},
        {"\x7F", 1, 0x7F},
        {"\xC2\x80", 2, 0x80},
        {"\xC3\xA9", 2, 0xE9},
        {"\xDF\xBF", 2, 0x7FF},
        {"\xE2\x82\xAC", 3, 0x20AC},
        {"\xE0\x80\x80", 3, 0},         // overlong forms are not checked
        {"\xEF\xBF\xBF", 3, 0xFFFF},
        {"\xF0\x9F\x98\x80", 4, 0x1F600},
        {"\xF4\x8F\xBF\xBF", 4, 0x10FFFF},
        {"\xF4\xBF\xBF\xBF", 4, 0x13FFFF},  // nor the upper bound
    };
    for (const auto& c : cases) {
        U32 cp = 0xDEAD;
        EXPECT_EQ(FTFTestDecodeUtf8(c.bytes, &cp), c.length) << c.codePoint;
        EXPECT_EQ(cp, c.codePoint);
    }
    U32 cp;
    for (const char* bad : {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xF5\x80\x80\x80", "\xFF", "\xC3", "\xC3\xC3",
                            "\xE2\x82", "\xE2\x82(", "\xF0\x9F\x98", "\xF0\x9F\x98\xC0"}) {
        EXPECT_EQ(FTFTestDecodeUtf8(bad, &cp), 0u) << (int)(U8)bad[0];
    }
}

// The box of outtextxyExEle reaches from the anchor to the far edge of the screen;
// centred, it is the widest box centred on the anchor.
TEST_F(TextTest, AnchoredTextIsCutByTheScreenNotByItsBox)
{
    FontRef ref(0, 24);
    const GLYPH_REF_T eight = ref.Glyph('8');
    const int width = 5 * eight.advance + 4 * ref.Kerning('8', '8');
    const int A = ref.Ascender();

    // Right aligned at 100: the last advance ends at 100.
    outtextxyExEle(ELEMENTID_INVALID, 100, 50, "88888", FONT_INDEX_TTARIAL, 24, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP, 0,
                   WHITE, 100, LAYER1);
    GFX_RECT_T ink = InkBox(Layer1Buffer);
    EXPECT_EQ(ink.Left, 100 - width + eight.left);
    EXPECT_LE(ink.Right, 100);
    EXPECT_EQ(ink.Top, 50 + A - eight.top);

    // Left aligned near the right edge: cut at the last column, nothing wraps.
    ResetDisplay();
    outtextxyExEle(ELEMENTID_INVALID, 300, 50, "88888", FONT_INDEX_TTARIAL, 24, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, 0,
                   WHITE, 100, LAYER1);
    ink = InkBox(Layer1Buffer);
    EXPECT_EQ(ink.Left, 300 + eight.left);
    EXPECT_EQ(ink.Right, 319);
    EXPECT_EQ(ink.Bottom, 50 + A - eight.top + eight.rows - 1);

    // Centred near the left edge: the text stays centred on x and is cut at column 0.
    ResetDisplay();
    outtextxyExEle(ELEMENTID_INVALID, 10, 50, "88888", FONT_INDEX_TTARIAL, 24, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, 0,
                   WHITE, 100, LAYER1);
    ink = InkBox(Layer1Buffer);
    EXPECT_EQ(ink.Left, 0);
    EXPECT_EQ(ink.Right, 10 - width / 2 + 4 * (eight.advance + ref.Kerning('8', '8')) + eight.left + eight.width - 1);

    // Top aligned just above the bottom of the screen: cut at the screen's last row.
    ResetDisplay();
    outtextxyExEle(ELEMENTID_INVALID, 10, 230, "88888", FONT_INDEX_TTARIAL, 24, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, 0,
                   WHITE, 100, LAYER1);
    ink = InkBox(Layer1Buffer);
    EXPECT_EQ(ink.Top, 230 + A - eight.top);
    EXPECT_EQ(ink.Bottom, 239);

    // Bottom aligned: the box ends at the anchor, the descent stays inside it.
    ResetDisplay();
    outtextxyExEle(ELEMENTID_INVALID, 10, 100, "88888", FONT_INDEX_TTARIAL, 24, LEFT_TXT, VERTICAL_ALIGNMENT_BOTTOM, 0,
                   WHITE, 100, LAYER1);
    ink = InkBox(Layer1Buffer);
    EXPECT_EQ(ink.Bottom, 100 - ref.Descender() - eight.top + eight.rows - 1);
}

TEST_F(TextTest, TextAnchoredBelowTheScreenGoesToTheButtonBarAreaWithoutDirtyRectangles)
{
    FontRef ref(0, 24);
    const GLYPH_REF_T eight = ref.Glyph('8');
    outtextxyExEle(77, 10, 260, "88888", FONT_INDEX_TTARIAL, 24, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, 0, WHITE_TEXT, 100,
                   LAYER2);
    const GFX_RECT_T ink = InkBox(Layer2Buffer);
    EXPECT_EQ(ink.Top, 260 + ref.Ascender() - eight.top);
    EXPECT_GT(ink.Bottom, 270) << "not cut at the screen's last row";
    EXPECT_TRUE(CurrentDirty().empty());
}

TEST_F(TextTest, CentredInYPutsTheBaselineHalfAnAscentBelowTheAnchorInBothHalves)
{
    FontRef ref(0, 24);
    const GLYPH_REF_T eight = ref.Glyph('8');
    const int A = ref.Ascender();
    for (S32 y : {30, 239, 240, 400}) {
        ResetDisplay();
        outtextxyExEle(ELEMENTID_INVALID, 10, y, "8", FONT_INDEX_TTARIAL, 24, LEFT_TXT, VERTICAL_ALIGNMENT_CENTRE, 0,
                       WHITE, 100, LAYER1);
        EXPECT_EQ(InkBox(Layer1Buffer).Top, y + (A + 1) / 2 - eight.top) << y;
    }
}

TEST_F(TextTest, NumbersCentredNearAnEdgeAreCutOnBothSidesAlike)
{
    // The same number centred with the text box and the number box: the number box is
    // the narrowest one centred on x, so it cuts what the screen would not.
    NumSetFont(FONT_INDEX_TTARIAL, 24, CENTER_TXT, 0);
    for (S32 x : {10, 159, 160, 310}) {
        ResetDisplay();
        outtextxyExEle(ELEMENTID_INVALID, x, 50, "88888", FONT_INDEX_TTARIAL, 24, CENTER_TXT, VERTICAL_ALIGNMENT_TOP,
                       0, WHITE, 100, LAYER1);
        const std::vector<U16> text = Snapshot(Layer1Buffer);
        ResetDisplay();
        outnumxyftExEle(ELEMENTID_INVALID, x, 50, "88888", WHITE, 100, LAYER1);
        const S32 left = x <= 159 ? 0 : 2 * x + 1 - 320, right = x <= 159 ? 2 * x : 319;
        int wrong = 0;
        for (S32 y = 0; y < 480; y++) {
            for (S32 c = 0; c < 320; c++) {
                const U16 want = c >= left && c <= right ? text[(U32)y * 320 + (U32)c] : 0;
                wrong += L1(c, y) != want;
            }
        }
        EXPECT_EQ(wrong, 0) << x;
        const GFX_RECT_T ink = InkBox(Layer1Buffer);
        if (x == 10) {
            EXPECT_EQ(ink.Right, 20);
        }
        if (x == 310) {
            EXPECT_EQ(ink.Left, 301);
        }
        if (x == 159 || x == 160) {
            EXPECT_TRUE(Snapshot(Layer1Buffer) == text) << "room on both sides: uncut";
        }
    }
}

TEST_F(TextTest, AnchorsAreClampedToTheVirtualScreenAndOddAlignmentsFallBack)
{
    const auto draw = [](S32 x, S32 y, FTF_HORIZONTAL_ALIGNMENT_T h, FTF_VERTICAL_ALIGNMENT_T v) {
        ResetDisplay();
        outtextxyExEle(9, x, y, "Eg8", FONT_INDEX_TTARIAL, 24, h, v, 0, WHITE, 100, LAYER1);
        return Snapshot(Layer1Buffer);
    };
    EXPECT_TRUE(draw(-50, 100, LEFT_TXT, VERTICAL_ALIGNMENT_TOP) == draw(0, 100, LEFT_TXT, VERTICAL_ALIGNMENT_TOP));
    EXPECT_TRUE(draw(5000, 100, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP) ==
                draw(319, 100, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP));
    EXPECT_TRUE(draw(40, INT_MAX, LEFT_TXT, VERTICAL_ALIGNMENT_BOTTOM) ==
                draw(40, 479, LEFT_TXT, VERTICAL_ALIGNMENT_BOTTOM));
    EXPECT_TRUE(draw(40, INT_MIN, LEFT_TXT, VERTICAL_ALIGNMENT_TOP) == draw(40, 0, LEFT_TXT, VERTICAL_ALIGNMENT_TOP));
    EXPECT_TRUE(draw(40, 100, (FTF_HORIZONTAL_ALIGNMENT_T)7, VERTICAL_ALIGNMENT_TOP) ==
                draw(40, 100, LEFT_TXT, VERTICAL_ALIGNMENT_TOP));
    EXPECT_TRUE(draw(40, 100, LEFT_TXT, (FTF_VERTICAL_ALIGNMENT_T)7) ==
                draw(40, 100, LEFT_TXT, VERTICAL_ALIGNMENT_BOTTOM));
    EXPECT_TRUE(draw(40, 100, LEFT_TXT, (FTF_VERTICAL_ALIGNMENT_T)-1) ==
                draw(40, 100, LEFT_TXT, VERTICAL_ALIGNMENT_BOTTOM));

    // A number below the virtual screen is drawn at its last row: the box is that row.
    ResetDisplay();
    outnumxyftExEle(12, 100, 100000, "12", WHITE, 100, LAYER1);
    const std::vector<U16> clamped = Snapshot(Layer1Buffer);
    ResetDisplay();
    outnumxyftExEle(12, 100, 479, "12", WHITE, 100, LAYER1);
    EXPECT_TRUE(Snapshot(Layer1Buffer) == clamped);
}

TEST_F(TextTest, LargestSizeInUseDrawsWholeDigits)
{
    FontRef ref(0, 110);
    const GLYPH_REF_T eight = ref.Glyph('8');
    ASSERT_GT(eight.rows, 70);
    outtextxyExEle(ELEMENTID_INVALID, 10, 5, "8", FONT_INDEX_TTARIAL, 110, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, 0, YELLOW,
                   100, LAYER2);
    const GFX_RECT_T ink = InkBox(Layer2Buffer);
    EXPECT_EQ(ink.Bottom - ink.Top + 1, eight.rows);
    EXPECT_EQ(ink.Right - ink.Left + 1, eight.width);
}

}  // namespace
