#include "ado/sql_change.h"

#include "ado/error.h"
#include "ado/jet_fields.h"
#include "ado/jet_select.h"
#include "ado/row_search.h"
#include "ado/sql_evaluator.h"

#include "platform/utf8.h"

#include <optional>
#include <vector>

namespace kelb::ado {

namespace {

/// A table and the names that a statement may use for its columns.
struct Target {
    Target(SharedDatabase& database, const std::u16string& name, std::u16string_view alias)
        : table(database.table(name)),
          fields(fieldsOf(table.definition())), scope{table.definition().name, alias, fields} {
        database.requireWritable(table);
    }
    jet::Table& table;
    std::vector<FieldInfo> fields;
    Scope scope;
};

std::optional<BoundExpression> bindWhere(const std::optional<Expression>& where, const Scope& scope) {
    return where ? std::optional(bindCondition(*where, scope)) : std::nullopt;
}

/// A row of no table, for expressions that name no column.
class NoFields final : public RowFields {
public:
    Value value(std::size_t /*field*/) const override { return {}; }
    bool text(std::size_t /*field*/, std::u16string& /*out*/) const override { return false; }
    bool isNull(std::size_t /*field*/) const override { return true; }
};

/// The columns that an INSERT fills, in the order of its values.
std::vector<std::size_t> insertedColumns(const InsertStatement& insert, const Target& target) {
    if (insert.columns.empty()) {
        return target.table.definition().displayOrder();
    }
    std::vector<std::size_t> columns;
    for (const ColumnName& column : insert.columns) {
        columns.push_back(bindColumn(column, target.scope));
    }
    return columns;
}

void requireCount(const Target& target, std::size_t columns, std::size_t values) {
    if (columns != values) {
        throw Error(Error::Kind::Syntax, "table " + platform::toUtf8(target.table.name()) + " gets " +
                                             std::to_string(values) + " values for " + std::to_string(columns) +
                                             " columns");
    }
}

std::size_t insertValues(SharedDatabase& database, const Target& target, const std::vector<std::size_t>& columns,
                         const std::vector<Expression>& expressions) {
    requireCount(target, columns.size(), expressions.size());
    const Scope nothing{target.scope.table, {}, {}};
    std::vector<Value> row(target.fields.size());
    Evaluator evaluator;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        row[columns[i]] = evaluator.value(bind(expressions[i], nothing), NoFields());
    }
    database.insert(target.table, row, nullptr);
    return 1;
}

std::size_t insertSelected(SharedDatabase& database, const Target& target, const std::vector<std::size_t>& columns,
                           const SelectStatement& select) {
    const BoundSelect source = bindSelect(database, select);
    if (source.count) {
        throw Error(Error::Kind::Refused, "INSERT … SELECT COUNT(*) is not supported");
    }
    requireCount(target, columns.size(), source.columns.size());
    const std::vector<std::uint32_t> rows = findRows(database, *source.table, source.query());
    std::vector<Value> values(target.fields.size());
    jet::Row row;
    database.atomically([&] {
        for (const std::uint32_t id : rows) {
            if (!source.table->read(jet::RowId::unpack(id), row)) {
                continue;
            }
            for (std::size_t i = 0; i < columns.size(); ++i) {
                values[columns[i]] = row.value(source.table->definition().columns[source.columns[i].column]);
            }
            database.insert(target.table, values, nullptr);
        }
    });
    return rows.size();
}

} // namespace

std::size_t run(SharedDatabase& database, const InsertStatement& insert) {
    const Target target(database, insert.table, {});
    const std::vector<std::size_t> columns = insertedColumns(insert, target);
    if (const auto* values = std::get_if<std::vector<Expression>>(&insert.source)) {
        return insertValues(database, target, columns, *values);
    }
    return insertSelected(database, target, columns, std::get<SelectStatement>(insert.source));
}

std::size_t run(SharedDatabase& database, const UpdateStatement& update) {
    const Target target(database, update.table.name, update.table.alias);
    const auto where = bindWhere(update.where, target.scope);
    std::vector<std::size_t> columns;
    std::vector<BoundExpression> expressions;
    for (const Assignment& assignment : update.assignments) {
        columns.push_back(bindColumn(assignment.column, target.scope));
        expressions.push_back(bind(assignment.value, target.scope));
    }
    const std::vector<std::uint32_t> rows =
        findRows(database, target.table, {where ? &*where : nullptr, {}, std::nullopt});
    Evaluator evaluator;
    jet::Row row;
    std::vector<jet::Change> changes(columns.size());
    database.atomically([&] {
        for (const std::uint32_t packed : rows) {
            const jet::RowId id = jet::RowId::unpack(packed);
            if (!target.table.read(id, row)) {
                continue;
            }
            const JetRowFields fields(target.table.definition(), row);
            for (std::size_t i = 0; i < columns.size(); ++i) {
                changes[i] = {columns[i], evaluator.value(expressions[i], fields)};
            }
            database.update(target.table, id, changes);
        }
    });
    return rows.size();
}

std::size_t run(SharedDatabase& database, const DeleteStatement& erase) {
    const Target target(database, erase.table.name, erase.table.alias);
    const auto where = bindWhere(erase.where, target.scope);
    const std::vector<std::uint32_t> rows =
        findRows(database, target.table, {where ? &*where : nullptr, {}, std::nullopt});
    database.atomically([&] {
        for (const std::uint32_t id : rows) {
            database.erase(target.table, jet::RowId::unpack(id), nullptr);
        }
    });
    return rows.size();
}

} // namespace kelb::ado
