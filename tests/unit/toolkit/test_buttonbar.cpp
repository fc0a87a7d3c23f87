// Keys and the button bar, driven pass by pass with a controlled clock.
#include <gtest/gtest.h>

#include <string>

#include "buttonbar.h"
#include "buzzer_drv.h"
#include "display_fixture.h"
#include "keypad_drv.h"
#include "layer_merger.h"
#include "mmi.h"
#include "key_lines.h"
#include "test_root.h"
#include "timer_drv.h"

namespace {

std::string g_log;
template <char C>
void Cb()
{
    g_log += C;
}

class ButtonBarTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetDisplay();
        root.Write("sys/class/leds/buzzer-pwm/brightness", "0\n");
        WriteKeyLinesUp(root);
        timer_init(20);
        MMIInit(10, 10, 10);
        ButtonBarInit();
        ButtonBarSetMode(BUTTONBARMODE_INVISIBLE);
        buzzer_out(0);
        now = get_uptime_milliseconds();
        Pass(0);  // key states outlive a reset: start with all keys up
        g_log.clear();
    }
    void TearDown() override
    {
        MMIDeInit();
        timer_deinit();
        SetButtonOverlayHeight(0);
    }
    // One pass at `now` with these keys down, then the clock moves on by `step` ms.
    void Pass(U8 code, U32 step = 16)
    {
        ButtonBarTestStep(code, now);
        now += step;
    }
    TestRoot root;
    U32 now = 0;
};

TEST_F(ButtonBarTest, PressHoldRepeatRelease)
{
    ButtonBarRegisterKeyPressCallback(KEYINDEX_2, Cb<'p'>);
    ButtonBarRegisterKeyReleaseCallback(KEYINDEX_2, Cb<'r'>);
    ButtonBarRegisterKeyHoldCallback(KEYINDEX_2, Cb<'h'>, 1000, 200);
    Pass(KEYMASK_2, 999);
    EXPECT_EQ(g_log, "p");
    EXPECT_TRUE(ButtonBarIsKeyPressed(KEYINDEX_2));
    Pass(KEYMASK_2, 1);
    EXPECT_EQ(g_log, "p") << "999 ms is not yet a hold";
    Pass(KEYMASK_2, 199);
    EXPECT_EQ(g_log, "ph");
    Pass(KEYMASK_2, 1);
    Pass(KEYMASK_2, 200);
    Pass(KEYMASK_2, 200);
    EXPECT_EQ(g_log, "phhh") << "repeats every 200 ms";
    Pass(0);
    EXPECT_EQ(g_log, "phhhr");
    EXPECT_FALSE(ButtonBarIsKeyPressed(KEYINDEX_2));
}

TEST_F(ButtonBarTest, HoldWithoutRepeatFiresOnceAndZeroHoldNever)
{
    ButtonBarRegisterKeyHoldCallback(KEYINDEX_1, Cb<'a'>, 500, 0);
    ButtonBarRegisterKeyHoldCallback(KEYINDEX_3, Cb<'c'>, 0, 100);
    for (int i = 0; i < 100; i++) Pass(KEYMASK_1 | KEYMASK_3, 50);
    EXPECT_EQ(g_log, "a");
}

