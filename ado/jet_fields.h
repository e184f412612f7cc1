#pragma once

#include "ado/provider.h"
#include "ado/sql_evaluator.h"
#include "jet/table.h"

#include <vector>

namespace kelb::ado {

[[nodiscard]] FieldType fieldTypeOf(const jet::Column& column) noexcept;
/// One for each of the definition's columns, in their order.
[[nodiscard]] std::vector<FieldInfo> fieldsOf(const jet::TableDefinition& table);

/// A row of a table for expressions; fields are positions in the definition's columns. Both must outlive it.
class JetRowFields final : public RowFields {
public:
    JetRowFields(const jet::TableDefinition& table, const jet::Row& row) : table_(table), row_(row) {}
    Value value(std::size_t field) const override { return row_.value(table_.columns[field]); }
    bool text(std::size_t field, std::u16string& out) const override { return row_.text(table_.columns[field], out); }
    bool isNull(std::size_t field) const override { return row_.isNull(table_.columns[field]); }

private:
    const jet::TableDefinition& table_;
    const jet::Row& row_;
};

} // namespace kelb::ado
