#pragma once
// The ECU message set as data: every frame the dash receives or sends, and every field
// of those frames with its scaling and the record field it lands in. The decoder, the
// settings frame and the DBC description all walk these two tables.
#include <array>
#include <cstddef>
#include <type_traits>

#include "Velnor_Dorvik_V6c.h"
#include "can_drv.h"
#include "data.h"

// Fields of the frames that have no signal of their own in B: inputs of the holds and
// of the display values that the foreground task builds from them.
struct CAN_INPUTS_T {
    real_T EBP1_PSI;               // 0x102 D0
    real_T Turbo1_RPM;             // 0x106 D0 to D3
    real_T Turbo2_RPM;             // 0x106 D4 to D7
    real_T WasteGatePressure_PSI;  // 0x110 D1
    real_T EBP2_PSI;               // 0x110 D2
    real_T Radiator_PSI;           // 0x110 D3
    real_T OilPress_PSI;           // 0x110 D4
    real_T Speedo;                 // 0x161 D6, D7
    real_T O2SensorTemp2;          // 0x130, port 2
    real_T Lambda2;                // 0x130, port 2
};
extern CAN_INPUTS_T CANInputs;

// The ECU's identity texts, empty until their frames come. The firmware version comes
// in two halves of 7 characters, which 0x122 sends one at a time.
extern S_String CANText_FirmwareVersion;  // the two halves joined, 15 bytes
extern S_String CANText_FirmwareFirst;    // 8 bytes each
extern S_String CANText_FirmwareSecond;
extern S_String CANText_SerialNumber;  // 0x123, 9 bytes
extern S_String CANText_PartNumber;    // 0x124, 9 bytes

// Fetches the frame's mailbox once, into a zeroed buffer, and decodes every field of it;
// the result is the frame's age. Before the first frame the fields decode from zeros.
// Once per foreground pass for each received frame: the fetch is what ages the frame.
uint16_T CANDecodeFrame(uint32_T id);
// The age the frame had at its fetch in this pass; CAN_AGE_NEVER before the first fetch.
uint16_T CANFrameAge(uint32_T id);
// Rebuilds the settings frame 0x131 from the settings record for the next period.
void CANSettingsFrameUpdate(void);

enum CAN_ORDER_T : uint8_T {
    CAN_BIG_ENDIAN,     // start is the field's most significant bit
    CAN_LITTLE_ENDIAN,  // start is the field's least significant bit
};
enum CAN_DIR_T : uint8_T { CAN_RX, CAN_TX };
// Some frames only count while the engine is under load.
enum CAN_GATE_T : uint8_T { CAN_GATE_NONE, CAN_GATE_TPS_ABOVE_70 };

struct CAN_FRAME_T {
    uint16_T id;  // standard, 8 bytes
    CAN_PORTS_T port;
    CAN_ORDER_T order;
    CAN_DIR_T dir;
    CAN_GATE_T gate;  // values count as 0 while the gate is shut
};

// Where a field's value goes (or, for a sent frame, comes from).
enum CAN_RECORD_T : uint8_T {
    CAN_REC_NONE,    // described on the wire only
    CAN_REC_B,       // the signal store
    CAN_REC_INPUTS,  // CANInputs
    CAN_REC_EE,      // the settings record
    CAN_REC_TEXT,    // one of the ECU's identity texts, by CAN_TEXT_T
};
enum CAN_KIND_T : uint8_T { CAN_KIND_NONE, CAN_KIND_F64, CAN_KIND_U8, CAN_KIND_U16, CAN_KIND_U32, CAN_KIND_TEXT };
enum CAN_TEXT_T : uint8_T { CAN_TEXT_FIRMWARE, CAN_TEXT_SERIAL, CAN_TEXT_PART };

struct CAN_TARGET_T {
    CAN_RECORD_T record;
    uint16_T offset;  // in the record; the text for CAN_REC_TEXT
    CAN_KIND_T kind;
    const char* name;
};

template <typename T>
constexpr CAN_KIND_T CANKindOf(void)
{
    if constexpr (std::is_same_v<T, real_T>) return CAN_KIND_F64;
    else if constexpr (std::is_same_v<T, uint8_T>) return CAN_KIND_U8;
    else if constexpr (std::is_same_v<T, uint16_T>) return CAN_KIND_U16;
    else if constexpr (std::is_same_v<T, uint32_T>) return CAN_KIND_U32;
    else static_assert(!sizeof(T), "a CAN field lands in a double or an unsigned integer");
}

