// The compositor and the fills against the floor of a plain memcpy of one page.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "dirtyrect.h"
#include "elements.h"
#include "lcd_blan.h"
#include "lcd_buffer.h"
#include "layer_merger.h"
#include "outimage.h"
#include "b_fill.h"

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

}  // namespace
