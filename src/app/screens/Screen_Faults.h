#pragma once
// The fault list: one red line per active fault of the ECU, from the top, and their
// count; "NO FAULT COMMUNICATION" when the fault frames stop.
void Screen_Faults_Enter(void);
void Screen_Faults_Create(void);
void Screen_Faults_Update(void);
