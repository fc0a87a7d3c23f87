#include "large_gauges.h"

#include <cmath>
#include <cstdio>

#include "Screen_QuadScreen.h"
#include "b_fill.h"
#include "can_signals.h"
#include "data.h"
#include "freetype_api.h"
#include "images.h"
#include "line.h"

namespace {

enum LARGE_KIND_T : uint8_T { LARGE_TACHOMETER, LARGE_SPEEDOMETER, LARGE_DIAL };

// The marks of the large dial under its needle.
enum LARGE_MARKS_T : uint8_T {
    MARKS_LIMIT_PEAK,  // the quad gauge's limit (a target or a set point), then its peak
    MARKS_ZERO,        // one mark at value 0
    MARKS_PEAK,
    MARKS_LOW_PEAK,  // the lowest value drawn, cut short, then the peak; both also as texts
};

// One large gauge. The large dial shows a quad gauge: its value, scale, peak, limit,
// title, unit and texts.
struct LARGE_ROW_T {
    LARGE_GAUGE_INDEX_T index;
    LARGE_KIND_T kind;
    QUAD_GAUGE_INDEX_T quad;
    LARGE_MARKS_T marks;
    int8_T decimals;  // of the scale numbers; -1: those of the quad gauge
    U32 scaleSize;
    FTF_HORIZONTAL_ALIGNMENT_T scaleAlign;
    U32 titleSize;  // and unit size
    S32 unitX;
    const char* corner;  // label in the top left corner; nullptr: none
    U32 cornerSize;
    S_String* QUAD_B_T::*info;  // text under the corner label; nullptr: none
    bool peakText;              // the quad gauge's peak text, right of the pivot
    S32 rightLabelX;            // of the side label that goes with the peak
};

#define F(field) &QUAD_B_T::field
#define FACE(index, kind) {index, kind, QUAD_RPM, MARKS_ZERO, -1, 0, LEFT_TXT, 0, 0, nullptr, 0, nullptr, false, 0}
#define UPPER(index, quad, marks, unitX, corner, cornerSize, info, peakText) \
    {index, LARGE_DIAL, quad, marks, -1, 14, CENTER_TXT, 18, unitX, corner, cornerSize, info, peakText, 0}
#define LOW_PEAK(index, quad, decimals, scaleSize, scaleAlign, rightX)                                          \
    {index, LARGE_DIAL, quad, MARKS_LOW_PEAK, decimals, scaleSize, scaleAlign, 20, 199, nullptr, 0, nullptr, false, \
     rightX}

// One row a gauge, in index order. The function names and what they show do not always
// agree: the saved index goes with the name, and the name with the row as it stands here.
constexpr LARGE_ROW_T LARGE_ROWS[LARGE_GAUGE_COUNT] = {
    UPPER(LARGE_AFR, QUAD_AFR1, MARKS_LIMIT_PEAK, 224, "O2 Mult A", 16, F(ValueString_jo), false),
    UPPER(LARGE_Boost, QUAD_MAP, MARKS_LIMIT_PEAK, 199, "IBOOST", 18, F(ValueString_brl), true),
    UPPER(LARGE_OilPress, QUAD_FuelPressure, MARKS_ZERO, 199, "IBOOST", 18, nullptr, false),
    UPPER(LARGE_PFuelPress, QUAD_OilPressure, MARKS_PEAK, 199, "IBOOST", 18, nullptr, true),
    FACE(LARGE_Speedo, LARGE_SPEEDOMETER),
    FACE(LARGE_rpm, LARGE_TACHOMETER),
    LOW_PEAK(LARGE_ACCEL, QUAD_Y_Axis_G, -1, 14, CENTER_TXT, 274),
    LOW_PEAK(LARGE_Lateral, QUAD_X_Axis_G, -1, 14, CENTER_TXT, 274),
    LOW_PEAK(LARGE_FrontLift, QUAD_X_Axis_Degrees, 2, 14, CENTER_TXT, 261),
    LOW_PEAK(LARGE_SideTilt, QUAD_Y_Axis_Degrees, -1, 10, LEFT_TXT, 261),
};

#undef F
#undef FACE
#undef UPPER
#undef LOW_PEAK

static_assert([] {
    for (size_t i = 0; i < LARGE_GAUGE_COUNT; i++)
        if (LARGE_ROWS[i].index != i) return false;
    return true;
}(), "the rows stand in index order");

constexpr U16 TACHOMETER_MARK = 0x37E0;   // limit and peak needles
constexpr U16 SPEEDOMETER_MARK = 0xFCC6;  // the second speed and the peak
constexpr U16 TARGET_MARK = DARK_GRAY;
// Until a frame 0x104 is this many passes old, its driver information light stands.
constexpr uint16_T DRIVER_LIGHT_MAX_AGE = 299;
constexpr S32 TALL_DIAL_DX = 2, TALL_DIAL_Y = 48;  // the cell dial's corner in the tall panel
constexpr size_t TABLE_LABEL_SIZE = 40;

// The lowest value drawn by each large gauge that shows one, and by the tall panel.
real_T m_low[LARGE_GAUGE_COUNT];
real_T m_tallLow;

char m_tableLabel[TABLE_LABEL_SIZE];

}  // namespace

