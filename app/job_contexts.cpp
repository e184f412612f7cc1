#include "app/job_contexts.h"

#include "platform/memory_file_system.h"

#include <memory>

namespace kelb::app {
namespace {

/// Files and databases that take every change into memory.
struct DryRun {
    DryRun(const platform::Platform& real, const jobs::Configuration& configuration)
        : files(platform::makeDryRunFileSystem(real.files)),
          context({*files, real.clock, real.random, real.applicationFolder}, configuration,
                  {.dryRun = true, .ignoreLockFile = false}) {}

    std::unique_ptr<platform::FileSystem> files;
    jobs::Context context;
};

} // namespace

JobContexts::JobContexts(platform::Platform& platform, const jobs::Configuration& configuration)
    : platform_(platform), program_(platform, configuration, ado::Environment::Options()) {}

void JobContexts::run(const RunOptions& options, const std::function<void(jobs::Context&)>& job) {
    job(*hold(options));
}

std::shared_ptr<jobs::Context> JobContexts::hold(const RunOptions& options) {
    if (!options.dryRun) {
        program_.setTrashFolder(options.trashFolder);
        return {std::shared_ptr<void>(), &program_}; // owned by this
    }
    const auto dry = std::make_shared<DryRun>(platform_, program_.configuration());
    dry->context.setTrashFolder(options.trashFolder);
    return {dry, &dry->context};
}

} // namespace kelb::app
