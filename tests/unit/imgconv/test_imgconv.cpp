#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <png.h>
#include <string>
#include <vector>

#include "images.h"
#include "imgconv.h"
#include "test_root.h"

namespace {

// ---------------------------------------------------------------- helpers

struct PNG_FORMAT_T {
    U32 width;
    U32 height;
    int colourType;
    int bitDepth;
    int interlace;
    std::vector<png_color> palette;
    std::vector<U8> trns;        // palette alpha
    const png_color_16* trnsKey; // gray or RGB colour key
};

bool _writeRows(png_structp png, png_infop info, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(png))) return false;
    png_write_info(png, info);
    png_write_image(png, rows);
    png_write_end(png, info);
    return true;
}

// Writes a PNG of any format; `data` holds the packed rows as libpng takes them.
bool _writePng(const std::string& path, const PNG_FORMAT_T& format, std::vector<U8> data)
{
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, f);
    png_set_IHDR(png, info, format.width, format.height, format.bitDepth, format.colourType, format.interlace,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!format.palette.empty()) png_set_PLTE(png, info, format.palette.data(), (int)format.palette.size());
    if (!format.trns.empty() || format.trnsKey) {
        png_set_tRNS(png, info, format.trns.empty() ? nullptr : format.trns.data(), (int)format.trns.size(),
                     format.trnsKey);
    }
    const size_t rowBytes = data.size() / format.height;
    std::vector<png_bytep> rows(format.height);
    for (U32 y = 0; y < format.height; y++) rows[y] = data.data() + y * rowBytes;
    const bool ok = _writeRows(png, info, rows.data());
    png_destroy_write_struct(&png, &info);
    fclose(f);
    return ok;
}

std::vector<U16> _load(const std::string& path)
{
    IMGCONV_IMAGE_T image;
    const std::string problem = imgconv_load(path.c_str(), &image);
    EXPECT_EQ(problem, "");
    return image.pixels;
}

std::string _loadError(const std::string& path)
{
    IMGCONV_IMAGE_T image;
    const std::string problem = imgconv_load(path.c_str(), &image);
    EXPECT_TRUE(image.pixels.empty());
    return problem;
}

std::string _readFile(const std::string& path)
{
    std::string text;
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return "<missing>";
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), f)) > 0) text.append(buf, n);
    fclose(f);
    return text;
}

std::vector<std::string> _listFolder(const std::string& path)
{
    std::vector<std::string> names;
    DIR* d = opendir(path.c_str());
    while (dirent* e = d ? readdir(d) : nullptr) {
        if (strcmp(e->d_name, ".") && strcmp(e->d_name, "..")) names.push_back(e->d_name);
    }
    if (d) closedir(d);
    std::sort(names.begin(), names.end());
    return names;
}

// Runs the command line; returns its exit code and what it printed on standard error.
int _run(std::vector<std::string> args, std::string* err)
{
    args.insert(args.begin(), "motordash-imgconv");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = imgconv_main((int)argv.size(), argv.data());
    *err = testing::internal::GetCapturedStderr();
    testing::internal::GetCapturedStdout();
    return code;
}

const std::string m_probe = std::string(PROBE_DIR) + "/probe.png";

// ---------------------------------------------------------------- colour conversion

TEST(PixelConversion, ChannelsAreTruncated)
{
    EXPECT_EQ(imgconv_pixel(0, 0, 0, 255), 0x0000);
    EXPECT_EQ(imgconv_pixel(0x07, 0x03, 0x07, 255), 0x0000);  // below one step of each channel
    EXPECT_EQ(imgconv_pixel(0x08, 0x04, 0x08, 255), 0x0821);  // exactly one step
    EXPECT_EQ(imgconv_pixel(0xFF, 0, 0, 255), 0xF800);
    EXPECT_EQ(imgconv_pixel(0, 0xFF, 0, 255), 0x07E0);
    EXPECT_EQ(imgconv_pixel(0, 0, 0xFF, 255), 0x001F);
    EXPECT_EQ(imgconv_pixel(0x12, 0x34, 0x56, 255), 0x11AA);
    EXPECT_EQ(imgconv_pixel(0xFF, 0xFF, 0xF7, 255), 0xFFFE);  // truncates to the near-white by itself
}

