#pragma once
// The columns of a log file as data: each column's name, range and unit as the header
// states them, and the signal of the store whose value fills the column in each row.
// The constant pieces of the header are built from this table when the program is built.
#include <array>
#include <cstddef>

#include "Velnor_Dorvik_V6c.h"
#include "can_signals.h"

struct LOG_COLUMN_T {
    uint16_T signal;  // offset in B
    CAN_KIND_T kind;  // the signal's type
    const char* name;
    const char* range;  // low and high value, a blank between them
    const char* unit;
};

#define LOG(field, name, range, unit)                                                                      \
    {(uint16_T)offsetof(BlockIO_Velnor_Dorvik_V6c, field), CANKindOf<decltype(BlockIO_Velnor_Dorvik_V6c::field)>(), \
     name, range, unit}

// Columns 2 to 154 of a row; column 1 is the time stamp.
inline constexpr LOG_COLUMN_T LOG_COLUMNS[] = {
    LOG(RPM, "PCM1.P9.RPM", "0 10000", "RPM"),
    LOG(MAP_p, "PCM1.P1.MAP", "0 500", "KPA"),
    LOG(TPS_g, "PCM1.P2.TPS", "0 100", "%"),
    LOG(Final_AFR1, "PCM1.P1.Final_AFR1", "5 20", "AFR"),
    LOG(O2Fuel_MultA, "PCM1.P9.O2Fuel_MultA", "0 2", "Multiplier"),
    LOG(Final_AFR2, "PCM1.P1.Final_AFR2", "5 20", "AFR"),
    LOG(O2Fuel_MultB, "PCM1.P9.O2Fuel_MultB", "0 2", "Multiplier"),
    LOG(Target_O2, "PCM1.P5.Target_O2", "0 2", "EQ"),
    LOG(Spark_Advance_Log, "PCM1.P1.Spark_Advance_Log", "-20 50", "DegBTDC"),
    LOG(Primary_Injector_Duty, "PCM1.P2.Primary_Injector_Duty", "0 100", "%"),
    LOG(DrivenWheelSpeed, "PCM1.P3.DrivenWheelSpeed", "0 255", "MPH"),
    LOG(NonDrivenWheelSpeed, "PCM1.P3.NonDrivenWheelSpeed", "0 255", "MPH"),
    LOG(WasteGate_Duty, "PCM1.P3.WasteGate_Duty", "0 100", "%"),
    LOG(WasteGate_SetPoint, "PCM1.P3.WasteGate_SetPoint", "0 500", "KPA"),
    LOG(TimeSinceRun, "PCM1.P4.TimeSinceRun", "0 500", "Sec"),
    LOG(APP1, "PCM1.P4.APP1", "0 100", "%"),
    LOG(Current_RPM_Limit, "PCM1.P5.Current_RPM_Limit", "0 10000", "RPM"),
    LOG(Launch_Time, "PCM1.P9.Launch_Time", "0 20", "Sec"),
    LOG(Delta_TPS, "PCM1.P9.Delta_TPS", "-20 20", "Delta"),
    LOG(EthanolContent, "PCM1.P10.Ethanol_Content", "0 100", "%"),
    LOG(Radiator_Pressure, "PCM1.P11.Radiator_Pressure", "0 150", "KPA"),
    LOG(BatteryVolts, "PCM1.P19.BatteryVolts", "0 20", "Volts"),
    LOG(IBoostPosition, "PCM1.P19.IBoostPosition", "0 5", "Stage"),
    LOG(Coolant_Temp, "PCM1.P19.Coolant_Temp", "0 250", "C"),
    LOG(Inlet_Air_Temp, "PCM1.P19.Inlet_Air_Temp", "0 250", "C"),
    LOG(Cam1PhaseRelative, "PCM1.P21.Cam1PhaseRelative", "-10 50", "Degrees"),
    LOG(VVT1_Setpoint, "PCM1.P21.VVT1_Setpoint", "-10 50", "Degrees"),
    LOG(Cam2PhaseRelative, "PCM1.P21.Cam2PhaseRelative", "-10 50", "Degrees"),
    LOG(VVT2_Setpoint, "PCM1.P21.VVT2_Setpoint", "-10 50", "Degrees"),
    LOG(Y_Axis_Degrees, "PCM1.P126.Y_Axis_Degrees", "0 45", "Degrees"),
    LOG(X_Axis_Degrees, "PCM1.P126.X_Axis_Degrees", "0 45", "Degrees"),
    LOG(X_Axis_AccelG, "PCM1.P127.X_Axis_AccelG", "-4 4", "Degrees"),
    LOG(Y_Axis_AccelG, "PCM1.P127.Y_Axis_AccelG", "-4 4", "Degrees"),
    LOG(Differential_WheelSpeed, "PCM1.P2.Differential_WheelSpeed", "0 500", "%"),
    LOG(Differntial_WheelSpeed_Allowed, "PCM1.P2.Differential_Wheelspeed_Allowed", "0 500", "MPH"),
    LOG(Primary_Fuel_Pressure, "PCM1.P2.Primary_Fuel_Pressure", "0 150", "KPA"),
    LOG(Secondary_Fuel_Pressure, "PCM1.P2.Secondary_FuelPressure", "0 150", "KPA"),
    LOG(ExhaustBP, "PCM1.P3.Exhaust_BackPressure", "0 75", "KPA"),
    LOG(TCS_SPark_RTD, "PCM1.P3.TCS_Spark_RTD", "-50 0", "Degrees"),
    LOG(TPS2, "PCM1.P4.TPS2", "0 100", "%"),
    LOG(APP2, "PCM1.P4.APP2", "0 100", "%"),
    LOG(OnIdle, "PCM1.P4.OnIdle", "0 2", "flag"),
    LOG(Transmission_Pressure, "PCM1.P4.Transmission_Pressure", "0 500", "KPA"),
    LOG(Stage1_Engaged, "PCM1.P4.Stage1_Engaged", "0 2", "On/Off"),
    LOG(Stage2_Engaged, "PCM1.P4.Stage2_Engaged", "0 2", "On/Off"),
    LOG(Stage3_Engaged, "PCM1.P4.Stage3_Engaged", "0 2", "On/Off"),
    LOG(Stage4_Engaged, "PCM1.P4.Stage4_Engaged", "0 2", "On/Off"),
    LOG(TractionControlActive, "PCM1.P5.TractionControlActive", "0 2", "flag"),
    LOG(Drivers_Information_Light, "PCM1.P5.Drivers_Information_Light", "0 2", "On/Off"),
    LOG(TwoStep_ADC, "PCM1.P5.TwoStep_ADC", "0 1050", "ADC"),
    LOG(Secondary_Injector_Duty, "PCM1.P5.Secondary_Injector_Duty", "0 100", "%"),
    LOG(Nitrous_Pressure1, "PCM1.P6.Nitrous_Pressure1", "0 2000", "KPA"),
    LOG(Nitrous_Pressure2, "PCM1.P6.Nitrous_Pressure2", "0 2000", "KPA"),
    LOG(Nitrous_Pressure3, "PCM1.P6.Nitrous_Pressure3", "0 2000", "KPA"),
    LOG(Nitrous_Pressure4, "PCM1.P6.Nitrous_Pressure4", "0 2000", "KPA"),
    LOG(Knock_CYL1_RTD, "PCM1.P8.Knock_CYL1_RTD", "-20 0", "DegBTDC"),
    LOG(Knock_CYL2_RTD, "PCM1.P8.Knock_CYL2_RTD", "-20 0", "DegBTDC"),
    LOG(Knock_CYL3_RTD, "PCM1.P8.Knock_CYL3_RTD", "-20 0", "DegBTDC"),
    LOG(Knock_CYL4_RTD, "PCM1.P8.Knock_CYL4_RTD", "-20 0", "DegBTDC"),
    LOG(Knock_CYL5_RTD, "PCM1.P8.Knock_CYL5_RTD", "-20 0", "DegBTDC"),
    LOG(Knock_CYL6_RTD, "PCM1.P8.Knock_CYL6_RTD", "-20 0", "DegBTDC"),
    LOG(Knock_CYL7_RTD, "PCM1.P8.Knock_CYL7_RTD", "-20 0", "DegBTDC"),
    LOG(Knock_CYL8_RTD, "PCM1.P8.Knock_CYL8_RTD", "-20 0", "DegBTDC"),
    LOG(EncoderFaultCount, "PCM1.P10.EncoderFaultCount", "0 50", "Num"),
    LOG(MIL, "PCM1.P10.MIL", "0 2", "On/Off"),
    LOG(DesiredGear, "PCM1.P10.DesiredGear", "0 10", "Gear"),
    LOG(ManualMode, "PCM1.P10.ManualMode", "0 2", "On/Off"),
    LOG(ShifterPosition, "PCM1.P10.ShifterPosition", "0 10", "Gear"),
    LOG(Calculated_Gear, "PCM1.P10.Calculated_Gear", "0 10", "Num"),
    LOG(OilTemp, "PCM1.P10.OilTemp", "0 350", "C"),
    LOG(TransTemp, "PCM1.P10.TransTemp", "0 350", "C"),
    LOG(RevLimiterActive, "PCM1.P11.RevLimiterActive", "0 2", "On/Off"),
    LOG(SlipPercent, "PCM1.P11.SlipPercent", "-100 100", "%"),
    LOG(WasteGatePressure, "PCM1.P11.WasteGatePressure", "0 100", "KPA"),
    LOG(ExhaustBP2, "PCM1.P11.ExhaustBackPressure2", "0 70", "KPA"),
    LOG(Oil_Pressure, "PCM1.P11.Oil_Pressure", "0 150", "KPA"),
    LOG(ETCDutyCycle, "PCM1.P11.ETCDutyCycle", "-100 100", "%"),
    LOG(ETCIterm, "PCM1.P11.ETCIterm", "-15 15", "Int"),
    LOG(DriveShaftRPMAllowed, "PCM1.P12.DriveShaftRPMAllowed", "0 10000", "RPM"),
    LOG(PrimaryCompensatedInjectorFlow, "PCM1.P12.PrimaryCompensatedInjectorFlow", "0 3000", "CC"),
    LOG(SecondaryCompensatedInjectorFlow, "PCM1.P12.SecondaryCompensatedInjectorFlow", "0 3000", "CC"),
    LOG(DriveShaft_RPM, "PCM1.P12.DriveShaft_RPM", "0 10000", "RPM"),
    LOG(EGT2_m, "PCM1.P13.EGT2", "0 2000", "C"),
    LOG(EGT, "PCM1.P13.EGT", "0 2000", "C"),
    LOG(Pressure_Ratio, "PCM1.P13.Pressure_Ratio", "0 5", "Ratio"),
    LOG(MassAirFlow, "PCM1.P13.MassAirFlow", "0 1000", "GM_SEC"),
    LOG(InectorPW1, "PCM1.P14.InjectorPW1", "0 50000", "MicroS"),
    LOG(InectorPW2, "PCM1.P14.InjectorPW2", "0 50000", "MicroS"),
    LOG(InectorPW3, "PCM1.P14.InjectorPW3", "0 50000", "MicroS"),
    LOG(InectorPW4, "PCM1.P14.InjectorPW4", "0 50000", "MicroS"),
    LOG(InectorPW5, "PCM1.P15.InjectorPW5", "0 50000", "MicroS"),
    LOG(InectorPW6, "PCM1.P15.InjectorPW6", "0 50000", "MicroS"),
    LOG(InectorPW7, "PCM1.P15.InjectorPW7", "0 50000", "MicroS"),
    LOG(InectorPW8, "PCM1.P15.InjectorPW8", "0 50000", "MicroS"),
    LOG(InectorPW9, "PCM1.P16.InjectorPW9", "0 50000", "MicroS"),
    LOG(InectorPW10, "PCM1.P16.InjectorPW10", "0 50000", "MicroS"),
    LOG(InectorPW11, "PCM1.P16.InjectorPW11", "0 50000", "MicroS"),
    LOG(InectorPW12, "PCM1.P16.InjectorPW12", "0 50000", "MicroS"),
    LOG(KnockEnergyCyl1, "PCM1.P17.KnockEnergyCyl1", "0 25000", "Energy"),
    LOG(KnockEnergyCyl2, "PCM1.P17.KnockEnergyCyl2", "0 25000", "Energy"),
    LOG(KnockEnergyCyl3, "PCM1.P17.KnockEnergyCyl3", "0 25000", "Energy"),
    LOG(KnockEnergyCyl4, "PCM1.P17.KnockEnergyCyl4", "0 25000", "Energy"),
    LOG(KnockEnergyCyl5, "PCM1.P18.KnockEnergyCyl5", "0 25000", "Energy"),
    LOG(KnockEnergyCyl6, "PCM1.P18.KnockEnergyCyl6", "0 25000", "Energy"),
    LOG(KnockEnergyCyl7, "PCM1.P18.KnockEnergyCyl7", "0 25000", "Energy"),
    LOG(KnockEnergyCyl8, "PCM1.P18.KnockEnergyCyl8", "0 25000", "Energy"),
    LOG(High_Low_Switch, "PCM1.P19.High_Low_Switch", "0 2", "On/Off"),
    LOG(EncoderState, "PCM1.P19.EncoderState", "0 10", "State"),
    LOG(TractionControlEnabled, "PCM1.P19.TractionControlEnabled", "0 2", "Enabled"),
    LOG(Stage1_Armed, "PCM1.P19.Stage1_Armed", "0 2", "On/Off"),
    LOG(Stage2_Armed, "PCM1.P19.Stage2_Armed", "0 2", "On/Off"),
    LOG(Stage3_Armed, "PCM1.P19.Stage3_Armed", "0 2", "On/Off"),
    LOG(Stage4_Armed, "PCM1.P19.Stage4_Armed", "0 2", "On/Off"),
    LOG(Primary_StoichSetpoint, "PCM1.P19.Primary_Stoich", "0 20", "AFR"),
    LOG(TCC, "PCM1.P20.TCC", "0 2", "On/Off"),
    LOG(Engine_HP_Potential, "PCM1.P20.Engine_HP_Potential", "0 1000", "HP"),
    LOG(EngineTorque, "PCM1.P22.EngineTorque", "0 1000", "FtLbs"),
    LOG(Fuel_Economy, "PCM1.P20.Fuel_Economy", "0 100", "MPG"),
    LOG(BrakePressure, "PCM1.P20.BrakePressure", "0 1500", "KPA"),
    LOG(Target_AFR, "PCM1.P20.Target_AFR", "0 20", "AFR"),
    LOG(High_CAM_Active, "PCM1.P5.High_CAM_Active", "0 1", "On/Off"),
    LOG(Knk_Win_Int1, "PCM1.P140.Knk_Win_Int1", "0 4294967295", "int"),
    LOG(Knk_Win_Int2, "PCM1.P140.Knk_Win_Int2", "0 4294967295", "int"),
    LOG(Knk_Win_Int3, "PCM1.P141.Knk_Win_Int3", "0 4294967295", "int"),
    LOG(Knk_Win_Int4, "PCM1.P141.Knk_Win_Int4", "0 4294967295", "int"),
    LOG(Knk_Win_Int5, "PCM1.P142.Knk_Win_Int5", "0 4294967295", "int"),
    LOG(Knk_Win_Int6, "PCM1.P142.Knk_Win_Int6", "0 4294967295", "int"),
    LOG(Knk_Win_Int7, "PCM1.P143.Knk_Win_Int7", "0 4294967295", "int"),
    LOG(Knk_Win_Int8, "PCM1.P143.Knk_Win_Int8", "0 4294967295", "int"),
    LOG(Ref_Win_Int1, "PCM1.P144.Ref_Win_Int1", "0 4294967295", "int"),
    LOG(Ref_Win_Int2, "PCM1.P144.Ref_Win_Int2", "0 4294967295", "int"),
    LOG(Ref_Win_Int3, "PCM2.P145.Ref_Win_Int3", "0 4294967295", "int"),
    LOG(Ref_Win_Int4, "PCM1.P145.Ref_Win_Int4", "0 4294967295", "int"),
    LOG(Ref_Win_Int5, "PCM1.P146.Ref_Win_Int5", "0 4294967295", "int"),
    LOG(Ref_Win_Int6, "PCM1.P146.Ref_Win_Int6", "0 4294967295", "int"),
    LOG(Ref_Win_Int7, "PCM1.P147.Ref_Win_Int7", "0 4294967295", "int"),
    LOG(Ref_Win_Int8, "PCM1.P147.Ref_Win_Int8", "0 4294967295", "int"),
    LOG(Launch_ControlBeginRPM, "PCM1.P22.Launch_ControlBeginRPM", "0 10000", "RPM"),
    LOG(Launch_ApproachRTD, "PCM1.P24.Launch_ApproachRTD", "-50 0", "Degrees"),
    LOG(Fuel_Level2, "PCM1.P25.FuelLevel_2", "0 100", "%"),
    LOG(Fuel_Level1, "PCM1.P25.FuelLevel_1", "0 100", "%"),
    LOG(Manifold_Surface_Temp, "PCM1.P25.Manifold_Surface_Temp", "0 300", "C"),
    LOG(Final_O2_Bank2, "PCM1.P25.Final_O2_Bank2", "0 2", "EQ"),
    LOG(Final_O2_Bank1, "PCM1.P25.Final_O2_Bank1", "0 2", "EQ"),
    LOG(EGT1, "PCM1.P148.EGT1_CAN", "0 2000", "C"),
    LOG(EGT2, "PCM1.P148.EGT2_CAN", "0 2000", "C"),
    LOG(EGT3, "PCM1.P148.EGT3_CAN", "0 2000", "C"),
    LOG(EGT4, "PCM1.P148.EGT4_CAN", "0 2000", "C"),
    LOG(EGT5, "PCM1.P149.EGT5_CAN", "0 2000", "C"),
    LOG(EGT6, "PCM1.P149.EGT6_CAN", "0 2000", "C"),
    LOG(EGT7, "PCM1.P149.EGT7_CAN", "0 2000", "C"),
    LOG(EGT8, "PCM1.P149.EGT8_CAN", "0 2000", "C"),
    LOG(InletPressure, "PCM1.P22.InletPressure", "0 200", "KPA"),
};

