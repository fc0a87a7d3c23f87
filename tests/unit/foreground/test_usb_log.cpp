// Logging to the stick, driven as the dash drives it: foreground passes every 10 ms, the
// row writer every second one, on a clock of the test's own, in a device root of its own.
#include <cmath>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

#include "eventhandler.h"
#include "foreground_fixture.h"
#include "log_columns.h"
#include "test_root.h"
#include "usb_log.h"

namespace {

const std::string HEADER = std::string("Interval (ms),1\n") +
                           std::string(Velnor_Dorvik_V6c_ConstP.Constant6_Value_e, sizeof(ConstParam_Velnor_Dorvik_V6c));

std::string LogName(int number)
{
    char name[64];
    snprintf(name, sizeof(name), "media/disk_sda1/Velnor_v650_CAN_%08d.csv", number);
    return name;
}

// The lines of a file after `skip` bytes, without their line ends.
std::vector<std::string> Lines(const std::string& text, size_t skip = HEADER.size())
{
    std::vector<std::string> lines;
    for (size_t at = skip, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(text.substr(at, end - at));
    return lines;
}

class UsbLog : public Foreground {
protected:
    void SetUp() override
    {
        Foreground::SetUp();
        root.Write("app/event/.keep", "");
        mkdir(root.Abs("media").c_str(), 0755);
        ASSERT_TRUE(EventHandlerIsUSBStickRemoved());
        Velnor_Dorvik_V6c_PrevZCSigState.LogWrite_Trig_ZCE = 1;  // as at power-up
        EEVariables_RAMShadow.LogNumber = 0;
    }
    void TearDown() override
    {
        if (B.Merge) FileClose(B.Merge);
        timer_test_set_clock(-1);
    }

    void Insert() const
    {
        mkdir(root.Abs("media/disk_sda1").c_str(), 0755);
        root.Write("media/usbinfo.txt", "disk_sda1");
    }
    void Pull(const char* to) const { rename(root.Abs("media/disk_sda1").c_str(), root.Abs(to).c_str()); }
    void Request(bool on) { Frame(0x109, {(uint8_T)(on ? 0x80 : 0), 0, 0, 0, 0, 0, 0, 0}); }
    // `ms` of ticks: a foreground pass on each, a row on every second one.
    void Run(uint32_T ms)
    {
        for (uint32_T end = now_ + ms; now_ < end;) {
            timer_test_set_clock((int64_t)now_ * 1000000);
            const bool rowTick = now_ % 20 == 0;
            Pass();
            if (rowTick) Timer_aUXrF();
        }
    }
    // The request seen low, then high.
    void RisingRequest()
    {
        Request(false);
        Run(20);
        Request(true);
    }
    size_t Rows(int number) const { return Lines(root.Read(LogName(number))).size(); }

    TestRoot root;
};

TEST_F(UsbLog, ARequestAtPowerUpWaitsForItsRisingEdgeAndEachEdgeTakesTheNextNumber)
{
    Insert();
    Request(true);
    Run(100);
    EXPECT_EQ(EEVariables_RAMShadow.LogNumber, 0u) << "nothing tried";

    RisingRequest();
    Run(100);
    EXPECT_EQ(EEVariables_RAMShadow.LogNumber, 1u);
    EXPECT_EQ(RAMVariables.FileOpen_Success, 1);
    EXPECT_EQ(root.Read(LogName(1)).substr(0, HEADER.size()), HEADER);
    EXPECT_EQ(Rows(1), 5u);

    // A file that is there already is continued, with a second header.
    root.Write(LogName(2), "old run\n");
    RisingRequest();
    Run(40);
    EXPECT_EQ(Rows(1), 5u) << "nothing written once the request fell";
    EXPECT_EQ(root.Read(LogName(2)).substr(0, 8 + HEADER.size()), "old run\n" + HEADER);
    EXPECT_EQ(Lines(root.Read(LogName(2)), 8 + HEADER.size()).size(), 2u);
}

TEST_F(UsbLog, RowsCarryTheUptimeAndAreCutToTheBufferWithTheirLineEnd)
{
    Insert();
    RisingRequest();
    Frame(0x108, {0x19, 0x64, 0, 0, 0, 0, 0, 0});  // 6500 RPM
    Run(20);
    B.Final_AFR1 = NAN;
    timer_test_set_clock(90061001ll * 1000000);  // one day, one hour, one minute, one second, 1 ms
    Timer_aUXrF();
    // Values no frame can carry.
    const real_T huge = -1e300;
    for (const LOG_COLUMN_T& c : LOG_COLUMNS)
        if (c.kind == CAN_KIND_F64) memcpy(reinterpret_cast<uint8_T*>(&B) + c.signal, &huge, sizeof(huge));
    B.Final_AFR1 = -INFINITY;
    Timer_aUXrF();

    const std::vector<std::string> rows = Lines(root.Read(LogName(1)));
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1].substr(0, 43), "2000-01-02::01:01:01.001,6500.00,0.00,0.00,");
    EXPECT_EQ(std::count(rows[1].begin(), rows[1].end(), ','), (long)LOG_COLUMN_COUNT);
    EXPECT_EQ(rows[1].substr(43, 4), "NAN,");
    EXPECT_EQ(rows[2].size(), LOG_ROW_SIZE - 2);
    EXPECT_EQ(rows[2].substr(24, 8), ",-100000");
    EXPECT_NE(rows[2].find(",0.00,0.00,-INF,"), std::string::npos);
    EXPECT_EQ(RAMVariables.FrameCnt, 3u);
}

