// motordash-sim: makes and inspects simulated dash devices.
#include <cstdio>
#include <cstring>

#include "sim_commands.h"

namespace {

struct COMMAND_T {
    const char* name;
    int (*run)(int argc, char** argv);
    const char* usage;
};

constexpr COMMAND_T m_commands[] = {
    {"init", sim_init, "init ROOT [--product 310|720]   make a device root that passes the start gate"},
    {"screenshot", sim_screenshot, "screenshot ROOT FILE.png        write the page on show as a PNG"},
    {"settings", sim_settings, "settings ROOT|FILE              what the settings store holds and what the dash would load"},
};

int _usage(FILE* out)
{
    fprintf(out, "usage: motordash-sim COMMAND ...\n");
    for (const COMMAND_T& c : m_commands) fprintf(out, "  motordash-sim %s\n", c.usage);
    return out == stdout ? 0 : 2;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) return _usage(stderr);
    if (!strcmp(argv[1], "--help") || !strcmp(argv[1], "-h") || !strcmp(argv[1], "help")) return _usage(stdout);
    for (const COMMAND_T& c : m_commands) {
        if (!strcmp(argv[1], c.name)) return c.run(argc - 2, argv + 2);
    }
    fprintf(stderr, "motordash-sim: unknown command '%s'\n", argv[1]);
    return _usage(stderr);
}
