#pragma once

#include <optional>
#include <string_view>

namespace kelb::platform {

/// A decimal number with optional sign, point and exponent; blanks around it are passed over. No value for anything
/// else, infinities included.
[[nodiscard]] std::optional<double> parseNumber(std::u16string_view text);

} // namespace kelb::platform
