#pragma once
// The engine controller of the simulated car: a small, seeded drive model of a turbo V8
// with a six-speed gearbox on a track, which sends every frame of the dash's message set
// at its own rate. Its frames are written through the dash's own signal table, so what
// the model means is what the dash reads.
//
// The model is a plain structure that the caller owns; it keeps no state elsewhere and
// is not locked: one thread steps it, or the caller serialises the calls.
#include <cstddef>
#include <cstdint>
#include <linux/can.h>
#include <string>

// Sizes of the dash's message set; ecu_model.cpp checks them against the table.
constexpr size_t ECU_MODEL_SIGNALS = 363;
constexpr size_t ECU_MODEL_FRAMES = 45;
constexpr int ECU_MODEL_CYLINDERS = 8;

// Where the driver is in the scenario's script.
enum ECU_PHASE_T : uint8_t {
    ECU_PHASE_IDLE,      // standing, engine idling
    ECU_PHASE_CRUISE,    // part throttle, moderate speed
    ECU_PHASE_LAUNCH,    // standing on the two-step, waiting for the release
    ECU_PHASE_PASS,      // full throttle through the gears
    ECU_PHASE_BRAKE,     // slowing down
    ECU_PHASE_CORNER,    // holding a speed through a corner
    ECU_PHASE_COOLDOWN,  // standing after a run, engine idling
};

// The logging request (bit Start_Log of 0x109): what the scenario asks for, or forced.
enum ECU_LOG_REQUEST_T : uint8_t {
    ECU_LOG_AUTO,  // while the car is driven, not while it stands
    ECU_LOG_ON,
    ECU_LOG_OFF,
};

// A fault that comes now and then while the car is driven, and the lamp with it.
struct ECU_FAULT_T {
    uint16_t row;       // in the signal table; 0 for none
    uint32_t untilTick;
};

struct ECU_MODEL_T {
    // The clock: model time runs in ticks of 10 ms from the first step, and stands still
    // while paused; the frames' schedule runs on the caller's clock.
    bool started;
    bool paused;
    uint64_t originMs;  // caller's time of the first step
    uint64_t clockMs;   // caller's time since the origin, up to the last step
    uint64_t tickMs;    // caller's time of the next tick, since the origin
    uint32_t ticks;     // ticks run (not counting paused ones)
    uint64_t nextDue[ECU_MODEL_FRAMES];  // since the origin
    uint8_t firmwareHalf;                // which half of the version text 0x122 carries next

    uint64_t rng;
    uint32_t seed;

    // The script.
    uint8_t scenario;
    uint8_t segment;        // index into the scenario's script
    uint32_t segmentTicks;  // ticks spent in the segment
    ECU_PHASE_T phase;
    ECU_LOG_REQUEST_T logRequest;

    // What the dash asks for in its settings frame 0x131 (factory settings until one comes).
    uint8_t boostStage;  // 1 to 5
    bool tractionControl;
    bool highOctane;
    bool altTire;

    // Driver.
    double pedal;      // 0..1
    double brake;      // 0..1
    double lateralG;   // + right
    bool twoStep;      // launch button held
    bool launchTimer;  // the launch timer runs
    double launchTime;

    // Drivetrain and vehicle.
    double rpm;
    double tps;  // throttle blade 0..1
    double tpsBefore;
    int gear;            // 1..6, 0 in neutral
    int desiredGear;
    double shiftTimer;   // s left of a gear change
    double speed;        // m/s, of the body (non-driven wheels)
    double slip;         // of the driven wheels, fraction
    double accelG;       // longitudinal
    double tcsRetard;    // degrees, <= 0
    bool tcc;

    // Air.
    double boost;  // kPa above the atmosphere
    double map;    // kPa absolute
    double turbo;  // rpm
    double maf;    // g/s

    // Heat: temperatures in C, the load they follow.
    double heatLoad;  // slow average of the engine's load, 0..1.2
    double coolant;
    double oil;
    double trans;
    double airInlet;
    double manifold;
    double egt[ECU_MODEL_CYLINDERS];
    double egtOffset[ECU_MODEL_CYLINDERS];
    double o2Temp;

    // Combustion.
    double eqBank[2];  // measured equivalence ratio per bank
    double trim[2];    // closed-loop fuel multipliers
    double knockRetard[ECU_MODEL_CYLINDERS];  // degrees, <= 0
    double knockEnergy[ECU_MODEL_CYLINDERS];
    uint32_t knockWindow[ECU_MODEL_CYLINDERS];  // running sums of the knock windows
    uint32_t refWindow[ECU_MODEL_CYLINDERS];
    double cam[2];
    double etcIterm;

    // Fluids.
    double fuelUsed;  // litres since the tanks were filled
    double slosh;     // g that the fuel in the tanks feels, behind the car's
    double nitrous[4];
    bool heater[4];  // each bottle's heater, which keeps its pressure in a band
    uint8_t encoderFaults;

    ECU_FAULT_T fault;
    char serial[9];

    // Every field of the message set, by row of the dash's signal table, in the unit of
    // the wire; the frames are encoded from here.
    double values[ECU_MODEL_SIGNALS];
};

void ecu_model_init(ECU_MODEL_T* m, uint32_t seed);
// Starts the scenario's script from its beginning; the car keeps its speed and heat.
// False for an unknown name.
bool ecu_model_set_scenario(ECU_MODEL_T* m, const char* name);
const char* const* ecu_model_scenarios(size_t* count);
const char* ecu_model_scenario(const ECU_MODEL_T* m);
// Paused, the values stand still and the frames keep coming: an ECU does not stop sending.
void ecu_model_pause(ECU_MODEL_T* m, bool paused);
// Forces the logging request "on" or "off", or leaves it to the scenario ("auto"); it
// takes effect at once, paused or not. False for another name.
bool ecu_model_set_log_request(ECU_MODEL_T* m, const char* name);
// Advances the model to nowMs (monotonic, any start) and hands every frame due by then,
// in time order, to send (port 0 = can0, 1 = can1). After a stall of the caller only the
// last second's frames go out, and the model skips what lies beyond 5 s.
void ecu_model_step(ECU_MODEL_T* m, uint64_t nowMs, void (*send)(int port, const struct can_frame* frame, void* ctx),
                    void* ctx);
// A frame the dash sent: the settings frame 0x131 sets boost stage, traction control,
// octane and tyre of the model. Anything else is ignored.
void ecu_model_receive(ECU_MODEL_T* m, int port, const struct can_frame* frame);
// A line for people: what the dash asks for in its settings frame 0x131.
std::string ecu_model_describe_settings(const struct can_frame& frame);
// A few live values for the web page, as a JSON object.
std::string ecu_model_status_json(const ECU_MODEL_T* m);
// The period of a frame the model sends, in ms; 0 for one it does not send.
uint32_t ecu_model_period_ms(uint32_t id);
