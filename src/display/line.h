#pragma once
// Lines of any direction.
#include "gfx_types.h"

void lineExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
               LAYER_T layer);
void lineEx(S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity, LAYER_T layer);
