#pragma once
// The hardware watchdog "/dev/watchdog". A dash without one, or with WATCHDOG_OFF in
// the environment, runs without it.
#include "dash_types.h"

void watchdog_init(void);
void watchdog_deinit(void);
void watchdog_set_timeout_seconds(U32 seconds);
U32 watchdog_get_timeout_seconds(void);
BOOL watchdog_caused_last_reset(void);
BOOL watchdog_is_enabled(void);
void watchdog_enable(U32 enable);
void watchdog_refresh(void);
