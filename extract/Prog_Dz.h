#pragma once

#include <string>
#include <string_view>

/// What goes with stored pages of a forum.
namespace kelb::extract::Prog_Dz {

/// Whether page files are read from the share of the crawling machine.
enum class LanMode { Off, On };

/// `lanFolder` and, straight behind it, the trimmed stored path without its first three characters (drive, colon,
/// separator); "" when the mode is off. A Null stored path is passed as "".
[[nodiscard]] std::u16string localPagePath(LanMode mode, std::u16string_view lanFolder, std::u16string_view storedPath);

/// The text between the first "<title>" and the next "</title>", both found in any case; "" if either is missing.
[[nodiscard]] std::u16string extTitleTag(std::u16string_view html);

} // namespace kelb::extract::Prog_Dz
