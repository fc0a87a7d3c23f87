#include "dirtyrect.h"

#include "lcd_buffer.h"

namespace {

DIRTYRECT_T m_dirtyRectFreePool[DIRTYRECT_POOL_SIZE];
DIRTYRECT_T* m_pDirtyRectFreeList = nullptr;
DIRTYRECT_T* m_pDirtyRectLists[DIRTYRECT_LIST_COUNT];
U32 m_curDirtyRectListIndex = 0;
BOOL m_isDirtyRectEnabled = TRUE;
BOOL m_isDirtyRectDebugEnabled = FALSE;
BOOL m_isDirtyRectInitialised = FALSE;

}  // namespace

static void _init(void)
{
    if (m_isDirtyRectInitialised) return;
    m_pDirtyRectFreeList = nullptr;
    for (U32 i = DIRTYRECT_POOL_SIZE; i-- > 0;) {
        m_dirtyRectFreePool[i].pNext = m_pDirtyRectFreeList;
        m_pDirtyRectFreeList = &m_dirtyRectFreePool[i];
    }
    for (DIRTYRECT_T*& list : m_pDirtyRectLists) list = nullptr;
    m_isDirtyRectEnabled = TRUE;
    m_isDirtyRectInitialised = TRUE;
}

void DirtyRectTestReset(void)
{
    m_isDirtyRectInitialised = FALSE;
    m_curDirtyRectListIndex = 0;
    m_isDirtyRectDebugEnabled = FALSE;
    _init();
}

U32 DirtyRectTestFreeCount(void)
{
    _init();
    U32 n = 0;
    for (DIRTYRECT_T* r = m_pDirtyRectFreeList; r; r = r->pNext) n++;
    return n;
}

void DirtyRectInit(void)
{
    _init();
}

void DirtyRectEnable(BOOL enable)
{
    _init();
    m_isDirtyRectEnabled = enable;
}

BOOL DirtyRectIsEnabled(void)
{
    _init();
    return m_isDirtyRectEnabled;
}

void DirtyRectDebugEnable(BOOL enable)
{
    _init();
    if (!m_isDirtyRectEnabled) return;
    m_isDirtyRectDebugEnabled = enable;
    if (!enable) DirtyRectAdd(0, 0, (S32)gScreenWidth - 1, (S32)gScreenHeight - 1);
}

BOOL DirtyRectIsDebugEnabled(void)
{
    _init();
    return m_isDirtyRectDebugEnabled;
}

void DirtyRectAdd(S32 left, S32 top, S32 right, S32 bottom)
{
    _init();
    if (!m_isDirtyRectEnabled) return;
    // Only the screen proper: the rows below it are composed whole each frame.
    GFX_RECT_T r = {CLAMPMIN(left, 0), CLAMPMIN(top, 0), CLAMPMAX(right, (S32)gScreenWidth - 1),
                    CLAMPMAX(bottom, (S32)gScreenHeight - 1)};
    if (r.Right < r.Left || r.Bottom < r.Top) return;
    for (DIRTYRECT_T*& list : m_pDirtyRectLists) {
        DIRTYRECT_T* rec = m_pDirtyRectFreeList;
        if (!rec) return;
        m_pDirtyRectFreeList = rec->pNext;
        rec->rect = r;
        rec->pNext = list;
        list = rec;
    }
}

void DirtyRectAddFromRect(const GFX_RECT_T* rect)
{
    if (rect) DirtyRectAdd(rect->Left, rect->Top, rect->Right, rect->Bottom);
}

BOOL GfxRectDoesIntersect(const GFX_RECT_T* a, const GFX_RECT_T* b)
{
    return a->Left <= b->Right && b->Left <= a->Right && a->Top <= b->Bottom && b->Top <= a->Bottom;
}

void GfxRectUnion(GFX_RECT_T* dest, const GFX_RECT_T* src)
{
    dest->Left = CLAMPMAX(dest->Left, src->Left);
    dest->Top = CLAMPMAX(dest->Top, src->Top);
    dest->Right = CLAMPMIN(dest->Right, src->Right);
    dest->Bottom = CLAMPMIN(dest->Bottom, src->Bottom);
}

void DirtyRectFixup(void)
{
    _init();
    if (!m_isDirtyRectEnabled) return;
    DIRTYRECT_T*& head = m_pDirtyRectLists[m_curDirtyRectListIndex];
    DIRTYRECT_T* r = head;
    while (r) {
        DIRTYRECT_T* before = r;
        DIRTYRECT_T* s = r->pNext;
        while (s && !GfxRectDoesIntersect(&r->rect, &s->rect)) {
            before = s;
            s = s->pNext;
        }
        if (!s) {
            r = r->pNext;
            continue;
        }
        // Merge, and start again from the head: the wider rectangle may now overlap
        // one that was checked before.
        GfxRectUnion(&r->rect, &s->rect);
        before->pNext = s->pNext;
        s->pNext = m_pDirtyRectFreeList;
        m_pDirtyRectFreeList = s;
        r = head;
    }
}

DIRTYRECT_T* DirtyRectGetFirst(void)
{
    _init();
    return m_isDirtyRectEnabled ? m_pDirtyRectLists[m_curDirtyRectListIndex] : nullptr;
}

void DirtyRectFlip(void)
{
    _init();
    if (!m_isDirtyRectEnabled) return;
    DIRTYRECT_T*& list = m_pDirtyRectLists[m_curDirtyRectListIndex];
    while (list) {
        DIRTYRECT_T* next = list->pNext;
        list->pNext = m_pDirtyRectFreeList;
        m_pDirtyRectFreeList = list;
        list = next;
    }
    m_curDirtyRectListIndex = (m_curDirtyRectListIndex + 1) % DIRTYRECT_LIST_COUNT;
}
