// motordash-soak: the dash of this build for a long run in a fresh device root, at full
// bus load on both ports, measured on all three lists, calibrated, logging to a stick
// that is pulled and ejected now and then, its keys pressed at random. It checks what a
// long run wears down: the process survives and its sanitizers stay silent, its memory
// stays flat, its tasks keep their ticks, the stick holds every synced row, the
// settings survive a power cycle, and the main loop keeps its page rate.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "data.h"
#include "keypad_drv.h"
#include "sim_commands.h"
#include "soak_device.h"
#include "soak_link.h"
#include "soak_load.h"
#include "soak_log.h"
#include "tool_clock.h"
#include "tool_commands.h"
#include "xcp_types.h"

namespace {

const char* const USAGE =
    "usage: motordash-soak [--minutes M] [--seed N] [--keep]\n"
    "  Runs this build's dash in a fresh device root for M minutes (10 by default, any\n"
    "  length) with both CAN ports at full load, measurement on all three lists, settings\n"
    "  written by calibration, logging to a stick that is pulled and ejected, and keys\n"
    "  pressed at random (--seed for another sequence); then checks and reports. The\n"
    "  secrets for the calibration link come from $XCP_SECRETS (CAL,DAQ,STIM,PGM).\n"
    "  --keep leaves the root and the programs' output behind; a failed soak always does.\n"
    "  Exit code 0 when every check passed, 1 when one failed, 2 for a wrong call.\n";

// Resident memory, sampled each second, is flat when what it grew by after the warm-up
// stays within the larger of these: a leak of reachable memory grows without bound.
// (Unreachable memory is the leak sanitizer's, at the dash's end.) The sanitizer's own
// bookkeeping keeps growing a little long after the dash's heap has settled: the
// allocation stacks it records, and its allocator's regions as the mix of sizes moves.
constexpr uint64_t RSS_GROWTH_LIMIT_KB = 4096;
constexpr double RSS_GROWTH_LIMIT_SHARE = 0.10;
constexpr double WARMUP_SHARE = 0.25;  // of the loaded time, at least WARMUP_MIN_S
constexpr double WARMUP_MIN_S = 20;
// Freed memory waits in the address sanitizer's quarantine, 256 MiB of it by default,
// and the text engine's glyph cache frees and allocates megabytes a second: with a
// small quarantine, resident memory shows what the dash holds rather than what it churns.
constexpr unsigned ASAN_QUARANTINE_MB = 1;
// The panel's 60 Hz paces the main loop; half of it is a loop that misses every other
// vertical blank.
constexpr double MIN_PAGE_RATE = 30;
// A tick may be lost to a pass that does the logger's file work: a sync holds the tick
// up. Elsewhere this PC may hold the signal thread up now and then (other programs at
// its real-time priority, the machine shared), and so may the application lock, which
// the PC needs and the dash's one processor does not: at most one lost tick in this
// many passes. A dash that held its ticks up by itself, at every screen change or CAN
// burst, would lose far more.
constexpr unsigned LOST_TICKS_PER_PASS_ELSEWHERE = 500;
constexpr int STOP_GRACE_MS = 20000;  // the leak check at exit takes its time
constexpr int SPLASH_MS = 3000;

// A setting the calibration tool writes, and the values it chooses from. A quarter of
// the writes during the run take any value of the setting's type instead: a tool may
// write anything.
struct SETTING_T {
    const char* name;
    int lo, hi;
};
constexpr SETTING_T m_settings[] = {
    {"AN1_Voffset", -100, 100},     {"CurrentSensorAmpHigh", 0, 500}, {"CurrentSensorAmpLow", -500, 0},
    {"PRESSURE_UNITS", 1, 3},       {"CURRENT_QUAD_SCREEN", 1, 15},   {"SELECTED_QUAD", 1, 4},
    {"AF_UNITS", 1, 3},             {"SPEED_UNITS", 1, 3},            {"TEMP_UNITS", 1, 2},
    {"LANGUAGE", 0, 1},             {"USER_PROFILE", 1, 3},           {"PROFILE_GAUGE_COUNT", 15, 15},
    {"PROFILE_1", 0, 0},            {"PROFILE_2", 0, 0},              {"PROFILE_3", 0, 0},
    {"CURRENT_SCREEN", 1, 4},       {"BoostControl", 0, 4},           {"TractionControl", 0, 1},
    {"HighOctane", 0, 1},           {"ALT_TIRE", 0, 1},
};

// The variables of the three lists. List 0 runs on every pass and is kept whole: it is
// the logger's account of rows and syncs.
const char* const m_list0[] = {"FrameCnt", "SyncCount", "SyncAttempts", "LastSync", "LoggingActive", "FileOpen"};
const char* const m_list1[] = {"RPM", "MAP", "TPS", "MIL", "EditPage", "Time_Since_Run", "LoggBitActive"};
const char* const m_list2[] = {"BoostControl", "TractionControl", "HighOctane", "ALT_TIRE", "USER_PROFILE",
                               "CURRENT_QUAD_SCREEN", "LogNumber"};
enum { L0_FRAMES, L0_SYNCS, L0_ATTEMPTS, L0_LAST_SYNC, L0_ACTIVE, L0_OPEN };
constexpr uint8_t m_listEvents[] = {0, 1, 2};
constexpr double m_listRates[] = {100, 100, 10};  // samples a second

struct SOAK_T {
    // The call.
    double minutes = 10;
    uint64_t seed = 1;
    bool keep = false;
    uint32_t secrets[4] = {};
    // The device.
    std::string bin, work, root;
    pid_t bus = -1, dash = -1;
    int dashStarts = 0;
    SOAK_LINK_T link;
    SOAK_LOAD_T load;
    // One sequence each for the keys, the settings and the stick, so that each is the
    // same for a seed however the others fall in time.
    std::mt19937_64 keyRng, settingRng, stickRng;
    std::vector<std::string> failures;
    // What the run saw.
    std::vector<std::pair<double, uint64_t>> rss;  // seconds into the load, KiB
    uint64_t rssStart = 0;
    uint64_t panStart = 0, panEnd = 0;
    double loadSeconds = 0;
    uint64_t loadStartNs = 0, loadEndNs = 0;
    unsigned keyPresses = 0, settingWrites = 0, pulls = 0, ejects = 0, inserts = 0;
    std::vector<uint8_t> written;  // the settings' bytes as the last round wrote them
    std::vector<uint8_t> settingsBefore, settingsAfter;
    uint32_t frameCnt = 0;
    std::vector<SOAK_DAQ_LIST_T> lists;  // as the run left them
};

volatile sig_atomic_t m_interrupted = 0;

void _onSignal(int)
{
    m_interrupted = 1;
}

void _fail(SOAK_T* s, const char* format, ...)
{
    char text[512];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    s->failures.push_back(text);
    printf("motordash-soak: FAIL: %s\n", text);
}

double _seconds(uint64_t fromNs, uint64_t toNs)
{
    return (double)(toNs - fromNs) / 1e9;
}

void _sleepMs(int ms)
{
    usleep((useconds_t)ms * 1000);
}

int _uniform(std::mt19937_64& rng, int lo, int hi)
{
    return std::uniform_int_distribution<int>(lo, hi)(rng);
}

// ---- The device's programs ------------------------------------------------------------

bool _startBus(SOAK_T* s)
{
    const std::string out = s->work + "/bus.out";
    s->bus = SoakSpawn({s->bin + "/motordash-can", "bus", s->root}, {}, out, s->work + "/bus.err");
    for (int waited = 0; waited < 10000; waited += 50) {
        if (SoakReadFile(out).find("serving") != std::string::npos) return true;
        _sleepMs(50);
    }
    _fail(s, "the CAN bus did not start (%s)", SoakReadFile(s->work + "/bus.err").c_str());
    return false;
}

std::string _dashOutput(const SOAK_T* s, const char* which)
{
    return s->work + "/dash-" + std::to_string(s->dashStarts) + "." + which;
}

// Started, and its main loop running: the compositor pans.
bool _startDash(SOAK_T* s)
{
    s->dashStarts++;
    std::vector<std::string> env = {"DASH_ROOT=" + s->root};
    // Reports with their stacks, and the quarantine kept small (above); a tree without
    // sanitizers ignores these. Options given to the soak come after ours and win.
    const char* asan = getenv("ASAN_OPTIONS");
    const char* ubsan = getenv("UBSAN_OPTIONS");
    env.push_back(std::string("ASAN_OPTIONS=quarantine_size_mb=") + std::to_string(ASAN_QUARANTINE_MB) +
                  (asan ? std::string(":") + asan : ""));
    env.push_back(std::string("UBSAN_OPTIONS=print_stacktrace=1") + (ubsan ? std::string(":") + ubsan : ""));
    s->dash = SoakSpawn({s->bin + "/motordash"}, env, _dashOutput(s, "out"), _dashOutput(s, "err"));
    for (int waited = 0; waited < 30000; waited += 50) {
        uint64_t pans = 0;
        if (SoakPanCount(s->root, &pans) && pans >= 2) return true;
        int status;
        if (waitpid(s->dash, &status, WNOHANG) == s->dash) {
            s->dash = -1;
            _fail(s, "the dash ended at its start: %s", SoakDescribeStatus(status).c_str());
            return false;
        }
        _sleepMs(50);
    }
    _fail(s, "the dash's main loop did not run within 30 s");
    return false;
}

// SIGTERM, as the device's power-off does: exit code 0 and nothing from the sanitizers.
void _stopDash(SOAK_T* s)
{
    if (s->dash <= 0) return;
    kill(s->dash, SIGTERM);
    int status = 0;
    if (!SoakWait(s->dash, STOP_GRACE_MS, &status)) {
        kill(s->dash, SIGKILL);
        waitpid(s->dash, &status, 0);
        _fail(s, "dash start %d did not end within %d s of SIGTERM", s->dashStarts, STOP_GRACE_MS / 1000);
    } else if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        _fail(s, "dash start %d ended with %s", s->dashStarts, SoakDescribeStatus(status).c_str());
    }
    s->dash = -1;
}

