// The device build on a real kernel. The virtual machine's init (scripts/vm/init.sh) runs
// this program at each of its two boots. It sets up what the board's own start-up would
// (key lines, LEDs, factory record, versions, the far ends of the CAN buses and of the
// I/O board's line), then runs the real motordash and checks what the driver sees on
// /dev/fb0, what the engine controller gets on the bus, and what survives a power cycle.
//
// The machine (scripts/vm/run.sh): can0 and can1 are emulated CAN controllers, each on a
// bus of its own with one more controller, can2 and can3, where the engine controller
// and the calibration tool sit. /dev/ttySP2 is a real serial port wired to another one,
// /dev/ttyS2, where the simulated I/O board answers. The first boot has a 320 x 240
// panel on a DRM display, the second an 800 x 480 one on a memory framebuffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <libsocketcan.h>
#include <linux/can/raw.h>
#include <linux/fb.h>
#include <memory>
#include <pthread.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "SeednKey.h"
#include "can_log.h"
#include "dash_ecu.h"
#include "keypad_drv.h"
#include "test_root.h"
#include "xcp_types.h"

namespace {

constexpr const char* ECU_BUS = "can2";  // the far end of the dash's can0
constexpr const char* SECOND_BUS = "can3";
constexpr U32 BUS_BITRATE = 1000000;  // as the dash runs its ports
// Knock retard by cylinder, as the screen tests send it: -1, -3, 0, -5, -2, -8, 0, -4.
constexpr const char* KNOCK = "107#FFFD00FBFEF800FC";
constexpr const char* SETTINGS_FILE = "/app/data/config/motordash-eeprom.dat";

struct PANEL_T {
    uint32_t width = 320;
    uint32_t height = 240;
    const char* product = "310";
};
PANEL_T m_panel;

bool WriteText(const std::string& path, const std::string& text, mode_t mode = 0644)
{
    for (size_t i = 1; (i = path.find('/', i)) != std::string::npos; i++) mkdir(path.substr(0, i).c_str(), 0755);
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) return false;
    const bool ok = fwrite(text.data(), 1, text.size(), f) == text.size();
    return fclose(f) == 0 && ok && chmod(path.c_str(), mode) == 0;
}

// The panel the boot was given: "motordash.panel=800x480" on the kernel's command line.
PANEL_T PanelOfThisBoot(void)
{
    PANEL_T p;
    const std::string cmdline = ReadWholeFile("/proc/cmdline");
    const size_t at = cmdline.find("motordash.panel=");
    if (at != std::string::npos && sscanf(cmdline.c_str() + at, "motordash.panel=%ux%u", &p.width, &p.height) == 2 &&
        p.width == 800) {
        p.product = "720";
    }
    return p;
}

// The page on show of the kernel's framebuffer, read as the panel scans it out.
class PanelView {
public:
    PanelView()
    {
        fd_ = open("/dev/fb0", O_RDONLY | O_CLOEXEC);
        struct fb_var_screeninfo var;
        if (fd_ < 0 || ioctl(fd_, FBIOGET_VSCREENINFO, &var) != 0 || ioctl(fd_, FBIOGET_FSCREENINFO, &fix_) != 0) return;
        length_ = (size_t)fix_.line_length * var.yres_virtual;
        void* map = mmap(nullptr, length_, PROT_READ, MAP_SHARED, fd_, 0);
        if (map != MAP_FAILED) map_ = static_cast<const uint8_t*>(map);
    }
    ~PanelView()
    {
        if (map_) munmap(const_cast<uint8_t*>(map_), length_);
        if (fd_ >= 0) close(fd_);
    }
    bool Valid() const { return map_ != nullptr; }
    // The panel's width x height pixels of it; black where the device has none.
    std::vector<uint16_t> Page() const
    {
        std::vector<uint16_t> page((size_t)m_panel.width * m_panel.height);
        struct fb_var_screeninfo var;
        if (!map_ || ioctl(fd_, FBIOGET_VSCREENINFO, &var) != 0 || var.yoffset + var.yres > var.yres_virtual) return page;
        const uint32_t w = std::min(var.xres, m_panel.width), h = std::min(var.yres, m_panel.height);
        for (uint32_t y = 0; y < h; y++) {
            memcpy(&page[(size_t)y * m_panel.width], map_ + (size_t)(var.yoffset + y) * fix_.line_length, w * 2);
        }
        return page;
    }
    bool PageIs(uint16_t colour) const
    {
        const std::vector<uint16_t> page = Page();
        return std::all_of(page.begin(), page.end(), [colour](uint16_t p) { return p == colour; });
    }

private:
    int fd_ = -1;
    struct fb_fix_screeninfo fix_ = {};
    const uint8_t* map_ = nullptr;
    size_t length_ = 0;
};