// The kind follows the field's type, so a field whose type changes cannot be written
// with the wrong width.
#define CAN_B(field) \
    CAN_TARGET_T{CAN_REC_B, offsetof(BlockIO_Velnor_Dorvik_V6c, field), \
                 CANKindOf<decltype(BlockIO_Velnor_Dorvik_V6c::field)>(), #field}
#define CAN_IN(field) \
    CAN_TARGET_T{CAN_REC_INPUTS, offsetof(CAN_INPUTS_T, field), CANKindOf<decltype(CAN_INPUTS_T::field)>(), #field}
#define CAN_EE(field) \
    CAN_TARGET_T{CAN_REC_EE, offsetof(EEVariables_T, field), CANKindOf<decltype(EEVariables_T::field)>(), #field}
#define CAN_TEXT(text, name) CAN_TARGET_T{CAN_REC_TEXT, text, CAN_KIND_TEXT, #name}
#define CAN_NONE(name) CAN_TARGET_T{CAN_REC_NONE, 0, CAN_KIND_NONE, #name}

constexpr bool CAN_U = false;
constexpr bool CAN_S = true;  // two's complement of the field's width

// One field: value = raw / divisor + offset. `byte` and `bit` (7 most significant)
// give the field's start in the order of its frame.
struct CAN_SIGNAL_T {
    uint16_T frame;
    uint8_T byte;
    uint8_T bit;
    uint8_T width;
    bool isSigned;
    real_T divisor;
    real_T offset;
    const char* unit;
    CAN_TARGET_T target;
};

inline constexpr CAN_FRAME_T CAN_FRAMES[] = {
    {0x101, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x102, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x103, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x104, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x105, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x106, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x107, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x108, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x109, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x110, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x111, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x112, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x113, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x114, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x115, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x116, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x117, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x118, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x119, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x120, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x121, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x122, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x123, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x124, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x125, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x126, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x127, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x130, CAN_PORT2, CAN_LITTLE_ENDIAN, CAN_RX, CAN_GATE_TPS_ABOVE_70},
    {0x131, CAN_PORT1, CAN_BIG_ENDIAN, CAN_TX, CAN_GATE_NONE},  // the settings, to the ECU
    {0x132, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x133, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x140, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x141, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x142, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x143, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x144, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x145, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x146, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x147, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x148, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x149, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x161, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x162, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x163, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
    {0x164, CAN_PORT1, CAN_BIG_ENDIAN, CAN_RX, CAN_GATE_NONE},
};

inline constexpr CAN_SIGNAL_T CAN_SIGNALS[] = {
{0x101, 0, 7, 16, CAN_S, 1, 0, "%", CAN_B(Differential_WheelSpeed)},
    {0x101, 2, 7, 16, CAN_U, 1, 0, "MPH", CAN_B(Differntial_WheelSpeed_Allowed)},
    {0x101, 6, 7, 8, CAN_U, 1, 0, "%", CAN_B(TPS_g)},
    {0x101, 7, 7, 8, CAN_U, 1, 0, "%", CAN_B(Primary_Injector_Duty)},

    {0x102, 0, 7, 8, CAN_U, 1, 0, "PSI", CAN_IN(EBP1_PSI)},
    {0x102, 2, 7, 8, CAN_U, 1, 0, "MPH", CAN_B(DrivenWheelSpeed)},
    {0x102, 3, 7, 8, CAN_U, 1, 0, "MPH", CAN_B(NonDrivenWheelSpeed)},
    {0x102, 4, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(TCS_SPark_RTD)},
    {0x102, 5, 7, 8, CAN_U, 1, 0, "%", CAN_B(WasteGate_Duty)},
    {0x102, 6, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(WasteGate_SetPoint)},

    {0x103, 0, 7, 16, CAN_U, 1, 0, "s", CAN_B(TimeSinceRun)},
    {0x103, 2, 7, 8, CAN_U, 1, 0, "%", CAN_B(TPS2)},
    {0x103, 3, 7, 8, CAN_U, 1, 0, "%", CAN_B(APP1)},
    {0x103, 4, 7, 8, CAN_U, 1, 0, "%", CAN_B(APP2)},
    {0x103, 5, 7, 4, CAN_U, 1, 0, "flag", CAN_B(OnIdle)},
    {0x103, 5, 3, 16, CAN_U, 1, 0, "kPa", CAN_B(Transmission_Pressure)},
    {0x103, 7, 3, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage1_Engaged)},
    {0x103, 7, 2, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage2_Engaged)},
    {0x103, 7, 1, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage3_Engaged)},
    {0x103, 7, 0, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage4_Engaged)},

    {0x104, 0, 7, 16, CAN_U, 100, 0, "EQ", CAN_B(Target_O2)},
    {0x104, 2, 2, 1, CAN_U, 1, 0, "on/off", CAN_B(High_CAM_Active)},
    {0x104, 2, 1, 1, CAN_U, 1, 0, "flag", CAN_B(TractionControlActive)},
    {0x104, 2, 0, 1, CAN_U, 1, 0, "on/off", CAN_B(Drivers_Information_Light)},
    {0x104, 3, 7, 16, CAN_U, 1, 0, "RPM", CAN_B(Current_RPM_Limit)},
    {0x104, 5, 7, 16, CAN_U, 1, 0, "ADC", CAN_B(TwoStep_ADC)},
    {0x104, 7, 7, 8, CAN_U, 1, 0, "%", CAN_B(Secondary_Injector_Duty)},

    {0x105, 0, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Nitrous_Pressure1)},
    {0x105, 2, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Nitrous_Pressure2)},
    {0x105, 4, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Nitrous_Pressure3)},
    {0x105, 6, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Nitrous_Pressure4)},

    {0x106, 0, 7, 32, CAN_U, 1, 0, "RPM", CAN_IN(Turbo1_RPM)},
    {0x106, 4, 7, 32, CAN_U, 1, 0, "RPM", CAN_IN(Turbo2_RPM)},

    {0x107, 0, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL1_RTD)},
    {0x107, 1, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL2_RTD)},
    {0x107, 2, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL3_RTD)},
    {0x107, 3, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL4_RTD)},
    {0x107, 4, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL5_RTD)},
    {0x107, 5, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL6_RTD)},
    {0x107, 6, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL7_RTD)},
    {0x107, 7, 7, 8, CAN_S, 1, 0, "degrees", CAN_B(Knock_CYL8_RTD)},

    {0x108, 0, 7, 16, CAN_U, 1, 0, "RPM", CAN_B(RPM)},
    {0x108, 2, 7, 16, CAN_U, 100, 0, "s", CAN_B(Launch_Time)},
    {0x108, 4, 7, 16, CAN_S, 100, 0, "delta", CAN_B(Delta_TPS)},
    {0x108, 6, 7, 8, CAN_U, 100, 0, "multiplier", CAN_B(O2Fuel_MultA)},
    {0x108, 7, 7, 8, CAN_U, 100, 0, "multiplier", CAN_B(O2Fuel_MultB)},

    {0x109, 0, 7, 1, CAN_U, 1, 0, "on/off", CAN_B(Start_Log)},
    {0x109, 0, 2, 8, CAN_U, 1, 0, "%", CAN_B(EthanolContent)},
    {0x109, 1, 2, 8, CAN_U, 1, 0, "count", CAN_B(EncoderFaultCount)},
    {0x109, 2, 2, 1, CAN_U, 1, 0, "on/off", CAN_B(MIL)},
    {0x109, 2, 1, 3, CAN_U, 1, 0, "gear", CAN_B(DesiredGear)},
    {0x109, 3, 6, 1, CAN_U, 1, 0, "on/off", CAN_B(ManualMode)},
    {0x109, 3, 5, 3, CAN_U, 1, 0, "gear", CAN_B(ShifterPosition)},
    {0x109, 3, 2, 3, CAN_U, 1, 0, "gear", CAN_B(Calculated_Gear)},
    {0x109, 4, 7, 16, CAN_S, 1, 0, "C", CAN_B(OilTemp)},
    {0x109, 6, 7, 16, CAN_S, 1, 0, "C", CAN_B(TransTemp)},

    {0x110, 0, 7, 1, CAN_U, 1, 0, "on/off", CAN_B(RevLimiterActive)},
    {0x110, 0, 6, 7, CAN_U, 1, 0, "%", CAN_B(SlipPercent)},
    {0x110, 1, 7, 8, CAN_U, 1, 0, "PSI", CAN_IN(WasteGatePressure_PSI)},
    {0x110, 2, 7, 8, CAN_U, 1, 0, "PSI", CAN_IN(EBP2_PSI)},
    {0x110, 3, 7, 8, CAN_U, 1, 0, "PSI", CAN_IN(Radiator_PSI)},
    {0x110, 4, 7, 8, CAN_U, 1, 0, "PSI", CAN_IN(OilPress_PSI)},
    {0x110, 5, 7, 8, CAN_U, 1, 0, "%", CAN_B(ETCDutyCycle)},
    {0x110, 6, 7, 8, CAN_S, 1, 0, "integral", CAN_B(ETCIterm)},

    {0x111, 0, 7, 16, CAN_U, 1, 0, "RPM", CAN_B(DriveShaftRPMAllowed)},
    {0x111, 2, 7, 16, CAN_U, 1, 0, "cc", CAN_B(PrimaryCompensatedInjectorFlow)},
    {0x111, 4, 7, 16, CAN_U, 1, 0, "cc", CAN_B(SecondaryCompensatedInjectorFlow)},
    {0x111, 6, 7, 16, CAN_U, 1, 0, "RPM", CAN_B(DriveShaft_RPM)},

    {0x112, 0, 7, 16, CAN_U, 1, 0, "C", CAN_B(EGT2_m)},
    {0x112, 2, 7, 16, CAN_U, 1, 0, "C", CAN_B(EGT)},
    {0x112, 4, 7, 16, CAN_U, 100, 0, "ratio", CAN_B(Pressure_Ratio)},
    {0x112, 6, 7, 16, CAN_U, 1, 0, "g/s", CAN_B(MassAirFlow)},

    {0x113, 0, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW1)},
    {0x113, 2, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW2)},
    {0x113, 4, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW3)},
    {0x113, 6, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW4)},

    {0x114, 0, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW5)},
    {0x114, 2, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW6)},
    {0x114, 4, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW7)},
    {0x114, 6, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW8)},

    {0x115, 0, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW9)},
    {0x115, 2, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW10)},
    {0x115, 4, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW11)},
    {0x115, 6, 7, 16, CAN_U, 1, 0, "microseconds", CAN_B(InectorPW12)},

    {0x116, 0, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl1)},
    {0x116, 2, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl2)},
    {0x116, 4, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl3)},
    {0x116, 6, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl4)},

    {0x117, 0, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl5)},
    {0x117, 2, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl6)},
    {0x117, 4, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl7)},
    {0x117, 6, 7, 16, CAN_U, 1, 0, "energy", CAN_B(KnockEnergyCyl8)},

    {0x118, 0, 7, 16, CAN_U, 100, 0, "AFR", CAN_B(Primary_StoichSetpoint)},
    {0x118, 2, 7, 16, CAN_U, 100, 0, "V", CAN_B(BatteryVolts)},
    {0x118, 4, 7, 1, CAN_U, 1, 0, "on/off", CAN_B(High_Low_Switch)},
    {0x118, 4, 6, 5, CAN_U, 1, 0, "state", CAN_B(EncoderState)},
    {0x118, 4, 1, 1, CAN_U, 1, 0, "enabled", CAN_B(TractionControlEnabled)},
    {0x118, 4, 0, 5, CAN_U, 1, 0, "stage", CAN_B(IBoostPosition)},
    {0x118, 5, 3, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage1_Armed)},
    {0x118, 5, 2, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage2_Armed)},
    {0x118, 5, 1, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage3_Armed)},
    {0x118, 5, 0, 1, CAN_U, 1, 0, "on/off", CAN_B(Stage4_Armed)},
    {0x118, 6, 7, 8, CAN_U, 1, 0, "C", CAN_B(Coolant_Temp)},
    {0x118, 7, 7, 8, CAN_U, 1, 0, "C", CAN_B(Inlet_Air_Temp)},

    {0x119, 0, 0, 1, CAN_U, 1, 0, "on/off", CAN_B(TCC)},
    {0x119, 1, 7, 16, CAN_U, 1, 0, "HP", CAN_B(Engine_HP_Potential)},
    {0x119, 3, 7, 8, CAN_U, 1, 0, "MPG", CAN_B(Fuel_Economy)},
    {0x119, 4, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(BrakePressure)},
    {0x119, 6, 7, 16, CAN_U, 100, 0, "AFR", CAN_B(Target_AFR)},

    {0x120, 0, 7, 16, CAN_S, 1, 0, "degrees", CAN_B(VVT2_Setpoint)},
    {0x120, 2, 7, 16, CAN_S, 1, 0, "degrees", CAN_B(VVT1_Setpoint)},
    {0x120, 4, 7, 16, CAN_S, 1, 0, "degrees", CAN_B(Cam2PhaseRelative)},
    {0x120, 6, 7, 16, CAN_S, 1, 0, "degrees", CAN_B(Cam1PhaseRelative)},

