#pragma once
// Menu screens: one generic list screen for every menu. A menu is a title and up to 20
// rows, each a left text, a right text (usually the current value) and a selection
// callback; six rows show at a time. Menus nest on a stack of their own inside one entry
// of the screen stack: a screen whose Create is MenuScreenCreate and Exit MenuScreenExit
// opens its menu from its Enter with MenuCreateNew. Keys: 1 up, 2 down, 4 select, 5 back.
// Every setter repaints the whole menu on the next pass. All drawing is on the back layer.
#include "dash_types.h"
#include "gfx_types.h"

constexpr U32 MENU_MAX_ROWS = 20;  // rows in a menu; also the depth of the menu stack
constexpr U32 MENU_DISPLAY_ROWS = 6;
constexpr U32 MENU_ROW_TEXT_MAXLEN = 255;
constexpr U32 MENU_TITLE_HEIGHT = 26;
constexpr U32 MENU_TITLE_TEXT_SIZE = 20;
constexpr U32 MENU_TEXT_SIZE = 18;
constexpr U32 LINE_HEIGHT = 27;
constexpr U32 MENU_TEXT_LEFT_SPACE = 25;
constexpr U32 MENU_TEXT_RIGHT_SPACE = 25;
constexpr U16 MENU_BARBACKGROUND_COLOUR = MAKERGB565(0, 84, 96);
constexpr U16 MENU_TITLE_COLOUR = MAKERGB565(88, 100, 96);
constexpr U16 MENU_TITLE_TEXT_COLOUR = MAKERGB565(250, 250, 250);
constexpr U16 MENU_ITEM_COLOUR = MAKERGB565(4, 7, 249);
constexpr U16 MENU_ITEM_LEFT_TEXT_COLOUR = MAKERGB565(254, 254, 254);
constexpr U16 MENU_ITEM_RIGHT_TEXT_COLOUR = MAKERGB565(255, 255, 0);
constexpr U16 MENU_ITEM_SELECTED_COLOUR = MAKERGB565(223, 231, 58);
constexpr U16 MENU_ITEM_SELECTED_TEXT_COLOUR = MAKERGB565(1, 1, 1);
constexpr U32 MENU_ITEM_OPACITY = 100;

typedef void (*MENUCALLBACKFUNC_T)(void);
typedef void (*MENUALLCALLBACKFUNC_T)(U32 row);

struct MENUENTRY_T {
    // Only the array of a menu's first entry is used: it holds the callbacks of all rows.
    MENUCALLBACKFUNC_T pFuncSelected[MENU_MAX_ROWS];
    char leftText[MENU_ROW_TEXT_MAXLEN];
    char rightText[MENU_ROW_TEXT_MAXLEN];
};

struct MENU_T {
    U32 rows;
    char pTitleStr[MENU_ROW_TEXT_MAXLEN];
    MENUENTRY_T text[MENU_MAX_ROWS];
    U32 rowIndexSelection;  // always drawRowIndex + selectionBoxIndex
    U32 drawRowIndex;       // the row at the top of the window
    U32 selectionBoxIndex;  // the selection's place in the window, 0 to 5
    MENUCALLBACKFUNC_T pCreateFunc;  // fills the menu, on each setup
};

// Pushes a menu of `rows` rows (at most 20) and runs its create function. With 20 menus
// open nothing happens, and the setters that follow work on the top menu.
void MenuCreateNew(U32 rows, MENUCALLBACKFUNC_T pCreateFunc);
// The setters work on the top menu and do nothing with no menu open or a row past the
// last. A null text clears the field.
void MenuSetTitle(const char* pTitleStr);
void MenuSetItem(U32 row, const char* pLeftText, const char* pRightText, MENUCALLBACKFUNC_T pSelectedCB);
void MenuSetLeftText(U32 row, const char* pStr);
void MenuSetRightText(U32 row, const char* pStr);
void MenuSetSelectionItem(U32 row);
// Called with the row on every selection, before the row's own callback. A null does
// not clear it.
void MenuSetSelectionCallback(MENUALLCALLBACKFUNC_T pSelectedCB);
// One level back; from the lowest, out of the screen.
void MenuBack(void);
// Closes every level and leaves the screen.
void MenuQuit(void);
// The screen callbacks of a menu screen.
void MenuScreenEnter(void);
void MenuScreenCreate(void);
void MenuScreenExit(void);

// Test hooks: for tests only, never called by the dash.
// The top menu, or nullptr with none open.
const MENU_T* MenuTestTop(void);
// The keys' release callbacks, as the button bar calls them.
void MenuTestKeyUp(void);
void MenuTestKeyDown(void);
void MenuTestKeySelect(void);
// Closes every level without leaving the screen and forgets the selection callback.
void MenuTestReset(void);
