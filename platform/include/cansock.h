#pragma once
// The kernel side of a CAN port. On the dash a SocketCAN raw socket; in the simulated
// device a socket of the virtual bus (ROOT/run/can/canN). Each call is one kernel
// call there and returns what it returns (0 or a descriptor, -1 with errno set).
#include <linux/can.h>
#include <sys/time.h>

#include "dash_types.h"

int cansock_socket(void);                                  // socket(PF_CAN, SOCK_RAW, CAN_RAW)
int cansock_set_rcvbuf(int fd, int bytes);                 // SO_RCVBUF
int cansock_set_txqueuelen(int fd, const char* ifname, int frames);  // SIOCSIFTXQLEN
int cansock_ifindex(int fd, const char* ifname);           // SIOCGIFINDEX: the index, or -1
int cansock_bind(int fd, const char* ifname, int ifindex); // bind to AF_CAN
int cansock_set_error_filter(int fd, U32 mask);            // CAN_RAW_ERR_FILTER
int cansock_set_loopback(int fd, int enable);              // CAN_RAW_LOOPBACK
int cansock_timestamp(int fd, struct timeval* stamp);      // SIOCGSTAMP of the last frame read
// One frame in or out; never raises SIGPIPE. The byte count, or -1.
int cansock_write(int fd, const struct can_frame* frame);
int cansock_read(int fd, struct can_frame* frame);
