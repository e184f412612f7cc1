#pragma once

#include "segment/word_dictionary.h"
#include "segment/word_table.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::segment {

/// A word of a text.
struct Word {
    std::u16string_view text;         ///< part of the text given
    std::u16string_view partOfSpeech; ///< as the dictionary has it; "" for a word that it lacks
};
using WordSink = std::function<void(const Word&)>;

/// Cuts runs of Chinese text into words of a dictionary. Of all ways to cut a run the most probable one is taken: the
/// one whose words' frequencies have the greatest product. A word without a number above 0 as its frequency and a
/// character that is no word count as met once; of equally probable ways the one with the longer first word is taken.
/// A dictionary without any frequency is matched longest word first instead.
/// Time is linear in the text. Memory does not grow with it: a run of more than kBlock characters is cut block by
/// block, which can tell only where the block's last kOverlap characters do not show how to cut what stands before
/// them.
class Segmenter {
public:
    /// Takes what it needs from `words`, which may go afterwards.
    explicit Segmenter(const WordDictionary& words);
    Segmenter(const Segmenter&) = delete; // words that it gave refer to it
    Segmenter& operator=(const Segmenter&) = delete;

    /// The words of a run, in order.
    void cut(std::u16string_view run, const WordSink& take);
    /// One word that is not cut, such as a model code, with its part of speech when the dictionary has it.
    void whole(std::u16string_view word, const WordSink& take) const;

    static constexpr std::size_t kBlock = 4096;
    static constexpr std::size_t kOverlap = 256;

private:
    /// Costs are -log2 of the probability in 2^-16; whole numbers, so that equal ways are equal to the last bit.
    using Cost = std::int64_t;

    /// A word of a way through the block. `known` is null for one that the dictionary lacks.
    struct Step {
        const WordTable::Known* known;
        std::size_t size;
    };

    void weigh(std::u16string_view block);
    void matchLongest(std::u16string_view block);
    unsigned sizesAt(std::u16string_view rest) const noexcept;
    Word wordOf(std::u16string_view text, const WordTable::Known* known) const noexcept;

    bool hasFrequencies_ = false;
    Cost onceCost_ = 0;
    WordTable table_;
    std::vector<std::u16string> partsOfSpeech_; ///< each once
    std::vector<std::uint8_t> sizes_;           ///< by hashed pair of units: bit n when a word of n units may begin so
    std::array<Cost, kBlock + 1> restCost_{};   ///< by position in the block: of the best way from there to its end
    std::array<Step, kBlock> steps_{};          ///< and its first word
};

} // namespace kelb::segment
