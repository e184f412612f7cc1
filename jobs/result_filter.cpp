#include "jobs/result_filter.h"

#include "platform/letter_case.h"

#include <utility>

namespace kelb::jobs {

void ResultFilter::look(std::u16string_view text, Bodies bodies) {
    const bool narrower = !wanted_.empty() && bodies == bodies_ && again_ == found_.size() &&
                          platform::findNoCase(text, wanted_) != text.npos;
    found_.clear();
    if (narrower) {
        found_ = std::exchange(matches_, {});
    } else {
        matches_.clear();
        next_ = 0;
    }
    again_ = 0;
    wanted_ = text;
    bodies_ = bodies;
}

void ResultFilter::step(std::size_t rows) {
    for (; rows > 0 && !finished(); --rows) {
        const std::size_t row = again_ < found_.size() ? found_[again_++] : next_++;
        if (holds(row)) {
            matches_.push_back(static_cast<std::uint32_t>(row));
        }
    }
}

bool ResultFilter::holds(std::size_t row) {
    using Column = ResultListing::Column;
    const auto stands = [this, row](Column column) {
        return listing_.text(row, column, text_) && platform::findNoCase(text_, wanted_) != text_.npos;
    };
    return stands(Column::Title) || stands(Column::Url) || (bodies_ == Bodies::Searched && stands(Column::Body));
}

} // namespace kelb::jobs
