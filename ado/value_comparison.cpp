#include "ado/value_comparison.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelb::ado {

namespace {

template <class T>
int order(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

struct FamilyOf {
    Family operator()(Null) const { return Family::Null; }
    Family operator()(OleDate) const { return Family::Date; }
    Family operator()(const Guid&) const { return Family::Guid; }
    Family operator()(const std::u16string&) const { return Family::Text; }
    Family operator()(const Binary&) const { return Family::Bytes; }
    template <class Numeric>
    Family operator()(const Numeric& /*value*/) const {
        return Family::Number;
    }
};

double decimalToDouble(const Decimal& value) {
    double magnitude = 0;
    for (const std::uint32_t word : value.magnitude) {
        magnitude = magnitude * 4294967296.0 + word;
    }
    const double scaled = magnitude / std::pow(10.0, value.scale);
    return value.negative ? -scaled : scaled;
}

struct NumberOf {
    Quantity operator()(bool value) const { return std::int64_t{value ? -1 : 0}; }
    Quantity operator()(std::uint8_t value) const { return std::int64_t{value}; }
    Quantity operator()(std::int16_t value) const { return std::int64_t{value}; }
    Quantity operator()(std::int32_t value) const { return std::int64_t{value}; }
    Quantity operator()(std::int64_t value) const { return value; }
    Quantity operator()(Currency value) const {
        if (value.tenThousandths % 10000 == 0) {
            return value.tenThousandths / 10000;
        }
        return static_cast<double>(value.tenThousandths) / 10000.0;
    }
    Quantity operator()(float value) const { return static_cast<double>(value); }
    Quantity operator()(double value) const { return value; }
    Quantity operator()(OleDate value) const { return value.days; }
    Quantity operator()(const Decimal& value) const { return decimalToDouble(value); }
    template <class Other>
    Quantity operator()(const Other& /*notANumber*/) const {
        return std::numeric_limits<double>::quiet_NaN();
    }
};

int compareNumbers(const Value& a, const Value& b) {
    const Quantity left = numberOf(a), right = numberOf(b);
    const auto* wholeLeft = std::get_if<std::int64_t>(&left);
    const auto* wholeRight = std::get_if<std::int64_t>(&right);
    if (wholeLeft != nullptr && wholeRight != nullptr) {
        return order(*wholeLeft, *wholeRight);
    }
    return order(toDouble(left), toDouble(right));
}

} // namespace

Family familyOf(const Value& value) noexcept {
    return std::visit(FamilyOf{}, value);
}

Family familyOf(FieldType type) noexcept {
    switch (type) {
    case FieldType::DateTime:
        return Family::Date;
    case FieldType::Text:
    case FieldType::Memo:
        return Family::Text;
    case FieldType::Guid:
        return Family::Guid;
    case FieldType::Binary:
    case FieldType::LongBinary:
        return Family::Bytes;
    default:
        return Family::Number;
    }
}

bool areComparable(Family a, Family b) noexcept {
    const auto plain = [](Family family) { return family == Family::Date ? Family::Number : family; };
    const auto [low, high] = std::minmax({plain(a), plain(b)});
    return low == high || low == Family::Null || (low == Family::Text && high == Family::Guid);
}

Quantity numberOf(const Value& value) {
    return std::visit(NumberOf{}, value);
}

double toDouble(const Quantity& number) noexcept {
    const auto* whole = std::get_if<std::int64_t>(&number);
    return whole != nullptr ? static_cast<double>(*whole) : *std::get_if<double>(&number);
}

std::optional<int> compareValues(const Value& a, const Value& b) {
    if (isNull(a) || isNull(b)) {
        return std::nullopt;
    }
    const Family left = familyOf(a), right = familyOf(b);
    if (left == Family::Text && right == Family::Text) {
        return platform::compareNoCase(std::get<std::u16string>(a), std::get<std::u16string>(b));
    }
    if (left == Family::Guid && right == Family::Guid) {
        return order(std::get<Guid>(a).bytes, std::get<Guid>(b).bytes);
    }
    if (left == Family::Bytes && right == Family::Bytes) {
        return order(std::get<Binary>(a), std::get<Binary>(b));
    }
    if (left == Family::Guid || right == Family::Guid) {
        return platform::compareNoCase(toText(a), toText(b));
    }
    return compareNumbers(a, b);
}

} // namespace kelb::ado
