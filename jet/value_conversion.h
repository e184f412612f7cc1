#pragma once

#include "jet/table_definition.h"
#include "jet/value.h"

#include <string>
#include <string_view>

namespace kelb::jet {

/// `value` as the alternative that the column's type has (bool, uint8_t, int16_t, int32_t, Currency, float, double,
/// OleDate, Guid, Decimal with the column's scale, u16string, Binary); Null stays Null. Conversions:
/// numbers, dates (as days) and texts that are a number → any number that holds them; a single and a double take the
/// nearest value, every other type the very same one. true and false are -1 and 0; any number but 0 is true.
/// Texts → date, GUID, yes/no by their usual spellings. Everything but binaries → text.
/// Throws Error: TypeMismatch; FieldTooSmall for texts and binaries that are longer than the column. Names table, field
/// and value.
[[nodiscard]] Value convertValue(const Value& value, const Column& column, std::u16string_view table);

/// The same without copying: `value` itself when it is right as it stands, else `storage` with the converted value.
[[nodiscard]] const Value& conformValue(const Value& value, const Column& column, std::u16string_view table,
                                        Value& storage);

/// A value as text; "Null" and binaries ("5 bytes") in a way fit for messages only.
[[nodiscard]] std::u16string showValue(const Value& value);

} // namespace kelb::jet
