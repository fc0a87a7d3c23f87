#include "can_drv.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <libsocketcan.h>
#include <unistd.h>

#include "cansock.h"
#include "platform_utils.h"

namespace {

constexpr int CAN_RCVBUF_BYTES = 32768;
constexpr int CAN_TXQUEUE_FRAMES = 1024;
constexpr U32 CAN_ERR_MASK_ALL = 0x1FFFFFFF;

S32 m_socketHandles[CAN_MAX_PORTS] = {-1, -1};
U32 m_socketBitrates[CAN_MAX_PORTS] = {250000, 250000};
U32 m_socketAutoRestartMs[CAN_MAX_PORTS] = {1000, 1000};
U32 m_bSocketBitTimingSet[CAN_MAX_PORTS] = {0, 0};
CAN_BITTIMING_T m_socketBitTiming[CAN_MAX_PORTS];
CAN_CALLBACK_T m_apReceiveCallbackFuncs[CAN_MAX_PORTS];
CAN_CALLBACK_T m_apTransmitCallbackFuncs[CAN_MAX_PORTS];

struct IFNAME_T {
    char text[16];
};

IFNAME_T _ifname(CAN_PORTS_T port)
{
    IFNAME_T n;
    snprintf(n.text, sizeof(n.text), "can%d", (int)port);
    return n;
}

// Ports outside the two are the caller's mistake; they must not reach the tables.
bool _valid(CAN_PORTS_T port)
{
    return port >= CAN_PORT1 && port < CAN_MAX_PORTS;
}

}  // namespace

static_assert(sizeof(struct can_bittiming) == sizeof(CAN_BITTIMING_T));

S32 can_open(CAN_PORTS_T port)
{
    if (!_valid(port)) return -1;
    if (m_socketHandles[port] != -1) return 0;
    const IFNAME_T name = _ifname(port);
    const int p = (int)port;

    can_do_stop(name.text);
    if (m_bSocketBitTimingSet[port]) {
        struct can_bittiming bt;
        memcpy(&bt, &m_socketBitTiming[port], sizeof(bt));
        if (can_set_bittiming(name.text, &bt) != 0) {
            printf("Failed to set bit timing for can%d. %s\n", p, strerror(errno));
            return -1;
        }
    } else if (can_set_bitrate(name.text, m_socketBitrates[port]) != 0) {
        printf("Failed to set bitrate for can%d. %s\n", p, strerror(errno));
        return -1;
    }
    struct can_bittiming bt;
    if (can_get_bittiming(name.text, &bt) == 0) {
        printf("Bit-timing for can%d:-\n    BR:%d, SP:%d, TQ:%d, PRSEG:%d, PHSEG1:%d, PHSEG2:%d, SJW:%d, BRP:%d\n", p,
               (int)bt.bitrate, (int)bt.sample_point, (int)bt.tq, (int)bt.prop_seg, (int)bt.phase_seg1,
               (int)bt.phase_seg2, (int)bt.sjw, (int)bt.brp);
    } else {
        printf("Failed to get bit timing for can%d. %s\n", p, strerror(errno));
        return -1;
    }
    if (can_set_restart_ms(name.text, m_socketAutoRestartMs[port]) != 0) {
        printf("Failed to set auto restart time of %dms for can%d. %s\n", (int)m_socketAutoRestartMs[port], p,
               strerror(errno));
        return -1;
    }
    can_do_start(name.text);

    const int fd = cansock_socket();
    if (fd < 0) {
        printf("Failed opening socket for can%d. %s\n", p, strerror(errno));
        return -1;
    }
    // From here on the socket stays in the table whatever fails: the port reads as
    // open, possibly working in part, until a close or a new bit rate clears it.
    m_socketHandles[port] = fd;
    if (cansock_set_rcvbuf(fd, CAN_RCVBUF_BYTES) != 0) {
        printf("Failed setting receive buffers for can%d. %s\n", p, strerror(errno));
        return -1;
    }
    if (cansock_set_txqueuelen(fd, name.text, CAN_TXQUEUE_FRAMES) != 0) {
        printf("Failed setting txqueuelen for can%d. %s\n", p, strerror(errno));
        return -1;
    }
    const int index = cansock_ifindex(fd, name.text);
    if (index < 0) {
        printf("Failed getting canPort index for can%d. %s\n", p, strerror(errno));
        return -1;
    }
    if (cansock_bind(fd, name.text, index) != 0) {
        printf("Failed binding can%d. %s\n", p, strerror(errno));
        return -1;
    }
    if (cansock_set_error_filter(fd, CAN_ERR_MASK_ALL) != 0) {
        printf("Failed enabling errors on can%d. %s\n", p, strerror(errno));
        return -1;
    }
    if (cansock_set_loopback(fd, 0) != 0) {
        printf("Failed disabling loopback on can%d. %s\n", p, strerror(errno));
        return -1;
    }
    if (fcntl(fd, F_SETFL, O_NONBLOCK) != 0) {
        printf("Failed setting O_NONBLOCK on can%d. %s\n", p, strerror(errno));
        return -1;
    }
    return 0;
}

BOOL can_is_open(CAN_PORTS_T port)
{
    return _valid(port) && m_socketHandles[port] != -1;
}

// Closes an open port's socket and stops its interface; true when it was open.
static bool _closeSocket(CAN_PORTS_T port)
{
    if (!can_is_open(port)) return false;
    close(m_socketHandles[port]);
    m_socketHandles[port] = -1;
    can_do_stop(_ifname(port).text);
    return true;
}

