#pragma once

#include "ado/sql_syntax.h"
#include "ado/sql_token_reader.h"

namespace kelb::ado {

/// CREATE TABLE name (column, … [, constraint, …]) and
/// CREATE [UNIQUE] INDEX name ON table (column [ASC|DESC], …) [WITH PRIMARY | DISALLOW NULL | IGNORE NULL].
///
/// A column: name type [(size[, scale])] and any of IDENTITY[(1,1)], NULL, NOT NULL, PRIMARY KEY, UNIQUE, WITH
/// COMPRESSION. A constraint: [CONSTRAINT name] PRIMARY KEY (column, …) or UNIQUE (column, …).
/// Throws Error (Syntax, Refused).
[[nodiscard]] Statement parseCreate(TokenReader& tokens);

/// ALTER TABLE name ADD [COLUMN] column, … or ADD constraint.
[[nodiscard]] Statement parseAlter(TokenReader& tokens);

} // namespace kelb::ado
