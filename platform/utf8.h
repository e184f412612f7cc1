#pragma once

#include <string>
#include <string_view>

namespace kelb::platform {

/// UTF-16 to UTF-8. An unpaired surrogate becomes U+FFFD.
[[nodiscard]] std::string toUtf8(std::u16string_view text);
/// Appends to `out`.
void toUtf8(std::u16string_view text, std::string& out);

/// UTF-8 to UTF-16. Each ill-formed sequence becomes one U+FFFD (maximal subpart rule); never fails.
[[nodiscard]] std::u16string fromUtf8(std::string_view bytes);

struct Utf8Check {
    bool valid;     ///< the whole text is well-formed UTF-8
    bool multiByte; ///< and at least one character takes two bytes or more
};
[[nodiscard]] Utf8Check checkUtf8(std::string_view bytes) noexcept;

} // namespace kelb::platform
