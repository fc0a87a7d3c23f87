#pragma once
// The values the screens show as text, as data: what each text is made from, the frame
// whose age guards it, its unit conversion, its format and gauge scale in each unit. One
// walk of the table per foreground pass keeps the numbers of the gauges up to date every
// pass and rewrites each text at most four times a second, whether it is shown or not.
#include <array>
#include <cstddef>
#include <type_traits>

#include "Velnor_Dorvik_V6c.h"
#include "can_signals.h"
#include "data.h"
#include "signal_holds.h"

// How a value reaches the driver's units; the branch is chosen by a setting.
enum UNIT_CLASS_T : uint8_T {
    UNIT_NONE,                // one branch, the value as it is
    UNIT_ABSOLUTE_PRESSURE,   // PRESSURE_UNITS: PSI above the atmosphere, kPa, bar
    UNIT_PLAIN_PRESSURE,      // PRESSURE_UNITS: PSI, kPa, bar
    UNIT_SPEED,               // SPEED_UNITS: MPH, km/h, knots
    UNIT_TEMPERATURE,         // TEMP_UNITS: Celsius, Fahrenheit
    UNIT_AIR_FUEL,            // AF_UNITS, from an equivalence ratio: AFR, lambda, equivalence
    UNIT_AIR_FUEL_FROM_AFR,   // AF_UNITS, from an air/fuel ratio hold
};

constexpr uint16_T UNIT_NO_SETTING = 0xFFFF;

// A linear branch: (x - offset) * factor + add. The air/fuel classes have rules of their
// own, from an equivalence ratio e held at 0.01 or more: AFR stoich / e, lambda 1 / e,
// equivalence e.
struct UNIT_BRANCH_T {
    real_T offset;
    real_T factor;
    real_T add;
};
struct UNIT_ROW_T {
    uint16_T setting;  // offset in EEVariables_T of the byte that selects the branch, from 1
    uint8_T branches;
    bool airFuel;
    UNIT_BRANCH_T branch[3];
};

// Absolute pressures read as gauge pressure in PSI: 101.37931034482759 kPa is 14.7 PSI.
constexpr real_T ATMOSPHERE_KPA = 101.37931034482759;
constexpr real_T PSI_PER_KPA = 0.145;

#define SETTING(field) (uint16_T)offsetof(EEVariables_T, field)
// By UNIT_CLASS_T.
inline constexpr UNIT_ROW_T UNIT_ROWS[] = {
    {UNIT_NO_SETTING, 1, false, {{0, 1, 0}}},
    {SETTING(PRESSURE_UNITS), 3, false, {{ATMOSPHERE_KPA, PSI_PER_KPA, 0}, {0, 1, 0}, {0, 0.01, 0}}},
    {SETTING(PRESSURE_UNITS), 3, false, {{0, PSI_PER_KPA, 0}, {0, 1, 0}, {0, 0.01, 0}}},
    {SETTING(SPEED_UNITS), 3, false, {{0, 1, 0}, {0, 1.609344, 0}, {0, 0.868976242, 0}}},
    {SETTING(TEMP_UNITS), 2, false, {{0, 1, 0}, {0, 1.8, 32}}},
    {SETTING(AF_UNITS), 3, true, {}},
    {SETTING(AF_UNITS), 3, true, {}},
};
#undef SETTING
static_assert(std::size(UNIT_ROWS) == UNIT_AIR_FUEL_FROM_AFR + 1);

constexpr int UnitBranches(UNIT_CLASS_T unit)
{
    return UNIT_ROWS[unit].branches;
}

enum TV_RECORD_T : uint8_T {
    TV_SRC_B,          // a signal of the store
    TV_SRC_RAM,        // a hold as the tool sees it, 32-bit float
    TV_SRC_INPUTS,     // a field of a frame that has no signal of its own
    TV_SRC_HOLD,       // a hold of this pass that has no copy for the tool, by index
    TV_SRC_FUEL_MEAN,  // the mean of the two tank levels
    TV_SRC_ZERO,       // a gauge peak without an input
};
enum TV_KIND_T : uint8_T { TV_F64, TV_F32, TV_U8, TV_U16 };

struct TV_SOURCE_T {
    TV_RECORD_T record;
    uint16_T offset;  // in the record; the hold's index for TV_SRC_HOLD
    TV_KIND_T kind;
};