::testing::AssertionResult PanelShows(const std::string& picture, int timeoutMs)
{
    PanelView panel;
    if (!panel.Valid()) return ::testing::AssertionFailure() << "/dev/fb0 cannot be read";
    return PagesMatchPicture([&panel] { return panel.Page(); }, m_panel.width, m_panel.height, picture, timeoutMs);
}

// A raw socket on a far end of the dash's buses.
int BusSocket(const char* ifname)
{
    const int fd = socket(PF_CAN, SOCK_RAW | SOCK_CLOEXEC, CAN_RAW);
    struct sockaddr_can addr = {};
    addr.can_family = AF_CAN;
    addr.can_ifindex = (int)if_nametoindex(ifname);
    if (fd >= 0 && bind(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) == 0) return fd;
    if (fd >= 0) close(fd);
    return -1;
}

// Ticks of a 10 ms interval timer kept as the dash keeps its own: a real-time thread
// that takes each SIGALRM (blocked everywhere else, from the start of main). On an
// emulated processor that timer slips whenever the host falls behind, and so does the
// dash's; its periods are counted in these ticks, which slip alike.
class Ticks {
public:
    Ticks() : thread_([this] { Run(); }) {}
    ~Ticks()
    {
        stop_ = true;
        thread_.join();
    }
    uint32_t Count() const { return count_.load(); }

private:
    void Run()
    {
        struct sched_param param = {};
        param.sched_priority = 99;
        pthread_setschedparam(pthread_self(), SCHED_RR, &param);
        struct itimerval tick = {{0, 10000}, {0, 10000}};
        setitimer(ITIMER_REAL, &tick, nullptr);
        sigset_t alarm;
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        int sig = 0;
        while (!stop_ && sigwait(&alarm, &sig) == 0) count_++;
        const struct itimerval off = {};
        setitimer(ITIMER_REAL, &off, nullptr);
    }
    std::atomic<bool> stop_{false};
    std::atomic<uint32_t> count_{0};
    std::thread thread_;
};

struct HEARD_T {
    int64_t ms;
    uint32_t ticks;  // of a Ticks counting while listening
    struct can_frame frame;
};

// What the dash sends on can0 with this id, heard on the far end for `ms`.
std::vector<HEARD_T> Listen(uint32_t id, int ms)
{
    const Ticks ticks;
    std::vector<HEARD_T> heard;
    const int fd = BusSocket(ECU_BUS);
    if (fd < 0) return heard;
    const int64_t end = NowMs() + ms;
    for (int64_t now = NowMs(); now < end; now = NowMs()) {
        struct pollfd p = {fd, POLLIN, 0};
        if (poll(&p, 1, (int)(end - now)) <= 0) continue;
        HEARD_T h = {NowMs(), ticks.Count(), {}};
        if (read(fd, &h.frame, sizeof(h.frame)) != (ssize_t)sizeof(h.frame)) continue;
        if (h.frame.can_id == id) heard.push_back(h);
    }
    close(fd);
    return heard;
}

