#pragma once

#include "app/job_button.h"
#include "jobs/context.h"
#include "platform/platform.h"

#include <memory>

namespace kelb::app {

/// The context that a run gets: the program's own, which lives from job to job, or for a dry run one of its own whose
/// files and databases take every change into memory.
class JobContexts {
public:
    /// `platform` and what it refers to outlive this.
    JobContexts(platform::Platform& platform, const jobs::Configuration& configuration);
    ~JobContexts();

    /// Valid until the next call. A dry run starts from what is on the disk now, not from the last dry run's changes.
    jobs::Context& forRun(const RunOptions& options);
    jobs::Context& program() noexcept { return *program_; }

private:
    struct DryRun;
    platform::Platform& platform_;
    std::unique_ptr<jobs::Context> program_;
    std::unique_ptr<DryRun> dryRun_;
};

} // namespace kelb::app
