#pragma once

#include "jet/database.h"
#include "jet/table_definition.h"
#include "jet/table_definition_layout.h"

#include <cstddef>
#include <string_view>

namespace kelb::platform {
class Random;
}

/// From what a caller asks for to what a definition holds, with every check that needs no page. Errors name the table.
namespace kelb::jet {

inline constexpr std::size_t kMaxNameUnits = 64;

/// `what`: "table", "field", "index". Throws Error (BadName).
void requireGoodName(std::string_view what, std::u16string_view name);

/// Number, position and place are for TableDefinition::addColumn. Throws Error (BadName, BadDefinition).
Column makeColumn(const NewColumn& wanted, std::u16string_view table, SortOrder sortOrder);

/// Checks the columns and adds the pair of blocks; root and map are the caller's. Throws Error (BadName, NoSuchColumn,
/// AlreadyExists, BadDefinition).
PhysicalIndex& addIndex(TableDefinition& table, const NewIndex& wanted, platform::Random& random);

/// A row that is Null in every column must fit a page. Throws Error (BadDefinition).
void requireRowFits(const TableDefinition& table);

} // namespace kelb::jet