void _checkDashOutput(SOAK_T* s)
{
    const std::string path = _dashOutput(s, "err");
    const std::vector<std::string> lines = SoakSanitizerLines(SoakReadFile(path));
    if (lines.empty()) return;
    _fail(s, "dash start %d reported %zu sanitizer or crash line(s), first: %s (all in %s)", s->dashStarts,
          lines.size(), lines[0].c_str(), path.c_str());
}

// False once the dash has ended by itself (a crash), which is reported; what it left on
// stderr is looked at with the rest of its output.
bool _dashAlive(SOAK_T* s)
{
    int status;
    if (s->dash <= 0) return false;
    if (waitpid(s->dash, &status, WNOHANG) != s->dash) return true;
    s->dash = -1;
    _fail(s, "the dash ended during the run: %s", SoakDescribeStatus(status).c_str());
    return false;
}

// ---- The calibration link -----------------------------------------------------------

bool _xcp(SOAK_T* s, const XCP_REPLY_T& r, const char* what)
{
    if (r.status == XCP_MASTER_OK) return true;
    _fail(s, "%s: %s", what, XcpMasterDescribe(s->link.master, r).c_str());
    return false;
}

// Connected (the dash answers once its tasks run), CAL/PAG and DAQ unlocked.
bool _session(SOAK_T* s)
{
    XCP_REPLY_T r;
    for (int tries = 0; tries < 20; tries++) {
        r = XcpMasterConnect(&s->link.master);
        if (r.status == XCP_MASTER_OK) break;
    }
    if (!_xcp(s, r, "CONNECT")) return false;
    XcpMasterCommModeInfo(&s->link.master);
    return _xcp(s, XcpMasterUnlock(&s->link.master, XCP_RESOURCE_CAL_PAG, s->secrets[0]), "unlocking CAL/PAG") &&
           _xcp(s, XcpMasterUnlock(&s->link.master, XCP_RESOURCE_DAQ, s->secrets[1]), "unlocking DAQ");
}

