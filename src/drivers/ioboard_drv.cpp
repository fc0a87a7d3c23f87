#include "ioboard_drv.h"

#include <pthread.h>

namespace {

constexpr U8 DUTY_ON = 255;

// The wanted output duties, which a board gets when it is there. Written by the
// foreground task, readable from any thread.
pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
U8 m_outputDuty[IOBOARD_NUMBER_RELAY_OUTPUTS];
BOOL m_isOpen = 0;

}  // namespace

static bool _channelValid(U32 channel)
{
    return channel >= DIG_OUT_CHANNEL_1 && channel <= DIG_OUT_CHANNEL_MAX;
}

BOOL ioboard_set_relay_out_config(U32 channel, BOOL on)
{
    if (!_channelValid(channel)) return 0;
    pthread_mutex_lock(&m_mutex);
    m_outputDuty[channel - 1] = on ? DUTY_ON : 0;
    const BOOL isOpen = m_isOpen;
    pthread_mutex_unlock(&m_mutex);
    return isOpen;
}

BOOL ioboard_get_relay_out_config(U32 channel, BOOL* on)
{
    if (!_channelValid(channel) || !on) return 0;
    pthread_mutex_lock(&m_mutex);
    *on = m_outputDuty[channel - 1] != 0;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}
