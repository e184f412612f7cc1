#include "ado/jet_select.h"

#include "ado/error.h"
#include "ado/fixed_row_set.h"
#include "ado/jet_fields.h"

namespace kelb::ado {

namespace {

void selectAll(const jet::TableDefinition& table, std::vector<SelectedColumn>& columns) {
    for (const std::size_t column : table.displayOrder()) {
        columns.push_back({table.columns[column].name, column});
    }
}

} // namespace

BoundSelect bindSelect(SharedDatabase& database, const SelectStatement& select) {
    BoundSelect bound;
    bound.table = &database.table(select.table.name);
    const jet::TableDefinition& definition = bound.table->definition();
    const std::vector<FieldInfo> fields = fieldsOf(definition);
    const Scope scope{definition.name, select.table.alias, fields};
    for (const SelectStatement::Item& item : select.items) {
        if (item.count) {
            bound.count = true;
            bound.countName = item.as;
        } else if (item.column.name.empty()) {
            requireTable(item.column, scope);
            selectAll(definition, bound.columns);
        } else {
            const std::size_t column = bindColumn(item.column, scope);
            bound.columns.push_back({item.as.empty() ? fields[column].name : item.as, column});
        }
    }
    if (select.where) {
        bound.where = bindCondition(*select.where, scope);
    }
    bound.order = bindOrder(select, scope);
    bound.top = select.top;
    return bound;
}

std::unique_ptr<RowSet> openSelect(const std::shared_ptr<SharedDatabase>& database, const SelectStatement& select) {
    const BoundSelect bound = bindSelect(*database, select);
    if (bound.count) {
        return countRowSet(bound.countName, countRows(*database, *bound.table, bound.query().where), bound.top);
    }
    if (bound.takesAllRows()) {
        return std::make_unique<JetRowSet>(database, *bound.table, bound.columns);
    }
    return std::make_unique<JetRowSet>(database, *bound.table, bound.columns,
                                       findRows(*database, *bound.table, bound.query()));
}

} // namespace kelb::ado
