// The simulator's engine controller: its frames (rates, ports, form), determinism and
// pause; the drive it models (gears, heat, the logging request and the lamp); the dash's
// settings frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Timer_7Je7r.h"
#include "Velnor_Dorvik_V6c.h"
#include "can_rx.h"
#include "can_signals.h"
#include "data.h"
#include "ecu_model.h"
#include "quad_gauges.h"

namespace {

struct SENT_T {
    int port;
    struct can_frame frame;
    bool operator==(const SENT_T& o) const
    {
        return port == o.port && frame.can_id == o.frame.can_id && frame.can_dlc == o.frame.can_dlc &&
               memcmp(frame.data, o.frame.data, 8) == 0;
    }
};

void _capture(int port, const struct can_frame* frame, void* ctx)
{
    static_cast<std::vector<SENT_T>*>(ctx)->push_back({port, *frame});
}

double Value(const ECU_MODEL_T& m, const char* name)
{
    const size_t i = CANSignalIndex(name);
    EXPECT_LT(i, CAN_SIGNAL_COUNT) << name;
    return m.values[i];
}

// Every value the model holds fits its field, so the encoder cuts nothing.
void CheckFields(const ECU_MODEL_T& m, std::vector<std::string>* problems)
{
    for (size_t i = 0; i < CAN_SIGNAL_COUNT && problems->size() < 20; i++) {
        const CAN_SIGNAL_T& s = CAN_SIGNALS[i];
        const double low = s.isSigned ? -std::ldexp(1.0, s.width - 1) / s.divisor + s.offset : s.offset;
        const double high = (std::ldexp(1.0, s.width - s.isSigned) - 1) / s.divisor + s.offset;
        if (s.target.kind != CAN_KIND_TEXT && !(m.values[i] >= low && m.values[i] <= high))
            problems->push_back(std::string(s.target.name) + " = " + std::to_string(m.values[i]));
    }
}

// A model on a clock of its own, which starts anywhere.
struct CAR_T {
    ECU_MODEL_T m;
    uint64_t now = 7'000'000;
    std::vector<SENT_T> frames;

    explicit CAR_T(uint32_t seed, const char* scenario = "drive")
    {
        ecu_model_init(&m, seed);
        EXPECT_TRUE(ecu_model_set_scenario(&m, scenario));
        ecu_model_step(&m, now, _capture, &frames);
    }
    // ms more, in steps of step ms; watch(m) after each step.
    template <typename WATCH>
    void Run(uint64_t ms, uint64_t step, WATCH watch)
    {
        for (const uint64_t end = now + ms; now < end;) {
            now = std::min(end, now + step);
            ecu_model_step(&m, now, _capture, &frames);
            watch(m);
        }
    }
    void Run(uint64_t ms, uint64_t step = 10)
    {
        Run(ms, step, [](const ECU_MODEL_T&) {});
    }
    std::map<uint32_t, std::vector<SENT_T>> ById() const
    {
        std::map<uint32_t, std::vector<SENT_T>> byId;
        for (const SENT_T& s : frames) byId[s.frame.can_id].push_back(s);
        return byId;
    }
};

// ---- Frames ----------------------------------------------------------------------------

TEST(EcuModelFrames, EveryFrameAtItsRateOnItsPort)
{
    CAR_T car(1);
    car.frames.clear();
    std::map<uint32_t, std::vector<uint64_t>> times;
    size_t seen = 0;
    car.Run(60'000, 1, [&](const ECU_MODEL_T&) {
        for (; seen < car.frames.size(); seen++) times[car.frames[seen].frame.can_id].push_back(car.now);
    });

