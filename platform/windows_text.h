#pragma once

#include <string>
#include <string_view>

/// Texts of the system, whose wchar_t is a UTF-16 code unit here.
namespace kelb::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

[[nodiscard]] inline std::wstring toWide(std::u16string_view text) {
    return {text.begin(), text.end()};
}

[[nodiscard]] inline std::u16string fromWide(std::wstring_view text) {
    return {text.begin(), text.end()};
}

} // namespace kelb::platform