// The engine controller: sends its frames every 100 ms on the far end of can0.
class Ecu {
public:
    explicit Ecu(std::vector<std::string> frames) : frames_(std::move(frames)), thread_([this] { Run(); }) {}
    ~Ecu()
    {
        stop_ = true;
        thread_.join();
    }

private:
    void Run()
    {
        const int fd = BusSocket(ECU_BUS);
        while (!stop_ && fd >= 0) {
            for (const std::string& text : frames_) {
                struct can_frame frame;
                if (can_parse_frame(text.c_str(), &frame)) (void)!write(fd, &frame, sizeof(frame));
            }
            usleep(100000);
        }
        if (fd >= 0) close(fd);
    }
    std::vector<std::string> frames_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

void KeyLine(int key, const char* value)
{
    WriteText("/sys/class/gpio/gpio" + std::to_string(KEYPAD_KEY_LINES[key - 1]) + "/value", std::string(value) + "\n");
}

void Key(int key)
{
    KeyLine(key, "0");
    usleep(400000);  // a few key scans see it down
    KeyLine(key, "1");
    usleep(400000);
}

std::string Xcp(const std::vector<std::string>& command, int* code)
{
    char secrets[64];
    snprintf(secrets, sizeof(secrets), "0x%08X,0x%08X,0x%08X,0x%08X", XcpResourceSecret(XCP_RESOURCE_CAL_PAG),
             XcpResourceSecret(XCP_RESOURCE_DAQ), XcpResourceSecret(XCP_RESOURCE_STIM),
             XcpResourceSecret(XCP_RESOURCE_PGM));
    std::vector<std::string> args = {"--secrets", secrets, "--can", ECU_BUS};
    args.insert(args.end(), command.begin(), command.end());
    std::string out, err;
    *code = RunProgram(BinPath("motordash-xcp"), args, &out, &err);
    return out + err;
}

std::string WatchdogState(void)
{
    return ReadWholeFile("/sys/class/watchdog/watchdog0/state");
}

// What the board's start-up and the engine controller's side set up once a boot.
class Board : public ::testing::Environment {
public:
    void SetUp() override
    {
        m_panel = PanelOfThisBoot();
        SetPanelMode();
        for (U32 line : KEYPAD_KEY_LINES) {
            const std::string dir = "/sys/class/gpio/gpio" + std::to_string(line);
            ASSERT_TRUE(WriteText(dir + "/direction", "in\n") && WriteText(dir + "/value", "1\n"));
        }
        for (const char* led : {"lcdled-pwm", "keyled-pwm", "buzzer-pwm"}) {
            const std::string dir = std::string("/sys/class/leds/") + led;
            ASSERT_TRUE(WriteText(dir + "/brightness", "0\n") && WriteText(dir + "/max_brightness", "255\n"));
        }
        // Serial number 0x00123456, product 0 for the small model, 0x100 for the large.
        std::string record(16, '\0');
        record[0] = 0x56, record[1] = 0x34, record[2] = 0x12;
        record[5] = m_panel.width == 800 ? 0x01 : 0x00;
        ASSERT_TRUE(WriteText("/sys/uid/otp/id.bin", record));
        ASSERT_TRUE(WriteText("/etc/VERSION", "120\n"));
        ASSERT_TRUE(WriteText("/usr/sbin/fw_printenv",
                              "#!/bin/sh\n"
                              "[ \"$1\" = \"-n\" ] && [ \"$2\" = \"version\" ] && { echo bootloader_105_2; exit 0; }\n"
                              "exit 1\n",
                              0755));
        for (const char* bus : {ECU_BUS, SECOND_BUS}) {
            ASSERT_EQ(can_set_bitrate(bus, BUS_BITRATE), 0) << bus;
            ASSERT_EQ(can_do_start(bus), 0) << bus;
        }
        ioboard_ = std::make_unique<Process>(BinPath("motordash-ioboard"), nullptr,
                                             std::vector<std::string>{"/", "--line", "/dev/ttyS2"});
        ASSERT_TRUE(ioboard_->WaitForOutput("application v", 10000)) << ioboard_->Stderr();
    }
    void TearDown() override { ioboard_.reset(); }

private:
    // A memory framebuffer starts in a mode of its own: the panel's is set as the board's
    // boot sets it. The DRM display has it from the kernel's command line.
    void SetPanelMode()
    {
        const int fd = open("/dev/fb0", O_RDWR | O_CLOEXEC);
        ASSERT_GE(fd, 0) << strerror(errno);
        struct fb_var_screeninfo var;
        ASSERT_EQ(ioctl(fd, FBIOGET_VSCREENINFO, &var), 0);
        if (var.xres != m_panel.width || var.yres != m_panel.height || var.yres_virtual < 3 * m_panel.height) {
            var.xres = var.xres_virtual = m_panel.width;
            var.yres = m_panel.height;
            var.yres_virtual = 3 * m_panel.height;
            var.xoffset = var.yoffset = 0;
            var.bits_per_pixel = 16;
            EXPECT_EQ(ioctl(fd, FBIOPUT_VSCREENINFO, &var), 0) << strerror(errno);
        }
        close(fd);
    }
    std::unique_ptr<Process> ioboard_;
};

// A dash that has shown its splash, and ends with SIGTERM.
std::unique_ptr<Process> StartDash(void)
{
    auto dash = std::make_unique<Process>(BinPath("motordash"), nullptr);
    EXPECT_TRUE(dash->WaitForOutput("RootFS Version", 30000)) << dash->Stdout() << dash->Stderr();
    return dash;
}

// The dash's output goes to the console too, each line marked, for the boot's log.
void EndWithSigterm(Process& dash)
{
    ASSERT_TRUE(dash.Signal(SIGTERM));
    int status = 0;
    const bool ended = dash.Wait(15000, &status);
    const std::string out = dash.Stdout() + dash.Stderr();
    for (size_t at = 0, end; at < out.size(); at = end + 1) {
        end = out.find('\n', at);
        if (end == std::string::npos) end = out.size();
        printf("motordash| %s\n", out.substr(at, end - at).c_str());
    }
    ASSERT_TRUE(ended) << "no end after SIGTERM";
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
    EXPECT_NE(out.find("Shutdown..."), std::string::npos);
}

TEST(StartGate, AnOldRootFileSystemFlashesRedAndWhite)
{
    ASSERT_TRUE(WriteText("/etc/VERSION", "99\n"));
    {
        auto dash = StartDash();
        const std::string out = dash->Stdout();
        EXPECT_NE(out.find("Kernel Version: 121\nRootFS Version: 99\n"), std::string::npos) << out;
        PanelView panel;
        EXPECT_TRUE(WaitUntil([&] { return panel.PageIs(0xF800); }, 10000)) << "red";
        EXPECT_TRUE(WaitUntil([&] { return panel.PageIs(0xFFFF); }, 3000)) << "then white";
        EXPECT_TRUE(WaitUntil([&] { return panel.PageIs(0xF800); }, 3000)) << "and red again";
        EndWithSigterm(*dash);
    }
    ASSERT_TRUE(WriteText("/etc/VERSION", "120\n"));
}

// One dash for the whole first boot, on the knock screen with the engine controller's
// knock frame; the tests run in this order.
class FirstBoot : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(WriteText(SETTINGS_FILE, SettingsImage([](EEVariables_T& s) { s.CURRENT_SCREEN = 3; })));
        ecu = std::make_unique<Ecu>(std::vector<std::string>{KNOCK});
        dash = StartDash();
    }
    static void TearDownTestSuite()
    {
        dash.reset();
        ecu.reset();
    }
    void SetUp() override
    {
        ASSERT_TRUE(dash);
        int status = 0;
        if (dash->Pid() <= 0 || dash->Wait(0, &status)) FAIL() << "the dash has ended: " << dash->Stderr();
    }
    static std::unique_ptr<Ecu> ecu;
    static std::unique_ptr<Process> dash;
};
std::unique_ptr<Ecu> FirstBoot::ecu;
std::unique_ptr<Process> FirstBoot::dash;

