#include "ado/fixed_row_set.h"

namespace kelb::ado {

bool FixedRowSet::text(std::size_t field, std::u16string& out) {
    const Value& value = rows_[current_][field];
    out = toText(value);
    return !isNull(value);
}

void FixedRowSet::insert(std::span<const FieldChange> /*changes*/) {
    requireUpdatable();
}

void FixedRowSet::update(std::span<const FieldChange> /*changes*/) {
    requireUpdatable();
}

void FixedRowSet::erase() {
    requireUpdatable();
}

} // namespace kelb::ado
