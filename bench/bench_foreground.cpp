// The foreground pass: an ordinary one, with every frame fresh and no text due for its
// refresh, and the one in which every text value is formatted again.
#include <benchmark/benchmark.h>

#include <cstring>

#include "Timer_7Je7r.h"
#include "Velnor_Dorvik_V6c.h"
#include "can_rx.h"
#include "can_signals.h"
#include "data.h"

namespace {

// One frame of every id the dash receives, with data that gives most fields a value.
void _feedEveryFrame(uint8_T seed)
{
    for (const CAN_FRAME_T& frame : CAN_FRAMES) {
        if (frame.dir != CAN_RX) continue;
        CAN_MSG_T m = {};
        m.id = frame.id;
        m.msg_length = 8;
        for (int i = 0; i < 8; i++) m.msg_content[i] = (uint8_T)(seed + 17 * i + frame.id);
        if (frame.port == CAN_PORT2) rxTable_285280__0051(CAN_PORT2, &m);
        else rxTable_285279__0022(CAN_PORT1, &m);
    }
}

void _start(void)
{
    memset(&Velnor_Dorvik_V6c_B, 0, sizeof(Velnor_Dorvik_V6c_B));
    memset(&Velnor_Dorvik_V6c_DWork, 0, sizeof(Velnor_Dorvik_V6c_DWork));
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    Timer_7Je7rInit();
}

// The clock stands still after the first pass, so no refresh gate opens again.
void BM_ForegroundPass(benchmark::State& state)
{
    _start();
    uint8_T seed = 0;
    _feedEveryFrame(seed);
    Timer_7Je7rTestPass(1000);
    for (auto _ : state) {
        state.PauseTiming();
        _feedEveryFrame(++seed);
        state.ResumeTiming();
        Timer_7Je7rTestPass(1000);
    }
}
BENCHMARK(BM_ForegroundPass);

// 260 ms between passes: every gate is open and every text value is formatted.
void BM_ForegroundPassReformat(benchmark::State& state)
{
    _start();
    uint8_T seed = 0;
    uint32_T now = 1000;
    for (auto _ : state) {
        state.PauseTiming();
        _feedEveryFrame(++seed);
        now += 260;
        state.ResumeTiming();
        Timer_7Je7rTestPass(now);
    }
}
BENCHMARK(BM_ForegroundPassReformat);

}  // namespace
