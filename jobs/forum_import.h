#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct ForumImportOptions {
    std::u16string source; ///< empty: the program-wide source database
    std::u16string dest;   ///< empty: [Paths] wxdb
};

inline constexpr const char* kForumImportJob = "forum-import";

/// Adds one article to wxAll per first page of a crawled thread (channel [Forum] importCid), pages 2 and 3 appended;
/// an article of 12,000 characters or more goes to an overflow file. Rows that fail are logged; those whose page is
/// the board's notice page go, row and file. Ends with the rows or at a stop, then shows a box.
/// Throws JobError, ado::Error and platform::FileError; a row is then missing, never half written, and the summary
/// tells how far it got.
void importForumThreads(const ForumImportOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
