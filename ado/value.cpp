#include "ado/value.h"

#include "jet/value_conversion.h"
#include "platform/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace kelb::ado {

namespace {

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

/// Where the users know another form than the engine's messages.
struct TextOf {
    std::u16string operator()(Null) const { return {}; }
    std::u16string operator()(float value) const { return floatText(value); }
    std::u16string operator()(double value) const { return floatText(value); }
    std::u16string operator()(OleDate value) const {
        const auto time = platform::fromSerial(value.days);
        return time ? platform::show(*time) : floatText(value.days);
    }
    std::u16string operator()(const std::u16string& value) const { return value; }
    std::u16string operator()(const Binary& value) const {
        constexpr std::u16string_view kHexDigits = u"0123456789ABCDEF";
        std::u16string text = u"0x";
        for (const std::byte byte : value) {
            text += kHexDigits[std::to_integer<std::size_t>(byte >> 4)];
            text += kHexDigits[std::to_integer<std::size_t>(byte & std::byte{15})];
        }
        return text;
    }
    template <class Other>
    std::u16string operator()(const Other& value) const {
        return jet::showValue(value);
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
    std::optional<long long> operator()(const Decimal& value) const { return digitsOf(jet::showValue(value)); }
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
