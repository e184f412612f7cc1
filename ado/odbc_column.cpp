#include "ado/odbc_column.h"

#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace kelb::ado {

namespace {

/// A longer text or binary column is one without a limit that anybody could be told.
constexpr SQLULEN kLongestLimited = 8000;
/// Drivers tell PostgreSQL's yes/no columns as texts of five characters unless they are asked not to.
constexpr std::u16string_view kBooleanName = u"bool";

FieldType typeOf(const OdbcColumn& column) {
    const bool limited = column.size > 0 && column.size <= kLongestLimited;
    switch (column.sqlType) {
    case SQL_BIT:
        return FieldType::YesNo;
    case SQL_TINYINT: // with sign on some servers, without on others
    case SQL_SMALLINT:
        return FieldType::Integer;
    case SQL_INTEGER:
        return FieldType::Long;
    case SQL_BIGINT:
        return FieldType::BigInteger;
    case SQL_REAL:
        return FieldType::Single;
    case SQL_FLOAT:
    case SQL_DOUBLE:
        return FieldType::Double;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
        return FieldType::Numeric;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
        return FieldType::DateTime;
    case SQL_BINARY:
    case SQL_VARBINARY:
        return limited ? FieldType::Binary : FieldType::LongBinary;
    case SQL_LONGVARBINARY:
        return FieldType::LongBinary;
    case SQL_LONGVARCHAR:
    case SQL_WLONGVARCHAR:
        return FieldType::Memo;
    case SQL_CHAR:
    case SQL_VARCHAR:
    case SQL_WCHAR:
    case SQL_WVARCHAR:
        return limited ? FieldType::Text : FieldType::Memo;
    default: // times of day, GUIDs, and what servers invent: every driver gives it as a text
        return FieldType::Text;
    }
}

[[noreturn]] void mismatch(const OdbcColumn& column, const Value& value) {
    constexpr std::size_t kShown = 40;
    throw Error(Error::Kind::TypeMismatch, "\"" + platform::toUtf8(toText(value).substr(0, kShown)) +
                                               "\" does not fit field " + platform::toUtf8(column.info.name));
}

/// Numbers, yes/no (-1, 0) and texts that are numbers.
double number(const OdbcColumn& column, const Value& value) {
    if (const auto whole = toInteger(value)) {
        return static_cast<double>(*whole);
    }
    if (const auto* real = std::get_if<double>(&value)) {
        return *real;
    }
    if (const auto* real = std::get_if<float>(&value)) {
        return static_cast<double>(*real);
    }
    if (std::holds_alternative<OleDate>(value) || std::holds_alternative<Binary>(value) ||
        std::holds_alternative<Guid>(value)) {
        mismatch(column, value);
    }
    const std::string text = platform::toUtf8(platform::trimBlanks(toText(value)));
    double result = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (text.empty() || fault != std::errc() || end != text.data() + text.size() || !std::isfinite(result)) {
        mismatch(column, value);
    }
    return result;
}

template <class Integer>
Integer wholeNumber(const OdbcColumn& column, const Value& value) {
    const auto exact = toInteger(value);
    const double rounded = exact ? 0 : std::nearbyint(number(column, value));
    constexpr double kFirstOutside = 9223372036854775808.0; // 2^63
    if (!exact && !(rounded >= -kFirstOutside && rounded < kFirstOutside)) {
        mismatch(column, value);
    }
    const long long whole = exact ? *exact : static_cast<long long>(rounded);
    if (whole < std::numeric_limits<Integer>::min() || whole > std::numeric_limits<Integer>::max()) {
        mismatch(column, value);
    }
    return static_cast<Integer>(whole);
}

bool yesNo(const OdbcColumn& column, const Value& value) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        if (platform::equalNoCase(*text, u"True") || platform::equalNoCase(*text, u"False")) {
            return platform::equalNoCase(*text, u"True");
        }
    }
    return number(column, value) != 0;
}

Decimal decimal(const OdbcColumn& column, const Value& value) {
    if (const auto* exact = std::get_if<Decimal>(&value)) {
        return *exact;
    }
    try {
        return parseDecimal(std::holds_alternative<bool>(value) ? platform::number(std::get<bool>(value) ? -1 : 0)
                                                                : toText(value));
    } catch (const Error&) {
        mismatch(column, value);
    }
}

