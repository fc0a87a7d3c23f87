// settings-writer: drives the real settings store as the dash does, for the tests that
// cut a process off in the middle of its saves.
//
//   settings-writer load          loads the store as the dash's start does, prints it
//   settings-writer write [COUNT] loads, then stores record after record (all of them
//                                 derived from LogNumber) and reports each one whose
//                                 save has ended; COUNT 0 or none: until killed
//
// Lines on standard output, each one write(2), so that a kill never leaves half a line:
//   loaded n=N counter=C pattern=ok|bad defaults=yes|no
//   saved n=N us=MICROSECONDS      (monotonic time at which the save was seen to end)
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "crc.h"
#include "dash_root.h"
#include "data.h"
#include "eeprom_drv.h"
#include "platform_sysinfo.h"
#include "settings.h"

namespace {

constexpr const char* STORE_FOLDER = "/app/data/config";
constexpr size_t CRC_START = offsetof(EEVariables_T, ulEECounter);
constexpr size_t STAMP_START = offsetof(EEVariables_T, EE_UniqID);
constexpr int SAVE_TIMEOUT_MS = 10000;

char m_folder[ROOT_PATH_MAX];
char m_fileName[256];  // the current file's name inside the folder
char m_file[ROOT_PATH_MAX];

void _say(const char* format, ...)
{
    char line[256];
    va_list args;
    va_start(args, format);
    const int n = vsnprintf(line, sizeof(line), format, args);
    va_end(args);
    if (n > 0) (void)!write(STDOUT_FILENO, line, (size_t)n < sizeof(line) ? (size_t)n : sizeof(line) - 1);
}

long long _nowUs(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (long long)ts.tv_sec * 1000000 + ts.tv_nsec / 1000;
}

// Every field behind the stamp is a function of `n`, spread over the whole record, so
// that bytes of two different records never pass for one.
void _fill(EEVariables_T* r, uint32_T n)
{
    r->LogNumber = n;
    r->AN1_Voffset = (int16_T)(n ^ 0x5A5A);
    r->CurrentSensorAmpHigh = (int16_T)(n * 7);
    r->CurrentSensorAmpLow = (int16_T)(0 - n);
    r->PRESSURE_UNITS = (uint8_T)(1 + n % 3);
    r->CURRENT_QUAD_SCREEN = (uint8_T)(1 + n % 15);
    r->SELECTED_QUAD = (uint8_T)(1 + n % 4);
    r->AF_UNITS = (uint8_T)(1 + (n / 3) % 3);
    r->SPEED_UNITS = (uint8_T)(1 + (n / 9) % 3);
    r->TEMP_UNITS = (uint8_T)(1 + n % 2);
    r->LANGUAGE = (uint8_T)(n >> 8);
    r->USER_PROFILE = (uint8_T)(1 + n % 3);
    for (int i = 0; i < 3; i++) r->PROFILE_GAUGE_COUNT[i] = (uint8_T)(n + i);
    r->Padding = (uint8_T)(n >> 16);
    for (int w = 0; w < PROFILE_WORDS; w++) {
        (&r->PROFILE_1[0][0])[w] = (uint16_T)(n + w);
        (&r->PROFILE_2[0][0])[w] = (uint16_T)(n * 3 + w);
        (&r->PROFILE_3[0][0])[w] = (uint16_T)(~n - w);
    }
    r->CURRENT_SCREEN = (uint8_T)n;
    r->BoostControl = (uint8_T)(1 + n % 5);
    r->TractionControl = (uint8_T)(n & 1);
    r->HighOctane = (uint8_T)((n >> 1) & 1);
    r->ALT_TIRE = (uint8_T)((n >> 2) & 1);
    r->EEPROM_State = (uint8_T)(n >> 24 ^ 0xA5);
}

const U8* _bytes(const EEVariables_T& r)
{
    return reinterpret_cast<const U8*>(&r);
}

// The record is one that this program stored: good CRC, this build's stamp, one count
// per store, and every field the one its LogNumber gives.
bool _patternHolds(const EEVariables_T& r)
{
    if (uiCrcCalculation(_bytes(r) + CRC_START, sizeof(r) - CRC_START) != r.uiCRC) return false;
    if (r.EE_UniqID != EE_UNIQ_ID || r.ulEECounter != r.LogNumber) return false;
    EEVariables_T expected = r;
    _fill(&expected, r.LogNumber);
    return memcmp(&expected, &r, sizeof(r)) == 0;
}

bool _isDefaults(const EEVariables_T& r)
{
    return memcmp(_bytes(r) + STAMP_START, _bytes(EEVariables_DEFAULT) + STAMP_START, sizeof(r) - STAMP_START) == 0;
}

void _load(void)
{
    eeprom_init();
    App_EE_Init();
    const EEVariables_T& r = EEVariables_RAMShadow;
    _say("loaded n=%u counter=%u pattern=%s defaults=%s\n", r.LogNumber, r.ulEECounter,
         _patternHolds(r) ? "ok" : "bad", _isDefaults(r) ? "yes" : "no");
}

// The save has ended when the store thread closed the current file and the file holds
// the record: the close comes after the write and its fsync.
bool _fileHolds(const EEVariables_T& r)
{
    const int fd = open(m_file, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st;
    U8 head[sizeof(EEVariables_T)];
    const bool holds = fstat(fd, &st) == 0 && st.st_size >= EEPROM_SIZE &&
                       pread(fd, head, sizeof(head), 0) == (ssize_t)sizeof(head) && memcmp(head, &r, sizeof(r)) == 0;
    close(fd);
    return holds;
}

// Waits for a close after writing of the current file that leaves it holding `r`.
bool _waitForSave(int watch, const EEVariables_T& r)
{
    const long long deadline = _nowUs() + SAVE_TIMEOUT_MS * 1000LL;
    alignas(struct inotify_event) char events[4096];
    for (;;) {
        const long long left = deadline - _nowUs();
        if (left <= 0) return false;
        struct pollfd p = {watch, POLLIN, 0};
        const int ready = poll(&p, 1, (int)(left / 1000) + 1);
        if (ready < 0 && errno != EINTR) return false;
        if (ready <= 0) continue;
        const ssize_t got = read(watch, events, sizeof(events));
        if (got <= 0) continue;
        bool closed = false;
        for (ssize_t at = 0; at < got;) {
            // The kernel pads each event's name so that the next event stays aligned.
            const void* event = events + at;
            const struct inotify_event* e = static_cast<const struct inotify_event*>(event);
            if ((e->mask & IN_CLOSE_WRITE) && e->len && strcmp(e->name, m_fileName) == 0) closed = true;
            at += (ssize_t)(sizeof(*e) + e->len);
        }
        if (closed && _fileHolds(r)) return true;
    }
}

int _write(unsigned long count)
{
    const int watch = inotify_init1(IN_CLOEXEC);
    if (watch < 0 || inotify_add_watch(watch, m_folder, IN_CLOSE_WRITE) < 0) {
        _say("cannot watch %s: %s\n", m_folder, strerror(errno));
        return 1;
    }
    _load();
    for (unsigned long i = 0; count == 0 || i < count; i++) {
        const uint32_T n = EEVariables_RAMShadow.LogNumber + 1;
        _fill(&EEVariables_RAMShadow, n);
        App_EE_Store();
        if (!_waitForSave(watch, EEVariables_RAMShadowCopy)) {
            _say("no save of n=%u within %d ms\n", n, SAVE_TIMEOUT_MS);
            return 1;
        }
        _say("saved n=%u us=%lld\n", n, _nowUs());
    }
    close(watch);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    const bool load = argc == 2 && strcmp(argv[1], "load") == 0;
    const bool store = (argc == 2 || argc == 3) && strcmp(argv[1], "write") == 0;
    if (!load && !store) {
        fprintf(stderr, "usage: settings-writer load | write [COUNT]\n");
        return 2;
    }
    const int n = snprintf(m_fileName, sizeof(m_fileName), "%s-eeprom.dat", GetPlatformAppName());
    if (n < 0 || (size_t)n >= sizeof(m_fileName) || !root_path(m_folder, sizeof(m_folder), STORE_FOLDER) ||
        snprintf(m_file, sizeof(m_file), "%s/%s", m_folder, m_fileName) >= (int)sizeof(m_file)) {
        fprintf(stderr, "settings-writer: path too long\n");
        return 2;
    }

    int code = 0;
    if (load) {
        _load();
    } else {
        char* end = nullptr;
        const unsigned long count = argc == 3 ? strtoul(argv[2], &end, 10) : 0;
        if (argc == 3 && (!*argv[2] || *end)) {
            fprintf(stderr, "settings-writer: COUNT must be a number\n");
            return 2;
        }
        code = _write(count);
    }
    eeprom_deinit();
    return code;
}
