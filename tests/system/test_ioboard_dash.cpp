// The dash's own I/O board driver, in this process, against the simulated board on its
// pseudo-terminal: the board is found, brought up, and an input set on it reaches the
// application's image.
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <unistd.h>

#include "dash_harness.h"
#include "fake_board.h"
#include "ioboard_control.h"
#include "iouser.h"
#include "mmi.h"
#include "platform_sysinfo.h"

TEST(IoboardDash, TheBoardComesUpAndItsInputsReachTheImage)
{
    TestRoot root;  // DASH_ROOT of this process: the small dash, no firmware file
    unsetenv("PRODUCT_ID");
    PlatformSysinfoTestReset();
    Process board(BinPath("motordash-ioboard"), nullptr, {root.Path()});
    std::string reply;
    ASSERT_TRUE(WaitFor([&] { return ioboard_control(root.Path(), "status", &reply); })) << board.Stderr();
    ASSERT_TRUE(ioboard_control(root.Path(), "set supply 12.5", &reply)) << reply;
    ASSERT_TRUE(ioboard_control(root.Path(), "set an1 2.5", &reply)) << reply;
    ASSERT_TRUE(ioboard_control(root.Path(), "set sw2 1", &reply)) << reply;

    MMIInit(10, 10, 10);
    ASSERT_TRUE(IOUserInit());
    ASSERT_TRUE(WaitFor([] { return ioboard_is_running(); }, 10000));
    U32 bootloader = 0, application = 0;
    EXPECT_TRUE(ioboard_get_version_info(&bootloader, &application));
    EXPECT_GT(application, 0u);

    // The filters settle within a few sentences of each kind.
    IOUSER_IMAGE_T image{};
    EXPECT_TRUE(WaitFor(
        [&] {
            MMIProcess();
            IOUserTestImage(&image);
            return std::fabs(image.supplyVoltage - 12.5f) < 0.05f && std::fabs(image.analogueReadings[0] - 2.5f) < 0.02f;
        },
        10000))
        << image.supplyVoltage << " V supply, " << image.analogueReadings[0] << " V at input 1";
    EXPECT_EQ(image.switchStates[1], 1);
    EXPECT_EQ(image.switchStates[0], 0);

    // The wanted output reaches the board and reads back.
    ioboard_set_relay_out_config(DIG_OUT_CHANNEL_2, 1);
    EXPECT_TRUE(WaitFor(
        [&] {
            MMIProcess();
            IOUserTestImage(&image);
            return image.voltageReadingOutputPins[1] > 10.0f;
        },
        10000))
        << image.voltageReadingOutputPins[1];

    ioboard_close();
    MMIDeInit();
    board.Signal(SIGTERM);
    int status = 0;
    EXPECT_TRUE(board.Wait(5000, &status));
}
