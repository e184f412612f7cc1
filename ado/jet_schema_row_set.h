#pragma once

#include "ado/provider.h"
#include "jet/database.h"

#include <memory>

namespace kelb::ado {

/// The tables of a database by name: TABLE_NAME and TABLE_TYPE ("TABLE", "SYSTEM TABLE", "VIEW" for stored queries,
/// "LINK").
[[nodiscard]] std::unique_ptr<RowSet> tablesOf(const jet::Database& database);

} // namespace kelb::ado
