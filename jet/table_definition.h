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
    std::uint16_t varIndex = 0;    ///< variable columns; fixed ones: variable columns before it, a number nobody needs
    std::uint16_t position = 0;    ///< display position
    std::uint16_t fixedOffset = 0; ///< fixed columns
    std::uint16_t length = 0;      ///< bytes; text: 2 × characters; memo and OLE: 0
    SortOrder sortOrder;
    std::uint8_t precision = 0, scale = 0; ///< numeric only
    std::uint8_t flags = 0;                ///< bits: table_definition_layout.h
    std::uint8_t extraFlags = 0;
    bool required = false; ///< property "Required", from the catalog

    bool isFixed() const noexcept { return (flags & 0x01) != 0; }
    // A damaged definition has these flags on fields of any type.
    bool isAutonumber() const noexcept {
        return (type == ColumnType::Long || type == ColumnType::Complex) && (flags & 0x04) != 0;
    }
    bool isGuidAutonumber() const noexcept { return type == ColumnType::Guid && (flags & 0x40) != 0; }
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
    std::uint32_t entriesAtCompaction = 0; ///< a statistic of other writers, carried along

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

struct ColumnMaps { // where the long values of a memo or OLE column live
    std::uint16_t column = 0;
    RowId owned;
    RowId free;
};

/// A table's definition: one byte string cut over a chain of pages. The first page's number is the table's id.
struct TableDefinition {
    std::u16string name; ///< from the catalog
    PageNumber page = kNoPage;
    Dialect dialect = Dialect::Jet4;
    std::uint16_t codePage = 1252; ///< Jet 3: of texts and names
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
    std::size_t fixedBytes() const noexcept; ///< max(offset + length) over fixed columns, yes/no aside
    const ColumnMaps* mapsOf(const Column& column) const noexcept;

    /// Adds a column to a new or existing table: gives it number, var index or fixed offset and display position, and
    /// puts it where the order of the blocks wants it (system tables: position 0, by name). What the caller sets:
    /// name, type, length, sort order, precision, scale, flags. Throws Error (TooManyFields).
    Column& addColumn(Column column);
    /// Adds an index under the next free number, names in order; `index.physical` is the caller's.
    LogicalIndex& addLogicalIndex(LogicalIndex index);
};

/// Bytes a value of the type takes; 0 for those without a fixed size and for yes/no, which lives in the null mask.
std::size_t fixedSize(ColumnType type) noexcept;

/// Offsets in the first page of fields that row operations keep up to date in place.
inline constexpr std::size_t kRowCountOffset = 16;
inline constexpr std::size_t kAutonumberOffset = 20;
inline constexpr std::size_t kDistinctKeysOffset = 63 + 4; ///< + 12 × physical index

/// Reads the chain of pages that starts at `page` (its bytes: table_definition_layout.h). Throws CorruptFile,
/// FileError. Jet 3: the indexes are named, but index pages of that dialect are never read; `codePage` is that of the
/// names. The definition's own name stands in the catalog and stays empty.
TableDefinition readTableDefinition(Pager& pager, PageNumber page, Dialect dialect, std::uint16_t codePage = 1252);

/// The same of a damaged file: columns and their names must be there; indexes and maps are left out, and `fault` says
/// why, when they cannot be read.
TableDefinition readAvailableDefinition(Pager& pager, PageNumber page, Dialect dialect, std::uint16_t codePage,
                                        std::string& fault);

/// Writes the whole definition over its chain, taking or releasing pages at the end; row count, autonumber and
/// statistics as given, so read it afresh before a change. A first page that is no definition yet starts a new chain.
/// Requires an operation.
void writeTableDefinition(Pager& pager, PageAllocator& allocator, const TableDefinition& definition);

/// The byte string itself: header of the first page (free field and next page 0) and length field included.
std::vector<std::byte> buildTableDefinition(const TableDefinition& definition);

} // namespace kelb::jet
