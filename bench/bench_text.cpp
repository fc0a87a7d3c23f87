// Text: a changing five-digit number as the gauges redraw it, from the glyph cache and
// on the first draw of a size the cache has not seen.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "dirtyrect.h"
#include "elements.h"
#include "freetype_api.h"
#include "lcd_buffer.h"
#include "ttfonts.h"

namespace {

void _setup(void)
{
    gScreenWidth = 320;
    gScreenHeight = 240;
    DirtyRectTestReset();
    ElementTestReset();
    FTFInit(gpaFreetypeFontData, 6);
}

// Right aligned, yellow on the front layer over transparent pixels, as a value text.
FTF_TEXTBOX_T _box(U32 size)
{
    return FTF_TEXTBOX_T{{0, 10, 300, 229}, FONT_INDEX_TTARIAL, size, LAYER2, 0xFFE0, HORIZONTAL_ALIGNMENT_RIGHT,
                         VERTICAL_ALIGNMENT_TOP, 0};
}

void _numberRedraw(benchmark::State& state, U32 size)
{
    _setup();
    for (U32 i = 0; i < 320 * 480; i++) Layer2Buffer[i] = 0xFFFF;
    const FTF_TEXTBOX_T box = _box(size);
    char text[8];
    U32 value = 10000;
    for (U32 v = 10000; v < 10010; v++) {
        snprintf(text, sizeof text, "%05u", v);
        FTFBlitTextBox(&box, text);  // fill the cache with every digit
    }
    for (auto _ : state) {
        snprintf(text, sizeof text, "%05u", value);
        value = value == 99999 ? 10000 : value + 1;
        benchmark::DoNotOptimize(FTFBlitTextBox(&box, text));
        DirtyRectFlip();  // one list a frame, as the compositor frees them
    }
    state.SetItemsProcessed(state.iterations());
    FTFTestDone();
}

void BM_TextNumber24(benchmark::State& state)
{
    _numberRedraw(state, 24);
}
BENCHMARK(BM_TextNumber24);

void BM_TextNumber110(benchmark::State& state)
{
    _numberRedraw(state, 110);
}
BENCHMARK(BM_TextNumber110);

// The face is open and another size cached; this size is new: its scaler and every
// glyph's rendering are paid here.
void BM_TextFirstDrawOfANewSize(benchmark::State& state)
{
    _setup();
    const FTF_TEXTBOX_T box = _box((U32)state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        FTFInit(gpaFreetypeFontData, 6);
        const FTF_TEXTBOX_T warm = _box(23);
        FTFBlitTextBox(&warm, "12345");
        DirtyRectFlip();
        state.ResumeTiming();
        benchmark::DoNotOptimize(FTFBlitTextBox(&box, "12345"));
    }
    state.SetItemsProcessed(state.iterations());
    FTFTestDone();
}
BENCHMARK(BM_TextFirstDrawOfANewSize)->Arg(24)->Arg(110);

}  // namespace
