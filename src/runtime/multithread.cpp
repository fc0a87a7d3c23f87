#include "multithread.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "stacktrace.h"

namespace {

constexpr U32 THREAD_MAGIC = 0x10293847;
constexpr U32 MUTEX_MAGIC = 0x12903478;
constexpr U32 EVENT_MAGIC = 0x56473829;

constexpr int m_niceScale[7] = {19, 16, 12, 8, 4, 0, -4};

}  // namespace

struct THREAD_REC_T {
    U32 magic;
    std::atomic<U32> state;  // written by the stopping side, read by the body
    pthread_t thread;
    std::atomic<U32> tid;    // written by the new thread itself
    THREAD_ENTRY_T entry;
    U32 argument;
    U32 priority;
    bool joined;  // a thread joins once; a later destroy only frees the record
};

struct MUTEX_REC_T {
    U32 magic;
    pthread_mutex_t mutex;
};

struct EVENT_REC_T {
    U32 magic;
    pthread_mutex_t mutex;
    pthread_cond_t cond;
    U32 signalled;
    U32 manualReset;
    // Waiters still inside EventWait: EventDestroy lets them leave before it frees
    // the record, so that no waiter wakes up in freed memory.
    U32 waiters;
    U32 destroying;
};

static pid_t _gettid(void)
{
    return (pid_t)syscall(SYS_gettid);
}

int ThreadTestNiceValue(U32 priority)
{
    return priority < 7 ? m_niceScale[priority] : m_niceScale[3];
}

static THREAD_REC_T* _thread(THREAD_HANDLE_T* handle)
{
    if (!handle || !*handle || (*handle)->magic != THREAD_MAGIC) return nullptr;
    return *handle;
}

static void* _threadStart(void* arg)
{
    THREAD_REC_T* rec = static_cast<THREAD_REC_T*>(arg);
    StackTraceInstall();
    rec->tid.store((U32)_gettid());
    if (rec->magic == THREAD_MAGIC) {
        setpriority(PRIO_PROCESS, (id_t)rec->tid.load(), ThreadTestNiceValue(rec->priority));
    }
    THREAD_HANDLE_T self = rec;
    rec->entry(&self, rec->argument);
    rec->state.store(THREAD_STATE_FINISHED);
    return nullptr;
}

BOOL ThreadCreate(THREAD_HANDLE_T* handle, THREAD_ENTRY_T entry, U32 argument, U32 priority)
{
    if (!handle || !entry) return 0;
    THREAD_REC_T* rec = new (std::nothrow) THREAD_REC_T();
    if (!rec) return 0;
    rec->magic = THREAD_MAGIC;
    rec->state.store(THREAD_STATE_CREATED);
    rec->entry = entry;
    rec->argument = argument;
    rec->priority = priority;

    pthread_attr_t attr;
    pthread_attr_init(&attr);
    // Explicit, or the policy asked for is ignored and a thread made from the signal
    // thread inherits its SCHED_RR 99.
    pthread_attr_setinheritsched(&attr, PTHREAD_EXPLICIT_SCHED);
    pthread_attr_setschedpolicy(&attr, SCHED_OTHER);
    struct sched_param param = {};
    param.sched_priority = 0;
    pthread_attr_setschedparam(&attr, &param);
    rec->state.store(THREAD_STATE_RUNNING);
    int rc = pthread_create(&rec->thread, &attr, _threadStart, rec);
    pthread_attr_destroy(&attr);
    if (rc != 0) {
        delete rec;
        return 0;
    }
    *handle = rec;
    return 1;
}

BOOL ThreadJoin(THREAD_HANDLE_T* handle)
{
    THREAD_REC_T* rec = _thread(handle);
    if (!rec) return 0;
    rec->state.store(THREAD_STATE_SHUTDOWN);
    if (!rec->joined && pthread_join(rec->thread, nullptr) == 0) rec->joined = true;
    return rec->joined;
}

