// The gauges larger than a cell: needle tips at the worked points of the faces, the ten
// large gauges and the two panels as pictures, and the driver information light.
#include <cmath>

#include "large_gauges.h"
#include "quad_fixture.h"

namespace {

// Hard braking into a bend over a crest: what the low marks and texts keep.
const SIGNALS_T BRAKE = {
    {"Y_Axis_AccelG", -0.85}, {"X_Axis_AccelG", -0.62}, {"X_Axis_Degrees", -3.5}, {"Y_Axis_Degrees", -2.2},
};

// What the large gauges show besides the quad gauges' signals.
const SIGNALS_T LARGE_EXTRA = {
    {"Speedo", 64},       {"TwoStep_ADC", 4200},     {"IBoostPosition", 3},   {"O2Fuel_MultA", 1.04},
    {"O2Fuel_MultB", 0.97}, {"WasteGate_Duty", 38},  {"Drivers_Information_Light", 0},
};

class LargeGaugeTest : public QuadScreenTest {
protected:
    void SetUp() override
    {
        QuadScreenTest::SetUp();
        LargeGaugeTestReset();
    }

public:
    // The page of a gauge word in cell 1, as the dash shows it next.
    std::vector<U16> Large(uint8_T index)
    {
        ShowWords(0x0300 | index, 0, 0, 0);
        return UpdateAndCompose();
    }
};

TEST(LargeFaces, NeedleTipsOfTheWorkedCasesAndTheStops)
{
    auto tip = [](const LARGE_FACE_T& f, real_T v, real_T min, real_T max) {
        const GAUGE_TIP_T t = GaugeNeedleTip(f.arc, f.cx, f.cy, v, min, max);
        return std::make_pair(t.x, t.y);
    };
    const LARGE_FACE_T& t = TACHOMETER_FACE;
    const LARGE_FACE_T& s = SPEEDOMETER_FACE;
    const LARGE_FACE_T& l = LARGE_DIAL_FACE;
    // A rev limit of 0 stands at the start of the scale, 4 degrees into the travel.
    EXPECT_EQ(tip(t, 0, t.min, t.max), std::make_pair(57, 233));
    EXPECT_EQ(tip(s, 100, s.min, s.max), std::make_pair(119, 28));
    // The middle of the shared dial's scale is (nearly) straight up.
    EXPECT_EQ(tip(l, 0, -2, 2), std::make_pair(158, 15));
    // Off the scale a needle stops 4 degrees past either end, however far off the value,
    // and a value that is not a number rests at the start stop.
    for (const LARGE_FACE_T* f : {&t, &s, &l}) {
        const real_T max = f == &l ? 2 : f->max, min = f == &l ? -2 : f->min;
        const real_T perDegree = (max - min) / f->arc.span;
        EXPECT_EQ(tip(*f, 1e12, min, max), tip(*f, max + 4 * perDegree, min, max));
        EXPECT_EQ(tip(*f, -1e12, min, max), tip(*f, min - 4 * perDegree, min, max));
        EXPECT_EQ(tip(*f, std::nan(""), min, max), tip(*f, -1e12, min, max));
    }
}

// The ten large gauges after a pull, a hard stop and back to a cruise, each low and peak
// gauge having been on show while braking. The speed unit is km/h, which the speedometer
// does not follow; the front lift is off its scale, so its needle is red at the stop.
TEST_F(LargeGaugeTest, EveryLargeGauge)
{
    EEVariables_RAMShadow.SPEED_UNITS = 2;
    Signals(LARGE_EXTRA);
    Drive();
    Signals(BRAKE);
    for (int i = 0; i < 3; i++) Send(), Pass();
    for (uint8_T i : {LARGE_ACCEL, LARGE_Lateral, LARGE_FrontLift, LARGE_SideTilt}) Large(i);
    Signals(CRUISE);
    Signals({{"Y_Axis_Degrees", 34}});
    Send(), Pass();
    Refresh();
    ContactSheet sheet(320, 240, 5, LARGE_GAUGE_COUNT);
    for (uint8_T i = 0; i < LARGE_GAUGE_COUNT; i++) sheet.Put(i, Large(i), 0, 0);
    EXPECT_TRUE(sheet.Matches("large_gauges"));
}

// The spark panel in either column with the octane switch either way, the table over the
// upper row; the factory pages show the table over the lower row.
TEST_F(LargeGaugeTest, CustomPanels)
{
    Signals(LARGE_EXTRA);
    Drive();
    ContactSheet sheet(320, 240, 3, 3);
    ShowWords(0x0200, QUAD_SparkAdvance, 0, QUAD_TPS);
    sheet.Put(0, UpdateAndCompose(), 0, 0);
    Signals({{"High_Low_Switch", 1}});
    Refresh();
    ShowWords(QUAD_RPM, 0x0200, QUAD_MAP, 0);
    sheet.Put(1, UpdateAndCompose(), 0, 0);
    ShowWords(0x0100, 0, QUAD_MAP, QUAD_WasteGatePressure);
    sheet.Put(2, UpdateAndCompose(), 0, 0);
    EXPECT_TRUE(sheet.Matches("custom_panels"));
}

// The light stands while its frame is at most 299 passes old, whatever it said last; in
// edit mode the page badge lies over the large gauge.
TEST_F(LargeGaugeTest, DriverInformationLightAndEditBadge)
{
    constexpr U16 LAMP = 0xFD80;  // amber, left of the lamp's centre
    auto lit = [](const std::vector<U16>& page) { return Pixel(page, 23, 214) == LAMP; };
    Signals(LARGE_EXTRA);
    Signals({{"Drivers_Information_Light", 1}});
    Drive();
    RAMVariables.EditMode = 1;
    EXPECT_TRUE(MatchesPicture("large_driver_light_edit", Large(LARGE_rpm).data(), 320, 240, 320));
    RAMVariables.EditMode = 0;
    for (uint8_T i = 0; i < LARGE_GAUGE_COUNT; i++) EXPECT_TRUE(lit(Large(i))) << (int)i;
    // No more frames: ShowWords runs one pass a call.
    while (B.Age_f < 298) Pass();
    EXPECT_TRUE(lit(Large(LARGE_AFR))) << B.Age_f;
    EXPECT_FALSE(lit(Large(LARGE_AFR))) << B.Age_f;
    Signals({{"Drivers_Information_Light", 0}});
    Send();
    EXPECT_FALSE(lit(Large(LARGE_AFR)));
}

}  // namespace
