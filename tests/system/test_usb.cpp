// USB stick events: the system scripts' files and signals against the running dash.
#include <gtest/gtest.h>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "dash_harness.h"

namespace {

const std::string APP_COMMAND = "app/event/app_command";
const std::string SCRIPT_COMMAND = "app/event/script_command";

// The main loop runs (and so the signals are taken) once the compositor pans.
bool WaitRunning(const DeviceRoot& root)
{
    return WaitUntil(
        [&] {
            FramebufferView fb(root.Path());
            return fb.Valid() && fb.Header().pan_count >= 2;
        },
        15000);
}

void ExpectCleanExit(Process& dash)
{
    ASSERT_TRUE(dash.Signal(SIGTERM));
    int status = 0;
    ASSERT_TRUE(dash.Wait(3000, &status)) << "still running after SIGTERM";
    ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status) << "\n" << dash.Stderr();
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(UsbEvents, AnswerFileIsTakenOnSigusr1Only)
{
    DeviceRoot root;
    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(WaitRunning(root)) << dash.Stdout();

    for (const char* text : {"USBSTICK_EJECTREADY", "SOMETHING_ELSE"}) {
        root.Write(APP_COMMAND, text);
        ASSERT_TRUE(dash.Signal(SIGUSR1));
        EXPECT_TRUE(WaitUntil([&] { return !root.Exists(APP_COMMAND); }, 1000)) << text << " is consumed";
    }

    root.Write(APP_COMMAND, "USBSTICK_EJECTREADY");
    ASSERT_TRUE(dash.Signal(SIGUSR2));
    usleep(300000);
    EXPECT_TRUE(root.Exists(APP_COMMAND)) << "SIGUSR2 does nothing";
    EXPECT_EQ(root.Read(APP_COMMAND), "USBSTICK_EJECTREADY");

    ExpectCleanExit(dash);
}

TEST(UsbEvents, SignalsDuringStartAreSurvived)
{
    DeviceRoot root;
    root.Write(APP_COMMAND, "USBSTICK_EJECTREADY");
    Process dash(BinPath("motordash"), root.Path().c_str());
    // Printed once the signal thread owns the signals, before the application starts.
    ASSERT_TRUE(dash.WaitForOutput("Hardware:", 10000));
    for (int i = 0; i < 3; i++) {
        ASSERT_TRUE(dash.Signal(SIGUSR1));
        ASSERT_TRUE(dash.Signal(SIGUSR2));
    }
    ASSERT_TRUE(WaitRunning(root)) << dash.Stdout();

    // Whether those came before or after the start, the dash still serves the next.
    root.Write(APP_COMMAND, "USBSTICK_EJECTREADY");
    ASSERT_TRUE(dash.Signal(SIGUSR1));
    EXPECT_TRUE(WaitUntil([&] { return !root.Exists(APP_COMMAND); }, 1000));
    ExpectCleanExit(dash);
}

// The whole handshake with the scripts, the stick polled from the tasks as the logger
// polls it, and an eject asked for as soon as the stick is in.
TEST(UsbEvents, InsertEjectAndPullWithTheScripts)
{
    DeviceRoot root;
    Process dash(BinPath("motordash-probe"), root.Path().c_str(), {}, {"PROBE_USB=1"});
    ASSERT_TRUE(WaitRunning(root)) << dash.Stdout();
    const auto seen = [&](const std::string& states) {
        return WaitUntil([&] { return root.Read("tmp/usb-probe.txt") == states; }, 2000);
    };
    ASSERT_TRUE(seen("0")) << root.Read("tmp/usb-probe.txt");

    // The scripts mount the stick and tell its folder.
    mkdir(root.Abs("media/disk_sda1").c_str(), 0755);
    root.Write("media/usbinfo.txt", "disk_sda1");
    ASSERT_TRUE(WaitUntil([&] { return root.Exists(SCRIPT_COMMAND); }, 2000));
    EXPECT_FALSE(root.Exists("media/usbinfo.txt")) << "consumed";
    EXPECT_EQ(root.Read(SCRIPT_COMMAND), "USBSTICK_EJECT");
    ASSERT_TRUE(seen("012")) << root.Read("tmp/usb-probe.txt");

    // They unmount it and answer.
    root.Remove(SCRIPT_COMMAND);
    root.Write(APP_COMMAND, "USBSTICK_EJECTREADY\n");
    ASSERT_TRUE(dash.Signal(SIGUSR1));
    EXPECT_TRUE(WaitUntil([&] { return !root.Exists(APP_COMMAND); }, 1000));
    ASSERT_TRUE(seen("0123")) << root.Read("tmp/usb-probe.txt");

    // The driver pulls the stick.
    rmdir(root.Abs("media/disk_sda1").c_str());
    EXPECT_TRUE(seen("01230")) << root.Read("tmp/usb-probe.txt");
    EXPECT_FALSE(root.Exists(SCRIPT_COMMAND)) << "asked once";
    ExpectCleanExit(dash);
}

}  // namespace