const XCP_MAP_FIELD_T& _field(const char* name)
{
    return *XcpMapFindField(name);
}

std::vector<uint8_t> _bytes(const XCP_MAP_FIELD_T& f, int64_t value)
{
    std::vector<uint8_t> bytes;
    for (uint32_t i = 0; i < XcpMapKindSize(f.kind); i++) bytes.push_back((uint8_t)((uint64_t)value >> (8 * i)));
    return bytes;
}

// A value for one element of a setting: from its table, or any of its type.
int64_t _settingValue(SOAK_T* s, const SETTING_T& setting, bool anyValue)
{
    const XCP_MAP_FIELD_T& f = _field(setting.name);
    if (anyValue) {
        const uint64_t bits = s->settingRng();
        return f.kind == XCP_KIND_S16 ? (int16_t)bits : (int64_t)(bits & ((1ull << (8 * XcpMapKindSize(f.kind))) - 1));
    }
    // Gauge words from the build's own profile.
    if (f.kind == XCP_KIND_U16 && f.elements > 1) {
        return (&CONSTVariables.PROFILE_DEFAULT[0][0])[_uniform(s->settingRng, 0, PROFILE_WORDS - 1)];
    }
    return _uniform(s->settingRng, setting.lo, setting.hi);
}

void _writeRandomSetting(SOAK_T* s)
{
    const SETTING_T& setting = m_settings[_uniform(s->settingRng, 0, (int)std::size(m_settings) - 1)];
    const XCP_MAP_FIELD_T& f = _field(setting.name);
    const uint32_t element = (uint32_t)_uniform(s->settingRng, 0, f.elements - 1);
    const int64_t value = _settingValue(s, setting, _uniform(s->settingRng, 0, 3) == 0);
    const XCP_REPLY_T r = XcpMasterWrite(&s->link.master, f.addr + element * XcpMapKindSize(f.kind), _bytes(f, value));
    if (_xcp(s, r, (std::string("writing ") + setting.name).c_str())) s->settingWrites++;
}

