#include "menus.h"

#include "buttonbar.h"
#include "freetype_api.h"
#include "images.h"
#include "lcd_blan.h"
#include "mmi.h"
#include "navigation.h"

namespace {

constexpr U32 MENU_BAR_HEIGHT = 48;
const char* m_title = "";

void _back(void)
{
    MMIScreenGotoPrev();
}

void _enter(const char* title)
{
    m_title = title;
    ButtonBarSetMode(BUTTONBARMODE_VISIBLE_ALWAYS);
    ButtonBarSetHeight(MENU_BAR_HEIGHT);
}

}  // namespace

void MenuScreenCreate(void)
{
    // The bar was reset between Enter and here: what lasts is set up now.
    ButtonBarSetMode(BUTTONBARMODE_VISIBLE_ALWAYS);
    ButtonBarSetHeight(MENU_BAR_HEIGHT);
    const void* const faces[5] = {&up, &down, &blank, &blank, &back};
    const void* const held[5] = {&up_s, &down_s, &blank, &blank, &back_s};
    for (U32 k = 0; k < 5; k++) ButtonBarSetKeyImages((KEYINDEX_T)k, faces[k], held[k]);
    ButtonBarRegisterKeyReleaseCallback(KEYINDEX_5, _back);
    vLcdBlankerEx(0x02AC, 65535);
    outtextxyEx(160, 10, m_title, FONT_INDEX_TTARIAL, 22, CENTER_TXT, VERTICAL_ALIGNMENT_TOP, 0, 0xFFFF - 1, 100,
                LAYER1);
}

void MenuScreenExit(void)
{
    ButtonBarDeregisterKeyReleaseCallback(KEYINDEX_5);
}

void Menu_Menu1_Enter(void)
{
    _enter("SETTINGS");
}

void Menu_Menu1_Update(void)
{
}

void Menu_GaugeMenu_Enter(void)
{
    _enter("GAUGE SETTINGS");
}

void Menu_GaugeMenu_Update(void)
{
}

void Menu_CalMenu_Enter(void)
{
    _enter("CALIBRATIONS");
}

void Menu_CalMenu_Update(void)
{
}
