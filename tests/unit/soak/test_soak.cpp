// What the soak's checks rest on: the load it puts on the bus, its count of the dash's
// ticks, and its reading of the log files on the stick.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <unistd.h>

#include "can_signals.h"
#include "soak_link.h"
#include "soak_load.h"
#include "soak_log.h"

namespace {

TEST(SoakLoad, FramesFallDueAtTheBusRateAndAnHourHoldsNotOneMore)
{
    EXPECT_EQ(SoakFramesDue(999999), 8u);
    EXPECT_EQ(SoakFramesDue(1000000), 9u);
    EXPECT_EQ(SoakFramesDue(3600ull * 1000000000), 3600ull * SOAK_FRAMES_PER_SECOND);
}

TEST(SoakLoad, EachPortCarriesItsEngineFramesAmongForeignOnesOfNoKnownId)
{
    for (int port = 0; port < 2; port++) {
        SOAK_STREAM_T stream = SoakStream(port, 7), again = SoakStream(port, 7), other = SoakStream(port, 8);
        std::set<uint32_t> ecuIds;
        int ecu = 0, differ = 0;
        const int n = 18000;
        for (int i = 0; i < n; i++) {
            struct can_frame f, g, h;
            SoakNextFrame(&stream, i % 2000 < 1000, &f);
            SoakNextFrame(&again, i % 2000 < 1000, &g);
            SoakNextFrame(&other, i % 2000 < 1000, &h);
            ASSERT_EQ(memcmp(&f, &g, sizeof(f)), 0) << "a seed gives one stream";
            differ += memcmp(&f, &h, sizeof(f)) != 0;
            ASSERT_LE(f.can_dlc, 8);
            const size_t row = CANFrameIndex(f.can_id);
            if (row == CAN_FRAME_COUNT) {
                // Foreign: extended above the standard range, or standard of no id the dash reads.
                const uint32_t id = f.can_id & CAN_EFF_MASK;
                if (f.can_id & CAN_EFF_FLAG) EXPECT_GT(id, CAN_SFF_MASK);
                else EXPECT_TRUE(id != 0x100 && id != 0x200 && id != 0x300 && CANFrameIndex(id) == CAN_FRAME_COUNT) << id;
                continue;
            }
            ecu++;
            ecuIds.insert(f.can_id);
            EXPECT_EQ(CAN_FRAMES[row].port, port ? CAN_PORT2 : CAN_PORT1);
            EXPECT_EQ(f.can_dlc, 8);
            if (f.can_id == 0x109) {
                EXPECT_EQ(CANSignalValue(CAN_SIGNALS[CANSignalIndex("Start_Log")], f.data), i % 2000 < 1000 ? 1 : 0);
            }
        }
        EXPECT_EQ(ecu, port ? n / 9 : n / 2);
        size_t expected = 0;
        for (const CAN_FRAME_T& f : CAN_FRAMES) expected += f.dir == CAN_RX && f.port == (port ? CAN_PORT2 : CAN_PORT1);
        EXPECT_EQ(ecuIds.size(), expected) << "every frame of the port's table";
        EXPECT_GT(differ, n * 9 / 10) << "another seed, another stream";
    }
}

TEST(SoakTicks, TheSettingsFrameCountsTenPassesAndAnIntervalLongerByATickOneLost)
{
    std::vector<uint64_t> at;
    for (uint64_t i = 0, t = 5000000000; i < 100; i++, t += i == 50 ? 120000000 : 100000000) at.push_back(t + i % 3);
    uint64_t passes = 0;
    EXPECT_EQ(SoakLostTicks(at, 0, UINT64_MAX, &passes), 2);
    EXPECT_EQ(passes, 990u);
    EXPECT_EQ(SoakLostTicks(at, at[51], at[99], &passes), 0) << "only the frames in the window";
    EXPECT_EQ(passes, 480u);
}

// List samples of passes at these times (ms), a sync in the pass at `syncAt`.
std::vector<SOAK_SAMPLE_T> Passes(const std::vector<uint32_t>& times, uint32_t syncAt)
{
    std::vector<SOAK_SAMPLE_T> samples;
    for (uint32_t t : times) samples.push_back({t, 0, {t >= syncAt ? 1u : 0u}});
    return samples;
}

bool SyncBetween(const SOAK_SAMPLE_T& before, const SOAK_SAMPLE_T& pass)
{
    return before.values[0] != pass.values[0];
}

TEST(SoakTicks, ALatePassIsChargedWithWhatThePassesBehindItDidNotMakeGood)
{
    // Jitter alone loses nothing, nor does a pass held up by less than a tick.
    SOAK_TICKS_T t = SoakTickAccount(Passes({0, 7, 20, 29, 41, 50, 58, 77, 80, 90}, 1000), SyncBetween);
    EXPECT_EQ(t.lost + t.lostToFileWork + t.lostElsewhere, 0u);
    EXPECT_EQ(t.passes, 10u);
    // A sync holds the pass at 20 for 40 ms; the tick at 30 waits and runs at once behind
    // it, the ticks at 40 and 50 are lost.
    t = SoakTickAccount(Passes({0, 10, 60, 61, 62, 70, 80}, 60), SyncBetween);
    EXPECT_EQ(t.lost, 2u);
    EXPECT_EQ(t.lostToFileWork, 2u);
    EXPECT_EQ(t.lostElsewhere, 0u);
    EXPECT_EQ(t.longestGapMs, 50u);
    // Held off for 25 ms with no file work: one tick lost elsewhere, one made good.
    t = SoakTickAccount(Passes({0, 10, 45, 47, 50, 60}, 1000), SyncBetween);
    EXPECT_EQ(t.lost, 1u);
    EXPECT_EQ(t.lostElsewhere, 1u);
    EXPECT_EQ(t.lostToFileWork, 0u);
}

TEST(SoakLog, RowsAreCountedByTheirTimeStampsAndABrokenRowIsFound)
{
    uint64_t ms = 0;
    EXPECT_TRUE(SoakRowTime("2000-01-02::01:01:01.001,0.00", &ms));
    EXPECT_EQ(ms, 90061001u);
    EXPECT_FALSE(SoakRowTime("2000-01-02::01:01:01.001", &ms)) << "no value behind it";
    EXPECT_FALSE(SoakRowTime("DateTime,Value", &ms));

    auto row = [](uint32_t ms, int values) {
        char stamp[32];
        snprintf(stamp, sizeof(stamp), "2000-01-01::00:00:%02u.%03u", ms / 1000, ms % 1000);
        std::string r = stamp;
        for (int i = 0; i < values; i++) r += ",1.00";
        return r + "\n";
    };
    std::string text = "Interval (ms),1\n,names\n,ranges\nDateTime,Value\nseconds,RPM\n";
    text += row(1000, 153) + row(1020, 153) + row(1060, 153);  // the row at 1040 is skipped
    std::string cut = row(1080, 300).substr(0, 1169) + "\n";  // too long for the logger's buffer
    text += cut + row(1100, 153) + row(1120, 20).substr(0, 60);  // torn at the end
    char path[] = "/tmp/soak-log-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, text.data(), text.size()), (ssize_t)text.size());
    close(fd);
    SOAK_LOG_FILE_T file;
    ASSERT_TRUE(SoakReadLog(path, &file));
    unlink(path);
    EXPECT_EQ(file.headers, 1u);
    EXPECT_EQ(file.rows, 5u);
    EXPECT_EQ(file.rowsMissing, 1u);
    EXPECT_EQ(file.badRows, 1u);
    EXPECT_EQ(file.firstMs, 1000u);
    EXPECT_EQ(file.lastMs, 1100u);
}

TEST(SoakLog, TheLoggersCountsGiveEachFileItsRowsUpToItsLastSyncAndItsClose)
{
    // Rows come after each pass's sample: the pass that shows a file closed still counts
    // the row written just before it.
    const std::vector<SOAK_LOG_ACCOUNT_T> files = SoakLogAccounts({
        {0, 0, false}, {0, 0, true}, {1, 0, true}, {2, 500, true}, {3, 500, true}, {4, 500, false},
        {4, 500, false}, {4, 500, true}, {5, 1100, true}, {6, 1100, false},
    });
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].opened, 0u);
    EXPECT_EQ(files[0].synced, 2u);
    EXPECT_EQ(files[0].closed, 4u);
    EXPECT_EQ(files[1].opened, 4u);
    EXPECT_EQ(files[1].synced, 5u);
    EXPECT_EQ(files[1].closed, 6u);
}

}  // namespace
