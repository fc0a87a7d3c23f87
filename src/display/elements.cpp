#include "elements.h"

#include "dirtyrect.h"
#include "lcd_buffer.h"

namespace {

ELEMENT_T* m_elementHashTab[ELEMENT_HASH_SIZE];
ELEMENT_T m_elementFreePool[ELEMENT_POOL_SIZE];
ELEMENT_T* m_pElementFreeList = nullptr;
U32 m_uniqueId = 10000;
BOOL m_isElementInitialised = FALSE;

}  // namespace

// Unset is Left at the screen width; there is no flag of its own.
static bool _isSet(const GFX_RECT_T& r)
{
    return r.Left < (S32)gScreenWidth;
}

static void _unset(GFX_RECT_T* r)
{
    *r = {(S32)gScreenWidth, 0, 0, 0};
}

static void _init(void)
{
    if (m_isElementInitialised) return;
    ElementResetAll();
}

void ElementResetAll(void)
{
    m_isElementInitialised = TRUE;
    for (ELEMENT_T*& head : m_elementHashTab) head = nullptr;
    m_pElementFreeList = nullptr;
    for (U32 i = ELEMENT_POOL_SIZE; i-- > 0;) {
        m_elementFreePool[i].pNext = m_pElementFreeList;
        m_pElementFreeList = &m_elementFreePool[i];
    }
}

void ElementTestReset(void)
{
    m_uniqueId = 10000;
    ElementResetAll();
}

U32 ElementGetNewId(void)
{
    _init();
    const U32 old = m_uniqueId;
    m_uniqueId = (old >= 0xFFFFFFFEu || old < ELEMENTID_STATIC_END) ? 10000 : old + 1;
    return m_uniqueId;
}

static ELEMENT_T* _find(U32 id)
{
    for (ELEMENT_T* e = m_elementHashTab[id % ELEMENT_HASH_SIZE]; e; e = e->pNext) {
        if (e->id == id) return e;
    }
    return nullptr;
}

void ElementUpdateFromRect(U32 id, const GFX_RECT_T* rect)
{
    _init();
    if (id == ELEMENTID_INVALID || !rect) return;
    ELEMENT_T* e = _find(id);
    if (e) {
        if (_isSet(e->curRect)) {
            GfxRectUnion(&e->curRect, rect);
        } else {
            e->curRect = *rect;
        }
        return;
    }
    if (!m_pElementFreeList) return;  // untracked: its wipe will do nothing
    e = m_pElementFreeList;
    m_pElementFreeList = e->pNext;
    e->id = id;
    _unset(&e->prevRect);
    e->curRect = *rect;
    e->pNext = m_elementHashTab[id % ELEMENT_HASH_SIZE];
    m_elementHashTab[id % ELEMENT_HASH_SIZE] = e;
}

void ElementUpdate(U32 id, S32 left, S32 top, S32 right, S32 bottom)
{
    const GFX_RECT_T r = {left, top, right, bottom};
    ElementUpdateFromRect(id, &r);
}

void ElementFillPrevRect(U32 id, U16 colour, LAYER_T layer)
{
    _init();
    if (id == ELEMENTID_INVALID) return;
    const ELEMENT_T* e = _find(id);
    if (!e || !_isSet(e->prevRect)) return;
    const S32 maxX = (S32)gScreenWidth - 1, maxY = 2 * (S32)gScreenHeight - 1;
    const GFX_RECT_T& p = e->prevRect;
    const S32 left = gfx_clamp(p.Left, 0, maxX), right = gfx_clamp(p.Right, 0, maxX);
    const S32 top = gfx_clamp(p.Top, 0, maxY), bottom = gfx_clamp(p.Bottom, 0, maxY);
    if (right >= left) {
        U16* row = GET_LAYER_BUFFER(layer) + (U32)top * gScreenWidth + (U32)left;
        for (S32 y = top; y <= bottom; y++, row += gScreenWidth) lcd_fill_pixels(row, (U32)(right - left + 1), colour);
    }
    DirtyRectAddFromRect(&e->prevRect);
}

BOOL ElementGetPrevRect(U32 id, GFX_RECT_T* out)
{
    _init();
    if (!out || id == ELEMENTID_INVALID) return FALSE;
    const ELEMENT_T* e = _find(id);
    if (!e || !_isSet(e->prevRect)) return FALSE;
    *out = e->prevRect;
    return TRUE;
}

BOOL ElementTestGetCurRect(U32 id, GFX_RECT_T* out)
{
    _init();
    const ELEMENT_T* e = id == ELEMENTID_INVALID ? nullptr : _find(id);
    if (!e || !out || !_isSet(e->curRect)) return FALSE;
    *out = e->curRect;
    return TRUE;
}

void ElementFlip(void)
{
    _init();
    for (ELEMENT_T* head : m_elementHashTab) {
        for (ELEMENT_T* e = head; e; e = e->pNext) {
            if (!_isSet(e->curRect)) continue;
            e->prevRect = e->curRect;
            _unset(&e->curRect);
        }
    }
}