    for (const SENT_T& s : car.frames) {
        const size_t f = CANFrameIndex(s.frame.can_id);  // an extended or remote flag is not found
        ASSERT_LT(f, CAN_FRAME_COUNT);
        ASSERT_EQ(CAN_FRAMES[f].dir, CAN_RX) << "not the dash's own frame";
        ASSERT_EQ(s.frame.can_dlc, 8);
        ASSERT_EQ(s.port, CAN_FRAMES[f].port == CAN_PORT2 ? 1 : 0) << std::hex << s.frame.can_id;
    }
    for (const CAN_FRAME_T& frame : CAN_FRAMES) {
        const uint32_t period = ecu_model_period_ms(frame.id);
        if (frame.dir == CAN_TX) continue;
        ASSERT_TRUE(period >= 10 && period <= 100) << std::hex << frame.id;
        const std::vector<uint64_t>& at = times[frame.id];
        EXPECT_EQ(at.size(), 60'000 / period) << std::hex << frame.id;
        for (size_t i = 1; i < at.size(); i++) ASSERT_EQ(at[i] - at[i - 1], period) << std::hex << frame.id;
    }
    EXPECT_LT(car.frames.size() / 60, 1100u) << "room left on the 1 Mbit/s bus";
}

TEST(EcuModelFrames, SameSeedSameFramesWhateverTheCallersSteps)
{
    CAR_T fine(42), coarse(42), ragged(42), other(43);
    fine.Run(40'000, 1);
    coarse.Run(40'000, 100);
    const uint64_t steps[] = {1, 13, 250, 3, 77, 9, 1000, 31};
    for (size_t i = 0; ragged.now < fine.now; i++) ragged.Run(std::min(steps[i % 8], fine.now - ragged.now), 1000);
    other.Run(40'000, 1);

    ASSERT_EQ(fine.frames.size(), coarse.frames.size());
    EXPECT_TRUE(fine.frames == coarse.frames) << "frames and their order do not depend on the steps";
    EXPECT_TRUE(fine.frames == ragged.frames);
    EXPECT_FALSE(fine.frames == other.frames) << "another seed drives another car";
}

TEST(EcuModelFrames, PausedTheValuesStandAndTheFramesGoOn)
{
    CAR_T car(7);
    car.Run(30'000);
    ASSERT_EQ(car.m.phase, ECU_PHASE_CRUISE);
    ecu_model_pause(&car.m, true);
    EXPECT_NE(ecu_model_status_json(&car.m).find("\"paused\":true"), std::string::npos);
    const ECU_MODEL_T before = car.m;
    car.frames.clear();
    car.Run(5'000, 3);

    EXPECT_EQ(memcmp(before.values, car.m.values, sizeof(before.values)), 0);
    for (const auto& [id, list] : car.ById()) {
        EXPECT_EQ(list.size(), 5'000 / ecu_model_period_ms(id)) << std::hex << id;
        const size_t lag = id == 0x122 ? 2 : 1;  // the two halves of the version take turns
        for (size_t i = lag; i < list.size(); i++) ASSERT_TRUE(list[i] == list[i - lag]) << std::hex << id;
    }

    ecu_model_pause(&car.m, false);
    car.frames.clear();
    car.Run(1'000);
    const std::vector<SENT_T> rpm = car.ById()[0x108];
    EXPECT_FALSE(std::all_of(rpm.begin(), rpm.end(), [&](const SENT_T& s) { return s == rpm[0]; }));
}

TEST(EcuModelFrames, AStalledCallerGetsTheLastSecondOnly)
{
    CAR_T car(3);
    car.Run(10'000);
    car.frames.clear();
    ecu_model_step(&car.m, car.now - 5, _capture, &car.frames);  // the clock does not run back
    EXPECT_TRUE(car.frames.empty());
    car.Run(3'600'000, 3'600'000);
    EXPECT_GT(car.frames.size(), 900u);
    EXPECT_LT(car.frames.size(), 1200u);
    car.frames.clear();
    car.Run(1'000, 1);
    EXPECT_EQ(car.ById()[0x108].size(), 100u) << "and then on at the rate";
}

// ---- The drive -------------------------------------------------------------------------

// The model after every tick of two rounds of the drive, with a warm engine.
class EcuModelDrive : public ::testing::Test {
protected:
    struct SNAP_T {
        ECU_PHASE_T phase;
        double rpm, mph, driven, coolant, oil, egt, gear, calculated, startLog, mil, launchTime, limiter, faults;
    };
    static void SetUpTestSuite()
    {
        trace_ = new std::vector<SNAP_T>;
        problems_ = new std::vector<std::string>;
        CAR_T* car = new CAR_T(2024, "idle");  // a cold engine warms up whatever it does
        car->Run(600'000, 100);
        EXPECT_TRUE(ecu_model_set_scenario(&car->m, "drive"));
        car->Run(270'000, 10, [&](const ECU_MODEL_T& m) {
            SNAP_T s = {m.phase, Value(m, "RPM"), Value(m, "NonDrivenWheelSpeed"), Value(m, "DrivenWheelSpeed"),
                        Value(m, "Coolant_Temp"), Value(m, "OilTemp"), 0, Value(m, "DesiredGear"),
                        Value(m, "Calculated_Gear"), Value(m, "Start_Log"), Value(m, "MIL"), Value(m, "Launch_Time"),
                        Value(m, "RevLimiterActive"), 0};
            for (int c = 0; c < 8; c++) s.egt += m.values[CANSignalIndex("EGT1") + c] / 8;
            for (uint32_t id : {0x121, 0x132, 0x133}) {
                const CAN_ROWS_T rows = CAN_FRAME_ROWS[CANFrameIndex(id)];
                for (size_t i = rows.first; i < rows.first + rows.count; i++) s.faults += m.values[i];
            }
            trace_->push_back(s);
            CheckFields(m, problems_);
            for (const SENT_T& sent : car->frames) _checkFrame(sent.frame);
            car->frames.clear();
        });
        delete car;
    }
    static void TearDownTestSuite()
    {
        delete trace_;
        delete problems_;
    }
    // What the dash reads is what a car gives.
    static void _checkFrame(const struct can_frame& frame)
    {
        static const struct {
            const char* name;
            double low, high;
        } SANE[] = {
            {"RPM", 500, 9500},          {"NonDrivenWheelSpeed", 0, 200}, {"Coolant_Temp", 15, 115},
            {"OilTemp", 15, 150},        {"EGT1", 150, 1000},             {"MAP_p", 15, 260},
            {"Final_AFR1", 8, 50},       {"Spark_Advance_Log", -25, 50},  {"BatteryVolts", 12.5, 15},
            {"Oil_Pressure", 80, 700},   {"Primary_Fuel_Pressure", 250, 600},
            {"EngineTorque", 0, 1000},   {"Y_Axis_AccelG", -1.6, 1.6},    {"Primary_Injector_Duty", 0, 90},
        };
        static std::vector<size_t> rows;
        for (size_t k = rows.size(); k < std::size(SANE); k++) rows.push_back(CANSignalIndex(SANE[k].name));
        for (size_t k = 0; k < std::size(SANE); k++) {
            const auto& sane = SANE[k];
            const CAN_SIGNAL_T& s = CAN_SIGNALS[rows[k]];
            if (frame.can_id != s.frame) continue;
            const double v = CANSignalValue(s, frame.data);
            if ((v < sane.low || v > sane.high) && problems_->size() < 20)
                problems_->push_back(std::string(sane.name) + " reads " + std::to_string(v));
        }
    }
    // The ticks of each visit to a phase: first, last.
    static std::vector<std::pair<size_t, size_t>> Visits(ECU_PHASE_T phase)
    {
        std::vector<std::pair<size_t, size_t>> visits;
        for (size_t i = 0; i < trace_->size(); i++) {
            if ((*trace_)[i].phase != phase) continue;
            if (visits.empty() || visits.back().second + 1 != i) visits.push_back({i, i});
            visits.back().second = i;
        }
        return visits;
    }
    static const SNAP_T& At(size_t tick)
    {
        return (*trace_)[tick];
    }

    static std::vector<SNAP_T>* trace_;
    static std::vector<std::string>* problems_;
};
std::vector<EcuModelDrive::SNAP_T>* EcuModelDrive::trace_;
std::vector<std::string>* EcuModelDrive::problems_;

TEST_F(EcuModelDrive, ValuesFitTheirFieldsAndMakeSense)
{
    for (const std::string& p : *problems_) ADD_FAILURE() << p;
    for (ECU_PHASE_T phase : {ECU_PHASE_CRUISE, ECU_PHASE_LAUNCH, ECU_PHASE_PASS, ECU_PHASE_BRAKE, ECU_PHASE_COOLDOWN})
        EXPECT_GE(Visits(phase).size(), 2u) << "two rounds through phase " << phase;
}

TEST_F(EcuModelDrive, LaunchOnTheTwoStepThenUpThroughTheGears)
{
    const auto [launch, released] = Visits(ECU_PHASE_LAUNCH)[0];
    bool limited = false;
    for (size_t i = launch; i <= released; i++) {
        EXPECT_EQ(At(i).mph, 0);
        EXPECT_LE(At(i).rpm, 4200);
        limited = limited || At(i).limiter != 0;
    }
    EXPECT_TRUE(limited) << "the two-step holds the engine on its limiter";

    const auto [first, last] = Visits(ECU_PHASE_PASS)[0];
    int upshifts = 0, steady = 0;
    for (size_t i = first + 1; i <= last; i++) {
        ASSERT_GE(At(i).gear, At(i - 1).gear) << "only up in a pass";
        ASSERT_GE(At(i).mph + 0.2, At(i - 1).mph) << "and faster all the time";
        if (At(i).gear > At(i - 1).gear) {
            // Engine speed falls by the step between the gears.
            upshifts++;
            double low = At(i - 1).rpm;
            for (size_t k = i; k < std::min(last, i + 30); k++) low = std::min(low, At(k).rpm);
            EXPECT_GT(At(i - 1).rpm, 6500) << "shifted near the top";
            EXPECT_LT(low, At(i - 1).rpm * 0.92) << "into gear " << At(i).gear;
        }
        // Pulling in a gear, the gear worked out from engine and wheel speed is the one asked for.
        if (i > first + 50 && At(i - 50).gear == At(i).gear) {
            steady++;
            EXPECT_EQ(At(i).calculated, At(i).gear) << "tick " << i;
            EXPECT_GE(At(i).driven, At(i).mph - 1) << "the driven wheels are never the slower";
        }
    }
    EXPECT_GE(upshifts, 3);
    EXPECT_GT(steady, 100);
    EXPECT_GT(At(last).mph, 110);
    EXPECT_GT(At(last).launchTime, 5) << "the launch timer ran from the release";
}

TEST_F(EcuModelDrive, HeatRisesInThePassAndFallsInTheCoolDown)
{
    const auto passes = Visits(ECU_PHASE_PASS);
    const auto cooldowns = Visits(ECU_PHASE_COOLDOWN);
    ASSERT_GE(cooldowns.size(), 2u);
    for (size_t k = 0; k < cooldowns.size(); k++) {
        const SNAP_T &start = At(passes[k].first), &hot = At(passes[k].second), &cooled = At(cooldowns[k].second);
        EXPECT_GT(hot.egt, std::max(start.egt, 750.0));
        EXPECT_GT(hot.coolant, start.coolant);
        EXPECT_GT(hot.oil, start.oil + 3);
        EXPECT_LT(cooled.egt, std::min(hot.egt - 300, 500.0));
        EXPECT_LT(cooled.coolant, hot.coolant);
        EXPECT_LT(cooled.oil, hot.oil);
    }
}

TEST_F(EcuModelDrive, LoggingAndLampWhileDrivenOffAtRest)
{
    bool lamp = false;
    for (const SNAP_T& s : *trace_) {
        const bool rest = s.phase == ECU_PHASE_IDLE || s.phase == ECU_PHASE_COOLDOWN;
        ASSERT_EQ(s.startLog, rest ? 0 : 1) << "phase " << s.phase;
        ASSERT_FALSE(rest && s.mil != 0);
        ASSERT_FALSE(s.mil != 0 && s.faults == 0) << "the lamp has its fault";
        lamp = lamp || s.mil != 0;
    }
    EXPECT_TRUE(lamp) << "now and then a fault lights the lamp";
}

// ---- Other scenarios -------------------------------------------------------------------

TEST(EcuModelScenarios, IdleWarmsUpStanding)
{
    CAR_T car(5, "idle");
    car.Run(1'000);
    const double coldRpm = Value(car.m, "RPM"), coldCoolant = Value(car.m, "Coolant_Temp");
    car.Run(300'000, 10, [](const ECU_MODEL_T& m) {
        ASSERT_EQ(Value(m, "NonDrivenWheelSpeed"), 0);
        ASSERT_EQ(Value(m, "ShifterPosition"), 0) << "in neutral";
        ASSERT_TRUE(Value(m, "RPM") > 600 && Value(m, "RPM") < 1300);
        ASSERT_EQ(Value(m, "Start_Log") + Value(m, "MIL"), 0);
    });
    EXPECT_GT(Value(car.m, "Coolant_Temp"), coldCoolant + 40);
    EXPECT_LT(Value(car.m, "RPM"), coldRpm - 100) << "the fast idle of a cold engine comes down";
}

TEST(EcuModelScenarios, FlyingLapsNeverStop)
{
    CAR_T car(9, "pass");
    double right = 0, left = 0, slowest = 1e9;
    int corners = 0;
    ECU_PHASE_T before = car.m.phase;
    car.Run(180'000, 10, [&](const ECU_MODEL_T& m) {
        if (m.ticks > 1500) slowest = std::min(slowest, Value(m, "NonDrivenWheelSpeed"));
        right = std::max(right, Value(m, "X_Axis_AccelG"));
        left = std::min(left, Value(m, "X_Axis_AccelG"));
        ASSERT_LE(Value(m, "RPM"), 7500);
        ASSERT_EQ(Value(m, "ManualMode") + Value(m, "Start_Log") + Value(m, "NitrousArmed"), 3);
        if (m.phase == ECU_PHASE_CORNER && before != ECU_PHASE_CORNER) {
            corners++;
            EXPECT_LE(Value(m, "DesiredGear"), 4) << "geared down for the corner";
        }
        before = m.phase;
    });
    EXPECT_GT(slowest, 30);
    EXPECT_TRUE(right > 1 && left < -1) << "corners both ways";
    EXPECT_GE(corners, 8) << "three corners a lap";

    size_t count = 0;
    const char* const* names = ecu_model_scenarios(&count);
    EXPECT_EQ(std::vector<std::string>(names, names + count), (std::vector<std::string>{"drive", "idle", "pass"}));
    EXPECT_FALSE(ecu_model_set_scenario(&car.m, "drag"));
    EXPECT_FALSE(ecu_model_set_scenario(&car.m, nullptr));
    EXPECT_STREQ(ecu_model_scenario(&car.m), "pass");
    const std::string json = ecu_model_status_json(&car.m);
    for (const char* key : {"{\"scenario\":\"pass\",", "\"paused\":false", "\"rpm\":", "\"speed_mph\":", "\"gear\":"})
        EXPECT_NE(json.find(key), std::string::npos) << key << " in " << json;
}

TEST(EcuModelScenarios, LoggingRequestForcedOrLeftToTheDrive)
{
    CAR_T car(3, "idle");
    car.Run(1'000);
    const CAN_SIGNAL_T& bit = CAN_SIGNALS[CANSignalIndex("Start_Log")];
    auto sent = [&] {
        car.frames.clear();
        car.Run(200);
        return CANSignalValue(bit, car.ById()[bit.frame].back().frame.data);
    };
    EXPECT_EQ(sent(), 0) << "standing";
    ecu_model_pause(&car.m, true);
    EXPECT_TRUE(ecu_model_set_log_request(&car.m, "on"));
    EXPECT_EQ(sent(), 1) << "at once, paused too";
    ecu_model_pause(&car.m, false);
    EXPECT_EQ(sent(), 1) << "and it stays";

    ASSERT_TRUE(ecu_model_set_scenario(&car.m, "pass"));
    EXPECT_TRUE(ecu_model_set_log_request(&car.m, "off"));
    EXPECT_EQ(sent(), 0) << "off while driven";
    EXPECT_TRUE(ecu_model_set_log_request(&car.m, "auto"));
    EXPECT_EQ(sent(), 1) << "the drive's own again";
    EXPECT_NE(ecu_model_status_json(&car.m).find("\"logging\":true,\"log_request\":\"auto\""), std::string::npos);
    EXPECT_FALSE(ecu_model_set_log_request(&car.m, "always"));
    EXPECT_FALSE(ecu_model_set_log_request(&car.m, nullptr));
}

// ---- The dash's settings frame -----------------------------------------------------------

struct can_frame SettingsFrame(const EEVariables_T& settings)
{
    struct can_frame frame;
    memset(&frame, 0, sizeof(frame));
    frame.can_id = 0x131;
    frame.can_dlc = 8;
    CANSettingsFrameData(settings, frame.data);  // as the dash builds it
    return frame;
}

TEST(EcuModelSettings, DescribedForPeople)
{
    const std::string factory = "boost control stage 1, traction control on, high octane off, alternate tire off";
    EXPECT_EQ(ecu_model_describe_settings(SettingsFrame(EEVariables_DEFAULT)), factory);
    const struct {
        uint8_T EEVariables_T::*field;
        uint8_T value;
        const char *from, *to;
    } CHANGES[] = {
        {&EEVariables_T::BoostControl, 5, "stage 1", "stage 5"},
        {&EEVariables_T::BoostControl, 0, "stage 1", "stage 0 (outside 1 to 5)"},
        {&EEVariables_T::TractionControl, 0, "traction control on", "traction control off"},
        {&EEVariables_T::HighOctane, 1, "high octane off", "high octane on"},
        {&EEVariables_T::ALT_TIRE, 1, "alternate tire off", "alternate tire on"},
    };
    for (const auto& c : CHANGES) {
        EEVariables_T s = EEVariables_DEFAULT;
        s.*c.field = c.value;
        std::string expected = factory;
        expected.replace(expected.find(c.from), strlen(c.from), c.to);
        EXPECT_EQ(ecu_model_describe_settings(SettingsFrame(s)), expected);
    }
    struct can_frame other = SettingsFrame(EEVariables_DEFAULT);
    other.can_dlc = 4;
    EXPECT_EQ(ecu_model_describe_settings(other), "settings frame of 4 bytes, 8 expected");
    other.can_dlc = 8;
    other.can_id = 0x131 | CAN_EFF_FLAG;
    EXPECT_EQ(ecu_model_describe_settings(other), "not the settings frame 0x131");
}

TEST(EcuModelSettings, TheCarFollowsTheDashsSettings)
{
    CAR_T stock(11, "pass"), tuned(11, "pass"), loose(11, "pass");
    EEVariables_T s = EEVariables_DEFAULT;
    s.BoostControl = 5;
    const struct can_frame fast = SettingsFrame(s);
    s.TractionControl = 0;
    const struct can_frame fastLoose = SettingsFrame(s);

    ecu_model_receive(&loose.m, 1, &fastLoose);  // port 2 carries no settings
    struct can_frame shortFrame = fastLoose;
    shortFrame.can_dlc = 7;
    ecu_model_receive(&loose.m, 0, &shortFrame);
    loose.Run(100);
    EXPECT_EQ(Value(loose.m, "IBoostPosition") + Value(loose.m, "TractionControlEnabled"), 2) << "factory settings";
    ecu_model_receive(&loose.m, 0, &fastLoose);
    ecu_model_receive(&tuned.m, 0, &fast);

    struct {
        double map = 0, slip = 0;
        bool tc = false;
        std::vector<std::string> problems;
    } seen[3];
    CAR_T* cars[3] = {&stock, &tuned, &loose};
    for (int c = 0; c < 3; c++) {
        cars[c]->Run(30'000, 10, [&](const ECU_MODEL_T& m) {
            seen[c].map = std::max(seen[c].map, Value(m, "MAP_p"));
            seen[c].slip = std::max(seen[c].slip, Value(m, "Differential_WheelSpeed"));
            seen[c].tc = seen[c].tc || Value(m, "TractionControlActive") != 0;
            CheckFields(m, &seen[c].problems);
        });
        for (const std::string& p : seen[c].problems) ADD_FAILURE() << "car " << c << ": " << p;
    }
    EXPECT_EQ(Value(tuned.m, "IBoostPosition"), 5);
    EXPECT_EQ(Value(loose.m, "TractionControlEnabled"), 0);
    EXPECT_GT(seen[1].map, seen[0].map + 50) << "more boost on a higher stage";
    // With that boost the driven wheels spin at the start: traction control holds them.
    EXPECT_TRUE(seen[1].tc && !seen[2].tc);
    EXPECT_LT(seen[1].slip, 15);
    EXPECT_GT(seen[2].slip, seen[1].slip + 5);
}

}  // namespace

// ---- On the dash -------------------------------------------------------------------------

// The dash's main view while the car is driven as `make run` drives it: every dial of the
// factory pages, through the dash's own decoding and units, moves by at least 4 of the 80
// degrees of its arc within one round of the script.
TEST(EcuModelOnTheDash, EveryDialOfTheFactoryPagesMoves)
{
    memset(&Velnor_Dorvik_V6c_B, 0, sizeof(Velnor_Dorvik_V6c_B));
    memset(&Velnor_Dorvik_V6c_DWork, 0, sizeof(Velnor_Dorvik_V6c_DWork));
    EEVariables_RAMShadow = EEVariables_DEFAULT;
    Timer_7Je7rInit();
    DWork.UnitDelay_DSTATE_nf = 1;

    std::set<size_t> dials;
    for (const uint16_T(*profile)[PROFILE_PAGES] : {EEVariables_DEFAULT.PROFILE_1, CONSTVariables.PROFILE_DEFAULT})
        for (int i = 0; i < PROFILE_WORDS; i++) {
            const uint16_T word = (&profile[0][0])[i];
            if (word >> 8 == 0 && QUAD_GAUGES[word & 0xFF].kind == QUAD_DIAL) dials.insert(word & 0xFF);
        }

    ECU_MODEL_T m;
    ecu_model_init(&m, 3);
    ASSERT_TRUE(ecu_model_set_scenario(&m, "drive"));
    std::map<size_t, std::pair<double, double>> range;
    auto send = [](int port, const struct can_frame* frame, void*) {
        CAN_MSG_T msg = {};
        msg.id = frame->can_id;
        msg.msg_length = frame->can_dlc;
        memcpy(msg.msg_content, frame->data, 8);
        if (port == 1) rxTable_285280__0051(CAN_PORT2, &msg);
        else rxTable_285279__0022(CAN_PORT1, &msg);
    };
    for (uint32_t t = 10; t <= 180'000; t += 10) {
        ecu_model_step(&m, t, send, nullptr);
        Timer_7Je7rTestPass(t);
        if (t % 100) continue;
        for (size_t d : dials) {
            const double v = B.*QUAD_GAUGES[d].value;
            auto [it, first] = range.try_emplace(d, v, v);
            it->second = {std::min(it->second.first, v), std::max(it->second.second, v)};
        }
    }
    for (size_t d : dials) {
        const QUAD_GAUGE_T& g = QUAD_GAUGES[d];
        const double span = B.*g.scaleMax - B.*g.scaleMin;
        const auto [low, high] = range[d];
        EXPECT_GT(high - low, 0.05 * span) << "gauge " << d << " from " << low << " to " << high;
    }
}
