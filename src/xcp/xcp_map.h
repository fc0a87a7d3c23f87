#pragma once
// The calibration link's address space. Each variable a tool may read or write has a
// place in it: the records one after the other, each record's fields in their order,
// each at the next free address with no gaps. An address is never a machine address
// and never an offset into its record: the records' padding has no place, and a few
// fields have none at all. The tool and the dash share this one table.
#include <array>
#include <string_view>

#include "rtwtypes.h"
#include "xcp_types.h"

// How a tool reads a field's bytes.
enum XCP_MAP_KIND_T : uint8_T {
    XCP_KIND_BOOL,
    XCP_KIND_U8,
    XCP_KIND_S16,
    XCP_KIND_U16,
    XCP_KIND_U32,
    XCP_KIND_F32,
    XCP_KIND_TEXT,  // fixed width, no terminator
};

template <XCP_MAP_KIND_T K>
struct XcpMapKindType;
template <>
struct XcpMapKindType<XCP_KIND_BOOL> {
    typedef boolean_T type;
};
template <>
struct XcpMapKindType<XCP_KIND_U8> {
    typedef uint8_T type;
};
template <>
struct XcpMapKindType<XCP_KIND_S16> {
    typedef int16_T type;
};
template <>
struct XcpMapKindType<XCP_KIND_U16> {
    typedef uint16_T type;
};
template <>
struct XcpMapKindType<XCP_KIND_U32> {
    typedef uint32_T type;
};
template <>
struct XcpMapKindType<XCP_KIND_F32> {
    typedef real32_T type;
};
template <>
struct XcpMapKindType<XCP_KIND_TEXT> {
    typedef uint8_T type;
};

constexpr uint32_T XcpMapKindSize(XCP_MAP_KIND_T kind)
{
    switch (kind) {
    case XCP_KIND_S16:
    case XCP_KIND_U16: return 2;
    case XCP_KIND_U32:
    case XCP_KIND_F32: return 4;
    default: return 1;
    }
}

// The records in the order of the address space.
enum XCP_MAP_RECORD_T : uint8_T {
    XCP_RECORD_CONST,     // CONSTVariables, read only
    XCP_RECORD_RAMEDIT,   // RAMEditVariables
    XCP_RECORD_RAM,       // RAMVariables
    XCP_RECORD_EE,        // EEVariables_RAMShadow, the stored settings
    XCP_RECORD_COUNT,
};
inline constexpr const char* XcpMapRecordNames[XCP_RECORD_COUNT] = {
    "CONSTVariables",
    "RAMEditVariables",
    "RAMVariables",
    "EEVariables_RAMShadow",
};

// X(field, kind, elements), each record's mapped fields in declaration order. An
// array is one row.
#define XCP_MAP_CONST(X)          \
    X(PROFILE_DEFAULT, U16, 60)   \
    X(X1, U16, 1)                 \
    X(X2, U16, 1)                 \
    X(Y1, U16, 1)                 \
    X(Y2, U16, 1)                 \
    X(Xmax, U16, 1)               \
    X(Ymax, U16, 1)               \
    X(XC, U16, 1)                 \
    X(YC, U16, 1)                 \
    X(GaugeWidth, U16, 1)         \
    X(GaugeHeight, U16, 1)        \
    X(ModelName, TEXT, 17)        \
    X(BuildNumber, U32, 1)        \
    X(MatlabVersion, TEXT, 13)    \
    X(QuorinVersion, TEXT, 15)    \
    X(SwIdTxt, TEXT, 21)          \
    X(CalIdTxt, TEXT, 25)         \
    X(BuildUID, TEXT, 21)         \
    X(IdTableRev, U16, 1)         \
    X(HardwareType, U32, 1)       \
    X(EcuAddr, U32, 1)            \
    X(DateStamp, TEXT, 11)

// INIT_RAM_Variables has no row.
#define XCP_MAP_RAMEDIT(X) X(Abc, S16, 1)

