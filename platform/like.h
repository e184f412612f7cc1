#pragma once

#include <string_view>

/// The two wildcard languages of this system. Both run in O(text × stars) without recursion.
namespace kelb::platform {

/// Patterns of the text operations: `*` any run, `?` one unit, `#` one ASCII digit, `[abc]`, `[a-z]`, `[!x]` sets;
/// a literal `[` is `[[]`. Case counts. A set that is not closed matches nothing.
[[nodiscard]] bool matchesPattern(std::u16string_view text, std::u16string_view pattern) noexcept;

/// LIKE of SELECT statements: `%` any run, `_` one unit, `[abc]`, `[a-z]`, `[!p]` sets; `*`, `?`, `#` are ordinary.
/// Case does not count (one-to-one Unicode mapping). Without wildcards it is equality.
[[nodiscard]] bool matchesSqlLike(std::u16string_view text, std::u16string_view pattern) noexcept;

} // namespace kelb::platform
