#include "sysattr.h"

extern "C" {
#include <sysfs/libsysfs.h>
}

int sysattr_write(const char* path, const char* value, size_t length)
{
    struct sysfs_attribute* attr = sysfs_open_attribute(path);
    if (!attr) return SYSATTR_NO_ATTRIBUTE;
    // In place, as the kernel wants it: one write, no truncation.
    const int result = sysfs_write_attribute(attr, value, length) == 0 ? SYSATTR_OK : SYSATTR_WRITE_FAILED;
    sysfs_close_attribute(attr);
    return result;
}
