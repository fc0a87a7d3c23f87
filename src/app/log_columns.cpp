#include "log_columns.h"

#include <cstring>

real_T LogColumnValue(size_t column)
{
    if (column >= LOG_COLUMN_COUNT) return 0.0;
    const LOG_COLUMN_T& c = LOG_COLUMNS[column];
    const uint8_T* field = reinterpret_cast<const uint8_T*>(&Velnor_Dorvik_V6c_B) + c.signal;
    switch (c.kind) {
    case CAN_KIND_U8:
        return *field;
    case CAN_KIND_U16: {
        uint16_T v;
        memcpy(&v, field, sizeof(v));
        return v;
    }
    case CAN_KIND_U32: {
        uint32_T v;
        memcpy(&v, field, sizeof(v));
        return v;
    }
    default: {
        real_T v;
        memcpy(&v, field, sizeof(v));
        return v;
    }
    }
}
