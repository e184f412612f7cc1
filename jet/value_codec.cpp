#include "jet/value_codec.h"

#include "jet/byte_order.h"
#include "jet/text_codec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>

namespace kelb::jet {

namespace {

constexpr std::size_t kNumericBytes = 17;
constexpr std::uint8_t kNegative = 0x80;

/// Where the display order of a GUID takes its bytes from: three little-endian fields, then eight bytes as they are.
constexpr std::array<std::size_t, 16> kGuidOrder = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

Decimal loadDecimal(const std::byte* p, std::uint8_t scale) noexcept {
    Decimal value;
    value.negative = load8(p) == kNegative;
    value.scale = scale;
    for (std::size_t i = 0; i < 4; ++i) {
        value.magnitude[i] = load32(p + 1 + 4 * i);
    }
    return value;
}

Guid loadGuid(const std::byte* p) noexcept {
    Guid value;
    for (std::size_t i = 0; i < 16; ++i) {
        value.bytes[i] = load8(p + kGuidOrder[i]);
    }
    return value;
}

/// ACE only: days since the year 1 and a part of a day in units of 100 ns, each as 19 digits, a colon between them.
Value loadExtendedDate(std::span<const std::byte> stored) {
    const auto digits = [&](std::size_t from) -> std::optional<double> {
        double value = 0;
        for (std::size_t i = from; i < from + 19; ++i) {
            const int digit = load8(&stored[i]) - '0';
            if (digit < 0 || digit > 9) {
                return std::nullopt;
            }
            value = value * 10 + digit;
        }
        return value;
    };
    constexpr double kDaysTo1899 = 693593, kUnitsPerDay = 864e9;
    const std::optional<double> days = digits(0), units = digits(20);
    if (!days || !units) {
        return Binary(stored.begin(), stored.end());
    }
    const double whole = *days - kDaysTo1899, part = *units / kUnitsPerDay;
    return OleDate{whole < 0 ? whole - part : whole + part};
}

std::u16string loadText(const TableDefinition& table, std::span<const std::byte> stored) {
    std::u16string text;
    if (table.dialect == Dialect::Jet3) {
        decodeCodePageText(stored, table.codePage, text);
    } else {
        decodeText(stored, text);
    }
    return text;
}

std::byte* grow(std::vector<std::byte>& out, std::size_t bytes) {
    out.resize(out.size() + bytes);
    return out.data() + out.size() - bytes;
}

struct Storer {
    std::vector<std::byte>& out;
    const Column& column;

    void operator()(Null) const { assert(false); }
    void operator()(bool) const { assert(false); }
    void operator()(std::uint8_t v) const { store8(grow(out, 1), v); }
    void operator()(std::int16_t v) const { store16(grow(out, 2), static_cast<std::uint16_t>(v)); }
    void operator()(std::int32_t v) const { store32(grow(out, 4), static_cast<std::uint32_t>(v)); }
    void operator()(std::int64_t v) const { store64(grow(out, 8), static_cast<std::uint64_t>(v)); }
    void operator()(Currency v) const { (*this)(v.tenThousandths); }
    void operator()(float v) const { store32(grow(out, 4), std::bit_cast<std::uint32_t>(v)); }
    void operator()(double v) const { store64(grow(out, 8), std::bit_cast<std::uint64_t>(v)); }
    void operator()(OleDate v) const { (*this)(v.days); }
    void operator()(const Guid& v) const {
        std::byte* p = grow(out, 16);
        for (std::size_t i = 0; i < 16; ++i) {
            store8(p + kGuidOrder[i], v.bytes[i]);
        }
    }
    void operator()(const Decimal& v) const {
        std::byte* p = grow(out, kNumericBytes);
        store8(p, v.negative ? kNegative : 0);
        for (std::size_t i = 0; i < 4; ++i) {
            store32(p + 1 + 4 * i, v.magnitude[i]);
        }
    }
    void operator()(const std::u16string& v) const {
        if (column.compresses() && isCompressible(v)) {
            appendCompressedText(out, v);
        } else {
            appendRawText(out, v);
        }
    }
    void operator()(const Binary& v) const { out.insert(out.end(), v.begin(), v.end()); }
};

} // namespace

std::optional<Value> decodeValue(const TableDefinition& table, const Column& column,
                                 std::span<const std::byte> stored) {
    if (stored.size() < fixedSize(column.type)) {
        return std::nullopt;
    }
    const std::byte* p = stored.data();
    switch (column.type) {
    case ColumnType::Byte:
        return load8(p);
    case ColumnType::Integer:
        return static_cast<std::int16_t>(load16(p));
    case ColumnType::Long:
    case ColumnType::Complex:
        return static_cast<std::int32_t>(load32(p));
    case ColumnType::BigInteger:
        return static_cast<std::int64_t>(load64(p));
    case ColumnType::Currency:
        return Currency{static_cast<std::int64_t>(load64(p))};
    case ColumnType::Single:
        return std::bit_cast<float>(load32(p));
    case ColumnType::Double:
        return std::bit_cast<double>(load64(p));
    case ColumnType::DateTime:
        return OleDate{std::bit_cast<double>(load64(p))};
    case ColumnType::Guid:
        return loadGuid(p);
    case ColumnType::Numeric:
        return loadDecimal(p, column.scale);
    case ColumnType::ExtendedDate:
        return loadExtendedDate(stored);
    case ColumnType::Text:
    case ColumnType::Memo:
        return loadText(table, stored);
    case ColumnType::YesNo:
    case ColumnType::Binary:
    case ColumnType::Ole:
    case ColumnType::FixedBinary:
        break;
    }
    return Binary(stored.begin(), stored.end());
}

void appendStored(std::vector<std::byte>& out, const Column& column, const Value& value) {
    std::visit(Storer{out, column}, value);
}

bool isWritableType(ColumnType type) noexcept {
    constexpr std::array kTypes = {ColumnType::YesNo,    ColumnType::Byte,   ColumnType::Integer, ColumnType::Long,
                                   ColumnType::Currency, ColumnType::Single, ColumnType::Double,  ColumnType::DateTime,
                                   ColumnType::Binary,   ColumnType::Text,   ColumnType::Ole,     ColumnType::Memo,
                                   ColumnType::Guid,     ColumnType::Numeric};
    return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

} // namespace kelb::jet
