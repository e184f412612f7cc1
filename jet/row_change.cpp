#include "jet/row_change.h"

#include "jet/error.h"
#include "jet/text_keys.h"
#include "jet/value_codec.h"

#include "platform/random.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <utility>

namespace kelb::jet {

namespace {

/// Bit for bit: 0 and -0 have different keys.
bool sameKeyValue(const Value& a, const Value& b) {
    if (const auto* x = std::get_if<float>(&a), *y = std::get_if<float>(&b); x != nullptr && y != nullptr) {
        return std::bit_cast<std::uint32_t>(*x) == std::bit_cast<std::uint32_t>(*y);
    }
    if (const auto* x = std::get_if<double>(&a), *y = std::get_if<double>(&b); x != nullptr && y != nullptr) {
        return std::bit_cast<std::uint64_t>(*x) == std::bit_cast<std::uint64_t>(*y);
    }
    if (const auto* x = std::get_if<OleDate>(&a), *y = std::get_if<OleDate>(&b); x != nullptr && y != nullptr) {
        return std::bit_cast<std::uint64_t>(x->days) == std::bit_cast<std::uint64_t>(y->days);
    }
    return a == b;
}

bool keyValuesChange(const TableDefinition& table, const PhysicalIndex& index, const Row& old,
                     const NewValues& values) {
    return std::any_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& part) {
        const Column& column = *table.columnByNumber(part.column);
        const Value* value = values.of(column);
        return value != nullptr && !sameKeyValue(old.value(column), *value);
    });
}

/// Makes the key that a row gets in an index and checks it against the rows there, `self` aside.
/// `known`: the key itself, or null.
void planAddition(KeyChange& change, const TableDefinition& table, const IndexTree& tree, const auto& valueOf,
                  std::optional<RowId> self, const KeyBytes* known = nullptr) {
    const PhysicalIndex& index = table.physicalIndexes[change.index];
    RowKey key = known != nullptr ? RowKey{*known, false, false} : makeRowKey(table, change.index, valueOf);
    requireAllowed(key, table, change.index, valueOf);
    if (!key.isEntered(index)) {
        return;
    }
    const bool unique = key.mustBeUnique(index);
    const bool taken = tree.contains(key.bytes, unique ? self : std::nullopt);
    if (unique && taken) {
        throw Error(Error::Kind::DuplicateKey,
                    "the value is already there: " + describeKey(table, change.index, valueOf));
    }
    change.added = std::move(key.bytes);
    change.addedIsNew = !taken;
}

/// Whether another writer may have made another key of it: some count ß and its like as one place.
bool isKeyedDifferently(const Value& value) {
    const auto* text = std::get_if<std::u16string>(&value);
    return text != nullptr && std::any_of(text->begin(), text->end(), [](char16_t unit) {
               return textCell(unit).kind == TextCell::Kind::TwoLetters;
           });
}

void planRemoval(KeyChange& change, const TableDefinition& table, const Row& old) {
    try {
        RowKey key = makeRowKey(table, change.index, [&](const Column& column) -> Value {
            Value value = old.value(column);
            change.removedByRow = change.removedByRow || isKeyedDifferently(value);
            return value;
        });
        if (change.removedByRow) {
            return;
        }
        if (key.isEntered(table.physicalIndexes[change.index])) {
            change.removed = std::move(key.bytes);
        }
    } catch (const Error& reason) {
        if (reason.kind() != Error::Kind::KeyNotPossible) {
            throw;
        }
        change.removedByRow = true; // an entry of another writer, in an order that is not known here
    }
}

/// Stored bytes of every value but long ones; those go to `longs`. Gives back the bytes of variable fields.
std::size_t storeValue(const Column& column, std::size_t position, const Value& value, StoredField& field,
                       LongFields& longs) {
    if (column.type == ColumnType::YesNo) {
        field.set = std::get<bool>(value);
        return 0;
    }
    if (isNull(value)) {
        return 0;
    }
    if (column.isLongValue()) {
        longs.add(position, value);
        return 0;
    }
    field.set = true;
    appendStored(field.bytes, column, value);
    return column.isFixed() ? 0 : field.bytes.size();
}

