#include "cli/json_values.h"

#include "jobs/base64.h"
#include "platform/date_time.h"
#include "platform/utf8.h"

#include <cstdint>
#include <limits>

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

ado::Value binary(const json& value, const ado::FieldInfo& field) {
    if (value.is_string()) {
        if (auto bytes = jobs::fromBase64(value.get_ref<const std::string&>())) {
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
