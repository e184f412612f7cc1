#pragma once

#include "cli/command.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <functional>
#include <optional>
#include <string>

namespace kelb::cli {

using JobBody = std::function<void(jobs::Context&, jobs::JobHost&, jobs::JobSummary&)>;

/// A command that runs a job.
class JobCommand : public Command {
protected:
    explicit JobCommand(CLI::App* declared);
    /// Runs the job on the console: progress, log file, Ctrl-C, and the summary as the last line of standard output,
    /// also when the job ends with an error, which is passed on; then the report, if one is asked for. `lanFolder`: as
    /// --lan-folder gave it; LAN mode is on with it. Result: exit status.
    int runJob(Program& program, const std::string& name, const std::optional<std::string>& lanFolder,
               const JobBody& body) const;

private:
    std::string report_; ///< path of the page; "" when none is asked for
};

} // namespace kelb::cli