TEST_F(ButtonBarTest, TwoKeysInOnePassAndExactMasks)
{
    ButtonBarRegisterKeyPressCallback(KEYINDEX_1, Cb<'1'>);
    ButtonBarRegisterKeyPressCallback(KEYINDEX_2, Cb<'2'>);
    ASSERT_TRUE(ButtonBarRegisterKeyMaskCallback(KEYMASK_1 | KEYMASK_2, 0, Cb<'m'>));
    ASSERT_TRUE(ButtonBarRegisterKeyMaskCallback(KEYMASK_1 | KEYMASK_2, 2000, Cb<'H'>));
    Pass(KEYMASK_1 | KEYMASK_2);
    EXPECT_EQ(g_log, "12m");
    for (int i = 0; i < 10; i++) Pass(KEYMASK_1 | KEYMASK_2, 100);
    EXPECT_EQ(g_log, "12m") << "the plain mask fires on the change only";
    // A third key joins: the combination is not exact and the hold time starts again.
    Pass(KEYMASK_1 | KEYMASK_2 | KEYMASK_3, 100);
    Pass(KEYMASK_1 | KEYMASK_2, 1999);
    Pass(KEYMASK_1 | KEYMASK_2, 1);
    EXPECT_EQ(g_log, "12mm");
    Pass(KEYMASK_1 | KEYMASK_2, 5000);
    Pass(KEYMASK_1 | KEYMASK_2);
    EXPECT_EQ(g_log, "12mmH") << "held for 2000 ms, once";
    ButtonBarDeregisterKeyMaskCallback(Cb<'m'>);
    EXPECT_TRUE(ButtonBarRegisterKeyMaskCallback(KEYMASK_4, 0, Cb<'4'>));
    for (int i = 0; i < 3; i++) ButtonBarRegisterKeyMaskCallback(KEYMASK_5, 0, Cb<'5'>);
    EXPECT_FALSE(ButtonBarRegisterKeyMaskCallback(KEYMASK_5, 0, Cb<'5'>)) << "five slots";
}

TEST_F(ButtonBarTest, TimedBarSlidesAwayAndWakesWithoutCallbacks)
{
    ButtonBarSetMode(BUTTONBARMODE_VISIBLE_WITH_TIMEOUT);
    ButtonBarSetAnimation(BUTTONBARANIMATION_SLIDE);
    ButtonBarSetHeight(44);
    ButtonBarRegisterKeyPressCallback(KEYINDEX_1, Cb<'p'>);
    ButtonBarRegisterKeyReleaseCallback(KEYINDEX_1, Cb<'r'>);
    Pass(KEYMASK_1);
    Pass(0);
    EXPECT_EQ(g_log, "pr");
    EXPECT_EQ(GetButtonOverlayHeight(), 44u);
    now += 5000;
    Pass(0);  // idle: starts hiding
    std::vector<U32> heights;
    for (int i = 0; i < 30 && ButtonBarTestGet()->state != BUTTONBARSTATE_HIDDEN; i++) {
        Pass(0);
        heights.push_back(GetButtonOverlayHeight());
    }
    EXPECT_EQ(heights.front(), 42u);
    EXPECT_EQ(heights[1], 40u) << "two rows a pass";
    EXPECT_EQ(heights.back(), 0u);
    EXPECT_EQ(ButtonBarTestGet()->state, BUTTONBARSTATE_HIDDEN);
    // A short press on the hidden bar: a click, no callbacks; the bar opens.
    Pass(KEYMASK_1);
    Pass(0);
    EXPECT_EQ(g_log, "pr");
    EXPECT_EQ(ButtonBarTestGet()->state, BUTTONBARSTATE_SHOWING);
    EXPECT_EQ(root.Read("sys/class/leds/buzzer-pwm/brightness"), "127");
    for (int i = 0; i < 30; i++) Pass(0);
    EXPECT_EQ(ButtonBarTestGet()->state, BUTTONBARSTATE_ACTIVE);
    EXPECT_EQ(GetButtonOverlayHeight(), 44u);
}

