#pragma once
// Carries the USB events of the system scripts (SIGUSR1, SIGUSR2, received by the
// signal thread) to one callback, on the caller's thread.
#include "dash_types.h"

enum EVENTID_T : U32 {
    EVENTID_EVENT1 = 0,
    EVENTID_EVENT2 = 1,
    EVENTID_MAX_EVENTS = 2,
};

// The event, the signal that carried it and that signal's number less 10.
typedef void (*EVENT_CALLBACK_T)(EVENTID_T eventId, S32 signalNumber, S32 value);

// Stores the one callback, replacing any other; nullptr removes it.
void event_register(EVENT_CALLBACK_T callback);
// Calls the callback; an unknown id or no callback does nothing.
void event_trigger(EVENTID_T eventId, S32 signalNumber, S32 value);
