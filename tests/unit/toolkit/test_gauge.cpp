// The gauge widget: where its scale markers and its needle land, in both directions.
#include <cmath>

#include "display_fixture.h"
#include "freetype_api.h"
#include "gauge.h"
#include "images.h"
#include "lcd_blan.h"
#include "ttfonts.h"
#include "vertex.h"

namespace {

constexpr S32 CX = 160, CY = 120;

class Gauge : public DisplayTest {
protected:
    void SetUp() override
    {
        DisplayTest::SetUp();
        vLcdBlankerEx(BLACK, ALPHA_COLOR);
        ASSERT_EQ(FTFInit(gpaFreetypeFontData, gFreetypeNumFonts), 0);
    }

    static GAUGE_T Make(float start, float end, DIRECTION_T direction, int majors = 2, int minors = 0)
    {
        return {42, 0, 100, start, end, direction, CX, CY, majors, minors, 0, 1.0f, RED, GREEN, nullptr, nullptr, 0, 0};
    }

    // The needle's (and hub's) box as its element recorded it, relative to the centre.
    static GFX_RECT_T Needle(GAUGE_T g, float value)
    {
        ElementTestReset();
        vGaugeUpdate(&g, value);
        GFX_RECT_T r{};
        EXPECT_TRUE(ElementTestGetCurRect(42, &r));
        return {r.Left - CX, r.Top - CY, r.Right - CX, r.Bottom - CY};
    }

    // Whether a scale marker lies at radius 94 and the angle (0 up, clockwise).
    static bool MarkerAt(float angleDeg)
    {
        const S32 x = CX + (S32)lroundf(94 * sinf(DEG2RAD(angleDeg))), y = CY - (S32)lroundf(94 * cosf(DEG2RAD(angleDeg)));
        for (S32 i = 0; i < 9; i++) {
            if (L1(x + i % 3 - 1, y + i / 3 - 1) == GREEN) return true;
        }
        return false;
    }
};

TEST_F(Gauge, NeedleFollowsTheArcInItsDirectionAndStopsAtItsEnds)
{
    // Start 225, end 135 clockwise is 270 degrees: mid-scale points straight up, and the
    // tip reaches radius 100.
    GFX_RECT_T r = Needle(Make(225, 135, DIRECTION_ClockWise), 50);
    EXPECT_EQ(r.Top, -102);
    EXPECT_NEAR(r.Left + r.Right, 2, 1);
    // Start 0, end 270: clockwise mid-scale lies at 135, counter-clockwise (a sweep of
    // 90) at -45.
    r = Needle(Make(0, 270, DIRECTION_ClockWise), 50);
    EXPECT_TRUE(r.Right > 60 && r.Bottom > 60);
    r = Needle(Make(0, 270, DIRECTION_CounterClockWise), 50);
    EXPECT_TRUE(r.Left < -60 && r.Top < -60);
    // Past the scale: at its end, and the value is kept as passed.
    GAUGE_T g = Make(270, 90, DIRECTION_ClockWise);
    vGaugeUpdate(&g, 1e6f);
    EXPECT_EQ(g.previousValue, 1e6f);
    EXPECT_GE(Needle(g, 1e6f).Right, 100);
    EXPECT_LE(Needle(g, -50).Left, -100);
    Needle(g, NAN);  // harmless
}

TEST_F(Gauge, NeedleOnTheFrontLayerAndHubOnTheCentreWhateverTheFaceOffset)
{
    GAUGE_T g = Make(0, 180, DIRECTION_ClockWise);
    g.needleBoss = &needle_boss;
    g.xOffset = g.yOffset = 60;
    const GFX_RECT_T r = Needle(g, 0);
    EXPECT_EQ(r, (GFX_RECT_T{-10, -102, 9, 9})) << "the 20 x 20 hub from -10 to 9";
    EXPECT_EQ(L2(CX, CY - 50), RED);
    EXPECT_EQ(L1(CX, CY - 50), BLACK);
}

TEST_F(Gauge, ScaleMarkersMajorAndMinor)
{
    GAUGE_T g = Make(270, 90, DIRECTION_ClockWise);  // two majors, no minors: the ends only
    vGaugeCreate(&g);
    EXPECT_TRUE(MarkerAt(270) && MarkerAt(90));
    EXPECT_FALSE(MarkerAt(0));
    EXPECT_EQ(L2(CX - 94, CY), ALPHA_COLOR) << "the scale goes on the back layer";
    // After each major the angle moves on by the minor step, so a single minor falls
    // half way; counter-clockwise the scale runs round the bottom.
    for (DIRECTION_T d : {DIRECTION_ClockWise, DIRECTION_CounterClockWise}) {
        ResetDisplay();
        g = Make(270, 90, d, 3, 1);
        vGaugeCreate(&g);
        const float s = d == DIRECTION_ClockWise ? 45 : -45;
        for (int i = 0; i <= 4; i++) EXPECT_TRUE(MarkerAt(270 + s * (float)i)) << d << " " << i;
        EXPECT_FALSE(MarkerAt(270 - 2 * s));
    }
    g.markersMajor = 1;
    EXPECT_DEATH(vGaugeCreate(&g), "Gauge needs at lease a start marker and an end marker!");
}

}  // namespace
