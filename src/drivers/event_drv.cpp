#include "event_drv.h"

#include <atomic>

namespace {

// Registered on the main thread, called on the signal thread.
std::atomic<EVENT_CALLBACK_T> m_pCallback{nullptr};

}  // namespace

void event_register(EVENT_CALLBACK_T callback)
{
    m_pCallback.store(callback);
}

void event_trigger(EVENTID_T eventId, S32 signalNumber, S32 value)
{
    const EVENT_CALLBACK_T callback = m_pCallback.load();
    if ((U32)eventId >= EVENTID_MAX_EVENTS || !callback) return;
    callback(eventId, signalNumber, value);
}
