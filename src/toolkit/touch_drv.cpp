#include "touch_drv.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/select.h>
#include <tslib.h>
#include <unistd.h>

#include "app_lock.h"
#include "dash_root.h"
#include "platform_sysinfo.h"
#include "watchdog_drv.h"

namespace {

constexpr const char* TOUCH_DEFAULT_DEVICE = "/dev/input/event0";
// One touch is read whole; beyond this the last slot is overwritten.
constexpr int TOUCH_MAX_SAMPLES = 128;

struct tsdev* m_pTsDev = nullptr;
BOOL m_isCalibrated = FALSE;
BOOL m_isCalibrationInProcess = FALSE;
TOUCHSTATE_T m_touchState = {0, 0, TOUCH_STATE_NONE};
S32 ix = 0;

// Opens the panel named by the environment; a failure leaves touch without function.
void _open(int nonblock)
{
    const char* name = getenv("TSLIB_TSDEVICE");
    char path[ROOT_PATH_MAX];
    if (!root_path(path, sizeof(path), name ? name : TOUCH_DEFAULT_DEVICE)) return;
    m_pTsDev = ts_open(path, nonblock);
    if (!m_pTsDev) {
        perror("ts_open");
        return;
    }
    if (ts_config(m_pTsDev) != 0) perror("ts_config");
}

int _compareX(const void* a, const void* b)
{
    const int l = static_cast<const ts_sample*>(a)->x, r = static_cast<const ts_sample*>(b)->x;
    return (l > r) - (l < r);
}

int _compareY(const void* a, const void* b)
{
    const int l = static_cast<const ts_sample*>(a)->y, r = static_cast<const ts_sample*>(b)->y;
    return (l > r) - (l < r);
}

S32 _median(const ts_sample* s, int n, bool wantX)
{
    const int m = n / 2;
    const S32 hi = wantX ? s[m].x : s[m].y;
    if (n % 2) return hi;
    return ((wantX ? s[m - 1].x : s[m - 1].y) + hi) / 2;
}

// The median raw point of one touch, from its first contact to its lift; the lift
// sample (pressure 0) carries no position and is left out.
BOOL _touch_get_xy(struct tsdev* ts, S32* x, S32* y)
{
    static ts_sample samp[TOUCH_MAX_SAMPLES];
    if (!ts || ts_read_raw(ts, &samp[0], 1) < 1 || samp[0].pressure == 0) return FALSE;
    int n = 0;
    do {
        if (n < TOUCH_MAX_SAMPLES - 1) ++n;
        if (ts_read_raw(ts, &samp[n], 1) < 1) return FALSE;
    } while (samp[n].pressure != 0);
    printf("Took %d samples...\n", n);
    qsort(samp, n, sizeof(samp[0]), _compareX);
    *x = _median(samp, n, true);
    qsort(samp, n, sizeof(samp[0]), _compareY);
    *y = _median(samp, n, false);
    return TRUE;
}

// Least squares fit of screen = c + f * x + g * y for one screen axis, given the
// inverse matrix of the raw points; scaled to 16.16 and printed unscaled.
void _fitAxis(const S32* raw_x, const S32* raw_y, const S32* screen, const float inv[6], S32* out)
{
    float z = 0, zx = 0, zy = 0;
    for (int j = 0; j < 5; ++j) {
        z += (float)screen[j];
        zx += (float)screen[j] * (float)raw_x[j];
        zy += (float)screen[j] * (float)raw_y[j];
    }
    const float a = inv[0], b = inv[1], c = inv[2], e = inv[3], f = inv[4], i = inv[5];
    const float r0 = a * z + b * zx + c * zy;
    const float r1 = b * z + e * zx + f * zy;
    const float r2 = c * z + f * zx + i * zy;
    printf("%f %f %f\n", r0, r1, r2);
    out[0] = (S32)(r0 * 65536);
    out[1] = (S32)(r1 * 65536);
    out[2] = (S32)(r2 * 65536);
}

}  // namespace

void touch_init(void)
{
    touch_deinit();
    _open(1);
    const char* calib = getenv("TSLIB_CALIBFILE");
    m_isCalibrated = calib && access(calib, R_OK) == 0;
}

void touch_deinit(void)
{
    if (m_pTsDev) ts_close(m_pTsDev);
    m_pTsDev = nullptr;
}

