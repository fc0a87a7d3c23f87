#include "mmi.h"

#include <cstdlib>

#include "elements.h"
#include "hotareas.h"

namespace {

constexpr U32 MMI_MIN_CAPACITY = 10;

MMISCREEN_T* m_pScreenRegistry = nullptr;
MMISCREEN_T** m_pScreenStack = nullptr;
MMIFUNC_T* m_pHookCallbackFuncs = nullptr;
U32 m_screenRegistryMax = 0;
U32 m_screenStackMax = 0;
U32 m_hookCallbacksMax = 0;
U32 m_screenRegistryCount = 0;
U32 m_screenStackIndex = 0;
BOOL m_isInitialised = FALSE;
BOOL m_isInvalidated = FALSE;

}  // namespace

static void _free(void)
{
    free(m_pScreenRegistry);
    free(m_pScreenStack);
    free(m_pHookCallbackFuncs);
    m_pScreenRegistry = nullptr;
    m_pScreenStack = nullptr;
    m_pHookCallbackFuncs = nullptr;
    m_screenRegistryMax = m_screenStackMax = m_hookCallbacksMax = 0;
    m_screenRegistryCount = m_screenStackIndex = 0;
    m_isInitialised = FALSE;
    m_isInvalidated = FALSE;
}

void MMIInit(U32 maxScreens, U32 stackDepth, U32 hooksPerType)
{
    _free();
    maxScreens = (maxScreens < MMI_MIN_CAPACITY ? MMI_MIN_CAPACITY : maxScreens);
    stackDepth = (stackDepth < MMI_MIN_CAPACITY ? MMI_MIN_CAPACITY : stackDepth);
    hooksPerType = (hooksPerType < MMI_MIN_CAPACITY ? MMI_MIN_CAPACITY : hooksPerType);
    m_pScreenRegistry = static_cast<MMISCREEN_T*>(calloc(maxScreens, sizeof(MMISCREEN_T)));
    m_pScreenStack = static_cast<MMISCREEN_T**>(calloc(stackDepth, sizeof(MMISCREEN_T*)));
    m_pHookCallbackFuncs = static_cast<MMIFUNC_T*>(calloc((size_t)MMICALLBACKTYPE_COUNT * hooksPerType, sizeof(MMIFUNC_T)));
    if (!m_pScreenRegistry || !m_pScreenStack || !m_pHookCallbackFuncs) {
        _free();
        return;
    }
    m_screenRegistryMax = maxScreens;
    m_screenStackMax = stackDepth;
    m_hookCallbacksMax = hooksPerType;
    m_isInitialised = TRUE;
}

void MMIDeInit(void)
{
    _free();
}

BOOL MMIRegisterScreen(U32 id, MMIFUNC_T enter, MMIFUNC_T create, MMIFUNC_T update, MMIFUNC_T exit)
{
    if (!m_isInitialised || m_screenRegistryCount >= m_screenRegistryMax) return FALSE;
    m_pScreenRegistry[m_screenRegistryCount++] = {id, enter, create, update, exit};
    return TRUE;
}

// The hook row of a type; nullptr for a type outside the eight.
static MMIFUNC_T* _hooks(MMICALLBACKTYPE_T type)
{
    return type < MMICALLBACKTYPE_COUNT ? m_pHookCallbackFuncs + (size_t)type * m_hookCallbacksMax : nullptr;
}

static void _callHooks(MMICALLBACKTYPE_T type)
{
    MMIFUNC_T* row = _hooks(type);
    for (U32 i = 0; i < m_hookCallbacksMax; i++) {
        if (row[i]) row[i]();
    }
}

// The current screen leaves: its Exit, then the EXIT hooks.
static void _leaveCurrent(void)
{
    const MMISCREEN_T* current = m_pScreenStack[m_screenStackIndex];
    if (current && current->pExitFunc) current->pExitFunc();
    _callHooks(MMICALLBACKTYPE_EXIT);
}

