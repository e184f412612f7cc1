#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"
#include "jobs/sink_connection.h"

#include <string>

namespace kelb::jobs {

struct MultipageImportOptions {
    std::u16string source;      ///< empty: [Paths] multiDb
    std::u16string sourceTable; ///< empty: [Articles] multiTable; joined into the SELECT as it stands
    SinkOptions sink;
};

inline constexpr const char* kMultipageImportJob = "multipage-import";

/// Merges each article of site A that stands on several pages and adds it to the table wxPrinter; one of 8,000
/// characters or more goes to an overflow file, and so does a copy of every merged text, to look at. Takes the first 10
/// first pages, the same ones in every run, and clears their blnPass, sT and sC. A crawl table that lacks those fields
/// gets them, and the run ends. Does not ask whether to stop.
/// Throws SettingError, JobError, ado::Error and platform::FileError; the crawl table is then as it was before the run,
/// and the articles that were added stay.
void importMultipageArticles(const MultipageImportOptions& options, Context& context, JobHost& host,
                             JobSummary& summary);

} // namespace kelb::jobs
