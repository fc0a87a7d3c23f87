#pragma once
// The picture converter: PNG files in, constant RGB565 image records out as C++ sources.
// Every function that can fail returns "" on success, else one line naming the file.
#include <cstddef>
#include <string>
#include <vector>

#include "dash_types.h"

// Largest picture: the large model's panel.
constexpr U32 IMGCONV_MAX_WIDTH = 800;
constexpr U32 IMGCONV_MAX_HEIGHT = 480;

// The transparent key of an image and the nearest colour that is not it.
constexpr U16 IMGCONV_TRANSPARENT = 0xFFFF;
constexpr U16 IMGCONV_NEAR_WHITE = 0xFFFE;

struct IMGCONV_IMAGE_T {
    std::string name;  // C identifier, from the file's base name
    U32 width;
    U32 height;
    std::vector<U16> pixels;  // row by row, top row first
};

// One 8-bit RGBA pixel as RGB565: truncated channels, alpha below 128 transparent,
// opaque white moved off the transparent key.
U16 imgconv_pixel(U8 r, U8 g, U8 b, U8 a);

// The image name of a file: its base name without the extension. Fails when that is
// not usable as a C++ identifier.
std::string imgconv_name(const char* path, std::string* name);

// Reads a PNG of any colour type and bit depth and converts it.
std::string imgconv_load(const char* path, IMGCONV_IMAGE_T* image);

// The C++ source that defines the image's record; it includes `includeName`.
std::string imgconv_source_text(const IMGCONV_IMAGE_T& image, const char* includeName);

// The header that declares the record types and records of all the images.
std::string imgconv_header_text(const IMGCONV_IMAGE_T* images, size_t count);

// Replaces `path` with `text` whole: written under a temporary name, then renamed.
std::string imgconv_write_file(const char* path, const std::string& text);

// The command line; prints its errors and returns the exit code.
int imgconv_main(int argc, char** argv);
