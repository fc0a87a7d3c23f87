#include "platform_sysinfo.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/sysinfo.h>

#include "dash_root.h"
#include "osinfo.h"

const U8 FIXED_MAC_ADDR[ETHERNETMACADDR_LEN] = {0x02, 0x4D, 0x44, 0x00, 0x00, 0x00};

namespace {

enum { FACTORY_RECORD_SIZE = 16 };

// Cached answers; the start-up calls fill them on the main thread.
BOOL m_recordRead = 0;
U32 m_productSerial = 0;
U32 m_productId = 0;
S64 m_bootloaderVersion = -1;
S32 m_osVersion = 0;
U32 m_rootFSVersion = 0;

std::atomic<S32> m_exitCode{0};
std::atomic<BOOL> m_exitSignaled{0};
PLATFORM_SHUTDOWN_FUNC_T m_platformShutdownFuncs[PLATFORM_SHUTDOWN_FUNCS];

}  // namespace

// Digits from `s` on, saturating at `limit`; *digits tells how many were read.
static U64 _decimal(const char* s, size_t length, U64 limit, size_t* digits)
{
    U64 value = 0;
    size_t i = 0;
    for (; i < length && s[i] >= '0' && s[i] <= '9'; i++) {
        value = value * 10 + (U64)(s[i] - '0');
        if (value > limit) value = limit;
    }
    if (digits) *digits = i;
    return value;
}

U32 PlatformSysinfoTestParseBootloaderVersion(const char* line, U32 fallback)
{
    const char* underscore = line ? strchr(line, '_') : nullptr;
    if (!underscore) return fallback;
    size_t digits = 0;
    U64 v = _decimal(underscore + 1, strlen(underscore + 1), UINT32_MAX, &digits);
    return digits ? (U32)v : fallback;
}

S32 PlatformSysinfoTestParseOSRelease(const char* release)
{
    const char* dash = release ? strrchr(release, '-') : nullptr;
    if (!dash) return 0;
    return (S32)_decimal(dash + 1, strlen(dash + 1), INT32_MAX, nullptr);
}

U32 PlatformSysinfoTestParseRootFSVersion(const char* text, size_t length)
{
    size_t i = 0;
    while (i < length && (text[i] == ' ' || text[i] == '\t')) i++;
    return (U32)_decimal(text + i, length - i, UINT32_MAX, nullptr);
}

static void _readFactoryRecord(void)
{
    if (m_recordRead) return;
    U8 record[FACTORY_RECORD_SIZE];
    size_t got = 0;
    FILE* f = root_fopen_regular("/sys/uid/otp/id.bin", "rb");
    if (f) {
        got = fread(record, 1, sizeof(record), f);
        fclose(f);
    }
    if (got == sizeof(record)) {
        m_productSerial = (U32)record[0] | (U32)record[1] << 8 | (U32)record[2] << 16 | (U32)record[3] << 24;
        m_productId = (U32)record[4] | (U32)record[5] << 8 | (U32)record[6] << 16 | (U32)record[7] << 24;
        m_recordRead = 1;
    }
    const char* env = getenv("PRODUCT_ID");
    if (env) m_productId = (U32)_decimal(env, strlen(env), UINT32_MAX, nullptr);
}

const char* GetPlatformAppName(void)
{
    return program_invocation_short_name;
}

U32 GetPlatformBootloaderVersion(void)
{
    if (m_bootloaderVersion >= 0) return (U32)m_bootloaderVersion;
    U32 version = 1;
    char path[ROOT_PATH_MAX];
    char command[ROOT_PATH_MAX + 64];
    if (root_path(path, sizeof(path), "/usr/sbin/fw_printenv") && !strchr(path, '\'') &&
        (size_t)snprintf(command, sizeof(command), "'%s' -n version 2>/dev/null", path) < sizeof(command)) {
        FILE* pipe = popen(command, "re");
        if (pipe) {
            char line[1024];
            if (fgets(line, sizeof(line), pipe)) version = PlatformSysinfoTestParseBootloaderVersion(line, 1);
            // Drain the rest so the child never blocks on a full pipe.
            while (fgets(line, sizeof(line), pipe)) {
            }
            pclose(pipe);
        }
    }
    m_bootloaderVersion = version;
    return version;
}

