#include "Velnor_Dorvik_V6c.h"

#include <cstring>
#include <limits>

#include "can_ports.h"

real_T rtInf;
real_T rtMinusInf;
real_T rtNaN;

BlockIO_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_B;
D_Work_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_DWork;
PrevZCSigStates_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_PrevZCSigState;

namespace {

// Screen ids of the screen manager that the foreground task goes to.
constexpr screen_ref SCREEN_QUADS = 0;
constexpr screen_ref SCREEN_KNOCK = 2;
constexpr screen_ref SCREEN_FAULTS = 4;
constexpr screen_ref SCREEN_SYSINFO = 7;

}  // namespace

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

    B.SysInfo = SCREEN_SYSINFO;
    B.Faults = SCREEN_FAULTS;
    B.Knock = SCREEN_KNOCK;
    B.QuadsScreen = SCREEN_QUADS;

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
