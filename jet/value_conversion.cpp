#include "jet/value_conversion.h"

#include "jet/error.h"
#include "jet/exact_number.h"
#include "jet/long_value.h"

#include "platform/date_time.h"
#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace kelb::jet {

namespace {

/// A number as it was given: exact where it has a decimal form of at most kMaxDigits digits, floating where it came
/// from a floating type or is beyond that.
struct Number {
    std::optional<Exact> exact;
    std::optional<double> floating;
};

template <class Floating>
std::string floatingText(Floating value) {
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::optional<double> parseFloating(std::string_view text) {
    text.remove_prefix(text.starts_with("+") && !text.starts_with("+-") ? 1 : 0); // from_chars knows no plus
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

Number fromInteger(std::int64_t value, int scale = 0) {
    const auto bits = static_cast<std::uint64_t>(value);
    return {Exact{value < 0, value < 0 ? ~bits + 1 : bits, scale}, std::nullopt};
}

Magnitude magnitudeOf(const Decimal& value) noexcept {
    Magnitude magnitude = 0;
    for (const std::uint32_t word : value.magnitude) {
        magnitude = magnitude << 32 | word;
    }
    return magnitude;
}

/// The text's ASCII form without blanks around it; empty when it has other characters or is too long for a number.
std::string asciiOf(std::u16string_view text) {
    text = platform::trimBlanks(text);
    const bool plain = text.size() < 400 && std::all_of(text.begin(), text.end(), [](char16_t u) { return u < 0x80; });
    return plain ? platform::toUtf8(text) : std::string();
}

struct NumberOf {
    std::optional<Number> operator()(bool v) const { return fromInteger(v ? -1 : 0); }
    std::optional<Number> operator()(std::uint8_t v) const { return fromInteger(v); }
    std::optional<Number> operator()(std::int16_t v) const { return fromInteger(v); }
    std::optional<Number> operator()(std::int32_t v) const { return fromInteger(v); }
    std::optional<Number> operator()(std::int64_t v) const { return fromInteger(v); }
    std::optional<Number> operator()(Currency v) const { return fromInteger(v.tenThousandths, 4); }
    // 0.1 of a floating type means 0.1, not the binary fraction next to it: its shortest decimal form counts.
    std::optional<Number> operator()(float v) const { return Number{parseExact(floatingText(v)), v}; }
    std::optional<Number> operator()(double v) const { return Number{parseExact(floatingText(v)), v}; }
    std::optional<Number> operator()(OleDate v) const { return (*this)(v.days); }
    std::optional<Number> operator()(const Decimal& v) const {
        return Number{Exact{v.negative, magnitudeOf(v), v.scale}, std::nullopt};
    }
    std::optional<Number> operator()(const std::u16string& v) const {
        const std::string text = asciiOf(v);
        const std::optional<Exact> exact = parseExact(text);
        const std::optional<double> floating = exact ? std::nullopt : parseFloating(text);
        return exact || floating ? std::optional(Number{exact, floating}) : std::nullopt;
    }
    template <class Other>
    std::optional<Number> operator()(const Other&) const {
        return std::nullopt;
    }
};

// Numbers into columns

std::optional<std::int64_t> scaledInteger(const Number& number, int scale, std::int64_t low, std::int64_t high) {
    std::optional<Exact> exact = number.exact;
    constexpr Magnitude kMost = Magnitude{1} << 63;
    if (!exact || !rescale(*exact, scale) || exact->magnitude > kMost ||
        (exact->magnitude == kMost && !exact->negative)) {
        return std::nullopt;
    }
    const auto bits = static_cast<std::uint64_t>(exact->magnitude);
    const auto value = static_cast<std::int64_t>(exact->negative ? ~bits + 1 : bits);
    return value >= low && value <= high ? std::optional(value) : std::nullopt;
}

template <class Integer>
std::optional<Value> toInteger(const Number& number) {
    const std::optional<std::int64_t> value =
        scaledInteger(number, 0, std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max());
    return value ? std::optional<Value>(static_cast<Integer>(*value)) : std::nullopt;
}

std::optional<double> toDouble(const Number& number) {
    return number.floating ? number.floating : parseFloating(exactText(*number.exact));
}

std::optional<Value> toSingle(const Number& number) {
    const std::optional<double> value = toDouble(number);
    if (!value ||
        (std::isfinite(*value) && std::abs(*value) > static_cast<double>(std::numeric_limits<float>::max()))) {
        return std::nullopt;
    }
    return static_cast<float>(*value);
}

std::optional<Value> toDecimal(const Number& number, const Column& column) {
    std::optional<Exact> exact = number.exact;
    if (!exact || !rescale(*exact, column.scale)) {
        return std::nullopt;
    }
    Magnitude limit = 1;
    for (int i = 0; i < std::min<int>(column.precision, kMaxDigits); ++i) {
        limit *= 10;
    }
    if (exact->magnitude >= limit) {
        return std::nullopt;
    }
    Decimal value;
    value.negative = exact->negative && exact->magnitude != 0;
    value.scale = column.scale;
    for (std::size_t i = 0; i < 4; ++i) {
        value.magnitude[3 - i] = static_cast<std::uint32_t>(exact->magnitude >> (32 * i) & 0xFFFFFFFF);
    }
    return value;
}

std::optional<Value> toCurrency(const Number& number) {
    const std::optional<std::int64_t> value =
        scaledInteger(number, 4, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max());
    return value ? std::optional<Value>(Currency{*value}) : std::nullopt;
}

bool isZero(const Number& number) noexcept {
    return number.exact ? number.exact->magnitude == 0 : *number.floating == 0;
}

std::optional<Value> numberFor(const Column& column, const Number& number) {
    switch (column.type) {
    case ColumnType::YesNo:
        return !isZero(number);
    case ColumnType::Byte:
        return toInteger<std::uint8_t>(number);
    case ColumnType::Integer:
        return toInteger<std::int16_t>(number);
    case ColumnType::Long:
        return toInteger<std::int32_t>(number);
    case ColumnType::Currency:
        return toCurrency(number);
    case ColumnType::Single:
        return toSingle(number);
    case ColumnType::Double: {
        const std::optional<double> value = toDouble(number);
        return value ? std::optional<Value>(*value) : std::nullopt;
    }
    case ColumnType::DateTime: {
        const std::optional<double> days = toDouble(number);
        return days && platform::fromSerial(*days) ? std::optional<Value>(OleDate{*days}) : std::nullopt;
    }
    case ColumnType::Numeric:
        return toDecimal(number, column);
    default:
        return std::nullopt;
    }
}

// Texts

std::u16string widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

std::u16string guidText(const Guid& guid) {
    constexpr std::u16string_view kHex = u"0123456789ABCDEF";
    std::u16string text = u"{";
    for (std::size_t i = 0; i < guid.bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += u'-';
        }
        text += kHex[guid.bytes[i] >> 4];
        text += kHex[guid.bytes[i] & 0x0FU];
    }
    return text + u"}";
}

int hexDigit(char16_t unit) noexcept {
    const char16_t lower = platform::lower(unit);
    if (unit >= u'0' && unit <= u'9') {
        return unit - u'0';
    }
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

/// `XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX`, in braces or not.
std::optional<Value> parseGuid(std::u16string_view text) {
    text = platform::trimBlanks(text);
    if (text.size() == 38 && text.front() == u'{' && text.back() == u'}') {
        text = text.substr(1, 36);
    }
    if (text.size() != 36) {
        return std::nullopt;
    }
    Guid guid;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (text[i] != u'-') {
                return std::nullopt;
            }
            continue;
        }
        const int digit = hexDigit(text[i]);
        if (digit < 0) {
            return std::nullopt;
        }
        std::uint8_t& byte = guid.bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | digit);
    }
    return guid;
}

