#pragma once

#include "cli/command.h"
#include "jobs/job_host.h"
#include "jobs/job_summary.h"

#include <optional>
#include <string>

namespace kelb::cli {

/// A command that runs a job. One of its own declares its options and says how they go into the job.
class JobCommand : public Command {
public:
    /// Runs the job on the console: progress, log file, Ctrl-C, and the summary as the last line of standard output,
    /// also when the job ends with an error, which is passed on; then the report, if one is asked for.
    int run(Program& program) final;

protected:
    /// `name`: of the command and in the summary.
    JobCommand(CLI::App& kelb, const std::string& name, const std::string& purpose);
    /// Adds --lan-folder; LAN mode is on with it.
    void declareLanFolder(const std::string& description);
    /// What the help tells behind the options; where the common options are explained comes last.
    void declareFooter(const std::string& text);

private:
    virtual void work(jobs::Context& context, jobs::JobHost& host, jobs::JobSummary& summary) = 0;
    jobs::PageLocation pages(Program& program) const;

    std::string name_;
    std::string report_; ///< path of the page; "" when none is asked for
    std::optional<std::string> lanFolder_;
};

} // namespace kelb::cli