#undef LOG

constexpr size_t LOG_COLUMN_COUNT = 153;
static_assert(std::size(LOG_COLUMNS) == LOG_COLUMN_COUNT);

// The header's pieces 2 to 5, each ending in a newline: "," and the names joined by ",";
// "," and "Range::<range>, " for each column; "DateTime" and ",Value" for each column;
// "seconds" and "," with each unit.
enum LOG_PIECE_T { LOG_PIECE_NAMES, LOG_PIECE_RANGES, LOG_PIECE_VALUES, LOG_PIECE_UNITS };

// Writes the piece into out, at most `size` bytes and no terminator; the result is the
// piece's whole length, so a call with size 0 measures it.
constexpr size_t LogHeaderPiece(LOG_PIECE_T piece, char* out, size_t size)
{
    size_t n = 0;
    auto put = [&](const char* text) {
        for (; *text; text++, n++)
            if (n < size) out[n] = *text;
    };
    switch (piece) {
    case LOG_PIECE_NAMES:
        for (size_t i = 0; i < LOG_COLUMN_COUNT; i++) {
            put(",");
            put(LOG_COLUMNS[i].name);
        }
        break;
    case LOG_PIECE_RANGES:
        put(",");
        for (const LOG_COLUMN_T& c : LOG_COLUMNS) {
            put("Range::");
            put(c.range);
            put(", ");
        }
        break;
    case LOG_PIECE_VALUES:
        put("DateTime");
        for (size_t i = 0; i < LOG_COLUMN_COUNT; i++) put(",Value");
        break;
    case LOG_PIECE_UNITS:
        put("seconds");
        for (const LOG_COLUMN_T& c : LOG_COLUMNS) {
            put(",");
            put(c.unit);
        }
        break;
    }
    put("\n");
    return n;
}

