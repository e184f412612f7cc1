#include "jet/new_objects.h"

#include "jet/data_page.h"
#include "jet/error.h"

#include "platform/letter_case.h"
#include "platform/random.h"
#include "platform/utf8.h"

#include <algorithm>

namespace kelb::jet {

namespace {

constexpr std::uint8_t kFixedFlags = kColumnFlag | kFixedFlag;
constexpr std::uint16_t kMaxTextUnits = 255, kMaxBinaryBytes = 510;
constexpr std::uint8_t kMaxPrecision = 28;

[[noreturn]] void badColumn(std::u16string_view table, const NewColumn& column, const std::string& reason) {
    throw Error(Error::Kind::BadDefinition,
                "table " + platform::toUtf8(table) + ", field " + platform::toUtf8(column.name) + ": " + reason);
}

void setTextLength(Column& column, const NewColumn& wanted, std::u16string_view table) {
    const bool text = wanted.type == ColumnType::Text;
    const std::uint16_t most = text ? kMaxTextUnits : kMaxBinaryBytes;
    if (wanted.characters == 0 || wanted.characters > most)
        badColumn(table, wanted,
                  "its length must be 1 to " + std::to_string(most) + ", not " + std::to_string(wanted.characters) +
                      (text ? " (a longer text is a MEMO)" : ""));
    column.length = static_cast<std::uint16_t>(text ? 2 * wanted.characters : wanted.characters);
    column.flags = kColumnFlag;
}

void setAutonumber(Column& column, const NewColumn& wanted, std::u16string_view table) {
    if (wanted.type == ColumnType::Long) {
        column.flags = kFixedFlags | kAutonumberFlag;
    } else if (wanted.type == ColumnType::Guid) {
        column.flags = kFixedFlags | kGuidAutonumberFlag;
    } else {
        badColumn(table, wanted, "only a LONG or a GUID can number itself");
    }
}

std::u16string hexDigits(std::uint64_t bits, unsigned digits) {
    std::u16string text;
    while (digits-- > 0)
        text += u"0123456789ABCDEF"[bits >> 4 * digits & 0xF];
    return text;
}

/// As Access names a constraint that has no name.
std::u16string madeUpName(platform::Random& random) {
    const std::uint64_t bits = random.bits();
    return u"Index_" + hexDigits(bits, 8) + u"_" + hexDigits(bits >> 32, 4) + u"_" + hexDigits(bits >> 48, 4);
}

IndexColumn indexColumn(const TableDefinition& table, const NewIndex& wanted, const NewIndex::Part& part,
                        const PhysicalIndex& index) {
    const auto where = [&] {
        return "table " + platform::toUtf8(table.name) + ", index " + platform::toUtf8(wanted.name) + ": ";
    };
    const Column* column = table.findColumn(part.column);
    if (column == nullptr)
        throw Error(Error::Kind::NoSuchColumn, where() + "there is no field " + platform::toUtf8(part.column));
    if (column->type == ColumnType::Ole || column->isCalculated())
        throw Error(Error::Kind::BadDefinition,
                    where() + "the field " + platform::toUtf8(part.column) + " cannot be indexed");
    const bool twice = std::any_of(index.columns.begin(), index.columns.end(),
                                   [&](const IndexColumn& other) { return other.column == column->number; });
    if (twice)
        throw Error(Error::Kind::BadDefinition, where() + "the field " + platform::toUtf8(part.column) + " twice");
    return {column->number, part.ascending};
}

} // namespace

void requireGoodName(std::string_view what, std::u16string_view name) {
    const auto refuse = [&](const std::string& reason) {
        throw Error(Error::Kind::BadName,
                    "\"" + platform::toUtf8(name) + "\" cannot be the name of a " + std::string(what) + ": " + reason);
    };
    if (name.empty() || name.size() > kMaxNameUnits)
        refuse("a name has 1 to 64 characters");
    if (name.front() == u' ')
        refuse("it begins with a blank");
    for (const char16_t unit : name) {
        if (std::u16string_view(u".![]`").find(unit) != std::u16string_view::npos)
            refuse("it has the character " + platform::toUtf8(std::u16string_view(&unit, 1)));
        if (unit < u' ')
            refuse("it has a control character");
    }
}

Column makeColumn(const NewColumn& wanted, std::u16string_view table, SortOrder sortOrder) {
    requireGoodName("field", wanted.name);
    Column column;
    column.name = wanted.name;
    column.type = wanted.type;
    column.sortOrder = sortOrder;
    column.required = wanted.required;
    column.flags = kFixedFlags;
    column.length = static_cast<std::uint16_t>(fixedSize(wanted.type));
    switch (wanted.type) {
    case ColumnType::YesNo:
        column.length = 1;
        break;
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
    case ColumnType::Currency:
    case ColumnType::Single:
    case ColumnType::Double:
    case ColumnType::DateTime:
        break;
    case ColumnType::Guid:
    case ColumnType::Memo:
    case ColumnType::Ole:
        column.flags = kColumnFlag;
        break;
    case ColumnType::Text:
    case ColumnType::Binary:
        setTextLength(column, wanted, table);
        break;
    case ColumnType::Numeric:
        if (wanted.precision == 0 || wanted.precision > kMaxPrecision || wanted.scale > wanted.precision)
            badColumn(table, wanted, "a DECIMAL has 1 to 28 digits, at most that many behind the point");
        column.precision = wanted.precision;
        column.scale = wanted.scale;
        break;
    case ColumnType::FixedBinary:
    case ColumnType::Complex:
    case ColumnType::BigInteger:
    case ColumnType::ExtendedDate:
        badColumn(table, wanted, "such fields cannot be made in Access 2000 databases");
    }
    if (wanted.autonumber)
        setAutonumber(column, wanted, table);
    if (wanted.compressed && (wanted.type == ColumnType::Text || wanted.type == ColumnType::Memo))
        column.extraFlags = kCompressionFlag;
    return column;
}

PhysicalIndex& addIndex(TableDefinition& table, const NewIndex& given, platform::Random& random) {
    NewIndex wanted = given;
    if (wanted.name.empty())
        wanted.name = madeUpName(random);
    requireGoodName("index", wanted.name);
    const auto refuse = [&](Error::Kind kind, const std::string& reason) {
        throw Error(kind, "table " + platform::toUtf8(table.name) + ", index " + platform::toUtf8(wanted.name) + ": " +
                              reason);
    };
    for (const LogicalIndex& other : table.logicalIndexes) {
        if (platform::equalNoCase(other.name, wanted.name))
            refuse(Error::Kind::AlreadyExists, "there is an index of that name");
        if (wanted.primary && other.kind == kPrimaryKeyKind)
            refuse(Error::Kind::AlreadyExists, "the table has a primary key, " + platform::toUtf8(other.name));
    }
    if (std::max(table.logicalIndexes.size(), table.physicalIndexes.size()) >= kMaxIndexes)
        refuse(Error::Kind::BadDefinition, "a table has at most 32 indexes");
    if (wanted.columns.empty() || wanted.columns.size() > kMaxIndexColumns)
        refuse(Error::Kind::BadDefinition, "an index has 1 to 10 fields");

    PhysicalIndex index;
    for (const NewIndex::Part& part : wanted.columns)
        index.columns.push_back(indexColumn(table, wanted, part, index));
    index.flags = static_cast<std::uint8_t>(kIndexFlag | (wanted.unique || wanted.primary ? kUniqueFlag : 0) |
                                            (wanted.disallowNulls || wanted.primary ? kRequiredFlag : 0) |
                                            (wanted.ignoreNulls && !wanted.primary ? kIgnoreNullsFlag : 0));
    LogicalIndex logical;
    logical.name = wanted.name;
    logical.physical = static_cast<std::uint32_t>(table.physicalIndexes.size());
    logical.kind = wanted.primary ? kPrimaryKeyKind : 0;
    table.addLogicalIndex(logical);
    return table.physicalIndexes.emplace_back(std::move(index));
}

void requireRowFits(const TableDefinition& table) {
    const std::size_t variable = table.varColumns == 0 ? 0 : 2 + 2 * std::size_t{table.varColumns} + 2;
    const std::size_t bytes = 2 + table.fixedBytes() + variable + (table.maxColumns + std::size_t{7}) / 8;
    if (bytes > kMaxRowBytes)
        throw Error(Error::Kind::BadDefinition, "table " + platform::toUtf8(table.name) +
                                                    ": a record would take at least " + std::to_string(bytes) +
                                                    " bytes; at most " + std::to_string(kMaxRowBytes) + " fit");
}

} // namespace kelb::jet
