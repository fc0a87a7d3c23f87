#include "ioboard_board.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "ioboard_image.h"

namespace {

// The board's ADC: five reference values per bank (the second is the voltage reference,
// the first, third and fifth bias the resistance measurement) and the common reference
// of the output and supply monitors. The raw counts below are these circuits run
// backwards, so that the dash's conversions give back the values set as inputs.
constexpr uint16_t REFS[5] = {1000, 40000, 1200, 30000, 2000};
constexpr uint16_t COMMON_REF = 0x8000;
constexpr float ADC_VOLTS = 2.048f;
constexpr float LOW_GAIN_DIVIDER = 4.05f;
constexpr float MONITOR_VOLTS = 4.096f * 11;  // full scale of the output and supply monitors
constexpr float SUPPLY_DIODE_DROP = 0.85f;
constexpr float TACH_CLOCK_HZ = 312500;
constexpr uint16_t TACH_NO_SIGNAL = 0xFFFF;
constexpr size_t SENTENCE_LIMIT = 1021;  // longer is line noise

uint16_t _count(float value)
{
    if (!(value > 0)) return 0;
    return value >= 65535 ? 65535 : (uint16_t)lrintf(value);
}

uint16_t _channelRaw(const IOBOARD_T* b, size_t i)
{
    const uint16_t bit = (uint16_t)(1u << i);
    if (b->resistanceMask & bit) {
        // The dash reads r = a * 105 / ref5 - 0.5, with a = 4y - (ref3 - ref1), and
        // stretches readings below 20 ohm by (r - 5) * 4/3.
        float r = b->inputs.ohms[i] > 0 ? b->inputs.ohms[i] : 0;
        if (r < 20) r = r / 1.3333334f + 5;
        return _count(((r + 0.5f) * REFS[4] / 105 + (REFS[2] - REFS[0])) / 4);
    }
    const float gain = (b->gainMask & bit) ? 1 : LOW_GAIN_DIVIDER;
    return _count(b->inputs.volts[i] * REFS[1] / (ADC_VOLTS * gain));
}

float _outputVolts(const IOBOARD_T* b, size_t i)
{
    return b->inputs.supply * b->duty[i] / 255;
}

uint16_t _monitorRaw(float volts)
{
    return _count(volts * COMMON_REF / MONITOR_VOLTS);
}

uint16_t _tachCount(float hz)
{
    if (!(hz > 0)) return TACH_NO_SIGNAL;
    const float n = TACH_CLOCK_HZ / hz;
    return n < 1 ? 1 : n > 0xFFFD ? TACH_NO_SIGNAL : (uint16_t)lrintf(n);
}

char _switch(const IOBOARD_T* b, size_t i)
{
    return b->inputs.closed[i] ? 'C' : 'O';
}

void _emit(std::vector<std::string>* out, const char* format, ...)
{
    char body[128];
    va_list args;
    va_start(args, format);
    vsnprintf(body, sizeof(body), format, args);
    va_end(args);
    out->push_back(ioboard_sentence(body));
}

int _hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A field of one to four hexadecimal digits, either case; -1 for anything else.
long _hex(const std::string& field, long max)
{
    if (field.empty() || field.size() > 4) return -1;
    long value = 0;
    for (char c : field) {
        const int d = _hexDigit(c);
        if (d < 0) return -1;
        value = value * 16 + d;
    }
    return value <= max ? value : -1;
}

// Parses all fields as hexadecimal numbers up to max; false unless there are exactly n.
bool _hexFields(const std::vector<std::string>& fields, size_t n, long max, long* values)
{
    if (fields.size() != n) return false;
    for (size_t i = 0; i < n; i++) {
        values[i] = _hex(fields[i], max);
        if (values[i] < 0) return false;
    }
    return true;
}

// Power-up and "$Z": the bootloader runs, outputs are off, the configuration is cleared.
void _reset(IOBOARD_T* b)
{
    b->application = false;
    b->streamMode = 0;
    b->resistanceMask = 0;
    b->gainMask = 0;
    memset(b->duty, 0, sizeof(b->duty));
    b->pwmFrequency = 0;
    b->sectorsErased = 0;
    b->bytesProgrammed = 0;
}

void _versions(const IOBOARD_T* b, std::vector<std::string>* out)
{
    const uint8_t app = ioboard_application_version(b);
    if (b->application) {
        _emit(out, "$W,m,%02X,b,%02X,h,%02X", app, IOBOARD_BOOTLOADER_VERSION, IOBOARD_HARDWARE_VERSION);
    } else {
        _emit(out, "$W,b,%02X,a,%02X,h,%02X", IOBOARD_BOOTLOADER_VERSION, app, IOBOARD_HARDWARE_VERSION);
    }
}

// The bootloader's flash commands; false when the sentence isn't one of them.
bool _bootloader(IOBOARD_T* b, char letter, const std::vector<std::string>& fields, std::vector<std::string>* out)
{
    long v[2];
    if (letter == 'e' && _hexFields(fields, 1, 0xFFFF, v)) {
        const long offset = v[0] - IOBOARD_FLASH_START;
        const bool ok = offset >= 0 && offset < (long)IOBOARD_FLASH_SIZE && offset % IOBOARD_FLASH_SECTOR_SIZE == 0;
        if (ok) {
            memset(b->flash + offset, 0xFF, IOBOARD_FLASH_SECTOR_SIZE);
            b->sectorsErased++;
        }
        _emit(out, "$e,%d", ok ? 0 : 1);
        return true;
    }
    if (letter == 'p' && _hexFields(fields, 2, 0xFFFF, v) && v[1] <= 0xFF) {
        const long offset = v[0] - IOBOARD_FLASH_START;
        bool ok = offset >= 0 && offset < (long)IOBOARD_FLASH_SIZE;
        if (ok) {
            // Programming only clears bits: a byte that wasn't erased may not take.
            b->flash[offset] &= (uint8_t)v[1];
            ok = b->flash[offset] == v[1];
            b->bytesProgrammed++;
        }
        _emit(out, "$p,%d", ok ? 0 : 1);
        return true;
    }
    if (letter == 'c' && _hexFields(fields, 1, 0xFFFF, v)) {
        const size_t length = (size_t)v[0] < IOBOARD_FLASH_SIZE ? (size_t)v[0] : IOBOARD_FLASH_SIZE;
        _emit(out, "$c,%04X", ioboard_image_sum(b->flash, length));
        return true;
    }
    if (letter == 'x' && fields.empty()) {
        b->application = ioboard_application_version(b) != IOBOARD_NO_APPLICATION;
        return true;
    }
    return false;
}

// The application's commands; false when the sentence isn't one of them.
bool _application(IOBOARD_T* b, char letter, const std::vector<std::string>& fields, std::vector<std::string>* out)
{
    long v[5];
    if (letter == 'T' && fields.size() == 1 && (fields[0] == "1" || fields[0] == "2")) {
        b->streamMode = fields[0][0] - '0';
        _emit(out, "$T,%c", fields[0][0]);
        return true;
    }
    if ((letter == 'M' || letter == 'Q') && _hexFields(fields, 2, 0xFF, v)) {
        const int shift = letter == 'M' ? 0 : 7;
        const uint16_t bank = (uint16_t)(0x7F << shift);
        b->resistanceMask = (uint16_t)((b->resistanceMask & ~bank) | ((v[0] & 0x7F) << shift));
        b->gainMask = (uint16_t)((b->gainMask & ~bank) | ((v[1] & 0x7F) << shift));
        return true;
    }
    if (letter == 'E' && _hexFields(fields, 5, 0xFF, v)) {
        for (int i = 0; i < 4; i++) b->duty[i] = (uint8_t)v[i];
        b->pwmFrequency = (uint8_t)v[4];
        return true;
    }
    if (letter == 'D' && _hexFields(fields, 4, 0xFF, v)) {
        for (int i = 0; i < 4; i++) b->duty[4 + i] = (uint8_t)v[i];
        return true;
    }
    return false;
}

// A sentence that passed its checksum, without "*" and the digits.
void _handle(IOBOARD_T* b, const std::string& body, std::vector<std::string>* out)
{
    const char letter = body.size() > 1 ? body[1] : 0;
    std::vector<std::string> fields;
    bool wellFormed = body.size() == 2;
    if (body.size() > 2 && body[2] == ',') {
        wellFormed = true;
        size_t start = 3;
        for (;;) {
            const size_t comma = body.find(',', start);
            fields.push_back(body.substr(start, comma - start));
            if (comma == std::string::npos) break;
            start = comma + 1;
        }
    }
    bool known = false;
    if (wellFormed) {
        if (letter == 'Z') {
            known = fields.size() == 1 && strcasecmp(fields[0].c_str(), "5a5a") == 0;
            if (known) _reset(b);
        } else if (letter == 'W' && fields.empty()) {
            _versions(b, out);
            known = true;
        } else {
            known = b->application ? _application(b, letter, fields, out) : _bootloader(b, letter, fields, out);
        }
    }
    if (known) {
        b->received++;
    } else {
        b->unknown++;
    }
}

// Judges a sentence at its CR: "$", at least one more character, "*", two hex digits
// that equal the sum of everything before them.
void _judge(IOBOARD_T* b, std::vector<std::string>* out)
{
    const size_t n = b->length;
    const char* s = b->sentence;
    if (n >= 5 && s[n - 3] == '*' && _hexDigit(s[n - 2]) >= 0 && _hexDigit(s[n - 1]) >= 0) {
        uint8_t sum = 0;
        for (size_t i = 0; i < n - 2; i++) sum = (uint8_t)(sum + s[i]);
        if (sum == _hexDigit(s[n - 2]) * 16 + _hexDigit(s[n - 1])) {
            _handle(b, std::string(s, n - 3), out);
            return;
        }
    }
    b->dropped++;
}

}  // namespace

