#pragma once
// The application's side of the I/O board: an image of all its inputs, taken once per
// pass of the screen manager, the alarm output with an optional time limit, and thin
// calls onto the board's driver.
#include "dash_types.h"
#include "ioboard_drv.h"

// Opens the board. Without one: 0, and the image is never taken.
BOOL IOUserInit(void);
// Output 1 on or off.
void IOUserActivateAlarm(BOOL isActive);
// Output 1 on for `timeMs` (whole ticks of the timer service). Of several timed alarms
// the first to end switches the output off.
void IOUserActivateAlarmTimed(U32 timeMs);

BOOL bSetIODigOutput(DIG_OUT_CHANNEL_T channel, BOOL isHigh);
// -1.0 while the board gives no value.
float fGetANValue(ANALOG_CHANNEL_T channel);
float fGetIOSupplyVoltage(void);
BOOL bSetANVoltageLowGainMode(ANALOG_CHANNEL_T channel);
BOOL bSetANFilterRate(ANALOG_CHANNEL_T channel, float rate);

// Test hooks: for tests and benchmarks only, never called by the dash.
struct IOUSER_IMAGE_T {
    float analogueReadings[IOBOARD_NUMBER_ADC_MUX_CHANNELS];
    float supplyVoltage;
    float tachInputFrequency;
    float tachInputPeriod;
    BOOL switchStates[IOBOARD_NUMBER_SWITCH_INPUTS];
    U16 switchCounts[IOBOARD_NUMBER_SWITCH_INPUTS];
    float voltageReadingOutputPins[IOBOARD_NUMBER_RELAY_OUTPUTS];
};
// The image as the last pass left it.
void IOUserTestImage(IOUSER_IMAGE_T* image);
// Clears the image and forgets a timed alarm, as at start.
void IOUserTestReset(void);
