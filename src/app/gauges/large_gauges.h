#pragma once
// The gauges that take more than one cell of a gauge page. Ten large gauges (type 3) fill
// the page, on three dials: a tachometer, a speedometer, and a large dial that eight of
// them share, each showing one of the quad gauges bigger. The double wide panel (type 1)
// is a table of engine data across two cells, the double tall one (type 2) a spark advance
// dial two cells high. Like the quad gauges they draw in full at every update from what
// the foreground task left in B, at the cell corner RAMVariables.arg_x, arg_y.
#include "quad_gauges.h"

// The large gauges by their index in a gauge word; the order is a stored format.
#define LARGE_GAUGE_NAMES(X) \
    X(AFR) X(Boost) X(OilPress) X(PFuelPress) X(Speedo) X(rpm) X(ACCEL) X(Lateral) X(FrontLift) X(SideTilt)

#define LARGE_GAUGE_ENUM(name) LARGE_##name,
enum LARGE_GAUGE_INDEX_T : uint8_T { LARGE_GAUGE_NAMES(LARGE_GAUGE_ENUM) LARGE_GAUGE_END };
#undef LARGE_GAUGE_ENUM
static_assert(LARGE_GAUGE_END == LARGE_GAUGE_COUNT, "the store has one drawing function per large gauge");

// Each gauge's drawing function, and the flag it tests first: set from the start, never cleared.
#define LARGE_GAUGE_DECLARE(name)    \
    void Trigger_large_##name(void); \
    extern boolean_T Trigger_large_##name##_enabled;
LARGE_GAUGE_NAMES(LARGE_GAUGE_DECLARE)
#undef LARGE_GAUGE_DECLARE

// The drawing functions by index, as the foreground task puts them into B.LargeGauge.
extern const trigger_ref LARGE_GAUGE_TRIGGERS[LARGE_GAUGE_COUNT];

// The double wide panel (B.RPM_f) and the double tall one (B.tall).
void Trigger_doublewide_custom(void);
extern boolean_T Trigger_doublewide_custom_enabled;
void Trigger_doubletall_custom(void);
extern boolean_T Trigger_doubletall_custom_enabled;

// The three faces of the large gauges, on the display: the needles' pivot and arc. The
// tachometer reads 0 to 9000 rpm and the speedometer 0 to 250, as printed on the faces.
struct LARGE_FACE_T {
    S32 cx, cy;
    GAUGE_ARC_T arc;
    real_T min, max;  // the scale, where it is fixed
};
inline constexpr LARGE_FACE_T TACHOMETER_FACE = {151, 137, {134, 227, 235, 230}, 0, 9000};
inline constexpr LARGE_FACE_T SPEEDOMETER_FACE = {160, 120, {100, 262, 270, 223}, 0, 250};
inline constexpr LARGE_FACE_T LARGE_DIAL_FACE = {160, 140, {125, 113, 121, 151}, 0, 0};

// The driver information light over a large gauge when enabled; the second argument is
// not used.
void Velnor_Dorvik_V6c_ShowDriverInfoLight(uint8_T enable, uint8_T unused);

// The labels of the double wide table, "%s (%s):" and "%s:", written into one buffer of
// 40 characters that both share, and returned.
const char* Velnor_Dorvik_V6c_Subsystem_m(const char* name, const char* unit);
const char* Velnor_Dorvik_V6c_Subsystem1(const char* name);

// Test hook: for tests and benchmarks only, never called by the dash. The lowest values
// drawn back to 0, as at power-up.
void LargeGaugeTestReset(void);