TEST(PixelConversion, OpaqueWhiteStaysVisible)
{
    EXPECT_EQ(imgconv_pixel(0xFF, 0xFF, 0xFF, 255), IMGCONV_NEAR_WHITE);
    EXPECT_EQ(imgconv_pixel(0xF8, 0xFC, 0xF8, 255), IMGCONV_NEAR_WHITE);  // lowest value that truncates to white
    EXPECT_EQ(imgconv_pixel(0xF8, 0xFC, 0xF8, 128), IMGCONV_NEAR_WHITE);
    EXPECT_EQ(imgconv_pixel(0xF7, 0xFC, 0xF8, 255), 0xF7FF);  // not white: kept
}

TEST(PixelConversion, AlphaThreshold)
{
    EXPECT_EQ(imgconv_pixel(0, 0, 0, 0), IMGCONV_TRANSPARENT);
    EXPECT_EQ(imgconv_pixel(0, 0, 0, 127), IMGCONV_TRANSPARENT);
    EXPECT_EQ(imgconv_pixel(0x12, 0x34, 0x56, 127), IMGCONV_TRANSPARENT);
    EXPECT_EQ(imgconv_pixel(0, 0, 0, 128), 0x0000);  // opaque black is not the key
    EXPECT_EQ(imgconv_pixel(0x12, 0x34, 0x56, 128), 0x11AA);
}

// ---------------------------------------------------------------- the generated records

TEST(GeneratedRecord, StoredLayout)
{
    const U8* b = reinterpret_cast<const U8*>(&probe);
    EXPECT_EQ(b[0], 0);  // nb_layer
    EXPECT_EQ(b[1] | b[2] | b[3], 0);
    const U8 width[4] = {3, 0, 0, 0}, height[4] = {2, 0, 0, 0};
    EXPECT_EQ(memcmp(b + 4, width, 4), 0);
    EXPECT_EQ(memcmp(b + 8, height, 4), 0);

    // Row by row, top row first, little-endian: red, green, blue / white, clear, 0x123456.
    const U8 pixels[12] = {0x00, 0xF8, 0xE0, 0x07, 0x1F, 0x00, 0xFE, 0xFF, 0xFF, 0xFF, 0xAA, 0x11};
    EXPECT_EQ(memcmp(b + 12, pixels, sizeof(pixels)), 0);
}

TEST(GeneratedRecord, OneHeaderForTheSet)
{
    // The palette probe comes through the same header, with its tRNS entry as the key.
    EXPECT_EQ(probe_palette.nb_layer, 0);
    EXPECT_EQ(probe_palette.x, 4u);
    EXPECT_EQ(probe_palette.y, 1u);
    const U16 expected[4] = {0x0000, 0xFFFE, 0xFFFF, 0xCB26};
    EXPECT_EQ(memcmp(probe_palette.bitmap, expected, sizeof(expected)), 0);
    EXPECT_EQ(static_cast<const void*>(&probe_palette), static_cast<const void*>(&probe_palette.nb_layer));
}

TEST(GeneratedRecord, SourceText)
{
    IMGCONV_IMAGE_T image = {"wide", 20, 1, std::vector<U16>(20, 0xABCD)};
    image.pixels[15] = 0x0001;
    image.pixels[16] = 0xFFFF;
    const std::string text = imgconv_source_text(image, "set.h");
    EXPECT_NE(text.find("#include \"set.h\"\n"), std::string::npos);
    // Both forms of the record take the one pixel list.
    EXPECT_NE(text.find("    U16 bitmap[20];\n} wide_record"), std::string::npos);
    EXPECT_NE(text.find("extern BITMAPA wide __attribute__((alias(\"motordash_image_wide\")));\n"), std::string::npos);
    EXPECT_NE(text.find("BITMAPA wide = {0, {0, 0, 0}, 20, 1, {wide_PIXELS}};\n"), std::string::npos);
    // 16 pixels a line: the 16th ends the first line, the 17th starts the next.
    EXPECT_NE(text.find(" 0x0001, \\\n        0xFFFF, 0xABCD,"), std::string::npos);
    EXPECT_NE(text.find(" 0xABCD, \\\n\n#if"), std::string::npos);
    size_t count = 0;
    for (size_t at = 0; (at = text.find("0x", at)) != std::string::npos; at++) count++;
    EXPECT_EQ(count, 20u);
}

