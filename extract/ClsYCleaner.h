#pragma once

#include <string>
#include <string_view>

namespace kelb::extract {

/// The strippers of Prog_Copy as a class; no job uses it. Differs in one thing: image tags stay.
class ClsYCleaner {
public:
    static std::u16string RemoveHTML(std::u16string_view text);
    /// `text` is left with the part behind the last tag that was dealt with.
    static std::u16string RemoveHTML1(std::u16string& text);
};

} // namespace kelb::extract
