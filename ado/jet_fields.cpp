#include "ado/jet_fields.h"

namespace kelb::ado {

FieldType fieldTypeOf(const jet::Column& column) noexcept {
    switch (column.type) {
    case jet::ColumnType::YesNo:
        return FieldType::YesNo;
    case jet::ColumnType::Byte:
        return FieldType::Byte;
    case jet::ColumnType::Integer:
        return FieldType::Integer;
    case jet::ColumnType::Long:
    case jet::ColumnType::Complex:
        return FieldType::Long;
    case jet::ColumnType::Currency:
        return FieldType::Currency;
    case jet::ColumnType::Single:
        return FieldType::Single;
    case jet::ColumnType::Double:
        return FieldType::Double;
    case jet::ColumnType::DateTime:
    case jet::ColumnType::ExtendedDate:
        return FieldType::DateTime;
    case jet::ColumnType::Text:
        return FieldType::Text;
    case jet::ColumnType::Ole:
        return FieldType::LongBinary;
    case jet::ColumnType::Memo:
        return FieldType::Memo;
    case jet::ColumnType::Guid:
        return FieldType::Guid;
    case jet::ColumnType::Numeric:
        return FieldType::Numeric;
    case jet::ColumnType::BigInteger:
        return FieldType::BigInteger;
    case jet::ColumnType::Binary:
    case jet::ColumnType::FixedBinary:
        break;
    }
    return FieldType::Binary;
}

std::vector<FieldInfo> fieldsOf(const jet::TableDefinition& table) {
    std::vector<FieldInfo> fields;
    fields.reserve(table.columns.size());
    for (const jet::Column& column : table.columns) {
        FieldInfo field;
        field.name = column.name;
        field.type = fieldTypeOf(column);
        if (field.type == FieldType::Text) {
            field.size = column.length / 2U;
        } else if (field.type == FieldType::Binary) {
            field.size = column.length;
        }
        field.autonumber = column.isAutonumber() || column.isGuidAutonumber();
        field.writable = !column.isCalculated();
        fields.push_back(std::move(field));
    }
    return fields;
}

} // namespace kelb::ado
