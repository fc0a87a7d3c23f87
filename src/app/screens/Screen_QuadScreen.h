#pragma once
// The quad gauge screen, the dash's main view.
void Screen_QuadScreen_Enter(void);
void Screen_QuadScreen_Create(void);
void Screen_QuadScreen_Update(void);
