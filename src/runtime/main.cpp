#include "main.h"

#include <unistd.h>

#include "app_lock.h"
#include "hw_user.h"
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
    AppLock();
    QuorinStep();
    AppUnlock();
    // The compositor's wait for the vertical blank paces this loop; until the
    // display engine is in, wait one frame period of the 60 Hz panel here.
    usleep(1000000 / 60);
}

U32 ticks(void)
{
    return get_uptime_milliseconds() - startTick;
}
