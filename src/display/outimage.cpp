#include "outimage.h"

#include <cmath>
#include <cstring>

#include "alphablend.h"
#include "dirtyrect.h"
#include "elements.h"
#include "gfx_plot.h"

namespace {

// Pictures larger than the largest layer cannot be meant; their header is wrong.
constexpr U32 MAX_IMAGE_SIDE = 4096;

const S_ImageHeader* _header(const void* image)
{
    const S_ImageHeader* h = static_cast<const S_ImageHeader*>(image);
    if (!h || h->nb_layer != 0 || h->x == 0 || h->y == 0 || h->x > MAX_IMAGE_SIDE || h->y > MAX_IMAGE_SIDE) return nullptr;
    return h;
}

const U16* _pixels(const S_ImageHeader* h)
{
    return reinterpret_cast<const U16*>(h + 1);
}

// One row of the copy with transparent pixels kept: two pixels a word when both ends
// are aligned alike.
void _copyRow(U16* dst, const U16* src, U32 n)
{
    if ((((uintptr_t)dst ^ (uintptr_t)src) & 2) == 0 && n >= 4) {
        if ((uintptr_t)dst & 2) {
            *dst++ = *src++;
            n--;
        }
        memcpy(dst, src, (size_t)(n & ~1u) * 2);
        if (n & 1) dst[n - 1] = src[n - 1];
        return;
    }
    memcpy(dst, src, (size_t)n * 2);
}

}  // namespace

U32 uiGetImageWidth(const void* image)
{
    return image ? static_cast<const S_ImageHeader*>(image)->x : 0;
}

U32 uiGetImageHeight(const void* image)
{
    return image ? static_cast<const S_ImageHeader*>(image)->y : 0;
}

void outimageareaEle(U32 elementId, S32 destLeftX, S32 destTopY, const void* pSrcBitmap, S32 srcLeft, S32 srcTop,
                     S32 srcRight, S32 srcBottom, U32 opacity, ALPHACONTROL_T alphaControl, LAYER_T layer)
{
    const S_ImageHeader* h = _header(pSrcBitmap);
    if (!h) return;
    const S32 w = (S32)h->x, ih = (S32)h->y;
    const S32 W = (S32)gScreenWidth, H2 = 2 * (S32)gScreenHeight;
    srcLeft = gfx_clamp(srcLeft, 0, w - 1);
    srcRight = gfx_clamp(srcRight, 0, w - 1);
    srcTop = gfx_clamp(srcTop, 0, ih - 1);
    srcBottom = gfx_clamp(srcBottom, 0, ih - 1);
    // Cut what lies left of or above the screen (64-bit: the offsets may be anything).
    if (destLeftX < 0) {
        const S64 s = (S64)srcLeft - destLeftX;
        srcLeft = (S32)(s < w - 1 ? s : w - 1);
        destLeftX = 0;
    }
    if (destTopY < 0) {
        const S64 s = (S64)srcTop - destTopY;
        srcTop = (S32)(s < ih - 1 ? s : ih - 1);
        destTopY = 0;
    }
    const S64 right64 = (S64)destLeftX + srcRight - srcLeft, bottom64 = (S64)destTopY + srcBottom - srcTop;
    const S32 right = (S32)(right64 < 0 ? 0 : right64 > W - 1 ? W - 1 : right64);
    const S32 bottom = (S32)(bottom64 < 0 ? 0 : bottom64 > H2 - 1 ? H2 - 1 : bottom64);
    DirtyRectAdd(destLeftX, destTopY, right, bottom);
    ElementUpdate(elementId, destLeftX, destTopY, right, bottom);
    if (opacity == 0 || destLeftX >= W || destTopY >= H2 || right < destLeftX) return;

    const U32 cols = (U32)(right - destLeftX + 1);
    const bool overwrite = alphaControl != ALPHA_INVARIANT;
    const U16* src = _pixels(h) + (U32)srcTop * (U32)w + (U32)srcLeft;
    U32 at = (U32)destTopY * (U32)W + (U32)destLeftX;
    U16* layerBuf = GET_LAYER_BUFFER(layer);
    const ALPHABLEND_T blend = alphablend_prepare(opacity < 100 ? opacity : 1);
    for (S32 y = destTopY; y <= bottom; y++, src += w, at += (U32)W) {
        U16* dst = layerBuf + at;
        if (opacity > 99) {
            if (overwrite) {
                _copyRow(dst, src, cols);
            } else {
                for (U32 x = 0; x < cols; x++) {
                    if (src[x] != ALPHA_COLOR) dst[x] = src[x];
                }
            }
        } else if (layer == LAYER1) {
            // A transparent pixel with overwrite blends in as white.
            for (U32 x = 0; x < cols; x++) {
                if (src[x] != ALPHA_COLOR || overwrite) dst[x] = alphablend_pixel(blend, src[x], dst[x]);
            }
        } else {
            const U16* back = Layer1Buffer + at;
            for (U32 x = 0; x < cols; x++) {
                if (src[x] == ALPHA_COLOR) {
                    if (overwrite) dst[x] = ALPHA_COLOR;
                    continue;
                }
                dst[x] = alphablend_pixel(blend, src[x], dst[x] == ALPHA_COLOR ? back[x] : dst[x]);
            }
        }
    }
}

