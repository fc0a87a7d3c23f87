// The menus as the driver meets them: reached by the keys, moved through, and a change
// made there seen by the engine controller in frame 0x131 and kept across a power cycle.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "dash_ecu.h"
#include "tool_clock.h"

namespace {

std::string Shot(const char* name, const char* product)
{
    return std::string(name) + "_" + product;
}

class Menus : public ::testing::TestWithParam<const char*> {
protected:
    ::testing::AssertionResult Shows(const char* name, int timeoutMs = 10000) const
    {
        return PageMatchesPicture(root.Path(), Shot(name, GetParam()), timeoutMs);
    }
    void Keys(int key, int times)
    {
        for (int i = 0; i < times; i++) Key(root, key);
    }
    DeviceRoot root{GetParam()};
};

// Every menu at the top and with the highlight on its last row, reached the way the
// driver reaches them: key 4 from system information, then the rows of the main menu.
TEST_P(Menus, EachMenuTopAndBottom)
{
    WriteSettings(root, [](EEVariables_T& s) { s.CURRENT_SCREEN = 4; });
    auto dash = StartPastSplash(root);
    Key(root, 4);
    ASSERT_TRUE(Shows("menu_settings", 20000));
    Keys(2, 5);
    EXPECT_TRUE(Shows("menu_settings_bottom"));
    Key(root, 4);
    EXPECT_TRUE(Shows("menu_gauges")) << "row GAUGES";
    Keys(2, 3);
    EXPECT_TRUE(Shows("menu_gauges_bottom"));
    Key(root, 5);
    EXPECT_TRUE(Shows("menu_settings")) << "back, the highlight at the top again";
    Keys(1, 2);
    Key(root, 4);
    EXPECT_TRUE(Shows("menu_calibrations")) << "up twice wraps to CALIBRATIONS";
    Key(root, 1);
    EXPECT_TRUE(Shows("menu_calibrations_bottom"));
    Stop(*dash);
}

INSTANTIATE_TEST_SUITE_P(BothPanels, Menus, ::testing::Values("310", "720"));

struct FRAME_T {
    double time;
    std::string data;
};

// The frames 0x131 of a dump, with their times.
std::vector<FRAME_T> SettingsFrames(const std::string& dump)
{
    std::vector<FRAME_T> frames;
    for (size_t at = 0; (at = dump.find('(', at)) != std::string::npos; at++) {
        const std::string line = dump.substr(at, dump.find('\n', at) - at);
        const size_t hash = line.find(" can0 131#");
        if (hash != std::string::npos) frames.push_back({strtod(line.c_str() + 1, nullptr), line.substr(hash + 10)});
    }
    return frames;
}

uint8_t StoredBoost(const DeviceRoot& root)
{
    const std::string image = root.Read("app/data/config/motordash-eeprom.dat");
    EEVariables_T record = {};
    if (image.size() < sizeof(record)) return 0;
    memcpy(&record, image.data(), sizeof(record));
    return record.BoostControl;
}

// From power-up, the keys that raise the boost stage by one: key 5 held on the main view
// for the main menu, down to CALIBRATIONS, key 4 into it, key 4 on BOOST CONTROL.
TEST(MenusEndToEnd, BoostStageReachesTheEcuAndSurvivesAPowerCycle)
{
    DeviceRoot root;
    EcuOnBus bus(root);
    ASSERT_TRUE(bus.Ok());
    {
        auto dash = StartPastSplash(root);
        KeyAction(root, 5, "press");
        usleep(3300000);
        KeyAction(root, 5, "release");
        ASSERT_TRUE(PageMatchesPicture(root.Path(), "menu_settings_310", 10000)) << "held 3 s: the main menu";
        for (int i = 0; i < 4; i++) Key(root, 2);
        Key(root, 4);
        ASSERT_TRUE(PageMatchesPicture(root.Path(), "menu_calibrations_310", 10000));
        ASSERT_EQ(StoredBoost(root), 1) << "factory stage";

        Process dump(BinPath("motordash-can"), nullptr, {"dump", root.Path(), "can0", "-t", "4"});
        usleep(300000);
        KeyAction(root, 4, "press");
        ASSERT_EQ(RunProgram(BinPath("motordash-sim"), {"key", root.Path(), "4", "release"}), 0);
        const double released = tool_realtime_s();  // the key line is up from here
        const int64_t releasedMs = NowMs();
        WaitUntil([&] { return StoredBoost(root) == 2; }, 3000);
        const int64_t storedMs = NowMs();
        int status = 0;
        ASSERT_TRUE(dump.Wait(10000, &status));

        const std::vector<FRAME_T> frames = SettingsFrames(dump.Stdout());
        int after = 0;
        for (const FRAME_T& f : frames) {
            if (f.time <= released + 0.1) continue;
            after++;
            EXPECT_EQ(f.data.substr(14), "02") << "D7 of a frame " << f.time - released << " s after the release";
        }
        EXPECT_GE(after, 5) << dump.Stdout();
        EXPECT_EQ(StoredBoost(root), 2);
        EXPECT_LE(storedMs - releasedMs, 1200) << "the settings file holds it within a second";
        EXPECT_TRUE(PageMatchesPicture(root.Path(), "menu_calibrations_boost2_310", 5000));
        Stop(*dash);
    }

    auto dash = StartPastSplash(root);
    std::string out;
    ASSERT_EQ(RunProgram(BinPath("motordash-can"), {"dump", root.Path(), "can0", "-n", "3", "-t", "10"}, &out), 0);
    const std::vector<FRAME_T> frames = SettingsFrames(out);
    ASSERT_FALSE(frames.empty()) << out;
    for (const FRAME_T& f : frames) EXPECT_EQ(f.data.substr(14), "02") << "after the power cycle";
    KeyAction(root, 5, "press");
    usleep(3300000);
    KeyAction(root, 5, "release");
    for (int i = 0; i < 4; i++) Key(root, 2);
    Key(root, 4);
    EXPECT_TRUE(PageMatchesPicture(root.Path(), "menu_calibrations_boost2_310", 10000));
    Stop(*dash);
}

}  // namespace