static void _enterCurrent(void)
{
    _callHooks(MMICALLBACKTYPE_ENTER);
    const MMISCREEN_T* current = m_pScreenStack[m_screenStackIndex];
    if (current && current->pEnterFunc) current->pEnterFunc();
}

void MMIScreenGoto(U32 id)
{
    if (!m_isInitialised) return;
    MMISCREEN_T* row = nullptr;
    for (U32 i = 0; i < m_screenRegistryCount && !row; i++) {
        if (m_pScreenRegistry[i].id == id) row = &m_pScreenRegistry[i];
    }
    if (!row) return;
    _leaveCurrent();
    m_screenStackIndex = (m_screenStackIndex + 1) % m_screenStackMax;
    m_isInvalidated = TRUE;
    m_pScreenStack[m_screenStackIndex] = row;
    _enterCurrent();
}

static U32 _stackIndex(U32 position)
{
    return (U32)(((S64)m_screenStackIndex - (S64)(position % m_screenStackMax) + m_screenStackMax) % m_screenStackMax);
}

void MMIScreenGotoStackPositon(U32 position)
{
    if (!m_isInitialised) return;
    const U32 target = _stackIndex(position);
    if (!m_pScreenStack[target]) return;
    _leaveCurrent();
    m_screenStackIndex = target;
    m_isInvalidated = TRUE;
    _enterCurrent();
}

void MMIScreenGotoPrev(void)
{
    MMIScreenGotoStackPositon(1);
}

U32 MMIGetScreenIdFromStack(U32 position)
{
    if (!m_isInitialised) return SCREENID_INVALID;
    const MMISCREEN_T* entry = m_pScreenStack[_stackIndex(position)];
    return entry ? entry->id : SCREENID_INVALID;
}

U32 MMIGetScreenIdCurrent(void)
{
    return MMIGetScreenIdFromStack(0);
}

void MMIInvalidate(void)
{
    if (m_isInitialised) m_isInvalidated = TRUE;
}

BOOL MMIRegisterCallback(MMICALLBACKTYPE_T type, MMIFUNC_T func)
{
    MMIFUNC_T* row = m_isInitialised ? _hooks(type) : nullptr;
    if (!row || !func) return FALSE;
    for (U32 i = 0; i < m_hookCallbacksMax; i++) {
        if (row[i] == func) row[i] = nullptr;
    }
    for (U32 i = 0; i < m_hookCallbacksMax; i++) {
        if (!row[i]) {
            row[i] = func;
            return TRUE;
        }
    }
    return FALSE;
}

BOOL MMIDeregisterCallback(MMICALLBACKTYPE_T type, MMIFUNC_T func)
{
    MMIFUNC_T* row = m_isInitialised ? _hooks(type) : nullptr;
    if (!row || !func) return FALSE;
    for (U32 i = 0; i < m_hookCallbacksMax; i++) {
        if (row[i] == func) {
            row[i] = nullptr;
            return TRUE;
        }
    }
    return FALSE;
}

void MMIProcess(void)
{
    if (!m_isInitialised) return;
    HotAreaProcess();
    _callHooks(MMICALLBACKTYPE_PREPROCESS);
    // Taken now: a change made from here on moves the stack, and the new screen gets
    // its Create on the next pass.
    const MMISCREEN_T* screen = m_pScreenStack[m_screenStackIndex];
    const BOOL invalidated = m_isInvalidated;
    m_isInvalidated = FALSE;
    if (invalidated) {
        ElementResetAll();
        HotAreaResetAll();
        _callHooks(MMICALLBACKTYPE_PRECREATE);
        if (screen && screen->pCreateFunc) screen->pCreateFunc();
        _callHooks(MMICALLBACKTYPE_POSTCREATE);
    }
    _callHooks(MMICALLBACKTYPE_PREUPDATE);
    if (screen && screen->pUpdateFunc) screen->pUpdateFunc();
    _callHooks(MMICALLBACKTYPE_POSTUPDATE);
    _callHooks(MMICALLBACKTYPE_POSTPROCESS);
}
