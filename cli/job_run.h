#pragma once

#include "cli/program.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <functional>
#include <optional>
#include <string>

namespace kelb::cli {

using JobBody = std::function<void(jobs::Context&, jobs::JobHost&, jobs::JobSummary&)>;

/// Runs a job on the console: progress, log file, Ctrl-C, and the summary as the last line of standard output, also
/// when the job ends with an error, which is passed on. `lanFolder`: as --lan-folder gave it; LAN mode is on with it.
/// Result: exit status.
int runJob(Program& program, const std::string& name, const std::optional<std::string>& lanFolder, const JobBody& body);

} // namespace kelb::cli