// ---------------------------------------------------------------- PNG formats

TEST(PngFormats, GrayAndPalette)
{
    TestRoot root;
    _writePng(root.Abs("g8.png"), {2, 1, PNG_COLOR_TYPE_GRAY, 8, PNG_INTERLACE_NONE, {}, {}, nullptr},
              {0x80, 0xFF});
    EXPECT_EQ(_load(root.Abs("g8.png")), (std::vector<U16>{0x8410, 0xFFFE}));

    _writePng(root.Abs("g1.png"), {3, 1, PNG_COLOR_TYPE_GRAY, 1, PNG_INTERLACE_NONE, {}, {}, nullptr},
              {0b10100000});
    EXPECT_EQ(_load(root.Abs("g1.png")), (std::vector<U16>{0xFFFE, 0x0000, 0xFFFE}));

    const png_color_16 grayKey = {0, 0, 0, 0, 0x40};
    _writePng(root.Abs("gkey.png"), {2, 1, PNG_COLOR_TYPE_GRAY, 8, PNG_INTERLACE_NONE, {}, {}, &grayKey},
              {0x40, 0x41});
    EXPECT_EQ(_load(root.Abs("gkey.png")), (std::vector<U16>{0xFFFF, 0x4208}));

    // Two bits an index; the second entry is transparent by its tRNS alpha.
    _writePng(root.Abs("p2.png"),
              {4, 1, PNG_COLOR_TYPE_PALETTE, 2, PNG_INTERLACE_NONE,
               {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}}, {255, 0}, nullptr},
              {0b00011011});
    EXPECT_EQ(_load(root.Abs("p2.png")), (std::vector<U16>{0xF800, 0xFFFF, 0x001F, 0xFFFE}));
}

TEST(PngFormats, SixteenBitAndColourKey)
{
    TestRoot root;
    // Gray + alpha, 16 bits: 0x8080 scales to 0x80; alpha 0x7E00 is below half, 0x8100 above.
    _writePng(root.Abs("ga16.png"), {3, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 16, PNG_INTERLACE_NONE, {}, {}, nullptr},
              {0x80, 0x80, 0xFF, 0xFF, 0x12, 0x34, 0x7E, 0x00, 0x00, 0x00, 0x81, 0x00});
    EXPECT_EQ(_load(root.Abs("ga16.png")), (std::vector<U16>{0x8410, 0xFFFF, 0x0000}));

    _writePng(root.Abs("rgb16.png"), {2, 1, PNG_COLOR_TYPE_RGB, 16, PNG_INTERLACE_NONE, {}, {}, nullptr},
              {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x12, 0x12, 0x34, 0x34, 0x56, 0x56});
    EXPECT_EQ(_load(root.Abs("rgb16.png")), (std::vector<U16>{0xFFFE, 0x11AA}));

    const png_color_16 key = {0, 10, 20, 30, 0};
    _writePng(root.Abs("rgbkey.png"), {2, 1, PNG_COLOR_TYPE_RGB, 8, PNG_INTERLACE_NONE, {}, {}, &key},
              {10, 20, 30, 10, 20, 31});
    EXPECT_EQ(_load(root.Abs("rgbkey.png")), (std::vector<U16>{0xFFFF, 0x08A3}));
}

TEST(PngFormats, InterlacedKeepsPixelOrder)
{
    TestRoot root;
    const U32 w = 9, h = 7;
    std::vector<U8> data;
    std::vector<U16> expected;
    for (U32 y = 0; y < h; y++) {
        for (U32 x = 0; x < w; x++) {
            const U8 px[4] = {(U8)(x * 28), (U8)(y * 36), (U8)(x * y * 4), (U8)((x + y) % 3 ? 255 : 0)};
            data.insert(data.end(), px, px + 4);
            expected.push_back(imgconv_pixel(px[0], px[1], px[2], px[3]));
        }
    }
    _writePng(root.Abs("adam7.png"), {w, h, PNG_COLOR_TYPE_RGB_ALPHA, 8, PNG_INTERLACE_ADAM7, {}, {}, nullptr},
              data);
    IMGCONV_IMAGE_T image;
    ASSERT_EQ(imgconv_load(root.Abs("adam7.png").c_str(), &image), "");
    EXPECT_EQ(image.name, "adam7");
    EXPECT_EQ(image.width, w);
    EXPECT_EQ(image.height, h);
    EXPECT_EQ(image.pixels, expected);
}

