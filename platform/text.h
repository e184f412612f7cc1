#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Splitting, joining, replacing and trimming of UTF-16 texts. All searches here mind case.
namespace kelb::platform {

/// The pieces between separators; an empty text gives no piece, otherwise count = separators + 1.
/// The views point into `text`. Requires a non-empty separator.
[[nodiscard]] std::vector<std::u16string_view> split(std::u16string_view text, std::u16string_view separator);
[[nodiscard]] std::u16string join(const std::vector<std::u16string_view>& pieces, std::u16string_view separator);

/// Every occurrence, left to right, none overlapping. One pass. An empty `wanted` changes nothing.
[[nodiscard]] std::u16string replaceAll(std::u16string_view text, std::u16string_view wanted, std::u16string_view with);
void replaceAllIn(std::u16string& text, std::u16string_view wanted, std::u16string_view with);

/// Blanks (U+0020 only; never tab, line break or U+3000) taken off both ends.
[[nodiscard]] std::u16string_view trimBlanks(std::u16string_view text) noexcept;

/// First or last `count` code units, fewer when the text is shorter.
[[nodiscard]] std::u16string_view left(std::u16string_view text, std::size_t count) noexcept;
[[nodiscard]] std::u16string_view right(std::u16string_view text, std::size_t count) noexcept;

/// Decimal digits of a number.
[[nodiscard]] std::u16string number(long long value);

/// Doubles every apostrophe, as texts inside SQL literals need it.
[[nodiscard]] std::u16string quoted(std::u16string_view text);

} // namespace kelb::platform
