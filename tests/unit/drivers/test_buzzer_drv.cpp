// The buzzer through its brightness attribute, timed tones on hand-driven ticks.
#include <gtest/gtest.h>

#include <string>

#include "buzzer_drv.h"
#include "test_root.h"
#include "timer_drv.h"

namespace {

const std::string BRIGHTNESS = "sys/class/leds/buzzer-pwm/brightness";

class BuzzerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        root.Write(BRIGHTNESS, "0");
        timer_init(20);
        buzzer_mute(0);
        buzzer_out(0);  // the driver's state outlives a test
        Mark();
    }
    void TearDown() override
    {
        buzzer_mute(0);
        buzzer_out(0);
        timer_deinit();
    }
    // Puts a mark in the attribute: any write replaces it, no write leaves it.
    void Mark() const { root.Write(BRIGHTNESS, "mark"); }
    std::string Value() const { return root.Read(BRIGHTNESS); }
    static void Ticks(int n)
    {
        for (int i = 0; i < n; i++) timer_process();
    }
    TestRoot root;
};

TEST_F(BuzzerTest, WritesOnlyChanges)
{
    buzzer_out(1);
    EXPECT_EQ(Value(), "127");
    Mark();
    buzzer_out(1);
    buzzer_out(7);  // any non-zero value is on
    EXPECT_EQ(Value(), "mark");
    buzzer_out(0);
    EXPECT_EQ(Value(), "0");
    Mark();
    buzzer_out(0);
    buzzer_init();
    EXPECT_EQ(Value(), "mark");
    buzzer_out(1);
    buzzer_init();
    EXPECT_EQ(Value(), "0") << "init silences a sounding buzzer";
}

TEST_F(BuzzerTest, MuteSilencesAToneAndUnmuteDoesNotBringItBack)
{
    buzzer_out(1);
    buzzer_mute(1);
    EXPECT_EQ(Value(), "0");
    EXPECT_TRUE(buzzer_is_muted());
    Mark();
    buzzer_out(1);
    buzzer_out(0);
    buzzer_mute(0);
    EXPECT_FALSE(buzzer_is_muted());
    EXPECT_EQ(Value(), "mark");
    buzzer_out(1);
    EXPECT_EQ(Value(), "127") << "the tone cut by the mute counts as off";
}

TEST_F(BuzzerTest, TimedToneEndsOnItsTick)
{
    buzzer_out_timed(30);
    EXPECT_EQ(Value(), "127");
    Ticks(2);
    EXPECT_EQ(Value(), "127");
    Ticks(1);
    EXPECT_EQ(Value(), "0");
    Mark();
    Ticks(10);
    EXPECT_EQ(Value(), "mark") << "one-shot";
}

TEST_F(BuzzerTest, TimedToneWhileMutedSoundsNothing)
{
    buzzer_mute(1);
    buzzer_out_timed(30);
    Ticks(3);
    buzzer_mute(0);
    Ticks(3);
    EXPECT_EQ(Value(), "mark");

    // Muted in the middle of a timed tone: cut at once, and its end writes nothing more.
    buzzer_out_timed(30);
    buzzer_mute(1);
    EXPECT_EQ(Value(), "0");
    Mark();
    Ticks(1);
    buzzer_mute(0);
    Ticks(5);
    EXPECT_EQ(Value(), "mark");
    buzzer_out(1);
    EXPECT_EQ(Value(), "127");
}

}  // namespace
