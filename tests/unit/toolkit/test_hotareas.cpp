// Hot areas driven sample by sample with a controlled clock.
#include <gtest/gtest.h>

#include <string>

#include "hotareas.h"
#include "layer_merger.h"
#include "lcd_buffer.h"

namespace {

// Each callback appends its letter and the area's tag: "pA" is a press of area A.
std::string g_log;
template <char C>
void Cb(void* pData)
{
    g_log += C;
    g_log += *static_cast<const char*>(pData);
}

const char A = 'A', B = 'B';

HOTAREAHANDLE_T Area(S32 left, S32 top, S32 right, S32 bottom, const char* tag, U32 holdMs = 0)
{
    const HOTAREAHANDLE_T h = HotAreaCreatePos(left, top, right, bottom, Cb<'p'>, Cb<'r'>, (void*)tag);
    HotAreaSetClickedCallback(h, Cb<'c'>);
    if (holdMs) HotAreaSetHoldCallback(h, Cb<'h'>, holdMs);
    return h;
}

class HotAreaTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gScreenWidth = 800;
        gScreenHeight = 480;
        vSetLcdFlipped(FALSE);
        HotAreaResetAll();
        Up(0, 0);  // the last state outlives a reset: start with the finger off
        g_log.clear();
    }
    void TearDown() override
    {
        HotAreaResetAll();
        vSetLcdFlipped(FALSE);
        gScreenWidth = 320;
        gScreenHeight = 240;
    }
    // One sample at `now`; the clock then moves on by `step` ms.
    void Sample(S32 x, S32 y, S32 state, U32 step = 16)
    {
        const TOUCHSTATE_T t = {x, y, state};
        HotAreaTestStep(&t, now);
        now += step;
    }
    void Down(S32 x, S32 y, U32 step = 16) { Sample(x, y, TOUCH_STATE_PRESSED, step); }
    void Up(S32 x, S32 y) { Sample(x, y, TOUCH_STATE_RELEASED); }
    U32 now = 5000;
};

TEST_F(HotAreaTest, TapOnOverlappingAreasGoesToTheLaterOneOnly)
{
    Area(0, 0, 99, 99, &A);
    Area(50, 50, 149, 149, &B);
    Down(60, 60);
    Down(61, 61);  // the finger rests: no second press
    Up(61, 61);
    EXPECT_EQ(g_log, "pBrBcB");
    g_log.clear();
    // Bounds are inclusive; the earlier area still takes a press where it is alone.
    Down(0, 99);
    Up(0, 99);
    Down(149, 149);
    Up(149, 149);
    Down(150, 149);
    Up(150, 149);
    EXPECT_EQ(g_log, "pArAcApBrBcB");
}

TEST_F(HotAreaTest, DragOutReleasesWithoutAClickAndDragInPressesNothing)
{
    Area(0, 0, 99, 99, &A);
    Area(200, 0, 299, 99, &B);
    Down(50, 50);
    Down(150, 50);  // out of A
    Down(250, 50);  // into B with the finger down
    Down(50, 50);   // and back into A
    Up(50, 50);
    EXPECT_EQ(g_log, "pArA");
}

TEST_F(HotAreaTest, HoldEndsThePressWithoutAClick)
{
    Area(0, 0, 99, 99, &A, 1000);
    Down(10, 10, 999);
    Down(10, 10, 1);
    EXPECT_EQ(g_log, "pA") << "999 ms is not yet a hold";
    Down(10, 10);
    EXPECT_EQ(g_log, "pArAhA");
    Down(10, 10, 5000);
    Down(10, 10);
    Up(10, 10);
    EXPECT_EQ(g_log, "pArAhA") << "nothing more while held or on lifting";

    // A short tap on the same area is still a click, and a new press starts a new hold.
    g_log.clear();
    Down(10, 10, 500);
    Up(10, 10);
    Down(10, 10, 1000);
    Down(10, 10);
    EXPECT_EQ(g_log, "pArAcApArAhA");
}

TEST_F(HotAreaTest, HoldTimerRunsOnlyWithAHoldCallbackAndAcrossTheClockWrap)
{
    const HOTAREAHANDLE_T h = Area(0, 0, 99, 99, &A);
    Down(10, 10, 60000);
    Up(10, 10);
    EXPECT_EQ(g_log, "pArAcA") << "no hold callback, no hold";

    HotAreaSetHoldCallback(h, Cb<'h'>, 100);
    g_log.clear();
    now = 0xFFFFFFFFu - 49;
    Down(10, 10, 99);  // the press 50 ms before the millisecond clock wraps
    Down(10, 10, 1);
    Down(10, 10);
    EXPECT_EQ(g_log, "pArAhA");
}

TEST_F(HotAreaTest, RemovedOrReplacedAreaGetsNoRelease)
{
    const HOTAREAHANDLE_T h = Area(0, 0, 99, 99, &A);
    Down(10, 10);
    HotAreaRemove(h);
    Up(10, 10);
    // A new area in the freed slot starts unpressed.
    EXPECT_EQ(Area(0, 0, 99, 99, &B), h);
    Down(10, 10);
    HotAreaResetAll();
    Area(0, 0, 99, 99, &B);
    Up(10, 10);
    EXPECT_EQ(g_log, "pApB");
}

TEST_F(HotAreaTest, FlippedPanelMirrorsTheTouchPoint)
{
    Area(790, 470, 799, 479, &A);  // bottom right of the picture
    Area(0, 0, 9, 9, &B);          // top left
    vSetLcdFlipped(TRUE);
    Down(0, 0);
    Up(0, 0);
    Down(799, 479);
    Up(799, 479);
    EXPECT_EQ(g_log, "pArAcApBrBcB");
    g_log.clear();
    vSetLcdFlipped(FALSE);
    Down(0, 0);
    Up(0, 0);
    EXPECT_EQ(g_log, "pBrBcB");
}

TEST_F(HotAreaTest, FullTableAndBadHandles)
{
    for (S32 i = 0; i < HOTAREA_MAX; i++) ASSERT_EQ(Area(i, 0, i, 0, &A), i);
    EXPECT_EQ(Area(0, 0, 9, 9, &B), -1);
    HotAreaRemove(-1);
    HotAreaRemove(HOTAREA_MAX);
    HotAreaMove(-1, 5, 5);
    HotAreaSetPressCallback(HOTAREA_MAX, Cb<'x'>);
    EXPECT_EQ(HotAreaGetCallbackData(HOTAREA_MAX), nullptr);
    EXPECT_EQ(HotAreaGetCallbackData(-1), nullptr);
    Down(199, 0);
    Up(199, 0);
    EXPECT_EQ(g_log, "pArAcA");

    GFX_RECT_T r = {};
    HotAreaMove(7, 100, 200);
    HotAreaResize(7, 30, 40);
    HotAreaGet(7, &r);
    EXPECT_EQ(r.Left, 100);
    EXPECT_EQ(r.Top, 200);
    EXPECT_EQ(r.Right, 129);
    EXPECT_EQ(r.Bottom, 239);
}

}  // namespace
