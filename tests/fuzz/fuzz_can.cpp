// CAN frames as the bus delivers them: raw kernel frames into the dash's two ports, through
// the driver and the receive tables, then the foreground task and the screens on them.
//
// Input: a setup byte (bits 0-1 the main screen stored last, the rest the quad page), a
// units byte (bit 7 the large model), then steps. A step's first byte says what it is:
//   1xx0 nnnn   n + 1 ticks of 10 ms
//   1xx1 nnnn   (n + 1) x 16 ticks with the main loop held up: time passes (frames age,
//               values time out) and the screen shows it at the next pass
//   01xk kkkk   the keys k held down from now on
//   00xx xtxp   a frame on port p (16 bytes of struct can_frame follow), then with t two
//               ticks, so that the main loop takes it and the screen shows it
// The run ends with a few ticks, so that the last frames reach the screen.
#include <cstring>
#include <linux/can.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "canbus_sim.h"
#include "fuzz_dash.h"

namespace {

// The virtual bus: the harness listens where motordash-can would, and holds the other
// end of each port's connection.
int m_bus[CANBUS_PORTS] = {-1, -1};

void _listen(void)
{
    static int listening[CANBUS_PORTS] = {-1, -1};
    for (int port = 0; port < CANBUS_PORTS; port++) {
        if (listening[port] >= 0) continue;
        const char* name = port == 0 ? "can0" : "can1";
        struct sockaddr_un addr;
        if (!canbus_address(name, &addr)) continue;
        FuzzWriteFile("run/can/.keep", "", 0);
        listening[port] = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        bind(listening[port], reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr));
        listen(listening[port], 1);
    }
    // The dash opens its ports once, at its first start.
    for (int port = 0; port < CANBUS_PORTS; port++) {
        if (m_bus[port] < 0 && listening[port] >= 0) m_bus[port] = accept4(listening[port], nullptr, nullptr, SOCK_NONBLOCK);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzRoot();
    _listen();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput in(data, size);
    EEVariables_T settings = EEVariables_DEFAULT;
    const uint8_t setup = in.Byte();
    settings.CURRENT_SCREEN = (uint8_T)(1 + (setup & 3));
    settings.CURRENT_QUAD_SCREEN = (uint8_T)(1 + (setup >> 2) % 15);
    const uint8_t units = in.Byte();
    settings.PRESSURE_UNITS = (uint8_T)(1 + units % 3);
    settings.SPEED_UNITS = (uint8_T)(1 + units / 3 % 3);
    settings.TEMP_UNITS = (uint8_T)(1 + units / 9 % 2);
    settings.AF_UNITS = (uint8_T)(1 + (units & 0x7F) / 18 % 3);
    FuzzDashStart(5000, &settings, units & 0x80);
    _listen();

    while (in.Left() > 0) {
        const uint8_t step = in.Byte();
        if (step & 0x80) {
            const bool held = step & 0x10;
            for (int i = (held ? 16 : 1) * ((step & 0x0F) + 1); i > 0; i--) FuzzDashTick(!held);
        } else if (step & 0x40) {
            FuzzDashKeys(step & 0x1F);
        } else {
            struct can_frame frame = {};
            in.Take(&frame, sizeof(frame));
            const int bus = m_bus[step & 1];
            if (bus >= 0) (void)!send(bus, &frame, sizeof(frame), MSG_DONTWAIT | MSG_NOSIGNAL);
            if (step & 4) FuzzDashTick(), FuzzDashTick();
        }
    }
    FuzzDashKeys(0);
    for (int i = 0; i < 4; i++) FuzzDashTick();
    FuzzDashStop();
    return 0;
}
