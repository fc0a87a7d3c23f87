// Linked into motordash-keytest: the real program, and after its start-up one test
// screen with a visible button bar whose keys light up a square each while pressed.
#include "Velnor_Dorvik_V6c.h"
#include "buttonbar.h"
#include "images.h"
#include "lcd_blan.h"
#include "lcd_buffer.h"
#include "mmi.h"
#include "b_fill.h"

namespace {

constexpr U32 TEST_SCREEN_ID = 50;
constexpr U16 KEY_LIT[5] = {RED, GREEN, BLUE, YELLOW, CYAN};
constexpr const char* KEY_TEXT[5] = {"UP", "DOWN", "OK", "NEXT", "BACK"};

// The square of key i: a column of the screen each, above the bar.
void _square(U32 i, U16 colour)
{
    const S32 w = (S32)gScreenWidth / 5;
    blockfillEx((S32)i * w + 8, 40, (S32)(i + 1) * w - 9, 100, colour, 100, LAYER2);
}

template <U32 I>
void _press(void)
{
    _square(I, KEY_LIT[I]);
}

template <U32 I>
void _release(void)
{
    _square(I, DARKER_GRAY);
}

void _create(void)
{
    vLcdBlankerEx(BLACK, ALPHA_COLOR);
    ButtonBarSetMode(BUTTONBARMODE_VISIBLE_ALWAYS);
    ButtonBarSetHeight(44);
    ButtonBarSetBackgroundColour(BLACK);
    const void* const released[5] = {&up, &down, &blank, &right, &back};
    const void* const pressed[5] = {&up_s, &down_s, &blank, &right_s, &back_s};
    void (*const presses[5])(void) = {_press<0>, _press<1>, _press<2>, _press<3>, _press<4>};
    void (*const releases[5])(void) = {_release<0>, _release<1>, _release<2>, _release<3>, _release<4>};
    for (U32 i = 0; i < 5; i++) {
        const KEYINDEX_T key = (KEYINDEX_T)i;
        ButtonBarSetKeyImages(key, released[i], pressed[i]);
        if (i == 2) ButtonBarSetKeyText(key, FONT_INDEX_TTARIAL, 16, WHITE_TEXT, KEY_TEXT[i], "");
        ButtonBarRegisterKeyPressCallback(key, presses[i]);
        ButtonBarRegisterKeyReleaseCallback(key, releases[i]);
        _square(i, DARKER_GRAY);
    }
}

}  // namespace

// The linker sends the program's call of QuorinInit here (--wrap); the real one is
// reached under the wrapped name.
void _realQuorinInit(void) __asm__("__real__Z10QuorinInitv");
void _testQuorinInit(void) __asm__("__wrap__Z10QuorinInitv");

// The test screen takes over from the splash once the first foreground pass has put
// the splash on top.
static void _takeOver(void)
{
    static bool done = false;
    if (done || !DWork.UnitDelay_DSTATE_nf) return;
    done = true;
    MMIScreenGoto(TEST_SCREEN_ID);
}

// The program's start-up, then the test screen.
void _testQuorinInit(void)
{
    _realQuorinInit();
    MMIRegisterScreen(TEST_SCREEN_ID, nullptr, _create, nullptr, nullptr);
    MMIRegisterCallback(MMICALLBACKTYPE_PREPROCESS, _takeOver);
}
