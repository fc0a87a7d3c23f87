#include "lcdc_drv.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include "fbdev.h"
#include "lcd_buffer.h"
#include "platform_sysinfo.h"
#include "platform_utils.h"
#include "touch_drv.h"

namespace {

constexpr U32 LCD_PAGES = 3;
constexpr const char* BACKLIGHT_ATTRIBUTE = "/sys/class/leds/lcdled-pwm/brightness";

S32 m_handleFB = -1;
struct fb_var_screeninfo m_screenInfo;
U32 m_sizeFB = 0;
U8* m_pFB = nullptr;
U16* m_pBuffers[LCD_PAGES];
U32 m_curBufferIndex = 0;
U8 m_lcdBacklightLevel = 0;
pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;

}  // namespace

static BOOL _writeBacklight(U32 level)
{
    char text[12];
    snprintf(text, sizeof(text), "%u", level);
    return write_attribute(BACKLIGHT_ATTRIBUTE, text);
}

BOOL lcd_set_backlight_level(U32 level)
{
    level = level > 255 ? 255 : level;
    if (level == m_lcdBacklightLevel) return (BOOL)level;
    // A dark backlight gets a full-scale kick before a low level.
    if (m_lcdBacklightLevel == 0) {
        _writeBacklight(255);
        usleep(1000);
    }
    const BOOL result = _writeBacklight(level);
    m_lcdBacklightLevel = (U8)level;
    return result;
}

U32 lcd_get_backlight_level(void)
{
    return m_lcdBacklightLevel;
}

void lcd_init(void)
{
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    m_handleFB = fbdev_open(info.width, info.height);
    if (m_handleFB < 0) {
        printf("LCD: Failed to open framebuffer device /dev/fb0 (%s)\n", strerror(errno));
        exit(-1);
    }
    fbdev_get_vscreeninfo(m_handleFB, &m_screenInfo);
    m_screenInfo.yoffset = 0;
    fbdev_pan_display(m_handleFB, &m_screenInfo);

    // The compositor writes three pages of gScreenWidth x gScreenHeight: a device with
    // less memory than that, or another pixel size, cannot be driven safely.
    const U32 xres = m_screenInfo.xres, yres = m_screenInfo.yres;
    if (m_screenInfo.bits_per_pixel != 16 || xres < 2 || yres < 1 || m_screenInfo.xres_virtual != xres ||
        m_screenInfo.yres_virtual < LCD_PAGES * yres) {
        printf("LCD: framebuffer /dev/fb0 is %ux%u, %u bits, %u rows: three 16-bit pages needed\n", xres, yres,
               m_screenInfo.bits_per_pixel, m_screenInfo.yres_virtual);
        exit(-1);
    }
    m_sizeFB = m_screenInfo.xres_virtual * m_screenInfo.yres_virtual * (m_screenInfo.bits_per_pixel / 8);
    void* map = fbdev_map(m_handleFB, m_sizeFB);
    if (map == MAP_FAILED) {
        printf("LCD: Could not mmap() framebuffer /dev/fb0 (%s)\n", strerror(errno));
        exit(-1);
    }
    m_pFB = static_cast<U8*>(map);
    for (U32 i = 0; i < LCD_PAGES; i++) m_pBuffers[i] = static_cast<U16*>(map) + (size_t)i * xres * yres;

    // The platform's panel size, never more than the device's page (nor the layers').
    U32 width = info.width ? info.width : xres, height = info.height ? info.height : yres;
    width = width > xres ? xres : width;
    height = height > yres ? yres : height;
    gScreenWidth = (width > MAX_SCREEN_WIDTH ? MAX_SCREEN_WIDTH : width) & ~1u;
    gScreenHeight = height > MAX_SCREEN_HEIGHT ? MAX_SCREEN_HEIGHT : height;

    if (m_lcdBacklightLevel != 255) {
        if (m_lcdBacklightLevel == 0) {
            _writeBacklight(255);
            usleep(1000);
        }
        _writeBacklight(255);
        m_lcdBacklightLevel = 255;
    }
    if (info.touch) touch_init();
}

void lcd_deinit(void)
{
    pthread_mutex_lock(&m_mutex);
    if (m_handleFB != -1) {
        m_screenInfo.yoffset = 0;
        fbdev_pan_display(m_handleFB, &m_screenInfo);
        memset(m_pBuffers[0], 0, (size_t)m_screenInfo.xres * m_screenInfo.yres * 2);
        fbdev_unmap(m_pFB, m_sizeFB);
        fbdev_close(m_handleFB);
        // No page is left to draw into: a late compose or swap finds none and does nothing.
        m_pFB = nullptr;
        for (U16*& page : m_pBuffers) page = nullptr;
        m_curBufferIndex = 0;
        m_handleFB = -1;
    }
    pthread_mutex_unlock(&m_mutex);
}

U16* lcd_buffer(void)
{
    return m_pBuffers[m_curBufferIndex];
}

void lcd_swap(void)
{
    if (m_handleFB == -1) return;
    pthread_mutex_lock(&m_mutex);
    if (m_handleFB != -1) {
        if (fbdev_wait_vsync(m_handleFB) == -1) puts("FBIO_WAITFORVSYNC: failed!!");
        m_screenInfo.yoffset = m_curBufferIndex * m_screenInfo.yres;
        m_curBufferIndex = (m_curBufferIndex + 1) % LCD_PAGES;
        if (fbdev_pan_display(m_handleFB, &m_screenInfo) != 0) puts("FBIOPAN_DISPLAY: failed!!");
    }
    pthread_mutex_unlock(&m_mutex);
}
