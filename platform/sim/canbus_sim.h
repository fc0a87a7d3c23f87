#pragma once
// Where the virtual CAN bus of a device root listens: ROOT/run/can/canN, Unix
// SOCK_SEQPACKET sockets carrying one struct can_frame a packet.
#include <sys/un.h>

constexpr int CANBUS_PORTS = 2;

// "can0" gives 0, "can1" 1; -1 for any other name.
int canbus_port_of(const char* ifname);
// The socket address of a port's bus; 0 when the name is unknown or the path too long.
int canbus_address(const char* ifname, struct sockaddr_un* addr);
