#include "cli/call_arguments.h"

#include "platform/utf8.h"

#include <algorithm>
#include <utility>

namespace kelb::cli {

namespace {

bool isWholeNumber(const Json& value) {
    if (!value.is_number_integer() ||
        (value.is_number_unsigned() && !std::in_range<std::int32_t>(value.get<std::uint64_t>()))) {
        return false;
    }
    return std::in_range<std::int32_t>(value.get<std::int64_t>());
}

bool isKind(const Json& value, ArgumentKind kind) {
    switch (kind) {
    case ArgumentKind::Text:
        return value.is_string();
    case ArgumentKind::Flag:
        return value.is_boolean();
    case ArgumentKind::Number:
        return isWholeNumber(value);
    case ArgumentKind::Texts:
        return value.is_array() && std::ranges::all_of(value, [](const Json& item) { return item.is_string(); });
    }
    return false;
}

std::string_view nameOf(ArgumentKind kind) {
    switch (kind) {
    case ArgumentKind::Text:
        return "a string";
    case ArgumentKind::Flag:
        return "true or false";
    case ArgumentKind::Number:
        return "a whole number of 32 bits";
    case ArgumentKind::Texts:
        return "an array of strings";
    }
    return "";
}

std::u16string toText(const Json& value) {
    return platform::fromUtf8(value.get_ref<const std::string&>());
}

} // namespace

CallArguments::CallArguments(const Json& values, const std::vector<Argument>& wanted) : values_(values) {
    if (!values.is_array()) {
        throw CallError("\"args\" must be an array");
    }
    if (values.size() != wanted.size()) {
        throw CallError("wrong number of arguments: " + std::to_string(wanted.size()) + " wanted, " +
                        std::to_string(values.size()) + " given");
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (!isKind(values[i], wanted[i].kind)) {
            throw CallError("argument " + std::to_string(i + 1) + " (" + std::string(wanted[i].name) + ") must be " +
                            std::string(nameOf(wanted[i].kind)));
        }
    }
}

std::u16string CallArguments::text(std::size_t index) const {
    return toText(values_[index]);
}

bool CallArguments::flag(std::size_t index) const {
    return values_[index].get<bool>();
}

std::int32_t CallArguments::number(std::size_t index) const {
    return values_[index].get<std::int32_t>();
}

std::vector<std::u16string> CallArguments::texts(std::size_t index) const {
    std::vector<std::u16string> texts;
    std::ranges::transform(values_[index], std::back_inserter(texts), toText);
    return texts;
}

Json toJson(const std::u16string& text) {
    return platform::toUtf8(text);
}

Json toJson(const std::vector<std::u16string>& texts) {
    Json array = Json::array();
    for (const std::u16string& text : texts) {
        array.push_back(toJson(text));
    }
    return array;
}

} // namespace kelb::cli
