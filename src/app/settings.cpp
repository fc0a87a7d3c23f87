#include "settings.h"

#include "crc.h"
#include "data.h"
#include "eeprom.h"

namespace {

// The CRC covers the record from the counter on.
constexpr uint32_T CRC_START = offsetof(EEVariables_T, ulEECounter);

}  // namespace

static uint32_T _recordCrc(void)
{
    return uiCrcCalculation(reinterpret_cast<const U8*>(&EEVariables_RAMShadow) + CRC_START,
                            sizeof(EEVariables_T) - CRC_START);
}

void App_EE_Init(void)
{
    // The record layer checks the CRC and puts the defaults in on a mismatch. Their CRC
    // word is 0, so checking it again here would reset the counter they kept.
    Restore_eeprom(&EEVariables_RAMShadow, &EEVariables_RAMShadowCopy, sizeof(EEVariables_T));
    // A record of another build's layout is dropped.
    if (EEVariables_RAMShadow.EE_UniqID != EEVariables_DEFAULT.EE_UniqID) App_EE_Defaults();
}

void App_EE_Defaults(void)
{
    const uint32_T kept = EEVariables_RAMShadow.ulEECounter;
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    EEVariables_RAMShadow.ulEECounter = App_EE_DefaultsCounter(kept);
    gucStoreEepromRequired = 1;
}

void App_EE_Store(void)
{
    if (_recordCrc() != EEVariables_RAMShadow.uiCRC) gucStoreEepromRequired = 1;
    Store_eeprom(&EEVariables_RAMShadow, &EEVariables_RAMShadowCopy, sizeof(EEVariables_T));
}

void Timer_G3xzZ(void)
{
    App_EE_Store();
}

void load_eeprom_defaults(void)
{
    App_EE_Defaults();
}
