#pragma once

#include "platform/clock.h"

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace kelb::cli {

/// The progress of a job on standard error: one line that rewrites itself on a terminal, else a line every few
/// seconds and one at the end.
class ProgressLine {
public:
    enum class Style { Off, Lines, Rewriting };
    /// What fits standard error. `quiet`: the option of that name.
    static Style styleFor(bool quiet);
    ProgressLine(Style style, platform::Clock& clock, std::ostream& out);

    void update(std::u16string_view text, std::size_t done, std::size_t total);
    /// Takes a rewriting line away, so that something else can be printed; the next update brings it back.
    void clear();
    /// The last state, if it was not shown yet.
    void finish();

private:
    void show();
    std::u16string line(std::size_t columns) const;

    Style style_;
    platform::Clock& clock_;
    std::ostream& out_;
    std::optional<double> begun_; ///< at the first update; seconds of the steady clock
    double shownAt_;
    bool onScreen_ = false, pending_ = false;
    std::u16string text_;
    std::size_t done_ = 0, total_ = 0;
};

} // namespace kelb::cli
