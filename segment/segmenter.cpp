#include "segment/segmenter.h"

#include "platform/code_page.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <unordered_map>

namespace kelb::segment {

namespace {

constexpr std::size_t kPairs = std::size_t{1} << 19U; ///< bytes; a few times the pairs of a large dictionary
constexpr double kCostUnit = 65536;
constexpr std::size_t kMostDigits = 15; ///< exact in a double; more are cut to this many nines

/// No value unless the text is a whole number above 0.
std::optional<double> frequencyOf(std::string_view text) {
    const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    if (text.empty() || !std::ranges::all_of(text, isDigit)) {
        return std::nullopt;
    }
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    if (text.empty()) {
        return std::nullopt;
    }
    if (text.size() > kMostDigits) {
        return 1e15 - 1;
    }
    double number = 0;
    for (const char digit : text) {
        number = number * 10 + (digit - '0');
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

Segmenter::Segmenter(const WordDictionary& words) : table_(words.size()), sizes_(kPairs, 0) {
    std::vector<double> frequencies(words.size());
    double total = 0;
    for (std::size_t index = 0; index < words.size(); ++index) {
        const auto frequency = frequencyOf(words.bytes(index).frequency);
        hasFrequencies_ = hasFrequencies_ || frequency;
        frequencies[index] = frequency.value_or(1);
        total += frequencies[index];
    }
    onceCost_ = costOf(1, total);
    std::unordered_map<std::string_view, std::uint32_t> places; // of the parts of speech
    std::u16string word;
    for (std::size_t index = 0; index < words.size(); ++index) {
        const WordDictionary::Bytes bytes = words.bytes(index);
        const auto next = static_cast<std::uint32_t>(partsOfSpeech_.size());
        const auto [place, isNew] = places.try_emplace(bytes.partOfSpeech, next);
        if (isNew) {
            partsOfSpeech_.push_back(platform::decode936(bytes.partOfSpeech));
        }
        word.clear();
        platform::decode936(bytes.word, word);
        table_.insert(word, {costOf(frequencies[index], total), place->second});
        if (word.size() > 1) {
            std::uint8_t& sizes = sizes_[pairOf(word)];
            sizes = static_cast<std::uint8_t>(sizes | 1U << word.size());
        }
    }
}

Word Segmenter::wordOf(std::u16string_view text, const WordTable::Known* known) const noexcept {
    return {text, known == nullptr ? std::u16string_view() : partsOfSpeech_[known->partOfSpeech]};
}

void Segmenter::whole(std::u16string_view word, const WordSink& take) const {
    take(wordOf(word, word.empty() || word.size() > kLongestWord ? nullptr : table_.find(word, word.size())));
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
            take(wordOf(block.substr(at, steps_[at].size), steps_[at].known));
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
        const std::u16string_view rest = block.substr(at);
        Step best{table_.find(rest, 1), 1};
        Cost cost = (best.known == nullptr ? onceCost_ : best.known->cost) + restCost_[at + 1];
        for (unsigned sizes = sizesAt(rest); sizes != 0; sizes &= sizes - 1) {
            const auto size = static_cast<std::size_t>(std::countr_zero(sizes));
            const WordTable::Known* known = table_.find(rest, size);
            if (known != nullptr && known->cost + restCost_[at + size] <= cost) {
                cost = known->cost + restCost_[at + size];
                best = {known, size};
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
        steps_[at] = {table_.find(rest, 1), 1};
        for (unsigned sizes = sizesAt(rest); sizes != 0; sizes &= sizes - 1) {
            const auto size = static_cast<std::size_t>(std::countr_zero(sizes));
            if (const WordTable::Known* known = table_.find(rest, size)) {
                steps_[at] = {known, size};
            }
        }
    }
}

} // namespace kelb::segment
