// The compositor and the blending rules every primitive shares.
#include <random>

#include "display_fixture.h"
#include "alphablend.h"
#include "lcd_blan.h"
#include "line.h"
#include "hline.h"
#include "vline.h"
#include "rectangl.h"
#include "b_fill.h"
#include "outimage.h"
#include "lcdc_drv.h"
#include "test_root.h"

namespace {

using Compose = DisplayTest;

std::vector<U16> Page()
{
    return std::vector<U16>(gScreenWidth * gScreenHeight, 0x1234);
}

U16 At(const std::vector<U16>& page, U32 x, U32 y)
{
    return page[y * gScreenWidth + x];
}

TEST_F(Compose, BlendArithmeticAtTheOpacityEdges)
{
    // Back layer mid grey, front layer transparent: blends on the front layer take the
    // back pixel as what lies beneath.
    const U16 grey = MAKERGB565(128, 128, 128);  // 16, 32, 16
    vLcdBlankerEx(grey, ALPHA_COLOR);
    struct Case {
        U32 opacity;
        U16 expected;
    };
    // red 31 over 16: alpha = o * 255 / 100; T[a][31] + T[255 - a][16], likewise green 0 over 32, blue 0 over 16.
    auto blend = [](U32 a, U32 s, U32 d) { return ((a * s) >> 8) + (((255 - a) * d) >> 8); };
    auto expect = [&](U32 opacity) {
        const U32 a = opacity * 255 / 100;
        return (U16)(blend(a, 31, 16) << 11 | blend(a, 0, 32) << 5 | blend(a, 0, 16));
    };
    const Case cases[] = {{1, expect(1)}, {50, expect(50)}, {99, expect(99)}, {100, RED}, {250, RED}};
    S32 x = 0;
    for (const Case& c : cases) {
        blockfillExEle(ELEMENTID_INVALID, x, 0, x, 0, RED, c.opacity, LAYER2);
        blockfillExEle(ELEMENTID_INVALID, x, 1, x, 1, RED, c.opacity, LAYER1);
        EXPECT_EQ(L2(x, 0), c.expected) << "opacity " << c.opacity;
        EXPECT_EQ(L1(x, 1), c.expected) << "opacity " << c.opacity << " on the back layer";
        x++;
    }
    blockfillExEle(ELEMENTID_INVALID, x, 0, x, 0, RED, 0, LAYER2);
    EXPECT_EQ(L2(x, 0), ALPHA_COLOR) << "opacity 0 writes nothing";
    // Alpha 255 is no exact copy: opacity 100 must take the copy path.
    EXPECT_EQ(ALPHABLEND_LOOKUP_TABLE[(255 << 6) + 63], 62);
}

TEST_F(Compose, WhiteOnTheFrontLayer)
{
    vLcdBlankerEx(BLUE, ALPHA_COLOR);
    blockfillExEle(ELEMENTID_INVALID, 0, 0, 0, 0, WHITE, 100, LAYER2);   // a hole
    blockfillExEle(ELEMENTID_INVALID, 1, 0, 1, 0, WHITE, 50, LAYER2);    // pale, opaque
    blockfillExEle(ELEMENTID_INVALID, 2, 0, 2, 0, WHITE_TEXT, 100, LAYER2);
    blockfillExEle(ELEMENTID_INVALID, 3, 0, 3, 0, RED, 100, LAYER2);
    blockfillExEle(ELEMENTID_INVALID, 3, 0, 3, 0, GREEN, 99, LAYER2);     // over red, not over blue
    std::vector<U16> page = Page();
    LayerMergerTestCompose(page.data());
    EXPECT_EQ(At(page, 0, 0), BLUE);
    EXPECT_NE(At(page, 1, 0), BLUE);
    EXPECT_NE(At(page, 1, 0), WHITE);
    EXPECT_EQ(At(page, 2, 0), WHITE_TEXT);
    EXPECT_EQ(RGB_GET_BLUE(At(page, 3, 0)), 0) << "blended against the front pixel";
    EXPECT_EQ(At(page, 4, 0), BLUE);
}

TEST_F(Compose, FrontAllTransparentShowsTheBackLayer)
{
    for (U32 i = 0; i < gScreenWidth * gScreenHeight; i++) {
        Layer1Buffer[i] = (U16)(i * 2654435761u >> 16);
        Layer2Buffer[i] = ALPHA_COLOR;
    }
    DirtyRectEnable(FALSE);
    std::vector<U16> page = Page();
    LayerMergerTestCompose(page.data());
    EXPECT_EQ(0, memcmp(page.data(), Layer1Buffer, page.size() * 2));
}

TEST_F(Compose, DirtyRectanglesAreWidenedToWholeWords)
{
    vLcdBlankerEx(BLACK, ALPHA_COLOR);
    for (int f = 0; f < 3; f++) {
        std::vector<U16> page = Page();
        LayerMergerTestCompose(page.data());  // work off the blanking on all pages
    }
    std::vector<U16> page = Page();
    Layer1Buffer[10] = RED;  // neighbour columns differ from the page
    Layer1Buffer[11] = GREEN;
    Layer1Buffer[12] = BLUE;
    DirtyRectAdd(11, 0, 11, 0);  // odd column: 10 and 11
    LayerMergerTestCompose(page.data());
    EXPECT_EQ(At(page, 10, 0), RED);
    EXPECT_EQ(At(page, 11, 0), GREEN);
    EXPECT_EQ(At(page, 12, 0), 0x1234);
    ResetDisplay();
    vLcdBlankerEx(BLACK, ALPHA_COLOR);
    for (int f = 0; f < 3; f++) LayerMergerTestCompose(page.data());
    Layer1Buffer[11] = GREEN;
    Layer1Buffer[12] = BLUE;
    page = Page();
    DirtyRectAdd(12, 0, 12, 0);  // even column: 12 and 13
    LayerMergerTestCompose(page.data());
    EXPECT_EQ(At(page, 11, 0), 0x1234);
    EXPECT_EQ(At(page, 12, 0), BLUE);
    EXPECT_EQ(At(page, 13, 0), BLACK);
}

TEST_F(Compose, OverlayRowsShowTheAreaBelowTheScreen)
{
    vLcdBlankerEx(BLUE, ALPHA_COLOR);
    blockfillExEle(ELEMENTID_INVALID, 0, 200, 319, 239, RED, 100, LAYER2);    // hidden while the overlay is open
    blockfillExEle(ELEMENTID_INVALID, 0, 240, 319, 279, GREEN, 100, LAYER2);  // the overlay area
    blockclearExEle(ELEMENTID_INVALID, 0, 240, 9, 240, ALPHA_COLOR, LAYER2);  // transparent in the overlay
    SetButtonOverlayHeight(40);
    std::vector<U16> page = Page();
    LayerMergerTestCompose(page.data());
    EXPECT_EQ(At(page, 100, 199), BLUE);
    EXPECT_EQ(At(page, 100, 200), GREEN);
    EXPECT_EQ(At(page, 100, 239), GREEN);
    EXPECT_EQ(At(page, 5, 200), BLUE) << "transparent overlay pixels show the back layer";

    // The overlay is composed every frame, dirty or not.
    page = Page();
    LayerMergerTestCompose(page.data());
    LayerMergerTestCompose(page.data());
    LayerMergerTestCompose(page.data());
    page = Page();
    LayerMergerTestCompose(page.data());
    EXPECT_EQ(At(page, 100, 220), GREEN);
    EXPECT_EQ(At(page, 100, 100), 0x1234) << "nothing else was dirty";

    SetButtonOverlayHeight(500);
    EXPECT_EQ(GetButtonOverlayHeight(), 240u) << "clamped to the screen";
}

TEST_F(Compose, ShrinkingOverlayDirtiesTheUncoveredRows)
{
    std::vector<U16> page = Page();
    SetButtonOverlayHeight(40);
    for (int f = 0; f < 3; f++) LayerMergerTestCompose(page.data());
    SetButtonOverlayHeight(38);
    page = Page();
    LayerMergerTestCompose(page.data());
    // Rows 199 .. 201 were recomposed (from black layers), 198 was not.
    EXPECT_EQ(At(page, 0, 198), 0x1234);
    EXPECT_EQ(At(page, 0, 199), 0);
    EXPECT_EQ(At(page, 0, 201), 0);
    // And the next two pages get them too.
    for (int f = 0; f < 2; f++) {
        page = Page();
        LayerMergerTestCompose(page.data());
        EXPECT_EQ(At(page, 0, 199), 0) << "page " << f + 1;
    }
}

// A random sequence of primitives with arguments anywhere, including far off the screen.
void RandomDrawing(std::mt19937& rng, int count)
{
    std::uniform_int_distribution<int> op(0, 8), coord(-60, 900), opacity(0, 120), layer(0, 3), thick(0, 4);
    std::uniform_int_distribution<int> colour(0, 0xFFFF);
    for (int i = 0; i < count; i++) {
        const S32 x1 = coord(rng), y1 = coord(rng), x2 = coord(rng), y2 = coord(rng);
        const U16 c = rng() % 4 == 0 ? ALPHA_COLOR : (U16)colour(rng);
        const LAYER_T l = layer(rng);
        switch (op(rng)) {
        case 0: lineExEle(ELEMENTID_INVALID, x1, y1, x2, y2, thick(rng), rng() & 1, c, opacity(rng), l); break;
        case 1: hlineExEle(ELEMENTID_INVALID, x1, y1, x2, thick(rng), rng() & 1, c, opacity(rng), l); break;
        case 2: vlineExEle(ELEMENTID_INVALID, x1, y1, y2, thick(rng), rng() & 1, c, opacity(rng), l); break;
        case 3: rectangleExEle(ELEMENTID_INVALID, x1, y1, x2, y2, thick(rng), rng() & 1, c, opacity(rng), l); break;
        case 4: blockfillExEle(ELEMENTID_INVALID, x1, y1, x2, y2, c, opacity(rng), l); break;
        case 5: blockclearExEle(ELEMENTID_INVALID, x1, y1, x2, y2, c, l); break;
        case 6: drawrectangleEle(ELEMENTID_INVALID, x1, y1, x2 - 300, y2 - 300, c, l); break;
        case 7: draw_windowEle(ELEMENTID_INVALID, x1, y1, x2, y2, coord(rng) / 20, c, l); break;
        case 8: draw_line_horizontalEle(ELEMENTID_INVALID, x1, x2, y1, c, l); draw_line_verticalEle(ELEMENTID_INVALID, y1, y2, x1, c, l); break;
        }
    }
}

void ExpectDirtyComposeEqualsWhole(U32 w, U32 h, unsigned seed, bool flipped)
{
    ResetDisplay(w, h);
    vSetLcdFlipped(flipped);
    std::mt19937 rng(seed);
    std::vector<U16> pages[3] = {Page(), Page(), Page()};
    vLcdBlankerEx(BLACK, ALPHA_COLOR);
    for (int frame = 0; frame < 12; frame++) {
        RandomDrawing(rng, 1 + (int)(rng() % 8));
        if (!flipped && rng() % 3 == 0) SetButtonOverlayHeight(rng() % 3 == 0 ? 0 : rng() % (h + 20));
        LayerMergerTestCompose(pages[frame % 3].data());
    }
    for (int frame = 12; frame < 15; frame++) LayerMergerTestCompose(pages[frame % 3].data());
    DirtyRectEnable(FALSE);
    std::vector<U16> whole = Page();
    LayerMergerTestCompose(whole.data());
    for (int p = 0; p < 3; p++) {
        ASSERT_EQ(pages[p], whole) << "seed " << seed << " page " << p << (flipped ? " flipped" : "");
    }
}

TEST(ComposeEquivalence, DirtyRectanglesGiveTheWholePicture)
{
    for (unsigned seed = 1; seed <= 60; seed++) ExpectDirtyComposeEqualsWhole(320, 240, seed, false);
    for (unsigned seed = 100; seed <= 110; seed++) ExpectDirtyComposeEqualsWhole(800, 480, seed, false);
}

TEST(ComposeEquivalence, FlippedPathsAgreeAndMirror)
{
    for (unsigned seed = 200; seed <= 230; seed++) ExpectDirtyComposeEqualsWhole(320, 240, seed, true);
    // The flipped picture is the plain one turned by 180 degrees.
    ResetDisplay();
    std::mt19937 rng(7);
    RandomDrawing(rng, 40);
    DirtyRectEnable(FALSE);
    std::vector<U16> plain = Page(), turned = Page();
    LayerMergerTestCompose(plain.data());
    vSetLcdFlipped(TRUE);
    LayerMergerTestCompose(turned.data());
    const size_t n = plain.size();
    for (size_t i = 0; i < n; i++) ASSERT_EQ(turned[n - 1 - i], plain[i]) << i;
    ResetDisplay();
}

}  // namespace

// After the display is closed there is no page: a late frame of the main loop (the
// compose and the swap) must find none and write nowhere, not into unmapped memory.
TEST(Display, ComposeAndSwapAfterDeinitTouchNothing)
{
    TestRoot root;
    root.Write("sys/class/leds/lcdled-pwm/brightness", "0");
    mkdir(root.Abs("dev").c_str(), 0755);
    lcd_init();
    ASSERT_NE(lcd_buffer(), nullptr);
    ResetDisplay(gScreenWidth, gScreenHeight);
    blockfillEx(0, 0, 99, 99, RED, 100, LAYER2);
    merge_layers();
    lcd_deinit();
    EXPECT_EQ(lcd_buffer(), nullptr);
    const std::string closed = root.Read("dev/fb0");
    blockfillEx(0, 0, 99, 99, GREEN, 100, LAYER2);
    merge_layers();
    lcd_swap();
    EXPECT_EQ(root.Read("dev/fb0"), closed) << "the framebuffer is left as the shutdown left it";
    ResetDisplay();
}
