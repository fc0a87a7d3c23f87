#include "Screen_SysInfo.h"

#include <cstdio>

#include "Velnor_Dorvik_V6c.h"
#include "can_signals.h"
#include "elements.h"
#include "list_screen.h"
#include "navigation.h"

namespace {

constexpr real_T DISPLAY_SW_VERSION = 6.5;

struct LABEL_T {
    S32 y;
    const char* text;
    S32 spacing;
    LAYER_T layer;
};

// "FIRMWARE VERSION" stands on the front layer, drawn once: the update's wipe of its
// element leaves it alone.
constexpr LABEL_T m_labels[] = {
    {47, "ECU SERIAL NUMBER", 1, LAYER1},
    {64, "FIRMWARE VERSION", 0, LAYER2},
    {81, "PART NUMBER", 1, LAYER1},
    {98, "DISPLAY SW VERSION", 1, LAYER1},
};

}  // namespace

const char* DisplaySoftwareVersionText(void)
{
    // Formatted once: the screens ask for it on every update.
    static char text[16] = "";
    if (text[0] == '\0') snprintf(text, sizeof(text), "v%02.2f", DISPLAY_SW_VERSION);
    return text;
}

void Screen_SysInfo_Enter(void)
{
    MainScreenEnter(MAIN_SCREEN_SYSINFO, BUTTONBARMODE_VISIBLE_ALWAYS);
}

void Screen_SysInfo_Create(void)
{
    ListScreenCreate("SYSTEM INFO");
    for (const LABEL_T& l : m_labels) {
        ListScreenText(ELEMENTID_INVALID, 8, l.y, l.text, LEFT_TXT, l.spacing, LIST_SCREEN_TEXT_COLOUR, l.layer);
    }
}

void Screen_SysInfo_Update(void)
{
    const U32 id = DWork.display_element_DWORK1_p;
    ElementFillPrevRect(id, 65535, LAYER2);
    const struct {
        S32 y;
        const char* text;
    } values[] = {
        {98, DisplaySoftwareVersionText()},
        {64, CANText_FirmwareVersion.string},
        {81, CANText_PartNumber.string},
        {47, CANText_SerialNumber.string},
    };
    for (const auto& v : values) ListScreenText(id, 310, v.y, v.text, RIGHT_TXT, 1, LIST_SCREEN_TEXT_COLOUR, LAYER2);
}