static void _needle(const LARGE_FACE_T& f, real_T v, real_T min, real_T max, S32 thickness, U16 colour)
{
    const GAUGE_TIP_T tip = GaugeNeedleTip(f.arc, f.cx, f.cy, v, min, max);
    lineEx(f.cx, f.cy, tip.x, tip.y, thickness, SOLID, colour, 100, LAYER2);
}

// The value's needle: yellow on the scale, red off it, where it stops at the end.
static void _valueNeedle(const LARGE_FACE_T& f, real_T v, real_T min, real_T max)
{
    _needle(f, v, min, max, VERY_THICK, v >= min && v <= max ? YELLOW : RED);
}

static void _bigValue(S32 x, S32 y, const S_String* text, U32 size)
{
    GaugeLabel(x, y, SStringText(text), size, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP, YELLOW, LAYER2);
}

static void _smallText(S32 x, S32 y, const S_String* text, U32 size)
{
    GaugeLabel(x, y, SStringText(text), size, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, WHITE_TEXT, LAYER2);
}

static void _tachometer(void)
{
    const LARGE_FACE_T& f = TACHOMETER_FACE;
    outimageEx(0, 0, &image_ECwkf, 100, ALPHA_OVERWRITE, LAYER1);
    _needle(f, B.Current_RPM_Limit, f.min, f.max, VERY_THICK, TACHOMETER_MARK);
    _needle(f, B.*QUAD_GAUGES[QUAD_RPM].peakValue, f.min, f.max, VERY_THICK, TACHOMETER_MARK);
    _valueNeedle(f, B.RPM, f.min, f.max);
    _bigValue(265, 174, B.ValueString_do, 60);
    _smallText(2, 45, B.ValueString_cs, 12);    // two-step
    _smallText(245, 155, B.ValueString_ar, 12);  // current limit
}

// The wheel speed as it comes, whatever the speed unit: the face is printed for it.
static void _speedometer(void)
{
    const LARGE_FACE_T& f = SPEEDOMETER_FACE;
    outimageEx(40, 0, &image_zIYEQ, 100, ALPHA_OVERWRITE, LAYER1);
    _needle(f, CANInputs.Speedo, f.min, f.max, VERY_THICK, SPEEDOMETER_MARK);
    _needle(f, B.RPeakDouble_lw, f.min, f.max, VERY_THICK, SPEEDOMETER_MARK);
    _valueNeedle(f, B.NonDrivenWheelSpeed, f.min, f.max);
    _bigValue(185, 183, B.ValueString_e3, 40);
    _smallText(150, 155, B.ValueString_jb, 16);
}

static void _green(S32 x, S32 y, const char* text, U32 size)
{
    GaugeLabel(x, y, text, size, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, GREEN, LAYER2);
}

