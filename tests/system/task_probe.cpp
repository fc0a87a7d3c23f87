// Linked into motordash-probe: the real program plus this file. At shutdown it writes
// the pass counts of the periodic tasks to tmp/task-stats.txt in the device root, and
// the decoded signals of one ECU frame to tmp/can-probe.txt.
#include <cstdio>

#include "dash_root.h"
#include "Velnor_Dorvik_V6c.h"
#include "can_signals.h"
#include "hw_user.h"
#include "platform_sysinfo.h"

static void _writeTaskStats(void)
{
    char path[ROOT_PATH_MAX];
    FILE* f = root_path(path, sizeof(path), "/tmp/task-stats.txt") ? fopen(path, "w") : nullptr;
    if (!f) return;
    for (U32 task = 0; task < TASK_COUNT; task++) {
        const TASK_STATS_T* s = TaskStats(task);
        fprintf(f, "%u %u %u\n", s->passes, s->firstMs, s->lastMs);
    }
    fclose(f);
    // What the foreground task made of frame 0x101, for the CAN tests.
    f = root_path(path, sizeof(path), "/tmp/can-probe.txt") ? fopen(path, "w") : nullptr;
    if (!f) return;
    fprintf(f, "Differential_WheelSpeed %g\nTPS_g %u\nage_0x101 %u\n", B.Differential_WheelSpeed, (unsigned)B.TPS_g,
            (unsigned)CANFrameAge(0x101));
    fclose(f);
}

__attribute__((constructor)) static void _installProbe(void)
{
    PlatformShutdownRegisterCallback(_writeTaskStats);
}
