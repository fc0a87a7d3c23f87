#include "antialias.h"

#include <cstdlib>

#include "b_fill.h"
#include "dirtyrect.h"
#include "elements.h"
#include "gfx_plot.h"

namespace {

// One record per row of the virtual screen: the least and greatest centre column the
// edges of the polygon being filled entered in that row.
struct EDGE_T {
    S16 least;
    S16 greatest;
};
constexpr S16 EDGE_EMPTY_LEAST = 10000;
constexpr S16 EDGE_EMPTY_GREATEST = -1;
constexpr S32 EDGE_ROWS = 2 * (S32)MAX_SCREEN_HEIGHT;

// What an edge walk does with its pixels.
enum AA_MODE_T {
    AA_STROKE,  // solid centre, sides blended into the layer's own pixel
    AA_EDGE,    // centre into the edge table, sides blended against the back layer
    AA_LINE,    // as AA_STROKE, with half-weighted sides and caps at the two ends
};

}  // namespace

// The colour being drawn, by component (blue, green, red), and the edge table; scratch
// space of the main thread.
static U16 d1, d2, d3;
static EDGE_T edgearray[EDGE_ROWS];

// Highest row of the virtual screen that the edge table also holds.
static S32 _maxRow(void)
{
    return CLAMPMAX(gfx_max_y(), EDGE_ROWS - 1);
}

static void _setColour(U16 colour)
{
    d1 = (U16)RGB_GET_BLUE(colour);
    d2 = (U16)RGB_GET_GREEN(colour);
    d3 = (U16)RGB_GET_RED(colour);
}

// The colour over `dst`, where w is the weight of the destination (0 .. 0x10000).
static inline U16 _blend(U16 dst, S32 w)
{
    const S32 r = (S32)d3 - ((((S32)d3 - (S32)RGB_GET_RED(dst)) * w) >> 16);
    const S32 g = (S32)d2 - ((((S32)d2 - (S32)RGB_GET_GREEN(dst)) * w) >> 16);
    const S32 b = (S32)d1 - ((((S32)d1 - (S32)RGB_GET_BLUE(dst)) * w) >> 16);
    return (U16)((r << 11) | ((g << 5) & 0x07E0) | (b & 31));
}

static inline fixed _toFixed(float v)
{
    return (fixed)(vertex_coord(v) * 65536.0f);
}

// Blends one side pixel, if it lies on the virtual screen.
template <AA_MODE_T MODE>
static inline void _side(S32 x, S32 y, S32 w, U16* layerBuf, bool front)
{
    if ((U32)x > (U32)gfx_max_x() || (U32)y > (U32)_maxRow()) return;
    const U32 i = (U32)y * gScreenWidth + (U32)x;
    U16 dst;
    if (MODE == AA_EDGE) {
        dst = Layer1Buffer[i];
    } else {
        dst = layerBuf[i];
        if (front && dst == ALPHA_COLOR) dst = Layer1Buffer[i];
    }
    layerBuf[i] = _blend(dst, w);
}

static inline void _enterEdge(S32 row, S32 column)
{
    EDGE_T& e = edgearray[row];
    if (column < e.least) e.least = (S16)column;
    if (column > e.greatest) e.greatest = (S16)column;
}

// The walk along the major axis a from first to last, the minor position m (16.16)
// moving by gradient each step. STEEP: a is the row and m the column.
template <AA_MODE_T MODE, bool STEEP>
static void _walk(S32 first, S32 last, fixed m, fixed gradient, S32 firstEnd, S32 lastEnd, U16 colour, LAYER_T layer)
{
    U16* const buf = GET_LAYER_BUFFER(layer);
    const bool front = layer != LAYER1;
    const S32 maxX = gfx_max_x(), maxY = _maxRow();
    // The pixel at major position a, minor position p.
    const auto side = [&](S32 a, S32 p, S32 weight) { _side<MODE>(STEEP ? p : a, STEEP ? a : p, weight, buf, front); };
    for (S32 a = first; a <= last; a++, m += gradient) {
        const S32 p = m >> 16;
        const S32 f = m & 0xFFFF;
        if (MODE == AA_LINE && (a == firstEnd || a == lastEnd)) {
            // Softened ends: half-weighted sides, and a half-weighted cap beyond each end.
            side(a, p - 1, 0x8000);
            side(a, p + 1, 0x8000);
            if (a == firstEnd) side(a - 1, p, 0x8000);
            if (a == lastEnd) side(a + 1, p, 0x8000);
        } else {
            side(a, p - 1, f);
            side(a, p + 1, 0x10000 - f);
        }
        const S32 x = STEEP ? p : a, y = STEEP ? a : p;
        if ((U32)y > (U32)maxY) continue;
        if (MODE == AA_EDGE) {
            _enterEdge(y, x);
        } else if ((U32)x <= (U32)maxX) {
            buf[(U32)y * gScreenWidth + (U32)x] = colour;
        }
    }
}

