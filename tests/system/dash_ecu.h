#pragma once
// What a screen test puts around a dash: a settings file in a chosen state, and an
// engine controller that sends fixed frames on the virtual bus.
#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "can_signals.h"
#include "crc.h"
#include "dash_harness.h"
#include "data.h"

// The settings file of the dash: the factory record with `change` applied, its check
// word mended, as the store keeps it.
inline std::string SettingsImage(const std::function<void(EEVariables_T&)>& change)
{
    EEVariables_T record = EEVariables_DEFAULT;
    change(record);
    record.uiCRC = uiCrcCalculation(reinterpret_cast<const U8*>(&record) + 4, sizeof(record) - 4);
    std::string image(32768, '\xFF');
    memcpy(image.data(), &record, sizeof(record));
    return image;
}

inline void WriteSettings(const DeviceRoot& root, const std::function<void(EEVariables_T&)>& change)
{
    root.Write("app/data/config/motordash-eeprom.dat", SettingsImage(change));
}

// A frame of the engine controller with these signals, the others 0, as "id#hex".
inline std::string EcuFrame(uint32_t id, std::initializer_list<std::pair<const char*, double>> signals)
{
    uint8_t data[8] = {};
    for (const auto& [name, value] : signals) CANEncodeSignal(CAN_SIGNALS[CANSignalIndex(name)], value, data);
    char text[32];
    int n = snprintf(text, sizeof(text), "%03X#", id);
    for (uint8_t b : data) n += snprintf(text + n, sizeof(text) - (size_t)n, "%02X", b);
    return text;
}

// The virtual bus of a root, and an engine controller on it that sends each of its
// frames ("107#FFFD...") every 100 ms until Stop or the end of the object, 10 ms apart
// as an ECU spreads them. Frames of one id that take turns ("122#00...|122#01...") go
// one a period: two in one pass of the dash would leave only the second.
class EcuOnBus {
public:
    explicit EcuOnBus(const DeviceRoot& root) : root_(root)
    {
        bus_ = std::make_unique<Process>(BinPath("motordash-can"), nullptr, std::vector<std::string>{"bus", root.Path()});
        ok_ = bus_->WaitForOutput("serving", 10000);
    }
    ~EcuOnBus()
    {
        Stop();
        if (bus_) bus_->Signal(SIGTERM);
    }
    bool Ok() const { return ok_; }
    // Sends the frames every 100 ms for `seconds`.
    void Send(const std::vector<std::string>& frames, int seconds = 120)
    {
        Stop();
        std::vector<std::vector<std::string>> turns(frames.size());
        for (size_t i = 0; i < frames.size(); i++) {
            for (size_t at = 0, bar; at <= frames[i].size(); at = bar + 1) {
                bar = frames[i].find('|', at);
                if (bar == std::string::npos) bar = frames[i].size();
                turns[i].push_back(frames[i].substr(at, bar - at));
            }
        }
        std::string log;
        char line[64];
        for (int tick = 0; tick < seconds * 10; tick++) {
            for (size_t i = 0; i < frames.size(); i++) {
                const int us = (tick % 10) * 100000 + (int)(i % 10) * 10000;
                const std::string& frame = turns[i][(size_t)tick % turns[i].size()];
                snprintf(line, sizeof(line), "(%d.%06d) can0 %s\n", 1000 + tick / 10, us, frame.c_str());
                log += line;
            }
        }
        root_.Write("tmp/ecu.log", log);
        player_ = std::make_unique<Process>(BinPath("motordash-can"), nullptr,
                                            std::vector<std::string>{"play", root_.Path(), root_.Abs("tmp/ecu.log")});
    }
    void Stop()
    {
        if (!player_) return;
        player_->Signal(SIGTERM);
        int status = 0;
        player_->Wait(5000, &status);
        player_.reset();
    }

private:
    const DeviceRoot& root_;
    std::unique_ptr<Process> bus_;
    std::unique_ptr<Process> player_;
    bool ok_ = false;
};

// Keys on the key lines of a running dash, as motordash-sim presses them.
inline void KeyAction(const DeviceRoot& root, int key, const char* action)
{
    ASSERT_EQ(RunProgram(BinPath("motordash-sim"), {"key", root.Path(), std::to_string(key), action}), 0);
    usleep(300000);  // the key scan and a few foreground passes see each state
}

inline void Key(const DeviceRoot& root, int key)
{
    KeyAction(root, key, "press");
    KeyAction(root, key, "release");
}

// The splash stands for the first 2 s of the dash's uptime; what comes after it is what
// a test looks at (and what a rewrite of the pictures must not catch).
inline std::unique_ptr<Process> StartPastSplash(const DeviceRoot& root)
{
    auto dash = std::make_unique<Process>(BinPath("motordash"), root.Path().c_str());
    usleep(2600000);
    return dash;
}

inline void Stop(Process& dash)
{
    dash.Signal(SIGTERM);
    int status = 0;
    ASSERT_TRUE(dash.Wait(10000, &status));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << dash.Stderr();
}
