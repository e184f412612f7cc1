#pragma once

#include "jobs/context.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/platform.h"
#include "platform/random.h"

#include <memory>
#include <string>

namespace kelb::cli {

/// What may stand before or after every command. Texts are UTF-8 as given.
struct CommonOptions {
    std::string home;
    std::string ini;
    std::string trash;
    bool quiet = false;
    bool noSummary = false;
    bool dryRun = false;
    bool yes = false;
    bool force = false;
};

/// The parts that live as long as one command: settings, file system, clock, and the context made of them.
/// A dry run is decided here alone: commands and jobs see the same interfaces.
class Program {
public:
    /// Reads the settings file. Throws platform::FileError (folder or settings file that was named and is missing),
    /// jobs::SettingError.
    explicit Program(const CommonOptions& options);

    const CommonOptions& options() const noexcept { return options_; }
    jobs::Context& context() noexcept { return *context_; }
    platform::Platform& platform() noexcept { return context_->platform(); }
    /// The system's files, which a dry run does not lie over: for what the user asks for beside the job.
    platform::FileSystem& disk() noexcept { return *disk_; }

private:
    jobs::Configuration readSettings(const std::u16string& applicationFolder) const;

    const CommonOptions options_;
    platform::SystemClock clock_;
    platform::SystemRandom random_;
    std::unique_ptr<platform::FileSystem> disk_;
    std::unique_ptr<platform::FileSystem> overlay_; ///< of a dry run
    std::unique_ptr<jobs::Context> context_;
};

} // namespace kelb::cli
