// How text meets the layers: opacity, the front layer's transparency, the bookkeeping,
// and the convenience calls with their current fonts.
#include "alphablend.h"
#include "lcd_blan.h"
#include "text_fixture.h"

namespace {

TEST_F(TextTest, OpacityBlendsEveryPixelAndFullOpacityCopiesFullCoverage)
{
    const FTF_TEXTBOX_T box = Box(10, 20, 319, 200, 0, 40, HORIZONTAL_ALIGNMENT_LEFT, VERTICAL_ALIGNMENT_TOP, 0,
                                  LAYER1, YELLOW);
    const auto draw = [&](U32 opacity) {
        ResetDisplay();
        fill_lcd_screen(BLUE, LAYER1);
        FTFBlitTextBoxEx(&box, "HM8", opacity);
        return Snapshot(Layer1Buffer);
    };
    const std::vector<U16> full = draw(100), half = draw(50), faint = draw(1);
    int copied = 0, blended = 0, faintInk = 0;
    for (size_t i = 0; i < full.size(); i++) {
        copied += full[i] == YELLOW;
        if (half[i] != BLUE) {
            blended++;
            EXPECT_NE(half[i], YELLOW) << "no pixel of half a colour is the whole colour";
            EXPECT_LE(RGB_GET_RED(half[i]), 16u);
        }
        faintInk += faint[i] != BLUE;
    }
    EXPECT_GT(copied, 300) << "full coverage stores the colour itself";
    EXPECT_GT(blended, copied);
    EXPECT_LT(faintInk, blended) << "at 1 % only the edges' rounding would show, if anything";
    EXPECT_TRUE(draw(250) == full) << "above 100 is 100";
    // Where coverage is full, 99 % is alpha (255 * ((99 << 16) / 100)) >> 16 = 252.
    const std::vector<U16> third = draw(99);
    const ALPHABLEND_T blend{&ALPHABLEND_LOOKUP_TABLE[252 << 6], &ALPHABLEND_LOOKUP_TABLE[(255 - 252) << 6]};
    for (size_t i = 0; i < full.size(); i++) {
        if (full[i] == YELLOW) {
            ASSERT_EQ(third[i], alphablend_pixel(blend, YELLOW, BLUE)) << i;
        }
    }
}

TEST_F(TextTest, FrontLayerEdgesBlendWithTheBackLayerBeneathTransparentPixels)
{
    fill_lcd_screen(RED, LAYER1);
    fill_lcd_screen(ALPHA_COLOR, LAYER2);
    for (U32 opacity : {100u, 60u}) {
        fill_lcd_screen(ALPHA_COLOR, LAYER2);
        const FTF_TEXTBOX_T box = Box(10, 20, 319, 200, 0, 40, HORIZONTAL_ALIGNMENT_LEFT, VERTICAL_ALIGNMENT_TOP, 0,
                                      LAYER2, BLACK);
        FTFBlitTextBoxEx(&box, "Oil 8", opacity);
        int edges = 0;
        for (U32 i = 0; i < 320 * 240; i++) {
            const U16 p = Layer2Buffer[i];
            if (p == ALPHA_COLOR || p == BLACK) continue;
            edges++;
            // Black over red: only red can remain. Over white, green and blue would.
            EXPECT_EQ(p & 0x07FF, 0) << std::hex << p;
        }
        EXPECT_GT(edges, 100) << opacity;
    }
    // The back layer has no such substitution: black on white gives greys.
    ResetDisplay();
    fill_lcd_screen(ALPHA_COLOR, LAYER1);
    const FTF_TEXTBOX_T back = Box(10, 20, 319, 200, 0, 40, HORIZONTAL_ALIGNMENT_LEFT, VERTICAL_ALIGNMENT_TOP, 0,
                                   LAYER1, BLACK);
    FTFBlitTextBox(&back, "Oil 8");
    int greys = 0;
    for (U32 i = 0; i < 320 * 240; i++) greys += Layer1Buffer[i] != ALPHA_COLOR && (Layer1Buffer[i] & 0x07E0) != 0;
    EXPECT_GT(greys, 100);
}

TEST_F(TextTest, WhiteTextShowsWhiteOnTheFrontLayerWhereWhiteWouldPunchHoles)
{
    const auto compose = [](U16 colour) {
        ResetDisplay();
        vLcdBlankerEx(RED, ALPHA_COLOR);
        const FTF_TEXTBOX_T box = Box(10, 20, 319, 200, 0, 60, HORIZONTAL_ALIGNMENT_LEFT, VERTICAL_ALIGNMENT_TOP, 0,
                                      LAYER2, colour);
        FTFBlitTextBox(&box, "88");
        std::vector<U16> page(320 * 240);
        LayerMergerTestCompose(page.data());
        return page;
    };
    const std::vector<U16> text = compose(WHITE_TEXT);
    const std::vector<U16> holes = compose(WHITE);
    int solid = 0, punched = 0;
    for (U32 i = 0; i < 320 * 240; i++) {
        if (text[i] == WHITE_TEXT) {
            solid++;
            punched += holes[i] == RED;
        }
    }
    EXPECT_GT(solid, 200);
    EXPECT_EQ(punched, solid) << "full coverage in WHITE stores the transparent key";
    // Edges are blended, hence opaque, in both.
    int edges = 0;
    for (U32 i = 0; i < 320 * 240; i++) edges += holes[i] != RED && holes[i] != WHITE;
    EXPECT_GT(edges, 50);
}

TEST_F(TextTest, NothingToDrawReturnsBeforeAnyBookkeeping)
{
    const FTF_TEXTBOX_T box = Box(10, 20, 319, 200);
    FTF_TEXTBOX_T unknown = box;
    GFX_RECT_T r;
    EXPECT_EQ(FTFBlitTextBoxExEle(5, &box, "Text", 0), 0u);
    unknown.FontIndex = 6;
    EXPECT_EQ(FTFBlitTextBoxExEle(6, &unknown, "Text", 100), 0u);
    unknown.FontIndex = 0xFFFFFFFF;
    EXPECT_EQ(FTFBlitTextBoxExEle(7, &unknown, "Text", 100), 0u);
    EXPECT_EQ(FTFBlitTextBoxExEle(8, nullptr, "Text", 100), 0u);
    FTFTestDone();
    EXPECT_EQ(FTFBlitTextBoxExEle(9, &box, "Text", 100), 0u) << "before FTFInit";
    EXPECT_TRUE(CurrentDirty().empty());
    EXPECT_EQ(InkBox(Layer1Buffer).Left, INT32_MAX);

    // No element record was taken: the whole pool is still there for 2000 new ids.
    ASSERT_EQ(FTFInit(gpaFreetypeFontData, 6), 0);
    for (U32 id = 0; id < 2000; id++) FTFBlitTextBoxExEle(20000 + id, &box, "Text", 0);
    for (U32 id = 0; id < ELEMENT_POOL_SIZE; id++) ElementUpdate(30000 + id, 0, 0, 1, 1);
    EXPECT_TRUE(ElementTestGetCurRect(30000 + ELEMENT_POOL_SIZE - 1, &r));
}

TEST_F(TextTest, AnEmptyStringMakesTheElementKnownWithNothingDrawn)
{
    const FTF_TEXTBOX_T box = Box(10, 20, 319, 200);
    GFX_RECT_T r;
    EXPECT_EQ(FTFBlitTextBoxEle(42, &box, ""), 0u);
    EXPECT_EQ(FTFBlitTextBoxEle(43, &box, nullptr), 0u);
    EXPECT_EQ(FTFBlitTextBoxEle(44, &box, "   "), 3u) << "spaces are glyphs without pixels";
    EXPECT_TRUE(CurrentDirty().empty());
    EXPECT_EQ(InkBox(Layer1Buffer).Left, INT32_MAX);
    EXPECT_FALSE(ElementTestGetCurRect(42, &r)) << "known, but its rectangle is unset";
    EXPECT_FALSE(ElementTestGetCurRect(44, &r));

    // Its first real picture is not widened by the empty one.
    FontRef ref(0, 24);
    const GLYPH_REF_T a = ref.Glyph('A');
    EXPECT_EQ(FTFBlitTextBoxEle(42, &box, "A"), 1u);
    ASSERT_TRUE(ElementTestGetCurRect(42, &r));
    const GFX_RECT_T glyph = {10 + a.left, 20 + ref.Ascender() - a.top, 10 + a.left + a.width - 1,
                              20 + ref.Ascender() - a.top + a.rows - 1};
    EXPECT_EQ(r, glyph);

    // The element is known: empty draws of 1999 more ids exhaust the pool.
    for (U32 id = 0; id < ELEMENT_POOL_SIZE - 3; id++) FTFBlitTextBoxEle(20000 + id, &box, "");
    ElementUpdate(50000, 0, 0, 1, 1);
    EXPECT_FALSE(ElementTestGetCurRect(50000, &r));
}

TEST_F(TextTest, TrackedTextIsWipedByItsGlyphBoxes)
{
    std::fill(Layer2Buffer, Layer2Buffer + 320 * 480, ALPHA_COLOR);
    outtextxyExEle(77, 300, 100, "1234", FONT_INDEX_TTARIAL, 24, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP, 0, YELLOW, 100,
                   LAYER2);
    outtextxyExEle(77, 20, 30, "rpm", FONT_INDEX_TTARIAL, 12, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, 0, YELLOW, 100, LAYER2);
    const GFX_RECT_T ink = InkBox(Layer2Buffer, ALPHA_COLOR);
    GFX_RECT_T r;
    ASSERT_TRUE(ElementTestGetCurRect(77, &r));
    EXPECT_EQ(r, ink) << "one element, the union of both texts";
    ElementFlip();
    ElementFillPrevRect(77, ALPHA_COLOR, LAYER2);
    EXPECT_EQ(InkBox(Layer2Buffer, ALPHA_COLOR).Left, INT32_MAX) << "nothing left of either text";
}

TEST_F(TextTest, TheConvenienceCallsDrawInTheCurrentFonts)
{
    const auto snapshot = [](auto draw) {
        ResetDisplay();
        draw();
        return Snapshot(Layer1Buffer);
    };
    // At start: text in the proportional face at 10, numbers in the numbers face at 10
    // with 3 pixels between digits; both left and top aligned.
    EXPECT_TRUE(snapshot([] { outtextxyftExEle(ELEMENTID_INVALID, 50, 60, "Oil 12", WHITE, 100, LAYER1); }) ==
                snapshot([] {
                    outtextxyExEle(ELEMENTID_INVALID, 50, 60, "Oil 12", FONT_INDEX_TTARIAL, 10, LEFT_TXT,
                                   VERTICAL_ALIGNMENT_TOP, 0, WHITE, 100, LAYER1);
                }));
    EXPECT_TRUE(snapshot([] { outnumxyftExEle(ELEMENTID_INVALID, 50, 60, "-12.5", WHITE, 100, LAYER1); }) ==
                snapshot([] {
                    outtextxyExEle(ELEMENTID_INVALID, 50, 60, "-12.5", FONT_INDEX_TTCOURIERBDNUM, 10, LEFT_TXT,
                                   VERTICAL_ALIGNMENT_TOP, 3, WHITE, 100, LAYER1);
                }));
    TextSetFont(FONT_INDEX_TTMICRO, 30, CENTER_TXT, 2);
    NumSetFont(FONT_INDEX_TTFUTURE, 40, RIGHT_TXT, 5);
    EXPECT_TRUE(snapshot([] { outtextxyftExEle(ELEMENTID_INVALID, 160, 60, "To 8", WHITE, 100, LAYER1); }) ==
                snapshot([] {
                    outtextxyExEle(ELEMENTID_INVALID, 160, 60, "To 8", FONT_INDEX_TTMICRO, 30, CENTER_TXT,
                                   VERTICAL_ALIGNMENT_TOP, 2, WHITE, 100, LAYER1);
                }));
    EXPECT_TRUE(snapshot([] { outnumxyftExEle(ELEMENTID_INVALID, 300, 60, "7500", WHITE, 100, LAYER1); }) ==
                snapshot([] {
                    outtextxyExEle(ELEMENTID_INVALID, 300, 60, "7500", FONT_INDEX_TTFUTURE, 40, RIGHT_TXT,
                                   VERTICAL_ALIGNMENT_TOP, 5, WHITE, 100, LAYER1);
                }));
}

TEST(TextSetFontDeathTest, AFontOutsideTheTableIsAProgrammingError)
{
    EXPECT_DEATH(TextSetFont((FONT_INDEX_T)6, 10, LEFT_TXT, 0), "vSetTextFontIndex: Invalid Font Index!");
    EXPECT_DEATH(TextSetFont((FONT_INDEX_T)-1, 10, LEFT_TXT, 0), "vSetTextFontIndex: Invalid Font Index!");
    EXPECT_DEATH(NumSetFont(FONT_INDEX_END, 10, LEFT_TXT, 0), "vSetNumFontIndex: Invalid Font Index!");
    TextSetFont(FONT_INDEX_TTMICRO, 10, LEFT_TXT, 0);
    NumSetFont(FONT_INDEX_TTARIAL, 10, LEFT_TXT, 0);
    FTFTestDone();
}

TEST_F(TextTest, DrawTextBoxClearsFramesAndCutsItsText)
{
    fill_lcd_screen(GREEN, LAYER2);
    TextSetFont(FONT_INDEX_TTARIAL, 10, CENTER_TXT, 0);
    DrawTextBoxExEle(ELEMENTID_INVALID, 50, 60, 100, 40, NORMAL, RED, 16, FONT_INDEX_TTARIAL, BLACK,
                     "Averylongtextforitsbox", 100, LAYER2);
    EXPECT_EQ(L2(50, 60), RED);
    EXPECT_EQ(L2(149, 99), RED);
    EXPECT_EQ(L2(148, 98), ALPHA_COLOR) << "cleared inside the frame";
    EXPECT_EQ(L2(150, 100), GREEN);
    EXPECT_EQ(L2(49, 60), GREEN);
    int outside = 0;
    GFX_RECT_T text = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    for (S32 y = 0; y < 240; y++) {
        for (S32 x = 0; x < 320; x++) {
            const U16 p = L2(x, y);
            const bool inBox = x >= 50 && x <= 149 && y >= 60 && y <= 99;
            if (!inBox) outside += p != GREEN;
            if (inBox && p != ALPHA_COLOR && p != RED) {
                text.Left = std::min(text.Left, x);
                text.Right = std::max(text.Right, x);
            }
        }
    }
    EXPECT_EQ(outside, 0);
    // Centred by the current text alignment, too long: cut on both sides of the box.
    EXPECT_LE(text.Left, 52);
    EXPECT_GE(text.Right, 147);

    // Without a border the box is only cleared.
    fill_lcd_screen(GREEN, LAYER2);
    DrawTextBoxEx(50, 60, 100, 40, NOCHANGE, RED, 16, FONT_INDEX_TTARIAL, BLACK, "", 100, LAYER2);
    EXPECT_EQ(L2(50, 60), ALPHA_COLOR);
    EXPECT_EQ(L2(149, 99), ALPHA_COLOR);
}

}  // namespace
