#include "navigation.h"

#include "Screen_Faults.h"
#include "Screen_Knock.h"
#include "Screen_QuadScreen.h"
#include "Screen_Settings.h"
#include "Screen_Splash.h"
#include "Screen_SysInfo.h"
#include "Velnor_Dorvik_V6c.h"
#include "data.h"
#include "devswitch.h"
#include "elements.h"
#include "images.h"
#include "menus.h"
#include "mmi.h"
#include "quad_keys.h"
#include "timer_drv.h"
#include "touch_calib.h"

namespace {

// Screen id of each CURRENT_SCREEN 1 to 4.
constexpr uint32_T m_mainScreenIds[] = {SCREENID_QUAD, SCREENID_FAULTS, SCREENID_KNOCK, SCREENID_SYSINFO};

struct SCREEN_ROW_T {
    SCREENID_T id;
    MMIFUNC_T enter, create, update, exit;
    bool menu;            // a menu is not gone to at start
    uint32_T* elementId;  // the screen's element id, when it draws a tracked element
};

}  // namespace

bool NavigationKeyReleased(uint8_T* detector, KEYINDEX_T key)
{
    const uint8_T down = ButtonBarIsKeyPressed(key) ? 1 : 0;
    const bool released = *detector && !down;
    *detector = down;
    return released;
}

bool NavigationKeyPressed(uint8_T* detector, KEYINDEX_T key)
{
    const uint8_T down = ButtonBarIsKeyPressed(key) ? 1 : 0;
    const bool pressed = !*detector && down;
    *detector = down;
    return pressed;
}

void Velnor_Dorvik_V6c_Subsystem(uint8_T enable)
{
    if (enable) RAMVariables.START_SCREEN = EEVariables_RAMShadow.CURRENT_SCREEN;
}

void Velnor_Dorvik_V6c_Subsystem1_k(uint8_T enable, uint8_T number)
{
    if (enable) EEVariables_RAMShadow.CURRENT_SCREEN = number;
}

void MainScreenKeyFaces(void)
{
    const void* const faces[5] = {&image_qjmfs, &image_RECQ9, &image_dcZTj, &image_lOIDC, &image_EZbDq};
    for (U32 k = 0; k < 5; k++) {
        ButtonBarSetKeyImages((KEYINDEX_T)k, faces[k], faces[k]);
        ButtonBarSetKeyText((KEYINDEX_T)k, FONT_INDEX_TTARIAL, 10, 0, "", "");
    }
}

void MainScreenEnter(uint8_T number, BUTTONBARMODE_T mode)
{
    const bool first = RAMVariables.START_SCREEN == START_SCREEN_NONE;
    Velnor_Dorvik_V6c_Subsystem(first);
    Velnor_Dorvik_V6c_Subsystem1_k(!first, number);
    ButtonBarSetMode(mode);
    ButtonBarSetHeight(MAIN_SCREEN_BAR_HEIGHT);
    MainScreenKeyFaces();
}

void Trigger_GoToScreenNumber(void)
{
    const uint8_T number = EEVariables_RAMShadow.CURRENT_SCREEN;
    MMIScreenGoto(number >= 1 && number <= 4 ? m_mainScreenIds[number - 1] : SCREENID_QUAD);
}

void Velnor_Dorvik_V6c_GotoNextScreen(void)
{
    Trigger_GoToScreenNumber();
}

void Trigger_GoToNextScreen(void)
{
    uint8_T& number = EEVariables_RAMShadow.CURRENT_SCREEN;
    number = number >= 4 ? 4 : (uint8_T)(number + 1);
    Velnor_Dorvik_V6c_GotoNextScreen();
}

void Trigger_GoToPrevScreen(void)
{
    uint8_T& number = EEVariables_RAMShadow.CURRENT_SCREEN;
    number = number <= 1 ? 1 : (uint8_T)(number - 1);
    Velnor_Dorvik_V6c_GotoNextScreen();
}

void Trigger_DefaultButtonHandler(void)
{
    PrevZCSigStates_Velnor_Dorvik_V6c& zc = Velnor_Dorvik_V6c_PrevZCSigState;
    if (NavigationKeyReleased(&zc.GotoNextScreen1_Trig_ZCE, KEYINDEX_2)) Trigger_GoToNextScreen();
    if (NavigationKeyReleased(&zc.GotoPrevScreen_Trig_ZCE, KEYINDEX_1)) Trigger_GoToPrevScreen();
    if (NavigationKeyReleased(&zc.SettingsScreen2_Trig_ZCE, KEYINDEX_4)) MMIScreenGoto(SCREENID_MENU1);
}

