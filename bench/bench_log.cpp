// One row of the log: the time stamp and every column formatted, written and flushed to
// a file on a stick in a temporary device root. 50 rows a second run on the signal
// thread, so this is the share of the tick that logging takes. For the figure in
// instructions: valgrind --tool=callgrind motordash-bench --benchmark_filter=BM_LogRow
// and the inclusive count of Timer_aUXrF over the iterations.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <ftw.h>
#include <string>
#include <sys/stat.h>

#include "Velnor_Dorvik_V6c.h"
#include "data.h"
#include "log_columns.h"
#include "usb_log.h"

namespace {

// A value in the middle of each column's range, with decimals where the column has them.
void _typicalValues(void)
{
    for (size_t i = 0; i < LOG_COLUMN_COUNT; i++) {
        const LOG_COLUMN_T& c = LOG_COLUMNS[i];
        char* end;
        const double low = strtod(c.range, &end);
        const double value = low + (strtod(end, nullptr) - low) * (0.3 + 0.004 * (double)i);
        uint8_T* field = reinterpret_cast<uint8_T*>(&B) + c.signal;
        if (c.kind == CAN_KIND_U8) *field = (uint8_T)value;
        if (c.kind == CAN_KIND_U16) {
            const uint16_T v = (uint16_T)value;
            memcpy(field, &v, sizeof(v));
        }
        if (c.kind == CAN_KIND_U32) {
            const uint32_T v = (uint32_T)value;
            memcpy(field, &v, sizeof(v));
        }
        if (c.kind == CAN_KIND_F64) memcpy(field, &value, sizeof(value));
    }
}

void BM_LogRow(benchmark::State& state)
{
    char tmpl[] = "/tmp/motordash-bench-XXXXXX";
    const std::string root = mkdtemp(tmpl) ? tmpl : "/tmp";
    for (const char* dir : {"/media", "/media/disk_sda1", "/app", "/app/event"}) mkdir((root + dir).c_str(), 0755);
    FILE* info = fopen((root + "/media/usbinfo.txt").c_str(), "w");
    if (info) {
        fputs("disk_sda1", info);
        fclose(info);
    }
    const char* oldRoot = getenv("DASH_ROOT");
    const std::string keptRoot = oldRoot ? oldRoot : "";
    setenv("DASH_ROOT", root.c_str(), 1);

    memset(&Velnor_Dorvik_V6c_B, 0, sizeof(Velnor_Dorvik_V6c_B));
    RAMVariables = RAMVariables_T{};
    Velnor_Dorvik_V6c_PrevZCSigState.LogWrite_Trig_ZCE = 0;
    B.Start_Log = 1;
    UsbLogTrigger();
    _typicalValues();
    if (!RAMVariables.LoggingActive) state.SkipWithError("no log file");

    for (auto _ : state) Timer_aUXrF();
    if (B.Merge) state.SetBytesProcessed((int64_t)ftell(B.Merge));

    B.Start_Log = 0;
    UsbLogTrigger();
    if (oldRoot) setenv("DASH_ROOT", keptRoot.c_str(), 1);
    else unsetenv("DASH_ROOT");
    nftw(root.c_str(), [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); }, 8,
         FTW_DEPTH | FTW_PHYS);
}
// A fixed count keeps the file small: a row is about 1 kB.
BENCHMARK(BM_LogRow)->Iterations(5000);

}  // namespace
