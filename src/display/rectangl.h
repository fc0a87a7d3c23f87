#pragma once
// Rectangle outlines and framed windows.
#include "gfx_types.h"

void rectangleExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour,
                    U32 opacity, LAYER_T layer);
void rectangleEx(S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity, LAYER_T layer);
void drawrectangleEle(U32 elementId, S32 x, S32 y, S32 width, S32 height, U16 colour, LAYER_T layer);
void draw_windowEle(U32 elementId, S32 x, S32 y, S32 width, S32 height, S32 border, U16 colour, LAYER_T layer);
