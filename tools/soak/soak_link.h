#pragma once
// The soak's side of the dash's bus: one client of each port, whose receiving thread
// counts the dash's settings frame, takes the measurement lists' frames apart, and
// hands the calibration link's answers to an XCP master through a socket pair. So one
// client both loads the bus and calibrates over it, and no frame of the dash is lost
// to a reader that is busy elsewhere.
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "xcp_map.h"
#include "xcp_master.h"

// One sample of a measurement list: the dash's time stamp (ms) and each variable's
// value, read as an unsigned number of its size.
struct SOAK_SAMPLE_T {
    uint32_t timeMs;
    uint64_t arrivedNs;  // when its last frame came in, monotonic
    std::vector<uint32_t> values;
};

struct SOAK_DAQ_LIST_T {
    std::vector<const XCP_MAP_FIELD_T*> fields;
    uint8_t event = 0;
    bool keepSamples = false;  // every sample kept, or only counted
    // Filled as the list runs.
    uint8_t firstPid = 0;
    std::vector<XCP_DAQ_PLACE_T> places;
    uint8_t numOdt = 0;
    uint64_t samples = 0;
    uint64_t broken = 0;  // sets with a frame missing
    std::vector<SOAK_SAMPLE_T> kept;
    SOAK_SAMPLE_T last = {};
};

struct SOAK_LINK_T {
    int can[2] = {-1, -1};  // the bus clients; the load sends on them too
    XCP_MASTER_T master;    // its frames pass through the receiving thread
    int peer = -1;          // the thread's end of the master's socket pair
    std::thread thread;
    std::atomic<bool> stop{false};

    std::mutex lock;  // guards what follows
    std::vector<SOAK_DAQ_LIST_T> lists;
    bool listsRunning = false;
    std::vector<uint64_t> settingsFrameNs;  // arrival of each frame 0x131, monotonic
    uint64_t dashFrames[2] = {0, 0};        // everything the dash sent, by port
};

// Connects to both ports of the root's bus and starts the receiving thread.
bool SoakLinkOpen(SOAK_LINK_T* link, const std::string& root, std::string* error);
void SoakLinkClose(SOAK_LINK_T* link);

// Builds the lists (DAQ unlocked), starts them, and from then on takes their frames apart.
XCP_REPLY_T SoakLinkStartDaq(SOAK_LINK_T* link, std::vector<SOAK_DAQ_LIST_T> lists);
// Stops and frees the lists; their figures stay.
XCP_REPLY_T SoakLinkStopDaq(SOAK_LINK_T* link);

// The ticks of the foreground task lost between the first and the last settings frame
// that arrived at or after `fromNs` and at or before `toNs`: the dash sends the frame
// every tenth pass of its 10 ms task, so n frames span 10 (n - 1) passes, and the time
// they took in ticks less that is what was lost. *passes gets the passes counted.
int64_t SoakLostTicks(const std::vector<uint64_t>& frameNs, uint64_t fromNs, uint64_t toNs, uint64_t* passes);

// The same from a list sampled on every pass (events 0 and 1), by the dash's own clock:
// the ticks its time stamps span less the passes sampled. A pass held up by two ticks
// or more, with the passes right behind it that ran the ticks that had waited, is
// charged with what the count lost over them: to the logger when fileWork(sample before,
// late pass's sample) says a late pass touched the stick, elsewhere otherwise.
struct SOAK_TICKS_T {
    uint64_t passes = 0;
    uint64_t lost = 0;
    uint64_t lostToFileWork = 0;
    uint64_t lostElsewhere = 0;
    uint32_t longestGapMs = 0;
    std::vector<size_t> lateElsewhere;  // the samples of the late passes charged elsewhere
};
SOAK_TICKS_T SoakTickAccount(const std::vector<SOAK_SAMPLE_T>& samples,
                             bool (*fileWork)(const SOAK_SAMPLE_T& before, const SOAK_SAMPLE_T& pass));