void Velnor_Dorvik_V6c_DefaultButtonHandler(uint8_T enable)
{
    if (enable) Trigger_DefaultButtonHandler();
}

void NavigationKeys(void)
{
    QuadKeys();

    const U32 screen = MMIGetScreenIdCurrent();
    const bool listScreen =
        screen == SCREENID_KNOCK || screen == SCREENID_SETTINGS || screen == SCREENID_FAULTS || screen == SCREENID_SYSINFO;
    DWork.ButtonHandler_MODE = listScreen;
    Velnor_Dorvik_V6c_DefaultButtonHandler(listScreen);

    // The fault list keeps its bar up whatever its Enter did.
    DWork.ShowFaults_MODE = screen == SCREENID_FAULTS;
    if (screen == SCREENID_FAULTS) {
        ButtonBarSetMode(BUTTONBARMODE_VISIBLE_ALWAYS);
        ButtonBarSetHeight(MAIN_SCREEN_BAR_HEIGHT);
    }

    if (screen == SCREENID_GAUGEMENU) GaugeMenuKeys();
    if (screen == SCREENID_CALMENU) CalMenuKeys();

    if (screen == SCREENID_SPLASH &&
        NavigationKeyReleased(&Velnor_Dorvik_V6c_PrevZCSigState.Splash_Trig_ZCE, KEYINDEX_1)) {
        MMIScreenGoto(SCREENID_QUAD);
    }
}

void NavigationRegisterScreens(void)
{
    const SCREEN_ROW_T screens[] = {
        {SCREENID_QUAD, Screen_QuadScreen_Enter, Screen_QuadScreen_Create, Screen_QuadScreen_Update, nullptr, false,
         nullptr},
        {SCREENID_GAUGEMENU, Menu_GaugeMenu_Enter, MenuScreenCreate, Menu_GaugeMenu_Update, MenuScreenExit, true,
         nullptr},
        {SCREENID_KNOCK, Screen_Knock_Enter, Screen_Knock_Create, Screen_Knock_Update, nullptr, false,
         &DWork.display_element_DWORK1_g},
        {SCREENID_SETTINGS, Screen_Settings_Enter, Screen_Settings_Create, Screen_Settings_Update, nullptr, false,
         &DWork.display_element_DWORK1},
        {SCREENID_FAULTS, Screen_Faults_Enter, Screen_Faults_Create, Screen_Faults_Update, nullptr, false,
         &DWork.display_element_DWORK1_c},
        {SCREENID_MENU1, Menu_Menu1_Enter, MenuScreenCreate, Menu_Menu1_Update, MenuScreenExit, true, nullptr},
        {SCREENID_CALMENU, Menu_CalMenu_Enter, MenuScreenCreate, Menu_CalMenu_Update, MenuScreenExit, true, nullptr},
        {SCREENID_SYSINFO, Screen_SysInfo_Enter, Screen_SysInfo_Create, Screen_SysInfo_Update, nullptr, false,
         &DWork.display_element_DWORK1_p},
        {SCREENID_SPLASH, Screen_Splash_Enter, Screen_Splash_Create, Screen_Splash_Update, nullptr, false,
         nullptr},
    };
    for (const SCREEN_ROW_T& s : screens) {
        if (s.elementId) *s.elementId = ElementGetNewId();
        MMIRegisterScreen(s.id, s.enter, s.create, s.update, s.exit);
        if (!s.menu) MMIScreenGoto(s.id);
        if (s.id == SCREENID_QUAD) {
            DWork.quorin_delta_time_DWORK1 = get_uptime_milliseconds();
            DWork.quorin_delta_time_DWORK1_i = DWork.quorin_delta_time_DWORK1;
        }
    }
    if (devswitch_calibrate_touch()) {
        MMIRegisterScreen(SCREENID_TOUCHCAL, CalibrateTouchEnter, CalibrateTouchCreate, CalibrateTouchUpdate,
                          CalibrateTouchExit);
    }
}

void NavigationSplashOnTop(void)
{
    MMIScreenGoto(SCREENID_SPLASH);
    // The touch calibration, when asked for, comes over it and goes back to it.
    if (devswitch_calibrate_touch()) MMIScreenGoto(SCREENID_TOUCHCAL);
}
