#pragma once

#include <string>
#include <string_view>

namespace kelb::extract {

/// The text without the random noise that forums mix into posts against copying: every run of ASCII units (1 to 126)
/// of `text` that matches "* ?? ?? ?? *" is removed wherever it occurs, run by run in the order of the text.
[[nodiscard]] std::u16string withoutNoiseRuns(std::u16string_view text);

} // namespace kelb::extract
