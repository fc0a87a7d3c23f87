// The alarm output and its time limit, on hand-driven ticks with a clock that follows.
#include <gtest/gtest.h>

#include "iouser.h"
#include "timer_drv.h"

class IOUserAlarm : public ::testing::Test {
protected:
    void SetUp() override
    {
        timer_init(20);
        IOUserTestReset();
        IOUserActivateAlarm(0);
    }
    void TearDown() override
    {
        IOUserTestReset();
        timer_deinit();
        timer_test_set_clock(-1);
    }
    void Ticks(int n)
    {
        for (int i = 0; i < n; i++) {
            nowNs_ += 10000000;
            timer_test_set_clock(nowNs_);
            timer_process();
        }
    }
    static bool On()
    {
        BOOL on = 0;
        ioboard_get_relay_out_config(DIG_OUT_CHANNEL_1, &on);
        return on;
    }
    int64_t nowNs_ = 5000000000;
};

TEST_F(IOUserAlarm, TheFirstOfTwoTimedAlarmsToEndSwitchesTheOutputOff)
{
    timer_test_set_clock(nowNs_);
    IOUserActivateAlarmTimed(300);
    Ticks(10);
    IOUserActivateAlarmTimed(1000);  // ends later: the first still ends the alarm
    EXPECT_TRUE(On());
    Ticks(19);
    EXPECT_TRUE(On());
    Ticks(1);
    EXPECT_FALSE(On());
    Ticks(200);
    EXPECT_FALSE(On());

    IOUserActivateAlarmTimed(1000);
    Ticks(10);
    IOUserActivateAlarmTimed(200);  // ends sooner
    Ticks(19);
    EXPECT_TRUE(On());
    Ticks(1);
    EXPECT_FALSE(On());

    // Once it has ended, a new timed alarm runs its own full time.
    IOUserActivateAlarmTimed(100);
    Ticks(9);
    EXPECT_TRUE(On());
    Ticks(1);
    EXPECT_FALSE(On());
}
