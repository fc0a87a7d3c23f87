#pragma once
// Constant RGB565 pictures into a layer: whole, a part, or turned about a pivot.
#include <cstddef>

#include "gfx_types.h"

// The constant image record, as stored: nb_layer (0, or the image is not drawn), three
// bytes of padding, width x, height y, then x * y RGB565 pixels row by row, top row
// first; 0xFFFF is a transparent pixel. Each picture is one object of exactly its size;
// code holds them as BITMAPA* or const void*.
typedef const struct BITMAPA_T {
    U8 nb_layer;
    U8 pad[3];
    U32 x;
    U32 y;
    U16 bitmap[];
} BITMAPA;
static_assert(offsetof(BITMAPA_T, x) == 4 && offsetof(BITMAPA_T, y) == 8);
static_assert(offsetof(BITMAPA_T, bitmap) == 12);

// The same record without its pixels.
struct S_ImageHeader {
    U8 nb_layer;  // must be 0
    U8 pad[3];
    U32 x;        // width
    U32 y;        // height
};
static_assert(sizeof(S_ImageHeader) == 12);
static_assert(offsetof(S_ImageHeader, x) == 4);
static_assert(offsetof(S_ImageHeader, y) == 8);

U32 uiGetImageWidth(const void* image);
U32 uiGetImageHeight(const void* image);

void outimageExEle(U32 elementId, S32 destLeftX, S32 destTopY, const void* pSrcBitmap, U32 opacity,
                   ALPHACONTROL_T alphaControl, LAYER_T layer);
void outimageEx(S32 destLeftX, S32 destTopY, const void* pSrcBitmap, U32 opacity, ALPHACONTROL_T alphaControl,
                LAYER_T layer);
void outimageareaEle(U32 elementId, S32 destLeftX, S32 destTopY, const void* pSrcBitmap, S32 srcLeft, S32 srcTop,
                     S32 srcRight, S32 srcBottom, U32 opacity, ALPHACONTROL_T alphaControl, LAYER_T layer);
void outimagerotateExEle(U32 elementId, const S32* pivot, const void* pSrcBitmap, S32 angle, const S32* centre,
                         GFX_RECT_T* pResultRect, ALPHACONTROL_T alphaControl, LAYER_T layer);
