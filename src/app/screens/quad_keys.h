#pragma once
// The keys of the quad gauge screen, run by the foreground task while the screen is
// current: paging with keys 1 and 2, and edit mode, entered by holding key 3, in two
// stages: "page" pages through the profile, "gauge" changes the gauge of one cell in
// place. Every key action has an edge detector of its own that samples only in the passes
// where its stage runs.
#include "rtwtypes.h"

// The page triggers of the keys; each does nothing while its flag is clear, which it is
// while another screen is current.
void Trigger_QuadNext(void);
void Trigger_QuadPrev(void);
void Trigger_Quad_NextGauge(void);
void Trigger_Quad_PrevGauge(void);
extern boolean_T Trigger_QuadNext_enabled;
extern boolean_T Trigger_QuadPrev_enabled;
extern boolean_T Trigger_Quad_NextGauge_enabled;
extern boolean_T Trigger_Quad_PrevGauge_enabled;

// When enabled, and the page shown is 1 to 15 and the selected cell 1 to 4: the word
// into that cell of that page of profile 1, 2 or 3.
void Velnor_Dorvik_V6c_Profile1(uint8_T enable, uint16_T word);
void Velnor_Dorvik_V6c_Profile2(uint8_T enable, uint16_T word);
void Velnor_Dorvik_V6c_Profile3(uint8_T enable, uint16_T word);
// A release of key 2: key state now, and the detector's last state, which it keeps.
void Velnor_Dorvik_V6c_QuadNext(uint8_T key, uint8_T* edge);

// The screen's key logic, once a foreground pass.
void QuadKeys(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// Both holds let go, as at power-up.
void QuadKeysTestReset(void);