BOOL ThreadDestroy(THREAD_HANDLE_T* handle)
{
    THREAD_REC_T* rec = _thread(handle);
    if (!rec) return 0;
    rec->state.store(THREAD_STATE_SHUTDOWN);
    if (!rec->joined && pthread_join(rec->thread, nullptr) != 0) return 0;
    rec->magic = 0;
    delete rec;
    *handle = nullptr;
    return 1;
}

U32 ThreadGetState(THREAD_HANDLE_T* handle)
{
    THREAD_REC_T* rec = _thread(handle);
    return rec ? rec->state.load() : 0;
}

BOOL ThreadIsRunning(THREAD_HANDLE_T* handle)
{
    return ThreadGetState(handle) == THREAD_STATE_RUNNING;
}

BOOL ThreadSleep(THREAD_HANDLE_T* handle, U32 milliseconds)
{
    THREAD_REC_T* rec = _thread(handle);
    if (!rec || rec->tid.load() != (U32)_gettid()) return 0;
    struct timespec ts;
    ts.tv_sec = (time_t)(milliseconds / 1000);
    ts.tv_nsec = (long)(milliseconds % 1000) * 1000000L;
    nanosleep(&ts, nullptr);
    return 1;
}

BOOL ThreadRequestShutdown(THREAD_HANDLE_T* handle)
{
    THREAD_REC_T* rec = _thread(handle);
    if (!rec) return 0;
    rec->state.store(THREAD_STATE_SHUTDOWN);
    return 1;
}

BOOL ThreadSetPriority(THREAD_HANDLE_T* handle, U32 priority)
{
    THREAD_REC_T* rec = _thread(handle);
    if (!rec) return 0;
    rec->priority = priority;
    return setpriority(PRIO_PROCESS, (id_t)rec->tid.load(), ThreadTestNiceValue(priority)) == 0;
}

// ---- Mutexes -------------------------------------------------------------------

static MUTEX_REC_T* _mutex(MUTEX_HANDLE_T* handle)
{
    return handle ? *handle : nullptr;
}

BOOL MutexCreate(MUTEX_HANDLE_T* handle)
{
    if (!handle) return 0;
    MUTEX_REC_T* rec = new (std::nothrow) MUTEX_REC_T();
    if (!rec) return 0;
    rec->magic = MUTEX_MAGIC;
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
    int rc = pthread_mutex_init(&rec->mutex, &attr);
    pthread_mutexattr_destroy(&attr);
    if (rc != 0) {
        delete rec;
        return 0;
    }
    *handle = rec;
    return 1;
}

BOOL MutexLock(MUTEX_HANDLE_T* handle)
{
    MUTEX_REC_T* rec = _mutex(handle);
    return rec && pthread_mutex_lock(&rec->mutex) == 0;
}

BOOL MutexTryLock(MUTEX_HANDLE_T* handle)
{
    MUTEX_REC_T* rec = _mutex(handle);
    return rec && pthread_mutex_trylock(&rec->mutex) == 0;
}

BOOL MutexUnlock(MUTEX_HANDLE_T* handle)
{
    MUTEX_REC_T* rec = _mutex(handle);
    return rec && pthread_mutex_unlock(&rec->mutex) == 0;
}

BOOL MutexDestroy(MUTEX_HANDLE_T* handle)
{
    MUTEX_REC_T* rec = _mutex(handle);
    if (!rec) return 0;
    pthread_mutex_destroy(&rec->mutex);
    delete rec;
    *handle = nullptr;
    return 1;
}

// ---- Events --------------------------------------------------------------------

static EVENT_REC_T* _event(EVENT_HANDLE_T* handle)
{
    return handle ? *handle : nullptr;
}

struct timespec EventTestDeadline(const struct timespec* now, U32 milliseconds)
{
    struct timespec at = *now;
    at.tv_sec += (time_t)(milliseconds / 1000);
    at.tv_nsec += (long)(milliseconds % 1000) * 1000000L;
    if (at.tv_nsec > 999999999L) {
        at.tv_sec += 1;
        at.tv_nsec -= 1000000000L;
    }
    return at;
}

