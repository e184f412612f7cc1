#pragma once

#include "platform/number_text.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// Texts that stand for numbers and flags, as the store's callers hand them over.
namespace kelb::store {

using platform::parseNumber;

/// Rounded to the nearest whole number, halves to the even one; no value outside 32 bits.
[[nodiscard]] std::optional<std::int32_t> toLong(double number);

/// "True" and "False" without regard to case, or a number: 0 is false.
[[nodiscard]] std::optional<bool> parseBoolean(std::u16string_view text);

} // namespace kelb::store
