#include "segment/segmenter.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace kelb::segment {

namespace {

constexpr std::size_t kUnits = 0x10000;
constexpr double kCostUnit = 65536;
constexpr std::size_t kMostDigits = 15; ///< exact in a double; more are cut to this many nines

/// No value unless the text is a whole number above 0.
std::optional<double> frequencyOf(std::u16string_view text) {
    const auto isDigit = [](char16_t unit) { return unit >= u'0' && unit <= u'9'; };
    if (text.empty() || !std::ranges::all_of(text, isDigit)) {
        return std::nullopt;
    }
    text.remove_prefix(std::min(text.find_first_not_of(u'0'), text.size()));
    if (text.empty()) {
        return std::nullopt;
    }
    if (text.size() > kMostDigits) {
        return 1e15 - 1;
    }
    double number = 0;
    for (const char16_t digit : text) {
        number = number * 10 + (digit - u'0');
    }
    return number;
}

std::int32_t costOf(double frequency, double total) {
    return static_cast<std::int32_t>(std::lround((std::log2(total) - std::log2(frequency)) * kCostUnit));
}

} // namespace

Segmenter::Segmenter(const WordDictionary& words) : words_(words), longest_(kUnits, 0) {
    std::vector<double> frequencies(words.size());
    double total = 0;
    for (std::size_t index = 0; index < words.size(); ++index) {
        const WordDictionary::Entry entry = words.entry(index);
        std::uint8_t& longest = longest_[entry.word.front()];
        longest = std::max(longest, static_cast<std::uint8_t>(entry.word.size()));
        const auto frequency = frequencyOf(entry.frequency);
        hasFrequencies_ = hasFrequencies_ || frequency;
        frequencies[index] = frequency.value_or(1);
        total += frequencies[index];
    }
    if (hasFrequencies_) {
        onceCost_ = costOf(1, total);
        costs_.resize(words.size());
        std::ranges::transform(frequencies, costs_.begin(), [total](double f) { return costOf(f, total); });
    }
}

void Segmenter::whole(std::u16string_view word, const WordSink& take) const {
    const std::size_t index = words_.find(word);
    take({word, index == WordDictionary::kNone ? std::u16string_view() : words_.entry(index).partOfSpeech});
}

void Segmenter::cut(std::u16string_view run, const WordSink& take) {
    while (!run.empty()) {
        const std::u16string_view block = run.substr(0, kBlock);
        const bool last = block.size() == run.size();
        const std::size_t enough = last ? block.size() : block.size() - kOverlap;
        if (hasFrequencies_) {
            weigh(block);
        }
        std::size_t at = 0;
        while (at < enough) {
            const std::size_t size = hasFrequencies_ ? step_[at] : longestAt(block.substr(at));
            whole(block.substr(at, size), take);
            at += size;
        }
        run.remove_prefix(at);
    }
}

/// Fills restCost_ and step_ from the block's end to its start.
void Segmenter::weigh(std::u16string_view block) {
    restCost_[block.size()] = 0;
    for (std::size_t at = block.size(); at-- > 0;) {
        Cost best = onceCost_ + restCost_[at + 1];
        std::uint8_t step = 1;
        const std::size_t longest = std::min<std::size_t>(longest_[block[at]], block.size() - at);
        for (std::size_t size = 1; size <= longest; ++size) {
            const std::size_t index = words_.find(block.substr(at, size));
            if (index == WordDictionary::kNone) {
                continue;
            }
            const Cost cost = costs_[index] + restCost_[at + size];
            if (cost <= best) {
                best = cost;
                step = static_cast<std::uint8_t>(size);
            }
        }
        restCost_[at] = best;
        step_[at] = step;
    }
}

std::size_t Segmenter::longestAt(std::u16string_view rest) const {
    for (std::size_t size = std::min<std::size_t>(longest_[rest.front()], rest.size()); size > 1; --size) {
        if (words_.find(rest.substr(0, size)) != WordDictionary::kNone) {
            return size;
        }
    }
    return 1;
}

} // namespace kelb::segment