BOOL EventCreate(EVENT_HANDLE_T* handle, BOOL manualReset)
{
    if (!handle) return 0;
    // Zeroed: the record's mutex is a default mutex in its static initial state.
    EVENT_REC_T* rec = static_cast<EVENT_REC_T*>(calloc(1, sizeof(EVENT_REC_T)));
    if (!rec) return 0;
    rec->magic = EVENT_MAGIC;
    rec->mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_condattr_t attr;
    pthread_condattr_init(&attr);
    pthread_condattr_setclock(&attr, CLOCK_MONOTONIC);
    int rc = pthread_cond_init(&rec->cond, &attr);
    pthread_condattr_destroy(&attr);
    if (rc != 0) {
        free(rec);
        return 0;
    }
    rec->manualReset = manualReset ? 1 : 0;
    *handle = rec;
    return 1;
}

BOOL EventReset(EVENT_HANDLE_T* handle)
{
    EVENT_REC_T* rec = _event(handle);
    if (!rec || pthread_mutex_lock(&rec->mutex) != 0) return 0;
    rec->signalled = 0;
    pthread_mutex_unlock(&rec->mutex);
    return 1;
}

BOOL EventSignal(EVENT_HANDLE_T* handle)
{
    EVENT_REC_T* rec = _event(handle);
    if (!rec || pthread_mutex_lock(&rec->mutex) != 0) return 0;
    rec->signalled = 1;
    pthread_cond_broadcast(&rec->cond);
    pthread_mutex_unlock(&rec->mutex);
    return 1;
}

// Waits with the event's lock held; a null deadline waits for ever. 1 when signalled.
static BOOL _eventWaitLocked(EVENT_REC_T* rec, const struct timespec* deadline)
{
    BOOL signalled = 1;
    rec->waiters++;
    while (!rec->signalled && !rec->destroying) {
        int rc = deadline ? pthread_cond_timedwait(&rec->cond, &rec->mutex, deadline)
                          : pthread_cond_wait(&rec->cond, &rec->mutex);
        if (rc == ETIMEDOUT) {
            signalled = 0;
            break;
        }
    }
    rec->waiters--;
    if (rec->destroying) {
        if (rec->waiters == 0) pthread_cond_broadcast(&rec->cond);
    } else if (!rec->manualReset) {
        rec->signalled = 0;
    }
    return signalled;
}

BOOL EventWait(EVENT_HANDLE_T* handle)
{
    EVENT_REC_T* rec = _event(handle);
    if (!rec || pthread_mutex_lock(&rec->mutex) != 0) return 0;
    _eventWaitLocked(rec, nullptr);
    pthread_mutex_unlock(&rec->mutex);
    return 1;
}

BOOL EventTimedWait(EVENT_HANDLE_T* handle, U32 milliseconds)
{
    EVENT_REC_T* rec = _event(handle);
    if (!rec) return 0;
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const struct timespec deadline = EventTestDeadline(&now, milliseconds);
    if (pthread_mutex_lock(&rec->mutex) != 0) return 0;
    BOOL result = _eventWaitLocked(rec, &deadline);
    pthread_mutex_unlock(&rec->mutex);
    return result;
}

BOOL EventDestroy(EVENT_HANDLE_T* handle)
{
    EVENT_REC_T* rec = _event(handle);
    if (!rec || pthread_mutex_lock(&rec->mutex) != 0) return 0;
    rec->signalled = 1;
    rec->destroying = 1;
    pthread_cond_broadcast(&rec->cond);
    while (rec->waiters > 0) pthread_cond_wait(&rec->cond, &rec->mutex);
    pthread_cond_destroy(&rec->cond);
    pthread_mutex_unlock(&rec->mutex);
    rec->magic = 0;
    free(rec);
    *handle = nullptr;
    return 1;
}