TEST_F(ButtonBarTest, TheKeyThatChangesTheScreenGivesNothingOnTheNewOne)
{
    MMIRegisterScreen(1, nullptr, nullptr, nullptr, nullptr);
    MMIRegisterScreen(2, nullptr, nullptr, nullptr, nullptr);
    MMIScreenGoto(1);
    Pass(0);
    ButtonBarRegisterKeyPressCallback(KEYINDEX_3, [] { MMIScreenGoto(2); });
    Pass(KEYMASK_3);
    EXPECT_EQ(MMIGetScreenIdCurrent(), 2u);
    // The new screen's keys, as its creation would set them.
    ButtonBarReset();
    ButtonBarSetMode(BUTTONBARMODE_INVISIBLE);
    ButtonBarRegisterKeyReleaseCallback(KEYINDEX_3, Cb<'r'>);
    ButtonBarRegisterKeyHoldCallback(KEYINDEX_3, Cb<'h'>, 100, 100);
    Pass(KEYMASK_3, 500);
    Pass(KEYMASK_3, 500);
    Pass(0);
    EXPECT_EQ(g_log, "") << "neither hold nor release of that key";
    Pass(KEYMASK_3);
    Pass(0);
    EXPECT_EQ(g_log, "r") << "the next press acts";
}

TEST_F(ButtonBarTest, DisabledBarKeepsKeyStatesButCallsNothing)
{
    ButtonBarSetMode(BUTTONBARMODE_DISABLED);
    ButtonBarRegisterKeyPressCallback(KEYINDEX_5, Cb<'p'>);
    ASSERT_TRUE(ButtonBarRegisterKeyMaskCallback(KEYMASK_5, 0, Cb<'m'>));
    Pass(KEYMASK_5);
    EXPECT_TRUE(ButtonBarIsKeyPressed(KEYINDEX_5));
    EXPECT_EQ(g_log, "");
}

TEST_F(ButtonBarTest, BarIsDrawnBelowTheScreen)
{
    ButtonBarSetMode(BUTTONBARMODE_VISIBLE_ALWAYS);
    ButtonBarSetHeight(44);
    ButtonBarSetBackgroundColour(NAVY);
    Pass(0);
    EXPECT_EQ(L2(0, 240), NAVY);
    EXPECT_EQ(L2(319, 284), NAVY) << "one row more than the 44 shown";
    EXPECT_EQ(L2(0, 285), 0);
    EXPECT_EQ(L2(0, 239), 0) << "the screen proper is untouched";
    EXPECT_EQ(GetButtonOverlayHeight(), 44u);
    ButtonBarSetMode(BUTTONBARMODE_INVISIBLE);
    Pass(0);
    EXPECT_EQ(GetButtonOverlayHeight(), 0u);
}

TEST_F(ButtonBarTest, ResetKeepsHeldKeys)
{
    Pass(KEYMASK_4);
    ButtonBarRegisterKeyReleaseCallback(KEYINDEX_4, Cb<'r'>);
    ButtonBarReset();
    EXPECT_TRUE(ButtonBarIsKeyPressed(KEYINDEX_4));
    EXPECT_EQ(ButtonBarTestGet()->state, BUTTONBARSTATE_DISABLED);
    EXPECT_EQ(ButtonBarTestGet()->keys[0].fontSize, 10u);
    EXPECT_EQ(ButtonBarTestGet()->keys[0].fontColour, WHITE_TEXT);
}

TEST_F(ButtonBarTest, KeypadLinesAreActiveLowAndUnreadableMeansPressed)
{
    EXPECT_EQ(keypad_read(), 0);
    root.Write("sys/class/gpio/gpio71/value", "0\n");
    EXPECT_EQ(keypad_read(), KEYMASK_3);
    remove(root.Abs("sys/class/gpio/gpio99/value").c_str());
    testing::internal::CaptureStdout();
    EXPECT_EQ(keypad_read(), KEYMASK_3 | KEYMASK_4);
    testing::internal::GetCapturedStdout();
}

TEST(ButtonBarDeathTest, KeyIndexAboveFourAsserts)
{
    EXPECT_DEATH(ButtonBarIsKeyPressed((KEYINDEX_T)5), "keyIndex is not valid!");
    EXPECT_DEATH(ButtonBarSetKeyText((KEYINDEX_T)9, FONT_INDEX_TTARIAL, 10, WHITE, "a", "b"), "keyIndex is not valid!");
}

}  // namespace
