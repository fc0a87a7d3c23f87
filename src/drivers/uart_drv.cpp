#include "uart_drv.h"

#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <linux/serial.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include "dash_root.h"

namespace {

constexpr U32 RECEIVE_WAIT_MS = 50;
constexpr U32 RECEIVE_CHUNK = 255;

constexpr speed_t SPEEDS[] = {B110,   B300,    B1200,   B2400,   B4800,   B9600,  B19200,
                              B38400, B57600,  B115200, B230400, B460800, B921600};

S32 m_portHandles[UART_PORT_COUNT] = {-1, -1, -1, -1};

// A port's receive thread, while a callback owns its input.
struct RECEIVER_T {
    std::atomic<U32> running{0};  // the thread's loop condition
    BOOL hasThread = 0;
    pthread_t thread;
    UART_CALLBACK_T callback = nullptr;
};
RECEIVER_T m_receivers[UART_PORT_COUNT];

}  // namespace

static RECEIVER_T* _receiver(U32 port)
{
    return port < UART_PORT_COUNT ? &m_receivers[port] : nullptr;
}

static void* _receiveThread(void* arg)
{
    const U32 port = (U32)(uintptr_t)arg;
    RECEIVER_T* p = &m_receivers[port];
    U8 buffer[RECEIVE_CHUNK];
    while (p->running.load()) {
        U32 count = 0;
        if (uart_read_buffer_wait(port, buffer, sizeof(buffer), RECEIVE_WAIT_MS, &count) && count > 0) {
            p->callback(port, buffer, count);
        }
    }
    return nullptr;
}

// Opens and programs the port at a termios speed; the custom rate, if any, is set by
// the caller between open and the receive thread's start.
static BOOL _open(U32 port, speed_t speed, BOOL eightBits, BOOL twoStopBits, U32 parity)
{
    if (port >= UART_PORT_COUNT) return 0;
    uart_close(port);
    char path[32];
    snprintf(path, sizeof(path), "/dev/ttySP%u", port);
    const int fd = root_open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) return 0;

    struct termios tio;
    memset(&tio, 0, sizeof(tio));  // input, output and local flags 0, every control character 0
    tio.c_cflag = CREAD | (eightBits ? CS8 : CS7);
    if (twoStopBits == 1) tio.c_cflag |= CSTOPB;
    if (parity == UART_PARITY_ODD) {
        tio.c_cflag |= PARENB | PARODD;
    } else if (parity != UART_PARITY_NONE) {
        tio.c_cflag |= PARENB;
    }
    cfsetispeed(&tio, speed);
    cfsetospeed(&tio, speed);
    if (tcsetattr(fd, TCSANOW, &tio) != 0) {
        const int saved = errno;
        close(fd);
        errno = saved;
        return 0;
    }
    tcflush(fd, TCIFLUSH);
    m_portHandles[port] = fd;
    return 1;
}

static BOOL _startReceiving(U32 port, UART_CALLBACK_T callback)
{
    if (!callback) return 1;
    RECEIVER_T* p = &m_receivers[port];
    p->callback = callback;
    p->running.store(1);
    if (pthread_create(&p->thread, nullptr, _receiveThread, (void*)(uintptr_t)port) != 0) {
        p->running.store(0);
        p->callback = nullptr;
        uart_close(port);
        return 0;
    }
    p->hasThread = 1;
    return 1;
}

BOOL uart_open(U32 port, U32 speedIndex, BOOL eightBits, BOOL twoStopBits, U32 parity, UART_CALLBACK_T callback)
{
    const speed_t speed = speedIndex < sizeof(SPEEDS) / sizeof(SPEEDS[0]) ? SPEEDS[speedIndex] : B1200;
    if (!_open(port, speed, eightBits, twoStopBits, parity)) return 0;
    return _startReceiving(port, callback);
}

BOOL uart_open_custom(U32 port, U32 baud, BOOL eightBits, BOOL twoStopBits, U32 parity, UART_CALLBACK_T callback)
{
    // The serial driver turns 38400 into the custom divisor's rate.
    if (baud == 0 || !_open(port, B38400, eightBits, twoStopBits, parity)) return 0;
    const int fd = m_portHandles[port];
    struct serial_struct serial;
    U32 actual = 38400;
    if (ioctl(fd, TIOCGSERIAL, &serial) == 0 && serial.baud_base > 0) {
        int divisor = (int)lround((double)serial.baud_base / baud);
        if (divisor < 1) divisor = 1;
        serial.flags = (serial.flags & ~ASYNC_SPD_MASK) | ASYNC_SPD_CUST;
        serial.custom_divisor = divisor;
        if (ioctl(fd, TIOCSSERIAL, &serial) == 0) actual = (U32)(serial.baud_base / divisor);
    }
    if (std::fabs((double)actual - baud) > 0.02 * baud) {
        printf("uart_drv: Cannot set serial port speed to %d. Closest possible is %d\n", (int)baud, (int)actual);
    }
    return _startReceiving(port, callback);
}

BOOL uart_close(U32 port)
{
    RECEIVER_T* p = _receiver(port);
    if (!p) return 0;
    if (p->hasThread) {
        p->running.store(0);
        pthread_join(p->thread, nullptr);
        p->hasThread = 0;
        p->callback = nullptr;
    }
    if (m_portHandles[port] < 0) return 0;
    close(m_portHandles[port]);
    m_portHandles[port] = -1;
    return 1;
}

BOOL uart_flush(U32 port, BOOL receive, BOOL transmit)
{
    const S32 fd = uart_get_porthandle(port);
    if (fd < 0) return 0;
    int which;
    if (receive == 1 && transmit == 1) {
        which = TCIOFLUSH;
    } else if (receive == 1) {
        which = TCIFLUSH;
    } else if (transmit == 1) {
        which = TCOFLUSH;
    } else {
        return 1;
    }
    return tcflush(fd, which) == 0;
}

BOOL uart_read_byte(U32 port, U8* data)
{
    const RECEIVER_T* p = _receiver(port);
    if (!p || p->hasThread || !data) return 0;
    U32 count = 0;
    return uart_read_buffer(port, data, 1, &count) && count == 1;
}

BOOL uart_read_buffer(U32 port, U8* buffer, U32 length, U32* count)
{
    if (count) *count = 0;
    const S32 fd = uart_get_porthandle(port);
    if (fd < 0 || !buffer || !count || length == 0) return 0;
    const ssize_t n = read(fd, buffer, length);
    if (n <= 0) return 0;
    *count = (U32)n;
    return 1;
}

BOOL uart_read_buffer_wait(U32 port, U8* buffer, U32 length, U32 milliseconds, U32* count)
{
    if (count) *count = 0;
    const S32 fd = uart_get_porthandle(port);
    if (fd < 0 || fd >= FD_SETSIZE) return 0;
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    struct timeval timeout = {(time_t)(milliseconds / 1000), (suseconds_t)(milliseconds % 1000) * 1000};
    if (select(fd + 1, &set, nullptr, nullptr, &timeout) <= 0) return 0;
    return uart_read_buffer(port, buffer, length, count);
}

BOOL uart_write_byte(U32 port, U8 data)
{
    return uart_write_buffer(port, &data, 1);
}

BOOL uart_write_buffer(U32 port, const U8* buffer, U32 length)
{
    const S32 fd = uart_get_porthandle(port);
    if (fd < 0 || !buffer) return 0;
    const ssize_t n = write(fd, buffer, length);
    return n >= 0 && (U32)n == length;
}

S32 uart_get_porthandle(U32 port)
{
    return port < UART_PORT_COUNT ? m_portHandles[port] : -1;
}
