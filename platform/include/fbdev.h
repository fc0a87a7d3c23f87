#pragma once
// The framebuffer device "/dev/fb0": the kernel's fbdev on the dash, a plain file with
// a header in the simulated device. Same calls, same results in both.
#include <cstddef>
#include <linux/fb.h>

#include "dash_types.h"

// Opens the framebuffer read-write. The simulated device makes the file for a panel of
// width x height when it is missing. -1 on failure, with errno set.
int fbdev_open(U32 width, U32 height);
void fbdev_close(int fd);

// FBIOGET_VSCREENINFO. 0 on success, -1 on failure.
int fbdev_get_vscreeninfo(int fd, struct fb_var_screeninfo* var);
// FBIOPAN_DISPLAY to var->yoffset. 0 on success, -1 when the page does not fit.
int fbdev_pan_display(int fd, const struct fb_var_screeninfo* var);
// FBIO_WAITFORVSYNC: returns at the next vertical blank.
int fbdev_wait_vsync(int fd);
// Maps `length` bytes of pixel memory shared; MAP_FAILED on failure.
void* fbdev_map(int fd, size_t length);
void fbdev_unmap(void* pixels, size_t length);