std::string ioboard_sentence(const std::string& body)
{
    uint8_t sum = '*';
    for (char c : body) sum = (uint8_t)(sum + c);
    char tail[8];
    snprintf(tail, sizeof(tail), "*%02X\r", sum);
    return body + tail;
}

void ioboard_init(IOBOARD_T* b, uint8_t* flash, bool supplyBehindDiode)
{
    memset(b, 0, sizeof(*b));
    b->flash = flash;
    b->supplyBehindDiode = supplyBehindDiode;
    b->inputs.supply = 13.8f;
    b->inputs.tachHz = 0;
    _reset(b);
    b->application = ioboard_application_version(b) != IOBOARD_NO_APPLICATION;
}

uint8_t ioboard_application_version(const IOBOARD_T* b)
{
    return ioboard_flash_application(b->flash);
}

void ioboard_receive(IOBOARD_T* b, const uint8_t* data, size_t n, std::vector<std::string>* replies)
{
    for (size_t i = 0; i < n; i++) {
        const char c = (char)data[i];
        if (c == '$') {
            if (b->length) b->dropped++;
            b->sentence[0] = c;
            b->length = 1;
        } else if (b->length == 0) {
            continue;  // noise between sentences
        } else if (c == '\r') {
            _judge(b, replies);
            b->length = 0;
        } else if (c == '\0' || b->length >= SENTENCE_LIMIT) {
            b->dropped++;
            b->length = 0;
        } else {
            b->sentence[b->length++] = c;
        }
    }
}

