#include "sdk_init.h"

#include "buzzer_drv.h"
#include "dirtyrect.h"
#include "eeprom_drv.h"
#include "freetype_api.h"
#include "gpio_drv.h"
#include "keypad_drv.h"
#include "lcd_blan.h"
#include "lcdc_drv.h"
#include "timer_drv.h"
#include "ttfonts.h"
#include "watchdog_drv.h"

void platform_init(void)
{
    watchdog_init();
    timer_init(PLATFORM_TIMERS);
    gpio_init();
    keypad_init();
    buzzer_init();
    buzzer_out(0);
    eeprom_init();
    lcd_init();
    DirtyRectInit();
    lcd_set_backlight_level(255);
    keypad_set_backlight_level(255);
}

void portable_init(void)
{
    // Without FreeType text is simply absent: the result is not needed.
    FTFInit(gpaFreetypeFontData, 6);
    // Back layer black, front layer transparent: also puts the whole screen into the
    // dirty lists of all three pages.
    vLcdBlankerEx(BLACK, ALPHA_COLOR);
}

void sdk_init(void)
{
    platform_init();
    portable_init();
}
