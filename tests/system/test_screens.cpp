// The dash's screens as the driver sees them: the real program on a virtual bus with an
// engine controller sending fixed frames, keys pressed on its key lines, the page read
// from the framebuffer and compared with the reference pictures.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <initializer_list>
#include <sys/wait.h>

#include "can_signals.h"
#include "dash_ecu.h"

namespace {

// Knock retard by cylinder: -1, -3, 0, -5, -2, -8, 0, -4 degrees.
const std::string KNOCK = "107#FFFD00FBFEF800FC";
// Fault frames: the first flag of 0x121 and "OIL PRESSURE LOW" (0x132 D4.0).
const std::string FAULTS_121 = "121#8000000000000000";
const std::string FAULTS_132 = "132#0000000001000000";
const std::string FAULTS_133 = "133#0000000000000000";
// Identity: the firmware text in two halves, serial number, part number.
// "FW 2.10" and "-B", 7 bytes a half.
const std::vector<std::string> IDENTITY = {"122#00465720322E3130|122#012D420000000000", "123#534E313233343536",
                                           "124#504E2D3737383841"};

// What the first factory page reads: both banks' air/fuel and the target (whose text
// 0x119 guards), the stoichiometric ratio, manifold pressure and throttle.
std::vector<std::string> Engine()
{
    return {EcuFrame(0x164, {{"Final_O2_Bank1", 0.98}, {"Final_O2_Bank2", 1.02}}), EcuFrame(0x104, {{"Target_O2", 1.0}}),
            EcuFrame(0x118, {{"Primary_StoichSetpoint", 14.2}, {"Coolant_Temp", 88}, {"BatteryVolts", 13.9}}),
            EcuFrame(0x125, {{"MAP_p", 96}, {"Final_AFR1", 14.5}, {"Final_AFR2", 13.9}}),
            EcuFrame(0x101, {{"TPS_g", 22}}), EcuFrame(0x119, {{"Engine_HP_Potential", 212}})};
}

std::vector<std::string> AllFrames()
{
    std::vector<std::string> frames = {KNOCK, FAULTS_121, FAULTS_132, FAULTS_133};
    frames.insert(frames.end(), IDENTITY.begin(), IDENTITY.end());
    const std::vector<std::string> engine = Engine();
    frames.insert(frames.end(), engine.begin(), engine.end());
    return frames;
}

// A dash on a bus with the ECU's frames, started on the main screen `currentScreen`.
class Screens : public ::testing::TestWithParam<const char*> {
protected:
    void Start(uint8_t currentScreen)
    {
        WriteSettings(root, [&](EEVariables_T& s) { s.CURRENT_SCREEN = currentScreen; });
        ASSERT_TRUE(ecu.Ok());
        ecu.Send(AllFrames());
        dash = currentScreen >= 1 && currentScreen <= 4
                   ? StartPastSplash(root)
                   : std::make_unique<Process>(BinPath("motordash"), root.Path().c_str());
    }
    std::string Name(const char* screen) const { return std::string(screen) + "_" + GetParam(); }
    ::testing::AssertionResult Shows(const char* screen, int timeoutMs = 10000) const
    {
        return PageMatchesPicture(root.Path(), Name(screen), timeoutMs);
    }