struct TV_FORMAT_T {
    uint8_T width;
    uint8_T precision;
};
struct TV_SCALE_T {
    real_T min;
    real_T max;
};

constexpr uint16_T TV_NONE = 0xFFFF;

// Fields of the store that follow the value every pass, in the selected unit.
struct TV_NUMBERS_T {
    uint16_T number;      // ValueDouble_*, RPeakDouble_*, a target or set point; TV_NONE
    uint16_T displayMin;  // the gauge's scale; TV_NONE for a value without one
    uint16_T displayMax;
    uint16_T numDec;      // uint8_T: the decimals of the value's format
};

struct TEXT_VALUE_T {
    uint16_T text;  // offset in B of the text's pointer; TV_NONE for a number alone
    TV_SOURCE_T source;
    uint16_T frame;  // the frame whose age turns the text to "---"
    UNIT_CLASS_T unit;
    TV_FORMAT_T format[3];  // by branch
    TV_SCALE_T scale[3];    // by branch, where numbers.displayMin is set
    TV_NUMBERS_T numbers;
};

template <typename T>
constexpr TV_KIND_T TVKindOf(void)
{
    if constexpr (std::is_same_v<T, real_T>) return TV_F64;
    else if constexpr (std::is_same_v<T, real32_T>) return TV_F32;
    else if constexpr (std::is_same_v<T, uint8_T>) return TV_U8;
    else if constexpr (std::is_same_v<T, uint16_T>) return TV_U16;
    else static_assert(!sizeof(T), "a text value reads a double, a float or an unsigned integer");
}

#define TV_B_FIELD(field) ((uint16_T)offsetof(BlockIO_Velnor_Dorvik_V6c, field))
#define TXT(field) TV_B_FIELD(field)
#define SB(field) TV_SOURCE_T{TV_SRC_B, TV_B_FIELD(field), TVKindOf<decltype(BlockIO_Velnor_Dorvik_V6c::field)>()}
#define SR(field) TV_SOURCE_T{TV_SRC_RAM, (uint16_T)offsetof(RAMVariables_T, field), TVKindOf<decltype(RAMVariables_T::field)>()}
#define SI(field) TV_SOURCE_T{TV_SRC_INPUTS, (uint16_T)offsetof(CAN_INPUTS_T, field), TV_F64}
#define SH(hold) TV_SOURCE_T{TV_SRC_HOLD, hold, TV_F64}
#define S_FUEL TV_SOURCE_T{TV_SRC_FUEL_MEAN, 0, TV_F64}
#define S_ZERO TV_SOURCE_T{TV_SRC_ZERO, 0, TV_F64}
// A gauge's value with its scale: ValueDouble_, DisplayMin_, DisplayMax_, NumDec_ of one suffix.
#define GAUGE(sfx) TV_NUMBERS_T{TXT(ValueDouble_##sfx), TXT(DisplayMin_##sfx), TXT(DisplayMax_##sfx), TXT(NumDec_##sfx)}
#define GAUGE4(value, min, max, dec) TV_NUMBERS_T{TXT(value), TXT(min), TXT(max), TXT(dec)}
// A number without a scale: a peak, a target, a set point.
#define NUM(field) TV_NUMBERS_T{TXT(field), TV_NONE, TV_NONE, TV_NONE}
#define NO_NUM TV_NUMBERS_T{TV_NONE, TV_NONE, TV_NONE, TV_NONE}

#define F1(w, p) {{w, p}}
#define F2(w1, p1, w2, p2) {{w1, p1}, {w2, p2}}
#define F3(w1, p1, w2, p2, w3, p3) {{w1, p1}, {w2, p2}, {w3, p3}}
#define SC1(a, b) {{a, b}}
#define SC2(a1, b1, a2, b2) {{a1, b1}, {a2, b2}}
#define SC3(a1, b1, a2, b2, a3, b3) {{a1, b1}, {a2, b2}, {a3, b3}}
#define NO_SCALE {}

