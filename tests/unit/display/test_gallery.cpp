// Two pages with every primitive on both layers, composed as the dash composes it, on
// both panels, upright and flipped, against their reference pictures: the plain
// primitives, then the anti-aliased shapes and the gauge widget.
#include <cmath>

#include "antialias.h"
#include "display_fixture.h"
#include "freetype_api.h"
#include "gauge.h"
#include "images.h"
#include "lcd_blan.h"
#include "line.h"
#include "hline.h"
#include "vline.h"
#include "rectangl.h"
#include "b_fill.h"
#include "outimage.h"
#include "picture_check.h"
#include "ttfonts.h"

namespace {

// The small panel's layout, doubled and centred on the large one.
struct Place {
    S32 scale, dx;
    S32 X(S32 x) const { return x * scale + dx; }
    S32 Y(S32 y) const { return y * scale; }
};

// Back layer stripes, to show translucency over them.
void DrawBackground(void)
{
    vLcdBlankerEx(MAKERGB565(20, 24, 32), ALPHA_COLOR);
    for (S32 x = 0; x < (S32)gScreenWidth; x += 16) blockfillEx(x, 0, x + 7, (S32)gScreenHeight - 1, MAKERGB565(40, 48, 64), 100, LAYER1);
}

void DrawGallery(const Place& p)
{
    // Back layer: its own primitives, which the front layer shows through its
    // transparent pixels.
    DrawBackground();
    lineExEle(ELEMENTID_INVALID, p.X(0), p.Y(235), p.X(319), p.Y(140), THICK, SOLID, MAKERGB565(0, 120, 60), 100, LAYER1);
    rectangleExEle(ELEMENTID_INVALID, p.X(160), p.Y(100), p.X(205), p.Y(150), NORMAL, DOTTED, MAKERGB565(255, 165, 0), 100, LAYER1);
    blockfillExEle(ELEMENTID_INVALID, p.X(270), p.Y(140), p.X(315), p.Y(175), MAKERGB565(200, 0, 200), 50, LAYER1);
    outimageEx(p.X(160), p.Y(150), &up_s, 100, ALPHA_INVARIANT, LAYER1);
    // Front layer. Lines: every thickness and both styles, slanted ones.
    lineExEle(ELEMENTID_INVALID, p.X(10), p.Y(10), p.X(150), p.Y(40), NORMAL, SOLID, YELLOW, 100, LAYER2);
    lineExEle(ELEMENTID_INVALID, p.X(10), p.Y(20), p.X(150), p.Y(60), THICK, SOLID, CYAN, 100, LAYER2);
    lineExEle(ELEMENTID_INVALID, p.X(10), p.Y(30), p.X(150), p.Y(80), VERY_THICK, DOTTED, MAGENTA, 100, LAYER2);
    lineExEle(ELEMENTID_INVALID, p.X(160), p.Y(10), p.X(200), p.Y(90), THICK, SOLID, GREEN, 60, LAYER2);
    hlineExEle(ELEMENTID_INVALID, p.X(10), p.Y(100), p.X(150), VERY_THICK, SOLID, RED, 100, LAYER2);
    hlineExEle(ELEMENTID_INVALID, p.X(10), p.Y(108), p.X(150), NORMAL, DOTTED, WHITE_TEXT, 100, LAYER2);
    vlineExEle(ELEMENTID_INVALID, p.X(215), p.Y(10), p.Y(100), THICK, DOTTED, MAKERGB565(255, 140, 0), 100, LAYER2);
    rectangleExEle(ELEMENTID_INVALID, p.X(225), p.Y(10), p.X(310), p.Y(60), THICK, SOLID, WHITE_TEXT, 100, LAYER2);
    // Fills: opaque, translucent over the stripes, a cleared hole, a window frame.
    blockfillExEle(ELEMENTID_INVALID, p.X(230), p.Y(70), p.X(270), p.Y(110), RED, 100, LAYER2);
    blockfillExEle(ELEMENTID_INVALID, p.X(250), p.Y(90), p.X(310), p.Y(130), BLUE, 50, LAYER2);
    blockclearExEle(ELEMENTID_INVALID, p.X(240), p.Y(80), p.X(250), p.Y(90), ALPHA_COLOR, LAYER2);
    draw_windowEle(ELEMENTID_INVALID, p.X(10), p.Y(120), 60, 40, 4, GREEN, LAYER2);
    drawrectangleEle(ELEMENTID_INVALID, p.X(80), p.Y(120), 30, 40, MENU_COLOR, LAYER2);
    draw_line_horizontalEle(ELEMENTID_INVALID, p.X(120), p.X(200), p.Y(125), LIGHT_GRAY, LAYER2);
    draw_line_verticalEle(ELEMENTID_INVALID, p.X(120), p.Y(160), p.Y(205), LIGHT_GRAY, LAYER2);
    // Pictures: key faces, one translucent, a part, the cross turned, the hub.
    outimageEx(p.X(10), p.Y(180), &up, 100, ALPHA_INVARIANT, LAYER2);
    outimageEx(p.X(76), p.Y(180), &down_s, 100, ALPHA_INVARIANT, LAYER2);
    outimageEx(p.X(142), p.Y(180), &right, 50, ALPHA_INVARIANT, LAYER2);
    outimageareaEle(ELEMENTID_INVALID, p.X(208), p.Y(180), &back_s, 0, 0, 31, 47, 100, ALPHA_INVARIANT, LAYER2);
    const S32 pivot[2] = {10, 10}, centre[2] = {p.X(290), p.Y(200)};
    outimagerotateExEle(ELEMENTID_INVALID, pivot, &touch_cross, 30, centre, nullptr, ALPHA_INVARIANT, LAYER2);
    outimageEx(p.X(250), p.Y(190), &needle_boss, 100, ALPHA_INVARIANT, LAYER2);
}

// The shape scaled, turned by angleDeg about its origin and moved to (x, y) of the page.
std::vector<VERTEX_T> Placed(std::vector<VERTEX_T> v, float scale, float angleDeg, const Place& p, S32 x, S32 y)
{
    const S32 n = (S32)v.size();
    VertexScale(scale * (float)p.scale, scale * (float)p.scale, n, v.data(), v.data());
    VertexRotateDeg(0, 0, angleDeg, n, v.data(), v.data());
    VertexTranslate(p.X(x), p.Y(y), n, v.data(), v.data());
    return v;
}

void DrawAntialiasGallery(const Place& p)
{
    DrawBackground();
    // A fan of needles at several angles and opacities on both layers, the translucent
    // ones over the stripes and over each other at the hub.
    struct {
        float angle;
        U16 colour;
        U32 opacity;
        LAYER_T layer;
    } const fan[] = {{-75, MAKERGB565(255, 140, 0), 100, LAYER1}, {-45, YELLOW, 100, LAYER2}, {-15, CYAN, 50, LAYER2},
                     {15, GREEN, 60, LAYER1}, {45, WHITE_TEXT, 100, LAYER2}, {75, RED, 30, LAYER2}};
    for (const auto& n : fan) {
        std::vector<VERTEX_T> v = Placed({{-5, -5}, {0, 0}, {5, -5}, {2, -96}, {0, -100}, {-2, -96}}, 0.8f, n.angle, p, 80, 105);
        PolyFillAA(6, v.data(), n.colour, n.opacity, n.layer);
    }
    // A concave star, whose notches fill in row by row, and its outline.
    std::vector<VERTEX_T> star;
    for (int i = 0; i < 10; i++) star.push_back({0.0f, i % 2 ? -8.0f : -20.0f});
    for (int i = 0; i < 10; i++) VertexRotateDeg(0, 0, 36.0f * (float)i, 1, &star[i], &star[i]);
    std::vector<VERTEX_T> filled = Placed(star, 1, 10, p, 178, 28), outlined = Placed(star, 1, 10, p, 178, 80);
    PolyFillAA(10, filled.data(), MAGENTA, 100, LAYER1);
    PolyStrokeAAEle(ELEMENTID_INVALID, 10, outlined.data(), MAKERGB565(255, 200, 0), 100, LAYER2);
    // Anti-aliased lines around a point, every 15 degrees.
    for (int i = 0; i < 24; i++) {
        VERTEX_T end = Placed({{0, -48}}, 1, 15.0f * (float)i, p, 258, 55)[0];
        LineAAEle(ELEMENTID_INVALID, p.X(258), p.Y(55), (S32)lroundf(end.x), (S32)lroundf(end.y),
                  i % 2 ? LIGHT_GRAY : MAKERGB565(120, 200, 255), 100, LAYER2);
    }
    // Gauge widgets: clockwise over 270 degrees with the hub, and counter-clockwise.
    const float scale = 0.6f * (float)p.scale;
    GAUGE_T clockwise = {(S32)ElementGetNewId(), 0, 8, 225, 135, DIRECTION_ClockWise, p.X(80), p.Y(178), 9, 1, 0, scale,
                         RED, WHITE_TEXT, &needle_boss, nullptr, 0, 0};
    GAUGE_T counter = {(S32)ElementGetNewId(), 0, 120, 135, 225, DIRECTION_CounterClockWise, p.X(240), p.Y(178), 7, 3, 0,
                       scale, YELLOW, CYAN, nullptr, nullptr, 0, 0};
    vGaugeCreate(&clockwise);
    vGaugeUpdate(&clockwise, 5.5f);
    vGaugeCreate(&counter);
    vGaugeUpdate(&counter, 75);
}

TEST(GalleryPictures, EveryPrimitiveOnBothLayersBothPanelsUprightAndFlipped)
{
    ASSERT_EQ(FTFInit(gpaFreetypeFontData, gFreetypeNumFonts), 0);
    struct Panel {
        U32 w, h;
        Place place;
        const char* size;
    };
    struct Page {
        void (*draw)(const Place&);
        const char* name;
    };
    for (const Page& gallery : {Page{DrawGallery, "gallery_"}, Page{DrawAntialiasGallery, "gallery_antialias_"}}) {
        for (const Panel& panel : {Panel{320, 240, {1, 0}, "320x240"}, Panel{800, 480, {2, 80}, "800x480"}}) {
            for (const bool flipped : {false, true}) {
                ResetDisplay(panel.w, panel.h);
                gallery.draw(panel.place);
                vSetLcdFlipped(flipped);
                std::vector<U16> page((size_t)panel.w * panel.h);
                LayerMergerTestCompose(page.data());
                const std::string name = std::string(gallery.name) + panel.size + (flipped ? "_flipped" : "");
                EXPECT_TRUE(MatchesPicture(name, page.data(), panel.w, panel.h, panel.w));
            }
        }
    }
    ResetDisplay();
}

}  // namespace
