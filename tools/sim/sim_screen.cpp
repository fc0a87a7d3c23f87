#include "sim_screen.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "simfb.h"

std::string sim_screen_read(const std::string& root, SIM_SCREEN_T* screen)
{
    const std::string path = root + "/dev/fb0";
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return "cannot open " + path + ": " + strerror(errno);
    SIMFB_HEADER_T h;
    if (!simfb_read_header(fd, &h)) {
        close(fd);
        return path + " is not a simulated framebuffer";
    }
    // A page past the end (a header being rewritten) shows page 0.
    const uint32_t yoffset = h.yoffset > h.yres_virtual - h.yres ? 0 : h.yoffset;
    screen->width = h.xres;
    screen->height = h.yres;
    screen->pixels.resize((size_t)h.xres * h.yres);
    const size_t bytes = screen->pixels.size() * 2;
    const off_t at = SIMFB_HEADER_SIZE + (off_t)yoffset * h.xres_virtual * 2;
    const bool ok = pread(fd, screen->pixels.data(), bytes, at) == (ssize_t)bytes;
    close(fd);
    return ok ? "" : "cannot read the page of " + path;
}
