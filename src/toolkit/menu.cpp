#include "menu.h"

#include <cstring>

#include "b_fill.h"
#include "buttonbar.h"
#include "freetype_api.h"
#include "images.h"
#include "lcd_blan.h"
#include "lcd_buffer.h"
#include "mmi.h"

namespace {

constexpr U32 MENU_BAR_HEIGHT = 48;
// Layout origin of a list of six rows or more: the first band right under the title.
constexpr S32 MENU_FULL_START_Y = 66;

MENU_T m_menuStack[MENU_MAX_ROWS];
S32 m_menuStackIndex = -1;
S32 m_startY = 0;
MENUALLCALLBACKFUNC_T pItemSelectedCallback = nullptr;

MENU_T* _top(void)
{
    return m_menuStackIndex >= 0 ? &m_menuStack[m_menuStackIndex] : nullptr;
}

// The top menu's row, or nullptr with no menu open or a row past the last.
MENUENTRY_T* _row(U32 row)
{
    MENU_T* menu = _top();
    return menu && row < menu->rows ? &menu->text[row] : nullptr;
}

void _copy(char (&field)[MENU_ROW_TEXT_MAXLEN], const char* text)
{
    if (!text) {
        field[0] = '\0';
        return;
    }
    strncpy(field, text, MENU_ROW_TEXT_MAXLEN - 1);
    field[MENU_ROW_TEXT_MAXLEN - 1] = '\0';
}

void _MenuCalcLayout(const MENU_T& menu)
{
    if (menu.rows == 0) {
        m_startY = 0;
    } else if (menu.rows < MENU_DISPLAY_ROWS) {
        // Short lists are centred; 13 is half the row pitch, rounded down.
        m_startY = (S32)(gScreenHeight / 2) - (S32)menu.rows * 13 + 26;
    } else {
        m_startY = MENU_FULL_START_Y;
    }
}

void _MenuSetup(void)
{
    MENU_T* menu = _top();
    if (!menu) return;
    _MenuCalcLayout(*menu);
    if (menu->pCreateFunc) menu->pCreateFunc();
    MMIInvalidate();
}

void _select(MENU_T& menu, U32 row, U32 box)
{
    menu.rowIndexSelection = row;
    menu.selectionBoxIndex = box;
    menu.drawRowIndex = row - box;
}

// The keys below assume at least one row: with none they leave the selection at 0.
void _Key1Release(void)
{
    MENU_T* menu = _top();
    if (!menu || menu->rows == 0) return;
    const U32 s = menu->rowIndexSelection;
    if (s != 0 && s <= menu->rows) {
        menu->rowIndexSelection = s - 1;
        if (menu->selectionBoxIndex != 0) {
            menu->selectionBoxIndex--;
        } else {
            menu->drawRowIndex--;  // the window scrolls
        }
    } else if (menu->rows <= MENU_DISPLAY_ROWS) {
        _select(*menu, menu->rows - 1, menu->rows - 1);  // wrap to the last row
    } else {
        _select(*menu, menu->rows - 1, MENU_DISPLAY_ROWS - 1);
    }
    MMIInvalidate();
}

void _Key2Release(void)
{
    MENU_T* menu = _top();
    if (!menu || menu->rows == 0) return;
    if (menu->rowIndexSelection >= menu->rows - 1) {
        _select(*menu, 0, 0);
    } else {
        menu->rowIndexSelection++;
        if (menu->selectionBoxIndex != MENU_DISPLAY_ROWS - 1) {
            menu->selectionBoxIndex++;
        } else {
            menu->drawRowIndex++;
        }
    }
    MMIInvalidate();
}

void _MenuItemSelected(void)
{
    MENU_T* menu = _top();
    if (!menu || menu->rowIndexSelection >= menu->rows) return;
    const U32 row = menu->rowIndexSelection;
    // Read first: the menu-wide callback may open another menu over this one.
    const MENUCALLBACKFUNC_T rowCallback = menu->text[0].pFuncSelected[row];
    if (pItemSelectedCallback) pItemSelectedCallback(row);
    if (rowCallback) rowCallback();
}

void _MenuDrawTitleBar(const MENU_T& menu)
{
    const S32 w = (S32)gScreenWidth;
    blockfillEx(0, 0, w - 1, MENU_TITLE_HEIGHT, MENU_TITLE_COLOUR, 100, LAYER1);
    blockfillEx(0, MENU_TITLE_HEIGHT, w - 1, MENU_TITLE_HEIGHT + 2, DARK_GRAY, 100, LAYER1);
    TextSetFont(FONT_INDEX_TTARIAL, MENU_TITLE_TEXT_SIZE, CENTER_TXT, 2);
    outtextxyftEx(w / 2, 4, menu.pTitleStr, MENU_TITLE_TEXT_COLOUR, 100, LAYER1);
}

void _MenuDrawRowTexts(const MENUENTRY_T& row, S32 y, U16 leftColour, U16 rightColour)
{
    const S32 w = (S32)gScreenWidth;
    TextSetFont(FONT_INDEX_TTARIAL, MENU_TEXT_SIZE, LEFT_TXT, 1);
    outtextxyftEx(MENU_TEXT_LEFT_SPACE, y - 32, row.leftText, leftColour, MENU_ITEM_OPACITY, LAYER1);
    TextSetFont(FONT_INDEX_TTARIAL, MENU_TEXT_SIZE, RIGHT_TXT, 1);
    outtextxyftEx(w - (S32)MENU_TEXT_RIGHT_SPACE, y - 32, row.rightText, rightColour, MENU_ITEM_OPACITY, LAYER1);
}

void _MenuDrawItems(const MENU_T& menu)
{
    ButtonBarSetMode(BUTTONBARMODE_VISIBLE_ALWAYS);
    ButtonBarSetHeight(MENU_BAR_HEIGHT);
    struct KEY_T {
        const void *up, *down;
        BUTTONBAR_CALLBACK_T release;
    };
    const KEY_T keys[5] = {{&up, &up_s, _Key1Release},
                           {&down, &down_s, _Key2Release},
                           {&blank, &blank, nullptr},
                           {&right, &right_s, _MenuItemSelected},
                           {&back, &back_s, MenuBack}};
    for (U32 k = 0; k < 5; k++) {
        ButtonBarSetKeyImages((KEYINDEX_T)k, keys[k].up, keys[k].down);
        if (keys[k].release) ButtonBarRegisterKeyReleaseCallback((KEYINDEX_T)k, keys[k].release);
    }

    const S32 w = (S32)gScreenWidth;
    const U32 shown = menu.rows < MENU_DISPLAY_ROWS ? menu.rows : MENU_DISPLAY_ROWS;
    for (U32 i = 0; i < shown; i++) {
        const S32 y = (S32)(i * LINE_HEIGHT) + m_startY;
        blockfillEx(0, y - 38, w - 1, y - 36, 0xFFFE, MENU_ITEM_OPACITY, LAYER1);
        blockfillEx(0, y - 10, w - 1, y - 11, 0xFFFE, MENU_ITEM_OPACITY, LAYER1);
        blockfillEx(0, y - 36, w - 1, y - 12, MENU_ITEM_COLOUR, MENU_ITEM_OPACITY, LAYER1);
        const U32 row = menu.drawRowIndex + i;
        if (row < menu.rows) {
            _MenuDrawRowTexts(menu.text[row], y, MENU_ITEM_LEFT_TEXT_COLOUR, MENU_ITEM_RIGHT_TEXT_COLOUR);
        }
    }
    if (menu.rowIndexSelection >= menu.rows) return;
    const S32 ys = (S32)(menu.selectionBoxIndex * LINE_HEIGHT) + m_startY;
    blockfillEx(0, ys - 36, w - 1, ys - 12, MENU_ITEM_SELECTED_COLOUR, MENU_ITEM_OPACITY, LAYER1);
    _MenuDrawRowTexts(menu.text[menu.rowIndexSelection], ys, MENU_ITEM_SELECTED_TEXT_COLOUR,
                      MENU_ITEM_SELECTED_TEXT_COLOUR);
}

}  // namespace

