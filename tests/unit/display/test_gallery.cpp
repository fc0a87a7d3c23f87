// One page with every primitive on it, composed as the dash composes it. Set
// MOTORDASH_GALLERY_PNG to a file name to look at it.
#include <cstdlib>

#include "display_fixture.h"
#include "images.h"
#include "lcd_blan.h"
#include "line.h"
#include "outimage.h"
#include "png_io.h"
#include "rectangl.h"

namespace {

TEST(Gallery, EveryPrimitiveOnOnePage)
{
    ResetDisplay(320, 240);
    vLcdBlankerEx(MAKERGB565(20, 24, 32), ALPHA_COLOR);
    // Back layer: stripes to show translucency over them.
    for (S32 x = 0; x < 320; x += 16) blockfillEx(x, 0, x + 7, 239, MAKERGB565(40, 48, 64), 100, LAYER1);
    // Lines: every thickness and both styles, slanted ones.
    lineExEle(ELEMENTID_INVALID, 10, 10, 150, 40, NORMAL, SOLID, YELLOW, 100, LAYER2);
    lineExEle(ELEMENTID_INVALID, 10, 20, 150, 60, THICK, SOLID, CYAN, 100, LAYER2);
    lineExEle(ELEMENTID_INVALID, 10, 30, 150, 80, VERY_THICK, DOTTED, MAGENTA, 100, LAYER2);
    lineExEle(ELEMENTID_INVALID, 160, 10, 200, 90, THICK, SOLID, GREEN, 60, LAYER2);
    hlineExEle(ELEMENTID_INVALID, 10, 100, 150, VERY_THICK, SOLID, RED, 100, LAYER2);
    hlineExEle(ELEMENTID_INVALID, 10, 108, 150, NORMAL, DOTTED, WHITE_TEXT, 100, LAYER2);
    vlineExEle(ELEMENTID_INVALID, 215, 10, 100, THICK, DOTTED, MAKERGB565(255, 140, 0), 100, LAYER2);
    rectangleExEle(ELEMENTID_INVALID, 225, 10, 310, 60, THICK, SOLID, WHITE_TEXT, 100, LAYER2);
    // Fills: opaque, translucent over the stripes, a cleared hole, a window frame.
    blockfillExEle(ELEMENTID_INVALID, 230, 70, 270, 110, RED, 100, LAYER2);
    blockfillExEle(ELEMENTID_INVALID, 250, 90, 310, 130, BLUE, 50, LAYER2);
    blockclearExEle(ELEMENTID_INVALID, 240, 80, 250, 90, ALPHA_COLOR, LAYER2);
    draw_windowEle(ELEMENTID_INVALID, 10, 120, 60, 40, 4, GREEN, LAYER2);
    drawrectangleEle(ELEMENTID_INVALID, 80, 120, 30, 40, MENU_COLOR, LAYER2);
    draw_line_horizontalEle(ELEMENTID_INVALID, 120, 200, 125, LIGHT_GRAY, LAYER2);
    draw_line_verticalEle(ELEMENTID_INVALID, 120, 160, 205, LIGHT_GRAY, LAYER2);
    // Pictures: key faces, one translucent, a part, the hub turned.
    outimageEx(10, 180, &up, 100, ALPHA_INVARIANT, LAYER2);
    outimageEx(76, 180, &down_s, 100, ALPHA_INVARIANT, LAYER2);
    outimageEx(142, 180, &right, 50, ALPHA_INVARIANT, LAYER2);
    outimageareaEle(ELEMENTID_INVALID, 208, 180, &back_s, 0, 0, 31, 47, 100, ALPHA_INVARIANT, LAYER2);
    const S32 pivot[2] = {10, 10}, centre[2] = {290, 200};
    outimagerotateExEle(ELEMENTID_INVALID, pivot, &touch_cross, 30, centre, nullptr, ALPHA_INVARIANT, LAYER2);
    outimageEx(250, 190, &needle_boss, 100, ALPHA_INVARIANT, LAYER2);

    std::vector<U16> page(320 * 240);
    _merge_layers_compose(page.data());
    EXPECT_EQ(page[100 * 320 + 80], RED);
    EXPECT_EQ(page[85 * 320 + 245], Layer1Buffer[85 * 320 + 245]) << "the hole shows the back layer";
    if (const char* png = getenv("MOTORDASH_GALLERY_PNG")) {
        EXPECT_EQ(png_write_rgb565(png, page.data(), 320, 240, 320), "");
    }
    ResetDisplay();
}

}  // namespace
