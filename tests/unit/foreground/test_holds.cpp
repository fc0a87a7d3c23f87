// The peak and low holds: each hold of the table fed by a frame written out here, with
// the value it must hold; the gates at their limits, on the copies of the pass before;
// and that nothing resets a hold.
#include "foreground_fixture.h"
#include "signal_holds.h"

namespace {

typedef real32_T RAMVariables_T::*HOLD_FIELD_T;

struct HOLD_CASE_T {
    HOLD_FIELD_T hold;
    uint32_T frame;
    BYTES_T data;
    real32_T expected;
};

// Throttle 95 %, MAP 200 kPa, 3000 RPM, 60 s since start: every gate open. The cases'
// values lie above what these frames give the holds.
void OpenGates(Foreground* t)
{
    Frame(0x101, {0, 0, 0, 0, 0, 0, 95, 0});
    Frame(0x125, {0, 0, 0, 0, 0, 0, 0x00, 0xC8});
    Frame(0x108, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0});
    Frame(0x103, {0x00, 0x3C, 0, 0, 0, 0, 0, 0});
    (void)t;
}

#define H(field) &RAMVariables_T::field
const HOLD_CASE_T m_cases[] = {
    {H(EGT1CAN_Max), 0x148, {0x1F, 0x40, 0, 0, 0, 0, 0, 0}, 800.0f},
    {H(EGT2CAN_Max), 0x148, {0, 0, 0x1F, 0x4F, 0, 0, 0, 0}, 801.5f},
    {H(EGT3CAN_Max), 0x148, {0, 0, 0, 0, 0x1F, 0x57, 0, 0}, 802.3f},
    {H(EGT4CAN_Max), 0x148, {0, 0, 0, 0, 0, 0, 0x1F, 0x67}, 803.9f},
    {H(EGT5CAN_Max), 0x149, {0x1F, 0x40, 0, 0, 0, 0, 0, 0}, 800.0f},
    {H(EGT6CAN_Max), 0x149, {0, 0, 0x1F, 0x4F, 0, 0, 0, 0}, 801.5f},
    {H(EGT7CAN_Max), 0x149, {0, 0, 0, 0, 0x1F, 0x57, 0, 0}, 802.3f},
    {H(EGT8CAN_Max), 0x149, {0, 0, 0, 0, 0, 0, 0x1F, 0x67}, 803.9f},
    {H(Accel_Max), 0x127, {0, 0, 0x01, 0xF4, 0, 0, 0, 0}, 1.0f},
    {H(Decel_Max), 0x127, {0, 0, 0x01, 0x40, 0, 0, 0, 0}, -0.8f},
    {H(Right_Max), 0x127, {0x01, 0xC2, 0, 0, 0, 0, 0, 0}, 0.5f},
    {H(Left_Max), 0x127, {0x01, 0x68, 0, 0, 0, 0, 0, 0}, -0.4f},
    {H(Lift_Max), 0x126, {0, 0, 0x84, 0xD0, 0, 0, 0, 0}, 4.0f},
    {H(Lift_Min), 0x126, {0, 0, 0x79, 0x18, 0, 0, 0, 0}, -2.0f},
    {H(RightTilt_Max), 0x126, {0x80, 0xE8, 0, 0, 0, 0, 0, 0}, 2.0f},
    {H(LeftTilt_Max), 0x126, {0x75, 0x30, 0, 0, 0, 0, 0, 0}, -4.0f},
    {H(DesEQ1_Max), 0x164, {0, 0, 0, 0, 0, 0, 0x00, 0x73}, 1.15f},
    {H(DesEQ2_Max), 0x164, {0, 0, 0, 0, 0x00, 0x5A, 0, 0}, 0.9f},
    {H(MST_Max), 0x164, {0, 0, 0x00, 0x41, 0, 0, 0, 0}, 65.0f},
    {H(WasteGatePressure_Max), 0x163, {0, 0, 0, 0, 0, 0, 0x00, 0xAA}, 170.0f},
    {H(Radiator_Max), 0x163, {0, 0, 0, 0, 0x00, 0x82, 0, 0}, 130.0f},
    {H(OilPress_Max), 0x163, {0, 0, 0x01, 0x90, 0, 0, 0, 0}, 400.0f},
    {H(EBP1_Max), 0x162, {0, 0, 0, 0, 0x00, 0xC8, 0, 0}, 200.0f},
    {H(EBP2_Max), 0x162, {0, 0, 0, 0, 0, 0, 0x00, 0xD2}, 210.0f},
    {H(InletPressure_Min), 0x161, {0x00, 0x50, 0, 0, 0, 0, 0, 0}, 0.0f},  // a low of a pressure from 0
    {H(Torque_Max), 0x161, {0, 0, 0, 0, 0x01, 0xF4, 0, 0}, 500.0f},
    {H(CAM1_Max), 0x120, {0, 0, 0, 0, 0, 0, 0x00, 0x14}, 20.0f},
    {H(CAM2_Max), 0x120, {0, 0, 0, 0, 0x00, 0x19, 0, 0}, 25.0f},
    {H(BrakePressure_Max), 0x119, {0, 0, 0, 0, 0x03, 0xE8, 0, 0}, 1000.0f},
    {H(EngineHP_Max), 0x119, {0, 0x01, 0xC2, 0, 0, 0, 0, 0}, 450.0f},
    {H(AirTemp_Max), 0x118, {0, 0, 0, 0, 0, 0, 0, 0x28}, 40.0f},
    {H(Coolant_Max), 0x118, {0, 0, 0, 0, 0, 0, 0x5F, 0}, 95.0f},
    {H(BatteryVolts_Min), 0x118, {0, 0, 0x05, 0x14, 0, 0, 0, 0}, 0.0f},
    {H(MassAir_Max), 0x112, {0, 0, 0, 0, 0, 0, 0x02, 0x58}, 600.0f},
    {H(PressureRatio_Min), 0x112, {0, 0, 0, 0, 0x00, 0xEB, 0, 0}, 0.0f},
    {H(EGT1_Max), 0x112, {0, 0, 0x03, 0x20, 0, 0, 0, 0}, 800.0f},
    {H(EGT2_Max), 0x112, {0x03, 0x52, 0, 0, 0, 0, 0, 0}, 850.0f},
    {H(OilPress_Max_PSI), 0x110, {0, 0, 0, 0, 0x41, 0, 0, 0}, 65.0f},
    {H(Radiator_Max_PSI), 0x110, {0, 0, 0, 0x12, 0, 0, 0, 0}, 18.0f},
    {H(EBP2_Max_PSI), 0x110, {0, 0, 0x19, 0, 0, 0, 0, 0}, 25.0f},
    {H(WasteGatePressure_Max_PSI), 0x110, {0, 0x1E, 0, 0, 0, 0, 0, 0}, 30.0f},
    {H(TransTemp_Max), 0x109, {0, 0, 0, 0, 0, 0, 0x00, 0x64}, 100.0f},
    {H(OilTemp_Max), 0x109, {0, 0, 0, 0, 0x00, 0x78, 0, 0}, 120.0f},
    {H(LaunchTime_Max), 0x108, {0x0B, 0xB8, 0x01, 0xF4, 0, 0, 0, 0}, 5.0f},
    {H(RPM_Max), 0x108, {0x19, 0x64, 0, 0, 0, 0, 0, 0}, 6500.0f},
    {H(KnockRTD1_Max), 0x107, {0xFF, 0, 0, 0, 0, 0, 0, 0}, -1.0f},
    {H(KnockRTD2_Max), 0x107, {0, 0xFE, 0, 0, 0, 0, 0, 0}, -2.0f},
    {H(KnockRTD3_Max), 0x107, {0, 0, 0xFD, 0, 0, 0, 0, 0}, -3.0f},
    {H(KnockRTD4_Max), 0x107, {0, 0, 0, 0xFC, 0, 0, 0, 0}, -4.0f},
    {H(KnockRTD5_Max), 0x107, {0, 0, 0, 0, 0xFB, 0, 0, 0}, -5.0f},
    {H(KnockRTD6_Max), 0x107, {0, 0, 0, 0, 0, 0xFA, 0, 0}, -6.0f},
    {H(KnockRTD7_Max), 0x107, {0, 0, 0, 0, 0, 0, 0xF9, 0}, -7.0f},
    {H(KnockRTD8_Max), 0x107, {0, 0, 0, 0, 0, 0, 0, 0xF8}, -8.0f},
    {H(EBP1_Max_PSI), 0x102, {0x2A, 0, 0, 0, 0, 0, 0, 0}, 42.0f},
    {H(NonDrivenWheel_Max), 0x102, {0, 0, 0, 0x78, 0, 0, 0, 0}, 120.0f},
    {H(DrivenWheel_Max), 0x102, {0, 0, 0x6E, 0, 0, 0, 0, 0}, 110.0f},
    {H(InjectorDuty_Max), 0x101, {0, 0, 0, 0, 0, 0, 95, 0x50}, 80.0f},
    {H(DiffWheelSpeed_Max), 0x101, {0x00, 0x1E, 0, 0, 0, 0, 95, 0}, 30.0f},
    {H(AFR1_Max), 0x125, {0, 0, 0x04, 0xB0, 0, 0, 0x00, 0xC8}, 12.0f},
    {H(AFR2_Max), 0x125, {0, 0, 0, 0, 0x04, 0xCE, 0x00, 0xC8}, 12.3f},
    {H(Map_Max), 0x125, {0, 0, 0, 0, 0, 0, 0x00, 0xFA}, 250.0f},
};
#undef H

