// The kernel's framebuffer device.
#include "fbdev.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "dash_root.h"

#ifndef FBIO_WAITFORVSYNC
#define FBIO_WAITFORVSYNC _IOW('F', 0x20, __u32)
#endif

namespace {

constexpr U64 FRAME_NS = 1000000000ull / 60;  // the panel's refresh

U64 m_lastBlankNs = 0;  // when the last wait returned

U64 _nowNs(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (U64)ts.tv_sec * 1000000000ull + (U64)ts.tv_nsec;
}

}  // namespace

int fbdev_open(U32, U32)
{
    return root_open("/dev/fb0", O_RDWR);
}

void fbdev_close(int fd)
{
    if (fd >= 0) close(fd);
}

int fbdev_get_vscreeninfo(int fd, struct fb_var_screeninfo* var)
{
    return ioctl(fd, FBIOGET_VSCREENINFO, var) == 0 ? 0 : -1;
}

int fbdev_pan_display(int fd, const struct fb_var_screeninfo* var)
{
    struct fb_var_screeninfo v = *var;
    return ioctl(fd, FBIOPAN_DISPLAY, &v) == 0 ? 0 : -1;
}

// A display without a vertical-blank interrupt answers the wait at once (the kernel's
// fbdev emulation of a DRM device) or does not know it (a memory framebuffer): the main
// loop it paces would run flat out. Two blanks closer than three quarters of a frame
// cannot both be real, so such a wait is made up by the clock, a frame after the last.
int fbdev_wait_vsync(int fd)
{
    __u32 screen = 0;
    const int result = ioctl(fd, FBIO_WAITFORVSYNC, &screen) == 0 || errno == ENOTTY ? 0 : -1;
    U64 now = _nowNs();
    if (m_lastBlankNs != 0 && now - m_lastBlankNs < FRAME_NS * 3 / 4) {
        const U64 due = m_lastBlankNs + FRAME_NS;
        const struct timespec at = {(time_t)(due / 1000000000ull), (long)(due % 1000000000ull)};
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) == EINTR) {
        }
        now = due;
    }
    m_lastBlankNs = now;
    return result;
}

void* fbdev_map(int fd, size_t length)
{
    return mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
}

void fbdev_unmap(void* pixels, size_t length)
{
    if (pixels && pixels != MAP_FAILED) munmap(pixels, length);
}
