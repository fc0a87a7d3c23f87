#include "soak_device.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "eventhandler.h"
#include "simfb.h"
#include "tool_commands.h"

extern char** environ;

const char* const SOAK_STICK_FOLDER = ".stick";

namespace {

constexpr const char* MOUNT_FOLDER = "disk_sda1";

std::string _mount(const std::string& root)
{
    return root + "/media/" + MOUNT_FOLDER;
}

}  // namespace

pid_t SoakSpawn(const std::vector<std::string>& args, const std::vector<std::string>& env, const std::string& out,
                const std::string& err)
{
    // The soak's environment, with the entries of `env` in place of those of their names.
    std::vector<std::string> all = env;
    for (char** e = environ; *e; e++) {
        const char* eq = strchr(*e, '=');
        const size_t name = eq ? (size_t)(eq - *e) + 1 : strlen(*e);
        if (std::none_of(env.begin(), env.end(), [&](const std::string& mine) { return !mine.compare(0, name, *e, name); }))
            all.push_back(*e);
    }
    std::vector<char*> argv, envp;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    for (const std::string& e : all) envp.push_back(const_cast<char*>(e.c_str()));
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    const pid_t pid = fork();
    if (pid != 0) return pid;
    // The program ends with the soak, whatever ends it; the soak's own signal mask and
    // dispositions are not the program's.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    const int o = open(out.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    const int e = open(err.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (o < 0 || e < 0 || dup2(o, 1) < 0 || dup2(e, 2) < 0) _exit(126);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
}

bool SoakWait(pid_t pid, int timeoutMs, int* status)
{
    for (int waited = 0;; waited += 10) {
        const pid_t r = waitpid(pid, status, WNOHANG);
        if (r == pid) return true;
        if (r < 0 || waited >= timeoutMs) return false;
        usleep(10000);
    }
}

std::string SoakDescribeStatus(int status)
{
    char text[96];
    if (WIFEXITED(status)) snprintf(text, sizeof(text), "exit code %d", WEXITSTATUS(status));
    else if (WIFSIGNALED(status))
        snprintf(text, sizeof(text), "signal %d (%s)", WTERMSIG(status), strsignal(WTERMSIG(status)));
    else snprintf(text, sizeof(text), "wait status 0x%x", (unsigned)status);
    return text;
}

uint64_t SoakResidentKb(pid_t pid)
{
    char path[64];
    snprintf(path, sizeof(path), "/proc/%d/status", (int)pid);
    FILE* f = fopen(path, "re");
    if (!f) return 0;
    char line[256];
    unsigned long long kb = 0;
    while (fgets(line, sizeof(line), f))
        if (sscanf(line, "VmRSS: %llu kB", &kb) == 1) break;
    fclose(f);
    return kb;
}

bool SoakPanCount(const std::string& root, uint64_t* count)
{
    const int fd = open((root + "/dev/fb0").c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    SIMFB_HEADER_T h;
    const bool ok = simfb_read_header(fd, &h) == 1;
    close(fd);
    if (ok) *count = h.pan_count;
    return ok;
}

std::vector<std::string> SoakSanitizerLines(const std::string& text)
{
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find('\n', at);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(at, end - at);
        // The sanitizers' reports, and the dash's own crash report.
        if (line.find("Sanitizer") != std::string::npos || line.find("runtime error:") != std::string::npos ||
            line.rfind("SIGNAL: ", 0) == 0)
            lines.push_back(line);
        at = end + 1;
    }
    return lines;
}

std::string SoakReadFile(const std::string& path)
{
    std::string text;
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return text;
    char buffer[65536];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), f)) > 0) text.append(buffer, n);
    fclose(f);
    return text;
}

bool SoakStickInsert(const std::string& root, std::string* error)
{
    const std::string mount = _mount(root);
    if (rename((root + "/" + SOAK_STICK_FOLDER).c_str(), mount.c_str()) != 0 && mkdir(mount.c_str(), 0755) != 0) {
        *error = "cannot mount the stick at " + mount + ": " + strerror(errno);
        return false;
    }
    if (!tool_write_whole(root + "/media/" + USBINFOFILENAME, MOUNT_FOLDER)) {
        *error = "cannot write media/usbinfo.txt";
        return false;
    }
    return true;
}

std::string SoakStickFiles(const std::string& root)
{
    struct stat st;
    return stat(_mount(root).c_str(), &st) == 0 ? _mount(root) : root + "/" + SOAK_STICK_FOLDER;
}

bool SoakStickPull(const std::string& root, std::string* error)
{
    // A usbinfo.txt the dash has not read yet goes with the stick.
    remove((root + "/media/" + USBINFOFILENAME).c_str());
    if (rename(_mount(root).c_str(), (root + "/" + SOAK_STICK_FOLDER).c_str()) == 0) return true;
    *error = "cannot pull the stick: " + std::string(strerror(errno));
    return false;
}

bool SoakStickAnswerEject(const std::string& root, pid_t dash)
{
    const std::string request = root + "/app/event/" + EVENT_SCRIPT_COMMAND_FILENAME;
    const std::string text = SoakReadFile(request);
    if (text.rfind(EVENT_COMMAND_USBSTICK_EJECT, 0) != 0) return false;
    remove(request.c_str());
    std::string ignored;
    SoakStickPull(root, &ignored);
    if (!tool_write_whole(root + "/app/event/" + EVENT_APP_COMMAND_FILENAME, EVENT_COMMAND_USBSTICK_EJECTREADY)) return false;
    return kill(dash, SIGUSR1) == 0;
}
