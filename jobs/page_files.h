#pragma once

#include "jobs/job_host.h"
#include "platform/file_system.h"
#include "platform/page_text.h"

#include <string>
#include <string_view>

namespace kelb::jobs {

/// The saved pages that crawl rows name.
class PageFiles {
public:
    PageFiles(platform::FileSystem& files, platform::PageEncoding encoding) : files_(files), encoding_(encoding) {}

    /// The page file of a stored path (a row's `content`); "" while LAN mode is off.
    static std::u16string path(const PageLocation& location, std::u16string_view storedPath);
    /// Reads a page whole into `page`. False, and `page` "", when there is no file at the path (or no path).
    /// Throws platform::FileError when the file is there and cannot be read, or the drive is not mapped.
    bool read(std::u16string_view path, std::u16string& page);
    /// The title of a page (Prog_Dz::extTitleTag) from the front of its file, which is read on only while "</title>"
    /// has not come. Throws platform::FileError, also when there is no file.
    std::u16string title(std::u16string_view path);

private:
    platform::FileSystem& files_;
    platform::PageEncoding encoding_;
};

/// The text of a LAN folder as jobs need it: a folder that exists and was named without a separator at its end gets
/// one, because stored paths are put straight behind it; any other text stays as it is.
[[nodiscard]] std::u16string lanFolderText(platform::FileSystem& files, std::u16string_view folder);

} // namespace kelb::jobs
