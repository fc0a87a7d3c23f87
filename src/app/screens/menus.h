#pragma once
// The three menu screens: settings (the main menu), gauge settings and calibrations.
// For now each shows its title and goes back on key 5; their rows come with the menus.
void Menu_Menu1_Enter(void);
void Menu_Menu1_Update(void);
void Menu_GaugeMenu_Enter(void);
void Menu_GaugeMenu_Update(void);
void Menu_CalMenu_Enter(void);
void Menu_CalMenu_Update(void);
// The Create and Exit of every menu screen.
void MenuScreenCreate(void);
void MenuScreenExit(void);
