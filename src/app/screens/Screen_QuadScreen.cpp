#include "Screen_QuadScreen.h"

#include "freetype_api.h"
#include "images.h"
#include "lcd_blan.h"
#include "navigation.h"
#include "outimage.h"

void Screen_QuadScreen_Enter(void)
{
    MainScreenEnter(MAIN_SCREEN_QUAD, BUTTONBARMODE_INVISIBLE);
}

void Screen_QuadScreen_Create(void)
{
    vLcdBlankerEx(0, 65535);
    outimageEx(0, 0, &image_NZET6, 100, ALPHA_INVARIANT, LAYER1);
    // The page's gauges come with the gauge page itself; until then its name.
    outtextxyEx(160, 110, "QUAD GAUGES", FONT_INDEX_TTARIAL, 22, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, 0, 0xFFFD, 100,
                LAYER1);
}

void Screen_QuadScreen_Update(void)
{
}
