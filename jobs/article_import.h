#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct ArticleImportOptions {
    std::u16string source;                    ///< empty: the program-wide source database
    std::u16string sourceTable = u"bbsforum"; ///< joined into the SELECT as it stands
    std::u16string dest;                      ///< empty: [Paths] wxdb
    std::u16string destTable = u"wxAll";
};

inline constexpr const char* kArticleImportJob = "article-import";

/// Adds one article to the destination table per row of the crawl table; a body of 8,000 characters or more goes to an
/// overflow file. Title and body are cut out by the markers of the row's site; a page without them is logged and left
/// out. A row of no known site is stored with the title and body of the row before it. Apostrophes are stored doubled.
/// Ends with the rows or at a stop.
/// Throws SettingError, JobError, ado::Error and platform::FileError; a row is then missing, never half written, and
/// the summary tells how far it got.
void importArticles(const ArticleImportOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
