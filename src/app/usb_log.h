#pragma once
// Logging to the USB stick. While the engine controller asks for it and a stick is in,
// the dash opens the next numbered CSV file on the stick, writes the header that the
// analysis tools read, and appends one row of every log column each 20 ms. The
// foreground task opens, syncs and closes; Timer_aUXrF writes the rows. Both run on the
// signal thread one after the other, so the file needs no lock.
#include "rtwtypes.h"

// Text sizes of the file name, the time stamp and the row, terminator included.
constexpr uint32_T LOG_NAME_SIZE = 51;
constexpr uint32_T LOG_ROW_SIZE = 1171;

// Step 1 of the foreground pass, right after frame 0x109: the request with a stick in,
// its rising edge opening the next file, its falling edge closing the file, and the
// eject asked for by the tool through RAMVariables.USER_Eject_Bool.
void UsbLogTrigger(void);
// Step 5 of the foreground pass at uptime nowMs: the file is synced to the stick when
// more than 500 ms have gone since the last sync, or when the clock has wrapped.
void UsbLogSync(uint32_T nowMs);
// The row writer, every 20 ms: the uptime as the time stamp, then every log column.
void Timer_aUXrF(void);
