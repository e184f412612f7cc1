#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::jet::testing {

/// Bytes from pairs of hex digits; blanks and `|` part them as one likes.
inline std::vector<std::byte> bytes(std::string_view hex) {
    std::vector<std::byte> out;
    int high = -1;
    for (const char c : hex) {
        if (c == ' ' || c == '|' || c == '\n')
            continue;
        const std::size_t digit = std::string_view("0123456789abcdef").find(c);
        if (digit == std::string_view::npos)
            throw std::invalid_argument("hex digit expected");
        if (high >= 0)
            out.push_back(static_cast<std::byte>(high * 16 + static_cast<int>(digit)));
        high = high >= 0 ? -1 : static_cast<int>(digit);
    }
    return out;
}

inline std::string hex(std::span<const std::byte> data) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string out;
    for (const std::byte b : data) {
        out += out.empty() ? "" : " ";
        out += kDigits[std::to_integer<std::size_t>(b >> 4)];
        out += kDigits[std::to_integer<std::size_t>(b & std::byte{15})];
    }
    return out;
}

} // namespace kelb::jet::testing
