#pragma once
// The five-cross touch calibration screen. Not registered by the dash: an application
// that wants it registers these four with MMIRegisterScreen.
void CalibrateTouchEnter(void);
void CalibrateTouchCreate(void);
void CalibrateTouchUpdate(void);
void CalibrateTouchExit(void);
