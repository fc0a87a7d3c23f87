#pragma once
// The peak and low holds of the signals, as data: the running maximum or minimum of an
// input from power-up on, some of them only while the engine is in a given state. A hold
// is taken right after its frame is decoded in the foreground pass, goes to RAMVariables
// as a float for the tool, and to the state record at the end of the pass. Nothing resets
// a hold while the program runs.
#include <array>
#include <cstddef>

#include "Velnor_Dorvik_V6c.h"
#include "can_signals.h"
#include "data.h"

enum HOLD_KIND_T : uint8_T { HOLD_HIGH, HOLD_LOW };

// While a hold's gate is shut its input counts as 0. The engine states come from the
// copies in RAMVariables, which the pass refreshes after the holds: those of the pass before.
enum HOLD_GATE_T : uint8_T {
    HOLD_GATE_NONE,
    HOLD_GATE_TPS_70,         // throttle above 70 %
    HOLD_GATE_TPS_80,         // throttle above 80 %
    HOLD_GATE_TPS_90,         // throttle above 90 %
    HOLD_GATE_MAP_TPS_70,     // manifold pressure above 140 kPa and throttle above 70 %
    HOLD_GATE_MAP_P_TPS_70,   // the same with the manifold pressure of this pass
    HOLD_GATE_RPM_1000,       // engine speed above 1000 RPM
    HOLD_GATE_RUN_5,          // engine running for more than 5 s
};

enum HOLD_INPUT_T : uint8_T { HOLD_IN_B, HOLD_IN_INPUTS };

constexpr uint16_T HOLD_NO_COPY = 0xFFFF;

struct HOLD_T {
    uint16_T frame;  // the frame after whose decoding the hold is taken
    HOLD_KIND_T kind;
    HOLD_INPUT_T record;
    uint16_T input;   // offset of the input in B or CANInputs
    CAN_KIND_T type;  // the input's type
    real_T factor;    // the input is multiplied by this
    HOLD_GATE_T gate;
    uint16_T copy;  // offset of the real32_T copy in RAMVariables; HOLD_NO_COPY
};

#define HB(field) \
    HOLD_IN_B, (uint16_T)offsetof(BlockIO_Velnor_Dorvik_V6c, field), \
        CANKindOf<decltype(BlockIO_Velnor_Dorvik_V6c::field)>(), 1.0
#define HI(field) HOLD_IN_INPUTS, (uint16_T)offsetof(CAN_INPUTS_T, field), CAN_KIND_F64, 1.0
#define TO(field) (uint16_T)offsetof(RAMVariables_T, field)

