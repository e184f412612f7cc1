#include "cli/json_values.h"

#include "platform/date_time.h"
#include "platform/utf8.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace kelb::cli {
namespace {

using nlohmann::json;

[[noreturn]] void refuse(const json& value, const ado::FieldInfo& field, const char* wanted) {
    constexpr std::size_t kShown = 40; // bytes
    std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
    if (text.size() > kShown) {
        text = text.substr(0, kShown) + "...";
    }
    throw JsonValueError("column " + platform::toUtf8(field.name) + " takes " + wanted + ", not " + text);
}

template <class Whole>
ado::Value wholeNumber(const json& value, const ado::FieldInfo& field, const char* wanted) {
    if (!value.is_number_integer() ||
        (value.is_number_unsigned() && value.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max())) {
        refuse(value, field, wanted);
    }
    const auto number = value.get<std::int64_t>();
    if (number < std::int64_t{std::numeric_limits<Whole>::min()} ||
        number > std::int64_t{std::numeric_limits<Whole>::max()}) {
        refuse(value, field, wanted);
    }
    return static_cast<Whole>(number);
}

std::u16string textOf(const json& value, const ado::FieldInfo& field, const char* wanted) {
    if (!value.is_string()) {
        refuse(value, field, wanted);
    }
    return platform::fromUtf8(value.get_ref<const std::string&>());
}

std::optional<ado::Binary> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    const auto digit = [](char c) -> int {
        constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const std::size_t at = kAlphabet.find(c);
        return at == kAlphabet.npos ? -1 : static_cast<int>(at);
    };
    std::size_t padding = 0;
    while (padding < 2 && text.size() > padding && text[text.size() - 1 - padding] == '=') {
        ++padding;
    }
    ado::Binary bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int value = i >= text.size() - padding ? 0 : digit(text[i]);
        if (value < 0) {
            return std::nullopt;
        }
        group = group << 6 | static_cast<std::uint32_t>(value);
        if (i % 4 == 3) {
            for (int shift = 16; shift >= 0; shift -= 8) {
                bytes.push_back(static_cast<std::byte>(group >> shift & 0xFF));
            }
            group = 0;
        }
    }
    bytes.erase(bytes.end() - static_cast<std::ptrdiff_t>(std::min(padding, bytes.size())), bytes.end());
    return bytes;
}

ado::Value binary(const json& value, const ado::FieldInfo& field) {
    if (value.is_string()) {
        if (auto bytes = fromBase64(value.get_ref<const std::string&>())) {
            return *std::move(bytes);
        }
    }
    refuse(value, field, "base64 text");
}

ado::Value dateTime(const json& value, const ado::FieldInfo& field) {
    constexpr const char* kWanted = "a date-time such as \"2015-12-02T08:30:00\"";
    const auto time = platform::parseDateTime(textOf(value, field, kWanted));
    if (!time) {
        refuse(value, field, kWanted);
    }
    return ado::fromDateTime(*time);
}

} // namespace

ado::Value fromJson(const json& value, const ado::FieldInfo& field) {
    if (value.is_null()) {
        return ado::Null{};
    }
    using enum ado::FieldType;
    switch (field.type) {
    case YesNo:
        if (!value.is_boolean()) {
            refuse(value, field, "true or false");
        }
        return value.get<bool>();
    case Byte:
        return wholeNumber<std::uint8_t>(value, field, "a whole number from 0 to 255");
    case Integer:
        return wholeNumber<std::int16_t>(value, field, "a whole number from -32768 to 32767");
    case Long:
        return wholeNumber<std::int32_t>(value, field, "a whole number of 32 bits");
    case BigInteger:
        return wholeNumber<std::int64_t>(value, field, "a whole number of 64 bits");
    case Single:
    case Double:
        if (!value.is_number()) {
            refuse(value, field, "a number");
        }
        return field.type == Single ? ado::Value(value.get<float>()) : ado::Value(value.get<double>());
    case Currency:
    case Numeric:
        // The text of a number keeps its digits; the database reads it as exactly as it can.
        return value.is_number() ? platform::fromUtf8(value.dump()) : textOf(value, field, "a number, as text or bare");
    case DateTime:
        return dateTime(value, field);
    case Binary:
    case LongBinary:
        return binary(value, field);
    case Text:
    case Memo:
    case Guid:
        return textOf(value, field, "a text");
    }
    refuse(value, field, "nothing that JSON can say");
}

} // namespace kelb::cli
