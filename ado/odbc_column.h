#pragma once

#include "ado/odbc_api.h"
#include "ado/provider.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kelb::ado {

/// A column of a result as the driver describes it.
struct OdbcColumn {
    FieldInfo info;
    SQLSMALLINT sqlType = SQL_WVARCHAR;
    SQLULEN size = 0; ///< characters, bytes or digits
    SQLSMALLINT scale = 0;
    bool nullable = true;
    std::u16string typeName; ///< the server's own word
};

/// Fills info.type and info.size from the rest.
void classify(OdbcColumn& column);

/// The value as the column holds it: whole numbers by their width, Decimal, double, OleDate, text, bytes; Null stays.
/// Throws Error (TypeMismatch, Refused) with a reason that names the field.
[[nodiscard]] Value odbcValue(const OdbcColumn& column, const Value& value);

/// Halves of characters (unpaired surrogates) become U+FFFD: drivers lose the character behind them.
void markHalfCharacters(std::u16string& text) noexcept;

/// A number such as "-12.50" or "1E+3"; throws Error (TypeMismatch) for anything else and for more digits than fit.
[[nodiscard]] Decimal parseDecimal(std::u16string_view text);

} // namespace kelb::ado