{0x121, 0, 7, 1, CAN_U, 1, 0, "", CAN_B(APP1AdaptHiMax)},
    {0x121, 0, 6, 1, CAN_U, 1, 0, "", CAN_B(APP1AdaptHiMin)},
    {0x121, 0, 5, 1, CAN_U, 1, 0, "", CAN_B(APP1AdaptLoMax)},
    {0x121, 0, 4, 1, CAN_U, 1, 0, "", CAN_B(APP1AdaptLoMin)},
    {0x121, 0, 3, 1, CAN_U, 1, 0, "", CAN_B(APP1RangeHigh)},
    {0x121, 0, 2, 1, CAN_U, 1, 0, "", CAN_B(APP1RangeLow)},
    {0x121, 0, 1, 1, CAN_U, 1, 0, "", CAN_B(APP2AdaptHiMax)},
    {0x121, 0, 0, 1, CAN_U, 1, 0, "", CAN_B(APP2AdaptHiMin)},
    {0x121, 1, 7, 1, CAN_U, 1, 0, "", CAN_B(APP2AdaptLoMax)},
    {0x121, 1, 6, 1, CAN_U, 1, 0, "", CAN_B(APP2AdaptLoMin)},
    {0x121, 1, 5, 1, CAN_U, 1, 0, "", CAN_B(APP2RangeHigh)},
    {0x121, 1, 4, 1, CAN_U, 1, 0, "", CAN_B(APP2RangeLow)},
    {0x121, 1, 3, 1, CAN_U, 1, 0, "", CAN_B(APP_Sensors_Conflict)},
    {0x121, 1, 2, 1, CAN_U, 1, 0, "", CAN_B(AutoCrankFailed)},
    {0x121, 1, 1, 1, CAN_U, 1, 0, "", CAN_B(Boost_Limit_Exceeded)},
    {0x121, 1, 0, 1, CAN_U, 1, 0, "", CAN_B(Brake_PressureRangeHigh)},
    {0x121, 2, 7, 1, CAN_U, 1, 0, "", CAN_B(Brake_PressureRangeLow)},
    {0x121, 2, 6, 1, CAN_U, 1, 0, "", CAN_B(CAN_Wideband1_Open)},
    {0x121, 2, 5, 1, CAN_U, 1, 0, "", CAN_B(CamEdgesFault)},
    {0x121, 2, 4, 1, CAN_U, 1, 0, "", CAN_B(CamSyncFault)},
    {0x121, 2, 3, 1, CAN_U, 1, 0, "", CAN_B(CrankEdgesFault)},
    {0x121, 2, 2, 1, CAN_U, 1, 0, "", CAN_B(CrankSyncFault)},
    {0x121, 2, 1, 1, CAN_U, 1, 0, "", CAN_B(CruiseSwich1)},
    {0x121, 2, 0, 1, CAN_U, 1, 0, "", CAN_B(CruiseSwich2)},
    {0x121, 3, 7, 1, CAN_U, 1, 0, "", CAN_B(CruiseSwich3)},
    {0x121, 3, 6, 1, CAN_U, 1, 0, "", CAN_B(CruiseSwich4)},
    {0x121, 3, 5, 1, CAN_U, 1, 0, "", CAN_B(CruiseSwich5)},
    {0x121, 3, 4, 1, CAN_U, 1, 0, "", CAN_B(DecelFuelCut_Enabled)},
    {0x121, 3, 3, 1, CAN_U, 1, 0, "", CAN_B(DifferentialWheelSpeed_Exceeded)},
    {0x121, 3, 2, 1, CAN_U, 1, 0, "", CAN_B(DriveShaftRPmLimit_Exceeded)},
    {0x121, 3, 1, 1, CAN_U, 1, 0, "", CAN_B(ECTOverTempFault)},
    {0x121, 3, 0, 1, CAN_U, 1, 0, "", CAN_B(ECTRangeHigh)},
    {0x121, 4, 7, 1, CAN_U, 1, 0, "", CAN_B(ECTRangeLow)},
    {0x121, 4, 6, 1, CAN_U, 1, 0, "", CAN_B(EGT_1RangeHigh)},
    {0x121, 4, 5, 1, CAN_U, 1, 0, "", CAN_B(EGT_1RangeLow)},
    {0x121, 4, 4, 1, CAN_U, 1, 0, "", CAN_B(EGT_2RangeHigh)},
    {0x121, 4, 3, 1, CAN_U, 1, 0, "", CAN_B(EGT_2RangeLow)},
    {0x121, 4, 2, 1, CAN_U, 1, 0, "", CAN_B(ETCSpringTest)},
    {0x121, 4, 1, 1, CAN_U, 1, 0, "", CAN_B(ETC_Open_Fault)},
    {0x121, 4, 0, 1, CAN_U, 1, 0, "", CAN_B(ETC_Sticking)},
    {0x121, 5, 7, 1, CAN_U, 1, 0, "", CAN_B(EXT_O2_1RangeHigh)},
    {0x121, 5, 6, 1, CAN_U, 1, 0, "", CAN_B(EXT_O2_1RangeLow)},
    {0x121, 5, 5, 1, CAN_U, 1, 0, "", CAN_B(EXT_O2_2RangeHigh)},
    {0x121, 5, 4, 1, CAN_U, 1, 0, "", CAN_B(EXT_O2_2RangeLow)},
    {0x121, 5, 3, 1, CAN_U, 1, 0, "", CAN_B(EngineOverspeed)},
    {0x121, 5, 2, 1, CAN_U, 1, 0, "", CAN_B(Ethanol_Content_low_Fault)},
    {0x121, 5, 1, 1, CAN_U, 1, 0, "", CAN_B(ExhaustBP2RangeHigh)},
    {0x121, 5, 0, 1, CAN_U, 1, 0, "", CAN_B(ExhaustBP2RangeLow)},
    {0x121, 6, 7, 1, CAN_U, 1, 0, "", CAN_B(ExhaustBPRangeHigh)},
    {0x121, 6, 6, 1, CAN_U, 1, 0, "", CAN_B(ExhaustBPRangeLow)},
    {0x121, 6, 5, 1, CAN_U, 1, 0, "", CAN_B(ExhautBP_Variance_Exceeded)},
    {0x121, 6, 4, 1, CAN_U, 1, 0, "", CAN_B(FlexFuelRangeHigh)},
    {0x121, 6, 3, 1, CAN_U, 1, 0, "", CAN_B(FlexFuelRangeLow)},
    {0x121, 6, 2, 1, CAN_U, 1, 0, "", CAN_B(Fuel_Cut_Active)},
    {0x121, 6, 1, 1, CAN_U, 1, 0, "", CAN_B(HB1Fault_Stepper)},
    {0x121, 6, 0, 1, CAN_U, 1, 0, "", CAN_B(HB2Fault_Stepper)},
    {0x121, 7, 7, 1, CAN_U, 1, 0, "", CAN_B(HBridgeFault_ETC)},
    {0x121, 7, 6, 1, CAN_U, 1, 0, "", CAN_B(High_LowSwitch_Active)},
    {0x121, 7, 5, 1, CAN_U, 1, 0, "", CAN_B(IATRangeHigh)},
    {0x121, 7, 4, 1, CAN_U, 1, 0, "", CAN_B(IATRangeLow)},
    {0x121, 7, 3, 1, CAN_U, 1, 0, "", CAN_B(IAT_IR_Fault)},
    {0x121, 7, 2, 1, CAN_U, 1, 0, "", CAN_B(I_BoostRangeHigh)},
    {0x121, 7, 1, 1, CAN_U, 1, 0, "", CAN_B(I_BoostRangeLow)},
    {0x121, 7, 0, 1, CAN_U, 1, 0, "", CAN_B(IncreasingFaultCounts)},

    {0x122, 0, 7, 8, CAN_U, 1, 0, "", CAN_NONE(FirmwareVersionHalf)},
    {0x122, 1, 7, 56, CAN_U, 1, 0, "", CAN_TEXT(CAN_TEXT_FIRMWARE, FirmwareVersion)},

    {0x123, 0, 7, 64, CAN_U, 1, 0, "", CAN_TEXT(CAN_TEXT_SERIAL, SerialNumber)},

    {0x124, 0, 7, 64, CAN_U, 1, 0, "", CAN_TEXT(CAN_TEXT_PART, PartNumber)},

    {0x125, 0, 7, 16, CAN_S, 100, 0, "degrees BTDC", CAN_B(Spark_Advance_Log)},
    {0x125, 2, 7, 16, CAN_U, 100, 0, "AFR", CAN_B(Final_AFR1)},
    {0x125, 4, 7, 16, CAN_U, 100, 0, "AFR", CAN_B(Final_AFR2)},
    {0x125, 6, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(MAP_p)},

    {0x126, 0, 7, 16, CAN_U, 500, -64, "degrees", CAN_B(X_Axis_Degrees)},
    {0x126, 2, 7, 16, CAN_U, 500, -64, "degrees", CAN_B(Y_Axis_Degrees)},

    {0x127, 0, 7, 16, CAN_U, 100, -4, "g", CAN_B(X_Axis_AccelG)},
    {0x127, 2, 7, 16, CAN_U, 100, -4, "g", CAN_B(Y_Axis_AccelG)},

    {0x130, 3, 0, 16, CAN_U, 42.6657564638621, 0, "", CAN_IN(O2SensorTemp2)},
    {0x130, 5, 0, 16, CAN_U, 4098.360655737705, 0, "lambda", CAN_IN(Lambda2)},

    {0x131, 4, 0, 1, CAN_U, 1, 0, "on/off", CAN_EE(ALT_TIRE)},
    {0x131, 5, 0, 1, CAN_U, 1, 0, "on/off", CAN_EE(HighOctane)},
    {0x131, 6, 0, 1, CAN_U, 1, 0, "on/off", CAN_EE(TractionControl)},
    {0x131, 7, 7, 8, CAN_U, 1, 0, "stage", CAN_EE(BoostControl)},

    {0x132, 0, 7, 1, CAN_U, 1, 0, "", CAN_B(InjectorTestTimeExceeded)},
    {0x132, 0, 6, 1, CAN_U, 1, 0, "", CAN_B(KnockSensorFault)},
    {0x132, 0, 5, 1, CAN_U, 1, 0, "", CAN_B(Knock_Control_Active)},
    {0x132, 0, 4, 1, CAN_U, 1, 0, "", CAN_B(MAFRangeHigh)},
    {0x132, 0, 3, 1, CAN_U, 1, 0, "", CAN_B(MAFRangeLow)},
    {0x132, 0, 2, 1, CAN_U, 1, 0, "", CAN_B(MAPRangeHigh)},
    {0x132, 0, 1, 1, CAN_U, 1, 0, "", CAN_B(MAPRangeLow)},
    {0x132, 0, 0, 1, CAN_U, 1, 0, "", CAN_B(MAPTimeRangeHigh)},
    {0x132, 1, 7, 1, CAN_U, 1, 0, "", CAN_B(MAPTimeRangeLow)},
    {0x132, 1, 6, 1, CAN_U, 1, 0, "", CAN_B(MAP_IR_HI)},
    {0x132, 1, 5, 1, CAN_U, 1, 0, "", CAN_B(MAP_IR_LO)},
    {0x132, 1, 4, 1, CAN_U, 1, 0, "", CAN_B(MAP_STICKING)},
    {0x132, 1, 3, 1, CAN_U, 1, 0, "", CAN_B(Maf_VoltsRangeHigh)},
    {0x132, 1, 2, 1, CAN_U, 1, 0, "", CAN_B(Maf_VoltsRangeLow)},
    {0x132, 1, 1, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle1Pressure_LimitExceeded)},
    {0x132, 1, 0, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle2Pressure_LimitExceeded)},
    {0x132, 2, 7, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle3Pressure_LimitExceeded)},
    {0x132, 2, 6, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle4Pressure_LimitExceeded)},
    {0x132, 2, 5, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure1RangeHigh)},
    {0x132, 2, 4, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure1RangeLow)},
    {0x132, 2, 3, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure2RangeHigh)},
    {0x132, 2, 2, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure2RangeLow)},
    {0x132, 2, 1, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure3RangeHigh)},
    {0x132, 2, 0, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure3RangeLow)},
    {0x132, 3, 7, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure4RangeHigh)},
    {0x132, 3, 6, 1, CAN_U, 1, 0, "", CAN_B(N2O_Bottle_Pressure4RangeLow)},
    {0x132, 3, 5, 1, CAN_U, 1, 0, "", CAN_B(NitrousArmed)},
    {0x132, 3, 4, 1, CAN_U, 1, 0, "", CAN_B(NitrousTriggered)},
    {0x132, 3, 3, 1, CAN_U, 1, 0, "", CAN_B(O2FailedLeanA)},
    {0x132, 3, 2, 1, CAN_U, 1, 0, "", CAN_B(O2FailedLeanB)},
    {0x132, 3, 1, 1, CAN_U, 1, 0, "", CAN_B(O2FailedRichA)},
    {0x132, 3, 0, 1, CAN_U, 1, 0, "", CAN_B(O2FailedRichB)},
    {0x132, 4, 7, 1, CAN_U, 1, 0, "", CAN_B(O2_A_Target_Variance_EQ_Exceeded)},
    {0x132, 4, 6, 1, CAN_U, 1, 0, "", CAN_B(O2_B_Target_Variance_EQ_Exceeded)},
    {0x132, 4, 5, 1, CAN_U, 1, 0, "", CAN_B(O2_Lean_Limit_Exceeded)},
    {0x132, 4, 4, 1, CAN_U, 1, 0, "", CAN_B(OilPressureRangeHigh)},
    {0x132, 4, 3, 1, CAN_U, 1, 0, "", CAN_B(OilPressureRangeLow)},
    {0x132, 4, 2, 1, CAN_U, 1, 0, "", CAN_B(OilTempRangeHigh)},
    {0x132, 4, 1, 1, CAN_U, 1, 0, "", CAN_B(OilTempRangeLow)},
    {0x132, 4, 0, 1, CAN_U, 1, 0, "", CAN_B(Oil_Pressure_Low)},
    {0x132, 5, 7, 1, CAN_U, 1, 0, "", CAN_B(OverRevLimitAction)},
    {0x132, 5, 6, 1, CAN_U, 1, 0, "", CAN_B(PressureRatio_PowerLimit_Exceeded)},
    {0x132, 5, 5, 1, CAN_U, 1, 0, "", CAN_B(Primary_FuelPressureRangeHigh)},
    {0x132, 5, 4, 1, CAN_U, 1, 0, "", CAN_B(Primary_FuelPressureRangeLow)},
    {0x132, 5, 3, 1, CAN_U, 1, 0, "", CAN_B(Primary_FuelPressure_Variance)},
    {0x132, 5, 2, 1, CAN_U, 1, 0, "", CAN_B(Primary_Injector_DutyLimit_Exceeded)},
    {0x132, 5, 1, 1, CAN_U, 1, 0, "", CAN_B(Radiator_PressureRangeHigh)},
    {0x132, 5, 0, 1, CAN_U, 1, 0, "", CAN_B(Radiator_PressureRangeLow)},
    {0x132, 6, 7, 1, CAN_U, 1, 0, "", CAN_B(Radiator_Pressure_Limit_Exceeded)},
    {0x132, 6, 6, 1, CAN_U, 1, 0, "", CAN_B(Rolling_Limiter_Active)},
    {0x132, 6, 5, 1, CAN_U, 1, 0, "", CAN_B(Secondary_FuelPressureRangeHigh)},
    {0x132, 6, 4, 1, CAN_U, 1, 0, "", CAN_B(Secondary_FuelPressureRangeLow)},
    {0x132, 6, 3, 1, CAN_U, 1, 0, "", CAN_B(Secondary_FuelPressure_Variance)},
    {0x132, 6, 2, 1, CAN_U, 1, 0, "", CAN_B(Secondary_Injector_DutyLimit_Exceeded)},
    {0x132, 6, 1, 1, CAN_U, 1, 0, "", CAN_B(SensVoltRangeHigh)},
    {0x132, 6, 0, 1, CAN_U, 1, 0, "", CAN_B(SensVoltRangeLow)},
    {0x132, 7, 7, 1, CAN_U, 1, 0, "", CAN_B(StrainGaugeCut)},
    {0x132, 7, 6, 1, CAN_U, 1, 0, "", CAN_B(SysVoltRangeHigh)},
    {0x132, 7, 5, 1, CAN_U, 1, 0, "", CAN_B(SysVoltRangeLow)},
    {0x132, 7, 4, 1, CAN_U, 1, 0, "", CAN_B(TPS1AdaptHiMax)},
    {0x132, 7, 3, 1, CAN_U, 1, 0, "", CAN_B(TPS1AdaptHiMin)},
    {0x132, 7, 2, 1, CAN_U, 1, 0, "", CAN_B(TPS1AdaptLoMax)},
    {0x132, 7, 1, 1, CAN_U, 1, 0, "", CAN_B(TPS1AdaptLoMin)},
    {0x132, 7, 0, 1, CAN_U, 1, 0, "", CAN_B(TPS1RangeHigh)},

    {0x133, 0, 7, 1, CAN_U, 1, 0, "", CAN_B(TPS1RangeLow)},
    {0x133, 0, 6, 1, CAN_U, 1, 0, "", CAN_B(TPS2AdaptHiMax)},
    {0x133, 0, 5, 1, CAN_U, 1, 0, "", CAN_B(TPS2AdaptHiMin)},
    {0x133, 0, 4, 1, CAN_U, 1, 0, "", CAN_B(TPS2AdaptLoMax)},
    {0x133, 0, 3, 1, CAN_U, 1, 0, "", CAN_B(TPS2AdaptLoMin)},
    {0x133, 0, 2, 1, CAN_U, 1, 0, "", CAN_B(TPS2RangeHigh)},
    {0x133, 0, 1, 1, CAN_U, 1, 0, "", CAN_B(TPS2RangeLow)},
    {0x133, 0, 0, 1, CAN_U, 1, 0, "", CAN_B(TTC_RangeHigh)},
    {0x133, 1, 7, 1, CAN_U, 1, 0, "", CAN_B(TTC_RangeLow)},
    {0x133, 1, 6, 1, CAN_U, 1, 0, "", CAN_B(TractionControl_Switch)},
    {0x133, 1, 5, 1, CAN_U, 1, 0, "", CAN_B(TransTempRangeHigh)},
    {0x133, 1, 4, 1, CAN_U, 1, 0, "", CAN_B(TransTempRangeLow)},
    {0x133, 1, 3, 1, CAN_U, 1, 0, "", CAN_B(Trans_Pump_PressureRangeHigh)},
    {0x133, 1, 2, 1, CAN_U, 1, 0, "", CAN_B(Trans_Pump_PressureRangeLow)},
    {0x133, 1, 1, 1, CAN_U, 1, 0, "", CAN_B(Turbo_Speed1_Limit_Exceeded)},
    {0x133, 1, 0, 1, CAN_U, 1, 0, "", CAN_B(Turbo_Speed2_Limit_Exceeded)},
    {0x133, 2, 7, 1, CAN_U, 1, 0, "", CAN_B(UEGO1_RangeHigh)},
    {0x133, 2, 6, 1, CAN_U, 1, 0, "", CAN_B(UEGO1_RangeLow)},
    {0x133, 2, 5, 1, CAN_U, 1, 0, "", CAN_B(UEGO1_UR_RangeHigh)},
    {0x133, 2, 4, 1, CAN_U, 1, 0, "", CAN_B(UEGO1_UR_RangeLow)},
    {0x133, 2, 3, 1, CAN_U, 1, 0, "", CAN_B(UEGO2_RangeHigh)},
    {0x133, 2, 2, 1, CAN_U, 1, 0, "", CAN_B(UEGO2_RangeLow)},
    {0x133, 2, 1, 1, CAN_U, 1, 0, "", CAN_B(UEGO2_UR_RangeHigh)},
    {0x133, 2, 0, 1, CAN_U, 1, 0, "", CAN_B(UEGO2_UR_RangeLow)},
    {0x133, 3, 7, 1, CAN_U, 1, 0, "", CAN_B(VVT1NoRegionFound)},
    {0x133, 3, 6, 1, CAN_U, 1, 0, "", CAN_B(VVT2NoRegionFound)},
    {0x133, 3, 5, 1, CAN_U, 1, 0, "", CAN_B(Valet_Mode)},
    {0x133, 3, 4, 1, CAN_U, 1, 0, "", CAN_B(Valet_Mode2)},
    {0x133, 3, 3, 1, CAN_U, 1, 0, "", CAN_B(Valet_Speed_Limit_Exceeded)},
    {0x133, 3, 2, 1, CAN_U, 1, 0, "", CAN_B(Vehicle_Speed_Limit_Exceeded)},
    {0x133, 3, 1, 1, CAN_U, 1, 0, "", CAN_B(WasteGatePressureRangeHigh)},
    {0x133, 3, 0, 1, CAN_U, 1, 0, "", CAN_B(WasteGatePressureRangeLow)},
    {0x133, 4, 7, 1, CAN_U, 1, 0, "", CAN_B(Y_AxisAccel_Exceeded)},
    {0x133, 4, 6, 1, CAN_U, 1, 0, "", CAN_B(Y_AxisLift_Exceeded)},
    {0x133, 4, 5, 1, CAN_U, 1, 0, "", CAN_B(CnkCamPhaseFault)},
    {0x133, 4, 4, 1, CAN_U, 1, 0, "", CAN_B(EngineBayTempRangeHigh)},
    {0x133, 4, 3, 1, CAN_U, 1, 0, "", CAN_B(EngineBayTempRangeLow)},
    {0x133, 4, 2, 1, CAN_U, 1, 0, "", CAN_B(AC_PressureRangeHigh)},
    {0x133, 4, 1, 1, CAN_U, 1, 0, "", CAN_B(AC_PressureRangeLow)},
    {0x133, 4, 0, 1, CAN_U, 1, 0, "", CAN_B(Baro_PressureRangeHigh)},
    {0x133, 7, 4, 1, CAN_U, 1, 0, "", CAN_B(Inlet_PressureRangeHigh)},
    {0x133, 7, 3, 1, CAN_U, 1, 0, "", CAN_B(Inlet_PressureRangeLow)},
    {0x133, 7, 2, 1, CAN_U, 1, 0, "", CAN_B(MSTRangeHigh)},
    {0x133, 7, 1, 1, CAN_U, 1, 0, "", CAN_B(MSTRangeLow)},
    {0x133, 7, 0, 1, CAN_U, 1, 0, "", CAN_B(TransmissionTempFault)},
    {0x133, 6, 4, 1, CAN_U, 1, 0, "", CAN_B(EGT_HighTemp_Exceeded)},
    {0x133, 5, 7, 1, CAN_U, 1, 0, "", CAN_B(Baro_PressureRangeLow)},
    {0x133, 5, 6, 1, CAN_U, 1, 0, "", CAN_B(CAN_Wideband2_Open)},
    {0x133, 5, 4, 1, CAN_U, 1, 0, "", CAN_B(EGT1_Variance_Exceeded)},
    {0x133, 5, 3, 1, CAN_U, 1, 0, "", CAN_B(EGT2_Variance_Exceeded)},
    {0x133, 5, 2, 1, CAN_U, 1, 0, "", CAN_B(EGT3_Variance_Exceeded)},
    {0x133, 5, 1, 1, CAN_U, 1, 0, "", CAN_B(EGT4_Variance_Exceeded)},
    {0x133, 5, 0, 1, CAN_U, 1, 0, "", CAN_B(EGT5_Variance_Exceeded)},
    {0x133, 6, 7, 1, CAN_U, 1, 0, "", CAN_B(EGT6_Variance_Exceeded)},
    {0x133, 6, 6, 1, CAN_U, 1, 0, "", CAN_B(EGT7_Variance_Exceeded)},
    {0x133, 6, 5, 1, CAN_U, 1, 0, "", CAN_B(EGT8_Variance_Exceeded)},
    {0x133, 6, 3, 1, CAN_U, 1, 0, "", CAN_B(FuelTank_PressureRangeHigh)},
    {0x133, 6, 2, 1, CAN_U, 1, 0, "", CAN_B(FuelTank_PressureRangeLow)},
    {0x133, 6, 1, 1, CAN_U, 1, 0, "", CAN_B(Fuel_Level1RangeHigh)},
    {0x133, 6, 0, 1, CAN_U, 1, 0, "", CAN_B(Fuel_Level1RangeLow)},
    {0x133, 7, 7, 1, CAN_U, 1, 0, "", CAN_B(Fuel_Level2RangeHigh)},
    {0x133, 7, 6, 1, CAN_U, 1, 0, "", CAN_B(Fuel_Level2RangeLow)},
    {0x133, 7, 5, 1, CAN_U, 1, 0, "", CAN_B(Fuel_Tank_Purge_Active)},

    {0x140, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int1)},
    {0x140, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int2)},

    {0x141, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int3)},
    {0x141, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int4)},

    {0x142, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int5)},
    {0x142, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int6)},

    {0x143, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int7)},
    {0x143, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Knk_Win_Int8)},

    {0x144, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int1)},
    {0x144, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int2)},

    {0x145, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int3)},
    {0x145, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int4)},

    {0x146, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int5)},
    {0x146, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int6)},

    {0x147, 0, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int7)},
    {0x147, 4, 7, 32, CAN_U, 1, 0, "count", CAN_B(Ref_Win_Int8)},

    {0x148, 0, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT1)},
    {0x148, 2, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT2)},
    {0x148, 4, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT3)},
    {0x148, 6, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT4)},

    {0x149, 0, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT5)},
    {0x149, 2, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT6)},
    {0x149, 4, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT7)},
    {0x149, 6, 7, 16, CAN_U, 10, 0, "C", CAN_B(EGT8)},

    {0x161, 0, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(InletPressure)},
    {0x161, 2, 7, 16, CAN_U, 1, 0, "RPM", CAN_B(Launch_ControlBeginRPM)},
    {0x161, 4, 7, 16, CAN_U, 1, 0, "ft-lb", CAN_B(EngineTorque)},
    {0x161, 6, 7, 16, CAN_U, 1, 0, "", CAN_IN(Speedo)},

    {0x162, 0, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Primary_Fuel_Pressure)},
    {0x162, 2, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Secondary_Fuel_Pressure)},
    {0x162, 4, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(ExhaustBP)},
    {0x162, 6, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(ExhaustBP2)},

    {0x163, 1, 7, 8, CAN_U, 1, 0, "degrees", CAN_B(Launch_ApproachRTD)},
    {0x163, 2, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Oil_Pressure)},
    {0x163, 4, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(Radiator_Pressure)},
    {0x163, 6, 7, 16, CAN_U, 1, 0, "kPa", CAN_B(WasteGatePressure)},

    {0x164, 0, 7, 8, CAN_U, 1, 0, "%", CAN_B(Fuel_Level2)},
    {0x164, 1, 7, 8, CAN_U, 1, 0, "%", CAN_B(Fuel_Level1)},
    {0x164, 2, 7, 16, CAN_S, 1, 0, "C", CAN_B(Manifold_Surface_Temp)},
    {0x164, 4, 7, 16, CAN_U, 100, 0, "EQ", CAN_B(Final_O2_Bank2)},
    {0x164, 6, 7, 16, CAN_U, 100, 0, "EQ", CAN_B(Final_O2_Bank1)},
};

