#include <gtest/gtest.h>

#include <cstring>

#include "crc.h"
#include "data.h"
#include "eeprom.h"
#include "eeprom_drv.h"
#include "hw_user.h"
#include "settings.h"

namespace {

U32 CrcFromCounter(const EEVariables_T& r)
{
    return uiCrcCalculation(reinterpret_cast<const U8*>(&r) + 4, sizeof(r) - 4);
}

// A record as a completed store leaves it: its CRC fits.
EEVariables_T Sealed(EEVariables_T r)
{
    r.uiCRC = CrcFromCounter(r);
    return r;
}

void PutInStore(const EEVariables_T& r)
{
    eeprom_write(0, &r, sizeof(r));
}

EEVariables_T InStore()
{
    EEVariables_T r;
    eeprom_read(0, &r, sizeof(r));
    return r;
}

bool Same(const EEVariables_T& a, const EEVariables_T& b)
{
    return memcmp(&a, &b, sizeof(a)) == 0;
}

// A mark in the store's image that any record write would overwrite.
constexpr U32 MARK = 0xEEEEEEEE;
void MarkStore()
{
    eeprom_write(0, &MARK, sizeof(MARK));
}
bool StoreUntouched()
{
    return InStore().uiCRC == MARK;
}

class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gucStoreEepromRequired = 0;
        memset(&EEVariables_RAMShadow, 0xA5, sizeof(EEVariables_RAMShadow));
        memset(&EEVariables_RAMShadowCopy, 0xA5, sizeof(EEVariables_RAMShadowCopy));
        App_Startup();
    }
    // Starts from a good stored record of 41 stores.
    void StartFromGoodRecord()
    {
        EEVariables_T r = EEVariables_DEFAULT;
        r.ulEECounter = 41;
        PutInStore(Sealed(r));
        App_EE_Init();
        ASSERT_EQ(gucStoreEepromRequired, 0);
    }
};

TEST_F(SettingsTest, GoodRecordIsTakenAsStored)
{
    EEVariables_T r = EEVariables_DEFAULT;
    r.ulEECounter = 41;
    r.TEMP_UNITS = 2;
    r.PROFILE_2[3][14] = 0x0305;
    r = Sealed(r);
    PutInStore(r);
    App_EE_Init();
    EXPECT_TRUE(Same(EEVariables_RAMShadow, r));
    EXPECT_EQ(gucStoreEepromRequired, 0);

    MarkStore();
    App_EE_Store();
    EXPECT_TRUE(StoreUntouched()) << "an unchanged record costs no write";
    EXPECT_EQ(EEVariables_RAMShadow.ulEECounter, 41u);
}

// The three ways a stored record is refused, and where its counter goes on from.
struct REFUSED_T {
    const char* what;
    U32 counter;
    bool breakCrc;
    bool breakStamp;
    U32 counterAfter;
};
constexpr REFUSED_T m_refused[] = {
    {"wrong CRC, 500000 stores", 500000, true, false, 0},
    {"wrong CRC, 500001 stores", 500001, true, false, 1000},
    {"wrong CRC, counter all ones", 0xFFFFFFFF, true, false, 0},
    {"wrong stamp, right CRC", 7, false, true, 0},
    {"wrong stamp, right CRC, worn", 600000, false, true, 1000},
    {"wrong stamp and CRC, worn", 600000, true, true, 1000},
};

TEST_F(SettingsTest, RefusedRecordGivesDefaultsStoredAtTheNextSecond)
{
    for (const REFUSED_T& c : m_refused) {
        SCOPED_TRACE(c.what);
        gucStoreEepromRequired = 0;
        EEVariables_T r = EEVariables_DEFAULT;
        r.ulEECounter = c.counter;
        r.TEMP_UNITS = 2;
        if (c.breakStamp) r.EE_UniqID = 0x30484830;
        r = Sealed(r);
        if (c.breakCrc) r.uiCRC ^= 0x0100;
        PutInStore(r);

        App_EE_Init();
        EEVariables_T expected = EEVariables_DEFAULT;
        expected.ulEECounter = c.counterAfter;
        EXPECT_TRUE(Same(EEVariables_RAMShadow, expected));
        EXPECT_EQ(gucStoreEepromRequired, 1);

        App_EE_Store();
        expected.ulEECounter = c.counterAfter + 1;
        expected = Sealed(expected);
        EXPECT_TRUE(Same(InStore(), expected));
        EXPECT_TRUE(Same(EEVariables_RAMShadowCopy, expected));
    }
}

TEST_F(SettingsTest, ErasedStoreGivesDefaults)
{
    EEVariables_T erased;
    memset(&erased, 0xFF, sizeof(erased));
    PutInStore(erased);
    App_EE_Init();
    EXPECT_TRUE(Same(EEVariables_RAMShadow, EEVariables_DEFAULT));
    EXPECT_EQ(gucStoreEepromRequired, 1);
}

TEST_F(SettingsTest, ChangeIsStoredOnceWithACrcOverItsCounter)
{
    StartFromGoodRecord();
    EEVariables_RAMShadow.TEMP_UNITS = 2;
    App_EE_Store();
    const EEVariables_T stored = InStore();
    EXPECT_EQ(stored.TEMP_UNITS, 2);
    EXPECT_EQ(stored.ulEECounter, 42u);
    EXPECT_EQ(stored.uiCRC >> 16, 0u);
    EXPECT_EQ(stored.uiCRC, CrcFromCounter(stored));
    EXPECT_TRUE(Same(EEVariables_RAMShadow, stored));
    EXPECT_TRUE(Same(EEVariables_RAMShadowCopy, stored));

    // Asked for with nothing changed: no write, and the request is used up.
    MarkStore();
    gucStoreEepromRequired = 1;
    App_EE_Store();
    EXPECT_TRUE(StoreUntouched());
    EXPECT_EQ(gucStoreEepromRequired, 0);
    EXPECT_EQ(EEVariables_RAMShadow.ulEECounter, 42u);
}

TEST_F(SettingsTest, ChangeUndoneWithinTheSecondIsNotStored)
{
    StartFromGoodRecord();
    MarkStore();
    EEVariables_RAMShadow.TEMP_UNITS = 2;
    EEVariables_RAMShadow.TEMP_UNITS = 1;
    App_EE_Store();
    EXPECT_TRUE(StoreUntouched());
    EXPECT_EQ(EEVariables_RAMShadow.ulEECounter, 41u);
}

TEST_F(SettingsTest, SecondTaskStoresOnlyOutsideShutdown)
{
    StartFromGoodRecord();
    MarkStore();
    EEVariables_RAMShadow.HighOctane = 1;
    App_Shutdown();
    Thread_Second();
    EXPECT_TRUE(StoreUntouched());
    App_Startup();
    Thread_Second();
    EXPECT_EQ(InStore().HighOctane, 1);
}

TEST_F(SettingsTest, StartupTakesTheStoredScreenOnlyWhenNoneIsChosen)
{
    StartFromGoodRecord();
    const uint8_T before = RAMVariables.START_SCREEN;
    RAMVariables.START_SCREEN = 255;
    EEVariables_RAMShadow.CURRENT_SCREEN = 3;
    App_Startup();
    EXPECT_EQ(RAMVariables.START_SCREEN, 3);
    EEVariables_RAMShadow.CURRENT_SCREEN = 2;
    App_Startup();
    EXPECT_EQ(RAMVariables.START_SCREEN, 3);
    RAMVariables.START_SCREEN = before;
}

}  // namespace
