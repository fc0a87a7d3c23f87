#include "layer_merger.h"

#include "dirtyrect.h"
#include "elements.h"
#include "lcd_buffer.h"
#include "lcdc_drv.h"

namespace {

BOOL m_isLcdFlipped = FALSE;
U32 m_buttonOverlayHeight = 0;
U32 m_prevButtonOverlayHeight = 0;

// The colour key, two pixels at a time: a front half of 0xFFFF shows the back half.
inline U32 _key(U32 front, U32 back)
{
    const U32 low = (U32)-(U32)((front & 0xFFFFu) == 0xFFFFu) & 0x0000FFFFu;
    const U32 high = (U32)-(U32)((front | 0xFFFFu) == 0xFFFFFFFFu) & 0xFFFF0000u;
    const U32 mask = low | high;
    return (front & ~mask) | (back & mask);
}

inline U32 _swapHalves(U32 w)
{
    return (w >> 16) | (w << 16);
}

// `words` words of front over back into dst. A plain counted loop over restrict
// pointers: the compiler unrolls it and turns it into vector code.
GFX_HOT_LOOP void _composeSpan(U32_PAIR* __restrict dst, const U32_PAIR* __restrict front, const U32_PAIR* __restrict back,
                         U32 words)
{
    for (U32 i = 0; i < words; i++) dst[i] = _key(front[i], back[i]);
}

// The same, the picture turned by 180 degrees: dstEnd is the page word that the first
// layer word lands on, and the page is walked backwards.
GFX_HOT_LOOP void _composeSpanFlipped(U32_PAIR* __restrict dstEnd, const U32_PAIR* __restrict front,
                                      const U32_PAIR* __restrict back, U32 words)
{
    for (U32 i = 0; i < words; i++) *(dstEnd - i) = _swapHalves(_key(front[i], back[i]));
}

// Rows start on a pixel pair: the layers are aligned and their width is even.
inline U32_PAIR* _words(U16* p)
{
    return static_cast<U32_PAIR*>(static_cast<void*>(p));
}

// Page rows H - h to H - 1: the overlay area of the front layer (rows H to H + h - 1)
// over the back layer's rows, full width.
void _composeOverlay(U16* page, U32 w, U32 h, U32 overlay)
{
    for (U32 y = h - overlay; y < h; y++) {
        const U32 row = y * w;
        _composeSpan(_words(page + row), _words(Layer2Buffer + row + overlay * w), _words(Layer1Buffer + row), w / 2);
    }
}

// Widens a dirty rectangle to whole words and clips it to the screen (it is already
// clipped by the dirty module; this keeps the compositor safe on its own).
bool _wordSpan(GFX_RECT_T* r, U32 w, U32 h)
{
    if (r->Bottom < r->Top || r->Right < r->Left) return false;
    if (r->Left & 1) r->Left -= 1;
    if (!(r->Right & 1)) r->Right += 1;
    return r->Left >= 0 && r->Top >= 0 && r->Right < (S32)w && r->Bottom < (S32)h;
}

// Merges the current dirty list and composes each rectangle, row by row, through
// span(first pixel index, words).
template <typename SPAN>
void _composeDirty(U32 w, U32 h, SPAN span)
{
    DirtyRectFixup();
    for (DIRTYRECT_T* d = DirtyRectGetFirst(); d; d = d->pNext) {
        if (!_wordSpan(&d->rect, w, h)) continue;
        const GFX_RECT_T& r = d->rect;
        const U32 words = (U32)(r.Right - r.Left + 1) / 2;
        U32 at = (U32)r.Top * w + (U32)r.Left;
        for (S32 y = r.Top; y <= r.Bottom; y++, at += w) span(at, words);
    }
}

}  // namespace

BOOL isLcdFlipped(void)
{
    return m_isLcdFlipped;
}

void vSetLcdFlipped(BOOL flipped)
{
    m_isLcdFlipped = flipped;
}

void SetButtonOverlayHeight(U32 rows)
{
    m_buttonOverlayHeight = rows > gScreenHeight ? gScreenHeight : rows;
}

U32 GetButtonOverlayHeight(void)
{
    return m_buttonOverlayHeight;
}

void LayerMergerTestReset(void)
{
    m_isLcdFlipped = FALSE;
    m_buttonOverlayHeight = 0;
    m_prevButtonOverlayHeight = 0;
}

static void _compose(U16* page)
{
    const U32 w = gScreenWidth, h = gScreenHeight, words = w / 2;
    if (!page) {
        // No display: the bookkeeping still moves on with the frame.
    } else if (!m_isLcdFlipped) {
        const U32 overlay = m_buttonOverlayHeight > h ? h : m_buttonOverlayHeight;
        if (!DirtyRectIsEnabled()) {
            for (U32 y = 0; y < h - overlay; y++) {
                _composeSpan(_words(page + y * w), _words(Layer2Buffer + y * w), _words(Layer1Buffer + y * w), words);
            }
        } else {
            if (overlay < m_prevButtonOverlayHeight) {
                // The rows the shrinking overlay uncovers, and one above them.
                DirtyRectAdd(0, (S32)(h - m_prevButtonOverlayHeight) - 1, (S32)w - 1, (S32)(h - overlay) - 1);
            }
            m_prevButtonOverlayHeight = overlay;
            _composeDirty(w, h, [page](U32 at, U32 words) {
                _composeSpan(_words(page + at), _words(Layer2Buffer + at), _words(Layer1Buffer + at), words);
            });
        }
        if (overlay) _composeOverlay(page, w, h, overlay);
    } else {
        // Pixel i of the layers goes to page pixel W*H - 1 - i; W*H is even, so a layer
        // word lands whole on a page word with its halves exchanged.
        U32_PAIR* last = _words(page) + (w * h) / 2 - 1;
        if (!DirtyRectIsEnabled()) {
            _composeSpanFlipped(last, _words(Layer2Buffer), _words(Layer1Buffer), (w * h) / 2);
        } else {
            _composeDirty(w, h, [last](U32 at, U32 words) {
                _composeSpanFlipped(last - at / 2, _words(Layer2Buffer + at), _words(Layer1Buffer + at), words);
            });
        }
    }
    DirtyRectFlip();
    ElementFlip();
}

void LayerMergerTestCompose(U16* page)
{
    _compose(page);
}

void merge_layers(void)
{
    _compose(lcd_buffer());
    lcd_swap();
}
