#pragma once

#include "cli/program.h"
#include "cli/progress_line.h"
#include "jet/recovery.h"
#include "platform/interrupt.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace kelb::cli {

/// Thrown between two rows when Ctrl-C was pressed.
struct CopyStopped {};

/// What the copying of a database tells, a line each on standard error, and its progress there; losses go to a report
/// of JSON lines instead, where one is given.
class CopyHost final : public jet::RecoveryObserver {
public:
    /// `report` may be null.
    CopyHost(Program& program, std::ostream& err, std::ostream* report);

    void leftOut(std::string_view what, std::u16string_view name, std::string_view why) override;
    void progress(std::u16string_view table, std::size_t done, std::size_t total) override;
    void lost(const jet::Loss& loss) override;
    void told(std::u16string_view table, std::string_view what) override;
    /// Nothing of the progress is shown any more.
    void finish() { progress_.finish(); }

private:
    void print(const std::string& line);

    platform::InterruptWatch interrupt_;
    std::ostream& err_;
    std::ostream* report_;
    ProgressLine progress_;
};

/// Runs the copying to its exit status; one that Ctrl-C ended is told.
[[nodiscard]] int copyUnlessStopped(CopyHost& host, const std::function<int()>& copy);

/// "OUT: 3 tables, 1200 rows, 4 indexes".
[[nodiscard]] std::string copySummary(std::u16string_view target, const jet::CopyCounts& counts);

} // namespace kelb::cli
