// Simulated framebuffer: the file dev/fb0 under the device root (layout in simfb.h).
#include "fbdev.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "dash_root.h"
#include "simfb.h"

int fbdev_open(U32 width, U32 height)
{
    int fd = root_open("/dev/fb0", O_RDWR);
    char path[ROOT_PATH_MAX];
    if (fd < 0 && errno == ENOENT && root_path(path, sizeof(path), "/dev/fb0") && simfb_create(path, width, height)) {
        fd = root_open("/dev/fb0", O_RDWR);
    }
    return fd;
}

void fbdev_close(int fd)
{
    if (fd >= 0) close(fd);
}

int fbdev_get_vscreeninfo(int fd, struct fb_var_screeninfo* var)
{
    SIMFB_HEADER_T h;
    if (!var || !simfb_read_header(fd, &h)) {
        errno = EINVAL;
        return -1;
    }
    memset(var, 0, sizeof(*var));
    var->xres = h.xres;
    var->yres = h.yres;
    var->xres_virtual = h.xres_virtual;
    var->yres_virtual = h.yres_virtual;
    var->yoffset = h.yoffset;
    var->bits_per_pixel = h.bits_per_pixel;
    var->red = {11, 5, 0};
    var->green = {5, 6, 0};
    var->blue = {0, 5, 0};
    return 0;
}

static int _bumpCounter(int fd, off_t offset)
{
    uint64_t count = 0;
    if (pread(fd, &count, sizeof(count), offset) != (ssize_t)sizeof(count)) return -1;
    count++;
    return pwrite(fd, &count, sizeof(count), offset) == (ssize_t)sizeof(count) ? 0 : -1;
}

int fbdev_pan_display(int fd, const struct fb_var_screeninfo* var)
{
    SIMFB_HEADER_T h;
    if (!var || !simfb_read_header(fd, &h) || var->yoffset > h.yres_virtual - h.yres) {
        errno = EINVAL;
        return -1;
    }
    uint32_t yoffset = var->yoffset;
    if (pwrite(fd, &yoffset, sizeof(yoffset), offsetof(SIMFB_HEADER_T, yoffset)) != (ssize_t)sizeof(yoffset))
        return -1;
    return _bumpCounter(fd, offsetof(SIMFB_HEADER_T, pan_count));
}

int fbdev_wait_vsync(int fd)
{
    // The vertical blank falls on every 1/60 s boundary of the monotonic clock.
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const uint64_t ns = (uint64_t)now.tv_sec * 1000000000ull + (uint64_t)now.tv_nsec;
    const uint64_t frame = ns * 60 / 1000000000ull + 1;
    const uint64_t next = frame * 1000000000ull / 60 + 1;
    struct timespec at;
    at.tv_sec = (time_t)(next / 1000000000ull);
    at.tv_nsec = (long)(next % 1000000000ull);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) == EINTR) {
    }
    return _bumpCounter(fd, offsetof(SIMFB_HEADER_T, vblank_count));
}

void* fbdev_map(int fd, size_t length)
{
    SIMFB_HEADER_T h;
    if (length == 0 || !simfb_read_header(fd, &h) || length > simfb_pixel_bytes(&h)) {
        errno = EINVAL;
        return MAP_FAILED;
    }
    return mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, SIMFB_HEADER_SIZE);
}

void fbdev_unmap(void* pixels, size_t length)
{
    if (pixels && pixels != MAP_FAILED) munmap(pixels, length);
}
