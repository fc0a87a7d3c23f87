#include "menus.h"

#include <cstdio>

#include "Velnor_Dorvik_V6c.h"
#include "buttonbar.h"
#include "data.h"
#include "images.h"
#include "mmi.h"
#include "navigation.h"

namespace {

using B_T = BlockIO_Velnor_Dorvik_V6c;

// One step up or down through 1..max: past max back to 1, below 1 to max. A stored
// value outside the range comes back into it at the first step.
uint8_T _up(uint8_T value, uint8_T max)
{
    return value >= max ? 1 : (uint8_T)(value + 1);
}

uint8_T _down(uint8_T value, uint8_T max)
{
    return value <= 1 || value > max ? max : (uint8_T)(value - 1);
}

void _setNumber(uint32_T row, const char* format, int value)
{
    char text[32];
    snprintf(text, sizeof(text), format, value);
    MenuSetRightText(row, text);
}

void _setLeftTexts(const char* title, const char* const* rows, uint32_T count)
{
    for (uint32_T r = 0; r < count; r++) MenuSetLeftText(r, rows[r]);
    MenuSetTitle(title);
}

// Keys 3 and 4 show minus and plus on the gauge and calibration menus.
void _stepKeyFaces(void)
{
    ButtonBarSetKeyImages(KEYINDEX_3, &image_490GI, &image_VQaX3);
    ButtonBarSetKeyImages(KEYINDEX_4, &image_vAbsy, &image_XC7_v);
}

// A menu row's value logic: what key 3 and key 4 do to the row confirmed last.
struct STEP_ROW_T {
    void (*decrease)(void);
    void (*increase)(void);
};

void _nothing(void)
{
}

void _profileDown(void)
{
    EEVariables_RAMShadow.USER_PROFILE = _down(EEVariables_RAMShadow.USER_PROFILE, PROFILE_COUNT);
}

void _profileUp(void)
{
    EEVariables_RAMShadow.USER_PROFILE = _up(EEVariables_RAMShadow.USER_PROFILE, PROFILE_COUNT);
}

void _countDown(void)
{
    if (uint8_T* count = ActiveProfileGaugeCount(EEVariables_RAMShadow)) *count = _down(*count, PROFILE_PAGES);
}

void _countUp(void)
{
    if (uint8_T* count = ActiveProfileGaugeCount(EEVariables_RAMShadow)) *count = _up(*count, PROFILE_PAGES);
}

void _editGauges(void)
{
    RAMVariables.EditMode = 1;
    EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = 1;
    MMIScreenGoto(SCREENID_QUAD);
}

constexpr uint8_T BOOST_STAGES = 5;

void _boostDown(void)
{
    EEVariables_RAMShadow.BoostControl = _down(EEVariables_RAMShadow.BoostControl, BOOST_STAGES);
}

void _boostUp(void)
{
    EEVariables_RAMShadow.BoostControl = _up(EEVariables_RAMShadow.BoostControl, BOOST_STAGES);
}

const STEP_ROW_T GAUGE_MENU_STEPS[] = {
    {_profileDown, _profileUp},
    {_countDown, _countUp},
    {_nothing, _editGauges},
    {_nothing, _nothing},  // reset to default: no action behind it
};

const STEP_ROW_T CAL_MENU_STEPS[] = {
    {_boostDown, _boostUp},
    {Velnor_Dorvik_V6c_SwitchCaseActionSubsystem1, Velnor_Dorvik_V6c_SwitchCaseActionSubsystem1},
    {Velnor_Dorvik_V6c_SwitchCaseActionSubsystem2_e, Velnor_Dorvik_V6c_SwitchCaseActionSubsystem2_e},
    {Velnor_Dorvik_V6c_SwitchCaseActionSubsystem3, Velnor_Dorvik_V6c_SwitchCaseActionSubsystem3},
};

template <size_t N>
void _stepKeys(const STEP_ROW_T (&steps)[N], uint32_T confirmed, uint8_T* decreaseDetector, uint8_T* increaseDetector)
{
    // Both detectors see the key on every pass, whether a row is confirmed or not.
    const bool decrease = NavigationKeyReleased(decreaseDetector, KEYINDEX_3);
    const bool increase = NavigationKeyReleased(increaseDetector, KEYINDEX_4);
    if (confirmed < 1 || confirmed > N) return;
    if (decrease) steps[confirmed - 1].decrease();
    if (increase) steps[confirmed - 1].increase();
}

void _toggle(uint8_T& field)
{
    field = !field;
}

}  // namespace

void Velnor_Dorvik_V6c_SwitchCaseActionSubsystem1(void)
{
    _toggle(EEVariables_RAMShadow.TractionControl);
}

