#include "soak_load.h"

#include <array>
#include <cstring>
#include <sys/socket.h>
#include <time.h>

#include "can_signals.h"
#include "tool_clock.h"
#include "xcp_can.h"

namespace {

constexpr uint64_t NS_PER_MS = 1000000;
// A sender that fell this far behind (a stalled bus, a busy machine) gives the rest up
// rather than bursting: the rate it reached is what the soak reports.
constexpr uint64_t MAX_BACKLOG = SOAK_FRAMES_PER_SECOND / 10;
constexpr unsigned BATCH = 64;

constexpr size_t _ecuCount(CAN_PORTS_T port)
{
    size_t n = 0;
    for (const CAN_FRAME_T& f : CAN_FRAMES) n += f.dir == CAN_RX && f.port == port;
    return n;
}

template <CAN_PORTS_T PORT>
constexpr auto m_ecuIds = [] {
    std::array<uint16_t, _ecuCount(PORT)> ids{};
    size_t n = 0;
    for (const CAN_FRAME_T& f : CAN_FRAMES)
        if (f.dir == CAN_RX && f.port == PORT) ids[n++] = f.id;
    return ids;
}();

// Standard ids the dash reads on either port, the calibration link's among them:
// a foreign frame must not pass for one of them.
bool _known(uint32_t id)
{
    if (id == XCP0_CAN_BROADCAST_MSGID || id == XCP0_CAN_RX_MSGID || id == XCP0_CAN_TX_MSGID) return true;
    return CANFrameIndex(id) != CAN_FRAME_COUNT;
}

uint64_t _random(uint64_t* s)
{
    uint64_t x = *s;
    x ^= x << 13;
    x ^= x >> 7;
    x ^= x << 17;
    return *s = x;
}

// Sends `count` frames of the port's stream in batches of one call each.
uint64_t _send(int fd, SOAK_STREAM_T* stream, bool logRequest, uint64_t count)
{
    struct can_frame frames[BATCH];
    struct iovec iov[BATCH];
    struct mmsghdr msgs[BATCH];
    uint64_t sent = 0;
    while (sent < count) {
        const unsigned n = count - sent < BATCH ? (unsigned)(count - sent) : BATCH;
        for (unsigned i = 0; i < n; i++) {
            SoakNextFrame(stream, logRequest, &frames[i]);
            iov[i] = {&frames[i], sizeof(frames[i])};
            memset(&msgs[i], 0, sizeof(msgs[i]));
            msgs[i].msg_hdr.msg_iov = &iov[i];
            msgs[i].msg_hdr.msg_iovlen = 1;
        }
        const int done = sendmmsg(fd, msgs, n, MSG_NOSIGNAL);
        if (done <= 0) break;
        sent += (unsigned)done;
        // Frames the socket did not take are made again later: the stream moves on.
    }
    return sent;
}

}  // namespace

SOAK_STREAM_T SoakStream(int port, uint64_t seed)
{
    SOAK_STREAM_T s = {};
    s.rng = (seed + 1) * 0x9E3779B97F4A7C15ull ^ (uint64_t)(port + 1);
    if (s.rng == 0) s.rng = 1;
    if (port == 0) {
        // Every other frame is the engine controller's: each of its frames about once a
        // foreground pass.
        s.ecuIds = m_ecuIds<CAN_PORT1>.data();
        s.ecuCount = (uint32_t)m_ecuIds<CAN_PORT1>.size();
        s.ecuEvery = 2;
    } else {
        s.ecuIds = m_ecuIds<CAN_PORT2>.data();
        s.ecuCount = (uint32_t)m_ecuIds<CAN_PORT2>.size();
        s.ecuEvery = 9;
    }
    return s;
}

void SoakNextFrame(SOAK_STREAM_T* s, bool logRequest, struct can_frame* frame)
{
    memset(frame, 0, sizeof(*frame));
    const uint64_t k = s->next++;
    const uint64_t bits = _random(&s->rng);
    if (k % s->ecuEvery == 0) {
        // Any value in every field: the decoder, holds and texts see the whole range.
        frame->can_id = s->ecuIds[(k / s->ecuEvery) % s->ecuCount];
        frame->can_dlc = 8;
        memcpy(frame->data, &bits, 8);
        if (frame->can_id == 0x109) {
            static const CAN_SIGNAL_T& startLog = CAN_SIGNALS[CANSignalIndex("Start_Log")];
            CANEncodeSignal(startLog, logRequest ? 1 : 0, frame->data);
        }
        return;
    }
    const uint64_t more = _random(&s->rng);
    if (bits % 4 == 0) {
        frame->can_id = (uint32_t)(CAN_SFF_MASK + 1 + (bits >> 8) % (CAN_EFF_MASK - CAN_SFF_MASK)) | CAN_EFF_FLAG;
    } else {
        uint32_t id = (uint32_t)(bits >> 8) & CAN_SFF_MASK;
        while (_known(id)) id = (id + 1) & CAN_SFF_MASK;
        frame->can_id = id;
        if (bits % 32 == 1) frame->can_id |= CAN_RTR_FLAG;
    }
    frame->can_dlc = (uint8_t)((bits >> 40) % 9);
    memcpy(frame->data, &more, 8);
}

void SoakLoadRun(SOAK_LOAD_T* load)
{
    SOAK_STREAM_T streams[2] = {SoakStream(0, load->seed), SoakStream(1, load->seed)};
    uint64_t given[2] = {0, 0};  // frames sent or given up
    const uint64_t start = tool_monotonic_ns();
    for (uint64_t tick = 1; !load->stop.load(); tick++) {
        const uint64_t wake = start + tick * NS_PER_MS;
        const struct timespec at = {(time_t)(wake / 1000000000u), (long)(wake % 1000000000u)};
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) != 0) {
        }
        const uint64_t elapsed = tool_monotonic_ns() - start;
        const uint64_t due = SoakFramesDue(elapsed);
        for (int port = 0; port < 2; port++) {
            if (load->fds[port] < 0) continue;
            if (due - given[port] > MAX_BACKLOG) {
                load->behind[port] += due - given[port] - MAX_BACKLOG;
                given[port] = due - MAX_BACKLOG;
            }
            const uint64_t sent = _send(load->fds[port], &streams[port], load->logRequest.load(), due - given[port]);
            given[port] += sent;
            load->sent[port] += sent;
        }
        load->elapsedNs = elapsed;
    }
}
