#pragma once
// The check word of stored records: CRC-16/XMODEM (polynomial 0x1021, initial value 0,
// most significant bit first, no reflection, no final exclusive-or).
#include "dash_types.h"

// The CRC in the low 16 bits; 0 for an empty range.
U32 uiCrcCalculation(const U8* data, U32 length);
