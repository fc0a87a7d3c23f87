// motordash-sim init and screenshot.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "dash_harness.h"

namespace {

uint32_t BigEndian32(const std::string& s, size_t at)
{
    return (uint32_t)(uint8_t)s[at] << 24 | (uint32_t)(uint8_t)s[at + 1] << 16 | (uint32_t)(uint8_t)s[at + 2] << 8 |
           (uint8_t)s[at + 3];
}

TEST(SimInit, MakesACompleteRootForEachProduct)
{
    for (const auto& [product, id, width, height] :
         {std::tuple{"310", 0u, 320u, 240u}, std::tuple{"720", 256u, 800u, 480u}}) {
        DeviceRoot root(product);
        const std::string record = root.Read("sys/uid/otp/id.bin");
        ASSERT_EQ(record.size(), 16u);
        EXPECT_EQ((uint8_t)record[4] | (uint8_t)record[5] << 8, (int)id);
        FramebufferView fb(root.Path());
        ASSERT_TRUE(fb.Valid());
        EXPECT_EQ(fb.Header().xres, width);
        EXPECT_EQ(fb.Header().yres, height);
        EXPECT_EQ(fb.Header().yres_virtual, 3 * height);
        EXPECT_EQ(fb.Header().bits_per_pixel, 16u);
        for (int line : {68, 69, 71, 99, 70}) {
            EXPECT_EQ(root.Read("sys/class/gpio/gpio" + std::to_string(line) + "/value"), "1\n") << line;
        }
        for (const char* led : {"lcdled-pwm", "keyled-pwm", "buzzer-pwm"}) {
            EXPECT_TRUE(root.Exists(std::string("sys/class/leds/") + led + "/brightness")) << led;
        }
        for (const char* dir : {"app/bin", "app/data/config", "app/data/log", "app/event", "media", "tmp", "run/can"}) {
            EXPECT_TRUE(root.Exists(dir)) << dir;
        }
        struct stat st;
        ASSERT_EQ(stat(root.Abs("usr/sbin/fw_printenv").c_str(), &st), 0);
        EXPECT_TRUE(st.st_mode & S_IXUSR);
    }
}

TEST(SimInit, ChangingTheProductRemakesTheFramebuffer)
{
    DeviceRoot root("310");
    ASSERT_EQ(RunProgram(BinPath("motordash-sim"), {"init", root.Path(), "--product", "720"}), 0);
    FramebufferView fb(root.Path());
    ASSERT_TRUE(fb.Valid());
    EXPECT_EQ(fb.Header().xres, 800u);
}

TEST(SimInit, BadArguments)
{
    std::string err;
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"init", "/tmp/x", "--product", "999"}, nullptr, &err), 2);
    EXPECT_NE(err.find("unknown product '999'"), std::string::npos) << err;
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"init"}, nullptr, &err), 2);
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"frobnicate"}, nullptr, &err), 2);
    EXPECT_NE(err.find("unknown command 'frobnicate'"), std::string::npos) << err;
}

TEST(SimScreenshot, WritesThePageOnShow)
{
    DeviceRoot root("720");
    const std::string png = root.Abs("tmp/shot.png");
    ASSERT_EQ(RunProgram(BinPath("motordash-sim"), {"screenshot", root.Path(), png}), 0);
    const std::string data = root.Read("tmp/shot.png");
    ASSERT_GT(data.size(), 24u);
    EXPECT_EQ(data.substr(1, 3), "PNG");
    EXPECT_EQ(BigEndian32(data, 16), 800u);
    EXPECT_EQ(BigEndian32(data, 20), 480u);
}

TEST(SimScreenshot, SaysWhatIsWrong)
{
    DeviceRoot root(nullptr);
    std::string err;
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"screenshot", root.Path(), root.Abs("x.png")}, nullptr, &err), 1);
    EXPECT_NE(err.find("cannot open"), std::string::npos) << err;
    root.Write("dev/fb0", "not a framebuffer");
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"screenshot", root.Path(), root.Abs("x.png")}, nullptr, &err), 1);
    EXPECT_NE(err.find("is not a simulated framebuffer"), std::string::npos) << err;
}

}  // namespace