/// As storeValue, for a column that keeps its value.
std::size_t carryField(const Column& column, std::size_t position, const Row& old, bool oldYes, StoredField& field,
                       LongFields& longs) {
    if (column.type == ColumnType::YesNo) {
        field.set = oldYes;
        return 0;
    }
    const std::optional<std::span<const std::byte>> stored = old.field(column);
    if (!stored) {
        return 0;
    }
    if (column.isLongValue()) {
        longs.carry(position, *stored);
        return 0;
    }
    field.set = true;
    field.bytes.assign(stored->begin(), stored->end());
    return column.isFixed() ? 0 : field.bytes.size();
}

Guid randomGuid(platform::Random& random) {
    Guid guid;
    for (std::size_t half = 0; half < 2; ++half) {
        const auto bits = std::bit_cast<std::array<std::uint8_t, 8>>(random.bits());
        std::copy(bits.begin(), bits.end(), guid.bytes.begin() + static_cast<std::ptrdiff_t>(8 * half));
    }
    guid.bytes[6] = static_cast<std::uint8_t>((guid.bytes[6] & 0x0FU) | 0x40U); // version 4: random
    guid.bytes[8] = static_cast<std::uint8_t>((guid.bytes[8] & 0x3FU) | 0x80U);
    return guid;
}

} // namespace

void RowChange::planInsert(NewValues& values, std::span<const Table::KnownKey> known) {
    fillAutonumbers(values);
    values.requireNotNull();
    const auto valueOf = [&](const Column& column) -> const Value& { return *values.of(column); };
    for (std::size_t i = 0; i < table_.physicalIndexes.size(); ++i) {
        keys_.push_back({i, {}, false, {}, false});
        const auto given = std::find_if(known.begin(), known.end(),
                                        [i](const Table::KnownKey& each) { return each.physicalIndex == i; });
        planAddition(keys_.back(), table_, state_.tree(i), valueOf, std::nullopt,
                     given == known.end() ? nullptr : &given->key);
    }
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        bytes += storeValue(table_.columns[i], i, values.at(i), fields_[i], longs_);
    }
    longs_.fit(bytes);
}

void RowChange::planUpdate(const NewValues& values, const Row& old) {
    values.requireNotNull();
    noteAutonumber(values);
    const auto valueOf = [&](const Column& column) -> Value {
        const Value* value = values.of(column);
        return value != nullptr ? *value : old.value(column);
    };
    for (std::size_t i = 0; i < table_.physicalIndexes.size(); ++i) {
        if (!keyValuesChange(table_, table_.physicalIndexes[i], old, values)) {
            continue;
        }
        KeyChange change{i, {}, false, {}, false};
        planAddition(change, table_, state_.tree(i), valueOf, old.id());
        planRemoval(change, table_, old);
        if (change.removedByRow || change.removed != change.added) {
            keys_.push_back(std::move(change));
        }
    }
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const Column& column = table_.columns[i];
        if (values.has(i)) {
            bytes += storeValue(column, i, values.at(i), fields_[i], longs_);
            keepOldValue(column, old);
        } else {
            const bool yes = column.type == ColumnType::YesNo && std::get<bool>(old.value(column));
            bytes += carryField(column, i, old, yes, fields_[i], longs_);
        }
    }
    longs_.fit(bytes);
}

void RowChange::planErase(const Row& old) {
    for (std::size_t i = 0; i < table_.physicalIndexes.size(); ++i) {
        keys_.push_back({i, {}, false, {}, false});
        planRemoval(keys_.back(), table_, old);
    }
    for (const Column& column : table_.columns) {
        keepOldValue(column, old);
    }
}

