#include "jet/index_key.h"

#include "jet/byte_order.h"
#include "jet/error.h"
#include "jet/text_keys.h"

#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <span>
#include <variant>

namespace kelb::jet {
namespace {

constexpr std::byte kAscending{0x7F};
constexpr std::byte kDescending{0x80};
constexpr std::byte kAscendingNull{0x00};
constexpr std::byte kDescendingNull{0xFF};

std::string columnName(const Column& column) {
    return "column \"" + platform::toUtf8(column.name) + "\"";
}

[[noreturn]] void refuseType(const Column& column) {
    throw Error(Error::Kind::TypeMismatch,
                "the value for the index key of " + columnName(column) + " has not the type of the column");
}

template <typename T>
const T& require(const Column& column, const Value& value) {
    const T* const typed = std::get_if<T>(&value);
    if (typed == nullptr)
        refuseType(column);
    return *typed;
}

/// Appends the `Size` low bytes of `bits`, most significant first.
template <std::size_t Size>
void appendBig(KeyBytes& key, std::uint64_t bits, bool ascending) {
    if (!ascending)
        bits = ~bits;
    for (std::size_t i = Size; i-- > 0;)
        key.push_back(static_cast<std::byte>(bits >> (8 * i) & 0xFF));
}

template <std::size_t Size>
void appendSigned(KeyBytes& key, std::int64_t number, bool ascending) {
    appendBig<Size>(key, static_cast<std::uint64_t>(number) ^ (std::uint64_t{1} << (8 * Size - 1)), ascending);
}

/// `bits` of an IEEE number: the sign bit turned for positive ones, every bit for negative ones, so that they sort.
template <std::size_t Size>
void appendFloating(KeyBytes& key, std::uint64_t bits, bool ascending) {
    const std::uint64_t sign = std::uint64_t{1} << (8 * Size - 1);
    appendBig<Size>(key, (bits & sign) == 0 ? bits | sign : ~bits, ascending);
}

/// Blocks of eight bytes, each followed by 09 while more come, the last one padded and followed by its length.
void appendBinary(KeyBytes& key, std::span<const std::byte> data, bool ascending) {
    constexpr std::size_t kBlock = 8;
    constexpr std::byte kMore{0x09};
    const std::byte turn = ascending ? std::byte{0x00} : std::byte{0xFF};
    while (!data.empty()) {
        const std::size_t length = std::min(data.size(), kBlock);
        for (std::size_t i = 0; i < kBlock; ++i)
            key.push_back((i < length ? data[i] : std::byte{0}) ^ turn);
        // The 09 between blocks is the same in descending keys, only the length at the end is complemented. Kept.
        key.push_back(data.size() > kBlock ? kMore : static_cast<std::byte>(length) ^ turn);
        data = data.subspan(length);
    }
}

/// Kept: descending keys put positive numbers behind negative ones, as every existing index has it.
void appendDecimal(KeyBytes& key, const Decimal& decimal, bool ascending) {
    const bool zero = std::all_of(decimal.magnitude.begin(), decimal.magnitude.end(), [](auto w) { return w == 0; });
    const bool negative = decimal.negative && !zero;
    key.push_back(negative ? std::byte{0x00} : std::byte{0xFF});
    for (const std::uint32_t word : decimal.magnitude)
        appendBig<4>(key, word, ascending != negative);
}

std::string describeUnit(char16_t unit) {
    std::array<char, 8> code{};
    std::snprintf(code.data(), code.size(), "U+%04X", static_cast<unsigned>(unit));
    const bool shown = unit > 0x20 && (unit < 0xD800 || unit > 0xDFFF);
    return std::string(code.data()) + (shown ? " (" + platform::toUtf8(std::u16string(1, unit)) + ")" : std::string());
}

std::string describeOrder(const SortOrder& order) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "sort order 0x%04X version %u", static_cast<unsigned>(order.lcid),
                  static_cast<unsigned>(order.version));
    return text.data();
}

[[noreturn]] void refuseText(const Column& column, const std::string& what) {
    throw Error(Error::Kind::KeyNotPossible, "no index key is known for " + what + " in " + columnName(column));
}

void appendText(KeyBytes& key, const Column& column, std::u16string_view text, bool ascending) {
    const TextKeys known = textKeysOf(column);
    if (known == TextKeys::None)
        refuseText(column, "texts of the " + describeOrder(column.sortOrder));
    const std::optional<char16_t> refused = appendTextKey(key, text, ascending, known);
    if (!refused)
        return;
    std::string what = "the character " + describeUnit(*refused);
    if (known == TextKeys::AsciiOnly)
        what += " of the " + describeOrder(column.sortOrder) + " (only ASCII characters have known keys there)";
    refuseText(column, what);
}

void appendData(KeyBytes& key, const Column& column, bool ascending, const Value& value) {
    switch (column.type) {
    case ColumnType::Byte:
        return appendBig<1>(key, require<std::uint8_t>(column, value), ascending);
    case ColumnType::Integer:
        return appendSigned<2>(key, require<std::int16_t>(column, value), ascending);
    case ColumnType::Long:
        return appendSigned<4>(key, require<std::int32_t>(column, value), ascending);
    case ColumnType::Currency:
        return appendSigned<8>(key, require<Currency>(column, value).tenThousandths, ascending);
    case ColumnType::Single:
        return appendFloating<4>(key, std::bit_cast<std::uint32_t>(require<float>(column, value)), ascending);
    case ColumnType::Double:
        return appendFloating<8>(key, std::bit_cast<std::uint64_t>(require<double>(column, value)), ascending);
    case ColumnType::DateTime:
        return appendFloating<8>(key, std::bit_cast<std::uint64_t>(require<OleDate>(column, value).days), ascending);
    case ColumnType::YesNo: // true sorts first
        return appendBig<1>(key, !isNull(value) && require<bool>(column, value) ? 0x00 : 0xFF, ascending);
    case ColumnType::Guid:
        return appendBinary(key, std::as_bytes(std::span(require<Guid>(column, value).bytes)), ascending);
    case ColumnType::Binary:
        return appendBinary(key, require<Binary>(column, value), ascending);
    case ColumnType::Numeric: {
        const auto& decimal = require<Decimal>(column, value);
        if (decimal.scale != column.scale)
            refuseType(column);
        return appendDecimal(key, decimal, ascending);
    }
    case ColumnType::Text:
    case ColumnType::Memo:
        return appendText(key, column, require<std::u16string>(column, value), ascending);
    case ColumnType::Ole:
    case ColumnType::FixedBinary:
    case ColumnType::Complex:
    case ColumnType::BigInteger:
    case ColumnType::ExtendedDate:
        break;
    }
    throw Error(Error::Kind::KeyNotPossible, "no index keys are known for the type of " + columnName(column));
}

} // namespace

TextKeys textKeysOf(const Column& column) noexcept {
    if (column.sortOrder == SortOrder{0x0409, 0})
        return TextKeys::All;
    if (column.sortOrder == SortOrder{0x0804, 0}) // ASCII sorts as in 0x0409, Chinese by a table that is not known
        return TextKeys::AsciiOnly;
    return TextKeys::None;
}

void appendKey(KeyBytes& key, const Column& column, bool ascending, const Value& value) {
    if (isNull(value) && column.type != ColumnType::YesNo) {
        key.push_back(ascending ? kAscendingNull : kDescendingNull);
        return;
    }
    const std::size_t start = key.size();
    try {
        key.push_back(ascending ? kAscending : kDescending);
        appendData(key, column, ascending, value);
    } catch (const Error&) {
        key.resize(start);
        throw;
    }
}

} // namespace kelb::jet
