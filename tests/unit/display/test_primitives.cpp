// Lines, blocks and pictures, pixel by pixel.
#include <random>
#include <set>
#include <utility>

#include "display_fixture.h"
#include "line.h"
#include "hline.h"
#include "vline.h"
#include "rectangl.h"
#include "b_fill.h"
#include "outimage.h"

namespace {

using Primitives = DisplayTest;
using Points = std::set<std::pair<int, int>>;

// The pixels of the virtual screen that hold `colour` on the back layer.
Points Drawn(U16 colour = RED)
{
    Points p;
    for (U32 y = 0; y < 2 * gScreenHeight; y++) {
        for (U32 x = 0; x < gScreenWidth; x++) {
            if (L1((S32)x, (S32)y) == colour) p.insert({(int)x, (int)y});
        }
    }
    return p;
}

void Line(S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness = NORMAL, S32 style = SOLID)
{
    lineExEle(ELEMENTID_INVALID, x1, y1, x2, y2, thickness, style, RED, 100, LAYER1);
}

TEST_F(Primitives, BresenhamSteps)
{
    Line(0, 0, 3, 3);  // y-major at 45 degrees: ends one short on x
    EXPECT_EQ(Drawn(), (Points{{0, 0}, {0, 1}, {1, 2}, {2, 3}}));
    ResetDisplay();
    Line(0, 0, 4, 2);
    EXPECT_EQ(Drawn(), (Points{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}}));
    ResetDisplay();
    Line(4, 2, 0, 0);  // drawn from the other end: the ends are exchanged
    EXPECT_EQ(Drawn(), (Points{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}}));
    ResetDisplay();
    Line(0, 2, 4, 0);  // falling minor axis
    EXPECT_EQ(Drawn().size(), 5u);
    EXPECT_TRUE(Drawn().count({0, 2}) && Drawn().count({4, 0}));
}

TEST_F(Primitives, LinesOffTheScreenBendAtTheEdge)
{
    Line(-50, 10, 50, 110);  // starts at x = 0 with the y of x = -50
    EXPECT_TRUE(Drawn().count({0, 10}));
    EXPECT_TRUE(Drawn().count({50, 110}));
    EXPECT_EQ(Drawn().size(), 101u) << "y-major from 10 to 110";
}

TEST_F(Primitives, ThickAndDottedStrokes)
{
    hlineExEle(ELEMENTID_INVALID, 10, 0, 12, THICK, SOLID, RED, 100, LAYER1);
    EXPECT_EQ(Drawn().size(), 9u);
    EXPECT_TRUE(Drawn().count({10, 0}) && Drawn().count({12, 2})) << "moved down to y = 1";
    ResetDisplay();
    hlineExEle(ELEMENTID_INVALID, 10, 0, 10, VERY_THICK, SOLID, RED, 100, LAYER1);
    EXPECT_EQ(Drawn(), (Points{{10, 0}, {10, 1}, {10, 2}, {10, 3}, {10, 4}}));
    ResetDisplay();
    hlineExEle(ELEMENTID_INVALID, 8, 5, 3, NORMAL, DOTTED, RED, 100, LAYER1);  // ends given backwards
    EXPECT_EQ(Drawn(), (Points{{4, 5}, {6, 5}, {8, 5}}));
    ResetDisplay();
    vlineExEle(ELEMENTID_INVALID, 319, 3, 6, THICK, DOTTED, RED, 100, LAYER1);
    EXPECT_EQ(Drawn(), (Points{{317, 4}, {318, 4}, {319, 4}, {317, 6}, {318, 6}, {319, 6}}));
    ResetDisplay();
    // A slanted thick line has a vertical cross-section when wider than tall.
    Line(10, 10, 20, 12, THICK);
    EXPECT_TRUE(Drawn().count({10, 9}) && Drawn().count({10, 11}));
    EXPECT_FALSE(Drawn().count({9, 10}));
}

TEST_F(Primitives, OnePixelLineWithThicknessPlotsOnePixelButRecordsThree)
{
    Line(5, 5, 5, 5, THICK);
    EXPECT_EQ(Drawn(), (Points{{5, 5}}));
    EXPECT_EQ(CurrentDirty(), (std::vector<GFX_RECT_T>{{4, 4, 6, 6}}));
}

