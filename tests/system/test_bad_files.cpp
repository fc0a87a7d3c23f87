// Files the dash reads but does not own, replaced by a FIFO: a blocking open or read
// there would stop the main thread for ever.
#include <gtest/gtest.h>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "dash_harness.h"

namespace {

void Fifo(const DeviceRoot& root, const std::string& rel)
{
    root.Remove(rel);
    ASSERT_EQ(mkfifo(root.Abs(rel).c_str(), 0644), 0) << rel;
}

// The main loop pans the page at every frame; it goes on while it is not blocked.
bool Panning(const DeviceRoot& root, int withinMs)
{
    FramebufferView fb(root.Path());
    if (!fb.Valid()) return false;
    const uint64_t before = fb.Header().pan_count;
    const int64_t end = NowMs() + withinMs;
    while (NowMs() < end) {
        if (fb.Header().pan_count >= before + 10) return true;
        usleep(10000);
    }
    return false;
}

void EndsNormally(Process& dash)
{
    ASSERT_TRUE(dash.Signal(SIGTERM));
    int status = 0;
    ASSERT_TRUE(dash.Wait(5000, &status)) << "still running after SIGTERM:\n" << dash.Stdout();
    ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status) << "\n" << dash.Stderr();
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(BadFiles, FifoInPlaceOfTheIdentitySourcesReadsAsMissing)
{
    DeviceRoot root;
    Fifo(root, "sys/uid/otp/id.bin");
    Fifo(root, "etc/VERSION");
    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("RootFS Version: 0\n", 10000)) << dash.Stdout();
    EndsNormally(dash);
}

TEST(BadFiles, FifoInPlaceOfTheEventFilesAndTheSettingsFile)
{
    DeviceRoot root;
    mkdir(root.Abs("app/data/config").c_str(), 0755);
    Fifo(root, "app/data/config/motordash-eeprom.dat");
    Fifo(root, "app/data/config/motordash-eeprom.dat.old");
    Fifo(root, "app/event/app_command");
    Fifo(root, "media/usbinfo.txt");
    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("RootFS Version", 10000));
    ASSERT_TRUE(Panning(root, 10000)) << "the main loop runs";
    // The answer file is read on SIGUSR1, the stick's file at every query of the loop.
    ASSERT_TRUE(dash.Signal(SIGUSR1));
    EXPECT_TRUE(Panning(root, 3000)) << "the main loop still runs";
    usleep(1500000);  // the store's once-a-second pass
    EndsNormally(dash);
    // The settings file is the dash's own: whatever stood in its place gave way to it.
    struct stat st;
    ASSERT_EQ(stat(root.Abs("app/data/config/motordash-eeprom.dat").c_str(), &st), 0);
    EXPECT_TRUE(S_ISREG(st.st_mode));
}

}  // namespace
