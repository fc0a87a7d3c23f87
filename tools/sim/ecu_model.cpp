#include "ecu_model.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <numbers>

#include "can_signals.h"

static_assert(ECU_MODEL_SIGNALS == CAN_SIGNAL_COUNT, "the model keeps one value per row of the signal table");
static_assert(ECU_MODEL_FRAMES == CAN_FRAME_COUNT, "the model keeps one schedule per frame of the table");

// A name that is not in the signal table stops the build here (never defined: it is
// only ever named in a constant evaluation that fails).
void ecu_model_no_such_signal(void);

namespace {

// ---- Frames and their rates ------------------------------------------------------------

// As an ECU sends them: engine speed and throttle fastest, the rest of the running values
// at 20 or 50 ms, temperatures, fluids, faults and the identity texts at 100 ms.
struct RATE_T {
    uint16_t id;
    uint16_t periodMs;
};
constexpr RATE_T RATES[] = {
    {0x108, 10},  // RPM
    {0x101, 20}, {0x102, 20}, {0x106, 20}, {0x107, 20}, {0x125, 20}, {0x127, 20}, {0x130, 20},
    {0x103, 50}, {0x104, 50}, {0x109, 50}, {0x110, 50}, {0x111, 50}, {0x112, 50}, {0x113, 50},
    {0x114, 50}, {0x115, 50}, {0x116, 50}, {0x117, 50}, {0x120, 50}, {0x126, 50}, {0x148, 50},
    {0x149, 50}, {0x161, 50}, {0x162, 50}, {0x163, 50},
    {0x105, 100}, {0x118, 100}, {0x119, 100}, {0x121, 100}, {0x122, 100}, {0x123, 100}, {0x124, 100},
    {0x132, 100}, {0x133, 100}, {0x140, 100}, {0x141, 100}, {0x142, 100}, {0x143, 100}, {0x144, 100},
    {0x145, 100}, {0x146, 100}, {0x147, 100}, {0x164, 100},
};

constexpr uint32_t _period(uint32_t id)
{
    for (const RATE_T& r : RATES)
        if (r.id == id) return r.periodMs;
    return 0;
}

static_assert([] {
    for (const CAN_FRAME_T& f : CAN_FRAMES) {
        const uint32_t p = _period(f.id);
        if (f.dir == CAN_RX && (p < 10 || p > 100)) return false;
        if (f.dir == CAN_TX && p != 0) return false;
    }
    for (const RATE_T& r : RATES)
        if (CANFrameIndex(r.id) == CAN_FRAME_COUNT) return false;
    return true;
}(), "every frame the dash receives has one rate of 10 to 100 ms, and the model sends nothing else");

constexpr uint32_t TICK_MS = 10;
constexpr double DT = TICK_MS / 1000.0;
constexpr uint64_t CATCH_UP_MS = 1000;  // frames replayed after a stall of the caller
constexpr uint64_t SKIP_MS = 5000;      // model time run after a stall; the rest is skipped

// ---- Rows of the table ---------------------------------------------------------------

consteval uint16_t _row(const char* name)
{
    const size_t i = CANSignalIndex(name);
    if (i == CAN_SIGNAL_COUNT) ecu_model_no_such_signal();
    return (uint16_t)i;
}
#define V(name) m->values[_row(#name)]

// Families that the model fills in a loop stand one after the other in the table.
static_assert(_row("EGT8") == _row("EGT1") + 7 && _row("Knock_CYL8_RTD") == _row("Knock_CYL1_RTD") + 7);
static_assert(_row("InectorPW12") == _row("InectorPW1") + 11 && _row("KnockEnergyCyl8") == _row("KnockEnergyCyl1") + 7);
static_assert(_row("Nitrous_Pressure4") == _row("Nitrous_Pressure1") + 3);
static_assert(_row("Stage4_Armed") == _row("Stage1_Armed") + 3 && _row("Stage4_Engaged") == _row("Stage1_Engaged") + 3);
// The knock windows fill 0x140 to 0x143, the reference windows 0x144 to 0x147.
static_assert(_row("Knk_Win_Int8") == _row("Knk_Win_Int1") + 7 && _row("Ref_Win_Int8") == _row("Ref_Win_Int1") + 7);

// ---- The car -------------------------------------------------------------------------

constexpr double MPH = 0.44704;  // m/s
constexpr double G = 9.81;
constexpr double MASS = 1650;               // kg
constexpr double DRAG = 0.5 * 1.2 * 0.75;   // N per (m/s)^2
constexpr double TRACTION = 1.35 * G * MASS;  // N, drag radials
constexpr double BRAKE_MAX = 1.25 * G * MASS;
constexpr double RATIOS[7] = {0, 3.01, 2.07, 1.52, 1.18, 1.00, 0.84};
constexpr int TOP_GEAR = 6;
constexpr double FINAL = 3.42;
constexpr double TYRE = 2.00;      // m, circumference
constexpr double TYRE_ALT = 2.08;  // the alternative tyre
constexpr double DISPLACEMENT = 5.3;  // litres
constexpr double IDLE_RPM = 850;
constexpr double STALL_RPM = 4500;  // converter at full throttle
constexpr double LAUNCH_RPM = 4200;
constexpr double SHIFT_RPM = 7200;
constexpr double REV_LIMIT = 7500;
constexpr double AMBIENT = 22;
constexpr double ATMOSPHERE = 101;
constexpr double ETHANOL = 10;  // % in the fuel
constexpr double STOICH = 14.7 * (1 - ETHANOL / 100) + 9.77 * ETHANOL / 100;
constexpr double FUEL_DENSITY = 745;  // g/l
constexpr double TANK = 60;           // litres, each of two
constexpr double PRIMARY_FLOW = 1000 * 0.745 / 60;    // g/s of one primary injector
constexpr double SECONDARY_FLOW = 1600 * 0.745 / 60;  // g/s of one secondary injector
constexpr double DEAD_US = 600;  // opening time of an injector
constexpr double NITROUS_FULL[4] = {6300, 6250, 6400, 6150};  // kPa, where each heater switches off
constexpr double NITROUS_BAND = 600;  // kPa below full, where it switches on again

const char* const FIRMWARE[2] = {"v2.31.0", " b1442"};  // 7 characters a half
const char* const PART_NUMBER = "PN-20417";

// ---- Scenarios -----------------------------------------------------------------------

struct SEGMENT_T {
    ECU_PHASE_T phase;
    double seconds;   // how long; 0 for as long as it takes (or for ever, standing)
    double speedMph;  // where a speed is the goal
    double level;     // pedal for cruise, deceleration in g for braking
    double lateralG;  // in a corner, + right
    bool neutral;     // standing in neutral rather than in gear
};

constexpr SEGMENT_T DRIVE[] = {
    {ECU_PHASE_IDLE, 20, 0, 0, 0, false},
    {ECU_PHASE_CRUISE, 25, 45, 0.35, 0, false},
    {ECU_PHASE_BRAKE, 0, 0, 0.45, 0, false},
    {ECU_PHASE_IDLE, 4, 0, 0, 0, false},
    {ECU_PHASE_LAUNCH, 3, 0, 0, 0, false},
    {ECU_PHASE_PASS, 14, 140, 0, 0, false},
    {ECU_PHASE_BRAKE, 0, 0, 0.8, 0, false},
    {ECU_PHASE_COOLDOWN, 45, 0, 0, 0, false},
};
constexpr SEGMENT_T IDLE[] = {
    {ECU_PHASE_IDLE, 0, 0, 0, 0, true},
};
// A flying lap of three corners; the first straight starts from wherever the car is.
constexpr SEGMENT_T PASS[] = {
    {ECU_PHASE_PASS, 10, 150, 0, 0, false},   {ECU_PHASE_BRAKE, 0, 60, 1.1, 0, false},
    {ECU_PHASE_CORNER, 4, 60, 0, 1.3, false}, {ECU_PHASE_PASS, 7, 125, 0, 0, false},
    {ECU_PHASE_BRAKE, 0, 45, 1.2, 0, false},  {ECU_PHASE_CORNER, 3, 45, 0, -1.4, false},
    {ECU_PHASE_PASS, 8, 135, 0, 0, false},    {ECU_PHASE_BRAKE, 0, 70, 1.0, 0, false},
    {ECU_PHASE_CORNER, 5, 70, 0, 1.1, false}, {ECU_PHASE_CORNER, 3, 70, 0, -0.9, false},
};

struct SCENARIO_T {
    const SEGMENT_T* script;
    size_t count;
    bool manual;   // paddles
    bool nitrous;  // bottles armed
};
const char* const m_names[] = {"drive", "idle", "pass"};
constexpr SCENARIO_T SCENARIOS[] = {
    {DRIVE, std::size(DRIVE), false, false},
    {IDLE, std::size(IDLE), false, false},
    {PASS, std::size(PASS), true, true},
};
static_assert(std::size(m_names) == std::size(SCENARIOS));

const char* const m_logRequests[] = {"auto", "on", "off"};
static_assert(std::size(m_logRequests) == ECU_LOG_OFF + 1);

const char* const m_phases[] = {"idle", "cruise", "launch", "pass", "brake", "corner", "cool-down"};
static_assert(std::size(m_phases) == ECU_PHASE_COOLDOWN + 1);

// Faults that come now and then while the car is driven; each lights the lamp.
constexpr uint16_t FAULTS[] = {
    _row("IATRangeHigh"),         _row("MAP_IR_HI"),          _row("CAN_Wideband1_Open"),
    _row("CamSyncFault"),         _row("CrankSyncFault"),     _row("KnockSensorFault"),
    _row("TPS1AdaptHiMin"),       _row("O2FailedLeanA"),      _row("Primary_FuelPressure_Variance"),
    _row("EGT_1RangeHigh"),       _row("SysVoltRangeLow"),    _row("Inlet_PressureRangeLow"),
    _row("APP_Sensors_Conflict"), _row("WasteGatePressureRangeHigh"),
};
constexpr double FAULT_EVERY_S = 20;  // on average, while driving

// ---- Helpers -------------------------------------------------------------------------

double _uniform(ECU_MODEL_T* m)  // [0, 1)
{
    uint64_t z = (m->rng += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return (double)((z ^ (z >> 31)) >> 11) / 9007199254740992.0;
}
double _noise(ECU_MODEL_T* m, double size)  // about normal, within +- 1.5 size
{
    return (_uniform(m) + _uniform(m) + _uniform(m) - 1.5) * size;
}
double _clamp(double x, double low, double high)
{
    return x < low ? low : x > high ? high : x;
}
// First-order lag towards target, with a time constant for each direction.
void _follow(double* x, double target, double tauUp, double tauDown)
{
    const double tau = target > *x ? tauUp : tauDown;
    *x += (target - *x) * std::min(1.0, DT / tau);
}
double _interpolate(const double (*points)[2], size_t n, double x)
{
    if (x <= points[0][0]) return points[0][1];
    for (size_t i = 1; i < n; i++) {
        if (x <= points[i][0]) {
            const double t = (x - points[i - 1][0]) / (points[i][0] - points[i - 1][0]);
            return points[i - 1][1] + t * (points[i][1] - points[i - 1][1]);
        }
    }
    return points[n - 1][1];
}

const SCENARIO_T& _scenario(const ECU_MODEL_T* m)
{
    return SCENARIOS[m->scenario];
}
const SEGMENT_T& _segment(const ECU_MODEL_T* m)
{
    return _scenario(m).script[m->segment];
}
bool _atRest(ECU_PHASE_T phase)
{
    return phase == ECU_PHASE_IDLE || phase == ECU_PHASE_COOLDOWN;
}
bool _logWanted(const ECU_MODEL_T* m)
{
    return m->logRequest == ECU_LOG_AUTO ? !_atRest(m->phase) : m->logRequest == ECU_LOG_ON;
}
double _tyre(const ECU_MODEL_T* m)
{
    return m->altTire ? TYRE_ALT : TYRE;
}
// Engine speed that a road speed (m/s) gives in a gear, with the clutch of the converter shut.
double _wheelRpm(const ECU_MODEL_T* m, double speed, int gear)
{
    return speed / _tyre(m) * 60 * RATIOS[gear] * FINAL;
}
double _stageBoost(int stage)  // kPa above the atmosphere
{
    return 40 + 20 * stage;
}

// ---- The script ----------------------------------------------------------------------

void _enterSegment(ECU_MODEL_T* m, uint8_t segment)
{
    const ECU_PHASE_T before = m->phase;
    m->segment = segment;
    m->segmentTicks = 0;
    m->phase = _segment(m).phase;
    if (m->phase == ECU_PHASE_PASS && before == ECU_PHASE_LAUNCH) {
        m->launchTimer = true;
        m->launchTime = 0;
    } else if (m->phase != ECU_PHASE_PASS) {
        m->launchTimer = false;
    }
}

bool _segmentDone(const ECU_MODEL_T* m)
{
    const SEGMENT_T& s = _segment(m);
    const double t = m->segmentTicks * DT;
    const double mph = m->speed / MPH;
    switch (s.phase) {
    case ECU_PHASE_PASS:
        return mph >= s.speedMph || t >= s.seconds;
    case ECU_PHASE_BRAKE:
        return s.speedMph > 0 ? mph <= s.speedMph : m->speed == 0;
    default:
        return s.seconds > 0 && t >= s.seconds;
    }
}

// What the driver does with the pedals and the wheel.
void _driver(ECU_MODEL_T* m)
{
    const SEGMENT_T& s = _segment(m);
    const double mph = m->speed / MPH;
    double pedal = 0, brake = 0, lateral = 0;
    m->twoStep = false;
    switch (s.phase) {
    case ECU_PHASE_IDLE:
    case ECU_PHASE_COOLDOWN:
        brake = m->speed > 0 ? 0.4 : 0.2;  // a foot on the brake while standing
        break;
    case ECU_PHASE_CRUISE:
        pedal = _clamp(0.12 + 0.05 * (s.speedMph - mph), 0, s.level);
        break;
    case ECU_PHASE_LAUNCH:
        pedal = 1;
        brake = 1;
        m->twoStep = true;
        break;
    case ECU_PHASE_PASS:
        pedal = 1;
        break;
    case ECU_PHASE_BRAKE:
        brake = s.level * G * MASS / BRAKE_MAX;
        break;
    case ECU_PHASE_CORNER:
        pedal = _clamp(0.15 + 0.05 * (s.speedMph - mph), 0, 0.6);
        brake = mph > s.speedMph + 3 ? 0.3 : 0;
        lateral = s.lateralG;
        break;
    }
    // A foot moves quickly, not at once.
    m->pedal += _clamp(pedal - m->pedal, -8 * DT, 8 * DT);
    m->brake += _clamp(brake - m->brake, -8 * DT, 8 * DT);
    m->lateralG += _clamp(lateral - m->lateralG, -3 * DT, 3 * DT);
}

// ---- One tick of the physics -----------------------------------------------------------

void _gearbox(ECU_MODEL_T* m, double wheelRpm)
{
    if (_segment(m).neutral) {
        m->gear = m->desiredGear = 0;
        return;
    }
    if (m->gear == 0) m->gear = m->desiredGear = 1;
    if (m->shiftTimer > 0) {
        m->shiftTimer -= DT;
        return;
    }
    // Paddles hold a gear up to the shift light; the automatic changes up early at part
    // throttle. Neither changes up while braking.
    const double up = _scenario(m).manual || m->tps > 0.85 ? SHIFT_RPM : 2300 + 3000 * m->tps;
    int next = m->gear;
    if (m->gear < TOP_GEAR && wheelRpm >= up && !m->twoStep && m->brake < 0.05) {
        next = m->gear + 1;
    } else if (m->gear > 1) {
        // Braking: down as far as the engine allows (paddles keep it high for the exit of a
        // corner); driving: when it lugs.
        const double lower = wheelRpm * RATIOS[m->gear - 1] / RATIOS[m->gear];
        const double ceiling = _scenario(m).manual ? 5200 : 3000;
        if (m->brake > 0.05 ? lower < ceiling : wheelRpm < 1250) next = m->gear - 1;
    }
    if (next != m->gear) {
        m->gear = m->desiredGear = next;
        m->shiftTimer = m->tps > 0.85 ? 0.18 : 0.35;
    }
}

// Engine torque at the flywheel, Nm.
double _torque(const ECU_MODEL_T* m, bool fuelCut, double retard)
{
    static constexpr double SHAPE[][2] = {{1000, 0.62}, {2500, 0.85}, {4500, 1.0}, {6000, 0.95}, {7500, 0.80}};
    const double full = 450 * _interpolate(SHAPE, std::size(SHAPE), m->rpm);
    const double friction = 25 + 0.004 * m->rpm;
    if (fuelCut) return -friction;
    double torque = full * std::max(0.0, m->map - 28) / 73 * (1 + 0.025 * retard) - friction;
    if (m->shiftTimer > 0) torque *= 0.3;
    return torque;
}

void _faults(ECU_MODEL_T* m)
{
    if (_atRest(m->phase)) {
        m->fault.row = 0;  // the lamp goes out at rest
        return;
    }
    if (m->fault.row && m->ticks >= m->fault.untilTick) m->fault.row = 0;
    if (!m->fault.row && _uniform(m) < DT / FAULT_EVERY_S) {
        m->fault.row = FAULTS[(size_t)(_uniform(m) * std::size(FAULTS))];
        m->fault.untilTick = m->ticks + (uint32_t)((3 + 6 * _uniform(m)) / DT);
        const bool trigger = m->fault.row == _row("CamSyncFault") || m->fault.row == _row("CrankSyncFault");
        if (trigger && m->encoderFaults < 255) m->encoderFaults++;
    }
}

void _tick(ECU_MODEL_T* m)
{
    m->ticks++;
    m->segmentTicks++;
    if (_segmentDone(m)) _enterSegment(m, (uint8_t)((m->segment + 1) % _scenario(m).count));
    _driver(m);
    const SCENARIO_T& scenario = _scenario(m);

    // Throttle blade after the pedal.
    m->tpsBefore = m->tps;
    _follow(&m->tps, m->pedal, 0.05, 0.05);

    // Engine speed: the converter lets it run up to its stall speed, the wheels pull it
    // along above; the limiter holds it.
    const double drivenSpeed = m->speed * (1 + m->slip);
    _gearbox(m, m->gear ? _wheelRpm(m, drivenSpeed, m->gear) : 0);
    const double idle = IDLE_RPM + std::max(0.0, 60 - m->coolant) * 6;  // fast idle while cold
    const double free = idle + m->tps * (STALL_RPM - IDLE_RPM);
    const double coupled = m->gear ? _wheelRpm(m, drivenSpeed, m->gear) * (m->tcc ? 1.0 : 1.03) : 0;
    const double limit = m->twoStep ? LAUNCH_RPM : REV_LIMIT;
    _follow(&m->rpm, std::max(free, coupled), 0.08, 0.12);
    m->rpm += _noise(m, 4 + 0.002 * m->rpm);
    const bool limiter = m->rpm >= limit - 10;
    if (limiter) m->rpm = limit - 60 * _uniform(m);
    m->rpm = std::max(m->rpm, 500.0);
    const double mph = m->speed / MPH;
    m->tcc = m->gear >= 4 && m->tps < 0.5 && mph > 35 && m->brake < 0.05;
    const bool fuelCut = m->pedal == 0 && m->rpm > 1500 && m->speed > 3;

    // Air: the throttle opens the manifold up to the atmosphere, the turbo pushes above it.
    const double closed = 36 - 0.0015 * m->rpm;
    const double natural = closed + (99 - closed) * (1 - std::pow(1 - m->tps, 3));
    const double spool = _clamp((m->rpm - 2400) / 2000, 0, 1) * _clamp((m->tps - 0.5) / 0.4, 0, 1);
    const double boostTarget = _stageBoost(m->boostStage) * spool;
    _follow(&m->boost, boostTarget, 0.6, 0.25);
    m->map = natural + m->boost + _noise(m, 0.6);
    const double ve = 0.85 + 0.1 * _clamp(m->rpm / 4500, 0, 1);
    m->maf = DISPLACEMENT * m->rpm / 120 * (m->map / ATMOSPHERE) * 1.18 * ve;
    const double inlet = ATMOSPHERE - 1 - 8 * std::pow(m->maf / 450, 2);  // the air filter's loss
    const double ratio = std::max(1.0, m->map / inlet);
    _follow(&m->turbo, std::min(148000.0, 12000 + 42000 * (ratio - 1) + 55 * m->maf), 0.4, 0.8);

    // Knock under boost, more of it on low octane.
    double retardSum = 0;
    const double knockChance =
        m->map > 120 && m->tps > 0.8 ? 0.01 * (m->map - 120) / 80 * (m->highOctane ? 0.25 : 1) : 0;
    for (int c = 0; c < ECU_MODEL_CYLINDERS; c++) {
        if (_uniform(m) < knockChance) {
            m->knockRetard[c] = std::max(-12.0, m->knockRetard[c] - 2 - 3 * _uniform(m));
            m->knockEnergy[c] += 6000 + 12000 * _uniform(m);
        }
        m->knockRetard[c] = std::min(0.0, m->knockRetard[c] + 1.5 * DT);
        _follow(&m->knockEnergy[c], 200 + 0.4 * m->rpm + _noise(m, 60), 0.12, 0.12);
        m->knockWindow[c] += (uint32_t)(m->knockEnergy[c] * DT * 10);
        m->refWindow[c] += (uint32_t)((300 + 0.3 * m->rpm) * DT * 10);
        retardSum += m->knockRetard[c];
    }
    const double knockRetard = retardSum / ECU_MODEL_CYLINDERS;

    // Drive force through the gears, limited by the grip of the driven wheels; traction
    // control takes spark away while the wheels spin.
    const double torque = _torque(m, fuelCut, knockRetard + m->tcsRetard);
    const double radius = _tyre(m) / (2 * std::numbers::pi);
    double drive = m->gear ? torque * RATIOS[m->gear] * FINAL * 0.88 / radius : 0;
    const bool held = m->brake > 0.9;  // standing on the brake: the car does not move
    // The tyres grip less at a standstill than once rolling.
    const double grip = TRACTION * (0.75 + 0.25 * std::min(1.0, m->speed / 15));
    const double spin = !held && drive > grip ? std::min(0.6, (drive / grip - 1) * 0.5) : 0;
    _follow(&m->slip, spin, 0.15, 0.15);
    if (m->tractionControl && m->slip > 0.08) {
        m->tcsRetard = std::max(-40.0, m->tcsRetard - 60 * DT);
    } else {
        m->tcsRetard = std::min(0.0, m->tcsRetard + 30 * DT);
    }
    drive = std::min(drive, grip * (m->slip > 0.15 ? 0.9 : 1.0));
    const double resist = DRAG * m->speed * m->speed + (m->speed > 0 ? 0.015 * MASS * G : 0);
    const double brakeForce = m->brake * BRAKE_MAX;
    double net = drive - resist;
    if (m->speed > 0) net -= brakeForce;
    else net = net > brakeForce ? net - brakeForce : 0;  // standing: the brake holds up to its force
    const double accel = m->speed <= 0 && net < 0 ? 0 : net / MASS;
    m->speed = std::max(0.0, m->speed + accel * DT);
    if (m->speed < 0.05 && m->brake > 0.05) m->speed = 0;
    _follow(&m->accelG, accel / G, 0.05, 0.05);
    if (m->launchTimer) m->launchTime += DT;

    // Fuel: richer with boost and while cold, cut when coasting.
    const double load = _clamp(m->maf / 700, 0, 1.4);
    const double targetEq =
        fuelCut ? 1.0 : 1.0 + 0.22 * _clamp((m->map - 100) / 120, 0, 1) + std::max(0.0, 60 - m->coolant) * 0.003;
    const bool closedLoop = !fuelCut && m->map < 100;
    for (int b = 0; b < 2; b++) {
        _follow(&m->eqBank[b], fuelCut ? 0.3 : targetEq * (1 + _noise(m, 0.01)), 0.1, 0.1);
        m->trim[b] = closedLoop ? _clamp(m->trim[b] + _noise(m, 0.002), 0.94, 1.06) : 1.0;
    }
    const double fuelFlow = fuelCut ? 0 : m->maf / (STOICH / targetEq);  // g/s
    m->fuelUsed += fuelFlow * DT / FUEL_DENSITY;
    if (m->fuelUsed > 2 * TANK * 0.9) m->fuelUsed = 0;  // a stop at the pumps
    const double cycleUs = 120e6 / m->rpm;
    const double perInjection = fuelFlow / (m->rpm / 120 * ECU_MODEL_CYLINDERS);  // g
    double primaryUs = fuelCut ? 0 : DEAD_US + 1e6 * perInjection / PRIMARY_FLOW;
    double secondaryUs = 0;
    if (primaryUs > 0.8 * cycleUs) {  // the secondaries take what the primaries cannot
        const double rest = perInjection - (0.8 * cycleUs - DEAD_US) * PRIMARY_FLOW / 1e6;
        primaryUs = 0.8 * cycleUs;
        secondaryUs = DEAD_US + 1e6 * rest / SECONDARY_FLOW;
    }

    // Spark.
    const bool onIdle = m->pedal == 0 && m->rpm < 1300;
    double spark = onIdle ? 14 + (idle - m->rpm) * 0.02 : _clamp(38 - 0.13 * (m->map - 30), 6, 40);
    spark += (m->highOctane ? 2 : 0) + knockRetard + m->tcsRetard + (m->twoStep ? -12 : 0);

    // Heat: each temperature follows the load with its own time constants.
    _follow(&m->heatLoad, load, 3, 3);
    const double hl = m->heatLoad;
    _follow(&m->coolant, 86 + 20 * hl, 150 / (1 + 5 * hl), 40);
    _follow(&m->oil, 92 + 38 * hl, 200 / (1 + 8 * hl), 60);
    _follow(&m->trans, 75 + 30 * hl + 40 * m->slip, 200 / (1 + 3 * hl), 120);
    _follow(&m->airInlet, AMBIENT + 8 * (1 - std::min(1.0, mph / 30)) + 0.12 * m->boost, 8, 25);
    const double airflow = std::min(1.0, mph / 60);
    _follow(&m->manifold, AMBIENT + 0.45 * (m->coolant - AMBIENT) * (1 - 0.5 * airflow) + 0.05 * m->boost, 60, 60);
    double egtSum = 0;
    for (int c = 0; c < ECU_MODEL_CYLINDERS; c++) {
        const double target = 330 + 600 * std::pow(_clamp(m->maf / 800, 0, 1), 0.55) + (m->twoStep ? 150 : 0) -
                              (fuelCut ? 120 : 0) - 4 * m->knockRetard[c] + m->egtOffset[c];
        _follow(&m->egt[c], target, 1.2, 4);
        egtSum += m->egt[c];
    }
    _follow(&m->o2Temp, 740 + 0.08 * (egtSum / ECU_MODEL_CYLINDERS - 400) + _noise(m, 2), 2, 2);

    // Cams: advanced at part load, less so up high.
    const double camSet[2] = {m->rpm < 1200 ? 0 : 8 + 20 * _clamp(m->map / 100, 0, 1) * (m->rpm < 4500 ? 1 : 0.6),
                              m->rpm < 1200 ? 0 : 4 + 10 * _clamp(m->map / 100, 0, 1)};
    for (int k = 0; k < 2; k++) m->cam[k] += (camSet[k] - m->cam[k]) * DT / 0.12 + _noise(m, 0.1);

    // Nitrous: armed on the track, a stage opens at full throttle; each bottle's heater
    // keeps its pressure in a band, cycling on and off.
    const bool armed = scenario.nitrous;
    const bool stage1 = armed && m->pedal > 0.95 && m->gear >= 2 && m->rpm > 4500 && m->shiftTimer <= 0;
    const bool stage2 = stage1 && m->gear >= 3;
    for (int b = 0; b < 4; b++) {
        const bool open = (b == 0 && stage1) || (b == 1 && stage2);
        double& p = m->nitrous[b];
        if (open) {
            p = std::max(0.0, p - 25 * DT);
        } else if (m->heater[b]) {
            p = std::min(NITROUS_FULL[b], p + 20 * DT);
            m->heater[b] = p < NITROUS_FULL[b];
        } else {
            p -= 5 * DT;  // the bottle cools
            if (p <= NITROUS_FULL[b] - NITROUS_BAND) m->heater[b] = true;
        }
    }
    m->etcIterm = _clamp(m->etcIterm + _noise(m, 0.2), -4, 4);
    _faults(m);

    // ---- Into the fields of the frames ----
    const double driven = drivenSpeed / MPH;
    const double oilKpa = std::min(520.0, 100 + 0.062 * m->rpm) + std::max(0.0, 80 - m->oil) * 1.5 + _noise(m, 3);
    const double radiatorKpa = _clamp((m->coolant - 30) * 1.6, 0, 110);
    const double ebp = ATMOSPHERE + 1 + 1.25 * m->boost + 0.04 * m->maf;
    const double wastegate = ATMOSPHERE + 0.45 * m->boost;
    const double fuelKpa = 400 + (m->map - ATMOSPHERE);
    const double ftlb = std::max(0.0, torque) * 0.7376;
    const double litresPerHour = fuelFlow * 3600 / FUEL_DENSITY;

    V(Differential_WheelSpeed) = m->speed > 1 ? m->slip * 100 : 0;
    V(Differntial_WheelSpeed_Allowed) = 8;
    V(TPS_g) = m->tps * 100;
    V(Primary_Injector_Duty) = primaryUs / cycleUs * 100;

    V(EBP1_PSI) = std::max(0.0, ebp - ATMOSPHERE) * 0.145;
    V(DrivenWheelSpeed) = driven;
    V(NonDrivenWheelSpeed) = mph;
    V(TCS_SPark_RTD) = m->tcsRetard;
    V(WasteGate_Duty) = boostTarget > 0 ? 25 + 12 * m->boostStage : 0;
    V(WasteGate_SetPoint) = ATMOSPHERE + _stageBoost(m->boostStage);

    V(TimeSinceRun) = std::min(65535.0, m->ticks * DT);
    V(TPS2) = _clamp(m->tps * 100 + _noise(m, 0.3), 0, 100);
    V(APP1) = m->pedal * 100;
    V(APP2) = _clamp(m->pedal * 100 + _noise(m, 0.3), 0, 100);
    V(OnIdle) = onIdle;
    V(Transmission_Pressure) = 500 + 500 * m->tps + (m->shiftTimer > 0 ? 200 : 0);
    V(Stage1_Engaged) = stage1;
    V(Stage2_Engaged) = stage2;
    V(Stage3_Engaged) = 0;
    V(Stage4_Engaged) = 0;

    V(Target_O2) = targetEq;
    V(High_CAM_Active) = m->rpm > 5200;
    V(TractionControlActive) = m->tcsRetard < -0.5;
    V(Drivers_Information_Light) = m->coolant > 105 || m->fuelUsed > 2 * TANK * 0.85;
    V(Current_RPM_Limit) = limit;
    V(TwoStep_ADC) = (m->twoStep ? 38 : 1012) + _noise(m, 2);
    V(Secondary_Injector_Duty) = secondaryUs > 0 ? secondaryUs * 2 / cycleUs * 100 : 0;

    for (int b = 0; b < 4; b++) m->values[_row("Nitrous_Pressure1") + b] = m->nitrous[b];

    V(Turbo1_RPM) = m->turbo;
    V(Turbo2_RPM) = m->turbo * 1.02;

    for (int c = 0; c < ECU_MODEL_CYLINDERS; c++) {
        m->values[_row("Knock_CYL1_RTD") + c] = m->knockRetard[c];
        m->values[_row("KnockEnergyCyl1") + c] = m->knockEnergy[c];
        m->values[_row("Knk_Win_Int1") + c] = m->knockWindow[c];
        m->values[_row("Ref_Win_Int1") + c] = m->refWindow[c];
        m->values[_row("EGT1") + c] = m->egt[c];
        m->values[_row("InectorPW1") + c] = primaryUs * (1 + 0.01 * (c % 3 - 1));
    }
    for (int i = 8; i < 12; i++) m->values[_row("InectorPW1") + i] = secondaryUs;

    V(RPM) = m->rpm;
    V(Launch_Time) = m->launchTime;
    V(Delta_TPS) = (m->tps - m->tpsBefore) * 100;
    V(O2Fuel_MultA) = m->trim[0];
    V(O2Fuel_MultB) = m->trim[1];

    V(Start_Log) = _logWanted(m);
    V(EthanolContent) = ETHANOL;
    V(EncoderFaultCount) = m->encoderFaults;
    V(MIL) = m->fault.row != 0;
    V(DesiredGear) = m->desiredGear;
    V(ManualMode) = scenario.manual;
    V(ShifterPosition) = m->desiredGear;
    // The gear the ECU works out from engine and wheel speed: none while standing.
    double calculated = 0;
    if (m->speed > 1) {
        const double overall = m->rpm / (drivenSpeed / _tyre(m) * 60 * FINAL);
        for (int g = 1; g <= TOP_GEAR; g++)
            if (calculated == 0 || std::fabs(RATIOS[g] - overall) < std::fabs(RATIOS[(int)calculated] - overall))
                calculated = g;
    }
    V(Calculated_Gear) = calculated;
    V(OilTemp) = m->oil;
    V(TransTemp) = m->trans;

    V(RevLimiterActive) = limiter;
    // The slip of the converter: engine speed against the speed of the gearbox input.
    V(SlipPercent) = m->gear ? _clamp(1 - _wheelRpm(m, drivenSpeed, m->gear) / m->rpm, 0, 1) * 100 : 0;
    V(WasteGatePressure_PSI) = (wastegate - ATMOSPHERE) * 0.145;
    V(EBP2_PSI) = std::max(0.0, ebp * 1.01 - ATMOSPHERE) * 0.145;
    V(Radiator_PSI) = radiatorKpa * 0.145;
    V(OilPress_PSI) = oilKpa * 0.145;
    V(ETCDutyCycle) = _clamp(12 + 45 * m->tps + 300 * std::fabs(m->pedal - m->tps), 0, 100);
    V(ETCIterm) = m->etcIterm;

    V(DriveShaftRPMAllowed) = 8000;
    V(PrimaryCompensatedInjectorFlow) = 1000 * std::sqrt(400 / 300.0) + _noise(m, 2);
    V(SecondaryCompensatedInjectorFlow) = 1600 * std::sqrt(400 / 300.0) + _noise(m, 2);
    V(DriveShaft_RPM) = drivenSpeed / _tyre(m) * 60 * FINAL;

    double bank[2] = {0, 0};
    for (int c = 0; c < ECU_MODEL_CYLINDERS; c++) bank[c / 4] += m->egt[c] / 4;
    V(EGT) = bank[0];
    V(EGT2_m) = bank[1];
    V(Pressure_Ratio) = ratio;
    V(MassAirFlow) = m->maf;

    V(Primary_StoichSetpoint) = STOICH;
    // The alternator charges fully from 2500 rpm; the fans and the fuel pumps take their share.
    V(BatteryVolts) = 13.3 + 1.1 * _clamp((m->rpm - 800) / 1700, 0, 1) - (m->coolant > 92 ? 0.25 : 0) -
                      (m->tps > 0.9 ? 0.2 : 0) + _noise(m, 0.03);
    V(High_Low_Switch) = 0;
    V(EncoderState) = 0;
    V(TractionControlEnabled) = m->tractionControl;
    V(IBoostPosition) = m->boostStage;
    V(Stage1_Armed) = armed;
    V(Stage2_Armed) = armed;
    V(Stage3_Armed) = 0;
    V(Stage4_Armed) = 0;
    V(Coolant_Temp) = m->coolant;
    V(Inlet_Air_Temp) = m->airInlet;

    V(TCC) = m->tcc;
    V(Engine_HP_Potential) = std::max(0.0, torque) * m->rpm / 7121;
    V(Fuel_Economy) = mph > 1 && litresPerHour > 0 ? std::min(99.0, mph / (litresPerHour / 3.785)) : 0;
    V(BrakePressure) = m->brake * 9500;
    V(Target_AFR) = STOICH / targetEq;

    V(VVT1_Setpoint) = camSet[0];
    V(VVT2_Setpoint) = camSet[1];
    V(Cam1PhaseRelative) = m->cam[0];
    V(Cam2PhaseRelative) = m->cam[1];

    V(Spark_Advance_Log) = _clamp(spark, -25, 50);
    V(Final_AFR1) = STOICH / m->eqBank[0];
    V(Final_AFR2) = STOICH / m->eqBank[1];
    V(MAP_p) = m->map;

    V(X_Axis_Degrees) = 2.2 * m->lateralG + _noise(m, 0.05);
    V(Y_Axis_Degrees) = 1.2 * m->accelG + _noise(m, 0.05);
    V(X_Axis_AccelG) = m->lateralG + _noise(m, 0.01);
    V(Y_Axis_AccelG) = m->accelG + _noise(m, 0.01);

    V(O2SensorTemp2) = m->o2Temp;
    V(Lambda2) = 1 / m->eqBank[1];

    V(InletPressure) = inlet;
    V(Launch_ControlBeginRPM) = LAUNCH_RPM;
    V(EngineTorque) = ftlb;
    V(Speedo) = mph;

    V(Primary_Fuel_Pressure) = fuelKpa + _noise(m, 2);
    V(Secondary_Fuel_Pressure) = fuelKpa + 5 + _noise(m, 2);
    V(ExhaustBP) = ebp;
    V(ExhaustBP2) = ebp * 1.01;

    V(Launch_ApproachRTD) = m->twoStep ? 12 : 0;
    V(Oil_Pressure) = oilKpa;
    V(Radiator_Pressure) = radiatorKpa;
    V(WasteGatePressure) = wastegate;

    const double level = 100 * (1 - m->fuelUsed / (2 * TANK));
    // The senders sit at the back of the tanks: the fuel runs to them as the car pulls away.
    _follow(&m->slosh, m->accelG, 0.6, 0.6);
    V(Fuel_Level1) = _clamp(level + 12 * m->slosh, 0, 100);
    V(Fuel_Level2) = _clamp(level - 2 + 12 * m->slosh, 0, 100);
    V(Manifold_Surface_Temp) = m->manifold;
    V(Final_O2_Bank1) = m->eqBank[0];
    V(Final_O2_Bank2) = m->eqBank[1];

    // Fault frames: conditions the ECU reports as they stand, and the odd fault.
    const CAN_ROWS_T faultFrames[3] = {CAN_FRAME_ROWS[CANFrameIndex(0x121)], CAN_FRAME_ROWS[CANFrameIndex(0x132)],
                                       CAN_FRAME_ROWS[CANFrameIndex(0x133)]};
    for (const CAN_ROWS_T& rows : faultFrames)
        for (size_t i = rows.first; i < rows.first + rows.count; i++) m->values[i] = 0;
    V(Fuel_Cut_Active) = fuelCut;
    V(Knock_Control_Active) = knockRetard < -0.05;
    V(NitrousArmed) = armed;
    V(NitrousTriggered) = stage1;
    V(OverRevLimitAction) = limiter && !m->twoStep;
    bool hot = false;
    for (double egt : m->egt) hot = hot || egt > 950;
    V(EGT_HighTemp_Exceeded) = hot;
    if (m->fault.row) m->values[m->fault.row] = 1;
}

// ---- Sending -------------------------------------------------------------------------

void _send(ECU_MODEL_T* m, size_t f, void (*send)(int, const struct can_frame*, void*), void* ctx)
{
    const CAN_FRAME_T& frame = CAN_FRAMES[f];
    struct can_frame out;
    memset(&out, 0, sizeof(out));
    out.can_id = frame.id;
    out.can_dlc = 8;
    const CAN_ROWS_T rows = CAN_FRAME_ROWS[f];
    for (size_t i = rows.first; i < rows.first + rows.count; i++) {
        const CAN_SIGNAL_T& s = CAN_SIGNALS[i];
        if (s.target.kind != CAN_KIND_TEXT) {
            CANEncodeSignal(s, i == _row("FirmwareVersionHalf") ? m->firmwareHalf : m->values[i], out.data);
            continue;
        }
        switch (s.target.offset) {
        case CAN_TEXT_FIRMWARE:
            CANEncodeText(s, FIRMWARE[m->firmwareHalf], out.data);
            break;
        case CAN_TEXT_SERIAL:
            CANEncodeText(s, m->serial, out.data);
            break;
        default:
            CANEncodeText(s, PART_NUMBER, out.data);
            break;
        }
    }
    if (frame.id == 0x122) m->firmwareHalf ^= 1;  // the two halves of the version take turns
    send(frame.port == CAN_PORT2 ? 1 : 0, &out, ctx);
}

void _runTo(ECU_MODEL_T* m, uint64_t t)
{
    while (m->tickMs <= t) {
        if (!m->paused) _tick(m);
        m->tickMs += TICK_MS;
    }
}

const CAN_SIGNAL_T& _settingsRow(const char* name)
{
    return CAN_SIGNALS[CANSignalIndex(name)];
}

}  // namespace

// ---- Interface -------------------------------------------------------------------------

void ecu_model_init(ECU_MODEL_T* m, uint32_t seed)
{
    memset(m, 0, sizeof(*m));
    m->seed = seed;
    m->rng = 0x5EED0000ull ^ ((uint64_t)seed << 20) ^ seed;
    m->boostStage = 1;  // the dash's factory settings until its first frame
    m->tractionControl = true;
    // A cold engine that has just started.
    m->rpm = IDLE_RPM;
    m->coolant = m->oil = m->trans = m->airInlet = m->manifold = AMBIENT;
    m->o2Temp = 700;
    for (int c = 0; c < ECU_MODEL_CYLINDERS; c++) {
        m->egt[c] = 250;
        m->egtOffset[c] = (_uniform(m) - 0.5) * 50;
    }
    m->eqBank[0] = m->eqBank[1] = 1;
    m->trim[0] = m->trim[1] = 1;
    for (int b = 0; b < 4; b++) {
        m->nitrous[b] = NITROUS_FULL[b] - NITROUS_BAND * _uniform(m);
        m->heater[b] = _uniform(m) < 0.5;
    }
    m->fuelUsed = 2 * TANK * 0.18;
    snprintf(m->serial, sizeof(m->serial), "EC%06u", seed % 1000000);
    _enterSegment(m, 0);
    m->gear = m->desiredGear = 1;
}

bool ecu_model_set_scenario(ECU_MODEL_T* m, const char* name)
{
    for (size_t i = 0; name && i < std::size(m_names); i++) {
        if (strcmp(name, m_names[i]) == 0) {
            m->scenario = (uint8_t)i;
            m->phase = ECU_PHASE_IDLE;
            _enterSegment(m, 0);
            return true;
        }
    }
    return false;
}

const char* const* ecu_model_scenarios(size_t* count)
{
    *count = std::size(m_names);
    return m_names;
}

const char* ecu_model_scenario(const ECU_MODEL_T* m)
{
    return m_names[m->scenario];
}

void ecu_model_pause(ECU_MODEL_T* m, bool paused)
{
    m->paused = paused;
}

bool ecu_model_set_log_request(ECU_MODEL_T* m, const char* name)
{
    for (size_t i = 0; name && i < std::size(m_logRequests); i++) {
        if (strcmp(name, m_logRequests[i]) == 0) {
            m->logRequest = (ECU_LOG_REQUEST_T)i;
            V(Start_Log) = _logWanted(m);  // the next frame carries it, paused or not
            return true;
        }
    }
    return false;
}

void ecu_model_step(ECU_MODEL_T* m, uint64_t nowMs, void (*send)(int port, const struct can_frame* frame, void* ctx),
                    void* ctx)
{
    if (!m->started) {
        m->started = true;
        m->originMs = nowMs;
        for (size_t f = 0; f < CAN_FRAME_COUNT; f++) {
            const uint32_t period = _period(CAN_FRAMES[f].id);
            m->nextDue[f] = period ? (f * 3) % period : UINT64_MAX;  // spread over the period
        }
    }
    if (nowMs < m->originMs || nowMs - m->originMs < m->clockMs) return;  // time does not run back
    const uint64_t now = nowMs - m->originMs;

    // A caller that stalled: the model skips what lies far back, rather than replay it.
    if (now > m->tickMs + SKIP_MS) m->tickMs += (now - SKIP_MS - m->tickMs) / TICK_MS * TICK_MS;
    for (size_t f = 0; f < CAN_FRAME_COUNT; f++) {
        const uint32_t period = _period(CAN_FRAMES[f].id);
        if (period && m->nextDue[f] + CATCH_UP_MS < now)
            m->nextDue[f] += (now - CATCH_UP_MS - m->nextDue[f]) / period * period;
    }

    for (;;) {
        size_t next = CAN_FRAME_COUNT;
        for (size_t f = 0; f < CAN_FRAME_COUNT; f++)
            if (next == CAN_FRAME_COUNT || m->nextDue[f] < m->nextDue[next]) next = f;
        if (m->nextDue[next] > now) break;
        _runTo(m, m->nextDue[next]);
        _send(m, next, send, ctx);
        m->nextDue[next] += _period(CAN_FRAMES[next].id);
    }
    _runTo(m, now);
    m->clockMs = now;
}

void ecu_model_receive(ECU_MODEL_T* m, int port, const struct can_frame* frame)
{
    // An extended or remote frame has its flag in the id and is not the settings frame.
    if (port != 0 || frame->can_id != 0x131 || frame->can_dlc != 8) return;
    const double stage = CANSignalValue(_settingsRow("BoostControl"), frame->data);
    m->boostStage = (uint8_t)_clamp(stage, 1, 5);
    m->tractionControl = CANSignalValue(_settingsRow("TractionControl"), frame->data) != 0;
    m->highOctane = CANSignalValue(_settingsRow("HighOctane"), frame->data) != 0;
    m->altTire = CANSignalValue(_settingsRow("ALT_TIRE"), frame->data) != 0;
}

std::string ecu_model_describe_settings(const struct can_frame& frame)
{
    char text[160];
    if (frame.can_id != 0x131) {
        snprintf(text, sizeof(text), "not the settings frame 0x131");
        return text;
    }
    if (frame.can_dlc != 8) {
        snprintf(text, sizeof(text), "settings frame of %u bytes, 8 expected", frame.can_dlc);
        return text;
    }
    const unsigned stage = (unsigned)CANSignalValue(_settingsRow("BoostControl"), frame.data);
    auto onOff = [&](const char* name) {
        return CANSignalValue(_settingsRow(name), frame.data) != 0 ? "on" : "off";
    };
    snprintf(text, sizeof(text), "boost control stage %u%s, traction control %s, high octane %s, alternate tire %s",
             stage, stage >= 1 && stage <= 5 ? "" : " (outside 1 to 5)", onOff("TractionControl"),
             onOff("HighOctane"), onOff("ALT_TIRE"));
    return text;
}

std::string ecu_model_status_json(const ECU_MODEL_T* m)
{
    char text[512];
    snprintf(text, sizeof(text),
             "{\"scenario\":\"%s\",\"phase\":\"%s\",\"paused\":%s,\"rpm\":%.0f,\"speed_mph\":%.1f,\"gear\":%.0f,"
             "\"coolant_c\":%.1f,\"oil_c\":%.1f,\"egt_c\":%.0f,\"map_kpa\":%.0f,\"boost_stage\":%u,"
             "\"mil\":%s,\"logging\":%s,\"log_request\":\"%s\",\"time_s\":%.1f}",
             m_names[m->scenario], m_phases[m->phase], m->paused ? "true" : "false", m->rpm, m->speed / MPH,
             (double)m->gear, m->coolant, m->oil, m->values[_row("EGT")], m->map,
             m->boostStage, m->values[_row("MIL")] != 0 ? "true" : "false",
             m->values[_row("Start_Log")] != 0 ? "true" : "false", m_logRequests[m->logRequest], m->ticks * DT);
    return text;
}

uint32_t ecu_model_period_ms(uint32_t id)
{
    return _period(id);
}
