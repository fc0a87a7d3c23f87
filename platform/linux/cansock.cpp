// SocketCAN raw sockets.
#include "cansock.h"

#include <cstring>
#include <linux/can/raw.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

int cansock_socket(void)
{
    return socket(PF_CAN, SOCK_RAW | SOCK_CLOEXEC, CAN_RAW);
}

int cansock_set_rcvbuf(int fd, int bytes)
{
    return setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof(bytes));
}

static int _ifreq(const char* ifname, struct ifreq* ifr)
{
    memset(ifr, 0, sizeof(*ifr));
    strncpy(ifr->ifr_name, ifname, IFNAMSIZ - 1);
    return 0;
}

int cansock_set_txqueuelen(int fd, const char* ifname, int frames)
{
    struct ifreq ifr;
    _ifreq(ifname, &ifr);
    ifr.ifr_qlen = frames;
    return ioctl(fd, SIOCSIFTXQLEN, &ifr);
}

int cansock_ifindex(int fd, const char* ifname)
{
    struct ifreq ifr;
    _ifreq(ifname, &ifr);
    return ioctl(fd, SIOCGIFINDEX, &ifr) < 0 ? -1 : ifr.ifr_ifindex;
}

int cansock_bind(int fd, const char*, int ifindex)
{
    struct sockaddr_can addr;
    memset(&addr, 0, sizeof(addr));
    addr.can_family = AF_CAN;
    addr.can_ifindex = ifindex;
    return bind(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr));
}

int cansock_set_error_filter(int fd, U32 mask)
{
    can_err_mask_t m = mask;
    return setsockopt(fd, SOL_CAN_RAW, CAN_RAW_ERR_FILTER, &m, sizeof(m));
}

int cansock_set_loopback(int fd, int enable)
{
    return setsockopt(fd, SOL_CAN_RAW, CAN_RAW_LOOPBACK, &enable, sizeof(enable));
}

int cansock_timestamp(int fd, struct timeval* stamp)
{
    return ioctl(fd, SIOCGSTAMP, stamp);
}

int cansock_write(int fd, const struct can_frame* frame)
{
    return (int)write(fd, frame, sizeof(*frame));
}

int cansock_read(int fd, struct can_frame* frame)
{
    return (int)read(fd, frame, sizeof(*frame));
}