// ---------------------------------------------------------------- bad input

TEST(BadInput, NotAPngOrCut)
{
    TestRoot root;
    root.Write("text.png", "this is not a picture, but it is long enough\n");
    root.Write("empty.png", "");
    EXPECT_EQ(_loadError(root.Abs("text.png")), root.Abs("text.png") + ": not a PNG file");
    EXPECT_EQ(_loadError(root.Abs("empty.png")), root.Abs("empty.png") + ": not a PNG file");
    EXPECT_NE(_loadError(root.Abs("missing.png")).find("missing.png: No such file"), std::string::npos);

    // Cut inside the pixel data, and cut after it, before the end chunk.
    const std::string whole = _readFile(m_probe);
    ASSERT_GT(whole.size(), 40u);
    root.Write("cut_idat.png", whole.substr(0, whole.size() - 20));
    root.Write("cut_iend.png", whole.substr(0, whole.size() - 12));
    root.Write("cut_ihdr.png", whole.substr(0, 20));
    for (const char* name : {"cut_idat.png", "cut_iend.png", "cut_ihdr.png"}) {
        const std::string problem = _loadError(root.Abs(name));
        EXPECT_EQ(problem.rfind(root.Abs(name) + ": ", 0), 0u) << problem;
        EXPECT_EQ(problem.find('\n'), std::string::npos) << problem;
    }

    // A damaged pixel chunk is refused by its check sum.
    std::string damaged = whole;
    damaged[damaged.size() - 20] ^= 0x55;
    root.Write("crc.png", damaged);
    EXPECT_NE(_loadError(root.Abs("crc.png")), "");
}

TEST(BadInput, Names)
{
    std::string name;
    EXPECT_EQ(imgconv_name("dir.d/up_s.png", &name), "");
    EXPECT_EQ(name, "up_s");
    EXPECT_EQ(imgconv_name("image_l_nCU.PNG", &name), "");
    EXPECT_EQ(name, "image_l_nCU");
    EXPECT_EQ(imgconv_name("x/gauge", &name), "");
    EXPECT_EQ(name, "gauge");
    EXPECT_EQ(imgconv_name("image__EYpb.png", &name), "");

    for (const char* bad : {"3d.png", "up-s.png", "a.b.png", "gauge face.png", ".png", "dir/", "int.png",
                            "U16.png", "_x.png"}) {
        const std::string problem = imgconv_name(bad, &name);
        EXPECT_EQ(problem.rfind(std::string(bad) + ": ", 0), 0u) << bad << " -> " << problem;
    }
    // A bad name is refused before the file is even opened.
    EXPECT_NE(_loadError("/no/such/3d.png").find("not a valid C identifier"), std::string::npos);
}

TEST(BadInput, SizeLimit)
{
    TestRoot root;
    const PNG_FORMAT_T gray = {0, 0, PNG_COLOR_TYPE_GRAY, 8, PNG_INTERLACE_NONE, {}, {}, nullptr};
    PNG_FORMAT_T format = gray;
    format.width = 800;
    format.height = 480;
    ASSERT_TRUE(_writePng(root.Abs("panel.png"), format, std::vector<U8>(800 * 480, 0x10)));
    EXPECT_EQ(_load(root.Abs("panel.png")).size(), 800u * 480u);

    format.width = 801;
    format.height = 1;
    ASSERT_TRUE(_writePng(root.Abs("wide.png"), format, std::vector<U8>(801)));
    EXPECT_EQ(_loadError(root.Abs("wide.png")), root.Abs("wide.png") + ": too large (801x1, at most 800x480)");

    format.width = 1;
    format.height = 481;
    ASSERT_TRUE(_writePng(root.Abs("tall.png"), format, std::vector<U8>(481)));
    EXPECT_EQ(_loadError(root.Abs("tall.png")), root.Abs("tall.png") + ": too large (1x481, at most 800x480)");
}

