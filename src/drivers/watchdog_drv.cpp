#include "watchdog_drv.h"

#include <cstdlib>
#include <fcntl.h>
#include <linux/watchdog.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "dash_root.h"

namespace {

constexpr int WATCHDOG_TIMEOUT_S = 3;

S32 m_fileHandle = -1;
BOOL m_bWatchdogCausedReset = FALSE;
BOOL m_bWatchdogEnabled = FALSE;

// The magic close: the device's driver stops the timer instead of resetting.
void _closeMagic(void)
{
    m_bWatchdogEnabled = FALSE;
    if (m_fileHandle < 0) return;
    const ssize_t n = write(m_fileHandle, "V", 1);
    (void)n;
    close(m_fileHandle);
    m_fileHandle = -1;
}

}  // namespace

void watchdog_init(void)
{
    if (getenv("WATCHDOG_OFF")) return;
    _closeMagic();
    m_fileHandle = root_open("/dev/watchdog", O_RDWR);
    if (m_fileHandle < 0) return;
    int status = 0;
    if (ioctl(m_fileHandle, WDIOC_GETBOOTSTATUS, &status) == 0) m_bWatchdogCausedReset = status != 0;
    int timeout = WATCHDOG_TIMEOUT_S;
    ioctl(m_fileHandle, WDIOC_SETTIMEOUT, &timeout);
    int options = WDIOS_ENABLECARD;
    ioctl(m_fileHandle, WDIOC_SETOPTIONS, &options);
    m_bWatchdogEnabled = TRUE;
    ioctl(m_fileHandle, WDIOC_KEEPALIVE, 0);
}

void watchdog_deinit(void)
{
    _closeMagic();
}

void watchdog_set_timeout_seconds(U32 seconds)
{
    if (m_fileHandle < 0) return;
    int timeout = seconds == 0 ? 1 : (int)seconds;
    ioctl(m_fileHandle, WDIOC_SETTIMEOUT, &timeout);
}

U32 watchdog_get_timeout_seconds(void)
{
    int timeout = 0;
    if (m_fileHandle < 0 || ioctl(m_fileHandle, WDIOC_GETTIMEOUT, &timeout) != 0) return 0;
    return (U32)timeout;
}

BOOL watchdog_caused_last_reset(void)
{
    return m_bWatchdogCausedReset;
}

BOOL watchdog_is_enabled(void)
{
    return m_bWatchdogEnabled;
}

void watchdog_enable(U32 enable)
{
    if (m_fileHandle < 0) return;
    int options = enable ? WDIOS_ENABLECARD : WDIOS_DISABLECARD;
    ioctl(m_fileHandle, WDIOC_SETOPTIONS, &options);
    m_bWatchdogEnabled = enable ? TRUE : FALSE;
}

void watchdog_refresh(void)
{
    if (m_fileHandle >= 0 && m_bWatchdogEnabled) ioctl(m_fileHandle, WDIOC_KEEPALIVE, 0);
}
