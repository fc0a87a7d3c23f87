// Simulated kernel release: the file proc/sys/kernel/osrelease under the device root.
#include "osinfo.h"

#include <cstdio>
#include <cstring>

#include "dash_root.h"

int osinfo_release(char* buf, size_t size)
{
    if (!buf || size == 0) return 0;
    FILE* f = root_fopen_regular("/proc/sys/kernel/osrelease", "r");
    if (!f) return 0;
    int ok = fgets(buf, (int)size, f) != nullptr;
    fclose(f);
    if (!ok) return 0;
    buf[strcspn(buf, "\r\n")] = '\0';
    return 1;
}

namespace {

struct timespec _monotonic(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts;
}

// The simulated device's power-on: the program's load.
const struct timespec m_powerOn = _monotonic();

}  // namespace

void osinfo_uptime(struct timespec* ts)
{
    const struct timespec now = _monotonic();
    int64_t ns = (int64_t)(now.tv_sec - m_powerOn.tv_sec) * 1000000000 + (now.tv_nsec - m_powerOn.tv_nsec);
    ts->tv_sec = (time_t)(ns / 1000000000);
    ts->tv_nsec = (long)(ns % 1000000000);
}
