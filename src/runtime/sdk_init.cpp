#include "sdk_init.h"

#include "dirtyrect.h"
#include "eeprom_drv.h"
#include "lcd_blan.h"
#include "lcdc_drv.h"
#include "timer_drv.h"

enum { PLATFORM_TIMERS = 20 };

void platform_init(void)
{
    timer_init(PLATFORM_TIMERS);
    eeprom_init();
    lcd_init();
    DirtyRectInit();
    lcd_set_backlight_level(255);
}

void portable_init(void)
{
    // Back layer black, front layer transparent: also puts the whole screen into the
    // dirty lists of all three pages.
    vLcdBlankerEx(BLACK, ALPHA_COLOR);
}

void sdk_init(void)
{
    platform_init();
    portable_init();
}
