// Every signal of the ECU's frames, decoded from bytes written out here by hand: once
// with a pattern that gives each field its own value, once all ones (widths and signs).
#include <gtest/gtest.h>

#include "can_fixture.h"

namespace {

TEST(CanSignals, Frame101)
{
    FrameAndPass(0x101, {0x80, 0x00, 0x00, 0x32, 0xFF, 0xFF, 0x5A, 0x2D});
    EXPECT_EQ(B.Differential_WheelSpeed, -32768);
    EXPECT_EQ(B.Differntial_WheelSpeed_Allowed, 50);
    EXPECT_EQ(B.TPS_g, 90);
    EXPECT_EQ(B.Primary_Injector_Duty, 45);

    FrameAndPass(0x101, ALL_ONES);
    EXPECT_EQ(B.Differential_WheelSpeed, -1);
    EXPECT_EQ(B.Differntial_WheelSpeed_Allowed, 65535);
    EXPECT_EQ(B.TPS_g, 255);
    EXPECT_EQ(B.Primary_Injector_Duty, 255);
}

TEST(CanSignals, Frame102)
{
    FrameAndPass(0x102, {0x1E, 0xFF, 0x64, 0x65, 0xEC, 0x32, 0x00, 0xB4});
    EXPECT_EQ(CANInputs.EBP1_PSI, 30);
    EXPECT_EQ(B.DrivenWheelSpeed, 100);
    EXPECT_EQ(B.NonDrivenWheelSpeed, 101);
    EXPECT_EQ(B.TCS_SPark_RTD, -20);
    EXPECT_EQ(B.WasteGate_Duty, 50);
    EXPECT_EQ(B.WasteGate_SetPoint, 180);

    FrameAndPass(0x102, ALL_ONES);
    EXPECT_EQ(CANInputs.EBP1_PSI, 255);
    EXPECT_EQ(B.DrivenWheelSpeed, 255);
    EXPECT_EQ(B.NonDrivenWheelSpeed, 255);
    EXPECT_EQ(B.TCS_SPark_RTD, -1);
    EXPECT_EQ(B.WasteGate_Duty, 255);
    EXPECT_EQ(B.WasteGate_SetPoint, 65535);
}

TEST(CanSignals, Frame103PressureAcrossThreeBytes)
{
    // 0xABCD: D5 low nibble 0xA, D6 0xBC, D7 high nibble 0xD; OnIdle 5 above it and
    // the four stage bits 0101 below it.
    FrameAndPass(0x103, {0x12, 0x34, 0x56, 0x78, 0x9A, 0x5A, 0xBC, 0xD5});
    EXPECT_EQ(B.TimeSinceRun, 0x1234);
    EXPECT_EQ(B.TPS2, 0x56);
    EXPECT_EQ(B.APP1, 0x78);
    EXPECT_EQ(B.APP2, 0x9A);
    EXPECT_EQ(B.OnIdle, 5);
    EXPECT_EQ(B.Transmission_Pressure, 0xABCD);
    EXPECT_EQ(B.Stage1_Engaged, 0);
    EXPECT_EQ(B.Stage2_Engaged, 1);
    EXPECT_EQ(B.Stage3_Engaged, 0);
    EXPECT_EQ(B.Stage4_Engaged, 1);

    FrameAndPass(0x103, ALL_ONES);
    EXPECT_EQ(B.TimeSinceRun, 65535);
    EXPECT_EQ(B.TPS2, 255);
    EXPECT_EQ(B.APP1, 255);
    EXPECT_EQ(B.APP2, 255);
    EXPECT_EQ(B.OnIdle, 15);
    EXPECT_EQ(B.Transmission_Pressure, 65535);
    EXPECT_EQ(B.Stage1_Engaged, 1);
    EXPECT_EQ(B.Stage2_Engaged, 1);
    EXPECT_EQ(B.Stage3_Engaged, 1);
    EXPECT_EQ(B.Stage4_Engaged, 1);
}

TEST(CanSignals, Frame104)
{
    // D2 bits 7 to 3 are not used.
    FrameAndPass(0x104, {0x01, 0xF4, 0xFD, 0x1B, 0x58, 0x03, 0xFF, 0x64});
    EXPECT_DOUBLE_EQ(B.Target_O2, 500 / 100.0);
    EXPECT_EQ(B.High_CAM_Active, 1);
    EXPECT_EQ(B.TractionControlActive, 0);
    EXPECT_EQ(B.Drivers_Information_Light, 1);
    EXPECT_EQ(B.Current_RPM_Limit, 7000);
    EXPECT_EQ(B.TwoStep_ADC, 1023);
    EXPECT_EQ(B.Secondary_Injector_Duty, 100);

    FrameAndPass(0x104, {0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00});
    EXPECT_EQ(B.High_CAM_Active, 0);
    EXPECT_EQ(B.TractionControlActive, 1);
    EXPECT_EQ(B.Drivers_Information_Light, 0);

    FrameAndPass(0x104, ALL_ONES);
    EXPECT_DOUBLE_EQ(B.Target_O2, 65535 / 100.0);
    EXPECT_EQ(B.High_CAM_Active, 1);
    EXPECT_EQ(B.TractionControlActive, 1);
    EXPECT_EQ(B.Drivers_Information_Light, 1);
    EXPECT_EQ(B.Current_RPM_Limit, 65535);
    EXPECT_EQ(B.TwoStep_ADC, 65535);
    EXPECT_EQ(B.Secondary_Injector_Duty, 255);
}

TEST(CanSignals, Frame105)
{
    FrameAndPass(0x105, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    EXPECT_EQ(B.Nitrous_Pressure1, 0x0102);
    EXPECT_EQ(B.Nitrous_Pressure2, 0x0304);
    EXPECT_EQ(B.Nitrous_Pressure3, 0x0506);
    EXPECT_EQ(B.Nitrous_Pressure4, 0x0708);

    FrameAndPass(0x105, ALL_ONES);
    EXPECT_EQ(B.Nitrous_Pressure1, 65535);
    EXPECT_EQ(B.Nitrous_Pressure4, 65535);
}

TEST(CanSignals, Frame106TurboSpeeds)
{
    FrameAndPass(0x106, {0x00, 0x01, 0x86, 0xA0, 0x80, 0x00, 0x00, 0x01});
    EXPECT_EQ(CANInputs.Turbo1_RPM, 100000);
    EXPECT_EQ(CANInputs.Turbo2_RPM, 2147483649.0);

    FrameAndPass(0x106, ALL_ONES);
    EXPECT_EQ(CANInputs.Turbo1_RPM, 4294967295.0);
    EXPECT_EQ(CANInputs.Turbo2_RPM, 4294967295.0);
}

TEST(CanSignals, Frame107KnockRetardIsSigned)
{
    FrameAndPass(0x107, {0x80, 0x81, 0xFE, 0x7F, 0x00, 0x01, 0xC0, 0x40});
    EXPECT_EQ(B.Knock_CYL1_RTD, -128);
    EXPECT_EQ(B.Knock_CYL2_RTD, -127);
    EXPECT_EQ(B.Knock_CYL3_RTD, -2);
    EXPECT_EQ(B.Knock_CYL4_RTD, 127);
    EXPECT_EQ(B.Knock_CYL5_RTD, 0);
    EXPECT_EQ(B.Knock_CYL6_RTD, 1);
    EXPECT_EQ(B.Knock_CYL7_RTD, -64);
    EXPECT_EQ(B.Knock_CYL8_RTD, 64);

    FrameAndPass(0x107, ALL_ONES);
    EXPECT_EQ(B.Knock_CYL1_RTD, -1);
    EXPECT_EQ(B.Knock_CYL8_RTD, -1);
}

TEST(CanSignals, Frame108)
{
    FrameAndPass(0x108, {0x1F, 0x40, 0x01, 0xF4, 0xFF, 0x38, 0x96, 0x64});
    EXPECT_EQ(B.RPM, 8000);
    EXPECT_DOUBLE_EQ(B.Launch_Time, 500 / 100.0);
    EXPECT_DOUBLE_EQ(B.Delta_TPS, -200 / 100.0);
    EXPECT_DOUBLE_EQ(B.O2Fuel_MultA, 150 / 100.0);
    EXPECT_DOUBLE_EQ(B.O2Fuel_MultB, 100 / 100.0);

    FrameAndPass(0x108, ALL_ONES);
    EXPECT_EQ(B.RPM, 65535);
    EXPECT_DOUBLE_EQ(B.Launch_Time, 65535 / 100.0);
    EXPECT_DOUBLE_EQ(B.Delta_TPS, -1 / 100.0);
    EXPECT_DOUBLE_EQ(B.O2Fuel_MultA, 255 / 100.0);
    EXPECT_DOUBLE_EQ(B.O2Fuel_MultB, 255 / 100.0);
}

TEST(CanSignals, Frame109FieldsAcrossByteBoundaries)
{
    // Start_Log 1, D0 bits 6-3 unused 0, EthanolContent 0xA5 over D0/D1, EncoderFaultCount
    // 0x3C over D1/D2, MIL 1, DesiredGear 6 over D2/D3, ManualMode 1, ShifterPosition 5,
    // Calculated_Gear 3.
    FrameAndPass(0x109, {0x85, 0x29, 0xE7, 0x6B, 0xFF, 0x38, 0x00, 0x64});
    EXPECT_EQ(B.Start_Log, 1);
    EXPECT_EQ(B.EthanolContent, 0xA5);
    EXPECT_EQ(B.EncoderFaultCount, 0x3C);
    EXPECT_EQ(B.MIL, 1);
    EXPECT_EQ(B.DesiredGear, 6);
    EXPECT_EQ(B.ManualMode, 1);
    EXPECT_EQ(B.ShifterPosition, 5);
    EXPECT_EQ(B.Calculated_Gear, 3);
    EXPECT_EQ(B.OilTemp, -200);
    EXPECT_EQ(B.TransTemp, 100);

    // The unused bits of D0 reach no signal.
    FrameAndPass(0x109, {0x78, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00});
    EXPECT_EQ(B.Start_Log, 0);
    EXPECT_EQ(B.EthanolContent, 0);

    FrameAndPass(0x109, ALL_ONES);
    EXPECT_EQ(B.Start_Log, 1);
    EXPECT_EQ(B.EthanolContent, 255);
    EXPECT_EQ(B.EncoderFaultCount, 255);
    EXPECT_EQ(B.MIL, 1);
    EXPECT_EQ(B.DesiredGear, 7);
    EXPECT_EQ(B.ManualMode, 1);
    EXPECT_EQ(B.ShifterPosition, 7);
    EXPECT_EQ(B.Calculated_Gear, 7);
    EXPECT_EQ(B.OilTemp, -1);
    EXPECT_EQ(B.TransTemp, -1);
}

TEST(CanSignals, Frame110)
{
    FrameAndPass(0x110, {0xAA, 0x11, 0x22, 0x33, 0x44, 0x55, 0x80, 0xFF});
    EXPECT_EQ(B.RevLimiterActive, 1);
    EXPECT_EQ(B.SlipPercent, 42);
    EXPECT_EQ(CANInputs.WasteGatePressure_PSI, 0x11);
    EXPECT_EQ(CANInputs.EBP2_PSI, 0x22);
    EXPECT_EQ(CANInputs.Radiator_PSI, 0x33);
    EXPECT_EQ(CANInputs.OilPress_PSI, 0x44);
    EXPECT_EQ(B.ETCDutyCycle, 0x55);
    EXPECT_EQ(B.ETCIterm, -128);

    FrameAndPass(0x110, ALL_ONES);
    EXPECT_EQ(B.RevLimiterActive, 1);
    EXPECT_EQ(B.SlipPercent, 127);
    EXPECT_EQ(CANInputs.WasteGatePressure_PSI, 255);
    EXPECT_EQ(CANInputs.EBP2_PSI, 255);
    EXPECT_EQ(CANInputs.Radiator_PSI, 255);
    EXPECT_EQ(CANInputs.OilPress_PSI, 255);
    EXPECT_EQ(B.ETCDutyCycle, 255);
    EXPECT_EQ(B.ETCIterm, -1);
}

TEST(CanSignals, Frames111And112)
{
    FrameAndPass(0x111, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    EXPECT_EQ(B.DriveShaftRPMAllowed, 0x0102);
    EXPECT_EQ(B.PrimaryCompensatedInjectorFlow, 0x0304);
    EXPECT_EQ(B.SecondaryCompensatedInjectorFlow, 0x0506);
    EXPECT_EQ(B.DriveShaft_RPM, 0x0708);

    FrameAndPass(0x112, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    EXPECT_EQ(B.EGT2_m, 0x0102);
    EXPECT_EQ(B.EGT, 0x0304);
    EXPECT_DOUBLE_EQ(B.Pressure_Ratio, 0x0506 / 100.0);
    EXPECT_EQ(B.MassAirFlow, 0x0708);

    FrameAndPass(0x111, ALL_ONES);
    FrameAndPass(0x112, ALL_ONES);
    EXPECT_EQ(B.DriveShaftRPMAllowed, 65535);
    EXPECT_EQ(B.DriveShaft_RPM, 65535);
    EXPECT_EQ(B.EGT2_m, 65535);
    EXPECT_DOUBLE_EQ(B.Pressure_Ratio, 65535 / 100.0);
}

TEST(CanSignals, InjectorPulseWidthsAreUnsigned16)
{
    static_assert(std::is_same_v<decltype(B.InectorPW1), uint16_T>);
    FrameAndPass(0x113, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    FrameAndPass(0x114, {0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18});
    FrameAndPass(0x115, {0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28});
    const uint16_T expected[12] = {0x0102, 0x0304, 0x0506, 0x0708, 0x1112, 0x1314,
                                   0x1516, 0x1718, 0x2122, 0x2324, 0x2526, 0x2728};
    const uint16_T got[12] = {B.InectorPW1, B.InectorPW2, B.InectorPW3,  B.InectorPW4,  B.InectorPW5,  B.InectorPW6,
                              B.InectorPW7, B.InectorPW8, B.InectorPW9, B.InectorPW10, B.InectorPW11, B.InectorPW12};
    for (int i = 0; i < 12; i++) EXPECT_EQ(got[i], expected[i]) << "InectorPW" << i + 1;

    FrameAndPass(0x115, ALL_ONES);
    EXPECT_EQ(B.InectorPW12, 65535);
}

TEST(CanSignals, KnockEnergiesAreUnsigned16)
{
    static_assert(std::is_same_v<decltype(B.KnockEnergyCyl1), uint16_T>);
    FrameAndPass(0x116, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    FrameAndPass(0x117, {0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18});
    const uint16_T expected[8] = {0x0102, 0x0304, 0x0506, 0x0708, 0x1112, 0x1314, 0x1516, 0x1718};
    const uint16_T got[8] = {B.KnockEnergyCyl1, B.KnockEnergyCyl2, B.KnockEnergyCyl3, B.KnockEnergyCyl4,
                             B.KnockEnergyCyl5, B.KnockEnergyCyl6, B.KnockEnergyCyl7, B.KnockEnergyCyl8};
    for (int i = 0; i < 8; i++) EXPECT_EQ(got[i], expected[i]) << "KnockEnergyCyl" << i + 1;

    FrameAndPass(0x117, ALL_ONES);
    EXPECT_EQ(B.KnockEnergyCyl8, 65535);
}

TEST(CanSignals, Frame118FieldsAcrossByteBoundaries)
{
    // High_Low_Switch 1, EncoderState 22, TractionControlEnabled 0, IBoostPosition 19
    // over D4/D5, then the armed bits 1011.
    FrameAndPass(0x118, {0x05, 0xBE, 0x05, 0x14, 0xD9, 0x3B, 0x5A, 0x28});
    EXPECT_DOUBLE_EQ(B.Primary_StoichSetpoint, 1470 / 100.0);
    EXPECT_DOUBLE_EQ(B.BatteryVolts, 1300 / 100.0);
    EXPECT_EQ(B.High_Low_Switch, 1);
    EXPECT_EQ(B.EncoderState, 22);
    EXPECT_EQ(B.TractionControlEnabled, 0);
    EXPECT_EQ(B.IBoostPosition, 19);
    EXPECT_EQ(B.Stage1_Armed, 1);
    EXPECT_EQ(B.Stage2_Armed, 0);
    EXPECT_EQ(B.Stage3_Armed, 1);
    EXPECT_EQ(B.Stage4_Armed, 1);
    EXPECT_EQ(B.Coolant_Temp, 90);
    EXPECT_EQ(B.Inlet_Air_Temp, 40);

    FrameAndPass(0x118, ALL_ONES);
    EXPECT_DOUBLE_EQ(B.Primary_StoichSetpoint, 65535 / 100.0);
    EXPECT_DOUBLE_EQ(B.BatteryVolts, 65535 / 100.0);
    EXPECT_EQ(B.High_Low_Switch, 1);
    EXPECT_EQ(B.EncoderState, 31);
    EXPECT_EQ(B.TractionControlEnabled, 1);
    EXPECT_EQ(B.IBoostPosition, 31);
    EXPECT_EQ(B.Stage1_Armed, 1);
    EXPECT_EQ(B.Stage4_Armed, 1);
    EXPECT_EQ(B.Coolant_Temp, 255);
    EXPECT_EQ(B.Inlet_Air_Temp, 255);
}

TEST(CanSignals, Frame119)
{
    FrameAndPass(0x119, {0x01, 0x02, 0x58, 0x1E, 0x0F, 0xA0, 0x05, 0xBE});
    EXPECT_EQ(B.TCC, 1);
    EXPECT_EQ(B.Engine_HP_Potential, 600);
    EXPECT_EQ(B.Fuel_Economy, 30);
    EXPECT_EQ(B.BrakePressure, 4000);
    EXPECT_DOUBLE_EQ(B.Target_AFR, 1470 / 100.0);

    // Only bit 0 of D0 is the converter clutch.
    FrameAndPass(0x119, {0xFE, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00});
    EXPECT_EQ(B.TCC, 0);

    FrameAndPass(0x119, ALL_ONES);
    EXPECT_EQ(B.TCC, 1);
    EXPECT_EQ(B.Engine_HP_Potential, 65535);
    EXPECT_EQ(B.Fuel_Economy, 255);
    EXPECT_EQ(B.BrakePressure, 65535);
    EXPECT_DOUBLE_EQ(B.Target_AFR, 65535 / 100.0);
}

TEST(CanSignals, Frame120CamPhasesAreSigned)
{
    FrameAndPass(0x120, {0xFF, 0x38, 0x00, 0xC8, 0x80, 0x00, 0x7F, 0xFF});
    EXPECT_EQ(B.VVT2_Setpoint, -200);
    EXPECT_EQ(B.VVT1_Setpoint, 200);
    EXPECT_EQ(B.Cam2PhaseRelative, -32768);
    EXPECT_EQ(B.Cam1PhaseRelative, 32767);

    FrameAndPass(0x120, ALL_ONES);
    EXPECT_EQ(B.VVT2_Setpoint, -1);
    EXPECT_EQ(B.Cam1PhaseRelative, -1);
}

TEST(CanSignals, Frame125)
{
    FrameAndPass(0x125, {0xFF, 0x9C, 0x05, 0xBE, 0x04, 0xB0, 0x00, 0x65});
    EXPECT_DOUBLE_EQ(B.Spark_Advance_Log, -100 / 100.0);
    EXPECT_DOUBLE_EQ(B.Final_AFR1, 1470 / 100.0);
    EXPECT_DOUBLE_EQ(B.Final_AFR2, 1200 / 100.0);
    EXPECT_EQ(B.MAP_p, 101);

    FrameAndPass(0x125, ALL_ONES);
    EXPECT_DOUBLE_EQ(B.Spark_Advance_Log, -1 / 100.0);
    EXPECT_DOUBLE_EQ(B.Final_AFR1, 65535 / 100.0);
    EXPECT_DOUBLE_EQ(B.Final_AFR2, 65535 / 100.0);
    EXPECT_EQ(B.MAP_p, 65535);
}

TEST(CanSignals, Frames126And127HaveOffsets)
{
    // 32000 / 500 - 64 is level; 0 is the bottom of the range.
    FrameAndPass(0x126, {0x7D, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00});
    EXPECT_DOUBLE_EQ(B.X_Axis_Degrees, 0);
    EXPECT_DOUBLE_EQ(B.Y_Axis_Degrees, -64);
    FrameAndPass(0x127, {0x01, 0x90, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00});
    EXPECT_DOUBLE_EQ(B.X_Axis_AccelG, 0);
    EXPECT_DOUBLE_EQ(B.Y_Axis_AccelG, -4);

    FrameAndPass(0x126, ALL_ONES);
    FrameAndPass(0x127, ALL_ONES);
    EXPECT_DOUBLE_EQ(B.X_Axis_Degrees, 65535 / 500.0 - 64);
    EXPECT_DOUBLE_EQ(B.Y_Axis_Degrees, 65535 / 500.0 - 64);
    EXPECT_DOUBLE_EQ(B.X_Axis_AccelG, 65535 / 100.0 - 4);
    EXPECT_DOUBLE_EQ(B.Y_Axis_AccelG, 65535 / 100.0 - 4);
}

TEST(CanSignals, Frames161To162)
{
    FrameAndPass(0x161, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
    EXPECT_EQ(B.InletPressure, 0x0102);
    EXPECT_EQ(B.Launch_ControlBeginRPM, 0x0304);
    EXPECT_EQ(B.EngineTorque, 0x0506);
    EXPECT_EQ(CANInputs.Speedo, 0x0708);
    FrameAndPass(0x162, {0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18});
    EXPECT_EQ(B.Primary_Fuel_Pressure, 0x1112);
    EXPECT_EQ(B.Secondary_Fuel_Pressure, 0x1314);
    EXPECT_EQ(B.ExhaustBP, 0x1516);
    EXPECT_EQ(B.ExhaustBP2, 0x1718);

    FrameAndPass(0x161, ALL_ONES);
    FrameAndPass(0x162, ALL_ONES);
    EXPECT_EQ(B.EngineTorque, 65535);
    EXPECT_EQ(CANInputs.Speedo, 65535);
    EXPECT_EQ(B.ExhaustBP2, 65535);
}

TEST(CanSignals, Frame163LaunchApproachIsUnsigned)
{
    FrameAndPass(0x163, {0xFF, 0xF6, 0x01, 0x2C, 0x00, 0x96, 0x00, 0xC8});
    EXPECT_EQ(B.Launch_ApproachRTD, 246);
    EXPECT_EQ(B.Oil_Pressure, 300);
    EXPECT_EQ(B.Radiator_Pressure, 150);
    EXPECT_EQ(B.WasteGatePressure, 200);

    FrameAndPass(0x163, ALL_ONES);
    EXPECT_EQ(B.Launch_ApproachRTD, 255);
    EXPECT_EQ(B.Oil_Pressure, 65535);
    EXPECT_EQ(B.Radiator_Pressure, 65535);
    EXPECT_EQ(B.WasteGatePressure, 65535);
}

TEST(CanSignals, Frame164)
{
    FrameAndPass(0x164, {0x32, 0x4B, 0xFF, 0xD8, 0x00, 0x64, 0x00, 0xC8});
    EXPECT_EQ(B.Fuel_Level2, 50);
    EXPECT_EQ(B.Fuel_Level1, 75);
    EXPECT_EQ(B.Manifold_Surface_Temp, -40);
    EXPECT_DOUBLE_EQ(B.Final_O2_Bank2, 100 / 100.0);
    EXPECT_DOUBLE_EQ(B.Final_O2_Bank1, 200 / 100.0);

    FrameAndPass(0x164, ALL_ONES);
    EXPECT_EQ(B.Fuel_Level2, 255);
    EXPECT_EQ(B.Fuel_Level1, 255);
    EXPECT_EQ(B.Manifold_Surface_Temp, -1);
    EXPECT_DOUBLE_EQ(B.Final_O2_Bank2, 65535 / 100.0);
    EXPECT_DOUBLE_EQ(B.Final_O2_Bank1, 65535 / 100.0);
}

TEST(CanSignals, KnockWindowIntegralsAreUnsigned32)
{
    static_assert(std::is_same_v<decltype(B.Knk_Win_Int1), uint32_T>);
    static_assert(std::is_same_v<decltype(B.Ref_Win_Int8), uint32_T>);
    // Each frame: the top bit alone in the first word, a counting pattern in the second.
    for (uint32_T id = 0x140; id <= 0x147; id++)
        FrameAndPass(id, {0x80, 0x00, 0x00, (uint8_T)id, 0x12, 0x34, 0x56, (uint8_T)id});
    const uint32_T first[8] = {B.Knk_Win_Int1, B.Knk_Win_Int3, B.Knk_Win_Int5, B.Knk_Win_Int7,
                               B.Ref_Win_Int1, B.Ref_Win_Int3, B.Ref_Win_Int5, B.Ref_Win_Int7};
    const uint32_T second[8] = {B.Knk_Win_Int2, B.Knk_Win_Int4, B.Knk_Win_Int6, B.Knk_Win_Int8,
                                B.Ref_Win_Int2, B.Ref_Win_Int4, B.Ref_Win_Int6, B.Ref_Win_Int8};
    for (uint32_T i = 0; i < 8; i++) {
        const uint32_T id = 0x140 + i;
        EXPECT_EQ(first[i], 0x80000000u | (id & 0xFF)) << std::hex << id;
        EXPECT_EQ(second[i], 0x12345600u | (id & 0xFF)) << std::hex << id;
    }

    FrameAndPass(0x147, ALL_ONES);
    EXPECT_EQ(B.Ref_Win_Int7, 0xFFFFFFFFu);
    EXPECT_EQ(B.Ref_Win_Int8, 0xFFFFFFFFu);
}

TEST(CanSignals, ExhaustTemperaturesInTenths)
{
    FrameAndPass(0x148, {0x27, 0x10, 0x00, 0x01, 0x03, 0xE8, 0x1F, 0x40});
    FrameAndPass(0x149, {0x00, 0x00, 0x00, 0x0A, 0x11, 0x94, 0x23, 0x28});
    EXPECT_DOUBLE_EQ(B.EGT1, 10000 / 10.0);
    EXPECT_DOUBLE_EQ(B.EGT2, 1 / 10.0);
    EXPECT_DOUBLE_EQ(B.EGT3, 1000 / 10.0);
    EXPECT_DOUBLE_EQ(B.EGT4, 8000 / 10.0);
    EXPECT_DOUBLE_EQ(B.EGT5, 0);
    EXPECT_DOUBLE_EQ(B.EGT6, 10 / 10.0);
    EXPECT_DOUBLE_EQ(B.EGT7, 4500 / 10.0);
    EXPECT_DOUBLE_EQ(B.EGT8, 9000 / 10.0);

    FrameAndPass(0x148, ALL_ONES);
    EXPECT_DOUBLE_EQ(B.EGT1, 65535 / 10.0);
    EXPECT_DOUBLE_EQ(B.EGT4, 65535 / 10.0);
}

// Port 2: little-endian, and only while the throttle of the pass before is above 70 %.
TEST(CanSignals, Port2FrameIsLittleEndianAndGatedByThrottle)
{
    const BYTES_T frame = {0xEE, 0xEE, 0xEE, 0x10, 0x27, 0x00, 0x10, 0xEE};
    RAMVariables.TPS = 71;
    FramePort2(0x130, frame);
    Pass();
    EXPECT_DOUBLE_EQ(CANInputs.O2SensorTemp2, 0x2710 / 42.6657564638621);
    EXPECT_DOUBLE_EQ(CANInputs.Lambda2, 0x1000 / 4098.360655737705);

    RAMVariables.TPS = 70;
    Pass();
    EXPECT_EQ(CANInputs.O2SensorTemp2, 0);
    EXPECT_EQ(CANInputs.Lambda2, 0);
    EXPECT_EQ(CANFrameAge(0x130), 1) << "the frame still ages while its values count as 0";

    // The same id on port 1 is nothing of the dash's.
    RAMVariables.TPS = 71;
    Frame(0x130, {0, 0, 0, 0x01, 0x00, 0x01, 0x00, 0});
    Pass();
    EXPECT_DOUBLE_EQ(CANInputs.O2SensorTemp2, 0x2710 / 42.6657564638621);
    RAMVariables.TPS = 0;
}

TEST(CanSignals, IdentityTexts)
{
    FrameAndPass(0x123, {'S', 'N', '1', '2', '3', '4', '5', '6'});
    FrameAndPass(0x124, {'P', 'N', '-', '9', '8', '7', '6', '5'});
    EXPECT_STREQ(CANText_SerialNumber.string, "SN123456");
    EXPECT_STREQ(CANText_PartNumber.string, "PN-98765");

    // The two halves of the firmware version come one frame at a time, D0 telling which.
    FrameAndPass(0x122, {0, 'V', '1', '.', '2', '.', '3', '-'});
    FrameAndPass(0x122, {5, 'b', 'e', 't', 'a', '.', '4', '2'});
    EXPECT_STREQ(CANText_FirmwareFirst.string, "V1.2.3-");
    EXPECT_STREQ(CANText_FirmwareSecond.string, "beta.42");
    EXPECT_STREQ(CANText_FirmwareVersion.string, "V1.2.3-beta.42");

    // A shorter first half ends at its own terminator.
    FrameAndPass(0x122, {0, 'V', '2', 0, 'x', 'x', 'x', 'x'});
    EXPECT_STREQ(CANText_FirmwareVersion.string, "V2beta.42");
}

}  // namespace