S32 can_close(CAN_PORTS_T port)
{
    _closeSocket(port);
    return 0;
}

void can_set_receive_callback(CAN_PORTS_T port, CAN_CALLBACK_T callback)
{
    if (_valid(port)) m_apReceiveCallbackFuncs[port] = callback;
}

void can_set_transmit_callback(CAN_PORTS_T port, CAN_CALLBACK_T callback)
{
    if (_valid(port)) m_apTransmitCallbackFuncs[port] = callback;
}

// A setting that the interface takes at open: a closed port only keeps it, an open
// one is closed and opened again with it.
static S32 _reopenWith(CAN_PORTS_T port)
{
    return _closeSocket(port) ? can_open(port) : -1;
}

void can_bitrate_set(CAN_PORTS_T port, U32 bitsPerSecond)
{
    if (!_valid(port)) return;
    m_socketBitrates[port] = bitsPerSecond;
    _reopenWith(port);
}

S32 can_bittiming_set(CAN_PORTS_T port, const CAN_BITTIMING_T* timing)
{
    if (!_valid(port) || !timing) return -1;
    m_socketBitrates[port] = timing->bitrate;
    m_socketBitTiming[port] = *timing;
    m_bSocketBitTimingSet[port] = 1;
    return _reopenWith(port);
}

S32 can_auto_restart_ms_set(CAN_PORTS_T port, U32 milliseconds)
{
    if (!_valid(port)) return -1;
    m_socketAutoRestartMs[port] = milliseconds;
    return _reopenWith(port);
}

S32 can_restart(CAN_PORTS_T port)
{
    if (!_valid(port)) return -1;
    return can_do_restart(_ifname(port).text);
}

CAN_STATUS can_status_get(CAN_PORTS_T port)
{
    if (!can_is_open(port)) return CAN_STATUS_STOPPED;
    int state = 0;
    if (can_get_state(_ifname(port).text, &state) != 0 || state < 0 || state >= CAN_STATUS_MAX) {
        return CAN_STATUS_STOPPED;
    }
    return (CAN_STATUS)state;
}

S32 can_transmit_message(CAN_PORTS_T port, CAN_MSG_T* message)
{
    if (!can_is_open(port) || !message) return -1;
    struct can_frame frame;
    memset(&frame, 0, sizeof(frame));
    frame.can_id = (message->id & CAN_EFF_MASK) | (message->extend ? CAN_EFF_FLAG : 0u) |
                   (message->request_remote ? CAN_RTR_FLAG : 0u);
    const U8 length = message->msg_length > CAN_CONTENT_MAX_LENGTH ? CAN_CONTENT_MAX_LENGTH : message->msg_length;
    frame.can_dlc = length;
    memcpy(frame.data, message->msg_content, length);
    if (cansock_write(m_socketHandles[port], &frame) != (int)sizeof(frame)) return -1;
    if (m_apTransmitCallbackFuncs[port]) m_apTransmitCallbackFuncs[port](port, message);
    return 0;
}

S32 can_receive_message(CAN_PORTS_T port, CAN_MSG_T* message)
{
    if (!can_is_open(port) || !message) return -1;
    struct can_frame frame;
    for (;;) {
        if (cansock_read(m_socketHandles[port], &frame) <= 0) return -1;
        if (!(frame.can_id & CAN_ERR_FLAG)) break;  // error frames never reach the application
    }
    message->id = frame.can_id & CAN_EFF_MASK;
    message->extend = (frame.can_id & CAN_EFF_FLAG) ? 1 : 0;
    message->request_remote = (frame.can_id & CAN_RTR_FLAG) ? 1 : 0;
    // A length above 8 from a foreign sender is cut to what the record holds.
    message->msg_length = frame.can_dlc > CAN_CONTENT_MAX_LENGTH ? CAN_CONTENT_MAX_LENGTH : frame.can_dlc;
    memcpy(message->msg_content, frame.data, CAN_CONTENT_MAX_LENGTH);
    message->timestampMicrosecs = 0;
    struct timeval stamp;
    if (cansock_timestamp(m_socketHandles[port], &stamp) == 0) {
        message->timestampMicrosecs = (U64)stamp.tv_sec * 1000000u + (U64)stamp.tv_usec;
    }
    if (m_apReceiveCallbackFuncs[port]) m_apReceiveCallbackFuncs[port](port, message);
    return 0;
}

BOOL can_statistics_get(CAN_PORTS_T port, CAN_STATISTICS_T* statistics)
{
    if (!statistics) return 1;
    memset(statistics, 0, sizeof(*statistics));
    static constexpr const char* names[] = {"rx_bytes", "rx_packets", "rx_errors", "tx_bytes", "tx_packets", "tx_errors"};
    U64* counters[] = {&statistics->rx_bytes, &statistics->rx_packets, &statistics->rx_errors,
                       &statistics->tx_bytes, &statistics->tx_packets, &statistics->tx_errors};
    for (size_t i = 0; i < 6; i++) {
        char path[96], value[20];
        snprintf(path, sizeof(path), "/sys/class/net/can%d/statistics/%s", (int)port, names[i]);
        if (read_attribute(path, value, sizeof(value))) *counters[i] = (U64)strtoll(value, nullptr, 10);
    }
    return 1;
}
