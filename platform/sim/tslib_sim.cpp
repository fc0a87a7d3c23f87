// The six calls of the touch library the dash uses, for the simulated device: samples
// come from the panel socket (touch_sim.h), raw through the panel map, and ts_read
// applies the calibration file the way the library's linear module does.
#include <tslib.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "dash_root.h"
#include "touch_sim.h"

struct tsdev {
    int fd;
    int nonblock;
    bool calibrated;
    long long a[7];  // as in the file: x factors and constant, y factors and constant, divisor
    struct sockaddr_un addr;
};

namespace {

// The map of the simulated panel: about 5 and 8 counts a pixel, turned by 2 degrees.
constexpr double PANEL_TURN = 2.0 * M_PI / 180.0;
constexpr double PANEL_SCALE_X = 4.9, PANEL_SCALE_Y = 7.7;
constexpr double PANEL_OFFSET_X = 310, PANEL_OFFSET_Y = 260;

// One datagram into a sample; a malformed one is no sample.
int _readOne(struct tsdev* ts, struct ts_sample* s)
{
    char buf[64];
    const ssize_t n = recv(ts->fd, buf, sizeof(buf) - 1, ts->nonblock ? MSG_DONTWAIT : 0);
    if (n < 0) return (errno == EAGAIN || errno == EWOULDBLOCK) ? 0 : -1;
    buf[n] = '\0';
    int x, y, pressure;
    if (sscanf(buf, "%d %d %d", &x, &y, &pressure) != 3 || x < -100000 || x > 100000 || y < -100000 ||
        y > 100000) {
        return 0;
    }
    touch_sim_panel(x, y, &s->x, &s->y);
    s->pressure = pressure > 0 ? (unsigned)pressure : 0u;
    gettimeofday(&s->tv, nullptr);
    return 1;
}

int _read(struct tsdev* ts, struct ts_sample* samp, int nr, bool calibrate)
{
    if (!ts || !samp || nr < 0) return -1;
    int got = 0;
    while (got < nr) {
        const int r = _readOne(ts, &samp[got]);
        if (r < 0) return got ? got : -1;
        if (r == 0) {
            if (ts->nonblock) break;
            continue;  // a malformed datagram: wait for the next
        }
        if (calibrate && ts->calibrated) {
            const long long x = samp[got].x, y = samp[got].y;
            samp[got].x = (int)((ts->a[2] + ts->a[0] * x + ts->a[1] * y) / ts->a[6]);
            samp[got].y = (int)((ts->a[5] + ts->a[3] * x + ts->a[4] * y) / ts->a[6]);
        }
        ++got;
    }
    return got;
}

}  // namespace

int touch_sim_address(const char* root, struct sockaddr_un* addr)
{
    const std::string path = std::string(root ? root : "") + "/run/touch";
    if (path.size() >= sizeof(addr->sun_path)) return 0;
    memset(addr, 0, sizeof(*addr));
    addr->sun_family = AF_UNIX;
    strcpy(addr->sun_path, path.c_str());
    return 1;
}

void touch_sim_panel(int x, int y, int* rawX, int* rawY)
{
    const double c = cos(PANEL_TURN), s = sin(PANEL_TURN);
    *rawX = (int)lround(PANEL_OFFSET_X + PANEL_SCALE_X * (x * c - y * s));
    *rawY = (int)lround(PANEL_OFFSET_Y + PANEL_SCALE_Y * (x * s + y * c));
}

std::string touch_sim_send(const std::string& root, int x, int y, int pressure)
{
    struct sockaddr_un addr;
    if (!touch_sim_address(root.c_str(), &addr)) return "the root's path is too long";
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return strerror(errno);
    char buf[64];
    const int len = snprintf(buf, sizeof(buf), "%d %d %d", x, y, pressure);
    const bool ok = sendto(fd, buf, (size_t)len, 0, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) == len;
    const std::string error = ok ? "" : std::string("no touch panel listening: ") + strerror(errno);
    close(fd);
    return error;
}

extern "C" {

// The device name is the dash's own; the simulated panel is always the root's socket.
struct tsdev* ts_open(const char* dev_name, int nonblock)
{
    (void)dev_name;
    struct tsdev* ts = new tsdev{};
    ts->nonblock = nonblock;
    ts->fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (ts->fd < 0 || !touch_sim_address(root_prefix(), &ts->addr)) {
        if (ts->fd >= 0) close(ts->fd);
        delete ts;
        errno = ENODEV;
        return nullptr;
    }
    unlink(ts->addr.sun_path);
    if (bind(ts->fd, reinterpret_cast<struct sockaddr*>(&ts->addr), sizeof(ts->addr)) != 0) {
        const int saved = errno;
        close(ts->fd);
        delete ts;
        errno = saved;
        return nullptr;
    }
    return ts;
}

// Takes up the calibration file; without a usable one samples stay raw.
int ts_config(struct tsdev* ts)
{
    if (!ts) return -1;
    ts->calibrated = false;
    const char* name = getenv("TSLIB_CALIBFILE");
    FILE* f = name ? fopen_regular(name, "r") : nullptr;
    if (!f) return 0;
    long long a[7];
    ts->calibrated = fscanf(f, "%lld %lld %lld %lld %lld %lld %lld", &a[0], &a[1], &a[2], &a[3], &a[4], &a[5],
                            &a[6]) == 7 &&
                     a[6] != 0;
    fclose(f);
    for (int i = 0; ts->calibrated && i < 7; ++i) {
        // Factors beyond any real panel would only overflow the sum.
        if (llabs(a[i]) > (1LL << 40)) ts->calibrated = false;
        ts->a[i] = a[i];
    }
    return 0;
}

int ts_read(struct tsdev* ts, struct ts_sample* samp, int nr)
{
    return _read(ts, samp, nr, true);
}

int ts_read_raw(struct tsdev* ts, struct ts_sample* samp, int nr)
{
    return _read(ts, samp, nr, false);
}

int ts_fd(struct tsdev* ts)
{
    return ts ? ts->fd : -1;
}

int ts_close(struct tsdev* ts)
{
    if (!ts) return -1;
    close(ts->fd);
    unlink(ts->addr.sun_path);
    delete ts;
    return 0;
}

}  // extern "C"
