#pragma once

#include "ado/sql_binding.h"
#include "ado/value.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelb::ado {

/// A row as expressions see it; fields are numbered as in the Scope that they were bound in.
class RowFields {
public:
    virtual ~RowFields() = default;
    virtual Value value(std::size_t field) const = 0;
    /// Text and memo fields: into `out` (capacity kept); false for Null.
    virtual bool text(std::size_t field, std::u16string& out) const = 0;
    virtual bool isNull(std::size_t field) const = 0;
};

/// Ordered so that AND is the least and OR the greatest.
enum class Truth : std::uint8_t { False, Unknown, True };

/// Calculates expressions row by row. Null follows SQL: a comparison with it is Unknown, NOT Unknown stays Unknown.
/// Keeps buffers between rows, so that testing a text column makes no copies. Not for two threads.
class Evaluator {
public:
    [[nodiscard]] Truth test(const BoundExpression& condition, const RowFields& row);
    /// Conditions give yes/no or Null. Throws Error (TypeMismatch) for a division by zero.
    [[nodiscard]] Value value(const BoundExpression& expression, const RowFields& row);

private:
    Truth testList(const BoundExpression& list, const RowFields& row);
    Truth testComparison(const BoundExpression& comparison, const RowFields& row);
    Truth testLike(const BoundExpression& like, const RowFields& row);
    Truth testIn(const BoundExpression& in, const RowFields& row);
    Truth testBetween(const BoundExpression& between, const RowFields& row);
    Value arithmetic(const BoundExpression& expression, const RowFields& row);
    Value concatenation(const BoundExpression& expression, const RowFields& row);

    std::u16string text_;
};

} // namespace kelb::ado