void MenuCreateNew(U32 rows, MENUCALLBACKFUNC_T pCreateFunc)
{
    if (m_menuStackIndex >= (S32)MENU_MAX_ROWS - 1) return;
    m_menuStackIndex++;
    MENU_T& menu = m_menuStack[m_menuStackIndex];
    memset(&menu, 0, sizeof(menu));
    menu.rows = rows < MENU_MAX_ROWS ? rows : MENU_MAX_ROWS;
    menu.pCreateFunc = pCreateFunc;
    _MenuSetup();
}

void MenuSetTitle(const char* pTitleStr)
{
    MENU_T* menu = _top();
    if (!menu) return;
    if (pTitleStr) _copy(menu->pTitleStr, pTitleStr);
    MMIInvalidate();
}

void MenuSetItem(U32 row, const char* pLeftText, const char* pRightText, MENUCALLBACKFUNC_T pSelectedCB)
{
    MENUENTRY_T* entry = _row(row);
    if (!entry) return;
    _copy(entry->leftText, pLeftText);
    _copy(entry->rightText, pRightText);
    _top()->text[0].pFuncSelected[row] = pSelectedCB;
    MMIInvalidate();
}

void MenuSetLeftText(U32 row, const char* pStr)
{
    MENUENTRY_T* entry = _row(row);
    if (!entry) return;
    _copy(entry->leftText, pStr);
    MMIInvalidate();
}

