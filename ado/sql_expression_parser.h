#pragma once

#include "ado/sql_syntax.h"
#include "ado/sql_token_reader.h"

namespace kelb::ado {

/// Reads an expression. Binds from loose to tight: OR; AND; NOT; comparisons, LIKE, IN, BETWEEN, IS; &; + -; * /; sign.
/// Throws Error (Syntax), also when it is nested deeper than any reader needs.
[[nodiscard]] Expression parseExpression(TokenReader& tokens);

/// `name` or `table.name`.
[[nodiscard]] ColumnName parseColumnName(TokenReader& tokens);

} // namespace kelb::ado
