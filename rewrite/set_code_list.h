#pragma once

#include "platform/file_system.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::rewrite {

inline constexpr std::size_t kMostSetCodes = 1001;

/// Reads a file of set codes in code page 936. Blank lines part it into blocks; the first line of a block is its
/// heading, the words of the others are codes (those of 12 units and more are passed over). Each comes back as
/// "code(heading)". May be empty. Throws platform::FileError, and std::runtime_error for a block of one line and for
/// more than kMostSetCodes codes.
[[nodiscard]] std::vector<std::u16string> readSetCodes(platform::FileSystem& files, std::u16string_view path);

} // namespace kelb::rewrite
