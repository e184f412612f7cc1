#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <string>

namespace kelb::jobs {

struct DedupeDestOptions {
    std::u16string dest;  ///< empty: [Paths] wxdb
    std::u16string table; ///< empty: wxGG
};

inline constexpr const char* kDedupeDestJob = "dedupe-dest";

/// Keeps of the rows whose addresses are equal up to their last "-" the one stored last, and deletes the others;
/// addresses without "-" are all equal. Cannot be stopped. Ends with a box.
/// Throws JobError, ado::Error and platform::FileError; the summary then tells how far it got.
void dedupeDest(const DedupeDestOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
