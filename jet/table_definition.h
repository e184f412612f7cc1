#pragma once

#include "jet/pager.h"
#include "jet/types.h"
#include "jet/usage_map.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kelb::jet {

/// Which of the three on-disk dialects a file speaks.
enum class Dialect { Jet3, Jet4, Ace };

struct SortOrder {
    std::uint16_t lcid = 0x0409;
    std::uint8_t version = 0;
    friend bool operator==(const SortOrder&, const SortOrder&) = default;
};

struct Column {
    std::u16string name;
    ColumnType type = ColumnType::Text;
    std::uint16_t number = 0;      ///< position of the null bit; never reused
    std::uint16_t varIndex = 0;    ///< variable columns
    std::uint16_t position = 0;    ///< display position
    std::uint16_t fixedOffset = 0; ///< fixed columns
    std::uint16_t length = 0;      ///< bytes; text: 2 × characters; memo and OLE: 0
    SortOrder sortOrder;
    std::uint8_t precision = 0, scale = 0; ///< numeric only
    std::uint8_t flags = 0;                ///< kColumn… below
    std::uint8_t extraFlags = 0;
    bool required = false; ///< property "Required", from the catalog

    bool isFixed() const noexcept { return (flags & 0x01) != 0; }
    bool isAutonumber() const noexcept { return (flags & 0x04) != 0; }
    bool isGuidAutonumber() const noexcept { return (flags & 0x40) != 0; }
    bool isLongValue() const noexcept { return type == ColumnType::Memo || type == ColumnType::Ole; }
    bool compresses() const noexcept { return (extraFlags & 0x01) != 0; }
    bool isCalculated() const noexcept { return (extraFlags & 0xC0) == 0xC0; }
};

struct IndexColumn {
    std::uint16_t column = 0; ///< column number
    bool ascending = true;
};

struct PhysicalIndex {
    std::vector<IndexColumn> columns;
    RowId ownedMap;
    PageNumber root = kNoPage;
    std::uint8_t flags = 0x80;
    std::uint32_t distinctKeys = 0;

    bool unique() const noexcept { return (flags & 0x01) != 0; }
    bool ignoresNulls() const noexcept { return (flags & 0x02) != 0; }
    bool required() const noexcept { return (flags & 0x08) != 0; }
};

struct LogicalIndex {
    std::u16string name;
    std::uint32_t number = 0;
    std::uint32_t physical = 0;
    std::uint8_t relationSide = 0;
    std::int32_t relationIndex = -1;
    std::uint32_t relationTable = 0;
    std::uint8_t cascadeUpdate = 4, cascadeDelete = 4;
    std::uint8_t kind = 0; ///< 0 ordinary, 1 primary key, 2 foreign key
};

struct ColumnMaps {
    std::uint16_t column = 0;
    RowId owned;
    RowId free;
};

/// A table's definition: one byte string cut over a chain of pages. The first page's number is the table's id.
struct TableDefinition {
    std::u16string name; ///< from the catalog
    PageNumber page = kNoPage;
    std::uint8_t tableType = 0x4E; ///< 0x4E user, 0x53 system
    std::uint16_t maxColumns = 0;  ///< highest number of columns ever
    std::uint16_t varColumns = 0;  ///< variable columns ever
    RowId ownedMap, freeMap;
    std::vector<Column> columns; ///< in the order of their blocks
    std::vector<PhysicalIndex> physicalIndexes;
    std::vector<LogicalIndex> logicalIndexes;
    std::vector<ColumnMaps> longValueMaps;
    std::uint32_t rowCount = 0, lastAutonumber = 0, autonumberStep = 1; ///< as of reading; live values: see Table

    const Column* findColumn(std::u16string_view columnName) const noexcept; ///< without regard to case
    const Column* columnByNumber(std::uint16_t number) const noexcept;
    /// Indexes into `columns` by display position, ties by block order: what "select *" shows.
    std::vector<std::size_t> displayOrder() const;
    std::size_t fixedBytes() const noexcept; ///< max(offset + length) over fixed columns
};

/// Offsets in the first page of fields that row operations keep up to date in place.
inline constexpr std::size_t kRowCountOffset = 16;
inline constexpr std::size_t kAutonumberOffset = 20;
inline constexpr std::size_t kDistinctKeysOffset = 63 + 4; ///< + 12 × physical index; may lie on a further page

/// Reads the chain that starts at `page`. Throws CorruptFile.
TableDefinition readTableDefinition(Pager& pager, PageNumber page, Dialect dialect);

/// Writes the whole definition over its chain, taking or releasing pages at the end; keeps row count, autonumber and
/// statistics as given. Requires an operation.
void writeTableDefinition(Pager& pager, PageAllocator& allocator, const TableDefinition& definition);

/// The byte string itself (length field included), for writing and for tests.
std::vector<std::byte> buildTableDefinition(const TableDefinition& definition);

} // namespace kelb::jet