TEST_F(Foreground, EachHoldTakesItsOwnInput)
{
    for (const HOLD_CASE_T& c : m_cases) {
        // The case's frame comes before the first pass: a frame never received decodes
        // from zeros, which on the axes with an offset is a low of its own (-4 g, -64 degrees).
        SetUp();
        OpenGates(this);
        Frame(c.frame, c.data);
        Pass();
        Pass();
        Pass();
        EXPECT_FLOAT_EQ(RAMVariables.*c.hold, c.expected) << std::hex << "0x" << c.frame;
    }

    // The two of port 2, in the units of their frame; lambda counts as petrol AFR.
    SetUp();
    OpenGates(this);
    Pass();
    Pass();
    FramePort2(0x130, {0, 0, 0, 0x10, 0x27, 0x00, 0x10, 0});
    Pass();
    EXPECT_FLOAT_EQ(RAMVariables.O2SensorTemp2_Max, (real32_T)(10000 / 42.6657564638621));
    EXPECT_FLOAT_EQ(RAMVariables.AFRGas2_Max, (real32_T)(4096 / 4098.360655737705 * 14.6));

    // The transmission pressure's hold has no copy for the tool; its peak text shows it.
    SetUp();
    Frame(0x103, {0, 0, 0, 0, 0, 0x00, 0x15, 0xE0});  // 350 kPa
    Pass();
    Frame(0x103, {});
    Units(2, 1, 1, 1);
    Refresh();
    EXPECT_EQ(Text(B.RPeakValue_nr), "  350");
    EXPECT_EQ(B.RPeakDouble_nr, 350);

    // Every hold with a copy is stated above.
    size_t copies = 0;
    for (const HOLD_T& h : SIGNAL_HOLDS) copies += h.copy != HOLD_NO_COPY;
    EXPECT_EQ(copies, std::size(m_cases) + 2);
}