// The last round: every setting of the table whole, values a driver could have chosen.
bool _writeAllSettings(SOAK_T* s)
{
    s->written.assign(EEEnd - EEStart, 0);
    for (const SETTING_T& setting : m_settings) {
        const XCP_MAP_FIELD_T& f = _field(setting.name);
        std::vector<uint8_t> bytes;
        for (uint32_t i = 0; i < f.elements; i++) {
            const std::vector<uint8_t> one = _bytes(f, _settingValue(s, setting, false));
            bytes.insert(bytes.end(), one.begin(), one.end());
        }
        if (!_xcp(s, XcpMasterWrite(&s->link.master, f.addr, bytes), (std::string("writing ") + setting.name).c_str()))
            return false;
        std::copy(bytes.begin(), bytes.end(), s->written.begin() + (long)(f.addr - EEStart));
        s->settingWrites++;
    }
    return true;
}

bool _readSettings(SOAK_T* s, std::vector<uint8_t>* out)
{
    return _xcp(s, XcpMasterRead(&s->link.master, EEStart, EEEnd - EEStart, out), "reading the settings");
}

bool _readU32(SOAK_T* s, const char* name, uint32_t* value)
{
    std::vector<uint8_t> bytes;
    if (!_xcp(s, XcpMasterRead(&s->link.master, _field(name).addr, 4, &bytes), name) || bytes.size() != 4)
        return false;
    *value = (uint32_t)bytes[0] | (uint32_t)bytes[1] << 8 | (uint32_t)bytes[2] << 16 | (uint32_t)bytes[3] << 24;
    return true;
}

// The tool's eject request: while it is set the logger stays off.
void _setEject(SOAK_T* s, uint8_t on)
{
    _xcp(s, XcpMasterWrite(&s->link.master, _field("USER_Eject_Bool").addr, {on}), "writing USER_Eject_Bool");
}

std::vector<SOAK_DAQ_LIST_T> _lists(void)
{
    std::vector<SOAK_DAQ_LIST_T> lists(3);
    const std::vector<std::vector<const char*>> names = {{std::begin(m_list0), std::end(m_list0)},
                                                         {std::begin(m_list1), std::end(m_list1)},
                                                         {std::begin(m_list2), std::end(m_list2)}};
    for (size_t l = 0; l < lists.size(); l++) {
        for (const char* name : names[l]) lists[l].fields.push_back(&_field(name));
        lists[l].event = m_listEvents[l];
    }
    lists[0].keepSamples = true;
    return lists;
}

// ---- The run --------------------------------------------------------------------------

enum STICK_STATE_T { STICK_IN, STICK_EJECTING, STICK_OUT };

