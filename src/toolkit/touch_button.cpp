#include "touch_button.h"

#include <cstdint>
#include <cstring>

#include "buzzer_drv.h"
#include "dash_assert.h"
#include "elements.h"
#include "mmi.h"

namespace {

BUTTON_T m_buttons[MAX_BUTTONS];

BUTTON_T* _button(BUTTONHANDLE_T handle)
{
    if (handle < 0 || handle >= MAX_BUTTONS || !m_buttons[handle].isValid) return nullptr;
    return &m_buttons[handle];
}

// The hot area carries the handle itself as its callback data.
BUTTON_T* _fromData(void* pData)
{
    return _button((BUTTONHANDLE_T)(intptr_t)pData);
}

void _setText(BUTTONHANDLE_T handle, char (BUTTON_T::*text)[255], U32 BUTTON_T::*size, const char* pText,
              U32 textSize)
{
    BUTTON_T* b = _button(handle);
    if (!b) return;
    if (pText) {
        char* dest = b->*text;
        strncpy(dest, pText, sizeof(b->*text));
        dest[sizeof(b->*text) - 1] = '\0';
    }
    b->*size = textSize;
}

void _ButtonHandlerPress(void* pData)
{
    BUTTON_T* b = _fromData(pData);
    if (!b) return;
    b->state = BUTTONSTATE_PRESSED;
    if (b->pPressFunc) b->pPressFunc();
}

void _ButtonHandlerRelease(void* pData)
{
    BUTTON_T* b = _fromData(pData);
    if (!b) return;
    b->state = BUTTONSTATE_RELEASED;
    if (b->pReleaseFunc) b->pReleaseFunc();
}

void _ButtonHandlerClicked(void* pData)
{
    BUTTON_T* b = _fromData(pData);
    if (!b) return;
    buzzer_out_timed(100);
    if (b->pClickFunc) b->pClickFunc();
}

void _ButtonHandlerHold(void* pData)
{
    BUTTON_T* b = _fromData(pData);
    if (b && b->pHoldFunc) b->pHoldFunc();
}

void _ButtonClear(void)
{
    for (BUTTON_T& b : m_buttons) {
        if (b.isValid) ElementFillPrevRect(b.elementId, 0xFFFF, LAYER2);
    }
}

void _ButtonDraw(void)
{
    for (BUTTON_T& b : m_buttons) {
        if (!b.isValid) continue;
        const bool pressed = b.state == BUTTONSTATE_PRESSED;
        BITMAPA* image = pressed ? b.pPressBMP : b.pNormalBMP;
        if (!image) continue;
        GFX_RECT_T r;
        HotAreaGet(b.handleHotArea, &r);
        outimageExEle(b.elementId, r.Left, r.Top, image, b.opacity, ALPHA_INVARIANT, LAYER2);
        const U16 colour = pressed ? b.pressedTextColour : b.textColour;
        const S32 column = r.Left + (r.Right - r.Left) / 2;
        const S32 h = r.Bottom - r.Top;
        if (b.textLine1[0]) {
            TextSetFont(b.textFontIndex, b.text1Size, CENTER_TXT, 1);
            if (b.textLine2[0]) {
                const S32 row1 = r.Top + (h / 3 - (S32)b.text1Size / 2);
                outtextxyftExEle(b.elementId, column, row1, b.textLine1, colour, 100, LAYER2);
                TextSetFont(b.textFontIndex, b.text2Size, CENTER_TXT, 1);
                const S32 row2 = r.Top + (h / 3 * 2 - (S32)b.text2Size / 2);
                outtextxyftExEle(b.elementId, column, row2, b.textLine2, colour, 100, LAYER2);
            } else {
                const S32 row = r.Top + (h / 2 - (S32)b.text1Size / 2);
                outtextxyftExEle(b.elementId, column, row, b.textLine1, colour, 100, LAYER2);
            }
        }
        if (b.textUnder[0]) {
            TextSetFont(b.textFontIndex, b.underTextSize, CENTER_TXT, 1);
            outtextxyftExEle(b.elementId, column, r.Bottom + (S32)b.underTextSize / 2, b.textUnder, colour, 100,
                             LAYER2);
        }
    }
}

}  // namespace

void ButtonInit(void)
{
    ButtonResetAll();
    MMIRegisterCallback(MMICALLBACKTYPE_PRECREATE, ButtonResetAll);
    MMIRegisterCallback(MMICALLBACKTYPE_PREUPDATE, _ButtonClear);
    MMIRegisterCallback(MMICALLBACKTYPE_POSTUPDATE, _ButtonDraw);
}

