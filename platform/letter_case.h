#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Letter case by the one-to-one Unicode mapping of UTF-16 code units (ｃ → Ｃ, é → É, я → Я; ß stays).
namespace kelb::platform {

[[nodiscard]] char16_t upper(char16_t unit) noexcept;
[[nodiscard]] char16_t lower(char16_t unit) noexcept;
[[nodiscard]] std::u16string upperCase(std::u16string_view text);
[[nodiscard]] std::u16string lowerCase(std::u16string_view text);

[[nodiscard]] bool equalNoCase(std::u16string_view a, std::u16string_view b) noexcept;
/// Negative, 0 or positive; code units are compared after upper-casing.
[[nodiscard]] int compareNoCase(std::u16string_view a, std::u16string_view b) noexcept;
/// First position >= `from` where `wanted` stands without regard to case, else npos. An empty `wanted` is found at
/// `from` while `from` <= text.size().
[[nodiscard]] std::size_t findNoCase(std::u16string_view text, std::u16string_view wanted,
                                     std::size_t from = 0) noexcept;

/// Hash and equality for maps whose keys (table and column names, urls) differ only in case.
struct NoCaseHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view text) const noexcept;
};
struct NoCaseEqual {
    using is_transparent = void;
    bool operator()(std::u16string_view a, std::u16string_view b) const noexcept { return equalNoCase(a, b); }
};

} // namespace kelb::platform
