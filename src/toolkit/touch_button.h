#pragma once
// Touch buttons: an image with up to three texts on a hot area, redrawn on every pass
// of the screen manager. They belong to the screen that made them.
#include "freetype_api.h"
#include "hotareas.h"
#include "outimage.h"

constexpr S32 MAX_BUTTONS = HOTAREA_MAX;
typedef S32 BUTTONHANDLE_T;
typedef void (*BUTTONCALLBACKFUNC_T)(void);
enum BUTTONSTATE_T : S32 { BUTTONSTATE_PRESSED = 0, BUTTONSTATE_RELEASED = 1 };

struct BUTTON_T {
    BOOL isValid;
    BUTTONSTATE_T state;
    HOTAREAHANDLE_T handleHotArea;
    U32 elementId;
    BITMAPA* pNormalBMP;
    BITMAPA* pPressBMP;
    U32 opacity;
    FONT_INDEX_T textFontIndex;
    char textLine1[255];
    U32 text1Size;
    char textLine2[255];
    U32 text2Size;
    char textUnder[255];
    U32 underTextSize;
    U16 textColour;
    U16 pressedTextColour;
    BUTTONCALLBACKFUNC_T pPressFunc;
    BUTTONCALLBACKFUNC_T pReleaseFunc;
    BUTTONCALLBACKFUNC_T pClickFunc;
    BUTTONCALLBACKFUNC_T pHoldFunc;
};

// Clears the table and hooks the buttons into the screen manager.
void ButtonInit(void);
void ButtonResetAll(void);
// A button at (x, y) showing pBitmap; -1 for a null bitmap.
BUTTONHANDLE_T ButtonCreate(S32 x, S32 y, const void* pBitmap, BUTTONCALLBACKFUNC_T pClickedFunc);
void ButtonDestory(BUTTONHANDLE_T handle);
void ButtonSetOpacity(BUTTONHANDLE_T handle, U32 opacity);
void ButtonSetTextFont(BUTTONHANDLE_T handle, FONT_INDEX_T fontIndex);
void ButtonSetTextLine1(BUTTONHANDLE_T handle, const char* pText1, U32 text1Size);
void ButtonSetTextLine2(BUTTONHANDLE_T handle, const char* pText2, U32 text2Size);
void ButtonSetUnderText(BUTTONHANDLE_T handle, const char* pUnderText, U32 underTextSize);
void ButtonSetTextColours(BUTTONHANDLE_T handle, U16 textColour, U16 pressedTextColour);
void ButtonSetImage(BUTTONHANDLE_T handle, const void* pBitmap);
// Without a press image a pressed button is not drawn at all.
void ButtonSetPressImage(BUTTONHANDLE_T handle, const void* pBitmap);
void ButtonSetPressCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T func);
void ButtonSetReleaseCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T func);
void ButtonSetClickedCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T func);
void ButtonSetHoldCallback(BUTTONHANDLE_T handle, BUTTONCALLBACKFUNC_T pHoldFunc, U32 holdDelayMs);
