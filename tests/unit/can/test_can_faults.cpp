// The fault frames: each bit one flag of the signal store, found here by its position on
// the wire as the fault table gives it.
#include <gtest/gtest.h>

#include "can_fixture.h"

namespace {

typedef real_T BlockIO_Velnor_Dorvik_V6c::*FLAG_T;
#define F(name) &BlockIO_Velnor_Dorvik_V6c::name

constexpr FLAG_T m_frame121[64] = {
    // D0
    F(APP1AdaptHiMax), F(APP1AdaptHiMin), F(APP1AdaptLoMax), F(APP1AdaptLoMin), F(APP1RangeHigh),
    F(APP1RangeLow), F(APP2AdaptHiMax), F(APP2AdaptHiMin),
    // D1
    F(APP2AdaptLoMax), F(APP2AdaptLoMin), F(APP2RangeHigh), F(APP2RangeLow), F(APP_Sensors_Conflict),
    F(AutoCrankFailed), F(Boost_Limit_Exceeded), F(Brake_PressureRangeHigh),
    // D2
    F(Brake_PressureRangeLow), F(CAN_Wideband1_Open), F(CamEdgesFault), F(CamSyncFault), F(CrankEdgesFault),
    F(CrankSyncFault), F(CruiseSwich1), F(CruiseSwich2),
    // D3
    F(CruiseSwich3), F(CruiseSwich4), F(CruiseSwich5), F(DecelFuelCut_Enabled),
    F(DifferentialWheelSpeed_Exceeded), F(DriveShaftRPmLimit_Exceeded), F(ECTOverTempFault), F(ECTRangeHigh),
    // D4
    F(ECTRangeLow), F(EGT_1RangeHigh), F(EGT_1RangeLow), F(EGT_2RangeHigh), F(EGT_2RangeLow), F(ETCSpringTest),
    F(ETC_Open_Fault), F(ETC_Sticking),
    // D5
    F(EXT_O2_1RangeHigh), F(EXT_O2_1RangeLow), F(EXT_O2_2RangeHigh), F(EXT_O2_2RangeLow), F(EngineOverspeed),
    F(Ethanol_Content_low_Fault), F(ExhaustBP2RangeHigh), F(ExhaustBP2RangeLow),
    // D6
    F(ExhaustBPRangeHigh), F(ExhaustBPRangeLow), F(ExhautBP_Variance_Exceeded), F(FlexFuelRangeHigh),
    F(FlexFuelRangeLow), F(Fuel_Cut_Active), F(HB1Fault_Stepper), F(HB2Fault_Stepper),
    // D7
    F(HBridgeFault_ETC), F(High_LowSwitch_Active), F(IATRangeHigh), F(IATRangeLow), F(IAT_IR_Fault),
    F(I_BoostRangeHigh), F(I_BoostRangeLow), F(IncreasingFaultCounts),
};
constexpr FLAG_T m_frame132[64] = {
    // D0
    F(InjectorTestTimeExceeded), F(KnockSensorFault), F(Knock_Control_Active), F(MAFRangeHigh), F(MAFRangeLow),
    F(MAPRangeHigh), F(MAPRangeLow), F(MAPTimeRangeHigh),
    // D1
    F(MAPTimeRangeLow), F(MAP_IR_HI), F(MAP_IR_LO), F(MAP_STICKING), F(Maf_VoltsRangeHigh),
    F(Maf_VoltsRangeLow), F(N2O_Bottle1Pressure_LimitExceeded), F(N2O_Bottle2Pressure_LimitExceeded),
    // D2
    F(N2O_Bottle3Pressure_LimitExceeded), F(N2O_Bottle4Pressure_LimitExceeded),
    F(N2O_Bottle_Pressure1RangeHigh), F(N2O_Bottle_Pressure1RangeLow), F(N2O_Bottle_Pressure2RangeHigh),
    F(N2O_Bottle_Pressure2RangeLow), F(N2O_Bottle_Pressure3RangeHigh), F(N2O_Bottle_Pressure3RangeLow),
    // D3
    F(N2O_Bottle_Pressure4RangeHigh), F(N2O_Bottle_Pressure4RangeLow), F(NitrousArmed), F(NitrousTriggered),
    F(O2FailedLeanA), F(O2FailedLeanB), F(O2FailedRichA), F(O2FailedRichB),
    // D4
    F(O2_A_Target_Variance_EQ_Exceeded), F(O2_B_Target_Variance_EQ_Exceeded), F(O2_Lean_Limit_Exceeded),
    F(OilPressureRangeHigh), F(OilPressureRangeLow), F(OilTempRangeHigh), F(OilTempRangeLow),
    F(Oil_Pressure_Low),
    // D5
    F(OverRevLimitAction), F(PressureRatio_PowerLimit_Exceeded), F(Primary_FuelPressureRangeHigh),
    F(Primary_FuelPressureRangeLow), F(Primary_FuelPressure_Variance), F(Primary_Injector_DutyLimit_Exceeded),
    F(Radiator_PressureRangeHigh), F(Radiator_PressureRangeLow),
    // D6
    F(Radiator_Pressure_Limit_Exceeded), F(Rolling_Limiter_Active), F(Secondary_FuelPressureRangeHigh),
    F(Secondary_FuelPressureRangeLow), F(Secondary_FuelPressure_Variance),
    F(Secondary_Injector_DutyLimit_Exceeded), F(SensVoltRangeHigh), F(SensVoltRangeLow),
    // D7
    F(StrainGaugeCut), F(SysVoltRangeHigh), F(SysVoltRangeLow), F(TPS1AdaptHiMax), F(TPS1AdaptHiMin),
    F(TPS1AdaptLoMax), F(TPS1AdaptLoMin), F(TPS1RangeHigh),
};
constexpr FLAG_T m_frame133[64] = {
    // D0
    F(TPS1RangeLow), F(TPS2AdaptHiMax), F(TPS2AdaptHiMin), F(TPS2AdaptLoMax), F(TPS2AdaptLoMin),
    F(TPS2RangeHigh), F(TPS2RangeLow), F(TTC_RangeHigh),
    // D1
    F(TTC_RangeLow), F(TractionControl_Switch), F(TransTempRangeHigh), F(TransTempRangeLow),
    F(Trans_Pump_PressureRangeHigh), F(Trans_Pump_PressureRangeLow), F(Turbo_Speed1_Limit_Exceeded),
    F(Turbo_Speed2_Limit_Exceeded),
    // D2
    F(UEGO1_RangeHigh), F(UEGO1_RangeLow), F(UEGO1_UR_RangeHigh), F(UEGO1_UR_RangeLow), F(UEGO2_RangeHigh),
    F(UEGO2_RangeLow), F(UEGO2_UR_RangeHigh), F(UEGO2_UR_RangeLow),
    // D3
    F(VVT1NoRegionFound), F(VVT2NoRegionFound), F(Valet_Mode), F(Valet_Mode2), F(Valet_Speed_Limit_Exceeded),
    F(Vehicle_Speed_Limit_Exceeded), F(WasteGatePressureRangeHigh), F(WasteGatePressureRangeLow),
    // D4
    F(Y_AxisAccel_Exceeded), F(Y_AxisLift_Exceeded), F(CnkCamPhaseFault), F(EngineBayTempRangeHigh),
    F(EngineBayTempRangeLow), F(AC_PressureRangeHigh), F(AC_PressureRangeLow), F(Baro_PressureRangeHigh),
    // D5
    F(Baro_PressureRangeLow), F(CAN_Wideband2_Open), nullptr, F(EGT1_Variance_Exceeded),
    F(EGT2_Variance_Exceeded), F(EGT3_Variance_Exceeded), F(EGT4_Variance_Exceeded), F(EGT5_Variance_Exceeded),
    // D6
    F(EGT6_Variance_Exceeded), F(EGT7_Variance_Exceeded), F(EGT8_Variance_Exceeded), F(EGT_HighTemp_Exceeded),
    F(FuelTank_PressureRangeHigh), F(FuelTank_PressureRangeLow), F(Fuel_Level1RangeHigh),
    F(Fuel_Level1RangeLow),
    // D7
    F(Fuel_Level2RangeHigh), F(Fuel_Level2RangeLow), F(Fuel_Tank_Purge_Active), F(Inlet_PressureRangeHigh),
    F(Inlet_PressureRangeLow), F(MSTRangeHigh), F(MSTRangeLow), F(TransmissionTempFault),
};
#undef F

struct FAULT_FRAME_T {
    uint32_T id;
    const FLAG_T* flags;
};
constexpr FAULT_FRAME_T m_faultFrames[] = {{0x121, m_frame121}, {0x132, m_frame132}, {0x133, m_frame133}};

BYTES_T OneBit(int bit)
{
    BYTES_T data = {};
    data[bit / 8] = (uint8_T)(0x80 >> (bit % 8));
    return data;
}

real_T SumOfFlags()
{
    real_T sum = 0;
    for (const FAULT_FRAME_T& f : m_faultFrames)
        for (int bit = 0; bit < 64; bit++)
            if (f.flags[bit]) sum += B.*f.flags[bit];
    return sum;
}

TEST(CanFaults, EachBitSetsItsOwnFlagAndNoOther)
{
    for (const FAULT_FRAME_T& f : m_faultFrames) {
        for (int bit = 0; bit < 64; bit++) {
            FrameAndPass(f.id, OneBit(bit));
            for (int other = 0; other < 64; other++) {
                if (!f.flags[other]) continue;
                EXPECT_EQ(B.*f.flags[other], other == bit ? 1.0 : 0.0)
                    << std::hex << "frame 0x" << f.id << std::dec << " D" << bit / 8 << "." << 7 - bit % 8
                    << " set, flag at D" << other / 8 << "." << 7 - other % 8;
            }
        }
        FrameAndPass(f.id, {});
    }
}

TEST(CanFaults, AllBitsSetGive191Flags)
{
    for (const FAULT_FRAME_T& f : m_faultFrames) FrameAndPass(f.id, ALL_ONES);
    EXPECT_EQ(SumOfFlags(), 191);
    // Clearing a bit clears its flag with the next frame: nothing is latched.
    BYTES_T data = ALL_ONES;
    data[0] = 0x7F;
    FrameAndPass(0x121, data);
    EXPECT_EQ(B.APP1AdaptHiMax, 0);
    EXPECT_EQ(SumOfFlags(), 190);
    for (const FAULT_FRAME_T& f : m_faultFrames) FrameAndPass(f.id, {});
    EXPECT_EQ(SumOfFlags(), 0);
}

TEST(CanFaults, AgeOfTheFaultsIsTheAgeOf121Alone)
{
    FrameAndPass(0x121, {});
    EXPECT_EQ(B.Age, 0);
    FrameAndPass(0x133, {});
    FrameAndPass(0x132, {});
    EXPECT_EQ(B.Age, 2);
    Pass();
    EXPECT_EQ(B.Age, 3);
    FrameAndPass(0x121, {});
    EXPECT_EQ(B.Age, 0);
}

}  // namespace
