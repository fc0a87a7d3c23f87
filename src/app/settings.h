#pragma once
// The driver's settings: loaded at start, replaced by the factory values when the
// stored record is not this build's or is damaged, and stored within a second of any
// change to any of its bytes.
#include "rtwtypes.h"

void App_EE_Init(void);
void App_EE_Defaults(void);
void App_EE_Store(void);
// The 1 s task's body: App_EE_Store.
void Timer_G3xzZ(void);

// The store counter after the defaults replaced a record that had counted `kept`
// stores: past 500000 it goes on from 1000, else (and from an erased all-ones) from 0.
constexpr uint32_T App_EE_DefaultsCounter(uint32_T kept)
{
    return kept != 0xFFFFFFFFu && kept > 500000u ? 1000u : 0u;
}
