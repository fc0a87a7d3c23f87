// The interface configuration calls of the CAN library, for the simulated device:
// they keep what is set, and the state is error-active while the port is started
// and its bus is reachable.
#include <libsocketcan.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <sys/socket.h>
#include <unistd.h>

#include "canbus_sim.h"

namespace {

struct SIM_INTERFACE_T {
    bool started;
    __u32 restartMs;
    struct can_bittiming timing;
};

std::mutex m_lock;
SIM_INTERFACE_T m_interfaces[CANBUS_PORTS];

// The controller's clock of the simulated interface, for the timing it reports.
constexpr __u32 SIM_CAN_CLOCK_HZ = 24000000;

SIM_INTERFACE_T* _interface(const char* name)
{
    const int port = canbus_port_of(name);
    if (port < 0) {
        errno = ENODEV;
        return nullptr;
    }
    return &m_interfaces[port];
}

bool _busReachable(const char* name)
{
    struct sockaddr_un addr;
    if (!canbus_address(name, &addr)) return false;
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) return false;
    const bool ok = connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) == 0;
    close(fd);
    return ok;
}

}  // namespace

extern "C" {

int can_do_start(const char* name)
{
    std::lock_guard<std::mutex> guard(m_lock);
    SIM_INTERFACE_T* itf = _interface(name);
    if (!itf) return -1;
    itf->started = true;
    return 0;
}

int can_do_stop(const char* name)
{
    std::lock_guard<std::mutex> guard(m_lock);
    SIM_INTERFACE_T* itf = _interface(name);
    if (!itf) return -1;
    itf->started = false;
    return 0;
}

int can_do_restart(const char* name)
{
    // Only an interface in bus-off can be restarted, and the virtual bus has none.
    std::lock_guard<std::mutex> guard(m_lock);
    if (!_interface(name)) return -1;
    errno = EINVAL;
    return -1;
}

int can_set_restart_ms(const char* name, __u32 restart_ms)
{
    std::lock_guard<std::mutex> guard(m_lock);
    SIM_INTERFACE_T* itf = _interface(name);
    if (!itf) return -1;
    itf->restartMs = restart_ms;
    return 0;
}

int can_set_bittiming(const char* name, struct can_bittiming* bt)
{
    std::lock_guard<std::mutex> guard(m_lock);
    SIM_INTERFACE_T* itf = _interface(name);
    if (!itf || !bt) return -1;
    itf->timing = *bt;
    return 0;
}

int can_set_bitrate(const char* name, __u32 bitrate)
{
    std::lock_guard<std::mutex> guard(m_lock);
    SIM_INTERFACE_T* itf = _interface(name);
    if (!itf) return -1;
    if (bitrate == 0 || bitrate > 1000000) {
        errno = EINVAL;
        return -1;
    }
    // Eight time quanta a bit at the high rates, sixteen below: sample point 75 %.
    const __u32 quanta = bitrate >= 500000 ? 8 : 16;
    struct can_bittiming t;
    memset(&t, 0, sizeof(t));
    t.bitrate = bitrate;
    t.sample_point = 750;
    t.brp = SIM_CAN_CLOCK_HZ / (bitrate * quanta);
    t.tq = (__u32)(1000000000ull * t.brp / SIM_CAN_CLOCK_HZ);
    t.prop_seg = quanta * 3 / 8;
    t.phase_seg1 = quanta * 6 / 8 - 1 - t.prop_seg;
    t.phase_seg2 = quanta / 4;
    t.sjw = 1;
    itf->timing = t;
    return 0;
}

int can_get_bittiming(const char* name, struct can_bittiming* bt)
{
    std::lock_guard<std::mutex> guard(m_lock);
    SIM_INTERFACE_T* itf = _interface(name);
    if (!itf || !bt) return -1;
    *bt = itf->timing;
    return 0;
}

int can_get_restart_ms(const char* name, __u32* restart_ms)
{
    std::lock_guard<std::mutex> guard(m_lock);
    SIM_INTERFACE_T* itf = _interface(name);
    if (!itf || !restart_ms) return -1;
    *restart_ms = itf->restartMs;
    return 0;
}

int can_get_state(const char* name, int* state)
{
    bool started;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        SIM_INTERFACE_T* itf = _interface(name);
        if (!itf || !state) return -1;
        started = itf->started;
    }
    *state = !started ? CAN_STATE_STOPPED : _busReachable(name) ? CAN_STATE_ERROR_ACTIVE : CAN_STATE_BUS_OFF;
    return 0;
}

}  // extern "C"