std::optional<Value> parseYesNo(std::u16string_view text) {
    struct Spelling {
        std::u16string_view text;
        bool value;
    };
    constexpr std::array<Spelling, 6> kSpellings = {
        {{u"true", true}, {u"false", false}, {u"yes", true}, {u"no", false}, {u"on", true}, {u"off", false}}};
    text = platform::trimBlanks(text);
    const auto found = std::find_if(kSpellings.begin(), kSpellings.end(),
                                    [&](const Spelling& s) { return platform::equalNoCase(s.text, text); });
    return found != kSpellings.end() ? std::optional<Value>(found->value) : std::nullopt;
}

/// A text that is more than a number for the column: a date, a GUID, true or false.
std::optional<Value> fromSpelling(const Column& column, const std::u16string& text) {
    switch (column.type) {
    case ColumnType::YesNo:
        return parseYesNo(text);
    case ColumnType::Guid:
        return parseGuid(text);
    case ColumnType::DateTime: {
        const std::optional<platform::DateTime> time = platform::parseDateTime(platform::trimBlanks(text));
        return time ? std::optional<Value>(OleDate{platform::toSerial(*time)}) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

struct TextOf {
    std::u16string operator()(Null) const { return u"Null"; }
    std::u16string operator()(bool v) const { return v ? u"True" : u"False"; }
    std::u16string operator()(std::uint8_t v) const { return platform::number(v); }
    std::u16string operator()(std::int16_t v) const { return platform::number(v); }
    std::u16string operator()(std::int32_t v) const { return platform::number(v); }
    std::u16string operator()(std::int64_t v) const { return platform::number(v); }
    std::u16string operator()(Currency v) const { return widen(exactText(*fromInteger(v.tenThousandths, 4).exact)); }
    std::u16string operator()(float v) const { return widen(floatingText(v)); }
    std::u16string operator()(double v) const { return widen(floatingText(v)); }
    std::u16string operator()(OleDate v) const {
        const std::optional<platform::DateTime> time = platform::fromSerial(v.days);
        return time ? platform::show(*time) : widen(floatingText(v.days));
    }
    std::u16string operator()(const Guid& v) const { return guidText(v); }
    std::u16string operator()(const Decimal& v) const {
        return widen(exactText({v.negative, magnitudeOf(v), v.scale}));
    }
    std::u16string operator()(const std::u16string& v) const { return v; }
    std::u16string operator()(const Binary& v) const {
        return platform::number(static_cast<long long>(v.size())) + u" bytes";
    }
};

// Limits

std::string place(std::u16string_view table, const Column& column) {
    return "table " + platform::toUtf8(table) + ", field " + platform::toUtf8(column.name);
}

void requireRoom(std::size_t given, std::size_t allowed, const char* unit, const Column& column,
                 std::u16string_view table) {
    if (given > allowed) {
        throw Error(Error::Kind::FieldTooSmall, "the field is too small: " + place(table, column) + ", " +
                                                    std::to_string(allowed) + " " + unit + " allowed, " +
                                                    std::to_string(given) + " given");
    }
}

/// The column's length limits characters, not stored bytes.
void requireTextFits(const std::u16string& text, const Column& column, std::u16string_view table) {
    const std::size_t bytes = column.type == ColumnType::Memo ? kMaxLongValue : column.length;
    requireRoom(text.size(), bytes / 2, "characters", column, table);
}

void requireBinaryFits(const Binary& bytes, const Column& column, std::u16string_view table) {
    requireRoom(bytes.size(), column.type == ColumnType::Ole ? kMaxLongValue : column.length, "bytes", column, table);
}

const char* typeName(ColumnType type) noexcept {
    switch (type) {
    case ColumnType::YesNo:
        return "yes/no";
    case ColumnType::Byte:
        return "byte";
    case ColumnType::Integer:
        return "integer of 16 bits";
    case ColumnType::Long:
        return "integer of 32 bits";
    case ColumnType::Currency:
        return "currency";
    case ColumnType::Single:
        return "single";
    case ColumnType::Double:
        return "double";
    case ColumnType::DateTime:
        return "date";
    case ColumnType::Binary:
    case ColumnType::Ole:
        return "binary";
    case ColumnType::Text:
    case ColumnType::Memo:
        return "text";
    case ColumnType::Guid:
        return "GUID";
    case ColumnType::Numeric:
        return "decimal";
    default:
        return "a type that is not written here";
    }
}

[[noreturn]] void mismatch(const Value& value, const Column& column, std::u16string_view table) {
    constexpr std::size_t kShown = 60;
    std::u16string shown = showValue(value);
    if (shown.size() > kShown) {
        shown.resize(kShown);
        shown += u"…";
    }
    throw Error(Error::Kind::TypeMismatch, "the value does not fit the field: " + place(table, column) + " (" +
                                               typeName(column.type) + "), value " + platform::toUtf8(shown));
}

bool isTextual(ColumnType type) noexcept {
    return type == ColumnType::Text || type == ColumnType::Memo;
}

bool isBinary(ColumnType type) noexcept {
    return type == ColumnType::Binary || type == ColumnType::Ole;
}

std::optional<Value> convert(const Value& value, const Column& column) {
    const auto* text = std::get_if<std::u16string>(&value);
    const bool binary = std::holds_alternative<Binary>(value);
    if (isTextual(column.type)) {
        return binary ? std::nullopt : std::optional<Value>(showValue(value));
    }
    if (binary || isBinary(column.type)) {
        return std::nullopt; // what is right as it stands does not come here
    }
    if (column.type == ColumnType::Guid && std::holds_alternative<Guid>(value)) {
        return value;
    }
    if (column.type == ColumnType::DateTime && std::holds_alternative<OleDate>(value)) {
        return value;
    }
    if (text != nullptr) {
        if (std::optional<Value> spelled = fromSpelling(column, *text)) {
            return spelled;
        }
    }
    const std::optional<Number> number = std::visit(NumberOf{}, value);
    return number ? numberFor(column, *number) : std::nullopt;
}

} // namespace

Value convertValue(const Value& value, const Column& column, std::u16string_view table) {
    Value storage;
    const Value& conformed = conformValue(value, column, table, storage);
    if (&conformed != &storage) {
        return conformed;
    }
    return storage;
}

const Value& conformValue(const Value& value, const Column& column, std::u16string_view table, Value& storage) {
    if (isNull(value)) {
        return value;
    }
    const bool right = (std::holds_alternative<std::u16string>(value) && isTextual(column.type)) ||
                       (std::holds_alternative<Binary>(value) && isBinary(column.type));
    if (!right) {
        std::optional<Value> converted = convert(value, column);
        if (!converted) {
            mismatch(value, column, table);
        }
        storage = *std::move(converted);
    }
    const Value& conformed = right ? value : storage;
    if (const auto* text = std::get_if<std::u16string>(&conformed)) {
        requireTextFits(*text, column, table);
    } else if (const auto* bytes = std::get_if<Binary>(&conformed)) {
        requireBinaryFits(*bytes, column, table);
    }
    return conformed;
}

std::u16string showValue(const Value& value) {
    return std::visit(TextOf{}, value);
}

} // namespace kelb::jet