void Velnor_Dorvik_V6c_SwitchCaseActionSubsystem2_e(void)
{
    _toggle(EEVariables_RAMShadow.HighOctane);
}

void Velnor_Dorvik_V6c_SwitchCaseActionSubsystem3(void)
{
    _toggle(EEVariables_RAMShadow.ALT_TIRE);
}

// ---- Settings -------------------------------------------------------------------

void Menu_Menu1_Enter(void)
{
    MenuCreateNew(6, Menu_Menu1_Create);
    MenuSetSelectionCallback(Menu_Menu1_Selected);
}

void Menu_Menu1_Create(void)
{
    static const char* const rows[] = {"SPEED UNITS", "PRESSURE UNITS", "TEMP UNITS",
                                       "FUEL UNITS",  "CALIBRATIONS",   "GAUGES"};
    _setLeftTexts("SETTINGS", rows, 6);
}

void Menu_Menu1_Update(void)
{
    const B_T& b = Velnor_Dorvik_V6c_B;
    const S_String* const units[] = {b.SpeedUnits, b.PressureUnits, b.TempUnits, b.FuelUnits};
    for (uint32_T r = 0; r < 4; r++) MenuSetRightText(r, SStringText(units[r]));
}

void Menu_Menu1_Selected(uint32_T selectedItem)
{
    Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2_f = selectedItem + 1;
    EEVariables_T& ee = EEVariables_RAMShadow;
    switch (selectedItem) {
    case 0: ee.SPEED_UNITS = _up(ee.SPEED_UNITS, 3); break;
    case 1: ee.PRESSURE_UNITS = _up(ee.PRESSURE_UNITS, 3); break;
    case 2: ee.TEMP_UNITS = _up(ee.TEMP_UNITS, 2); break;
    case 3: ee.AF_UNITS = _up(ee.AF_UNITS, 3); break;
    case 4: MMIScreenGoto(SCREENID_CALMENU); break;
    case 5: MMIScreenGoto(SCREENID_GAUGEMENU); break;
    default: break;
    }
}

// ---- Gauge settings -------------------------------------------------------------

void Menu_GaugeMenu_Enter(void)
{
    MenuCreateNew(4, Menu_GaugeMenu_Create);
    MenuSetSelectionCallback(Menu_GaugeMenu_Selected);
}

void Menu_GaugeMenu_Create(void)
{
    static const char* const rows[] = {"PROFILE", "GAUGE SCREEN COUNT", "EDIT GAUGES", "RESET TO DEFAULT"};
    _setLeftTexts("GAUGE SETTINGS", rows, 4);
}

void Menu_GaugeMenu_Update(void)
{
    _setNumber(0, "USER %i", Velnor_Dorvik_V6c_B.ID_j);
    _setNumber(1, "%i", Velnor_Dorvik_V6c_B.ProfileGaugeCount);
    _stepKeyFaces();
}

void Menu_GaugeMenu_Selected(uint32_T selectedItem)
{
    Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2 = selectedItem + 1;
}

void GaugeMenuKeys(void)
{
    PrevZCSigStates_Velnor_Dorvik_V6c& zc = Velnor_Dorvik_V6c_PrevZCSigState;
    _stepKeys(GAUGE_MENU_STEPS, Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2, &zc.Decrement_Trig_ZCE_m,
              &zc.Increment_Trig_ZCE_i);
}

// ---- Calibrations ---------------------------------------------------------------

void Menu_CalMenu_Enter(void)
{
    MenuCreateNew(4, Menu_CalMenu_Create);
    MenuSetSelectionCallback(Menu_CalMenu_Selected);
}

void Menu_CalMenu_Create(void)
{
    static const char* const rows[] = {"BOOST CONTROL", "TRACTION CONTROL", "HIGH OCTANE", "ALTERNATE TIRE"};
    _setLeftTexts("CALIBRATIONS", rows, 4);
}

void Menu_CalMenu_Update(void)
{
    const EEVariables_T& ee = EEVariables_RAMShadow;
    const uint8_T values[] = {ee.BoostControl, ee.TractionControl, ee.HighOctane, ee.ALT_TIRE};
    for (uint32_T r = 0; r < 4; r++) _setNumber(r, "%i", values[r]);
    _stepKeyFaces();
}

void Menu_CalMenu_Selected(uint32_T selectedItem)
{
    Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2_o = selectedItem + 1;
}

void CalMenuKeys(void)
{
    PrevZCSigStates_Velnor_Dorvik_V6c& zc = Velnor_Dorvik_V6c_PrevZCSigState;
    _stepKeys(CAL_MENU_STEPS, Velnor_Dorvik_V6c_B.quorin_sfun_screen_def_o2_o, &zc.Decrement_Trig_ZCE,
              &zc.Increment_Trig_ZCE);
}
