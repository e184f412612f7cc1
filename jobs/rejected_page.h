#pragma once

#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string_view>

/// Pages that gave no article: how they are counted and logged.
namespace kelb::jobs {

struct RejectedPage {
    std::string_view reason; ///< of row_reasons.h
    std::u16string_view url;
    std::u16string_view detail; ///< for the summary
    std::u16string_view shown;  ///< for the log, which tells its first 100 characters
};

/// Counts the page and logs "提取失败! 第" + number of the failure + "次," + url + "," + what is shown.
void rejectPage(const RejectedPage& page, JobSummary& summary, JobHost& host);

/// Title or body of an article page.
struct ArticlePart {
    bool found;
    std::u16string_view reason; ///< why it was not found
};

/// Rejects an article page, of which a part is missing or both are.
void rejectArticle(std::u16string_view url, const ArticlePart& title, const ArticlePart& body, JobSummary& summary,
                   JobHost& host);

} // namespace kelb::jobs
