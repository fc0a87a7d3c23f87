// The settings store cut off by SIGKILL at random moments of its saves, over and over in
// the same device root, as a dash whose power is cut while it saves. Every start after a
// cut must find a whole record: the last one seen saved, the one before it, or the one
// that was being saved; the factory settings only while nothing had been saved yet.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

#include "dash_harness.h"

namespace {

constexpr const char* CURRENT = "app/data/config/settings-writer-eeprom.dat";
constexpr const char* OLD = "app/data/config/settings-writer-eeprom.dat.old";
constexpr size_t IMAGE_SIZE = 32768;
constexpr size_t LOG_NUMBER_AT = 12;
constexpr size_t COUNTER_AT = 4;
constexpr int KILLS = 200;

uint32_t Le32(const std::string& s, size_t at)
{
    return (uint32_t)(uint8_t)s[at] | (uint32_t)(uint8_t)s[at + 1] << 8 | (uint32_t)(uint8_t)s[at + 2] << 16 |
           (uint32_t)(uint8_t)s[at + 3] << 24;
}

// The complete lines of a run's output: a kill may cut the last one.
std::vector<std::string> Lines(const std::string& out)
{
    std::vector<std::string> lines;
    for (size_t at = 0, end; (end = out.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(out.substr(at, end - at));
    return lines;
}

struct Loaded {
    unsigned n = 0, counter = 0;
    bool pattern = false, defaults = false;
};

bool ParseLoaded(const std::string& line, Loaded* l)
{
    char pattern[8], defaults[8];
    if (sscanf(line.c_str(), "loaded n=%u counter=%u pattern=%7s defaults=%7s", &l->n, &l->counter, pattern,
               defaults) != 4)
        return false;
    l->pattern = std::string(pattern) == "ok";
    l->defaults = std::string(defaults) == "yes";
    return true;
}

bool ParseSaved(const std::string& line, unsigned* n, long long* us)
{
    return sscanf(line.c_str(), "saved n=%u us=%lld", n, us) == 2;
}

// What has been seen saved, oldest first, and what the starts after the cuts found.
struct History {
    std::vector<unsigned> saved;
    int foundLast = 0, foundUnreported = 0, foundSecondLast = 0, foundDefaults = 0;

    unsigned Last() const { return saved.empty() ? 0 : saved.back(); }
    // Each save is waited for before the next change: only one can be under way.
    unsigned InFlight() const { return Last() + 1; }

    // A fresh start's load, judged against the saves seen before the cut.
    void CheckLoad(const Loaded& l)
    {
        if (l.defaults) {
            EXPECT_TRUE(saved.empty()) << "factory settings although n=" << Last() << " had been saved";
            foundDefaults++;
            return;
        }
        EXPECT_TRUE(l.pattern) << "loaded a record that is not one of the stored ones: n=" << l.n
                               << " counter=" << l.counter;
        if (l.n == InFlight()) {
            saved.push_back(l.n);  // its save ended, unreported
            foundUnreported++;
        } else if (!saved.empty() && l.n == Last()) {
            foundLast++;
        } else if (saved.size() >= 2 && l.n == saved[saved.size() - 2]) {
            saved.pop_back();  // the next run stores the lost record again
            foundSecondLast++;
        } else {
            ADD_FAILURE() << "loaded n=" << l.n << ", but the last saved was n=" << Last();
        }
    }

    // A run's output: its load, then its saves, each the next number.
    void TakeRun(const std::string& out)
    {
        const std::vector<std::string> lines = Lines(out);
        Loaded l;
        ASSERT_TRUE(!lines.empty() && ParseLoaded(lines[0], &l)) << out;
        CheckLoad(l);
        if (::testing::Test::HasFailure()) return;
        for (size_t i = 1; i < lines.size(); i++) {
            unsigned n;
            long long us;
            ASSERT_TRUE(ParseSaved(lines[i], &n, &us)) << lines[i];
            ASSERT_EQ(n, InFlight()) << "saves out of order";
            saved.push_back(n);
        }
    }
};

// Where in a save the kill fell, told by what it left on disk.
enum Moment { BEFORE_RENAME, NO_CURRENT, EMPTY_CURRENT, SHORT_CURRENT, AFTER_WRITE, ELSEWHERE, MOMENTS };
constexpr const char* MOMENT_NAMES[MOMENTS] = {
    "before the rename       (current = last reported)",
    "rename to open          (no current file)",
    "open to write           (current empty)",
    "during the write        (current short)",
    "after the write         (current = unreported)",
    "elsewhere               (current = another record)",
};

Moment MomentOf(const DeviceRoot& root, const History& h)
{
    if (!root.Exists(CURRENT)) return NO_CURRENT;
    const std::string current = root.Read(CURRENT);
    if (current.empty()) return EMPTY_CURRENT;
    if (current.size() < IMAGE_SIZE) return SHORT_CURRENT;
    const uint32_t n = Le32(current, LOG_NUMBER_AT);
    if (n == h.InFlight()) return AFTER_WRITE;
    return n == h.Last() ? BEFORE_RENAME : ELSEWHERE;
}

// Waits for the first line of a run, closely: the kill times count from it.
bool WaitForFirstLine(const Process& p, int timeoutMs)
{
    const int64_t end = NowMs() + timeoutMs;
    while (p.Stdout().find('\n') == std::string::npos) {
        if (NowMs() > end) return false;
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return true;
}

unsigned TestSeed()
{
    const char* fixed = getenv("MOTORDASH_TEST_SEED");
    return fixed ? (unsigned)strtoul(fixed, nullptr, 0) : std::random_device{}();
}

TEST(PowerLoss, KillsDuringSavesLeaveAWholeRecentRecord)
{
    const unsigned seed = TestSeed();
    printf("[power loss] seed %u (MOTORDASH_TEST_SEED=%u repeats the kill times)\n", seed, seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    DeviceRoot root;
    const std::string writer = BinPath("settings-writer");
    History history;

    // An uncut run first: its saves give the pace. The kills spread over the first two or
    // three saves of a run, the first one being the one that follows a start after a cut.
    std::string out;
    ASSERT_EQ(RunProgram(writer, {"write", "20"}, &out, nullptr, root.Path().c_str()), 0) << out;
    history.TakeRun(out);
    ASSERT_EQ(history.Last(), 20u);
    std::vector<long long> times;
    for (const std::string& line : Lines(out)) {
        unsigned n;
        long long us;
        if (ParseSaved(line, &n, &us)) times.push_back(us);
    }
    const long long period = (times.back() - times.front()) / (long long)(times.size() - 1);
    history.foundDefaults = 0;

    std::mt19937 random(seed);
    std::uniform_int_distribution<long long> delayUs(0, 2 * period + 200);
    int moments[MOMENTS] = {};
    int kills = 0;
    const auto printStatistics = [&] {
        printf("[power loss] %d kills, a save every %lld us, kill delays 0 to %lld us\n", kills, period,
               delayUs.max());
        for (int m = 0; m < MOMENTS; m++) printf("[power loss]   %s %4d\n", MOMENT_NAMES[m], moments[m]);
        printf("[power loss] the next start found: the last reported %d, the unreported one %d, the one before "
               "the last %d, factory settings %d (before any save)\n",
               history.foundLast, history.foundUnreported, history.foundSecondLast, history.foundDefaults);
    };
    std::string cuts;  // the moments of the last two cuts, for failure messages
    for (int kill = 0; kill < KILLS; kill++) {
        SCOPED_TRACE("kill " + std::to_string(kill) + "; the last cuts fell " + cuts);
        const long long delay = delayUs(random);
        Process w(writer, root.Path().c_str(), {"write"});
        ASSERT_TRUE(WaitForFirstLine(w, 10000)) << "no load reported\n" << w.Stderr();
        std::this_thread::sleep_for(std::chrono::microseconds(delay));  // the random moment of the cut
        ASSERT_TRUE(w.Signal(SIGKILL));
        int status = 0;
        ASSERT_TRUE(w.Wait(10000, &status));
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << w.Stdout() << w.Stderr();
        EXPECT_EQ(w.Stderr(), "");  // a sanitizer's report, for one
        history.TakeRun(w.Stdout());
        if (HasFailure()) return printStatistics();
        const Moment m = MomentOf(root, history);
        moments[m]++;
        kills++;
        cuts = cuts.substr(cuts.find('\n') + 1) + MOMENT_NAMES[m] + "\n";
    }

    // The last cut, judged by a start that only loads, and by the inspector.
    ASSERT_EQ(RunProgram(writer, {"load"}, &out, nullptr, root.Path().c_str()), 0);
    history.TakeRun(out);
    std::string report;
    ASSERT_EQ(RunProgram(BinPath("motordash-sim"), {"settings", root.Abs(CURRENT)}, &report), 0);
    const std::string current = root.Exists(CURRENT) && root.Read(CURRENT).size() >= IMAGE_SIZE ? CURRENT : OLD;
    EXPECT_EQ(Le32(root.Read(current), LOG_NUMBER_AT), history.Last());
    EXPECT_NE(report.find("It would take the record: CRC and stamp are good, counter " +
                          std::to_string(history.Last()) + "."),
              std::string::npos)
        << report;
    EXPECT_EQ(Le32(root.Read(current), COUNTER_AT), history.Last()) << "one count per store";

    printStatistics();
}

// A cut between the open and the end of the write leaves the current file short and the
// good record in ".old". The next save must not move the short file over it: until the
// new file is whole, ".old" is the only good record there is.
TEST(PowerLoss, SaveAfterACutWriteKeepsTheGoodOldFile)
{
    for (const size_t cutAt : {(size_t)0, (size_t)4096, IMAGE_SIZE - 1}) {
        SCOPED_TRACE("current cut to " + std::to_string(cutAt) + " bytes");
        DeviceRoot root;
        const std::string writer = BinPath("settings-writer");
        std::string out;
        ASSERT_EQ(RunProgram(writer, {"write", "3"}, &out, nullptr, root.Path().c_str()), 0) << out;
        root.Write(CURRENT, root.Read(CURRENT).substr(0, cutAt), 0755);

        ASSERT_EQ(RunProgram(writer, {"write", "1"}, &out, nullptr, root.Path().c_str()), 0) << out;
        const std::vector<std::string> lines = Lines(out);
        ASSERT_EQ(lines.size(), 2u) << out;
        EXPECT_EQ(lines[0], "loaded n=2 counter=2 pattern=ok defaults=no") << "the .old file";
        EXPECT_EQ(lines[1].rfind("saved n=3 ", 0), 0u) << lines[1];
        const std::string old = root.Read(OLD);
        ASSERT_EQ(old.size(), IMAGE_SIZE) << "the short file was moved over the good one";
        EXPECT_EQ(Le32(old, LOG_NUMBER_AT), 2u);
        EXPECT_EQ(Le32(root.Read(CURRENT), LOG_NUMBER_AT), 3u);

        // And the save after it goes on as usual.
        ASSERT_EQ(RunProgram(writer, {"write", "1"}, &out, nullptr, root.Path().c_str()), 0) << out;
        EXPECT_EQ(Le32(root.Read(OLD), LOG_NUMBER_AT), 3u);
        EXPECT_EQ(Le32(root.Read(CURRENT), LOG_NUMBER_AT), 4u);
    }
}

}  // namespace
