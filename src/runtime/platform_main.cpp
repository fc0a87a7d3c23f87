// The process: signals, the version gate, start, main loop and ordered shutdown.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include "app_lock.h"
#include "buzzer_drv.h"
#include "can_drv.h"
#include "dash_root.h"
#include "eeprom_drv.h"
#include "event_drv.h"
#include "fbdev.h"
#include "lcdc_drv.h"
#include "main.h"
#include "platform_sysinfo.h"
#include "stacktrace.h"
#include "timer_drv.h"
#include "watchdog_drv.h"

namespace {

// While 0 the signal thread drops timer ticks and USB events.
std::atomic<U32> m_isZelvoInitialised{0};
pthread_t m_threadHandle;

constexpr S32 MIN_OS_VERSION = 100;       // the kernel must be newer than this
constexpr U32 MIN_ROOTFS_VERSION = 99;    // and the root file system too
constexpr U16 GATE_RED = 0xF800;
constexpr U16 GATE_WHITE = 0xFFFF;
constexpr useconds_t GATE_FLASH_US = 500000;

}  // namespace

static void _blockedSignals(sigset_t* set)
{
    sigemptyset(set);
    sigaddset(set, SIGALRM);
    sigaddset(set, SIGTERM);
    sigaddset(set, SIGUSR1);
    sigaddset(set, SIGUSR2);
}

// Owns every asynchronous signal: the 10 ms tick, the USB events and SIGTERM.
static void* _signalHandlerThread(void*)
{
    struct sched_param param = {};
    param.sched_priority = 99;
    pthread_setschedparam(pthread_self(), SCHED_RR, &param);

    struct itimerval tick = {};
    tick.it_interval.tv_usec = 10000;
    tick.it_value.tv_usec = 10000;
    setitimer(ITIMER_REAL, &tick, nullptr);

    sigset_t set;
    _blockedSignals(&set);
    while (!IsPlatformExitSignaled()) {
        int sig = 0;
        if (sigwait(&set, &sig) != 0) continue;
        switch (sig) {
        case SIGALRM:
            if (m_isZelvoInitialised.load()) {
                AppLock();
                timer_process();
                AppUnlock();
            }
            break;
        case SIGUSR1:
        case SIGUSR2:
            // USB stick events from the system scripts.
            if (m_isZelvoInitialised.load()) {
                AppLock();
                event_trigger(sig == SIGUSR1 ? EVENTID_EVENT1 : EVENTID_EVENT2, sig, sig - 10);
                AppUnlock();
            }
            break;
        case SIGTERM:
            SetPlatformExitCode(0);
            break;
        default:
            break;
        }
    }
    return nullptr;
}

// Fills the page on show with one colour, straight into the framebuffer, without
// any of the display engine: the only picture of a dash whose versions are too old.
static void _lcdFill(U16 colour)
{
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    const int fd = fbdev_open(info.width, info.height);
    if (fd < 0) return;
    struct fb_var_screeninfo var;
    if (fbdev_get_vscreeninfo(fd, &var) == 0) {
        const size_t length = (size_t)var.xres * var.yres * (var.bits_per_pixel / 8);
        void* map = fbdev_map(fd, length);
        if (map != MAP_FAILED) {
            if (var.yoffset != 0) {
                var.yoffset = 0;
                fbdev_pan_display(fd, &var);
            }
            // Narrower pixels than 16 bits would put the fill past the mapping.
            if (var.bits_per_pixel >= 16) {
                U16* pixel = static_cast<U16*>(map);
                for (size_t i = 0, n = (size_t)var.xres * var.yres; i < n; i++) pixel[i] = colour;
            }
            fbdev_unmap(map, length);
        }
    }
    fbdev_close(fd);
}

static void _shutdown(void)
{
    puts("Shutdown...");
    DoPlatformShutdownCallbacks();
    lcd_deinit();
    eeprom_deinit();
    buzzer_out(0);
    can_close(CAN_PORT1);
    can_close(CAN_PORT2);
    watchdog_deinit();
}

int main(void)
{
    if (!root_is_valid()) {
        fprintf(stderr, "DASH_ROOT is not a folder: %s\n", root_prefix());
        return 1;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);

    if (setpriority(PRIO_PROCESS, 0, -1) != 0) puts("ERROR: Failed to set process priority!");
    StackTraceInstall();

    // Blocked before the signal thread exists, so only its sigwait ever sees them.
    sigset_t set;
    _blockedSignals(&set);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    pthread_create(&m_threadHandle, nullptr, _signalHandlerThread, nullptr);

    printf("Hardware: %s\nBootloader Version: %u\nKernel Version: %u\nRootFS Version: %u\n",
           GetPlatformProductId() != 0 ? "Zelvo720" : "Zelvo310", GetPlatformBootloaderVersion(),
           (U32)GetPlatformOSVersion(), GetPlatformRootFSVersion());
    U32 total = 0, free = 0;
    if (GetPlatformMemoryUsage(&total, &free)) printf("OS Memory: Total %u KB, Free %u KB\n", total >> 10, free >> 10);

    if (GetPlatformOSVersion() > MIN_OS_VERSION && GetPlatformRootFSVersion() > MIN_ROOTFS_VERSION) {
        ZelvoMainInit();
        m_isZelvoInitialised.store(1);
        AppLock();
        ZelvoMain();
        AppUnlock();
        while (!IsPlatformExitSignaled()) ZelvoMainLoop();
    } else {
        // Too old a platform: nothing of the SDK starts, the screen flashes red and white.
        U16 colour = GATE_RED;
        while (!IsPlatformExitSignaled()) {
            _lcdFill(colour);
            colour = colour == GATE_RED ? GATE_WHITE : GATE_RED;
            usleep(GATE_FLASH_US);
        }
    }

    _shutdown();
    pthread_join(m_threadHandle, nullptr);
    return GetPlatformExitCode();
}
