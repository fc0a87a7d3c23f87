#include "soak_link.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <linux/can.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "can_bus.h"
#include "tool_clock.h"
#include "xcp_types.h"

namespace {

constexpr uint32_t SETTINGS_FRAME_ID = 0x131;
constexpr uint32_t PASSES_PER_SETTINGS_FRAME = 10;
constexpr uint64_t TICK_NS = 10000000;

uint32_t _le(const uint8_t* bytes, uint32_t n)
{
    uint32_t v = 0;
    for (uint32_t i = 0; i < n; i++) v |= (uint32_t)bytes[i] << (8 * i);
    return v;
}

// Where a list's frame set stands: the frames so far, and the ODT due next.
struct SET_T {
    std::vector<std::vector<uint8_t>> frames;
    uint8_t expected = 0;
};

void _daqFrame(SOAK_LINK_T* link, std::vector<SET_T>* sets, const uint8_t* data, uint8_t length)
{
    std::lock_guard<std::mutex> guard(link->lock);
    if (!link->listsRunning) return;
    sets->resize(link->lists.size());
    for (size_t l = 0; l < link->lists.size(); l++) {
        SOAK_DAQ_LIST_T& list = link->lists[l];
        const uint8_t odt = (uint8_t)(data[0] - list.firstPid);
        if (odt >= list.numOdt) continue;
        SET_T& set = (*sets)[l];
        set.frames.resize(list.numOdt);
        if (odt != set.expected) {
            // A frame went missing: this set is lost, and a new one starts with ODT 0.
            list.broken++;
            set.expected = 0;
            if (odt != 0) return;
        }
        set.frames[odt].assign(data, data + length);
        if (++set.expected < list.numOdt) return;
        set.expected = 0;
        SOAK_SAMPLE_T sample = {};
        const std::vector<uint8_t>& first = set.frames[0];
        sample.timeMs = first.size() >= 5 ? _le(&first[1], 4) : 0;
        sample.arrivedNs = tool_monotonic_ns();
        for (size_t i = 0; i < list.fields.size(); i++) {
            const std::vector<uint8_t>& f = set.frames[list.places[i].odt];
            const uint32_t size = list.fields[i]->size;
            const uint32_t at = list.places[i].offset;
            sample.values.push_back(f.size() >= at + size ? _le(&f[at], size) : 0);
        }
        list.samples++;
        if (list.keepSamples) list.kept.push_back(sample);
        list.last = std::move(sample);
        return;
    }
}

void _receive(SOAK_LINK_T* link)
{
    std::vector<SET_T> sets;
    struct pollfd fds[3] = {{link->can[0], POLLIN, 0}, {link->can[1], POLLIN, 0}, {link->peer, POLLIN, 0}};
    while (!link->stop.load()) {
        if (poll(fds, 3, 100) <= 0) continue;
        struct can_frame frame;
        // The master's commands go out on can0.
        if ((fds[2].revents & POLLIN) && recv(link->peer, &frame, sizeof(frame), MSG_DONTWAIT) == sizeof(frame))
            send(link->can[0], &frame, sizeof(frame), MSG_NOSIGNAL);
        for (int port = 0; port < 2; port++) {
            if (!(fds[port].revents & POLLIN)) continue;
            // Whatever waits, without blocking: the load shares the socket.
            while (recv(link->can[port], &frame, sizeof(frame), MSG_DONTWAIT) == sizeof(frame)) {
                {
                    std::lock_guard<std::mutex> guard(link->lock);
                    link->dashFrames[port]++;
                    if (port == 0 && frame.can_id == SETTINGS_FRAME_ID) link->settingsFrameNs.push_back(tool_monotonic_ns());
                }
                if (port != 0 || frame.can_id != link->master.respId || frame.can_dlc == 0) continue;
                const uint8_t length = frame.can_dlc > CAN_MAX_DLEN ? CAN_MAX_DLEN : frame.can_dlc;
                if (frame.data[0] >= XCP_PID_SERVICE_REQUEST) {
                    send(link->peer, &frame, sizeof(frame), MSG_NOSIGNAL | MSG_DONTWAIT);
                } else {
                    _daqFrame(link, &sets, frame.data, length);
                }
            }
        }
    }
}

}  // namespace

