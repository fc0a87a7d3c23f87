#pragma once
// The quad gauge screen on a clean display engine with the dash's fonts, fed by the real
// foreground task: an engine controller's frames go in signal by signal, passes run on
// the test's clock, and the page is composed as the dash composes it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "Screen_QuadScreen.h"
#include "Timer_7Je7r.h"
#include "Velnor_Dorvik_V6c.h"
#include "can_rx.h"
#include "can_signals.h"
#include "data.h"
#include "display_fixture.h"
#include "freetype_api.h"
#include "picture_check.h"
#include "quad_gauges.h"
#include "quad_keys.h"
#include "test_root.h"
#include "ttfonts.h"

typedef std::initializer_list<std::pair<const char*, real_T>> SIGNALS_T;

// A running engine as the pages show it: warm, at part throttle in fourth gear. Values
// in the unit of the wire.
inline const SIGNALS_T CRUISE = {
    {"RPM", 3150},          {"TPS_g", 22},          {"MAP_p", 96},          {"Current_RPM_Limit", 7500},
    {"TimeSinceRun", 240},  {"Coolant_Temp", 88},   {"Inlet_Air_Temp", 38}, {"Manifold_Surface_Temp", 47},
    {"OilTemp", 97},        {"TransTemp", 81},      {"Oil_Pressure", 310},  {"Radiator_Pressure", 96},
    {"BatteryVolts", 13.9}, {"BrakePressure", 0},   {"Primary_StoichSetpoint", 14.2},
    {"Final_O2_Bank1", 0.98}, {"Final_O2_Bank2", 1.02}, {"Target_O2", 1.0}, {"Final_AFR1", 14.5},
    {"Final_AFR2", 13.9},   {"EGT1", 612},          {"EGT2", 634},          {"EGT3", 598},
    {"EGT4", 655},          {"EGT5", 620},          {"EGT6", 641},          {"EGT7", 589},
    {"EGT8", 668},          {"Knock_CYL1_RTD", -1}, {"Knock_CYL2_RTD", -3}, {"Knock_CYL3_RTD", 0},
    {"Knock_CYL4_RTD", -2}, {"Knock_CYL5_RTD", -4}, {"Knock_CYL6_RTD", -1}, {"Knock_CYL7_RTD", 0},
    {"Knock_CYL8_RTD", -2}, {"ExhaustBP", 128},     {"ExhaustBP2", 131},    {"Launch_Time", 1.62},
    {"Nitrous_Pressure1", 6300}, {"Nitrous_Pressure2", 6250}, {"Nitrous_Pressure3", 6400},
    {"Nitrous_Pressure4", 6150}, {"DrivenWheelSpeed", 63}, {"NonDrivenWheelSpeed", 61},
    {"Differential_WheelSpeed", 3}, {"SlipPercent", 3}, {"Engine_HP_Potential", 212}, {"EngineTorque", 354},
    {"Fuel_Economy", 19},   {"Primary_Fuel_Pressure", 396}, {"Secondary_Fuel_Pressure", 401},
    {"Fuel_Level1", 64},    {"Fuel_Level2", 62},    {"Calculated_Gear", 4}, {"DesiredGear", 4},
    {"ShifterPosition", 4}, {"TCC", 1},             {"InletPressure", 99},  {"Primary_Injector_Duty", 31},
    {"DriveShaft_RPM", 2210}, {"DriveShaftRPMAllowed", 8000}, {"EthanolContent", 10}, {"MassAirFlow", 62},
    {"Pressure_Ratio", 1.05}, {"Spark_Advance_Log", 31.5}, {"TCS_SPark_RTD", 0}, {"Transmission_Pressure", 610},
    {"Turbo1_RPM", 24000},  {"Turbo2_RPM", 24500},  {"WasteGatePressure", 104}, {"WasteGate_SetPoint", 161},
    {"Cam1PhaseRelative", 12}, {"Cam2PhaseRelative", 9}, {"VVT1_Setpoint", 14}, {"VVT2_Setpoint", 10},
    {"X_Axis_AccelG", 0.18}, {"Y_Axis_AccelG", 0.05}, {"X_Axis_Degrees", 0.4}, {"Y_Axis_Degrees", 0.1},
};

// A pull at full throttle a moment before: what the peaks keep.
inline const SIGNALS_T PULL = {
    {"RPM", 6900},          {"TPS_g", 100},         {"MAP_p", 221},         {"Final_AFR1", 11.8},
    {"Final_AFR2", 11.6},   {"EGT1", 871},          {"EGT2", 889},          {"EGT3", 862},
    {"EGT4", 902},          {"EGT5", 880},          {"EGT6", 893},          {"EGT7", 858},
    {"EGT8", 911},          {"Coolant_Temp", 96},   {"Inlet_Air_Temp", 52}, {"Manifold_Surface_Temp", 58},
    {"OilTemp", 104},       {"TransTemp", 92},      {"Oil_Pressure", 520},  {"Radiator_Pressure", 118},
    {"ExhaustBP", 262},     {"ExhaustBP2", 270},    {"Launch_Time", 2.14},  {"Differential_WheelSpeed", 14},
    {"DrivenWheelSpeed", 118}, {"NonDrivenWheelSpeed", 104}, {"Engine_HP_Potential", 655},
    {"EngineTorque", 548},  {"InletPressure", 93},  {"Primary_Injector_Duty", 84}, {"MassAirFlow", 420},
    {"BrakePressure", 5200}, {"WasteGatePressure", 142}, {"Transmission_Pressure", 1180},
    {"Cam1PhaseRelative", 24}, {"Cam2PhaseRelative", 21}, {"TimeSinceRun", 230}, {"Y_Axis_AccelG", 0.62},
    {"Y_Axis_Degrees", 1.4},
};

class QuadScreenTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetDisplay();
        ASSERT_EQ(FTFInit(gpaFreetypeFontData, 6), 0);
        mkdir(root.Abs("media").c_str(), 0755);
        CANSignalsTestEmptyMailboxes();
        memset(&Velnor_Dorvik_V6c_B, 0, sizeof(Velnor_Dorvik_V6c_B));
        memset(&Velnor_Dorvik_V6c_DWork, 0, sizeof(Velnor_Dorvik_V6c_DWork));
        memset(&CANInputs, 0, sizeof(CANInputs));
        Velnor_Dorvik_V6c_PrevZCSigState = {};
        Velnor_Dorvik_V6c_PrevZCSigState.EditNextQuad_Trig_ZCE = 1;
        Velnor_Dorvik_V6c_PrevZCSigState.EditPage_Trig_ZCE = 1;
        RAMVariables = RAMVariables_T{};
        RAMVariables.START_SCREEN = 255;
        EEVariables_RAMShadow = EEVariables_DEFAULT;
        Timer_7Je7rInit();
        DWork.UnitDelay_DSTATE_nf = 1;  // past the first pass: no splash
        QuadGaugeTestReset();
        QuadKeysTestReset();
        for (real_T& v : values_) v = 0;
    }
    void TearDown() override
    {
        FTFTestDone();
        ResetDisplay();
    }

public:
    // Sets signals of the engine controller by name; the others keep their values.
    void Signals(SIGNALS_T signals)
    {
        for (const auto& [name, value] : signals) {
            const size_t i = CANSignalIndex(name);
            ASSERT_LT(i, CAN_SIGNAL_COUNT) << name;
            values_[i] = value;
        }
    }
    // Every frame of the engine controller, once, with the signals as set.
    void Send()
    {
        for (size_t f = 0; f < CAN_FRAME_COUNT; f++) {
            const CAN_FRAME_T& frame = CAN_FRAMES[f];
            if (frame.dir != CAN_RX) continue;
            CAN_MSG_T m = {};
            m.id = frame.id;
            m.msg_length = 8;
            const CAN_ROWS_T rows = CAN_FRAME_ROWS[f];
            for (size_t i = rows.first; i < rows.first + rows.count; i++)
                if (CAN_SIGNALS[i].target.kind != CAN_KIND_TEXT) CANEncodeSignal(CAN_SIGNALS[i], values_[i], m.msg_content);
            if (frame.port == CAN_PORT2) rxTable_285280__0051(CAN_PORT2, &m);
            else rxTable_285279__0022(CAN_PORT1, &m);
        }
    }
    void Pass()
    {
        Timer_7Je7rTestPass(now_);
        now_ += 10;
    }
    // The engine pulled hard, then settled to a cruise: the peaks hold the pull, and
    // every text has been written since.
    void Drive()
    {
        Signals(CRUISE);
        Signals(PULL);
        for (int i = 0; i < 3; i++) Send(), Pass();
        Signals(CRUISE);
        for (int i = 0; i < 3; i++) Send(), Pass();
        Refresh();
    }
    // The frames once more, late enough for every text to be written again.
    void Refresh()
    {
        now_ += 260;
        Send();
        Pass();
    }
    // The page as the next frame of the dash shows it.
    std::vector<U16> Page()
    {
        std::vector<U16> page(320 * 240);
        LayerMergerTestCompose(page.data());
        return page;
    }
    std::vector<U16> UpdateAndCompose()
    {
        Screen_QuadScreen_Update();
        return Page();
    }
    // The page shown: the words of its four cells in the default profile.
    void ShowWords(uint16_T w1, uint16_T w2, uint16_T w3, uint16_T w4)
    {
        EEVariables_RAMShadow.USER_PROFILE = 1;
        EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = 1;
        const uint16_T words[4] = {w1, w2, w3, w4};
        for (int i = 0; i < 4; i++) (&EEVariables_RAMShadow.PROFILE_1[0][0])[i] = words[i];
        Pass();
    }

    TestRoot root;
    uint32_T now_ = 10000;
    real_T values_[CAN_SIGNAL_COUNT];
};

// Pages side by side, `columns` a row, into one picture.
class ContactSheet {
public:
    ContactSheet(uint32_T tileW, uint32_T tileH, uint32_T columns, uint32_T tiles)
        : w_(tileW), h_(tileH), columns_(columns), rows_((tiles + columns - 1) / columns),
          pixels_((size_t)tileW * columns * tileH * rows_, 0)
    {
    }
    // Tile n from the part of a 320-pixel-wide page whose top left is x, y.
    void Put(uint32_T n, const std::vector<U16>& page, uint32_T x, uint32_T y)
    {
        const uint32_T tx = (n % columns_) * w_, ty = (n / columns_) * h_;
        for (uint32_T r = 0; r < h_; r++)
            memcpy(&pixels_[(size_t)(ty + r) * Width() + tx], &page[(size_t)(y + r) * 320 + x], w_ * sizeof(U16));
    }
    uint32_T Width() const { return w_ * columns_; }
    uint32_T Height() const { return h_ * rows_; }
    ::testing::AssertionResult Matches(const std::string& name) const
    {
        return MatchesPicture(name, pixels_.data(), Width(), Height(), Width());
    }

private:
    uint32_T w_, h_, columns_, rows_;
    std::vector<U16> pixels_;
};

inline U16 Pixel(const std::vector<U16>& page, S32 x, S32 y)
{
    return page[(size_t)y * 320 + (size_t)x];
}
