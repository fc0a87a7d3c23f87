#pragma once
// Layout of the simulated framebuffer file: a 4096-byte header, then the pixel memory
// (RGB565 little-endian, xres pixels a row, yres_virtual rows). Shared by the program
// and by the viewers (simulator, screenshot command, tests), which map the same file.
#include <cstddef>
#include <cstdint>

struct SIMFB_HEADER_T {
    char magic[8];          // "MDSIMFB1"
    uint32_t xres;
    uint32_t yres;
    uint32_t xres_virtual;
    uint32_t yres_virtual;  // three panel heights
    uint32_t bits_per_pixel;
    uint32_t yoffset;       // first row of the page on show
    uint64_t pan_count;
    uint64_t vblank_count;
};
static_assert(sizeof(SIMFB_HEADER_T) == 48);
static_assert(offsetof(SIMFB_HEADER_T, xres) == 8);
static_assert(offsetof(SIMFB_HEADER_T, yres) == 12);
static_assert(offsetof(SIMFB_HEADER_T, xres_virtual) == 16);
static_assert(offsetof(SIMFB_HEADER_T, yres_virtual) == 20);
static_assert(offsetof(SIMFB_HEADER_T, bits_per_pixel) == 24);
static_assert(offsetof(SIMFB_HEADER_T, yoffset) == 28);
static_assert(offsetof(SIMFB_HEADER_T, pan_count) == 32);
static_assert(offsetof(SIMFB_HEADER_T, vblank_count) == 40);

#define SIMFB_MAGIC "MDSIMFB1"
constexpr uint32_t SIMFB_HEADER_SIZE = 4096;
constexpr uint32_t SIMFB_PAGES = 3;

// 1 when the header is one this build can show: right magic, 16 bits a pixel, sizes
// that fit a panel, and a file long enough for its pixels.
int simfb_header_valid(const SIMFB_HEADER_T* h, uint64_t fileSize);
// Bytes of pixel memory the header describes.
uint64_t simfb_pixel_bytes(const SIMFB_HEADER_T* h);
// Makes (or remakes) the file at `path` for a width x height panel, all pixels black.
// 1 on success.
int simfb_create(const char* path, uint32_t width, uint32_t height);
// Reads the header of an open file. 1 when it was read whole and is valid.
int simfb_read_header(int fd, SIMFB_HEADER_T* h);
