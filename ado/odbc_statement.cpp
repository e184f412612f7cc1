#include "ado/odbc_statement.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelb::ado {

namespace {

/// Units of one piece of a long value: most articles fit one, and a piece costs a call.
constexpr std::size_t kChunk = 16'384;

} // namespace

OdbcStatement::OdbcStatement(std::shared_ptr<OdbcConnection> connection, std::string_view action,
                             std::u16string_view table)
    : connection_(std::move(connection)), handle_(SQL_HANDLE_STMT, connection_->handle().get()), action_(action),
      table_(table) {
    if (get() == nullptr) {
        throwOdbcError(connection_->handle(), connection_->place(), doing());
    }
    // A driver without time-outs refuses the attribute; its statements then run to their end.
    const auto seconds = static_cast<std::uintptr_t>(std::max(connection_->commandTimeout, 0));
    SQLSetStmtAttrW(get(), SQL_ATTR_QUERY_TIMEOUT, odbcNumber(seconds), SQL_IS_UINTEGER);
}

void OdbcStatement::require(SQLRETURN result) const {
    if (!SQL_SUCCEEDED(result)) {
        throwOdbcError(handle_, connection_->place(), doing());
    }
}

/// An UPDATE or DELETE that finds no row is told as "no data".
void OdbcStatement::requireRun(SQLRETURN result) const {
    require(result == SQL_NO_DATA ? SQL_SUCCESS : result);
}

void OdbcStatement::take(std::u16string_view text) {
    text_ = text;
    if (text_.find(u'\0') != text_.npos) {
        throw odbcError(Error::Kind::Syntax, connection_->place(), doing(), "the statement holds the character 0");
    }
    markHalfCharacters(text_);
}

void OdbcStatement::prepare(std::u16string_view text) {
    take(text);
    require(SQLPrepareW(get(), odbcText(text_.data()), static_cast<SQLINTEGER>(text_.size())));
}

std::u16string OdbcStatement::attributeText(SQLUSMALLINT position, SQLUSMALLINT attribute) const {
    std::array<char16_t, 128> text{};
    SQLSMALLINT bytes = 0;
    const SQLRETURN result = SQLColAttributeW(get(), position, attribute, text.data(),
                                              static_cast<SQLSMALLINT>(sizeof(text)), &bytes, nullptr);
    const auto units = static_cast<std::size_t>(std::max<SQLSMALLINT>(bytes, 0)) / sizeof(char16_t);
    return SQL_SUCCEEDED(result) ? std::u16string(text.data(), std::min(units, text.size() - 1)) : std::u16string();
}

std::vector<OdbcColumn> OdbcStatement::columns() {
    SQLSMALLINT count = 0;
    require(SQLNumResultCols(get(), &count));
    std::vector<OdbcColumn> columns(static_cast<std::size_t>(std::max<SQLSMALLINT>(count, 0)));
    std::array<char16_t, 256> name{};
    SQLUSMALLINT position = 0;
    for (OdbcColumn& column : columns) {
        ++position;
        SQLSMALLINT length = 0, nullable = SQL_NULLABLE_UNKNOWN;
        require(SQLDescribeColW(get(), position, odbcText(name.data()), static_cast<SQLSMALLINT>(name.size()), &length,
                                &column.sqlType, &column.size, &column.scale, &nullable));
        const auto units = static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0));
        column.info.name.assign(name.data(), std::min(units, name.size() - 1));
        column.nullable = nullable != SQL_NO_NULLS;
        column.typeName = attributeText(position, SQL_DESC_TYPE_NAME);
        SQLLEN counts = SQL_FALSE;
        SQLColAttributeW(get(), position, SQL_DESC_AUTO_UNIQUE_VALUE, nullptr, 0, nullptr, &counts);
        column.info.autonumber = counts == SQL_TRUE;
        classify(column);
    }
    return columns;
}

std::optional<std::size_t> OdbcStatement::rowsAffected() {
    SQLLEN count = -1;
    require(SQLRowCount(get(), &count));
    return count < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(count));
}

std::optional<std::size_t> OdbcStatement::execute(std::span<OdbcParameter> parameters) {
    SQLUSMALLINT position = 0;
    for (OdbcParameter& parameter : parameters) {
        require(parameter.bind(get(), ++position));
    }
    requireRun(SQLExecute(get()));
    return rowsAffected();
}

std::optional<std::size_t> OdbcStatement::executeDirect(std::u16string_view text) {
    take(text);
    requireRun(SQLExecDirectW(get(), odbcText(text_.data()), static_cast<SQLINTEGER>(text_.size())));
    return rowsAffected();
}

void OdbcStatement::listTables() {
    constexpr std::u16string_view kTypes = u"TABLE,VIEW";
    require(SQLTablesW(get(), nullptr, 0, nullptr, 0, nullptr, 0, odbcText(kTypes.data()), odbcLength(kTypes)));
}

void OdbcStatement::listPrimaryKey(const std::u16string& schema, const std::u16string& table) {
    require(SQLPrimaryKeysW(get(), nullptr, 0, schema.empty() ? nullptr : odbcText(schema.data()), odbcLength(schema),
                            odbcText(table.data()), odbcLength(table)));
}

