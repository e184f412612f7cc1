#pragma once

#include "ado/value.h"

#include <cstdint>
#include <optional>
#include <variant>

namespace kelb::ado {

/// What kinds of values can be compared and calculated with each other.
enum class Family : std::uint8_t {
    Null,
    Number, ///< yes/no among them, as -1 and 0
    Date,   ///< goes with numbers: days since 1899-12-30
    Text,
    Guid,
    Bytes
};
[[nodiscard]] Family familyOf(const Value& value) noexcept;
[[nodiscard]] Family familyOf(FieldType type) noexcept;
/// Null goes with everything, a GUID also with its text.
[[nodiscard]] bool areComparable(Family a, Family b) noexcept;

/// A number, yes/no or date for calculating: whole numbers stay whole.
using Quantity = std::variant<std::int64_t, double>;
/// Requires the family Number or Date.
[[nodiscard]] Quantity numberOf(const Value& value);
[[nodiscard]] double toDouble(const Quantity& number) noexcept;

/// Negative, 0, positive; no value when either is Null. Texts without regard to case, otherwise unit by unit: trailing
/// blanks count. Requires comparable families.
[[nodiscard]] std::optional<int> compareValues(const Value& a, const Value& b);

} // namespace kelb::ado
