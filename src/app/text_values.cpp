#include "text_values.h"

#include <cstring>
#include <initializer_list>

namespace {

// Big enough for any value a frame can carry in any unit, with two decimals.
constexpr uint32_T VALUE_TEXT_SIZE = 16;
constexpr uint32_T ON_OFF_TEXT_SIZE = 4;
// "WG PRESS (Setpt = " and a whole value text and ")": never cut.
constexpr uint32_T LABEL_TEXT_SIZE = sizeof("WG PRESS (Setpt = )") + VALUE_TEXT_SIZE;

char m_valueChars[TEXT_VALUE_COUNT][VALUE_TEXT_SIZE];
char m_onOffChars[ON_OFF_COUNT][ON_OFF_TEXT_SIZE];

template <size_t N, size_t SIZE>
constexpr std::array<S_String, N> _records(char (&chars)[N][SIZE])
{
    std::array<S_String, N> records{};
    for (size_t i = 0; i < N; i++) records[i] = {SIZE, chars[i]};
    return records;
}
constinit std::array<S_String, TEXT_VALUE_COUNT> m_values = _records(m_valueChars);
constinit std::array<S_String, ON_OFF_COUNT> m_onOff = _records(m_onOffChars);

// Texts of their own: the composed labels and the constant words. A record of a constant
// text is never written.
#define TEXT_RECORD(name, init)      \
    char name##_chars[] = init;      \
    S_String name = {sizeof(name##_chars), name##_chars}
#define LABEL_RECORD(name)                   \
    char name##_chars[LABEL_TEXT_SIZE] = ""; \
    S_String name = {sizeof(name##_chars), name##_chars}

LABEL_RECORD(m_labelWasteGate);
LABEL_RECORD(m_labelMap);
LABEL_RECORD(m_labelAfr2);
LABEL_RECORD(m_labelAfr1);

TEXT_RECORD(m_wordWasteGate, "WG PRESS");
TEXT_RECORD(m_wordMap, "MAP");
TEXT_RECORD(m_wordAfr1, "AFR1");
TEXT_RECORD(m_wordAfr2, "AFR2");
TEXT_RECORD(m_wordSetpt, "Setpt");
TEXT_RECORD(m_wordTarget, "Target");
TEXT_RECORD(m_wordFaults, "FAULTS");
TEXT_RECORD(m_wordNoFaults, "NO FAULTS");
TEXT_RECORD(m_wordNone, "");
TEXT_RECORD(m_wordRpm, "RPM");

TEXT_RECORD(m_unitPsi, "PSI");
TEXT_RECORD(m_unitKpa, "kPa");
TEXT_RECORD(m_unitBar, "bar");
TEXT_RECORD(m_unitMph, "MPH");
TEXT_RECORD(m_unitKmh, "km/h");
TEXT_RECORD(m_unitKnots, "Knts");
TEXT_RECORD(m_unitCelsius, "*C");
TEXT_RECORD(m_unitFahrenheit, "*F");
TEXT_RECORD(m_unitAfr, "AFR");
TEXT_RECORD(m_unitLambda, "LAMBDA");
TEXT_RECORD(m_unitDeseq, "DESEQ");

#undef TEXT_RECORD
#undef LABEL_RECORD

#define B_FIELD(field) (uint16_T)offsetof(BlockIO_Velnor_Dorvik_V6c, field)

// Text pointers of B that always point at the same record.
struct TEXT_POINTER_T {
    uint16_T field;
    S_String* record;
};
const TEXT_POINTER_T m_constantPointers[] = {
    {B_FIELD(quorin_string_printf), &m_labelWasteGate},
    {B_FIELD(quorin_string_printf_j), &m_labelMap},
    {B_FIELD(quorin_string_printf_f), &m_labelAfr2},
    {B_FIELD(quorin_string_printf_m), &m_labelAfr1},
    {B_FIELD(g_WasteGatePressure), &m_wordWasteGate},
    {B_FIELD(g_MAP), &m_wordMap},
    {B_FIELD(g_AFR1), &m_wordAfr1},
    {B_FIELD(g_AFR2), &m_wordAfr2},
    {B_FIELD(g_Setpt), &m_wordSetpt},
    {B_FIELD(g_Target), &m_wordTarget},
    {B_FIELD(s_FAULTS), &m_wordFaults},
    {B_FIELD(s_NOFAULTS), &m_wordNoFaults},
    {B_FIELD(u_NONE), &m_wordNone},
    {B_FIELD(u_RPM), &m_wordRpm},
};

// The unit word of each unit setting, by its value from 1.
struct UNIT_WORDS_T {
    uint16_T field;
    UNIT_CLASS_T unit;
    S_String* words[3];
};
const UNIT_WORDS_T m_unitWords[] = {
    {B_FIELD(PressureUnits), UNIT_PLAIN_PRESSURE, {&m_unitPsi, &m_unitKpa, &m_unitBar}},
    {B_FIELD(SpeedUnits), UNIT_SPEED, {&m_unitMph, &m_unitKmh, &m_unitKnots}},
    {B_FIELD(TempUnits), UNIT_TEMPERATURE, {&m_unitCelsius, &m_unitFahrenheit}},
    {B_FIELD(FuelUnits), UNIT_AIR_FUEL, {&m_unitAfr, &m_unitLambda, &m_unitDeseq}},
};

#undef B_FIELD

// Each row's place in CAN_FRAMES, for its age.
constexpr auto m_valueFrames = [] {
    std::array<uint8_T, TEXT_VALUE_COUNT> frames{};
    for (size_t i = 0; i < TEXT_VALUE_COUNT; i++) frames[i] = (uint8_T)CANFrameIndex(TEXT_VALUES[i].frame);
    return frames;
}();
constexpr auto m_onOffFrames = [] {
    std::array<uint8_T, ON_OFF_COUNT> frames{};
    for (size_t i = 0; i < ON_OFF_COUNT; i++) frames[i] = (uint8_T)CANFrameIndex(ON_OFF_VALUES[i].frame);
    return frames;
}();

constexpr size_t _row(uint16_T text)
{
    for (size_t i = 0; i < TEXT_VALUE_COUNT; i++)
        if (TEXT_VALUES[i].text == text) return i;
    return TEXT_VALUE_COUNT;
}
constexpr size_t m_setpointRow = _row(offsetof(BlockIO_Velnor_Dorvik_V6c, ValueString));
constexpr size_t m_targetRow = _row(offsetof(BlockIO_Velnor_Dorvik_V6c, ValueString_j));
static_assert(m_setpointRow < TEXT_VALUE_COUNT && m_targetRow < TEXT_VALUE_COUNT);

static_assert([] {
    for (uint8_T f : m_valueFrames)
        if (f >= CAN_FRAME_COUNT || CAN_FRAMES[f].dir != CAN_RX) return false;
    for (uint8_T f : m_onOffFrames)
        if (f >= CAN_FRAME_COUNT || CAN_FRAMES[f].dir != CAN_RX) return false;
    return true;
}(), "every text is guarded by a received frame");

static_assert([] {
    for (const TEXT_VALUE_T& v : TEXT_VALUES) {
        const int n = UnitBranches(v.unit);
        for (int b = 0; b < n; b++) {
            // "%*.*f" of a number that a frame can carry stays inside the record.
            if (v.format[b].width == 0 || v.format[b].width >= VALUE_TEXT_SIZE || v.format[b].precision > 3)
                return false;
            if (v.numbers.displayMin != TV_NONE && !(v.scale[b].min < v.scale[b].max)) return false;
        }
        if (v.text == TV_NONE && v.numbers.number == TV_NONE) return false;
        if ((v.numbers.displayMin == TV_NONE) != (v.numbers.displayMax == TV_NONE)) return false;
        if ((v.numbers.displayMin == TV_NONE) != (v.numbers.numDec == TV_NONE)) return false;
    }
    return true;
}(), "formats fit the records, scales run upwards, a row writes a text or a number");

template <typename T>
T _read(const void* record, uint16_T offset)
{
    T value;
    memcpy(&value, static_cast<const uint8_T*>(record) + offset, sizeof(value));
    return value;
}

template <typename T>
void _write(uint16_T offset, T value)
{
    memcpy(reinterpret_cast<uint8_T*>(&Velnor_Dorvik_V6c_B) + offset, &value, sizeof(value));
}

}  // namespace

static real_T _sourceValue(const TV_SOURCE_T& s)
{
    const void* record = nullptr;
    switch (s.record) {
    case TV_SRC_B:
        record = &Velnor_Dorvik_V6c_B;
        break;
    case TV_SRC_RAM:
        record = &RAMVariables;
        break;
    case TV_SRC_INPUTS:
        record = &CANInputs;
        break;
    case TV_SRC_HOLD:
        return SignalHoldValue(s.offset);
    case TV_SRC_FUEL_MEAN:
        return (B.Fuel_Level1 + B.Fuel_Level2) / 2;
    case TV_SRC_ZERO:
        return 0.0;
    }
    switch (s.kind) {
    case TV_F64:
        return _read<real_T>(record, s.offset);
    case TV_F32:
        return _read<real32_T>(record, s.offset);
    case TV_U8:
        return _read<uint8_T>(record, s.offset);
    case TV_U16:
        return _read<uint16_T>(record, s.offset);
    }
    return 0.0;
}

// The branch selected by the class's setting, from 0; -1 when the setting is out of range.
static int _branch(UNIT_CLASS_T unit)
{
    const UNIT_ROW_T& row = UNIT_ROWS[unit];
    if (row.setting == UNIT_NO_SETTING) return 0;
    const uint8_T setting = reinterpret_cast<const uint8_T*>(&EEVariables_RAMShadow)[row.setting];
    return setting >= 1 && setting <= row.branches ? setting - 1 : -1;
}

// Below 0.01 an equivalence ratio counts as 0.01, so that nothing divides by 0.
static real_T _equivalence(real_T e)
{
    return e < 0.01 ? 0.01 : e;
}

static real_T _airFuel(int branch, real_T e)
{
    e = _equivalence(e);
    switch (branch) {
    case 0:
        return B.Primary_StoichSetpoint / e;
    case 1:
        return 1 / e;
    default:
        return e;
    }
}

static real_T _convert(UNIT_CLASS_T unit, int branch, real_T x)
{
    switch (unit) {
    case UNIT_AIR_FUEL:
        return _airFuel(branch, x);
    case UNIT_AIR_FUEL_FROM_AFR:
        // The hold is an air/fuel ratio: as such in AFR, through its equivalence ratio otherwise.
        return branch == 0 ? x : _airFuel(branch, B.Primary_StoichSetpoint / _equivalence(x));
    default: {
        const UNIT_BRANCH_T& k = UNIT_ROWS[unit].branch[branch];
        return (x - k.offset) * k.factor + k.add;
    }
    }
}

const S_String* TextValueRecord(size_t row)
{
    if (row >= TEXT_VALUE_COUNT || TEXT_VALUES[row].text == TV_NONE) return nullptr;
    return &m_values[row];
}

void TextValuesSetPointers(void)
{
    for (size_t i = 0; i < TEXT_VALUE_COUNT; i++)
        if (TEXT_VALUES[i].text != TV_NONE) _write<S_String*>(TEXT_VALUES[i].text, &m_values[i]);
    for (size_t i = 0; i < ON_OFF_COUNT; i++) _write<S_String*>(ON_OFF_VALUES[i].text, &m_onOff[i]);
    for (const TEXT_POINTER_T& p : m_constantPointers) _write<S_String*>(p.field, p.record);
}

static void _numbers(const TEXT_VALUE_T& v, int branch, real_T value)
{
    const TV_NUMBERS_T& n = v.numbers;
    if (n.number != TV_NONE) _write<real_T>(n.number, value);
    if (n.displayMin == TV_NONE) return;
    _write<real_T>(n.displayMin, v.scale[branch].min);
    _write<real_T>(n.displayMax, v.scale[branch].max);
    _write<uint8_T>(n.numDec, v.format[branch].precision);
}

// The pieces one after the other, cut to the record: what snprintf makes of "%s" formats.
static void _join(S_String* out, std::initializer_list<const char*> pieces)
{
    uint32_T n = 0;
    for (const char* piece : pieces)
        for (; *piece && n + 1 < out->size; piece++) out->string[n++] = *piece;
    out->string[n] = '\0';
}

// "%s (%s = %s)" and "%s (%s=%s)" of the same pass's texts: the set point and the target.
static void _labels(void)
{
    const char* setpoint = m_values[m_setpointRow].string;
    const char* target = m_values[m_targetRow].string;
    _join(&m_labelWasteGate, {m_wordWasteGate.string, " (", m_wordSetpt.string, " = ", setpoint, ")"});
    _join(&m_labelMap, {m_wordMap.string, " (", m_wordSetpt.string, " = ", setpoint, ")"});
    _join(&m_labelAfr2, {m_wordAfr2.string, " (", m_wordTarget.string, "=", target, ")"});
    _join(&m_labelAfr1, {m_wordAfr1.string, " (", m_wordTarget.string, "=", target, ")"});
}

void TextValuesUpdate(real_T now, const uint16_T* ages)
{
    for (size_t i = 0; i < TEXT_VALUE_COUNT; i++) {
        const TEXT_VALUE_T& v = TEXT_VALUES[i];
        // Only the selected branch runs: out of range, the text and the numbers stand.
        const int branch = _branch(v.unit);
        if (branch < 0) continue;
        const real_T value = _convert(v.unit, branch, _sourceValue(v.source));
        _numbers(v, branch, value);
        if (v.text == TV_NONE) continue;
        real_T* gate = &DWork.UnitDelay1_DSTATE[TEXT_VALUE_GATE[i] + branch];
        Velnor_Dorvik_V6c_UpdateDisplayValue250ms(Velnor_Dorvik_V6c_RefreshGate(now, gate), ages[m_valueFrames[i]],
                                                  &m_values[i], v.format[branch].width, v.format[branch].precision,
                                                  value);
    }
    _labels();
}

void TextValuesInit(void)
{
    TextValuesSetPointers();
    // Until a unit setting in range has chosen a word, the unit reads empty.
    for (const UNIT_WORDS_T& u : m_unitWords) _write<S_String*>(u.field, &m_wordNone);
}

void TextValuesUnits(void)
{
    for (const UNIT_WORDS_T& u : m_unitWords) {
        const uint8_T setting = reinterpret_cast<const uint8_T*>(&EEVariables_RAMShadow)[UNIT_ROWS[u.unit].setting];
        // A pointer member of the record, so its offset keeps the pointer's alignment.
        void* member = reinterpret_cast<uint8_T*>(&Velnor_Dorvik_V6c_B) + u.field;
        S_String** field = static_cast<S_String**>(member);
        for (int b = 0; b < UNIT_ROWS[u.unit].branches; b++) Velnor_Dorvik_V6c_AF(setting == b + 1, u.words[b], field);
    }
}

void TextValuesOnOff(real_T now, const uint16_T* ages)
{
    for (size_t i = 0; i < ON_OFF_COUNT; i++) {
        real_T* gate = &DWork.UnitDelay1_DSTATE[TEXT_VALUE_GATE[TEXT_VALUE_COUNT + i]];
        Velnor_Dorvik_V6c_UpdateDisplayValue250ms_e(Velnor_Dorvik_V6c_RefreshGate(now, gate), ages[m_onOffFrames[i]],
                                                    _sourceValue(ON_OFF_VALUES[i].source), &m_onOff[i]);
    }
}
