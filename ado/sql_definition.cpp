#include "ado/sql_definition.h"

#include "ado/error.h"
#include "ado/sql_lexer.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelb::ado {

namespace {

constexpr std::size_t kMaxCharacters = 255, kMaxBytes = 510, kMaxDigits = 28;

/// What stands in the brackets behind a type's name.
enum class Size {
    None,
    Text,   ///< characters; without them the column is a memo
    Bytes,  ///< bytes, 510 without them
    Digits, ///< digits and those behind the point, 18 and 0 without them
};

struct SqlType {
    std::u16string_view name;
    jet::ColumnType type;
    Size size = Size::None;
};

using Type = jet::ColumnType;
constexpr std::array kTypes = {SqlType{u"INT", Type::Long},
                               SqlType{u"INTEGER", Type::Long},
                               SqlType{u"LONG", Type::Long},
                               SqlType{u"INTEGER4", Type::Long},
                               SqlType{u"SHORT", Type::Integer},
                               SqlType{u"SMALLINT", Type::Integer},
                               SqlType{u"INTEGER2", Type::Integer},
                               SqlType{u"BYTE", Type::Byte},
                               SqlType{u"TINYINT", Type::Byte},
                               SqlType{u"INTEGER1", Type::Byte},
                               SqlType{u"YESNO", Type::YesNo},
                               SqlType{u"BIT", Type::YesNo},
                               SqlType{u"BOOLEAN", Type::YesNo},
                               SqlType{u"LOGICAL", Type::YesNo},
                               SqlType{u"CURRENCY", Type::Currency},
                               SqlType{u"MONEY", Type::Currency},
                               SqlType{u"REAL", Type::Single},
                               SqlType{u"SINGLE", Type::Single},
                               SqlType{u"FLOAT4", Type::Single},
                               SqlType{u"DOUBLE", Type::Double},
                               SqlType{u"FLOAT", Type::Double},
                               SqlType{u"FLOAT8", Type::Double},
                               SqlType{u"NUMBER", Type::Double},
                               SqlType{u"DATE", Type::DateTime},
                               SqlType{u"DATETIME", Type::DateTime},
                               SqlType{u"TIME", Type::DateTime},
                               SqlType{u"VARCHAR", Type::Text, Size::Text},
                               SqlType{u"NVARCHAR", Type::Text, Size::Text},
                               SqlType{u"CHAR", Type::Text, Size::Text},
                               SqlType{u"NCHAR", Type::Text, Size::Text},
                               SqlType{u"TEXT", Type::Text, Size::Text},
                               SqlType{u"STRING", Type::Text, Size::Text},
                               SqlType{u"MEMO", Type::Memo},
                               SqlType{u"LONGTEXT", Type::Memo},
                               SqlType{u"LONGCHAR", Type::Memo},
                               SqlType{u"NTEXT", Type::Memo},
                               SqlType{u"NOTE", Type::Memo},
                               SqlType{u"GUID", Type::Guid},
                               SqlType{u"UNIQUEIDENTIFIER", Type::Guid},
                               SqlType{u"BINARY", Type::Binary, Size::Bytes},
                               SqlType{u"VARBINARY", Type::Binary, Size::Bytes},
                               SqlType{u"IMAGE", Type::Ole},
                               SqlType{u"LONGBINARY", Type::Ole},
                               SqlType{u"OLEOBJECT", Type::Ole},
                               SqlType{u"DECIMAL", Type::Numeric, Size::Digits},
                               SqlType{u"NUMERIC", Type::Numeric, Size::Digits}};

const SqlType& findType(const ColumnDefinition& definition) {
    const auto found = std::find_if(kTypes.begin(), kTypes.end(), [&](const SqlType& type) {
        return platform::equalNoCase(type.name, definition.type);
    });
    if (found == kTypes.end()) {
        throwSyntaxError(definition.typePosition, definition.type,
                         "expected a column type (INT, VARCHAR(n), MEMO, DATETIME, YESNO, …)");
    }
    return *found;
}

/// `value`, or an error that says what the column may have.
std::size_t within(const ColumnDefinition& definition, std::size_t value, std::size_t low, std::size_t high,
                   const std::string& what) {
    if (value < low || value > high) {
        throw Error(Error::Kind::Refused, "column " + platform::toUtf8(definition.name) + ": " +
                                              platform::toUtf8(definition.type) + " takes " + std::to_string(low) +
                                              " to " + std::to_string(high) + " " + what + ", not " +
                                              std::to_string(value));
    }
    return value;
}

jet::NewIndex newIndex(const IndexDefinition& definition) {
    jet::NewIndex index;
    index.name = definition.name;
    index.unique = definition.unique;
    index.primary = definition.primary;
    index.ignoreNulls = definition.ignoreNulls;
    index.disallowNulls = definition.disallowNulls;
    for (const IndexDefinition::Part& part : definition.parts) {
        index.columns.push_back({part.column, part.ascending});
    }
    return index;
}

} // namespace

jet::NewColumn newColumn(const ColumnDefinition& definition) {
    const SqlType& type = findType(definition);
    jet::NewColumn column;
    column.name = definition.name;
    column.type = type.type;
    column.autonumber = definition.identity;
    column.required = definition.required;
    column.compressed = definition.compressed;
    if (definition.identity && type.type != Type::Long) {
        throw Error(Error::Kind::Refused,
                    "column " + platform::toUtf8(definition.name) + ": only INT columns can be IDENTITY");
    }
    const bool sized = type.size != Size::None;
    if ((definition.size && !sized) || (definition.scale && type.size != Size::Digits)) {
        throwSyntaxError(definition.typePosition, definition.type, "this type takes no such size");
    }
    switch (type.size) {
    case Size::None:
        break;
    case Size::Text:
        column.type = definition.size ? Type::Text : Type::Memo;
        column.characters = static_cast<std::uint16_t>(
            within(definition, definition.size.value_or(kMaxCharacters), 1, kMaxCharacters, "characters"));
        break;
    case Size::Bytes:
        column.characters =
            static_cast<std::uint16_t>(within(definition, definition.size.value_or(kMaxBytes), 1, kMaxBytes, "bytes"));
        break;
    case Size::Digits:
        column.precision =
            static_cast<std::uint8_t>(within(definition, definition.size.value_or(18), 1, kMaxDigits, "digits"));
        column.scale = static_cast<std::uint8_t>(
            within(definition, definition.scale.value_or(0), 0, column.precision, "digits behind the point"));
        break;
    }
    return column;
}

void run(SharedDatabase& database, const CreateTableStatement& create) {
    jet::NewTable table;
    table.name = create.table;
    for (const ColumnDefinition& column : create.columns) {
        table.columns.push_back(newColumn(column));
    }
    for (const IndexDefinition& index : create.indexes) {
        table.indexes.push_back(newIndex(index));
    }
    database.requireWritable();
    database.define([&] { database.database()->createTable(table); });
}

void run(SharedDatabase& database, const CreateIndexStatement& create) {
    database.requireWritable();
    database.define([&] { database.database()->createIndex(create.table, newIndex(create.index)); });
}

void run(SharedDatabase& database, const AlterTableStatement& alter) {
    std::vector<jet::NewColumn> columns;
    for (const ColumnDefinition& column : alter.columns) {
        columns.push_back(newColumn(column));
    }
    database.requireWritable();
    database.define([&] {
        for (const jet::NewColumn& column : columns) {
            database.database()->addColumn(alter.table, column);
        }
        for (const IndexDefinition& index : alter.indexes) {
            database.database()->createIndex(alter.table, newIndex(index));
        }
    });
}

} // namespace kelb::ado