#undef CAN_B
#undef CAN_IN
#undef CAN_EE
#undef CAN_TEXT
#undef CAN_NONE

inline constexpr size_t CAN_FRAME_COUNT = std::size(CAN_FRAMES);
inline constexpr size_t CAN_SIGNAL_COUNT = std::size(CAN_SIGNALS);

// The 8 data bytes as one word in the frame's order: D0 in the top byte for a
// big-endian frame, in the bottom byte for a little-endian one. A field is then
// (word >> CANFieldShift) & CANFieldMask.
constexpr uint64_t CANFrameWord(CAN_ORDER_T order, const uint8_T* data)
{
    uint64_t word = 0;
    for (int i = 0; i < 8; i++) word |= (uint64_t)data[i] << (order == CAN_BIG_ENDIAN ? 56 - 8 * i : 8 * i);
    return word;
}
// The inverse: the word back into the 8 data bytes.
constexpr void CANFrameBytes(CAN_ORDER_T order, uint64_t word, uint8_T* data)
{
    for (int i = 0; i < 8; i++) data[i] = (uint8_T)(word >> (order == CAN_BIG_ENDIAN ? 56 - 8 * i : 8 * i));
}
constexpr int CANFieldShift(CAN_ORDER_T order, const CAN_SIGNAL_T& s)
{
    return order == CAN_BIG_ENDIAN ? (7 - s.byte) * 8 + s.bit - (s.width - 1) : s.byte * 8 + s.bit;
}
constexpr uint64_t CANFieldMask(const CAN_SIGNAL_T& s)
{
    return s.width >= 64 ? ~0ull : (1ull << s.width) - 1;
}