void ioboard_stream(IOBOARD_T* b, std::vector<std::string>* out)
{
    if (!b->application || b->streamMode == 0) return;
    b->sequence++;
    const float measuredSupply = b->inputs.supply - (b->supplyBehindDiode ? SUPPLY_DIODE_DROP : 0);
    uint16_t ch[IOBOARD_CHANNELS], outs[IOBOARD_OUTPUTS];
    for (size_t i = 0; i < IOBOARD_CHANNELS; i++) ch[i] = _channelRaw(b, i);
    for (size_t i = 0; i < IOBOARD_OUTPUTS; i++) outs[i] = _monitorRaw(_outputVolts(b, i));
    const uint16_t temperature = 0x0190;

    _emit(out, "$I,%04X,%04X,%04X,%04X,%04X,%04X,%04X,%04X,%04X", b->sequence, ch[0], ch[1], ch[2], ch[3], ch[4],
          ch[5], ch[6], temperature);
    _emit(out, "$k,%04X,%04X,%04X,%04X,%04X", REFS[0], REFS[1], REFS[2], REFS[3], REFS[4]);
    _emit(out, "$S,%04X,%04X,%04X,%04X,%04X,%04X", outs[0], outs[1], outs[2], outs[3], _monitorRaw(measuredSupply),
          COMMON_REF);
    _emit(out, "$P,%04X", _tachCount(b->inputs.tachHz));
    _emit(out, "$G,%04X,%c,%04X,%c,%04X,%c", b->inputs.closures[0], _switch(b, 0), b->inputs.closures[1],
          _switch(b, 1), b->inputs.closures[3], _switch(b, 3));
    _emit(out, "$L,%02X,%02X", b->resistanceMask & 0x7F, b->gainMask & 0x7F);
    _emit(out, "$e,%02X,%02X,%02X,%02X,%02X", b->duty[0], b->duty[1], b->duty[2], b->duty[3], b->pwmFrequency);
    if (b->streamMode != 2) return;
    _emit(out, "$J,%04X,%04X,%04X,%04X,%04X,%04X,%04X,%04X,%04X", b->sequence, ch[7], ch[8], ch[9], ch[10], ch[11],
          ch[12], ch[13], temperature);
    _emit(out, "$n,%04X,%04X,%04X,%04X,%04X", REFS[0], REFS[1], REFS[2], REFS[3], REFS[4]);
    _emit(out, "$R,%04X,%04X,%04X,%04X", outs[4], outs[5], outs[6], outs[7]);
    _emit(out, "$H,%04X,%c", b->inputs.closures[2], _switch(b, 2));
    _emit(out, "$O,%02X,%02X", (b->resistanceMask >> 7) & 0x7F, (b->gainMask >> 7) & 0x7F);
    _emit(out, "$d,%02X,%02X,%02X,%02X", b->duty[4], b->duty[5], b->duty[6], b->duty[7]);
}