TEST_F(Primitives, OpacityZeroRecordsLinesButNotBlocks)
{
    blockfillExEle(3, 0, 0, 10, 10, RED, 0, LAYER1);
    EXPECT_TRUE(CurrentDirty().empty());
    hlineExEle(3, 0, 0, 10, NORMAL, SOLID, RED, 0, LAYER1);
    EXPECT_EQ(CurrentDirty().size(), 1u);
    EXPECT_TRUE(Drawn().empty());
    GFX_RECT_T r;
    EXPECT_TRUE(ElementTestGetCurRect(3, &r));
}

TEST_F(Primitives, BlocksAreClampedNotDropped)
{
    blockfillExEle(ELEMENTID_INVALID, 400, 10, 500, 12, RED, 100, LAYER1);
    EXPECT_EQ(Drawn(), (Points{{319, 10}, {319, 11}, {319, 12}}));
    ResetDisplay();
    drawrectangleEle(ELEMENTID_INVALID, 0, 0, 320, 240, RED, LAYER1);
    const Points p = Drawn();
    EXPECT_TRUE(p.count({318, 0}));
    EXPECT_FALSE(p.count({319, 0})) << "width is clamped to W - 1";
    ResetDisplay();
    // Below the screen: drawn, but not a dirty rectangle (the overlay is composed whole).
    blockfillExEle(ELEMENTID_INVALID, 0, 300, 5, 310, RED, 100, LAYER1);
    EXPECT_EQ(Drawn().size(), 66u);
    EXPECT_TRUE(CurrentDirty().empty());
    ResetDisplay();
    draw_windowEle(ELEMENTID_INVALID, 10, 10, 10, 10, 2, RED, LAYER2);
    EXPECT_EQ(L2(10, 10), RED);
    EXPECT_EQ(L2(12, 12), ALPHA_COLOR);
    EXPECT_EQ(L2(18, 18), RED);
    EXPECT_EQ(L2(17, 17), ALPHA_COLOR);
}

// A picture record like the generated ones, 4 x 3, with one transparent pixel.
struct TEST_IMAGE_T {
    S_ImageHeader h;
    U16 bitmap[12];
};
const TEST_IMAGE_T kImage = {{0, {0, 0, 0}, 4, 3},
                             {RED, GREEN, BLUE, ALPHA_COLOR, 1, 2, 3, 4, 5, 6, 7, 8}};

TEST_F(Primitives, PicturesClipAtNegativePositions)
{
    outimageExEle(ELEMENTID_INVALID, -1, -1, &kImage, 100, ALPHA_OVERWRITE, LAYER1);
    EXPECT_EQ(L1(0, 0), 2);  // source (1, 1)
    EXPECT_EQ(L1(2, 1), 8);
    EXPECT_EQ(L1(3, 0), 0);
    EXPECT_EQ(CurrentDirty(), (std::vector<GFX_RECT_T>{{0, 0, 2, 1}}));
    ResetDisplay();
    outimageExEle(ELEMENTID_INVALID, -100, 0, &kImage, 100, ALPHA_OVERWRITE, LAYER1);
    EXPECT_EQ(L1(0, 0), ALPHA_COLOR) << "the last column at x = 0";
    EXPECT_EQ(L1(0, 1), 4);
    EXPECT_EQ(L1(1, 0), 0);
    ResetDisplay();
    outimageExEle(ELEMENTID_INVALID, 320, 0, &kImage, 100, ALPHA_OVERWRITE, LAYER1);
    EXPECT_TRUE(Drawn(RED).empty());
    EXPECT_TRUE(CurrentDirty().empty());
}

