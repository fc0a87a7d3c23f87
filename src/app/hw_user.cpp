#include "hw_user.h"

#include "Timer_7Je7r.h"
#include "Velnor_Dorvik_V6c.h"
#include "can_ports.h"
#include "can_rx.h"
#include "data.h"
#include "iouser.h"
#include "settings.h"
#include "timer_drv.h"
#include "usb_log.h"
#include "xcp_can.h"
#include "xcp_core.h"
#include "xcp_target.h"

volatile U8 app_is_in_shutdown = 0;

namespace {

TASK_STATS_T m_taskStats[TASK_COUNT];

// What the tasks ask for (delay, period in ms). The tick is 10 ms and the timer
// service truncates: 5 ms runs every tick, 25 ms every second tick.
struct TASK_ROW_T {
    trigger_ref task;
    U32 delay_ms;
    U32 period_ms;
};
constexpr TASK_ROW_T m_taskTable[TASK_COUNT] = {
    {Thread_Foreground, 5, 5},
    {Thread_Foregroundx5, 25, 25},
    {Thread_Second, 1000, 1000},
};

}  // namespace

static void _countPass(U32 task)
{
    TASK_STATS_T* s = &m_taskStats[task];
    s->lastMs = get_uptime_milliseconds();
    if (s->passes++ == 0) s->firstMs = s->lastMs;
}

const TASK_STATS_T* TaskStats(U32 task)
{
    return task < TASK_COUNT ? &m_taskStats[task] : nullptr;
}

void Thread_Foreground(void)
{
    _countPass(TASK_FOREGROUND);
    if (!app_is_in_shutdown) {
        Velnor_Dorvik_V6c_step();
        Timer_7Je7r();
    }
    // The calibration link runs in shutdown too.
    Timed_Trigger_XCP();
    if (!app_is_in_shutdown) {
        UpdatePeriodicCanTx_285279__0022();
        UpdatePeriodicCanTx_285280__0051();
    }
}

void Thread_Foregroundx5(void)
{
    _countPass(TASK_FOREGROUNDX5);
    if (!app_is_in_shutdown) Timer_aUXrF();
}

void Thread_Second(void)
{
    _countPass(TASK_SECOND);
    if (!app_is_in_shutdown) Timer_G3xzZ();
}

void Thread_Foregroundx10(void) {}
void Thread_Foregroundx50(void) {}
void Thread_Background(void) {}
void Thread_Backgroundx2(void) {}
void Thread_Backgroundx5(void) {}
void Thread_Backgroundx10(void) {}
void Thread_Backgroundx20(void) {}
void Thread_Minute(void) {}

void AppTrigger_FGND_DJRWa(void)
{
    if (RAMVariables.START_SCREEN >= 255) RAMVariables.START_SCREEN = EEVariables_RAMShadow.CURRENT_SCREEN;
}

void App_Startup(void)
{
    app_is_in_shutdown = 0;
    AppTrigger_FGND_DJRWa();
}

void App_Shutdown(void)
{
    app_is_in_shutdown = 1;
}

void QuorinInit(void)
{
    App_EE_Init();
    initCONSTVariables(&CONSTVariables);
    initRAMEditVariables(&RAMEditVariables);
    Xcp_Initialize();
    // A tool's commands are answered on the main thread as their frames come in.
    CANSetXcpHandlers(XcpCan_RxCallback, Xcp_CmdProcessor);
    Velnor_Dorvik_V6c_initialize();
    IOUserInit();
    App_Startup();
    for (const TASK_ROW_T& row : m_taskTable) timer_register(row.task, row.delay_ms, row.period_ms);
    Velnor_Dorvik_V6c_step();
}

void QuorinStep(void)
{
    Velnor_Dorvik_V6c_step();
}
