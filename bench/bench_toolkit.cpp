// One pass of the screen manager with an idle screen, and the button bar's pass with
// its five key-line reads.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>

#include "buttonbar.h"
#include "keypad_drv.h"
#include "mmi.h"
#include "timer_drv.h"

namespace {

// A device root holding just the factory record, the key lines and the buzzer.
void _keyRoot(void)
{
    static bool made = false;
    if (made) return;
    made = true;
    char tmpl[] = "/tmp/motordash-bench-keys-XXXXXX";
    const std::string root = mkdtemp(tmpl);
    for (const char* dir : {"/sys", "/sys/class", "/sys/class/gpio", "/sys/class/leds", "/sys/class/leds/buzzer-pwm",
                            "/sys/uid", "/sys/uid/otp"}) {
        mkdir((root + dir).c_str(), 0755);
    }
    FILE* record = fopen((root + "/sys/uid/otp/id.bin").c_str(), "wb");
    const unsigned char small[16] = {0x56, 0x34, 0x12};  // serial, product 0: no touch
    fwrite(small, 1, sizeof(small), record);
    fclose(record);
    for (U32 line : KEYPAD_KEY_LINES) {
        const std::string dir = root + "/sys/class/gpio/gpio" + std::to_string(line);
        mkdir(dir.c_str(), 0755);
        for (const char* file : {"/value", "/direction"}) {
            FILE* f = fopen((dir + file).c_str(), "w");
            fputs(file[1] == 'v' ? "1\n" : "in\n", f);
            fclose(f);
        }
    }
    setenv("DASH_ROOT", root.c_str(), 1);
}

void _idleUpdate(void)
{
    benchmark::ClobberMemory();
}

void BM_MMIProcessIdleScreen(benchmark::State& state)
{
    _keyRoot();
    MMIInit(100, 100, 10);
    MMIRegisterScreen(1, nullptr, nullptr, _idleUpdate, nullptr);
    MMIScreenGoto(1);
    MMIProcess();  // the screen's creation
    for (auto _ : state) MMIProcess();
    MMIDeInit();
}
BENCHMARK(BM_MMIProcessIdleScreen);

void BM_ButtonBarProcess(benchmark::State& state)
{
    _keyRoot();
    timer_init(20);
    MMIInit(100, 100, 10);
    ButtonBarInit();
    ButtonBarSetMode(BUTTONBARMODE_INVISIBLE);
    for (auto _ : state) _ButtonBarProcess();
    MMIDeInit();
    timer_deinit();
}
BENCHMARK(BM_ButtonBarProcess);

}  // namespace