// In the order of the pass: each frame's holds right after the frame.
inline constexpr HOLD_T SIGNAL_HOLDS[] = {
    {0x109, HOLD_HIGH, HB(TransTemp), HOLD_GATE_NONE, TO(TransTemp_Max)},
    {0x109, HOLD_HIGH, HB(OilTemp), HOLD_GATE_NONE, TO(OilTemp_Max)},
    {0x148, HOLD_HIGH, HB(EGT1), HOLD_GATE_NONE, TO(EGT1CAN_Max)},
    {0x148, HOLD_HIGH, HB(EGT2), HOLD_GATE_NONE, TO(EGT2CAN_Max)},
    {0x148, HOLD_HIGH, HB(EGT3), HOLD_GATE_NONE, TO(EGT3CAN_Max)},
    {0x148, HOLD_HIGH, HB(EGT4), HOLD_GATE_NONE, TO(EGT4CAN_Max)},
    {0x149, HOLD_HIGH, HB(EGT5), HOLD_GATE_NONE, TO(EGT5CAN_Max)},
    {0x149, HOLD_HIGH, HB(EGT6), HOLD_GATE_NONE, TO(EGT6CAN_Max)},
    {0x149, HOLD_HIGH, HB(EGT7), HOLD_GATE_NONE, TO(EGT7CAN_Max)},
    {0x149, HOLD_HIGH, HB(EGT8), HOLD_GATE_NONE, TO(EGT8CAN_Max)},
    {0x130, HOLD_HIGH, HI(O2SensorTemp2), HOLD_GATE_TPS_70, TO(O2SensorTemp2_Max)},
    {0x130, HOLD_HIGH, HOLD_IN_INPUTS, (uint16_T)offsetof(CAN_INPUTS_T, Lambda2), CAN_KIND_F64, 14.6,
     HOLD_GATE_TPS_70, TO(AFRGas2_Max)},  // lambda as an air/fuel ratio of petrol
    {0x127, HOLD_HIGH, HB(Y_Axis_AccelG), HOLD_GATE_NONE, TO(Accel_Max)},
    {0x127, HOLD_LOW, HB(Y_Axis_AccelG), HOLD_GATE_NONE, TO(Decel_Max)},
    {0x127, HOLD_HIGH, HB(X_Axis_AccelG), HOLD_GATE_NONE, TO(Right_Max)},
    {0x127, HOLD_LOW, HB(X_Axis_AccelG), HOLD_GATE_NONE, TO(Left_Max)},
    {0x126, HOLD_HIGH, HB(Y_Axis_Degrees), HOLD_GATE_NONE, TO(Lift_Max)},
    {0x126, HOLD_LOW, HB(Y_Axis_Degrees), HOLD_GATE_NONE, TO(Lift_Min)},
    {0x126, HOLD_HIGH, HB(X_Axis_Degrees), HOLD_GATE_NONE, TO(RightTilt_Max)},
    {0x126, HOLD_LOW, HB(X_Axis_Degrees), HOLD_GATE_NONE, TO(LeftTilt_Max)},
    {0x164, HOLD_HIGH, HB(Final_O2_Bank1), HOLD_GATE_MAP_TPS_70, TO(DesEQ1_Max)},
    {0x164, HOLD_HIGH, HB(Final_O2_Bank2), HOLD_GATE_MAP_TPS_70, TO(DesEQ2_Max)},
    {0x164, HOLD_HIGH, HB(Manifold_Surface_Temp), HOLD_GATE_NONE, TO(MST_Max)},
    {0x163, HOLD_HIGH, HB(WasteGatePressure), HOLD_GATE_NONE, TO(WasteGatePressure_Max)},
    {0x163, HOLD_HIGH, HB(Radiator_Pressure), HOLD_GATE_NONE, TO(Radiator_Max)},
    {0x163, HOLD_HIGH, HB(Oil_Pressure), HOLD_GATE_NONE, TO(OilPress_Max)},
    {0x162, HOLD_HIGH, HB(ExhaustBP), HOLD_GATE_NONE, TO(EBP1_Max)},
    {0x162, HOLD_HIGH, HB(ExhaustBP2), HOLD_GATE_NONE, TO(EBP2_Max)},
    {0x161, HOLD_LOW, HB(InletPressure), HOLD_GATE_TPS_90, TO(InletPressure_Min)},
    {0x161, HOLD_HIGH, HB(EngineTorque), HOLD_GATE_RPM_1000, TO(Torque_Max)},
    {0x120, HOLD_HIGH, HB(Cam1PhaseRelative), HOLD_GATE_RPM_1000, TO(CAM1_Max)},
    {0x120, HOLD_HIGH, HB(Cam2PhaseRelative), HOLD_GATE_RPM_1000, TO(CAM2_Max)},
    {0x119, HOLD_HIGH, HB(BrakePressure), HOLD_GATE_NONE, TO(BrakePressure_Max)},
    {0x119, HOLD_HIGH, HB(Engine_HP_Potential), HOLD_GATE_NONE, TO(EngineHP_Max)},
    {0x118, HOLD_HIGH, HB(Inlet_Air_Temp), HOLD_GATE_NONE, TO(AirTemp_Max)},
    {0x118, HOLD_HIGH, HB(Coolant_Temp), HOLD_GATE_NONE, TO(Coolant_Max)},
    {0x118, HOLD_LOW, HB(BatteryVolts), HOLD_GATE_NONE, TO(BatteryVolts_Min)},
    {0x112, HOLD_HIGH, HB(MassAirFlow), HOLD_GATE_NONE, TO(MassAir_Max)},
    {0x112, HOLD_LOW, HB(Pressure_Ratio), HOLD_GATE_TPS_80, TO(PressureRatio_Min)},
    {0x112, HOLD_HIGH, HB(EGT), HOLD_GATE_NONE, TO(EGT1_Max)},
    {0x112, HOLD_HIGH, HB(EGT2_m), HOLD_GATE_NONE, TO(EGT2_Max)},
    {0x110, HOLD_HIGH, HI(OilPress_PSI), HOLD_GATE_NONE, TO(OilPress_Max_PSI)},
    {0x110, HOLD_HIGH, HI(Radiator_PSI), HOLD_GATE_NONE, TO(Radiator_Max_PSI)},
    {0x110, HOLD_HIGH, HI(EBP2_PSI), HOLD_GATE_NONE, TO(EBP2_Max_PSI)},
    {0x110, HOLD_HIGH, HI(WasteGatePressure_PSI), HOLD_GATE_NONE, TO(WasteGatePressure_Max_PSI)},
    {0x108, HOLD_HIGH, HB(Launch_Time), HOLD_GATE_TPS_80, TO(LaunchTime_Max)},
    {0x108, HOLD_HIGH, HB(RPM), HOLD_GATE_NONE, TO(RPM_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL1_RTD), HOLD_GATE_NONE, TO(KnockRTD1_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL2_RTD), HOLD_GATE_NONE, TO(KnockRTD2_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL3_RTD), HOLD_GATE_NONE, TO(KnockRTD3_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL4_RTD), HOLD_GATE_NONE, TO(KnockRTD4_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL5_RTD), HOLD_GATE_NONE, TO(KnockRTD5_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL6_RTD), HOLD_GATE_NONE, TO(KnockRTD6_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL7_RTD), HOLD_GATE_NONE, TO(KnockRTD7_Max)},
    {0x107, HOLD_LOW, HB(Knock_CYL8_RTD), HOLD_GATE_NONE, TO(KnockRTD8_Max)},
    {0x103, HOLD_HIGH, HB(Transmission_Pressure), HOLD_GATE_NONE, HOLD_NO_COPY},
    {0x102, HOLD_HIGH, HI(EBP1_PSI), HOLD_GATE_NONE, TO(EBP1_Max_PSI)},
    {0x102, HOLD_HIGH, HB(NonDrivenWheelSpeed), HOLD_GATE_NONE, TO(NonDrivenWheel_Max)},
    {0x102, HOLD_HIGH, HB(DrivenWheelSpeed), HOLD_GATE_NONE, TO(DrivenWheel_Max)},
    {0x101, HOLD_HIGH, HB(Primary_Injector_Duty), HOLD_GATE_NONE, TO(InjectorDuty_Max)},
    {0x101, HOLD_HIGH, HB(Differential_WheelSpeed), HOLD_GATE_RUN_5, TO(DiffWheelSpeed_Max)},
    {0x125, HOLD_HIGH, HB(Final_AFR1), HOLD_GATE_MAP_P_TPS_70, TO(AFR1_Max)},
    {0x125, HOLD_HIGH, HB(Final_AFR2), HOLD_GATE_MAP_P_TPS_70, TO(AFR2_Max)},
    {0x125, HOLD_HIGH, HB(MAP_p), HOLD_GATE_NONE, TO(Map_Max)},
};

