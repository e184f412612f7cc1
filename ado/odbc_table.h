#pragma once

#include "ado/odbc_statement.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// The one table that a SELECT reads, so that rows can be put into it and changed.
struct OdbcTable {
    std::u16string written; ///< as it stands in the SELECT, to be joined into statements
    std::u16string schema;  ///< for the catalog; "" = the login's own
    std::u16string name;    ///< for the catalog
};

/// No value where rows of the result are not rows of one table: joins, groups, DISTINCT, UNION, sub-queries.
/// The text may be in any server's dialect.
[[nodiscard]] std::optional<OdbcTable> tableOf(std::u16string_view select, NameCase names);

/// By which columns a row is found again.
struct OdbcKey {
    std::vector<std::size_t> columns; ///< positions in the result
    bool unique = false;              ///< otherwise it must be seen that exactly one row was hit
};

/// The primary key, else the shortest unique index that admits no Null, as far as the result holds all of its columns;
/// else every column that can be compared safely. Throws Error (Refused) when there is none.
[[nodiscard]] OdbcKey keyOf(const OdbcTable& table, std::span<const OdbcColumn> columns,
                            const std::shared_ptr<OdbcConnection>& connection);

} // namespace kelb::ado