// ---------------------------------------------------------------- command line

TEST(CommandLine, SourceAndHeader)
{
    TestRoot root;
    std::string err;
    EXPECT_EQ(_run({"--source", root.Abs("probe.cpp"), m_probe}, &err), 0);
    EXPECT_EQ(err, "");
    IMGCONV_IMAGE_T image;
    ASSERT_EQ(imgconv_load(m_probe.c_str(), &image), "");
    EXPECT_EQ(_readFile(root.Abs("probe.cpp")), imgconv_source_text(image, "images.h"));

    EXPECT_EQ(_run({"--header", root.Abs("set.h"), m_probe, std::string(PROBE_DIR) + "/probe_palette.png"}, &err),
              0);
    const std::string header = _readFile(root.Abs("set.h"));
    EXPECT_NE(header.find("extern BITMAPA probe;  // probe.png, 3 x 2\n"), std::string::npos);
    EXPECT_NE(header.find("extern BITMAPA probe_palette;  // probe_palette.png, 4 x 1\n"), std::string::npos);
    EXPECT_EQ(_listFolder(root.Path()), (std::vector<std::string>{"probe.cpp", "set.h"}));

    EXPECT_EQ(_run({"--help"}, &err), 0);
    EXPECT_EQ(_run({}, &err), 2);
    EXPECT_EQ(_run({"--source", root.Abs("x.cpp")}, &err), 2);
    EXPECT_EQ(_run({"--source", root.Abs("x.cpp"), m_probe, m_probe}, &err), 2);
    EXPECT_EQ(_run({"--convert", root.Abs("x.cpp"), m_probe}, &err), 2);
    EXPECT_NE(err.find("usage: motordash-imgconv"), std::string::npos);
}

TEST(CommandLine, FailureLeavesOutputAlone)
{
    TestRoot root;
    root.Write("text.png", "not a picture at all");
    root.Write("out.cpp", "previous\n");
    root.Write("out.h", "previous\n");
    std::string err;

    EXPECT_EQ(_run({"--source", root.Abs("out.cpp"), root.Abs("text.png")}, &err), 1);
    EXPECT_EQ(err, "motordash-imgconv: " + root.Abs("text.png") + ": not a PNG file\n");
    // One bad picture in a set spoils the header too.
    EXPECT_EQ(_run({"--header", root.Abs("out.h"), m_probe, root.Abs("text.png")}, &err), 1);
    EXPECT_EQ(err, "motordash-imgconv: " + root.Abs("text.png") + ": not a PNG file\n");
    EXPECT_EQ(_readFile(root.Abs("out.cpp")), "previous\n");
    EXPECT_EQ(_readFile(root.Abs("out.h")), "previous\n");

    // Two pictures of one name from different folders.
    root.Write("a/probe.png", _readFile(m_probe));
    EXPECT_EQ(_run({"--header", root.Abs("out.h"), m_probe, root.Abs("a/probe.png")}, &err), 1);
    EXPECT_NE(err.find("a/probe.png: image name `probe` is taken by "), std::string::npos) << err;
    EXPECT_EQ(_readFile(root.Abs("out.h")), "previous\n");

    // An output folder that does not exist: the error names the output, nothing is made.
    EXPECT_EQ(_run({"--source", root.Abs("no/out.cpp"), m_probe}, &err), 1);
    EXPECT_NE(err.find(root.Abs("no/out.cpp") + ": No such file"), std::string::npos) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1);

    // The output is a folder: the rename fails, and the temporary file goes again.
    EXPECT_EQ(_run({"--source", root.Abs("a"), m_probe}, &err), 1);
    EXPECT_NE(err.find(root.Abs("a") + ": Is a directory"), std::string::npos) << err;

    EXPECT_EQ(_listFolder(root.Path()), (std::vector<std::string>{"a", "out.cpp", "out.h", "text.png"}));
    EXPECT_EQ(_listFolder(root.Abs("a")), (std::vector<std::string>{"probe.png"}));
}

}  // namespace
