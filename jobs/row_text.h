#pragma once

#include "ado/recordset.h"
#include "ado/value.h"

#include <string>
#include <string_view>

/// Rows as lines of text, UTF-8. Null is null (CSV: nothing), yes/no true and false, date-times "2015-12-02T08:30:00",
/// binary base64; currency and decimal are texts, so that no digit is lost. Everything is appended to `out`.
namespace kelb::jobs {

/// A JSON string with its quotes. Half a surrogate pair is kept as an escape, since UTF-8 cannot say it.
void appendJsonText(std::u16string_view text, std::string& out);
/// The same as a text of its own.
[[nodiscard]] std::string jsonText(std::u16string_view text);
void appendJson(const ado::Value& value, std::string& out);
/// The current row as one JSON object, members in field order, without a line end.
void appendJsonRow(const ado::Recordset& rows, std::string& out);

/// One field of RFC 4180: quoted where it must be, and an empty text always, so that it differs from Null.
void appendCsvText(std::u16string_view text, std::string& out);
void appendCsv(const ado::Value& value, std::string& out);

/// The value as plain text in the same forms; "" for Null.
[[nodiscard]] std::u16string plainText(const ado::Value& value);

} // namespace kelb::jobs
