#pragma once

#include "app/job_button.h"
#include "jobs/context.h"
#include "platform/platform.h"

#include <functional>

namespace kelb::app {

/// The context that a run gets: the program's own, which lives from job to job, or for a dry run one of its own whose
/// files and databases take every change into memory.
class JobContexts {
public:
    /// `platform` and what it refers to outlive this.
    JobContexts(platform::Platform& platform, const jobs::Configuration& configuration);

    /// Hands the run its context. That of a dry run ends with it: the next run starts from what is on the disk.
    void run(const RunOptions& options, const std::function<void(jobs::Context&)>& job);
    jobs::Context& program() noexcept { return program_; }

private:
    void runDry(const RunOptions& options, const std::function<void(jobs::Context&)>& job);

    platform::Platform& platform_;
    jobs::Context program_;
};

} // namespace kelb::app