void ButtonResetAll(void)
{
    // Slots never used hold element id 0, which no element of the toolkit uses.
    for (BUTTON_T& b : m_buttons) {
        ElementFillPrevRect(b.elementId, 0xFFFF, LAYER2);
        b.isValid = FALSE;
    }
    HotAreaResetAll();
}

BUTTONHANDLE_T ButtonCreate(S32 x, S32 y, const void* pBitmap, BUTTONCALLBACKFUNC_T pClickedFunc)
{
    if (!pBitmap) return -1;
    BUTTONHANDLE_T handle = 0;
    while (handle < MAX_BUTTONS && m_buttons[handle].isValid) ++handle;
    DASH_ASSERT(handle < MAX_BUTTONS, "Button: No free button slots!");
    BUTTON_T& b = m_buttons[handle];
    b = BUTTON_T{};
    b.isValid = TRUE;
    b.state = BUTTONSTATE_RELEASED;
    b.elementId = ElementGetNewId();
    b.pNormalBMP = static_cast<BITMAPA*>(pBitmap);
    b.opacity = 100;
    b.textFontIndex = FONT_INDEX_TTARIAL;
    b.pressedTextColour = 0x07E0;
    b.pClickFunc = pClickedFunc;
    // One row below the image belongs to the button too.
    const GFX_RECT_T rect = {x, y, x + (S32)uiGetImageWidth(pBitmap) - 1, y + (S32)uiGetImageHeight(pBitmap)};
    b.handleHotArea = HotAreaCreate(&rect, _ButtonHandlerPress, _ButtonHandlerRelease, (void*)(intptr_t)handle);
    HotAreaSetClickedCallback(b.handleHotArea, _ButtonHandlerClicked);
    return handle;
}

void ButtonDestory(BUTTONHANDLE_T handle)
{
    BUTTON_T* b = _button(handle);
    if (!b) return;
    b->isValid = FALSE;
    // The rebuilt screen drops the hot area and the picture with it.
    MMIInvalidate();
}

void ButtonSetOpacity(BUTTONHANDLE_T handle, U32 opacity)
{
    if (BUTTON_T* b = _button(handle)) b->opacity = opacity;
}

void ButtonSetTextFont(BUTTONHANDLE_T handle, FONT_INDEX_T fontIndex)
{
    if (BUTTON_T* b = _button(handle)) b->textFontIndex = fontIndex;
}

void ButtonSetTextLine1(BUTTONHANDLE_T handle, const char* pText1, U32 text1Size)
{
    _setText(handle, &BUTTON_T::textLine1, &BUTTON_T::text1Size, pText1, text1Size);
}

void ButtonSetTextLine2(BUTTONHANDLE_T handle, const char* pText2, U32 text2Size)
{
    _setText(handle, &BUTTON_T::textLine2, &BUTTON_T::text2Size, pText2, text2Size);
}

void ButtonSetUnderText(BUTTONHANDLE_T handle, const char* pUnderText, U32 underTextSize)
{
    _setText(handle, &BUTTON_T::textUnder, &BUTTON_T::underTextSize, pUnderText, underTextSize);
}

void ButtonSetTextColours(BUTTONHANDLE_T handle, U16 textColour, U16 pressedTextColour)
{
    if (BUTTON_T* b = _button(handle)) {
        b->textColour = textColour;
        b->pressedTextColour = pressedTextColour;
    }
}

void ButtonSetImage(BUTTONHANDLE_T handle, const void* pBitmap)
{
    if (BUTTON_T* b = _button(handle)) b->pNormalBMP = static_cast<BITMAPA*>(pBitmap);
}

void ButtonSetPressImage(BUTTONHANDLE_T handle, const void* pBitmap)
{
    if (BUTTON_T* b = _button(handle)) b->pPressBMP = static_cast<BITMAPA*>(pBitmap);
}

void ButtonSetPressCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T func)
{
    if (BUTTON_T* b = _button(handle)) b->pPressFunc = func;
}

void ButtonSetReleaseCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T func)
{
    if (BUTTON_T* b = _button(handle)) b->pReleaseFunc = func;
}

void ButtonSetClickedCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T func)
{
    if (BUTTON_T* b = _button(handle)) b->pClickFunc = func;
}

void ButtonSetHoldCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T pHoldFunc, U32 holdDelayMs)
{
    BUTTON_T* b = _button(handle);
    if (!b) return;
    b->pHoldFunc = pHoldFunc;
    HotAreaSetHoldCallback(b->handleHotArea, _ButtonHandlerHold, holdDelayMs);
}