// Every text value of the pass, in the order of their gauges.
inline constexpr TEXT_VALUE_T TEXT_VALUES[] = {
    // Gears
    {TXT(ValueString_lq), SB(ShifterPosition), 0x109, UNIT_NONE, F1(2, 0), NO_SCALE, NO_NUM},
    {TXT(ValueString_dm), SB(Calculated_Gear), 0x109, UNIT_NONE, F1(2, 0), NO_SCALE, NO_NUM},
    {TXT(ValueString_di2), SB(DesiredGear), 0x109, UNIT_NONE, F1(2, 0), NO_SCALE, NO_NUM},
    // Mass air flow
    {TXT(ValueString_fd), SB(MassAirFlow), 0x112, UNIT_NONE, F1(4, 0), SC1(0, 1500), GAUGE(fd)},
    {TXT(RPeakValue_a1), SR(MassAir_Max), 0x112, UNIT_NONE, F1(4, 0), NO_SCALE, NUM(RPeakDouble_a1)},
    // Battery
    {TXT(ValueString_jk), SB(BatteryVolts), 0x118, UNIT_NONE, F1(3, 0), SC1(6, 20), GAUGE(jk)},
    {TXT(LPeakValue_p), SR(BatteryVolts_Min), 0x118, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    // Launch timer
    {TXT(ValueString_nr), SB(Launch_Time), 0x108, UNIT_NONE, F1(4, 2), SC1(0, 15), GAUGE(nr)},
    {TXT(RPeakValue_i1), SR(LaunchTime_Max), 0x108, UNIT_NONE, F1(4, 2), NO_SCALE, NUM(RPeakDouble_i1)},
    // Drive shaft
    {TXT(ValueString_bn), SB(DriveShaft_RPM), 0x111, UNIT_NONE, F1(5, 0), SC1(0, 15000), GAUGE(bn)},
    {TXT(RPeakValue_l4), S_ZERO, 0x111, UNIT_NONE, F1(5, 0), NO_SCALE, NUM(RPeakDouble_l4)},
    // Torque
    {TXT(ValueString_l5), SB(EngineTorque), 0x161, UNIT_NONE, F1(4, 0), SC1(0, 1500), GAUGE(l5)},
    {TXT(RPeakValue_bf), SR(Torque_Max), 0x161, UNIT_NONE, F1(4, 0), NO_SCALE, NUM(RPeakDouble_bf)},
    {TXT(ValueString_jb), SI(Speedo), 0x161, UNIT_NONE, F1(5, 0), NO_SCALE, NO_NUM},
    // Horsepower, economy
    {TXT(ValueString_jos), SB(Engine_HP_Potential), 0x119, UNIT_NONE, F1(4, 0), SC1(0, 1000), GAUGE(jos)},
    {TXT(RPeakValue_kr), SR(EngineHP_Max), 0x119, UNIT_NONE, F1(4, 0), NO_SCALE, NUM(RPeakDouble_kr)},
    {TXT(ValueString_d13), SB(Fuel_Economy), 0x119, UNIT_NONE, F1(3, 0), SC1(0, 50), GAUGE(d13)},
    // Rev limit
    {TXT(ValueString_cs), SB(TwoStep_ADC), 0x104, UNIT_NONE, F1(5, 0), NO_SCALE, NO_NUM},
    {TXT(ValueString_ar), SB(Current_RPM_Limit), 0x104, UNIT_NONE, F1(5, 0), NO_SCALE, NO_NUM},
    // Knock retard by cylinder
    {TXT(ValueString_pb), SB(Knock_CYL1_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(pb)},
    {TXT(ValueString_bv), SB(Knock_CYL2_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(bv)},
    {TXT(ValueString_o1), SB(Knock_CYL3_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(o1)},
    {TXT(ValueString_d1), SB(Knock_CYL4_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(d1)},
    {TXT(ValueString_mw), SB(Knock_CYL5_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(mw)},
    {TXT(ValueString_nl), SB(Knock_CYL6_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(nl)},
    {TXT(ValueString_b1), SB(Knock_CYL7_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(b1)},
    {TXT(ValueString_lh), SB(Knock_CYL8_RTD), 0x107, UNIT_NONE, F1(3, 0), SC1(-30, 0), GAUGE(lh)},
    {TXT(LPeakValue_l), SR(KnockRTD1_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(LPeakValue_o), SR(KnockRTD2_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(LPeakValue_g), SR(KnockRTD3_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(LPeakValue_i), SR(KnockRTD4_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(LPeakValue_j), SR(KnockRTD5_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(LPeakValue_h), SR(KnockRTD6_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(LPeakValue_a), SR(KnockRTD7_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(LPeakValue), SR(KnockRTD8_Max), 0x107, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    // Ethanol, fuel trims, waste gate, fuel level
    {TXT(ValueString_bf), SB(EthanolContent), 0x109, UNIT_NONE, F1(3, 0), NO_SCALE, NO_NUM},
    {TXT(ValueString_iz), SB(EthanolContent), 0x109, UNIT_NONE, F1(4, 0), SC1(0, 100), GAUGE(iz)},
    {TXT(ValueString_jo), SB(O2Fuel_MultA), 0x108, UNIT_NONE, F1(5, 2), NO_SCALE, NO_NUM},
    {TXT(ValueString_da), SB(O2Fuel_MultB), 0x108, UNIT_NONE, F1(5, 2), NO_SCALE, NO_NUM},
    {TXT(ValueString_br), SB(WasteGate_Duty), 0x102, UNIT_NONE, F1(3, 0), NO_SCALE, NO_NUM},
    {TXT(ValueString_jsq), S_FUEL, 0x164, UNIT_NONE, F1(3, 0), SC1(0, 100), GAUGE(jsq)},
    // Speedometer: the wheel speed as it comes, whatever the speed unit
    {TXT(ValueString_e3), SB(NonDrivenWheelSpeed), 0x102, UNIT_NONE, F1(5, 0), SC1(0, 250), GAUGE(e3)},
    {TV_NONE, SR(NonDrivenWheel_Max), 0x102, UNIT_NONE, F1(5, 0), NO_SCALE, NUM(RPeakDouble_lw)},
    // Traction control retard
    {TXT(ValueString_e), SB(TCS_SPark_RTD), 0x102, UNIT_NONE, F1(5, 2), SC1(-50, 0), GAUGE(e)},
    // Cams
    {TXT(ValueString_ou), SB(Cam2PhaseRelative), 0x120, UNIT_NONE, F1(3, 0), SC1(-5, 40), GAUGE(ou)},
    {TXT(RPeakValue_mk), SR(CAM2_Max), 0x120, UNIT_NONE, F1(3, 0), NO_SCALE, NUM(RPeakDouble_mk)},
    {TV_NONE, SB(VVT2_Setpoint), 0x120, UNIT_NONE, F1(3, 0), NO_SCALE, NUM(SetpointValueDouble)},
    {TXT(ValueString_le), SB(Cam1PhaseRelative), 0x120, UNIT_NONE, F1(3, 0), SC1(-5, 40), GAUGE(le)},
    {TXT(RPeakValue_h3), SR(CAM1_Max), 0x120, UNIT_NONE, F1(3, 0), NO_SCALE, NUM(RPeakDouble_h3)},
    {TV_NONE, SB(VVT1_Setpoint), 0x120, UNIT_NONE, F1(3, 0), NO_SCALE, NUM(SetpointValueDouble_c)},
    // Lift and tilt
    {TXT(ValueString_jd), SB(Y_Axis_Degrees), 0x126, UNIT_NONE, F1(3, 0), SC1(-30, 30), GAUGE(jd)},
    {TXT(RPeakValue_kem), SR(Lift_Max), 0x126, UNIT_NONE, F1(3, 2), NO_SCALE, NUM(RPeakDouble_kem)},
    {TXT(LPeakValue_f), SR(Lift_Min), 0x126, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(ValueString_jbm), SB(X_Axis_Degrees), 0x126, UNIT_NONE, F1(3, 0), SC1(-30, 30), GAUGE(jbm)},
    {TXT(RPeakValue_bx), SR(RightTilt_Max), 0x126, UNIT_NONE, F1(3, 2), NO_SCALE, NUM(RPeakDouble_bx)},
    {TXT(LPeakValue_k), SR(LeftTilt_Max), 0x126, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    // Accelerations
    {TXT(ValueString_mv), SB(Y_Axis_AccelG), 0x127, UNIT_NONE, F1(3, 2), SC1(-2, 2), GAUGE(mv)},
    {TXT(RPeakValue_g4), SR(Accel_Max), 0x127, UNIT_NONE, F1(3, 2), NO_SCALE, NUM(RPeakDouble_g4)},
    {TXT(LPeakValue_e), SR(Decel_Max), 0x127, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    {TXT(ValueString_ac), SB(X_Axis_AccelG), 0x127, UNIT_NONE, F1(3, 2), SC1(-2, 2), GAUGE(ac)},
    {TXT(RPeakValue_e3), SR(Right_Max), 0x127, UNIT_NONE, F1(3, 2), NO_SCALE, NUM(RPeakDouble_e3)},
    {TXT(LPeakValue_m), SR(Left_Max), 0x127, UNIT_NONE, F1(3, 2), NO_SCALE, NO_NUM},
    // Boost stage, engine speed, spark, turbines, pressure ratio
    {TXT(ValueString_brl), SB(IBoostPosition), 0x118, UNIT_NONE, F1(5, 0), NO_SCALE, NO_NUM},
    {TXT(ValueString_do), SB(RPM), 0x108, UNIT_NONE, F1(5, 0), SC1(0, 9000),
     GAUGE4(ValueDouble_km, DisplayMin_h2, DisplayMax_lf, NumDec_lo)},
    {TXT(RPeakValue_im), SR(RPM_Max), 0x108, UNIT_NONE, F1(5, 0), NO_SCALE, NUM(RPeakDouble_mz)},
    {TXT(ValueString_l0e), SB(Spark_Advance_Log), 0x125, UNIT_NONE, F1(5, 2), SC1(-25, 50), GAUGE(l0e)},
    {TXT(ValueString_m5), SI(Turbo1_RPM), 0x106, UNIT_NONE, F1(6, 0), SC1(0, 150000), GAUGE(m5)},
    {TXT(ValueString_f1), SI(Turbo2_RPM), 0x106, UNIT_NONE, F1(6, 0), SC1(0, 150000), GAUGE(f1)},
    {TXT(ValueString_gc), SB(Pressure_Ratio), 0x112, UNIT_NONE, F1(5, 2), SC1(0, 5), GAUGE(gc)},
    // Wheel speed difference, clutch slip, injectors, throttle
    {TXT(ValueString_p5), SB(Differential_WheelSpeed), 0x101, UNIT_NONE, F1(2, 0), SC1(-50, 50), GAUGE(p5)},
    {TXT(RPeakValue_ck), SR(DiffWheelSpeed_Max), 0x101, UNIT_NONE, F1(2, 0), NO_SCALE, NUM(RPeakDouble_ck)},
    {TXT(ValueString_dh), SB(SlipPercent), 0x110, UNIT_NONE, F1(3, 0), SC1(0, 100), GAUGE(dh)},
    {TXT(ValueString_js), SB(Primary_Injector_Duty), 0x101, UNIT_NONE, F1(3, 0), SC1(0, 100), GAUGE(js)},
    {TXT(RPeakValue_oy), SR(InjectorDuty_Max), 0x101, UNIT_NONE, F1(5, 2), NO_SCALE, NUM(RPeakDouble_oy)},
    {TXT(ValueString_bw), SB(TPS_g), 0x101, UNIT_NONE, F1(3, 0), SC1(0, 100), GAUGE(bw)},
    // Waste gate set point: in the titles of the boost gauges and their limit mark
    {TXT(ValueString), SB(WasteGate_SetPoint), 0x102, UNIT_ABSOLUTE_PRESSURE, F3(2, 2, 3, 0, 3, 1), NO_SCALE,
     NUM(SetpointValueDouble_p)},
    // Air/fuel of both banks, their target and their peaks
    {TXT(ValueString_j), SB(Target_O2), 0x119, UNIT_AIR_FUEL, F3(5, 2, 5, 2, 5, 2), NO_SCALE, NO_NUM},
    {TXT(ValueString_f), SB(Final_O2_Bank1), 0x125, UNIT_AIR_FUEL, F3(5, 2, 5, 2, 5, 2),
     SC3(8, 18, 0.545, 1.2262, 0.8156, 1.835), GAUGE(f)},
    {TV_NONE, SB(Target_O2), 0x125, UNIT_AIR_FUEL, F3(5, 2, 5, 2, 5, 2), NO_SCALE, NUM(TargetPeakDouble)},
    {TXT(RPeakValue), SR(AFR1_Max), 0x125, UNIT_AIR_FUEL_FROM_AFR, F3(5, 2, 5, 2, 5, 2), NO_SCALE,
     NUM(RPeakDouble)},
    {TXT(ValueString_g), SB(Final_O2_Bank2), 0x125, UNIT_AIR_FUEL, F3(5, 2, 5, 2, 5, 2),
     SC3(8, 18, 0.545, 1.2262, 0.8156, 1.835), GAUGE(g)},
    {TV_NONE, SB(Target_O2), 0x125, UNIT_AIR_FUEL, F3(5, 2, 5, 2, 5, 2), NO_SCALE, NUM(TargetPeakDouble_b)},
    {TXT(RPeakValue_n), SR(AFR2_Max), 0x125, UNIT_AIR_FUEL_FROM_AFR, F3(5, 2, 5, 2, 5, 2), NO_SCALE,
     NUM(RPeakDouble_n)},
    // Intake air and coolant
    {TXT(ValueString_o), SB(Inlet_Air_Temp), 0x118, UNIT_TEMPERATURE, F2(5, 0, 4, 0), SC2(0, 120, 100, 240),
     GAUGE(o)},
    {TXT(RPeakValue_m), SR(AirTemp_Max), 0x118, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_m)},
    {TXT(ValueString_l), SB(Coolant_Temp), 0x118, UNIT_TEMPERATURE, F2(5, 0, 4, 0), SC2(40, 120, 100, 240),
     GAUGE(l)},
    {TXT(RPeakValue_g), SR(Coolant_Max), 0x118, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_g)},
    {TXT(ValueString_c), SB(Radiator_Pressure), 0x163, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(0, 150, 0, 1034, 0, 10), GAUGE(c)},
    {TXT(RPeakValue_f), SR(Radiator_Max), 0x163, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_f)},
    // Wheel speeds
    {TXT(ValueString_d), SB(DrivenWheelSpeed), 0x102, UNIT_SPEED, F3(4, 0, 4, 0, 4, 0), SC3(0, 200, 0, 300, 0, 200),
     GAUGE(d)},
    {TXT(RPeakValue_mj), SR(DrivenWheel_Max), 0x102, UNIT_SPEED, F3(4, 0, 4, 0, 4, 0), NO_SCALE,
     NUM(RPeakDouble_mj)},
    {TXT(ValueString_a), SB(NonDrivenWheelSpeed), 0x102, UNIT_SPEED, F3(4, 0, 4, 0, 4, 0),
     SC3(0, 200, 0, 300, 0, 200), GAUGE(a)},
    {TXT(RPeakValue_o), SR(NonDrivenWheel_Max), 0x102, UNIT_SPEED, F3(4, 0, 4, 0, 4, 0), NO_SCALE,
     NUM(RPeakDouble_o)},
    // Exhaust temperatures
    {TXT(ValueString_h), SB(EGT1), 0x148, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(h)},
    {TXT(ValueString_p), SB(EGT2), 0x148, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(p)},
    {TXT(ValueString_gd), SB(EGT3), 0x148, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(gd)},
    {TXT(ValueString_fh), SB(EGT4), 0x148, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(fh)},
    {TXT(ValueString_dv), SB(EGT5), 0x149, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(dv)},
    {TXT(ValueString_l0), SB(EGT6), 0x149, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(l0)},
    {TXT(ValueString_i), SB(EGT7), 0x149, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(i)},
    {TXT(ValueString_i2), SB(EGT8), 0x149, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(315, 1000, 100, 2000), GAUGE(i2)},
    {TXT(RPeakValue_d), SR(EGT1CAN_Max), 0x148, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_d)},
    {TXT(RPeakValue_i), SR(EGT2CAN_Max), 0x148, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_i)},
    {TXT(RPeakValue_j), SR(EGT3CAN_Max), 0x148, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_j)},
    {TXT(RPeakValue_b), SR(EGT4CAN_Max), 0x148, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_b)},
    {TXT(RPeakValue_k), SR(EGT5CAN_Max), 0x149, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_k)},
    {TXT(RPeakValue_kq), SR(EGT6CAN_Max), 0x149, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_kq)},
    {TXT(RPeakValue_e), SR(EGT7CAN_Max), 0x149, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_e)},
    {TXT(RPeakValue_l), SR(EGT8CAN_Max), 0x149, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_l)},
    // Exhaust back pressures
    {TXT(ValueString_ol), SB(ExhaustBP), 0x162, UNIT_ABSOLUTE_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(-14.7, 60, 0, 500, 0, 5), GAUGE(ol)},
    {TXT(RPeakValue_bh), SR(EBP1_Max), 0x162, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_bh)},
    {TXT(ValueString_m), SB(ExhaustBP2), 0x162, UNIT_ABSOLUTE_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(-14.7, 60, 0, 500, 0, 5), GAUGE(m)},
    {TXT(RPeakValue_i3), SR(EBP2_Max), 0x162, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_i3)},
    // Fuel pressures
    {TXT(ValueString_n), SB(Primary_Fuel_Pressure), 0x162, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(0, 150, 0, 1034, 0, 10), GAUGE(n)},
    {TXT(ValueString_og), SB(Secondary_Fuel_Pressure), 0x162, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(0, 150, 0, 1034, 0, 10), GAUGE(og)},
    // Inlet pressure and manifold pressure
    {TXT(ValueString_ls), SB(InletPressure), 0x161, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 2),
     SC3(-14.7, 3.62, 0, 125, 0, 1.25), GAUGE(ls)},
    {TXT(RPeakValue_ka), SR(InletPressure_Min), 0x161, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 2), NO_SCALE,
     NUM(RPeakDouble_ka)},
    {TXT(ValueString_di), SB(MAP_p), 0x125, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 1),
     SC3(-14.7, 40, 0, 375.79, 0, 3.75), GAUGE(di)},
    {TXT(RPeakValue_a), SR(Map_Max), 0x125, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_a)},
    // Manifold surface
    {TXT(ValueString_f3), SB(Manifold_Surface_Temp), 0x164, UNIT_TEMPERATURE, F2(5, 0, 4, 0),
     SC2(0, 120, 100, 240), GAUGE(f3)},
    {TXT(RPeakValue_h), SR(MST_Max), 0x164, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_h)},
    // Nitrous bottles; their peaks have no input
    {TXT(ValueString_b), SB(Nitrous_Pressure1), 0x105, UNIT_PLAIN_PRESSURE, F3(4, 0, 5, 0, 4, 1),
     SC3(600, 1600, 4000, 11000, 40, 110), GAUGE(b)},
    {TXT(ValueString_or), SB(Nitrous_Pressure2), 0x105, UNIT_PLAIN_PRESSURE, F3(4, 0, 5, 0, 4, 1),
     SC3(600, 1600, 4000, 11000, 40, 110), GAUGE(or)},
    {TXT(ValueString_li), SB(Nitrous_Pressure3), 0x105, UNIT_PLAIN_PRESSURE, F3(4, 0, 5, 0, 4, 1),
     SC3(600, 1600, 4000, 11000, 40, 110), GAUGE(li)},
    {TXT(ValueString_ib), SB(Nitrous_Pressure4), 0x105, UNIT_PLAIN_PRESSURE, F3(4, 0, 5, 0, 4, 1),
     SC3(600, 1600, 4000, 11000, 40, 110), GAUGE(ib)},
    {TXT(RPeakValue_jg), S_ZERO, 0x105, UNIT_PLAIN_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE, NUM(RPeakDouble_jg)},
    {TXT(RPeakValue_dy), S_ZERO, 0x105, UNIT_PLAIN_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE, NUM(RPeakDouble_dy)},
    {TXT(RPeakValue_p), S_ZERO, 0x105, UNIT_PLAIN_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE, NUM(RPeakDouble_p)},
    {TXT(RPeakValue_c), S_ZERO, 0x105, UNIT_PLAIN_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE, NUM(RPeakDouble_c)},
    // Oil
    {TXT(ValueString_ch), SB(Oil_Pressure), 0x163, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(0, 150, 0, 1000, 0, 10), GAUGE(ch)},
    {TXT(RPeakValue_eg), SR(OilPress_Max), 0x163, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_eg)},
    {TXT(ValueString_lsk), SB(OilTemp), 0x109, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(40, 140, 100, 240), GAUGE(lsk)},
    {TXT(RPeakValue_fb), SR(OilTemp_Max), 0x109, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_fb)},
    // Transmission
    {TXT(ValueString_ps), SB(Transmission_Pressure), 0x103, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(0, 500, 0, 1000, 0, 10), GAUGE(ps)},
    {TXT(RPeakValue_nr), SH(HOLD_TRANSMISSION_PRESSURE), 0x103, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_nr)},
    {TXT(ValueString_pc), SB(TransTemp), 0x109, UNIT_TEMPERATURE, F2(4, 0, 4, 0), SC2(40, 120, 100, 240), GAUGE(pc)},
    {TXT(RPeakValue_ke), SR(TransTemp_Max), 0x109, UNIT_TEMPERATURE, F2(5, 0, 4, 0), NO_SCALE, NUM(RPeakDouble_ke)},
    // Waste gate pressure
    {TXT(ValueString_p0), SB(WasteGatePressure), 0x163, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 1),
     SC3(-14.7, 40, 0, 375.79, 0, 3.75), GAUGE(p0)},
    {TXT(RPeakValue_fa), SR(WasteGatePressure_Max), 0x163, UNIT_ABSOLUTE_PRESSURE, F3(5, 2, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_fa)},
    // Brake pressure
    {TXT(ValueString_gi), SB(BrakePressure), 0x119, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1),
     SC3(0, 2000, 0, 13789.51, 0, 137.8951), GAUGE(gi)},
    {TXT(RPeakValue_a4), SR(BrakePressure_Max), 0x119, UNIT_PLAIN_PRESSURE, F3(5, 0, 5, 0, 4, 1), NO_SCALE,
     NUM(RPeakDouble_a4)},
};

