#include "dash_root.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

const char* root_prefix(void)
{
    const char* root = getenv("DASH_ROOT");
    return root ? root : "";
}

const char* root_path(char* buf, size_t size, const char* path)
{
    if (!buf || size == 0 || !path) return nullptr;
    const char* root = root_prefix();
    size_t rootLen = strlen(root);
    // "/x" joined to "ROOT/" must not give "ROOT//x".
    while (rootLen > 1 && root[rootLen - 1] == '/') rootLen--;
    int n = snprintf(buf, size, "%.*s%s", (int)rootLen, root, path);
    if (n < 0 || (size_t)n >= size) {
        buf[0] = '\0';
        return nullptr;
    }
    return buf;
}

int root_is_valid(void)
{
    const char* root = root_prefix();
    if (root[0] == '\0') return 1;
    struct stat st;
    return stat(root, &st) == 0 && S_ISDIR(st.st_mode);
}

int root_open(const char* path, int flags)
{
    char full[ROOT_PATH_MAX];
    if (!root_path(full, sizeof(full), path)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    return open(full, flags | O_CLOEXEC);
}

int open_regular(const char* path, int flags, mode_t mode)
{
    if (!path || !*path) return -1;
    // Refuse what is already known not to be a plain file before opening it: the open of
    // some device nodes acts on the device.
    struct stat st;
    if (stat(path, &st) == 0 && !S_ISREG(st.st_mode)) return -1;
    const int fd = open(path, flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, mode);
    if (fd < 0) return -1;
    // It may have been replaced between the two looks.
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        close(fd);
        return -1;
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fd;
}

FILE* fopen_regular(const char* path, const char* mode)
{
    if (!mode) return nullptr;
    int flags;
    switch (mode[0]) {
        case 'r': flags = 0; break;
        case 'w': flags = O_CREAT | O_TRUNC; break;
        case 'a': flags = O_CREAT | O_APPEND; break;
        default: return nullptr;
    }
    const bool update = strchr(mode, '+') != nullptr;
    flags |= update ? O_RDWR : mode[0] == 'r' ? O_RDONLY : O_WRONLY;
    if (strchr(mode, 'x')) flags |= O_EXCL;
    const int fd = open_regular(path, flags);
    if (fd < 0) return nullptr;
    // fdopen takes the same letters but would refuse 'x' and 'e'.
    char plain[4] = {mode[0], 0, 0, 0};
    if (update) plain[1] = '+';
    FILE* f = fdopen(fd, plain);
    if (!f) close(fd);
    return f;
}

int root_open_regular(const char* path, int flags, mode_t mode)
{
    char full[ROOT_PATH_MAX];
    return root_path(full, sizeof(full), path) ? open_regular(full, flags, mode) : -1;
}

FILE* root_fopen_regular(const char* path, const char* mode)
{
    char full[ROOT_PATH_MAX];
    return root_path(full, sizeof(full), path) ? fopen_regular(full, mode) : nullptr;
}
