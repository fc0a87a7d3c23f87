#pragma once
// Start of the device layer and of the portable libraries above it.

void sdk_init(void);
void platform_init(void);
void portable_init(void);
