#include "jet/row_record.h"

#include "jet/byte_order.h"
#include "jet/calculated_value.h"
#include "jet/error.h"

#include "platform/utf8.h"

#include <algorithm>
#include <cassert>

namespace kelb::jet {

namespace {

constexpr std::size_t kMinRowBytes = 4; ///< so that every row can become a pointer in its place

std::size_t maskBytes(std::size_t columns) noexcept {
    return (columns + 7) / 8;
}

bool isStoredFixed(const Column& column) noexcept {
    return column.isFixed() && column.type != ColumnType::YesNo;
}

} // namespace

RowView::RowView(std::span<const std::byte> bytes, const TableDefinition& definition, const RowPlace& place)
    : bytes_(bytes), definition_(&definition), place_(place) {
    const std::size_t countBytes = definition.dialect == Dialect::Jet3 ? 1 : 2;
    if (bytes.size() < countBytes) {
        corrupt(0, "a record is too short for its column count");
    }
    columns_ = countBytes == 1 ? load8(bytes.data()) : load16(bytes.data());
    if (bytes.size() < countBytes + maskBytes(columns_)) {
        corrupt(0, "a record is too short for the null mask of its columns");
    }
    mask_ = bytes.size() - maskBytes(columns_);
}

void RowView::corrupt(std::size_t offset, const char* expected) const {
    throw CorruptFile(place_.path, place_.page, place_.offset + offset, expected);
}

bool RowView::isSet(const Column& column) const noexcept {
    return column.number < columns_ &&
           (unsigned{load8(&bytes_[mask_ + column.number / 8U])} >> (column.number % 8U) & 1U) != 0;
}

std::optional<std::span<const std::byte>> RowView::field(const Column& column) const {
    if (!isSet(column)) {
        return std::nullopt;
    }
    std::optional<Range> range;
    if (column.isFixed()) {
        const std::size_t start = (definition_->dialect == Dialect::Jet3 ? 1U : 2U) + column.fixedOffset;
        const std::size_t size = column.isCalculated() ? 0 : fixedSize(column.type);
        range = {start, start + (size != 0 ? size : column.length)};
    } else {
        range = definition_->dialect == Dialect::Jet3 ? jet3Variable(column.varIndex) : variable(column.varIndex);
    }
    if (!range) {
        return std::nullopt;
    }
    if (range->start > range->end || range->end > mask_) {
        corrupt(std::min(range->start, bytes_.size()), "a field reaches out of its record");
    }
    std::span<const std::byte> stored = bytes_.subspan(range->start, range->end - range->start);
    if (column.isCalculated() && !column.isLongValue() && stored.size() >= kCalculatedHeader) {
        stored = calculatedValue(stored);
    }
    return stored;
}

std::optional<RowView::Range> RowView::variable(std::size_t varIndex) const {
    constexpr std::size_t kTail = 4; // var count and one offset
    if (mask_ < 2 + kTail) {
        corrupt(0, "a record is too short for its variable fields");
    }
    const std::size_t count = load16(&bytes_[mask_ - 2]);
    if (varIndex >= count) {
        return std::nullopt;
    }
    if (mask_ < 2 + kTail + 2 * count) {
        corrupt(mask_ - 2, "the record has no room for its number of variable fields");
    }
    const std::byte* offset = &bytes_[mask_ - kTail - 2 * varIndex];
    return Range{load16(offset), load16(offset - 2)};
}

std::optional<RowView::Range> RowView::jet3Variable(std::size_t varIndex) const {
    const std::size_t jumps = (bytes_.size() - 1) / 256;
    if (mask_ < 1 + 2 + jumps) {
        corrupt(0, "a record is too short for its variable fields");
    }
    const std::size_t count = load8(&bytes_[mask_ - 1]);
    if (varIndex >= count) {
        return std::nullopt;
    }
    if (mask_ < 1 + 2 + jumps + count) {
        corrupt(mask_ - 1, "the record has no room for its number of variable fields");
    }
    const std::size_t first = mask_ - 2 - jumps; // offset byte of var 0; the others lie below
    const std::size_t usedJumps = (first - count) / 256 < jumps ? jumps - 1 : jumps;
    Range range{0, 0};
    std::size_t base = 0, jump = 0;
    for (std::size_t i = 0; i <= varIndex + 1; ++i) {
        while (jump < usedJumps && load8(&bytes_[mask_ - 2 - jump]) == i) {
            base += 256;
            ++jump;
        }
        range = {range.end, load8(&bytes_[first - i]) + base};
    }
    return range;
}

std::size_t rowSize(const TableDefinition& definition, std::size_t variableBytes) noexcept {
    const std::size_t varPart =
        definition.varColumns == 0 ? 0 : variableBytes + 2 * (definition.varColumns + std::size_t{2});
    return std::max(kMinRowBytes, 2 + definition.fixedBytes() + varPart + maskBytes(definition.maxColumns));
}

std::vector<std::byte> buildRow(const TableDefinition& definition, std::span<const StoredField> fields) {
    assert(fields.size() == definition.columns.size());
    std::vector<const StoredField*> variables(definition.varColumns, nullptr);
    std::size_t variableBytes = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].set && !definition.columns[i].isFixed()) {
            variables[definition.columns[i].varIndex] = &fields[i];
            variableBytes += fields[i].bytes.size();
        }
    }

    std::vector<std::byte> row(rowSize(definition, variableBytes));
    store16(row.data(), definition.maxColumns);
    const std::size_t mask = row.size() - maskBytes(definition.maxColumns);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = definition.columns[i];
        if (!fields[i].set) {
            continue;
        }
        row[mask + column.number / 8U] |= static_cast<std::byte>(1U << (column.number % 8U));
        if (isStoredFixed(column)) {
            assert(fields[i].bytes.size() == column.length);
            std::copy(fields[i].bytes.begin(), fields[i].bytes.end(), row.begin() + 2 + column.fixedOffset);
        }
    }
    if (variables.empty()) {
        return row;
    }

    // Places of deleted columns and of Null stay, with no bytes.
    std::size_t at = 2 + definition.fixedBytes();
    for (std::size_t v = 0; v < variables.size(); ++v) {
        store16(&row[mask - 4 - 2 * v], static_cast<std::uint16_t>(at));
        if (variables[v] != nullptr) {
            std::copy(variables[v]->bytes.begin(), variables[v]->bytes.end(),
                      row.begin() + static_cast<std::ptrdiff_t>(at));
            at += variables[v]->bytes.size();
        }
    }
    store16(&row[mask - 4 - 2 * variables.size()], static_cast<std::uint16_t>(at));
    store16(&row[mask - 2], definition.varColumns);
    return row;
}

