// The quad page, the view the dash shows most: one update of a factory page of four dials
// with all four values moving, and with none moving (the page is redrawn whole either
// way), and the same followed by the compose of the whole page; the large tachometer page
// and a page with both custom panels.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "Screen_QuadScreen.h"
#include "Timer_7Je7r.h"
#include "Velnor_Dorvik_V6c.h"
#include "data.h"
#include "dirtyrect.h"
#include "elements.h"
#include "freetype_api.h"
#include "layer_merger.h"
#include "lcd_buffer.h"
#include "quad_gauges.h"
#include "ttfonts.h"

namespace {

// Factory page 4: coolant temperature, exhaust pressure, launch timer, nitrous bottle 4.
constexpr uint8_T PAGE = 4;

void _setup(void)
{
    gScreenWidth = 320;
    gScreenHeight = 240;
    DirtyRectTestReset();
    ElementTestReset();
    LayerMergerTestReset();
    FTFInit(gpaFreetypeFontData, 6);
    memset(&Velnor_Dorvik_V6c_B, 0, sizeof(Velnor_Dorvik_V6c_B));
    memset(&Velnor_Dorvik_V6c_DWork, 0, sizeof(Velnor_Dorvik_V6c_DWork));
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    EEVariables_RAMShadow.CURRENT_QUAD_SCREEN = PAGE;
    DWork.UnitDelay_DSTATE_nf = 1;
    Timer_7Je7rInit();
    Timer_7Je7rTestPass(1000);
}

// The four dials' values at step n of a sweep, numbers and texts, as the foreground task
// leaves them.
void _values(uint32_T n)
{
    const uint8_T ids[4] = {B.ID, B.ID_f, B.ID_fr, B.ID_frt};
    for (int c = 0; c < 4; c++) {
        const QUAD_GAUGE_T& g = QUAD_GAUGES[ids[c]];
        const real_T min = B.*g.scaleMin, max = B.*g.scaleMax;
        const real_T value = min + (max - min) * (real_T)((n + 37 * c) % 100) / 100;
        B.*g.value = value;
        S_String* text = B.*g.valueText;
        snprintf(text->string, text->size, "%5.*f", (int)(B.*g.decimals), value);
    }
}

void _update(benchmark::State& state, bool changing, bool compose)
{
    _setup();
    std::vector<U16> page(320 * 240);
    uint32_T n = 0;
    _values(n);
    Screen_QuadScreen_Update();
    LayerMergerTestCompose(page.data());
    for (auto _ : state) {
        if (changing) _values(++n);
        Screen_QuadScreen_Update();
        if (compose) {
            LayerMergerTestCompose(page.data());
        } else {
            DirtyRectFlip();  // one list a frame, as the compositor frees them
            ElementFlip();
        }
    }
    state.SetItemsProcessed(state.iterations());
    FTFTestDone();
}

void BM_QuadPageUpdateChanging(benchmark::State& state)
{
    _update(state, true, false);
}
BENCHMARK(BM_QuadPageUpdateChanging);

void BM_QuadPageUpdateSteady(benchmark::State& state)
{
    _update(state, false, false);
}
BENCHMARK(BM_QuadPageUpdateSteady);

void BM_QuadPageUpdateAndCompose(benchmark::State& state)
{
    _update(state, true, true);
}
BENCHMARK(BM_QuadPageUpdateAndCompose);

// The page shown with these four gauge words, engine speed and spark advance moving.
void _gaugePage(benchmark::State& state, const uint16_T (&words)[4])
{
    _setup();
    for (int c = 0; c < 4; c++) (&EEVariables_RAMShadow.PROFILE_1[0][0])[(PAGE - 1) * 4 + c] = words[c];
    Timer_7Je7rTestPass(1010);
    uint32_T n = 0;
    for (auto _ : state) {
        B.RPM = (n * 97) % 9000;
        snprintf(B.ValueString_do->string, B.ValueString_do->size, "%5.0f", B.RPM);
        B.ValueDouble_l0e = -25 + (n % 75);
        snprintf(B.ValueString_l0e->string, B.ValueString_l0e->size, "%5.2f", B.ValueDouble_l0e);
        n++;
        Screen_QuadScreen_Update();
        DirtyRectFlip();
        ElementFlip();
    }
    state.SetItemsProcessed(state.iterations());
    FTFTestDone();
}

// The large tachometer, which fills the page.
void BM_LargeTachometerPageUpdate(benchmark::State& state)
{
    _gaugePage(state, {0x0305, 0, 0, 0});
}
BENCHMARK(BM_LargeTachometerPageUpdate);

// A quad gauge, the spark panel two cells high on the right, the table over the lower row.
void BM_CustomPanelsPageUpdate(benchmark::State& state)
{
    _gaugePage(state, {0x0035, 0x0200, 0x0100, 0});
}
BENCHMARK(BM_CustomPanelsPageUpdate);

}  // namespace
