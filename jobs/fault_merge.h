#pragma once

#include "jobs/context.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <optional>
#include <string>

namespace kelb::jobs {

struct FaultMergeOptions {
    std::u16string database;             ///< empty: the built-in path with [Merge] siteLabel
    std::optional<std::u16string> table; ///< none: [Merge] table; an empty name: nothing is done
};

inline constexpr const char* kFaultMergeJob = "fault-merge";

/// Merges approved records of the question-and-answer site that are about one set code by twos: the first gets both
/// texts and a title of its own, the second is withdrawn. A pair is stored whole or not at all. Adds the column
/// blnJoined where it is missing; the window is then closed. Cannot be stopped. Ends with a box.
/// Throws SettingError, JobError, ado::Error and platform::FileError; the merges made so far stay.
void mergeFaults(const FaultMergeOptions& options, Context& context, JobHost& host, JobSummary& summary);

} // namespace kelb::jobs