// Keys, calibration and the stick until the time is up, resident memory each second.
void _run(SOAK_T* s)
{
    const uint64_t start = s->loadStartNs;
    const uint64_t end = start + (uint64_t)(s->minutes * 60e9);
    auto ms = [](int v) { return (uint64_t)v * 1000000u; };
    uint64_t nextKey = start + ms(1000), releaseKey = 0, nextWrite = start + ms(500), nextRss = start;
    uint64_t nextStick = start + ms(_uniform(s->stickRng, 10000, 20000)), stickDeadline = 0;
    int key = 0;
    bool ejectNext = false;
    STICK_STATE_T stick = STICK_IN;
    std::string error;
    while (!m_interrupted && _dashAlive(s)) {
        const uint64_t now = tool_monotonic_ns();
        if (now >= end) break;
        if (now >= nextRss) {
            s->rss.push_back({_seconds(start, now), SoakResidentKb(s->dash)});
            nextRss += ms(1000);
        }
        // One key at a time: mostly short presses, a few held for the hold actions.
        if (key && now >= releaseKey) {
            sim_key_set(s->root, key, false);
            key = 0;
            nextKey = now + ms(_uniform(s->keyRng, 100, 1500));
        } else if (!key && now >= nextKey) {
            key = _uniform(s->keyRng, 1, (int)KEYPAD_MAX_KEYS);
            sim_key_set(s->root, key, true);
            s->keyPresses++;
            const bool hold = _uniform(s->keyRng, 0, 4) == 0;
            releaseKey = now + ms(hold ? _uniform(s->keyRng, 800, 2500) : _uniform(s->keyRng, 60, 300));
        }
        if (now >= nextWrite) {
            _writeRandomSetting(s);
            nextWrite = now + ms(_uniform(s->settingRng, 300, 3000));
        }
        // The stick: pulled without warning, or ejected by the tool's request and the
        // scripts' answer; back in after a few seconds either way.
        if (stick == STICK_IN && now >= nextStick) {
            if (ejectNext) {
                _setEject(s, 1);
                stick = STICK_EJECTING;
                stickDeadline = now + ms(5000);
            } else if (SoakStickPull(s->root, &error)) {
                s->pulls++;
                stick = STICK_OUT;
                stickDeadline = now + ms(_uniform(s->stickRng, 2000, 5000));
            } else {
                _fail(s, "%s", error.c_str());
            }
            ejectNext = !ejectNext;
        } else if (stick == STICK_EJECTING) {
            if (SoakStickAnswerEject(s->root, s->dash)) {
                s->ejects++;
                _setEject(s, 0);
                stick = STICK_OUT;
                stickDeadline = now + ms(_uniform(s->stickRng, 2000, 5000));
            } else if (now >= stickDeadline) {
                _fail(s, "the dash did not ask the scripts to eject the stick within 5 s of the request");
                _setEject(s, 0);
                SoakStickPull(s->root, &error);
                stick = STICK_OUT;
            }
        } else if (stick == STICK_OUT && now >= stickDeadline) {
            if (SoakStickInsert(s->root, &error)) s->inserts++;
            else _fail(s, "%s", error.c_str());
            stick = STICK_IN;
            nextStick = now + ms(_uniform(s->stickRng, 15000, 35000));
        }
        _sleepMs(20);
    }
    if (key) sim_key_set(s->root, key, false);
    if (stick == STICK_EJECTING) _setEject(s, 0);
    if (stick != STICK_IN && SoakStickInsert(s->root, &error)) s->inserts++;
}

// ---- The checks -----------------------------------------------------------------------

// The logger's file work in a pass, as list 0 shows it: a sync, an open or a close in
// the pass, or a row written just before it.
bool _fileWork(const SOAK_SAMPLE_T& before, const SOAK_SAMPLE_T& pass)
{
    for (int v : {L0_FRAMES, L0_ATTEMPTS, L0_LAST_SYNC, L0_OPEN})
        if (before.values[v] != pass.values[v]) return true;
    return false;
}

void _checkLogs(SOAK_T* s)
{
    const std::vector<SOAK_LOG_FILE_T> files = SoakReadLogs(SoakStickFiles(s->root));
    std::vector<SOAK_LOGGER_PASS_T> passes;
    for (const SOAK_SAMPLE_T& x : s->lists[0].kept)
        passes.push_back({x.values[L0_FRAMES], x.values[L0_LAST_SYNC], x.values[L0_OPEN] != 0});
    const std::vector<SOAK_LOG_ACCOUNT_T> accounts = SoakLogAccounts(passes);
    uint64_t rows = 0, skipped = 0;
    for (size_t i = 0; i < files.size(); i++) {
        const SOAK_LOG_FILE_T& f = files[i];
        rows += f.rows;
        skipped += f.rowsMissing;
        if (f.headers != 1) _fail(s, "%s holds %u headers", f.name.c_str(), f.headers);
        if (f.badRows) _fail(s, "%s holds %llu broken rows", f.name.c_str(), (unsigned long long)f.badRows);
        if (i >= accounts.size()) continue;
        // A real stick pulled keeps what was synced; the simulated one loses nothing.
        const SOAK_LOG_ACCOUNT_T& a = accounts[i];
        if (f.rows < a.synced - a.opened)
            _fail(s, "%s holds %llu rows, but %u were synced to it", f.name.c_str(), (unsigned long long)f.rows,
                  a.synced - a.opened);
        if (f.rows != a.closed - a.opened)
            _fail(s, "%s holds %llu rows, the dash wrote %u to it", f.name.c_str(), (unsigned long long)f.rows,
                  a.closed - a.opened);
    }
    if (files.size() != accounts.size())
        _fail(s, "the stick holds %zu log files, the dash opened %zu", files.size(), accounts.size());
    if (rows != s->frameCnt)
        _fail(s, "the stick holds %llu rows, the dash counts %u written", (unsigned long long)rows, s->frameCnt);
    printf("log            %zu files, %llu rows (the dash counts %u), %llu rows skipped by their time stamps\n",
           files.size(), (unsigned long long)rows, s->frameCnt, (unsigned long long)skipped);
}

