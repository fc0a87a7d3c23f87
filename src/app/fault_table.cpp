#include "fault_table.h"

#include <cstring>

namespace {

// With no fault frame for this many passes the screen stops listing.
constexpr uint16_T FAULT_COMMUNICATION_AGE = 301;

constexpr size_t _length(const char* text)
{
    size_t n = 0;
    while (text[n]) n++;
    return n;
}

constexpr size_t FAULT_TEXT_SIZE = [] {
    size_t longest = 0;
    for (const FAULT_ROW_T& row : FAULT_ROWS) longest = _length(row.text) > longest ? _length(row.text) : longest;
    return longest + 1;
}();

// The texts in records of their own, which nobody writes.
struct FAULT_TEXTS_T {
    char chars[FAULT_ROW_COUNT][FAULT_TEXT_SIZE];
};
constinit FAULT_TEXTS_T m_chars = [] {
    FAULT_TEXTS_T t{};
    for (size_t i = 0; i < FAULT_ROW_COUNT; i++)
        for (size_t c = 0; FAULT_ROWS[i].text[c]; c++) t.chars[i][c] = FAULT_ROWS[i].text[c];
    return t;
}();

constinit std::array<S_String, FAULT_ROW_COUNT> m_texts = [] {
    std::array<S_String, FAULT_ROW_COUNT> texts{};
    for (size_t i = 0; i < FAULT_ROW_COUNT; i++) texts[i] = {FAULT_TEXT_SIZE, m_chars.chars[i]};
    return texts;
}();

}  // namespace

real_T FaultState(size_t row)
{
    if (row >= FAULT_ROW_COUNT) return 0.0;
    real_T state;
    memcpy(&state, reinterpret_cast<const uint8_T*>(&Velnor_Dorvik_V6c_B) + FAULT_ROWS[row].flag, sizeof(state));
    return state;
}

const S_String* FaultText(size_t row)
{
    return row < FAULT_ROW_COUNT ? &m_texts[row] : nullptr;
}

real_T FaultCount(void)
{
    real_T count = 0;
    for (size_t i = 0; i < FAULT_ROW_COUNT; i++) count += FaultState(i);
    return count;
}

bool FaultCommunicationLost(void)
{
    return B.Age >= FAULT_COMMUNICATION_AGE;
}

const char* FaultEngineWarning(void)
{
    return RAMVariables.MIL ? "CHECK ENGINE" : "";
}

const char* FaultValetWarning(void)
{
    if (RAMVariables.ValetMode && RAMVariables.ValetMode2) return "VALET MODE 1&2";
    if (RAMVariables.ValetMode) return "VALET MODE 1";
    if (RAMVariables.ValetMode2) return "VALET MODE 2";
    return "";
}

void FaultTableSetPointers(void)
{
    for (size_t i = 0; i < FAULT_ROW_COUNT; i++) B.Message[i] = &m_texts[i];
}
