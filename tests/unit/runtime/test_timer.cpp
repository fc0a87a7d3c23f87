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
    const U32 ms = get_uptime_milliseconds();
    const int64_t us = get_uptime_microseconds();
    EXPECT_NEAR((double)(us / 1000 % 1000), (double)(ms % 1000), 2.0);
    EXPECT_NEAR((double)get_uptime_seconds(), (double)(us / 1000000), 1.0);

    // A last time just before a wrap of the millisecond clock: the small true difference.
    U32 last = get_uptime_milliseconds() + (0xFFFFFFFFu - 15u);  // 16 ms ago, modulo 2^32
    const U32 delta = GetDeltaTime_ms(&last);
    EXPECT_GE(delta, 16u);
    EXPECT_LT(delta, 1000u);
    EXPECT_LT(GetDeltaTime_ms(&last), 1000u);  // last became now
    EXPECT_EQ(GetDeltaTime_ms(nullptr), 0u);
}

}  // namespace
