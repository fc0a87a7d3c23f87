#pragma once
// The application's records: live values for the tool, the settings record kept in
// the persistent store, the build's constants and the tool's edit variables.
#include <cstddef>

#include "rtwtypes.h"

// The model's text record over a fixed static buffer; writers format into `string`
// with a limit of `size - 1`.
struct S_String {
    uint32_T size;  // capacity in bytes, terminator included
    char* string;   // never reallocated
};

// The text of a string, "" for none.
inline const char* SStringText(const S_String* text)
{
    return text && text->string ? text->string : "";
}

// ---- Live values -----------------------------------------------------------------

struct RAMVariables_T {
    boolean_T FileOpen_Success;
    uint32_T SyncCount;
    uint32_T SyncAttempts;
    uint32_T FrameCnt;
    uint8_T EditPage;
    uint32_T InitScreenChg_Time;
    uint8_T InitScreenChg_Screen;
    uint32_T LastSync;
    boolean_T LoggingActive;
    boolean_T FileOpen;
    boolean_T FileEject;
    boolean_T LoggBitActive;
    boolean_T USER_Eject_Bool;
    boolean_T ValetMode2;
    boolean_T ValetMode;
    uint16_T MAP;
    real32_T AFR1_Max;
    real32_T AFR2_Max;
    real32_T Map_Max;
    real32_T OilTemp_Max;
    boolean_T MIL;
    real32_T TransTemp_Max;
    real32_T EBP2_Max_PSI;
    real32_T OilPress_Max_PSI;
    real32_T WasteGatePressure_Max_PSI;
    real32_T Radiator_Max_PSI;
    real32_T RightTilt_Max;
    real32_T LeftTilt_Max;
    real32_T Lift_Max;
    real32_T Lift_Min;
    real32_T Accel_Max;
    real32_T Decel_Max;
    real32_T Right_Max;
    real32_T Left_Max;
    real32_T EGT2_Max;
    real32_T PressureRatio_Min;
    real32_T MassAir_Max;
    real32_T EGT1_Max;
    real32_T O2Percent2_Max;
    real32_T O2SensorTemp2_Max;
    real32_T AFRGas2_Max;
    real32_T AirTemp_Max;
    real32_T BatteryVolts_Min;
    real32_T Coolant_Max;
    uint8_T TPS;
    real32_T DiffWheelSpeed_Max;
    real32_T InjectorDuty_Max;
    real32_T BrakePressure_Max;
    real32_T EngineHP_Max;
    real32_T CAM2_Max;
    real32_T CAM1_Max;
    real32_T InletPressure_Min;
    real32_T Torque_Max;
    real32_T EBP2_Max;
    real32_T EBP1_Max;
    real32_T OilPress_Max;
    real32_T WasteGatePressure_Max;
    real32_T Radiator_Max;
    real32_T DesEQ1_Max;
    real32_T DesEQ2_Max;
    real32_T MST_Max;
    real32_T DrivenWheel_Max;
    real32_T NonDrivenWheel_Max;
    real32_T EBP1_Max_PSI;
    real32_T Time_Since_Run;
    real32_T TransPress_Max;
    real32_T KnockRTD1_Max;
    real32_T KnockRTD2_Max;
    real32_T KnockRTD3_Max;
    real32_T KnockRTD4_Max;
    real32_T KnockRTD5_Max;
    real32_T KnockRTD6_Max;
    real32_T KnockRTD7_Max;
    real32_T KnockRTD8_Max;
    real32_T RPM;
    real32_T LaunchTime_Max;
    real32_T RPM_Max;
    real32_T EGT2CAN_Max;
    real32_T EGT3CAN_Max;
    real32_T EGT4CAN_Max;
    real32_T EGT1CAN_Max;
    real32_T EGT6CAN_Max;
    real32_T EGT7CAN_Max;
    real32_T EGT8CAN_Max;
    real32_T EGT5CAN_Max;
    uint16_T arg_x;  // corner of the cell a gauge function is about to draw
    uint16_T arg_y;
    uint8_T SelectedGaugeType;
    uint8_T SelectedGaugeIndex;
    boolean_T EditMode;
    uint8_T START_SCREEN;  // 255 until the start-up has read the stored screen
};

// ---- Settings record -------------------------------------------------------------

// A gauge word: high byte the gauge type, low byte the index within it. A profile is
// 15 pages of four cells, used flat: word (page - 1) * 4 + (cell - 1).
enum { PROFILE_PAGES = 15, PROFILE_CELLS = 4, PROFILE_WORDS = PROFILE_PAGES * PROFILE_CELLS };

// Stamp of this build's record layout: a record with another one is dropped at start.
constexpr uint32_T EE_UNIQ_ID = 0x3048483C;

