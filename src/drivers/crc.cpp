#include "crc.h"

#include <pthread.h>

namespace {

constexpr U16 CRC_POLYNOMIAL = 0x1021;

U16 m_crcTable[256];
// The first call builds the table; the store task and the main thread may both be first.
pthread_once_t crc_init_done = PTHREAD_ONCE_INIT;

}  // namespace

static void _crcBuildTable(void)
{
    for (U32 i = 0; i < 256; i++) {
        U16 crc = (U16)(i << 8);
        for (int bit = 0; bit < 8; bit++) crc = (crc & 0x8000) ? (U16)((crc << 1) ^ CRC_POLYNOMIAL) : (U16)(crc << 1);
        m_crcTable[i] = crc;
    }
}

U32 uiCrcCalculation(const U8* data, U32 length)
{
    pthread_once(&crc_init_done, _crcBuildTable);
    U16 crc = 0;
    for (U32 i = 0; i < length; i++) crc = (U16)((crc << 8) ^ m_crcTable[(U8)(crc >> 8) ^ data[i]]);
    return crc;
}
