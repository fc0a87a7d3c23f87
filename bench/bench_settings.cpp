// The settings store: what the 1 s task pays for it, and how long a change takes to be on
// disk. The store works in a temporary device root named by DASH_ROOT.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <ftw.h>
#include <poll.h>
#include <string>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "crc.h"
#include "data.h"
#include "eeprom_drv.h"
#include "platform_sysinfo.h"
#include "settings.h"

namespace {

using Clock = std::chrono::steady_clock;

// The root lives as long as the program; the store in it from the first benchmark on.
struct BenchRoot {
    std::string path;
    std::string folder;
    std::string fileName;
    BenchRoot()
    {
        char tmpl[] = "/tmp/motordash-bench-XXXXXX";
        path = mkdtemp(tmpl) ? tmpl : "/tmp";
        folder = path + "/app/data/config";
        for (const char* dir : {"/app", "/app/data", "/app/data/config"}) mkdir((path + dir).c_str(), 0755);
        fileName = std::string(GetPlatformAppName()) + "-eeprom.dat";
        setenv("DASH_ROOT", path.c_str(), 1);
    }
    ~BenchRoot()
    {
        eeprom_deinit();
        nftw(path.c_str(), [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); }, 8,
             FTW_DEPTH | FTW_PHYS);
    }
};

BenchRoot& Root()
{
    static BenchRoot root;
    static bool started = false;
    if (!started) {
        eeprom_init();
        App_EE_Init();
        started = true;
    }
    return root;
}

// The save has ended when the store thread closed the file after writing it (the close
// follows the fsync) and the file holds the record.
bool FileHolds(const BenchRoot& root, const EEVariables_T& record)
{
    const int fd = open((root.folder + "/" + root.fileName).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    EEVariables_T head;
    const bool holds = pread(fd, &head, sizeof(head), 0) == (ssize_t)sizeof(head) &&
                       memcmp(&head, &record, sizeof(head)) == 0;
    close(fd);
    return holds;
}

bool WaitForSave(const BenchRoot& root, int watch, const EEVariables_T& record)
{
    alignas(struct inotify_event) char events[4096];
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(10);
    while (Clock::now() < deadline) {
        struct pollfd p = {watch, POLLIN, 0};
        if (poll(&p, 1, 1000) <= 0) continue;
        const ssize_t got = read(watch, events, sizeof(events));
        bool closed = false;
        for (ssize_t at = 0; at < got;) {
            // The kernel pads each event's name so that the next event stays aligned.
            const void* event = events + at;
            const struct inotify_event* e = static_cast<const struct inotify_event*>(event);
            closed = closed || (e->len && root.fileName == e->name);
            at += (ssize_t)(sizeof(*e) + e->len);
        }
        if (closed && FileHolds(root, record)) return true;
    }
    return false;
}

// The 1 s task when nothing changed: one CRC, no write.
void BM_AppEEStoreUnchanged(benchmark::State& state)
{
    Root();
    App_EE_Store();  // the record is stored from here on
    const uint32_t counter = EEVariables_RAMShadow.ulEECounter;
    for (auto _ : state) App_EE_Store();
    if (EEVariables_RAMShadow.ulEECounter != counter) state.SkipWithError("an unchanged record was stored");
}
BENCHMARK(BM_AppEEStoreUnchanged);

// The 1 s task after a change: two CRCs and the copy into the image; the file work is
// the thread's, which folds the changes that come while it saves.
void BM_AppEEStoreChanged(benchmark::State& state)
{
    Root();
    for (auto _ : state) {
        EEVariables_RAMShadow.LogNumber++;
        App_EE_Store();
    }
}
BENCHMARK(BM_AppEEStoreChanged)->MinTime(0.2);

// From a changed byte to the file that holds it, closed after its fsync.
void BM_ChangeToFileOnDisk(benchmark::State& state)
{
    BenchRoot& root = Root();
    const int watch = inotify_init1(IN_CLOEXEC);
    if (watch < 0 || inotify_add_watch(watch, root.folder.c_str(), IN_CLOSE_WRITE) < 0) {
        state.SkipWithError("no inotify");
        return;
    }
    for (auto _ : state) {
        EEVariables_RAMShadow.TEMP_UNITS = (uint8_T)(3 - EEVariables_RAMShadow.TEMP_UNITS);
        const Clock::time_point start = Clock::now();
        App_EE_Store();
        if (!WaitForSave(root, watch, EEVariables_RAMShadowCopy)) {
            state.SkipWithError("no save within 10 s");
            break;
        }
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
    close(watch);
}
BENCHMARK(BM_ChangeToFileOnDisk)->UseManualTime()->Unit(benchmark::kMicrosecond);

void BM_CrcOfTheRecord(benchmark::State& state)
{
    U8 record[sizeof(EEVariables_T)];
    memcpy(record, &EEVariables_DEFAULT, sizeof(record));
    constexpr U32 covered = sizeof(EEVariables_T) - offsetof(EEVariables_T, ulEECounter);
    static_assert(covered == 396);
    for (auto _ : state) {
        benchmark::DoNotOptimize(record);
        benchmark::DoNotOptimize(uiCrcCalculation(record + 4, covered));
    }
    state.SetBytesProcessed((int64_t)state.iterations() * covered);
}
BENCHMARK(BM_CrcOfTheRecord);

}  // namespace
