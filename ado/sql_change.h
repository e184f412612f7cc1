#pragma once

#include "ado/shared_database.h"
#include "ado/sql_syntax.h"

#include <cstddef>

namespace kelb::ado {

/// Carry the statement out for every row that it names, or for none when one of them fails. Result: the rows. Every
/// expression sees the rows as they were before the statement. Throw Error, jet::Error.
std::size_t run(SharedDatabase& database, const InsertStatement& insert);
std::size_t run(SharedDatabase& database, const UpdateStatement& update);
std::size_t run(SharedDatabase& database, const DeleteStatement& erase);

} // namespace kelb::ado
