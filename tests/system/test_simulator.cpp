// motordash-sim run through its HTTP API, as scripts and the web page use it.
#include <gtest/gtest.h>

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "dash_harness.h"
#include "touch_sim.h"

namespace {

// A free TCP port on the loopback interface.
int FreePort()
{
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in addr = {};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr));
    socklen_t len = sizeof(addr);
    getsockname(fd, reinterpret_cast<struct sockaddr*>(&addr), &len);
    close(fd);
    return ntohs(addr.sin_port);
}

struct Reply {
    int status = 0;
    std::string body;
};

// One request on a connection of its own; status 0 when nobody answers.
Reply Http(int port, const std::string& method, const std::string& path)
{
    Reply reply;
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in addr = {};
    addr.sin_family = AF_INET;
    addr.sin_port = htons((uint16_t)port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0) {
        close(fd);
        return reply;
    }
    const std::string request = method + " " + path + " HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n";
    send(fd, request.data(), request.size(), 0);
    std::string data;
    char buf[65536];
    size_t need = std::string::npos;
    while (need == std::string::npos || data.size() < need) {
        const ssize_t n = recv(fd, buf, sizeof(buf), 0);
        if (n <= 0) break;
        data.append(buf, (size_t)n);
        const size_t head = data.find("\r\n\r\n");
        if (need == std::string::npos && head != std::string::npos) {
            const size_t cl = data.find("Content-Length: ");
            need = head + 4 + strtoul(data.c_str() + cl + 16, nullptr, 10);
        }
    }
    close(fd);
    if (data.size() > 12) reply.status = atoi(data.c_str() + 9);
    const size_t head = data.find("\r\n\r\n");
    if (head != std::string::npos) reply.body = data.substr(head + 4);
    return reply;
}

uint32_t PngWidth(const std::string& png)
{
    return png.size() > 24 ? (uint32_t)(uint8_t)png[16] << 24 | (uint32_t)(uint8_t)png[17] << 16 |
                                 (uint32_t)(uint8_t)png[18] << 8 | (uint8_t)png[19]
                           : 0;
}

class Simulator : public ::testing::Test {
protected:
    void SetUp() override
    {
        port = FreePort();
        sim = std::make_unique<Process>(BinPath("motordash-sim"), nullptr,
                                        std::vector<std::string>{"run", "--root", root.Path(), "--port", std::to_string(port)});
        const int64_t end = NowMs() + 20000;
        while (NowMs() < end && Http(port, "GET", "/api/state").status != 200) usleep(50000);
        ASSERT_EQ(Http(port, "GET", "/api/state").status, 200) << sim->Stdout() << sim->Stderr();
    }
    void TearDown() override
    {
        if (!sim) return;
        sim->Signal(SIGTERM);
        int status = 0;
        ASSERT_TRUE(sim->Wait(10000, &status));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << sim->Stderr();
        std::string left;
        RunProgram("/usr/bin/pgrep", {"-f", root.Path()}, &left);
        EXPECT_EQ(left, "") << "processes outlived the simulator";
    }
    DeviceRoot root{"310"};
    int port = 0;
    std::unique_ptr<Process> sim;
};

TEST_F(Simulator, ScreenKeysStickPowerAndProduct)
{
    const Reply page = Http(port, "GET", "/");
    EXPECT_EQ(page.status, 200);
    EXPECT_NE(page.body.find("<canvas id=\"screen\""), std::string::npos);
    const Reply png = Http(port, "GET", "/api/screen.png");
    ASSERT_EQ(png.status, 200);
    EXPECT_EQ(PngWidth(png.body), 320u);

    EXPECT_EQ(Http(port, "POST", "/api/key/3/press").status, 200);
    EXPECT_EQ(root.Read("sys/class/gpio/gpio71/value"), "0\n");
    EXPECT_EQ(Http(port, "POST", "/api/key/3/release").status, 200);
    EXPECT_EQ(root.Read("sys/class/gpio/gpio71/value"), "1\n");
    EXPECT_EQ(Http(port, "POST", "/api/key/6/press").status, 409);
    EXPECT_EQ(Http(port, "POST", "/api/nothing").status, 404);

    EXPECT_EQ(Http(port, "POST", "/api/usb/insert").status, 200);
    EXPECT_EQ(root.Read("media/usbinfo.txt"), "disk_sda1");
    EXPECT_EQ(Http(port, "POST", "/api/usb/insert").status, 409) << "one stick at a time";
    root.Write("media/disk_sda1/log.csv", "kept on the stick\n");
    EXPECT_EQ(Http(port, "POST", "/api/usb/eject").status, 200);
    EXPECT_EQ(Http(port, "POST", "/api/usb/pull").status, 200);
    EXPECT_FALSE(root.Exists("media/disk_sda1"));
    EXPECT_EQ(Http(port, "POST", "/api/usb/insert").status, 200);
    EXPECT_EQ(root.Read("media/disk_sda1/log.csv"), "kept on the stick\n") << "the stick keeps its files";

    // The dash sends its settings frame, and the API lists it.
    const int64_t end = NowMs() + 5000;
    while (NowMs() < end && Http(port, "GET", "/api/frames").body.find(" can0 131#") == std::string::npos) usleep(50000);
    EXPECT_NE(Http(port, "GET", "/api/frames").body.find(" can0 131#"), std::string::npos);

    const int64_t stored = NowMs() + 5000;
    while (NowMs() < stored && !root.Exists("app/data/config/motordash-eeprom.dat")) usleep(50000);
    const Reply cycled = Http(port, "POST", "/api/power/cycle");
    EXPECT_EQ(cycled.status, 200);
    EXPECT_NE(cycled.body.find("\"powerCycles\":1"), std::string::npos) << cycled.body;
    EXPECT_TRUE(root.Exists("app/data/config/motordash-eeprom.dat")) << "the settings survive the power cycle";

    EXPECT_EQ(Http(port, "POST", "/api/product/720").status, 200);
    const int64_t wide = NowMs() + 5000;
    while (NowMs() < wide && PngWidth(Http(port, "GET", "/api/screen.png").body) != 800) usleep(50000);
    EXPECT_EQ(PngWidth(Http(port, "GET", "/api/screen.png").body), 800u);
    const Reply state = Http(port, "GET", "/api/state");
    EXPECT_NE(state.body.find("\"product\":\"720\""), std::string::npos) << state.body;
}

