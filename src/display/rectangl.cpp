#include "hline.h"
#include "vline.h"
#include "rectangl.h"

#include "dirtyrect.h"
#include "elements.h"
#include "gfx_plot.h"

void rectangleExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour,
                    U32 opacity, LAYER_T layer)
{
    // The corners belong to the horizontal lines.
    hlineExEle(elementId, x1, y1, x2, thickness, style, rgbColour, opacity, layer);
    vlineExEle(elementId, x1, gfx_add(y1, 1), gfx_add(y2, -1), thickness, style, rgbColour, opacity, layer);
    hlineExEle(elementId, x1, y2, x2, thickness, style, rgbColour, opacity, layer);
    vlineExEle(elementId, x2, gfx_add(y1, 1), gfx_add(y2, -1), thickness, style, rgbColour, opacity, layer);
}

void rectangleEx(S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    rectangleExEle(ELEMENTID_INVALID, x1, y1, x2, y2, thickness, style, rgbColour, opacity, layer);
}

void drawrectangleEle(U32 elementId, S32 x, S32 y, S32 width, S32 height, U16 colour, LAYER_T layer)
{
    const S32 maxX = gfx_max_x(), maxY = gfx_max_y();
    x = gfx_clamp(x, 0, maxX);
    y = gfx_clamp(y, 0, maxY);
    width = gfx_clamp(width, 0, maxX);
    height = gfx_clamp(height, 0, maxY);
    if (x + width >= maxX + 1) width = maxX - x;
    if (y + height >= maxY + 1) height = maxY - y;
    DirtyRectAdd(x, y, x + width - 1, y + height - 1);
    ElementUpdate(elementId, x, y, x + width - 1, y + height - 1);
    if (height < 1 || width < 1) return;
    U16* row = GET_LAYER_BUFFER(layer) + (U32)y * gScreenWidth + (U32)x;
    for (S32 r = 0; r < height; r++, row += gScreenWidth) lcd_fill_pixels(row, (U32)width, colour);
}

void draw_windowEle(U32 elementId, S32 x, S32 y, S32 width, S32 height, S32 border, U16 colour, LAYER_T layer)
{
    drawrectangleEle(elementId, x, y, width, height, colour, layer);
    // Overflow-safe: a huge border is simply too wide for the window.
    const S64 innerW = (S64)width - 2 * (S64)border, innerH = (S64)height - 2 * (S64)border;
    if (innerW >= 0 && innerH >= 0) {
        drawrectangleEle(elementId, gfx_add(x, border), gfx_add(y, border), gfx_add(0, innerW), gfx_add(0, innerH), ALPHA_COLOR, layer);
    }
}
