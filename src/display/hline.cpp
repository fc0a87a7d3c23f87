#include "dirtyrect.h"
#include "elements.h"
#include "gfx_plot.h"
#include "hline.h"

void hlineExEle(U32 elementId, S32 x1, S32 y, S32 x2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
                LAYER_T layer)
{
    gfx_sort(x1, x2);
    const S32 reach = gfx_stroke_reach(thickness);
    x1 = gfx_clamp(x1, 0, gfx_max_x());
    x2 = gfx_clamp(x2, 0, gfx_max_x());
    y = gfx_clamp(y, reach, gfx_max_y() - reach);
    DirtyRectAdd(x1, y - reach, x2, y + reach);
    ElementUpdate(elementId, x1, y - reach, x2, y + reach);
    if (opacity == 0) return;
    const bool dotted = style == DOTTED;
    gfx_with_plot(rgbColour, opacity, layer, [&](auto plot) {
        const U32 w = gScreenWidth;
        for (S32 x = x1; x <= x2; x++) {
            if (dotted && (x & 1)) continue;
            for (S32 k = -reach; k <= reach; k++) plot((U32)(y + k) * w + (U32)x);
        }
    });
}

void draw_line_horizontalEle(U32 elementId, S32 x1, S32 x2, S32 y, U16 colour, LAYER_T layer)
{
    x1 = gfx_clamp(x1, 0, gfx_max_x());
    x2 = gfx_clamp(x2, 0, gfx_max_x());
    y = gfx_clamp(y, 0, gfx_max_y());
    gfx_sort(x1, x2);
    DirtyRectAdd(x1, y, x2, y + 1);
    ElementUpdate(elementId, x1, y, x2, y + 1);
    lcd_fill_pixels(GET_LAYER_BUFFER(layer) + (U32)y * gScreenWidth + (U32)x1, (U32)(x2 - x1 + 1), colour);
}
