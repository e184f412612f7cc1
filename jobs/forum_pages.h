#pragma once

#include "extract/Cls4Discuz.h"
#include "extract/user_names.h"
#include "jobs/context.h"
#include "jobs/job_summary.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelb::jobs {

/// What the two forum jobs do with a page: cut out title and body, know the board's notice page, tell why there is no
/// article.
class ForumPages {
public:
    explicit ForumPages(Context& context) : context_(context) {}

    /// The thread's title without line breaks.
    std::u16string title(std::u16string_view page, std::u16string& reason) const;
    /// Throws platform::FileError when "ADMarks.txt" is missing: it is read for the first page.
    std::u16string content(std::u16string_view page, std::u16string& reason, extract::ThreadPage which);
    /// Why a page gave no article, as row_reasons.h names it. `reason`: what title() and content() added to it. The
    /// board's message page (kNoticePage: the thread was deleted or is hidden) is known by [Forum] boardName alone.
    std::string_view failure(std::u16string_view page, std::u16string_view title, std::u16string_view reason) const;

private:
    bool isNotice(std::u16string_view page) const;

    Context& context_;
    const extract::UserNames noNames_; ///< no step of the forum jobs draws a name, so the list is not read
    std::optional<extract::Cls4Discuz> extractor_;
};

/// Where the board's notice page lies that is to go.
struct NoticePage {
    ado::Recordset& rows;         ///< at its row
    ado::Connection& connection;  ///< of the rows
    std::u16string_view database; ///< path of the crawl database
    std::u16string_view file;
    std::u16string_view lanFolder;
};

/// Deletes the row and, when that is on the disk, the page file: a kill must not leave the row without its file.
/// Throws ado::Error, platform::FileError; the summary counts what went.
void deleteNotice(const NoticePage& page, Disposal& disposal, JobSummary& summary);

inline constexpr std::u16string_view kForumTable = u"bbsforum";

} // namespace kelb::jobs
