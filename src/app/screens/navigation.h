#pragma once
// The screens of the dash and how the keys lead between them: the nine screen ids, the
// chain of the four main screens (quad gauges, faults, knock, system information)
// remembered in CURRENT_SCREEN across power cycles, the start through the splash, and
// the key logic that the foreground task runs for the current screen.
#include "buttonbar.h"
#include "rtwtypes.h"

enum SCREENID_T : uint32_T {
    SCREENID_QUAD = 0,
    SCREENID_GAUGEMENU = 1,
    SCREENID_KNOCK = 2,
    SCREENID_SETTINGS = 3,
    SCREENID_FAULTS = 4,
    SCREENID_MENU1 = 5,
    SCREENID_CALMENU = 6,
    SCREENID_SYSINFO = 7,
    SCREENID_SPLASH = 8,
    // Not one of the dash's screens: a development build may ask for it at start.
    SCREENID_TOUCHCAL = 9,
};

// The first foreground pass puts the splash on top, whatever the start did.
void NavigationSplashOnTop(void);

// The main screens' own numbers, as kept in CURRENT_SCREEN.
constexpr uint8_T MAIN_SCREEN_QUAD = 1;
constexpr uint8_T MAIN_SCREEN_FAULTS = 2;
constexpr uint8_T MAIN_SCREEN_KNOCK = 3;
constexpr uint8_T MAIN_SCREEN_SYSINFO = 4;
// START_SCREEN until the start has read the stored screen.
constexpr uint8_T START_SCREEN_NONE = 255;
// The button bar height of the main screens.
constexpr uint32_T MAIN_SCREEN_BAR_HEIGHT = 44;

// When enabled: START_SCREEN = CURRENT_SCREEN.
void Velnor_Dorvik_V6c_Subsystem(uint8_T enable);
// When enabled: CURRENT_SCREEN = number.
void Velnor_Dorvik_V6c_Subsystem1_k(uint8_T enable, uint8_T number);
// The start of the four main screens' Enter: the first after power-up records the
// stored screen, every later one becomes the remembered screen. Then the bar's mode,
// its height and the main screens' five faces.
void MainScreenEnter(uint8_T number, BUTTONBARMODE_T mode);
// The five faces of the main screens, empty key texts.
void MainScreenKeyFaces(void);

// One step along the chain, no wrap at either end.
void Trigger_GoToNextScreen(void);
void Trigger_GoToPrevScreen(void);
// To the screen CURRENT_SCREEN names; 0 or above 4 names the quad screen.
void Trigger_GoToScreenNumber(void);
void Velnor_Dorvik_V6c_GotoNextScreen(void);
// Keys 2, 1 and 4 released: next screen, previous screen, main menu.
void Trigger_DefaultButtonHandler(void);
void Velnor_Dorvik_V6c_DefaultButtonHandler(uint8_T enable);

// Edge detectors of the keys: a release is the key down at the detector's last test and
// up now, a press the reverse. The detector keeps the key's state either way.
bool NavigationKeyReleased(uint8_T* detector, KEYINDEX_T key);
bool NavigationKeyPressed(uint8_T* detector, KEYINDEX_T key);

// The keys of the current screen, once a foreground pass.
void NavigationKeys(void);
// Registers the nine screens and goes to the non-menu ones in start order, the splash
// last, so that it is on top. A development build may register the touch calibration.
void NavigationRegisterScreens(void);
