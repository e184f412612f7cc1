#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>

namespace kelb::jobs {

/// The log file of one run of a job, UTF-8, oldest entry first; hosts hand it what they show. Entries are collected
/// and reach the disk about once a second.
class RunLog {
public:
    /// `logFile`: [Safety] logFile; the run's time goes before its extension. Empty: nothing is written.
    RunLog(platform::Platform& platform, std::u16string_view logFile);

    /// Adds one entry with its time. Throws platform::FileError.
    void add(std::u16string_view entry);
    /// Writes what is collected. To be called at the end of the run. Throws platform::FileError.
    void flush();
    /// The error that ends the run. A log that cannot be written does not hide it.
    void addLast(std::u16string_view entry) noexcept;

private:
    void collect(std::u16string_view entry);

    platform::Platform& platform_;
    std::u16string path_;
    std::string collected_;
    double lastFlush_ = 0; ///< seconds of the steady clock
};

} // namespace kelb::jobs
