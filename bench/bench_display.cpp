// The compositor and the fills against the floor of a plain memcpy of one page, and the
// anti-aliased needle and gauge widget. For instructions per draw, run the needle and
// gauge benchmarks under valgrind --tool=callgrind and divide the cost of
// _DrawNeedle and _GaugeFrame by their calls (the machine's own counters are not
// reachable everywhere).
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "antialias.h"
#include "dirtyrect.h"
#include "elements.h"
#include "lcd_blan.h"
#include "lcd_buffer.h"
#include "layer_merger.h"
#include "outimage.h"
#include "b_fill.h"
#include "freetype_api.h"
#include "gauge.h"
#include "images.h"
#include "ttfonts.h"

namespace {

void _setup(U32 w, U32 h)
{
    gScreenWidth = w;
    gScreenHeight = h;
    DirtyRectTestReset();
    ElementTestReset();
    LayerMergerTestReset();
    // A front layer with transparent and opaque words mixed, as on a real page.
    for (U32 i = 0; i < w * h; i++) {
        Layer1Buffer[i] = (U16)(i * 7);
        Layer2Buffer[i] = (i / 7) % 3 == 0 ? ALPHA_COLOR : (U16)i;
    }
}

void BM_MemcpyPage(benchmark::State& state)
{
    const U32 w = (U32)state.range(0), h = (U32)state.range(1);
    std::vector<U16> page(w * h);
    for (auto _ : state) {
        memcpy(page.data(), Layer1Buffer, page.size() * 2);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed((int64_t)state.iterations() * w * h * 2);
}
BENCHMARK(BM_MemcpyPage)->Args({320, 240})->Args({800, 480});

// Every pixel dirty: the whole screen composed through the dirty-rectangle path.
void BM_ComposeFullPage(benchmark::State& state)
{
    const U32 w = (U32)state.range(0), h = (U32)state.range(1);
    _setup(w, h);
    std::vector<U16> page(w * h);
    for (auto _ : state) {
        DirtyRectAdd(0, 0, (S32)w - 1, (S32)h - 1);
        LayerMergerTestCompose(page.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed((int64_t)state.iterations() * w * h * 2);
}
BENCHMARK(BM_ComposeFullPage)->Args({320, 240})->Args({800, 480});

void BM_ComposeFullPageFlipped(benchmark::State& state)
{
    _setup(320, 240);
    vSetLcdFlipped(TRUE);
    std::vector<U16> page(320 * 240);
    for (auto _ : state) {
        DirtyRectAdd(0, 0, 319, 239);
        LayerMergerTestCompose(page.data());
        benchmark::ClobberMemory();
    }
    vSetLcdFlipped(FALSE);
}
BENCHMARK(BM_ComposeFullPageFlipped);

void BM_ComposeIdleFrame(benchmark::State& state)
{
    _setup(320, 240);
    std::vector<U16> page(320 * 240);
    for (int i = 0; i < 3; i++) LayerMergerTestCompose(page.data());
    for (auto _ : state) LayerMergerTestCompose(page.data());
}
BENCHMARK(BM_ComposeIdleFrame);

void BM_BlockfillFullScreen(benchmark::State& state)
{
    const U32 opacity = (U32)state.range(0);
    _setup(320, 240);
    for (auto _ : state) {
        blockfillExEle(ELEMENTID_INVALID, 0, 0, 319, 239, 0x1234, opacity, LAYER2);
        DirtyRectFlip();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed((int64_t)state.iterations() * 320 * 240);
}
BENCHMARK(BM_BlockfillFullScreen)->Arg(100)->Arg(50);

struct BACKGROUND_T {
    S_ImageHeader h;
    U16 bitmap[320 * 240];
};
BACKGROUND_T g_background = {{0, {0, 0, 0}, 320, 240}, {}};

void BM_PictureCopy320x240(benchmark::State& state)
{
    _setup(320, 240);
    for (U32 i = 0; i < 320 * 240; i++) g_background.bitmap[i] = (U16)(i * 3);
    for (auto _ : state) {
        outimageExEle(ELEMENTID_INVALID, 0, 0, &g_background, 100, ALPHA_OVERWRITE, LAYER1);
        DirtyRectFlip();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed((int64_t)state.iterations() * 320 * 240);
}
BENCHMARK(BM_PictureCopy320x240);

// The gauge needle at radius 100 * scale, turning through 64 angles.
constexpr int NEEDLE_ANGLES = 64;
VERTEX_T g_needles[NEEDLE_ANGLES][6];

void _placeNeedles(float scale, S32 cx, S32 cy)
{
    const VERTEX_T needle[6] = {{-5, -5}, {0, 0}, {5, -5}, {2, -96}, {0, -100}, {-2, -96}};
    for (int i = 0; i < NEEDLE_ANGLES; i++) {
        VertexScale(scale, scale, 6, needle, g_needles[i]);
        VertexRotateDeg(0, 0, (float)i * 360.0f / NEEDLE_ANGLES, 6, g_needles[i], g_needles[i]);
        VertexTranslate(cx, cy, 6, g_needles[i], g_needles[i]);
    }
}

__attribute__((noinline)) void _DrawNeedle(int i, U32 opacity)
{
    PolyFillAAEle(ELEMENTID_INVALID, 6, g_needles[i % NEEDLE_ANGLES], RED, opacity, LAYER2);
}

// Args: scale in tenths, opacity. Scale 10 is a needle of radius 100 on the small panel,
// 20 one of radius 200 on the large one.
void BM_PolyFillAANeedle(benchmark::State& state)
{
    const float scale = (float)state.range(0) / 10;
    const U32 opacity = (U32)state.range(1);
    _setup(800, 480);
    _placeNeedles(scale, 400, 240);
    int i = 0;
    for (auto _ : state) {
        _DrawNeedle(i++, opacity);
        DirtyRectFlip();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_PolyFillAANeedle)->Args({10, 100})->Args({20, 100})->Args({20, 50});

GAUGE_T g_gauge;

// One frame of a moving gauge: wipe the last needle and hub, draw the new ones.
__attribute__((noinline)) void _GaugeFrame(float value)
{
    ElementFillPrevRect((U32)g_gauge.elementId, ALPHA_COLOR, LAYER2);
    vGaugeUpdate(&g_gauge, value);
    ElementFlip();
    DirtyRectFlip();
}

void BM_GaugeUpdate(benchmark::State& state)
{
    _setup(320, 240);
    FTFInit(gpaFreetypeFontData, gFreetypeNumFonts);
    g_gauge = {(S32)ElementGetNewId(), 0, 8000, 225, 135, DIRECTION_ClockWise, 160, 120, 9, 4, 0, 1.0f, RED, WHITE_TEXT,
               &needle_boss, nullptr, 0, 0};
    vGaugeCreate(&g_gauge);
    float value = 0;
    for (auto _ : state) {
        value = value >= 8000 ? 0 : value + 97;
        _GaugeFrame(value);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_GaugeUpdate);

}  // namespace
