#include "dash_harness.h"
#include "picture_check.h"
#include "png_io.h"
#include "test_root.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <ftw.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

std::string BinPath(const char* name)
{
    return std::string(MOTORDASH_BIN_DIR) + "/" + name;
}

int64_t NowMs()
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (int64_t)ts.tv_sec * 1000 + ts.tv_nsec / 1000000;
}

bool WaitUntil(const std::function<bool()>& done, int timeoutMs)
{
    const int64_t end = NowMs() + timeoutMs;
    do {
        if (done()) return true;
        usleep(2000);
    } while (NowMs() < end);
    return done();
}

static void _removeTree(const std::string& path)
{
    nftw(path.c_str(), [](const char* p, const struct stat*, int, struct FTW*) { return remove(p); }, 16,
         FTW_DEPTH | FTW_PHYS);
}

static std::string _tempDir()
{
    char tmpl[] = "/tmp/motordash-sys-XXXXXX";
    const char* dir = mkdtemp(tmpl);
    return dir ? dir : "";
}

DeviceRoot::DeviceRoot(const char* product)
{
    path_ = _tempDir() + "/root";
    if (product) {
        RunProgram(BinPath("motordash-sim"), {"init", path_, "--product", product});
    } else {
        mkdir(path_.c_str(), 0755);
    }
}

DeviceRoot::~DeviceRoot()
{
    _removeTree(path_.substr(0, path_.rfind('/')));
}

void DeviceRoot::Write(const std::string& rel, const std::string& content, int mode) const
{
    for (size_t i = 0; (i = rel.find('/', i)) != std::string::npos; i++) mkdir(Abs(rel.substr(0, i)).c_str(), 0755);
    const std::string tmp = Abs(rel) + ".tmp";
    FILE* f = fopen(tmp.c_str(), "wb");
    if (!f) return;
    fwrite(content.data(), 1, content.size(), f);
    fclose(f);
    chmod(tmp.c_str(), (mode_t)mode);
    rename(tmp.c_str(), Abs(rel).c_str());
}

std::string DeviceRoot::Read(const std::string& rel) const
{
    return ReadWholeFile(Abs(rel));
}

bool DeviceRoot::Exists(const std::string& rel) const
{
    struct stat st;
    return stat(Abs(rel).c_str(), &st) == 0;
}

void DeviceRoot::Remove(const std::string& rel) const
{
    remove(Abs(rel).c_str());
}