// Where a frame is in CAN_FRAMES, or CAN_FRAME_COUNT when it is not there.
constexpr size_t CANFrameIndex(uint32_T id)
{
    for (size_t i = 0; i < CAN_FRAME_COUNT; i++)
        if (CAN_FRAMES[i].id == id) return i;
    return CAN_FRAME_COUNT;
}

// The row whose target bears the name ("RPM", "EGT1", "SerialNumber"), CAN_SIGNAL_COUNT
// when there is none.
constexpr bool CANSameName(const char* a, const char* b)
{
    while (*a && *a == *b) a++, b++;
    return *a == *b;
}
constexpr size_t CANSignalIndex(const char* name)
{
    for (size_t i = 0; i < CAN_SIGNAL_COUNT; i++)
        if (CANSameName(CAN_SIGNALS[i].target.name, name)) return i;
    return CAN_SIGNAL_COUNT;
}

// The rows of each frame: they stand together, frames in the order of CAN_FRAMES.
struct CAN_ROWS_T {
    uint16_T first;
    uint16_T count;
};
inline constexpr auto CAN_FRAME_ROWS = [] {
    std::array<CAN_ROWS_T, CAN_FRAME_COUNT> rows{};
    for (size_t i = 0; i < CAN_SIGNAL_COUNT; i++) {
        CAN_ROWS_T& r = rows[CANFrameIndex(CAN_SIGNALS[i].frame)];
        if (r.count == 0) r.first = (uint16_T)i;
        r.count++;
    }
    return rows;
}();

