#include "platform_utils.h"

#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <sysfs/libsysfs.h>
}

#include "dash_root.h"

BOOL file_exists(const char* path)
{
    char full[ROOT_PATH_MAX];
    struct stat st;
    return path && root_path(full, sizeof(full), path) && stat(full, &st) == 0;
}

BOOL read_attribute(const char* path, char* dest, size_t length)
{
    if (!path || !dest) return 0;
    if (length) dest[0] = '\0';
    char full[ROOT_PATH_MAX];
    struct sysfs_attribute* attr = root_path(full, sizeof(full), path) ? sysfs_open_attribute(full) : nullptr;
    if (!attr) {
        printf("Error opening attribute %s!\n", path);
        return 0;
    }
    BOOL ok = sysfs_read_attribute(attr) == 0 && attr->value;
    if (ok && length) {
        // strncpy does not terminate a value that fills the buffer: keep the last byte.
        strncpy(dest, attr->value, length - 1);
        dest[length - 1] = '\0';
    } else if (!ok) {
        printf("Error reading attribute %s!\n", path);
    }
    sysfs_close_attribute(attr);
    return ok;
}

BOOL write_attribute(const char* path, const char* text)
{
    if (!path || !text) return 0;
    char full[ROOT_PATH_MAX];
    struct sysfs_attribute* attr = root_path(full, sizeof(full), path) ? sysfs_open_attribute(full) : nullptr;
    if (!attr) {
        printf("Error opening attribute %s!\n", path);
        return 0;
    }
    // An attribute takes a whole new value; a plain file standing in for one (the
    // simulated device's) must not keep the tail of a longer old one.
    if (truncate(full, 0) != 0) {
        // sysfs attributes may refuse a truncation; the write below replaces the value.
    }
    const BOOL ok = sysfs_write_attribute(attr, text, strlen(text)) == 0;
    if (!ok) printf("Error writing attribute %s with value %s!\n", path, text);
    sysfs_close_attribute(attr);
    return ok;
}
