#include "list_screen.h"

#include "freetype_api.h"
#include "images.h"
#include "lcd_blan.h"
#include "outimage.h"

void ListScreenCreate(const char* title)
{
    vLcdBlankerEx(0, 65535);
    outimageEx(0, 0, &image_LAbHh, 100, ALPHA_OVERWRITE, LAYER1);
    outtextxyEx(160, 10, title, FONT_INDEX_TTARIAL, 22, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, 0, LIST_SCREEN_TEXT_COLOUR,
                100, LAYER1);
}

void ListScreenText(U32 elementId, S32 x, S32 y, const char* text, FTF_HORIZONTAL_ALIGNMENT_T align, S32 spacing,
                    U16 colour, LAYER_T layer)
{
    outtextxyExEle(elementId, x, y, text, FONT_INDEX_TTARIAL, LIST_SCREEN_TEXT_SIZE, align, VERTICAL_ALIGNMENT_TOP,
                   spacing, colour, 100, layer);
}
