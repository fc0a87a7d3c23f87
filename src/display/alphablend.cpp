#include "alphablend.h"

static constexpr std::array<U8, 256 * ALPHABLEND_TABLE_COLUMNS> _buildTable()
{
    std::array<U8, 256 * ALPHABLEND_TABLE_COLUMNS> t{};
    for (U32 a = 0; a < 256; a++) {
        for (U32 c = 0; c < ALPHABLEND_TABLE_COLUMNS; c++) t[a * ALPHABLEND_TABLE_COLUMNS + c] = (U8)((a * c) >> 8);
    }
    return t;
}

alignas(64) constexpr std::array<U8, 256 * ALPHABLEND_TABLE_COLUMNS> ALPHABLEND_LOOKUP_TABLE = _buildTable();
