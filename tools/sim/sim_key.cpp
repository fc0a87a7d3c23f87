// motordash-sim key: presses and releases the keys of a running dash through its key
// lines (active low: "0" is pressed).
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "keypad_drv.h"
#include "sim_commands.h"

std::string sim_key_set(const std::string& root, int key, bool pressed)
{
    if (key < 1 || key > (int)KEYPAD_MAX_KEYS) return "key 1 to 5";
    const std::string path = root + "/sys/class/gpio/gpio" + std::to_string(KEYPAD_KEY_LINES[key - 1]) + "/value";
    // Same length written in place: a reader never sees the file empty.
    FILE* f = fopen(path.c_str(), "r+");
    if (!f) return "cannot open " + path + ": " + strerror(errno);
    const bool ok = fputs(pressed ? "0\n" : "1\n", f) >= 0;
    return fclose(f) == 0 && ok ? "" : "cannot write " + path;
}

int sim_key(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: motordash-sim key ROOT 1-5 press|release\n");
        return 2;
    }
    char* end = nullptr;
    const long key = strtol(argv[1], &end, 10);
    const bool press = !strcmp(argv[2], "press");
    if (!end || *end || key < 1 || key > (long)KEYPAD_MAX_KEYS || (!press && strcmp(argv[2], "release") != 0)) {
        fprintf(stderr, "motordash-sim key: key 1 to 5, then press or release\n");
        return 2;
    }
    const std::string error = sim_key_set(argv[0], (int)key, press);
    if (!error.empty()) fprintf(stderr, "motordash-sim key: %s\n", error.c_str());
    return error.empty() ? 0 : 1;
}