TEST_F(Simulator, LogsOnTheStickAndNothingElse)
{
    EXPECT_EQ(Http(port, "GET", "/api/logs").body, "[]") << "no stick yet";
    ASSERT_EQ(Http(port, "POST", "/api/usb/insert").status, 200);
    const std::string log = "Interval (ms),1\n";
    root.Write("media/disk_sda1/Velnor_v650_CAN_00000001.csv", log);
    root.Write("media/disk_sda1/notes 2.txt", "x");
    root.Write("media/secret.txt", "not on the stick");
    root.Write("media/disk_sda1/folder/inside.csv", "in a folder");
    ASSERT_EQ(symlink(root.Abs("media/secret.txt").c_str(), root.Abs("media/disk_sda1/link.csv").c_str()), 0);
    ASSERT_EQ(mkfifo(root.Abs("media/disk_sda1/fifo.csv").c_str(), 0644), 0);

    const Reply list = Http(port, "GET", "/api/logs");
    EXPECT_EQ(list.status, 200);
    const size_t first = list.body.find("{\"name\":\"Velnor_v650_CAN_00000001.csv\",\"size\":16,\"modified\":\"20");
    EXPECT_EQ(first, 1u) << list.body;
    EXPECT_NE(list.body.find("},{\"name\":\"notes 2.txt\",\"size\":1,"), std::string::npos) << list.body;
    EXPECT_EQ(std::count(list.body.begin(), list.body.end(), '{'), 2) << "regular files only: " << list.body;

    EXPECT_EQ(Http(port, "GET", "/api/logs/Velnor_v650_CAN_00000001.csv").body, log);
    EXPECT_EQ(Http(port, "GET", "/api/logs/notes%202.txt").body, "x");
    for (const char* name : {"link.csv", "fifo.csv", "folder", "folder/inside.csv", "..%2Fsecret.txt", "%2E%2E%2fsecret.txt",
                             "%2e%2e", "missing.csv", "%zz", "x%00"}) {
        EXPECT_EQ(Http(port, "GET", std::string("/api/logs/") + name).status, 404) << name;
    }

    // A file the dash is still writing gives what it holds at each reading; pulled,
    // the stick keeps showing its files.
    FILE* f = fopen(root.Abs("media/disk_sda1/Velnor_v650_CAN_00000001.csv").c_str(), "a");
    ASSERT_NE(f, nullptr);
    fputs("2000-01-01::00:00:01.000,1.00\n", f);
    fflush(f);
    EXPECT_EQ(Http(port, "GET", "/api/logs/Velnor_v650_CAN_00000001.csv").body, log + "2000-01-01::00:00:01.000,1.00\n");
    fclose(f);
    ASSERT_EQ(Http(port, "POST", "/api/usb/pull").status, 200);
    EXPECT_EQ(Http(port, "GET", "/api/logs/notes%202.txt").body, "x");

    // The engine controller's logging request, forced and back to the scenario's.
    EXPECT_NE(Http(port, "POST", "/api/drive/log/off").body.find("\"logging\":false,\"log_request\":\"off\""),
              std::string::npos);
    EXPECT_NE(Http(port, "POST", "/api/drive/log/on").body.find("\"logging\":true,\"log_request\":\"on\""),
              std::string::npos);
    EXPECT_EQ(Http(port, "POST", "/api/drive/log/sometimes").status, 409);
}