#define XCP_MAP_RAM(X) \
    X(FileOpen_Success, BOOL, 1) \
    X(SyncCount, U32, 1) \
    X(SyncAttempts, U32, 1) \
    X(FrameCnt, U32, 1) \
    X(EditPage, U8, 1) \
    X(InitScreenChg_Time, U32, 1) \
    X(InitScreenChg_Screen, U8, 1) \
    X(LastSync, U32, 1) \
    X(LoggingActive, BOOL, 1) \
    X(FileOpen, BOOL, 1) \
    X(FileEject, BOOL, 1) \
    X(LoggBitActive, BOOL, 1) \
    X(USER_Eject_Bool, BOOL, 1) \
    X(ValetMode2, BOOL, 1) \
    X(ValetMode, BOOL, 1) \
    X(MAP, U16, 1) \
    X(AFR1_Max, F32, 1) \
    X(AFR2_Max, F32, 1) \
    X(Map_Max, F32, 1) \
    X(OilTemp_Max, F32, 1) \
    X(MIL, BOOL, 1) \
    X(TransTemp_Max, F32, 1) \
    X(EBP2_Max_PSI, F32, 1) \
    X(OilPress_Max_PSI, F32, 1) \
    X(WasteGatePressure_Max_PSI, F32, 1) \
    X(Radiator_Max_PSI, F32, 1) \
    X(RightTilt_Max, F32, 1) \
    X(LeftTilt_Max, F32, 1) \
    X(Lift_Max, F32, 1) \
    X(Lift_Min, F32, 1) \
    X(Accel_Max, F32, 1) \
    X(Decel_Max, F32, 1) \
    X(Right_Max, F32, 1) \
    X(Left_Max, F32, 1) \
    X(EGT2_Max, F32, 1) \
    X(PressureRatio_Min, F32, 1) \
    X(MassAir_Max, F32, 1) \
    X(EGT1_Max, F32, 1) \
    X(O2Percent2_Max, F32, 1) \
    X(O2SensorTemp2_Max, F32, 1) \
    X(AFRGas2_Max, F32, 1) \
    X(AirTemp_Max, F32, 1) \
    X(BatteryVolts_Min, F32, 1) \
    X(Coolant_Max, F32, 1) \
    X(TPS, U8, 1) \
    X(DiffWheelSpeed_Max, F32, 1) \
    X(InjectorDuty_Max, F32, 1) \
    X(BrakePressure_Max, F32, 1) \
    X(EngineHP_Max, F32, 1) \
    X(CAM2_Max, F32, 1) \
    X(CAM1_Max, F32, 1) \
    X(InletPressure_Min, F32, 1) \
    X(Torque_Max, F32, 1) \
    X(EBP2_Max, F32, 1) \
    X(EBP1_Max, F32, 1) \
    X(OilPress_Max, F32, 1) \
    X(WasteGatePressure_Max, F32, 1) \
    X(Radiator_Max, F32, 1) \
    X(DesEQ1_Max, F32, 1) \
    X(DesEQ2_Max, F32, 1) \
    X(MST_Max, F32, 1) \
    X(DrivenWheel_Max, F32, 1) \
    X(NonDrivenWheel_Max, F32, 1) \
    X(EBP1_Max_PSI, F32, 1) \
    X(Time_Since_Run, F32, 1) \
    X(TransPress_Max, F32, 1) \
    X(KnockRTD1_Max, F32, 1) \
    X(KnockRTD2_Max, F32, 1) \
    X(KnockRTD3_Max, F32, 1) \
    X(KnockRTD4_Max, F32, 1) \
    X(KnockRTD5_Max, F32, 1) \
    X(KnockRTD6_Max, F32, 1) \
    X(KnockRTD7_Max, F32, 1) \
    X(KnockRTD8_Max, F32, 1) \
    X(RPM, F32, 1) \
    X(LaunchTime_Max, F32, 1) \
    X(RPM_Max, F32, 1) \
    X(EGT2CAN_Max, F32, 1) \
    X(EGT3CAN_Max, F32, 1) \
    X(EGT4CAN_Max, F32, 1) \
    X(EGT1CAN_Max, F32, 1) \
    X(EGT6CAN_Max, F32, 1) \
    X(EGT7CAN_Max, F32, 1) \
    X(EGT8CAN_Max, F32, 1) \
    X(EGT5CAN_Max, F32, 1) \
    X(arg_x, U16, 1) \
    X(arg_y, U16, 1) \
    X(SelectedGaugeType, U8, 1) \
    X(SelectedGaugeIndex, U8, 1) \
    X(EditMode, BOOL, 1) \
    X(START_SCREEN, U8, 1)