void touch_get_state(TOUCHSTATE_T* state)
{
    if (m_pTsDev && !m_isCalibrationInProcess) {
        struct ts_sample sample;
        if (ts_read(m_pTsDev, &sample, 1) == 1) {
            if (sample.pressure != 0) {
                m_touchState = {sample.x, sample.y, TOUCH_STATE_PRESSED};
            } else {
                m_touchState.state = TOUCH_STATE_RELEASED;
            }
        }
    }
    if (state) *state = m_touchState;
}

BOOL touch_is_calibrated(void)
{
    return m_isCalibrated;
}

void touch_start_calibration(void)
{
    m_isCalibrationInProcess = TRUE;
    touch_deinit();
    _open(0);
    if (!m_pTsDev) return;
    // Whatever the panel queued before the screen appeared is not a calibration touch.
    const int fd = ts_fd(m_pTsDev);
    while (fd >= 0) {
        fd_set fds;
        FD_ZERO(&fds);
        FD_SET(fd, &fds);
        struct timeval tv = {0, 0};
        if (select(fd + 1, &fds, nullptr, nullptr, &tv) <= 0) break;
        struct ts_sample sample;
        if (ts_read_raw(m_pTsDev, &sample, 1) < 0) {
            perror("ts_read");
            break;
        }
    }
}

void touch_end_calibration(void)
{
    touch_deinit();
    touch_init();
    m_isCalibrationInProcess = FALSE;
}

BOOL touch_calibration_sample(TOUCHCALIBRATION_T* cal, S32 xs, S32 ys)
{
    if (!cal) return FALSE;
    // The read waits for the finger to lift, which may take longer than the watchdog.
    // Meanwhile the tasks go on, as they do on the dash's one processor while its main
    // thread sleeps in the read: the caller's application lock is let go around it.
    const BOOL watchdog = watchdog_is_enabled();
    if (watchdog) watchdog_enable(0);
    AppUnlock();
    const BOOL ok = _touch_get_xy(m_pTsDev, &cal->x[ix], &cal->y[ix]);
    AppLock();
    if (watchdog) watchdog_enable(1);
    if (!ok) return FALSE;
    cal->xs[ix] = xs;
    cal->ys[ix] = ys;
    ix = (ix + 1) % 5;
    return TRUE;
}

BOOL touch_calibrate(TOUCHCALIBRATION_T* cal)
{
    if (!cal) return FALSE;
    const float n = 5;
    float sx = 0, sy = 0, sxx = 0, syy = 0, sxy = 0;
    for (int j = 0; j < 5; ++j) {
        const float x = (float)cal->x[j], y = (float)cal->y[j];
        sx += x;
        sy += y;
        sxx += x * x;
        syy += y * y;
        sxy += x * y;
    }
    const float A = sxx * syy - sxy * sxy;
    const float B = sy * sxy - sx * syy;
    const float C = sx * sxy - sy * sxx;
    const float det = n * A + sx * B + sy * C;
    if (det > -0.1f && det < 0.1f) {
        printf("ts_calibrate: determinant is too small -- %f\n", det);
        printf("Calibration failed.");
        return FALSE;
    }
    const float inv[6] = {A / det, B / det, C / det, (n * syy - sy * sy) / det, (sx * sy - n * sxy) / det,
                          (n * sxx - sx * sx) / det};
    _fitAxis(cal->x, cal->y, cal->xs, inv, &cal->a[0]);
    _fitAxis(cal->x, cal->y, cal->ys, inv, &cal->a[3]);
    cal->a[6] = 65536;
    printf("Calibration constants: ");
    for (int j = 0; j < 7; ++j) printf("%d ", cal->a[j]);
    printf("\n");

    const char* name = getenv("TSLIB_CALIBFILE");
    const int fd = name ? open(name, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644) : -1;
    if (fd < 0) {
        printf("Could not calibrate, no calibration file");
        return FALSE;
    }
    PLATFORM_INFO_T info;
    GetPlatformInfo(&info);
    char line[128];
    const int len = snprintf(line, sizeof(line), "%d %d %d %d %d %d %d %d %d", cal->a[1], cal->a[2], cal->a[0],
                             cal->a[4], cal->a[5], cal->a[3], cal->a[6], (int)info.width, (int)info.height);
    const bool written = write(fd, line, (size_t)len) == len;
    fdatasync(fd);
    close(fd);
    return written ? TRUE : FALSE;
}
