#include "buttonbar.h"

#include <cstring>

#include "buzzer_drv.h"
#include "dash_assert.h"
#include "keypad_drv.h"
#include "layer_merger.h"
#include "lcd_buffer.h"
#include "mmi.h"
#include "outimage.h"
#include "b_fill.h"
#include "timer_drv.h"

namespace {

constexpr U32 BUTTONBAR_CLICK_MS = 100;

KEYPADKEYS_T m_keypadKeys[KEYPAD_MAX_KEYS];
KEYPADMASK_T m_keypadMasks[BUTTONBAR_MAX_KEYMASK_HOOKS];
BUTTONBAR_T m_buttonBar;
BOOL m_isKeyCallbacksDisabled = FALSE;
U8 m_prevKeypadCode = 0;
U32 m_prevKeypadCodeTimeMs = 0;

KEYPADKEYS_T& _key(KEYINDEX_T keyIndex)
{
    DASH_ASSERT(keyIndex < KEYPAD_MAX_KEYS, "keyIndex is not valid!");
    return m_keypadKeys[keyIndex];
}

BUTTONBAR_KEY_T& _face(KEYINDEX_T keyIndex)
{
    DASH_ASSERT(keyIndex < KEYPAD_MAX_KEYS, "keyIndex is not valid!");
    return m_buttonBar.keys[keyIndex];
}

// Key callbacks run only on an active bar, and not for the key that changed the screen.
void _callKey(BUTTONBAR_CALLBACK_T f)
{
    if (f && !m_isKeyCallbacksDisabled && m_buttonBar.state == BUTTONBARSTATE_ACTIVE) f();
}

void _ButtonBarCheckKeys(U8 code, U32 now)
{
    for (U32 i = 0; i < KEYPAD_MAX_KEYS; i++) {
        KEYPADKEYS_T& k = m_keypadKeys[i];
        const bool down = code & (1u << i);
        if (down && k.state == KEYSTATE_UP) {
            k.state = KEYSTATE_DOWN;
            k.stateChangeTimeMs = now;
            buzzer_out_timed(BUTTONBAR_CLICK_MS);
            _callKey(k.pKeyPressFunc);
        } else if (down && k.state == KEYSTATE_DOWN) {
            if (k.keyHoldTimeMs != 0 && now - k.stateChangeTimeMs >= k.keyHoldTimeMs) {
                k.state = KEYSTATE_HOLD;
                k.stateChangeTimeMs = now;
                _callKey(k.pKeyHoldFunc);
            }
        } else if (down && k.state == KEYSTATE_HOLD) {
            if (k.keyRepeatTimeMs != 0 && now - k.stateChangeTimeMs >= k.keyRepeatTimeMs) {
                k.stateChangeTimeMs = now;
                _callKey(k.pKeyHoldFunc);
            }
        } else if (!down && k.state != KEYSTATE_UP) {
            k.state = KEYSTATE_UP;
            k.stateChangeTimeMs = now;
            _callKey(k.pKeyReleaseFunc);
        }
    }
}

// A mask matches the exact key code only.
void _ButtonBarCheckKeyMasks(U8 code, U32 now)
{
    if (m_buttonBar.state == BUTTONBARSTATE_DISABLED || code == 0) return;
    for (KEYPADMASK_T& m : m_keypadMasks) {
        if (code == m_prevKeypadCode) {
            if (m.holdTimeMs != 0 && !m.hasHoldTriggered && m.mask == code &&
                now - m_prevKeypadCodeTimeMs >= m.holdTimeMs) {
                if (m.pKeyMaskFunc) m.pKeyMaskFunc();
                m.hasHoldTriggered = TRUE;
            }
        } else if (m.holdTimeMs != 0) {
            m.hasHoldTriggered = FALSE;
        } else if (m.mask == code && m.pKeyMaskFunc) {
            m.pKeyMaskFunc();
        }
    }
}

void _ButtonBarDraw(U8 code)
{
    if (m_buttonBar.state == BUTTONBARSTATE_DISABLED || m_buttonBar.mode == BUTTONBARMODE_INVISIBLE) return;
    const BOOL invalidated = m_buttonBar.isInvalidated;
    m_buttonBar.isInvalidated = FALSE;
    if (!invalidated && code == m_prevKeypadCode) return;
    const S32 W = (S32)gScreenWidth, H = (S32)gScreenHeight, height = (S32)m_buttonBar.height;
    // Below the screen proper: the overlay brings these rows up.
    blockfillEx(0, H, W - 1, H + height, m_buttonBar.backgroundColour, 100, LAYER2);
    if (m_buttonBar.pBackgroundBitmap) outimageEx(0, H, m_buttonBar.pBackgroundBitmap, 100, ALPHA_INVARIANT, LAYER2);
    for (U32 i = 0; i < KEYPAD_MAX_KEYS; i++) {
        const BUTTONBAR_KEY_T& face = m_buttonBar.keys[i];
        const S32 x = (S32)i * (W / 5);
        const void* image = (code & (1u << i)) && face.pKeyDownImage ? face.pKeyDownImage : face.pKeyUpImage;
        if (image) outimageEx(x, H, image, 100, ALPHA_INVARIANT, LAYER2);
        if (face.textLine1[0] == '\0') continue;
        TextSetFont(face.fontIndex, face.fontSize, HORIZONTAL_ALIGNMENT_CENTRE, 1);
        const S32 cx = x + W / 10, mid = H + height / 2, size = (S32)face.fontSize;
        if (face.textLine2[0] != '\0') {
            outtextxyftExEle(ELEMENTID_INVALID, cx, mid - size, face.textLine1, face.fontColour, 100, LAYER2);
            outtextxyftExEle(ELEMENTID_INVALID, cx, mid, face.textLine2, face.fontColour, 100, LAYER2);
        } else {
            outtextxyftExEle(ELEMENTID_INVALID, cx, mid - size / 2, face.textLine1, face.fontColour, 100, LAYER2);
        }
    }
}

void _ButtonBarAnimate(U32 now)
{
    if (m_buttonBar.state == BUTTONBARSTATE_DISABLED || m_buttonBar.mode == BUTTONBARMODE_INVISIBLE) {
        SetButtonOverlayHeight(0);
        return;
    }
    if (m_buttonBar.mode == BUTTONBARMODE_VISIBLE_ALWAYS) {
        SetButtonOverlayHeight(m_buttonBar.height);
        return;
    }
    if (m_buttonBar.mode != BUTTONBARMODE_VISIBLE_WITH_TIMEOUT) return;
    const bool idle = now - m_prevKeypadCodeTimeMs >= BUTTONBAR_TIMEOUT_MS;
    const bool slide = m_buttonBar.animation == BUTTONBARANIMATION_SLIDE;
    const U32 h = GetButtonOverlayHeight(), step = BUTTONBAR_SLIDE_ANIMATION_INCREMENT;
    switch (m_buttonBar.state) {
    case BUTTONBARSTATE_ACTIVE:
        SetButtonOverlayHeight(m_buttonBar.height);
        if (idle) m_buttonBar.state = BUTTONBARSTATE_HIDING;
        break;
    case BUTTONBARSTATE_HIDING:
        if (slide && h >= step + 1) {
            SetButtonOverlayHeight(h - step);
        } else {
            SetButtonOverlayHeight(0);
            m_buttonBar.state = BUTTONBARSTATE_HIDDEN;
        }
        break;
    case BUTTONBARSTATE_HIDDEN:
        SetButtonOverlayHeight(0);
        if (!idle) m_buttonBar.state = BUTTONBARSTATE_SHOWING;
        break;
    case BUTTONBARSTATE_SHOWING:
        if (slide && h + step < m_buttonBar.height) {
            SetButtonOverlayHeight(h + step);
        } else {
            SetButtonOverlayHeight(m_buttonBar.height);
            m_buttonBar.state = BUTTONBARSTATE_ACTIVE;
        }
        break;
    default:
        break;
    }
}

}  // namespace

