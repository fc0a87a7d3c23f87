#include "imgconv.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <png.h>
#include <unistd.h>

namespace {

constexpr size_t PIXELS_PER_LINE = 16;

// Words that cannot name a record.
constexpr const char* m_keywords[] = {
    "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break", "case",
    "catch", "char", "char8_t", "char16_t", "char32_t", "class", "compl", "concept", "const",
    "consteval", "constexpr", "constinit", "const_cast", "continue", "co_await", "co_return",
    "co_yield", "decltype", "default", "delete", "do", "double", "dynamic_cast", "else", "enum",
    "explicit", "export", "extern", "false", "float", "for", "friend", "goto", "if", "inline", "int",
    "long", "mutable", "namespace", "new", "noexcept", "not", "not_eq", "nullptr", "operator", "or",
    "or_eq", "private", "protected", "public", "register", "reinterpret_cast", "requires", "return",
    "short", "signed", "sizeof", "static", "static_assert", "static_cast", "struct", "switch",
    "template", "this", "thread_local", "throw", "true", "try", "typedef", "typeid", "typename",
    "union", "unsigned", "using", "virtual", "void", "volatile", "wchar_t", "while", "xor", "xor_eq",
    // the device layer's own names, which the header sees
    "U8", "U16", "U32", "U64", "S8", "S16", "S32", "S64", "BOOL", "TRUE", "FALSE",
};

struct PNG_ERROR_T {
    char text[200];
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

// libpng reports errors by longjmp, so each step that can fail sits alone behind its
// setjmp in a frame that holds nothing with a destructor.
bool _readInfo(png_structp png, png_infop info, FILE* f, U32* width, U32* height)
{
    if (setjmp(png_jmpbuf(png))) return false;
    png_init_io(png, f);
    png_set_sig_bytes(png, 8);
    png_read_info(png, info);
    *width = png_get_image_width(png, info);
    *height = png_get_image_height(png, info);
    return true;
}

// Whatever the file holds becomes 8-bit RGBA: palettes and small grays expanded,
// tRNS turned into alpha, 16-bit channels scaled, an opaque alpha added where none is.
bool _setTransforms(png_structp png, png_infop info, size_t* rowBytes)
{
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    *rowBytes = png_get_rowbytes(png, info);
    return true;
}

bool _readRows(png_structp png, png_infop info, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(png))) return false;
    png_read_image(png, rows);
    // Reading to the end chunk also catches a file cut after its pixel data.
    png_read_end(png, info);
    return true;
}

// Reads and converts a PNG whose signature has been checked; "" or the reason.
std::string _decode(png_structp png, png_infop info, PNG_ERROR_T* err, FILE* f, IMGCONV_IMAGE_T* image)
{
    U32 width = 0, height = 0;
    if (!_readInfo(png, info, f, &width, &height)) return err->text;
    if (width > IMGCONV_MAX_WIDTH || height > IMGCONV_MAX_HEIGHT) {
        char text[96];
        snprintf(text, sizeof(text), "too large (%ux%u, at most %ux%u)", width, height, IMGCONV_MAX_WIDTH,
                 IMGCONV_MAX_HEIGHT);
        return text;
    }
    size_t rowBytes = 0;
    if (!_setTransforms(png, info, &rowBytes)) return err->text;
    if (rowBytes != (size_t)width * 4) return "cannot be expanded to 8-bit RGBA";

    std::vector<U8> rgba(rowBytes * height);
    std::vector<png_bytep> rows(height);
    for (U32 y = 0; y < height; y++) rows[y] = rgba.data() + (size_t)y * rowBytes;
    if (!_readRows(png, info, rows.data())) return err->text;

    image->width = width;
    image->height = height;
    image->pixels.resize((size_t)width * height);
    for (size_t i = 0; i < image->pixels.size(); i++) {
        const U8* p = &rgba[i * 4];
        image->pixels[i] = imgconv_pixel(p[0], p[1], p[2], p[3]);
    }
    return "";
}

std::string _baseName(const char* path)
{
    const char* slash = strrchr(path, '/');
    return slash ? slash + 1 : path;
}

