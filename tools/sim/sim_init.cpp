// motordash-sim init: a complete simulated device in a folder.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "ioboard_image.h"
#include "sim_commands.h"
#include "keypad_drv.h"
#include "simfb.h"

namespace {

struct PRODUCT_T {
    const char* name;
    uint32_t id;
    uint32_t width;
    uint32_t height;
};
constexpr PRODUCT_T m_products[] = {
    {"310", 0x000, 320, 240},
    {"720", 0x100, 800, 480},
};

constexpr const char* m_folders[] = {
    "dev", "etc", "proc/sys/kernel", "usr/sbin", "sys/uid/otp", "run/can",
    "app/bin", "app/data/config", "app/data/log", "app/event", "media", "tmp",
};
constexpr const char* m_leds[] = {"lcdled-pwm", "keyled-pwm", "buzzer-pwm"};

// Versions of a current device: all pass the start gate.
constexpr const char* ROOTFS_VERSION = "120\n";
constexpr const char* OS_RELEASE = "5.15.71-dash-121\n";
constexpr const char* FW_PRINTENV =
    "#!/bin/sh\n"
    "# Boot loader environment of the simulated device.\n"
    "if [ \"$1\" = \"-n\" ] && [ \"$2\" = \"version\" ]; then echo \"bootloader_105_2\"; exit 0; fi\n"
    "[ \"$1\" = \"version\" ] && { echo \"version=bootloader_105_2\"; exit 0; }\n"
    "echo \"## Error: \\\"$1\\\" not defined\" >&2; exit 1\n";
constexpr uint32_t SERIAL_NUMBER = 0x00123456;

bool _mkdirs(const std::string& path)
{
    for (size_t i = 1; i <= path.size(); i++) {
        if (i != path.size() && path[i] != '/') continue;
        const std::string part = path.substr(0, i);
        if (mkdir(part.c_str(), 0755) != 0 && errno != EEXIST) return false;
    }
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool _write(const std::string& path, const void* data, size_t size, mode_t mode = 0644)
{
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) return false;
    bool ok = fwrite(data, 1, size, f) == size;
    ok = fclose(f) == 0 && ok;
    return ok && chmod(path.c_str(), mode) == 0;
}

bool _writeText(const std::string& path, const char* text, mode_t mode = 0644)
{
    return _write(path, text, strlen(text), mode);
}

bool _framebufferFits(const std::string& path, const PRODUCT_T& p)
{
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return false;
    SIMFB_HEADER_T h;
    bool fits = fread(&h, sizeof(h), 1, f) == 1 && memcmp(h.magic, SIMFB_MAGIC, 8) == 0 && h.xres == p.width &&
                h.yres == p.height && h.yres_virtual == p.height * SIMFB_PAGES && h.bits_per_pixel == 16;
    fclose(f);
    return fits;
}

}  // namespace

bool sim_make_root(const std::string& base, const char* productName, std::string* error)
{
    const PRODUCT_T* product = nullptr;
    for (const PRODUCT_T& p : m_products) {
        if (!strcmp(productName, p.name)) product = &p;
    }
    if (!product) {
        *error = std::string("unknown product '") + productName + "' (310 or 720)";
        return false;
    }
    std::string failed;
    for (const char* folder : m_folders) {
        if (!_mkdirs(base + "/" + folder)) failed = base + "/" + folder;
    }
    for (U32 line : KEYPAD_KEY_LINES) {
        const std::string dir = base + "/sys/class/gpio/gpio" + std::to_string(line);
        if (!_mkdirs(dir) || !_writeText(dir + "/direction", "in\n") || !_writeText(dir + "/value", "1\n"))
            failed = dir;
    }
    for (const char* led : m_leds) {
        const std::string dir = base + "/sys/class/leds/" + led;
        if (!_mkdirs(dir) || !_writeText(dir + "/brightness", "0\n") || !_writeText(dir + "/max_brightness", "255\n"))
            failed = dir;
    }

    uint8_t record[16] = {};
    for (int i = 0; i < 4; i++) {
        record[i] = (uint8_t)(SERIAL_NUMBER >> (8 * i));
        record[4 + i] = (uint8_t)(product->id >> (8 * i));
    }
    if (!_write(base + "/sys/uid/otp/id.bin", record, sizeof(record))) failed = "sys/uid/otp/id.bin";
    if (!_writeText(base + "/etc/VERSION", ROOTFS_VERSION)) failed = "etc/VERSION";
    if (!_writeText(base + "/proc/sys/kernel/osrelease", OS_RELEASE)) failed = "proc/sys/kernel/osrelease";
    if (!_writeText(base + "/usr/sbin/fw_printenv", FW_PRINTENV, 0755)) failed = "usr/sbin/fw_printenv";

    // The I/O board's firmware, newer than the board's factory flash, so that the first
    // start updates the board. A file already there is the user's and stays.
    const std::string firmware = ioboard_image_path(base, product->id);
    struct stat st;
    if (stat(firmware.c_str(), &st) != 0) {
        std::vector<uint8_t> image(IOBOARD_FIRMWARE_SIZE);
        ioboard_image_make(image.data(), IOBOARD_INIT_VERSION, IOBOARD_TYPICAL_CODE_BYTES, product->id + 2);
        if (!_write(firmware, image.data(), image.size())) failed = firmware;
    }

    const std::string fb = base + "/dev/fb0";
    if (!_framebufferFits(fb, *product) && !simfb_create(fb.c_str(), product->width, product->height))
        failed = "dev/fb0";

    if (!failed.empty()) {
        *error = "cannot make " + failed + ": " + strerror(errno);
        return false;
    }
    return true;
}

int sim_init(int argc, char** argv)
{
    const char* root = nullptr;
    const PRODUCT_T* product = &m_products[0];
    for (int i = 0; i < argc; i++) {
        if (!strcmp(argv[i], "--product") && i + 1 < argc) {
            product = nullptr;
            for (const PRODUCT_T& p : m_products) {
                if (!strcmp(argv[i + 1], p.name)) product = &p;
            }
            if (!product) {
                fprintf(stderr, "motordash-sim init: unknown product '%s' (310 or 720)\n", argv[i + 1]);
                return 2;
            }
            i++;
        } else if (!root && argv[i][0] != '-') {
            root = argv[i];
        } else {
            fprintf(stderr, "usage: motordash-sim init ROOT [--product 310|720]\n");
            return 2;
        }
    }
    if (!root) {
        fprintf(stderr, "usage: motordash-sim init ROOT [--product 310|720]\n");
        return 2;
    }
    std::string error;
    if (!sim_make_root(root, product->name, &error)) {
        fprintf(stderr, "motordash-sim init: %s\n", error.c_str());
        return 1;
    }
    printf("Device root %s: Zelvo%s, %u x %u\n", root, product->name, product->width, product->height);
    return 0;
}