void _checkSettings(SOAK_T* s)
{
    unsigned compared = 0;
    for (const XCP_MAP_FIELD_T& f : XcpMapFields) {
        if (f.record != XCP_RECORD_EE) continue;
        const uint32_t at = f.addr - EEStart;
        const auto before = s->settingsBefore.begin() + at, after = s->settingsAfter.begin() + at;
        const bool wasWritten = std::any_of(std::begin(m_settings), std::end(m_settings),
                                            [&](const SETTING_T& t) { return !strcmp(t.name, f.name); });
        if (wasWritten && !std::equal(before, before + f.size, s->written.begin() + at))
            _fail(s, "%s is not what the tool wrote last", f.name);
        if (!std::equal(before, before + f.size, after)) _fail(s, "%s changed across the power cycle", f.name);
        compared++;
    }
    printf("settings       %u written during the run; %u settings compared across the power cycle\n",
           s->settingWrites, compared);
}

void _checkMemory(SOAK_T* s)
{
    if (s->rss.empty()) return;
    if (FILE* f = fopen((s->work + "/rss.csv").c_str(), "w")) {
        fprintf(f, "seconds,rss_kib\n");
        for (const auto& [t, kb] : s->rss) fprintf(f, "%.0f,%llu\n", t, (unsigned long long)kb);
        fclose(f);
    }
    const double warmup = std::max(WARMUP_MIN_S, s->loadSeconds * WARMUP_SHARE);
    uint64_t atWarm = s->rss.front().second;
    for (const auto& [t, kb] : s->rss)
        if (t <= warmup) atWarm = kb;
    const uint64_t end = s->rss.back().second;
    printf("memory         resident %llu KiB at start, %llu KiB after %.0f s of warm-up, %llu KiB at the end\n",
           (unsigned long long)s->rssStart, (unsigned long long)atWarm, warmup, (unsigned long long)end);
    const uint64_t limit = std::max(RSS_GROWTH_LIMIT_KB, (uint64_t)(atWarm * RSS_GROWTH_LIMIT_SHARE));
    if (s->rss.back().first <= warmup) {
        printf("memory         (the run was too short to look past the warm-up)\n");
    } else if (end > atWarm + limit) {
        _fail(s, "resident memory grew by %llu KiB after the warm-up (limit %llu KiB; each second in %s/rss.csv)",
              (unsigned long long)(end - atWarm), (unsigned long long)limit, s->work.c_str());
    }
}

void _checkTicks(SOAK_T* s)
{
    uint64_t passes = 0;
    const int64_t lost = SoakLostTicks(s->link.settingsFrameNs, s->loadStartNs, s->loadEndNs, &passes);
    const SOAK_TICKS_T t = SoakTickAccount(s->lists[0].kept, _fileWork);
    printf("ticks          %llu foreground passes, %lld ticks lost (by the settings frame); by list 0: %llu passes, "
           "%llu lost, %llu to the logger's file work, %llu elsewhere; longest gap %u ms\n",
           (unsigned long long)passes, (long long)lost, (unsigned long long)t.passes, (unsigned long long)t.lost,
           (unsigned long long)t.lostToFileWork, (unsigned long long)t.lostElsewhere, t.longestGapMs);
    if (passes == 0) _fail(s, "no settings frame came from the dash: its foreground task did not run");
    if (t.lostElsewhere * LOST_TICKS_PER_PASS_ELSEWHERE > t.passes) {
        std::string when;
        for (size_t i = 0; i < t.lateElsewhere.size() && i < 5; i++) {
            char at[32];
            snprintf(at, sizeof(at), "%s%.1f s", i ? ", " : "", _seconds(s->loadStartNs, s->lists[0].kept[t.lateElsewhere[i]].arrivedNs));
            when += at;
        }
        _fail(s, "%llu ticks lost elsewhere than to the logger's file work, more than one in %u passes (at %s%s)",
              (unsigned long long)t.lostElsewhere, LOST_TICKS_PER_PASS_ELSEWHERE, when.c_str(),
              t.lateElsewhere.size() > 5 ? " ..." : "");
    }
}