static void _ButtonBarStep(U8 code, U32 now)
{
    _ButtonBarCheckKeys(code, now);
    _ButtonBarCheckKeyMasks(code, now);
    _ButtonBarDraw(code);
    _ButtonBarAnimate(now);
    if (m_isKeyCallbacksDisabled && code == 0) m_isKeyCallbacksDisabled = FALSE;
    if (code != m_prevKeypadCode) {
        m_prevKeypadCode = code;
        m_prevKeypadCodeTimeMs = now;
    }
}

void _ButtonBarProcess(void)
{
    _ButtonBarStep(keypad_read(), get_uptime_milliseconds());
}

void ButtonBarTestStep(U8 code, U32 now)
{
    _ButtonBarStep(code, now);
}

void _ButtonBarKeyCallbackDisable(void)
{
    m_isKeyCallbacksDisabled = TRUE;
}

const BUTTONBAR_T* ButtonBarTestGet(void)
{
    return &m_buttonBar;
}

void ButtonBarInit(void)
{
    m_isKeyCallbacksDisabled = FALSE;
    m_prevKeypadCode = 0;
    m_prevKeypadCodeTimeMs = get_uptime_milliseconds();
    ButtonBarReset();
    MMIRegisterCallback(MMICALLBACKTYPE_PREPROCESS, _ButtonBarProcess);
    MMIRegisterCallback(MMICALLBACKTYPE_PRECREATE, ButtonBarReset);
    MMIRegisterCallback(MMICALLBACKTYPE_ENTER, _ButtonBarKeyCallbackDisable);
}