// Kept in the persistent store at offset 0, little-endian, exactly this layout. The CRC
// covers bytes 4 to 399, the padding byte included, so that byte is a field of its own.
struct EEVariables_T {
    uint32_T uiCRC;        // CRC of bytes 4 to 399, in the low 16 bits
    uint32_T ulEECounter;  // stores so far
    uint32_T EE_UniqID;
    uint32_T LogNumber;
    int16_T AN1_Voffset;
    int16_T CurrentSensorAmpHigh;
    int16_T CurrentSensorAmpLow;
    uint8_T PRESSURE_UNITS;  // 1 PSI, 2 kPa, 3 bar
    uint8_T CURRENT_QUAD_SCREEN;
    uint8_T SELECTED_QUAD;
    uint8_T AF_UNITS;     // 1 air/fuel ratio, 2 lambda, 3 desired equivalence ratio
    uint8_T SPEED_UNITS;  // 1 MPH, 2 km/h, 3 knots
    uint8_T TEMP_UNITS;   // 1 Celsius, 2 Fahrenheit
    uint8_T LANGUAGE;
    uint8_T USER_PROFILE;
    uint8_T PROFILE_GAUGE_COUNT[3];
    uint8_T Padding;
    uint16_T PROFILE_1[4][15];
    uint16_T PROFILE_2[4][15];
    uint16_T PROFILE_3[4][15];
    uint8_T CURRENT_SCREEN;
    uint8_T BoostControl;
    uint8_T TractionControl;
    uint8_T HighOctane;
    uint8_T ALT_TIRE;
    uint8_T EEPROM_State;
};

static_assert(sizeof(EEVariables_T) == 400);

// The profiles a driver chooses from, USER_PROFILE 1 to 3.
constexpr uint8_T PROFILE_COUNT = 3;

// The page count of the active profile, or nullptr while USER_PROFILE names none.
inline uint8_T* ActiveProfileGaugeCount(EEVariables_T& ee)
{
    return ee.USER_PROFILE >= 1 && ee.USER_PROFILE <= PROFILE_COUNT ? &ee.PROFILE_GAUGE_COUNT[ee.USER_PROFILE - 1]
                                                                      : nullptr;
}

static_assert(offsetof(EEVariables_T, uiCRC) == 0);
static_assert(offsetof(EEVariables_T, ulEECounter) == 4);
static_assert(offsetof(EEVariables_T, EE_UniqID) == 8);
static_assert(offsetof(EEVariables_T, LogNumber) == 12);
static_assert(offsetof(EEVariables_T, AN1_Voffset) == 16);
static_assert(offsetof(EEVariables_T, CurrentSensorAmpHigh) == 18);
static_assert(offsetof(EEVariables_T, CurrentSensorAmpLow) == 20);
static_assert(offsetof(EEVariables_T, PRESSURE_UNITS) == 22);
static_assert(offsetof(EEVariables_T, CURRENT_QUAD_SCREEN) == 23);
static_assert(offsetof(EEVariables_T, SELECTED_QUAD) == 24);
static_assert(offsetof(EEVariables_T, AF_UNITS) == 25);
static_assert(offsetof(EEVariables_T, SPEED_UNITS) == 26);
static_assert(offsetof(EEVariables_T, TEMP_UNITS) == 27);
static_assert(offsetof(EEVariables_T, LANGUAGE) == 28);
static_assert(offsetof(EEVariables_T, USER_PROFILE) == 29);
static_assert(offsetof(EEVariables_T, PROFILE_GAUGE_COUNT) == 30);
static_assert(offsetof(EEVariables_T, Padding) == 33);
static_assert(offsetof(EEVariables_T, PROFILE_1) == 34);
static_assert(offsetof(EEVariables_T, PROFILE_2) == 154);
static_assert(offsetof(EEVariables_T, PROFILE_3) == 274);
static_assert(offsetof(EEVariables_T, CURRENT_SCREEN) == 394);
static_assert(offsetof(EEVariables_T, BoostControl) == 395);
static_assert(offsetof(EEVariables_T, TractionControl) == 396);
static_assert(offsetof(EEVariables_T, HighOctane) == 397);
static_assert(offsetof(EEVariables_T, ALT_TIRE) == 398);
static_assert(offsetof(EEVariables_T, EEPROM_State) == 399);
static_assert(sizeof(EEVariables_T::PROFILE_1) == PROFILE_WORDS * sizeof(uint16_T));

// The record's fields as data, for whoever shows a stored record field by field.
enum EE_FIELD_KIND_T : uint8_T {
    EE_FIELD_U8,
    EE_FIELD_S16,
    EE_FIELD_U32,
    EE_FIELD_PROFILE,  // gauge words, shown as pages
    EE_FIELD_PADDING,
};
struct EE_FIELD_T {
    const char* name;
    uint16_T offset;
    uint16_T size;  // bytes
    EE_FIELD_KIND_T kind;
};

