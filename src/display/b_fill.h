#pragma once
// Filled blocks, plain and translucent, and cleared ones.
#include "gfx_types.h"

void blockfillExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, U32 opacity, LAYER_T layer);
void blockfillEx(S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, U32 opacity, LAYER_T layer);
void blockfillRectEle(U32 elementId, const GFX_RECT_T* rect, U16 rgbColour, U32 opacity, LAYER_T layer);
void blockclearExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, LAYER_T layer);
void blockclearEx(S32 x1, S32 y1, S32 x2, S32 y2, U16 rgbColour, LAYER_T layer);
void blockclearRectEle(U32 elementId, const GFX_RECT_T* rect, U16 rgbColour, LAYER_T layer);
