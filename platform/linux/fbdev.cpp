// The kernel's framebuffer device.
#include "fbdev.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "dash_root.h"

#ifndef FBIO_WAITFORVSYNC
#define FBIO_WAITFORVSYNC _IOW('F', 0x20, __u32)
#endif

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

int fbdev_wait_vsync(int fd)
{
    __u32 screen = 0;
    return ioctl(fd, FBIO_WAITFORVSYNC, &screen) == 0 ? 0 : -1;
}

void* fbdev_map(int fd, size_t length)
{
    return mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
}

void fbdev_unmap(void* pixels, size_t length)
{
    if (pixels && pixels != MAP_FAILED) munmap(pixels, length);
}
