#include "ioboard_drv.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <sched.h>

#include "ioboard_fw.h"
#include "platform_sysinfo.h"
#include "timer_drv.h"
#include "uart_drv.h"

namespace {

constexpr U32 RECEIVE_BUFFER_SIZE = 10240;
constexpr U32 SENTENCE_BUFFER_SIZE = 1024;
constexpr U32 SENTENCE_MAX_LENGTH = 1021;  // a longer one without its carriage return is noise
constexpr U32 SENTENCE_MIN_LENGTH = 5;     // "$W*A5"
constexpr U32 COMMAND_BUFFER_SIZE = 255;
constexpr U32 REPLY_TIMEOUT_MS = 1000;
constexpr U32 COLLECT_MS = 10;  // lets the stream gather, so that one read takes many sentences
constexpr U32 SETTLE_MS = 250;
constexpr int THREAD_PRIORITY = 50;
constexpr S32 LATE_REFERENCE_AFTER_S = 29;  // the rates change once more than this has passed
constexpr float LATE_REFERENCE_RATE = 0.1f;
constexpr float START_FILTER_RATE = 0.5f;
constexpr U8 START_PWM_FREQUENCY = 255;
constexpr U32 MIN_PWM_FREQUENCY = 3;
constexpr U8 DUTY_ON = 255;
constexpr U32 BANK_MASK = 0x7F;  // the seven channels of a bank

constexpr float ADC_REFERENCE = 2.048f;
constexpr float LOW_GAIN_FACTOR = 4.05f;
constexpr float VOLTAGE_REFERENCE = 4.096f;
constexpr float VOLTAGE_DIVIDER = 11.0f;
constexpr float SMALL_DASH_SUPPLY_OFFSET = 0.85f;  // a diode drop ahead of the small dash's monitor
constexpr float TACH_PERIOD_PER_COUNT = 3.1847f;
constexpr float TACH_CLOCK = 312500.0f;
constexpr U32 TACH_COUNT_MAX = 0xFFFD;  // above: stopped or overflowed
constexpr float START_ZERO_OHM_OFFSET = 180.0f;

constexpr float cal_table[IOBOARD_CAL_TABLE_SIZE] = {
    1.0f,       1.01f,      1.01f,   1.01f,      1.0175f,  1.02f,     1.0266666f, 1.0342857f, 1.04625f, 1.06f, 1.08f,
    1.1018182f, 1.1283333f, 1.1592308f, 1.1957142f, 1.24f, 1.290625f, 1.35f,      1.425f,     1.586842f, 2.17f};

// One bit for each sentence kind seen since the last bring-up.
enum : U32 {
    RX_L = 0x0001,
    RX_I = 0x0002,
    RX_K = 0x0004,
    RX_E = 0x0008,
    RX_S = 0x0010,
    RX_G = 0x0020,
    RX_P = 0x0040,
    RX_O = 0x0100,
    RX_J = 0x0200,
    RX_N = 0x0400,
    RX_D = 0x0800,
    RX_R = 0x1000,
    RX_H = 0x2000,
};
constexpr U32 COMPLETE_MODE_1 = 0x007F;
constexpr U32 COMPLETE_OTHER = 0x3F7F;

enum : U32 { RUN_BRING_UP = 0, RUN_APPLICATION = 1 };
enum : U32 { START_VERSION_CHECK = 0, START_STREAMING = 1 };

struct IOBOARD_DATA_T {
    // Control
    U32 isOpen;
    U32 productId;
    U32 runningState;
    U32 startupState;
    U32 receivedMask;
    U32 bootloaderVersion;
    U32 applicationVersion;
    U32 activeStreamMode;
    S32 streamStart;
    U32 referenceRatesSwitched;
    U32 wantedStreamMode;
    // Wanted configuration
    float referenceRates[IOBOARD_NUMBER_REFERENCES];
    float channelRates[IOBOARD_NUMBER_ADC_MUX_CHANNELS];
    U32 resistanceMask;
    U32 highGainMask;
    U8 pwmFrequency;
    U8 outputDuty[IOBOARD_NUMBER_RELAY_OUTPUTS];
    // Calibration and working values
    IOBOARD_WORKING_DATA_T work;
    // Published values
    float supplyVoltage;
    float analogue[IOBOARD_NUMBER_ADC_MUX_CHANNELS];
    BOOL switchState[IOBOARD_NUMBER_SWITCH_INPUTS];
    U16 switchCount[IOBOARD_NUMBER_SWITCH_INPUTS];
    BOOL extraSwitchState;
    U16 extraSwitchCount;
    float tachFrequency;
    float tachPeriod;
};

constexpr IOBOARD_DATA_T _startValues(void)
{
    IOBOARD_DATA_T d{};
    d.wantedStreamMode = 1;
    for (float& rate : d.referenceRates) rate = START_FILTER_RATE;
    for (float& rate : d.channelRates) rate = START_FILTER_RATE;
    d.pwmFrequency = START_PWM_FREQUENCY;
    d.work.calZeroOhmOffset = START_ZERO_OHM_OFFSET;
    for (U32 i = 0; i < IOBOARD_CAL_TABLE_SIZE; i++) d.work.calTable[i] = cal_table[i];
    for (float& factor : d.work.custCalTable) factor = 1.0f;
    return d;
}

// The stream as it comes off the port, and the sentence being collected from it. Only
// the thread that talks to the board touches it (the probe before the thread exists).
struct PARSER_T {
    U8 receive[RECEIVE_BUFFER_SIZE];
    U32 receiveCount;
    U32 receiveIndex;
    char sentence[SENTENCE_BUFFER_SIZE];
    U32 sentenceLength;  // 0 while outside a sentence
};

pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
constinit IOBOARD_DATA_T m_data = _startValues();
PARSER_T m_parser;

pthread_t m_threadHandle;
BOOL m_hasThread = 0;
std::atomic<U32> m_stop{0};
BOOL m_probed = 0;
BOOL m_found = 0;
std::atomic<U32> m_settleMs{SETTLE_MS};
std::atomic<U32> m_replyTimeoutMs{REPLY_TIMEOUT_MS};
std::atomic<U32> m_collectMs{COLLECT_MS};

// A version reply: who answered ('b' bootloader, 'm' application) and the versions.
struct VERSION_T {
    char source;
    U32 bootloader;
    U32 application;
    U32 hardware;
};

}  // namespace

