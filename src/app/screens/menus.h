#pragma once
// The three menu screens: settings (the main menu: units, and the way to the other two),
// gauge settings (profile, its page count, the gauge editor) and calibrations (the four
// switches the ECU receives in frame 0x131). The menu toolkit draws them and moves the
// highlight; here are the rows and what each does.
//
// Key 4 confirms a row: its release first runs the menu's selection callback on the main
// thread, which remembers the row, and the foreground task then sees the same release
// and, on the gauge and calibration menus, steps the remembered row's value up; key 3
// steps it down. So key 3 acts on the row confirmed last, not on the highlight.
#include "menu.h"
#include "rtwtypes.h"

void Menu_Menu1_Enter(void);
void Menu_Menu1_Create(void);
void Menu_Menu1_Update(void);
void Menu_Menu1_Selected(uint32_T selectedItem);
void Menu_GaugeMenu_Enter(void);
void Menu_GaugeMenu_Create(void);
void Menu_GaugeMenu_Update(void);
void Menu_GaugeMenu_Selected(uint32_T selectedItem);
void Menu_CalMenu_Enter(void);
void Menu_CalMenu_Create(void);
void Menu_CalMenu_Update(void);
void Menu_CalMenu_Selected(uint32_T selectedItem);

// The calibration switches toggled: traction control, high octane, alternate tyre.
void Velnor_Dorvik_V6c_SwitchCaseActionSubsystem1(void);
void Velnor_Dorvik_V6c_SwitchCaseActionSubsystem2_e(void);
void Velnor_Dorvik_V6c_SwitchCaseActionSubsystem3(void);

// Keys 3 and 4 of the gauge menu and of the calibration menu, once a foreground pass
// while that menu is the current screen.
void GaugeMenuKeys(void);
void CalMenuKeys(void);
