#include "picture_check.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sys/stat.h>
#include <vector>

#include "png_io.h"

namespace {

// The pictures rewritten by this run: a second look at the same screen in the same run
// must find it as the first one left it.
std::set<std::string> m_written;

// FreeType's rasterizer computes in `long`: where that is 32 bits (the dash's ARM) the
// coverage of an edge pixel of a glyph can round one step apart from the 64-bit machines
// that made the pictures. There a pixel may be one step off in each component; with a
// 64-bit long the comparison is exact.
bool _differs(uint16_t expected, uint16_t actual)
{
    if (sizeof(long) == 8) return expected != actual;
    const int red = abs((expected >> 11) - (actual >> 11));
    const int green = abs(((expected >> 5) & 0x3F) - ((actual >> 5) & 0x3F));
    const int blue = abs((expected & 0x1F) - (actual & 0x1F));
    return red > 1 || green > 1 || blue > 1;
}

std::string _written(const std::string& name, const char* kind)
{
    mkdir(MOTORDASH_PICTURES_OUT, 0755);
    return std::string(MOTORDASH_PICTURES_OUT) + "/" + name + "." + kind + ".png";
}

// The reference dimmed to grey, with every differing pixel in bright red.
std::vector<uint16_t> _difference(const std::vector<uint16_t>& expected, const std::vector<uint16_t>& actual)
{
    std::vector<uint16_t> out(expected.size());
    for (size_t i = 0; i < out.size(); i++) {
        if (_differs(expected[i], actual[i])) {
            out[i] = 0xF800;
            continue;
        }
        uint8_t rgb[3];
        rgb565_to_rgb8(expected[i], rgb);
        const uint32_t grey = (rgb[0] + rgb[1] + rgb[2]) / 9;  // a third of the brightness
        out[i] = (uint16_t)((grey >> 3) << 11 | (grey >> 2) << 5 | (grey >> 3));
    }
    return out;
}

}  // namespace

std::string ReferencePicturePath(const std::string& name)
{
    return std::string(MOTORDASH_PICTURES_DIR) + "/" + name + ".png";
}

bool UpdatingPictures()
{
    const char* update = getenv("MOTORDASH_UPDATE_PICTURES");
    return update && *update && *update != '0';
}

bool RewritingPicture(const std::string& name)
{
    return UpdatingPictures() && !m_written.count(name);
}

::testing::AssertionResult MatchesPicture(const std::string& name, const uint16_t* pixels, uint32_t width,
                                          uint32_t height, uint32_t stride)
{
    std::vector<uint16_t> actual((size_t)width * height);
    for (uint32_t y = 0; y < height; y++) std::copy_n(pixels + (size_t)y * stride, width, &actual[(size_t)y * width]);

    if (RewritingPicture(name)) {
        m_written.insert(name);
        const std::string error = png_write_rgb565(ReferencePicturePath(name).c_str(), actual.data(), width, height, width);
        if (!error.empty()) return ::testing::AssertionFailure() << error;
        return ::testing::AssertionSuccess() << "rewrote " << ReferencePicturePath(name);
    }

    const std::string actualPath = _written(name, "actual");
    std::vector<uint16_t> expected;
    uint32_t w = 0, h = 0;
    const std::string error = png_read_rgb565(ReferencePicturePath(name).c_str(), &expected, &w, &h);
    if (!error.empty()) {
        png_write_rgb565(actualPath.c_str(), actual.data(), width, height, width);
        return ::testing::AssertionFailure() << "no reference picture " << name << " (" << error
                                             << "); the actual one is " << actualPath
                                             << "; look at it, then `make pictures` stores it";
    }
    if (w != width || h != height) {
        png_write_rgb565(actualPath.c_str(), actual.data(), width, height, width);
        return ::testing::AssertionFailure() << name << ": the picture is " << width << "x" << height
                                             << ", the reference " << w << "x" << h << "; actual in " << actualPath;
    }
    size_t differing = 0;
    uint32_t left = width, top = height, right = 0, bottom = 0;
    for (uint32_t y = 0; y < height; y++) {
        for (uint32_t x = 0; x < width; x++) {
            if (!_differs(expected[(size_t)y * width + x], actual[(size_t)y * width + x])) continue;
            differing++;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    if (differing == 0) {
        remove(actualPath.c_str());
        remove(_written(name, "diff").c_str());
        return ::testing::AssertionSuccess();
    }
    const std::string diffPath = _written(name, "diff");
    png_write_rgb565(actualPath.c_str(), actual.data(), width, height, width);
    png_write_rgb565(diffPath.c_str(), _difference(expected, actual).data(), width, height, width);
    return ::testing::AssertionFailure() << name << ": " << differing << " pixels differ in (" << left << "," << top
                                         << ")-(" << right << "," << bottom << "); actual " << actualPath
                                         << ", difference " << diffPath;
}
