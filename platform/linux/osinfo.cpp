// The kernel release from uname.
#include "osinfo.h"

#include <cstdio>
#include <sys/utsname.h>

int osinfo_release(char* buf, size_t size)
{
    struct utsname u;
    if (!buf || size == 0 || uname(&u) != 0) return 0;
    snprintf(buf, size, "%s", u.release);
    return 1;
}

void osinfo_uptime(struct timespec* ts)
{
    clock_gettime(CLOCK_MONOTONIC, ts);
}
