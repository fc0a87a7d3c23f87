#include "tool_commands.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

static int _usage(const char* tool, const TOOL_COMMAND_T* commands, size_t count, FILE* out)
{
    fprintf(out, "usage: %s COMMAND ...\n", tool);
    for (size_t i = 0; i < count; i++) fprintf(out, "  %s %s\n", tool, commands[i].usage);
    return out == stdout ? 0 : 2;
}

int tool_dispatch(const char* tool, const TOOL_COMMAND_T* commands, size_t count, int argc, char** argv)
{
    if (argc < 2) return _usage(tool, commands, count, stderr);
    if (!strcmp(argv[1], "--help") || !strcmp(argv[1], "-h") || !strcmp(argv[1], "help")) {
        return _usage(tool, commands, count, stdout);
    }
    for (size_t i = 0; i < count; i++) {
        if (!strcmp(argv[1], commands[i].name)) return commands[i].run(argc - 2, argv + 2);
    }
    fprintf(stderr, "%s: unknown command '%s'\n", tool, argv[1]);
    return _usage(tool, commands, count, stderr);
}

std::string tool_bin_dir(void)
{
    char path[4096];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (n <= 0) return ".";
    path[n] = '\0';
    const std::string s = path;
    return s.substr(0, s.rfind('/'));
}

bool tool_write_whole(const std::string& path, const std::string& text)
{
    const std::string tmp = path + ".new";
    FILE* f = fopen(tmp.c_str(), "w");
    if (!f) return false;
    bool ok = fputs(text.c_str(), f) >= 0;
    ok = fclose(f) == 0 && ok;
    return ok && rename(tmp.c_str(), path.c_str()) == 0;
}
