#pragma once

#include "jobs/job_summary.h"
#include "platform/date_time.h"

#include <string>
#include <string_view>

namespace kelb::jobs {

/// What a report tells of a run beside its summary.
struct RunCircumstances {
    platform::DateTime begun;
    std::string_view error = {}; ///< that ended the run, UTF-8; "" when none did
};

/// The order in which groups are shown: saved, passed over, rejected; within each the largest first.
[[nodiscard]] bool shownBefore(const RowGroup& a, const RowGroup& b) noexcept;

/// One self-contained page (UTF-8, no script, nothing loaded): the figures of the summary, a bar for the saved rows and
/// for each reason, and behind each bar the rows that the summary remembers.
[[nodiscard]] std::string reportPage(const JobSummary& summary, const RunCircumstances& run);

} // namespace kelb::jobs
