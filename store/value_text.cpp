#include "store/value_text.h"

#include "platform/letter_case.h"
#include "platform/text.h"

#include <cmath>
#include <limits>

namespace kelb::store {

std::optional<std::int32_t> toLong(double number) {
    const double whole = std::nearbyint(number);
    if (!(whole >= std::numeric_limits<std::int32_t>::min() && whole <= std::numeric_limits<std::int32_t>::max())) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(whole);
}

std::optional<bool> parseBoolean(std::u16string_view text) {
    const std::u16string_view word = platform::trimBlanks(text);
    if (platform::equalNoCase(word, u"True")) {
        return true;
    }
    if (platform::equalNoCase(word, u"False")) {
        return false;
    }
    const auto number = parseNumber(word);
    if (!number) {
        return std::nullopt;
    }
    return *number != 0;
}

} // namespace kelb::store
