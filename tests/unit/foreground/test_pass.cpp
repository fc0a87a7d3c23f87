// The pass as a whole: what it sets before any screen reads the store, the splash on its
// first pass, the copies for the tool, the page of the profile, the I/O board outputs and
// the state it leaves for the next pass.
#include "fault_table.h"
#include "foreground_fixture.h"
#include "ioboard_drv.h"
#include "mmi.h"
#include "text_values.h"

namespace {

TEST_F(Foreground, EverythingAScreenReadsIsInPlaceBeforeTheFirstPass)
{
    EXPECT_EQ(B.SysInfo, 7u);
    EXPECT_EQ(B.Faults, 4u);
    EXPECT_EQ(B.Knock, 2u);
    EXPECT_EQ(B.QuadsScreen, 0u);
    for (trigger_ref gauge : B.QuadGauge) EXPECT_NE(gauge, nullptr);
    for (trigger_ref gauge : B.LargeGauge) EXPECT_NE(gauge, nullptr);
    EXPECT_NE(B.RPM_f, nullptr);
    EXPECT_NE(B.tall, nullptr);
    for (size_t i = 0; i < TEXT_VALUE_COUNT; i++) {
        if (TEXT_VALUES[i].text == TV_NONE) continue;
        S_String* field;
        memcpy(&field, reinterpret_cast<uint8_T*>(&B) + TEXT_VALUES[i].text, sizeof(field));
        EXPECT_EQ(field, TextValueRecord(i)) << i;
    }
    for (size_t i = 0; i < FAULT_ROW_COUNT; i++) EXPECT_EQ(B.Message[i], FaultText(i));
    for (S_String* text : {B.quorin_string, B.quorin_string_o, B.quorin_string_printf, B.quorin_string_printf_j,
                           B.quorin_string_printf_f, B.quorin_string_printf_m, B.PressureUnits, B.SpeedUnits,
                           B.TempUnits, B.FuelUnits})
        ASSERT_NE(text, nullptr);
    EXPECT_STREQ(B.g_MAP->string, "MAP");
    EXPECT_STREQ(B.g_WasteGatePressure->string, "WG PRESS");
    EXPECT_STREQ(B.g_Setpt->string, "Setpt");
    EXPECT_STREQ(B.g_Target->string, "Target");
    EXPECT_STREQ(B.s_FAULTS->string, "FAULTS");
    EXPECT_STREQ(B.s_NOFAULTS->string, "NO FAULTS");
    EXPECT_STREQ(B.u_RPM->string, "RPM");
    EXPECT_STREQ(B.u_NONE->string, "");

    // A screen that writes over a pointer finds it back after the next pass.
    B.QuadGauge[3] = nullptr;
    B.ValueString_do = nullptr;
    B.Faults = 99;
    Pass();
    EXPECT_NE(B.QuadGauge[3], nullptr);
    EXPECT_NE(B.ValueString_do, nullptr);
    EXPECT_EQ(B.Faults, 4u);
}

void Screen(void) {}

TEST_F(Foreground, TheFirstPassPutsTheSplashOnTop)
{
    MMIInit(100, 100, 10);
    for (U32 id = 0; id <= 8; id++) MMIRegisterScreen(id, Screen, Screen, Screen, Screen);
    MMIScreenGoto(0);
    Pass();
    EXPECT_EQ(MMIGetScreenIdCurrent(), 8u);
    EXPECT_EQ(DWork.UnitDelay_DSTATE_nf, 1);
    MMIScreenGoto(4);
    Pass();
    EXPECT_EQ(MMIGetScreenIdCurrent(), 4u) << "only the first pass goes to the splash";
    MMIDeInit();
}

TEST_F(Foreground, OutputOneOffAndOutputTwoOnWithoutABoard)
{
    EXPECT_EQ(ioboard_set_relay_out_config(DIG_OUT_CHANNEL_1, 1), 1) << "wanted, for a board to come";
    ioboard_set_relay_out_config(DIG_OUT_CHANNEL_2, 0);
    Pass();
    BOOL on = -1;
    ASSERT_EQ(ioboard_get_relay_out_config(DIG_OUT_CHANNEL_1, &on), 1);
    EXPECT_EQ(on, 0);
    ASSERT_EQ(ioboard_get_relay_out_config(DIG_OUT_CHANNEL_2, &on), 1);
    EXPECT_EQ(on, 1);
    EXPECT_EQ(ioboard_get_relay_out_config(9, &on), 0);
    EXPECT_EQ(ioboard_set_relay_out_config(0, 1), 0);
}

TEST_F(Foreground, CopiesForTheToolAndTheAges)
{
    Frame(0x125, {0, 0, 0, 0, 0, 0, 0x01, 0x2C});        // MAP 300 kPa
    Frame(0x101, {0, 0, 0, 0, 0, 0, 42, 0});             // throttle 42 %
    Frame(0x108, {0x1B, 0x58, 0, 0, 0, 0, 0, 0});        // 7000 RPM
    Frame(0x103, {0x01, 0x2C, 0, 0, 0, 0, 0, 0});        // 300 s since start
    Frame(0x109, {0x80, 0, 0x04, 0, 0, 0, 0, 0});        // log request, lamp on
    Frame(0x104, {});
    Pass();
    EXPECT_EQ(RAMVariables.MAP, 300);
    EXPECT_EQ(RAMVariables.TPS, 42);
    EXPECT_EQ(RAMVariables.RPM, 7000.0f);
    EXPECT_EQ(RAMVariables.Time_Since_Run, 300.0f);
    EXPECT_EQ(RAMVariables.MIL, 1);
    EXPECT_EQ(RAMVariables.LoggBitActive, 1);
    EXPECT_EQ(B.Age_f, 0);
    EXPECT_EQ(B.Age, CAN_AGE_NEVER);
    Pass();
    EXPECT_EQ(B.Age_f, 1);
    EXPECT_EQ(DWork.UnitDelay_DSTATE_e2c, now_ - 10);
}

TEST_F(Foreground, TheGaugeWordsOfThePageShown)
{
    EEVariables_T& ee = EEVariables_RAMShadow;
    ee.USER_PROFILE = 2;
    ee.PROFILE_GAUGE_COUNT[1] = 9;
    ee.CURRENT_QUAD_SCREEN = 3;
    uint16_T* words = &ee.PROFILE_2[0][0];
    words[8] = 0x0102;
    words[9] = 0x0203;
    words[10] = 0x0304;
    words[11] = 0x0042;
    Pass();
    EXPECT_EQ(B.ID_j, 2);
    EXPECT_EQ(B.ProfileGaugeCount, 9);
    EXPECT_EQ(B.CURRENT_QUAD_SCREEN, 3);
    EXPECT_EQ(B.Type, 1);
    EXPECT_EQ(B.ID, 2);
    EXPECT_EQ(B.Type_j, 2);
    EXPECT_EQ(B.ID_f, 3);
    EXPECT_EQ(B.Type_j3, 3);
    EXPECT_EQ(B.ID_fr, 4);
    EXPECT_EQ(B.Type_j3w, 0);
    EXPECT_EQ(B.ID_frt, 0x42);

    // A profile out of range shows the build's default profile and keeps the page count.
    ee.USER_PROFILE = 0;
    ee.CURRENT_QUAD_SCREEN = 0;  // reads page 1
    Pass();
    EXPECT_EQ(B.ID_j, 0);
    EXPECT_EQ(B.ProfileGaugeCount, 9);
    EXPECT_EQ(B.CURRENT_QUAD_SCREEN, 0);
    EXPECT_EQ(B.ID_f, 0x01);  // PROFILE_DEFAULT page 1: 0000 0001 0100 0000
    EXPECT_EQ(B.Type_j3, 0x01);
    ee.USER_PROFILE = 200;
    ee.CURRENT_QUAD_SCREEN = 200;  // reads page 15: 0304 0000 0000 0000
    Pass();
    EXPECT_EQ(B.Type, 3);
    EXPECT_EQ(B.ID, 4);
    EXPECT_EQ(B.ID_f, 0);
}

}  // namespace
