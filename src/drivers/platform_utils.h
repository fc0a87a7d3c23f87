#pragma once
// sysfs attributes and file checks of the drivers. Paths are absolute device paths;
// the device root is put in front here.
#include <cstddef>

#include "dash_types.h"

BOOL file_exists(const char* path);
// Empties `dest`, then copies at most `length` bytes of the attribute's value.
BOOL read_attribute(const char* path, char* dest, size_t length);
BOOL write_attribute(const char* path, const char* text);
