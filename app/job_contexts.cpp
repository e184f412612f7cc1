#include "app/job_contexts.h"

#include "platform/memory_file_system.h"

namespace kelb::app {

struct JobContexts::DryRun {
    DryRun(const platform::Platform& platform, const jobs::Configuration& configuration)
        : files(platform::makeDryRunFileSystem(platform.files)),
          context({*files, platform.clock, platform.random, platform.applicationFolder}, configuration,
                  {.dryRun = true, .ignoreLockFile = false}) {}

    std::unique_ptr<platform::FileSystem> files;
    jobs::Context context;
};

JobContexts::JobContexts(platform::Platform& platform, const jobs::Configuration& configuration)
    : platform_(platform),
      program_(std::make_unique<jobs::Context>(platform, configuration, ado::Environment::Options())) {}

JobContexts::~JobContexts() = default;

jobs::Context& JobContexts::forRun(const RunOptions& options) {
    jobs::Context* context = program_.get();
    if (options.dryRun) {
        dryRun_.reset();
        dryRun_ = std::make_unique<DryRun>(platform_, program_->configuration());
        context = &dryRun_->context;
    }
    context->setTrashFolder(options.trashFolder);
    return *context;
}

} // namespace kelb::app
