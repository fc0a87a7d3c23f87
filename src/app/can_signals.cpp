#include "can_signals.h"

#include <cmath>
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

void CANSettingsFrameData(const EEVariables_T& settings, uint8_T* data)
{
    memset(data, 0, 8);
    const CAN_ROWS_T rows = CAN_FRAME_ROWS[CANFrameIndex(CAN_ID_SETTINGS)];
    for (size_t i = rows.first; i < rows.first + rows.count; i++) {
        const CAN_SIGNAL_T& s = CAN_SIGNALS[i];
        // The switches are single bits: a stored value above the field's top counts as the top.
        CANEncodeSignal(s, reinterpret_cast<const uint8_T*>(&settings)[s.target.offset], data);
    }
}

void CANSettingsFrameUpdate(void)
{
    uint8_T data[8];
    CANSettingsFrameData(EEVariables_RAMShadow, data);
    can_update_97090__0006(CAN_ID_SETTINGS, 0, sizeof(data), data);
}

uint64_t CANSignalRaw(const CAN_SIGNAL_T& s, const uint8_T* data)
{
    const CAN_ORDER_T order = CAN_FRAMES[CANFrameIndex(s.frame)].order;
    return (CANFrameWord(order, data) >> CANFieldShift(order, s)) & CANFieldMask(s);
}

real_T CANSignalValue(const CAN_SIGNAL_T& s, const uint8_T* data)
{
    return _physical(s, CANSignalRaw(s, data));
}

// The field's raw bits for a value, limited to the field: [0, 2^w - 1] unsigned,
// [-2^(w-1), 2^(w-1) - 1] signed. The limits are compared as doubles, where the top of a
// field wider than 53 bits rounds up; a value at or above that still gets the exact top.
static uint64_t _raw(const CAN_SIGNAL_T& s, real_T value)
{
    const real_T scaled = std::round((value - s.offset) * s.divisor);
    if (std::isnan(scaled)) return 0;
    const uint64_t mask = CANFieldMask(s);
    if (!s.isSigned) {
        if (scaled <= 0) return 0;
        if (scaled >= (real_T)mask) return mask;
        return (uint64_t)scaled;
    }
    const int64_t top = (int64_t)(mask >> 1);
    const int64_t bottom = -top - 1;
    int64_t v;
    if (scaled >= (real_T)top) v = top;
    else if (scaled <= (real_T)bottom) v = bottom;
    else v = (int64_t)scaled;
    return (uint64_t)v & mask;
}

void CANEncodeSignal(const CAN_SIGNAL_T& s, real_T value, uint8_T* data)
{
    const CAN_ORDER_T order = CAN_FRAMES[CANFrameIndex(s.frame)].order;
    const int shift = CANFieldShift(order, s);
    const uint64_t mask = CANFieldMask(s);
    uint64_t word = CANFrameWord(order, data) & ~(mask << shift);
    word |= _raw(s, value) << shift;
    CANFrameBytes(order, word, data);
}

void CANEncodeText(const CAN_SIGNAL_T& s, const char* text, uint8_T* data)
{
    const size_t length = s.width / 8;
    size_t n = 0;
    for (; text && n < length && text[n]; n++) data[s.byte + n] = (uint8_T)text[n];
    for (; n < length; n++) data[s.byte + n] = 0;
}

void CANSignalsTestEmptyMailboxes(void)
{
    for (const CAN_FRAME_T& f : CAN_FRAMES) {
        if (f.dir != CAN_RX) continue;
        CAN_MSG_T m = {};
        m.id = f.id;
        m.msg_length = 8;
        if (f.port == CAN_PORT2) rxTable_285280__0051(CAN_PORT2, &m);
        else rxTable_285279__0022(CAN_PORT1, &m);
    }
    CANSetNeverReceived(CAN_PORT1);
    CANSetNeverReceived(CAN_PORT2);
}