void outimageExEle(U32 elementId, S32 destLeftX, S32 destTopY, const void* pSrcBitmap, U32 opacity,
                   ALPHACONTROL_T alphaControl, LAYER_T layer)
{
    const S_ImageHeader* h = _header(pSrcBitmap);
    if (!h) return;
    outimageareaEle(elementId, destLeftX, destTopY, pSrcBitmap, 0, 0, (S32)h->x - 1, (S32)h->y - 1, opacity,
                    alphaControl, layer);
}

void outimageEx(S32 destLeftX, S32 destTopY, const void* pSrcBitmap, U32 opacity, ALPHACONTROL_T alphaControl,
                LAYER_T layer)
{
    outimageExEle(ELEMENTID_INVALID, destLeftX, destTopY, pSrcBitmap, opacity, alphaControl, layer);
}

void outimagerotateExEle(U32 elementId, const S32* pivot, const void* pSrcBitmap, S32 angle, const S32* centre,
                         GFX_RECT_T* pResultRect, ALPHACONTROL_T alphaControl, LAYER_T layer)
{
    const S_ImageHeader* h = _header(pSrcBitmap);
    if (!h || !pivot || !centre) return;
    angle %= 360;
    if (angle < 0) angle += 360;
    const double radians = (double)((float)angle * 0.017453292f);
    const S64 S = (S64)(sin(radians) * 65536.0), C = (S64)(cos(radians) * 65536.0);
    const S64 w = (S64)h->x, ih = (S64)h->y;
    // Far-off pivots and centres cannot overflow the 16.16 products: keep them in range.
    const S64 px = gfx_clamp(pivot[0], -65536, 65536), py = gfx_clamp(pivot[1], -65536, 65536);
    const S64 cx = gfx_clamp(centre[0], -65536, 65536), cy = gfx_clamp(centre[1], -65536, 65536);

    S64 minX = INT64_MAX, maxX = INT64_MIN, minY = INT64_MAX, maxY = INT64_MIN;
    for (const S64 X : {-px, w - 1 - px}) {
        for (const S64 Y : {-py, ih - 1 - py}) {
            const S64 xr = (cx << 16) + ((X * C) >> 0) - Y * S;
            const S64 yr = (cy << 16) + Y * C + X * S;
            minX = xr < minX ? xr : minX;
            maxX = xr > maxX ? xr : maxX;
            minY = yr < minY ? yr : minY;
            maxY = yr > maxY ? yr : maxY;
        }
    }
    GFX_RECT_T box = {(S32)gfx_clamp((S32)(minX >> 16), 0, INT32_MAX), (S32)gfx_clamp((S32)(minY >> 16), 0, INT32_MAX),
                      (S32)gfx_clamp((S32)(maxX >> 16), INT32_MIN, gfx_max_x()),
                      (S32)gfx_clamp((S32)(maxY >> 16), INT32_MIN, gfx_max_y())};

    const U16* pixels = _pixels(h);
    U16* dst = GET_LAYER_BUFFER(layer);
    const bool invariant = alphaControl == ALPHA_INVARIANT;
    for (S32 row = box.Bottom; row >= box.Top; row--) {
        const S64 dy = row - cy, dx0 = box.Left - cx;
        S64 sx = (px << 16) + dx0 * C + dy * S;
        S64 sy = (py << 16) - dx0 * S + dy * C;
        U16* out = dst + (U32)row * gScreenWidth;
        for (S32 col = box.Left; col <= box.Right; col++, sx += C, sy -= S) {
            const S64 ix = sx >> 16, iy = sy >> 16;
            if (ix < 0 || ix >= w || iy < 0 || iy >= ih) continue;
            const U16 p = pixels[iy * w + ix];
            if (invariant && p == ALPHA_COLOR) continue;
            out[col] = p;
        }
    }
    DirtyRectAddFromRect(&box);
    ElementUpdateFromRect(elementId, &box);
    if (pResultRect) *pResultRect = box;
}
