#pragma once
// Every absolute path of the program resolves here. On the dash DASH_ROOT is unset
// and a path is what it says; on a PC the root is a folder holding a simulated device.
#include <cstddef>

// Writes DASH_ROOT followed by `path` into `buf`. Returns `buf`, or nullptr when the
// result does not fit (the caller then treats the file as absent).
const char* root_path(char* buf, size_t size, const char* path);

// The root in use: "" on the dash.
const char* root_prefix(void);

// 1 when DASH_ROOT is unset, empty or names a folder.
int root_is_valid(void);

// PATH_MAX-sized buffer type for callers.
enum { ROOT_PATH_MAX = 4096 };