/// Servers end texts at a character 0, or refuse them in words of their own: it would cost the rest of the text.
std::u16string plainText(const OdbcColumn& column, const Value& value) {
    std::u16string text = toText(value);
    if (text.find(u'\0') != text.npos) {
        throw Error(Error::Kind::Refused, "the text for field " + platform::toUtf8(column.info.name) +
                                              " holds the character 0, which no server stores");
    }
    markHalfCharacters(text);
    return text;
}

} // namespace

void classify(OdbcColumn& column) {
    column.info.type = column.typeName == kBooleanName ? FieldType::YesNo : typeOf(column);
    const bool sized = column.info.type == FieldType::Text || column.info.type == FieldType::Binary;
    column.info.size = sized ? static_cast<std::size_t>(column.size) : 0;
}

Value odbcValue(const OdbcColumn& column, const Value& value) {
    if (isNull(value)) {
        return value;
    }
    switch (column.info.type) {
    case FieldType::YesNo:
        return yesNo(column, value);
    case FieldType::Byte:
    case FieldType::Integer:
        return wholeNumber<std::int16_t>(column, value);
    case FieldType::Long:
        return wholeNumber<std::int32_t>(column, value);
    case FieldType::BigInteger:
        return wholeNumber<std::int64_t>(column, value);
    case FieldType::Single:
    case FieldType::Double:
        return number(column, value);
    case FieldType::Currency:
    case FieldType::Numeric:
        return decimal(column, value);
    case FieldType::DateTime:
        if (const auto time = toDateTime(value)) {
            return fromDateTime(*time);
        }
        mismatch(column, value);
    case FieldType::Binary:
    case FieldType::LongBinary:
        if (!std::holds_alternative<Binary>(value)) {
            mismatch(column, value);
        }
        return value;
    case FieldType::Text:
    case FieldType::Memo:
    case FieldType::Guid:
        break;
    }
    return plainText(column, value);
}

void markHalfCharacters(std::u16string& text) noexcept {
    const auto isFirst = [](char16_t unit) { return (unit & 0xFC00U) == 0xD800U; };
    const auto isSecond = [](char16_t unit) { return (unit & 0xFC00U) == 0xDC00U; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isFirst(text[i]) && i + 1 < text.size() && isSecond(text[i + 1])) {
            ++i;
        } else if (isFirst(text[i]) || isSecond(text[i])) {
            text[i] = u'\uFFFD';
        }
    }
}

Decimal parseDecimal(std::u16string_view text) {
    const auto refuse = [&] {
        throw Error(Error::Kind::TypeMismatch, "\"" + platform::toUtf8(text) + "\" is not a decimal number");
    };
    text = platform::trimBlanks(text);
    Decimal result;
    result.negative = text.starts_with(u'-');
    std::u16string_view rest = text.substr(result.negative || text.starts_with(u'+') ? 1 : 0);
    int exponent = 0;
    if (const std::size_t mark = rest.find_first_of(u"eE"); mark != rest.npos) {
        std::string digits = platform::toUtf8(rest.substr(mark + 1));
        digits.erase(0, digits.starts_with('+') ? 1 : 0);
        const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (fault != std::errc() || end != digits.data() + digits.size() || exponent < -100 || exponent > 100) {
            refuse();
        }
        rest = rest.substr(0, mark);
    }
    const auto append = [&](unsigned digit) { // least significant word first, so that the carry runs upwards
        std::uint64_t carry = digit;
        for (std::size_t i = result.magnitude.size(); i-- > 0;) {
            carry += std::uint64_t{result.magnitude[i]} * 10;
            result.magnitude[i] = static_cast<std::uint32_t>(carry);
            carry >>= 32U;
        }
        if (carry != 0) {
            refuse();
        }
    };
    int scale = -exponent;
    bool point = false;
    bool any = false;
    for (const char16_t unit : rest) {
        if (unit == u'.' && !point) {
            point = true;
        } else if (unit >= u'0' && unit <= u'9') {
            append(static_cast<unsigned>(unit - u'0'));
            scale += point ? 1 : 0;
            any = true;
        } else {
            refuse();
        }
    }
    for (; scale < 0; ++scale) {
        append(0);
    }
    if (!any || scale > std::numeric_limits<std::uint8_t>::max()) {
        refuse();
    }
    result.scale = static_cast<std::uint8_t>(scale);
    return result;
}

} // namespace kelb::ado