// ---------------------------------------------------------------------------------------
// Sentences

static U8 _sum(const char* text, U32 count)
{
    U8 sum = 0;
    for (U32 i = 0; i < count; i++) sum = (U8)(sum + (U8)text[i]);
    return sum;
}

BOOL ioboard_parse_hex(const char* text, U32 digits, U32* value)
{
    U32 v = 0;
    BOOL good = 1;
    for (U32 i = 0; i < digits; i++) {
        const char c = text[i];
        U32 digit;
        if (c >= '0' && c <= '9') {
            digit = (U32)(c - '0');
        } else if (c >= 'A' && c <= 'F') {
            digit = (U32)(c - 'A' + 10);
        } else if (c >= 'a' && c <= 'f') {
            digit = (U32)(c - 'a' + 10);
        } else {
            good = 0;
            break;
        }
        v = (v << 4) | digit;
    }
    *value = v;
    return good;
}

// "$", then "*" and two checksum digits at the end that match the bytes before them.
static BOOL _sentenceValid(const char* s, U32 length)
{
    if (length < SENTENCE_MIN_LENGTH || s[0] != '$' || s[length - 3] != '*') return 0;
    U32 checksum;
    return ioboard_parse_hex(s + length - 2, 2, &checksum) && checksum == _sum(s, length - 2);
}

// The next valid sentence in the receive buffer, ended in place of its carriage return.
// Its length, or 0 when the buffer is used up.
static U32 _nextSentence(PARSER_T* p)
{
    while (p->receiveIndex < p->receiveCount) {
        const U8 c = p->receive[p->receiveIndex++];
        if (c == '$') {
            p->sentence[0] = '$';
            p->sentenceLength = 1;
        } else if (c == '\r') {
            const U32 length = p->sentenceLength;
            if (length == 0) continue;
            p->sentenceLength = 0;
            p->sentence[length] = '\0';
            if (_sentenceValid(p->sentence, length)) return length;
        } else if (c == '\0') {
            p->sentenceLength = 0;
        } else if (p->sentenceLength > 0) {
            p->sentence[p->sentenceLength++] = (char)c;
            if (p->sentenceLength > SENTENCE_MAX_LENGTH) {
                puts("I/O Board: Sentence buffer overrun!");
                p->sentenceLength = 0;
            }
        }
    }
    return 0;
}

static void _parserReset(void)
{
    m_parser.receiveCount = 0;
    m_parser.receiveIndex = 0;
    m_parser.sentenceLength = 0;
}

