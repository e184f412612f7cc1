#pragma once

#include "jobs/page_files.h"

#include <string>
#include <string_view>

namespace kelb::jobs {

/// The page that a crawl row's `content` stands for.
struct SourcePage {
    enum class State {
        File,   ///< read from `path`
        InRow,  ///< `content` is the page
        NoFile, ///< the file is not there (any more), or cannot be read: `why`
        None    ///< `content` is empty
    };
    State state = State::None;
    std::u16string path; ///< File: where it lies; NoFile: where it was looked for, places parted by line breaks
    std::u16string html;
    std::string why; ///< NoFile: what reading it said, "" when it is just not there
};

/// Looks below the LAN folder (whether the switch is on or not) and at the stored path itself.
[[nodiscard]] SourcePage sourcePage(std::u16string_view content, const PageLocation& location, PageFiles& files);

} // namespace kelb::jobs
