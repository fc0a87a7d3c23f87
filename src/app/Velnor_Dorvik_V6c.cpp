#include "Velnor_Dorvik_V6c.h"

#include <cstring>
#include <limits>

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

    // These three start as if their inputs had been high, so that a key held or a log
    // request present at power-up is not taken for a new edge.
    memset(&Velnor_Dorvik_V6c_PrevZCSigState, 0, sizeof(Velnor_Dorvik_V6c_PrevZCSigState));
    Velnor_Dorvik_V6c_PrevZCSigState.EditNextQuad_Trig_ZCE = 1;
    Velnor_Dorvik_V6c_PrevZCSigState.EditPage_Trig_ZCE = 1;
    Velnor_Dorvik_V6c_PrevZCSigState.LogWrite_Trig_ZCE = 1;
}

void Velnor_Dorvik_V6c_step(void)
{
}
