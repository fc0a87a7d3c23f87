#pragma once
// A board of a few lines on a pseudo-terminal linked at dev/ttySP2 of a test root: it
// answers the version request as bootloader or application, keeps a flash of its own
// for the update commands, and records every sentence it is sent.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <mutex>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "ioboard_sentence.h"
#include "test_root.h"

// Polls until `done` holds or a few seconds have passed.
inline bool WaitFor(const std::function<bool()>& done, int milliseconds = 5000)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

class FakeBoard {
public:
    static constexpr unsigned FLASH_START = 0x7C00;
    static constexpr unsigned VERSION_ADDRESS = 0x7C00 + 32251;

    explicit FakeBoard(const TestRoot& root, int applicationVersion = 5)
        : flash_(0x10000, 0xFF)
    {
        flash_[VERSION_ADDRESS] = (unsigned char)applicationVersion;
        master_ = posix_openpt(O_RDWR | O_NOCTTY);
        grantpt(master_);
        unlockpt(master_);
        const std::string slave = ptsname(master_);
        // Held open so that the line stays up while the dash closes and opens its side.
        slave_ = open(slave.c_str(), O_RDWR | O_NOCTTY);
        root.Write("dev/.keep", "");
        symlink(slave.c_str(), root.Abs("dev/ttySP2").c_str());
        thread_ = std::thread([this] { Run(); });
    }
    ~FakeBoard()
    {
        stop_ = true;
        thread_.join();
        close(slave_);
        close(master_);
    }

    // Writes raw bytes to the dash.
    void Write(const std::string& bytes) const
    {
        if (!silent_) (void)!write(master_, bytes.data(), bytes.size());
    }
    void Send(const std::string& body) const { Write(Sentence(body)); }

    // Every sentence received, without its checksum.
    std::vector<std::string> Received() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }
    int Count(const std::string& body) const
    {
        int n = 0;
        for (const std::string& s : Received()) n += s == body;
        return n;
    }
    bool Got(const std::string& body) const { return Count(body) > 0; }
    // Raw lines as they came, checksum included.
    std::vector<std::string> Lines() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }
    unsigned char Flash(unsigned address) const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return flash_[address];
    }

    std::atomic<bool> silent_{false};       // answers nothing, like a board pulled off
    std::atomic<int> failErases_{0};        // this many erases are refused
    std::atomic<int> bootloaderVersion_{1};

private:
    void Run()
    {
        std::string line;
        while (!stop_) {
            struct pollfd p = {master_, POLLIN, 0};
            if (poll(&p, 1, 10) <= 0) continue;
            char buf[256];
            const ssize_t n = read(master_, buf, sizeof(buf));
            for (ssize_t i = 0; i < n; i++) {
                if (buf[i] != '\r') {
                    line += buf[i];
                    continue;
                }
                Handle(line);
                line.clear();
            }
        }
    }

    void Handle(const std::string& line)
    {
        const size_t star = line.rfind('*');
        const std::string body = line.substr(0, star);
        unsigned arg1 = 0, arg2 = 0;
        std::string reply;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            lines_.push_back(line);
            received_.push_back(body);
            char text[64];
            const int app = flash_[VERSION_ADDRESS];
            if (body == "$Z,5a5a") {
                inApplication_ = false;
            } else if (body == "$x") {
                inApplication_ = app != 255;
            } else if (body == "$W") {
                snprintf(text, sizeof(text), inApplication_ ? "$W,m,%02X,b,%02X,h,02" : "$W,b,%02X,a,%02X,h,02",
                         inApplication_ ? app : bootloaderVersion_.load(), inApplication_ ? bootloaderVersion_.load() : app);
                reply = text;
            } else if (sscanf(body.c_str(), "$e,%x", &arg1) == 1) {
                const bool fail = failErases_ > 0 && failErases_-- > 0;
                for (unsigned a = arg1; !fail && a < arg1 + 0x300 && a < flash_.size(); a++) flash_[a] = 0xFF;
                reply = fail ? "$e,1" : "$e,0";
            } else if (sscanf(body.c_str(), "$p,%x,%x", &arg1, &arg2) == 2) {
                if (arg1 < flash_.size()) flash_[arg1] = (unsigned char)arg2;
                reply = "$p,0";
            } else if (sscanf(body.c_str(), "$c,%x", &arg1) == 1) {
                unsigned sum = 0;
                for (unsigned i = 0; i < arg1 && FLASH_START + i < flash_.size(); i++) sum += flash_[FLASH_START + i];
                snprintf(text, sizeof(text), "$c,%04X", sum & 0xFFFF);
                reply = text;
            }
        }
        if (!reply.empty()) Send(reply);
    }

    int master_ = -1;
    int slave_ = -1;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    mutable std::mutex mutex_;
    std::vector<std::string> received_;
    std::vector<std::string> lines_;
    std::vector<unsigned char> flash_;
    bool inApplication_ = false;
};
