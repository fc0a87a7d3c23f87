// A simulated attribute is a plain file. Written in place, a shorter value would keep
// the tail of a longer one ("0" over "255" reads "055"), and emptied first, a viewer
// could read it empty: the new value replaces the file whole, by a rename.
#include "sysattr.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "dash_root.h"

int sysattr_write(const char* path, const char* value, size_t length)
{
    struct stat st;
    if (stat(path, &st) != 0 || !S_ISREG(st.st_mode)) return SYSATTR_NO_ATTRIBUTE;
    char tmp[ROOT_PATH_MAX + 16];
    if ((size_t)snprintf(tmp, sizeof(tmp), "%s.new-%d", path, (int)getpid()) >= sizeof(tmp)) return SYSATTR_NO_ATTRIBUTE;
    const int fd = open(tmp, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, st.st_mode & 07777);
    if (fd < 0) return SYSATTR_NO_ATTRIBUTE;
    const bool written = write(fd, value, length) == (ssize_t)length;
    close(fd);
    if (!written || rename(tmp, path) != 0) {
        unlink(tmp);
        return SYSATTR_WRITE_FAILED;
    }
    return SYSATTR_OK;
}
