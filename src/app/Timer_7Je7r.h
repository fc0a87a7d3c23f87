#pragma once
// The foreground task: one pass every 10 ms tick, from the CAN mailboxes to the
// signal store and back to the settings frame.

void Timer_7Je7r(void);
