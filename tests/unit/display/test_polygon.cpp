// Vertices, fixed point and anti-aliased polygons: the worked cases pixel by pixel, and
// random shapes that must never write outside the layer area.
#include <algorithm>
#include <cmath>
#include <random>

#include "antialias.h"
#include "display_fixture.h"

namespace {

using Polygons = DisplayTest;

constexpr U16 HALF_RED = 16 << 11;  // red 31 over black at destination weight one half

TEST(Vertices, TurnClockwiseOnTheScreenInPlaceAndSurviveAbsurdAngles)
{
    VERTEX_T v[2] = {{1, 0}, {12, 10}};
    VertexRotateDeg(0, 0, 90, 1, v, v);  // right turns to down
    EXPECT_NEAR(v[0].x, 0, 1e-5f);
    EXPECT_NEAR(v[0].y, 1, 1e-5f);
    VertexRotateRad(10, 10, -PI, 1, v + 1, v + 1);  // about another point
    EXPECT_NEAR(v[1].x, 8, 1e-5f);
    for (float angle : {INFINITY, NAN, -1e30f}) VertexRotateRad(0, 0, angle, 1, v, v);
    EXPECT_NEAR(std::hypot(v[0].x, v[0].y), 1.0f, 1e-5f);
    EXPECT_EQ(fxround(0x18000), 1);  // a fraction of exactly one half stays down
    EXPECT_EQ(fxround(0x18001), 2);
    EXPECT_EQ(fxmul(itofx(300), itofx(300)), itofx(90000));  // needs the 64-bit product
    EXPECT_EQ(fxtoi(ftofx(-0.5f)), -1);
}

void Fill(std::initializer_list<VERTEX_T> shape, U32 opacity = 100, LAYER_T layer = LAYER1, U32 id = ELEMENTID_INVALID)
{
    std::vector<VERTEX_T> v(shape);
    PolyFillAAEle(id, (S32)v.size(), v.data(), RED, opacity, layer);
}

// First and last column of row y that hold the colour on the back layer.
std::pair<S32, S32> Span(S32 y)
{
    S32 first = -1, last = -1;
    for (S32 x = 0; x < (S32)gScreenWidth; x++) {
        if (L1(x, y) != RED) continue;
        if (first < 0) first = x;
        last = x;
    }
    return {first, last};
}

TEST_F(Polygons, EdgesFeatherByTheirFractionalPosition)
{
    Fill({{10.5f, 10}, {30, 10}, {30, 40}, {10.5f, 40}});
    EXPECT_EQ(L1(9, 20), HALF_RED) << "x = 10.5: the outer side pixel at one half";
    EXPECT_EQ(Span(20), std::make_pair(10, 30));
    EXPECT_EQ(L1(31, 20), BLACK) << "x = 30.0: the pixel after the centre keeps the background";
    EXPECT_EQ(L1(20, 9), RED) << "y = 10.0: the pixel before the centre takes the full colour";

    ResetDisplay();
    Fill({{20.25f, 30.75f}});  // one vertex: one step, one pixel of fill
    EXPECT_EQ(Span(30), std::make_pair(20, 20));
    EXPECT_EQ(L1(20, 29), 8 << 11);  // destination weight 0xC000
}

TEST_F(Polygons, RowsRunFromEdgeToEdgeAndAFlatBaseIsFilledWhole)
{
    Fill({{50, 10}, {90, 50}, {10, 50}});
    EXPECT_EQ(Span(30), std::make_pair(29, 71));  // the slanted edges, one full-colour feather out
    EXPECT_EQ(Span(50), std::make_pair(10, 90));
    for (S32 y = 11; y < 50; y++) EXPECT_EQ(Span(y).first + Span(y).second, 100) << "row " << y;
}

TEST_F(Polygons, TranslucentFillOnTheFrontLayerBakesInTheBackLayer)
{
    for (U32 i = 0; i < gScreenWidth * gScreenHeight; i++) {
        Layer1Buffer[i] = BLUE;
        Layer2Buffer[i] = i % 2 ? GREEN : ALPHA_COLOR;
    }
    Fill({{10, 10}, {40, 10}, {40, 40}, {10, 40}}, 50, LAYER2);
    EXPECT_EQ(L2(20, 20), 0x8010) << "red and blue, half each, whatever the front layer had";
    EXPECT_EQ(L2(21, 20), 0x8010);
    EXPECT_EQ(L2(9, 20), RED) << "the feather keeps its own weight";
}

TEST_F(Polygons, BoundingRectangleAndTheBoxWipe)
{
    GFX_RECT_T r;
    Fill({{-5, 3.9f}, {20.7f, 40.2f}, {2, 40}}, 0, LAYER1, 7);
    ASSERT_TRUE(ElementTestGetCurRect(7, &r));
    EXPECT_EQ(r, (GFX_RECT_T{-2, 1, 24, 44}));
    EXPECT_EQ(CurrentDirty(), (std::vector<GFX_RECT_T>{{0, 1, 24, 44}}));
    EXPECT_EQ(Span(20).first, -1) << "opacity 0 draws nothing";

    VERTEX_T v[2] = {{10.5f, 10}, {20, 30.9f}};
    VertexFillEle(3, 2, v, RED, 100, LAYER1);
    EXPECT_EQ(Span(8), std::make_pair(8, 22));
    EXPECT_EQ(Span(33).first, -1);
    ResetDisplay();
    v[1].x = 0;  // at 0, not right of the origin: no wipe
    VertexFillEle(3, 2, v, RED, 100, LAYER1);
    EXPECT_TRUE(CurrentDirty().empty());
}

// Random shapes, sane and absurd: all drawing stays inside the virtual screen of the
// layers, whose unused tail is a guard zone here.
TEST_F(Polygons, RandomShapesNeverWriteOutsideTheLayerArea)
{
    constexpr U16 GUARD = 0x5A5A;
    const U32 area = gScreenWidth * 2 * gScreenHeight;
    std::fill(Layer1Buffer + area, Layer1Buffer + LAYER_SIZE_PIXELS, GUARD);
    std::fill(Layer2Buffer + area, Layer2Buffer + LAYER_SIZE_PIXELS, GUARD);
    std::mt19937 rng(23);
    const float odd[] = {NAN, INFINITY, -INFINITY, 1e30f, -1e30f, -0.5f, 319.999f, 479.5f, 480.0f, 5000.0f};
    auto coord = [&](float span) {
        const U32 kind = rng() % 8;
        if (kind == 0) return odd[rng() % std::size(odd)];
        return std::uniform_real_distribution<float>(kind == 1 ? -3 * span : -20, kind == 1 ? 3 * span : span + 20)(rng);
    };
    for (int n = 0; n < 3000; n++) {
        VERTEX_T v[8];
        const S32 count = (S32)(rng() % 9);
        for (S32 i = 0; i < count; i++) v[i] = {coord(320), coord(480)};
        if (count > 2 && rng() % 4 == 0) v[1] = v[0];
        const U32 opacity = rng() % 3 * 50;
        const LAYER_T layer = rng() % 2 ? LAYER1 : LAYER2;
        switch (rng() % 4) {
            case 0: PolyStrokeAAEle(ELEMENTID_INVALID, count, v, (U16)rng(), opacity, layer); break;
            case 1: VertexFillEle(ELEMENTID_INVALID, count, v, (U16)rng(), opacity, layer); break;
            case 2: LineAAEle(ELEMENTID_INVALID, (S32)rng(), (S32)rng() % 1000, -(S32)(rng() % 100), 900, 1, 100, layer); break;
            default: PolyFillAAEle(ELEMENTID_INVALID, count, v, (U16)rng(), opacity, layer);
        }
        if (n % 100 == 0) DirtyRectFlip();  // keeps the pool from running dry
    }
    for (const U16* layer : {Layer1Buffer, Layer2Buffer}) {
        EXPECT_EQ(std::find_if(layer + area, layer + LAYER_SIZE_PIXELS, [](U16 p) { return p != GUARD; }) - layer,
                  (ptrdiff_t)LAYER_SIZE_PIXELS) << "first pixel written past the area";
    }
}

}  // namespace
