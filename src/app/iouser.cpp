#include "iouser.h"

#include <cstring>

#include "mmi.h"
#include "timer_drv.h"

namespace {

// The board's inputs as the last pass of the screen manager found them. Each value is
// replaced only by a reading the board vouches for.
float m_analogueReadings[IOBOARD_NUMBER_ADC_MUX_CHANNELS];
float m_supplyVoltage;
float m_tachInputFrequency;
float m_tachInputPeriod;
BOOL m_switchStates[IOBOARD_NUMBER_SWITCH_INPUTS];
U16 m_switchCounts[IOBOARD_NUMBER_SWITCH_INPUTS];
float m_voltageReadingOutputPins[IOBOARD_NUMBER_RELAY_OUTPUTS];

// The end of the timed alarm that runs, in uptime milliseconds. Set and read under the
// application lock (a task pass or the main thread's work).
BOOL m_alarmTimed = 0;
U32 m_alarmEndMs = 0;

}  // namespace

static void _ClearIOUserData(void)
{
    memset(m_analogueReadings, 0, sizeof(m_analogueReadings));
    m_supplyVoltage = 0.0f;
    m_tachInputFrequency = 0.0f;
    m_tachInputPeriod = 0.0f;
    memset(m_switchStates, 0, sizeof(m_switchStates));
    memset(m_switchCounts, 0, sizeof(m_switchCounts));
    memset(m_voltageReadingOutputPins, 0, sizeof(m_voltageReadingOutputPins));
}

// At the start of each pass of the screen manager, on the main thread.
static void _IOUserReadInputs(void)
{
    float value;
    for (U32 i = 0; i < IOBOARD_NUMBER_ADC_MUX_CHANNELS; i++) {
        if (ioboard_get_adc_mux_data(ANALOG_CHANNEL_1 + i, &value)) m_analogueReadings[i] = value;
    }
    if (ioboard_get_supply_voltage(&value)) m_supplyVoltage = value;
    if (ioboard_get_rpm_frequency_data(&value)) m_tachInputFrequency = value;
    if (ioboard_get_rpm_period_data(&value)) m_tachInputPeriod = value;
    for (U32 i = 0; i < IOBOARD_NUMBER_SWITCH_INPUTS; i++) {
        BOOL closed;
        U16 count;
        if (!ioboard_get_switch_in_data(DIG_IN_CHANNEL_1 + i, &closed, &count)) continue;
        m_switchStates[i] = closed;
        m_switchCounts[i] = count;
    }
    for (U32 i = 0; i < IOBOARD_NUMBER_RELAY_OUTPUTS; i++) {
        if (ioboard_get_relay_out_data(DIG_OUT_CHANNEL_1 + i, &value)) m_voltageReadingOutputPins[i] = value;
    }
}

BOOL IOUserInit(void)
{
    if (!ioboard_open()) return 0;
    _ClearIOUserData();
    MMIRegisterCallback(MMICALLBACKTYPE_PREPROCESS, _IOUserReadInputs);
    return 1;
}

void IOUserActivateAlarm(BOOL isActive)
{
    bSetIODigOutput(DIG_OUT_CHANNEL_1, isActive);
}

// The timed alarm's end, on the timer's callback.
static void _IOUserDeactivateAlarm(void)
{
    m_alarmTimed = 0;
    IOUserActivateAlarm(0);
}

void IOUserActivateAlarmTimed(U32 timeMs)
{
    // The timer service keeps one timer per callback, and registering it again moves
    // it. The first end is the one that switches the output off, so a later end leaves
    // the running timer alone.
    const U32 nowMs = get_uptime_milliseconds();
    const U32 endMs = nowMs + timeMs;
    const BOOL running = m_alarmTimed && (S32)(m_alarmEndMs - nowMs) > 0;
    if (!running || (S32)(endMs - m_alarmEndMs) < 0) {
        if (timer_register(_IOUserDeactivateAlarm, timeMs, 0)) {
            m_alarmTimed = 1;
            m_alarmEndMs = endMs;
        }
    }
    IOUserActivateAlarm(1);
}

BOOL bSetIODigOutput(DIG_OUT_CHANNEL_T channel, BOOL isHigh)
{
    return ioboard_set_relay_out_config(channel, isHigh);
}

float fGetANValue(ANALOG_CHANNEL_T channel)
{
    float value;
    ioboard_get_adc_mux_data(channel, &value);
    return value;
}

float fGetIOSupplyVoltage(void)
{
    float value;
    ioboard_get_supply_voltage(&value);
    return value;
}

BOOL bSetANVoltageLowGainMode(ANALOG_CHANNEL_T channel)
{
    return ioboard_set_adc_mux_config(channel, 0, 0);
}

BOOL bSetANFilterRate(ANALOG_CHANNEL_T channel, float rate)
{
    return ioboard_set_adc_mux_filter_rate(channel, rate);
}

void IOUserTestImage(IOUSER_IMAGE_T* image)
{
    memcpy(image->analogueReadings, m_analogueReadings, sizeof(m_analogueReadings));
    image->supplyVoltage = m_supplyVoltage;
    image->tachInputFrequency = m_tachInputFrequency;
    image->tachInputPeriod = m_tachInputPeriod;
    memcpy(image->switchStates, m_switchStates, sizeof(m_switchStates));
    memcpy(image->switchCounts, m_switchCounts, sizeof(m_switchCounts));
    memcpy(image->voltageReadingOutputPins, m_voltageReadingOutputPins, sizeof(m_voltageReadingOutputPins));
}

void IOUserTestReset(void)
{
    _ClearIOUserData();
    timer_deregister(_IOUserDeactivateAlarm);
    m_alarmTimed = 0;
}