// The large model's panel calibrated through the API, as the mouse does it on the page:
// each cross touched once it is on the screen, the file written, and the map in it puts
// touches anywhere on the screen within a pixel of their aim.
TEST_F(Simulator, TouchCalibratedThroughTheApiLandsOnTheAim)
{
    EXPECT_EQ(Http(port, "POST", "/api/touch/calibrate").status, 409) << "the 310 has no panel";
    EXPECT_EQ(Http(port, "POST", "/api/touch/1/1/255").status, 409);
    ASSERT_EQ(Http(port, "POST", "/api/product/720").status, 200);
    ASSERT_TRUE(WaitUntil([&] { return PngWidth(Http(port, "GET", "/api/screen.png").body) == 800; }, 5000));
    EXPECT_EQ(Http(port, "POST", "/api/touch/1/1/256").status, 409);
    ASSERT_EQ(Http(port, "POST", "/api/touch/calibrate").status, 200);

    FramebufferView fb(root.Path());
    ASSERT_TRUE(fb.Valid());
    const int aim[5][2] = {{50, 50}, {760, 50}, {760, 440}, {50, 440}, {400, 240}};
    // The dash's own screens stay in the top left 320 x 240: a lit title right of that is
    // the calibration's, and a lit centre is its cross.
    const auto titled = [&] {
        for (uint32_t y = 15; y < 50; ++y) {
            for (uint32_t x = 330; x < 470; ++x) {
                if (fb.Pixel(x, y)) return true;
            }
        }
        return false;
    };
    for (const auto& p : aim) {
        ASSERT_TRUE(WaitUntil([&] { return titled() && fb.Pixel(p[0], p[1]) != 0; }, 10000))
            << "no cross at " << p[0] << "," << p[1];
        // A finger is not still: a few samples around the aim, then the lift.
        for (const int d : {-1, 1, 0}) {
            ASSERT_EQ(Http(port, "POST", "/api/touch/" + std::to_string(p[0] + d) + "/" + std::to_string(p[1] - d) +
                                             "/200")
                          .status,
                      200);
        }
        ASSERT_EQ(Http(port, "POST", "/api/touch/" + std::to_string(p[0]) + "/" + std::to_string(p[1]) + "/0").status,
                  200);
    }
    ASSERT_TRUE(WaitUntil([&] { return root.Exists("etc/pointercal"); }, 10000));
    long long a[7] = {};
    int w = 0, h = 0;
    ASSERT_EQ(sscanf(root.Read("etc/pointercal").c_str(), "%lld %lld %lld %lld %lld %lld %lld %d %d", &a[0], &a[1],
                     &a[2], &a[3], &a[4], &a[5], &a[6], &w, &h),
              9)
        << root.Read("etc/pointercal");
    EXPECT_EQ(w, 800);
    EXPECT_EQ(h, 480);
    for (const auto& p : {std::pair{0, 0}, {799, 479}, {123, 321}, {700, 100}, {400, 240}}) {
        int rx = 0, ry = 0;
        touch_sim_panel(p.first, p.second, &rx, &ry);
        EXPECT_NEAR((a[2] + a[0] * rx + a[1] * ry) / a[6], p.first, 1);
        EXPECT_NEAR((a[5] + a[3] * rx + a[4] * ry) / a[6], p.second, 1);
    }
    // The calibration ends where the dash was going: the splash, whose corner is not the
    // calibration's black.
    EXPECT_TRUE(WaitUntil([&] { return fb.Pixel(5, 5) != 0; }, 5000));
}

TEST_F(Simulator, ABusyPortIsRefusedPlainly)
{
    std::string err;
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"run", "--root", root.Abs("other"), "--port", std::to_string(port)},
                         nullptr, &err),
              1);
    EXPECT_NE(err.find("port " + std::to_string(port) + " is busy"), std::string::npos) << err;
    EXPECT_FALSE(root.Exists("other")) << "nothing is started or made";
}

TEST_F(Simulator, IoBoardShownWithItsInputsAndPulledOffTheLink)
{
    EXPECT_NE(Http(port, "GET", "/").body.find("/api/ioboard"), std::string::npos) << "the page shows the board";
    const Reply board = Http(port, "GET", "/api/ioboard");
    ASSERT_EQ(board.status, 200) << board.body;
    EXPECT_NE(board.body.find("\"link\":\"on\""), std::string::npos) << board.body;
    EXPECT_NE(board.body.find("\"bootloader\":2,\"application\":"), std::string::npos) << board.body;

    const Reply set = Http(port, "POST", "/api/ioboard/input/an3/2.5");
    EXPECT_EQ(set.status, 200);
    EXPECT_NE(set.body.find("\"an\":[0,0,2.5,0,"), std::string::npos) << set.body;
    EXPECT_EQ(Http(port, "POST", "/api/ioboard/input/an15/1").status, 409);
    EXPECT_EQ(Http(port, "POST", "/api/ioboard/input/an3").status, 404);
    EXPECT_NE(Http(port, "POST", "/api/ioboard/link/off").body.find("\"link\":\"off\""), std::string::npos);

    // A power cycle powers the board up afresh: back on the link, inputs at rest.
    EXPECT_EQ(Http(port, "POST", "/api/power/cycle").status, 200);
    const Reply after = Http(port, "GET", "/api/ioboard");
    EXPECT_NE(after.body.find("\"link\":\"on\""), std::string::npos) << after.body;
    EXPECT_NE(after.body.find("\"an\":[0,0,0,0,"), std::string::npos) << after.body;
}

}  // namespace