S32 GetPlatformOSVersion(void)
{
    if (m_osVersion != 0) return m_osVersion;
    char release[256];
    if (osinfo_release(release, sizeof(release))) m_osVersion = PlatformSysinfoTestParseOSRelease(release);
    return m_osVersion;
}

U32 GetPlatformRootFSVersion(void)
{
    if (m_rootFSVersion != 0) return m_rootFSVersion;
    FILE* f = root_fopen_regular("/etc/VERSION", "r");
    if (!f) return 0;
    char text[10];
    size_t n = fread(text, 1, sizeof(text), f);
    fclose(f);
    m_rootFSVersion = PlatformSysinfoTestParseRootFSVersion(text, n);
    return m_rootFSVersion;
}

void GetPlatformInfo(PLATFORM_INFO_T* info)
{
    if (!info) return;
    switch (GetPlatformProductId()) {
    case PLATFORM_ZELVO310:
        *info = {PLATFORM_ZELVO310, 0, 320, 240};
        break;
    case PLATFORM_ZELVO720:
        *info = {PLATFORM_ZELVO720, 1, 800, 480};
        break;
    default:
        *info = {PLATFORM_UNKNOWN, 0, 0, 0};
        break;
    }
}

BOOL PlatformHasTouch(void)
{
    return GetPlatformProductId() == PLATFORM_ZELVO720;
}

U32 GetPlatformProductId(void)
{
    _readFactoryRecord();
    return m_productId;
}

U32 GetPlatformProductSerial(void)
{
    _readFactoryRecord();
    return m_productSerial;
}

void GetPlatformEthernetMACAddress(U8 mac[ETHERNETMACADDR_LEN])
{
    if (!mac) return;
    memcpy(mac, FIXED_MAC_ADDR, ETHERNETMACADDR_LEN);
    const U32 serial = GetPlatformProductSerial();
    mac[3] = (U8)(serial >> 16);
    mac[4] = (U8)(serial >> 8);
    mac[5] = (U8)serial;
}

// Bytes in a U32; a PC with more memory than that reads as 4 GiB, not as a wrapped value.
static U32 _bytes(unsigned long count, unsigned int unit)
{
    const U64 bytes = (U64)count * unit;
    return bytes > UINT32_MAX ? UINT32_MAX : (U32)bytes;
}

BOOL GetPlatformMemoryUsage(U32* total, U32* free)
{
    struct sysinfo si;
    const BOOL ok = sysinfo(&si) == 0;
    if (total) *total = ok ? _bytes(si.totalram, si.mem_unit) : 0;
    if (free) *free = ok ? _bytes(si.freeram, si.mem_unit) : 0;
    return ok && total && free;
}

U32 GetPlatformFreeMemory(void)
{
    U32 total = 0, free = 0;
    GetPlatformMemoryUsage(&total, &free);
    return free;
}

void PlatformSysinfoTestReset(void)
{
    m_recordRead = 0;
    m_productSerial = 0;
    m_productId = 0;
    m_bootloaderVersion = -1;
    m_osVersion = 0;
    m_rootFSVersion = 0;
}

void SetPlatformExitCode(U32 code)
{
    m_exitCode.store((S32)code);
    m_exitSignaled.store(1);
}

BOOL IsPlatformExitSignaled(void)
{
    return m_exitSignaled.load();
}

S32 GetPlatformExitCode(void)
{
    return m_exitCode.load();
}

BOOL PlatformShutdownRegisterCallback(PLATFORM_SHUTDOWN_FUNC_T callback)
{
    if (!callback) return 0;
    for (auto& slot : m_platformShutdownFuncs) {
        if (!slot) {
            slot = callback;
            return 1;
        }
    }
    return 0;
}

void DoPlatformShutdownCallbacks(void)
{
    for (auto slot : m_platformShutdownFuncs) {
        if (slot) slot();
    }
}
