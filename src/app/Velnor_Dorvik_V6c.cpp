#include "Velnor_Dorvik_V6c.h"

#include <cstdio>
#include <cstring>
#include <limits>

#include "Timer_7Je7r.h"
#include "can_ports.h"
#include "iouser.h"
#include "log_columns.h"
#include "navigation.h"
#include "text_format.h"

real_T rtInf;
real_T rtMinusInf;
real_T rtNaN;

BlockIO_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_B;
D_Work_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_DWork;
PrevZCSigStates_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_PrevZCSigState;
constinit const ConstBlockIO_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_ConstB = {.Width = (real_T)FAULT_ROW_COUNT};
constinit const ConstParam_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_ConstP = LogHeaderConstants();

static void rt_InitInfAndNaN(void)
{
    rtInf = std::numeric_limits<real_T>::infinity();
    rtMinusInf = -std::numeric_limits<real_T>::infinity();
    rtNaN = std::numeric_limits<real_T>::quiet_NaN();
}

void Velnor_Dorvik_V6c_initialize(void)
{
    rt_InitInfAndNaN();

    memset(&Velnor_Dorvik_V6c_B, 0, sizeof(Velnor_Dorvik_V6c_B));
    memset(&Velnor_Dorvik_V6c_DWork, 0, sizeof(Velnor_Dorvik_V6c_DWork));
    for (trigger_ref& gauge : B.QuadGauge) gauge = trigger_ground;
    for (trigger_ref& gauge : B.LargeGauge) gauge = trigger_ground;
    B.RPM_f = trigger_ground;
    B.tall = trigger_ground;

    // I/O board analogue input 1: plain voltage, a little more filtering.
    bSetANVoltageLowGainMode(ANALOG_CHANNEL_1);
    bSetANFilterRate(ANALOG_CHANNEL_1, 0.75f);

    // Screen numbers, gauge functions and texts are in place before any screen reads them.
    Timer_7Je7rInit();
    NavigationRegisterScreens();

    start_CAN_285279__0022();
    start_CAN_285280__0051();

    // These three start as if their inputs had been high, so that a key held or a log
    // request present at power-up is not taken for a new edge.
    memset(&Velnor_Dorvik_V6c_PrevZCSigState, 0, sizeof(Velnor_Dorvik_V6c_PrevZCSigState));
    Velnor_Dorvik_V6c_PrevZCSigState.EditNextQuad_Trig_ZCE = 1;
    Velnor_Dorvik_V6c_PrevZCSigState.EditPage_Trig_ZCE = 1;
    Velnor_Dorvik_V6c_PrevZCSigState.LogWrite_Trig_ZCE = 1;

    can_set_period_97090__0006(100);
}

void Velnor_Dorvik_V6c_SignalTimeout(boolean_T enable, S_String* text)
{
    if (!enable || !text || text->size == 0) return;
    snprintf(text->string, text->size, "---");
}

void Velnor_Dorvik_V6c_UpdateDisplayValue250ms(boolean_T enable, uint16_T age, S_String* text, int32_T width,
                                              int32_T precision, real_T value)
{
    if (!enable || !text || text->size == 0) return;
    if (age >= SIGNAL_TIMEOUT_AGE) {
        Velnor_Dorvik_V6c_SignalTimeout(1, text);
        return;
    }
    TextFormatFixed(text->string, text->size, width, precision, value);
}

void Velnor_Dorvik_V6c_UpdateDisplayValue250ms_e(boolean_T enable, uint16_T age, real_T value, S_String* text)
{
    if (!enable || !text || text->size == 0) return;
    if (age >= SIGNAL_TIMEOUT_AGE) {
        Velnor_Dorvik_V6c_SignalTimeout(1, text);
        return;
    }
    snprintf(text->string, text->size, "%s", value > 0 ? "ON" : "OFF");
}

void Velnor_Dorvik_V6c_AF(boolean_T enable, S_String* text, S_String** field)
{
    if (enable && field) *field = text;
}

void Velnor_Dorvik_V6c_WriteStringHigh(boolean_T enable, const uint8_T* bytes, S_String* text)
{
    if (!enable || !text || text->size == 0) return;
    const uint32_T n = text->size - 1 < 7 ? text->size - 1 : 7;
    memcpy(text->string, bytes, n);
    text->string[n] = '\0';
}

void Velnor_Dorvik_V6c_step(void)
{
}
