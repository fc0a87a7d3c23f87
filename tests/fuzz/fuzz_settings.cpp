// The settings file as it lies in the flash file system: loaded by the store at start,
// judged by App_EE_Init, then lived with: passes of the foreground task, the screens
// drawn, and keys pressed through the screens and menus, each second a store.
//
// Input: a mode byte, a script length n, n script bytes, then the file's part.
//   mode bits 0-1  0 the file as given, any length;
//                  1 a record: the bytes from offset 4 on over the defaults, CRC put right;
//                  2 a record: the defaults patched by (offset low, offset high, value)
//                    triples, CRC put right;
//                  3 the file as given, as the previous generation beside a current
//                    file cut short by a power loss
//   mode bit 2     in modes 1 and 2, the layout stamp as given (else this build's)
//   mode bit 3     the large model
//   script byte    bits 0-4 the keys held, bits 5-7 for 1, 5, 9 ... 29 ticks
// Records that pass the CRC are where the damage hides: modes 1 and 2 reach every one.
#include <cstring>
#include <string>

#include "crc.h"
#include "eeprom_drv.h"
#include "fuzz_dash.h"
#include "platform_sysinfo.h"
#include "settings.h"

namespace {

constexpr U32 RECORD_SIZE = sizeof(EEVariables_T);
constexpr U32 CRC_START = offsetof(EEVariables_T, ulEECounter);

std::string m_current;
std::string m_previous;

void _writeStore(const std::string& current, const std::string* previous)
{
    FuzzWriteFile(m_current, current.data(), current.size());
    if (previous) FuzzWriteFile(m_previous, previous->data(), previous->size());
    else FuzzRemoveTree(m_previous);
}

std::string _record(const uint8_t mode, FuzzInput* in)
{
    EEVariables_T r = EEVariables_DEFAULT;
    U8* bytes = reinterpret_cast<U8*>(&r);
    if ((mode & 3) == 1) {
        in->Take(bytes + CRC_START, RECORD_SIZE - CRC_START);
    } else {
        while (in->Left() > 0) {
            const U32 offset = in->Word() % RECORD_SIZE;
            bytes[offset] = in->Byte();
        }
    }
    if (!(mode & 4)) r.EE_UniqID = EEVariables_DEFAULT.EE_UniqID;
    r.uiCRC = uiCrcCalculation(bytes + CRC_START, RECORD_SIZE - CRC_START);
    std::string file(EEPROM_SIZE, '\xFF');
    memcpy(file.data(), bytes, RECORD_SIZE);
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzRoot();
    m_current = std::string("app/data/config/") + GetPlatformAppName() + "-eeprom.dat";
    m_previous = m_current + ".old";
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput in(data, size);
    const uint8_t mode = in.Byte();
    std::string script(in.Byte(), '\0');
    script.resize(in.Take(script.data(), script.size()));

    switch (mode & 3) {
    case 0: _writeStore(in.Rest(), nullptr); break;
    case 3: {
        const std::string previous = in.Rest();
        _writeStore(std::string(EEPROM_SIZE / 2, '\0'), &previous);
        break;
    }
    default: _writeStore(_record(mode, &in), nullptr); break;
    }
    // The store loads the file; its thread is stopped at once, so that nothing is saved.
    eeprom_init();
    eeprom_deinit();

    FuzzDashStart(5000, nullptr, mode & 8);
    for (int i = 0; i < 4; i++) FuzzDashTick();
    for (uint8_t step : script) {
        FuzzDashKeys(step & 0x1F);
        for (int i = 0; i < 1 + (step >> 5) * 4; i++) FuzzDashTick();
    }
    FuzzDashKeys(0);
    for (int i = 0; i < 4; i++) FuzzDashTick();
    App_EE_Store();
    FuzzDashStop();
    return 0;
}
