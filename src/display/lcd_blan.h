#pragma once
// Whole-screen fills of the layers.
#include "gfx_types.h"

void fill_lcd_screen(U16 colour, LAYER_T layer);
void vLcdBlankerEx(U16 layer1Colour, U16 layer2Colour);
