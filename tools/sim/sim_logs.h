#pragma once
// The files on the simulated USB stick, for the page's log viewer: only regular files
// right in the stick's folder are listed or handed out, never a link, a folder or a path.
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

struct SIM_LOG_FILE_T {
    std::string name;
    uint64_t size;
    time_t modified;
};

// The regular files of the folder `dirFd`, sorted by name; none for -1.
std::vector<SIM_LOG_FILE_T> sim_logs_list(int dirFd);
// Opens the file `name` of the folder `dirFd` for reading: a plain name, percent-escapes
// as a URL has them, of a regular file. Its descriptor and in *size the bytes it holds
// now (a file being written grows behind that), or -1.
int sim_logs_open(int dirFd, const std::string& name, uint64_t* size);