bool SoakLinkOpen(SOAK_LINK_T* link, const std::string& root, std::string* error)
{
    int pair[2];
    link->can[0] = can_bus_connect(root, "can0", error);
    link->can[1] = link->can[0] < 0 ? -1 : can_bus_connect(root, "can1", error);
    if (link->can[1] < 0) {
        SoakLinkClose(link);
        return false;
    }
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair) != 0) {
        *error = std::string("socketpair: ") + strerror(errno);
        SoakLinkClose(link);
        return false;
    }
    link->master.fd = pair[0];
    link->peer = pair[1];
    link->stop = false;
    link->thread = std::thread(_receive, link);
    return true;
}

void SoakLinkClose(SOAK_LINK_T* link)
{
    link->stop = true;
    if (link->thread.joinable()) link->thread.join();
    for (int* fd : {&link->can[0], &link->can[1], &link->master.fd, &link->peer}) {
        if (*fd >= 0) close(*fd);
        *fd = -1;
    }
}

XCP_REPLY_T SoakLinkStartDaq(SOAK_LINK_T* link, std::vector<SOAK_DAQ_LIST_T> lists)
{
    std::vector<XCP_DAQ_LIST_T> build;
    for (SOAK_DAQ_LIST_T& list : lists) {
        XCP_DAQ_LIST_T b = {{}, {}, list.event, 0};
        for (const XCP_MAP_FIELD_T* f : list.fields) b.addrs.push_back(f->addr), b.sizes.push_back((uint8_t)f->size);
        XcpMasterDaqLayout(b.sizes, &list.places, &list.numOdt);
        build.push_back(std::move(b));
    }
    const XCP_REPLY_T r = XcpMasterDaqStartLists(&link->master, &build);
    std::lock_guard<std::mutex> guard(link->lock);
    for (size_t l = 0; l < lists.size(); l++) lists[l].firstPid = build[l].firstPid;
    link->lists = std::move(lists);
    link->listsRunning = r.status == XCP_MASTER_OK;
    return r;
}

XCP_REPLY_T SoakLinkStopDaq(SOAK_LINK_T* link)
{
    {
        std::lock_guard<std::mutex> guard(link->lock);
        link->listsRunning = false;
    }
    return XcpMasterDaqStop(&link->master);
}

int64_t SoakLostTicks(const std::vector<uint64_t>& frameNs, uint64_t fromNs, uint64_t toNs, uint64_t* passes)
{
    uint64_t first = 0, last = 0, n = 0;
    for (uint64_t t : frameNs) {
        if (t < fromNs || t > toNs) continue;
        if (n++ == 0) first = t;
        last = t;
    }
    *passes = n > 1 ? (n - 1) * PASSES_PER_SETTINGS_FRAME : 0;
    if (n < 2) return 0;
    const int64_t ticks = std::llround((double)(last - first) / TICK_NS);
    return ticks - (int64_t)*passes;
}

SOAK_TICKS_T SoakTickAccount(const std::vector<SOAK_SAMPLE_T>& samples,
                             bool (*fileWork)(const SOAK_SAMPLE_T& before, const SOAK_SAMPLE_T& pass))
{
    SOAK_TICKS_T t;
    t.passes = samples.size();
    if (samples.size() < 2) return t;
    const uint32_t tickMs = (uint32_t)(TICK_NS / 1000000);
    // Ticks between two samples less the passes between them.
    auto lost = [&](size_t from, size_t to) {
        return (int64_t)((samples[to].timeMs - samples[from].timeMs + tickMs / 2) / tickMs) - (int64_t)(to - from);
    };
    // A tick is lost only behind a pass held up by more than a tick: a gap of two ticks
    // or more. The passes right behind it run the ticks that waited; from the last pass
    // on its tick before it to the first after them, what the count lost is its doing.
    size_t onTick = 0, firstLate = 0;
    bool files = false;
    for (size_t i = 1; i < samples.size(); i++) {
        const uint32_t gap = samples[i].timeMs - samples[i - 1].timeMs;
        t.longestGapMs = std::max(t.longestGapMs, gap);
        if (gap >= 2 * tickMs) {
            if (!firstLate) firstLate = i, files = false;
            files = files || fileWork(samples[i - 1], samples[i]);
            continue;
        }
        if (firstLate && gap < tickMs * 7 / 10) continue;
        if (firstLate) {
            const int64_t n = lost(onTick, i);
            if (n > 0 && files) t.lostToFileWork += (uint64_t)n;
            if (n > 0 && !files) t.lostElsewhere += (uint64_t)n, t.lateElsewhere.push_back(firstLate);
            firstLate = 0;
        }
        onTick = i;
    }
    t.lost = (uint64_t)std::max<int64_t>(0, lost(0, samples.size() - 1));
    return t;
}
