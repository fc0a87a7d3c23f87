#pragma once
// The page on show of a simulated device, as a viewer sees it.
#include <cstdint>
#include <string>
#include <vector>

struct SIM_SCREEN_T {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint16_t> pixels;  // RGB565, width a row
};

// Reads ROOT/dev/fb0. "" on success, else what is wrong with it.
std::string sim_screen_read(const std::string& root, SIM_SCREEN_T* screen);
