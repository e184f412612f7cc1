#pragma once

#include "cli/progress_line.h"
#include "jobs/job_host.h"
#include "jobs/run_log.h"
#include "platform/interrupt.h"

#include <iosfwd>
#include <string>
#include <string_view>

namespace kelb::cli {

/// A job's host without a window: entries and boxes are lines on standard output, oldest first; Ctrl-C is the stop box.
class ConsoleHost final : public jobs::JobHost {
public:
    struct Parts {
        std::ostream& out;
        std::ostream& err;
        ProgressLine& progress;
        jobs::RunLog& runLog;
        const platform::InterruptWatch& interrupt;
    };
    ConsoleHost(const Parts& parts, jobs::PageLocation pages, bool agreed);

    bool stopRequested() override { return parts_.interrupt.interrupted(); }
    void log(std::u16string_view entry) override;
    void showProgress(std::u16string_view text, std::size_t done, std::size_t total) override;
    void showOutcome(std::u16string_view text, std::size_t done, std::size_t total) override; ///< a line, as log()
    void message(std::u16string_view title, std::u16string_view text) override;               ///< "[TITLE] TEXT"
    void warning(std::u16string_view text) override;                                          ///< one line of `err`
    bool confirm(std::u16string_view) override { return agreed_; }
    jobs::PageLocation pages() override { return pages_; }
    void yield() override {}

private:
    void print(std::u16string_view line);

    Parts parts_;
    jobs::PageLocation pages_;
    bool agreed_;
    std::string bytes_;
};

} // namespace kelb::cli
