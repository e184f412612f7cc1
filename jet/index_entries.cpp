#include "jet/index_entries.h"

#include "jet/error.h"
#include "jet/table_keys.h"
#include "jet/value_conversion.h"

#include "platform/utf8.h"

#include <algorithm>
#include <tuple>

namespace kelb::jet {

namespace {

/// An entry, and whether no other row may have its key.
struct Unchecked {
    IndexTree::Entry entry;
    bool mustBeUnique;
};

[[noreturn]] void refuse(Error::Kind kind, const std::string& reason, const TableDefinition& table,
                         std::size_t physicalIndex, const Row& row) {
    std::string values;
    for (const IndexColumn& part : table.physicalIndexes[physicalIndex].columns) {
        const Column& column = *table.columnByNumber(part.column);
        values += (values.empty() ? "" : ", ") + platform::toUtf8(column.name) + " = " +
                  platform::toUtf8(showValue(row.value(column)));
    }
    throw Error(kind, reason + ": table " + platform::toUtf8(table.name) + ", index " +
                          indexName(table, physicalIndex) + ": " + values);
}

} // namespace

IndexEntries makeIndexEntries(const Table& table, const TableDefinition& definition, std::size_t physicalIndex) {
    const PhysicalIndex& index = definition.physicalIndexes[physicalIndex];
    std::vector<Unchecked> made;
    Row row;
    for (TableScan scan = table.scan(); scan.next(row);) {
        RowKey key =
            makeRowKey(definition, physicalIndex, [&row](const Column& column) -> Value { return row.value(column); });
        if (index.required() && key.anyNull)
            refuse(Error::Kind::NullNotAllowed, "a value is required", definition, physicalIndex, row);
        if (key.bytes.size() + kRowPointerBytes > kMaxIndexEntry)
            refuse(Error::Kind::KeyNotPossible, "the values are too long for an index", definition, physicalIndex, row);
        const bool mustBeUnique = key.mustBeUnique(index);
        if (key.isEntered(index))
            made.push_back({{std::move(key.bytes), row.id()}, mustBeUnique});
    }
    std::sort(made.begin(), made.end(), [](const Unchecked& a, const Unchecked& b) {
        return std::tie(a.entry.key, a.entry.row) < std::tie(b.entry.key, b.entry.row);
    });

    IndexEntries entries;
    entries.sorted.reserve(made.size());
    for (Unchecked& each : made) {
        const bool repeats = !entries.sorted.empty() && entries.sorted.back().key == each.entry.key;
        if (repeats && each.mustBeUnique) {
            table.read(each.entry.row, row);
            refuse(Error::Kind::DuplicateKey, "two records have the same values", definition, physicalIndex, row);
        }
        entries.distinctKeys += repeats ? 0 : 1;
        entries.sorted.push_back(std::move(each.entry));
    }
    return entries;
}

} // namespace kelb::jet
