#pragma once
// The quad gauges, gauge type 0: one cell of a gauge page each. 65 of them are one dial
// drawn from a row of data (an 80 degree arc with a needle, a low, a peak and a limit
// mark, scale numbers, title, unit and the value as a large number); the calculated gear
// and the custom information are text panels. A gauge draws at the cell corner
// RAMVariables.arg_x, arg_y, from what the foreground task left in B.
#include <cstddef>

#include "Velnor_Dorvik_V6c.h"
#include "freetype_api.h"
#include "outimage.h"

// The gauges by their index in a gauge word; the order is a stored format.
#define QUAD_GAUGE_NAMES(X)                                                                                          \
    X(AFR1) X(AFR2) X(BatteryVolts) X(BrakePressure) X(CAM1) X(CAM2) X(SlipPercent) X(CoolantPressure) X(ECT)      \
    X(DiffWheelSpeed) X(DrivenWheelSpeed) X(DriveShaftRPM) X(EGT) X(EGT2) X(EGT3) X(EGT4) X(EGT5) X(EGT6) X(EGT7)   \
    X(EGT8) X(EngineHP) X(EngineTQ) X(Ethanol) X(ExhaustPressure1) X(ExhaustPressure2) X(FuelEconomy)              \
    X(FuelPressure) X(Fuel_Level) X(FuelPressure2) X(Gear) X(IAT) X(Inlet_Pressure) X(InjDuty) X(KnockRtdCYL1)      \
    X(KnockRtdCYL2) X(KnockRtdCYL3) X(KnockRtdCYL4) X(KnockRtdCYL5) X(KnockRtdCYL6) X(KnockRtdCYL7)               \
    X(KnockRtdCYL8) X(LaunchTime) X(MAP) X(MassAir) X(Manifold_Surface_Temp) X(NonDrivenWheelSpeed)                \
    X(NitrousPressure1) X(NitrousPressure2) X(NitrousPressure3) X(NitrousPressure4) X(EngOilTemp) X(OilPressure)   \
    X(PressureRatio) X(RPM) X(SparkAdvance) X(TCSRetard) X(TPS) X(TransOilPressure) X(TransOilTemp) X(Turbo1)      \
    X(Turbo2) X(WasteGatePressure) X(X_Axis_G) X(Y_Axis_G) X(X_Axis_Degrees) X(Y_Axis_Degrees) X(CustomInfo)

#define QUAD_GAUGE_ENUM(name) QUAD_##name,
enum QUAD_GAUGE_INDEX_T : uint8_T { QUAD_GAUGE_NAMES(QUAD_GAUGE_ENUM) QUAD_GAUGE_END };
#undef QUAD_GAUGE_ENUM
static_assert(QUAD_GAUGE_END == QUAD_GAUGE_COUNT, "the store has one drawing function per quad gauge");

// Each gauge's drawing function, and the flag it tests first: set from the start, never cleared.
#define QUAD_GAUGE_DECLARE(name)     \
    void Trigger_quad_##name(void); \
    extern boolean_T Trigger_quad_##name##_enabled;
QUAD_GAUGE_NAMES(QUAD_GAUGE_DECLARE)
#undef QUAD_GAUGE_DECLARE

// The drawing functions by index, as the foreground task puts them into B.QuadGauge.
extern const trigger_ref QUAD_GAUGE_TRIGGERS[QUAD_GAUGE_COUNT];

enum QUAD_KIND_T : uint8_T {
    QUAD_DIAL,         // the dial of the table's row
    QUAD_GEAR,         // the calculated gear in large figures
    QUAD_CUSTOM_INFO,  // six lines of gearbox and speed information
};

// What a mark shows: its number, value 0, or nothing (a line of opacity 0).
enum QUAD_MARK_T : uint8_T { QUAD_MARK_VALUE, QUAD_MARK_ZERO, QUAD_MARK_HIDDEN };

using QUAD_B_T = BlockIO_Velnor_Dorvik_V6c;

// A text of the dial: the text that a field of B points at, or a fixed one.
struct QUAD_TEXT_T {
    const char* fixed;
    S_String* QUAD_B_T::*field;  // nullptr: the fixed text
};

// One dial. The numbers are those the foreground task keeps in the selected unit.
struct QUAD_GAUGE_T {
    QUAD_GAUGE_INDEX_T index;
    QUAD_KIND_T kind;
    QUAD_TEXT_T title;
    QUAD_TEXT_T unit;
    real_T QUAD_B_T::*value;
    real_T QUAD_B_T::*scaleMin;
    real_T QUAD_B_T::*scaleMax;
    uint8_T QUAD_B_T::*decimals;  // of the three scale numbers
    S_String* QUAD_B_T::*valueText;
    QUAD_MARK_T peak;
    real_T QUAD_B_T::*peakValue;
    S_String* QUAD_B_T::*peakText;  // nullptr: none
    S_String* QUAD_B_T::*lowText;   // nullptr: none
    QUAD_MARK_T limit;
    real_T QUAD_B_T::*limitValue;
    const BITMAPA* icon;  // nullptr: none
    const char* rightLabel;  // nullptr: no side labels
    const char* leftLabel;
};

// One row a gauge, in index order.
extern const QUAD_GAUGE_T QUAD_GAUGES[QUAD_GAUGE_COUNT];

// What the larger gauges share with these.

// A dial's arc. A value v maps to d = (v - min) * span / (max - min) + 4 degrees of the
// needle's travel, held to 0 to `travel`: the scale proper starts 4 degrees in, and a
// value off the scale still shows for 4 degrees past either end, where the needle stops.
// The needle points at -offset + d degrees, 0 being right and angles growing clockwise.
struct GAUGE_ARC_T {
    double radius;  // of the tip
    double span;
    double travel;
    double offset;
};
struct GAUGE_TIP_T {
    S32 x, y;
};
// The tip of a needle at v on the arc about (cx, cy).
GAUGE_TIP_T GaugeNeedleTip(const GAUGE_ARC_T& arc, S32 cx, S32 cy, real_T v, real_T min, real_T max);

// A text of the gauges: font 0, no extra spacing, opacity 100; an empty one draws nothing.
void GaugeLabel(S32 x, S32 y, const char* text, U32 size, FTF_HORIZONTAL_ALIGNMENT_T h, FTF_VERTICAL_ALIGNMENT_T v,
                U16 colour, LAYER_T layer);
// A number of a scale, "%.*lf", white on the back layer, top aligned.
void GaugeScaleNumber(S32 x, S32 y, real_T value, uint8_T decimals, U32 size, FTF_HORIZONTAL_ALIGNMENT_T h);

// A gauge's title as drawn: a computed one is cut to the 24 characters of its buffer.
struct GAUGE_TITLE_T {
    char text[25];
};
GAUGE_TITLE_T QuadGaugeTitle(size_t index);
// A gauge's unit: a fixed text or the word of its unit setting.
const char* QuadGaugeUnit(size_t index);

// The dial of gauge `index` up to its needle: face, icon, scale numbers, the low, peak
// and limit marks and the needle, each trimmed on the front layer as the cell dial does.
// x, y is the corner of the cell the dial stands in; `low` is the lowest value drawn,
// which moves on to this value.
void QuadDialFace(size_t index, S32 x, S32 y, ALPHACONTROL_T iconAlpha, real_T& low);

// Test hooks: for tests and benchmarks only, never called by the dash.
// The lowest value of every gauge back to 0, as at power-up.
void QuadGaugeTestReset(void);
// The lowest value that gauge `index` has drawn.
real_T QuadGaugeTestLow(size_t index);
