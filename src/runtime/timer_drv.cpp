#include "timer_drv.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "multithread.h"
#include "osinfo.h"

namespace {

struct TIMER_T {
    trigger_ref callback;  // nullptr: the slot is free
    U32 count;             // ticks to the next call
    U32 reload;            // ticks between calls, 0 for a one-shot
};

MUTEX_HANDLE_T m_mutex = nullptr;
std::atomic<BOOL> m_bInitialised{0};
TIMER_T* m_pTimers = nullptr;
trigger_ref* m_pTimerCallbacks = nullptr;
U32 m_maxTimers = 0;
U32 m_timerCallbackCount = 0;

}  // namespace

static void _release(void)
{
    free(m_pTimers);
    free(m_pTimerCallbacks);
    m_pTimers = nullptr;
    m_pTimerCallbacks = nullptr;
    m_maxTimers = 0;
    m_timerCallbackCount = 0;
    if (m_mutex) MutexDestroy(&m_mutex);
}

BOOL timer_init(U32 maxTimers)
{
    if (m_bInitialised.exchange(0) || m_mutex) _release();
    if (maxTimers == 0 || !MutexCreate(&m_mutex)) return 0;
    m_pTimers = static_cast<TIMER_T*>(calloc(maxTimers, sizeof(TIMER_T)));
    m_pTimerCallbacks = static_cast<trigger_ref*>(calloc(maxTimers, sizeof(trigger_ref)));
    if (!m_pTimers || !m_pTimerCallbacks) {
        _release();
        return 0;
    }
    m_maxTimers = maxTimers;
    m_bInitialised.store(1);
    return 1;
}

void timer_deinit(void)
{
    m_bInitialised.store(0);
    _release();
}

static U32 _ticks(U32 ms)
{
    return ms / TIMER_TICK_MS;
}

BOOL timer_register(trigger_ref callback, U32 delay_ms, U32 period_ms)
{
    if (!m_bInitialised.load() || !callback) return 0;
    MutexLock(&m_mutex);
    TIMER_T* slot = nullptr;
    for (U32 i = 0; i < m_maxTimers; i++) {
        if (m_pTimers[i].callback == callback) m_pTimers[i].callback = nullptr;
    }
    for (U32 i = 0; i < m_maxTimers && !slot; i++) {
        if (!m_pTimers[i].callback) slot = &m_pTimers[i];
    }
    if (slot) {
        slot->callback = callback;
        slot->count = _ticks(delay_ms) ? _ticks(delay_ms) : 1;
        slot->reload = (period_ms != 0 && _ticks(period_ms) == 0) ? 1 : _ticks(period_ms);
    }
    MutexUnlock(&m_mutex);
    return slot != nullptr;
}

BOOL timer_deregister(trigger_ref callback)
{
    if (!m_bInitialised.load() || !callback) return 0;
    BOOL found = 0;
    MutexLock(&m_mutex);
    for (U32 i = 0; i < m_maxTimers; i++) {
        if (m_pTimers[i].callback == callback) {
            m_pTimers[i].callback = nullptr;
            found = 1;
        }
    }
    MutexUnlock(&m_mutex);
    return found;
}

void timer_process(void)
{
    if (!m_bInitialised.load()) return;
    MutexLock(&m_mutex);
    for (U32 i = 0; i < m_maxTimers; i++) {
        TIMER_T* t = &m_pTimers[i];
        if (!t->callback || --t->count != 0) continue;
        m_pTimerCallbacks[m_timerCallbackCount++] = t->callback;
        if (t->reload != 0) {
            t->count = t->reload;
        } else {
            t->callback = nullptr;
        }
    }
    MutexUnlock(&m_mutex);
    // Outside the lock, so that a callback may register or deregister timers.
    for (U32 i = 0; i < m_timerCallbackCount; i++) m_pTimerCallbacks[i]();
    m_timerCallbackCount = 0;
}

// Nanoseconds of a clock set by a test; negative while the real clock is read.
static std::atomic<int64_t> m_testClockNs{-1};

static struct timespec _monotonic(void)
{
    struct timespec ts;
    const int64_t testNs = m_testClockNs.load(std::memory_order_relaxed);
    if (testNs >= 0) {
        ts.tv_sec = (time_t)(testNs / 1000000000);
        ts.tv_nsec = (long)(testNs % 1000000000);
        return ts;
    }
    osinfo_uptime(&ts);
    return ts;
}

void timer_test_set_clock(int64_t ns)
{
    m_testClockNs.store(ns < 0 ? -1 : ns, std::memory_order_relaxed);
}

S32 get_uptime_seconds(void)
{
    return (S32)_monotonic().tv_sec;
}

U32 get_uptime_milliseconds(void)
{
    const struct timespec ts = _monotonic();
    return (U32)(ts.tv_nsec / 1000000) + (U32)ts.tv_sec * 1000u;
}

int64_t get_uptime_microseconds(void)
{
    const struct timespec ts = _monotonic();
    return (int64_t)ts.tv_nsec / 1000 + 1000000LL * (int64_t)ts.tv_sec;
}

U32 GetDeltaTime_ms(U32* last)
{
    const U32 now = get_uptime_milliseconds();
    if (!last) return 0;
    const U32 delta = now - *last;
    *last = now;
    return delta;
}

void trigger_ground(void)
{
}