// uiCRC, ulEECounter, EE_UniqID and the padding byte have no row.
#define XCP_MAP_EE(X)                  \
    X(LogNumber, U32, 1)               \
    X(AN1_Voffset, S16, 1)             \
    X(CurrentSensorAmpHigh, S16, 1)    \
    X(CurrentSensorAmpLow, S16, 1)     \
    X(PRESSURE_UNITS, U8, 1)           \
    X(CURRENT_QUAD_SCREEN, U8, 1)      \
    X(SELECTED_QUAD, U8, 1)            \
    X(AF_UNITS, U8, 1)                 \
    X(SPEED_UNITS, U8, 1)              \
    X(TEMP_UNITS, U8, 1)               \
    X(LANGUAGE, U8, 1)                 \
    X(USER_PROFILE, U8, 1)             \
    X(PROFILE_GAUGE_COUNT, U8, 3)      \
    X(PROFILE_1, U16, 60)              \
    X(PROFILE_2, U16, 60)              \
    X(PROFILE_3, U16, 60)              \
    X(CURRENT_SCREEN, U8, 1)           \
    X(BoostControl, U8, 1)             \
    X(TractionControl, U8, 1)          \
    X(HighOctane, U8, 1)               \
    X(ALT_TIRE, U8, 1)                 \
    X(EEPROM_State, U8, 1)

// One mapped field as a tool sees it.
struct XCP_MAP_FIELD_T {
    const char* name;
    XCP_MAP_RECORD_T record;
    XCP_MAP_KIND_T kind;
    uint16_T elements;
    uint32_T addr;  // first XCP address
    uint32_T size;  // bytes
};

#define XCP_MAP_ONE(field, kind, elements) +1
constexpr uint32_T constMapSize = 0 XCP_MAP_CONST(XCP_MAP_ONE);
constexpr uint32_T ramEditMapSize = 0 XCP_MAP_RAMEDIT(XCP_MAP_ONE);
constexpr uint32_T ramMapSize = 0 XCP_MAP_RAM(XCP_MAP_ONE);
constexpr uint32_T EEMapSize = 0 XCP_MAP_EE(XCP_MAP_ONE);
#undef XCP_MAP_ONE
constexpr uint32_T XCP_MAP_NUM_FIELDS = constMapSize + ramEditMapSize + ramMapSize + EEMapSize;

constexpr XCP_MAP_FIELD_T XcpMapMakeField(const char* name, XCP_MAP_RECORD_T record, XCP_MAP_KIND_T kind,
                                          uint16_T elements)
{
    return XCP_MAP_FIELD_T{name, record, kind, elements, 0, XcpMapKindSize(kind) * elements};
}

// Every field in address order; each address is the one after the field before.
inline constexpr std::array<XCP_MAP_FIELD_T, XCP_MAP_NUM_FIELDS> XcpMapFields = [] {
#define XCP_MAP_C(field, kind, elements) XcpMapMakeField(#field, XCP_RECORD_CONST, XCP_KIND_##kind, elements),
#define XCP_MAP_E(field, kind, elements) XcpMapMakeField(#field, XCP_RECORD_RAMEDIT, XCP_KIND_##kind, elements),
#define XCP_MAP_R(field, kind, elements) XcpMapMakeField(#field, XCP_RECORD_RAM, XCP_KIND_##kind, elements),
#define XCP_MAP_S(field, kind, elements) XcpMapMakeField(#field, XCP_RECORD_EE, XCP_KIND_##kind, elements),
    std::array<XCP_MAP_FIELD_T, XCP_MAP_NUM_FIELDS> fields = {
        XCP_MAP_CONST(XCP_MAP_C) XCP_MAP_RAMEDIT(XCP_MAP_E) XCP_MAP_RAM(XCP_MAP_R) XCP_MAP_EE(XCP_MAP_S)};
#undef XCP_MAP_C
#undef XCP_MAP_E
#undef XCP_MAP_R
#undef XCP_MAP_S
    uint32_T next = 0;
    for (XCP_MAP_FIELD_T& f : fields) {
        f.addr = next;
        next += f.size;
    }
    return fields;
}();

