#include "simfb.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// Largest panel the format accepts; keeps every size product far from overflow.
constexpr uint32_t SIMFB_MAX_SIDE = 4096;

uint64_t simfb_pixel_bytes(const SIMFB_HEADER_T* h)
{
    return (uint64_t)h->xres_virtual * h->yres_virtual * (h->bits_per_pixel / 8);
}

int simfb_header_valid(const SIMFB_HEADER_T* h, uint64_t fileSize)
{
    if (memcmp(h->magic, SIMFB_MAGIC, 8) != 0) return 0;
    if (h->bits_per_pixel != 16) return 0;
    if (h->xres == 0 || h->yres == 0 || h->xres > SIMFB_MAX_SIDE || h->yres > SIMFB_MAX_SIDE) return 0;
    if (h->xres_virtual != h->xres) return 0;
    if (h->yres_virtual < h->yres || h->yres_virtual > SIMFB_PAGES * SIMFB_MAX_SIDE) return 0;
    return fileSize >= SIMFB_HEADER_SIZE + simfb_pixel_bytes(h);
}

int simfb_read_header(int fd, SIMFB_HEADER_T* h)
{
    struct stat st;
    if (fstat(fd, &st) != 0) return 0;
    if (pread(fd, h, sizeof(*h), 0) != (ssize_t)sizeof(*h)) return 0;
    return simfb_header_valid(h, (uint64_t)st.st_size);
}

int simfb_create(const char* path, uint32_t width, uint32_t height)
{
    if (width == 0 || height == 0 || width > SIMFB_MAX_SIDE || height > SIMFB_MAX_SIDE) return 0;
    SIMFB_HEADER_T h;
    memset(&h, 0, sizeof(h));
    memcpy(h.magic, SIMFB_MAGIC, 8);
    h.xres = width;
    h.yres = height;
    h.xres_virtual = width;
    h.yres_virtual = height * SIMFB_PAGES;
    h.bits_per_pixel = 16;

    // Written beside the target and renamed, so a viewer never maps half a file.
    char tmp[4200];
    if ((size_t)snprintf(tmp, sizeof(tmp), "%s.new", path) >= sizeof(tmp)) return 0;
    int fd = open(tmp, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return 0;
    char header[SIMFB_HEADER_SIZE];
    memset(header, 0, sizeof(header));
    memcpy(header, &h, sizeof(h));
    int ok = pwrite(fd, header, sizeof(header), 0) == (ssize_t)sizeof(header) &&
             ftruncate(fd, (off_t)(SIMFB_HEADER_SIZE + simfb_pixel_bytes(&h))) == 0;
    close(fd);
    if (!ok || rename(tmp, path) != 0) {
        unlink(tmp);
        return 0;
    }
    return 1;
}