TEST_F(Primitives, PictureAlphaControlAndOpacity)
{
    outimageExEle(ELEMENTID_INVALID, 0, 0, &kImage, 100, ALPHA_INVARIANT, LAYER1);
    EXPECT_EQ(L1(3, 0), BLACK) << "transparent pixel leaves the destination";
    outimageExEle(ELEMENTID_INVALID, 0, 0, &kImage, 100, ALPHA_OVERWRITE, LAYER1);
    EXPECT_EQ(L1(3, 0), WHITE);
    ResetDisplay();
    outimageExEle(ELEMENTID_INVALID, 0, 0, &kImage, 50, ALPHA_OVERWRITE, LAYER1);
    EXPECT_NE(L1(3, 0), BLACK) << "white blended in";
    EXPECT_NE(L1(3, 0), WHITE);
    ResetDisplay();
    blockfillExEle(ELEMENTID_INVALID, 0, 0, 10, 10, RED, 100, LAYER2);
    outimageExEle(ELEMENTID_INVALID, 0, 0, &kImage, 50, ALPHA_OVERWRITE, LAYER2);
    EXPECT_EQ(L2(3, 0), ALPHA_COLOR) << "punched through at any opacity";
    ResetDisplay();
    outimageExEle(7, 0, 0, &kImage, 0, ALPHA_OVERWRITE, LAYER1);
    EXPECT_EQ(L1(0, 0), 0);
    EXPECT_EQ(CurrentDirty().size(), 1u) << "opacity 0 still records";
    const TEST_IMAGE_T bad = {{1, {0, 0, 0}, 4, 3}, {}};
    ResetDisplay();
    outimageExEle(7, 0, 0, &bad, 100, ALPHA_OVERWRITE, LAYER1);
    EXPECT_TRUE(CurrentDirty().empty()) << "a wrong header draws and records nothing";
}

TEST_F(Primitives, RotationAngles)
{
    const S32 pivot[2] = {0, 0}, centre[2] = {10, 20};
    GFX_RECT_T box;
    outimagerotateExEle(ELEMENTID_INVALID, pivot, &kImage, 0, centre, &box, ALPHA_OVERWRITE, LAYER1);
    EXPECT_EQ(L1(10, 20), RED);
    EXPECT_EQ(L1(13, 22), 8);
    EXPECT_EQ(box, (GFX_RECT_T{10, 20, 13, 22}));
    std::vector<U16> zero(Layer1Buffer, Layer1Buffer + 320 * 480);
    ResetDisplay();
    outimagerotateExEle(ELEMENTID_INVALID, pivot, &kImage, 360, centre, nullptr, ALPHA_OVERWRITE, LAYER1);
    EXPECT_TRUE(std::equal(zero.begin(), zero.end(), Layer1Buffer));

    // A quarter turn clockwise: the top row runs down the screen.
    const S32 mid[2] = {1, 1}, at[2] = {100, 100};
    ResetDisplay();
    outimagerotateExEle(ELEMENTID_INVALID, mid, &kImage, 90, at, &box, ALPHA_OVERWRITE, LAYER1);
    std::vector<U16> ninety(Layer1Buffer, Layer1Buffer + 320 * 480);
    // Sine 90 degrees comes out as 65535 / 65536: the truncated box is one short.
    EXPECT_EQ(box, (GFX_RECT_T{99, 99, 100, 101}));
    // Clockwise: a row of the picture (here the pivot's row) runs down the screen.
    EXPECT_EQ(L1(100, 99), 1);
    EXPECT_EQ(L1(100, 100), 2);
    ResetDisplay();
    outimagerotateExEle(ELEMENTID_INVALID, mid, &kImage, -270, at, nullptr, ALPHA_OVERWRITE, LAYER1);
    EXPECT_TRUE(std::equal(ninety.begin(), ninety.end(), Layer1Buffer)) << "-270 is 90";
    ResetDisplay();
    outimagerotateExEle(ELEMENTID_INVALID, mid, &kImage, -90, at, nullptr, ALPHA_OVERWRITE, LAYER1);
    std::vector<U16> minus(Layer1Buffer, Layer1Buffer + 320 * 480);
    ResetDisplay();
    outimagerotateExEle(ELEMENTID_INVALID, mid, &kImage, 270, at, nullptr, ALPHA_OVERWRITE, LAYER1);
    EXPECT_TRUE(std::equal(minus.begin(), minus.end(), Layer1Buffer)) << "-90 is 270";
    EXPECT_FALSE(std::equal(minus.begin(), minus.end(), ninety.begin()));
}