void _checkPages(SOAK_T* s)
{
    const double rate = (double)(s->panEnd - s->panStart) / s->loadSeconds;
    printf("pages          %.1f a second (%llu pans)\n", rate, (unsigned long long)(s->panEnd - s->panStart));
    if (rate < MIN_PAGE_RATE) _fail(s, "the main loop showed %.1f pages a second, below %.0f", rate, MIN_PAGE_RATE);
}

void _checkLoad(SOAK_T* s)
{
    for (int port = 0; port < 2; port++) {
        const uint64_t sent = s->load.sent[port].load();
        printf("can%d           %llu frames sent, %.0f a second (target %llu), %llu given up; %llu came from the dash\n",
               port, (unsigned long long)sent, sent / s->loadSeconds, (unsigned long long)SOAK_FRAMES_PER_SECOND,
               (unsigned long long)s->load.behind[port].load(), (unsigned long long)s->link.dashFrames[port]);
        if (sent < 0.95 * SOAK_FRAMES_PER_SECOND * s->loadSeconds)
            printf("can%d           NOTE: this machine did not sustain the full rate\n", port);
    }
    // The bus keeps frames for a client that falls behind, and drops them past ten seconds.
    if (SoakReadFile(s->work + "/bus.err").find("does not read") != std::string::npos)
        _fail(s, "the dash fell behind the bus: frames to it were dropped (see %s/bus.err)", s->work.c_str());
    for (size_t l = 0; l < s->lists.size(); l++) {
        const SOAK_DAQ_LIST_T& list = s->lists[l];
        const double rate = list.samples / s->loadSeconds;
        printf("daq list %zu     event %u: %llu samples, %.1f a second, %llu sets with a frame missing\n", l,
               list.event, (unsigned long long)list.samples, rate, (unsigned long long)list.broken);
        if (rate < 0.9 * m_listRates[l])
            _fail(s, "list %zu sampled %.1f times a second, expected %.0f", l, rate, m_listRates[l]);
    }
}

int _usage(void)
{
    fputs(USAGE, stderr);
    return 2;
}

// The end of the loaded run: the log request off, the last settings written and stored,
// what the dash counted read, the lists stopped.
void _finish(SOAK_T* s)
{
    s->load.logRequest = false;
    _sleepMs(1500);
    if (_writeAllSettings(s)) {
        _sleepMs(2500);  // the store writes within a second of a change
        _readSettings(s, &s->settingsBefore);
    }
    _readU32(s, "FrameCnt", &s->frameCnt);
    s->loadEndNs = tool_monotonic_ns();
    s->loadSeconds = _seconds(s->loadStartNs, s->loadEndNs);
    SoakPanCount(s->root, &s->panEnd);
    _xcp(s, SoakLinkStopDaq(&s->link), "stopping the lists");
    XcpMasterDisconnect(&s->link.master);
    std::lock_guard<std::mutex> guard(s->link.lock);
    s->lists = s->link.lists;
}

// The power cycle: off, on again, and the settings read back.
void _powerCycle(SOAK_T* s)
{
    _stopDash(s);
    _checkDashOutput(s);
    if (!_startDash(s)) return;
    // The splash stands for the first 2 s, and the screen after it records its number.
    _sleepMs(SPLASH_MS);
    if (_session(s)) _readSettings(s, &s->settingsAfter);
    XcpMasterDisconnect(&s->link.master);
    _stopDash(s);
    _checkDashOutput(s);
}

}  // namespace

