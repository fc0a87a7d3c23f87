// Keys pressed on a running dash through its key lines.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <sys/wait.h>

#include "dash_harness.h"

namespace {

constexpr uint16_t DARKER_GRAY = 0x4208;
constexpr uint16_t LIT[5] = {0xF800, 0x07E0, 0x001F, 0xFFE0, 0x07FF};

// The colour of key i's square on the page on show.
uint16_t Square(const FramebufferView& fb, uint32_t i)
{
    const uint32_t w = fb.Header().xres / 5;
    return fb.Pixel(i * w + w / 2, 70);
}

bool WaitFor(const FramebufferView& fb, uint32_t key, uint16_t colour, int ms)
{
    const int64_t end = NowMs() + ms;
    while (NowMs() < end) {
        if (Square(fb, key) == colour) return true;
        usleep(5000);
    }
    return false;
}

void Key(const DeviceRoot& root, int key, const char* action)
{
    ASSERT_EQ(RunProgram(BinPath("motordash-sim"), {"key", root.Path(), std::to_string(key), action}), 0);
}

TEST(Keys, ARunningDashReactsToTheKeyLines)
{
    for (const char* product : {"310", "720"}) {
        DeviceRoot root(product);
        Process dash(BinPath("motordash-keytest"), root.Path().c_str());
        ASSERT_TRUE(dash.WaitForOutput("RootFS Version", 10000));
        FramebufferView fb(root.Path());
        ASSERT_TRUE(WaitFor(fb, 0, DARKER_GRAY, 5000)) << product << ": the test screen is up";
        // The bar opens below the squares a frame later: key 1's face shows there.
        const int64_t end = NowMs() + 2000;
        while (NowMs() < end && fb.Pixel(32, fb.Header().yres - 22) == 0) usleep(5000);
        EXPECT_NE(fb.Pixel(32, fb.Header().yres - 22), 0) << product;
        for (int key = 1; key <= 5; key++) {
            Key(root, key, "press");
            EXPECT_TRUE(WaitFor(fb, (uint32_t)key - 1, LIT[key - 1], 3000)) << product << " key " << key;
            if (key == 2) {
                EXPECT_TRUE(PageMatchesPicture(root.Path(), std::string("keytest_key2_held_") + product));
            }
            Key(root, key, "release");
            EXPECT_TRUE(WaitFor(fb, (uint32_t)key - 1, DARKER_GRAY, 3000)) << product << " key " << key;
        }
        EXPECT_EQ(root.Read("sys/class/leds/keyled-pwm/brightness"), "255");
        dash.Signal(SIGTERM);
        int status = 0;
        ASSERT_TRUE(dash.Wait(3000, &status));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << dash.Stderr();
        EXPECT_EQ(root.Read("sys/class/leds/buzzer-pwm/brightness"), "0") << "silent after shutdown";
    }
}

TEST(Keys, BadArgumentsOfTheKeyCommand)
{
    DeviceRoot root;
    std::string err;
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"key", root.Path(), "6", "press"}, nullptr, &err), 2);
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"key", root.Path(), "1", "push"}, nullptr, &err), 2);
    EXPECT_NE(err.find("key 1 to 5"), std::string::npos);
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"key", root.Abs("nowhere"), "1", "press"}, nullptr, &err), 1);
    EXPECT_NE(err.find("cannot open"), std::string::npos);
}

}  // namespace
