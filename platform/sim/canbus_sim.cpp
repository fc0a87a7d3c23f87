#include "canbus_sim.h"

#include <cstdio>
#include <cstring>
#include <sys/socket.h>

#include "dash_root.h"

int canbus_port_of(const char* ifname)
{
    if (!ifname) return -1;
    for (int port = 0; port < CANBUS_PORTS; port++) {
        char name[16];  // room for any int, whatever the compiler proves of `port`
        snprintf(name, sizeof(name), "can%d", port);
        if (strcmp(ifname, name) == 0) return port;
    }
    return -1;
}

int canbus_address(const char* ifname, struct sockaddr_un* addr)
{
    if (canbus_port_of(ifname) < 0) return 0;
    char rel[32], path[ROOT_PATH_MAX];
    snprintf(rel, sizeof(rel), "/run/can/%s", ifname);
    if (!root_path(path, sizeof(path), rel) || strlen(path) >= sizeof(addr->sun_path)) return 0;
    memset(addr, 0, sizeof(*addr));
    addr->sun_family = AF_UNIX;
    strcpy(addr->sun_path, path);
    return 1;
}
