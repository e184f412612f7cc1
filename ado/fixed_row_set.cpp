#include "ado/fixed_row_set.h"

namespace kelb::ado {

namespace {

FieldInfo readOnlyField(std::u16string_view name, FieldType type) {
    constexpr std::size_t kNameCharacters = 64;
    FieldInfo field;
    field.name = name;
    field.type = type;
    field.size = type == FieldType::Text ? kNameCharacters : 0;
    field.writable = false;
    return field;
}

} // namespace

bool FixedRowSet::text(std::size_t field, std::u16string& out) {
    const Value& value = rows_[current_][field];
    out = toText(value);
    return !isNull(value);
}

std::unique_ptr<RowSet> countRowSet(std::u16string_view name, std::size_t count, std::optional<std::size_t> top) {
    constexpr std::u16string_view kUnnamed = u"Expr1000"; // the name that users of the provider know
    std::vector<std::vector<Value>> rows;
    if (top != 0) {
        rows.push_back({Value(static_cast<std::int32_t>(count))});
    }
    return std::make_unique<FixedRowSet>(std::vector{readOnlyField(name.empty() ? kUnnamed : name, FieldType::Long)},
                                         std::move(rows));
}

std::unique_ptr<RowSet> tableRowSet(std::vector<std::vector<Value>> rows) {
    return std::make_unique<FixedRowSet>(
        std::vector{readOnlyField(u"TABLE_NAME", FieldType::Text), readOnlyField(u"TABLE_TYPE", FieldType::Text)},
        std::move(rows));
}

} // namespace kelb::ado
