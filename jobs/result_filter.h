#pragma once

#include "jobs/result_listing.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kelb::jobs {

/// The rows of a listing in whose title, address or body a text stands, without regard to case. They are looked for in
/// steps, so that whoever asks stays free between them; what was found is there after each step. A text that contains
/// the one before it goes on from what that one has found.
class ResultFilter {
public:
    enum class Bodies { Passed, Searched };

    /// The listing outlives the filter.
    explicit ResultFilter(ResultListing& listing) : listing_(listing), count_(listing.count()) {}

    /// Looks for this from now on. Requires a text that is not empty.
    void look(std::u16string_view text, Bodies bodies);
    /// Looks at up to so many rows. Throws ado::Error; the row is passed over by the next step.
    void step(std::size_t rows);
    bool finished() const noexcept { return again_ == found_.size() && next_ == count_; }
    /// Rows of the listing that need not be looked at any more.
    std::size_t looked() const noexcept { return again_ == found_.size() ? next_ : found_[again_]; }
    std::size_t total() const noexcept { return count_; }
    /// Numbers of rows, ascending.
    const std::vector<std::uint32_t>& matches() const noexcept { return matches_; }

private:
    bool holds(std::size_t row);

    ResultListing& listing_;
    std::size_t count_;
    std::u16string wanted_;
    Bodies bodies_ = Bodies::Passed;
    std::vector<std::uint32_t> matches_;
    std::vector<std::uint32_t> found_; ///< by the text before: looked at first, again_ of them already
    std::size_t again_ = 0;
    std::size_t next_ = 0; ///< then the rows from here on
    std::u16string text_;
};

} // namespace kelb::jobs
