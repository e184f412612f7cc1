#pragma once

#include "jet/table_definition.h"
#include "jet/value.h"

#include <cstddef>
#include <vector>

namespace kelb::jet {

/// The values a row gets, each in its column's own form. Texts and binaries that are right already are not copied: the
/// values given must outlive it, and so must the definition. Columns are named by their places in definition.columns.
class NewValues {
public:
    explicit NewValues(const TableDefinition& table)
        : table_(table), storage_(table.columns.size()), values_(table.columns.size(), nullptr) {}

    /// Throws as convertValue.
    void set(std::size_t column, const Value& value);
    /// A value of the column's own form.
    void replace(std::size_t column, Value value);

    bool has(std::size_t column) const noexcept { return values_[column] != nullptr; }
    const Value& at(std::size_t column) const noexcept { return *values_[column]; } ///< Requires has(column).
    /// Of a column of the same definition; null when it gets none.
    const Value* of(const Column& column) const noexcept {
        return values_[static_cast<std::size_t>(&column - table_.columns.data())];
    }

    /// Throws Error (NullNotAllowed) for a required column or an autonumber that gets Null.
    void requireNotNull() const;

private:
    const TableDefinition& table_;
    std::vector<Value> storage_;
    std::vector<const Value*> values_; ///< in storage_ or of the caller; null: the column gets none
};

} // namespace kelb::jet
