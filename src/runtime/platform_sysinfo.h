#pragma once
// What hardware and software this process runs on, read when first asked for and then
// kept; and the process exit record and shutdown callbacks.
#include <cstddef>

#include "dash_types.h"

enum : U32 {
    PLATFORM_ZELVO310 = 0x00000000,   // small display
    PLATFORM_ZELVO720 = 0x00000100,   // large display with touch
    PLATFORM_ZELVO310L = 0x00000200,  // variant of the small display
    PLATFORM_UNKNOWN = 0xFFFFFFFF,
};

enum { ETHERNETMACADDR_LEN = 6 };
// The first three bytes of every dash's MAC address (a locally administered block).
extern const U8 FIXED_MAC_ADDR[ETHERNETMACADDR_LEN];

struct PLATFORM_INFO_T {
    U32 platform;
    U32 touch;
    U32 width;
    U32 height;
};

const char* GetPlatformAppName(void);
U32 GetPlatformBootloaderVersion(void);
S32 GetPlatformOSVersion(void);
U32 GetPlatformRootFSVersion(void);
void GetPlatformInfo(PLATFORM_INFO_T* info);
BOOL PlatformHasTouch(void);
U32 GetPlatformProductId(void);
U32 GetPlatformProductSerial(void);
void GetPlatformEthernetMACAddress(U8 mac[ETHERNETMACADDR_LEN]);
BOOL GetPlatformMemoryUsage(U32* total, U32* free);
U32 GetPlatformFreeMemory(void);

// Exit record: the code, then the flag that the main loop watches.
void SetPlatformExitCode(U32 code);
BOOL IsPlatformExitSignaled(void);
S32 GetPlatformExitCode(void);

typedef void (*PLATFORM_SHUTDOWN_FUNC_T)(void);
enum { PLATFORM_SHUTDOWN_FUNCS = 20 };
BOOL PlatformShutdownRegisterCallback(PLATFORM_SHUTDOWN_FUNC_T callback);
void DoPlatformShutdownCallbacks(void);

// Test hooks: for tests and benchmarks only, never called by the dash.
// "x_12_3" gives 12; no underscore or no number behind it gives `fallback`.
U32 PlatformSysinfoTestParseBootloaderVersion(const char* line, U32 fallback);
// The number behind the last '-' of a kernel release; 0 without one.
S32 PlatformSysinfoTestParseOSRelease(const char* release);
// The decimal number at the start of the first `length` bytes; 0 without one.
U32 PlatformSysinfoTestParseRootFSVersion(const char* text, size_t length);
// Forgets every cached value, so the next call reads its source again.
void PlatformSysinfoTestReset(void);
