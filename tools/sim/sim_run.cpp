// motordash-sim run: a whole simulated dash on this PC. It keeps a device root (a power
// cycle keeps it, as a dash keeps its flash), serves the virtual CAN bus, runs the dash
// in it, plays the engine controller and the USB stick's system scripts, and serves a
// web page and an HTTP API to watch the screen and press the keys.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <fcntl.h>
#include <linux/can.h>
#include <condition_variable>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "can_bus.h"
#include "can_log.h"
#include "ecu_model.h"
#include "http_server.h"
#include "ioboard_control.h"
#include "png_io.h"
#include "sim_commands.h"
#include "sim_logs.h"
#include "sim_page.h"
#include "sim_screen.h"
#include "tool_clock.h"
#include "tool_commands.h"
#include "touch_sim.h"

namespace {

constexpr const char* STICK_FOLDER = "disk_sda1";
constexpr size_t FRAME_LOG_LINES = 400;
constexpr int ECU_STEP_MS = 5;

enum STICK_T { STICK_NONE, STICK_INSERTED, STICK_EJECTED };
const char* const m_stickNames[] = {"none", "inserted", "ejected"};

struct SIM_T {
    std::string root;
    std::string bin;
    std::string product;
    std::atomic<bool> stop{false};
    std::mutex lock;  // everything below
    pid_t dash = -1;
    pid_t bus = -1;
    pid_t board = -1;  // the simulated I/O board; stays -1 with --no-ioboard
    bool withBoard = true;
    bool calibrateTouch = false;  // the next start of the dash shows the touch calibration
    STICK_T stick = STICK_NONE;
    bool keys[5] = {};
    ECU_MODEL_T ecu;
    std::deque<std::string> frames;  // what the dash sent, as log lines
    std::string settings;            // the last settings frame, described
    unsigned powerCycles = 0;
};

SIM_T m_sim;

// A child that ends with the simulator, whatever ends it.
// `env`: "NAME=value" settings added to the child's environment.
pid_t _fork(const std::vector<std::string>& args, const std::vector<std::string>& env)
{
    const pid_t pid = fork();
    if (pid != 0) return pid;
    // A group of its own: Ctrl-C reaches only the simulator, which then ends the dash
    // through its shutdown rather than the terminal killing it mid-write.
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const std::string& e : env) putenv(const_cast<char*>(e.c_str()));
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    fprintf(stderr, "motordash-sim run: cannot start %s: %s\n", argv[0], strerror(errno));
    _exit(127);
}

// The parent-death signal comes when the thread that forked the child ends, not the
// process, and the HTTP server's threads end with their connections: a dash started by a
// power cycle from the page would be ended as the page's connection closed. So children
// are forked by one thread that lives as long as the simulator.
struct SPAWNER_T {
    std::mutex callers;  // one request at a time
    std::mutex lock;
    std::condition_variable changed;
    const std::vector<std::string>* args = nullptr;  // the request, null when served
    const std::vector<std::string>* env = nullptr;
    pid_t pid = -1;
};
// Never destroyed: its thread waits on it until the process ends.
SPAWNER_T& m_spawner = *new SPAWNER_T;

void _spawnerThread(void)
{
    std::unique_lock<std::mutex> guard(m_spawner.lock);
    for (;;) {
        m_spawner.changed.wait(guard, [] { return m_spawner.args != nullptr; });
        m_spawner.pid = _fork(*m_spawner.args, *m_spawner.env);
        m_spawner.args = nullptr;
        m_spawner.changed.notify_all();
    }
}

pid_t _spawn(const std::vector<std::string>& args, const std::vector<std::string>& env = {})
{
    static std::once_flag started;
    std::call_once(started, [] { std::thread(_spawnerThread).detach(); });
    std::lock_guard<std::mutex> caller(m_spawner.callers);
    std::unique_lock<std::mutex> guard(m_spawner.lock);
    m_spawner.args = &args;
    m_spawner.env = &env;
    m_spawner.changed.notify_all();
    m_spawner.changed.wait(guard, [] { return m_spawner.args == nullptr; });
    return m_spawner.pid;
}

