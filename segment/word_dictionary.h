#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::segment {

inline constexpr std::size_t kLongestWord = 7; ///< units; longer words are not held

/// A dictionary text that cannot be read; what() names the line and what to write there.
class DictionaryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Words in the order in which they came, each with two columns kept as text. Letter case counts.
/// All texts stand in one buffer and a word is looked up by its packed units, so that loading costs little more than
/// decoding the file. Views that it gives hold until the next add().
class WordDictionary {
public:
    struct Entry {
        std::u16string_view word, frequency, partOfSpeech;
    };
    /// What reading passed over.
    struct PassedOver {
        std::size_t duplicates = 0; ///< the first of equal words is kept
        std::size_t longWords = 0;
    };

    WordDictionary() = default;

    /// Reads lines "word TAB frequency TAB part of speech" parted by LF. An empty part of speech means that of the
    /// nearest line before that was kept and had one; further fields are dropped; empty lines, empty words and words
    /// of more than kLongestWord units are passed over. Throws DictionaryError for a word with fewer than three fields.
    static WordDictionary read(std::u16string text);

    std::size_t size() const noexcept { return slices_.size(); }
    Entry entry(std::size_t index) const noexcept; ///< requires index < size()
    /// Place of the word, kNone when it is not there.
    std::size_t find(std::u16string_view word) const noexcept;
    /// The two columns with a TAB between them; no value for an unknown word.
    std::optional<std::u16string> value(std::u16string_view word) const;
    const PassedOver& passedOver() const noexcept { return passedOver_; }

    /// Adds a word at the end; false, and nothing changed, when it is there. Throws std::invalid_argument for a word
    /// that is empty or too long and for a TAB or LF in any text: they would not come back from the file.
    bool add(std::u16string_view word, std::u16string_view frequency, std::u16string_view partOfSpeech);

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

private:
    /// Where an entry's texts stand in text_; the frequency begins one unit behind the word.
    struct Slices {
        std::uint32_t word, wordSize, frequencySize, partOfSpeech, partOfSpeechSize;
    };
    /// One place of the hash table; `entry` counts from 1, 0 is free.
    struct Slot {
        std::uint32_t tag = 0, entry = 0;
    };
    class Reader; // word_dictionary_read.cpp

    bool insert(const Slices& slices);
    void growFor(std::size_t words);
    std::u16string_view wordOf(const Slices& slices) const noexcept {
        return {text_.data() + slices.word, slices.wordSize};
    }

    std::u16string text_;
    std::vector<Slices> slices_;
    std::vector<Slot> slots_; ///< a power of two, at most two thirds full
    PassedOver passedOver_;
};

} // namespace kelb::segment
