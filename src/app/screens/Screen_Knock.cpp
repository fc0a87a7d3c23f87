#include "Screen_Knock.h"

#include "Velnor_Dorvik_V6c.h"
#include "elements.h"
#include "list_screen.h"
#include "navigation.h"

namespace {

struct CYLINDER_T {
    const char* label;
    S_String* BlockIO_Velnor_Dorvik_V6c::*low;  // the low hold as text
    U16 colour;
};

constexpr CYLINDER_T m_cylinders[8] = {
    {"KNOCK RETARD CYL1 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue_l, 0xFFFD},
    {"KNOCK RETARD CYL2 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue_o, 0xB63F},
    {"KNOCK RETARD CYL3 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue_g, 0x07E0},
    {"KNOCK RETARD CYL4 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue_i, 0x07FF},
    {"KNOCK RETARD CYL5 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue_j, 0xFD8C},
    {"KNOCK RETARD CYL6 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue_h, 0xBEF8},
    {"KNOCK RETARD CYL7 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue_a, 0xBDE0},
    {"KNOCK RETARD CYL8 (*BTDC):", &BlockIO_Velnor_Dorvik_V6c::LPeakValue, 0xFCD8},
};

}  // namespace

void Screen_Knock_Enter(void)
{
    MainScreenEnter(MAIN_SCREEN_KNOCK, BUTTONBARMODE_INVISIBLE);
}

void Screen_Knock_Create(void)
{
    ListScreenCreate("KNOCK SPARK RESULTS");
}

void Screen_Knock_Update(void)
{
    const U32 id = DWork.display_element_DWORK1_g;
    ElementFillPrevRect(id, 65535, LAYER2);
    for (S32 n = 0; n < 8; n++) {
        const CYLINDER_T& c = m_cylinders[n];
        const S_String* low = B.*c.low;
        const S32 y = 47 + 15 * n;
        ListScreenText(id, 310, y, SStringText(low), RIGHT_TXT, 1, c.colour, LAYER2);
        ListScreenText(id, 10, y, c.label, LEFT_TXT, 1, c.colour, LAYER2);
    }
}
