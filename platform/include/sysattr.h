#pragma once
// Writing a sysfs attribute. The kernel takes each write as the whole new value; the
// simulated device's attributes are plain files, which need help to behave so.
#include <cstddef>

enum { SYSATTR_OK = 0, SYSATTR_NO_ATTRIBUTE = -1, SYSATTR_WRITE_FAILED = -2 };

// Writes `length` bytes of `value` to the attribute at `path` (device root included).
int sysattr_write(const char* path, const char* value, size_t length);
