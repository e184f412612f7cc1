#pragma once

#include "cli/program.h"

#include <CLI/CLI.hpp>

namespace kelb::cli {

/// What the process ends with.
enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,  ///< a database, file or set-up error
    kUsage = 2,   ///< wrong usage, a missing setting, a refusal that --yes would lift
    kStopped = 3, ///< stopped on request
};

/// One command of the program: its constructor declares name, options and help, run() does it.
class Command {
public:
    virtual ~Command() = default;
    /// Result: exit status. Throws what the work throws.
    virtual int run(Program& program) = 0;
    bool chosen() const { return declared_->parsed(); }

protected:
    explicit Command(CLI::App* declared) : declared_(declared) {}
    CLI::App& declared() { return *declared_; }

private:
    CLI::App* declared_;
};

} // namespace kelb::cli
