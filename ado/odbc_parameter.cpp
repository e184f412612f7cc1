#include "ado/odbc_parameter.h"

#include "platform/utf8.h"

#include <algorithm>

namespace kelb::ado {

namespace {

/// Characters of the longest text that SQL Server takes as an ordinary one. All up to it are declared with the same
/// length, so that a prepared statement stays the same for every row.
constexpr SQLULEN kOrdinaryText = 4000;
constexpr SQLULEN kOrdinaryBinary = 8000;    // bytes
constexpr SQLULEN kTimestampCharacters = 19; // yyyy-mm-dd hh:mm:ss
constexpr SQLULEN kMostDigits = 38;

struct HeldPlace {
    const void* operator()(std::monostate) const { return nullptr; }
    const void* operator()(const std::string& text) const { return text.data(); }
    template <class Number>
    const void* operator()(const Number& number) const {
        return &number;
    }
};

SQL_TIMESTAMP_STRUCT timestampOf(const Value& value) {
    const platform::DateTime time = toDateTime(value).value_or(platform::DateTime{});
    SQL_TIMESTAMP_STRUCT stamp{};
    stamp.year = static_cast<SQLSMALLINT>(time.year);
    stamp.month = static_cast<SQLUSMALLINT>(time.month);
    stamp.day = static_cast<SQLUSMALLINT>(time.day);
    stamp.hour = static_cast<SQLUSMALLINT>(time.hour);
    stamp.minute = static_cast<SQLUSMALLINT>(time.minute);
    stamp.second = static_cast<SQLUSMALLINT>(time.second);
    return stamp;
}

} // namespace

/// A Null is declared like any other value of its column: servers want to know what it would have been.
OdbcParameter::OdbcParameter(const OdbcColumn& column, const Value& value) {
    take(column, value);
    if (isNull(value)) {
        length_ = SQL_NULL_DATA;
    }
}

void OdbcParameter::take(const OdbcColumn& column, const Value& value) {
    switch (column.info.type) {
    case FieldType::YesNo: {
        const auto* yes = std::get_if<bool>(&value);
        held_ = static_cast<unsigned char>(yes != nullptr && *yes ? 1 : 0);
        cType_ = SQL_C_BIT;
        sqlType_ = SQL_BIT;
        size_ = 1;
        return;
    }
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
        held_ = static_cast<SQLINTEGER>(toInteger(value).value_or(0));
        cType_ = SQL_C_SLONG;
        sqlType_ = SQL_INTEGER;
        size_ = 10;
        return;
    case FieldType::BigInteger:
        held_ = static_cast<SQLBIGINT>(toInteger(value).value_or(0));
        cType_ = SQL_C_SBIGINT;
        sqlType_ = SQL_BIGINT;
        size_ = 19;
        return;
    case FieldType::Single:
    case FieldType::Double: {
        const auto* single = std::get_if<float>(&value); // as it was read
        const auto* real = std::get_if<double>(&value);
        held_ = single != nullptr ? static_cast<double>(*single) : real != nullptr ? *real : 0.0;
        cType_ = SQL_C_DOUBLE;
        sqlType_ = SQL_DOUBLE;
        size_ = 15;
        return;
    }
    case FieldType::Currency:
    case FieldType::Numeric: {
        const auto* decimal = std::get_if<Decimal>(&value);
        std::string& digits = held_.emplace<std::string>(platform::toUtf8(toText(value)));
        cType_ = SQL_C_CHAR;
        sqlType_ = SQL_NUMERIC;
        size_ = kMostDigits;
        digits_ = static_cast<SQLSMALLINT>(decimal == nullptr ? column.scale : decimal->scale);
        length_ = static_cast<SQLLEN>(digits.size());
        return;
    }
    case FieldType::DateTime:
        held_ = timestampOf(value);
        cType_ = SQL_C_TYPE_TIMESTAMP;
        sqlType_ = SQL_TYPE_TIMESTAMP;
        size_ = kTimestampCharacters;
        return;
    case FieldType::Binary:
    case FieldType::LongBinary: {
        const auto* bytes = std::get_if<Binary>(&value);
        const SQLULEN count = bytes == nullptr ? 0 : bytes->size();
        data_ = bytes == nullptr ? nullptr : bytes->data();
        length_ = static_cast<SQLLEN>(count);
        cType_ = SQL_C_BINARY;
        sqlType_ = count > kOrdinaryBinary ? SQL_LONGVARBINARY : SQL_VARBINARY;
        size_ = std::max(count, kOrdinaryBinary);
        return;
    }
    case FieldType::Text:
    case FieldType::Memo:
    case FieldType::Guid: {
        const auto* text = std::get_if<std::u16string>(&value);
        const SQLULEN units = text == nullptr ? 0 : text->size();
        data_ = text == nullptr ? nullptr : text->data();
        length_ = static_cast<SQLLEN>(units * sizeof(char16_t));
        cType_ = SQL_C_WCHAR;
        sqlType_ = units > kOrdinaryText ? SQL_WLONGVARCHAR : SQL_WVARCHAR;
        size_ = std::max(units, kOrdinaryText);
        return;
    }
    }
}

SQLRETURN OdbcParameter::bind(SQLHANDLE statement, SQLUSMALLINT position) {
    static constexpr char16_t kEmpty = 0; // some drivers want an address for an empty value, too
    const void* data = data_ != nullptr ? data_ : std::visit(HeldPlace{}, held_);
    auto* place = const_cast<void*>(data != nullptr ? data : &kEmpty); // NOLINT: input that is never written to
    return SQLBindParameter(statement, position, SQL_PARAM_INPUT, cType_, sqlType_, size_, digits_, place,
                            length_ == SQL_NULL_DATA ? 0 : length_, &length_);
}

} // namespace kelb::ado
