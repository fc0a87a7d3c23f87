#pragma once
// Rectangles of a touch screen with press, release, hold and clicked callbacks.
#include "gfx_types.h"
#include "touch_drv.h"

constexpr S32 HOTAREA_MAX = 200;
typedef S32 HOTAREAHANDLE_T;  // the table index; -1 for none
typedef void (*HOTAREACALLBACK_T)(void* pData);

struct HOTAREA_T {
    BOOL isValid;
    GFX_RECT_T rect;
    HOTAREACALLBACK_T pPressFunc;
    HOTAREACALLBACK_T pReleaseFunc;
    HOTAREACALLBACK_T pHoldFunc;
    HOTAREACALLBACK_T pClickedFunc;
    U32 holdTimeMs;
    U32 pressTimeMs;  // uptime of the press; 0 when no hold is pending
    U8 state;         // 2 while pressed
    void* pData;
};

void HotAreaProcess(void);
void HotAreaResetAll(void);
HOTAREAHANDLE_T HotAreaCreate(const GFX_RECT_T* rect, HOTAREACALLBACK_T press, HOTAREACALLBACK_T release, void* pData);
HOTAREAHANDLE_T HotAreaCreatePos(S32 left, S32 top, S32 right, S32 bottom, HOTAREACALLBACK_T press,
                                 HOTAREACALLBACK_T release, void* pData);
void HotAreaRemove(HOTAREAHANDLE_T handle);
void HotAreaMove(HOTAREAHANDLE_T handle, S32 x, S32 y);
void HotAreaResize(HOTAREAHANDLE_T handle, S32 width, S32 height);
void HotAreaGet(HOTAREAHANDLE_T handle, GFX_RECT_T* out);
void HotAreaSetPressCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func);
void HotAreaSetReleaseCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func);
void HotAreaSetClickedCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func);
void HotAreaSetHoldCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func, U32 holdTimeMs);
void HotAreaSetCallbackData(HOTAREAHANDLE_T handle, void* pData);
void* HotAreaGetCallbackData(HOTAREAHANDLE_T handle);
void HotAreaDebugEnable(BOOL enable);
BOOL HotAreaIsDebugEnabled(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// One pass with a given touch sample (as the touch driver reports it) and uptime.
void HotAreaTestStep(const TOUCHSTATE_T* touch, U32 now);
