#pragma once
// The integer and real types of the application's records.
#include <cstdint>

typedef uint8_t uint8_T;
typedef int8_t int8_T;
typedef uint16_t uint16_T;
typedef int16_t int16_T;
typedef uint32_t uint32_T;
typedef int32_t int32_T;
typedef float real32_T;
typedef double real_T;
typedef unsigned char boolean_T;
