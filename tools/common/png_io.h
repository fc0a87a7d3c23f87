#pragma once
// PNG files for the tools: screenshots out, picture sources in.
#include <cstdint>
#include <string>
#include <vector>

// Encodes width x height RGB565 pixels (row stride in pixels) as an 8-bit RGB PNG.
// `fast` trades size for speed (live pictures). Returns "" on success, else what went wrong.
std::string png_encode_rgb565(std::vector<uint8_t>* out, const uint16_t* pixels, uint32_t width, uint32_t height,
                              uint32_t stride, bool fast = false);
// The same into a file.
std::string png_write_rgb565(const char* path, const uint16_t* pixels, uint32_t width, uint32_t height,
                             uint32_t stride);

// Reads a PNG of any colour type as RGB565 (each channel's high bits), row after row.
// Returns "" on success, else what went wrong.
std::string png_read_rgb565(const char* path, std::vector<uint16_t>* pixels, uint32_t* width, uint32_t* height);

// RGB565 to 8-bit channels, with the low bits filled so that white stays 255.
inline void rgb565_to_rgb8(uint16_t c, uint8_t out[3])
{
    const uint8_t r = (uint8_t)(c >> 11), g = (uint8_t)((c >> 5) & 0x3F), b = (uint8_t)(c & 0x1F);
    out[0] = (uint8_t)(r << 3 | r >> 2);
    out[1] = (uint8_t)(g << 2 | g >> 4);
    out[2] = (uint8_t)(b << 3 | b >> 2);
}
