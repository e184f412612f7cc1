#pragma once

#include "app/job_button.h"
#include "jobs/context.h"
#include "platform/platform.h"

#include <functional>
#include <memory>

namespace kelb::app {

/// The context that a run gets: the program's own, which lives from job to job, or for a dry run one of its own whose
/// files and databases take every change into memory.
class JobContexts {
public:
    /// `platform` and what it refers to outlive this.
    JobContexts(platform::Platform& platform, const jobs::Configuration& configuration);

    /// Hands the run its context. That of a dry run ends with it: the next run starts from what is on the disk.
    void run(const RunOptions& options, const std::function<void(jobs::Context&)>& job);
    /// The context of windows that stay open: the program's own, or one for a dry run, which ends with its last holder.
    /// The program's must not outlive this.
    std::shared_ptr<jobs::Context> hold(const RunOptions& options);
    jobs::Context& program() noexcept { return program_; }

private:
    platform::Platform& platform_;
    jobs::Context program_;
};

} // namespace kelb::app
