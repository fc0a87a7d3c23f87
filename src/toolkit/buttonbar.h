#pragma once
// The five keys below the screen: per-key press, release, hold and repeat callbacks,
// multi-key mask callbacks, a click on every press, and the soft-key bar drawn below
// the screen and slid up over it.
#include "freetype_api.h"
#include "gfx_types.h"

constexpr U32 BUTTONBAR_MAX_KEYMASK_HOOKS = 5;
constexpr U32 BUTTONBAR_TIMEOUT_MS = 5000;
constexpr U32 BUTTONBAR_SLIDE_ANIMATION_INCREMENT = 2;
constexpr U8 KEYMASK_1 = 0x01;
constexpr U8 KEYMASK_2 = 0x02;
constexpr U8 KEYMASK_3 = 0x04;
constexpr U8 KEYMASK_4 = 0x08;
constexpr U8 KEYMASK_5 = 0x10;
constexpr U32 BUTTONBAR_TEXT_MAX = 255;

enum KEYINDEX_T : U32 { KEYINDEX_1 = 0, KEYINDEX_2 = 1, KEYINDEX_3 = 2, KEYINDEX_4 = 3, KEYINDEX_5 = 4 };

enum BUTTONBARMODE_T : U32 {
    BUTTONBARMODE_DISABLED = 0,
    BUTTONBARMODE_INVISIBLE = 1,
    BUTTONBARMODE_VISIBLE_WITH_TIMEOUT = 2,
    BUTTONBARMODE_VISIBLE_ALWAYS = 3,
};
enum BUTTONBARANIMATION_T : U32 { BUTTONBARANIMATION_NONE = 0, BUTTONBARANIMATION_SLIDE = 1 };
enum BUTTONBARSTATE_T : U32 {
    BUTTONBARSTATE_DISABLED = 0,
    BUTTONBARSTATE_ACTIVE = 1,
    BUTTONBARSTATE_HIDDEN = 2,
    BUTTONBARSTATE_SHOWING = 3,
    BUTTONBARSTATE_HIDING = 4,
};
enum KEYSTATE_T : U32 { KEYSTATE_UP = 0, KEYSTATE_DOWN = 1, KEYSTATE_HOLD = 2 };

typedef void (*BUTTONBAR_CALLBACK_T)(void);

struct KEYPADKEYS_T {
    KEYSTATE_T state;
    U32 stateChangeTimeMs;
    U32 keyHoldTimeMs;    // 0: no hold event
    U32 keyRepeatTimeMs;  // 0: no repeat
    BUTTONBAR_CALLBACK_T pKeyReleaseFunc;
    BUTTONBAR_CALLBACK_T pKeyPressFunc;
    BUTTONBAR_CALLBACK_T pKeyHoldFunc;  // also the repeat callback
};

struct KEYPADMASK_T {
    U8 mask;  // 0: free
    U32 holdTimeMs;
    BUTTONBAR_CALLBACK_T pKeyMaskFunc;
    BOOL hasHoldTriggered;
};

struct BUTTONBAR_KEY_T {
    const void* pKeyUpImage;
    const void* pKeyDownImage;
    FONT_INDEX_T fontIndex;
    U32 fontSize;
    U16 fontColour;
    char textLine1[BUTTONBAR_TEXT_MAX];
    char textLine2[BUTTONBAR_TEXT_MAX];
};

struct BUTTONBAR_T {
    BUTTONBARSTATE_T state;
    BUTTONBARMODE_T mode;
    BOOL isInvalidated;
    BUTTONBARANIMATION_T animation;
    U32 height;
    U16 backgroundColour;
    const void* pBackgroundBitmap;
    BUTTONBAR_KEY_T keys[5];
};

void ButtonBarInit(void);
void ButtonBarReset(void);
void ButtonBarSetMode(BUTTONBARMODE_T mode);
void ButtonBarSetHeight(U32 height);
void ButtonBarSetAnimation(BUTTONBARANIMATION_T animation);
void ButtonBarSetBackgroundColour(U16 colour);
void ButtonBarSetBackgroundImage(const void* pBitmap);
void ButtonBarSetKeyImages(KEYINDEX_T keyIndex, const void* pUpBitmap, const void* pDownBitmap);
void ButtonBarSetKeyText(KEYINDEX_T keyIndex, FONT_INDEX_T fontIndex, U32 fontSize, U16 fontColour,
                         const char* pTextLine1, const char* pTextLine2);
BOOL ButtonBarIsKeyPressed(KEYINDEX_T keyIndex);
void ButtonBarRegisterKeyReleaseCallback(KEYINDEX_T keyIndex, BUTTONBAR_CALLBACK_T pCallbackFunc);
void ButtonBarRegisterKeyPressCallback(KEYINDEX_T keyIndex, BUTTONBAR_CALLBACK_T pCallbackFunc);
void ButtonBarDeregisterKeyReleaseCallback(KEYINDEX_T keyIndex);
void ButtonBarDeregisterKeyPressCallback(KEYINDEX_T keyIndex);
void ButtonBarRegisterKeyHoldCallback(KEYINDEX_T keyIndex, BUTTONBAR_CALLBACK_T pCallbackFunc, U32 keyHoldTimeMs,
                                      U32 keyRepeatTimeMs);
void ButtonBarDeregisterKeyHoldCallback(KEYINDEX_T keyIndex);
BOOL ButtonBarRegisterKeyMaskCallback(U8 keyMask, U32 holdTimeMs, BUTTONBAR_CALLBACK_T pCallbackFunc);
BOOL ButtonBarDeregisterKeyMaskCallback(BUTTONBAR_CALLBACK_T pCallbackFunc);

// The pass of the button bar, a PREPROCESS hook of the screen manager.
void _ButtonBarProcess(void);
void _ButtonBarKeyCallbackDisable(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// One pass with a given key code and uptime.
void ButtonBarTestStep(U8 code, U32 now);
// The bar's record, for checks of its state.
const BUTTONBAR_T* ButtonBarTestGet(void);
