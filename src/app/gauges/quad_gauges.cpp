#include "quad_gauges.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "b_fill.h"
#include "data.h"
#include "elements.h"
#include "freetype_api.h"
#include "images.h"
#include "line.h"

namespace {

#define F(field) &QUAD_B_T::field
#define TXT(text) QUAD_TEXT_T{text, nullptr}
#define BTXT(field) QUAD_TEXT_T{"", &QUAD_B_T::field}
#define U_PRESSURE BTXT(PressureUnits)
#define U_TEMP BTXT(TempUnits)
#define U_SPEED BTXT(SpeedUnits)
#define U_AIR_FUEL BTXT(FuelUnits)
// The value, the scale and the value text of one suffix.
#define DIAL(s) F(ValueDouble_##s), F(DisplayMin_##s), F(DisplayMax_##s), F(NumDec_##s), F(ValueString_##s)
#define PEAK(s) QUAD_MARK_VALUE, F(RPeakDouble_##s), F(RPeakValue_##s)
#define PEAK_ZERO QUAD_MARK_ZERO, nullptr, nullptr
#define PEAK_HIDDEN QUAD_MARK_HIDDEN, nullptr, nullptr
#define LOW(field) F(field)
#define NO_LOW nullptr
#define LIMIT(field) QUAD_MARK_VALUE, F(field)
#define LIMIT_ZERO QUAD_MARK_ZERO, nullptr
#define LIMIT_HIDDEN QUAD_MARK_HIDDEN, nullptr
#define NO_SIDES nullptr, nullptr
#define PANEL(index, kind)                                                                                    \
    {index, kind, TXT(""), TXT(""), nullptr, nullptr, nullptr, nullptr, nullptr, PEAK_HIDDEN, NO_LOW, LIMIT_HIDDEN, \
     nullptr, NO_SIDES}
#define KNOCK(n, s, low) \
    {QUAD_KnockRtdCYL##n, QUAD_DIAL, TXT("Knock RTD CYL" #n), TXT("Degr"), DIAL(s), PEAK_HIDDEN, LOW(low), \
     LIMIT_HIDDEN, &image_7Uoz3, NO_SIDES}
#define EGT(name, title, s, peak) \
    {QUAD_##name, QUAD_DIAL, TXT(title), U_TEMP, DIAL(s), PEAK(peak), NO_LOW, LIMIT_ZERO, &image_p2_xQ, NO_SIDES}
#define NITROUS(n, s, peak) \
    {QUAD_NitrousPressure##n, QUAD_DIAL, TXT("N2O STAGE " #n), U_PRESSURE, DIAL(s), PEAK(peak), NO_LOW, LIMIT_ZERO, \
     &image_WQMEm, NO_SIDES}

}  // namespace

constexpr QUAD_GAUGE_T QUAD_GAUGES[QUAD_GAUGE_COUNT] = {
    {QUAD_AFR1, QUAD_DIAL, BTXT(quorin_string_printf_m), U_AIR_FUEL, DIAL(f), QUAD_MARK_VALUE, F(RPeakDouble),
     F(RPeakValue), NO_LOW, LIMIT(TargetPeakDouble), &image_Dignp, NO_SIDES},
    {QUAD_AFR2, QUAD_DIAL, BTXT(quorin_string_printf_f), U_AIR_FUEL, DIAL(g), PEAK(n), NO_LOW,
     LIMIT(TargetPeakDouble_b), &image_Dignp, NO_SIDES},
    {QUAD_BatteryVolts, QUAD_DIAL, TXT("BATTERY VOLTS"), TXT(""), DIAL(jk), PEAK_ZERO, LOW(LPeakValue_p), LIMIT_ZERO,
     nullptr, NO_SIDES},
    {QUAD_BrakePressure, QUAD_DIAL, TXT("BRAKE PRESSURE"), U_PRESSURE, DIAL(gi), PEAK(a4), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_CAM1, QUAD_DIAL, TXT("CAM1 Phase"), TXT("Degr"), DIAL(le), PEAK(h3), NO_LOW, LIMIT(SetpointValueDouble_c),
     &image_G2C5Y, NO_SIDES},
    {QUAD_CAM2, QUAD_DIAL, TXT("CAM2 Phase"), TXT("Degr"), DIAL(ou), PEAK(mk), NO_LOW, LIMIT(SetpointValueDouble),
     &image_G2C5Y, NO_SIDES},
    {QUAD_SlipPercent, QUAD_DIAL, TXT("CLUTCH SLIP"), TXT("%"), DIAL(dh), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_7ec7Y, NO_SIDES},
    {QUAD_CoolantPressure, QUAD_DIAL, TXT("COOLANT PRESSURE"), U_PRESSURE, DIAL(c), PEAK(f), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_ECT, QUAD_DIAL, TXT("COOLANT TEMP"), U_TEMP, DIAL(l), PEAK(g), NO_LOW, LIMIT_ZERO, &image_lfeNI, NO_SIDES},
    {QUAD_DiffWheelSpeed, QUAD_DIAL, TXT("DIFF"), TXT("%"), DIAL(p5), PEAK(ck), NO_LOW, LIMIT_ZERO, &image_7ec7Y,
     NO_SIDES},
    {QUAD_DrivenWheelSpeed, QUAD_DIAL, TXT("DRIVEN"), U_SPEED, DIAL(d), PEAK(mj), NO_LOW, LIMIT_ZERO, &image_jQsOg,
     NO_SIDES},
    {QUAD_DriveShaftRPM, QUAD_DIAL, TXT("DRIVE SHAFT RPM"), TXT("RPM"), DIAL(bn), PEAK(l4), NO_LOW,
     LIMIT(DriveShaftRPMAllowed), &image_G2C5Y, NO_SIDES},
    EGT(EGT, "EGT1", h, d),
    EGT(EGT2, "EGT2", p, i),
    EGT(EGT3, "EGT3", gd, j),
    EGT(EGT4, "EGT4", fh, b),
    EGT(EGT5, "EGT5", dv, k),
    EGT(EGT6, "EGT6", l0, kq),
    EGT(EGT7, "EGT7", i, e),
    EGT(EGT8, "EGT8", i2, l),
    {QUAD_EngineHP, QUAD_DIAL, TXT("Engine Horsepower"), TXT("HP"), DIAL(jos), PEAK(kr), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_EngineTQ, QUAD_DIAL, TXT("Engine Torque"), TXT("FtLbs"), DIAL(l5), PEAK(bf), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_Ethanol, QUAD_DIAL, TXT("Ethanol"), TXT("%"), DIAL(iz), PEAK_ZERO, NO_LOW, LIMIT_ZERO, &image_N27F7,
     NO_SIDES},
    {QUAD_ExhaustPressure1, QUAD_DIAL, TXT("EXHAUST PRESS 1"), U_PRESSURE, DIAL(ol), PEAK(bh), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_ExhaustPressure2, QUAD_DIAL, TXT("EXHAUST PRESS 2"), U_PRESSURE, DIAL(m), PEAK(i3), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_FuelEconomy, QUAD_DIAL, TXT("Fuel Economy"), TXT("MPG"), DIAL(d13), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_N27F7, NO_SIDES},
    {QUAD_FuelPressure, QUAD_DIAL, TXT("FUEL PRESS MAIN"), U_PRESSURE, DIAL(n), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_Fuel_Level, QUAD_DIAL, TXT("Fuel Level"), TXT("%"), DIAL(jsq), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_N27F7, NO_SIDES},
    {QUAD_FuelPressure2, QUAD_DIAL, TXT("FUEL PRESS SEC"), U_PRESSURE, DIAL(og), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    PANEL(QUAD_Gear, QUAD_GEAR),
    {QUAD_IAT, QUAD_DIAL, TXT("IAT"), U_TEMP, DIAL(o), PEAK(m), NO_LOW, LIMIT_ZERO, &image_sayNy, NO_SIDES},
    {QUAD_Inlet_Pressure, QUAD_DIAL, TXT("Inlet Pressure"), U_PRESSURE, DIAL(ls), PEAK(ka), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_InjDuty, QUAD_DIAL, TXT("INJ DUTY"), TXT("%"), DIAL(js), PEAK(oy), NO_LOW, LIMIT_ZERO, &image_cwEU3,
     NO_SIDES},
    KNOCK(1, pb, LPeakValue_l),
    KNOCK(2, bv, LPeakValue_o),
    KNOCK(3, o1, LPeakValue_g),
    KNOCK(4, d1, LPeakValue_i),
    // Unlike its seven twins, cylinder 5 shows its peak mark, at 0.
    {QUAD_KnockRtdCYL5, QUAD_DIAL, TXT("Knock RTD CYL5"), TXT("Degr"), DIAL(mw), PEAK_ZERO, LOW(LPeakValue_j),
     LIMIT_HIDDEN, &image_7Uoz3, NO_SIDES},
    KNOCK(6, nl, LPeakValue_h),
    KNOCK(7, b1, LPeakValue_a),
    KNOCK(8, lh, LPeakValue),
    {QUAD_LaunchTime, QUAD_DIAL, TXT("LAUNCH TIMER"), TXT(""), DIAL(nr), PEAK(i1), NO_LOW, LIMIT_ZERO, &image_Dignp,
     NO_SIDES},
    {QUAD_MAP, QUAD_DIAL, BTXT(quorin_string_printf_j), U_PRESSURE, DIAL(di), PEAK(a), NO_LOW,
     LIMIT(SetpointValueDouble_p), &image_Dignp, NO_SIDES},
    {QUAD_MassAir, QUAD_DIAL, TXT("MASS AIR FLOW"), TXT("Gs"), DIAL(fd), PEAK(a1), NO_LOW, LIMIT_ZERO, &image_Dignp,
     NO_SIDES},
    {QUAD_Manifold_Surface_Temp, QUAD_DIAL, TXT("Manifold Surface Temp"), U_TEMP, DIAL(f3), PEAK(h), NO_LOW,
     LIMIT_ZERO, &image_sayNy, NO_SIDES},
    {QUAD_NonDrivenWheelSpeed, QUAD_DIAL, TXT("NONDRIVEN"), U_SPEED, DIAL(a), PEAK(o), NO_LOW, LIMIT_ZERO,
     &image_hDMQf, NO_SIDES},
    NITROUS(1, b, jg),
    NITROUS(2, or, dy),
    NITROUS(3, li, p),
    NITROUS(4, ib, c),
    {QUAD_EngOilTemp, QUAD_DIAL, TXT("OIL"), U_TEMP, DIAL(lsk), PEAK(fb), NO_LOW, LIMIT_ZERO, &image_i3_Lp, NO_SIDES},
    {QUAD_OilPressure, QUAD_DIAL, TXT("OIL PRESSURE"), U_PRESSURE, DIAL(ch), PEAK(eg), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_PressureRatio, QUAD_DIAL, TXT("PRES RATIO"), TXT(""), DIAL(gc), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_RPM, QUAD_DIAL, BTXT(u_NONE), BTXT(u_RPM), F(ValueDouble_km), F(DisplayMin_h2), F(DisplayMax_lf),
     F(NumDec_lo), F(ValueString_do), QUAD_MARK_VALUE, F(RPeakDouble_mz), F(RPeakValue_im), NO_LOW,
     LIMIT(Current_RPM_Limit), &image_Dignp, NO_SIDES},
    {QUAD_SparkAdvance, QUAD_DIAL, TXT("SPARK ADV"), TXT("*BTDC"), DIAL(l0e), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_7Uoz3, NO_SIDES},
    {QUAD_TCSRetard, QUAD_DIAL, TXT("TCSRetard"), TXT("*BTDC"), DIAL(e), PEAK_ZERO, NO_LOW, LIMIT_ZERO,
     &image_7Uoz3, NO_SIDES},
    {QUAD_TPS, QUAD_DIAL, TXT("TPS"), TXT("%"), DIAL(bw), PEAK_ZERO, NO_LOW, LIMIT_ZERO, &image_7ZIgv, NO_SIDES},
    {QUAD_TransOilPressure, QUAD_DIAL, TXT("TRANS PRESS"), U_PRESSURE, DIAL(ps), PEAK(nr), NO_LOW, LIMIT_ZERO,
     &image_Dignp, NO_SIDES},
    {QUAD_TransOilTemp, QUAD_DIAL, TXT("TRANS TEMP"), U_TEMP, DIAL(pc), PEAK(ke), NO_LOW, LIMIT_ZERO, &image_WziCr,
     NO_SIDES},
    {QUAD_Turbo1, QUAD_DIAL, TXT("TURBO1"), TXT("RPM"), DIAL(m5), PEAK_ZERO, NO_LOW, LIMIT_ZERO, &image_G2C5Y,
     NO_SIDES},
    {QUAD_Turbo2, QUAD_DIAL, TXT("TURBO2"), TXT("RPM"), DIAL(f1), PEAK_ZERO, NO_LOW, LIMIT_ZERO, &image_G2C5Y,
     NO_SIDES},
    {QUAD_WasteGatePressure, QUAD_DIAL, BTXT(quorin_string_printf), U_PRESSURE, DIAL(p0), PEAK(fa), NO_LOW,
     LIMIT(SetpointValueDouble_p), &image_Dignp, NO_SIDES},
    {QUAD_X_Axis_G, QUAD_DIAL, TXT("LATERAL G"), TXT("Gs"), DIAL(ac), PEAK(e3), LOW(LPeakValue_m), LIMIT_ZERO,
     &image_Dignp, "Right", "Left"},
    {QUAD_Y_Axis_G, QUAD_DIAL, TXT("ACCEL G"), TXT("Gs"), DIAL(mv), PEAK(g4), LOW(LPeakValue_e), LIMIT_ZERO,
     &image_Dignp, "Accel", "Decel"},
    {QUAD_X_Axis_Degrees, QUAD_DIAL, TXT("Side_Tilt"), TXT("Degr"), DIAL(jbm), PEAK(bx), LOW(LPeakValue_k),
     LIMIT_ZERO, &image_Dignp, "RightTilt", "LeftTilt"},
    {QUAD_Y_Axis_Degrees, QUAD_DIAL, TXT("Front_Lift"), TXT("Degr"), DIAL(jd), PEAK(kem), LOW(LPeakValue_f),
     LIMIT_ZERO, &image_Dignp, "Lift Max", "Lift Min"},
    PANEL(QUAD_CustomInfo, QUAD_CUSTOM_INFO),
};

#undef F
#undef TXT
#undef BTXT
#undef U_PRESSURE
#undef U_TEMP
#undef U_SPEED
#undef U_AIR_FUEL
#undef DIAL
#undef PEAK
#undef PEAK_ZERO
#undef PEAK_HIDDEN
#undef LOW
#undef NO_LOW
#undef LIMIT
#undef LIMIT_ZERO
#undef LIMIT_HIDDEN
#undef NO_SIDES
#undef PANEL
#undef KNOCK
#undef EGT
#undef NITROUS

namespace {

// The dial's geometry, from the cell corner: where the picture goes, the needles' pivot,
// and the row below which the front layer is cut so that marks show only at their outer
// end. The arc runs from -130 to -50 degrees, the scale proper from 4 to 76 of them.
constexpr S32 DIAL_X = 4, DIAL_Y = 2;
constexpr S32 PIVOT_X = 72, PIVOT_Y = 107;
constexpr GAUGE_ARC_T ARC = {98, 72, 80, 130};
constexpr S32 ICON_X = 49, ICON_Y = 29;
constexpr S32 CUT_LEFT = 4, CUT_RIGHT = 144, CUT_TOP = 2, CUT_ROW = 57, CUT_BOTTOM = 118;
constexpr double SCALE_START_DEG = 4;
constexpr double RAD_PER_DEG = 0.01745;

constexpr U16 LIMIT_COLOUR = 0xD678;
constexpr U32 SCALE_TEXT_SIZE = 11;  // "%.*lf" of a scale end
constexpr U32 PANEL_LINE_SIZE = 40;  // one line of the custom information

// The lowest value each gauge has drawn: one per gauge, whichever cells show it.
real_T m_low[QUAD_GAUGE_COUNT];

// The panels are tracked elements: one id per panel and cell, so that a panel shown in
// two cells does not wipe its other picture.
uint32_T m_panelElements[2][4];

}  // namespace

GAUGE_TIP_T GaugeNeedleTip(const GAUGE_ARC_T& arc, S32 cx, S32 cy, real_T v, real_T min, real_T max)
{
    double d = (v - min) * arc.span / (max - min) + SCALE_START_DEG;
    if (!(d > 0)) d = 0;
    if (d > arc.travel) d = arc.travel;
    const double a = (d - arc.offset) * RAD_PER_DEG;
    return {(S32)std::floor(std::cos(a) * arc.radius + cx), (S32)std::floor(std::sin(a) * arc.radius + cy)};
}

void GaugeLabel(S32 x, S32 y, const char* text, U32 size, FTF_HORIZONTAL_ALIGNMENT_T h, FTF_VERTICAL_ALIGNMENT_T v,
                U16 colour, LAYER_T layer)
{
    if (*text) outtextxyEx(x, y, text, FONT_INDEX_TTARIAL, size, h, v, 0, colour, 100, layer);
}

void GaugeScaleNumber(S32 x, S32 y, real_T value, uint8_T decimals, U32 size, FTF_HORIZONTAL_ALIGNMENT_T h)
{
    char text[SCALE_TEXT_SIZE];
    snprintf(text, sizeof(text), "%.*lf", (int)decimals, value);
    GaugeLabel(x, y, text, size, h, VERTICAL_ALIGNMENT_TOP, WHITE, LAYER1);
}

static const char* _text(const QUAD_TEXT_T& t)
{
    return t.field ? SStringText(Velnor_Dorvik_V6c_B.*t.field) : t.fixed;
}

GAUGE_TITLE_T QuadGaugeTitle(size_t index)
{
    GAUGE_TITLE_T title;
    snprintf(title.text, sizeof(title.text), "%s", _text(QUAD_GAUGES[index].title));
    return title;
}

const char* QuadGaugeUnit(size_t index)
{
    return _text(QUAD_GAUGES[index].unit);
}

// A mark or the needle, from the pivot of the dial whose cell corner is x, y.
static void _line(S32 x, S32 y, real_T v, real_T min, real_T max, S32 thickness, U16 colour)
{
    const GAUGE_TIP_T tip = GaugeNeedleTip(ARC, x + PIVOT_X, y + PIVOT_Y, v, min, max);
    lineEx(x + PIVOT_X, y + PIVOT_Y, tip.x, tip.y, thickness, SOLID, colour, 100, LAYER2);
}

// Clears the front layer below the cut row, where the marks would cross the read-out.
static void _cut(S32 x, S32 y)
{
    blockclearEx(x + CUT_LEFT, y + CUT_ROW, x + CUT_RIGHT, y + CUT_BOTTOM, ALPHA_COLOR, LAYER2);
}

void QuadDialFace(size_t index, S32 x, S32 y, ALPHACONTROL_T iconAlpha, real_T& low)
{
    const QUAD_GAUGE_T& g = QUAD_GAUGES[index];
    const QUAD_B_T& b = Velnor_Dorvik_V6c_B;
    const real_T value = b.*g.value;
    const real_T min = b.*g.scaleMin;
    const real_T max = b.*g.scaleMax;

    outimageEx(x + DIAL_X, y + DIAL_Y, &image_2WXZO, 100, ALPHA_OVERWRITE, LAYER1);
    if (g.icon) outimageEx(x + ICON_X, y + ICON_Y, g.icon, 100, iconAlpha, LAYER1);
    GaugeScaleNumber(x + 22, y + 35, min, b.*g.decimals, 10, LEFT_TXT);
    GaugeScaleNumber(x + 121, y + 35, max, b.*g.decimals, 10, LEFT_TXT);
    GaugeScaleNumber(x + 72, y + 20, (max + min) * 0.5, b.*g.decimals, 10, LEFT_TXT);
    blockclearEx(x + CUT_LEFT, y + CUT_TOP, x + CUT_RIGHT, y + CUT_ROW, ALPHA_COLOR, LAYER2);

    if (std::isnan(low) || value < low) low = value;
    _line(x, y, low, min, max, THICK, GREEN);
    _cut(x, y);
    if (g.peak != QUAD_MARK_HIDDEN) {
        const real_T peak = g.peak == QUAD_MARK_VALUE ? b.*g.peakValue : 0.0;
        _line(x, y, peak, min, max, NORMAL, GREEN);
    }
    if (g.limit != QUAD_MARK_HIDDEN) {
        const real_T limit = g.limit == QUAD_MARK_VALUE ? b.*g.limitValue : 0.0;
        _line(x, y, limit, min, max, THICK, LIMIT_COLOUR);
    }
    _cut(x, y);
    const bool inScale = value >= min && value <= max;
    _line(x, y, value, min, max, THICK, inScale ? YELLOW : RED);
    _cut(x, y);
}

static void _dial(size_t index, S32 x, S32 y)
{
    const QUAD_GAUGE_T& g = QUAD_GAUGES[index];
    const QUAD_B_T& b = Velnor_Dorvik_V6c_B;
    QuadDialFace(index, x, y, ALPHA_OVERWRITE, m_low[index]);
    GaugeLabel(x + 72, y + 60, QuadGaugeTitle(index).text, 12, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, WHITE, LAYER1);
    GaugeLabel(x + 109, y + 97, QuadGaugeUnit(index), 14, LEFT_TXT, VERTICAL_ALIGNMENT_CENTRE, WHITE, LAYER1);
    if (g.rightLabel) {
        GaugeLabel(x + 109, y + 69, g.rightLabel, 10, LEFT_TXT, VERTICAL_ALIGNMENT_CENTRE, GREEN, LAYER2);
        GaugeLabel(x + 6, y + 69, g.leftLabel, 10, LEFT_TXT, VERTICAL_ALIGNMENT_CENTRE, GREEN, LAYER2);
    }
    if (g.peakText)
        GaugeLabel(x + 134, y + 55, SStringText(b.*g.peakText), 10, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, GREEN, LAYER2);
    if (g.lowText)
        GaugeLabel(x + 7, y + 55, SStringText(b.*g.lowText), 10, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, GREEN, LAYER2);
    GaugeLabel(x + 92, y + 87, SStringText(b.*g.valueText), 24, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP, YELLOW, LAYER2);
}

// The element of a panel in the cell whose corner is x, y.
static uint32_T _panelElement(QUAD_KIND_T kind, S32 x, S32 y)
{
    const size_t cell = (x >= (S32)CONSTVariables.X2 ? 1 : 0) + (y >= (S32)CONSTVariables.Y2 ? 2 : 0);
    uint32_T& id = m_panelElements[kind == QUAD_GEAR ? 0 : 1][cell];
    if (id == 0) id = ElementGetNewId();
    return id;
}

static void _panelText(uint32_T id, S32 x, S32 y, const char* text, U32 size, U16 colour)
{
    outtextxyExEle(id, x, y, text, FONT_INDEX_TTARIAL, size, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, 0, colour, 100,
                   LAYER2);
}

static void _gear(S32 x, S32 y)
{
    const uint32_T id = _panelElement(QUAD_GEAR, x, y);
    ElementFillPrevRect(id, ALPHA_COLOR, LAYER2);
    _panelText(id, x + 80, y + 5, "CALCULATED GEAR", 12, WHITE_TEXT);
    _panelText(id, x + 50, y + 7, SStringText(Velnor_Dorvik_V6c_B.ValueString_dm), 110, YELLOW);
    outimageExEle(id, x + 100, y + 68, &image_qMjyV, 100, ALPHA_OVERWRITE, LAYER2);
}

static void _customInfo(S32 x, S32 y)
{
    const QUAD_B_T& b = Velnor_Dorvik_V6c_B;
    const uint32_T id = _panelElement(QUAD_CUSTOM_INFO, x, y);
    ElementFillPrevRect(id, ALPHA_COLOR, LAYER2);
    struct LINE_T {
        const char* name;
        const S_String* value;
        const S_String* unit;
    };
    const LINE_T lines[6] = {
        {"DESIRED GEAR", b.ValueString_di2, nullptr}, {"SHIFTER", b.ValueString_lq, nullptr},
        {"MANUAL MODE", b.quorin_string_o, nullptr},  {"TCC LOCKUP", b.quorin_string, nullptr},
        {"VEHICLE SPEED", b.ValueString_d, b.SpeedUnits}, {"THROTTLE POS", b.ValueString_bw, nullptr},
    };
    char text[PANEL_LINE_SIZE];
    for (S32 n = 0; n < 6; n++) {
        const LINE_T& l = lines[n];
        if (l.unit) snprintf(text, sizeof(text), "%s : %s %s", l.name, SStringText(l.value), SStringText(l.unit));
        else snprintf(text, sizeof(text), "%s : %s", l.name, SStringText(l.value));
        _panelText(id, x + 80, y + 5 + 19 * n, text, 11, WHITE_TEXT);
    }
}

static void _draw(size_t index)
{
    const S32 x = RAMVariables.arg_x, y = RAMVariables.arg_y;
    switch (QUAD_GAUGES[index].kind) {
    case QUAD_DIAL:
        _dial(index, x, y);
        break;
    case QUAD_GEAR:
        _gear(x, y);
        break;
    case QUAD_CUSTOM_INFO:
        _customInfo(x, y);
        break;
    }
}

#define QUAD_GAUGE_DEFINE(name)                           \
    boolean_T Trigger_quad_##name##_enabled = 1;          \
    void Trigger_quad_##name(void)                        \
    {                                                     \
        if (Trigger_quad_##name##_enabled) _draw(QUAD_##name); \
    }
QUAD_GAUGE_NAMES(QUAD_GAUGE_DEFINE)
#undef QUAD_GAUGE_DEFINE

#define QUAD_GAUGE_POINTER(name) Trigger_quad_##name,
const trigger_ref QUAD_GAUGE_TRIGGERS[QUAD_GAUGE_COUNT] = {QUAD_GAUGE_NAMES(QUAD_GAUGE_POINTER)};
#undef QUAD_GAUGE_POINTER

static_assert([] {
    for (size_t i = 0; i < QUAD_GAUGE_COUNT; i++)
        if (QUAD_GAUGES[i].index != i) return false;
    return true;
}(), "the table's rows stand in index order");

void QuadGaugeTestReset(void)
{
    for (real_T& low : m_low) low = 0;
}

real_T QuadGaugeTestLow(size_t index)
{
    return index < QUAD_GAUGE_COUNT ? m_low[index] : 0;
}
