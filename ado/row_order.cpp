#include "ado/row_order.h"

#include "ado/jet_fields.h"
#include "ado/value_comparison.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

namespace kelb::ado {

namespace {

/// As many as an index of the file format looks at.
constexpr std::size_t kSortedUnits = 255;
constexpr std::uint64_t kSign = std::uint64_t{1} << 63U;

std::uint64_t orderedBits(std::int64_t value) noexcept {
    return static_cast<std::uint64_t>(value) ^ kSign;
}

std::uint64_t orderedBits(double value) noexcept {
    const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value); // -0 is 0
    return (bits & kSign) != 0 ? ~bits : bits ^ kSign;
}

/// Every number of one column in one measure: whole columns exactly, all others as doubles.
std::uint64_t orderedBits(const jet::Value& value, FieldType type) {
    if (const auto* currency = std::get_if<jet::Currency>(&value)) {
        return orderedBits(currency->tenThousandths);
    }
    const Quantity number = numberOf(value);
    const bool floating = type == FieldType::Numeric || std::holds_alternative<double>(number);
    return floating ? orderedBits(toDouble(number)) : orderedBits(std::get<std::int64_t>(number));
}

/// A byte as a unit that has no letter case.
char16_t beyondLetters(unsigned byte) noexcept {
    return static_cast<char16_t>(0x4E00U + byte);
}

} // namespace

RowOrder::RowOrder(std::vector<OrderKey> keys, const jet::TableDefinition& table)
    : keys_(std::move(keys)), table_(table) {}

RowOrder::Cell RowOrder::textCell(std::u16string_view text) {
    text = text.substr(0, kSortedUnits);
    const std::size_t begin = texts_.size();
    texts_.append(text);
    std::transform(texts_.begin() + static_cast<std::ptrdiff_t>(begin), texts_.end(),
                   texts_.begin() + static_cast<std::ptrdiff_t>(begin), platform::upper);
    return {begin, static_cast<std::uint32_t>(text.size()), Cell::Kind::Text};
}

RowOrder::Cell RowOrder::cellOf(const jet::Row& row, const jet::Column& column) {
    const FieldType type = fieldTypeOf(column);
    const Family family = familyOf(type);
    if (family == Family::Text) {
        return row.text(column, buffer_) ? textCell(buffer_) : Cell{0, 0, Cell::Kind::Null};
    }
    const jet::Value value = row.value(column);
    if (jet::isNull(value)) {
        return {0, 0, Cell::Kind::Null};
    }
    if (family == Family::Number || family == Family::Date) {
        return {orderedBits(value, type), 0, Cell::Kind::Number};
    }
    buffer_.clear(); // GUIDs and binaries go by their bytes
    if (const auto* guid = std::get_if<jet::Guid>(&value)) {
        for (const std::uint8_t byte : guid->bytes) {
            buffer_ += beyondLetters(byte);
        }
    } else if (const auto* binary = std::get_if<jet::Binary>(&value)) {
        for (const std::byte byte : *binary) {
            buffer_ += beyondLetters(std::to_integer<unsigned>(byte));
        }
    }
    return textCell(buffer_);
}

void RowOrder::add(const jet::Row& row) {
    rows_.push_back(row.id().packed());
    for (const OrderKey& key : keys_) {
        cells_.push_back(cellOf(row, table_.columns[key.column]));
    }
}

int RowOrder::compare(const Cell& a, const Cell& b) const {
    if (a.kind != b.kind) {
        return a.kind < b.kind ? -1 : 1;
    }
    if (a.kind == Cell::Kind::Text) {
        const std::u16string_view texts = texts_;
        return texts.substr(a.bits, a.length).compare(texts.substr(b.bits, b.length));
    }
    return a.bits < b.bits ? -1 : a.bits > b.bits ? 1 : 0;
}

bool RowOrder::before(std::uint32_t a, std::uint32_t b) const {
    for (std::size_t i = 0; i < keys_.size(); ++i) {
        const int order = compare(cells_[a * keys_.size() + i], cells_[b * keys_.size() + i]);
        if (order != 0) {
            return (order < 0) == keys_[i].ascending;
        }
    }
    return a < b;
}

std::vector<std::uint32_t> RowOrder::sorted(std::optional<std::size_t> top) const {
    std::vector<std::uint32_t> places(rows_.size());
    std::iota(places.begin(), places.end(), 0U);
    const auto less = [this](std::uint32_t a, std::uint32_t b) { return before(a, b); };
    if (top && *top < places.size()) {
        const auto end = places.begin() + static_cast<std::ptrdiff_t>(*top);
        std::partial_sort(places.begin(), end, places.end(), less);
        places.erase(end, places.end());
    } else {
        std::sort(places.begin(), places.end(), less);
    }
    std::transform(places.begin(), places.end(), places.begin(), [this](std::uint32_t place) { return rows_[place]; });
    return places;
}

} // namespace kelb::ado
