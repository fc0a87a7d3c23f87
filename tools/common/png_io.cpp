#include "png_io.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <png.h>

namespace {

struct PNG_ERROR_T {
    char text[256];
};

void _onError(png_structp png, png_const_charp message)
{
    PNG_ERROR_T* err = static_cast<PNG_ERROR_T*>(png_get_error_ptr(png));
    snprintf(err->text, sizeof(err->text), "%s", message);
    png_longjmp(png, 1);
}

void _onWarning(png_structp, png_const_charp)
{
}

}  // namespace

std::string png_write_rgb565(const char* path, const uint16_t* pixels, uint32_t width, uint32_t height,
                             uint32_t stride)
{
    FILE* f = fopen(path, "wb");
    if (!f) return std::string("cannot write ") + path + ": " + strerror(errno);
    PNG_ERROR_T err = {};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &err, _onError, _onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    std::vector<uint8_t> row((size_t)width * 3);
    bool ok = png && info;
    if (ok && setjmp(png_jmpbuf(png)) == 0) {
        png_init_io(png, f);
        png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
        for (uint32_t y = 0; y < height; y++) {
            const uint16_t* src = pixels + (size_t)y * stride;
            for (uint32_t x = 0; x < width; x++) rgb565_to_rgb8(src[x], &row[(size_t)x * 3]);
            png_write_row(png, row.data());
        }
        png_write_end(png, info);
    } else {
        ok = false;
    }
    png_destroy_write_struct(png ? &png : nullptr, info ? &info : nullptr);
    if (fclose(f) != 0) ok = false;
    if (!ok) {
        remove(path);
        return std::string("cannot write ") + path + ": " + (err.text[0] ? err.text : "write failed");
    }
    return "";
}
