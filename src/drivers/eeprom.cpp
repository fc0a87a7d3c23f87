#include "eeprom.h"

#include <cstring>

#include "crc.h"
#include "eeprom_drv.h"

U8 gucStoreEepromRequired = 0;

namespace {

// The head of every record: the CRC word, then the counter, which the CRC covers.
constexpr U32 RECORD_CRC_OFFSET = 0;
constexpr U32 RECORD_COUNTER_OFFSET = 4;
constexpr U32 RECORD_HEAD_SIZE = 8;

}  // namespace

static U32 _word(const U8* record, U32 offset)
{
    U32 value;
    memcpy(&value, record + offset, sizeof(value));
    return value;
}

static void _setWord(U8* record, U32 offset, U32 value)
{
    memcpy(record + offset, &value, sizeof(value));
}

static U32 _crc(const U8* record, U32 size)
{
    return uiCrcCalculation(record + RECORD_COUNTER_OFFSET, size - RECORD_COUNTER_OFFSET);
}

void Restore_eeprom(void* record, void*, U32 size)
{
    if (size < RECORD_HEAD_SIZE) return;
    U8* rec = static_cast<U8*>(record);
    eeprom_read(0, rec, size);
    if (_crc(rec, size) == _word(rec, RECORD_CRC_OFFSET)) return;
    load_eeprom_defaults();
    gucStoreEepromRequired = 1;
}

void Store_eeprom(void* record, void* copy, U32 size)
{
    if (!gucStoreEepromRequired) return;
    gucStoreEepromRequired = 0;
    if (size < RECORD_HEAD_SIZE) return;
    U8* rec = static_cast<U8*>(record);
    if (_crc(rec, size) == _word(rec, RECORD_CRC_OFFSET)) return;  // nothing has changed

    _setWord(rec, RECORD_COUNTER_OFFSET, _word(rec, RECORD_COUNTER_OFFSET) + 1);
    _setWord(rec, RECORD_CRC_OFFSET, _crc(rec, size));
    eeprom_write(0, rec, size);
    memcpy(copy, rec, size);
}
