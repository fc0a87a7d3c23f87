#include "sdk_init.h"

#include "timer_drv.h"

enum { PLATFORM_TIMERS = 20 };

void platform_init(void)
{
    timer_init(PLATFORM_TIMERS);
}

void portable_init(void)
{
}

void sdk_init(void)
{
    platform_init();
    portable_init();
}