// ---- The wire layout holds together ------------------------------------------------

static_assert([] {
    for (size_t i = 0; i < CAN_FRAME_COUNT; i++)
        if (CANFrameIndex(CAN_FRAMES[i].id) != i || CAN_FRAMES[i].id > 0x7FF) return false;
    return true;
}(), "frame ids are standard and occur once");

static_assert([] {
    size_t frame = 0;
    for (const CAN_SIGNAL_T& s : CAN_SIGNALS) {
        const size_t f = CANFrameIndex(s.frame);
        if (f == CAN_FRAME_COUNT || f < frame) return false;
        frame = f;
    }
    for (const CAN_ROWS_T& r : CAN_FRAME_ROWS)
        if (r.count == 0) return false;
    return true;
}(), "every row belongs to a frame of the table, rows grouped in frame order, no frame empty");

static_assert([] {
    for (const CAN_SIGNAL_T& s : CAN_SIGNALS) {
        if (s.byte > 7 || s.bit > 7 || s.width == 0 || s.width > 64) return false;
        const int shift = CANFieldShift(CAN_FRAMES[CANFrameIndex(s.frame)].order, s);
        if (shift < 0 || shift + s.width > 64) return false;
    }
    return true;
}(), "every field lies inside its 8 bytes");

static_assert([] {
    for (size_t f = 0; f < CAN_FRAME_COUNT; f++) {
        uint64_t used = 0;
        for (size_t i = CAN_FRAME_ROWS[f].first; i < CAN_FRAME_ROWS[f].first + CAN_FRAME_ROWS[f].count; i++) {
            const CAN_SIGNAL_T& s = CAN_SIGNALS[i];
            const uint64_t bits = CANFieldMask(s) << CANFieldShift(CAN_FRAMES[f].order, s);
            if (used & bits) return false;
            used |= bits;
        }
    }
    return true;
}(), "no two fields of a frame share a bit");