static void _largeDial(const LARGE_ROW_T& r)
{
    const LARGE_FACE_T& f = LARGE_DIAL_FACE;
    const QUAD_GAUGE_T& g = QUAD_GAUGES[r.quad];
    const real_T value = B.*g.value, min = B.*g.scaleMin, max = B.*g.scaleMax;
    const uint8_T decimals = r.decimals < 0 ? B.*g.decimals : (uint8_T)r.decimals;

    outimageEx(4, 2, &image_Gc7B6, 100, ALPHA_OVERWRITE, LAYER1);
    GaugeScaleNumber(54, 82, min, decimals, r.scaleSize, r.scaleAlign);
    GaugeScaleNumber(279, 82, max, decimals, r.scaleSize, r.scaleAlign);
    GaugeScaleNumber(164, 42, (max + min) * 0.5, decimals, r.scaleSize, r.scaleAlign);

    switch (r.marks) {
    case MARKS_LIMIT_PEAK:
        _needle(f, B.*g.limitValue, min, max, THICK, TARGET_MARK);
        break;
    case MARKS_ZERO:
        _needle(f, 0.0, min, max, NORMAL, GREEN);
        break;
    case MARKS_LOW_PEAK: {
        real_T& low = m_low[r.index];
        if (std::isnan(low) || value < low) low = value;
        _needle(f, low, min, max, THICK, GREEN);
        // The cell dial's cut, at the top left cell: it trims the low's line where that
        // crosses the upper left of the face.
        blockclearEx(4, 57, 144, 118, ALPHA_COLOR, LAYER2);
        break;
    }
    case MARKS_PEAK:
        break;
    }
    if (r.marks != MARKS_ZERO) _needle(f, B.*g.peakValue, min, max, NORMAL, GREEN);
    _valueNeedle(f, value, min, max);

    GaugeLabel(34, 152, QuadGaugeTitle(r.quad).text, r.titleSize, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, WHITE, LAYER1);
    GaugeLabel(r.unitX, 152, QuadGaugeUnit(r.quad), r.titleSize, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, WHITE, LAYER1);
    if (r.marks == MARKS_LOW_PEAK) {
        // Low on the left, peak on the right, however the axis runs.
        _green(6, 132, g.leftLabel, 14);
        _green(r.rightLabelX, 132, g.rightLabel, 14);
        _green(10, 110, SStringText(B.*g.lowText), 17);
        _green(289, 110, SStringText(B.*g.peakText), 17);
    } else {
        GaugeLabel(6, 4, r.corner, r.cornerSize, LEFT_TXT, VERTICAL_ALIGNMENT_TOP, WHITE_TEXT, LAYER1);
        if (r.info) _smallText(2, 25, B.*r.info, 18);
        if (r.peakText) _green(270, 140, SStringText(B.*g.peakText), 20);
    }
    _bigValue(265, 174, B.*g.valueText, 60);
}

void Velnor_Dorvik_V6c_ShowDriverInfoLight(uint8_T enable, uint8_T)
{
    if (enable) outimageEx(4, 2, &image__EYpb, 100, ALPHA_INVARIANT, LAYER2);
}

static void _drawLarge(size_t index)
{
    const LARGE_ROW_T& r = LARGE_ROWS[index];
    switch (r.kind) {
    case LARGE_TACHOMETER:
        _tachometer();
        break;
    case LARGE_SPEEDOMETER:
        _speedometer();
        break;
    case LARGE_DIAL:
        _largeDial(r);
        break;
    }
    // The page draws the status words again after its cells; a large gauge covers the
    // page, so it draws them too.
    QuadScreenStatusWords();
    Velnor_Dorvik_V6c_ShowDriverInfoLight(B.Age_f <= DRIVER_LIGHT_MAX_AGE && B.Drivers_Information_Light != 0, 0);
}

