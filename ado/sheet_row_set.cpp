#include "ado/sheet_row_set.h"

#include "ado/error.h"

#include "platform/letter_case.h"
#include "platform/text.h"

#include <string>
#include <unordered_set>
#include <utility>

namespace kelb::ado {

namespace {

constexpr std::size_t kNameCharacters = 64;
constexpr std::size_t kTextCharacters = 255; ///< longer ones make the column a memo

using Names = std::unordered_set<std::u16string, platform::NoCaseHash, platform::NoCaseEqual>;

std::u16string cutTo(std::u16string_view name, std::size_t characters) {
    const bool halfPair = name.size() > characters && (name[characters - 1] & 0xFC00) == 0xD800;
    return std::u16string(name.substr(0, characters - (halfPair ? 1 : 0)));
}

/// As the first row has it; "" where that is blank.
std::u16string writtenName(const Value& cell) {
    const std::u16string text = toText(cell);
    return cutTo(platform::trimBlanks(text), kNameCharacters);
}

/// `name`, if need be with a number behind it, so that no other column has it.
std::u16string uniqueName(const std::u16string& name, const Names& taken) {
    std::u16string unique = name;
    for (long long i = 1; taken.contains(unique); ++i) {
        const std::u16string ending = platform::number(i);
        unique = cutTo(name, kNameCharacters - ending.size()) + ending;
    }
    return unique;
}

FieldInfo fieldOf(std::u16string name, const SheetCells::Column& column) {
    FieldInfo field;
    field.name = std::move(name);
    field.writable = false;
    switch (column.kinds) {
    case SheetCells::kWhole:
        field.type = FieldType::Long;
        break;
    case SheetCells::kReal:
    case SheetCells::kReal | SheetCells::kWhole:
        field.type = FieldType::Double;
        break;
    case SheetCells::kDate:
        field.type = FieldType::DateTime;
        break;
    default:
        field.type = column.longest > kTextCharacters ? FieldType::Memo : FieldType::Text;
        field.size = column.longest > kTextCharacters ? 0 : kTextCharacters;
        break;
    }
    return field;
}

} // namespace

SheetTable::SheetTable(std::u16string_view name, SheetCells cells) : name_(name), cells_(std::move(cells)) {
    std::vector<Value> first;
    if (cells_.rowCount() > 0) {
        cells_.readRow(0, first);
    }
    if (first.empty()) { // an empty sheet has one column and no rows
        fields_.push_back(fieldOf(u"F1", {}));
    }
    Names taken; // first all that are written, so that a made name never takes one away
    for (const Value& cell : first) {
        taken.insert(writtenName(cell));
    }
    Names given;
    for (std::size_t i = 0; i < first.size(); ++i) {
        std::u16string field = writtenName(first[i]);
        if (field.empty()) {
            field = uniqueName(u"F" + platform::number(static_cast<long long>(i) + 1), taken);
        } else if (given.contains(field)) {
            field = uniqueName(field, taken);
        }
        given.insert(field);
        taken.insert(field);
        fields_.push_back(fieldOf(std::move(field), cells_.columns()[i]));
    }
}

void SheetTable::readRow(std::size_t row, std::vector<Value>& values) const {
    cells_.readRow(row + 1, values);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto* whole = std::get_if<std::int32_t>(&values[i]);
        if (whole != nullptr && fields_[i].type == FieldType::Double) {
            values[i] = static_cast<double>(*whole);
        }
    }
}

SheetRowSet::SheetRowSet(std::shared_ptr<const SheetTable> table, std::vector<FieldInfo> fields,
                         std::vector<std::size_t> columns, std::vector<std::size_t> members)
    : table_(std::move(table)), fields_(std::move(fields)), columns_(std::move(columns)), members_(std::move(members)) {
}

bool SheetRowSet::seek(std::size_t member) {
    table_->readRow(members_[member], row_);
    return true;
}

bool SheetRowSet::text(std::size_t field, std::u16string& out) {
    const Value& value = row_[columns_[field]];
    out = toText(value);
    return !isNull(value);
}

void SheetRowSet::requireUpdatable() const {
    throwSheetsAreOnlyRead();
}

void throwSheetsAreOnlyRead() {
    throw Error(Error::Kind::ReadOnly,
                "sheets of a workbook are only read; copy the rows into a database to change them");
}

} // namespace kelb::ado
