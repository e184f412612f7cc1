#pragma once

#include "jet/long_value.h"
#include "jet/row_record.h"
#include "jet/value.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace kelb::jet {

/// Decides for the memo and OLE fields of one record which of them lie in the record itself and which outside.
/// A value of up to 64 stored bytes lies inside while the record has room for it. Memos inside are compressed when they
/// can be, those outside only when their column compresses.
/// The values and fields given must outlive it.
class LongFields {
public:
    explicit LongFields(const TableDefinition& definition) : definition_(definition) {}

    /// A new value, as convertValue gives it, for the column at that place in definition.columns.
    void add(std::size_t column, const Value& value);
    /// A value that does not change: its field is carried over, whatever its form.
    void carry(std::size_t column, std::span<const std::byte> field);

    /// A new value by its stored bytes, which stay as they are.
    void addStored(std::size_t column, std::span<const std::byte> stored);

    /// Moves the largest inside values outside until the record, whose other variable fields take `otherBytes`, fits a
    /// page. Throws Error (RecordTooLarge), also for a value that no header can name (1 GB).
    void fit(std::size_t otherBytes);
    /// Writes what lies outside and puts every field into `fields`. Requires an operation.
    void store(Pager& pager, PageAllocator& allocator, std::span<StoredField> fields);

private:
    struct Field {
        std::size_t column;
        std::vector<std::byte> field;       ///< header and bytes inside, or the header carried over; empty: outside
        std::vector<std::byte> buffer;      ///< bytes to store outside, when they had to be made
        std::span<const std::byte> outside; ///< in `buffer` or in the value itself
        bool isInside = false;
    };
    void moveOutside(Field& field);
    void requireStorable(const Field& field) const;

    const TableDefinition& definition_;
    std::vector<Field> fields_;
};

/// Where the column's long values live. Throws Error (BadDefinition) when the definition does not say.
[[nodiscard]] LongValueMaps longValueMapsOf(const TableDefinition& definition, const Column& column);

} // namespace kelb::jet