#undef HB
#undef HI
#undef TO

static_assert(std::size(SIGNAL_HOLDS) == HOLD_COUNT, "the state record has one state per hold");
static_assert([] {
    for (const HOLD_T& h : SIGNAL_HOLDS)
        if (h.type != CAN_KIND_F64 && h.type != CAN_KIND_U16) return false;
    return true;
}(), "hold inputs are doubles or 16-bit integers");

// The transmission pressure hold has no copy in RAMVariables; its text reads it here.
inline constexpr uint16_T HOLD_TRANSMISSION_PRESSURE = [] {
    for (size_t i = 0; i < std::size(SIGNAL_HOLDS); i++)
        if (SIGNAL_HOLDS[i].copy == HOLD_NO_COPY) return (uint16_T)i;
    return (uint16_T)HOLD_COUNT;
}();

// The holds of each frame, by the frame's place in CAN_FRAMES.
struct HOLD_ROWS_T {
    uint8_T first;
    uint8_T count;
};
inline constexpr auto HOLD_FRAME_ROWS = [] {
    std::array<HOLD_ROWS_T, CAN_FRAME_COUNT> rows{};
    for (size_t i = 0; i < HOLD_COUNT; i++) {
        HOLD_ROWS_T& r = rows[CANFrameIndex(SIGNAL_HOLDS[i].frame)];
        if (r.count == 0) r.first = (uint8_T)i;
        r.count++;
    }
    return rows;
}();

static_assert([] {
    for (size_t i = 0; i < HOLD_COUNT; i++) {
        const size_t f = CANFrameIndex(SIGNAL_HOLDS[i].frame);
        if (f == CAN_FRAME_COUNT) return false;
        const HOLD_ROWS_T r = HOLD_FRAME_ROWS[f];
        if (i < r.first || i >= (size_t)r.first + r.count) return false;
    }
    return true;
}(), "each frame's holds stand together");

// Takes the holds of the frame at place `frame` of CAN_FRAMES, into the values of this pass.
void SignalHoldsAfterFrame(size_t frame);
// Each hold of this pass to its float copy in RAMVariables.
void SignalHoldsToRAMVariables(void);
// Each hold of this pass to the state record, for the next pass.
void SignalHoldsToState(void);
// A hold's value in this pass, by row of SIGNAL_HOLDS; 0 for a row outside the table.
real_T SignalHoldValue(size_t hold);