void OdbcStatement::listUniqueIndexes(const std::u16string& schema, const std::u16string& table) {
    require(SQLStatisticsW(get(), nullptr, 0, schema.empty() ? nullptr : odbcText(schema.data()), odbcLength(schema),
                           odbcText(table.data()), odbcLength(table), SQL_INDEX_UNIQUE, SQL_QUICK));
}

bool OdbcStatement::fetch() {
    const SQLRETURN result = SQLFetch(get());
    if (result == SQL_NO_DATA) {
        return false;
    }
    require(result);
    return true;
}

void OdbcStatement::closeRows() noexcept {
    SQLFreeStmt(get(), SQL_CLOSE);
}

template <class Number>
std::optional<Number> OdbcStatement::readNumber(SQLUSMALLINT position, SQLSMALLINT cType) {
    Number number{};
    SQLLEN length = 0;
    require(SQLGetData(get(), position, cType, &number, sizeof(number), &length));
    return length == SQL_NULL_DATA ? std::nullopt : std::optional(number);
}

/// Long values come in pieces: each call gives as much as the buffer holds and says that there is more. Texts have a
/// zero behind every piece. False for Null.
template <class Unit>
bool OdbcStatement::readChunks(SQLUSMALLINT position, SQLSMALLINT cType, std::vector<Unit>& buffer, auto&& append) {
    constexpr std::size_t kZero = std::is_same_v<Unit, char16_t> ? 1 : 0;
    buffer.resize(kChunk);
    for (;;) {
        SQLLEN left = 0; // bytes that were left before this piece, where the driver knows
        const SQLRETURN result =
            SQLGetData(get(), position, cType, buffer.data(), static_cast<SQLLEN>(buffer.size() * sizeof(Unit)), &left);
        if (result == SQL_NO_DATA) {
            return true;
        }
        require(result);
        if (left == SQL_NULL_DATA) {
            return false;
        }
        const std::size_t room = buffer.size() - kZero;
        const std::size_t units = left < 0 ? room : static_cast<std::size_t>(left) / sizeof(Unit);
        const bool more = result == SQL_SUCCESS_WITH_INFO && (left < 0 || units > room);
        append(std::span<const Unit>(buffer.data(), std::min(units, room)));
        if (!more) {
            return true;
        }
    }
}

std::optional<std::u16string> OdbcStatement::readCharacters(SQLUSMALLINT position) {
    std::u16string text;
    const bool given = readChunks(position, SQL_C_WCHAR, characters_,
                                  [&](std::span<const char16_t> piece) { text.append(piece.data(), piece.size()); });
    return given ? std::optional(std::move(text)) : std::nullopt;
}

Value OdbcStatement::readDate(SQLUSMALLINT position) {
    const auto stamp = readNumber<SQL_TIMESTAMP_STRUCT>(position, SQL_C_TYPE_TIMESTAMP);
    if (!stamp) {
        return {};
    }
    const platform::DateTime time{stamp->year, stamp->month, stamp->day, stamp->hour, stamp->minute, stamp->second};
    // Dates that nothing else here could hold, such as "infinity", count as absent.
    return platform::isValid(time) ? fromDateTime(time) : Value();
}

Value OdbcStatement::read(std::size_t column, FieldType type) {
    const auto position = static_cast<SQLUSMALLINT>(column + 1);
    const auto given = [](auto number) { return number ? Value(*number) : Value(); };
    switch (type) {
    case FieldType::YesNo: {
        const auto bit = readNumber<unsigned char>(position, SQL_C_BIT);
        return bit ? Value(*bit != 0) : Value();
    }
    case FieldType::Byte:
    case FieldType::Integer: {
        const auto number = readNumber<SQLSMALLINT>(position, SQL_C_SSHORT);
        return number ? Value(static_cast<std::int16_t>(*number)) : Value();
    }
    case FieldType::Long: {
        const auto number = readNumber<SQLINTEGER>(position, SQL_C_SLONG);
        return number ? Value(static_cast<std::int32_t>(*number)) : Value();
    }
    case FieldType::BigInteger: {
        const auto number = readNumber<SQLBIGINT>(position, SQL_C_SBIGINT);
        return number ? Value(static_cast<std::int64_t>(*number)) : Value();
    }
    case FieldType::Single:
        return given(readNumber<float>(position, SQL_C_FLOAT));
    case FieldType::Double:
        return given(readNumber<double>(position, SQL_C_DOUBLE));
    case FieldType::DateTime:
        return readDate(position);
    case FieldType::Currency:
    case FieldType::Numeric: {
        const auto digits = readCharacters(position);
        return digits ? Value(parseDecimal(*digits)) : Value();
    }
    case FieldType::Binary:
    case FieldType::LongBinary: {
        Binary bytes;
        const bool present = readChunks(position, SQL_C_BINARY, bytes_, [&](std::span<const std::byte> piece) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        });
        return present ? Value(std::move(bytes)) : Value();
    }
    case FieldType::Text:
    case FieldType::Memo:
    case FieldType::Guid:
        break;
    }
    auto text = readCharacters(position);
    return text ? Value(std::move(*text)) : Value();
}

} // namespace kelb::ado
