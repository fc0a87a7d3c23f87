#include "ioboard_control.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int REPLY_TIMEOUT_MS = 2000;
constexpr size_t REPLY_LIMIT = 16384;

}  // namespace

std::string ioboard_control_path(const std::string& root)
{
    return root + "/run/ioboard/control";
}

bool ioboard_control(const std::string& root, const std::string& request, std::string* reply)
{
    const std::string path = ioboard_control_path(root);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof(addr.sun_path)) {
        *reply = "the path " + path + " is too long for a socket";
        return false;
    }
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0 || connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0 ||
        send(fd, request.data(), request.size(), MSG_NOSIGNAL) != (ssize_t)request.size()) {
        *reply = "no I/O board at " + path + ": " + strerror(errno);
        if (fd >= 0) close(fd);
        return false;
    }
    struct pollfd p = {fd, POLLIN, 0};
    std::string buffer(REPLY_LIMIT, '\0');
    const ssize_t n = poll(&p, 1, REPLY_TIMEOUT_MS) == 1 ? recv(fd, buffer.data(), buffer.size(), 0) : -1;
    close(fd);
    if (n <= 0) {
        *reply = "the I/O board at " + path + " does not answer";
        return false;
    }
    buffer.resize((size_t)n);
    *reply = buffer;
    return true;
}
