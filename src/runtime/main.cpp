#include "main.h"

#include "app_lock.h"
#include "buttonbar.h"
#include "can_ports.h"
#include "eventhandler.h"
#include "hw_user.h"
#include "layer_merger.h"
#include "mmi.h"
#include "sdk_init.h"
#include "timer_drv.h"
#include "watchdog_drv.h"

namespace {
U32 startTick = 0;
}

void ZelvoMainInit(void)
{
    sdk_init();
    MMIInit(MMI_SCREENS, MMI_STACK, MMI_HOOKS);
    EventHandlerInit();
    startTick = get_uptime_milliseconds();
}

void ZelvoMain(void)
{
    watchdog_refresh();
    ButtonBarInit();
    QuorinInit();
}

void ZelvoMainLoop(void)
{
    // Refreshed here and in ZelvoMain only: a stuck main thread is what it catches.
    watchdog_refresh();
    AppLock();
    CANProcessRx();
    MMIProcess();
    AppUnlock();
    // The compositor waits for the vertical blank, which paces this loop: it runs
    // outside the application lock so that the tasks never wait for the panel.
    merge_layers();
    AppLock();
    EventHandlerProcess();
    QuorinStep();
    AppUnlock();
}

U32 ticks(void)
{
    return get_uptime_milliseconds() - startTick;
}
