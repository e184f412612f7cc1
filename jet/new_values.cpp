#include "jet/new_values.h"

#include "jet/error.h"
#include "jet/value_conversion.h"

#include "platform/utf8.h"

#include <utility>

namespace kelb::jet {

void NewValues::set(std::size_t column, const Value& value) {
    const Column& definition = table_.columns[column];
    values_[column] = &conformValue(value, definition, table_.name, storage_[column]);
    if (definition.type == ColumnType::YesNo && isNull(value)) {
        replace(column, false);
    }
}

void NewValues::replace(std::size_t column, Value value) {
    storage_[column] = std::move(value);
    values_[column] = &storage_[column];
}

void NewValues::requireNotNull() const {
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const Column& column = table_.columns[i];
        if (has(i) && isNull(at(i)) && (column.required || column.isAutonumber())) {
            throw Error(Error::Kind::NullNotAllowed, "a value is required: table " + platform::toUtf8(table_.name) +
                                                         ", field " + platform::toUtf8(column.name) +
                                                         " may not be Null");
        }
    }
}

} // namespace kelb::jet
