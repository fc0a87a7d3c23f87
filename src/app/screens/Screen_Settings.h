#pragma once
// The settings screen: an empty page with the bar sliding in, reached only at start.
void Screen_Settings_Enter(void);
void Screen_Settings_Create(void);
void Screen_Settings_Update(void);
