#include "can_bus.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int BUS_PORTS = 2;
// A client that stops reading gets this many frames kept for it, about ten seconds
// of a full bus, before frames to it are dropped.
constexpr size_t CLIENT_QUEUE_LIMIT = 80000;
constexpr int SOCKET_BUFFER_BYTES = 1 << 20;

struct CLIENT_T {
    int fd;
    int port;
    std::deque<struct can_frame> queue;  // frames the socket could not take yet
    size_t dropped;
};

volatile sig_atomic_t m_stop = 0;

void _onStop(int)
{
    m_stop = 1;
}

std::string _path(const std::string& root, int port)
{
    return root + "/run/can/can" + std::to_string(port);
}

bool _address(const std::string& path, struct sockaddr_un* addr)
{
    if (path.size() >= sizeof(addr->sun_path)) return false;
    memset(addr, 0, sizeof(*addr));
    addr->sun_family = AF_UNIX;
    memcpy(addr->sun_path, path.c_str(), path.size() + 1);
    return true;
}

// Sends what the client's queue holds, then `frame` if given; queues what the socket
// cannot take now. False when the client has gone.
bool _deliver(CLIENT_T& c, const struct can_frame* frame)
{
    while (!c.queue.empty()) {
        if (send(c.fd, &c.queue.front(), sizeof(struct can_frame), MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
            if (errno == EAGAIN || errno == EWOULDBLOCK) break;
            return false;
        }
        c.queue.pop_front();
    }
    if (!frame) return true;
    if (c.queue.empty()) {
        if (send(c.fd, frame, sizeof(*frame), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0) return true;
        if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
    }
    if (c.queue.size() < CLIENT_QUEUE_LIMIT) {
        c.queue.push_back(*frame);
    } else if (c.dropped++ == 0) {
        fprintf(stderr, "motordash-can bus: a client of can%d does not read; dropping its frames\n", c.port);
    }
    return true;
}

}  // namespace

int can_bus_connect(const std::string& root, const char* ifname, std::string* error)
{
    const std::string path = root + "/run/can/" + ifname;
    struct sockaddr_un addr;
    if (strcmp(ifname, "can0") != 0 && strcmp(ifname, "can1") != 0) {
        *error = std::string("unknown interface '") + ifname + "' (can0 or can1)";
        return -1;
    }
    if (!_address(path, &addr)) {
        *error = "path too long: " + path;
        return -1;
    }
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0 || connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0) {
        *error = "no bus is running at " + path + " (start one with: motordash-can bus " + root + "): " + strerror(errno);
        if (fd >= 0) close(fd);
        return -1;
    }
    return fd;
}

int can_bus_serve(const std::string& root)
{
    std::string ignored;
    const int probe = can_bus_connect(root, "can0", &ignored);
    if (probe >= 0) {
        close(probe);
        fprintf(stderr, "motordash-can bus: a bus is already running in %s\n", root.c_str());
        return 1;
    }
    mkdir((root + "/run").c_str(), 0755);
    mkdir((root + "/run/can").c_str(), 0755);

    const int ep = epoll_create1(EPOLL_CLOEXEC);
    int listeners[BUS_PORTS];
    for (int port = 0; port < BUS_PORTS; port++) {
        const std::string path = _path(root, port);
        struct sockaddr_un addr;
        unlink(path.c_str());  // a stale socket of a bus that died
        listeners[port] = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        if (!_address(path, &addr) || listeners[port] < 0 ||
            bind(listeners[port], reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0 ||
            listen(listeners[port], 64) != 0) {
            fprintf(stderr, "motordash-can bus: cannot listen at %s: %s\n", path.c_str(), strerror(errno));
            return 1;
        }
        struct epoll_event ev = {};
        ev.events = EPOLLIN;
        ev.data.u64 = (uint64_t)port;  // listeners are 0 and 1, clients their index + 2
        epoll_ctl(ep, EPOLL_CTL_ADD, listeners[port], &ev);
    }

    struct sigaction sa = {};
    sa.sa_handler = _onStop;
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);
    printf("motordash-can bus: serving %s/run/can/can0 and can1\n", root.c_str());
    fflush(stdout);

    std::vector<CLIENT_T*> clients;  // slot index + 2 is the epoll key; nullptr is free
    auto drop = [&](size_t slot) {
        CLIENT_T* c = clients[slot];
        epoll_ctl(ep, EPOLL_CTL_DEL, c->fd, nullptr);
        close(c->fd);
        delete c;
        clients[slot] = nullptr;
    };
    auto watchOutput = [&](size_t slot) {
        struct epoll_event ev = {};
        ev.events = EPOLLIN | (clients[slot]->queue.empty() ? 0u : (uint32_t)EPOLLOUT);
        ev.data.u64 = slot + 2;
        epoll_ctl(ep, EPOLL_CTL_MOD, clients[slot]->fd, &ev);
    };

    struct epoll_event events[64];
    while (!m_stop) {
        const int n = epoll_wait(ep, events, 64, 500);
        for (int i = 0; i < n; i++) {
            const uint64_t key = events[i].data.u64;
            if (key < BUS_PORTS) {
                int fd;
                while ((fd = accept4(listeners[key], nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0) {
                    const int size = SOCKET_BUFFER_BYTES;
                    setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &size, sizeof(size));
                    size_t slot = 0;
                    while (slot < clients.size() && clients[slot]) slot++;
                    if (slot == clients.size()) clients.push_back(nullptr);
                    clients[slot] = new CLIENT_T{fd, (int)key, {}, 0};
                    struct epoll_event ev = {};
                    ev.events = EPOLLIN;
                    ev.data.u64 = slot + 2;
                    epoll_ctl(ep, EPOLL_CTL_ADD, fd, &ev);
                }
                continue;
            }
            const size_t slot = (size_t)(key - 2);
            if (slot >= clients.size() || !clients[slot]) continue;
            CLIENT_T* from = clients[slot];
            if (events[i].events & EPOLLOUT) {
                if (!_deliver(*from, nullptr)) {
                    drop(slot);
                    continue;
                }
                watchOutput(slot);
            }
            if (!(events[i].events & (EPOLLIN | EPOLLHUP | EPOLLERR))) continue;
            bool gone = false;
            for (;;) {
                struct can_frame frame;
                const ssize_t got = recv(from->fd, &frame, sizeof(frame), MSG_DONTWAIT);
                if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
                if (got <= 0) {
                    gone = true;
                    break;
                }
                if (got != (ssize_t)sizeof(frame)) continue;  // not a frame: ignored
                for (size_t other = 0; other < clients.size(); other++) {
                    CLIENT_T* to = clients[other];
                    if (!to || other == slot || to->port != from->port) continue;
                    const bool wasEmpty = to->queue.empty();
                    if (!_deliver(*to, &frame)) {
                        drop(other);
                    } else if (wasEmpty != to->queue.empty()) {
                        watchOutput(other);
                    }
                }
            }
            if (gone) drop(slot);
        }
    }
    for (size_t slot = 0; slot < clients.size(); slot++) {
        if (clients[slot]) drop(slot);
    }
    for (int port = 0; port < BUS_PORTS; port++) {
        close(listeners[port]);
        unlink(_path(root, port).c_str());
    }
    close(ep);
    return 0;
}
