#include "Screen_Faults.h"

#include <cmath>
#include <cstdio>

#include "Velnor_Dorvik_V6c.h"
#include "elements.h"
#include "fault_table.h"
#include "list_screen.h"
#include "navigation.h"

namespace {

constexpr U16 FAULT_COLOUR = 0xF800;
constexpr S32 FIRST_LINE_Y = 48;
constexpr S32 LINE_PITCH = 15;

// The count line, "FAULTS: n".
char m_countText[40];

void _line(U32 id, S32 y, const char* text, LAYER_T layer)
{
    ListScreenText(id, 160, y, text, CENTER_TXT, 0, FAULT_COLOUR, layer);
}

}  // namespace

void Screen_Faults_Enter(void)
{
    MainScreenEnter(MAIN_SCREEN_FAULTS, BUTTONBARMODE_INVISIBLE);
}

void Screen_Faults_Create(void)
{
    ListScreenCreate("FAULTS");
}

void Screen_Faults_Update(void)
{
    const U32 id = DWork.display_element_DWORK1_c;
    ElementFillPrevRect(id, 65535, LAYER2);
    if (FaultCommunicationLost()) {
        // On the back layer: it stays until the screen is made anew, under live lines.
        _line(id, 60, "NO FAULT COMMUNICATION", LAYER1);
        return;
    }
    // Lines past the 13th run off the bottom; the count stays right. A state of 2 takes
    // two rows; one that is not a number takes none.
    real_T row = 0;
    for (size_t i = 0; i < FAULT_ROW_COUNT; i++) {
        const real_T state = FaultState(i);
        if (!(state > 0)) continue;
        const S_String* text = FaultText(i);
        const real_T y = FIRST_LINE_Y + LINE_PITCH * row;
        if (text && y < 32767) _line(id, (S32)y, text->string, LAYER2);
        if (std::isfinite(state)) row += std::floor(state);
    }
    const real_T count = FaultCount();
    if (count == 0 && B.s_NOFAULTS) _line(id, FIRST_LINE_Y, B.s_NOFAULTS->string, LAYER2);
    snprintf(m_countText, sizeof(m_countText), "%s: %1.0f", SStringText(B.s_FAULTS), count);
    ListScreenText(id, 280, 3, m_countText, CENTER_TXT, 0, 0xFFFE, LAYER2);
}
