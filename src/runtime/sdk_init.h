#pragma once
// Start of the device layer and of the portable libraries above it.

// The software timers platform_init makes room for.
enum { PLATFORM_TIMERS = 20 };

void sdk_init(void);
void platform_init(void);
void portable_init(void);
