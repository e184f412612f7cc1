#pragma once

#include "app/job_contexts.h"
#include "app/start_options.h"
#include "jobs/configuration.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/platform.h"
#include "platform/random.h"

#include <memory>
#include <string>

namespace kelb::app {

/// The parts of the program that outlive its windows: settings, file system, clock, and the contexts of the jobs.
class Program {
public:
    /// Reads the settings file. Throws platform::FileError (a folder or settings file that was named and is missing),
    /// jobs::SettingError.
    explicit Program(const StartOptions& options);

    platform::Platform& platform() noexcept { return *platform_; }
    const jobs::Configuration& configuration() const noexcept { return configuration_; }
    JobContexts& contexts() noexcept { return *contexts_; }
    const std::u16string& settingsFile() const noexcept { return settingsFile_; }

private:
    void readSettings(bool mustExist);

    platform::SystemClock clock_;
    platform::SystemRandom random_;
    std::u16string home_;
    std::u16string settingsFile_;
    jobs::Configuration configuration_;
    std::unique_ptr<platform::FileSystem> files_;
    std::unique_ptr<platform::Platform> platform_;
    std::unique_ptr<JobContexts> contexts_;
};

} // namespace kelb::app
