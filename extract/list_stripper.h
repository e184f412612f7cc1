#pragma once

#include "extract/tag_list.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kelb::extract {

struct StrippedText {
    std::u16string text;
    std::size_t remainder; ///< position in the page behind the last tag that was dealt with
};

/// Takes the listed tags out, script-like blocks whole, and keeps every other tag. A removed tag becomes CR LF (P) or
/// a blank, placed BEFORE the text that preceded it: "abc<p>def" gives CR LF, "abc", "def". One pass.
[[nodiscard]] StrippedText stripListedTags(std::u16string_view html, ImageTags images);

} // namespace kelb::extract
