// Start gate, task rates, shutdown and crash reports of the real program.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <sys/stat.h>
#include <sys/wait.h>

#include "dash_harness.h"

namespace {

constexpr uint16_t RED = 0xF800;
constexpr uint16_t WHITE = 0xFFFF;

struct Change {
    int64_t atMs;
    uint16_t colour;
};

// A sanitizer build on a busy machine starts and stops slowly: these bound a hang, not
// the speed.
constexpr int START_MS = 20000;
constexpr int EXIT_MS = 10000;

// Watches the centre of the page on show for up to `ms`, or until `count` colour
// changes, and lists them.
std::vector<Change> WatchColours(const DeviceRoot& root, int ms, size_t count = SIZE_MAX)
{
    std::vector<Change> changes;
    const int64_t end = NowMs() + ms;
    while (NowMs() < end && changes.size() < count) {
        FramebufferView fb(root.Path());
        if (fb.Valid()) {
            const uint16_t c = fb.Pixel(fb.Header().xres / 2, fb.Header().yres / 2);
            if (changes.empty() ? c != 0 : c != changes.back().colour) changes.push_back({NowMs(), c});
        }
        usleep(5000);
    }
    return changes;
}

void ExpectCleanExit(Process& dash, int withinMs)
{
    int status = 0;
    ASSERT_TRUE(dash.Wait(withinMs, &status)) << "still running " << withinMs << " ms after SIGTERM";
    ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status) << "\n" << dash.Stderr();
    EXPECT_EQ(WEXITSTATUS(status), 0);
    const std::string out = dash.Stdout();
    EXPECT_EQ(out.substr(out.size() >= 12 ? out.size() - 12 : 0), "Shutdown...\n") << out;
}

// Red and white by turns, every half second. One gap seen from outside may be off by
// the watcher's own delays on a busy machine; the mean of several holds the period.
void ExpectFlashing(const DeviceRoot& root)
{
    Process dash(BinPath("motordash"), root.Path().c_str());
    const std::vector<Change> changes = WatchColours(root, START_MS, 5);
    ASSERT_EQ(changes.size(), 5u);
    for (size_t i = 0; i < changes.size(); i++) {
        EXPECT_EQ(changes[i].colour, i % 2 == 0 ? RED : WHITE) << "change " << i;
        if (i > 0) {
            const int64_t gap = changes[i].atMs - changes[i - 1].atMs;
            EXPECT_GE(gap, 250) << "change " << i;
            EXPECT_LE(gap, 1500) << "change " << i;
        }
    }
    const double mean = (changes.back().atMs - changes.front().atMs) / 4.0;
    EXPECT_GE(mean, 450);
    EXPECT_LE(mean, 700);
    ASSERT_TRUE(dash.Signal(SIGTERM));
    ExpectCleanExit(dash, EXIT_MS);
}

TEST(StartGate, OldRootFileSystemFlashesRedAndWhite)
{
    DeviceRoot root;
    root.Write("etc/VERSION", "99\n");
    ExpectFlashing(root);
}

TEST(StartGate, OldKernelFlashesRedAndWhite)
{
    DeviceRoot root;
    root.Write("proc/sys/kernel/osrelease", "5.15.71-dash-100\n");
    ExpectFlashing(root);
}

// Reads the probe's pass counts: passes, first and last uptime of each task.
struct TaskStat {
    unsigned passes, first, last;
    double Rate() const { return last > first ? (passes - 1) * 1000.0 / (last - first) : 0.0; }
};

// Runs the probe for `ms` from the start of its tasks, which follows the set-up of the
// second CAN port.
std::vector<TaskStat> RunProbe(const DeviceRoot& root, int ms)
{
    Process dash(BinPath("motordash-probe"), root.Path().c_str());
    EXPECT_TRUE(dash.WaitForOutput("Bit-timing for can1", START_MS)) << dash.Stdout();
    usleep(ms * 1000);
    EXPECT_TRUE(dash.Signal(SIGTERM));
    const int64_t termAt = NowMs();
    ExpectCleanExit(dash, EXIT_MS);
    EXPECT_LT(NowMs() - termAt, 3000) << "a running dash ends promptly";
    std::vector<TaskStat> stats;
    FILE* f = fopen(root.Abs("tmp/task-stats.txt").c_str(), "r");
    if (!f) return stats;
    TaskStat s;
    while (fscanf(f, "%u %u %u", &s.passes, &s.first, &s.last) == 3) stats.push_back(s);
    fclose(f);
    return stats;
}

TEST(StartGate, NewestVersionsAtTheLimitStartTheApplication)
{
    DeviceRoot root;
    root.Write("etc/VERSION", "100\n");
    root.Write("proc/sys/kernel/osrelease", "4.14.98-rt-101\n");
    const std::vector<TaskStat> stats = RunProbe(root, 500);
    ASSERT_EQ(stats.size(), 3u);
    EXPECT_GT(stats[0].passes, 10u) << "the foreground task ran";
    FramebufferView fb(root.Path());
    EXPECT_EQ(fb.Pixel(10, 10), 0) << "no flashing";
}