static_assert(LogHeaderPiece(LOG_PIECE_NAMES, nullptr, 0) == sizeof(ConstParam_Velnor_Dorvik_V6c::Constant6_Value_e));
static_assert(LogHeaderPiece(LOG_PIECE_RANGES, nullptr, 0) == sizeof(ConstParam_Velnor_Dorvik_V6c::Constant6_Value_i));
static_assert(LogHeaderPiece(LOG_PIECE_VALUES, nullptr, 0) == sizeof(ConstParam_Velnor_Dorvik_V6c::Constant7_Value_f));
static_assert(LogHeaderPiece(LOG_PIECE_UNITS, nullptr, 0) == sizeof(ConstParam_Velnor_Dorvik_V6c::Constant7_Value_i));

// The four pieces, as the model's constant record holds them.
constexpr ConstParam_Velnor_Dorvik_V6c LogHeaderConstants(void)
{
    ConstParam_Velnor_Dorvik_V6c p{};
    LogHeaderPiece(LOG_PIECE_NAMES, p.Constant6_Value_e, sizeof(p.Constant6_Value_e));
    LogHeaderPiece(LOG_PIECE_RANGES, p.Constant6_Value_i, sizeof(p.Constant6_Value_i));
    LogHeaderPiece(LOG_PIECE_VALUES, p.Constant7_Value_f, sizeof(p.Constant7_Value_f));
    LogHeaderPiece(LOG_PIECE_UNITS, p.Constant7_Value_i, sizeof(p.Constant7_Value_i));
    return p;
}

// The value of a column (from 0, the column after the time stamp) in this moment's store,
// integers as doubles; 0 for a column outside the table.
real_T LogColumnValue(size_t column);
