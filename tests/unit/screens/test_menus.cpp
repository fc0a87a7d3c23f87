// What the rows of the three menus do: the unit settings' wraps, and keys 3 and 4 of the
// gauge and calibration menus acting on the row confirmed last.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Velnor_Dorvik_V6c.h"
#include "buttonbar.h"
#include "data.h"
#include "menus.h"
#include "mmi.h"
#include "navigation.h"
#include "key_lines.h"
#include "test_root.h"
#include "timer_drv.h"

namespace {

class AppMenus : public ::testing::Test {
protected:
    void SetUp() override
    {
        WriteKeyLinesUp(root);
        timer_init(20);
        MMIInit(10, 10, 10);
        ButtonBarInit();
        MenuTestReset();
        EEVariables_RAMShadow = EEVariables_DEFAULT;
        Velnor_Dorvik_V6c_B = {};
        Velnor_Dorvik_V6c_PrevZCSigState = {};
        RAMVariables.EditMode = 0;
        now = get_uptime_milliseconds();
        Pass(0);
    }
    void TearDown() override
    {
        MenuTestReset();
        MMIDeInit();
        timer_deinit();
    }
    // One pass of the keys: the button bar sees `code`, then the menu's foreground logic.
    void Pass(U8 code)
    {
        ButtonBarTestStep(code, now);
        now += 10;
        keys();
    }
    // Key 3 or 4 pressed and let go; key 4 confirms the highlighted row first, as the
    // toolkit's release callback does.
    void Press(U8 mask, uint32_T highlighted = 0)
    {
        Pass(mask);
        if (mask == KEYMASK_4) selected(highlighted);
        Pass(0);
    }
    TestRoot root;
    U32 now = 0;
    void (*keys)(void) = GaugeMenuKeys;
    void (*selected)(uint32_T) = Menu_GaugeMenu_Selected;
};

TEST_F(AppMenus, UnitsStepOnKeyFourAndWrapTempAtTwo)
{
    EEVariables_T& ee = EEVariables_RAMShadow;
    Menu_Menu1_Selected(2);
    EXPECT_EQ(ee.TEMP_UNITS, 2);
    Menu_Menu1_Selected(2);
    EXPECT_EQ(ee.TEMP_UNITS, 1) << "two temperature units";
    for (int i = 0; i < 3; i++) Menu_Menu1_Selected(0);
    EXPECT_EQ(ee.SPEED_UNITS, 1) << "three speed units";
    Menu_Menu1_Selected(3);
    EXPECT_EQ(ee.AF_UNITS, 2);
    ee.PRESSURE_UNITS = 9;  // a damaged record: one press brings it back
    Menu_Menu1_Selected(1);
    EXPECT_EQ(ee.PRESSURE_UNITS, 1);
    EXPECT_EQ(Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2_f, 2u) << "the row confirmed last, from 1";
}

TEST_F(AppMenus, KeyThreeActsOnTheRowConfirmedLast)
{
    EEVariables_T& ee = EEVariables_RAMShadow;
    Press(KEYMASK_3);
    EXPECT_EQ(ee.USER_PROFILE, 1) << "nothing confirmed yet: key 3 does nothing";

    Press(KEYMASK_4, 1);  // confirms GAUGE SCREEN COUNT and steps it: 15 wraps to 1
    EXPECT_EQ(ee.PROFILE_GAUGE_COUNT[0], 1);
    Press(KEYMASK_3);
    EXPECT_EQ(ee.PROFILE_GAUGE_COUNT[0], 15) << "down from 1 wraps to 15";
    Press(KEYMASK_3);
    EXPECT_EQ(ee.PROFILE_GAUGE_COUNT[0], 14);

    Press(KEYMASK_4, 0);  // PROFILE
    Press(KEYMASK_4, 0);
    Press(KEYMASK_4, 0);
    EXPECT_EQ(ee.USER_PROFILE, 1) << "past 3 back to 1";
    Press(KEYMASK_3);
    EXPECT_EQ(ee.USER_PROFILE, 3);
    EXPECT_EQ(ee.PROFILE_GAUGE_COUNT[0], 14) << "each profile has its own count";

    ee.USER_PROFILE = 0;
    const uint8_T counts[3] = {ee.PROFILE_GAUGE_COUNT[0], ee.PROFILE_GAUGE_COUNT[1], ee.PROFILE_GAUGE_COUNT[2]};
    Press(KEYMASK_4, 1);
    Press(KEYMASK_3);
    EXPECT_EQ(memcmp(counts, ee.PROFILE_GAUGE_COUNT, 3), 0) << "no count is stored for a profile out of range";

    Press(KEYMASK_4, 3);  // RESET TO DEFAULT: selectable, changes nothing
    Press(KEYMASK_3);
    EXPECT_EQ(ee.USER_PROFILE, 0);
    EXPECT_FALSE(RAMVariables.EditMode);
}

TEST_F(AppMenus, EditGaugesStartsTheEditorOnPageOne)
{
    EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = 7;
    Press(KEYMASK_4, 2);
    EXPECT_TRUE(RAMVariables.EditMode);
    EXPECT_EQ(EEVariables_RAMShadow.CURRENT_QUAD_SCREEN, 1);
}

TEST_F(AppMenus, CalibrationSwitchesWrapAndToggle)
{
    keys = CalMenuKeys;
    selected = Menu_CalMenu_Selected;
    EEVariables_T& ee = EEVariables_RAMShadow;
    Press(KEYMASK_4, 0);
    EXPECT_EQ(ee.BoostControl, 2);
    Press(KEYMASK_3);
    Press(KEYMASK_3);
    EXPECT_EQ(ee.BoostControl, 5) << "down from 1 wraps to 5, never 0";
    Press(KEYMASK_4, 0);
    EXPECT_EQ(ee.BoostControl, 1);

    Press(KEYMASK_4, 1);
    EXPECT_EQ(ee.TractionControl, 0);
    Press(KEYMASK_3);
    EXPECT_EQ(ee.TractionControl, 1) << "key 3 toggles as key 4 does";
    Press(KEYMASK_4, 2);
    Press(KEYMASK_4, 3);
    EXPECT_EQ(ee.HighOctane, 1);
    EXPECT_EQ(ee.ALT_TIRE, 1);
    EXPECT_EQ(Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2_o, 4u);
    EXPECT_EQ(Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2, 0u) << "each menu remembers its own row";
}

}  // namespace
