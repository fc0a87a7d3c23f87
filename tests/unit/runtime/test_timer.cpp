#include <gtest/gtest.h>

#include "timer_drv.h"

namespace {

int g_calls[25];
int g_order[64];
int g_orderCount;

template <int N>
void cb()
{
    g_calls[N]++;
    if (g_orderCount < 64) g_order[g_orderCount++] = N;
}

trigger_ref const kCallbacks[25] = {cb<0>,  cb<1>,  cb<2>,  cb<3>,  cb<4>,  cb<5>,  cb<6>,  cb<7>,  cb<8>,
                                    cb<9>,  cb<10>, cb<11>, cb<12>, cb<13>, cb<14>, cb<15>, cb<16>, cb<17>,
                                    cb<18>, cb<19>, cb<20>, cb<21>, cb<22>, cb<23>, cb<24>};

// Ticks at which callback n ran, over `ticks` ticks.
std::vector<int> RunTicks(int n, int ticks)
{
    std::vector<int> at;
    for (int t = 1; t <= ticks; t++) {
        int before = g_calls[n];
        timer_process();
        if (g_calls[n] != before) at.push_back(t);
    }
    return at;
}

class TimerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        memset(g_calls, 0, sizeof(g_calls));
        g_orderCount = 0;
        ASSERT_TRUE(timer_init(20));
    }
    void TearDown() override { timer_deinit(); }
};

TEST_F(TimerTest, PeriodsAreTruncatedToWholeTicks)
{
    timer_register(cb<0>, 5, 5);       // every tick
    timer_register(cb<1>, 25, 25);     // every second tick
    timer_register(cb<2>, 1000, 1000); // every 100 ticks
    timer_register(cb<3>, 19, 19);     // 1..19 ms is one tick
    for (int t = 0; t < 300; t++) timer_process();
    EXPECT_EQ(g_calls[0], 300);
    EXPECT_EQ(g_calls[1], 150);
    EXPECT_EQ(g_calls[2], 3);
    EXPECT_EQ(g_calls[3], 300);
}

TEST_F(TimerTest, FirstCallsFollowTheDelay)
{
    timer_register(cb<0>, 5, 5);
    EXPECT_EQ(RunTicks(0, 3), (std::vector<int>{1, 2, 3}));
    timer_register(cb<1>, 25, 25);
    EXPECT_EQ(RunTicks(1, 6), (std::vector<int>{2, 4, 6}));
}

TEST_F(TimerTest, OneShotsFreeTheirSlot)
{
    timer_register(cb<0>, 0, 0);
    timer_register(cb<1>, 30, 0);
    EXPECT_EQ(RunTicks(0, 5), (std::vector<int>{1}));
    EXPECT_EQ(g_calls[1], 1);
    // Both slots are free again: 20 new callbacks fit.
    for (int i = 2; i < 22; i++) EXPECT_TRUE(timer_register(kCallbacks[i], 10, 10)) << i;
}

TEST_F(TimerTest, RegisteringAgainMovesTheCallback)
{
    timer_register(cb<0>, 10, 10);
    timer_register(cb<0>, 50, 50);
    for (int t = 0; t < 10; t++) timer_process();
    EXPECT_EQ(g_calls[0], 2);  // one slot, with the new times
    EXPECT_TRUE(timer_deregister(cb<0>));
    EXPECT_FALSE(timer_deregister(cb<0>));
}

TEST_F(TimerTest, FullTable)
{
    for (int i = 0; i < 20; i++) ASSERT_TRUE(timer_register(kCallbacks[i], 10, 10));
    EXPECT_FALSE(timer_register(cb<20>, 10, 10));
    EXPECT_TRUE(timer_register(cb<7>, 20, 20));  // a registered one moves in place
    EXPECT_FALSE(timer_deregister(cb<20>));
}

TEST_F(TimerTest, SameTickRunsInSlotOrder)
{
    timer_register(cb<3>, 10, 10);
    timer_register(cb<1>, 20, 20);
    timer_register(cb<2>, 20, 20);
    timer_process();
    timer_process();
    EXPECT_EQ((std::vector<int>(g_order, g_order + g_orderCount)), (std::vector<int>{3, 3, 1, 2}));
}

void SelfDeregistering()
{
    g_calls[24]++;
    timer_deregister(SelfDeregistering);
    timer_register(cb<5>, 10, 0);
}

TEST_F(TimerTest, CallbacksMayChangeTheTable)
{
    timer_register(SelfDeregistering, 10, 10);
    for (int t = 0; t < 4; t++) timer_process();
    EXPECT_EQ(g_calls[24], 1);
    EXPECT_EQ(g_calls[5], 1);
}

TEST(TimerService, NotStartedDoesNothing)
{
    timer_deinit();
    g_calls[0] = 0;
    EXPECT_FALSE(timer_register(cb<0>, 10, 10));
    timer_process();
    EXPECT_EQ(g_calls[0], 0);
    EXPECT_FALSE(timer_init(0));
    EXPECT_FALSE(timer_register(cb<0>, 10, 10));
}

TEST(Uptime, ClocksAgreeAndDeltaWraps)
{
    // On the real clock a reading of one clock lies between two readings of another.
    const U32 ms1 = get_uptime_milliseconds();
    const int64_t us = get_uptime_microseconds();
    const U32 ms2 = get_uptime_milliseconds();
    EXPECT_LE((U32)(us / 1000) - ms1, ms2 - ms1) << ms1 << " " << us << " " << ms2;
    const S32 s1 = get_uptime_seconds();
    const int64_t us2 = get_uptime_microseconds();
    const S32 s2 = get_uptime_seconds();
    EXPECT_LE(s1, us2 / 1000000);
    EXPECT_GE(s2, us2 / 1000000);

    // On a set clock all three agree to the unit, each truncating.
    timer_test_set_clock(1234999999999);
    EXPECT_EQ(get_uptime_seconds(), 1234);
    EXPECT_EQ(get_uptime_milliseconds(), 1234999u);
    EXPECT_EQ(get_uptime_microseconds(), 1234999999);

    // The millisecond clock wraps 2^32 ms (49.7 days) after boot; the delta across it
    // is the true one.
    const int64_t wrapNs = 4294967296LL * 1000000;
    timer_test_set_clock(wrapNs - 16000000);
    U32 last = 0;
    GetDeltaTime_ms(&last);
    EXPECT_EQ(last, 0xFFFFFFF0u);
    timer_test_set_clock(wrapNs + 16999999);
    EXPECT_EQ(GetDeltaTime_ms(&last), 32u);
    EXPECT_EQ(last, 16u);
    EXPECT_EQ(GetDeltaTime_ms(&last), 0u);
    EXPECT_EQ(get_uptime_microseconds(), wrapNs / 1000 + 16999);
    EXPECT_EQ(GetDeltaTime_ms(nullptr), 0u);
    timer_test_set_clock(-1);
}

}  // namespace