// Bit timing, restart delay and start through the CAN library, on real controllers.
TEST_F(FirstBoot, OpensBothCanControllers)
{
    ASSERT_TRUE(dash->WaitForOutput("Bit-timing for can1", 10000)) << dash->Stdout();
    EXPECT_EQ(dash->Stdout().find("Failed"), std::string::npos) << dash->Stdout();
    for (const char* port : {"can0", "can1"}) {
        int state = -1;
        EXPECT_EQ(can_get_state(port, &state), 0);
        EXPECT_EQ(state, CAN_STATE_ERROR_ACTIVE) << port;
        __u32 restartMs = 0;
        EXPECT_EQ(can_get_restart_ms(port, &restartMs), 0);
        EXPECT_EQ(restartMs, 1000u) << port;
    }
}

TEST_F(FirstBoot, ShowsTheEngineControllersFramesOnThePanel)
{
    EXPECT_TRUE(PanelShows(std::string("knock_") + m_panel.product, 30000));
}

TEST_F(FirstBoot, SendsTheSettingsFrameEvery100ms)
{
    const std::vector<HEARD_T> heard = Listen(0x131, 3000);
    ASSERT_GE(heard.size(), 10u);
    const double periods = (double)(heard.size() - 1);
    EXPECT_NEAR((heard.back().ticks - heard.front().ticks) / periods, 10.0, 1.0) << "ticks of 10 ms a period";
    EXPECT_NEAR((heard.back().ms - heard.front().ms) / periods, 100.0, 50.0) << "ms a period, however slow the host";
    EXPECT_EQ(can_format_frame(heard.back().frame), "131#0000000000000101") << "boost stage 1";
}

