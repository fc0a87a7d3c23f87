#include "hotareas.h"

#include "dirtyrect.h"
#include "layer_merger.h"
#include "lcd_buffer.h"
#include "platform_sysinfo.h"
#include "timer_drv.h"
#include "touch_drv.h"

namespace {

HOTAREA_T m_hotAreas[HOTAREA_MAX];
S32 m_lastState = 0;
BOOL m_isHotAreaDebugEnabled = FALSE;

HOTAREA_T* _area(HOTAREAHANDLE_T handle)
{
    return handle >= 0 && handle < HOTAREA_MAX && m_hotAreas[handle].isValid ? &m_hotAreas[handle] : nullptr;
}

void _debugRepaint(void)
{
    if (m_isHotAreaDebugEnabled) DirtyRectAdd(0, 0, (S32)gScreenWidth - 1, (S32)gScreenHeight - 1);
}

void _call(HOTAREACALLBACK_T f, void* pData)
{
    if (f) f(pData);
}

}  // namespace

// One pass over the areas with this sample at uptime `now`.
static void _hotAreaStep(TOUCHSTATE_T touch, U32 now)
{
    if (isLcdFlipped()) {
        touch.x = (S32)gScreenWidth - 1 - touch.x;
        touch.y = (S32)gScreenHeight - 1 - touch.y;
    }
    const bool changed = touch.state != m_lastState;
    m_lastState = touch.state;
    bool pressTaken = false;
    // The area made last lies on top.
    for (S32 i = HOTAREA_MAX - 1; i >= 0; i--) {
        HOTAREA_T& a = m_hotAreas[i];
        if (!a.isValid) continue;
        const bool inside = touch.x >= a.rect.Left && touch.x <= a.rect.Right && touch.y >= a.rect.Top &&
                            touch.y <= a.rect.Bottom;
        if (!inside) {
            if (a.state == TOUCH_STATE_PRESSED) {
                a.state = 0;
                a.pressTimeMs = 0;
                _call(a.pReleaseFunc, a.pData);
            }
            continue;
        }
        if (a.pressTimeMs != 0 && now - a.pressTimeMs >= a.holdTimeMs) {
            // Held: counts as released, and gives no click.
            _call(a.pReleaseFunc, a.pData);
            _call(a.pHoldFunc, a.pData);
            a.pressTimeMs = 0;
            a.state = 0;
        }
        if (!changed) continue;
        if (touch.state == TOUCH_STATE_PRESSED && !pressTaken) {
            a.state = TOUCH_STATE_PRESSED;
            if (a.pHoldFunc) a.pressTimeMs = now;
            _call(a.pPressFunc, a.pData);
            pressTaken = true;
        } else if (touch.state == TOUCH_STATE_RELEASED && a.state == TOUCH_STATE_PRESSED) {
            a.state = 0;
            a.pressTimeMs = 0;
            _call(a.pReleaseFunc, a.pData);
            _call(a.pClickedFunc, a.pData);
        }
    }
}

void HotAreaProcess(void)
{
    if (PlatformHasTouch() <= 0) return;
    TOUCHSTATE_T touch;
    touch_get_state(&touch);
    _hotAreaStep(touch, get_uptime_milliseconds());
}

void HotAreaTestStep(const TOUCHSTATE_T* touch, U32 now)
{
    if (touch) _hotAreaStep(*touch, now);
}

void HotAreaResetAll(void)
{
    for (HOTAREA_T& a : m_hotAreas) a.isValid = FALSE;
    _debugRepaint();
}

HOTAREAHANDLE_T HotAreaCreate(const GFX_RECT_T* rect, HOTAREACALLBACK_T press, HOTAREACALLBACK_T release, void* pData)
{
    for (S32 i = 0; i < HOTAREA_MAX; i++) {
        HOTAREA_T& a = m_hotAreas[i];
        if (a.isValid) continue;
        a = HOTAREA_T{};
        a.isValid = TRUE;
        if (rect) a.rect = *rect;
        a.pPressFunc = press;
        a.pReleaseFunc = release;
        a.pData = pData;
        _debugRepaint();
        return i;
    }
    return -1;
}

HOTAREAHANDLE_T HotAreaCreatePos(S32 left, S32 top, S32 right, S32 bottom, HOTAREACALLBACK_T press,
                                 HOTAREACALLBACK_T release, void* pData)
{
    const GFX_RECT_T r = {left, top, right, bottom};
    return HotAreaCreate(&r, press, release, pData);
}

void HotAreaRemove(HOTAREAHANDLE_T handle)
{
    if (HOTAREA_T* a = _area(handle)) {
        a->isValid = FALSE;
        _debugRepaint();
    }
}

void HotAreaMove(HOTAREAHANDLE_T handle, S32 x, S32 y)
{
    if (HOTAREA_T* a = _area(handle)) {
        a->rect = {x, y, gfx_add(x, (S64)a->rect.Right - a->rect.Left), gfx_add(y, (S64)a->rect.Bottom - a->rect.Top)};
        _debugRepaint();
    }
}

void HotAreaResize(HOTAREAHANDLE_T handle, S32 width, S32 height)
{
    if (HOTAREA_T* a = _area(handle)) {
        a->rect.Right = gfx_add(a->rect.Left, (S64)width - 1);
        a->rect.Bottom = gfx_add(a->rect.Top, (S64)height - 1);
        _debugRepaint();
    }
}

void HotAreaGet(HOTAREAHANDLE_T handle, GFX_RECT_T* out)
{
    if (HOTAREA_T* a = _area(handle); a && out) *out = a->rect;
}

void HotAreaSetPressCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func)
{
    if (HOTAREA_T* a = _area(handle)) a->pPressFunc = func;
}

void HotAreaSetReleaseCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func)
{
    if (HOTAREA_T* a = _area(handle)) a->pReleaseFunc = func;
}

void HotAreaSetClickedCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func)
{
    if (HOTAREA_T* a = _area(handle)) a->pClickedFunc = func;
}

void HotAreaSetHoldCallback(HOTAREAHANDLE_T handle, HOTAREACALLBACK_T func, U32 holdTimeMs)
{
    if (HOTAREA_T* a = _area(handle)) {
        a->pHoldFunc = func;
        a->holdTimeMs = holdTimeMs;
    }
}

void HotAreaSetCallbackData(HOTAREAHANDLE_T handle, void* pData)
{
    if (HOTAREA_T* a = _area(handle)) a->pData = pData;
}

void* HotAreaGetCallbackData(HOTAREAHANDLE_T handle)
{
    return handle >= 0 && handle < HOTAREA_MAX ? m_hotAreas[handle].pData : nullptr;
}

void HotAreaDebugEnable(BOOL enable)
{
    if (!PlatformHasTouch()) return;
    m_isHotAreaDebugEnabled = enable;
    if (!enable) DirtyRectAdd(0, 0, (S32)gScreenWidth - 1, (S32)gScreenHeight - 1);
}

BOOL HotAreaIsDebugEnabled(void)
{
    return m_isHotAreaDebugEnabled;
}