void ButtonBarReset(void)
{
    // A key held across a screen change stays held: its state and time are kept.
    for (KEYPADKEYS_T& k : m_keypadKeys) {
        k.keyHoldTimeMs = 0;
        k.keyRepeatTimeMs = 0;
        k.pKeyReleaseFunc = nullptr;
        k.pKeyPressFunc = nullptr;
        k.pKeyHoldFunc = nullptr;
    }
    for (KEYPADMASK_T& m : m_keypadMasks) {
        m.mask = 0;
        m.holdTimeMs = 0;
        m.pKeyMaskFunc = nullptr;
    }
    m_buttonBar.state = BUTTONBARSTATE_DISABLED;
    m_buttonBar.mode = BUTTONBARMODE_DISABLED;
    m_buttonBar.isInvalidated = TRUE;
    m_buttonBar.animation = BUTTONBARANIMATION_NONE;
    m_buttonBar.height = 0;
    m_buttonBar.backgroundColour = 0xFFFF;
    m_buttonBar.pBackgroundBitmap = nullptr;
    for (BUTTONBAR_KEY_T& face : m_buttonBar.keys) {
        face.pKeyUpImage = nullptr;
        face.pKeyDownImage = nullptr;
        face.fontIndex = (FONT_INDEX_T)0;
        face.fontSize = 10;
        face.fontColour = WHITE_TEXT;
        face.textLine1[0] = '\0';
        face.textLine2[0] = '\0';
    }
}

void ButtonBarSetMode(BUTTONBARMODE_T mode)
{
    m_buttonBar.mode = mode;
    m_buttonBar.state = mode == BUTTONBARMODE_DISABLED ? BUTTONBARSTATE_DISABLED : BUTTONBARSTATE_ACTIVE;
    m_buttonBar.isInvalidated = TRUE;
}

void ButtonBarSetHeight(U32 height)
{
    m_buttonBar.height = height;
    m_buttonBar.isInvalidated = TRUE;
}

void ButtonBarSetAnimation(BUTTONBARANIMATION_T animation)
{
    m_buttonBar.animation = animation;
}

void ButtonBarSetBackgroundColour(U16 colour)
{
    m_buttonBar.backgroundColour = colour;
    m_buttonBar.isInvalidated = TRUE;
}

