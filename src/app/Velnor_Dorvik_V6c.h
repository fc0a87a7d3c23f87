#pragma once
// The dash model: its arithmetic constants, its start and its step.
#include "rtwtypes.h"

extern real_T rtInf;
extern real_T rtMinusInf;
extern real_T rtNaN;

void Velnor_Dorvik_V6c_initialize(void);
// The model's own step: empty in this model, called from both threads.
void Velnor_Dorvik_V6c_step(void);
