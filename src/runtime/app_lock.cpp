#include "app_lock.h"

#include <pthread.h>

namespace {

pthread_mutex_t m_appLock;
pthread_once_t m_once = PTHREAD_ONCE_INIT;

// Priority inheritance: the real-time signal thread waiting for the main thread must
// not also wait for the I/O board thread that preempts it.
void _init(void)
{
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_setprotocol(&attr, PTHREAD_PRIO_INHERIT);
    pthread_mutex_init(&m_appLock, &attr);
    pthread_mutexattr_destroy(&attr);
}

}  // namespace

void AppLock(void)
{
    pthread_once(&m_once, _init);
    pthread_mutex_lock(&m_appLock);
}

void AppUnlock(void)
{
    pthread_mutex_unlock(&m_appLock);
}
