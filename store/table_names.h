#pragma once

#include "ado/connection.h"

#include <string_view>

namespace kelb::store {

/// Whether the database has a table of exactly this name, letter case included. Throws ado::Error.
[[nodiscard]] bool tableExists(std::u16string_view sTable, ado::Connection& conn);

} // namespace kelb::store
