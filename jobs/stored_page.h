#pragma once

#include "jobs/page_files.h"

#include <string>
#include <string_view>

namespace kelb::jobs {

/// False for a field `content` that is the page itself: it has a line break or more than 260 characters.
[[nodiscard]] bool canBePath(std::u16string_view content) noexcept;

/// The page of a crawl row whose field `content` holds either the page itself or the path of its file: the whole file
/// when one is there, else the text as it stands. A text with a line break or of more than 260 characters is no path.
/// Throws platform::FileError as PageFiles::read.
[[nodiscard]] std::u16string storedPage(std::u16string_view content, PageFiles& files);

} // namespace kelb::jobs
