#include "rewrite/ad_marks.h"

#include "platform/letter_case.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace kelb::rewrite {

namespace {
constexpr std::size_t kNoLine = static_cast<std::size_t>(-1);
}

AdMarks::AdMarks(std::u16string fileText)
    : fileText_(std::move(fileText)), lines_(platform::split(fileText_, u"\r\n")) {
    for (std::size_t line = 0; line < lines_.size(); ++line) {
        if (!lines_[line].empty()) {
            marks_.push_back({platform::upperCase(lines_[line]), line});
            firstUnits_.set(marks_.back().upper.front());
        }
    }
    std::ranges::stable_sort(marks_, {}, &Mark::upper);
    const auto equal = [](const Mark& a, const Mark& b) { return a.upper == b.upper; };
    marks_.erase(std::unique(marks_.begin(), marks_.end(), equal), marks_.end());
}

std::optional<std::u16string_view> AdMarks::firstIn(std::u16string_view text) const {
    const std::u16string upper = platform::upperCase(text);
    std::size_t best = kNoLine;
    for (std::size_t at = 0; at < upper.size() && best != 0; ++at) {
        if (firstUnits_.test(upper[at])) {
            best = std::min(best, firstLineAt(std::u16string_view(upper).substr(at)));
        }
    }
    if (best == kNoLine) {
        return std::nullopt;
    }
    return lines_[best];
}

/// The smallest line number among the marks that `upperText` begins with.
std::size_t AdMarks::firstLineAt(std::u16string_view upperText) const {
    std::size_t best = kNoLine;
    auto low = marks_.begin();
    auto high = marks_.end();
    // All marks in [low, high) agree with the text up to `depth`; one that ends there sorts first.
    for (std::size_t depth = 0; low != high; ++depth) {
        if (low->upper.size() == depth) {
            best = std::min(best, low->line);
            ++low;
        }
        if (depth == upperText.size()) {
            break;
        }
        const auto unit = [depth](const Mark& mark) { return mark.upper[depth]; };
        low = std::ranges::lower_bound(low, high, upperText[depth], {}, unit);
        high = std::ranges::upper_bound(low, high, upperText[depth], {}, unit);
    }
    return best;
}

} // namespace kelb::rewrite
