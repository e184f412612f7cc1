#pragma once

#include "jet/error.h"
#include "jet/index_key.h"
#include "jet/index_page.h"
#include "jet/table_definition.h"
#include "jet/value.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace kelb::jet {

/// The key of one row in one index.
struct RowKey {
    KeyBytes bytes;
    bool anyNull = false, allNull = true;

    /// Indexes that ignore nulls have no entry for rows whose key columns are all Null.
    bool isEntered(const PhysicalIndex& index) const noexcept { return !(allNull && index.ignoresNulls()); }
    /// Any number of rows may have an all-Null key in a unique index.
    bool mustBeUnique(const PhysicalIndex& index) const noexcept { return index.unique() && !allNull; }
};

/// The same error with table, index and field in front and what still works behind.
[[nodiscard]] Error keyNotPossible(const TableDefinition& table, std::size_t physicalIndex, const Column& column,
                                   const Error& reason);

/// Name of an index as the user knows it.
[[nodiscard]] std::string indexName(const TableDefinition& table, std::size_t physicalIndex);

/// "table T, index I: a = 1, b = 2", for messages. `values`: those of the key columns, in their order.
[[nodiscard]] std::string describeKey(const TableDefinition& table, std::size_t physicalIndex,
                                      std::span<const Value> values);

/// `valueOf(column)` gives the value of a key column as convertValue gives it. Throws Error (KeyNotPossible).
template <class ValueOf>
RowKey makeRowKey(const TableDefinition& table, std::size_t physicalIndex, ValueOf&& valueOf) {
    RowKey key;
    for (const IndexColumn& part : table.physicalIndexes[physicalIndex].columns) {
        const Column& column = *table.columnByNumber(part.column);
        const Value& value = valueOf(column);
        const bool null = isNull(value);
        key.anyNull = key.anyNull || null;
        key.allNull = key.allNull && null;
        try {
            appendKey(key.bytes, column, part.ascending, value);
        } catch (const Error& reason) {
            if (reason.kind() != Error::Kind::KeyNotPossible) {
                throw;
            }
            throw keyNotPossible(table, physicalIndex, column, reason);
        }
    }
    return key;
}

/// The same with values looked up as in makeRowKey.
template <class ValueOf>
std::string describeKey(const TableDefinition& table, std::size_t physicalIndex, const ValueOf& valueOf) {
    std::vector<Value> values;
    for (const IndexColumn& part : table.physicalIndexes[physicalIndex].columns) {
        values.push_back(valueOf(*table.columnByNumber(part.column)));
    }
    return describeKey(table, physicalIndex, std::span<const Value>(values));
}

/// Throws Error (NullNotAllowed, KeyNotPossible) when no row may have this key in that index.
template <class ValueOf>
void requireAllowed(const RowKey& key, const TableDefinition& table, std::size_t physicalIndex,
                    const ValueOf& valueOf) {
    if (key.anyNull && table.physicalIndexes[physicalIndex].required()) {
        throw Error(Error::Kind::NullNotAllowed, "a value is required: " + describeKey(table, physicalIndex, valueOf));
    }
    if (key.bytes.size() + kRowPointerBytes > kMaxIndexEntry) {
        throw Error(Error::Kind::KeyNotPossible,
                    "the values are too long for an index: " + describeKey(table, physicalIndex, valueOf));
    }
}

} // namespace kelb::jet