TEST_F(FirstBoot, KeyFourOpensTheMenuAndKeyFiveLeavesIt)
{
    Key(4);
    EXPECT_TRUE(PanelShows(std::string("menu_settings_") + m_panel.product, 10000));
    EXPECT_EQ(ReadWholeFile("/sys/class/leds/keyled-pwm/brightness"), "255");
    Key(5);
    EXPECT_TRUE(PanelShows(std::string("knock_") + m_panel.product, 10000));
}

TEST_F(FirstBoot, TalksToTheIoBoardOverTheSerialLine)
{
    EXPECT_TRUE(dash->WaitForOutput("I/O Board: Init - Bootloader v", 30000)) << dash->Stdout();
}

// The machine turns the watchdog's expiry into an NMI (run.sh), which the kernel logs.
int NmisLogged(void)
{
    std::string log;
    RunProgram("/bin/dmesg", {}, &log);
    int count = 0;
    for (size_t at = log.find("NMI received"); at != std::string::npos; at = log.find("NMI received", at + 1)) count++;
    return count;
}

TEST_F(FirstBoot, FeedsTheWatchdogUntilItsMainLoopStops)
{
    EXPECT_EQ(WatchdogState(), "active\n");
    EXPECT_EQ(ReadWholeFile("/sys/class/watchdog/watchdog0/timeout"), "3\n");
    const int before = NmisLogged();
    EXPECT_EQ(before, 0) << "fired while the dash ran";
    // A stopped main loop stops the refreshes: the timer runs out within its 3 s.
    ASSERT_TRUE(dash->Signal(SIGSTOP));
    EXPECT_TRUE(WaitUntil([&] { return NmisLogged() > before; }, 6000));
    ASSERT_TRUE(dash->Signal(SIGCONT));
}

// A calibration tool on the bus sets the boost stage: it reaches frame 0x131 and the
// settings file, which the second boot reads back.
TEST_F(FirstBoot, CalibratedOverXcpOnSocketCan)
{
    int code = 0;
    std::string out = Xcp({"info"}, &code);
    ASSERT_EQ(code, 0) << out;
    EXPECT_NE(out.find("identifier     Velnor_Dorvik_V6c_650\n"), std::string::npos) << out;
    out = Xcp({"write", "BoostControl", "2"}, &code);
    ASSERT_EQ(code, 0) << out;
    EXPECT_EQ(out, "BoostControl = 2\n");
    const std::vector<HEARD_T> heard = Listen(0x131, 500);
    ASSERT_FALSE(heard.empty());
    EXPECT_EQ(can_format_frame(heard.back().frame), "131#0000000000000102");
    usleep(1500000);  // the store's once-a-second pass writes it
}

TEST_F(FirstBoot, SigtermEndsItWithExitCodeZero)
{
    EndWithSigterm(*dash);
    EXPECT_EQ(WatchdogState(), "inactive\n") << "the magic close stops the timer";
    EXPECT_TRUE(PanelView().PageIs(0x0000)) << "a black page at the end";
}

TEST(AfterPowerCycle, TheSettingsAndTheScreenAreBack)
{
    Ecu ecu({KNOCK});
    auto dash = StartDash();
    const std::string expected = m_panel.width == 800 ? "Hardware: Zelvo720" : "Hardware: Zelvo310";
    EXPECT_NE(dash->Stdout().find(expected), std::string::npos) << dash->Stdout();
    EXPECT_TRUE(PanelShows(std::string("knock_") + m_panel.product, 30000)) << "the screen left before";
    const std::vector<HEARD_T> heard = Listen(0x131, 1000);
    ASSERT_FALSE(heard.empty());
    EXPECT_EQ(can_format_frame(heard.back().frame), "131#0000000000000102") << "boost stage 2 kept";
    int code = 0;
    const std::string out = Xcp({"get", "BoostControl"}, &code);
    EXPECT_EQ(out, "BoostControl 2\n");
    EndWithSigterm(*dash);
}

}  // namespace

int main(int argc, char** argv)
{
    // Before any thread exists, so that only Ticks ever takes the timer's signal.
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new Board);
    return RUN_ALL_TESTS();
}