void requireConsistent(const TableDefinition& definition) {
    const auto require = [&](bool holds, const Column& column, const char* fault) {
        if (!holds) {
            throw Error(Error::Kind::BadDefinition, "table " + platform::toUtf8(definition.name) +
                                                        " cannot be written: field " + platform::toUtf8(column.name) +
                                                        " " + fault);
        }
    };
    std::vector<bool> numbers(definition.maxColumns), places(definition.varColumns);
    std::vector<bool> area(65536 + 255); // bytes of the fixed area that a field has; no field there is longer than 255
    for (const Column& column : definition.columns) {
        require(column.number < numbers.size() && !numbers[column.number], column, "has a number that is taken");
        numbers[column.number] = true;
        if (!column.isFixed()) {
            require(column.varIndex < places.size() && !places[column.varIndex], column, "has a place that is taken");
            places[column.varIndex] = true;
        } else if (isStoredFixed(column)) {
            // A text among the fields of fixed length may say that its length is 0, the size of its type.
            require(column.length != 0 && fixedSize(column.type) == column.length, column,
                    "has a length that its type does not allow");
            for (std::size_t i = column.fixedOffset; i < column.fixedOffset + std::size_t{column.length}; ++i) {
                require(!area[i], column, "lies on another field");
                area[i] = true;
            }
        }
    }
}

} // namespace kelb::jet
