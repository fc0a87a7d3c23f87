#pragma once
// Vertical lines.
#include "gfx_types.h"

void vlineExEle(U32 elementId, S32 x, S32 y1, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
                LAYER_T layer);
// One pixel wide, plain.
void draw_line_verticalEle(U32 elementId, S32 y1, S32 y2, S32 x, U16 colour, LAYER_T layer);