// Wild arguments never write outside the part of the layers the panel uses (the rest
// holds a pattern that must survive; on the large panel that part is the whole array,
// whose bounds the sanitizer runs watch), mark only the screen dirty, and keep the
// bookkeeping inside its pools.
TEST(PrimitivesFuzz, WildArgumentsStayInBounds)
{
    std::mt19937 rng(12345);
    const S32 wild[] = {INT32_MIN, INT32_MIN + 1, -100000, -1, 0, 1, 239, 240, 479, 480, 799, 800, 100000, INT32_MAX - 1, INT32_MAX};
    auto pick = [&]() -> S32 { return rng() % 3 ? wild[rng() % 15] : (S32)rng(); };
    for (U32 size = 0; size < 2; size++) {
        ResetDisplay(size ? 800 : 320, size ? 480 : 240);
        const U32 used = gScreenWidth * gScreenHeight * 2;
        for (U32 i = used; i < LAYER_SIZE_PIXELS; i++) {
            Layer1Buffer[i] = (U16)(i * 7 + 1);
            Layer2Buffer[i] = (U16)(i * 13 + 5);
        }
        for (int i = 0; i < 3000; i++) {
            const U32 op = rng() % 12, opacity = rng() % 4 == 0 ? rng() : rng() % 120;
            const LAYER_T layer = (LAYER_T)pick();
            const U32 id = rng() % 4 == 0 ? ELEMENTID_INVALID : rng() % 5000;
            switch (op) {
            case 0: lineExEle(id, pick(), pick(), pick(), pick(), pick(), pick(), (U16)rng(), opacity, layer); break;
            case 1: hlineExEle(id, pick(), pick(), pick(), pick(), pick(), (U16)rng(), opacity, layer); break;
            case 2: vlineExEle(id, pick(), pick(), pick(), pick(), pick(), (U16)rng(), opacity, layer); break;
            case 3: rectangleExEle(id, pick(), pick(), pick(), pick(), pick(), pick(), (U16)rng(), opacity, layer); break;
            case 4: blockfillExEle(id, pick(), pick(), pick(), pick(), (U16)rng(), opacity, layer); break;
            case 5: blockclearExEle(id, pick(), pick(), pick(), pick(), (U16)rng(), layer); break;
            case 6: drawrectangleEle(id, pick(), pick(), pick(), pick(), (U16)rng(), layer); break;
            case 7: draw_windowEle(id, pick(), pick(), pick(), pick(), pick(), (U16)rng(), layer); break;
            case 8: draw_line_horizontalEle(id, pick(), pick(), pick(), (U16)rng(), layer); break;
            case 9: draw_line_verticalEle(id, pick(), pick(), pick(), (U16)rng(), layer); break;
            case 10: outimageareaEle(id, pick(), pick(), &kImage, pick(), pick(), pick(), pick(), opacity, pick(), layer); break;
            case 11: {
                const S32 pivot[2] = {pick(), pick()}, centre[2] = {pick(), pick()};
                outimagerotateExEle(id, pivot, &kImage, pick(), centre, nullptr, pick(), layer);
                break;
            }
            }
            for (DIRTYRECT_T* d = DirtyRectGetFirst(); d; d = d->pNext) {
                const GFX_RECT_T& r = d->rect;
                ASSERT_TRUE(r.Left >= 0 && r.Top >= 0 && r.Right <= SCREEN_MAX_X && r.Bottom <= SCREEN_MAX_Y &&
                            r.Left <= r.Right && r.Top <= r.Bottom)
                    << r << " after operation " << op << " on the " << gScreenWidth << " panel";
            }
            if (rng() % 50 == 0) {
                ElementFillPrevRect(id, (U16)rng(), layer);
                SetButtonOverlayHeight(rng());
                vSetLcdFlipped(rng() & 1);
                std::vector<U16> page(gScreenWidth * gScreenHeight);
                LayerMergerTestCompose(page.data());
                DirtyRectFlip();
                ElementFlip();
            }
        }
        EXPECT_LE(DirtyRectTestFreeCount(), DIRTYRECT_POOL_SIZE);
        U32 overwritten = 0;
        for (U32 i = used; i < LAYER_SIZE_PIXELS; i++) {
            overwritten += Layer1Buffer[i] != (U16)(i * 7 + 1);
            overwritten += Layer2Buffer[i] != (U16)(i * 13 + 5);
        }
        EXPECT_EQ(overwritten, 0u) << "on the " << gScreenWidth << " panel";
    }
    ResetDisplay();
}

}  // namespace