    DeviceRoot root{GetParam()};
    EcuOnBus ecu{root};
    std::unique_ptr<Process> dash;
};

// The chain of main screens and the keys of each, from the start on the knock screen.
TEST_P(Screens, TheChainFromKnockWithEveryKey)
{
    Start(3);
    ASSERT_TRUE(Shows("knock", 20000)) << "after the splash, the screen the driver left";
    Key(root, 3);
    Key(root, 5);
    EXPECT_TRUE(Shows("knock", 1000)) << "keys 3 and 5 do nothing here";
    Key(root, 2);
    EXPECT_TRUE(Shows("sysinfo"));
    Key(root, 2);
    EXPECT_TRUE(Shows("sysinfo")) << "the end of the chain: key 2 enters it again";
    Key(root, 1);
    EXPECT_TRUE(Shows("knock"));
    Key(root, 1);
    EXPECT_TRUE(Shows("faults"));
    Key(root, 2);
    EXPECT_TRUE(Shows("knock"));
    Key(root, 1);
    Key(root, 1);
    EXPECT_TRUE(Shows("quad"));
    Stop(*dash);
}

TEST_P(Screens, KeyFourLeadsToTheMainMenuFromEveryListScreen)
{
    Start(2);
    ASSERT_TRUE(Shows("faults", 20000));
    Key(root, 4);
    EXPECT_TRUE(Shows("menu_settings"));
    Key(root, 5);
    EXPECT_TRUE(Shows("faults")) << "back where the menu was entered";
    Key(root, 2);
    Key(root, 2);
    ASSERT_TRUE(Shows("sysinfo"));
    Key(root, 4);
    EXPECT_TRUE(Shows("menu_settings"));
    Stop(*dash);
}

// A damaged record's screen number gives the splash no target: it stands until key 1.
TEST_P(Screens, SplashStaysWithoutAStartScreenUntilKeyOne)
{
    Start(0);
    ASSERT_TRUE(Shows("splash", 20000));
    usleep(2500000);
    EXPECT_TRUE(Shows("splash", 500)) << "still there after 2 s of uptime";
    Key(root, 2);
    EXPECT_TRUE(Shows("splash", 500));
    Key(root, 1);
    EXPECT_TRUE(Shows("quad"));
    Stop(*dash);
}

TEST_P(Screens, FaultListGivesWayWhenTheFaultFramesStop)
{
    Start(2);
    ASSERT_TRUE(Shows("faults", 20000));
    std::vector<std::string> frames = {KNOCK};
    frames.insert(frames.end(), IDENTITY.begin(), IDENTITY.end());
    ecu.Send(frames);
    // 301 passes without 0x121: about 3 s on the dash's own clock.
    usleep(3500000);
    EXPECT_TRUE(Shows("faults_no_communication", 15000));
    Stop(*dash);
}

// The main view edited in place: key 3 held for edit mode with its bar and page badge,
// key 3 for the gauge stage, key 2 for the next gauge in cell 1, key 5 twice back out.
TEST_P(Screens, QuadPageEditedInPlace)
{
    Start(1);
    ASSERT_TRUE(Shows("quad", 20000));
    KeyAction(root, 3, "press");
    usleep(3500000);
    EXPECT_TRUE(Shows("quad_edit_page", 1000)) << "edit mode while the key is still down";
    KeyAction(root, 3, "release");
    Key(root, 3);
    EXPECT_TRUE(Shows("quad_edit_gauge"));
    Key(root, 2);
    EXPECT_TRUE(Shows("quad_edit_gauge_next")) << "cell 1 shows the gauge after the last one chosen";
    Key(root, 5);
    Key(root, 5);
    EXPECT_TRUE(Shows("quad_edited"));
    Stop(*dash);
}

INSTANTIATE_TEST_SUITE_P(BothPanels, Screens, ::testing::Values("310", "720"));

// The remembered screen survives a power cycle: off on the knock screen, on again, and
// after the splash the knock screen is back.
TEST(ScreensPowerCycle, KnockScreenComesBack)
{
    DeviceRoot root;
    EcuOnBus ecu(root);
    ASSERT_TRUE(ecu.Ok());
    ecu.Send(AllFrames());
    WriteSettings(root, [](EEVariables_T& s) { s.CURRENT_SCREEN = 2; });
    {
        auto dash = StartPastSplash(root);
        ASSERT_TRUE(PageMatchesPicture(root.Path(), "faults_310", 20000));
        Key(root, 2);
        ASSERT_TRUE(PageMatchesPicture(root.Path(), "knock_310"));
        usleep(1500000);  // the store's once-a-second pass writes the screen number
        Stop(*dash);
    }
    auto dash = StartPastSplash(root);
    EXPECT_TRUE(PageMatchesPicture(root.Path(), "knock_310", 20000));
    Stop(*dash);
}

}  // namespace
