#pragma once
// The ECU's fault frames as a table: one row per condition bit of frames 0x121, 0x132 and
// 0x133, in the order of the fault screen, with the text that the screen shows for it.
// The dash keeps no fault state of its own: a row is active while its flag, decoded
// afresh each pass from the newest frame, is above 0.
#include <array>
#include <cstddef>

#include "Velnor_Dorvik_V6c.h"
#include "can_signals.h"

struct FAULT_ROW_T {
    uint16_T flag;     // offset of the real_T flag in B
    const char* name;  // the flag's name
    uint16_T frame;
    uint8_T byte;  // the bit on the wire: D<byte>.<bit>, 7 the most significant
    uint8_T bit;
    const char* text;  // the line of the fault screen
};

// A row whose text is the flag's own name, and a row with a text of its own.
#define FAULT(flag, frame, byte, bit) \
    {(uint16_T)offsetof(BlockIO_Velnor_Dorvik_V6c, flag), #flag, frame, byte, bit, #flag}
#define FAULT_TEXT(flag, frame, byte, bit, text) \
    {(uint16_T)offsetof(BlockIO_Velnor_Dorvik_V6c, flag), #flag, frame, byte, bit, text}

inline constexpr FAULT_ROW_T FAULT_ROWS[] = {
    FAULT(APP1AdaptHiMax, 0x121, 0, 7),
    FAULT(APP1AdaptHiMin, 0x121, 0, 6),
    FAULT(APP1AdaptLoMax, 0x121, 0, 5),
    FAULT(APP1AdaptLoMin, 0x121, 0, 4),
    FAULT(APP1RangeHigh, 0x121, 0, 3),
    FAULT(APP1RangeLow, 0x121, 0, 2),
    FAULT(APP2AdaptHiMax, 0x121, 0, 1),
    FAULT(APP2AdaptHiMin, 0x121, 0, 0),
    FAULT(APP2AdaptLoMax, 0x121, 1, 7),
    FAULT(APP2AdaptLoMin, 0x121, 1, 6),
    FAULT(APP2RangeHigh, 0x121, 1, 5),
    FAULT(APP2RangeLow, 0x121, 1, 4),
    FAULT_TEXT(APP_Sensors_Conflict, 0x121, 1, 3, "APP SENSORS CONFLICT"),
    FAULT(AutoCrankFailed, 0x121, 1, 2),
    FAULT_TEXT(Boost_Limit_Exceeded, 0x121, 1, 1, "BOOST LIMIT EXCEEDED"),
    FAULT(Brake_PressureRangeHigh, 0x121, 1, 0),
    FAULT(Brake_PressureRangeLow, 0x121, 2, 7),
    FAULT(CAN_Wideband1_Open, 0x121, 2, 6),
    FAULT_TEXT(CamEdgesFault, 0x121, 2, 5, "CAMEDGESFAULT"),
    FAULT_TEXT(CamSyncFault, 0x121, 2, 4, "CAMSYNCFAULT"),
    FAULT_TEXT(CrankEdgesFault, 0x121, 2, 3, "CRANKEDGESFAULT"),
    FAULT_TEXT(CrankSyncFault, 0x121, 2, 2, "CRANKSYNCFAULT"),
    FAULT(CruiseSwich1, 0x121, 2, 1),
    FAULT(CruiseSwich2, 0x121, 2, 0),
    FAULT(CruiseSwich3, 0x121, 3, 7),
    FAULT(CruiseSwich4, 0x121, 3, 6),
    FAULT(CruiseSwich5, 0x121, 3, 5),
    FAULT_TEXT(DecelFuelCut_Enabled, 0x121, 3, 4, "DECELFUELCUT ENABLED"),
    FAULT_TEXT(DifferentialWheelSpeed_Exceeded, 0x121, 3, 3, "DIFFERENTIALWHEELSPEED EXCEEDED"),
    FAULT_TEXT(DriveShaftRPmLimit_Exceeded, 0x121, 3, 2, "DRIVESHAFTRPMLIMIT EXCEEDED"),
    FAULT_TEXT(ECTOverTempFault, 0x121, 3, 1, "ECTOVERTEMPFAULT"),
    FAULT(ECTRangeHigh, 0x121, 3, 0),
    FAULT(ECTRangeLow, 0x121, 4, 7),
    FAULT(EGT_1RangeHigh, 0x121, 4, 6),
    FAULT(EGT_1RangeLow, 0x121, 4, 5),
    FAULT(EGT_2RangeHigh, 0x121, 4, 4),
    FAULT(EGT_2RangeLow, 0x121, 4, 3),
    FAULT(ETCSpringTest, 0x121, 4, 2),
    FAULT_TEXT(ETC_Open_Fault, 0x121, 4, 1, "ETC OPEN FAULT"),
    FAULT_TEXT(ETC_Sticking, 0x121, 4, 0, "ETC STICKING"),
    FAULT(EXT_O2_1RangeHigh, 0x121, 5, 7),
    FAULT(EXT_O2_1RangeLow, 0x121, 5, 6),
    FAULT(EXT_O2_2RangeHigh, 0x121, 5, 5),
    FAULT(EXT_O2_2RangeLow, 0x121, 5, 4),
    FAULT_TEXT(EngineOverspeed, 0x121, 5, 3, "ENGINEOVERSPEED"),
    FAULT_TEXT(Ethanol_Content_low_Fault, 0x121, 5, 2, "ETHANOL CONTENT LOW FAULT"),
    FAULT(ExhaustBP2RangeHigh, 0x121, 5, 1),
    FAULT(ExhaustBP2RangeLow, 0x121, 5, 0),
    FAULT(ExhaustBPRangeHigh, 0x121, 6, 7),
    FAULT(ExhaustBPRangeLow, 0x121, 6, 6),
    FAULT(ExhautBP_Variance_Exceeded, 0x121, 6, 5),
    FAULT(FlexFuelRangeHigh, 0x121, 6, 4),
    FAULT(FlexFuelRangeLow, 0x121, 6, 3),
    FAULT(Fuel_Cut_Active, 0x121, 6, 2),
    FAULT_TEXT(HB1Fault_Stepper, 0x121, 6, 1, "HB1FAULT STEPPER"),
    FAULT_TEXT(HB2Fault_Stepper, 0x121, 6, 0, "HB2FAULT STEPPER"),
    FAULT_TEXT(HBridgeFault_ETC, 0x121, 7, 7, "HBRIDGEFAULT ETC"),
    FAULT(High_LowSwitch_Active, 0x121, 7, 6),
    FAULT(IATRangeHigh, 0x121, 7, 5),
    FAULT(IATRangeLow, 0x121, 7, 4),
    FAULT_TEXT(IAT_IR_Fault, 0x121, 7, 3, "IAT IR FAULT"),
    FAULT(I_BoostRangeHigh, 0x121, 7, 2),
    FAULT(I_BoostRangeLow, 0x121, 7, 1),
    FAULT_TEXT(IncreasingFaultCounts, 0x121, 7, 0, "INCREASINGFAULTCOUNTS"),
    FAULT(InjectorTestTimeExceeded, 0x132, 0, 7),
    FAULT_TEXT(KnockSensorFault, 0x132, 0, 6, "KNOCKSENSORFAULT"),
    FAULT(Knock_Control_Active, 0x132, 0, 5),
    FAULT(MAFRangeHigh, 0x132, 0, 4),
    FAULT(MAFRangeLow, 0x132, 0, 3),
    FAULT(MAPRangeHigh, 0x132, 0, 2),
    FAULT(MAPRangeLow, 0x132, 0, 1),
    FAULT(MAPTimeRangeHigh, 0x132, 0, 0),
    FAULT(MAPTimeRangeLow, 0x132, 1, 7),
    FAULT_TEXT(MAP_IR_HI, 0x132, 1, 6, "MAP IR HI"),
    FAULT_TEXT(MAP_IR_LO, 0x132, 1, 5, "MAP IR LO"),
    FAULT_TEXT(MAP_STICKING, 0x132, 1, 4, "MAP STICKING"),
    FAULT(Maf_VoltsRangeHigh, 0x132, 1, 3),
    FAULT(Maf_VoltsRangeLow, 0x132, 1, 2),
    FAULT_TEXT(N2O_Bottle1Pressure_LimitExceeded, 0x132, 1, 1, "N2O BOTTLE1PRESSURE LIMITEXCEEDED"),
    FAULT_TEXT(N2O_Bottle2Pressure_LimitExceeded, 0x132, 1, 0, "N2O BOTTLE2PRESSURE LIMITEXCEEDED"),
    FAULT_TEXT(N2O_Bottle3Pressure_LimitExceeded, 0x132, 2, 7, "N2O BOTTLE3PRESSURE LIMITEXCEEDED"),
    FAULT_TEXT(N2O_Bottle4Pressure_LimitExceeded, 0x132, 2, 6, "N2O BOTTLE4PRESSURE LIMITEXCEEDED"),
    FAULT(N2O_Bottle_Pressure1RangeHigh, 0x132, 2, 5),
    FAULT(N2O_Bottle_Pressure1RangeLow, 0x132, 2, 4),
    FAULT(N2O_Bottle_Pressure2RangeHigh, 0x132, 2, 3),
    FAULT(N2O_Bottle_Pressure2RangeLow, 0x132, 2, 2),
    FAULT(N2O_Bottle_Pressure3RangeHigh, 0x132, 2, 1),
    FAULT(N2O_Bottle_Pressure3RangeLow, 0x132, 2, 0),
    FAULT(N2O_Bottle_Pressure4RangeHigh, 0x132, 3, 7),
    FAULT(N2O_Bottle_Pressure4RangeLow, 0x132, 3, 6),
    FAULT_TEXT(NitrousArmed, 0x132, 3, 5, "NITROUSARMED"),
    FAULT_TEXT(NitrousTriggered, 0x132, 3, 4, "NITROUSTRIGGERED"),
    FAULT(O2FailedLeanA, 0x132, 3, 3),
    FAULT(O2FailedLeanB, 0x132, 3, 2),
    FAULT(O2FailedRichA, 0x132, 3, 1),
    FAULT(O2FailedRichB, 0x132, 3, 0),
    FAULT_TEXT(O2_A_Target_Variance_EQ_Exceeded, 0x132, 4, 7, "O2 A TARGET VARIANCE EQ EXCEEDED"),
    FAULT_TEXT(O2_B_Target_Variance_EQ_Exceeded, 0x132, 4, 6, "O2 B TARGET VARIANCE EQ EXCEEDED"),
    FAULT_TEXT(O2_Lean_Limit_Exceeded, 0x132, 4, 5, "O2 LEAN LIMIT EXCEEDED"),
    FAULT_TEXT(OilPressureRangeHigh, 0x132, 4, 4, "OIL PRESS SENSORFAULTHIGH"),
    FAULT_TEXT(OilPressureRangeLow, 0x132, 4, 3, "OIL PRESS SENSORFAULTLOW"),
    FAULT(OilTempRangeHigh, 0x132, 4, 2),
    FAULT(OilTempRangeLow, 0x132, 4, 1),
    FAULT_TEXT(Oil_Pressure_Low, 0x132, 4, 0, "OIL PRESSURE LOW"),
    FAULT_TEXT(OverRevLimitAction, 0x132, 5, 7, "OVERREVLIMITACTION"),
    FAULT_TEXT(PressureRatio_PowerLimit_Exceeded, 0x132, 5, 6, "PRESSURERATIO POWERLIMIT EXCEEDED"),
    FAULT(Primary_FuelPressureRangeHigh, 0x132, 5, 5),
    FAULT(Primary_FuelPressureRangeLow, 0x132, 5, 4),
    FAULT_TEXT(Primary_FuelPressure_Variance, 0x132, 5, 3, "PRIMARY FUELPRESSURE VARIANCE"),
    FAULT_TEXT(Primary_Injector_DutyLimit_Exceeded, 0x132, 5, 2, "PRIMARY INJECTOR DUTYLIMIT EXCEEDED"),
    FAULT(Radiator_PressureRangeHigh, 0x132, 5, 1),
    FAULT(Radiator_PressureRangeLow, 0x132, 5, 0),
    FAULT_TEXT(Radiator_Pressure_Limit_Exceeded, 0x132, 6, 7, "RADIATOR PRESSURE LIMIT EXCEEDED"),
    FAULT_TEXT(Rolling_Limiter_Active, 0x132, 6, 6, "ROLLING LIMITER ACTIVE"),
    FAULT(Secondary_FuelPressureRangeHigh, 0x132, 6, 5),
    FAULT(Secondary_FuelPressureRangeLow, 0x132, 6, 4),
    FAULT_TEXT(Secondary_FuelPressure_Variance, 0x132, 6, 3, "SECONDARY FUELPRESSURE VARIANCE"),
    FAULT_TEXT(Secondary_Injector_DutyLimit_Exceeded, 0x132, 6, 2, "SECONDARY INJECTOR DUTYLIMIT EXCEEDED"),
    FAULT(SensVoltRangeHigh, 0x132, 6, 1),
    FAULT(SensVoltRangeLow, 0x132, 6, 0),
    FAULT_TEXT(StrainGaugeCut, 0x132, 7, 7, "STRAINGAUGECUT"),
    FAULT(SysVoltRangeHigh, 0x132, 7, 6),
    FAULT(SysVoltRangeLow, 0x132, 7, 5),
    FAULT(TPS1AdaptHiMax, 0x132, 7, 4),
    FAULT(TPS1AdaptHiMin, 0x132, 7, 3),
    FAULT(TPS1AdaptLoMax, 0x132, 7, 2),
    FAULT(TPS1AdaptLoMin, 0x132, 7, 1),
    FAULT(TPS1RangeHigh, 0x132, 7, 0),
    FAULT(TPS1RangeLow, 0x133, 0, 7),
    FAULT(TPS2AdaptHiMax, 0x133, 0, 6),
    FAULT(TPS2AdaptHiMin, 0x133, 0, 5),
    FAULT(TPS2AdaptLoMax, 0x133, 0, 4),
    FAULT(TPS2AdaptLoMin, 0x133, 0, 3),
    FAULT(TPS2RangeHigh, 0x133, 0, 2),
    FAULT(TPS2RangeLow, 0x133, 0, 1),
    FAULT(TTC_RangeHigh, 0x133, 0, 0),
    FAULT(TTC_RangeLow, 0x133, 1, 7),
    FAULT_TEXT(TractionControl_Switch, 0x133, 1, 6, "TRACTIONCONTROL SWITCH"),
    FAULT(TransTempRangeHigh, 0x133, 1, 5),
    FAULT(TransTempRangeLow, 0x133, 1, 4),
    FAULT(Trans_Pump_PressureRangeHigh, 0x133, 1, 3),
    FAULT(Trans_Pump_PressureRangeLow, 0x133, 1, 2),
    FAULT_TEXT(Turbo_Speed1_Limit_Exceeded, 0x133, 1, 1, "TURBO SPEED1 LIMIT EXCEEDED"),
    FAULT_TEXT(Turbo_Speed2_Limit_Exceeded, 0x133, 1, 0, "TURBO SPEED2 LIMIT EXCEEDED"),
    FAULT(UEGO1_RangeHigh, 0x133, 2, 7),
    FAULT(UEGO1_RangeLow, 0x133, 2, 6),
    FAULT(UEGO1_UR_RangeHigh, 0x133, 2, 5),
    FAULT(UEGO1_UR_RangeLow, 0x133, 2, 4),
    FAULT(UEGO2_RangeHigh, 0x133, 2, 3),
    FAULT(UEGO2_RangeLow, 0x133, 2, 2),
    FAULT(UEGO2_UR_RangeHigh, 0x133, 2, 1),
    FAULT(UEGO2_UR_RangeLow, 0x133, 2, 0),
    FAULT(VVT1NoRegionFound, 0x133, 3, 7),
    FAULT(VVT2NoRegionFound, 0x133, 3, 6),
    FAULT_TEXT(Valet_Mode, 0x133, 3, 5, "VALET MODE"),
    FAULT_TEXT(Valet_Mode2, 0x133, 3, 4, "VALET MODE 2"),
    FAULT(Valet_Speed_Limit_Exceeded, 0x133, 3, 3),
    FAULT(Vehicle_Speed_Limit_Exceeded, 0x133, 3, 2),
    FAULT(WasteGatePressureRangeHigh, 0x133, 3, 1),
    FAULT(WasteGatePressureRangeLow, 0x133, 3, 0),
    FAULT(Y_AxisAccel_Exceeded, 0x133, 4, 7),
    FAULT(Y_AxisLift_Exceeded, 0x133, 4, 6),
    FAULT_TEXT(CnkCamPhaseFault, 0x133, 4, 5, "CrankCamPhase Fault"),
    FAULT(EngineBayTempRangeHigh, 0x133, 4, 4),
    FAULT(EngineBayTempRangeLow, 0x133, 4, 3),
    FAULT(AC_PressureRangeHigh, 0x133, 4, 2),
    FAULT(AC_PressureRangeLow, 0x133, 4, 1),
    FAULT_TEXT(Baro_PressureRangeHigh, 0x133, 4, 0, "BaroPressureRangeHigh"),
    FAULT(Inlet_PressureRangeHigh, 0x133, 7, 4),
    FAULT(Inlet_PressureRangeLow, 0x133, 7, 3),
    FAULT(MSTRangeHigh, 0x133, 7, 2),
    FAULT(MSTRangeLow, 0x133, 7, 1),
    FAULT(TransmissionTempFault, 0x133, 7, 0),
    FAULT(EGT_HighTemp_Exceeded, 0x133, 6, 4),
    FAULT_TEXT(Baro_PressureRangeLow, 0x133, 5, 7, "BaroPressureRangeLow"),
    FAULT(CAN_Wideband2_Open, 0x133, 5, 6),
    FAULT(EGT1_Variance_Exceeded, 0x133, 5, 4),
    FAULT(EGT2_Variance_Exceeded, 0x133, 5, 3),
    FAULT(EGT3_Variance_Exceeded, 0x133, 5, 2),
    FAULT(EGT4_Variance_Exceeded, 0x133, 5, 1),
    FAULT(EGT5_Variance_Exceeded, 0x133, 5, 0),
    FAULT(EGT6_Variance_Exceeded, 0x133, 6, 7),
    FAULT(EGT7_Variance_Exceeded, 0x133, 6, 6),
    FAULT(EGT8_Variance_Exceeded, 0x133, 6, 5),
    FAULT(FuelTank_PressureRangeHigh, 0x133, 6, 3),
    FAULT(FuelTank_PressureRangeLow, 0x133, 6, 2),
    FAULT(Fuel_Level1RangeHigh, 0x133, 6, 1),
    FAULT(Fuel_Level1RangeLow, 0x133, 6, 0),
    FAULT(Fuel_Level2RangeHigh, 0x133, 7, 7),
    FAULT(Fuel_Level2RangeLow, 0x133, 7, 6),
    FAULT(Fuel_Tank_Purge_Active, 0x133, 7, 5),
};

#undef FAULT
#undef FAULT_TEXT

static_assert(std::size(FAULT_ROWS) == FAULT_ROW_COUNT);

static_assert([] {
    for (const FAULT_ROW_T& row : FAULT_ROWS) {
        const size_t s = CANSignalIndex(row.name);
        if (s == CAN_SIGNAL_COUNT) return false;
        const CAN_SIGNAL_T& signal = CAN_SIGNALS[s];
        if (signal.frame != row.frame || signal.byte != row.byte || signal.bit != row.bit || signal.width != 1)
            return false;
        if (signal.target.record != CAN_REC_B || signal.target.offset != row.flag) return false;
    }
    return true;
}(), "each row is the bit that the message set decodes into its flag");

static_assert([] {
    size_t rows = 0;
    for (const uint32_T id : {0x121u, 0x132u, 0x133u}) rows += CAN_FRAME_ROWS[CANFrameIndex(id)].count;
    return rows == FAULT_ROW_COUNT;
}(), "the fault frames carry no flag without a row");

// The row's flag, as decoded in the last pass.
real_T FaultState(size_t row);
// The row's text; nullptr for a row outside the table.
const S_String* FaultText(size_t row);
// The number of active rows: the sum of all flags.
real_T FaultCount(void);
// No fault frame 0x121 for about 3 s: the fault list gives way to a notice.
bool FaultCommunicationLost(void);

// The warnings of the quad screen, from the copies of the last pass: "CHECK ENGINE" while
// the malfunction lamp is on, the valet mode, or an empty text.
const char* FaultEngineWarning(void);
const char* FaultValetWarning(void);

// Points B's fault texts at the rows' texts, as every pass does.
void FaultTableSetPointers(void);
