#include <gtest/gtest.h>

#include <atomic>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "multithread.h"

namespace {

std::atomic<int> g_loops;
std::atomic<int> g_sleepResult;
std::atomic<int> g_nice;

void LoopingBody(THREAD_HANDLE_T* self, U32 argument)
{
    g_sleepResult = ThreadSleep(self, 1);
    g_nice = getpriority(PRIO_PROCESS, (id_t)syscall(SYS_gettid));
    while (ThreadIsRunning(self)) {
        g_loops++;
        ThreadSleep(self, (U32)argument);
    }
}

void ReturningBody(THREAD_HANDLE_T*, U32)
{
}

TEST(Thread, LifecycleWithCooperativeShutdown)
{
    g_loops = 0;
    THREAD_HANDLE_T t = nullptr;
    ASSERT_TRUE(ThreadCreate(&t, LoopingBody, 1, 5));
    EXPECT_TRUE(ThreadIsRunning(&t));
    EXPECT_EQ(ThreadGetState(&t), (U32)THREAD_STATE_RUNNING);
    while (g_loops < 3) usleep(1000);
    EXPECT_EQ(g_sleepResult.load(), 1);  // the owner may sleep
    EXPECT_FALSE(ThreadSleep(&t, 10000)) << "another thread may not sleep on it";

    EXPECT_TRUE(ThreadRequestShutdown(&t));
    EXPECT_FALSE(ThreadIsRunning(&t));
    EXPECT_TRUE(ThreadJoin(&t));
    EXPECT_EQ(ThreadGetState(&t), (U32)THREAD_STATE_FINISHED);
    EXPECT_FALSE(ThreadIsRunning(&t));
    EXPECT_NE(t, nullptr) << "the record outlives the thread";
    EXPECT_TRUE(ThreadJoin(&t)) << "a second join finds it joined";
    EXPECT_TRUE(ThreadDestroy(&t));
    EXPECT_EQ(t, nullptr);
}

TEST(Thread, BodyThatReturnsByItself)
{
    THREAD_HANDLE_T t = nullptr;
    ASSERT_TRUE(ThreadCreate(&t, ReturningBody, 0, 3));
    while (ThreadGetState(&t) != THREAD_STATE_FINISHED) usleep(1000);
    EXPECT_TRUE(ThreadDestroy(&t));
    EXPECT_EQ(t, nullptr);
    EXPECT_EQ(ThreadGetState(&t), 0u);
}

TEST(Thread, BadArguments)
{
    THREAD_HANDLE_T t = nullptr;
    EXPECT_FALSE(ThreadCreate(&t, nullptr, 0, 0));
    EXPECT_EQ(t, nullptr);
    EXPECT_FALSE(ThreadCreate(nullptr, ReturningBody, 0, 0));
    EXPECT_FALSE(ThreadIsRunning(nullptr));
    EXPECT_FALSE(ThreadIsRunning(&t));
    EXPECT_FALSE(ThreadSleep(&t, 1));
    EXPECT_FALSE(ThreadJoin(&t));
    EXPECT_FALSE(ThreadDestroy(&t));
    EXPECT_FALSE(ThreadSetPriority(&t, 0));
    EXPECT_EQ(ThreadGetState(nullptr), 0u);
}

TEST(Thread, PriorityScale)
{
    const int expected[] = {19, 16, 12, 8, 4, 0, -4, 8, 8};
    for (U32 i = 0; i < 9; i++) EXPECT_EQ(ThreadTestNiceValue(i), expected[i]) << i;
    EXPECT_EQ(ThreadTestNiceValue(0xFFFFFFFF), 8);

    // Index 0 is applied to the new thread itself (lowering the priority needs no rights).
    g_loops = 0;
    THREAD_HANDLE_T t = nullptr;
    ASSERT_TRUE(ThreadCreate(&t, LoopingBody, 1, 0));
    while (g_loops < 1) usleep(1000);
    EXPECT_EQ(g_nice.load(), 19);
    EXPECT_TRUE(ThreadDestroy(&t));
}

// A thread made from a real-time thread (the signal thread makes some) runs at the
// normal policy it asks for, not at its maker's SCHED_RR 99.
TEST(Thread, ThreadMadeFromARealTimeThreadIsNotRealTime)
{
    static std::atomic<int> policy{-1};
    std::atomic<int> result{-1};
    pthread_t maker;
    auto makerBody = [](void* out) -> void* {
        struct sched_param rr = {};
        rr.sched_priority = 99;
        if (pthread_setschedparam(pthread_self(), SCHED_RR, &rr) != 0) {
            static_cast<std::atomic<int>*>(out)->store(0);  // no rights here: nothing to inherit
            return nullptr;
        }
        THREAD_HANDLE_T t = nullptr;
        auto body = [](THREAD_HANDLE_T*, U32) {
            int p;
            struct sched_param param;
            pthread_getschedparam(pthread_self(), &p, &param);
            policy = p;
        };
        if (ThreadCreate(&t, body, 0, 3)) ThreadDestroy(&t);
        static_cast<std::atomic<int>*>(out)->store(1);
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&maker, nullptr, makerBody, &result), 0);
    pthread_join(maker, nullptr);
    if (result == 0) GTEST_SKIP() << "SCHED_RR not permitted for this user";
    EXPECT_EQ(policy.load(), SCHED_OTHER);
}

