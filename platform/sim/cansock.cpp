// CAN ports of the simulated device: sockets of the virtual bus. What a raw socket's
// set-up configures in the kernel has nothing to configure here and succeeds; a port
// whose bus is not running fails as a dash without the interface does.
#include "cansock.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "canbus_sim.h"

int cansock_socket(void)
{
    return socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
}

int cansock_set_rcvbuf(int fd, int bytes)
{
    return setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof(bytes));
}

int cansock_set_txqueuelen(int, const char*, int)
{
    return 0;
}

int cansock_ifindex(int, const char* ifname)
{
    struct sockaddr_un addr;
    struct stat st;
    if (!canbus_address(ifname, &addr) || stat(addr.sun_path, &st) != 0 || !S_ISSOCK(st.st_mode)) {
        errno = ENODEV;
        return -1;
    }
    return canbus_port_of(ifname) + 1;
}

int cansock_bind(int fd, const char* ifname, int)
{
    struct sockaddr_un addr;
    if (!canbus_address(ifname, &addr)) {
        errno = ENODEV;
        return -1;
    }
    return connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr));
}

int cansock_set_error_filter(int, U32)
{
    return 0;
}

int cansock_set_loopback(int, int)
{
    return 0;  // the bus never hands a frame back to its sender
}

int cansock_timestamp(int, struct timeval* stamp)
{
    return gettimeofday(stamp, nullptr);
}

int cansock_write(int fd, const struct can_frame* frame)
{
    return (int)send(fd, frame, sizeof(*frame), MSG_NOSIGNAL);
}

int cansock_read(int fd, struct can_frame* frame)
{
    return (int)recv(fd, frame, sizeof(*frame), 0);
}