// One edge or line from (x1, y1) to (x2, y2) in 16.16: three pixels across the major
// axis at every whole major position of it, ends included.
template <AA_MODE_T MODE>
static void _aline(fixed x1, fixed y1, fixed x2, fixed y2, U16 colour, LAYER_T layer)
{
    const bool steep = llabs((S64)y2 - y1) > llabs((S64)x2 - x1);
    fixed a0 = steep ? y1 : x1, a1 = steep ? y2 : x2;  // major axis
    fixed b0 = steep ? x1 : y1, b1 = steep ? x2 : y2;  // minor axis
    if (a1 < a0) {
        const fixed ta = a0, tb = b0;
        a0 = a1;
        b0 = b1;
        a1 = ta;
        b1 = tb;
    }
    const S64 dMajor = (S64)a1 - a0;
    const fixed gradient = dMajor ? (fixed)((((S64)b1 - b0) * 65536) / dMajor) : 0;
    // Nothing of a line whose every minor position is two or more off the screen can show.
    // A steep polygon edge left or right of the screen still bounds the rows it passes.
    if (MODE != AA_EDGE || !steep) {
        const S32 bLo = (b0 < b1 ? b0 : b1) >> 16, bHi = (b0 < b1 ? b1 : b0) >> 16;
        if (bHi + 2 < 0 || bLo - 2 > (steep ? gfx_max_x() : _maxRow())) return;
    }

    const S32 firstEnd = a0 >> 16, lastEnd = a1 >> 16;
    S32 first = firstEnd, last = lastEnd;
    fixed m = b0;
    // Major positions off the screen draw nothing; they are skipped rather than walked.
    // Only a flat polygon edge keeps them, as its off-screen columns still widen the rows
    // it passes through.
    if (steep || MODE != AA_EDGE) {
        if (first < 0) {
            m = (fixed)(m + (S64)(0 - first) * gradient);
            first = 0;
        }
        last = CLAMPMAX(last, steep ? _maxRow() : gfx_max_x());
    }
    if (steep) {
        _walk<MODE, true>(first, last, m, gradient, firstEnd, lastEnd, colour, layer);
    } else {
        _walk<MODE, false>(first, last, m, gradient, firstEnd, lastEnd, colour, layer);
    }
}

// Along every edge of the polygon, closing back to vertex 0.
template <AA_MODE_T MODE>
static void _edges(S32 vertexCount, const VERTEX_T* v, U16 colour, LAYER_T layer)
{
    _setColour(colour);
    for (S32 i = 0; i < vertexCount; i++) {
        const VERTEX_T& a = v[i];
        const VERTEX_T& b = v[i + 1 < vertexCount ? i + 1 : 0];
        _aline<MODE>(_toFixed(a.x), _toFixed(a.y), _toFixed(b.x), _toFixed(b.y), colour, layer);
    }
}

// The polygon's bounding box on the virtual screen, recorded with a margin for its
// feathered edges.
static GFX_RECT_T _polyBox(U32 elementId, S32 vertexCount, const VERTEX_T* v)
{
    S32 minX = 10000, minY = 10000, maxX = -10000, maxY = -10000;
    for (S32 i = 0; i < vertexCount; i++) {
        const S32 x = vertex_to_int(v[i].x), y = vertex_to_int(v[i].y);
        minX = x < minX ? x : minX;
        maxX = x > maxX ? x : maxX;
        minY = y < minY ? y : minY;
        maxY = y > maxY ? y : maxY;
    }
    const GFX_RECT_T box = {CLAMPMAX(CLAMPMIN(minX, 0), gfx_max_x()), CLAMPMAX(CLAMPMIN(minY, 0), gfx_max_y()),
                            CLAMPMAX(CLAMPMIN(maxX, 0), gfx_max_x()), CLAMPMAX(CLAMPMIN(maxY, 0), gfx_max_y())};
    DirtyRectAdd(box.Left - 2, box.Top - 2, box.Right + 4, box.Bottom + 4);
    ElementUpdate(elementId, box.Left - 2, box.Top - 2, box.Right + 4, box.Bottom + 4);
    return box;
}

