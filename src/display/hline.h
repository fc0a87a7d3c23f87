#pragma once
// Horizontal lines.
#include "gfx_types.h"

void hlineExEle(U32 elementId, S32 x1, S32 y, S32 x2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
                LAYER_T layer);
// One pixel high, plain.
void draw_line_horizontalEle(U32 elementId, S32 x1, S32 x2, S32 y, U16 colour, LAYER_T layer);
