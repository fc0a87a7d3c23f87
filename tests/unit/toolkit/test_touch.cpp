// The touch driver against the simulated panel, the calibration screen and touch
// buttons driven through the hot areas.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "app_lock.h"
#include "display_fixture.h"
#include "hotareas.h"
#include "images.h"
#include "mmi.h"
#include "picture_check.h"
#include "platform_sysinfo.h"
#include "test_root.h"
#include "touch_button.h"
#include "touch_calib.h"
#include "touch_drv.h"
#include "touch_sim.h"
#include "ttfonts.h"

namespace {

// A whole touch at screen points `down`, then the lift, queued before it is read.
void Touch(const TestRoot& root, const std::vector<std::pair<int, int>>& down)
{
    for (const auto& p : down) ASSERT_EQ(touch_sim_send(root.Path(), p.first, p.second, 200), "");
    ASSERT_EQ(touch_sim_send(root.Path(), down.back().first, down.back().second, 0), "");
}

class TouchTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetDisplay(800, 480);
        ASSERT_EQ(FTFInit(gpaFreetypeFontData, 6), 0);
        root.Write("sys/class/leds/buzzer-pwm/brightness", "0\n");
        root.Write("run/.keep", "");
        calib = root.Abs("etc/pointercal");
        root.Write("etc/.keep", "");
        unsetenv("TSLIB_CALIBFILE");
        // As the main loop does: a calibration read lets go of it while it waits.
        AppLock();
        touch_init();
        touch_start_calibration();
    }
    void TearDown() override
    {
        AppUnlock();
        touch_end_calibration();
        touch_deinit();
        unsetenv("TSLIB_CALIBFILE");
    }
    TestRoot root;
    std::string calib;
    TOUCHCALIBRATION_T cal = {};
};

TEST_F(TouchTest, MedianOfOneTouchLeavesOutTheLift)
{
    int rx, ry;
    // One sample: the median is that sample, not the lift.
    Touch(root, {{100, 100}});
    ASSERT_TRUE(touch_calibration_sample(&cal, 1, 2));
    touch_sim_panel(100, 100, &rx, &ry);
    EXPECT_EQ(cal.x[0], rx);
    EXPECT_EQ(cal.y[0], ry);
    EXPECT_EQ(cal.xs[0], 1);
    EXPECT_EQ(cal.ys[0], 2);

    // Four samples on a row: x is the mean of the second and third smallest. The
    // lift far away must not count.
    int r[4];
    const int xs[4] = {400, 10, 300, 200};
    for (int i = 0; i < 4; ++i) touch_sim_panel(xs[i], 0, &r[i], &ry);
    for (int i = 0; i < 4; ++i) ASSERT_EQ(touch_sim_send(root.Path(), xs[i], 0, 200), "");
    ASSERT_EQ(touch_sim_send(root.Path(), 790, 0, 0), "");
    ASSERT_TRUE(touch_calibration_sample(&cal, 3, 4));
    EXPECT_EQ(cal.x[1], (r[3] + r[2]) / 2);

    // A lift with no touch before it is no sample, and the slot stays.
    ASSERT_EQ(touch_sim_send(root.Path(), 5, 5, 0), "");
    EXPECT_FALSE(touch_calibration_sample(&cal, 9, 9));
    Touch(root, {{50, 60}});
    ASSERT_TRUE(touch_calibration_sample(&cal, 5, 6));
    EXPECT_EQ(cal.xs[2], 5);
}

