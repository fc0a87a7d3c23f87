#pragma once
// The system information screen: the ECU's identity texts and this program's version.
void Screen_SysInfo_Enter(void);
void Screen_SysInfo_Create(void);
void Screen_SysInfo_Update(void);

// "v6.50": the version on the splash and on this screen.
const char* DisplaySoftwareVersionText(void);