#define LARGE_GAUGE_DEFINE(name)                                    \
    boolean_T Trigger_large_##name##_enabled = 1;                   \
    void Trigger_large_##name(void)                                 \
    {                                                               \
        if (Trigger_large_##name##_enabled) _drawLarge(LARGE_##name); \
    }
LARGE_GAUGE_NAMES(LARGE_GAUGE_DEFINE)
#undef LARGE_GAUGE_DEFINE

#define LARGE_GAUGE_POINTER(name) Trigger_large_##name,
const trigger_ref LARGE_GAUGE_TRIGGERS[LARGE_GAUGE_COUNT] = {LARGE_GAUGE_NAMES(LARGE_GAUGE_POINTER)};
#undef LARGE_GAUGE_POINTER

const char* Velnor_Dorvik_V6c_Subsystem_m(const char* name, const char* unit)
{
    snprintf(m_tableLabel, sizeof(m_tableLabel), "%s (%s):", name, unit);
    return m_tableLabel;
}

const char* Velnor_Dorvik_V6c_Subsystem1(const char* name)
{
    snprintf(m_tableLabel, sizeof(m_tableLabel), "%s:", name);
    return m_tableLabel;
}

static void _tableText(S32 x, S32 y, const char* text, FTF_HORIZONTAL_ALIGNMENT_T h)
{
    outtextxyEx(x, y, text, FONT_INDEX_TTARIAL, 14, h, VERTICAL_ALIGNMENT_TOP, 1, WHITE_TEXT, 100, LAYER2);
}

// Six lines of engine data across the display, at the row y of the cell.
static void _doubleWide(S32 y)
{
    blockfillEx(0, y + 1, 319, y + 117, BLACK, 100, LAYER1);
    const GAUGE_TITLE_T map = QuadGaugeTitle(QUAD_MAP);
    struct LINE_T {
        const char* name;
        const char* unit;
        const S_String* value;
    };
    const LINE_T lines[6] = {
        {map.text, QuadGaugeUnit(QUAD_MAP), B.*QUAD_GAUGES[QUAD_MAP].valueText},
        {"IBOOST POS", "", B.ValueString_brl},
        {"WASTEGATE DUTY", "%", B.ValueString_br},
        {"O2 FUEL MULT A", "", B.ValueString_jo},
        {"O2 FUEL MULT B", "", B.ValueString_da},
        {"ETHANOL CONTENT", "%", B.ValueString_bf},
    };
    for (S32 n = 0; n < 6; n++) {
        const LINE_T& l = lines[n];
        const S32 row = y + 1 + 19 * n;
        _tableText(310, row, SStringText(l.value), RIGHT_TXT);
        const char* label =
            *l.unit ? Velnor_Dorvik_V6c_Subsystem_m(l.name, l.unit) : Velnor_Dorvik_V6c_Subsystem1(l.name);
        _tableText(8, row, label, LEFT_TXT);
    }
}

// The spark advance dial of the quad page, lower down on a black panel two cells high
// with the octane switch under it. The panel only fits the upper row, so its rows are
// those of the display.
static void _doubleTall(S32 x)
{
    blockclearEx(x + 2, 1, x + 159, 239, BLACK, LAYER1);
    GaugeLabel(x + 81, 20, "SPARK ADVANCE", 14, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, YELLOW, LAYER2);
    const bool high = B.High_Low_Switch > 0;
    GaugeLabel(x + 81, 210, high ? "HIGH OCTANE" : "LOW OCTANE", 14, CENTER_TXT, VERTICAL_ALIGNMENT_TOP,
               high ? RED : GREEN, LAYER2);
    QuadDialFace(QUAD_SparkAdvance, x + TALL_DIAL_DX, TALL_DIAL_Y, ALPHA_INVARIANT, m_tallLow);
    GaugeLabel(x + 74, 108, QuadGaugeTitle(QUAD_SparkAdvance).text, 12, CENTER_TXT, VERTICAL_ALIGNMENT_TOP,
               WHITE_TEXT, LAYER2);
    GaugeLabel(x + 148, 145, QuadGaugeUnit(QUAD_SparkAdvance), 14, RIGHT_TXT, VERTICAL_ALIGNMENT_CENTRE, WHITE_TEXT,
               LAYER2);
    _bigValue(x + 94, 135, B.*QUAD_GAUGES[QUAD_SparkAdvance].valueText, 24);
}

boolean_T Trigger_doublewide_custom_enabled = 1;
void Trigger_doublewide_custom(void)
{
    if (Trigger_doublewide_custom_enabled) _doubleWide(RAMVariables.arg_y);
}

boolean_T Trigger_doubletall_custom_enabled = 1;
void Trigger_doubletall_custom(void)
{
    if (Trigger_doubletall_custom_enabled) _doubleTall(RAMVariables.arg_x);
}

void LargeGaugeTestReset(void)
{
    for (real_T& low : m_low) low = 0;
    m_tallLow = 0;
}
