#pragma once

#include "ado/sql_syntax.h"

#include <string_view>

namespace kelb::ado {

/// Reads one statement:
///
///     SELECT [TOP n] * | column [AS name], … | COUNT(*) [AS name] FROM table [[AS] alias] [WHERE …]
///         [ORDER BY column [ASC|DESC], …]
///     DELETE [*] FROM table [WHERE …]      UPDATE table SET column = …, … [WHERE …]
///     INSERT INTO table [(column, …)] VALUES (…) | SELECT …
///     CREATE TABLE …, CREATE [UNIQUE] INDEX …, ALTER TABLE … ADD … (sql_definition_parser.h)
///
/// Keywords and names without regard to case; one ";" may end it. Throws Error: Syntax, with the place and what was
/// expected there, or Refused for statements that this engine does not have.
[[nodiscard]] Statement parseStatement(std::u16string_view text);

} // namespace kelb::ado
