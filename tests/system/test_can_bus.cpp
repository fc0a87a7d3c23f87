// The virtual CAN bus, its tools, and the CAN driver on top of it.
#include <gtest/gtest.h>

#include <csignal>
#include <linux/can.h>
#include <memory>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>

#include "can_drv.h"
#include "dash_harness.h"

namespace {

// A device root with a running bus.
class BusTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        bus = std::make_unique<Process>(BinPath("motordash-can"), nullptr, std::vector<std::string>{"bus", root.Path()});
        ASSERT_TRUE(bus->WaitForOutput("serving", 10000)) << bus->Stderr();
    }
    void TearDown() override
    {
        if (bus) bus->Signal(SIGTERM);
    }

    int Connect(const char* port)
    {
        const int fd = socket(AF_UNIX, SOCK_SEQPACKET, 0);
        struct sockaddr_un addr = {};
        addr.sun_family = AF_UNIX;
        snprintf(addr.sun_path, sizeof(addr.sun_path), "%s/run/can/%s", root.Path().c_str(), port);
        EXPECT_EQ(connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)), 0);
        const int size = 1 << 20;
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size));
        return fd;
    }

    static struct can_frame Frame(uint32_t id, uint32_t seq)
    {
        struct can_frame f = {};
        f.can_id = id;
        f.can_dlc = 8;
        memcpy(f.data, &seq, 4);
        return f;
    }

    // Frames waiting on fd within timeoutMs, in arrival order.
    static std::vector<uint32_t> Receive(int fd, size_t expected, int timeoutMs)
    {
        std::vector<uint32_t> seqs;
        struct timeval tv = {0, 20000};
        setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof(tv));
        const int64_t end = NowMs() + timeoutMs;
        while (seqs.size() < expected && NowMs() < end) {
            struct can_frame f;
            if (recv(fd, &f, sizeof(f), 0) == (ssize_t)sizeof(f)) {
                uint32_t seq;
                memcpy(&seq, f.data, 4);
                seqs.push_back(seq);
            }
        }
        return seqs;
    }

    DeviceRoot root;
    std::unique_ptr<Process> bus;
};

std::vector<uint32_t> Sequence(uint32_t n)
{
    std::vector<uint32_t> v(n);
    for (uint32_t i = 0; i < n; i++) v[i] = i;
    return v;
}

TEST_F(BusTest, FramesReachEveryOtherClientInOrderNeverTheSender)
{
    const int a = Connect("can0"), b = Connect("can0"), c = Connect("can0"), other = Connect("can1");
    for (uint32_t i = 0; i < 500; i++) {
        const struct can_frame f = Frame(0x100, i);
        ASSERT_EQ(send(a, &f, sizeof(f), 0), (ssize_t)sizeof(f));
    }
    EXPECT_EQ(Receive(b, 500, 5000), Sequence(500));
    EXPECT_EQ(Receive(c, 500, 5000), Sequence(500));
    EXPECT_TRUE(Receive(a, 1, 200).empty()) << "never back to the sender";
    EXPECT_TRUE(Receive(other, 1, 200).empty()) << "ports are separate buses";
    // A client that leaves does not disturb the rest.
    close(c);
    const struct can_frame f = Frame(0x101, 7);
    send(b, &f, sizeof(f), 0);
    EXPECT_EQ(Receive(a, 1, 2000), std::vector<uint32_t>{7});
    close(a);
    close(b);
    close(other);
}

TEST_F(BusTest, CarriesAFullBusWithoutLoss)
{
    const int tx = Connect("can0"), rx = Connect("can0");
    constexpr uint32_t kFrames = 24000;  // three seconds of a full 1 Mbit/s bus
    std::vector<uint32_t> got;
    std::thread reader([&] { got = Receive(rx, kFrames, 30000); });
    const int64_t start = NowMs();
    for (uint32_t i = 0; i < kFrames; i++) {
        const struct can_frame f = Frame(0x123, i);
        ASSERT_EQ(send(tx, &f, sizeof(f), 0), (ssize_t)sizeof(f));
    }
    reader.join();
    const int64_t ms = NowMs() - start;
    EXPECT_EQ(got, Sequence(kFrames));
    EXPECT_GT(kFrames * 1000.0 / (ms ? ms : 1), 8000.0) << "frames a second through the bus";
    close(tx);
    close(rx);
}

TEST_F(BusTest, AReaderThatPausesLosesNothing)
{
    const int tx = Connect("can0"), rx = Connect("can0");
    for (uint32_t i = 0; i < 20000; i++) {
        const struct can_frame f = Frame(0x7FF, i);
        ASSERT_EQ(send(tx, &f, sizeof(f), 0), (ssize_t)sizeof(f));
    }
    EXPECT_EQ(Receive(rx, 20000, 20000), Sequence(20000));
    close(tx);
    close(rx);
}

TEST_F(BusTest, ASecondBusIsRefused)
{
    std::string err;
    EXPECT_EQ(RunProgram(BinPath("motordash-can"), {"bus", root.Path()}, nullptr, &err), 1);
    EXPECT_NE(err.find("a bus is already running"), std::string::npos) << err;
}

