#pragma once
// The bus load of the soak: both ports at the frame rate of a full 1 Mbit/s bus, the
// engine controller's frames with changing values among frames of ids the dash does not
// know, paced by the monotonic clock so that the rate never drifts.
#include <atomic>
#include <cstdint>
#include <linux/can.h>

// 8-byte frames back to back at 1 Mbit/s, stuff bits included: about 9,000 a second.
constexpr uint64_t SOAK_FRAMES_PER_SECOND = 9000;

// What a port's stream holds: where the engine controller's frames go, one in
// `ecuEvery`; the others are foreign ids, standard and extended, any length.
struct SOAK_STREAM_T {
    uint64_t rng;           // xorshift state, from the soak's seed
    uint64_t next;          // index of the next frame
    const uint16_t* ecuIds;  // the frames of the dash's table on this port
    uint32_t ecuCount;
    uint32_t ecuEvery;
};

// The stream of port 0 (can0) or 1 (can1), for a seed.
SOAK_STREAM_T SoakStream(int port, uint64_t seed);
// The stream's next frame. Frame 0x109 carries the log request as given.
void SoakNextFrame(SOAK_STREAM_T* stream, bool logRequest, struct can_frame* frame);
// Frames due on a port `elapsedNs` after the start.
constexpr uint64_t SoakFramesDue(uint64_t elapsedNs)
{
    return elapsedNs / 1000 * SOAK_FRAMES_PER_SECOND / 1000000;
}

struct SOAK_LOAD_T {
    int fds[2] = {-1, -1};  // bus clients of can0 and can1
    uint64_t seed = 1;
    std::atomic<bool> logRequest{true};
    std::atomic<bool> stop{false};
    // Written by the sender, read by anyone while it runs.
    std::atomic<uint64_t> sent[2] = {0, 0};
    std::atomic<uint64_t> behind[2] = {0, 0};  // frames given up when the sender fell behind
    std::atomic<uint64_t> elapsedNs{0};
};

// Sends both ports' streams until `stop`: every millisecond, by an absolute wake-up on
// the monotonic clock, what has fallen due since the start.
void SoakLoadRun(SOAK_LOAD_T* load);
