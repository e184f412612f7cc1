#include "ado/row_search.h"

#include "ado/jet_fields.h"
#include "ado/sql_evaluator.h"

namespace kelb::ado {

namespace {

/// Calls `take` for each row that the condition is true for, until it says false.
template <class Take>
void visitRows(SharedDatabase& database, jet::Table& table, const BoundExpression* where, Take&& take) {
    jet::Row row;
    const JetRowFields fields(table.definition(), row);
    Evaluator evaluator;
    const auto holds = [&] { return where == nullptr || evaluator.test(*where, fields) == Truth::True; };
    if (where != nullptr) {
        if (const auto candidates = candidateRows(database, table, *where)) {
            for (const jet::RowId id : *candidates) {
                if (table.read(id, row) && holds() && !take(row)) {
                    return;
                }
            }
            return;
        }
    }
    jet::TableScan scan = table.scan();
    while (scan.next(row)) {
        if (holds() && !take(row)) {
            return;
        }
    }
}

} // namespace

std::vector<std::uint32_t> findRows(SharedDatabase& database, jet::Table& table, const RowQuery& query) {
    if (query.top == 0) {
        return {};
    }
    if (!query.order.empty()) {
        RowOrder order(query.order, table.definition());
        visitRows(database, table, query.where, [&](const jet::Row& row) {
            order.add(row);
            return true;
        });
        return order.sorted(query.top);
    }
    std::vector<std::uint32_t> rows;
    visitRows(database, table, query.where, [&](const jet::Row& row) {
        rows.push_back(row.id().packed());
        return !query.top || rows.size() < *query.top;
    });
    return rows;
}

std::size_t countRows(SharedDatabase& database, jet::Table& table, const BoundExpression* where) {
    std::size_t rows = 0;
    visitRows(database, table, where, [&](const jet::Row& /*row*/) {
        ++rows;
        return true;
    });
    return rows;
}

} // namespace kelb::ado