TEST_F(UsbLog, SyncedTwiceASecondAndWhenTheClockWraps)
{
    Insert();
    RisingRequest();
    Run(1200);
    EXPECT_EQ(RAMVariables.FrameCnt, 60u);
    // From the open at 1020: due at once (the last was at 0), then each time 500 ms are over.
    EXPECT_EQ(RAMVariables.SyncCount, 3u);
    EXPECT_EQ(RAMVariables.SyncAttempts, 3u);
    EXPECT_EQ(RAMVariables.LastSync, 2040u);

    now_ = 5;  // below the last pass
    Run(10);
    EXPECT_EQ(RAMVariables.SyncCount, 4u);
    EXPECT_EQ(RAMVariables.LastSync, 5u);
}

TEST_F(UsbLog, AStickPulledMidwayKeepsEveryRowWrittenUntilThen)
{
    Insert();
    RisingRequest();
    Run(730);
    const uint32_T rows = RAMVariables.FrameCnt;
    ASSERT_GT(RAMVariables.SyncCount, 0u);
    Pull("pulled");
    Run(200);
    EXPECT_EQ(RAMVariables.FrameCnt, rows) << "rows stop with the stick";
    EXPECT_EQ(RAMVariables.FileOpen, 0);
    const std::string kept = root.Read("pulled/Velnor_v650_CAN_00000001.csv");
    EXPECT_EQ(Lines(kept).size(), rows);
    EXPECT_EQ(kept.back(), '\n');

    // Back in with the request still standing: the next number.
    Insert();
    Run(20);
    EXPECT_EQ(Rows(2), 1u);
}

TEST_F(UsbLog, BadSticksNeitherStopNorBlockTheDash)
{
    Insert();
    mkdir(root.Abs(LogName(1)).c_str(), 0755);
    ASSERT_EQ(mkfifo(root.Abs(LogName(2)).c_str(), 0644), 0);
    for (uint32_T number = 1; number <= 2; number++) {
        RisingRequest();
        Run(100);
        EXPECT_EQ(EEVariables_RAMShadow.LogNumber, number);
        EXPECT_EQ(RAMVariables.FileOpen_Success, 0);
        EXPECT_EQ(RAMVariables.FrameCnt, 0u);
    }

    // A full stick: the rows that do not fit are lost, the dash goes on.
    signal(SIGXFSZ, SIG_IGN);
    struct rlimit old, full;
    getrlimit(RLIMIT_FSIZE, &old);
    full = old;
    full.rlim_cur = HEADER.size() + 2500;
    setrlimit(RLIMIT_FSIZE, &full);
    RisingRequest();
    Run(200);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(RAMVariables.FrameCnt, 10u);
    EXPECT_EQ(root.Read(LogName(3)).size(), full.rlim_cur);
}

TEST_F(UsbLog, EjectClosesTheFileAndHoldsTheLoggerOffUntilCleared)
{
    Insert();
    RisingRequest();
    Run(100);
    RAMVariables.USER_Eject_Bool = 1;
    Run(100);
    EXPECT_EQ(RAMVariables.FileOpen, 0);
    EXPECT_EQ(root.Read("app/event/script_command"), "USBSTICK_EJECT");
    EXPECT_EQ(Rows(1), 5u);

    // Pulled and put back while the flag stands: no file; once it is cleared, the next.
    const auto reinsert = [&](const char* to) {
        Pull(to);
        Run(20);
        Insert();
        Run(20);
    };
    reinsert("first");
    EXPECT_EQ(EEVariables_RAMShadow.LogNumber, 1u);
    RAMVariables.USER_Eject_Bool = 0;
    reinsert("second");
    EXPECT_EQ(Rows(2), 1u);
}

}  // namespace
