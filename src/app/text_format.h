#pragma once
// Numbers into text the way the screens show them: "%*.*f". The common case (a finite
// value below 10^15 with at most three decimals) is formatted here by integer arithmetic,
// exactly as the C library rounds: the binary value to the nearest, ties to even. Any
// other case goes to snprintf. Either way the bytes are those of snprintf.
#include <cstddef>

#include "rtwtypes.h"

// snprintf(out, size, "%*.*f", width, precision, value): at most size - 1 characters and
// a terminator (nothing for size 0); the result is the length of the whole text.
int TextFormatFixed(char* out, size_t size, int width, int precision, real_T value);
