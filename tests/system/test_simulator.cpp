// motordash-sim run through its HTTP API, as scripts and the web page use it.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include "dash_harness.h"

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

TEST_F(Simulator, ABusyPortIsRefusedPlainly)
{
    std::string err;
    EXPECT_EQ(RunProgram(BinPath("motordash-sim"), {"run", "--root", root.Abs("other"), "--port", std::to_string(port)},
                         nullptr, &err),
              1);
    EXPECT_NE(err.find("port " + std::to_string(port) + " is busy"), std::string::npos) << err;
    EXPECT_FALSE(root.Exists("other")) << "nothing is started or made";
}

}  // namespace
