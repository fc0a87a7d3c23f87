// The quad gauges: needle tips at the worked points of the arc, every gauge at mid-scale
// on one contact sheet, and a page for each rule of the marks.
#include "images.h"
#include "lcd_blan.h"
#include "outimage.h"
#include "quad_fixture.h"

namespace {

void Write(S_String* text, const char* value)
{
    ASSERT_NE(text, nullptr);
    snprintf(text->string, text->size, "%s", value);
}

void WriteNumber(S_String* text, uint8_T decimals, real_T value)
{
    char s[32];
    snprintf(s, sizeof(s), "%.*f", (int)decimals, value);
    Write(text, s);
}

// A dial's value at `fraction` of its scale, its peak a quarter of the scale above, its
// limit near the end, its low text near the start: as the foreground task would leave
// them, numbers and texts alike.
void Place(const QUAD_GAUGE_T& g, real_T fraction)
{
    if (g.kind != QUAD_DIAL) return;
    BlockIO_Velnor_Dorvik_V6c& b = Velnor_Dorvik_V6c_B;
    const real_T min = b.*g.scaleMin, max = b.*g.scaleMax;
    const uint8_T decimals = b.*g.decimals;
    auto at = [&](real_T f) { return min + f * (max - min); };
    b.*g.value = at(fraction);
    WriteNumber(b.*g.valueText, decimals, at(fraction));
    if (g.peak == QUAD_MARK_VALUE) {
        b.*g.peakValue = at(fraction + 0.25);
        WriteNumber(b.*g.peakText, decimals, at(fraction + 0.25));
    }
    if (g.limit == QUAD_MARK_VALUE) b.*g.limitValue = at(0.85);
    if (g.lowText) WriteNumber(b.*g.lowText, 2, at(0.1));
}

// The texts of the two panels and of the computed titles' set point and target.
void PanelTexts()
{
    Write(B.ValueString_dm, " 4");
    Write(B.ValueString_di2, " 4");
    Write(B.ValueString_lq, " 4");
    Write(B.quorin_string_o, "OFF");
    Write(B.quorin_string, "ON");
    Write(B.ValueString_d, "  63");
    Write(B.ValueString_bw, " 22");
    Write(B.ValueString, "12.30");
    Write(B.ValueString_j, "14.20");
}

constexpr uint16_T EMPTY = 0x00FF;  // a quad gauge index past the table: the cell stays empty

TEST_F(QuadScreenTest, RpmNeedleTipsOfTheWorkedCases)
{
    ShowWords(QUAD_RPM, EMPTY, EMPTY, EMPTY);
    ASSERT_EQ(B.DisplayMin_h2, 0);
    ASSERT_EQ(B.DisplayMax_lf, 9000);
    struct CASE_T {
        real_T rpm;
        S32 x, y;
        U16 colour;
    };
    for (const CASE_T& c : {CASE_T{4500, 72, 9, YELLOW}, CASE_T{0, 14, 27, YELLOW}, CASE_T{9000, 129, 27, YELLOW},
                            CASE_T{-500, 9, 31, RED}}) {
        B.ValueDouble_km = c.rpm;
        const std::vector<U16> page = UpdateAndCompose();
        EXPECT_EQ(Pixel(page, c.x, c.y), c.colour) << c.rpm << " RPM";
    }
    // Beyond the scale the needle stops 4 degrees past its end, where 9500 RPM stands.
    B.ValueDouble_km = 9500;
    const std::vector<U16> stop = UpdateAndCompose();
    B.ValueDouble_km = 1e9;
    EXPECT_EQ(UpdateAndCompose(), stop);
}

TEST_F(QuadScreenTest, ContactSheetOfEveryGaugeAtMidScale)
{
    Pass();
    PanelTexts();
    Pass();  // the titles take the set point and the target
    ContactSheet sheet(160, 120, 8, QUAD_GAUGE_COUNT);
    const uint16_T xs[4] = {0, 160, 0, 160}, ys[4] = {0, 0, 120, 120};
    // Four gauges at a time in the four cells, on the page background alone.
    auto draw = [&](uint32_T first, real_T fraction) {
        vLcdBlankerEx(0, ALPHA_COLOR);
        outimageEx(0, 0, &image_NZET6, 100, ALPHA_INVARIANT, LAYER1);
        for (uint32_T c = 0; c < 4 && first + c < QUAD_GAUGE_COUNT; c++) {
            Place(QUAD_GAUGES[first + c], fraction);
            Velnor_Dorvik_V6c_SetXY(xs[c], ys[c]);
            QUAD_GAUGE_TRIGGERS[first + c]();
        }
    };
    for (uint32_T first = 0; first < QUAD_GAUGE_COUNT; first += 4) {
        // Each gauge has gone below mid-scale once, so that its low mark shows.
        draw(first, 0.2);
        draw(first, 0.5);
        const std::vector<U16> page = Page();
        for (uint32_T c = 0; c < 4 && first + c < QUAD_GAUGE_COUNT; c++) sheet.Put(first + c, page, xs[c], ys[c]);
    }
    EXPECT_TRUE(sheet.Matches("quad_gauges_mid_scale"));
}

// A peak and a limit of their own (engine speed); a peak of "none", drawn at 0, and no
// icon (battery); peak and limit hidden (knock, cylinder 1); the one knock gauge whose
// peak mark shows, at 0 (cylinder 5).
TEST_F(QuadScreenTest, PeakMarksNoneHiddenAndTheKnockException)
{
    Drive();
    ShowWords(QUAD_RPM, QUAD_BatteryVolts, QUAD_KnockRtdCYL1, QUAD_KnockRtdCYL5);
    EXPECT_TRUE(MatchesPicture("quad_marks_peak_limit", UpdateAndCompose().data(), 320, 240, 320));
}

// The lowest value drawn belongs to the gauge, not to its cell: the same gauge in cells 1
// and 4 shows one low mark, and a needle off the scale turns red at the stop.
TEST_F(QuadScreenTest, LowMarkPerGaugeAndNeedlesOffTheScale)
{
    Drive();
    ShowWords(QUAD_X_Axis_G, QUAD_Y_Axis_G, QUAD_CAM1, EMPTY);
    Place(QUAD_GAUGES[QUAD_X_Axis_G], 0.2);  // -1.2 G
    Screen_QuadScreen_Update();
    EXPECT_DOUBLE_EQ(QuadGaugeTestLow(QUAD_X_Axis_G), -1.2);
    ShowWords(QUAD_X_Axis_G, QUAD_Y_Axis_G, QUAD_CAM1, QUAD_X_Axis_G);
    Place(QUAD_GAUGES[QUAD_X_Axis_G], 1.25);  // 3 G, beyond the end
    Place(QUAD_GAUGES[QUAD_Y_Axis_G], -0.2);  // -2.8 G, before the start
    Screen_QuadScreen_Update();
    EXPECT_DOUBLE_EQ(QuadGaugeTestLow(QUAD_X_Axis_G), -1.2);
    EXPECT_DOUBLE_EQ(QuadGaugeTestLow(QUAD_Y_Axis_G), -2.8);
    EXPECT_TRUE(MatchesPicture("quad_marks_low_off_scale", Page().data(), 320, 240, 320));
}

// Titles made of the set point and the target: the waste gate's runs to 25 characters
// with a set point at 0 kPa (-14.70 PSI) and is cut at 24. The set point is also the
// limit of both boost gauges, the target the limit of both air/fuel gauges.
TEST_F(QuadScreenTest, ComputedTitlesAndTheirLimits)
{
    Drive();
    Signals({{"WasteGate_SetPoint", 0}});
    Refresh();
    EXPECT_STREQ(B.quorin_string_printf->string, "WG PRESS (Setpt = -14.70)");
    ShowWords(QUAD_AFR1, QUAD_AFR2, QUAD_MAP, QUAD_WasteGatePressure);
    EXPECT_TRUE(MatchesPicture("quad_computed_titles", UpdateAndCompose().data(), 320, 240, 320));
}

// The same engine in the other units: kPa, Fahrenheit, km/h, lambda.
TEST_F(QuadScreenTest, UnitsOtherThanTheFactoryOnes)
{
    EEVariables_RAMShadow.PRESSURE_UNITS = 2;
    EEVariables_RAMShadow.TEMP_UNITS = 2;
    EEVariables_RAMShadow.SPEED_UNITS = 2;
    EEVariables_RAMShadow.AF_UNITS = 2;
    Drive();
    ShowWords(QUAD_AFR1, QUAD_ECT, QUAD_NonDrivenWheelSpeed, QUAD_OilPressure);
    EXPECT_TRUE(MatchesPicture("quad_units_metric", UpdateAndCompose().data(), 320, 240, 320));
}

}  // namespace
