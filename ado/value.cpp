#include "ado/value.h"

#include "platform/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

namespace kelb::ado {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

std::u16string widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

/// Shortest digits that read back as the same number; "1E+20" with a capital letter, as the users know it.
template <class Float>
std::u16string floatText(Float value) {
    std::array<char, 64> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    std::u16string text(digits.data(), end);
    for (char16_t& unit : text) {
        unit = unit == u'e' ? u'E' : unit;
    }
    return text;
}

/// Puts the point `scale` digits from the right and drops zeros behind it.
std::u16string withPoint(std::string digits, std::size_t scale, bool negative) {
    if (digits.size() <= scale) {
        digits.insert(0, scale + 1 - digits.size(), '0');
    }
    if (scale > 0) {
        digits.insert(digits.size() - scale, 1, '.');
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.') {
            digits.pop_back();
        }
    }
    return widen((negative && digits != "0" ? "-" : "") + digits);
}

std::u16string currencyText(Currency value) {
    const bool negative = value.tenThousandths < 0;
    const auto bits = static_cast<std::uint64_t>(value.tenThousandths);
    return withPoint(std::to_string(negative ? 0 - bits : bits), 4, negative);
}

std::u16string decimalText(const Decimal& value) {
    std::array<std::uint32_t, 4> words = value.magnitude;
    std::string digits; // least significant first
    do {
        std::uint64_t remainder = 0;
        for (std::uint32_t& word : words) {
            const std::uint64_t part = remainder << 32U | word;
            word = static_cast<std::uint32_t>(part / 10);
            remainder = part % 10;
        }
        digits.push_back(static_cast<char>('0' + remainder));
    } while (words != std::array<std::uint32_t, 4>{});
    return withPoint({digits.rbegin(), digits.rend()}, value.scale, value.negative);
}

void appendHex(std::u16string& out, unsigned byte) {
    out += static_cast<char16_t>(kHexDigits[byte >> 4U & 15U]);
    out += static_cast<char16_t>(kHexDigits[byte & 15U]);
}

std::u16string guidText(const Guid& value) {
    std::u16string text = u"{";
    for (std::size_t i = 0; i < value.bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += u'-';
        }
        appendHex(text, value.bytes[i]);
    }
    return text + u'}';
}

struct TextOf {
    std::u16string operator()(Null) const { return {}; }
    std::u16string operator()(bool value) const { return value ? u"True" : u"False"; }
    std::u16string operator()(std::uint8_t value) const { return platform::number(value); }
    std::u16string operator()(std::int16_t value) const { return platform::number(value); }
    std::u16string operator()(std::int32_t value) const { return platform::number(value); }
    std::u16string operator()(std::int64_t value) const { return platform::number(value); }
    std::u16string operator()(Currency value) const { return currencyText(value); }
    std::u16string operator()(float value) const { return floatText(value); }
    std::u16string operator()(double value) const { return floatText(value); }
    std::u16string operator()(OleDate value) const {
        const auto time = platform::fromSerial(value.days);
        return time ? platform::show(*time) : floatText(value.days);
    }
    std::u16string operator()(const Guid& value) const { return guidText(value); }
    std::u16string operator()(const Decimal& value) const { return decimalText(value); }
    std::u16string operator()(const std::u16string& value) const { return value; }
    std::u16string operator()(const Binary& value) const {
        std::u16string text = u"0x";
        for (const std::byte byte : value) {
            appendHex(text, std::to_integer<unsigned>(byte));
        }
        return text;
    }
};

std::optional<long long> integral(double value) {
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (!(value >= -kLimit && value < kLimit) || std::trunc(value) != value) {
        return std::nullopt;
    }
    return static_cast<long long>(value);
}

std::optional<long long> digitsOf(std::u16string_view text) {
    std::string ascii;
    for (const char16_t unit : platform::trimBlanks(text)) {
        if (unit > 0x7F) {
            return std::nullopt;
        }
        ascii += static_cast<char>(unit);
    }
    if (ascii.starts_with("+") && !ascii.starts_with("+-")) {
        ascii.erase(0, 1);
    }
    long long value = 0;
    const auto [end, fault] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    const bool whole = fault == std::errc() && end == ascii.data() + ascii.size();
    return whole ? std::optional(value) : std::nullopt;
}

struct IntegerOf {
    std::optional<long long> operator()(bool value) const { return value ? -1 : 0; }
    std::optional<long long> operator()(std::uint8_t value) const { return value; }
    std::optional<long long> operator()(std::int16_t value) const { return value; }
    std::optional<long long> operator()(std::int32_t value) const { return value; }
    std::optional<long long> operator()(std::int64_t value) const { return value; }
    std::optional<long long> operator()(Currency value) const {
        return value.tenThousandths % 10000 == 0 ? std::optional(value.tenThousandths / 10000) : std::nullopt;
    }
    std::optional<long long> operator()(float value) const { return integral(static_cast<double>(value)); }
    std::optional<long long> operator()(double value) const { return integral(value); }
    std::optional<long long> operator()(const Decimal& value) const { return digitsOf(decimalText(value)); }
    std::optional<long long> operator()(const std::u16string& value) const { return digitsOf(value); }
    template <class Other>
    std::optional<long long> operator()(const Other& /*notANumber*/) const {
        return std::nullopt;
    }
};

} // namespace

std::u16string toText(const Value& value) {
    return std::visit(TextOf{}, value);
}

std::optional<long long> toInteger(const Value& value) {
    return std::visit(IntegerOf{}, value);
}

Value fromDateTime(const platform::DateTime& time) {
    return OleDate{platform::toSerial(time)};
}

std::optional<platform::DateTime> toDateTime(const Value& value) {
    if (const auto* date = std::get_if<OleDate>(&value)) {
        return platform::fromSerial(date->days);
    }
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        return platform::parseDateTime(*text);
    }
    return std::nullopt;
}

} // namespace kelb::ado
