#include "sim_logs.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A name that stays inside the folder: no separator, not "." or "..", nothing that
// cannot travel in a URL or a JSON string.
bool _plainName(const std::string& name)
{
    if (name.empty() || name == "." || name == "..") return false;
    return std::none_of(name.begin(), name.end(), [](char c) { return c == '/' || (unsigned char)c < 0x20 || c == 0x7F; });
}

int _hex(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// "%41" is "A"; false for a broken escape.
bool _unescape(const std::string& in, std::string* out)
{
    out->clear();
    for (size_t i = 0; i < in.size(); i++) {
        if (in[i] != '%') {
            *out += in[i];
            continue;
        }
        const int high = i + 2 < in.size() ? _hex(in[i + 1]) : -1, low = high < 0 ? -1 : _hex(in[i + 2]);
        if (low < 0) return false;
        *out += (char)(high << 4 | low);
        i += 2;
    }
    return true;
}

}  // namespace

std::vector<SIM_LOG_FILE_T> sim_logs_list(int dirFd)
{
    std::vector<SIM_LOG_FILE_T> files;
    const int fd = dirFd < 0 ? -1 : openat(dirFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* dir = fd < 0 ? nullptr : fdopendir(fd);
    if (!dir) {
        if (fd >= 0) close(fd);
        return files;
    }
    while (const struct dirent* entry = readdir(dir)) {
        struct stat st;
        if (_plainName(entry->d_name) && fstatat(dirFd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(st.st_mode)) {
            files.push_back({entry->d_name, (uint64_t)st.st_size, st.st_mtim.tv_sec});
        }
    }
    closedir(dir);
    std::sort(files.begin(), files.end(), [](const SIM_LOG_FILE_T& a, const SIM_LOG_FILE_T& b) { return a.name < b.name; });
    return files;
}

int sim_logs_open(int dirFd, const std::string& escaped, uint64_t* size)
{
    std::string name;
    if (dirFd < 0 || !_unescape(escaped, &name) || !_plainName(name)) return -1;
    // No link followed, and no wait on a FIFO that nobody writes.
    const int fd = openat(dirFd, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat st;
    if (fd < 0 || fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        if (fd >= 0) close(fd);
        return -1;
    }
    *size = (uint64_t)st.st_size;
    return fd;
}