/// Remembers the field of a long value that is to be freed: the record it lies in changes before that.
void RowChange::keepOldValue(const Column& column, const Row& old) {
    if (!column.isLongValue()) {
        return;
    }
    const std::optional<std::span<const std::byte>> stored = old.field(column);
    if (stored && stored->size() >= kLongValueHeader) {
        freed_.push_back({&column, {stored->begin(), stored->end()}});
    }
}

void RowChange::fillAutonumbers(NewValues& values) {
    for (std::size_t i = 0; i < table_.columns.size(); ++i) {
        const Column& column = table_.columns[i];
        if (!isNull(values.at(i))) {
            continue;
        }
        if (column.isAutonumber()) {
            values.replace(i, nextAutonumber(column));
        } else if (column.isGuidAutonumber()) {
            values.replace(i, randomGuid(state_.environment->random));
        }
    }
    noteAutonumber(values);
}

/// The stored number is the highest given out, by whomever.
void RowChange::noteAutonumber(const NewValues& values) {
    for (std::size_t i = 0; i < table_.columns.size(); ++i) {
        if (!values.has(i) || !table_.columns[i].isAutonumber()) {
            continue;
        }
        const auto* number = std::get_if<std::int32_t>(&values.at(i));
        if (number != nullptr && *number > static_cast<std::int32_t>(state_.headField(kAutonumberOffset))) {
            autonumber_ = *number;
        }
    }
}

std::int32_t RowChange::nextAutonumber(const Column& column) {
    const auto step = static_cast<std::int32_t>(std::max(table_.autonumberStep, 1U));
    const auto index = std::find_if(table_.physicalIndexes.begin(), table_.physicalIndexes.end(), [&](const auto& i) {
        return i.unique() && i.columns.size() == 1 && i.columns[0].column == column.number;
    });
    std::int64_t next = static_cast<std::int32_t>(state_.headField(kAutonumberOffset));
    KeyBytes key;
    do {
        next += step;
        if (next > std::numeric_limits<std::int32_t>::max() || next < std::numeric_limits<std::int32_t>::min()) {
            throw Error(Error::Kind::FieldTooSmall, "the autonumbers are used up: table " +
                                                        platform::toUtf8(table_.name) + ", field " +
                                                        platform::toUtf8(column.name));
        }
        if (index == table_.physicalIndexes.end()) {
            break;
        }
        // Other writers leave a stored number behind the rows: such numbers are passed over.
        key.clear();
        appendKey(key, column, index->columns[0].ascending, static_cast<std::int32_t>(next));
    } while (state_.tree(static_cast<std::size_t>(index - table_.physicalIndexes.begin())).contains(key));
    return static_cast<std::int32_t>(next);
}

std::vector<std::byte> RowChange::buildNewRow() {
    longs_.store(state_.pager(), state_.environment->allocator, fields_);
    return buildRow(table_, fields_);
}

void RowChange::freeOldValues() {
    for (const OldValue& old : freed_) {
        freeLongValue(state_.pager(), state_.environment->allocator, longValueMapsOf(table_, *old.column), old.field);
    }
}

void RowChange::changeIndexes(RowId id) {
    for (const KeyChange& change : keys_) {
        IndexTree tree = state_.tree(change.index);
        if (change.removedByRow) {
            tree.removeRow(id);
        } else if (change.removed) {
            tree.remove(*change.removed, id);
        }
        if (!change.added) {
            continue;
        }
        tree.insert(*change.added, id);
        const std::size_t statistic = kDistinctKeysOffset + 12 * change.index;
        if (change.addedIsNew && statistic + 4 <= kPageSize) {
            state_.setHeadField(statistic, state_.headField(statistic) + 1);
        }
    }
}

void RowChange::countRows(std::int64_t difference) {
    const std::int64_t rows = state_.headField(kRowCountOffset) + difference;
    state_.setHeadField(kRowCountOffset, static_cast<std::uint32_t>(std::max<std::int64_t>(rows, 0)));
    if (autonumber_) {
        state_.setHeadField(kAutonumberOffset, static_cast<std::uint32_t>(*autonumber_));
    }
}

} // namespace kelb::jet
