#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct DedupeSourceOptions {
    std::u16string source; ///< empty: the program-wide source database
};

inline constexpr const char* kDedupeSourceJob = "dedupe-source";

/// Walks bbsforum from the newest row on. Rows that cannot be used go, and of pages with one key the copy with the
/// weaker title: file, then row. A kept copy that loses to a later row loses its file only; its row goes in the next
/// run, as one without a file. Asks first (JobHost::confirm) when more rows than [Safety] maxDeletePercent have no page
/// file. Ends with the rows or at a stop, then changes the button's caption and shows a box.
/// Throws SettingError without a site in [Dedup], Refused, JobError, ado::Error, and platform::FileError when a file
/// cannot be read or deleted; the summary then tells how far it got.
void dedupeSource(const DedupeSourceOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
