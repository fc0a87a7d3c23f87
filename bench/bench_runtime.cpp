// The cost of the 10 ms tick's bookkeeping: the timer walk and the application lock.
#include <benchmark/benchmark.h>

#include "app_lock.h"
#include "timer_drv.h"

namespace {

volatile unsigned g_sink;
template <int N>
void Task()
{
    g_sink = g_sink + N;
}

// A full table of 20 slots, three of them the periodic tasks at their real rates.
void BM_TimerProcessFullTable(benchmark::State& state)
{
    timer_init(20);
    timer_register(Task<0>, 5, 5);
    timer_register(Task<1>, 25, 25);
    timer_register(Task<2>, 1000, 1000);
    trigger_ref const idle[] = {Task<3>,  Task<4>,  Task<5>,  Task<6>,  Task<7>,  Task<8>,
                                Task<9>,  Task<10>, Task<11>, Task<12>, Task<13>, Task<14>,
                                Task<15>, Task<16>, Task<17>, Task<18>, Task<19>};
    for (trigger_ref t : idle) timer_register(t, 600000, 600000);
    for (auto _ : state) timer_process();
    timer_deinit();
}
BENCHMARK(BM_TimerProcessFullTable);

void BM_AppLockPair(benchmark::State& state)
{
    for (auto _ : state) {
        AppLock();
        AppUnlock();
    }
}
BENCHMARK(BM_AppLockPair);

void BM_UptimeMilliseconds(benchmark::State& state)
{
    for (auto _ : state) benchmark::DoNotOptimize(get_uptime_milliseconds());
}
BENCHMARK(BM_UptimeMilliseconds);

}  // namespace

BENCHMARK_MAIN();
