// motordash-sim screenshot: the page on show of a device root, as a PNG.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "png_io.h"
#include "sim_commands.h"
#include "simfb.h"

int sim_screenshot(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: motordash-sim screenshot ROOT FILE.png\n");
        return 2;
    }
    const std::string path = std::string(argv[0]) + "/dev/fb0";
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        fprintf(stderr, "motordash-sim screenshot: cannot open %s: %s\n", path.c_str(), strerror(errno));
        return 1;
    }
    SIMFB_HEADER_T h;
    if (!simfb_read_header(fd, &h)) {
        close(fd);
        fprintf(stderr, "motordash-sim screenshot: %s is not a simulated framebuffer\n", path.c_str());
        return 1;
    }
    const size_t length = SIMFB_HEADER_SIZE + (size_t)simfb_pixel_bytes(&h);
    void* map = mmap(nullptr, length, PROT_READ, MAP_SHARED, fd, 0);
    close(fd);
    if (map == MAP_FAILED) {
        fprintf(stderr, "motordash-sim screenshot: cannot map %s: %s\n", path.c_str(), strerror(errno));
        return 1;
    }
    // The header in the mapping is the live one; a page past the end shows page 0.
    const volatile SIMFB_HEADER_T* live = static_cast<const SIMFB_HEADER_T*>(map);
    uint32_t yoffset = live->yoffset;
    if (yoffset > h.yres_virtual - h.yres) yoffset = 0;
    const uint16_t* pixels =
        reinterpret_cast<const uint16_t*>(static_cast<const uint8_t*>(map) + SIMFB_HEADER_SIZE) + (size_t)yoffset * h.xres;
    const std::string error = png_write_rgb565(argv[1], pixels, h.xres, h.yres, h.xres_virtual);
    munmap(map, length);
    if (!error.empty()) {
        fprintf(stderr, "motordash-sim screenshot: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
