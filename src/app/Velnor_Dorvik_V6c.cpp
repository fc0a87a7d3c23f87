#include "Velnor_Dorvik_V6c.h"

#include <limits>

real_T rtInf;
real_T rtMinusInf;
real_T rtNaN;

static void rt_InitInfAndNaN(void)
{
    rtInf = std::numeric_limits<real_T>::infinity();
    rtMinusInf = -std::numeric_limits<real_T>::infinity();
    rtNaN = std::numeric_limits<real_T>::quiet_NaN();
}

void Velnor_Dorvik_V6c_initialize(void)
{
    rt_InitInfAndNaN();
}

void Velnor_Dorvik_V6c_step(void)
{
}
