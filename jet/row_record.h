#pragma once

#include "jet/table_definition.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// One record.
///
/// | part | size | meaning |
/// |---|---|---|
/// | column count | u16 | n: highest number of columns of the table when the row was written |
/// | fixed area | | fixed columns at 2 + their offset, room kept for Null, too |
/// | variable data | | in order of var index |
/// | end offset | u16 | where the variable data ends |
/// | var offsets | u16 each | in reverse: that of var index 0 stands last |
/// | var count | u16 | |
/// | null mask | (n+7)/8 | bit of the column number: has a value; yes/no: the value |
///
/// Without variable columns the mask follows the fixed area. Offsets count from the start of the row. Jet 3: counts and
/// offsets of one byte, with "jump" bytes that say where 256 is added.
namespace kelb::jet {

/// Where a record lies, for messages.
struct RowPlace {
    std::u16string_view path;
    PageNumber page = kNoPage;
    std::size_t offset = 0; ///< of the record in the page
};

/// Reads a record where it lies. `bytes`, `definition` and the path must outlive it.
class RowView {
public:
    RowView() = default;
    /// Throws CorruptFile when the bytes are too few for their own null mask.
    RowView(std::span<const std::byte> bytes, const TableDefinition& definition, const RowPlace& place);

    /// The column's mask bit; false for columns that are newer than the row.
    bool isSet(const Column& column) const noexcept;
    /// The stored bytes, or no value for Null. Throws CorruptFile when the row puts them outside itself.
    /// Requires a column that is not yes/no. Calculated columns come unwrapped.
    std::optional<std::span<const std::byte>> field(const Column& column) const;
    std::span<const std::byte> bytes() const noexcept { return bytes_; }
    [[noreturn]] void corrupt(std::size_t offset, const char* expected) const; ///< offset in the row

private:
    struct Range {
        std::size_t start, end;
    };
    std::optional<Range> variable(std::size_t varIndex) const;
    std::optional<Range> jet3Variable(std::size_t varIndex) const;

    std::span<const std::byte> bytes_;
    const TableDefinition* definition_ = nullptr;
    RowPlace place_;
    std::size_t columns_ = 0, mask_ = 0; ///< column count; offset of the null mask
};

/// One column of a record to be built. Yes/no: `set` is the value, no bytes.
struct StoredField {
    bool set = false;
    std::vector<std::byte> bytes;
};

/// Length of a Jet 4 record whose variable columns take `variableBytes`.
[[nodiscard]] std::size_t rowSize(const TableDefinition& definition, std::size_t variableBytes) noexcept;

/// A Jet 4 record. `fields` stand in the order of definition.columns; their bytes have the column's fixed size.
/// Requires a definition that requireConsistent() lets through.
[[nodiscard]] std::vector<std::byte> buildRow(const TableDefinition& definition, std::span<const StoredField> fields);

/// Throws Error (BadDefinition), naming the column, when a record built by this definition would be damaged: column
/// numbers or var indexes twice or out of range, fixed columns that overlap or have another size than their type.
void requireConsistent(const TableDefinition& definition);

} // namespace kelb::jet