// The foreground task runs on every tick, so its passes are the dash's own clock: the
// other tasks are counted against it exactly. Against the wall clock a tick can come
// late or, on a busy machine, be lost, but never come early.
TEST(Tasks, RunAtTheirTruePeriods)
{
    DeviceRoot root;
    const std::vector<TaskStat> stats = RunProbe(root, 3300);
    ASSERT_EQ(stats.size(), 3u);
    const unsigned ticks = stats[0].passes;
    ASSERT_GE(ticks, 200u);
    EXPECT_NEAR(stats[1].passes, ticks / 2, 1) << "Thread_Foregroundx5, every second tick";
    EXPECT_NEAR(stats[2].passes, ticks / 100, 1) << "Thread_Second, every 100th tick";
    EXPECT_LE(stats[0].Rate(), 102.0) << "ticks of 10 ms";
    EXPECT_GE(stats[0].Rate(), 75.0);
}

TEST(Process, PrintsItsPlatformAndEndsOnSigterm)
{
    DeviceRoot root("720");
    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("RootFS Version", START_MS));
    ASSERT_TRUE(dash.Signal(SIGTERM));
    ExpectCleanExit(dash, EXIT_MS);
    const std::string out = dash.Stdout();
    EXPECT_EQ(out.rfind("Hardware: Zelvo720\nBootloader Version: 105\nKernel Version: 121\nRootFS Version: 120\n", 0),
              0u)
        << out;
    EXPECT_NE(out.find("OS Memory: Total "), std::string::npos);
}

TEST(Process, FatalSignalPrintsOneReportAndEndsByIt)
{
    DeviceRoot root;
    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("RootFS Version", START_MS));
    usleep(200000);
    ASSERT_TRUE(dash.Signal(SIGSEGV));
    int status = 0;
    ASSERT_TRUE(dash.Wait(5000, &status));
    ASSERT_TRUE(WIFSIGNALED(status)) << dash.Stderr();
    EXPECT_EQ(WTERMSIG(status), SIGSEGV);
    const std::string err = dash.Stderr();
    size_t reports = 0;
    for (size_t at = 0; (at = err.find("SIGNAL: ", at)) != std::string::npos; at++) reports++;
    EXPECT_EQ(reports, 1u) << err;
    EXPECT_NE(err.find("SIGNAL: Segmentation fault(11):\n"), std::string::npos) << err;
}

TEST(Process, RootThatIsNotAFolderEndsAtOnce)
{
    DeviceRoot root;
    for (const std::string& bad : {root.Abs("missing"), root.Abs("etc/VERSION")}) {
        std::string out, err;
        const int code = RunProgram(BinPath("motordash"), {}, &out, &err, bad.c_str());
        EXPECT_NE(code, 0);
        EXPECT_EQ(err, "DASH_ROOT is not a folder: " + bad + "\n");
        EXPECT_EQ(out, "");
    }
}

TEST(Process, EmptyRootGivesTheValuesOfMissingSources)
{
    DeviceRoot root(nullptr);  // an empty folder: no versions, no factory record, no framebuffer
    mkdir(root.Abs("dev").c_str(), 0755);
    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("RootFS Version", START_MS));
    const std::vector<Change> changes = WatchColours(root, START_MS, 1);
    ASSERT_TRUE(dash.Signal(SIGTERM));
    ExpectCleanExit(dash, EXIT_MS);
    EXPECT_EQ(dash.Stdout().rfind("Hardware: Zelvo310\nBootloader Version: 1\nKernel Version: 0\nRootFS Version: 0\n", 0),
              0u);
    // The gate fails, and the framebuffer is made for the small panel.
    FramebufferView fb(root.Path());
    ASSERT_TRUE(fb.Valid());
    EXPECT_EQ(fb.Header().xres, 320u);
    EXPECT_EQ(fb.Header().yres, 240u);
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes[0].colour, RED);
}

TEST(Process, JunkInEveryVersionSourceIsSurvived)
{
    DeviceRoot root;
    std::string junk;
    for (int i = 0; i < 3000; i++) junk += (char)((i * 7919) >> 3);
    root.Write("etc/VERSION", junk);
    root.Write("proc/sys/kernel/osrelease", junk);
    root.Write("sys/uid/otp/id.bin", junk);
    root.Write("usr/sbin/fw_printenv", "#!/bin/sh\nhead -c 50000 /dev/urandom\n", 0755);
    root.Write("dev/fb0", junk);
    Process dash(BinPath("motordash"), root.Path().c_str());
    ASSERT_TRUE(dash.WaitForOutput("RootFS Version", START_MS));
    usleep(600000);
    ASSERT_TRUE(dash.Signal(SIGTERM));
    ExpectCleanExit(dash, EXIT_MS);
}

}  // namespace