Process::Process(const std::string& binary, const char* root, const std::vector<std::string>& args,
                 const std::vector<std::string>& env)
{
    const std::string dir = _tempDir();
    outPath_ = dir + "/stdout";
    errPath_ = dir + "/stderr";
    std::vector<std::string> envStore;
    for (char** e = environ; *e; e++) {
        if (strncmp(*e, "DASH_ROOT=", 10) != 0) envStore.push_back(*e);
    }
    if (root) envStore.push_back(std::string("DASH_ROOT=") + root);
    for (const std::string& e : env) envStore.push_back(e);
    std::vector<char*> envp, argv;
    for (std::string& e : envStore) envp.push_back(e.data());
    envp.push_back(nullptr);
    std::vector<std::string> argStore = {binary};
    argStore.insert(argStore.end(), args.begin(), args.end());
    for (std::string& a : argStore) argv.push_back(a.data());
    argv.push_back(nullptr);

    pid_ = fork();
    if (pid_ == 0) {
        const struct rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        int out = open(outPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(errPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
}

Process::~Process()
{
    int status;
    if (pid_ > 0 && waitpid(pid_, &status, WNOHANG) == 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
    }
    _removeTree(outPath_.substr(0, outPath_.rfind('/')));
}

bool Process::Signal(int sig) const
{
    return pid_ > 0 && kill(pid_, sig) == 0;
}

bool Process::Wait(int timeoutMs, int* status)
{
    const int64_t end = NowMs() + timeoutMs;
    do {
        pid_t r = waitpid(pid_, status, WNOHANG);
        if (r == pid_) {
            pid_ = -1;
            return true;
        }
        if (r < 0) return false;
        usleep(2000);
    } while (NowMs() < end);
    return false;
}

bool Process::WaitForOutput(const std::string& text, int timeoutMs) const
{
    const int64_t end = NowMs() + timeoutMs;
    do {
        if (Stdout().find(text) != std::string::npos) return true;
        usleep(5000);
    } while (NowMs() < end);
    return false;
}

std::string Process::Stdout() const
{
    return ReadWholeFile(outPath_);
}

std::string Process::Stderr() const
{
    return ReadWholeFile(errPath_);
}

int RunProgram(const std::string& binary, const std::vector<std::string>& args, std::string* out, std::string* err,
               const char* root)
{
    Process p(binary, root, args);
    int status = 0;
    if (!p.Wait(60000, &status)) return -1;
    if (out) *out = p.Stdout();
    if (err) *err = p.Stderr();
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

FramebufferView::FramebufferView(const std::string& root)
{
    const int fd = open((root + "/dev/fb0").c_str(), O_RDONLY);
    if (fd < 0) return;
    SIMFB_HEADER_T h;
    if (simfb_read_header(fd, &h)) {
        length_ = SIMFB_HEADER_SIZE + simfb_pixel_bytes(&h);
        void* map = mmap(nullptr, length_, PROT_READ, MAP_SHARED, fd, 0);
        if (map != MAP_FAILED) {
            map_ = map;
            header_ = static_cast<const SIMFB_HEADER_T*>(map);
        }
    }
    close(fd);
}

FramebufferView::~FramebufferView()
{
    if (map_) munmap(map_, length_);
}

const uint16_t* FramebufferView::PageOnShow() const
{
    const SIMFB_HEADER_T& h = Header();
    // The program pans while we look: read the live offset once.
    uint32_t yoffset = __atomic_load_n(&header_->yoffset, __ATOMIC_RELAXED);
    if (yoffset > h.yres_virtual - h.yres) yoffset = 0;
    const uint16_t* pixels = static_cast<const uint16_t*>(map_) + SIMFB_HEADER_SIZE / sizeof(uint16_t);
    return pixels + (size_t)yoffset * h.xres_virtual;
}

uint16_t FramebufferView::Pixel(uint32_t x, uint32_t y) const
{
    return PageOnShow()[(size_t)y * Header().xres_virtual + x];
}

std::vector<uint16_t> FramebufferView::Page() const
{
    const SIMFB_HEADER_T& h = Header();
    const uint16_t* pixels = PageOnShow();
    std::vector<uint16_t> page((size_t)h.xres * h.yres);
    for (uint32_t y = 0; y < h.yres; y++) {
        memcpy(&page[(size_t)y * h.xres], pixels + (size_t)y * h.xres_virtual, h.xres * sizeof(uint16_t));
    }
    return page;
}

::testing::AssertionResult PageMatchesPicture(const std::string& root, const std::string& name, int timeoutMs)
{
    FramebufferView fb(root);
    if (!fb.Valid()) return ::testing::AssertionFailure() << "no framebuffer in " << root;
    return PagesMatchPicture([&fb] { return fb.Page(); }, fb.Header().xres, fb.Header().yres, name, timeoutMs);
}

::testing::AssertionResult PagesMatchPicture(const std::function<std::vector<uint16_t>()>& page, uint32_t w,
                                             uint32_t h, const std::string& name, int timeoutMs)
{
    const int64_t end = NowMs() + timeoutMs;
    if (RewritingPicture(name)) {
        std::vector<uint16_t> last = page();
        int64_t stableSince = NowMs();
        while (NowMs() < end && NowMs() - stableSince < 500) {
            usleep(20000);
            std::vector<uint16_t> now = page();
            if (now != last) {
                last = std::move(now);
                stableSince = NowMs();
            }
        }
        return MatchesPicture(name, last.data(), w, h, w);
    }
    // Compares quietly until the deadline, then once more for the report.
    std::vector<uint16_t> expected;
    for (;;) {
        const std::vector<uint16_t> now = page();
        if (NowMs() >= end) return MatchesPicture(name, now.data(), w, h, w);
        if (expected.empty()) {
            uint32_t ew = 0, eh = 0;
            if (!png_read_rgb565(ReferencePicturePath(name).c_str(), &expected, &ew, &eh).empty())
                return MatchesPicture(name, now.data(), w, h, w);
        }
        if (now == expected) return MatchesPicture(name, now.data(), w, h, w);
        usleep(20000);
    }
}
