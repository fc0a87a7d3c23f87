// What a started dash shows on the simulated framebuffer.
#include <gtest/gtest.h>

#include <csignal>
#include <set>
#include <sys/wait.h>

#include "dash_harness.h"

namespace {

bool PageIsBlack(const FramebufferView& fb)
{
    for (uint32_t y = 0; y < fb.Header().yres; y++) {
        for (uint32_t x = 0; x < fb.Header().xres; x++) {
            if (fb.Pixel(x, y) != 0) return false;
        }
    }
    return true;
}

TEST(Display, StartedDashTurnsPagesAtTheBlankAndLeavesABlackPage)
{
    for (const char* product : {"310", "720"}) {
        DeviceRoot root(product);
        // Paint the pages so that a page the dash never composed would show.
        {
            std::string junk(4096 + 800 * 480 * 2 * 3, '\x5a');
            FramebufferView fb(root.Path());
            root.Write("dev/fb0", root.Read("dev/fb0").substr(0, 4096) + junk.substr(4096, fb.Header().xres * fb.Header().yres_virtual * 2));
        }
        Process dash(BinPath("motordash"), root.Path().c_str());
        ASSERT_TRUE(dash.WaitForOutput("RootFS Version", 10000));
        FramebufferView fb(root.Path());
        ASSERT_TRUE(fb.Valid());
        // Let the first three frames compose every page, then watch the pans.
        const int64_t end = NowMs() + 3000;
        while (NowMs() < end && fb.Header().pan_count < 5) usleep(5000);
        const uint64_t pans0 = fb.Header().pan_count, blanks0 = fb.Header().vblank_count;
        const int64_t t0 = NowMs();
        std::set<uint32_t> offsets;
        while (NowMs() - t0 < 1000) {
            offsets.insert(__atomic_load_n(&fb.Header().yoffset, __ATOMIC_RELAXED));
            usleep(2000);
        }
        const double seconds = (NowMs() - t0) / 1000.0;
        const double panRate = (fb.Header().pan_count - pans0) / seconds;
        EXPECT_NEAR(panRate, 60.0, 8.0) << product;
        EXPECT_NEAR((fb.Header().vblank_count - blanks0) / seconds, 60.0, 8.0) << product;
        const uint32_t h = fb.Header().yres;
        EXPECT_EQ(offsets, (std::set<uint32_t>{0, h, 2 * h})) << product << ": three pages in turn";
        EXPECT_FALSE(PageIsBlack(fb)) << product << ": the splash";
        EXPECT_EQ(root.Read("sys/class/leds/lcdled-pwm/brightness"), "255") << product;

        ASSERT_TRUE(dash.Signal(SIGTERM));
        int status = 0;
        ASSERT_TRUE(dash.Wait(2000, &status));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << dash.Stderr();
        EXPECT_EQ(fb.Header().yoffset, 0u) << "back on page 0 at shutdown";
        EXPECT_TRUE(PageIsBlack(fb));
    }
}

}  // namespace
