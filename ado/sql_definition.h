#pragma once

#include "ado/shared_database.h"
#include "ado/sql_syntax.h"
#include "jet/database.h"

namespace kelb::ado {

/// A column with the engine's type for its SQL name. TEXT and VARCHAR without a length are memos, INT is 32-bit, SHORT
/// 16-bit. Throws Error: Syntax for an unknown type or a length where none belongs, Refused for one out of range.
[[nodiscard]] jet::NewColumn newColumn(const ColumnDefinition& definition);

/// Carry the statement out, whole or not at all. Throw Error, jet::Error.
void run(SharedDatabase& database, const CreateTableStatement& create);
void run(SharedDatabase& database, const CreateIndexStatement& create);
void run(SharedDatabase& database, const AlterTableStatement& alter);

} // namespace kelb::ado