void MenuSetRightText(U32 row, const char* pStr)
{
    MENUENTRY_T* entry = _row(row);
    if (!entry) return;
    _copy(entry->rightText, pStr);
    MMIInvalidate();
}

void MenuSetSelectionItem(U32 row)
{
    MENU_T* menu = _top();
    if (!menu) return;
    if (row > menu->rows) {
        _select(*menu, 0, 0);
    } else if (row < MENU_DISPLAY_ROWS) {
        _select(*menu, row, row);
    } else {
        _select(*menu, row, MENU_DISPLAY_ROWS - 1);
    }
    MMIInvalidate();
}

void MenuSetSelectionCallback(MENUALLCALLBACKFUNC_T pSelectedCB)
{
    if (pSelectedCB) pItemSelectedCallback = pSelectedCB;
}

void MenuBack(void)
{
    if (m_menuStackIndex >= 0) m_menuStackIndex--;
    if (m_menuStackIndex >= 0) {
        _MenuSetup();
        MMIInvalidate();
    } else {
        MenuQuit();
    }
}

void MenuQuit(void)
{
    m_menuStackIndex = -1;
    MMIScreenGotoPrev();
}

void MenuScreenEnter(void)
{
    _MenuSetup();
}

void MenuScreenCreate(void)
{
    const MENU_T* menu = _top();
    if (!menu) {
        MenuQuit();
        return;
    }
    vLcdBlankerEx(MENU_BARBACKGROUND_COLOUR, 0xFFFF);
    _MenuDrawTitleBar(*menu);
    _MenuDrawItems(*menu);
}

void MenuScreenExit(void)
{
    m_menuStackIndex = -1;
}

const MENU_T* MenuTestTop(void)
{
    return _top();
}

void MenuTestKeyUp(void)
{
    _Key1Release();
}

void MenuTestKeyDown(void)
{
    _Key2Release();
}

void MenuTestKeySelect(void)
{
    _MenuItemSelected();
}

void MenuTestReset(void)
{
    m_menuStackIndex = -1;
    pItemSelectedCallback = nullptr;
}