TEST_F(TouchTest, CalibrationWritesTheFileAndLaterTouchesLandOnTheAim)
{
    setenv("TSLIB_CALIBFILE", calib.c_str(), 1);
    const int aim[5][2] = {{50, 50}, {760, 50}, {760, 440}, {50, 440}, {400, 240}};
    for (const auto& p : aim) {
        Touch(root, {{p[0] - 1, p[1]}, {p[0], p[1] + 1}, {p[0], p[1]}});
        ASSERT_TRUE(touch_calibration_sample(&cal, p[0], p[1]));
    }
    ASSERT_TRUE(touch_calibrate(&cal));
    const std::string file = ReadWholeFile(calib);
    EXPECT_EQ(file.find('\n'), std::string::npos) << "no line end";
    int v[9];
    ASSERT_EQ(sscanf(file.c_str(), "%d %d %d %d %d %d %d %d %d", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                     &v[7], &v[8]),
              9);
    EXPECT_EQ(v[0], cal.a[1]);
    EXPECT_EQ(v[2], cal.a[0]);
    EXPECT_EQ(v[5], cal.a[3]);
    EXPECT_EQ(v[6], 65536);
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    EXPECT_EQ(v[7], (int)info.width);
    EXPECT_EQ(v[8], (int)info.height);

    touch_end_calibration();
    EXPECT_TRUE(touch_is_calibrated());
    for (const auto& p : {std::pair<int, int>{123, 321}, {700, 30}, {5, 470}}) {
        ASSERT_EQ(touch_sim_send(root.Path(), p.first, p.second, 100), "");
        TOUCHSTATE_T s;
        touch_get_state(&s);
        EXPECT_EQ(s.state, TOUCH_STATE_PRESSED);
        EXPECT_NEAR(s.x, p.first, 1);
        EXPECT_NEAR(s.y, p.second, 1);
    }
    ASSERT_EQ(touch_sim_send(root.Path(), 0, 0, 0), "");
    TOUCHSTATE_T s;
    touch_get_state(&s);
    EXPECT_EQ(s.state, TOUCH_STATE_RELEASED);
    EXPECT_NEAR(s.x, 5, 1) << "the lift keeps the last point";
}

TEST_F(TouchTest, DegenerateOrUnwritableCalibrationFails)
{
    for (int i = 0; i < 5; ++i) cal.x[i] = 1000, cal.y[i] = 2000, cal.xs[i] = i;
    setenv("TSLIB_CALIBFILE", calib.c_str(), 1);
    EXPECT_FALSE(touch_calibrate(&cal)) << "five samples on one point";
    EXPECT_EQ(access(calib.c_str(), F_OK), -1) << "the old file stays as it was";

    const int raw[5][2] = {{200, 300}, {3800, 310}, {3790, 3700}, {210, 3690}, {2000, 2000}};
    for (int i = 0; i < 5; ++i) cal.x[i] = raw[i][0], cal.y[i] = raw[i][1];
    unsetenv("TSLIB_CALIBFILE");
    EXPECT_FALSE(touch_calibrate(&cal));
    EXPECT_EQ(cal.a[6], 65536) << "the constants are computed before the file is looked for";
}

// The panel of a device root receives rubbish: no crash, no sample.
TEST_F(TouchTest, MalformedSamplesAreIgnored)
{
    touch_end_calibration();
    root.Write("etc/pointercal", "1 2 3 4 5 6 0 800 480");  // a zero divisor
    setenv("TSLIB_CALIBFILE", calib.c_str(), 1);
    touch_init();
    TOUCHSTATE_T before, s;
    touch_get_state(&before);
    for (const char* junk : {"", "1 2", "x y z", "99999999999 1 1"}) {
        struct sockaddr_un addr;
        ASSERT_TRUE(touch_sim_address(root.Path().c_str(), &addr));
        const int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
        sendto(fd, junk, strlen(junk), 0, reinterpret_cast<sockaddr*>(&addr), sizeof(addr));
        close(fd);
    }
    for (int i = 0; i < 5; ++i) touch_get_state(&s);
    EXPECT_EQ(s.state, before.state);
    EXPECT_EQ(s.x, before.x);
    ASSERT_EQ(touch_sim_send(root.Path(), 10, 20, 1), "");
    touch_get_state(&s);
    EXPECT_EQ(s.state, TOUCH_STATE_PRESSED) << "uncalibrated: raw panel counts";
    touch_start_calibration();
}

// The calibration screen on the large model, the one with the panel: the first cross,
// then after five touches the file and the way back.
TEST_F(TouchTest, CalibrationScreen)
{
    touch_end_calibration();
    ResetDisplay(800, 480);
    setenv("TSLIB_CALIBFILE", calib.c_str(), 1);
    MMIInit(4, 4, 4);
    MMIRegisterScreen(0, nullptr, nullptr, nullptr, nullptr);
    MMIRegisterScreen(1, CalibrateTouchEnter, CalibrateTouchCreate, CalibrateTouchUpdate, CalibrateTouchExit);
    MMIScreenGoto(0);
    MMIProcess();
    MMIScreenGoto(1);
    MMIProcess();
    MMIProcess();  // the cross is shown by two passes; the third reads
    std::vector<U16> page(800 * 480);
    LayerMergerTestCompose(page.data());
    EXPECT_TRUE(MatchesPicture("touch_calibration_screen", page.data(), 800, 480, 800));

    const int centres[5][2] = {{50, 50}, {760, 50}, {760, 440}, {50, 440}, {400, 240}};
    for (const auto& c : centres) {
        Touch(root, {{c[0], c[1]}});
        for (int i = 0; i < 3; ++i) MMIProcess();
    }
    MMIProcess();
    EXPECT_EQ(MMIGetScreenIdCurrent(), 0u);
    EXPECT_FALSE(ReadWholeFile(calib).empty());
    EXPECT_TRUE(touch_is_calibrated());
    MMIDeInit();
    touch_start_calibration();
}

