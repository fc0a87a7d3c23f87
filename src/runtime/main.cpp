#include "main.h"

#include "app_lock.h"
#include "hw_user.h"
#include "layer_merger.h"
#include "sdk_init.h"
#include "timer_drv.h"

namespace {
U32 startTick = 0;
}

void ZelvoMainInit(void)
{
    sdk_init();
    startTick = get_uptime_milliseconds();
}

void ZelvoMain(void)
{
    QuorinInit();
}

void ZelvoMainLoop(void)
{
    // The compositor waits for the vertical blank, which paces this loop: it runs
    // outside the application lock so that the tasks never wait for the panel.
    merge_layers();
    AppLock();
    QuorinStep();
    AppUnlock();
}

U32 ticks(void)
{
    return get_uptime_milliseconds() - startTick;
}