void VertexFillEle(U32 elementId, S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    if (vertexCount < 1 || !pVertexArray) return;
    float minX = 10000.0f, minY = 10000.0f, maxX = -10000.0f, maxY = -10000.0f;
    for (S32 i = 0; i < vertexCount; i++) {
        const VERTEX_T& v = pVertexArray[i];
        if (v.x < minX) minX = v.x;
        if (v.x > maxX) maxX = v.x;
        if (v.y < minY) minY = v.y;
        if (v.y > maxY) maxY = v.y;
    }
    if (!(minX > 0 && minY > 0 && maxX > 0 && maxY > 0)) return;
    blockfillExEle(elementId, vertex_to_int(minX) - 2, vertex_to_int(minY) - 2, vertex_to_int(maxX) + 2,
                   vertex_to_int(maxY) + 2, rgbColour, opacity, layer);
}

void PolyFillAAEle(U32 elementId, S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity,
                   LAYER_T layer)
{
    if (!pVertexArray) vertexCount = 0;
    const GFX_RECT_T box = _polyBox(elementId, vertexCount, pVertexArray);
    if (opacity == 0 || vertexCount < 1) return;

    const S32 bottom = CLAMPMAX(box.Bottom, _maxRow());
    for (S32 y = box.Top; y <= bottom; y++) edgearray[y] = {EDGE_EMPTY_LEAST, EDGE_EMPTY_GREATEST};
    _edges<AA_EDGE>(vertexCount, pVertexArray, rgbColour, layer);

    U16* const buf = GET_LAYER_BUFFER(layer);
    const S32 maxX = gfx_max_x();
    const S32 w = opacity > 99 ? 0 : 0x10000 - (S32)(((float)opacity / 100.0f) * 65536.0f);
    for (S32 y = box.Top; y <= bottom; y++) {
        const EDGE_T e = edgearray[y];
        if (e.least == EDGE_EMPTY_LEAST || e.greatest == EDGE_EMPTY_GREATEST) continue;
        const S32 least = gfx_clamp(e.least, 0, maxX), greatest = gfx_clamp(e.greatest, 0, maxX);
        const U32 row = (U32)y * gScreenWidth;
        if (opacity > 99) {
            lcd_fill_pixels(buf + row + (U32)least, (U32)(greatest - least + 1), rgbColour);
        } else {
            // Against the back layer, even when the result goes to the front layer.
            for (U32 i = row + (U32)least, end = row + (U32)greatest; i <= end; i++) buf[i] = _blend(Layer1Buffer[i], w);
        }
    }
}

void PolyFillAA(S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    PolyFillAAEle(ELEMENTID_INVALID, vertexCount, pVertexArray, rgbColour, opacity, layer);
}

void PolyStrokeAAEle(U32 elementId, S32 vertexCount, VERTEX_T* pVertexArray, U16 rgbColour, U32 opacity,
                     LAYER_T layer)
{
    if (!pVertexArray) vertexCount = 0;
    _polyBox(elementId, vertexCount, pVertexArray);
    if (opacity == 0) return;
    _edges<AA_STROKE>(vertexCount, pVertexArray, rgbColour, layer);
}

void LineAAEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, U32 opacity, LAYER_T layer)
{
    x1 = gfx_clamp(x1, 0, gfx_max_x());
    x2 = gfx_clamp(x2, 0, gfx_max_x());
    y1 = gfx_clamp(y1, 0, _maxRow());
    y2 = gfx_clamp(y2, 0, _maxRow());
    const S32 left = x1 < x2 ? x1 : x2, right = x1 < x2 ? x2 : x1;
    const S32 top = y1 < y2 ? y1 : y2, bottom = y1 < y2 ? y2 : y1;
    DirtyRectAdd(left - 1, top - 1, right + 2, bottom + 2);
    ElementUpdate(elementId, left - 1, top - 1, right + 2, bottom + 2);
    if (opacity == 0) return;
    _setColour(rgbColour);
    _aline<AA_LINE>(itofx(x1), itofx(y1), itofx(x2), itofx(y2), rgbColour, layer);
}
