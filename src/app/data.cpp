#include "data.h"

#include <cstring>

namespace {

// One row a page, cells 1 to 4. The order of the words is a stored format.
constexpr uint16_T m_profileDefault[PROFILE_WORDS] = {
    0x0000, 0x0001, 0x0100, 0x0000,  //
    0x0300, 0x0000, 0x0000, 0x0000,  //
    0x001E, 0x002C, 0x0032, 0x003A,  //
    0x000C, 0x000D, 0x000E, 0x000F,  //
    0x0010, 0x0011, 0x0012, 0x0013,  //
    0x0003, 0x001A, 0x001F, 0x0007,  //
    0x0000, 0x0022, 0x0013, 0x002F,  //
    0x0200, 0x0022, 0x0000, 0x002F,  //
    0x0014, 0x0015, 0x0010, 0x0018,  //
    0x0301, 0x0000, 0x0000, 0x0000,  //
    0x0019, 0x001A, 0x001B, 0x001C,  //
    0x001D, 0x001E, 0x001F, 0x0020,  //
    0x0025, 0x0026, 0x0027, 0x0028,  //
    0x0023, 0x0021, 0x000B, 0x0002,  //
    0x0304, 0x0000, 0x0000, 0x0000,  //
};

// The three profiles of a new dash: pages 1 to 6 of their own, pages 7 to 15 those of
// PROFILE_DEFAULT.
constexpr int FACTORY_OWN_WORDS = 6 * 4;
constexpr uint16_T m_profileFactoryOwn[FACTORY_OWN_WORDS] = {
    0x0000, 0x0022, 0x0100, 0x0000,  //
    0x0300, 0x0000, 0x0000, 0x0000,  //
    0x000E, 0x000F, 0x002C, 0x0022,  //
    0x0008, 0x0017, 0x0029, 0x0031,  //
    0x0024, 0x000A, 0x0009, 0x0006,  //
    0x000C, 0x000D, 0x0011, 0x0012,  //
};

struct PROFILE_WORDS_T {
    uint16_T words[PROFILE_WORDS];
};

constexpr PROFILE_WORDS_T _factoryProfile()
{
    PROFILE_WORDS_T p{};
    for (int i = 0; i < PROFILE_WORDS; i++) p.words[i] = i < FACTORY_OWN_WORDS ? m_profileFactoryOwn[i] : m_profileDefault[i];
    return p;
}
constexpr PROFILE_WORDS_T m_profileFactory = _factoryProfile();

constexpr void _copyProfile(uint16_T (&to)[4][15], const uint16_T (&from)[PROFILE_WORDS])
{
    for (int i = 0; i < PROFILE_WORDS; i++) to[i / 15][i % 15] = from[i];
}

// A fixed-width text without its terminator; a literal of another length does not build.
template <size_t N, size_t M>
constexpr void _copyText(uint8_T (&to)[N], const char (&from)[M])
{
    static_assert(M == N + 1, "text must fill its field exactly");
    for (size_t i = 0; i < N; i++) to[i] = (uint8_T)from[i];
}

constexpr EEVariables_T _eeVariablesDefault(void)
{
    EEVariables_T d{};
    d.EE_UniqID = EE_UNIQ_ID;
    d.AN1_Voffset = -20;
    d.CurrentSensorAmpHigh = 200;
    d.CurrentSensorAmpLow = -200;
    d.PRESSURE_UNITS = 1;
    d.CURRENT_QUAD_SCREEN = 1;
    d.SELECTED_QUAD = 1;
    d.AF_UNITS = 1;
    d.SPEED_UNITS = 1;
    d.TEMP_UNITS = 1;
    d.USER_PROFILE = 1;
    for (uint8_T& pages : d.PROFILE_GAUGE_COUNT) pages = PROFILE_PAGES;
    _copyProfile(d.PROFILE_1, m_profileFactory.words);
    _copyProfile(d.PROFILE_2, m_profileFactory.words);
    _copyProfile(d.PROFILE_3, m_profileFactory.words);
    d.CURRENT_SCREEN = 1;
    d.BoostControl = 1;
    d.TractionControl = 1;
    return d;
}

constexpr RAMVariables_T _ramVariablesAtLoad(void)
{
    RAMVariables_T r{};
    r.START_SCREEN = 255;  // no screen chosen yet
    return r;
}

constexpr CONSTVariables_T _constVariables(void)
{
    CONSTVariables_T c{};
    _copyProfile(c.PROFILE_DEFAULT, m_profileDefault);
    c.X1 = 0;
    c.X2 = 160;
    c.Y1 = 0;
    c.Y2 = 120;
    c.Xmax = 319;
    c.Ymax = 239;
    c.XC = 160;
    c.YC = 120;
    c.GaugeWidth = 152;
    c.GaugeHeight = 117;
    _copyText(c.ModelName, "Velnor_Dorvik_V6c");
    c.BuildNumber = 650;
    _copyText(c.MatlabVersion, "MT_3.4.0_b112");
    _copyText(c.QuorinVersion, "QCG_4.2.1_b0317");
    _copyText(c.SwIdTxt, "Velnor_Dorvik_V6c_650");
    _copyText(c.CalIdTxt, "Velnor_Dorvik_V6c_650_000");
    _copyText(c.BuildUID, "MD650_20240611_0A3F7C");
    c.IdTableRev = 2;
    c.HardwareType = 320;
    c.EcuAddr = 253;
    _copyText(c.DateStamp, "11-Jun-2024");
    return c;
}

}  // namespace

constinit RAMVariables_T RAMVariables = _ramVariablesAtLoad();
EEVariables_T EEVariables_RAMShadow;
EEVariables_T EEVariables_RAMShadowCopy;
constinit const EEVariables_T EEVariables_DEFAULT = _eeVariablesDefault();
constinit const CONSTVariables_T CONSTVariables = _constVariables();
RAMEditVariables_T RAMEditVariables;
constinit const RAMEditVariables_T RAMEditVariables_DEFAULT = {.INIT_RAM_Variables = 55, .Abc = -20};

void initRAMVariables(RAMVariables_T*)
{
}

void initCONSTVariables(const CONSTVariables_T*)
{
}

void initRAMEditVariables(RAMEditVariables_T* record)
{
    memcpy(record, &RAMEditVariables_DEFAULT, sizeof(*record));
}
