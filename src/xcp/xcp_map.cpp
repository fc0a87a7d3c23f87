#include "xcp_map.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "data.h"

namespace {

// Each row is its field: same element type, same size.
#define XCP_MAP_CHECK(Record_T, field, kind, elements)                                                              \
    static_assert(std::is_same_v<std::remove_all_extents_t<decltype(Record_T::field)>,                             \
                                 XcpMapKindType<XCP_KIND_##kind>::type>,                                           \
                  #Record_T "." #field " has the type of its row");                                                \
    static_assert(sizeof(Record_T::field) == (elements) * sizeof(XcpMapKindType<XCP_KIND_##kind>::type),           \
                  #Record_T "." #field " has the size of its row");
#define XCP_MAP_CHECK_CONST(field, kind, elements) XCP_MAP_CHECK(CONSTVariables_T, field, kind, elements)
#define XCP_MAP_CHECK_RAMEDIT(field, kind, elements) XCP_MAP_CHECK(RAMEditVariables_T, field, kind, elements)
#define XCP_MAP_CHECK_RAM(field, kind, elements) XCP_MAP_CHECK(RAMVariables_T, field, kind, elements)
#define XCP_MAP_CHECK_EE(field, kind, elements) XCP_MAP_CHECK(EEVariables_T, field, kind, elements)
XCP_MAP_CONST(XCP_MAP_CHECK_CONST)
XCP_MAP_RAMEDIT(XCP_MAP_CHECK_RAMEDIT)
XCP_MAP_RAM(XCP_MAP_CHECK_RAM)
XCP_MAP_EE(XCP_MAP_CHECK_EE)

// ... and the rows follow their fields' order in the record.
template <size_t N>
constexpr bool _inRecordOrder(const size_t (&offsets)[N])
{
    for (size_t i = 1; i < N; i++)
        if (offsets[i] <= offsets[i - 1]) return false;
    return true;
}
#define XCP_MAP_OFFSET_CONST(field, kind, elements) offsetof(CONSTVariables_T, field),
#define XCP_MAP_OFFSET_RAM(field, kind, elements) offsetof(RAMVariables_T, field),
#define XCP_MAP_OFFSET_EE(field, kind, elements) offsetof(EEVariables_T, field),
constexpr size_t m_constOffsets[] = {XCP_MAP_CONST(XCP_MAP_OFFSET_CONST)};
constexpr size_t m_ramOffsets[] = {XCP_MAP_RAM(XCP_MAP_OFFSET_RAM)};
constexpr size_t m_eeOffsets[] = {XCP_MAP_EE(XCP_MAP_OFFSET_EE)};
static_assert(_inRecordOrder(m_constOffsets) && _inRecordOrder(m_ramOffsets) && _inRecordOrder(m_eeOffsets));

// Where each row's variable lies. The constants are only ever read through their map.
#define XCP_MAP_DATA_CONST(field, kind, elements) const_cast<void*>(static_cast<const void*>(&CONSTVariables.field)),
#define XCP_MAP_DATA_RAMEDIT(field, kind, elements) static_cast<void*>(&RAMEditVariables.field),
#define XCP_MAP_DATA_RAM(field, kind, elements) static_cast<void*>(&RAMVariables.field),
#define XCP_MAP_DATA_EE(field, kind, elements) static_cast<void*>(&EEVariables_RAMShadow.field),
constexpr void* const m_constData[] = {XCP_MAP_CONST(XCP_MAP_DATA_CONST)};
constexpr void* const m_ramEditData[] = {XCP_MAP_RAMEDIT(XCP_MAP_DATA_RAMEDIT)};
constexpr void* const m_ramData[] = {XCP_MAP_RAM(XCP_MAP_DATA_RAM)};
constexpr void* const m_eeData[] = {XCP_MAP_EE(XCP_MAP_DATA_EE)};

// A map's rows: the shared table's addresses and sizes with the record's variables.
template <size_t N>
constexpr std::array<Xcp_MemoryMap_t, N> _rows(XCP_MAP_RECORD_T record, void* const (&data)[N])
{
    std::array<Xcp_MemoryMap_t, N> rows{};
    size_t k = 0;
    for (const XCP_MAP_FIELD_T& f : XcpMapFields) {
        if (f.record != record) continue;
        rows[k] = {f.addr, f.size, data[k]};
        k++;
    }
    return rows;
}

}  // namespace

constexpr std::array<Xcp_MemoryMap_t, constMapSize> constMap = _rows(XCP_RECORD_CONST, m_constData);
constexpr std::array<Xcp_MemoryMap_t, ramEditMapSize> ramEditMap = _rows(XCP_RECORD_RAMEDIT, m_ramEditData);
constexpr std::array<Xcp_MemoryMap_t, ramMapSize> ramMap = _rows(XCP_RECORD_RAM, m_ramData);
constexpr std::array<Xcp_MemoryMap_t, EEMapSize> EEMap = _rows(XCP_RECORD_EE, m_eeData);

namespace {

struct XCP_MAP_T {
    Xcp_Addr_t start;
    Xcp_Addr_t end;  // exclusive
    const Xcp_MemoryMap_t* rows;
    U32 numRows;
};
constexpr XCP_MAP_T m_maps[] = {
    {constStart, constEnd, constMap.data(), constMapSize},
    {ramEditStart, ramEditEnd, ramEditMap.data(), ramEditMapSize},
    {ramStart, ramEnd, ramMap.data(), ramMapSize},
    {EEStart, EEEnd, EEMap.data(), EEMapSize},
};

// The walk below steps from a row to the next and from a map to the next: that needs
// the rows to cover each map without a hole, and the maps to follow each other.
static_assert([] {
    Xcp_Addr_t next = constStart;
    for (const XCP_MAP_T& map : m_maps) {
        if (map.start != next) return false;
        for (U32 i = 0; i < map.numRows; i++) {
            if (map.rows[i].addr != next || map.rows[i].size == 0) return false;
            next += map.rows[i].size;
        }
        if (next != map.end) return false;
    }
    return true;
}(), "the rows cover the address space in order, without holes");

}  // namespace

// Calls visit(bytes, count) for each stretch of [addr, addr + numBytes) that lies in
// one row, in address order. A transfer that leaves the address space visits nothing.
template <typename VISIT_T>
static bool _walk(Xcp_Addr_t addr, U32 numBytes, VISIT_T visit)
{
    if (addr >= EEEnd || numBytes > EEEnd - addr) return false;
    U32 m = 0;
    while (addr >= m_maps[m].end) m++;
    // The row that holds addr: the last one that starts at or before it.
    const XCP_MAP_T* map = &m_maps[m];
    U32 lo = 0, hi = map->numRows;
    while (hi - lo > 1) {
        const U32 mid = (lo + hi) / 2;
        if (map->rows[mid].addr <= addr) lo = mid;
        else hi = mid;
    }
    U32 row = lo;
    while (numBytes > 0) {
        const Xcp_MemoryMap_t& r = map->rows[row];
        const U32 offset = (U32)(addr - r.addr);
        const U32 n = numBytes < r.size - offset ? numBytes : r.size - offset;
        visit(static_cast<U8*>(r.data) + offset, n);
        addr += n;
        numBytes -= n;
        if (++row == map->numRows && numBytes > 0) {
            map = &m_maps[++m];
            row = 0;
        }
    }
    return true;
}

Xcp_CalMemState XcpApp_CalMemRead(Xcp_Addr_t mta, U32 numBytes, U8* dest)
{
    const bool ok = _walk(mta, numBytes, [&](const U8* bytes, U32 n) {
        memcpy(dest, bytes, n);
        dest += n;
    });
    return ok ? CALMEM_FINISHED : CALMEM_REQUESTNOTVALID;
}

// Both drivers of the command processor, the main thread's CAN pass and the signal
// thread's foreground pass, hold the application lock: a write lands between two task
// passes, as a change from a menu does. A write to the settings reaches the store by
// the 1 s task's CRC check, like any other change of the record.
Xcp_CalMemState XcpApp_CalMemWrite(Xcp_Addr_t mta, U32 numBytes, const U8* source)
{
    if (mta < ramEditStart) return CALMEM_REQUESTNOTVALID;
    const bool ok = _walk(mta, numBytes, [&](U8* bytes, U32 n) {
        memcpy(bytes, source, n);
        source += n;
    });
    return ok ? CALMEM_FINISHED : CALMEM_REQUESTNOTVALID;
}

Xcp_CalMemState XcpApp_CalMemGetRequestState(void)
{
    return CALMEM_FINISHED;
}

Xcp_CalMemState XcpApp_CalMemGetChecksum(Xcp_Addr_t address, U32 numBytes, U8* checksumType, U32* checksum)
{
    *checksumType = XCP_CHECKSUM_TYPE_ADD_11;
    *checksum = 0;
    if (numBytes == 0) return CALMEM_FINISHED;
    U8 sum = 0;
    const bool ok = _walk(address, numBytes, [&](const U8* bytes, U32 n) {
        for (U32 i = 0; i < n; i++) sum = (U8)(sum + bytes[i]);
    });
    if (!ok) return CALMEM_REQUESTNOTVALID;
    *checksum = sum;
    return CALMEM_FINISHED;
}
