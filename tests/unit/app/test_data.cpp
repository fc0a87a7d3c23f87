#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string>

#include "Velnor_Dorvik_V6c.h"
#include "timer_drv.h"
#include "dash_types.h"
#include "data.h"

namespace {

// The default record as the store holds it.
struct RECORD_BYTES_T {
    U8 b[sizeof(EEVariables_T)];
    U32 Word(size_t at) const { return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | (U32)b[at + 3] << 24; }
    U16 Half(size_t at) const { return (U16)(b[at] | b[at + 1] << 8); }
    // Gauge word of a profile that starts at `profile`, page and cell counted from 1.
    U16 Gauge(size_t profile, int page, int cell) const { return Half(profile + ((page - 1) * 4 + (cell - 1)) * 2); }
};

RECORD_BYTES_T DefaultBytes()
{
    RECORD_BYTES_T r;
    memcpy(r.b, &EEVariables_DEFAULT, sizeof(r.b));
    return r;
}

std::string Text(const uint8_T* field, size_t width)
{
    return std::string(reinterpret_cast<const char*>(field), width);
}

TEST(SettingsRecord, FactoryRecordInTheStoredFormat)
{
    const RECORD_BYTES_T r = DefaultBytes();
    EXPECT_EQ(r.Word(0), 0u);
    EXPECT_EQ(r.Word(4), 0u);
    EXPECT_EQ(r.Word(8), 0x3048483Cu);
    EXPECT_EQ(r.Half(16), 0xFFECu);  // -20
    EXPECT_EQ(r.Half(18), 200u);
    EXPECT_EQ(r.Half(20), 0xFF38u);  // -200
    const U8 units[] = {1, 1, 1, 1, 1, 1, 0, 1, 15, 15, 15, 0};
    EXPECT_EQ(memcmp(r.b + 22, units, sizeof(units)), 0);
    const U8 tail[] = {1, 1, 1, 0, 0, 0};
    EXPECT_EQ(memcmp(r.b + 394, tail, sizeof(tail)), 0);

    // The three factory profiles are equal; pages are four neighbouring words.
    for (size_t profile : {34u, 154u, 274u}) {
        EXPECT_EQ(r.Gauge(profile, 1, 2), 0x0022);
        EXPECT_EQ(r.Gauge(profile, 1, 3), 0x0100);
        EXPECT_EQ(r.Gauge(profile, 3, 4), 0x0022);
        EXPECT_EQ(r.Gauge(profile, 6, 4), 0x0012);
        EXPECT_EQ(r.Gauge(profile, 8, 1), 0x0200);
        EXPECT_EQ(r.Gauge(profile, 15, 1), 0x0304);
        EXPECT_EQ(r.Gauge(profile, 15, 4), 0x0000);
    }
}

TEST(Constants, DefaultProfileAndIdentityTexts)
{
    const uint16_T* flat = &CONSTVariables.PROFILE_DEFAULT[0][0];
    EXPECT_EQ(flat[(1 - 1) * 4 + (2 - 1)], 0x0001);  // page 1, cell 2
    EXPECT_EQ(flat[(3 - 1) * 4 + (4 - 1)], 0x003A);  // page 3, cell 4
    EXPECT_EQ(flat[(15 - 1) * 4 + (1 - 1)], 0x0304);

    const std::string model = Text(CONSTVariables.ModelName, 17);
    EXPECT_EQ(model, "Velnor_Dorvik_V6c");
    const std::string swId = model + "_" + std::to_string(CONSTVariables.BuildNumber);
    EXPECT_EQ(Text(CONSTVariables.SwIdTxt, 21), swId);
    EXPECT_EQ(Text(CONSTVariables.CalIdTxt, 25), swId + "_000");
    for (uint8_T c : CONSTVariables.BuildUID) EXPECT_TRUE(isalnum(c) || c == '_') << (int)c;
}

TEST(Records, ModelStartClearsTheStoreAndArmsThreeDetectors)
{
    memset(&Velnor_Dorvik_V6c_B, 0x5A, sizeof(Velnor_Dorvik_V6c_B));
    memset(&Velnor_Dorvik_V6c_DWork, 0x5A, sizeof(Velnor_Dorvik_V6c_DWork));
    memset(&Velnor_Dorvik_V6c_PrevZCSigState, 0x5A, sizeof(Velnor_Dorvik_V6c_PrevZCSigState));
    Velnor_Dorvik_V6c_initialize();
    EXPECT_EQ(B.SysInfo, 7u);
    EXPECT_EQ(B.Faults, 4u);
    EXPECT_EQ(B.Knock, 2u);
    EXPECT_EQ(B.QuadsScreen, 0u);
    // The delta-time words start at the uptime of the screens' registration.
    EXPECT_LE(DWork.quorin_delta_time_DWORK1, get_uptime_milliseconds());
    EXPECT_EQ(DWork.quorin_delta_time_DWORK1_i, DWork.quorin_delta_time_DWORK1);
    EXPECT_EQ(Velnor_Dorvik_V6c_PrevZCSigState.EditNextQuad_Trig_ZCE, 1);
    EXPECT_EQ(Velnor_Dorvik_V6c_PrevZCSigState.EditPage_Trig_ZCE, 1);
    EXPECT_EQ(Velnor_Dorvik_V6c_PrevZCSigState.LogWrite_Trig_ZCE, 1);
}

}  // namespace