void _appendf(std::string* out, const char* format, ...) __attribute__((format(printf, 2, 3)));
void _appendf(std::string* out, const char* format, ...)
{
    char text[256];
    va_list args;
    va_start(args, format);
    const int n = vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    if (n < (int)sizeof(text)) {
        out->append(text);
        return;
    }
    std::string longer((size_t)n + 1, '\0');
    va_start(args, format);
    vsnprintf(longer.data(), longer.size(), format, args);
    va_end(args);
    out->append(longer.c_str(), (size_t)n);
}

int _usage(FILE* out)
{
    fprintf(out,
            "usage: motordash-imgconv --header OUT.h IN.png...\n"
            "       motordash-imgconv --source OUT.cpp [--include HEADER] IN.png\n"
            "Converts PNG pictures to constant RGB565 image records; each picture is named\n"
            "after its file (up.png becomes `up`). The sources include HEADER, images.h by\n"
            "default, which --header writes for the whole set.\n");
    return out == stdout ? 0 : 2;
}

int _fail(const std::string& message)
{
    fprintf(stderr, "motordash-imgconv: %s\n", message.c_str());
    return 1;
}

int _writeHeader(const char* out, char** inputs, int count)
{
    std::vector<IMGCONV_IMAGE_T> images((size_t)count);
    for (int i = 0; i < count; i++) {
        std::string problem = imgconv_load(inputs[i], &images[(size_t)i]);
        if (!problem.empty()) return _fail(problem);
        for (int j = 0; j < i; j++) {
            if (images[(size_t)j].name == images[(size_t)i].name) {
                return _fail(std::string(inputs[i]) + ": image name `" + images[(size_t)i].name +
                             "` is taken by " + inputs[j]);
            }
        }
    }
    std::string problem = imgconv_write_file(out, imgconv_header_text(images.data(), images.size()));
    return problem.empty() ? 0 : _fail(problem);
}

int _writeSource(const char* out, const char* includeName, const char* input)
{
    IMGCONV_IMAGE_T image;
    std::string problem = imgconv_load(input, &image);
    if (problem.empty()) problem = imgconv_write_file(out, imgconv_source_text(image, includeName));
    return problem.empty() ? 0 : _fail(problem);
}

}  // namespace

U16 imgconv_pixel(U8 r, U8 g, U8 b, U8 a)
{
    if (a < 128) return IMGCONV_TRANSPARENT;
    const U16 c = (U16)((r & 0xF8) << 8 | (g & 0xFC) << 3 | b >> 3);
    return c == IMGCONV_TRANSPARENT ? IMGCONV_NEAR_WHITE : c;
}

std::string imgconv_name(const char* path, std::string* name)
{
    std::string base = _baseName(path);
    const size_t dot = base.rfind('.');
    if (dot != std::string::npos && dot > 0) base.resize(dot);
    *name = base;

    bool valid = !base.empty() && !(base[0] >= '0' && base[0] <= '9');
    for (char c : base) {
        valid = valid && ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_');
    }
    if (!valid) return std::string(path) + ": `" + base + "` is not a valid C identifier (letters, digits, _)";
    for (const char* word : m_keywords) {
        if (base == word) return std::string(path) + ": `" + base + "` is a reserved word";
    }
    // The records live in the global namespace, where a leading underscore belongs to
    // the compiler. A double one inside stays: the dash's own names have them
    // (image__EYpb), and the compiler defines no name of that shape.
    if (base[0] == '_') {
        return std::string(path) + ": `" + base + "` is a reserved identifier";
    }
    return "";
}

std::string imgconv_load(const char* path, IMGCONV_IMAGE_T* image)
{
    std::string problem = imgconv_name(path, &image->name);
    if (!problem.empty()) return problem;

    FILE* f = fopen(path, "rb");
    if (!f) return std::string(path) + ": " + strerror(errno);
    U8 signature[8];
    if (fread(signature, 1, sizeof(signature), f) != sizeof(signature) ||
        png_sig_cmp(signature, 0, sizeof(signature)) != 0) {
        fclose(f);
        return std::string(path) + ": not a PNG file";
    }

    PNG_ERROR_T err = {};
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &err, _onError, _onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    problem = png && info ? _decode(png, info, &err, f, image) : "out of memory";
    png_destroy_read_struct(png ? &png : nullptr, info ? &info : nullptr, nullptr);
    fclose(f);
    if (problem.empty()) return "";
    image->pixels.clear();
    // libpng's texts for a short file vary; say what the user has to look at.
    if (problem == "Read Error" || problem == "Not enough image data") problem += " (truncated file?)";
    return std::string(path) + ": " + problem;
}

