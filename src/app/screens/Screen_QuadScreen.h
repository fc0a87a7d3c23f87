#pragma once
// The quad gauge screen, the dash's main view: one page of the active profile, four cells
// of gauges, redrawn whole on every update; in edit mode the page badge; over the cells
// the USB and logging words and the two warnings.
#include "Velnor_Dorvik_V6c.h"

void Screen_QuadScreen_Enter(void);
void Screen_QuadScreen_Create(void);
void Screen_QuadScreen_Update(void);
// The USB, logging and eject words in the top right corner, green when true.
void QuadScreenStatusWords(void);

// The drawing function of a cell, from the table of its gauge type. When enabled: the
// function of the index, or 0 for an index past the table.
void Velnor_Dorvik_V6c_SelectGauge1(uint8_T enable, uint16_T index, const trigger_ref (&gauges)[QUAD_GAUGE_COUNT],
                                    trigger_ref* result);
void Velnor_Dorvik_V6c_SelectGauge2(uint8_T enable, uint16_T index, trigger_ref gauge, trigger_ref* result);
void Velnor_Dorvik_V6c_SelectGauge4(uint8_T enable, uint16_T index, const trigger_ref (&gauges)[LARGE_GAUGE_COUNT],
                                    trigger_ref* result);
// The corner of the cell that the next gauge function draws.
void Velnor_Dorvik_V6c_SetXY(uint16_T x, uint16_T y);
// Calls the function unless it is 0.
void Velnor_Dorvik_V6c_Trigger1(trigger_ref gauge);
