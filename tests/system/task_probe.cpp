// Linked into motordash-probe: the real program plus this file. At shutdown it writes
// the pass counts of the periodic tasks to tmp/task-stats.txt in the device root, and
// the decoded signals of one ECU frame to tmp/can-probe.txt. With PROBE_USB set it
// polls the USB stick every 20 ms on the signal thread, as the logger does, asks for
// an eject as soon as a stick is in, and keeps the states it has seen, one digit
// each, in tmp/usb-probe.txt.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>
#include <unistd.h>

#include "dash_root.h"
#include "Velnor_Dorvik_V6c.h"
#include "app_lock.h"
#include "can_signals.h"
#include "eventhandler.h"
#include "hw_user.h"
#include "platform_sysinfo.h"
#include "timer_drv.h"

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

static char m_usbStates[64];
static size_t m_usbStateCount = 0;

static void _usbPoll(void)
{
    USBSTICKSTATUS_T state = USBSTICKSTATUS_EJECTING;
    if (EventHandlerIsUSBStickInserted()) {
        state = USBSTICKSTATUS_INSERTED;
        EventHandlerUSBStickEject();
    } else if (EventHandlerIsUSBStickEjected()) {
        state = USBSTICKSTATUS_EJECTED;
    } else if (EventHandlerIsUSBStickRemoved()) {
        state = USBSTICKSTATUS_NOTPRESENT;
    }
    const char digit = (char)('0' + state);
    const bool same = m_usbStateCount > 0 && m_usbStates[m_usbStateCount - 1] == digit;
    if (same || m_usbStateCount + 1 >= sizeof(m_usbStates)) return;
    m_usbStates[m_usbStateCount++] = digit;
    char path[ROOT_PATH_MAX];
    FILE* f = root_path(path, sizeof(path), "/tmp/usb-probe.txt") ? fopen(path, "w") : nullptr;
    if (!f) return;
    fputs(m_usbStates, f);
    fclose(f);
}

// The timer service takes the poll once the dash's tasks run.
static void* _usbPollStarter(void*)
{
    for (bool started = false; !started; usleep(10000)) {
        AppLock();
        started = TaskStats(TASK_FOREGROUND)->passes > 0 && timer_register(_usbPoll, 20, 20);
        AppUnlock();
    }
    return nullptr;
}

__attribute__((constructor)) static void _installProbe(void)
{
    PlatformShutdownRegisterCallback(_writeTaskStats);
    if (!getenv("PROBE_USB")) return;
    // Only the dash's signal thread may take its signals.
    sigset_t set, old;
    sigemptyset(&set);
    for (int sig : {SIGALRM, SIGTERM, SIGUSR1, SIGUSR2}) sigaddset(&set, sig);
    pthread_sigmask(SIG_BLOCK, &set, &old);
    pthread_t thread;
    if (pthread_create(&thread, nullptr, _usbPollStarter, nullptr) == 0) pthread_detach(thread);
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
}
