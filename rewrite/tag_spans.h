#pragma once

#include <string>
#include <string_view>

namespace kelb::rewrite {

/// The text without its spans from a "<" to the next ">", both included. A "<" without a later ">" ends the removal:
/// it and everything behind it stays. One pass.
[[nodiscard]] std::u16string withoutTags(std::u16string_view text);

} // namespace kelb::rewrite
