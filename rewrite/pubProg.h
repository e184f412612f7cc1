#pragma once

#include <string>
#include <string_view>

namespace kelb::rewrite {

/// Texts are worked on up to this length; what lies behind is dropped (code units).
inline constexpr std::size_t kTagTextLimit = 10240;

namespace pubProg {

/// The first kTagTextLimit code units without tags ("<" to the next ">") and without "&nbsp;".
[[nodiscard]] std::u16string killTagStr(std::u16string_view text);

} // namespace pubProg
} // namespace kelb::rewrite