void ioboard_sleep_ms(U32 milliseconds)
{
    // The kernel would still take its time over a sleep of nothing.
    if (milliseconds == 0) return;
    struct timespec left = {(time_t)(milliseconds / 1000), (long)(milliseconds % 1000) * 1000000L};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

BOOL ioboard_send_command(const char* format, ...)
{
    char buffer[COMMAND_BUFFER_SIZE + 4];  // room for "*", two digits and the carriage return
    va_list args;
    va_start(args, format);
    int n = vsnprintf(buffer, COMMAND_BUFFER_SIZE, format, args);
    va_end(args);
    if (n < 0) n = 0;
    if (n >= (int)COMMAND_BUFFER_SIZE) n = COMMAND_BUFFER_SIZE - 1;
    buffer[n++] = '*';
    static constexpr char HEX[] = "0123456789ABCDEF";
    const U8 sum = _sum(buffer, (U32)n);
    buffer[n++] = HEX[sum >> 4];
    buffer[n++] = HEX[sum & 0x0F];
    buffer[n++] = '\r';
    uart_write_buffer(IOBOARD_UART_PORT, reinterpret_cast<const U8*>(buffer), (U32)n);
    return 1;
}

BOOL ioboard_wait_for_reply(const char** sentence, U32* length)
{
    // Line noise keeps the port busy without a sentence: it counts as silence too.
    const U32 start = get_uptime_milliseconds();
    const U32 timeout = m_replyTimeoutMs.load();
    for (;;) {
        const U32 n = _nextSentence(&m_parser);
        if (n > 0) {
            *sentence = m_parser.sentence;
            *length = n;
            return 1;
        }
        ioboard_sleep_ms(m_collectMs.load());
        m_parser.receiveIndex = 0;
        m_parser.receiveCount = 0;
        if (get_uptime_milliseconds() - start > timeout) break;
        const U32 before = get_uptime_milliseconds();
        U32 count = 0;
        if (!uart_read_buffer_wait(IOBOARD_UART_PORT, m_parser.receive, RECEIVE_BUFFER_SIZE, timeout, &count)) {
            // A line that fails at once (hung up) is given the time a silent one takes,
            // so that the bring-up's attempts keep their pace.
            const U32 waited = get_uptime_milliseconds() - before;
            if (waited < timeout) ioboard_sleep_ms(timeout - waited);
            break;
        }
        m_parser.receiveCount = count;
    }
    puts("I/O Board: Timeout receiving data!");
    return 0;
}

// Asks the versions. A reply of 15 or 20 characters carries them at offsets 5, 10 and
// 15; the letter at offset 3 says who answered and so in which order they stand.
static BOOL ioboard_cmd_get_version_info(VERSION_T* version)
{
    uart_flush(IOBOARD_UART_PORT, 1, 0);
    ioboard_send_command("$W");
    const char* s = nullptr;
    U32 length = 0;
    if (!ioboard_wait_for_reply(&s, &length) || (length != 15 && length != 20) || s[1] != 'W') return 0;
    if (s[3] != 'b' && s[3] != 'm') return 0;
    U32 first, second, third = 0;
    if (!ioboard_parse_hex(s + 5, 2, &first) || !ioboard_parse_hex(s + 10, 2, &second)) return 0;
    if (length == 20 && !ioboard_parse_hex(s + 15, 2, &third)) return 0;
    version->source = s[3];
    version->bootloader = s[3] == 'b' ? first : second;
    version->application = s[3] == 'b' ? second : first;
    version->hardware = third;
    return 1;
}

// ---------------------------------------------------------------------------------------
// Handling of the stream's sentences, under the mutex

static BOOL _dataValid(void)
{
    const U32 complete = m_data.activeStreamMode == 1 ? COMPLETE_MODE_1 : COMPLETE_OTHER;
    return m_data.runningState == RUN_APPLICATION && (m_data.receivedMask & complete) == complete;
}

// The first-order filter of every raw value, in single precision.
static float _filtered(float y, U16 raw, float rate)
{
    return y + ((float)raw - y) * rate;
}

// A float to an unsigned integer as the dash's processor converts: negative and NaN
// give 0, too large gives the largest value.
static U32 _toUnsigned(float value)
{
    if (!(value > 0.0f)) return 0;
    if (value >= 4294967296.0f) return 0xFFFFFFFFu;
    return (U32)value;
}

static float ioboard_calc_sensor_resistance(U32 bank, float y)
{
    const IOBOARD_WORKING_DATA_T& w = m_data.work;
    const IOBOARD_FILTERED_T* ref = w.references[bank];
    const float a = 4.0f * y - (ref[2].filtered - ref[0].filtered);
    const float b = ref[4].filtered;
    if (b == 0.0f) return 0.0f;  // no reference yet
    float r;
    if (w.calFunction == 1) {
        r = (a + w.calZeroOhmOffset) * 100.0f / b;
        U32 i = _toUnsigned(r / 100.0f) & 0xFF;
        if (i > IOBOARD_CAL_TABLE_SIZE - 2) i = IOBOARD_CAL_TABLE_SIZE - 2;
        r = r * (w.calTable[i] + (w.calTable[i + 1] - w.calTable[i]) * (r - 100.0f * (float)i) / 100.0f);
        if (w.custCalEnabled) {
            U32 j = _toUnsigned(r / 500.0f);
            if (j > IOBOARD_CUST_CAL_TABLE_SIZE - 2) j = IOBOARD_CUST_CAL_TABLE_SIZE - 2;
            r = r * (w.custCalTable[j] + (w.custCalTable[j + 1] - w.custCalTable[j]) * (r - 500.0f * (float)j) / 500.0f);
        }
    } else {
        r = a * 105.0f / b - 0.5f;
        if (r < 20.0f) r = (r - 5.0f) * 1.3333334f;
    }
    return r < 0.0f ? 0.0f : r;
}

static float _outputVoltage(U16 raw)
{
    const U16 reference = m_data.work.commonReference;
    return reference == 0 ? 0.0f : (float)raw / (float)reference * VOLTAGE_REFERENCE * VOLTAGE_DIVIDER;
}

// Reads a sentence's fields one after the other from just behind "$X,".
struct FIELDS_T {
    const char* s;
    U32 at;
    BOOL Hex(U32 digits, U32* value)
    {
        const BOOL good = ioboard_parse_hex(s + at, digits, value);
        at += digits + 1;
        return good;
    }
    BOOL Word(U16* value)
    {
        U32 v;
        if (!Hex(4, &v)) return 0;
        *value = (U16)v;
        return 1;
    }
    BOOL Closed(void)
    {
        const BOOL closed = s[at] == 'C';
        at += 2;
        return closed;
    }
};

static void _tach(FIELDS_T* f)
{
    U16 count;
    if (!f->Word(&count)) return;
    const BOOL counting = count >= 1 && count <= TACH_COUNT_MAX;
    m_data.tachPeriod = counting ? (float)count * TACH_PERIOD_PER_COUNT : 0.0f;
    m_data.tachFrequency = counting ? TACH_CLOCK / (float)count : 0.0f;
    m_data.receivedMask |= RX_P;
}

// L (bank 0) and O (bank 1): the masks as the board has them.
static void _muxReport(FIELDS_T* f, U32 bank)
{
    U32 resistance, highGain;
    if (!f->Hex(2, &resistance) || !f->Hex(2, &highGain)) return;
    m_data.receivedMask |= bank == 0 ? RX_L : RX_O;
    const U32 shift = bank * IOBOARD_CHANNELS_PER_BANK;
    const U32 wantedResistance = (m_data.resistanceMask >> shift) & BANK_MASK;
    const U32 wantedHighGain = (m_data.highGainMask >> shift) & BANK_MASK;
    if ((resistance & BANK_MASK) == wantedResistance && (highGain & BANK_MASK) == wantedHighGain) return;
    ioboard_send_command(bank == 0 ? "$M,%02X,%02X" : "$Q,%02X,%02X", wantedResistance, wantedHighGain);
}

// e (outputs 1 to 4 and the frequency) and d (outputs 5 to 8): the duties as the board
// has them.
static void _dutyReport(FIELDS_T* f, U32 bank)
{
    const U32 first = bank * 4;
    const U8* duty = m_data.outputDuty + first;
    BOOL differs = 0;
    for (U32 i = 0; i < 4; i++) {
        U32 value;
        if (!f->Hex(2, &value)) return;
        differs |= value != duty[i];
    }
    if (bank == 0) {
        U32 frequency;
        if (!f->Hex(2, &frequency)) return;
        differs |= frequency != m_data.pwmFrequency;
    }
    m_data.receivedMask |= bank == 0 ? RX_E : RX_D;
    if (!differs) return;
    if (bank == 0) {
        ioboard_send_command("$E,%02X,%02X,%02X,%02X,%02X", duty[0], duty[1], duty[2], duty[3], m_data.pwmFrequency);
    } else {
        ioboard_send_command("$D,%02X,%02X,%02X,%02X", duty[0], duty[1], duty[2], duty[3]);
    }
}

// S: outputs 1 to 4, the supply and the common reference.
static void _voltagesFirst(FIELDS_T* f)
{
    IOBOARD_WORKING_DATA_T& w = m_data.work;
    for (U32 i = 0; i < 4; i++) {
        if (!f->Word(&w.outputs[i].raw)) return;
    }
    if (!f->Word(&w.supplyRaw) || !f->Word(&w.commonReference)) return;
    for (U32 i = 0; i < 4; i++) w.outputs[i].voltage = _outputVoltage(w.outputs[i].raw);
    m_data.supplyVoltage = _outputVoltage(w.supplyRaw);
    if (m_data.productId == PLATFORM_ZELVO310) m_data.supplyVoltage += SMALL_DASH_SUPPLY_OFFSET;
    m_data.receivedMask |= RX_S;
}

// R: outputs 5 to 8, with the common reference of the last S.
static void _voltagesSecond(FIELDS_T* f)
{
    IOBOARD_OUTPUT_T* outputs = m_data.work.outputs + 4;
    for (U32 i = 0; i < 4; i++) {
        if (!f->Word(&outputs[i].raw)) return;
    }
    for (U32 i = 0; i < 4; i++) outputs[i].voltage = _outputVoltage(outputs[i].raw);
    m_data.receivedMask |= RX_R;
}

// G: switch 1, switch 2 and the extra switch.
static void _switches(FIELDS_T* f)
{
    for (U32 i = 0; i < 3; i++) {
        U16 count;
        if (!f->Word(&count)) return;
        const BOOL closed = f->Closed();
        if (i < 2) {
            m_data.switchCount[i] = count;
            m_data.switchState[i] = closed;
        } else {
            m_data.extraSwitchCount = count;
            m_data.extraSwitchState = closed;
        }
    }
    m_data.receivedMask |= RX_G;
}

// H: switch 3.
static void _switchThird(FIELDS_T* f)
{
    U16 count;
    if (!f->Word(&count)) return;
    m_data.switchCount[2] = count;
    m_data.switchState[2] = f->Closed();
    m_data.receivedMask |= RX_H;
}

// k (bank 0) and n (bank 1): the bank's five reference values.
static void _references(FIELDS_T* f, U32 bank)
{
    for (U32 i = 0; i < IOBOARD_NUMBER_REFERENCES; i++) {
        U16 raw;
        if (!f->Word(&raw)) return;
        IOBOARD_FILTERED_T& reference = m_data.work.references[bank][i];
        reference.raw = raw;
        reference.filtered = _filtered(reference.filtered, raw, m_data.referenceRates[i]);
    }
    m_data.receivedMask |= bank == 0 ? RX_K : RX_N;
}

// I (bank 0) and J (bank 1): a raw field, the bank's seven channels, a raw field.
static void _channels(FIELDS_T* f, U32 bank)
{
    IOBOARD_WORKING_DATA_T& w = m_data.work;
    if (!f->Word(&w.bankFirstField[bank])) return;
    const float ref2 = w.references[bank][1].filtered;
    const U32 first = bank * IOBOARD_CHANNELS_PER_BANK;
    for (U32 c = first; c < first + IOBOARD_CHANNELS_PER_BANK; c++) {
        IOBOARD_CHANNEL_T& channel = w.channels[c];
        U16 raw;
        if (!f->Word(&raw)) return;
        channel.raw = raw;
        channel.filtered = _filtered(channel.filtered, raw, m_data.channelRates[c]);
        const float y = channel.filtered;
        if (m_data.resistanceMask & (1u << c)) {
            channel.result = ioboard_calc_sensor_resistance(bank, y);
        } else if (ref2 == 0.0f) {
            channel.result = 0.0f;  // no reference yet
        } else if (m_data.highGainMask & (1u << c)) {
            channel.result = y * ADC_REFERENCE / ref2;
        } else {
            channel.result = y * ADC_REFERENCE * LOW_GAIN_FACTOR / ref2;
        }
    }
    if (!f->Word(&w.bankLastField[bank])) return;
    for (U32 c = first; c < first + IOBOARD_CHANNELS_PER_BANK; c++) m_data.analogue[c] = w.channels[c].result;
    m_data.receivedMask |= bank == 0 ? RX_I : RX_J;
}

static void _ignore(FIELDS_T*) {}

// A sentence is known by its length and its letter.
struct SENTENCE_KIND_T {
    U32 length;
    char letter;
    void (*handle)(FIELDS_T*);
};
constexpr SENTENCE_KIND_T SENTENCE_KINDS[] = {
    {7, 'T', _ignore},  // acknowledges "$T"
    {10, 'P', _tach},
    {11, 'L', [](FIELDS_T* f) { _muxReport(f, 0); }},
    {11, 'O', [](FIELDS_T* f) { _muxReport(f, 1); }},
    {12, 'H', _switchThird},
    {17, 'd', [](FIELDS_T* f) { _dutyReport(f, 1); }},
    {20, 'e', [](FIELDS_T* f) { _dutyReport(f, 0); }},
    {25, 'R', _voltagesSecond},
    {26, 'G', _switches},
    {30, 'k', [](FIELDS_T* f) { _references(f, 0); }},
    {30, 'n', [](FIELDS_T* f) { _references(f, 1); }},
    {35, 'S', _voltagesFirst},
    {50, 'I', [](FIELDS_T* f) { _channels(f, 0); }},
    {50, 'J', [](FIELDS_T* f) { _channels(f, 1); }},
    {15, 'W', _ignore},  // a late version reply
    {20, 'W', _ignore},
};

static void _handleSentence(const char* s, U32 length)
{
    for (const SENTENCE_KIND_T& kind : SENTENCE_KINDS) {
        if (kind.length != length || kind.letter != s[1]) continue;
        FIELDS_T fields = {s, 3};
        kind.handle(&fields);
        return;
    }
    printf("I/O Board: Unknown reply (%s)\n", s);
}

// ---------------------------------------------------------------------------------------
// The thread

static void _setRunning(U32 runningState, U32 startupState)
{
    pthread_mutex_lock(&m_mutex);
    m_data.runningState = runningState;
    m_data.startupState = startupState;
    pthread_mutex_unlock(&m_mutex);
}

static void _storeVersions(const VERSION_T& version)
{
    pthread_mutex_lock(&m_mutex);
    m_data.bootloaderVersion = version.bootloader;
    m_data.applicationVersion = version.application;
    pthread_mutex_unlock(&m_mutex);
}

static void _resetBoard(void)
{
    ioboard_send_command("$Z,5a5a");
    ioboard_sleep_ms(m_settleMs.load());
}

// Resets the board into its bootloader, updates its application if need be and starts it.
static void _bringUp(void)
{
    pthread_mutex_lock(&m_mutex);
    m_data.receivedMask = 0;
    pthread_mutex_unlock(&m_mutex);
    _resetBoard();
    VERSION_T version;
    if (!ioboard_cmd_get_version_info(&version)) {
        puts("I/O Board: Failed to get version information!");
        return;
    }
    _storeVersions(version);
    printf("I/O Board: Update Check - Bootloader v%d, Application v%d\n", (int)version.bootloader,
           (int)version.application);
    U32 application = version.application;
    if (!ioboard_update_check(&application)) return;
    pthread_mutex_lock(&m_mutex);
    m_data.applicationVersion = application;
    pthread_mutex_unlock(&m_mutex);
    uart_flush(IOBOARD_UART_PORT, 1, 0);
    ioboard_send_command("$x");
    ioboard_sleep_ms(m_settleMs.load());
    _setRunning(RUN_APPLICATION, START_VERSION_CHECK);
}

// The application must be what answers now; then its stream is started.
static void _startStream(void)
{
    VERSION_T version;
    const BOOL good = ioboard_cmd_get_version_info(&version);
    if (good) {
        _storeVersions(version);
        printf("I/O Board: Init - Bootloader v%d, Application v%d, Hardware 0x%02X\n", (int)version.bootloader,
               (int)version.application, (unsigned)version.hardware);
    } else {
        puts("I/O Board: Bad response from version check!");
    }
    if (!good || version.source != 'm') {
        _setRunning(RUN_BRING_UP, START_VERSION_CHECK);
        return;
    }
    pthread_mutex_lock(&m_mutex);
    ioboard_send_command("$T,%c", (char)('0' + m_data.activeStreamMode));
    m_data.startupState = START_STREAMING;
    m_data.streamStart = get_uptime_seconds();
    pthread_mutex_unlock(&m_mutex);
}

// One sentence of the stream.
static void _streamPass(void)
{
    pthread_mutex_lock(&m_mutex);
    if (!m_data.referenceRatesSwitched && get_uptime_seconds() - m_data.streamStart > LATE_REFERENCE_AFTER_S) {
        for (float& rate : m_data.referenceRates) rate = LATE_REFERENCE_RATE;
        m_data.referenceRatesSwitched = 1;
    }
    if (m_data.wantedStreamMode != m_data.activeStreamMode) {
        m_data.activeStreamMode = m_data.wantedStreamMode;
        ioboard_send_command("$T,%c", (char)('0' + m_data.activeStreamMode));
    }
    pthread_mutex_unlock(&m_mutex);

    const char* sentence = nullptr;
    U32 length = 0;
    if (!ioboard_wait_for_reply(&sentence, &length)) {
        // A silent board is reset and brought up again.
        _setRunning(RUN_BRING_UP, START_VERSION_CHECK);
        return;
    }
    pthread_mutex_lock(&m_mutex);
    _handleSentence(sentence, length);
    pthread_mutex_unlock(&m_mutex);
}

// One pass of the thread: the bring-up, the start of the stream or one sentence of it.
static void _threadPass(void)
{
    pthread_mutex_lock(&m_mutex);
    const U32 running = m_data.runningState;
    const U32 startup = m_data.startupState;
    pthread_mutex_unlock(&m_mutex);
    if (running == RUN_BRING_UP) {
        _bringUp();
    } else if (startup == START_VERSION_CHECK) {
        _startStream();
    } else {
        _streamPass();
    }
}

static void* _ioboardThread(void*)
{
    // Without the right to real-time scheduling (a PC) the thread runs at normal priority.
    struct sched_param param = {};
    param.sched_priority = THREAD_PRIORITY;
    pthread_setschedparam(pthread_self(), SCHED_RR, &param);

    while (!m_stop.load()) _threadPass();
    return nullptr;
}

// ---------------------------------------------------------------------------------------
// Open and close

static BOOL _openPort(void)
{
    return uart_open(IOBOARD_UART_PORT, UART_BAUD_115200, 1, 0, UART_PARITY_NONE, nullptr);
}

BOOL ioboard_probe(void)
{
    if (m_probed) return m_found;
    m_probed = 1;
    if (!_openPort()) {
        printf("I/O Board: Probe failed to open UART port! (%s)\n", strerror(errno));
        return 0;
    }
    _parserReset();
    _resetBoard();
    VERSION_T version;
    m_found = ioboard_cmd_get_version_info(&version);
    uart_close(IOBOARD_UART_PORT);
    return m_found;
}

BOOL ioboard_open(void)
{
    if (!ioboard_probe()) {
        puts("I/O Board hardware not found!");
        return 0;
    }
    pthread_mutex_lock(&m_mutex);
    const U32 isOpen = m_data.isOpen;
    pthread_mutex_unlock(&m_mutex);
    if (isOpen) return 1;

    pthread_mutex_lock(&m_mutex);
    m_data = _startValues();
    m_data.productId = GetPlatformProductId();
    pthread_mutex_unlock(&m_mutex);
    if (!_openPort()) {
        printf("I/O Board: Failed to open UART port! (%s)\n", strerror(errno));
        return 0;
    }
    pthread_mutex_lock(&m_mutex);
    m_data.isOpen = 1;
    pthread_mutex_unlock(&m_mutex);
    ioboard_read_firmware();
    _parserReset();
    m_stop.store(0);
    if (pthread_create(&m_threadHandle, nullptr, _ioboardThread, nullptr) != 0) {
        puts("I/O Board: Failed creating thread!");
        ioboard_close();
        return 0;
    }
    m_hasThread = 1;
    return 1;
}

BOOL ioboard_close(void)
{
    pthread_mutex_lock(&m_mutex);
    m_data.isOpen = 0;
    pthread_mutex_unlock(&m_mutex);
    m_stop.store(1);
    if (m_hasThread) {
        pthread_join(m_threadHandle, nullptr);
        m_hasThread = 0;
    }
    uart_close(IOBOARD_UART_PORT);
    return 1;
}

// ---------------------------------------------------------------------------------------
// State and configuration

static BOOL _analogueChannel(U32 channel)
{
    return channel >= ANALOG_CHANNEL_1 && channel <= ANALOG_CHANNEL_MAX;
}

static BOOL _outputChannel(U32 channel)
{
    return channel >= DIG_OUT_CHANNEL_1 && channel <= DIG_OUT_CHANNEL_MAX;
}

BOOL ioboard_is_running(void)
{
    pthread_mutex_lock(&m_mutex);
    const BOOL valid = _dataValid();
    pthread_mutex_unlock(&m_mutex);
    return valid;
}

BOOL ioboard_get_version_info(U32* bootloaderVersion, U32* applicationVersion)
{
    pthread_mutex_lock(&m_mutex);
    const BOOL runs = m_data.runningState == RUN_APPLICATION;
    const U32 bootloader = runs ? m_data.bootloaderVersion : 0;
    const U32 application = runs ? m_data.applicationVersion : 0;
    pthread_mutex_unlock(&m_mutex);
    if (bootloaderVersion) *bootloaderVersion = bootloader;
    if (applicationVersion) *applicationVersion = application;
    return runs;
}

BOOL ioboard_enable_third_connector(void)
{
    if (GetPlatformProductId() != PLATFORM_ZELVO720) return 0;
    pthread_mutex_lock(&m_mutex);
    m_data.wantedStreamMode = 2;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

static void _setBit(U32* mask, U32 bit, BOOL on)
{
    *mask = on ? (*mask | bit) : (*mask & ~bit);
}

BOOL ioboard_set_adc_mux_config(U32 channel, BOOL resistance, BOOL highGain)
{
    if (!_analogueChannel(channel)) return 0;
    const U32 bit = 1u << (channel - 1);
    pthread_mutex_lock(&m_mutex);
    _setBit(&m_data.resistanceMask, bit, resistance);
    _setBit(&m_data.highGainMask, bit, highGain);
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_get_adc_mux_config(U32 channel, BOOL* resistance, BOOL* highGain)
{
    if (!_analogueChannel(channel) || !resistance || !highGain) return 0;
    const U32 bit = 1u << (channel - 1);
    pthread_mutex_lock(&m_mutex);
    *resistance = (m_data.resistanceMask & bit) != 0;
    *highGain = (m_data.highGainMask & bit) != 0;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_set_adc_mux_filter_rate(U32 channel, float rate)
{
    if (!_analogueChannel(channel)) return 0;
    pthread_mutex_lock(&m_mutex);
    m_data.channelRates[channel - 1] = rate;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_get_adc_mux_filter_rate(U32 channel, float* rate)
{
    if (!_analogueChannel(channel) || !rate) return 0;
    pthread_mutex_lock(&m_mutex);
    *rate = m_data.channelRates[channel - 1];
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_set_relay_out_config(U32 channel, BOOL on)
{
    return ioboard_set_relay_out_pwm_duty_cycle(channel, on ? DUTY_ON : 0);
}

BOOL ioboard_get_relay_out_config(U32 channel, BOOL* on)
{
    U8 duty;
    if (!on || !ioboard_get_relay_out_pwm_duty_cycle(channel, &duty)) return 0;
    *on = duty != 0;
    return 1;
}

BOOL ioboard_set_relay_out_pwm_frequency(U32 frequency)
{
    if (frequency < MIN_PWM_FREQUENCY) frequency = MIN_PWM_FREQUENCY;
    pthread_mutex_lock(&m_mutex);
    m_data.pwmFrequency = (U8)frequency;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_set_relay_out_pwm_duty_cycle(U32 channel, U8 duty)
{
    if (!_outputChannel(channel)) return 0;
    pthread_mutex_lock(&m_mutex);
    m_data.outputDuty[channel - 1] = duty;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_get_relay_out_pwm_duty_cycle(U32 channel, U8* duty)
{
    if (!_outputChannel(channel) || !duty) return 0;
    pthread_mutex_lock(&m_mutex);
    *duty = m_data.outputDuty[channel - 1];
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

// ---------------------------------------------------------------------------------------
// Data

// Copies one published value while the data are valid, else gives `invalid`.
template <typename T>
static BOOL _published(const T& value, T* out, T invalid, BOOL inRange = 1)
{
    if (!out) return 0;
    pthread_mutex_lock(&m_mutex);
    const BOOL valid = inRange && _dataValid();
    *out = valid ? value : invalid;
    pthread_mutex_unlock(&m_mutex);
    return valid;
}

BOOL ioboard_get_supply_voltage(float* voltage)
{
    return _published(m_data.supplyVoltage, voltage, -1.0f);
}

BOOL ioboard_get_adc_mux_data(U32 channel, float* value)
{
    const BOOL inRange = _analogueChannel(channel);
    return _published(m_data.analogue[inRange ? channel - 1 : 0], value, -1.0f, inRange);
}

BOOL ioboard_get_relay_out_data(U32 channel, float* voltage)
{
    const BOOL inRange = _outputChannel(channel);
    return _published(m_data.work.outputs[inRange ? channel - 1 : 0].voltage, voltage, -1.0f, inRange);
}

BOOL ioboard_get_switch_in_data(U32 channel, BOOL* closed, U16* count)
{
    if (!closed || !count) return 0;
    const BOOL inRange = channel >= DIG_IN_CHANNEL_1 && channel <= DIG_IN_CHANNEL_MAX;
    const U32 i = inRange ? channel - 1 : 0;
    pthread_mutex_lock(&m_mutex);
    const BOOL valid = inRange && _dataValid();
    *closed = valid ? m_data.switchState[i] : 0;
    *count = valid ? m_data.switchCount[i] : 0;
    pthread_mutex_unlock(&m_mutex);
    return valid;
}

BOOL ioboard_get_switch_extra_in_data(BOOL* closed, U16* count)
{
    if (!closed || !count) return 0;
    pthread_mutex_lock(&m_mutex);
    const BOOL valid = _dataValid();
    *closed = valid ? m_data.extraSwitchState : 0;
    *count = valid ? m_data.extraSwitchCount : 0;
    pthread_mutex_unlock(&m_mutex);
    return valid;
}

BOOL ioboard_get_rpm_frequency_data(float* frequency)
{
    return _published(m_data.tachFrequency, frequency, 0.0f);
}

BOOL ioboard_get_rpm_period_data(float* period)
{
    return _published(m_data.tachPeriod, period, 0.0f);
}

BOOL ioboard_get_working_data(IOBOARD_WORKING_DATA_T* data)
{
    if (!data) return 0;
    pthread_mutex_lock(&m_mutex);
    const BOOL valid = _dataValid();
    if (valid) *data = m_data.work;
    pthread_mutex_unlock(&m_mutex);
    return valid;
}

// ---------------------------------------------------------------------------------------
// Calibration

BOOL ioboard_set_cal_zero_ohm_offset(float offset)
{
    pthread_mutex_lock(&m_mutex);
    m_data.work.calZeroOhmOffset = offset;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_set_cal_table(const float table[IOBOARD_CAL_TABLE_SIZE])
{
    if (!table) return 1;
    pthread_mutex_lock(&m_mutex);
    memcpy(m_data.work.calTable, table, sizeof(m_data.work.calTable));
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_set_cust_cal_table(const float table[IOBOARD_CUST_CAL_TABLE_SIZE])
{
    pthread_mutex_lock(&m_mutex);
    if (table) memcpy(m_data.work.custCalTable, table, sizeof(m_data.work.custCalTable));
    m_data.work.custCalEnabled = table != nullptr;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

BOOL ioboard_set_cal_function(U32 function)
{
    pthread_mutex_lock(&m_mutex);
    m_data.work.calFunction = function;
    pthread_mutex_unlock(&m_mutex);
    return 1;
}

// ---------------------------------------------------------------------------------------
// Test hooks

void ioboard_test_reset(void)
{
    ioboard_close();
    m_probed = 0;
    m_found = 0;
    pthread_mutex_lock(&m_mutex);
    m_data = _startValues();
    m_data.productId = GetPlatformProductId();
    pthread_mutex_unlock(&m_mutex);
    _parserReset();
}

void ioboard_test_set_settle_ms(U32 milliseconds)
{
    m_settleMs.store(milliseconds);
}

void ioboard_test_feed(const U8* data, U32 count)
{
    if (count > RECEIVE_BUFFER_SIZE) count = RECEIVE_BUFFER_SIZE;
    memcpy(m_parser.receive, data, count);
    m_parser.receiveCount = count;
    m_parser.receiveIndex = 0;
}

const char* ioboard_test_next_sentence(void)
{
    return _nextSentence(&m_parser) > 0 ? m_parser.sentence : nullptr;
}

void ioboard_test_start_stream(U32 mode)
{
    pthread_mutex_lock(&m_mutex);
    m_data.runningState = RUN_APPLICATION;
    m_data.startupState = START_STREAMING;
    m_data.activeStreamMode = mode;
    m_data.wantedStreamMode = mode;
    m_data.streamStart = get_uptime_seconds();
    pthread_mutex_unlock(&m_mutex);
}

void ioboard_test_stream_pass(void)
{
    _streamPass();
}

void ioboard_test_set_reply_timeout_ms(U32 milliseconds)
{
    m_replyTimeoutMs.store(milliseconds);
    m_collectMs.store(milliseconds < COLLECT_MS ? milliseconds : COLLECT_MS);
}

void ioboard_test_thread_pass(void)
{
    _threadPass();
}