static_assert([] {
    for (const CAN_SIGNAL_T& s : CAN_SIGNALS) {
        if (s.divisor == 0) return false;
        const CAN_TARGET_T& t = s.target;
        const bool integer = t.kind == CAN_KIND_U8 || t.kind == CAN_KIND_U16 || t.kind == CAN_KIND_U32;
        if (integer || t.kind == CAN_KIND_TEXT || t.kind == CAN_KIND_NONE) {
            if (s.isSigned || s.divisor != 1 || s.offset != 0) return false;
        }
        if (t.kind == CAN_KIND_U8 && s.width > 8) return false;
        if (t.kind == CAN_KIND_U16 && s.width > 16) return false;
        if (t.kind == CAN_KIND_U32 && s.width > 32) return false;
        if (t.kind == CAN_KIND_TEXT && (s.bit != 7 || s.width % 8 != 0)) return false;
        if ((t.record == CAN_REC_EE) != (CAN_FRAMES[CANFrameIndex(s.frame)].dir == CAN_TX)) return false;
        if (t.record == CAN_REC_EE && t.kind != CAN_KIND_U8) return false;
    }
    return true;
}(), "integer and text fields are raw; only the sent frame reads the settings, byte by byte");

static_assert([] {
    for (size_t i = 0; i < CAN_SIGNAL_COUNT; i++)
        if (CANSignalIndex(CAN_SIGNALS[i].target.name) != i) return false;
    return true;
}(), "a target name names one row");

