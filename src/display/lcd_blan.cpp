#include "lcd_blan.h"

#include "dirtyrect.h"
#include "lcd_buffer.h"

void fill_lcd_screen(U16 colour, LAYER_T layer)
{
    DirtyRectAdd(0, 0, (S32)gScreenWidth - 1, (S32)gScreenHeight - 1);
    lcd_fill_pixels(GET_LAYER_BUFFER(layer), gScreenWidth * gScreenHeight, colour);
}

void vLcdBlankerEx(U16 layer1Colour, U16 layer2Colour)
{
    fill_lcd_screen(layer1Colour, LAYER1);
    fill_lcd_screen(layer2Colour, LAYER2);
}
