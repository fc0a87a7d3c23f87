#include "Screen_Splash.h"

#include "Screen_SysInfo.h"
#include "data.h"
#include "freetype_api.h"
#include "images.h"
#include "mmi.h"
#include "navigation.h"
#include "outimage.h"
#include "timer_drv.h"

namespace {

constexpr U32 SPLASH_MS = 2000;

}  // namespace

void Screen_Splash_Enter(void)
{
    // The button bar stays as it is.
}

void Screen_Splash_Create(void)
{
    outimageEx(1, 0, &image_wKxru, 100, ALPHA_INVARIANT, LAYER1);
    outtextxyEx(300, 210, DisplaySoftwareVersionText(), FONT_INDEX_TTARIAL, 10, RIGHT_TXT, VERTICAL_ALIGNMENT_TOP, 1,
                0xFF9B, 100, LAYER1);
}

void Screen_Splash_Update(void)
{
    const U32 now = get_uptime_milliseconds();
    if (now <= SPLASH_MS) return;
    RAMVariables.InitScreenChg_Time = now;
    // A START_SCREEN outside 1 to 4 has no target: the splash stays until key 1.
    switch (RAMVariables.START_SCREEN) {
        case MAIN_SCREEN_QUAD: MMIScreenGoto(SCREENID_QUAD); break;
        case MAIN_SCREEN_FAULTS: MMIScreenGoto(SCREENID_FAULTS); break;
        case MAIN_SCREEN_KNOCK: MMIScreenGoto(SCREENID_KNOCK); break;
        case MAIN_SCREEN_SYSINFO: MMIScreenGoto(SCREENID_SYSINFO); break;
        default: break;
    }
    RAMVariables.InitScreenChg_Screen = RAMVariables.START_SCREEN;
}
