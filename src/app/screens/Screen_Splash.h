#pragma once
// The splash at power-on: stands for the first 2 s of uptime, then gives way to the
// screen the driver left the dash on.
void Screen_Splash_Enter(void);
void Screen_Splash_Create(void);
void Screen_Splash_Update(void);
