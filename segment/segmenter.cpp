#include "segment/segmenter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

namespace kelb::segment {

namespace {

constexpr std::size_t kUnits = 0x10000;
constexpr std::size_t kPairs = std::size_t{1} << 19U; ///< bytes; a few times the pairs of a large dictionary
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

std::size_t pairOf(std::u16string_view word) noexcept {
    const std::uint32_t pair = std::uint32_t{word[0]} << 16U | word[1];
    return pair * 0x9E3779B1U >> 13U;
}

std::int32_t costOf(double frequency, double total) {
    return static_cast<std::int32_t>(std::lround((std::log2(total) - std::log2(frequency)) * kCostUnit));
}

} // namespace

Segmenter::Segmenter(const WordDictionary& words) : words_(words), single_(kUnits, 0), sizes_(kPairs, 0) {
    std::vector<double> frequencies(words.size());
    double total = 0;
    for (std::size_t index = 0; index < words.size(); ++index) {
        const WordDictionary::Entry entry = words.entry(index);
        if (entry.word.size() == 1) {
            single_[entry.word.front()] = static_cast<std::uint32_t>(index + 1);
        } else {
            std::uint8_t& sizes = sizes_[pairOf(entry.word)];
            sizes = static_cast<std::uint8_t>(sizes | 1U << entry.word.size());
        }
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

Word Segmenter::wordOf(std::u16string_view text, std::size_t entry) const noexcept {
    return {text, entry == 0 ? std::u16string_view() : words_.entry(entry - 1).partOfSpeech};
}

void Segmenter::whole(std::u16string_view word, const WordSink& take) const {
    take(wordOf(word, words_.find(word) + 1)); // kNone + 1 is 0
}

void Segmenter::cut(std::u16string_view run, const WordSink& take) {
    while (!run.empty()) {
        const std::u16string_view block = run.substr(0, kBlock);
        const bool last = block.size() == run.size();
        const std::size_t enough = last ? block.size() : block.size() - kOverlap;
        if (hasFrequencies_) {
            weigh(block);
        } else {
            matchLongest(block);
        }
        std::size_t at = 0;
        for (; at < enough; at += steps_[at].size) {
            take(wordOf(block.substr(at, steps_[at].size), steps_[at].entry));
        }
        run.remove_prefix(at);
    }
}

/// Bit n for each n > 1 for which a word of n units may begin the text; none that the text is too short for.
unsigned Segmenter::sizesAt(std::u16string_view rest) const noexcept {
    if (rest.size() < 2) {
        return 0;
    }
    const unsigned sizes = sizes_[pairOf(rest)];
    return rest.size() >= kLongestWord ? sizes : sizes & ((2U << rest.size()) - 1);
}

/// Fills restCost_ and steps_ from the block's end to its start.
void Segmenter::weigh(std::u16string_view block) {
    restCost_[block.size()] = 0;
    for (std::size_t at = block.size(); at-- > 0;) {
        const std::uint32_t single = single_[block[at]];
        Step best{single, 1};
        Cost cost = (single == 0 ? onceCost_ : costs_[single - 1]) + restCost_[at + 1];
        const std::u16string_view rest = block.substr(at);
        for (unsigned sizes = sizesAt(rest); sizes != 0; sizes &= sizes - 1) {
            const auto size = static_cast<std::size_t>(std::countr_zero(sizes));
            const std::size_t index = words_.find(rest, size);
            if (index != WordDictionary::kNone && costs_[index] + restCost_[at + size] <= cost) {
                cost = costs_[index] + restCost_[at + size];
                best = {static_cast<std::uint32_t>(index + 1), static_cast<std::uint32_t>(size)};
            }
        }
        restCost_[at] = cost;
        steps_[at] = best;
    }
}

/// Fills steps_ with the longest words, as far as they are needed.
void Segmenter::matchLongest(std::u16string_view block) {
    for (std::size_t at = 0; at < block.size(); at += steps_[at].size) {
        const std::u16string_view rest = block.substr(at);
        steps_[at] = {single_[block[at]], 1};
        for (unsigned sizes = sizesAt(rest); sizes != 0; sizes &= sizes - 1) {
            const auto size = static_cast<std::size_t>(std::countr_zero(sizes));
            if (const std::size_t index = words_.find(rest, size); index != WordDictionary::kNone) {
                steps_[at] = {static_cast<std::uint32_t>(index + 1), static_cast<std::uint32_t>(size)};
            }
        }
    }
}

} // namespace kelb::segment
