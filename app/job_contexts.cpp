#include "app/job_contexts.h"

#include "platform/memory_file_system.h"

#include <memory>

namespace kelb::app {

JobContexts::JobContexts(platform::Platform& platform, const jobs::Configuration& configuration)
    : platform_(platform), program_(platform, configuration, ado::Environment::Options()) {}

void JobContexts::run(const RunOptions& options, const std::function<void(jobs::Context&)>& job) {
    if (options.dryRun) {
        runDry(options, job);
        return;
    }
    program_.setTrashFolder(options.trashFolder);
    job(program_);
}

void JobContexts::runDry(const RunOptions& options, const std::function<void(jobs::Context&)>& job) {
    const std::unique_ptr<platform::FileSystem> overlay = platform::makeDryRunFileSystem(platform_.files);
    jobs::Context context({*overlay, platform_.clock, platform_.random, platform_.applicationFolder},
                          program_.configuration(), {.dryRun = true, .ignoreLockFile = false});
    context.setTrashFolder(options.trashFolder);
    job(context);
}

} // namespace kelb::app
