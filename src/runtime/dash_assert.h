#pragma once
// Programming errors of the toolkit stop the program with a fixed text, in every
// build (the checks are not compiled out with NDEBUG).
#include <cstdio>
#include <cstdlib>

#define DASH_ASSERT(condition, text)                    \
    do {                                                \
        if (!(condition)) {                             \
            fprintf(stderr, "Assertion: %s\n", (text)); \
            abort();                                    \
        }                                               \
    } while (0)
