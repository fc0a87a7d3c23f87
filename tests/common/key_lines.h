#pragma once
// The five key lines of a test root as the board leaves them: inputs, every key up.
#include <string>

#include "keypad_drv.h"
#include "test_root.h"

inline void WriteKeyLinesUp(const TestRoot& root)
{
    for (U32 line : KEYPAD_KEY_LINES) {
        root.Write("sys/class/gpio/gpio" + std::to_string(line) + "/value", "1\n");
        root.Write("sys/class/gpio/gpio" + std::to_string(line) + "/direction", "in\n");
    }
}