void ButtonBarSetBackgroundImage(const void* pBitmap)
{
    m_buttonBar.pBackgroundBitmap = pBitmap;
    m_buttonBar.isInvalidated = TRUE;
}

void ButtonBarSetKeyImages(KEYINDEX_T keyIndex, const void* pUpBitmap, const void* pDownBitmap)
{
    BUTTONBAR_KEY_T& face = _face(keyIndex);
    face.pKeyUpImage = pUpBitmap;
    face.pKeyDownImage = pDownBitmap;
    m_buttonBar.isInvalidated = TRUE;
}

static void _copyLine(char (&to)[BUTTONBAR_TEXT_MAX], const char* from)
{
    if (!from) return;
    strncpy(to, from, BUTTONBAR_TEXT_MAX - 1);
    to[BUTTONBAR_TEXT_MAX - 1] = '\0';
}

void ButtonBarSetKeyText(KEYINDEX_T keyIndex, FONT_INDEX_T fontIndex, U32 fontSize, U16 fontColour,
                         const char* pTextLine1, const char* pTextLine2)
{
    BUTTONBAR_KEY_T& face = _face(keyIndex);
    face.fontIndex = fontIndex;
    face.fontSize = fontSize;
    face.fontColour = fontColour;
    _copyLine(face.textLine1, pTextLine1);
    _copyLine(face.textLine2, pTextLine2);
    m_buttonBar.isInvalidated = TRUE;
}

BOOL ButtonBarIsKeyPressed(KEYINDEX_T keyIndex)
{
    return _key(keyIndex).state != KEYSTATE_UP;
}

void ButtonBarRegisterKeyReleaseCallback(KEYINDEX_T keyIndex, BUTTONBAR_CALLBACK_T pCallbackFunc)
{
    _key(keyIndex).pKeyReleaseFunc = pCallbackFunc;
}

void ButtonBarRegisterKeyPressCallback(KEYINDEX_T keyIndex, BUTTONBAR_CALLBACK_T pCallbackFunc)
{
    _key(keyIndex).pKeyPressFunc = pCallbackFunc;
}

void ButtonBarDeregisterKeyReleaseCallback(KEYINDEX_T keyIndex)
{
    _key(keyIndex).pKeyReleaseFunc = nullptr;
}

void ButtonBarDeregisterKeyPressCallback(KEYINDEX_T keyIndex)
{
    _key(keyIndex).pKeyPressFunc = nullptr;
}

void ButtonBarRegisterKeyHoldCallback(KEYINDEX_T keyIndex, BUTTONBAR_CALLBACK_T pCallbackFunc, U32 keyHoldTimeMs,
                                      U32 keyRepeatTimeMs)
{
    KEYPADKEYS_T& k = _key(keyIndex);
    k.pKeyHoldFunc = pCallbackFunc;
    k.keyHoldTimeMs = keyHoldTimeMs;
    k.keyRepeatTimeMs = keyRepeatTimeMs;
}

void ButtonBarDeregisterKeyHoldCallback(KEYINDEX_T keyIndex)
{
    ButtonBarRegisterKeyHoldCallback(keyIndex, nullptr, 0, 0);
}

BOOL ButtonBarRegisterKeyMaskCallback(U8 keyMask, U32 holdTimeMs, BUTTONBAR_CALLBACK_T pCallbackFunc)
{
    for (KEYPADMASK_T& m : m_keypadMasks) {
        if (m.mask != 0) continue;
        m = {keyMask, holdTimeMs, pCallbackFunc, FALSE};
        return TRUE;
    }
    return FALSE;
}

BOOL ButtonBarDeregisterKeyMaskCallback(BUTTONBAR_CALLBACK_T pCallbackFunc)
{
    for (KEYPADMASK_T& m : m_keypadMasks) {
        if (m.mask != 0 && m.pKeyMaskFunc == pCallbackFunc) {
            m = {0, 0, nullptr, FALSE};
            return TRUE;
        }
    }
    return FALSE;
}
