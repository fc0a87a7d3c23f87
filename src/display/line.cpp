#include "line.h"

#include <cstdlib>

#include "dirtyrect.h"
#include "elements.h"
#include "gfx_plot.h"

void lineExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
               LAYER_T layer)
{
    const S32 reach = gfx_stroke_reach(thickness);
    // Each end is moved into range on its own: a line off the screen bends at the edge.
    x1 = gfx_clamp(x1, reach, gfx_max_x() - reach);
    x2 = gfx_clamp(x2, reach, gfx_max_x() - reach);
    y1 = gfx_clamp(y1, reach, gfx_max_y() - reach);
    y2 = gfx_clamp(y2, reach, gfx_max_y() - reach);
    const S32 left = x1 < x2 ? x1 : x2, right = x1 < x2 ? x2 : x1;
    const S32 top = y1 < y2 ? y1 : y2, bottom = y1 < y2 ? y2 : y1;
    DirtyRectAdd(left - reach, top - reach, right + reach, bottom + reach);
    ElementUpdate(elementId, left - reach, top - reach, right + reach, bottom + reach);
    if (opacity == 0) return;

    const U32 w = gScreenWidth;
    S32 dx = x2 - x1, dy = y2 - y1;
    if (dx == 0 && dy == 0) {
        GET_LAYER_BUFFER(layer)[(U32)y1 * w + (U32)x1] = rgbColour;
        return;
    }
    // A 45 degree line counts as y-major. Positions are (major, minor).
    const bool yMajor = abs(dx) <= abs(dy);
    S32 m0 = yMajor ? y1 : x1, n0 = yMajor ? x1 : y1;
    S32 m1 = yMajor ? y2 : x2;
    S32 dM = yMajor ? dy : dx, dm = yMajor ? dx : dy;
    if (dM < 0) {
        m0 = m1;
        n0 = yMajor ? x2 : y2;
        m1 = yMajor ? y1 : x1;
        dM = -dM;
        dm = -dm;
    }
    const S32 step = dm > 0 ? 1 : -1;
    const S32 adm = abs(dm);
    const bool dotted = style == DOTTED;
    gfx_with_plot(rgbColour, opacity, layer, [&](auto plot) {
        S32 e = -dM;
        S32 n = n0;
        for (S32 m = m0; m <= m1; m++) {
            const S32 px = yMajor ? n : m, py = yMajor ? m : n;
            if (e >= 0) {
                e -= 2 * dM;
                n += step;
            }
            e += 2 * adm;
            if (dotted && (m & 1)) continue;
            // The stroke's cross-section is vertical on an x-major line, horizontal on a y-major one.
            for (S32 k = -reach; k <= reach; k++) {
                plot(yMajor ? (U32)py * w + (U32)(px + k) : (U32)(py + k) * w + (U32)px);
            }
        }
    });
}

void lineEx(S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    lineExEle(ELEMENTID_INVALID, x1, y1, x2, y2, thickness, style, rgbColour, opacity, layer);
}
