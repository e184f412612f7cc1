#pragma once

#include "jet/value.h"
#include "platform/date_time.h"

#include <optional>
#include <string>

namespace kelb::ado {

/// Field kinds as every provider tells them.
enum class FieldType {
    YesNo,
    Byte,
    Integer,
    Long,
    BigInteger,
    Currency,
    Single,
    Double,
    DateTime,
    Binary,
    Text,
    LongBinary,
    Memo,
    Guid,
    Numeric
};

using jet::Binary;
using jet::Currency;
using jet::Decimal;
using jet::Guid;
using jet::isNull;
using jet::Null;
using jet::OleDate;
using jet::Value;

/// A field's value as text: Null is "", yes/no "True"/"False", dates `yyyy-M-d H:mm:ss`, binary as "0x…".
[[nodiscard]] std::u16string toText(const Value& value);
/// Integral value of numbers, yes/no (-1, 0) and texts of digits; no value for anything else.
[[nodiscard]] std::optional<long long> toInteger(const Value& value);
[[nodiscard]] Value fromDateTime(const platform::DateTime& time);
[[nodiscard]] std::optional<platform::DateTime> toDateTime(const Value& value);

} // namespace kelb::ado
