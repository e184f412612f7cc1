#pragma once

#include "jet/index_tree.h"
#include "jet/table.h"

#include <cstddef>
#include <vector>

namespace kelb::jet {

struct IndexEntries {
    std::vector<IndexTree::Entry> sorted; ///< by key and row, ready for IndexTree::build
    std::uint32_t distinctKeys = 0;
};

/// Makes the entries of an index that a table is about to get, from all its rows. `definition` already has the index.
/// Changes nothing. Throws Error (DuplicateKey, NullNotAllowed, KeyNotPossible).
IndexEntries makeIndexEntries(const Table& table, const TableDefinition& definition, std::size_t physicalIndex);

} // namespace kelb::jet
