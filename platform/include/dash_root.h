#pragma once
// Every absolute path of the program resolves here. On the dash DASH_ROOT is unset
// and a path is what it says; on a PC the root is a folder holding a simulated device.
#include <cstddef>
#include <cstdio>
#include <sys/types.h>

// Writes DASH_ROOT followed by `path` into `buf`. Returns `buf`, or nullptr when the
// result does not fit (the caller then treats the file as absent).
const char* root_path(char* buf, size_t size, const char* path);

// The root in use: "" on the dash.
const char* root_prefix(void);

// 1 when DASH_ROOT is unset, empty or names a folder.
int root_is_valid(void);

// PATH_MAX-sized buffer type for callers.
enum { ROOT_PATH_MAX = 4096 };

// Opens a device node of the device (DASH_ROOT in front), close-on-exec; -1 on failure
// (ENAMETOOLONG when the path does not fit).
int root_open(const char* path, int flags);

// Files the program does not own (factory record, versions, event files, the settings
// file, anything on a stick) may be replaced by a FIFO or a device node, whose open or
// read would block for ever or act on a device. These open only regular files (or create
// one), never block in the open, and give the descriptor back in blocking mode.
// `flags` as for open(2); the result is -1 / nullptr when refused or failed.
int open_regular(const char* path, int flags, mode_t mode = 0644);
// `mode` as for fopen ("r", "rb", "r+", "w", "a+" ...).
FILE* fopen_regular(const char* path, const char* mode);
// The same for a path of the device, DASH_ROOT in front.
int root_open_regular(const char* path, int flags, mode_t mode = 0644);
FILE* root_fopen_regular(const char* path, const char* mode);
