#pragma once

#include "ado/jet_row_set.h"
#include "ado/row_search.h"
#include "ado/shared_database.h"
#include "ado/sql_syntax.h"

#include <memory>
#include <optional>
#include <vector>

namespace kelb::ado {

/// A SELECT whose names belong to a table.
struct BoundSelect {
    jet::Table* table = nullptr;
    bool count = false;
    std::u16string countName;            ///< name of COUNT(*)'s field, "" when none was written
    std::vector<SelectedColumn> columns; ///< "*" in display order
    std::optional<BoundExpression> where;
    std::vector<OrderKey> order;
    std::optional<std::size_t> top;

    RowQuery query() const { return {where ? &*where : nullptr, order, top}; }
    bool takesAllRows() const noexcept { return !where && order.empty() && !top; }
};

/// Throws Error (NoSuchColumn, TypeMismatch), jet::Error (NoSuchTable).
[[nodiscard]] BoundSelect bindSelect(SharedDatabase& database, const SelectStatement& select);
/// The rows, found and put in order now; those of a whole table when somebody asks for them.
[[nodiscard]] std::unique_ptr<RowSet> openSelect(const std::shared_ptr<SharedDatabase>& database,
                                                 const SelectStatement& select);

} // namespace kelb::ado
