#pragma once
// System tests run the real programs in a temporary device root and look at what a
// user would see: the page on the simulated framebuffer, the output, the files.
#include <csignal>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "simfb.h"

// Paths of the built programs.
std::string BinPath(const char* name);

// A fresh device root made by `motordash-sim init`, removed with the object.
class DeviceRoot {
public:
    explicit DeviceRoot(const char* product = "310");
    ~DeviceRoot();
    const std::string& Path() const { return path_; }
    std::string Abs(const std::string& rel) const { return path_ + "/" + rel; }
    void Write(const std::string& rel, const std::string& content, int mode = 0644) const;
    std::string Read(const std::string& rel) const;
    bool Exists(const std::string& rel) const;
    void Remove(const std::string& rel) const;

private:
    std::string path_;
};

// A started program with its output captured to files.
class Process {
public:
    // Starts `binary` with DASH_ROOT=root (unless root is null) and the extra
    // environment entries ("NAME=value"); no core files.
    Process(const std::string& binary, const char* root, const std::vector<std::string>& args = {},
            const std::vector<std::string>& env = {});
    ~Process();
    pid_t Pid() const { return pid_; }
    bool Signal(int sig) const;
    // Waits up to timeoutMs for the end; true when it ended, with its wait status.
    bool Wait(int timeoutMs, int* status);
    // Polls stdout until it holds `text`, up to timeoutMs.
    bool WaitForOutput(const std::string& text, int timeoutMs) const;
    std::string Stdout() const;
    std::string Stderr() const;

private:
    pid_t pid_ = -1;
    std::string outPath_;
    std::string errPath_;
};

// Runs a program to its end; returns its exit code (or 128 + signal) with the output.
int RunProgram(const std::string& binary, const std::vector<std::string>& args, std::string* out = nullptr,
               std::string* err = nullptr, const char* root = nullptr);

// The simulated framebuffer of a root, mapped as the viewers map it.
class FramebufferView {
public:
    explicit FramebufferView(const std::string& root);
    ~FramebufferView();
    bool Valid() const { return map_ != nullptr; }
    const SIMFB_HEADER_T& Header() const { return *header_; }
    // A pixel of the page on show.
    uint16_t Pixel(uint32_t x, uint32_t y) const;
    // The whole page on show, xres x yres pixels.
    std::vector<uint16_t> Page() const;

private:
    // The first pixel of the page on show.
    const uint16_t* PageOnShow() const;
    void* map_ = nullptr;
    size_t length_ = 0;
    const SIMFB_HEADER_T* header_ = nullptr;
};

// Waits up to `timeoutMs` for the page on show in `root` to equal the reference picture
// NAME, and reports the last difference when it never does. While the pictures are
// being rewritten, stores the page once it has stayed the same for half a second (the
// first time this run; a later look compares).
::testing::AssertionResult PageMatchesPicture(const std::string& root, const std::string& name, int timeoutMs = 5000);
// The same for any source of w x h pages, read through `page` at each look.
::testing::AssertionResult PagesMatchPicture(const std::function<std::vector<uint16_t>()>& page, uint32_t w,
                                             uint32_t h, const std::string& name, int timeoutMs);

// Monotonic milliseconds.
int64_t NowMs();
// Polls `done` until it holds, up to timeoutMs; its last answer.
bool WaitUntil(const std::function<bool()>& done, int timeoutMs);
