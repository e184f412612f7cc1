#include "ado/sql_evaluator.h"

#include "ado/error.h"

#include "platform/letter_case.h"
#include "platform/like.h"

#include <algorithm>
#include <limits>

namespace kelb::ado {

namespace {

Truth negated(Truth truth) noexcept {
    return truth == Truth::Unknown ? truth : truth == Truth::True ? Truth::False : Truth::True;
}

Truth truthIf(bool condition) noexcept {
    return condition ? Truth::True : Truth::False;
}

bool holds(Operator op, int order) noexcept {
    switch (op) {
    case Operator::Equal:
        return order == 0;
    case Operator::NotEqual:
        return order != 0;
    case Operator::Less:
        return order < 0;
    case Operator::LessEqual:
        return order <= 0;
    case Operator::Greater:
        return order > 0;
    default:
        return order >= 0;
    }
}

Truth compare(Operator op, const Value& a, const Value& b) {
    const std::optional<int> order = compareValues(a, b);
    return order ? truthIf(holds(op, *order)) : Truth::Unknown;
}

const std::u16string& textOf(const BoundExpression& constant) {
    return std::get<std::u16string>(constant.constant);
}

/// Whole results stay whole numbers as long as they fit; those of 32 bits have that type, as literals do.
Value wholeValue(std::int64_t value) {
    if (value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max()) {
        return static_cast<std::int32_t>(value);
    }
    return value;
}

std::optional<std::int64_t> calculateWhole(Operator op, std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    bool overflow = true;
    if (op == Operator::Add) {
        overflow = __builtin_add_overflow(a, b, &result);
    } else if (op == Operator::Subtract) {
        overflow = __builtin_sub_overflow(a, b, &result);
    } else if (op == Operator::Multiply) {
        overflow = __builtin_mul_overflow(a, b, &result);
    }
    return overflow ? std::nullopt : std::optional(result);
}

Value calculate(Operator op, const Quantity& a, const Quantity& b) {
    const auto* left = std::get_if<std::int64_t>(&a);
    const auto* right = std::get_if<std::int64_t>(&b);
    if (left != nullptr && right != nullptr) {
        if (const auto whole = calculateWhole(op, *left, *right)) {
            return wholeValue(*whole);
        }
    }
    const double x = toDouble(a), y = toDouble(b);
    switch (op) {
    case Operator::Add:
        return x + y;
    case Operator::Subtract:
        return x - y;
    case Operator::Multiply:
        return x * y;
    default:
        if (y == 0) {
            throw Error(Error::Kind::TypeMismatch, "division by zero");
        }
        return x / y;
    }
}

} // namespace

Truth Evaluator::test(const BoundExpression& condition, const RowFields& row) {
    switch (condition.op) {
    case Operator::And:
    case Operator::Or:
        return testList(condition, row);
    case Operator::Not:
        return negated(test(condition.operands[0], row));
    case Operator::Like:
        return testLike(condition, row);
    case Operator::In:
        return testIn(condition, row);
    case Operator::Between:
        return testBetween(condition, row);
    case Operator::IsNull: {
        const BoundExpression& tested = condition.operands[0];
        return truthIf(tested.op == Operator::Column ? row.isNull(tested.field) : isNull(value(tested, row)));
    }
    case Operator::Equal:
    case Operator::NotEqual:
    case Operator::Less:
    case Operator::LessEqual:
    case Operator::Greater:
    case Operator::GreaterEqual:
        return testComparison(condition, row);
    default:
        break;
    }
    const Value number = value(condition, row); // a yes/no column, a constant, a calculation: everything but 0 is true
    return isNull(number) ? Truth::Unknown : truthIf(toDouble(numberOf(number)) != 0);
}

Truth Evaluator::testList(const BoundExpression& list, const RowFields& row) {
    const bool conjunction = list.op == Operator::And;
    const Truth decided = conjunction ? Truth::False : Truth::True;
    Truth result = negated(decided);
    for (const BoundExpression& operand : list.operands) {
        const Truth truth = test(operand, row);
        if (truth == decided) {
            return decided;
        }
        result = conjunction ? std::min(result, truth) : std::max(result, truth);
    }
    return result;
}

Truth Evaluator::testComparison(const BoundExpression& comparison, const RowFields& row) {
    const BoundExpression &left = comparison.operands[0], &right = comparison.operands[1];
    if (!left.isTextColumn() || !right.isTextConstant()) {
        return compare(comparison.op, value(left, row), value(right, row));
    }
    if (!row.text(left.field, text_)) {
        return Truth::Unknown;
    }
    if (comparison.op == Operator::Equal || comparison.op == Operator::NotEqual) {
        return truthIf(platform::equalNoCase(text_, textOf(right)) == (comparison.op == Operator::Equal));
    }
    return truthIf(holds(comparison.op, platform::compareNoCase(text_, textOf(right))));
}

Truth Evaluator::testLike(const BoundExpression& like, const RowFields& row) {
    const BoundExpression &tested = like.operands[0], &pattern = like.operands[1];
    if (tested.isTextColumn() && pattern.isTextConstant()) {
        return row.text(tested.field, text_) ? truthIf(platform::matchesSqlLike(text_, textOf(pattern)))
                                             : Truth::Unknown;
    }
    const Value text = value(tested, row), wanted = value(pattern, row);
    if (isNull(text) || isNull(wanted)) {
        return Truth::Unknown;
    }
    return truthIf(platform::matchesSqlLike(toText(text), toText(wanted)));
}

/// As a chain of `=` joined by OR.
Truth Evaluator::testIn(const BoundExpression& in, const RowFields& row) {
    const Value tested = value(in.operands[0], row);
    Truth result = isNull(tested) ? Truth::Unknown : Truth::False;
    for (std::size_t i = 1; i < in.operands.size() && !isNull(tested) && result != Truth::True; ++i) {
        const BoundExpression& member = in.operands[i];
        const bool constant = member.op == Operator::Constant;
        result = std::max(result, compare(Operator::Equal, tested, constant ? member.constant : value(member, row)));
    }
    return result;
}

/// As `>=` AND `<=`: with low above high nothing is between.
Truth Evaluator::testBetween(const BoundExpression& between, const RowFields& row) {
    const Value tested = value(between.operands[0], row);
    return std::min(compare(Operator::GreaterEqual, tested, value(between.operands[1], row)),
                    compare(Operator::LessEqual, tested, value(between.operands[2], row)));
}

Value Evaluator::value(const BoundExpression& expression, const RowFields& row) {
    switch (expression.op) {
    case Operator::Constant:
        return expression.constant;
    case Operator::Column:
        return row.value(expression.field);
    case Operator::Add:
    case Operator::Subtract:
    case Operator::Multiply:
    case Operator::Divide:
    case Operator::Negate:
        return arithmetic(expression, row);
    case Operator::Concatenate:
        return concatenation(expression, row);
    default:
        break;
    }
    const Truth truth = test(expression, row);
    return truth == Truth::Unknown ? Value() : Value(truth == Truth::True);
}

Value Evaluator::arithmetic(const BoundExpression& expression, const RowFields& row) {
    const Value first = value(expression.operands[0], row);
    const bool unary = expression.op == Operator::Negate;
    const Value second = unary ? Value() : value(expression.operands[1], row);
    if (isNull(first) || (!unary && isNull(second))) {
        return Null{};
    }
    if (expression.family == Family::Text) {
        return std::get<std::u16string>(first) + std::get<std::u16string>(second);
    }
    const Value result = unary ? calculate(Operator::Subtract, std::int64_t{0}, numberOf(first))
                               : calculate(expression.op, numberOf(first), numberOf(second));
    return expression.family == Family::Date ? Value(OleDate{toDouble(numberOf(result))}) : result;
}

/// Null counts as "" beside a text; two Nulls stay Null.
Value Evaluator::concatenation(const BoundExpression& expression, const RowFields& row) {
    const Value first = value(expression.operands[0], row), second = value(expression.operands[1], row);
    if (isNull(first) && isNull(second)) {
        return Null{};
    }
    return toText(first) + toText(second);
}

} // namespace kelb::ado
