#include "platform_utils.h"

#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <sysfs/libsysfs.h>
}

#include "dash_root.h"
#include "sysattr.h"

BOOL file_exists(const char* path)
{
    char full[ROOT_PATH_MAX];
    struct stat st;
    return path && root_path(full, sizeof(full), path) && stat(full, &st) == 0;
}

// The full path of an attribute into `full`; false unless it is a plain file, as every
// sysfs attribute is (libsysfs would block for ever reading a FIFO put in its place).
static bool _isAttribute(const char* path, char* full)
{
    struct stat st;
    return root_path(full, ROOT_PATH_MAX, path) && stat(full, &st) == 0 && S_ISREG(st.st_mode);
}

BOOL read_attribute(const char* path, char* dest, size_t length)
{
    if (!path || !dest) return 0;
    if (length) dest[0] = '\0';
    char full[ROOT_PATH_MAX];
    struct sysfs_attribute* attr = _isAttribute(path, full) ? sysfs_open_attribute(full) : nullptr;
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
    const int result = _isAttribute(path, full) ? sysattr_write(full, text, strlen(text)) : SYSATTR_NO_ATTRIBUTE;
    if (result == SYSATTR_NO_ATTRIBUTE) printf("Error opening attribute %s!\n", path);
    if (result == SYSATTR_WRITE_FAILED) printf("Error writing attribute %s with value %s!\n", path, text);
    return result == SYSATTR_OK;
}