// The fault frames carry one flag per row of the fault table.
static_assert(CAN_FRAME_ROWS[CANFrameIndex(0x121)].count + CAN_FRAME_ROWS[CANFrameIndex(0x132)].count +
                  CAN_FRAME_ROWS[CANFrameIndex(0x133)].count ==
              191);

// ---- The other side of the wire ------------------------------------------------------
// Whoever plays the ECU (the simulator, tests) writes its frames through the same rows
// the dash reads them with, so the two sides cannot drift apart.

// The field of row s in the 8 bytes of its frame, as the decoder reads it: the raw bits,
// and the value (two's complement for a signed field, then raw / divisor + offset).
uint64_t CANSignalRaw(const CAN_SIGNAL_T& s, const uint8_T* data);
real_T CANSignalValue(const CAN_SIGNAL_T& s, const uint8_T* data);
// Writes value into the field of row s and leaves the other bits of the 8 bytes alone:
// raw = round((value - offset) * divisor), limited to what the field holds; a value that
// is not a number writes 0.
void CANEncodeSignal(const CAN_SIGNAL_T& s, real_T value, uint8_T* data);
// A text field: the characters of text cut to the field's bytes, the rest zeros.
void CANEncodeText(const CAN_SIGNAL_T& s, const char* text, uint8_T* data);
// The 8 bytes of the settings frame 0x131 that the dash sends for this record.
void CANSettingsFrameData(const EEVariables_T& settings, uint8_T* data);

// ---- For tests only ------------------------------------------------------------------

// Every received frame's mailbox empty and never received, as at power-up.
void CANSignalsTestEmptyMailboxes(void);
