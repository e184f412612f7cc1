#include "ado/sql_binding.h"

#include "ado/error.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <utility>

namespace kelb::ado {

namespace {

std::string at(std::size_t position) {
    return " (character " + std::to_string(position + 1) + ")";
}

std::string describe(const Expression& expression, Family family) {
    std::string text;
    if (expression.op == Operator::Column) {
        text = "column " + platform::toUtf8(expression.column) + " is ";
    }
    switch (family) {
    case Family::Null:
        return text + "Null";
    case Family::Number:
        return text + "a number";
    case Family::Date:
        return text + "a date";
    case Family::Text:
        return text + "a text";
    case Family::Guid:
        return text + "a GUID";
    case Family::Bytes:
        return text + "binary";
    }
    return text;
}

[[noreturn]] void throwMismatch(const Expression& expression, const std::string& what) {
    throw Error(Error::Kind::TypeMismatch, "data types do not match: " + what + at(expression.position));
}

bool isComparison(Operator op) noexcept {
    return op >= Operator::Equal && op <= Operator::GreaterEqual;
}

/// The operator that says the same with its operands exchanged.
Operator mirrored(Operator op) noexcept {
    switch (op) {
    case Operator::Less:
        return Operator::Greater;
    case Operator::LessEqual:
        return Operator::GreaterEqual;
    case Operator::Greater:
        return Operator::Less;
    case Operator::GreaterEqual:
        return Operator::LessEqual;
    default:
        return op;
    }
}

class Binder {
public:
    explicit Binder(const Scope& scope) : scope_(scope) {}

    BoundExpression bindAny(const Expression& expression) const {
        BoundExpression bound;
        bound.op = expression.op;
        if (expression.op == Operator::Constant) {
            bound.constant = expression.constant;
            bound.family = familyOf(bound.constant);
            return bound;
        }
        if (expression.op == Operator::Column) {
            bound.field = bindColumn({expression.table, expression.column, expression.position}, scope_);
            bound.family = familyOf(scope_.fields[bound.field].type);
            return bound;
        }
        bound.operands.reserve(expression.operands.size());
        for (const Expression& operand : expression.operands) {
            bound.operands.push_back(bindAny(operand));
        }
        bound.family = check(expression, bound);
        if (isComparison(bound.op) && bound.operands[0].op == Operator::Constant) {
            std::swap(bound.operands[0], bound.operands[1]);
            bound.op = mirrored(bound.op);
        }
        return bound;
    }

    static void requireCondition(const Expression& expression, const BoundExpression& bound) {
        if (!areComparable(bound.family, Family::Number)) {
            throwMismatch(expression, describe(expression, bound.family) + ", where a condition is expected");
        }
    }

private:
    /// Family of the result.
    static Family check(const Expression& expression, const BoundExpression& bound) {
        switch (expression.op) {
        case Operator::And:
        case Operator::Or:
        case Operator::Not:
            for (std::size_t i = 0; i < bound.operands.size(); ++i) {
                requireCondition(expression.operands[i], bound.operands[i]);
            }
            return Family::Number;
        case Operator::Like:
            if (!areComparable(bound.operands[1].family, Family::Text)) {
                throwMismatch(expression,
                              "the pattern of LIKE is " + describe(expression.operands[1], bound.operands[1].family));
            }
            return Family::Number;
        case Operator::IsNull:
            return Family::Number;
        case Operator::Concatenate:
            return Family::Text;
        case Operator::Add:
        case Operator::Subtract:
        case Operator::Multiply:
        case Operator::Divide:
        case Operator::Negate:
            return checkArithmetic(expression, bound);
        default: // comparisons, IN, BETWEEN: the first operand with each of the others
            for (std::size_t i = 1; i < bound.operands.size(); ++i) {
                checkPair(expression, bound, i);
            }
            return Family::Number;
        }
    }

    static void checkPair(const Expression& expression, const BoundExpression& bound, std::size_t other) {
        const Family left = bound.operands[0].family, right = bound.operands[other].family;
        if (areComparable(left, right)) {
            return;
        }
        std::string hint;
        if (left == Family::Number && right == Family::Text) {
            hint = "; numbers are written without quotes";
        } else if (left == Family::Text && right == Family::Number) {
            hint = "; texts are written in quotes";
        }
        throwMismatch(expression, describe(expression.operands[0], left) + " but is compared with " +
                                      describe(expression.operands[other], right) + hint);
    }

    static Family checkArithmetic(const Expression& expression, const BoundExpression& bound) {
        bool date = false, text = true;
        for (const BoundExpression& operand : bound.operands) {
            date = date || operand.family == Family::Date;
            text = text && operand.family == Family::Text;
        }
        if (text && expression.op == Operator::Add) {
            return Family::Text;
        }
        for (std::size_t i = 0; i < bound.operands.size(); ++i) {
            if (!areComparable(bound.operands[i].family, Family::Number)) {
                throwMismatch(expression, describe(expression.operands[i], bound.operands[i].family) +
                                              ", where a number is expected");
            }
        }
        const bool staysDate = date && (expression.op == Operator::Add || expression.op == Operator::Subtract);
        const bool difference = bound.operands.size() == 2 && bound.operands[0].family == Family::Date &&
                                bound.operands[1].family == Family::Date;
        return staysDate && !difference ? Family::Date : Family::Number;
    }

    const Scope& scope_;
};

} // namespace

BoundExpression bind(const Expression& expression, const Scope& scope) {
    return Binder(scope).bindAny(expression);
}

BoundExpression bindCondition(const Expression& expression, const Scope& scope) {
    BoundExpression bound = bind(expression, scope);
    Binder::requireCondition(expression, bound);
    return bound;
}

void requireTable(const ColumnName& column, const Scope& scope) {
    const bool ours = column.table.empty() || platform::equalNoCase(column.table, scope.table) ||
                      (!scope.alias.empty() && platform::equalNoCase(column.table, scope.alias));
    if (!ours) {
        throw Error(Error::Kind::NoSuchColumn, "there is no column " + platform::toUtf8(column.name) + " of " +
                                                   platform::toUtf8(column.table) + ": the statement reads table " +
                                                   platform::toUtf8(scope.table) + at(column.position));
    }
}

std::size_t bindColumn(const ColumnName& column, const Scope& scope) {
    requireTable(column, scope);
    const auto found = std::find_if(scope.fields.begin(), scope.fields.end(), [&](const FieldInfo& field) {
        return platform::equalNoCase(field.name, column.name);
    });
    if (found == scope.fields.end()) {
        throw Error(Error::Kind::NoSuchColumn, "table " + platform::toUtf8(scope.table) + " has no column \"" +
                                                   platform::toUtf8(column.name) + "\" (a text needs quotes)" +
                                                   at(column.position));
    }
    return static_cast<std::size_t>(found - scope.fields.begin());
}

std::vector<OrderKey> bindOrder(const SelectStatement& select, const Scope& scope) {
    std::vector<OrderKey> keys;
    for (const SelectStatement::Order& key : select.order) {
        const auto named = std::find_if(select.items.begin(), select.items.end(), [&](const auto& item) {
            return key.column.table.empty() && !item.count && !item.as.empty() &&
                   platform::equalNoCase(item.as, key.column.name);
        });
        keys.push_back({bindColumn(named == select.items.end() ? key.column : named->column, scope), key.ascending});
    }
    return keys;
}

} // namespace kelb::ado
