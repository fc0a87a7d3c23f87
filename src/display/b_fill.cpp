#include "dirtyrect.h"
#include "elements.h"
#include "gfx_plot.h"
#include "b_fill.h"

// The rectangle of two corners in any order, and its copy clamped to the virtual screen.
static GFX_RECT_T _sorted(S32 x1, S32 y1, S32 x2, S32 y2)
{
    return {x1 < x2 ? x1 : x2, y1 < y2 ? y1 : y2, x1 < x2 ? x2 : x1, y1 < y2 ? y2 : y1};
}

static GFX_RECT_T _clamped(const GFX_RECT_T* r)
{
    return {gfx_clamp(r->Left, 0, gfx_max_x()), gfx_clamp(r->Top, 0, gfx_max_y()), gfx_clamp(r->Right, 0, gfx_max_x()),
            gfx_clamp(r->Bottom, 0, gfx_max_y())};
}

static void _fill(const GFX_RECT_T& r, U16 colour, LAYER_T layer)
{
    if (r.Right < r.Left) return;
    U16* row = GET_LAYER_BUFFER(layer) + (U32)r.Top * gScreenWidth + (U32)r.Left;
    for (S32 y = r.Top; y <= r.Bottom; y++, row += gScreenWidth) lcd_fill_pixels(row, (U32)(r.Right - r.Left + 1), colour);
}

void blockfillRectEle(U32 elementId, const GFX_RECT_T* rect, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    if (!rect) return;
    const GFX_RECT_T r = _clamped(rect);
    if (opacity == 0) return;
    DirtyRectAddFromRect(&r);
    ElementUpdateFromRect(elementId, &r);
    if (opacity > 99) {
        _fill(r, rgbColour, layer);
        return;
    }
    gfx_with_plot(rgbColour, opacity, layer, [&](auto plot) {
        U32 row = (U32)r.Top * gScreenWidth;
        for (S32 y = r.Top; y <= r.Bottom; y++, row += gScreenWidth) {
            for (U32 i = row + (U32)r.Left, end = row + (U32)r.Right; i <= end; i++) plot(i);
        }
    });
}

void blockfillExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    const GFX_RECT_T r = _sorted(x1, y1, x2, y2);
    blockfillRectEle(elementId, &r, rgbColour, opacity, layer);
}

void blockfillEx(S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    blockfillExEle(ELEMENTID_INVALID, x1, y1, x2, y2, rgbColour, opacity, layer);
}

void blockclearRectEle(U32 elementId, const GFX_RECT_T* rect, U16 rgbColour, LAYER_T layer)
{
    if (!rect) return;
    const GFX_RECT_T r = _clamped(rect);
    _fill(r, rgbColour, layer);
    DirtyRectAddFromRect(&r);
    ElementUpdateFromRect(elementId, &r);
}

void blockclearExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, LAYER_T layer)
{
    const GFX_RECT_T r = _sorted(x1, y1, x2, y2);
    blockclearRectEle(elementId, &r, rgbColour, layer);
}

void blockclearEx(S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, LAYER_T layer)
{
    blockclearExEle(ELEMENTID_INVALID, x1, y1, x2, y2, rgbColour, layer);
}