// The two on and off texts of the custom panel.
inline constexpr TEXT_VALUE_T ON_OFF_VALUES[] = {
    {TXT(quorin_string_o), SB(ManualMode), 0x109, UNIT_NONE, F1(3, 0), NO_SCALE, NO_NUM},
    {TXT(quorin_string), SB(TCC), 0x119, UNIT_NONE, F1(3, 0), NO_SCALE, NO_NUM},
};

#undef TXT
#undef SB
#undef SR
#undef SI
#undef SH
#undef S_FUEL
#undef S_ZERO
#undef GAUGE
#undef GAUGE4
#undef NUM
#undef NO_NUM
#undef F1
#undef F2
#undef F3
#undef SC1
#undef SC2
#undef SC3
#undef NO_SCALE

inline constexpr size_t TEXT_VALUE_COUNT = std::size(TEXT_VALUES);
inline constexpr size_t ON_OFF_COUNT = std::size(ON_OFF_VALUES);

// The refresh gates: one per text and branch of its unit class, numbered in table order,
// the on and off texts last.
inline constexpr auto TEXT_VALUE_GATE = [] {
    std::array<uint16_T, TEXT_VALUE_COUNT + ON_OFF_COUNT + 1> first{};
    uint16_T next = 0;
    for (size_t i = 0; i < TEXT_VALUE_COUNT; i++) {
        first[i] = next;
        if (TEXT_VALUES[i].text != TV_NONE) next = (uint16_T)(next + UnitBranches(TEXT_VALUES[i].unit));
    }
    for (size_t i = 0; i < ON_OFF_COUNT; i++) {
        first[TEXT_VALUE_COUNT + i] = next;
        next = (uint16_T)(next + 1);
    }
    first[TEXT_VALUE_COUNT + ON_OFF_COUNT] = next;
    return first;
}();
static_assert(TEXT_VALUE_GATE[TEXT_VALUE_COUNT + ON_OFF_COUNT] == TEXT_GATE_COUNT,
              "the state record has one refresh gate per text and unit branch");

// The text records behind the B pointers of the pass, for whoever draws or checks them:
// the record of row i of TEXT_VALUES (nullptr for a number alone), the composed labels,
// the unit words.
const S_String* TextValueRecord(size_t row);

// At the model's start: the text fields of B at their records, the unit words empty.
void TextValuesInit(void);
// Points the text fields of B at their records, as every pass does.
void TextValuesSetPointers(void);
// All text values and numbers of the table, then the four composed labels. now is the
// uptime in ms of this pass, ages the age of each frame of CAN_FRAMES at this pass.
void TextValuesUpdate(real_T now, const uint16_T* ages);
// The unit words of the four unit settings.
void TextValuesUnits(void);
// The on and off texts.
void TextValuesOnOff(real_T now, const uint16_T* ages);
