// The fault table: each row lit by its own bit of a fault frame, written out here with
// the text the screen must show; the count, the time-out of the fault frames, and the
// engine and valet warnings.
#include "fault_table.h"
#include "foreground_fixture.h"

namespace {

struct FAULT_CASE_T {
    uint32_T frame;
    uint8_T byte;
    uint8_T mask;
    const char* text;
};
// Row by row, in the order of the fault screen.
const FAULT_CASE_T m_rows[] = {
    {0x121, 0, 0x80, "APP1AdaptHiMax"},
    {0x121, 0, 0x40, "APP1AdaptHiMin"},
    {0x121, 0, 0x20, "APP1AdaptLoMax"},
    {0x121, 0, 0x10, "APP1AdaptLoMin"},
    {0x121, 0, 0x08, "APP1RangeHigh"},
    {0x121, 0, 0x04, "APP1RangeLow"},
    {0x121, 0, 0x02, "APP2AdaptHiMax"},
    {0x121, 0, 0x01, "APP2AdaptHiMin"},
    {0x121, 1, 0x80, "APP2AdaptLoMax"},
    {0x121, 1, 0x40, "APP2AdaptLoMin"},
    {0x121, 1, 0x20, "APP2RangeHigh"},
    {0x121, 1, 0x10, "APP2RangeLow"},
    {0x121, 1, 0x08, "APP SENSORS CONFLICT"},
    {0x121, 1, 0x04, "AutoCrankFailed"},
    {0x121, 1, 0x02, "BOOST LIMIT EXCEEDED"},
    {0x121, 1, 0x01, "Brake_PressureRangeHigh"},
    {0x121, 2, 0x80, "Brake_PressureRangeLow"},
    {0x121, 2, 0x40, "CAN_Wideband1_Open"},
    {0x121, 2, 0x20, "CAMEDGESFAULT"},
    {0x121, 2, 0x10, "CAMSYNCFAULT"},
    {0x121, 2, 0x08, "CRANKEDGESFAULT"},
    {0x121, 2, 0x04, "CRANKSYNCFAULT"},
    {0x121, 2, 0x02, "CruiseSwich1"},
    {0x121, 2, 0x01, "CruiseSwich2"},
    {0x121, 3, 0x80, "CruiseSwich3"},
    {0x121, 3, 0x40, "CruiseSwich4"},
    {0x121, 3, 0x20, "CruiseSwich5"},
    {0x121, 3, 0x10, "DECELFUELCUT ENABLED"},
    {0x121, 3, 0x08, "DIFFERENTIALWHEELSPEED EXCEEDED"},
    {0x121, 3, 0x04, "DRIVESHAFTRPMLIMIT EXCEEDED"},
    {0x121, 3, 0x02, "ECTOVERTEMPFAULT"},
    {0x121, 3, 0x01, "ECTRangeHigh"},
    {0x121, 4, 0x80, "ECTRangeLow"},
    {0x121, 4, 0x40, "EGT_1RangeHigh"},
    {0x121, 4, 0x20, "EGT_1RangeLow"},
    {0x121, 4, 0x10, "EGT_2RangeHigh"},
    {0x121, 4, 0x08, "EGT_2RangeLow"},
    {0x121, 4, 0x04, "ETCSpringTest"},
    {0x121, 4, 0x02, "ETC OPEN FAULT"},
    {0x121, 4, 0x01, "ETC STICKING"},
    {0x121, 5, 0x80, "EXT_O2_1RangeHigh"},
    {0x121, 5, 0x40, "EXT_O2_1RangeLow"},
    {0x121, 5, 0x20, "EXT_O2_2RangeHigh"},
    {0x121, 5, 0x10, "EXT_O2_2RangeLow"},
    {0x121, 5, 0x08, "ENGINEOVERSPEED"},
    {0x121, 5, 0x04, "ETHANOL CONTENT LOW FAULT"},
    {0x121, 5, 0x02, "ExhaustBP2RangeHigh"},
    {0x121, 5, 0x01, "ExhaustBP2RangeLow"},
    {0x121, 6, 0x80, "ExhaustBPRangeHigh"},
    {0x121, 6, 0x40, "ExhaustBPRangeLow"},
    {0x121, 6, 0x20, "ExhautBP_Variance_Exceeded"},
    {0x121, 6, 0x10, "FlexFuelRangeHigh"},
    {0x121, 6, 0x08, "FlexFuelRangeLow"},
    {0x121, 6, 0x04, "Fuel_Cut_Active"},
    {0x121, 6, 0x02, "HB1FAULT STEPPER"},
    {0x121, 6, 0x01, "HB2FAULT STEPPER"},
    {0x121, 7, 0x80, "HBRIDGEFAULT ETC"},
    {0x121, 7, 0x40, "High_LowSwitch_Active"},
    {0x121, 7, 0x20, "IATRangeHigh"},
    {0x121, 7, 0x10, "IATRangeLow"},
    {0x121, 7, 0x08, "IAT IR FAULT"},
    {0x121, 7, 0x04, "I_BoostRangeHigh"},
    {0x121, 7, 0x02, "I_BoostRangeLow"},
    {0x121, 7, 0x01, "INCREASINGFAULTCOUNTS"},
    {0x132, 0, 0x80, "InjectorTestTimeExceeded"},
    {0x132, 0, 0x40, "KNOCKSENSORFAULT"},
    {0x132, 0, 0x20, "Knock_Control_Active"},
    {0x132, 0, 0x10, "MAFRangeHigh"},
    {0x132, 0, 0x08, "MAFRangeLow"},
    {0x132, 0, 0x04, "MAPRangeHigh"},
    {0x132, 0, 0x02, "MAPRangeLow"},
    {0x132, 0, 0x01, "MAPTimeRangeHigh"},
    {0x132, 1, 0x80, "MAPTimeRangeLow"},
    {0x132, 1, 0x40, "MAP IR HI"},
    {0x132, 1, 0x20, "MAP IR LO"},
    {0x132, 1, 0x10, "MAP STICKING"},
    {0x132, 1, 0x08, "Maf_VoltsRangeHigh"},
    {0x132, 1, 0x04, "Maf_VoltsRangeLow"},
    {0x132, 1, 0x02, "N2O BOTTLE1PRESSURE LIMITEXCEEDED"},
    {0x132, 1, 0x01, "N2O BOTTLE2PRESSURE LIMITEXCEEDED"},
    {0x132, 2, 0x80, "N2O BOTTLE3PRESSURE LIMITEXCEEDED"},
    {0x132, 2, 0x40, "N2O BOTTLE4PRESSURE LIMITEXCEEDED"},
    {0x132, 2, 0x20, "N2O_Bottle_Pressure1RangeHigh"},
    {0x132, 2, 0x10, "N2O_Bottle_Pressure1RangeLow"},
    {0x132, 2, 0x08, "N2O_Bottle_Pressure2RangeHigh"},
    {0x132, 2, 0x04, "N2O_Bottle_Pressure2RangeLow"},
    {0x132, 2, 0x02, "N2O_Bottle_Pressure3RangeHigh"},
    {0x132, 2, 0x01, "N2O_Bottle_Pressure3RangeLow"},
    {0x132, 3, 0x80, "N2O_Bottle_Pressure4RangeHigh"},
    {0x132, 3, 0x40, "N2O_Bottle_Pressure4RangeLow"},
    {0x132, 3, 0x20, "NITROUSARMED"},
    {0x132, 3, 0x10, "NITROUSTRIGGERED"},
    {0x132, 3, 0x08, "O2FailedLeanA"},
    {0x132, 3, 0x04, "O2FailedLeanB"},
    {0x132, 3, 0x02, "O2FailedRichA"},
    {0x132, 3, 0x01, "O2FailedRichB"},
    {0x132, 4, 0x80, "O2 A TARGET VARIANCE EQ EXCEEDED"},
    {0x132, 4, 0x40, "O2 B TARGET VARIANCE EQ EXCEEDED"},
    {0x132, 4, 0x20, "O2 LEAN LIMIT EXCEEDED"},
    {0x132, 4, 0x10, "OIL PRESS SENSORFAULTHIGH"},
    {0x132, 4, 0x08, "OIL PRESS SENSORFAULTLOW"},
    {0x132, 4, 0x04, "OilTempRangeHigh"},
    {0x132, 4, 0x02, "OilTempRangeLow"},
    {0x132, 4, 0x01, "OIL PRESSURE LOW"},
    {0x132, 5, 0x80, "OVERREVLIMITACTION"},
    {0x132, 5, 0x40, "PRESSURERATIO POWERLIMIT EXCEEDED"},
    {0x132, 5, 0x20, "Primary_FuelPressureRangeHigh"},
    {0x132, 5, 0x10, "Primary_FuelPressureRangeLow"},
    {0x132, 5, 0x08, "PRIMARY FUELPRESSURE VARIANCE"},
    {0x132, 5, 0x04, "PRIMARY INJECTOR DUTYLIMIT EXCEEDED"},
    {0x132, 5, 0x02, "Radiator_PressureRangeHigh"},
    {0x132, 5, 0x01, "Radiator_PressureRangeLow"},
    {0x132, 6, 0x80, "RADIATOR PRESSURE LIMIT EXCEEDED"},
    {0x132, 6, 0x40, "ROLLING LIMITER ACTIVE"},
    {0x132, 6, 0x20, "Secondary_FuelPressureRangeHigh"},
    {0x132, 6, 0x10, "Secondary_FuelPressureRangeLow"},
    {0x132, 6, 0x08, "SECONDARY FUELPRESSURE VARIANCE"},
    {0x132, 6, 0x04, "SECONDARY INJECTOR DUTYLIMIT EXCEEDED"},
    {0x132, 6, 0x02, "SensVoltRangeHigh"},
    {0x132, 6, 0x01, "SensVoltRangeLow"},
    {0x132, 7, 0x80, "STRAINGAUGECUT"},
    {0x132, 7, 0x40, "SysVoltRangeHigh"},
    {0x132, 7, 0x20, "SysVoltRangeLow"},
    {0x132, 7, 0x10, "TPS1AdaptHiMax"},
    {0x132, 7, 0x08, "TPS1AdaptHiMin"},
    {0x132, 7, 0x04, "TPS1AdaptLoMax"},
    {0x132, 7, 0x02, "TPS1AdaptLoMin"},
    {0x132, 7, 0x01, "TPS1RangeHigh"},
    {0x133, 0, 0x80, "TPS1RangeLow"},
    {0x133, 0, 0x40, "TPS2AdaptHiMax"},
    {0x133, 0, 0x20, "TPS2AdaptHiMin"},
    {0x133, 0, 0x10, "TPS2AdaptLoMax"},
    {0x133, 0, 0x08, "TPS2AdaptLoMin"},
    {0x133, 0, 0x04, "TPS2RangeHigh"},
    {0x133, 0, 0x02, "TPS2RangeLow"},
    {0x133, 0, 0x01, "TTC_RangeHigh"},
    {0x133, 1, 0x80, "TTC_RangeLow"},
    {0x133, 1, 0x40, "TRACTIONCONTROL SWITCH"},
    {0x133, 1, 0x20, "TransTempRangeHigh"},
    {0x133, 1, 0x10, "TransTempRangeLow"},
    {0x133, 1, 0x08, "Trans_Pump_PressureRangeHigh"},
    {0x133, 1, 0x04, "Trans_Pump_PressureRangeLow"},
    {0x133, 1, 0x02, "TURBO SPEED1 LIMIT EXCEEDED"},
    {0x133, 1, 0x01, "TURBO SPEED2 LIMIT EXCEEDED"},
    {0x133, 2, 0x80, "UEGO1_RangeHigh"},
    {0x133, 2, 0x40, "UEGO1_RangeLow"},
    {0x133, 2, 0x20, "UEGO1_UR_RangeHigh"},
    {0x133, 2, 0x10, "UEGO1_UR_RangeLow"},
    {0x133, 2, 0x08, "UEGO2_RangeHigh"},
    {0x133, 2, 0x04, "UEGO2_RangeLow"},
    {0x133, 2, 0x02, "UEGO2_UR_RangeHigh"},
    {0x133, 2, 0x01, "UEGO2_UR_RangeLow"},
    {0x133, 3, 0x80, "VVT1NoRegionFound"},
    {0x133, 3, 0x40, "VVT2NoRegionFound"},
    {0x133, 3, 0x20, "VALET MODE"},
    {0x133, 3, 0x10, "VALET MODE 2"},
    {0x133, 3, 0x08, "Valet_Speed_Limit_Exceeded"},
    {0x133, 3, 0x04, "Vehicle_Speed_Limit_Exceeded"},
    {0x133, 3, 0x02, "WasteGatePressureRangeHigh"},
    {0x133, 3, 0x01, "WasteGatePressureRangeLow"},
    {0x133, 4, 0x80, "Y_AxisAccel_Exceeded"},
    {0x133, 4, 0x40, "Y_AxisLift_Exceeded"},
    {0x133, 4, 0x20, "CrankCamPhase Fault"},
    {0x133, 4, 0x10, "EngineBayTempRangeHigh"},
    {0x133, 4, 0x08, "EngineBayTempRangeLow"},
    {0x133, 4, 0x04, "AC_PressureRangeHigh"},
    {0x133, 4, 0x02, "AC_PressureRangeLow"},
    {0x133, 4, 0x01, "BaroPressureRangeHigh"},
    {0x133, 7, 0x10, "Inlet_PressureRangeHigh"},
    {0x133, 7, 0x08, "Inlet_PressureRangeLow"},
    {0x133, 7, 0x04, "MSTRangeHigh"},
    {0x133, 7, 0x02, "MSTRangeLow"},
    {0x133, 7, 0x01, "TransmissionTempFault"},
    {0x133, 6, 0x10, "EGT_HighTemp_Exceeded"},
    {0x133, 5, 0x80, "BaroPressureRangeLow"},
    {0x133, 5, 0x40, "CAN_Wideband2_Open"},
    {0x133, 5, 0x10, "EGT1_Variance_Exceeded"},
    {0x133, 5, 0x08, "EGT2_Variance_Exceeded"},
    {0x133, 5, 0x04, "EGT3_Variance_Exceeded"},
    {0x133, 5, 0x02, "EGT4_Variance_Exceeded"},
    {0x133, 5, 0x01, "EGT5_Variance_Exceeded"},
    {0x133, 6, 0x80, "EGT6_Variance_Exceeded"},
    {0x133, 6, 0x40, "EGT7_Variance_Exceeded"},
    {0x133, 6, 0x20, "EGT8_Variance_Exceeded"},
    {0x133, 6, 0x08, "FuelTank_PressureRangeHigh"},
    {0x133, 6, 0x04, "FuelTank_PressureRangeLow"},
    {0x133, 6, 0x02, "Fuel_Level1RangeHigh"},
    {0x133, 6, 0x01, "Fuel_Level1RangeLow"},
    {0x133, 7, 0x80, "Fuel_Level2RangeHigh"},
    {0x133, 7, 0x40, "Fuel_Level2RangeLow"},
    {0x133, 7, 0x20, "Fuel_Tank_Purge_Active"},
};

void ClearFaultFrames()
{
    for (uint32_T id : {0x121u, 0x132u, 0x133u}) Frame(id, {});
}

TEST_F(Foreground, EachFaultBitLightsItsOwnRowWithItsText)
{
    ASSERT_EQ(std::size(m_rows), FAULT_ROW_COUNT);
    for (size_t row = 0; row < FAULT_ROW_COUNT; row++) {
        const FAULT_CASE_T& c = m_rows[row];
        ClearFaultFrames();
        BYTES_T data = {};
        data[c.byte] = c.mask;
        Frame(c.frame, data);
        Pass();
        EXPECT_EQ(FaultState(row), 1.0) << "row " << row;
        EXPECT_EQ(FaultCount(), 1.0) << "row " << row;
        ASSERT_NE(FaultText(row), nullptr);
        EXPECT_STREQ(FaultText(row)->string, c.text) << "row " << row;
        EXPECT_EQ(B.Message[row], FaultText(row)) << "row " << row;
    }
    ClearFaultFrames();
    Pass();
    EXPECT_EQ(FaultCount(), 0.0);
    EXPECT_EQ(FaultText(FAULT_ROW_COUNT), nullptr);
    EXPECT_EQ(FaultState(FAULT_ROW_COUNT), 0.0);
}

TEST_F(Foreground, FaultCountAndTheUnusedBit)
{
    // 0x132 D4.0: the screen says so in words, not by the flag's name.
    Frame(0x132, {0, 0, 0, 0, 0x01, 0, 0, 0});
    Pass();
    EXPECT_EQ(FaultCount(), 1.0);
    EXPECT_STREQ(FaultText(103)->string, "OIL PRESSURE LOW");
    EXPECT_EQ(B.Oil_Pressure_Low, 1.0);

    // 0x133 D5.5 has no row.
    ClearFaultFrames();
    Frame(0x133, {0, 0, 0, 0, 0, 0x20, 0, 0});
    Pass();
    EXPECT_EQ(FaultCount(), 0.0);

    for (uint32_T id : {0x121u, 0x132u, 0x133u}) Frame(id, ALL_ONES);
    Pass();
    EXPECT_EQ(FaultCount(), 191.0);
    EXPECT_EQ(Velnor_Dorvik_V6c_ConstB.Width, 191.0);
}

TEST_F(Foreground, OnlyTheAgeOf0x121TellsThatFaultCommunicationIsLost)
{
    Pass();
    EXPECT_TRUE(FaultCommunicationLost()) << "never received";

    Frame(0x121, {});
    Frame(0x132, {0x80, 0, 0, 0, 0, 0, 0, 0});
    Pass();  // age 0
    EXPECT_FALSE(FaultCommunicationLost());
    // 0x132 stops; its flags stand frozen and do not hold the list off.
    for (int age = 1; age <= 300; age++) {
        Frame(0x121, {});
        Pass();
    }
    EXPECT_FALSE(FaultCommunicationLost());
    EXPECT_EQ(FaultState(64), 1.0);
    // 0x121 stops: 300 passes on the list goes on, 301 it gives way.
    for (int age = 1; age <= 300; age++) Pass();
    EXPECT_EQ(B.Age, 300);
    EXPECT_FALSE(FaultCommunicationLost());
    Pass();
    EXPECT_EQ(B.Age, 301);
    EXPECT_TRUE(FaultCommunicationLost());
}

TEST_F(Foreground, EngineLampAndValetModes)
{
    Pass();
    EXPECT_STREQ(FaultEngineWarning(), "");
    EXPECT_STREQ(FaultValetWarning(), "");

    Frame(0x109, {0, 0, 0x04, 0, 0, 0, 0, 0});  // D2.2
    Pass();
    EXPECT_EQ(RAMVariables.MIL, 1);
    EXPECT_STREQ(FaultEngineWarning(), "CHECK ENGINE");

    const struct {
        uint8_T d3;
        const char* text;
    } valet[] = {{0x20, "VALET MODE 1"}, {0x10, "VALET MODE 2"}, {0x30, "VALET MODE 1&2"}, {0x00, ""}};
    for (const auto& v : valet) {
        Frame(0x133, {0, 0, 0, v.d3, 0, 0, 0, 0});
        Pass();
        EXPECT_EQ(RAMVariables.ValetMode, (v.d3 & 0x20) != 0);
        EXPECT_EQ(RAMVariables.ValetMode2, (v.d3 & 0x10) != 0);
        EXPECT_STREQ(FaultValetWarning(), v.text);
    }

    // When the ECU falls silent the lamp stays as it was last seen.
    for (int i = 0; i < 400; i++) Pass();
    EXPECT_STREQ(FaultEngineWarning(), "CHECK ENGINE");
}

}  // namespace