std::string imgconv_source_text(const IMGCONV_IMAGE_T& image, const char* includeName)
{
    const char* n = image.name.c_str();
    std::string out;
    out.reserve(image.pixels.size() * 8 + 512);
    _appendf(&out, "// Generated by motordash-imgconv from %s.png; do not edit.\n", n);
    _appendf(&out, "#include \"%s\"\n\n", includeName);
    // The pixels once, for either form of the record below.
    const size_t count = image.pixels.size();
    _appendf(&out, "#define %s_PIXELS \\\n", n);
    for (size_t i = 0; i < count; i++) {
        const bool first = i % PIXELS_PER_LINE == 0, last = i % PIXELS_PER_LINE == PIXELS_PER_LINE - 1;
        _appendf(&out, "%s0x%04X,%s", first ? "        " : " ", image.pixels[i],
                 last || i + 1 == count ? " \\\n" : "");
    }
    out.append("\n");
    // g++ initialises BITMAPA's flexible pixel array; clang cannot in C++, so there the
    // record is an object of its full size and the picture's name an alias of it.
    out.append("#if defined(__clang__)\n");
    _appendf(&out,
             "static const struct {\n    U8 nb_layer;\n    U8 pad[3];\n    U32 x;\n    U32 y;\n"
             "    U16 bitmap[%zu];\n} %s_record __asm__(\"motordash_image_%s\") __attribute__((used)) = {\n"
             "    0, {0, 0, 0}, %u, %u, {%s_PIXELS}};\n",
             count, n, n, image.width, image.height, n);
    _appendf(&out, "static_assert(offsetof(decltype(%s_record), bitmap) == offsetof(BITMAPA_T, bitmap));\n", n);
    _appendf(&out, "extern BITMAPA %s __attribute__((alias(\"motordash_image_%s\")));\n", n, n);
    out.append("#else\n");
    _appendf(&out, "BITMAPA %s = {0, {0, 0, 0}, %u, %u, {%s_PIXELS}};\n", n, image.width, image.height, n);
    out.append("#endif\n");
    return out;
}

std::string imgconv_header_text(const IMGCONV_IMAGE_T* images, size_t count)
{
    std::string out =
        "#pragma once\n"
        "// Generated by motordash-imgconv; do not edit.\n"
        "// The constant pictures, one image record each.\n"
        "#include \"outimage.h\"\n\n";
    for (size_t i = 0; i < count; i++) {
        const char* n = images[i].name.c_str();
        const U32 w = images[i].width, h = images[i].height;
        _appendf(&out, "extern BITMAPA %s;  // %s.png, %u x %u\n", n, n, w, h);
    }
    return out;
}

std::string imgconv_write_file(const char* path, const std::string& text)
{
    char temp[4096];
    if (snprintf(temp, sizeof(temp), "%s.tmp%ld", path, (long)getpid()) >= (int)sizeof(temp)) {
        return std::string(path) + ": path too long";
    }
    const int fd = open(temp, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) return std::string(path) + ": " + strerror(errno);
    size_t done = 0;
    int error = 0;
    while (done < text.size()) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            error = n < 0 ? errno : EIO;
            break;
        }
        done += (size_t)n;
    }
    if (close(fd) != 0 && error == 0) error = errno;
    if (error == 0 && rename(temp, path) != 0) error = errno;
    if (error != 0) {
        unlink(temp);
        return std::string(path) + ": " + strerror(error);
    }
    return "";
}

int imgconv_main(int argc, char** argv)
{
    if (argc >= 2 && (!strcmp(argv[1], "--help") || !strcmp(argv[1], "-h"))) return _usage(stdout);
    if (argc >= 3 && !strcmp(argv[1], "--header")) return _writeHeader(argv[2], argv + 3, argc - 3);
    if (argc == 4 && !strcmp(argv[1], "--source")) return _writeSource(argv[2], "images.h", argv[3]);
    if (argc == 6 && !strcmp(argv[1], "--source") && !strcmp(argv[3], "--include")) {
        return _writeSource(argv[2], argv[4], argv[5]);
    }
    return _usage(stderr);
}
