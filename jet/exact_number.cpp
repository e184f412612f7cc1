#include "jet/exact_number.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace kelb::jet {

namespace {

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

} // namespace

std::optional<Exact> parseExact(std::string_view text) {
    Exact number;
    std::size_t at = 0;
    int digits = 0, exponent = 0;
    bool any = false, point = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        number.negative = text[at++] == '-';
    }
    for (; at < text.size() && (isDigit(text[at]) || (text[at] == '.' && !point)); ++at) {
        if (text[at] == '.') {
            point = true;
            continue;
        }
        any = true;
        number.magnitude = number.magnitude * 10 + static_cast<unsigned>(text[at] - '0');
        number.scale += point ? 1 : 0;
        digits += number.magnitude != 0 ? 1 : 0;
        if (digits > kMaxDigits || number.scale > kMaxDigits) {
            return std::nullopt;
        }
    }
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        const char* first = text.data() + at + 1;
        const char* last = text.data() + text.size();
        first += first != last && *first == '+' ? 1 : 0;
        const auto result = std::from_chars(first, last, exponent);
        if (result.ec != std::errc() || result.ptr != last || std::abs(exponent) > 400) {
            return std::nullopt;
        }
        at = text.size();
    }
    if (!any || at != text.size()) {
        return std::nullopt;
    }
    number.scale -= exponent;
    return number;
}

bool rescale(Exact& number, int scale) noexcept {
    constexpr Magnitude kRoom = ~Magnitude{0} / 10;
    if (number.magnitude == 0) {
        number.scale = scale;
    }
    for (; number.scale > scale; --number.scale) {
        if (number.magnitude % 10 != 0) {
            return false;
        }
        number.magnitude /= 10;
    }
    for (; number.scale < scale; ++number.scale) {
        if (number.magnitude > kRoom) {
            return false;
        }
        number.magnitude *= 10;
    }
    return true;
}

std::string exactText(Exact number) {
    while (number.scale > 0 && number.magnitude % 10 == 0) {
        number.magnitude /= 10;
        --number.scale;
    }
    std::string digits;
    for (Magnitude rest = number.magnitude; rest != 0; rest /= 10) {
        digits += static_cast<char>('0' + static_cast<int>(rest % 10));
    }
    const std::size_t fewest = number.scale > 0 ? static_cast<std::size_t>(number.scale) + 1 : 1;
    digits.append(fewest - std::min(fewest, digits.size()), '0');
    std::reverse(digits.begin(), digits.end());
    if (number.scale > 0) {
        digits.insert(digits.size() - static_cast<std::size_t>(number.scale), ".");
    } else {
        digits.append(static_cast<std::size_t>(-number.scale), '0');
    }
    return number.negative && number.magnitude != 0 ? "-" + digits : digits;
}

} // namespace kelb::jet