std::string g_log;
template <char C>
void Cb()
{
    g_log += C;
}

class TouchButtonTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetDisplay(320, 240);
        ASSERT_EQ(FTFInit(gpaFreetypeFontData, 6), 0);
        root.Write("sys/class/leds/buzzer-pwm/brightness", "0\n");
        MMIInit(4, 4, 4);
        ButtonInit();
        MMIRegisterScreen(0, nullptr, Create, nullptr, nullptr);
        MMIScreenGoto(0);
        MMIProcess();
        Step(TOUCH_STATE_RELEASED, 0, 0);
        g_log.clear();
    }
    void TearDown() override { MMIDeInit(); }
    static void Create()
    {
        // `up` is 64 x 48: the hot area reaches row 20 + 48.
        handle = ButtonCreate(10, 20, &up, Cb<'c'>);
        ButtonSetPressCallback(handle, Cb<'p'>);
        ButtonSetReleaseCallback(handle, Cb<'r'>);
        ButtonSetTextLine1(handle, "Go", 14);
        ButtonSetUnderText(handle, "under", 12);
        ButtonSetTextColours(handle, 0xFFE0, 0x07E0);
        second = ButtonCreate(120, 20, &down, Cb<'d'>);
        ButtonSetPressImage(second, &down_s);
    }
    void Step(S32 state, S32 x, S32 y)
    {
        const TOUCHSTATE_T t = {x, y, state};
        HotAreaTestStep(&t, now += 20);
        MMIProcess();
    }
    std::vector<U16> Page()
    {
        std::vector<U16> page(320 * 240);
        LayerMergerTestCompose(page.data());
        return page;
    }
    static BUTTONHANDLE_T handle, second;
    TestRoot root;
    U32 now = 1000;
};
BUTTONHANDLE_T TouchButtonTest::handle, TouchButtonTest::second;

TEST_F(TouchButtonTest, PressReleaseClickOnTheExtraRow)
{
    EXPECT_EQ(ButtonCreate(0, 0, nullptr, Cb<'x'>), -1);
    Step(TOUCH_STATE_PRESSED, 73, 68);  // the row below the image, the last column
    EXPECT_EQ(g_log, "p");
    Step(TOUCH_STATE_RELEASED, 73, 68);
    EXPECT_EQ(g_log, "prc");
    Step(TOUCH_STATE_PRESSED, 74, 30);  // one column right of the image
    Step(TOUCH_STATE_RELEASED, 74, 30);
    Step(TOUCH_STATE_PRESSED, 30, 69);  // two rows below
    Step(TOUCH_STATE_RELEASED, 30, 69);
    EXPECT_EQ(g_log, "prc");
    // Bad handles are ignored.
    ButtonSetOpacity(-1, 5);
    ButtonSetTextLine1(MAX_BUTTONS, "x", 1);
    ButtonSetTextLine1(handle, nullptr, 20);
}

TEST_F(TouchButtonTest, PicturesReleasedAndPressed)
{
    EXPECT_TRUE(MatchesPicture("touch_buttons_released", Page().data(), 320, 240, 320));
    // The second shows its press image while held; the first has none and vanishes.
    Step(TOUCH_STATE_PRESSED, 130, 30);
    EXPECT_TRUE(MatchesPicture("touch_buttons_pressed", Page().data(), 320, 240, 320));
    Step(TOUCH_STATE_RELEASED, 130, 30);
    Step(TOUCH_STATE_PRESSED, 30, 30);
    const std::vector<U16> page = Page();
    EXPECT_EQ(page[30 * 320 + 40], 0) << "nothing drawn of a held button without a press image";
}

}  // namespace
