// motordash-can: the virtual CAN bus of a simulated device, and tools to watch it,
// send on it and replay recordings into it.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

#include "can_bus.h"
#include "can_dbc.h"
#include "can_log.h"
#include "tool_clock.h"
#include "tool_commands.h"

namespace {

double _monotonic(void)
{
    return tool_monotonic_ms() / 1000.0;
}

int _bus(int argc, char** argv)
{
    if (argc != 1) {
        fprintf(stderr, "usage: motordash-can bus ROOT\n");
        return 2;
    }
    return can_bus_serve(argv[0]);
}

// dump ROOT IFNAME [-n COUNT] [-t SECONDS]
int _dump(int argc, char** argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: motordash-can dump ROOT can0|can1 [-n COUNT] [-t SECONDS]\n");
        return 2;
    }
    long count = -1;
    double seconds = -1;
    for (int i = 2; i + 1 < argc; i += 2) {
        if (!strcmp(argv[i], "-n")) count = strtol(argv[i + 1], nullptr, 10);
        else if (!strcmp(argv[i], "-t")) seconds = strtod(argv[i + 1], nullptr);
        else {
            fprintf(stderr, "motordash-can dump: unknown option '%s'\n", argv[i]);
            return 2;
        }
    }
    std::string error;
    const int fd = can_bus_connect(argv[0], argv[1], &error);
    if (fd < 0) {
        fprintf(stderr, "motordash-can dump: %s\n", error.c_str());
        return 1;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);
    const double end = seconds >= 0 ? _monotonic() + seconds : 0;
    while (count != 0) {
        int timeout = -1;
        if (seconds >= 0) {
            const double left = end - _monotonic();
            if (left <= 0) break;
            timeout = (int)(left * 1000) + 1;
        }
        struct pollfd p = {fd, POLLIN, 0};
        if (poll(&p, 1, timeout) <= 0) continue;
        struct can_frame frame;
        const ssize_t got = recv(fd, &frame, sizeof(frame), 0);
        if (got <= 0) {
            fprintf(stderr, "motordash-can dump: the bus has stopped\n");
            close(fd);
            return 1;
        }
        if (got != (ssize_t)sizeof(frame)) continue;
        printf("%s\n", can_format_log_line(tool_realtime_s(), argv[1], frame).c_str());
        if (count > 0) count--;
    }
    close(fd);
    return 0;
}

int _send(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: motordash-can send ROOT can0|can1 ID#DATA\n");
        return 2;
    }
    struct can_frame frame;
    if (!can_parse_frame(argv[2], &frame)) {
        fprintf(stderr, "motordash-can send: bad frame '%s' (123#11223344, 12345678#11.22 or 123#R)\n", argv[2]);
        return 2;
    }
    std::string error;
    const int fd = can_bus_connect(argv[0], argv[1], &error);
    if (fd < 0) {
        fprintf(stderr, "motordash-can send: %s\n", error.c_str());
        return 1;
    }
    const bool ok = send(fd, &frame, sizeof(frame), MSG_NOSIGNAL) == (ssize_t)sizeof(frame);
    close(fd);
    if (!ok) fprintf(stderr, "motordash-can send: %s\n", strerror(errno));
    return ok ? 0 : 1;
}

// Replays a log with its own timing, each frame on the interface the log names.
int _play(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: motordash-can play ROOT FILE\n");
        return 2;
    }
    FILE* f = fopen(argv[1], "r");
    if (!f) {
        fprintf(stderr, "motordash-can play: cannot read %s: %s\n", argv[1], strerror(errno));
        return 1;
    }
    std::map<std::string, int> ports;
    char line[512];
    int lineNo = 0, status = 0;
    double firstStamp = -1, start = _monotonic();
    while (fgets(line, sizeof(line), f)) {
        lineNo++;
        line[strcspn(line, "\r\n")] = '\0';
        if (line[0] == '\0' || line[0] == '#') continue;
        CAN_LOG_LINE_T entry;
        if (!can_parse_log_line(line, &entry)) {
            fprintf(stderr, "motordash-can play: %s:%d: not a log line: %s\n", argv[1], lineNo, line);
            status = 1;
            break;
        }
        if (!ports.count(entry.ifname)) {
            std::string error;
            const int fd = can_bus_connect(argv[0], entry.ifname.c_str(), &error);
            if (fd < 0) {
                fprintf(stderr, "motordash-can play: %s:%d: %s\n", argv[1], lineNo, error.c_str());
                status = 1;
                break;
            }
            ports[entry.ifname] = fd;
        }
        if (firstStamp < 0) firstStamp = entry.time;
        const double due = start + (entry.time - firstStamp);
        const double wait = due - _monotonic();
        if (wait > 0) {
            struct timespec ts = {(time_t)wait, (long)((wait - (time_t)wait) * 1e9)};
            nanosleep(&ts, nullptr);
        }
        if (send(ports[entry.ifname], &entry.frame, sizeof(entry.frame), MSG_NOSIGNAL) != (ssize_t)sizeof(entry.frame)) {
            fprintf(stderr, "motordash-can play: the bus has stopped\n");
            status = 1;
            break;
        }
    }
    fclose(f);
    for (auto& p : ports) close(p.second);
    return status;
}

constexpr TOOL_COMMAND_T m_commands[] = {
    {"bus", _bus, "bus ROOT                            serve the virtual bus of a device root"},
    {"dump", _dump, "dump ROOT can0|can1 [-n N] [-t S]   print the frames on a port, candump log format"},
    {"send", _send, "send ROOT can0|can1 ID#DATA         send one frame"},
    {"play", _play, "play ROOT FILE                      replay a candump log with its timing"},
    {"dbc", can_dbc, "dbc [FILE]                          write the dash's CAN message set as a DBC file"},
};

}  // namespace

int main(int argc, char** argv)
{
    return tool_dispatch("motordash-can", m_commands, argc, argv);
}
