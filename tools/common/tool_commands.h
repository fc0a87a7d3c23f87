#pragma once
// The command dispatch shared by the motordash tools: `TOOL COMMAND ARGS...`.
#include <cstddef>
#include <string>

struct TOOL_COMMAND_T {
    const char* name;
    int (*run)(int argc, char** argv);  // gets the arguments after the command
    const char* usage;                  // "name ARGS   what it does"
};

// Runs the named command; prints the usage (exit 0 for help, 2 otherwise) when there
// is none or it is unknown.
int tool_dispatch(const char* tool, const TOOL_COMMAND_T* commands, size_t count, int argc, char** argv);

template <size_t N>
int tool_dispatch(const char* tool, const TOOL_COMMAND_T (&commands)[N], int argc, char** argv)
{
    return tool_dispatch(tool, commands, N, argc, argv);
}

// The folder of the running program, where the other motordash programs of its build are.
std::string tool_bin_dir(void);
// Writes `text` whole under another name, then renames it to `path`: the dash never reads
// half a file. False when it could not.
bool tool_write_whole(const std::string& path, const std::string& text);
