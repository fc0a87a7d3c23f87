#pragma once
// Per drawn object, the rectangle it covered last frame, so it can be wiped without
// its caller knowing where it was.
#include "gfx_types.h"

constexpr U32 ELEMENT_HASH_SIZE = 1000;
constexpr U32 ELEMENT_POOL_SIZE = 2000;

struct ELEMENT_T {
    U32 id;
    GFX_RECT_T prevRect;
    GFX_RECT_T curRect;
    ELEMENT_T* pNext;
};

U32 ElementGetNewId(void);
void ElementResetAll(void);
void ElementUpdate(U32 id, S32 left, S32 top, S32 right, S32 bottom);
void ElementUpdateFromRect(U32 id, const GFX_RECT_T* rect);
void ElementFillPrevRect(U32 id, U16 colour, LAYER_T layer);
BOOL ElementGetPrevRect(U32 id, GFX_RECT_T* out);
void ElementFlip(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// The frame-under-construction rectangle of an element; FALSE when unknown or unset.
BOOL ElementTestGetCurRect(U32 id, GFX_RECT_T* out);
// Back to the state at program load (ids start again at 10001).
void ElementTestReset(void);
