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
