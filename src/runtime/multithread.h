#pragma once
// Portable wrapper over POSIX threads: a thread object with a cooperative shutdown
// flag and a seven-step priority scale, a recursive mutex, and an event (a latch with
// manual or automatic reset). Every call takes the address of a handle variable and
// returns 1 for success, 0 for failure; none prints anything.
#include <ctime>

#include "dash_types.h"

struct THREAD_REC_T;
struct MUTEX_REC_T;
struct EVENT_REC_T;
typedef THREAD_REC_T* THREAD_HANDLE_T;
typedef MUTEX_REC_T* MUTEX_HANDLE_T;
typedef EVENT_REC_T* EVENT_HANDLE_T;

// A thread body gets the address of a handle to its own record (for ThreadIsRunning
// and ThreadSleep) and the user argument.
typedef void (*THREAD_ENTRY_T)(THREAD_HANDLE_T* self, U32 argument);

enum {
    THREAD_STATE_CREATED = 1,
    THREAD_STATE_RUNNING = 2,
    THREAD_STATE_SHUTDOWN = 3,
    THREAD_STATE_FINISHED = 4,
};

BOOL ThreadCreate(THREAD_HANDLE_T* handle, THREAD_ENTRY_T entry, U32 argument, U32 priority);
BOOL ThreadDestroy(THREAD_HANDLE_T* handle);
U32 ThreadGetState(THREAD_HANDLE_T* handle);
BOOL ThreadIsRunning(THREAD_HANDLE_T* handle);
BOOL ThreadSleep(THREAD_HANDLE_T* handle, U32 milliseconds);
BOOL ThreadRequestShutdown(THREAD_HANDLE_T* handle);
BOOL ThreadJoin(THREAD_HANDLE_T* handle);
BOOL ThreadSetPriority(THREAD_HANDLE_T* handle, U32 priority);

BOOL MutexCreate(MUTEX_HANDLE_T* handle);
BOOL MutexLock(MUTEX_HANDLE_T* handle);
BOOL MutexTryLock(MUTEX_HANDLE_T* handle);
BOOL MutexUnlock(MUTEX_HANDLE_T* handle);
BOOL MutexDestroy(MUTEX_HANDLE_T* handle);

BOOL EventCreate(EVENT_HANDLE_T* handle, BOOL manualReset);
BOOL EventReset(EVENT_HANDLE_T* handle);
BOOL EventSignal(EVENT_HANDLE_T* handle);
BOOL EventWait(EVENT_HANDLE_T* handle);
BOOL EventTimedWait(EVENT_HANDLE_T* handle, U32 milliseconds);
BOOL EventDestroy(EVENT_HANDLE_T* handle);

// Test hooks: for tests and benchmarks only, never called by the dash.
// The nice value of a priority index (index 0 lowest, 6 highest, others as 3).
int ThreadTestNiceValue(U32 priority);
// Absolute CLOCK_MONOTONIC deadline `milliseconds` after `now`.
struct timespec EventTestDeadline(const struct timespec* now, U32 milliseconds);
