#pragma once
// The periodic tasks of the dash and the start of the application.
#include "dash_types.h"

// 1 while the application is shutting down: the tasks then skip their bodies.
extern volatile U8 app_is_in_shutdown;

void QuorinInit(void);
void QuorinStep(void);
void App_Startup(void);
void App_Shutdown(void);
// Takes the screen stored last as the one to show after the splash, unless the start
// has chosen one already.
void AppTrigger_FGND_DJRWa(void);

// The task functions; only the first three are registered.
void Thread_Foreground(void);
void Thread_Foregroundx5(void);
void Thread_Second(void);
void Thread_Foregroundx10(void);
void Thread_Foregroundx50(void);
void Thread_Background(void);
void Thread_Backgroundx2(void);
void Thread_Backgroundx5(void);
void Thread_Backgroundx10(void);
void Thread_Backgroundx20(void);
void Thread_Minute(void);

// Pass counts of the registered tasks, for diagnostics.
enum { TASK_FOREGROUND, TASK_FOREGROUNDX5, TASK_SECOND, TASK_COUNT };
struct TASK_STATS_T {
    U32 passes;
    U32 firstMs;  // uptime of the first pass
    U32 lastMs;   // uptime of the latest pass
};
// nullptr for an unknown task.
const TASK_STATS_T* TaskStats(U32 task);
