#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelb::jet {

__extension__ typedef unsigned __int128 Magnitude;

inline constexpr int kMaxDigits = 38; ///< every number of 38 digits fits 128 bits

/// A decimal number without rounding: magnitude / 10^scale.
struct Exact {
    bool negative = false;
    Magnitude magnitude = 0;
    int scale = 0;
};

/// `[+-]digits[.digits][e[+-]digits]`, all of it. No value for anything else or for more than kMaxDigits digits.
[[nodiscard]] std::optional<Exact> parseExact(std::string_view text);

/// Takes zeros off the end until the scale is `scale`, or puts them there. False when digits would be lost or the
/// number becomes too long.
[[nodiscard]] bool rescale(Exact& number, int scale) noexcept;

/// Without zeros at the end of the digits behind the point: 1.50 is "1.5", 2.0 is "2".
[[nodiscard]] std::string exactText(Exact number);

} // namespace kelb::jet
