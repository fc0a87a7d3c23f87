#include "can_signals.h"

#include <cstdio>
#include <cstring>

#include "can_ports.h"
#include "can_rx.h"

CAN_INPUTS_T CANInputs;

namespace {

char m_firmwareVersion[15];
char m_firmwareFirst[8];
char m_firmwareSecond[8];
char m_serialNumber[9];
char m_partNumber[9];

// The age of each frame at its fetch in this pass.
auto m_ages = [] {
    std::array<uint16_T, CAN_FRAME_COUNT> ages{};
    ages.fill(CAN_AGE_NEVER);
    return ages;
}();

constexpr uint32_T CAN_ID_SETTINGS = 0x131;

}  // namespace

S_String CANText_FirmwareVersion = {sizeof(m_firmwareVersion), m_firmwareVersion};
S_String CANText_FirmwareFirst = {sizeof(m_firmwareFirst), m_firmwareFirst};
S_String CANText_FirmwareSecond = {sizeof(m_firmwareSecond), m_firmwareSecond};
S_String CANText_SerialNumber = {sizeof(m_serialNumber), m_serialNumber};
S_String CANText_PartNumber = {sizeof(m_partNumber), m_partNumber};

static uint8_T* _record(CAN_RECORD_T record)
{
    switch (record) {
    case CAN_REC_B:
        return reinterpret_cast<uint8_T*>(&Velnor_Dorvik_V6c_B);
    case CAN_REC_INPUTS:
        return reinterpret_cast<uint8_T*>(&CANInputs);
    case CAN_REC_EE:
        return reinterpret_cast<uint8_T*>(&EEVariables_RAMShadow);
    default:
        return nullptr;
    }
}

static void _text(const CAN_SIGNAL_T& s, const uint8_T* data)
{
    const uint8_T* from = data + s.byte;
    const uint32_T length = s.width / 8;
    switch (s.target.offset) {
    case CAN_TEXT_FIRMWARE:
        // D0 says which half this frame carries: 0 the first, anything else the second.
        Velnor_Dorvik_V6c_WriteStringHigh(1, from, data[0] == 0 ? &CANText_FirmwareFirst : &CANText_FirmwareSecond);
        snprintf(CANText_FirmwareVersion.string, CANText_FirmwareVersion.size, "%s%s", CANText_FirmwareFirst.string,
                 CANText_FirmwareSecond.string);
        break;
    case CAN_TEXT_SERIAL:
    case CAN_TEXT_PART: {
        S_String* text = s.target.offset == CAN_TEXT_SERIAL ? &CANText_SerialNumber : &CANText_PartNumber;
        const uint32_T n = length < text->size - 1 ? length : text->size - 1;
        memcpy(text->string, from, n);
        text->string[n] = '\0';
        break;
    }
    default:
        break;
    }
}

// The field's value in the unit of the wire.
static real_T _physical(const CAN_SIGNAL_T& s, uint64_t raw)
{
    real_T value = (real_T)raw;
    if (s.isSigned && (raw >> (s.width - 1)) & 1) value = (real_T)((int64_t)raw - ((int64_t)1 << s.width));
    return value / s.divisor + s.offset;
}

// Doubles take the value, the integer fields (raw by the table's rules) the raw field.
static void _store(const CAN_TARGET_T& t, real_T value, uint64_t raw)
{
    uint8_T* field = _record(t.record);
    if (!field) return;
    field += t.offset;
    switch (t.kind) {
    case CAN_KIND_F64:
        memcpy(field, &value, sizeof(value));
        break;
    case CAN_KIND_U8: {
        const uint8_T v = (uint8_T)raw;
        memcpy(field, &v, sizeof(v));
        break;
    }
    case CAN_KIND_U16: {
        const uint16_T v = (uint16_T)raw;
        memcpy(field, &v, sizeof(v));
        break;
    }
    case CAN_KIND_U32: {
        const uint32_T v = (uint32_T)raw;
        memcpy(field, &v, sizeof(v));
        break;
    }
    default:
        break;
    }
}

static bool _gateOpen(CAN_GATE_T gate)
{
    // The throttle copy of the pass before: the foreground task refreshes it later on.
    return gate != CAN_GATE_TPS_ABOVE_70 || RAMVariables.TPS > 70;
}

uint16_T CANDecodeFrame(uint32_T id)
{
    const size_t f = CANFrameIndex(id);
    const CAN_GET_T get = CANGetFunction(id);
    if (f == CAN_FRAME_COUNT || !get) return CAN_AGE_NEVER;
    const CAN_FRAME_T& frame = CAN_FRAMES[f];

    uint8_T data[8] = {};
    uint16_T age = CAN_AGE_NEVER;
    get(&age, nullptr, nullptr, data, sizeof(data));
    m_ages[f] = age;

    const uint64_t word = CANFrameWord(frame.order, data);
    const bool open = _gateOpen(frame.gate);
    const CAN_ROWS_T rows = CAN_FRAME_ROWS[f];
    for (size_t i = rows.first; i < rows.first + rows.count; i++) {
        const CAN_SIGNAL_T& s = CAN_SIGNALS[i];
        if (s.target.kind == CAN_KIND_TEXT) {
            _text(s, data);
            continue;
        }
        if (!open) {
            _store(s.target, 0.0, 0);
            continue;
        }
        const uint64_t raw = (word >> CANFieldShift(frame.order, s)) & CANFieldMask(s);
        _store(s.target, _physical(s, raw), raw);
    }
    return age;
}

uint16_T CANFrameAge(uint32_T id)
{
    const size_t f = CANFrameIndex(id);
    return f < CAN_FRAME_COUNT ? m_ages[f] : CAN_AGE_NEVER;
}

void CANSettingsFrameUpdate(void)
{
    const size_t f = CANFrameIndex(CAN_ID_SETTINGS);
    const CAN_FRAME_T& frame = CAN_FRAMES[f];
    const uint8_T* settings = _record(CAN_REC_EE);
    uint64_t word = 0;
    const CAN_ROWS_T rows = CAN_FRAME_ROWS[f];
    for (size_t i = rows.first; i < rows.first + rows.count; i++) {
        const CAN_SIGNAL_T& s = CAN_SIGNALS[i];
        // The switches are single bits: a stored value above the field's top counts as the top.
        const uint64_t value = settings[s.target.offset];
        const uint64_t raw = value > CANFieldMask(s) ? CANFieldMask(s) : value;
        word |= raw << CANFieldShift(frame.order, s);
    }
    uint8_T data[8];
    for (int i = 0; i < 8; i++) data[i] = (uint8_T)(word >> (frame.order == CAN_BIG_ENDIAN ? 56 - 8 * i : 8 * i));
    can_update_97090__0006(CAN_ID_SETTINGS, 0, sizeof(data), data);
}
