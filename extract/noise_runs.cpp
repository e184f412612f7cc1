#include "extract/noise_runs.h"

#include "platform/like.h"
#include "platform/text.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <vector>

namespace kelb::extract {

namespace {

constexpr std::u16string_view kNoisePattern = u"* ?? ?? ?? *";
constexpr std::size_t kShortestNoise = 10; ///< the pattern with nothing in place of its stars
constexpr std::size_t kNever = static_cast<std::size_t>(-1);

struct Run {
    std::size_t begin, end;
};

bool isAscii(char16_t unit) {
    return unit >= 1 && unit <= 126;
}

std::vector<Run> findNoise(std::u16string_view text) {
    std::vector<Run> noise;
    for (auto at = text.begin(); at != text.end();) {
        const auto begin = std::find_if(at, text.end(), isAscii);
        at = std::find_if_not(begin, text.end(), isAscii);
        const Run run{static_cast<std::size_t>(begin - text.begin()), static_cast<std::size_t>(at - text.begin())};
        if (run.end - run.begin >= kShortestNoise &&
            platform::matchesPattern(text.substr(run.begin, run.end - run.begin), kNoisePattern)) {
            noise.push_back(run);
        }
    }
    return noise;
}

/// The order in which runs are removed, and a way to ask which of them stands first in a text.
class RemovalOrder {
public:
    RemovalOrder(std::u16string_view text, const std::vector<Run>& runs) {
        for (const Run& run : runs) {
            const std::u16string_view removed = text.substr(run.begin, run.end - run.begin);
            std::vector<Length>& lengths = lengths_[removed.substr(0, kShortestNoise)];
            if (std::ranges::find(lengths, removed.size(), &Length::units) == lengths.end()) {
                lengths.push_back({removed.size(), order_.size()});
            }
            shortest_ = std::min(shortest_, removed.size());
            turns_[removed].push_back(order_.size());
            order_.push_back(removed);
        }
    }

    /// The first turn, not before `from`, that removes something from `content`; kNever if none does.
    std::size_t firstTurn(std::u16string_view content, std::size_t from) const {
        std::size_t first = kNever;
        for (std::size_t at = 0; at + shortest_ <= content.size() && first != from; ++at) {
            first = std::min(first, firstTurnAt(content.substr(at), from, first));
        }
        return first;
    }

    std::u16string_view removedIn(std::size_t turn) const { return order_[turn]; }

private:
    /// A length that runs of one beginning have, and the first turn of such a run.
    struct Length {
        std::size_t units, firstTurn;
    };

    /// The same for runs that `rest` begins with; turns from `known` on are of no interest.
    std::size_t firstTurnAt(std::u16string_view rest, std::size_t from, std::size_t known) const {
        const auto lengths = lengths_.find(rest.substr(0, kShortestNoise));
        if (lengths == lengths_.end()) {
            return kNever;
        }
        for (const Length& length : lengths->second) { // in the order of their first turns
            if (length.firstTurn >= known) {
                break;
            }
            const auto turns = length.units <= rest.size() ? turns_.find(rest.substr(0, length.units)) : turns_.end();
            if (turns != turns_.end()) {
                const auto turn = std::ranges::lower_bound(turns->second, from);
                known = std::min(known, turn == turns->second.end() ? kNever : *turn);
            }
        }
        return known;
    }

    std::vector<std::u16string_view> order_;
    std::unordered_map<std::u16string_view, std::vector<std::size_t>> turns_; ///< of each run, ascending
    std::unordered_map<std::u16string_view, std::vector<Length>> lengths_;    ///< of runs, by their beginning
    std::size_t shortest_ = kNever / 2;
};

} // namespace

// The removals are not made run by run over the whole text, which would be quadratic. Runs stay apart, because the
// units between them are never removed; and a run that holds a noise run matches the pattern, too. So only the noise
// runs themselves can lose anything, each on its own, and each goes through just the turns that touch it.
std::u16string withoutNoiseRuns(std::u16string_view text) {
    const std::vector<Run> noise = findNoise(text);
    const RemovalOrder order(text, noise);
    std::u16string kept;
    kept.reserve(text.size());
    std::size_t from = 0;
    for (const Run& run : noise) {
        kept.append(text.substr(from, run.begin - from));
        std::u16string content(text.substr(run.begin, run.end - run.begin));
        for (std::size_t turn = order.firstTurn(content, 0); turn != kNever;
             turn = order.firstTurn(content, turn + 1)) {
            platform::replaceAllIn(content, order.removedIn(turn), u"");
        }
        kept.append(content);
        from = run.end;
    }
    return kept.append(text.substr(from));
}

} // namespace kelb::extract
