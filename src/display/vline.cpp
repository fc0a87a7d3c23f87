#include "dirtyrect.h"
#include "elements.h"
#include "gfx_plot.h"
#include "vline.h"

void vlineExEle(U32 elementId, S32 x, S32 y1, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
                LAYER_T layer)
{
    gfx_sort(y1, y2);
    const S32 reach = gfx_stroke_reach(thickness);
    x = gfx_clamp(x, reach, gfx_max_x() - reach);
    y1 = gfx_clamp(y1, 0, gfx_max_y());
    y2 = gfx_clamp(y2, 0, gfx_max_y());
    DirtyRectAdd(x - reach, y1, x + reach, y2);
    ElementUpdate(elementId, x - reach, y1, x + reach, y2);
    if (opacity == 0) return;
    const bool dotted = style == DOTTED;
    gfx_with_plot(rgbColour, opacity, layer, [&](auto plot) {
        const U32 w = gScreenWidth;
        for (S32 y = y1; y <= y2; y++) {
            if (dotted && (y & 1)) continue;
            const U32 row = (U32)y * w;
            for (S32 k = -reach; k <= reach; k++) plot(row + (U32)(x + k));
        }
    });
}

void draw_line_verticalEle(U32 elementId, S32 y1, S32 y2, S32 x, U16 colour, LAYER_T layer)
{
    x = gfx_clamp(x, 0, gfx_max_x());
    y1 = gfx_clamp(y1, 0, gfx_max_y());
    y2 = gfx_clamp(y2, 0, gfx_max_y());
    gfx_sort(y1, y2);
    DirtyRectAdd(x, y1, x + 1, y2);
    ElementUpdate(elementId, x, y1, x + 1, y2);
    U16* p = GET_LAYER_BUFFER(layer) + (U32)y1 * gScreenWidth + (U32)x;
    for (S32 y = y1; y <= y2; y++, p += gScreenWidth) *p = colour;
}
