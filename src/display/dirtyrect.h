#pragma once
// What changed on the screen since each framebuffer page was last composed: one list
// per page, all fed from one static pool.
#include "gfx_types.h"

constexpr U32 DIRTYRECT_POOL_SIZE = 18000;
constexpr U32 DIRTYRECT_LIST_COUNT = 3;

struct DIRTYRECT_T {
    GFX_RECT_T rect;
    DIRTYRECT_T* pNext;
};

void DirtyRectInit(void);
void DirtyRectEnable(BOOL enable);
BOOL DirtyRectIsEnabled(void);
void DirtyRectDebugEnable(BOOL enable);
BOOL DirtyRectIsDebugEnabled(void);
void DirtyRectAdd(S32 left, S32 top, S32 right, S32 bottom);
void DirtyRectAddFromRect(const GFX_RECT_T* rect);
void DirtyRectFixup(void);
DIRTYRECT_T* DirtyRectGetFirst(void);
void DirtyRectFlip(void);

BOOL GfxRectDoesIntersect(const GFX_RECT_T* a, const GFX_RECT_T* b);
void GfxRectUnion(GFX_RECT_T* dest, const GFX_RECT_T* src);

// Test hooks: for tests and benchmarks only, never called by the dash.
// Records left in the free pool.
U32 DirtyRectTestFreeCount(void);
// Back to the state at program load: all lists empty, index 0, enabled.
void DirtyRectTestReset(void);
