#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelb::platform {

/// A decimal number with optional sign, point and exponent; blanks around it are passed over. No value for anything
/// else, infinities included.
[[nodiscard]] std::optional<double> parseNumber(std::u16string_view text);

/// The number in decimal notation with so many digits behind the point.
[[nodiscard]] std::string fixedText(double number, int digits);

} // namespace kelb::platform
