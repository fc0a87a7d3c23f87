// A dash on a running virtual bus: its settings frame, and the ECU's frames decoded.
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <sys/wait.h>

#include "crc.h"
#include "dash_harness.h"

namespace {

class DashOnBus : public ::testing::Test {
protected:
    void SetUp() override
    {
        bus = std::make_unique<Process>(BinPath("motordash-can"), nullptr, std::vector<std::string>{"bus", root.Path()});
        ASSERT_TRUE(bus->WaitForOutput("serving", 10000));
    }
    void TearDown() override
    {
        if (bus) bus->Signal(SIGTERM);
    }
    void Stop(Process& dash)
    {
        dash.Signal(SIGTERM);
        int status = 0;
        ASSERT_TRUE(dash.Wait(10000, &status));  // a bound on a hang, not the speed
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << dash.Stderr();
    }
    DeviceRoot root;
    std::unique_ptr<Process> bus;
};

// Sets a byte of the stored settings record and mends its check word.
void PatchSettings(const DeviceRoot& root, const std::string& file, size_t offset, uint8_t value)
{
    std::string image = root.Read(file);
    ASSERT_EQ(image.size(), 32768u);
    image[offset] = (char)value;
    const uint32_t crc = uiCrcCalculation(reinterpret_cast<const uint8_t*>(image.data()) + 4, 396);
    memcpy(&image[0], &crc, 4);
    root.Write(file, image);
}

TEST_F(DashOnBus, SendsTheSettingsFrameEvery100msWithTheStoredBoostStage)
{
    // A first run writes the factory settings; the boost stage is then set to 4.
    {
        Process dash(BinPath("motordash"), root.Path().c_str());
        const int64_t end = NowMs() + 20000;
        while (NowMs() < end && root.Read("app/data/config/motordash-eeprom.dat").size() != 32768) usleep(20000);
        Stop(dash);
    }
    PatchSettings(root, "app/data/config/motordash-eeprom.dat", 395, 4);

    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("Bit-timing for can0", 20000)) << dash.Stdout();
    std::string out;
    ASSERT_EQ(RunProgram(BinPath("motordash-can"), {"dump", root.Path(), "can0", "-t", "5"}, &out), 0);
    Stop(dash);

    std::vector<double> times;
    for (size_t at = 0; (at = out.find('(', at)) != std::string::npos; at++) {
        const size_t line = out.find('\n', at);
        const std::string text = out.substr(at, line - at);
        if (text.find(" can0 131#") == std::string::npos) continue;
        times.push_back(strtod(text.c_str() + 1, nullptr));
        EXPECT_EQ(text.substr(text.size() - 2), "04") << text << ": D7 is the boost stage";
        EXPECT_EQ(text.size() - text.find('#') - 1, 16u) << text;
    }
    ASSERT_GE(times.size(), 40u) << out;
    EXPECT_LE(times.size(), 51u);
    // Counted in 10 ms passes, the frame keeps to the grid of the ticks: frame k never
    // comes ahead of k * 100 ms after the first (beyond a late first one). A busy
    // machine may lose a tick now and then, which only makes frames later.
    for (size_t k = 1; k < times.size(); k++) EXPECT_GE(times[k] - times[0], 0.1 * k - 0.03) << "frame " << k;
    const double mean = (times.back() - times.front()) / (times.size() - 1);
    EXPECT_GE(mean, 0.0995);
    EXPECT_LE(mean, 0.105);
}

TEST_F(DashOnBus, FramesSentToTheDashReachTheirMailboxes)
{
    Process dash(BinPath("motordash-probe"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("Bit-timing for can0", 20000));
    // Once a frame of the dash's own comes through, the bus serves its connection and
    // hands it what others send; before that a frame could miss it.
    std::string first;
    ASSERT_EQ(RunProgram(BinPath("motordash-can"), {"dump", root.Path(), "can0", "-n", "1", "-t", "20"}, &first), 0);
    ASSERT_NE(first.find(" can0 "), std::string::npos) << first;
    // 0x101: D0-D1 signed -2, D6 throttle 77 %. A short frame and an extended one with
    // the same id are dropped and change nothing.
    ASSERT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can0", "101#FFFE0000000004D00"}), 2)
        << "nine bytes are refused by the tool";
    const int64_t fullAt = NowMs();
    ASSERT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can0", "101#FFFE000000004D00"}), 0);
    usleep(500000);
    ASSERT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can0", "101#0102"}), 0);
    ASSERT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can0", "00000101#0102030405060708"}), 0);
    usleep(100000);
    Stop(dash);
    const int64_t stoppedAt = NowMs();
    const std::string probe = root.Read("tmp/can-probe.txt");
    EXPECT_NE(probe.find("Differential_WheelSpeed -2\n"), std::string::npos) << probe;
    EXPECT_NE(probe.find("TPS_g 77\n"), std::string::npos) << probe;
    const size_t at = probe.find("age_0x101 ");
    ASSERT_NE(at, std::string::npos);
    const long age = strtol(probe.c_str() + at + 10, nullptr, 10);
    // In passes of 10 ms: at least the half second since the full frame (less a few
    // ticks a busy machine may lose), and never more than the wall clock allows.
    EXPECT_GE(age, 40) << "the age counts from the last full frame, not from the dropped ones";
    EXPECT_LE(age, (stoppedAt - fullAt) / 10 + 1);
}

}  // namespace