TEST_F(BusTest, DumpSendAndPlayInTheLogFormats)
{
    Process dump(BinPath("motordash-can"), nullptr, {"dump", root.Path(), "can0", "-n", "4", "-t", "20"});
    usleep(300000);
    EXPECT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can0", "123#1122334455667788"}), 0);
    EXPECT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can0", "1ABCDEF0#01.02"}), 0);
    root.Write("tmp/replay.log", "(1000.000000) can0 7FF#R\n(1000.050000) can0 100#\n");
    const int64_t start = NowMs();
    EXPECT_EQ(RunProgram(BinPath("motordash-can"), {"play", root.Path(), root.Abs("tmp/replay.log")}), 0);
    EXPECT_GE(NowMs() - start, 45) << "the log's own timing";
    int status = 0;
    ASSERT_TRUE(dump.Wait(10000, &status));
    const std::string out = dump.Stdout();
    std::vector<std::string> frames;
    for (size_t at = 0; (at = out.find(") can0 ", at)) != std::string::npos; at++) {
        frames.push_back(out.substr(at + 7, out.find('\n', at) - at - 7));
    }
    EXPECT_EQ(frames, (std::vector<std::string>{"123#1122334455667788", "1ABCDEF0#0102", "7FF#R", "100#"})) << out;
    EXPECT_EQ(out[0], '(');

    std::string err;
    EXPECT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can0", "12#1"}, nullptr, &err), 2);
    EXPECT_NE(err.find("bad frame"), std::string::npos);
    EXPECT_EQ(RunProgram(BinPath("motordash-can"), {"send", root.Path(), "can7", "123#"}, nullptr, &err), 1);
    EXPECT_NE(err.find("unknown interface"), std::string::npos);
}

// The driver opens its port on the bus and passes frames both ways.
class DriverTest : public BusTest {
protected:
    void SetUp() override
    {
        setenv("DASH_ROOT", root.Path().c_str(), 1);
        BusTest::SetUp();
    }
    void TearDown() override
    {
        can_close(CAN_PORT1);
        can_close(CAN_PORT2);
        can_set_receive_callback(CAN_PORT1, nullptr);
        BusTest::TearDown();
        unsetenv("DASH_ROOT");
    }
};

int g_received;
void CountReceived(CAN_PORTS_T, CAN_MSG_T*)
{
    g_received++;
}

TEST_F(DriverTest, OpenSendReceive)
{
    g_received = 0;
    can_set_receive_callback(CAN_PORT1, CountReceived);
    can_bitrate_set(CAN_PORT1, 1000000);
    ASSERT_EQ(can_open(CAN_PORT1), 0);
    EXPECT_TRUE(can_is_open(CAN_PORT1));
    EXPECT_EQ(can_open(CAN_PORT1), 0) << "already open";
    EXPECT_EQ(can_status_get(CAN_PORT1), CAN_STATUS_ERROR_ACTIVE);
    EXPECT_EQ(can_status_get(CAN_PORT2), CAN_STATUS_STOPPED);

    const int peer = Connect("can0");
    CAN_MSG_T out = {};
    out.id = 0x131;
    out.msg_length = 0;  // still 16 bytes on the wire
    ASSERT_EQ(can_transmit_message(CAN_PORT1, &out), 0);
    struct can_frame f;
    ASSERT_EQ(recv(peer, &f, sizeof(f), 0), (ssize_t)sizeof(f));
    EXPECT_EQ(f.can_id, 0x131u);
    EXPECT_EQ(f.can_dlc, 0);

    // An error frame first: one receive call skips it and returns the data frame.
    struct can_frame err = {};
    err.can_id = CAN_ERR_FLAG | 0x40;
    struct can_frame data = Frame(CAN_EFF_FLAG | 0x1234567, 42);
    send(peer, &err, sizeof(err), 0);
    send(peer, &data, sizeof(data), 0);
    CAN_MSG_T in = {};
    const int64_t end = NowMs() + 3000;
    while (can_receive_message(CAN_PORT1, &in) != 0 && NowMs() < end) usleep(1000);
    EXPECT_EQ(in.id, 0x1234567u);
    EXPECT_EQ(in.extend, 1);
    EXPECT_EQ(in.msg_length, 8);
    EXPECT_NE(in.timestampMicrosecs, 0u);
    EXPECT_EQ(g_received, 1);
    EXPECT_EQ(can_receive_message(CAN_PORT1, &in), -1) << "nothing more waiting";

    // Only error frames waiting: nothing.
    send(peer, &err, sizeof(err), 0);
    usleep(50000);
    EXPECT_EQ(can_receive_message(CAN_PORT1, &in), -1);
    close(peer);

    EXPECT_EQ(can_close(CAN_PORT1), 0);
    EXPECT_EQ(can_transmit_message(CAN_PORT1, &out), -1);
    EXPECT_EQ(can_receive_message(CAN_PORT1, &in), -1);
}

TEST_F(DriverTest, BusGoingAwayReadsAsEmpty)
{
    ASSERT_EQ(can_open(CAN_PORT1), 0);
    bus->Signal(SIGTERM);
    int status;
    ASSERT_TRUE(bus->Wait(5000, &status));
    bus.reset();
    CAN_MSG_T in = {}, out = {};
    EXPECT_EQ(can_receive_message(CAN_PORT1, &in), -1);
    EXPECT_EQ(can_transmit_message(CAN_PORT1, &out), -1) << "and sending fails without a signal";
    EXPECT_TRUE(can_is_open(CAN_PORT1)) << "the driver does not reconnect or close by itself";
}

TEST(CanDriver, NoBusFailsWithTheDriversMessage)
{
    DeviceRoot root;
    setenv("DASH_ROOT", root.Path().c_str(), 1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(can_open(CAN_PORT2), -1);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("Failed getting canPort index for can1. No such device"), std::string::npos) << out;
    EXPECT_TRUE(can_is_open(CAN_PORT2)) << "the socket stays after a late failure";
    EXPECT_EQ(can_open(CAN_PORT2), 0) << "and is not retried";
    can_close(CAN_PORT2);
    unsetenv("DASH_ROOT");
}

}  // namespace