// Offsets and sizes come from the structure itself, so the table cannot drift from it.
#define EE_FIELD(field, kind) {#field, offsetof(EEVariables_T, field), sizeof(EEVariables_T::field), kind}
inline constexpr EE_FIELD_T EEVariables_FIELDS[] = {
    EE_FIELD(uiCRC, EE_FIELD_U32),
    EE_FIELD(ulEECounter, EE_FIELD_U32),
    EE_FIELD(EE_UniqID, EE_FIELD_U32),
    EE_FIELD(LogNumber, EE_FIELD_U32),
    EE_FIELD(AN1_Voffset, EE_FIELD_S16),
    EE_FIELD(CurrentSensorAmpHigh, EE_FIELD_S16),
    EE_FIELD(CurrentSensorAmpLow, EE_FIELD_S16),
    EE_FIELD(PRESSURE_UNITS, EE_FIELD_U8),
    EE_FIELD(CURRENT_QUAD_SCREEN, EE_FIELD_U8),
    EE_FIELD(SELECTED_QUAD, EE_FIELD_U8),
    EE_FIELD(AF_UNITS, EE_FIELD_U8),
    EE_FIELD(SPEED_UNITS, EE_FIELD_U8),
    EE_FIELD(TEMP_UNITS, EE_FIELD_U8),
    EE_FIELD(LANGUAGE, EE_FIELD_U8),
    EE_FIELD(USER_PROFILE, EE_FIELD_U8),
    EE_FIELD(PROFILE_GAUGE_COUNT, EE_FIELD_U8),
    EE_FIELD(Padding, EE_FIELD_PADDING),
    EE_FIELD(PROFILE_1, EE_FIELD_PROFILE),
    EE_FIELD(PROFILE_2, EE_FIELD_PROFILE),
    EE_FIELD(PROFILE_3, EE_FIELD_PROFILE),
    EE_FIELD(CURRENT_SCREEN, EE_FIELD_U8),
    EE_FIELD(BoostControl, EE_FIELD_U8),
    EE_FIELD(TractionControl, EE_FIELD_U8),
    EE_FIELD(HighOctane, EE_FIELD_U8),
    EE_FIELD(ALT_TIRE, EE_FIELD_U8),
    EE_FIELD(EEPROM_State, EE_FIELD_U8),
};
#undef EE_FIELD

// Every byte of the record belongs to exactly one row, in order.
static_assert([] {
    size_t next = 0;
    for (const EE_FIELD_T& f : EEVariables_FIELDS) {
        if (f.offset != next) return false;
        next += f.size;
    }
    return next == sizeof(EEVariables_T);
}());

// ---- Constants of the build ------------------------------------------------------

struct CONSTVariables_T {
    uint16_T PROFILE_DEFAULT[4][15];
    uint16_T X1;
    uint16_T X2;
    uint16_T Y1;
    uint16_T Y2;
    uint16_T Xmax;
    uint16_T Ymax;
    uint16_T XC;
    uint16_T YC;
    uint16_T GaugeWidth;
    uint16_T GaugeHeight;
    // The texts have fixed widths and no terminator.
    uint8_T ModelName[17];
    uint32_T BuildNumber;
    uint8_T MatlabVersion[13];
    uint8_T QuorinVersion[15];
    uint8_T SwIdTxt[21];
    uint8_T CalIdTxt[25];
    uint8_T BuildUID[21];
    uint16_T IdTableRev;
    uint32_T HardwareType;
    uint32_T EcuAddr;
    uint8_T DateStamp[11];
};

// ---- The tool's edit variables ---------------------------------------------------

struct RAMEditVariables_T {
    uint8_T INIT_RAM_Variables;
    int16_T Abc;
};
static_assert(sizeof(RAMEditVariables_T) == 4);

// ---- The records -----------------------------------------------------------------

extern RAMVariables_T RAMVariables;
extern EEVariables_T EEVariables_RAMShadow;
extern EEVariables_T EEVariables_RAMShadowCopy;  // the record as last handed to the store
extern const EEVariables_T EEVariables_DEFAULT;
extern const CONSTVariables_T CONSTVariables;
extern RAMEditVariables_T RAMEditVariables;
extern const RAMEditVariables_T RAMEditVariables_DEFAULT;

// RAMVariables and CONSTVariables have their values from program load.
void initRAMVariables(RAMVariables_T* record);
void initCONSTVariables(const CONSTVariables_T* record);
void initRAMEditVariables(RAMEditVariables_T* record);