// Ends a child: SIGTERM, then SIGKILL after `graceMs`.
void _end(pid_t pid, int graceMs)
{
    if (pid <= 0) return;
    kill(pid, SIGTERM);
    for (int waited = 0; waited < graceMs; waited += 10) {
        if (waitpid(pid, nullptr, WNOHANG) == pid) return;
        usleep(10000);
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

void _startDash(void)
{
    // The panel's calibration file is where a dash keeps it; the calibration screen is
    // asked for by the page, for one start.
    std::vector<std::string> env = {"DASH_ROOT=" + m_sim.root, "TSLIB_CALIBFILE=" + m_sim.root + "/etc/pointercal"};
    if (m_sim.calibrateTouch) env.push_back("MOTORDASH_CALIBRATE_TOUCH=1");
    m_sim.calibrateTouch = false;
    m_sim.dash = _spawn({m_sim.bin + "/motordash"}, env);
}

// The I/O board powers up with the dash, from the flash it keeps in the root. The dash
// probes it once at its start, so the board's line must be there first.
void _startBoard(void)
{
    const std::string link = m_sim.root + "/dev/ttySP2";
    if (!m_sim.withBoard) {
        unlink(link.c_str());  // a link left behind could lead to someone else's terminal
        return;
    }
    m_sim.board = _spawn({m_sim.bin + "/motordash-ioboard", m_sim.root});
    std::string reply;
    for (int waited = 0; waited < 3000 && !ioboard_control(m_sim.root, "status", &reply); waited += 10) usleep(10000);
}

void _endBoard(void)
{
    _end(m_sim.board, 1000);
    m_sim.board = -1;
}

// The device off: the dash, then the board. On: the board first, whose line the dash
// probes at its start.
void _powerOff(void)
{
    _end(m_sim.dash, 3000);
    m_sim.dash = -1;
    _endBoard();
}

void _powerOn(void)
{
    _startBoard();
    _startDash();
}

std::string _powerCycle(void)
{
    _powerOff();
    m_sim.powerCycles++;
    _powerOn();
    printf("motordash-sim: power cycle %u\n", m_sim.powerCycles);
    return "";
}

std::string _path(const char* rel)
{
    return m_sim.root + "/" + rel;
}

// ---- The USB stick's system scripts ------------------------------------------------

// Inserted: the stick's files (kept in ROOT/.stick between insertions) are mounted as
// media/disk_sda1, then usbinfo.txt names the folder.
std::string _usbInsert(void)
{
    if (m_sim.stick != STICK_NONE) return "a stick is in already";
    const std::string mount = _path("media/") + STICK_FOLDER;
    if (rename(_path(".stick").c_str(), mount.c_str()) != 0 && mkdir(mount.c_str(), 0755) != 0) {
        return "cannot mount the stick at " + mount + ": " + strerror(errno);
    }
    if (!tool_write_whole(_path("media/usbinfo.txt"), STICK_FOLDER)) return "cannot write media/usbinfo.txt";
    m_sim.stick = STICK_INSERTED;
    return "";
}

// True once the process blocks or catches SIGUSR1. In the first moments after its start
// the dash has done neither yet, and the signal's default action would end it.
bool _takesUsr1(pid_t pid)
{
    char path[64];
    snprintf(path, sizeof(path), "/proc/%d/status", (int)pid);
    FILE* f = fopen(path, "re");
    if (!f) return false;
    const unsigned long long bit = 1ULL << (SIGUSR1 - 1);
    bool takes = false;
    char line[256];
    unsigned long long mask = 0;
    while (fgets(line, sizeof(line), f)) {
        if (sscanf(line, "SigBlk: %llx", &mask) == 1 || sscanf(line, "SigCgt: %llx", &mask) == 1) {
            takes = takes || (mask & bit) != 0;
        }
    }
    fclose(f);
    return takes;
}

// Unmounted: the dash is told through app_command and SIGUSR1, once it can take it.
std::string _usbEject(void)
{
    if (m_sim.stick != STICK_INSERTED) return "no stick to eject";
    if (!tool_write_whole(_path("app/event/app_command"), "USBSTICK_EJECTREADY")) return "cannot write app/event/app_command";
    if (m_sim.dash > 0) {
        for (int waited = 0; waited < 5000 && !_takesUsr1(m_sim.dash); waited += 10) usleep(10000);
        if (_takesUsr1(m_sim.dash)) kill(m_sim.dash, SIGUSR1);
    }
    m_sim.stick = STICK_EJECTED;
    return "";
}

std::string _usbPull(void)
{
    if (m_sim.stick == STICK_NONE) return "no stick to pull";
    remove(_path("media/usbinfo.txt").c_str());
    rename((_path("media/") + STICK_FOLDER).c_str(), _path(".stick").c_str());
    m_sim.stick = STICK_NONE;
    return "";
}

// The scripts answer the dash's eject request.
void _watchScriptCommand(void)
{
    const std::string path = _path("app/event/script_command");
    FILE* f = fopen(path.c_str(), "r");
    if (!f) return;
    char text[64] = {};
    const size_t n = fread(text, 1, sizeof(text) - 1, f);
    fclose(f);
    remove(path.c_str());
    if (n >= 14 && !strncmp(text, "USBSTICK_EJECT", 14)) {
        std::lock_guard<std::mutex> guard(m_sim.lock);
        printf("motordash-sim: the dash asks to eject the stick\n");
        _usbEject();
    }
}

// ---- The engine controller ------------------------------------------------------------

struct ECU_LINK_T {
    int ports[2];
};

void _ecuSend(int port, const struct can_frame* frame, void* ctx)
{
    const ECU_LINK_T* link = static_cast<const ECU_LINK_T*>(ctx);
    if (port >= 0 && port < 2 && link->ports[port] >= 0) {
        send(link->ports[port], frame, sizeof(*frame), MSG_NOSIGNAL | MSG_DONTWAIT);
    }
}

void _ecuThread(void)
{
    ECU_LINK_T link = {{-1, -1}};
    std::string error;
    for (int port = 0; port < 2; port++) {
        link.ports[port] = can_bus_connect(m_sim.root, port ? "can1" : "can0", &error);
        if (link.ports[port] < 0) fprintf(stderr, "motordash-sim run: %s\n", error.c_str());
    }
    while (!m_sim.stop.load()) {
        {
            std::lock_guard<std::mutex> guard(m_sim.lock);
            ecu_model_step(&m_sim.ecu, tool_monotonic_ms(), _ecuSend, &link);
        }
        // What the dash sends back.
        struct pollfd p = {link.ports[0], POLLIN, 0};
        if (link.ports[0] < 0 || poll(&p, 1, ECU_STEP_MS) <= 0) {
            if (link.ports[0] < 0) usleep(ECU_STEP_MS * 1000);
            continue;
        }
        struct can_frame frame;
        while (recv(link.ports[0], &frame, sizeof(frame), MSG_DONTWAIT) == (ssize_t)sizeof(frame)) {
            std::lock_guard<std::mutex> guard(m_sim.lock);
            m_sim.frames.push_back(can_format_log_line(tool_realtime_s(), "can0", frame));
            if (m_sim.frames.size() > FRAME_LOG_LINES) m_sim.frames.pop_front();
            ecu_model_receive(&m_sim.ecu, 0, &frame);  // the car follows the dash's switches
            if (frame.can_id == 0x131) {
                const std::string settings = ecu_model_describe_settings(frame);
                if (settings != m_sim.settings) {
                    m_sim.settings = settings;
                    printf("ECU: frame 0x131 %s: %s\n", can_format_frame(frame).c_str(), settings.c_str());
                }
            }
        }
    }
    for (int fd : link.ports) {
        if (fd >= 0) close(fd);
    }
}

// ---- The HTTP API -----------------------------------------------------------------------

std::string _json(const std::string& text)
{
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        if ((unsigned char)c < 0x20) continue;
        out += c;
    }
    return out + "\"";
}

std::string _state(void)
{
    std::lock_guard<std::mutex> guard(m_sim.lock);
    std::string keys;
    for (bool k : m_sim.keys) keys += std::string(keys.empty() ? "" : ",") + (k ? "1" : "0");
    std::string scenarios;
    size_t count = 0;
    const char* const* names = ecu_model_scenarios(&count);
    for (size_t i = 0; i < count; i++) scenarios += std::string(i ? "," : "") + _json(names[i]);
    return "{\"product\":" + _json(m_sim.product) + ",\"root\":" + _json(m_sim.root) +
           ",\"dash\":" + (m_sim.dash > 0 ? "\"running\"" : "\"off\"") + ",\"powerCycles\":" +
           std::to_string(m_sim.powerCycles) + ",\"stick\":" + _json(m_stickNames[m_sim.stick]) + ",\"keys\":[" + keys +
           "],\"settings\":" + _json(m_sim.settings) + ",\"scenarios\":[" + scenarios +
           "],\"ecu\":" + ecu_model_status_json(&m_sim.ecu) + "}";
}

// "" for done, else why not.
std::string _post(const std::string& path)
{
    int key = 0;
    char action[16] = {};
    if (sscanf(path.c_str(), "/api/key/%d/%15s", &key, action) == 2) {
        const bool press = !strcmp(action, "press");
        if (!press && strcmp(action, "release") != 0) return "press or release";
        const std::string error = sim_key_set(m_sim.root, key, press);
        if (error.empty()) m_sim.keys[key - 1] = press;
        return error;
    }
    if (path == "/api/touch/calibrate") {
        if (m_sim.product != "720") return "the 310 has no touch panel";
        m_sim.calibrateTouch = true;
        return _powerCycle();
    }
    int x = 0, y = 0, pressure = 0;
    char tail = 0;
    if (sscanf(path.c_str(), "/api/touch/%d/%d/%d%c", &x, &y, &pressure, &tail) == 3) {
        if (m_sim.product != "720") return "the 310 has no touch panel";
        if (pressure < 0 || pressure > 255) return "pressure 0 (lifted) to 255";
        return touch_sim_send(m_sim.root, x, y, pressure);
    }
    if (path == "/api/usb/insert") return _usbInsert();
    if (path == "/api/usb/eject") return _usbEject();
    if (path == "/api/usb/pull") return _usbPull();
    if (path == "/api/power/cycle") return _powerCycle();
    if (path == "/api/drive/pause") return ecu_model_pause(&m_sim.ecu, true), "";
    if (path == "/api/drive/resume") return ecu_model_pause(&m_sim.ecu, false), "";
    if (path.rfind("/api/drive/log/", 0) == 0) {
        return ecu_model_set_log_request(&m_sim.ecu, path.c_str() + 15) ? "" : "on, off or auto";
    }
    if (path.rfind("/api/drive/scenario/", 0) == 0) {
        return ecu_model_set_scenario(&m_sim.ecu, path.c_str() + 20) ? "" : "unknown scenario";
    }
    if (path.rfind("/api/product/", 0) == 0) {
        const std::string product = path.substr(13);
        if (product != "310" && product != "720") return "product 310 or 720";
        _powerOff();
        std::string error;
        if (!sim_make_root(m_sim.root, product.c_str(), &error)) return error;
        m_sim.product = product;
        _powerOn();
        return "";
    }
    return "?";
}

// The stick's folder, in the slot or out of it (the stick keeps its files); -1 before
// it was ever inserted. A descriptor, so that a pull meanwhile does not matter.
int _openStick(void)
{
    std::lock_guard<std::mutex> guard(m_sim.lock);
    const std::string folder = m_sim.stick == STICK_NONE ? _path(".stick") : _path("media/") + STICK_FOLDER;
    return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

std::string _logList(void)
{
    const int dir = _openStick();
    std::string out;
    for (const SIM_LOG_FILE_T& file : sim_logs_list(dir)) {
        char modified[32];
        struct tm utc;
        strftime(modified, sizeof(modified), "%Y-%m-%dT%H:%M:%SZ", gmtime_r(&file.modified, &utc));
        out += std::string(out.empty() ? "" : ",") + "{\"name\":" + _json(file.name) +
               ",\"size\":" + std::to_string(file.size) + ",\"modified\":\"" + modified + "\"}";
    }
    if (dir >= 0) close(dir);
    return "[" + out + "]";
}

// GET /api/ioboard: the board's state. POST /api/ioboard/input/NAME/VALUE sets an input,
// POST /api/ioboard/link/off|on pulls the board off the link and puts it back.
void _ioboard(const HTTP_REQUEST_T& request, HTTP_RESPONSE_T* response)
{
    std::string command = "status", reply;
    char name[32] = {}, value[64] = {}, tail = 0;
    if (request.method == "POST" &&
        sscanf(request.path.c_str(), "/api/ioboard/input/%31[^/]/%63[^/]%c", name, value, &tail) == 2) {
        command = std::string("set ") + name + " " + value;
    } else if (request.method == "POST" && (request.path == "/api/ioboard/link/on" || request.path == "/api/ioboard/link/off")) {
        command = "link " + request.path.substr(18);
    } else if (request.method != "GET" || request.path != "/api/ioboard") {
        response->status = 404;
        response->body = "not here: " + request.path + "\n";
        return;
    }
    if (!ioboard_control(m_sim.root, command, &reply)) {
        response->status = 503;
        response->body = reply + "\n";
    } else if (reply.rfind("error: ", 0) == 0) {
        response->status = 409;
        response->body = reply.substr(7) + "\n";
    } else if (command != "status" && !ioboard_control(m_sim.root, "status", &reply)) {
        response->status = 503;
        response->body = reply + "\n";
    } else {
        response->contentType = "application/json";
        response->body = reply;
    }
}

void _handle(const HTTP_REQUEST_T& request, HTTP_RESPONSE_T* response, void*)
{
    if (request.path == "/api/ioboard" || request.path.rfind("/api/ioboard/", 0) == 0) return _ioboard(request, response);
    SIM_PAGE_FILE_T file;
    if (request.method == "GET" && (request.path == "/" || request.path == "/index.html")) {
        response->contentType = "text/html; charset=utf-8";
        response->body = SIM_PAGE_HTML;
    } else if (request.method == "GET" && sim_page_file(request.path, &file)) {
        response->contentType = file.contentType;
        response->body.assign(reinterpret_cast<const char*>(file.data), file.size);
    } else if (request.method == "GET" && request.path == "/api/logs") {
        response->contentType = "application/json";
        response->body = _logList();
    } else if (request.method == "GET" && request.path.rfind("/api/logs/", 0) == 0) {
        const int dir = _openStick();
        response->bodyFile = sim_logs_open(dir, request.path.substr(10), &response->bodyFileLength);
        if (dir >= 0) close(dir);
        if (response->bodyFile >= 0) {
            response->contentType = "text/csv; charset=utf-8";
        } else {
            response->status = 404;
            response->body = "no such file on the stick\n";
        }
    } else if (request.method == "GET" && (request.path == "/api/screen.png" || request.path == "/api/screen.raw")) {
        SIM_SCREEN_T screen;
        const std::string error = sim_screen_read(m_sim.root, &screen);
        if (!error.empty()) {
            response->status = 503;
            response->body = error + "\n";
        } else if (request.path == "/api/screen.raw") {
            // RGB565 little-endian, for the page's own drawing.
            response->contentType = "application/octet-stream";
            response->headers = {{"X-Width", std::to_string(screen.width)}, {"X-Height", std::to_string(screen.height)}};
            response->body.assign(reinterpret_cast<const char*>(screen.pixels.data()), screen.pixels.size() * 2);
        } else {
            std::vector<uint8_t> png;
            png_encode_rgb565(&png, screen.pixels.data(), screen.width, screen.height, screen.width, true);
            response->contentType = "image/png";
            response->body.assign(png.begin(), png.end());
        }
    } else if (request.method == "GET" && request.path == "/api/frames") {
        std::lock_guard<std::mutex> guard(m_sim.lock);
        for (const std::string& line : m_sim.frames) response->body += line + "\n";
    } else if (request.method == "GET" && request.path == "/api/state") {
        response->contentType = "application/json";
        response->body = _state();
    } else if (request.method == "POST" && request.path.rfind("/api/", 0) == 0) {
        std::string error;
        {
            std::lock_guard<std::mutex> guard(m_sim.lock);
            error = _post(request.path);
        }
        if (error == "?") {
            response->status = 404;
            response->body = "unknown: " + request.path + "\n";
        } else if (!error.empty()) {
            response->status = 409;
            response->body = error + "\n";
        } else {
            response->contentType = "application/json";
            response->body = _state();
        }
    } else {
        response->status = request.method == "GET" || request.method == "POST" ? 404 : 405;
        response->body = "not here: " + request.path + "\n";
    }
}

bool _busUp(void)
{
    std::string error;
    for (int i = 0; i < 300; i++) {
        const int fd = can_bus_connect(m_sim.root, "can0", &error);
        if (fd >= 0) {
            close(fd);
            return true;
        }
        usleep(10000);
    }
    return false;
}

}  // namespace

int sim_run(int argc, char** argv)
{
    std::string root = "build/root";
    const char* product = nullptr;
    long port = 8080;
    for (int i = 0; i < argc; i++) {
        const bool hasValue = i + 1 < argc;
        if (!strcmp(argv[i], "--root") && hasValue) {
            root = argv[++i];
        } else if (!strcmp(argv[i], "--port") && hasValue) {
            port = strtol(argv[++i], nullptr, 10);
        } else if (!strcmp(argv[i], "--product") && hasValue) {
            product = argv[++i];
        } else if (!strcmp(argv[i], "--no-ioboard")) {
            m_sim.withBoard = false;
        } else {
            fprintf(stderr, "usage: motordash-sim run [--root ROOT] [--port N] [--product 310|720] [--no-ioboard]\n");
            return 2;
        }
    }
    if (port < 1 || port > 65535 || (product && strcmp(product, "310") != 0 && strcmp(product, "720") != 0)) {
        fprintf(stderr, "motordash-sim run: a port from 1 to 65535, a product 310 or 720\n");
        return 2;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);

    // The port first: a busy one is refused before anything starts.
    std::string error;
    const int listener = http_listen((uint16_t)port, &error);
    if (listener < 0) {
        fprintf(stderr, "motordash-sim run: %s\n", error.c_str());
        return 1;
    }

    struct stat st;
    const bool existed = stat(root.c_str(), &st) == 0;
    if (!existed || product) {
        if (!sim_make_root(root, product ? product : "310", &error)) {
            fprintf(stderr, "motordash-sim run: %s\n", error.c_str());
            return 1;
        }
    }
    char real[4096];
    m_sim.root = realpath(root.c_str(), real) ? real : root;
    m_sim.bin = tool_bin_dir();
    {
        FILE* f = fopen((m_sim.root + "/sys/uid/otp/id.bin").c_str(), "rb");
        unsigned char record[16] = {};
        if (f) {
            if (fread(record, 1, sizeof(record), f) != sizeof(record)) record[5] = 0;
            fclose(f);
        }
        m_sim.product = product ? product : (record[5] == 1 ? "720" : "310");
    }
    m_sim.stick = stat(_path("media/disk_sda1").c_str(), &st) == 0 ? STICK_INSERTED : STICK_NONE;
    ecu_model_init(&m_sim.ecu, (uint32_t)time(nullptr));

    // Signals for this thread only: the helpers' threads must not take them.
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    signal(SIGPIPE, SIG_IGN);

    m_sim.bus = _spawn({m_sim.bin + "/motordash-can", "bus", m_sim.root});
    if (!_busUp()) {
        fprintf(stderr, "motordash-sim run: the CAN bus did not start\n");
        _end(m_sim.bus, 1000);
        return 1;
    }
    std::thread ecu(_ecuThread);
    _powerOn();
    std::thread http(http_serve, listener, _handle, nullptr, &m_sim.stop);
    printf("motordash-sim: the dash (Zelvo%s) runs in %s\n", m_sim.product.c_str(), m_sim.root.c_str());
    printf("motordash-sim: open http://127.0.0.1:%ld/ to see its screen and press its keys; Ctrl-C ends it\n", port);

    const struct timespec tick = {0, 50 * 1000000};
    while (!m_sim.stop.load()) {
        if (sigtimedwait(&set, nullptr, &tick) > 0) break;
        _watchScriptCommand();
        std::lock_guard<std::mutex> guard(m_sim.lock);
        int status = 0;
        if (m_sim.dash > 0 && waitpid(m_sim.dash, &status, WNOHANG) == m_sim.dash) {
            printf("motordash-sim: the dash ended (%s %d); power cycle to start it again\n",
                   WIFEXITED(status) ? "exit code" : "signal", WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status));
            m_sim.dash = -1;
        }
        if (m_sim.board > 0 && waitpid(m_sim.board, &status, WNOHANG) == m_sim.board) {
            printf("motordash-sim: the I/O board ended; power cycle to start it again\n");
            m_sim.board = -1;
        }
    }
    m_sim.stop.store(true);
    printf("motordash-sim: ending\n");
    {
        std::lock_guard<std::mutex> guard(m_sim.lock);
        _powerOff();
    }
    http.join();
    ecu.join();
    _end(m_sim.bus, 2000);
    close(listener);
    return 0;
}
