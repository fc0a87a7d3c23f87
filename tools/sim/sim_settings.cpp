// motordash-sim settings: what a dash's settings store holds and what the dash would
// make of it at its next start.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "crc.h"
#include "data.h"
#include "eeprom_drv.h"
#include "settings.h"
#include "sim_commands.h"

namespace {

// Where the dash keeps the store, under the name the program is started with.
constexpr const char* STORE_FILE = "app/data/config/motordash-eeprom.dat";
constexpr const char* OLD_SUFFIX = ".old";
constexpr size_t RECORD_SIZE = sizeof(EEVariables_T);
constexpr size_t CRC_START = offsetof(EEVariables_T, ulEECounter);

struct STORE_FILE_T {
    std::string path;
    bool exists;
    int error;           // errno when it exists but cannot be read
    long long length;    // bytes on disk
    size_t got;          // bytes read, at most EEPROM_SIZE, as the dash reads them
    U8 record[RECORD_SIZE];
};

// What the dash's start makes of a record. Checked in the dash's order: the CRC first,
// then the layout stamp.
enum RECORD_VERDICT_T { RECORD_GOOD, RECORD_ERASED, RECORD_BAD_CRC, RECORD_BAD_STAMP };

U32 _le32(const U8* p)
{
    return (U32)p[0] | (U32)p[1] << 8 | (U32)p[2] << 16 | (U32)p[3] << 24;
}

U16 _le16(const U8* p)
{
    return (U16)(p[0] | p[1] << 8);
}

U32 _field32(const U8* record, size_t offset)
{
    return _le32(record + offset);
}

U32 _storedCrc(const U8* record)
{
    return _field32(record, offsetof(EEVariables_T, uiCRC));
}

U32 _computedCrc(const U8* record)
{
    return uiCrcCalculation(record + CRC_START, (U32)(RECORD_SIZE - CRC_START));
}

RECORD_VERDICT_T _verdict(const U8* record)
{
    bool erased = true;
    for (size_t i = 0; i < RECORD_SIZE; i++) erased = erased && record[i] == 0xFF;
    if (erased) return RECORD_ERASED;
    if (_computedCrc(record) != _storedCrc(record)) return RECORD_BAD_CRC;
    if (_field32(record, offsetof(EEVariables_T, EE_UniqID)) != EE_UNIQ_ID) return RECORD_BAD_STAMP;
    return RECORD_GOOD;
}

// Reads the file as the dash's load does: up to EEPROM_SIZE bytes.
void _readFile(STORE_FILE_T* f)
{
    f->exists = false;
    f->error = 0;
    f->length = 0;
    f->got = 0;
    memset(f->record, 0, sizeof(f->record));
    struct stat st;
    if (stat(f->path.c_str(), &st) != 0) return;
    f->exists = true;
    f->length = (long long)st.st_size;
    const int fd = open(f->path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        f->error = errno;
        return;
    }
    static U8 image[EEPROM_SIZE];
    while (f->got < EEPROM_SIZE) {
        const ssize_t n = read(fd, image + f->got, EEPROM_SIZE - f->got);
        if (n <= 0) break;
        f->got += (size_t)n;
    }
    close(fd);
    memcpy(f->record, image, f->got < RECORD_SIZE ? f->got : RECORD_SIZE);
}

bool _accepted(const STORE_FILE_T& f)
{
    return f.got == EEPROM_SIZE;
}

// One row of the field table, as its kind is shown.
void _printField(const EE_FIELD_T& field, const U8* record)
{
    const U8* p = record + field.offset;
    printf("    %-22s", field.name);
    switch (field.kind) {
    case EE_FIELD_U8:
        for (U32 i = 0; i < field.size; i++) printf("%s%u", i ? " " : "", p[i]);
        printf("\n");
        break;
    case EE_FIELD_S16:
        printf("%d\n", (S16)_le16(p));
        break;
    case EE_FIELD_U32:
        printf("%u (0x%08X)\n", _le32(p), _le32(p));
        break;
    case EE_FIELD_PADDING:
        for (U32 i = 0; i < field.size; i++) printf("%s0x%02X", i ? " " : "", p[i]);
        printf("\n");
        break;
    case EE_FIELD_PROFILE:
        printf("pages of cells 1 to 4\n");
        for (U32 page = 0; page * PROFILE_CELLS * 2 < field.size; page++) {
            printf("      page %2u:", page + 1);
            for (U32 cell = 0; cell < PROFILE_CELLS; cell++) printf(" %04X", _le16(p + (page * PROFILE_CELLS + cell) * 2));
            printf("\n");
        }
        break;
    }
}

void _printFile(const char* title, const STORE_FILE_T& f)
{
    printf("%s: %s\n", title, f.path.c_str());
    if (!f.exists) {
        printf("  missing\n\n");
        return;
    }
    if (f.error) {
        printf("  cannot be read: %s\n\n", strerror(f.error));
        return;
    }
    if (f.length == EEPROM_SIZE) {
        printf("  length: %lld bytes, full length\n", f.length);
    } else if (_accepted(f)) {
        printf("  length: %lld bytes, longer than %d: the first %d are taken\n", f.length, EEPROM_SIZE, EEPROM_SIZE);
    } else {
        printf("  length: %lld bytes, shorter than %d: not accepted\n", f.length, EEPROM_SIZE);
    }
    if (f.got < RECORD_SIZE) {
        printf("  too short to hold the settings record (%zu bytes)\n\n", RECORD_SIZE);
        return;
    }
    printf("  record:\n");
    for (const EE_FIELD_T& field : EEVariables_FIELDS) _printField(field, f.record);
    const U32 stored = _storedCrc(f.record), computed = _computedCrc(f.record);
    printf("  CRC: stored 0x%08X, computed 0x%08X: %s\n", stored, computed, stored == computed ? "good" : "wrong");
    const U32 stamp = _field32(f.record, offsetof(EEVariables_T, EE_UniqID));
    printf("  stamp: 0x%08X, this build's 0x%08X: %s\n", stamp, EE_UNIQ_ID, stamp == EE_UNIQ_ID ? "good" : "wrong");
    printf("  counter: %u (stores so far)\n\n", _field32(f.record, offsetof(EEVariables_T, ulEECounter)));
}

const char* _whyNotLoaded(const STORE_FILE_T& f)
{
    if (!f.exists) return "missing";
    if (f.error) return "cannot be read";
    return "too short";
}

void _printVerdict(const STORE_FILE_T& current, const STORE_FILE_T& old)
{
    const STORE_FILE_T* loaded = _accepted(current) ? &current : _accepted(old) ? &old : nullptr;
    U8 erased[RECORD_SIZE];
    memset(erased, 0xFF, sizeof(erased));
    const U8* record = loaded ? loaded->record : erased;

    if (loaded == &current) {
        printf("The dash would load the current file.\n");
    } else if (loaded) {
        printf("The dash would load the .old file: the current one is %s.\n", _whyNotLoaded(current));
    } else {
        printf("The dash would load neither file: the current one is %s, the .old one is %s.\n"
               "It would start with an erased store (all 0xFF).\n",
               _whyNotLoaded(current), _whyNotLoaded(old));
    }

    const U32 counter = _field32(record, offsetof(EEVariables_T, ulEECounter));
    switch (_verdict(record)) {
    case RECORD_GOOD:
        printf("It would take the record: CRC and stamp are good, counter %u.\n", counter);
        return;
    case RECORD_ERASED:
        printf("It would fall back to the factory settings: the record is all 0xFF, so its CRC fails.\n");
        break;
    case RECORD_BAD_CRC:
        printf("It would fall back to the factory settings: wrong CRC (stored 0x%08X, computed 0x%08X).\n",
               _storedCrc(record), _computedCrc(record));
        if (_field32(record, offsetof(EEVariables_T, EE_UniqID)) != EE_UNIQ_ID)
            printf("The stamp is not this build's either.\n");
        break;
    case RECORD_BAD_STAMP:
        printf("It would fall back to the factory settings: wrong stamp 0x%08X, this build's is 0x%08X "
               "(a record of another build's layout).\n",
               _field32(record, offsetof(EEVariables_T, EE_UniqID)), EE_UNIQ_ID);
        break;
    }
    printf("The store counter would start again at %u and the factory settings would be stored within a second.\n",
           App_EE_DefaultsCounter(counter));
    // Only a short or missing current file sends the dash to the older one.
    if (loaded == &current && _accepted(old) && _verdict(old.record) == RECORD_GOOD)
        printf("The .old file holds a good record (counter %u), but the dash does not fall back to it: it reads the "
               ".old file only when the current one is missing, unreadable or too short.\n",
               _field32(old.record, offsetof(EEVariables_T, ulEECounter)));
}

}  // namespace

int sim_settings(int argc, char** argv)
{
    if (argc != 1) {
        fprintf(stderr, "usage: motordash-sim settings ROOT|FILE\n");
        return 2;
    }
    std::string path = argv[0];
    struct stat st;
    if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) path += std::string("/") + STORE_FILE;
    // Without the folder there is no store to speak of: a mistyped root, or a folder
    // that is not one.
    const std::string folder = path.find('/') == std::string::npos ? "." : path.substr(0, path.rfind('/') + 1);
    if (stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        fprintf(stderr, "motordash-sim settings: %s: no such folder; give a device root or a store file\n",
                folder.c_str());
        return 1;
    }

    STORE_FILE_T current = {}, old = {};
    current.path = path;
    old.path = path + OLD_SUFFIX;
    _readFile(&current);
    _readFile(&old);

    _printFile("Current file", current);
    _printFile("Previous file", old);
    _printVerdict(current, old);
    return 0;
}
