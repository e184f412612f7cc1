#include "store/value_text.h"

#include "platform/letter_case.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace kelb::store {

std::optional<double> parseNumber(std::u16string_view text) {
    const std::string digits = platform::toUtf8(platform::trimBlanks(text));
    const char* begin = digits.data();
    const char* const end = begin + digits.size();
    if (begin != end && *begin == '+' && begin + 1 != end && begin[1] != '-')
        ++begin;
    double number = 0;
    const auto [stop, fault] = std::from_chars(begin, end, number);
    // from_chars knows "inf" and "nan", which are no numbers to this system.
    if (fault != std::errc() || stop != end || !std::isfinite(number))
        return std::nullopt;
    return number;
}

std::optional<std::int32_t> toLong(double number) {
    const double whole = std::nearbyint(number);
    if (!(whole >= std::numeric_limits<std::int32_t>::min() && whole <= std::numeric_limits<std::int32_t>::max()))
        return std::nullopt;
    return static_cast<std::int32_t>(whole);
}

std::optional<bool> parseBoolean(std::u16string_view text) {
    const std::u16string_view word = platform::trimBlanks(text);
    if (platform::equalNoCase(word, u"True"))
        return true;
    if (platform::equalNoCase(word, u"False"))
        return false;
    const auto number = parseNumber(word);
    if (!number)
        return std::nullopt;
    return *number != 0;
}

} // namespace kelb::store