// The field of a name ("RPM", or with its record, "RAMVariables.RPM"); null if none.
constexpr const XCP_MAP_FIELD_T* XcpMapFindField(std::string_view name)
{
    for (const XCP_MAP_FIELD_T& f : XcpMapFields) {
        const std::string_view record = XcpMapRecordNames[f.record];
        if (name == f.name) return &f;
        if (name.size() == record.size() + 1 + std::string_view(f.name).size() && name.starts_with(record) &&
            name[record.size()] == '.' && name.ends_with(f.name))
            return &f;
    }
    return nullptr;
}

constexpr uint32_T XcpMapAddressOf(std::string_view name)
{
    return XcpMapFindField(name)->addr;
}

// The four maps' bounds, the end exclusive.
constexpr Xcp_Addr_t constStart = 0;
constexpr Xcp_Addr_t constEnd = XcpMapFields[constMapSize].addr;
constexpr Xcp_Addr_t ramEditStart = constEnd;
constexpr Xcp_Addr_t ramEditEnd = XcpMapFields[constMapSize + ramEditMapSize].addr;
constexpr Xcp_Addr_t ramStart = ramEditEnd;
constexpr Xcp_Addr_t ramEnd = XcpMapFields[constMapSize + ramEditMapSize + ramMapSize].addr;
constexpr Xcp_Addr_t EEStart = ramEnd;
constexpr Xcp_Addr_t EEEnd = XcpMapFields.back().addr + XcpMapFields.back().size;

// The address space tools are built against.
static_assert(constMapSize == 22 && ramEditMapSize == 1 && ramMapSize == 91 && EEMapSize == 22);
static_assert(constEnd == 277 && ramEditEnd == 279 && ramEnd == 589 && EEEnd == 976);
static_assert(XcpMapAddressOf("SwIdTxt") == 189 && XcpMapAddressOf("IdTableRev") == 256);
static_assert(XcpMapAddressOf("HardwareType") == 258 && XcpMapAddressOf("EcuAddr") == 262);
static_assert(XcpMapAddressOf("LoggingActive") == 302 && XcpMapAddressOf("RPM") == 537);
static_assert(XcpMapAddressOf("START_SCREEN") == 588 && XcpMapAddressOf("BoostControl") == 971);
static_assert(XcpMapAddressOf("RAMVariables.RPM") == 537);
static_assert([] {
    for (size_t i = 0; i < XcpMapFields.size(); i++)
        for (size_t j = i + 1; j < XcpMapFields.size(); j++)
            if (std::string_view(XcpMapFields[i].name) == XcpMapFields[j].name) return false;
    return true;
}(), "a field is found by its name alone");

// ---- The dash's side ------------------------------------------------------------------

// One row of a map: where the variable lies in the address space, and where in memory.
struct Xcp_MemoryMap_t {
    Xcp_Addr_t addr;
    U32 size;
    void* data;
};

// Copies numBytes from the address space at mta. A transfer may cross rows and maps;
// one that leaves the address space is refused whole.
Xcp_CalMemState XcpApp_CalMemRead(Xcp_Addr_t mta, U32 numBytes, U8* dest);
// Copies numBytes into the address space at mta, into the live records at once. Only
// from ramEditStart on: the constants are read only. A transfer that would leave the
// address space is refused whole.
Xcp_CalMemState XcpApp_CalMemWrite(Xcp_Addr_t mta, U32 numBytes, const U8* source);
// Always finished: every memory request ends within its call.
Xcp_CalMemState XcpApp_CalMemGetRequestState(void);
// The sum of the block's bytes modulo 256, read as XcpApp_CalMemRead reads them.
Xcp_CalMemState XcpApp_CalMemGetChecksum(Xcp_Addr_t address, U32 numBytes, U8* checksumType, U32* checksum);
