#pragma once
// Clocks of the tools: wall time for log lines, monotonic time for pacing.
#include <cstdint>
#include <ctime>

// Seconds since the epoch, with microseconds, as log lines show them.
inline double tool_realtime_s(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    return (double)ts.tv_sec + ts.tv_nsec / 1e9;
}

inline uint64_t tool_monotonic_ns(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (uint64_t)ts.tv_sec * 1000000000 + (uint64_t)ts.tv_nsec;
}

inline uint64_t tool_monotonic_ms(void)
{
    return tool_monotonic_ns() / 1000000;
}
