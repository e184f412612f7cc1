#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct ForumFillOptions {
    std::u16string source; ///< empty: [Paths] fillDb
};

inline constexpr const char* kForumFillJob = "forum-fill";

/// Writes title and body of every thread page of channel [Forum] fillCid into its own row (sT, sC). Rows whose page
/// gives no body are logged; the board's notice pages go, row and file. Ends with the rows or at a stop.
/// Throws JobError, ado::Error and platform::FileError; the summary then tells how far it got.
void fillForumThreads(const ForumFillOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
