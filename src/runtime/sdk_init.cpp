#include "sdk_init.h"

#include "eeprom_drv.h"
#include "timer_drv.h"

enum { PLATFORM_TIMERS = 20 };

void platform_init(void)
{
    timer_init(PLATFORM_TIMERS);
    eeprom_init();
}

void portable_init(void)
{
}

void sdk_init(void)
{
    platform_init();
    portable_init();
}
