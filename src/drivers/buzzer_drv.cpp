#include "buzzer_drv.h"

#include "platform_utils.h"
#include "timer_drv.h"

namespace {

constexpr const char* BUZZER_ATTRIBUTE = "/sys/class/leds/buzzer-pwm/brightness";
constexpr const char* BUZZER_ON = "127";
constexpr const char* BUZZER_OFF = "0";

U32 m_isMuted = 0;
U32 m_isBuzzerOn = 0;

}  // namespace

static void _buzzer_timer_callback(void)
{
    if (!m_isMuted && m_isBuzzerOn) {
        write_attribute(BUZZER_ATTRIBUTE, BUZZER_OFF);
        m_isBuzzerOn = 0;
    }
}

void buzzer_init(void)
{
    _buzzer_timer_callback();
}

void buzzer_out(U32 on)
{
    on = on ? 1 : 0;
    if (m_isMuted || on == m_isBuzzerOn) return;
    write_attribute(BUZZER_ATTRIBUTE, on ? BUZZER_ON : BUZZER_OFF);
    m_isBuzzerOn = on;
}

void buzzer_out_timed(U32 milliseconds)
{
    timer_register(_buzzer_timer_callback, milliseconds, 0);
    buzzer_out(1);
}

void buzzer_mute(U32 muted)
{
    if (muted) _buzzer_timer_callback();
    m_isMuted = muted ? 1 : 0;
}

U32 buzzer_is_muted(void)
{
    return m_isMuted;
}
