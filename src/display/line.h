#pragma once
// Lines of any direction, axis-parallel lines and rectangle outlines.
#include "gfx_types.h"

void lineExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
               LAYER_T layer);
void lineEx(S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity, LAYER_T layer);
void hlineExEle(U32 elementId, S32 x1, S32 y, S32 x2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
                LAYER_T layer);
void vlineExEle(U32 elementId, S32 x, S32 y1, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity,
                LAYER_T layer);
void rectangleExEle(U32 elementId, S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour,
                    U32 opacity, LAYER_T layer);
void rectangleEx(S32 x1, S32 y1, S32 x2, S32 y2, S32 thickness, S32 style, U16 rgbColour, U32 opacity, LAYER_T layer);
// One-pixel plain lines.
void draw_line_horizontalEle(U32 elementId, S32 x1, S32 x2, S32 y, U16 colour, LAYER_T layer);
void draw_line_verticalEle(U32 elementId, S32 y1, S32 y2, S32 x, U16 colour, LAYER_T layer);
