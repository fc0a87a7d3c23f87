// motordash-ioboard: the I/O board of a simulated dash. It holds a pseudo-terminal linked
// at ROOT/dev/ttySP2, where the dash's serial driver finds it, runs the board's firmware
// on it (ioboard_board) with its flash kept in ROOT/var/lib/ioboard/flash.bin, and takes
// requests on ROOT/run/ioboard/control (ioboard_control). With --line it answers on a
// real serial port instead, the far end of the dash's line on a machine that has one.
//
// The board's sentences leave at the pace of the real line (115200 baud, ten bits a
// byte), and a reply starts only once the command could have arrived: the dash then
// meets the same stream density and round-trip times as on the device, and an update
// takes as long. --baud 0 drops the pacing, for tests that only check what is said.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

#include "ioboard_board.h"
#include "ioboard_control.h"
#include "ioboard_image.h"

namespace {

constexpr long LINE_BAUD = 115200;
constexpr uint64_t STREAM_PERIOD_US = 50000;
constexpr size_t TX_QUEUE_LIMIT = 4096;  // sentences; beyond, the board's UART overflows
constexpr size_t CONTROL_CLIENTS = 16;

struct TX_T {
    uint64_t dueUs;  // when its last byte has crossed the line
    std::string bytes;
};

struct SIM_T {
    std::string root;
    std::string line;  // a serial port given by --line; empty for a pseudo-terminal
    long baud = LINE_BAUD;
    int master = -1;
    int slave = -1;  // held open so the terminal stays raw and the master never hangs up
    int listener = -1;
    std::vector<int> clients;
    std::string ptsName;
    uint8_t* flash = nullptr;
    IOBOARD_T board;
    bool attached = true;
    std::deque<TX_T> tx;
    uint64_t lineFreeUs = 0;
    uint64_t nextStreamUs = 0;
};

SIM_T m_sim;
volatile sig_atomic_t m_stop = 0;

void _onStop(int)
{
    m_stop = 1;
}

uint64_t _nowUs(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (uint64_t)ts.tv_sec * 1000000 + (uint64_t)ts.tv_nsec / 1000;
}

uint64_t _wireUs(size_t bytes)
{
    return m_sim.baud > 0 ? bytes * 10 * 1000000 / (uint64_t)m_sim.baud : 0;
}

bool _mkdirs(const std::string& path)
{
    for (size_t i = 1; i <= path.size(); i++) {
        if (i != path.size() && path[i] != '/') continue;
        if (mkdir(path.substr(0, i).c_str(), 0755) != 0 && errno != EEXIST) return false;
    }
    return true;
}

// The flash as a shared mapping of its file: every erase and programmed byte is in the
// file at once, so a board killed mid-update comes back with a half-written flash. A
// missing file is the factory's: an older application than the one `init` provides.
uint8_t* _mapFlash(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    struct stat st;
    if (fd < 0 || fstat(fd, &st) != 0) return nullptr;
    if (st.st_size == 0) {
        std::vector<uint8_t> image(IOBOARD_FIRMWARE_SIZE);
        ioboard_image_make(image.data(), IOBOARD_FACTORY_VERSION, IOBOARD_TYPICAL_CODE_BYTES, 1);
        if (pwrite(fd, image.data(), IOBOARD_FLASH_SIZE, 0) != (ssize_t)IOBOARD_FLASH_SIZE) {
            close(fd);
            return nullptr;
        }
    } else if (st.st_size != IOBOARD_FLASH_SIZE) {
        // Cut short or grown by hand: what is missing reads as erased.
        const std::vector<uint8_t> erased(IOBOARD_FLASH_SIZE, 0xFF);
        if (st.st_size < IOBOARD_FLASH_SIZE)
            (void)!pwrite(fd, erased.data(), IOBOARD_FLASH_SIZE - st.st_size, st.st_size);
        if (ftruncate(fd, IOBOARD_FLASH_SIZE) != 0) {
            close(fd);
            return nullptr;
        }
    }
    void* map = mmap(nullptr, IOBOARD_FLASH_SIZE, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    close(fd);
    return map == MAP_FAILED ? nullptr : static_cast<uint8_t*>(map);
}

// The product id from the factory record; 0 (the small model) when unreadable.
uint32_t _productId(const std::string& root)
{
    uint8_t record[8] = {};
    FILE* f = fopen((root + "/sys/uid/otp/id.bin").c_str(), "rbe");
    if (!f) return 0;
    const bool ok = fread(record, 1, sizeof(record), f) == sizeof(record);
    fclose(f);
    return ok ? (uint32_t)record[4] | (uint32_t)record[5] << 8 | (uint32_t)record[6] << 16 | (uint32_t)record[7] << 24
              : 0;
}

// A serial port of the machine, raw at the line's speed. The dash finds its own end
// of the line where it always does: nothing is linked.
std::string _openPort(void)
{
    m_sim.master = open(m_sim.line.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    struct termios t;
    if (m_sim.master < 0 || tcgetattr(m_sim.master, &t) != 0) {
        return "cannot open " + m_sim.line + ": " + strerror(errno);
    }
    cfmakeraw(&t);
    t.c_cflag |= CLOCAL | CREAD;
    cfsetspeed(&t, B115200);
    if (tcsetattr(m_sim.master, TCSANOW, &t) != 0) return "cannot set up " + m_sim.line + ": " + strerror(errno);
    tcflush(m_sim.master, TCIOFLUSH);
    m_sim.ptsName = m_sim.line;
    return "";
}

// A raw pseudo-terminal; its slave linked at dev/ttySP2, replacing a link left behind.
std::string _openLine(void)
{
    if (!m_sim.line.empty()) return _openPort();
    m_sim.master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_sim.master < 0 || grantpt(m_sim.master) != 0 || unlockpt(m_sim.master) != 0) {
        return std::string("cannot open a pseudo-terminal: ") + strerror(errno);
    }
    m_sim.ptsName = ptsname(m_sim.master);
    m_sim.slave = open(m_sim.ptsName.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    struct termios t;
    if (m_sim.slave < 0 || tcgetattr(m_sim.slave, &t) != 0) return "cannot open " + m_sim.ptsName;
    cfmakeraw(&t);
    tcsetattr(m_sim.slave, TCSANOW, &t);
    const std::string link = m_sim.root + "/dev/ttySP2", fresh = link + ".new";
    unlink(fresh.c_str());
    if (!_mkdirs(m_sim.root + "/dev") || symlink(m_sim.ptsName.c_str(), fresh.c_str()) != 0 ||
        rename(fresh.c_str(), link.c_str()) != 0) {
        return "cannot link " + link + ": " + strerror(errno);
    }
    return "";
}

std::string _openControl(void)
{
    const std::string path = ioboard_control_path(m_sim.root);
    struct sockaddr_un addr = {};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof(addr.sun_path)) return "the path " + path + " is too long for a socket";
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    _mkdirs(m_sim.root + "/run/ioboard");
    unlink(path.c_str());
    m_sim.listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_sim.listener < 0 || bind(m_sim.listener, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0 ||
        listen(m_sim.listener, 8) != 0) {
        return "cannot listen on " + path + ": " + strerror(errno);
    }
    return "";
}

// Schedules sentences: each leaves when the line is free and has carried it, and not
// before `afterUs` (the command it answers still arriving).
void _send(const std::vector<std::string>& sentences, uint64_t afterUs)
{
    const uint64_t now = _nowUs();
    for (const std::string& s : sentences) {
        if (m_sim.tx.size() >= TX_QUEUE_LIMIT) return;
        m_sim.lineFreeUs = std::max(now + afterUs, m_sim.lineFreeUs) + _wireUs(s.size());
        m_sim.tx.push_back({m_sim.lineFreeUs, s});
    }
}

// Writes what is due. A dash that doesn't read fills the terminal's buffer: then the
// rest is lost, as on a serial line nobody listens to.
void _transmit(uint64_t now)
{
    while (!m_sim.tx.empty() && m_sim.tx.front().dueUs <= now) {
        const std::string& s = m_sim.tx.front().bytes;
        (void)!write(m_sim.master, s.data(), s.size());
        m_sim.tx.pop_front();
    }
}

void _receive(void)
{
    uint8_t buffer[4096];
    ssize_t n;
    while ((n = read(m_sim.master, buffer, sizeof(buffer))) > 0) {
        if (!m_sim.attached) continue;
        const bool wasApplication = m_sim.board.application;
        std::vector<std::string> replies;
        ioboard_receive(&m_sim.board, buffer, (size_t)n, &replies);
        _send(replies, _wireUs((size_t)n));
        if (wasApplication != m_sim.board.application) {
            if (m_sim.board.application) {
                printf("motordash-ioboard: application v%u runs\n", ioboard_application_version(&m_sim.board));
            } else {
                printf("motordash-ioboard: reset into the bootloader v%u\n", IOBOARD_BOOTLOADER_VERSION);
            }
        }
    }
}

std::string _request(const std::string& request)
{
    char name[32], value[64], tail;
    if (request == "status") {
        return std::string("{\"link\":\"") + (m_sim.attached ? "on" : "off") + "\"," +
               ioboard_status_json(&m_sim.board).substr(1);
    }
    if (sscanf(request.c_str(), "set %31s %63s %c", name, value, &tail) == 2) {
        const std::string error = ioboard_set_input(&m_sim.board, name, value);
        return error.empty() ? "ok" : "error: " + error;
    }
    if (request == "link on" || request == "link off") {
        m_sim.attached = request == "link on";
        // Off the link, what was on its way is lost and a sentence half heard is noise.
        m_sim.tx.clear();
        m_sim.board.length = 0;
        printf("motordash-ioboard: %s the link\n", m_sim.attached ? "back on" : "pulled off");
        return "ok";
    }
    return "error: unknown request '" + request + "' (status, set NAME VALUE, link on|off)";
}

void _serveClient(int fd)
{
    char buffer[256];
    const ssize_t n = recv(fd, buffer, sizeof(buffer), MSG_DONTWAIT);
    if (n > 0) {
        const std::string reply = _request(std::string(buffer, (size_t)n));
        send(fd, reply.data(), reply.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    } else if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        return;
    }
    close(fd);
    m_sim.clients.erase(std::find(m_sim.clients.begin(), m_sim.clients.end(), fd));
}

void _run(void)
{
    sigset_t stopSignals, waitMask;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    sigprocmask(SIG_BLOCK, &stopSignals, &waitMask);
    sigdelset(&waitMask, SIGTERM);
    sigdelset(&waitMask, SIGINT);

    m_sim.nextStreamUs = _nowUs() + STREAM_PERIOD_US;
    while (!m_stop) {
        uint64_t now = _nowUs();
        _transmit(now);
        if (now >= m_sim.nextStreamUs) {
            std::vector<std::string> cycle;
            if (m_sim.attached) ioboard_stream(&m_sim.board, &cycle);
            _send(cycle, 0);
            m_sim.nextStreamUs = std::max(m_sim.nextStreamUs + STREAM_PERIOD_US, now + STREAM_PERIOD_US / 2);
        }
        uint64_t wake = m_sim.nextStreamUs;
        if (!m_sim.tx.empty()) wake = std::min(wake, m_sim.tx.front().dueUs);
        now = _nowUs();
        const uint64_t waitUs = wake > now ? wake - now : 0;
        const struct timespec timeout = {(time_t)(waitUs / 1000000), (long)(waitUs % 1000000) * 1000};

        std::vector<struct pollfd> fds = {{m_sim.master, POLLIN, 0}, {m_sim.listener, POLLIN, 0}};
        for (int fd : m_sim.clients) fds.push_back({fd, POLLIN, 0});
        if (ppoll(fds.data(), fds.size(), &timeout, &waitMask) <= 0) continue;
        if (fds[0].revents & POLLIN) _receive();
        if (fds[1].revents & POLLIN) {
            const int fd = accept4(m_sim.listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
            if (fd >= 0 && m_sim.clients.size() < CONTROL_CLIENTS) {
                m_sim.clients.push_back(fd);
            } else if (fd >= 0) {
                close(fd);
            }
        }
        for (size_t i = 2; i < fds.size(); i++) {
            if (fds[i].revents) _serveClient(fds[i].fd);
        }
    }
}

// Leaves no link behind that could lead the dash to a terminal reused by someone else.
void _cleanUp(void)
{
    const std::string link = m_sim.root + "/dev/ttySP2";
    char target[256] = {};
    if (m_sim.line.empty() && readlink(link.c_str(), target, sizeof(target) - 1) > 0 && m_sim.ptsName == target)
        unlink(link.c_str());
    unlink(ioboard_control_path(m_sim.root).c_str());
    if (m_sim.flash) msync(m_sim.flash, IOBOARD_FLASH_SIZE, MS_SYNC);
}

int _usage(void)
{
    fprintf(stderr,
            "usage: motordash-ioboard ROOT [--baud N] [--line TTY]\n"
            "                                              the I/O board of a device root, on ROOT/dev/ttySP2\n"
            "                                              or the serial port TTY; --baud 0 sends without the\n"
            "                                              line's pacing\n"
            "       motordash-ioboard ROOT status          the running board's state as JSON\n"
            "       motordash-ioboard ROOT set NAME VALUE  an input: an1-an14 (V), res1-res14 (ohm), sw1-sw3,\n"
            "                                              swx (1 closed), tach (Hz), supply (V)\n"
            "       motordash-ioboard ROOT link off|on     pulls the board off the link, or puts it back\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2 || argv[1][0] == '-') return _usage();
    m_sim.root = argv[1];
    if (argc > 2 && argv[2][0] != '-') {
        std::string request = argv[2], reply;
        for (int i = 3; i < argc; i++) request += std::string(" ") + argv[i];
        const bool ok = ioboard_control(m_sim.root, request, &reply);
        fprintf(ok ? stdout : stderr, "%s\n", reply.c_str());
        return ok && reply.rfind("error", 0) != 0 ? 0 : 1;
    }
    for (int i = 2; i < argc; i++) {
        char* end = nullptr;
        if (!strcmp(argv[i], "--baud") && i + 1 < argc) {
            m_sim.baud = strtol(argv[++i], &end, 10);
            if (*end || m_sim.baud < 0) return _usage();
        } else if (!strcmp(argv[i], "--line") && i + 1 < argc) {
            m_sim.line = argv[++i];
        } else {
            return _usage();
        }
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);
    struct stat st;
    if (stat(m_sim.root.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        fprintf(stderr, "motordash-ioboard: no device root at %s\n", m_sim.root.c_str());
        return 1;
    }
    struct sigaction stop = {};
    stop.sa_handler = _onStop;
    sigaction(SIGTERM, &stop, nullptr);
    sigaction(SIGINT, &stop, nullptr);
    signal(SIGPIPE, SIG_IGN);

    const std::string flashDir = m_sim.root + "/var/lib/ioboard";
    m_sim.flash = _mkdirs(flashDir) ? _mapFlash(flashDir + "/flash.bin") : nullptr;
    if (!m_sim.flash) {
        fprintf(stderr, "motordash-ioboard: cannot keep the flash in %s/flash.bin: %s\n", flashDir.c_str(),
                strerror(errno));
        return 1;
    }
    ioboard_init(&m_sim.board, m_sim.flash, _productId(m_sim.root) == 0);
    std::string error = _openLine();
    if (error.empty()) error = _openControl();
    if (!error.empty()) {
        fprintf(stderr, "motordash-ioboard: %s\n", error.c_str());
        _cleanUp();
        return 1;
    }
    const std::string where = m_sim.line.empty() ? m_sim.ptsName + " at " + m_sim.root + "/dev/ttySP2" : m_sim.line;
    printf("motordash-ioboard: on %s, bootloader v%u, application v%u, %ld baud\n", where.c_str(),
           IOBOARD_BOOTLOADER_VERSION, ioboard_application_version(&m_sim.board), m_sim.baud);
    _run();
    _cleanUp();
    printf("motordash-ioboard: off\n");
    return 0;
}
