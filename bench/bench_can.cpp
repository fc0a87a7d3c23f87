// CAN receive: the mailbox path per frame, the whole pump through a real socket of
// the virtual bus, and the bus's own forwarding rate.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <ftw.h>
#include <linux/can.h>
#include <pthread.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

#include "Timer_7Je7r.h"
#include "can_bus.h"
#include "can_drv.h"
#include "can_ports.h"
#include "can_rx.h"

namespace {

// One virtual bus for the whole run, served on a thread of this process.
std::string _busRoot(void)
{
    static std::string root;
    if (!root.empty()) return root;
    char tmpl[] = "/tmp/motordash-bench-XXXXXX";
    root = mkdtemp(tmpl);
    pthread_t thread;
    pthread_create(
        &thread, nullptr,
        [](void* arg) -> void* {
            can_bus_serve(*static_cast<std::string*>(arg));
            return nullptr;
        },
        &root);
    pthread_detach(thread);
    std::string error;
    for (int i = 0; i < 200; i++) {
        const int fd = can_bus_connect(root, "can0", &error);
        if (fd >= 0) {
            close(fd);
            break;
        }
        usleep(10000);
    }
    setenv("DASH_ROOT", root.c_str(), 1);
    return root;
}

struct can_frame _frame(uint32_t id, uint8_t seed)
{
    struct can_frame f = {};
    f.can_id = id;
    f.can_dlc = 8;
    for (int i = 0; i < 8; i++) f.data[i] = (uint8_t)(seed + i);
    return f;
}

// The table lookup and mailbox write of one received frame.
void BM_MailboxPath(benchmark::State& state)
{
    CAN_MSG_T msg = {};
    msg.id = 0x109;
    msg.msg_length = 8;
    for (auto _ : state) {
        rxTable_285279__0022(CAN_PORT1, &msg);
        msg.msg_content[0]++;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MailboxPath);

// One foreground pass of fetching and decoding every frame.
void BM_ForegroundFetchAndDecode(benchmark::State& state)
{
    for (auto _ : state) Timer_7Je7r();
}
BENCHMARK(BM_ForegroundFetchAndDecode);

// CANProcessRx draining a burst of frames that the bus has delivered to the dash's port
// (a burst that fits the port's receive buffer).
void BM_CANProcessRx(benchmark::State& state)
{
    const std::string root = _busRoot();
    start_CAN_285279__0022();
    std::string error;
    const int ecu = can_bus_connect(root, "can0", &error);
    const int burst = (int)state.range(0);
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = 0; i < burst; i++) {
            const struct can_frame f = _frame(0x101 + (uint32_t)(i % 9), (uint8_t)i);
            send(ecu, &f, sizeof(f), 0);
        }
        usleep(2000 + burst * 2);  // let the bus hand them over
        state.ResumeTiming();
        CANProcessRx();
    }
    state.SetItemsProcessed(state.iterations() * burst);
    close(ecu);
    can_close(CAN_PORT1);
}
BENCHMARK(BM_CANProcessRx)->Arg(100)->Iterations(300);

// The bus process's forwarding: one client sends, another receives.
void BM_BusForwarding(benchmark::State& state)
{
    const std::string root = _busRoot();
    std::string error;
    const int tx = can_bus_connect(root, "can1", &error), rx = can_bus_connect(root, "can1", &error);
    const int size = 1 << 20;
    setsockopt(rx, SOL_SOCKET, SO_RCVBUF, &size, sizeof(size));
    constexpr int kFrames = 2000;
    for (auto _ : state) {
        for (int i = 0; i < kFrames; i++) {
            const struct can_frame f = _frame(0x200, (uint8_t)i);
            send(tx, &f, sizeof(f), 0);
        }
        for (int i = 0; i < kFrames; i++) {
            struct can_frame f;
            recv(rx, &f, sizeof(f), 0);
        }
    }
    state.SetItemsProcessed(state.iterations() * kFrames);
    close(tx);
    close(rx);
}
BENCHMARK(BM_BusForwarding)->UseRealTime();

}  // namespace