TEST_F(Foreground, GatesAtTheirLimitsOnTheCopiesOfThePassBefore)
{
    // Throttle exactly 70 % keeps a gated hold at 0; 71 % lets the signal in.
    for (uint8_T tps : {70, 71}) {
        SetUp();
        OpenGates(this);
        Frame(0x101, {0, 0, 0, 0, 0, 0, tps, 0});
        Pass();
        Pass();
        Frame(0x164, {0, 0, 0, 0, 0, 0, 0x00, 0x73});
        FramePort2(0x130, {0, 0, 0, 0x10, 0x27, 0, 0, 0});
        Pass();
        EXPECT_FLOAT_EQ(RAMVariables.DesEQ1_Max, tps > 70 ? 1.15f : 0.0f) << (int)tps;
        EXPECT_EQ(RAMVariables.O2SensorTemp2_Max > 0, tps > 70) << (int)tps;
    }
    // 80 % for the launch timer, 1000 RPM for torque and cams.
    for (uint8_T tps : {80, 81}) {
        SetUp();
        OpenGates(this);
        Frame(0x101, {0, 0, 0, 0, 0, 0, tps, 0});
        Pass();
        Frame(0x108, {0x0B, 0xB8, 0x01, 0xF4, 0, 0, 0, 0});
        Pass();
        EXPECT_FLOAT_EQ(RAMVariables.LaunchTime_Max, tps > 80 ? 5.0f : 0.0f) << (int)tps;
    }
    for (uint16_T rpm : {1000, 1001}) {
        SetUp();
        OpenGates(this);
        Frame(0x108, {(uint8_T)(rpm >> 8), (uint8_T)rpm, 0, 0, 0, 0, 0, 0});
        Pass();
        Frame(0x161, {0, 0, 0, 0, 0x01, 0xF4, 0, 0});
        Frame(0x120, {0, 0, 0, 0, 0, 0, 0x00, 0x14});
        Pass();
        EXPECT_FLOAT_EQ(RAMVariables.Torque_Max, rpm > 1000 ? 500.0f : 0.0f) << rpm;
        EXPECT_FLOAT_EQ(RAMVariables.CAM1_Max, rpm > 1000 ? 20.0f : 0.0f) << rpm;
    }
    // A wheel speed difference of 30 in the first 5 s of running leaves its peak alone.
    for (uint8_T run : {5, 6}) {
        SetUp();
        Frame(0x103, {0, run, 0, 0, 0, 0, 0, 0});
        Pass();
        Frame(0x101, {0x00, 0x1E, 0, 0, 0, 0, 0, 0});
        Pass();
        EXPECT_FLOAT_EQ(RAMVariables.DiffWheelSpeed_Max, run > 5 ? 30.0f : 0.0f) << (int)run;
    }

    // The gates read the state of the pass before: a throttle that opens in this pass
    // opens the gate for the next one...
    SetUp();
    Frame(0x125, {0, 0, 0, 0, 0, 0, 0x00, 0xC8});
    Pass();
    Frame(0x101, {0, 0, 0, 0, 0, 0, 95, 0});
    Frame(0x164, {0, 0, 0, 0, 0, 0, 0x00, 0x73});
    Pass();
    EXPECT_EQ(RAMVariables.DesEQ1_Max, 0.0f);
    Pass();
    EXPECT_FLOAT_EQ(RAMVariables.DesEQ1_Max, 1.15f);
    // ...except the manifold pressure of the air/fuel peaks, which is this pass's own.
    SetUp();
    Frame(0x101, {0, 0, 0, 0, 0, 0, 95, 0});
    Pass();
    Frame(0x125, {0, 0, 0x04, 0xB0, 0, 0, 0x00, 0xC8});
    Pass();
    EXPECT_EQ(RAMVariables.MAP, 200);
    EXPECT_FLOAT_EQ(RAMVariables.AFR1_Max, 12.0f);
    Frame(0x125, {0, 0, 0x05, 0x00, 0, 0, 0x00, 0x8C});  // 140 kPa: shut
    Pass();
    EXPECT_FLOAT_EQ(RAMVariables.AFR1_Max, 12.0f);
}