int main(int argc, char** argv)
{
    SOAK_T soak;
    SOAK_T* s = &soak;
    for (int i = 1; i < argc; i++) {
        const std::string a = argv[i];
        if ((a == "--minutes" || a == "--seed") && i + 1 < argc) {
            char* end = nullptr;
            if (a == "--minutes") s->minutes = strtod(argv[++i], &end);
            else s->seed = strtoull(argv[++i], &end, 10);
            if (!end || *end || !(s->minutes > 0)) return _usage();
        } else if (a == "--keep") {
            s->keep = true;
        } else if (a == "--help" || a == "-h") {
            fputs(USAGE, stdout);
            return 0;
        } else {
            return _usage();
        }
    }
    const char* secrets = getenv("XCP_SECRETS");
    if (!secrets || !XcpMasterSecrets(secrets, s->secrets)) {
        fprintf(stderr, "motordash-soak: set XCP_SECRETS to the dash's four secrets CAL,DAQ,STIM,PGM\n");
        return 2;
    }
    s->keyRng.seed(s->seed * 3);
    s->settingRng.seed(s->seed * 3 + 1);
    s->stickRng.seed(s->seed * 3 + 2);
    s->load.seed = s->seed;
    s->bin = tool_bin_dir();
    char work[] = "/tmp/motordash-soak-XXXXXX";
    if (!mkdtemp(work)) {
        fprintf(stderr, "motordash-soak: cannot make a folder in /tmp: %s\n", strerror(errno));
        return 1;
    }
    s->work = work;
    s->root = s->work + "/root";
    signal(SIGPIPE, SIG_IGN);
    signal(SIGINT, _onSignal);
    signal(SIGTERM, _onSignal);
    setvbuf(stdout, nullptr, _IOLBF, 0);
    printf("motordash-soak: %g minutes in %s, seed %llu\n", s->minutes, s->work.c_str(), (unsigned long long)s->seed);

    int status = 0;
    const pid_t init = SoakSpawn({s->bin + "/motordash-sim", "init", s->root, "--product", "310"}, {},
                                 s->work + "/init.out", s->work + "/init.err");
    if (init < 0 || !SoakWait(init, 30000, &status) || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        fprintf(stderr, "motordash-soak: motordash-sim init failed: %s\n", SoakReadFile(s->work + "/init.err").c_str());
        return 1;
    }
    mkdir((s->root + "/" + SOAK_STICK_FOLDER).c_str(), 0755);

    std::string error;
    std::thread loader;
    bool ran = false;
    if (_startBus(s) && _startDash(s)) {
        s->rssStart = SoakResidentKb(s->dash);
        if (!SoakLinkOpen(&s->link, s->root, &error)) {
            _fail(s, "%s", error.c_str());
        } else if (_session(s) && _xcp(s, SoakLinkStartDaq(&s->link, _lists()), "starting the lists")) {
            s->load.fds[0] = s->link.can[0];
            s->load.fds[1] = s->link.can[1];
            loader = std::thread(SoakLoadRun, &s->load);
            if (SoakStickInsert(s->root, &error)) s->inserts++;
            s->loadStartNs = tool_monotonic_ns();
            SoakPanCount(s->root, &s->panStart);
            _run(s);
            ran = !m_interrupted && s->dash > 0;
            if (ran) _finish(s);
        }
    }
    s->load.stop = true;
    if (loader.joinable()) loader.join();
    if (ran) {
        _powerCycle(s);
    } else {
        _stopDash(s);
        _checkDashOutput(s);
    }
    SoakLinkClose(&s->link);
    if (s->bus > 0) {
        kill(s->bus, SIGTERM);
        SoakWait(s->bus, 5000, &status);
    }
    if (ran) {
        printf("\n---- motordash-soak: %.1f minutes at load, seed %llu ----\n", s->loadSeconds / 60,
               (unsigned long long)s->seed);
        _checkLoad(s);
        _checkTicks(s);
        _checkPages(s);
        _checkMemory(s);
        _checkLogs(s);
        if (s->settingsBefore.size() == s->settingsAfter.size() && !s->settingsBefore.empty()) _checkSettings(s);
        else _fail(s, "the settings could not be read before and after the power cycle");
        printf("activity       %u key presses; stick pulled %u times, ejected %u times, inserted %u times\n",
               s->keyPresses, s->pulls, s->ejects, s->inserts);
    } else if (m_interrupted) {
        _fail(s, "interrupted");
    }
    if (s->failures.empty()) {
        printf("motordash-soak: PASSED\n");
        std::error_code ignored;
        if (!s->keep) std::filesystem::remove_all(s->work, ignored);
        return 0;
    }
    printf("motordash-soak: FAILED, %zu check(s); the root and the programs' output are in %s\n", s->failures.size(),
           s->work.c_str());
    for (const std::string& f : s->failures) printf("  - %s\n", f.c_str());
    return 1;
}