std::string ioboard_set_input(IOBOARD_T* b, const char* name, const char* value)
{
    char* end = nullptr;
    const double v = strtod(value, &end);
    if (end == value || *end != '\0' || !std::isfinite(v) || v < 0 || v > 1e6) {
        return std::string("not a value from 0 to 1000000: '") + value + "'";
    }
    unsigned n = 0;
    char tail = 0;
    if (sscanf(name, "an%u%c", &n, &tail) == 1 && n >= 1 && n <= IOBOARD_CHANNELS) {
        b->inputs.volts[n - 1] = (float)v;
    } else if (sscanf(name, "res%u%c", &n, &tail) == 1 && n >= 1 && n <= IOBOARD_CHANNELS) {
        b->inputs.ohms[n - 1] = (float)v;
    } else if ((sscanf(name, "sw%u%c", &n, &tail) == 1 && n >= 1 && n <= 3) || !strcmp(name, "swx")) {
        const size_t i = strcmp(name, "swx") ? n - 1 : 3;
        const bool closed = v != 0;
        if (closed && !b->inputs.closed[i]) b->inputs.closures[i]++;
        b->inputs.closed[i] = closed;
    } else if (!strcmp(name, "tach")) {
        b->inputs.tachHz = (float)v;
    } else if (!strcmp(name, "supply")) {
        b->inputs.supply = (float)v;
    } else {
        return std::string("no input '") + name + "' (an1-an14, res1-res14, sw1-sw3, swx, tach, supply)";
    }
    return "";
}

std::string ioboard_status_json(const IOBOARD_T* b)
{
    char text[256];
    std::string json;
    const auto list = [&](const char* name, size_t count, auto value) {
        json += std::string(",\"") + name + "\":[";
        for (size_t i = 0; i < count; i++) {
            json += i ? "," : "";
            json += value(i);
        }
        json += "]";
    };
    const auto number = [&](double v) {
        snprintf(text, sizeof(text), "%.4g", v);
        return std::string(text);
    };
    snprintf(text, sizeof(text),
             "{\"mode\":\"%s\",\"bootloader\":%u,\"application\":%u,\"hardware\":%u,\"stream\":%d,"
             "\"sectorsErased\":%u,\"bytesProgrammed\":%u",
             b->application ? "application" : "bootloader", IOBOARD_BOOTLOADER_VERSION, ioboard_application_version(b),
             IOBOARD_HARDWARE_VERSION, b->streamMode, b->sectorsErased, b->bytesProgrammed);
    json = text;
    json += ",\"inputs\":{\"supply\":" + number(b->inputs.supply) + ",\"tach\":" + number(b->inputs.tachHz);
    list("an", IOBOARD_CHANNELS, [&](size_t i) { return number(b->inputs.volts[i]); });
    list("res", IOBOARD_CHANNELS, [&](size_t i) { return number(b->inputs.ohms[i]); });
    list("sw", IOBOARD_SWITCHES, [&](size_t i) { return std::string(b->inputs.closed[i] ? "1" : "0"); });
    list("closures", IOBOARD_SWITCHES, [&](size_t i) { return std::to_string(b->inputs.closures[i]); });
    // How each channel measures, as the dash set it: resistance, high or low gain voltage.
    list("channels", IOBOARD_CHANNELS, [&](size_t i) {
        const uint16_t bit = (uint16_t)(1u << i);
        return std::string((b->resistanceMask & bit) ? "\"R\"" : (b->gainMask & bit) ? "\"G\"" : "\"V\"");
    });
    json += "},\"outputs\":{\"pwmFrequency\":" + std::to_string(b->pwmFrequency);
    list("duty", IOBOARD_OUTPUTS, [&](size_t i) { return std::to_string(b->duty[i]); });
    list("volts", IOBOARD_OUTPUTS, [&](size_t i) { return number(_outputVolts(b, i)); });
    snprintf(text, sizeof(text), "},\"sentences\":{\"received\":%u,\"dropped\":%u,\"unknown\":%u}}", b->received,
             b->dropped, b->unknown);
    return json + text;
}
