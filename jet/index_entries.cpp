#include "jet/index_entries.h"

#include "jet/error.h"
#include "jet/table_keys.h"

#include <algorithm>
#include <tuple>

namespace kelb::jet {

namespace {

/// An entry, and whether no other row may have its key.
struct Unchecked {
    IndexTree::Entry entry;
    bool mustBeUnique;
};

} // namespace

IndexEntries makeIndexEntries(const Table& table, const TableDefinition& definition, std::size_t physicalIndex) {
    const PhysicalIndex& index = definition.physicalIndexes[physicalIndex];
    std::vector<Unchecked> made;
    Row row;
    const auto valueOf = [&row](const Column& column) -> Value { return row.value(column); };
    for (TableScan scan = table.scan(); scan.next(row);) {
        RowKey key = makeRowKey(definition, physicalIndex, valueOf);
        requireAllowed(key, definition, physicalIndex, valueOf);
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
            throw Error(Error::Kind::DuplicateKey,
                        "two records have the same values: " + describeKey(definition, physicalIndex, valueOf));
        }
        entries.distinctKeys += repeats ? 0 : 1;
        entries.sorted.push_back(std::move(each.entry));
    }
    return entries;
}

} // namespace kelb::jet
