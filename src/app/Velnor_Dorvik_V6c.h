#pragma once
// The dash model: its signal and state records, its arithmetic constants, its start
// and its step.
#include "data.h"
#include "rtwtypes.h"

// A screen id of the screen manager.
typedef uint32_T screen_ref;

// The signal store: decoded signals, texts and gauge state of the foreground task.
struct BlockIO_Velnor_Dorvik_V6c {
    screen_ref SysInfo;      // screen ids the foreground task goes to
    screen_ref Faults;
    screen_ref Knock;
    screen_ref QuadsScreen;
};

// State kept between passes.
struct D_Work_Velnor_Dorvik_V6c {
    uint32_T quorin_delta_time_DWORK1;  // uptime words of GetDeltaTime_ms
    uint32_T quorin_delta_time_DWORK1_i;
};

// Edge detectors: the last state seen of each trigger's input.
struct PrevZCSigStates_Velnor_Dorvik_V6c {
    uint8_T EditNextQuad_Trig_ZCE;
    uint8_T EditPage_Trig_ZCE;
    uint8_T LogWrite_Trig_ZCE;
};

extern BlockIO_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_B;
extern D_Work_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_DWork;
extern PrevZCSigStates_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_PrevZCSigState;

// The short names by which the model's code reads the two records.
inline constexpr BlockIO_Velnor_Dorvik_V6c& B = Velnor_Dorvik_V6c_B;
inline constexpr D_Work_Velnor_Dorvik_V6c& DWork = Velnor_Dorvik_V6c_DWork;

extern real_T rtInf;
extern real_T rtMinusInf;
extern real_T rtNaN;

void Velnor_Dorvik_V6c_initialize(void);
// The model's own step: empty in this model, called from both threads.
void Velnor_Dorvik_V6c_step(void);
