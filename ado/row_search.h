#pragma once

#include "ado/row_order.h"
#include "ado/shared_database.h"
#include "ado/sql_binding.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelb::ado {

/// Which rows of a table, in which order. Fields of `where` are positions in the definition's columns.
struct RowQuery {
    const BoundExpression* where = nullptr; ///< null: all
    std::vector<OrderKey> order;            ///< empty: page order
    std::optional<std::size_t> top;
};

/// Packed ids of the rows. Reads as little as it can: rows that an index or hash index leads to where the condition
/// asks for equality with a constant, else all rows once, of each only the columns that condition and order name; stops
/// at `top` rows where no order needs the others. TOP with ORDER BY gives exactly so many rows, also among equal keys.
[[nodiscard]] std::vector<std::uint32_t> findRows(SharedDatabase& database, jet::Table& table, const RowQuery& query);

/// As findRows, only counted.
[[nodiscard]] std::size_t countRows(SharedDatabase& database, jet::Table& table, const BoundExpression* where);

/// The rows that `where` can be true for, found without a scan: sorted, none twice. No value when only a scan can tell.
[[nodiscard]] std::optional<std::vector<jet::RowId>> candidateRows(SharedDatabase& database, jet::Table& table,
                                                                   const BoundExpression& where);

} // namespace kelb::ado
