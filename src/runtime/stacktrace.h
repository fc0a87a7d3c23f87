#pragma once
// The crash reporter: one report on standard error for the first fatal signal, then
// the process ends by that signal.

void StackTraceInstall(void);
