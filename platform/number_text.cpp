#include "platform/number_text.h"

#include "platform/text.h"
#include "platform/utf8.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace kelb::platform {

std::optional<double> parseNumber(std::u16string_view text) {
    const std::string digits = toUtf8(trimBlanks(text));
    const char* begin = digits.data();
    const char* const end = begin + digits.size();
    if (begin != end && *begin == '+' && begin + 1 != end && begin[1] != '-') {
        ++begin;
    }
    double number = 0;
    const auto [stop, fault] = std::from_chars(begin, end, number);
    // from_chars knows "inf" and "nan", which are no numbers to this system.
    if (fault != std::errc() || stop != end || !std::isfinite(number)) {
        return std::nullopt;
    }
    return number;
}

std::string fixedText(double number, int digits) {
    std::array<char, 400> text{}; // the largest number has 309 digits before the point
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, digits).ptr;
    return {text.data(), end};
}

} // namespace kelb::platform
