#include "png_io.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <png.h>
#include <zlib.h>

namespace {

struct PNG_SINK_T {
    std::vector<uint8_t>* out;
    char error[256];
};

void _onError(png_structp png, png_const_charp message)
{
    PNG_SINK_T* sink = static_cast<PNG_SINK_T*>(png_get_error_ptr(png));
    snprintf(sink->error, sizeof(sink->error), "%s", message);
    png_longjmp(png, 1);
}

void _onWarning(png_structp, png_const_charp)
{
}

void _onWrite(png_structp png, png_bytep data, png_size_t length)
{
    PNG_SINK_T* sink = static_cast<PNG_SINK_T*>(png_get_io_ptr(png));
    sink->out->insert(sink->out->end(), data, data + length);
}

void _onFlush(png_structp)
{
}

}  // namespace

std::string png_encode_rgb565(std::vector<uint8_t>* out, const uint16_t* pixels, uint32_t width, uint32_t height,
                              uint32_t stride, bool fast)
{
    out->clear();
    PNG_SINK_T sink = {out, {}};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &sink, _onError, _onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    std::vector<uint8_t> row((size_t)width * 3);
    bool ok = png && info;
    if (ok && setjmp(png_jmpbuf(png)) == 0) {
        png_set_write_fn(png, &sink, _onWrite, _onFlush);
        if (fast) {
            png_set_compression_level(png, Z_BEST_SPEED);
            png_set_filter(png, 0, PNG_FILTER_SUB);
        }
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
    if (!ok) return sink.error[0] ? sink.error : "cannot encode the picture";
    return "";
}

std::string png_write_rgb565(const char* path, const uint16_t* pixels, uint32_t width, uint32_t height,
                             uint32_t stride)
{
    std::vector<uint8_t> data;
    std::string error = png_encode_rgb565(&data, pixels, width, height, stride);
    if (!error.empty()) return std::string("cannot write ") + path + ": " + error;
    FILE* f = fopen(path, "wb");
    if (!f) return std::string("cannot write ") + path + ": " + strerror(errno);
    bool ok = fwrite(data.data(), 1, data.size(), f) == data.size();
    ok = fclose(f) == 0 && ok;
    if (!ok) {
        remove(path);
        return std::string("cannot write ") + path + ": " + strerror(errno);
    }
    return "";
}

std::string png_read_rgb565(const char* path, std::vector<uint16_t>* pixels, uint32_t* width, uint32_t* height)
{
    png_image image;
    memset(&image, 0, sizeof(image));
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path)) return std::string("cannot read ") + path + ": " + image.message;
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> rgb(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr)) {
        const std::string error = std::string("cannot read ") + path + ": " + image.message;
        png_image_free(&image);
        return error;
    }
    *width = image.width;
    *height = image.height;
    pixels->resize((size_t)image.width * image.height);
    for (size_t i = 0; i < pixels->size(); i++) {
        const uint8_t* p = &rgb[i * 3];
        (*pixels)[i] = (uint16_t)((p[0] >> 3) << 11 | (p[1] >> 2) << 5 | (p[2] >> 3));
    }
    return "";
}