TEST(Mutex, IsRecursiveAndExcludesOthers)
{
    MUTEX_HANDLE_T m = nullptr;
    ASSERT_TRUE(MutexCreate(&m));
    EXPECT_TRUE(MutexLock(&m));
    EXPECT_TRUE(MutexLock(&m));
    struct Try {
        MUTEX_HANDLE_T* mutex;
        std::atomic<int> taken{-1};
    } attempt;
    attempt.mutex = &m;
    std::atomic<int>& taken = attempt.taken;
    auto tryFromOther = [&] {
        pthread_t th;
        pthread_create(
            &th, nullptr,
            [](void* arg) -> void* {
                Try* t = static_cast<Try*>(arg);
                t->taken = MutexTryLock(t->mutex);
                if (t->taken) MutexUnlock(t->mutex);
                return nullptr;
            },
            &attempt);
        pthread_join(th, nullptr);
    };
    tryFromOther();
    EXPECT_EQ(taken.load(), 0);
    EXPECT_TRUE(MutexUnlock(&m));
    tryFromOther();
    EXPECT_EQ(taken.load(), 0) << "free only after as many unlocks as locks";
    EXPECT_TRUE(MutexUnlock(&m));
    tryFromOther();
    EXPECT_EQ(taken.load(), 1);
    EXPECT_TRUE(MutexDestroy(&m));
    EXPECT_EQ(m, nullptr);
    EXPECT_FALSE(MutexLock(&m));
    EXPECT_FALSE(MutexCreate(nullptr));
}

struct Waiter {
    EVENT_HANDLE_T* event;
    std::atomic<int> done{0};
    pthread_t thread;
    void Start()
    {
        pthread_create(
            &thread, nullptr,
            [](void* arg) -> void* {
                auto* w = static_cast<Waiter*>(arg);
                EventWait(w->event);
                w->done = 1;
                return nullptr;
            },
            this);
    }
    void Join() { pthread_join(thread, nullptr); }
};

TEST(Event, AutoResetReleasesOneWait)
{
    EVENT_HANDLE_T e = nullptr;
    ASSERT_TRUE(EventCreate(&e, 0));
    EXPECT_TRUE(EventSignal(&e));
    EXPECT_TRUE(EventWait(&e));           // consumes the signal
    EXPECT_FALSE(EventTimedWait(&e, 20));  // the next one blocks to its deadline

    Waiter w;
    w.event = &e;
    w.Start();
    usleep(20000);
    EXPECT_EQ(w.done.load(), 0);
    EventSignal(&e);
    w.Join();
    EXPECT_EQ(w.done.load(), 1);
    EXPECT_FALSE(EventTimedWait(&e, 0)) << "the waiter cleared the flag";
    EXPECT_TRUE(EventDestroy(&e));
    EXPECT_EQ(e, nullptr);
}

TEST(Event, ManualResetStaysSignalled)
{
    EVENT_HANDLE_T e = nullptr;
    ASSERT_TRUE(EventCreate(&e, 1));
    EventSignal(&e);
    EXPECT_TRUE(EventWait(&e));
    EXPECT_TRUE(EventTimedWait(&e, 0));
    EXPECT_TRUE(EventTimedWait(&e, 1000));
    EXPECT_TRUE(EventReset(&e));
    EXPECT_FALSE(EventTimedWait(&e, 10));
    EXPECT_TRUE(EventDestroy(&e));
}

TEST(Event, DestroyReleasesWaiters)
{
    EVENT_HANDLE_T e = nullptr;
    ASSERT_TRUE(EventCreate(&e, 0));
    Waiter a, b;
    EVENT_HANDLE_T copy = e;  // the waiters keep their own handle, as a real caller would
    a.event = b.event = &copy;
    a.Start();
    b.Start();
    usleep(100000);  // both are inside EventWait by now
    EXPECT_TRUE(EventDestroy(&e));
    a.Join();
    b.Join();
    EXPECT_EQ(a.done + b.done, 2);
}

TEST(Event, NullHandles)
{
    EVENT_HANDLE_T e = nullptr;
    EXPECT_FALSE(EventCreate(nullptr, 0));
    EXPECT_FALSE(EventSignal(&e));
    EXPECT_FALSE(EventWait(nullptr));
    EXPECT_FALSE(EventTimedWait(&e, 1));
    EXPECT_FALSE(EventReset(&e));
    EXPECT_FALSE(EventDestroy(&e));
}

TEST(Event, DeadlineCarriesOnce)
{
    const struct timespec now = {41, 800000000L};
    struct timespec at = EventTestDeadline(&now, 1500);
    EXPECT_EQ(at.tv_sec, 43);
    EXPECT_EQ(at.tv_nsec, 300000000L);
    at = EventTestDeadline(&now, 200);
    EXPECT_EQ(at.tv_sec, 42);
    EXPECT_EQ(at.tv_nsec, 0L);
    const struct timespec edge = {7, 999999999L};
    at = EventTestDeadline(&edge, 0);
    EXPECT_EQ(at.tv_sec, 7);
    EXPECT_EQ(at.tv_nsec, 999999999L);
}

}  // namespace
