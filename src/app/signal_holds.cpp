#include "signal_holds.h"

#include <cmath>
#include <cstring>

namespace {

// The holds of this pass; the state record keeps those of the pass before.
real_T m_holds[HOLD_COUNT];

constexpr uint8_T TPS_LIMIT_70 = 70;
constexpr uint8_T TPS_LIMIT_80 = 80;
constexpr uint8_T TPS_LIMIT_90 = 90;
constexpr uint16_T MAP_LIMIT_KPA = 140;
constexpr real32_T RPM_LIMIT = 1000.0f;
constexpr real32_T RUN_LIMIT_S = 5.0f;

}  // namespace

static bool _gateOpen(HOLD_GATE_T gate)
{
    switch (gate) {
    case HOLD_GATE_NONE:
        return true;
    case HOLD_GATE_TPS_70:
        return RAMVariables.TPS > TPS_LIMIT_70;
    case HOLD_GATE_TPS_80:
        return RAMVariables.TPS > TPS_LIMIT_80;
    case HOLD_GATE_TPS_90:
        return RAMVariables.TPS > TPS_LIMIT_90;
    case HOLD_GATE_MAP_TPS_70:
        return RAMVariables.MAP > MAP_LIMIT_KPA && RAMVariables.TPS > TPS_LIMIT_70;
    case HOLD_GATE_MAP_P_TPS_70:
        return B.MAP_p > MAP_LIMIT_KPA && RAMVariables.TPS > TPS_LIMIT_70;
    case HOLD_GATE_RPM_1000:
        return RAMVariables.RPM > RPM_LIMIT;
    case HOLD_GATE_RUN_5:
        return RAMVariables.Time_Since_Run > RUN_LIMIT_S;
    }
    return false;
}

static real_T _input(const HOLD_T& h)
{
    const uint8_T* record = h.record == HOLD_IN_B ? reinterpret_cast<const uint8_T*>(&Velnor_Dorvik_V6c_B)
                                                  : reinterpret_cast<const uint8_T*>(&CANInputs);
    real_T value;
    if (h.type == CAN_KIND_U16) {
        uint16_T raw;
        memcpy(&raw, record + h.input, sizeof(raw));
        value = raw;
    } else {
        memcpy(&value, record + h.input, sizeof(value));
    }
    return value * h.factor;
}

void SignalHoldsAfterFrame(size_t frame)
{
    if (frame >= CAN_FRAME_COUNT) return;
    const HOLD_ROWS_T rows = HOLD_FRAME_ROWS[frame];
    for (size_t i = rows.first; i < (size_t)rows.first + rows.count; i++) {
        const HOLD_T& h = SIGNAL_HOLDS[i];
        const real_T x = _gateOpen(h.gate) ? _input(h) : 0.0;
        const real_T old = DWork.UnitDelay_DSTATE[i];
        const bool moves = h.kind == HOLD_HIGH ? !(x < old) : !(x > old);
        m_holds[i] = moves || std::isnan(old) ? x : old;
    }
}

void SignalHoldsToRAMVariables(void)
{
    for (size_t i = 0; i < HOLD_COUNT; i++) {
        if (SIGNAL_HOLDS[i].copy == HOLD_NO_COPY) continue;
        const real32_T copy = (real32_T)m_holds[i];
        memcpy(reinterpret_cast<uint8_T*>(&RAMVariables) + SIGNAL_HOLDS[i].copy, &copy, sizeof(copy));
    }
}

void SignalHoldsToState(void)
{
    memcpy(DWork.UnitDelay_DSTATE, m_holds, sizeof(m_holds));
}

real_T SignalHoldValue(size_t hold)
{
    return hold < HOLD_COUNT ? m_holds[hold] : 0.0;
}
