#pragma once

#include "ado/value.h"

#include <optional>
#include <string>
#include <string_view>

/// Bytes as text in the alphabet A-Z a-z 0-9 + /, padded with "=".
namespace kelb::jobs {

[[nodiscard]] std::string toBase64(const ado::Binary& bytes);
/// No value for a text of another form.
[[nodiscard]] std::optional<ado::Binary> fromBase64(std::string_view text);

} // namespace kelb::jobs
