#pragma once
// What the harnesses share: a device root made once per process, a reader of an input,
// and the dash run in this process on a controlled clock: brought up as at power-up for
// each input, then driven tick by tick as the signal thread and the main loop drive it.
#include <cstddef>
#include <cstdint>
#include <string>

#include "data.h"

// The temporary device root, made on the first call with the device's folders and every
// key up; DASH_ROOT names it from then on, and it goes when the process ends.
const std::string& FuzzRoot(void);
// Writes a file under the root, making its folders.
void FuzzWriteFile(const std::string& rel, const void* data, size_t size);
// Removes a file or a folder with all it holds from the root.
void FuzzRemoveTree(const std::string& rel);
// A frame of `length` (up to 8 of `bytes`) through port 1's receive table, as the driver
// hands it on.
void FuzzCanFrame(uint32_t id, uint8_t length, const uint8_t* bytes);

// An input read front to back; past its end every read gives zeros.
class FuzzInput {
public:
    FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    size_t Left() const { return size_ - at_; }
    uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
    uint16_t Word()
    {
        const uint16_t low = Byte();
        return (uint16_t)(low | Byte() << 8);
    }
    // Up to n bytes; their number.
    size_t Take(void* out, size_t n);
    // Everything not yet read, as text.
    std::string Rest();

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

// The dash as at power-up at uptime `startMs`: the records, the screens and their keys,
// the tasks, and the settings from the store's image as it stands. `settings`, when
// given, is first put in the image as a stored record. `large`: the large model.
void FuzzDashStart(uint32_t startMs, const EEVariables_T* settings = nullptr, bool large = false);
// Ends the run as a power cut would, but closes a log file left open.
void FuzzDashStop(void);
// One 10 ms tick of the tasks; every second tick also a pass of the main loop, which
// takes the CAN frames waiting, reads the keys, draws and composes the page. Without
// `mainLoop` the main loop is held up, as by a slow page: time passes for the tasks
// alone, and at a fraction of the cost. So that no input takes long, a run has at most
// FUZZ_DASH_MAX_TICKS ticks (false past them) and FUZZ_DASH_MAX_PASSES passes of the
// main loop (the later ticks hold it up).
constexpr uint32_t FUZZ_DASH_MAX_TICKS = 400;
constexpr uint32_t FUZZ_DASH_MAX_PASSES = 60;
bool FuzzDashTick(bool mainLoop = true);
// The key lines: KEYMASK bits set are keys held down.
void FuzzDashKeys(uint8_t mask);
// Frames the dash sent since its start.
uint32_t FuzzDashFramesSent(void);