TEST_F(Foreground, NothingResetsAHold)
{
    Frame(0x108, {0x19, 0x64, 0, 0, 0, 0, 0, 0});   // 6500 RPM
    Frame(0x107, {0xF6, 0, 0, 0, 0, 0, 0, 0});      // cylinder 1 retarded 10 degrees
    Pass();
    Frame(0x108, {0x03, 0xE8, 0, 0, 0, 0, 0, 0});   // back to 1000
    Frame(0x107, {});
    for (int i = 0; i < 1000; i++) Pass();          // and then the frames stop for 10 s
    Units(3, 3, 2, 3);
    Refresh();
    EXPECT_EQ(RAMVariables.RPM_Max, 6500.0f);
    EXPECT_EQ(RAMVariables.KnockRTD1_Max, -10.0f);
    EXPECT_EQ(B.RPeakDouble_mz, 6500);
    EXPECT_EQ(Text(B.RPeakValue_im), "---");  // the text times out, the hold does not

    // The state record carries each hold to the next pass, exactly.
    for (size_t i = 0; i < HOLD_COUNT; i++) EXPECT_EQ(DWork.UnitDelay_DSTATE[i], SignalHoldValue(i)) << i;
    EXPECT_EQ(DWork.UnitDelay_DSTATE[HOLD_TRANSMISSION_PRESSURE], 0);
}

}  // namespace
