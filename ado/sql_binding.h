#pragma once

#include "ado/provider.h"
#include "ado/sql_syntax.h"
#include "ado/value_comparison.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace kelb::ado {

/// The table that a statement's names belong to.
struct Scope {
    std::u16string_view table, alias; ///< alias "" when none
    std::span<const FieldInfo> fields;
};

/// One key of ORDER BY.
struct OrderKey {
    std::size_t column; ///< index into Scope::fields
    bool ascending = true;
};

/// An expression whose columns are fields of one table and whose operands go together.
struct BoundExpression {
    Operator op = Operator::Constant;
    Family family = Family::Null; ///< of the result; Null when only known from the row
    std::size_t field = 0;        ///< Column: index into Scope::fields
    Value constant;               ///< Constant
    std::vector<BoundExpression> operands;

    bool isTextColumn() const noexcept { return op == Operator::Column && family == Family::Text; }
    bool isTextConstant() const noexcept { return op == Operator::Constant && family == Family::Text; }
};

/// Throws Error: NoSuchColumn naming table and column, TypeMismatch when operands do not go together (a text compared
/// with a number), whatever the rows hold. A constant before a column changes sides.
[[nodiscard]] BoundExpression bind(const Expression& expression, const Scope& scope);
/// As bind(); the result is a condition.
[[nodiscard]] BoundExpression bindCondition(const Expression& expression, const Scope& scope);
/// Throws Error (NoSuchColumn) when the name belongs to another table.
void requireTable(const ColumnName& column, const Scope& scope);
/// Position in Scope::fields. Throws Error (NoSuchColumn).
[[nodiscard]] std::size_t bindColumn(const ColumnName& column, const Scope& scope);
/// The keys of the statement's ORDER BY, which may name a column of the table or a name given by AS. Throws Error
/// (NoSuchColumn).
[[nodiscard]] std::vector<OrderKey> bindOrder(const SelectStatement& select, const Scope& scope);

} // namespace kelb::ado
