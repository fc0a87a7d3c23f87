#include "Screen_Settings.h"

#include "Velnor_Dorvik_V6c.h"
#include "elements.h"
#include "navigation.h"

void Screen_Settings_Enter(void)
{
    // Not a main screen: CURRENT_SCREEN stays as it is.
    ButtonBarSetMode(BUTTONBARMODE_VISIBLE_WITH_TIMEOUT);
    ButtonBarSetAnimation(BUTTONBARANIMATION_SLIDE);
    ButtonBarSetHeight(MAIN_SCREEN_BAR_HEIGHT);
    MainScreenKeyFaces();
}

void Screen_Settings_Create(void)
{
}

void Screen_Settings_Update(void)
{
    ElementFillPrevRect(DWork.display_element_DWORK1, 0, LAYER2);
}
