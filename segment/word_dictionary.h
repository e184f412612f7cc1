#pragma once

#include "segment/word_slots.h"

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

/// A dictionary file that cannot be understood; what() names the line and what to write there.
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

    /// Reads lines "word TAB frequency TAB part of speech" parted by LF, in code page 936. An empty part of speech
    /// means that of the nearest line before that was kept and had one; further fields are dropped; empty lines, empty
    /// words and words of more than kLongestWord units are passed over. Throws DictionaryError for a word with fewer
    /// than three fields.
    static WordDictionary read(std::string_view bytes);

    std::size_t size() const noexcept { return places_.size(); }
    Entry entry(std::size_t index) const noexcept; ///< requires index < size()
    /// Place of the word, kNone when it is not there.
    std::size_t find(std::u16string_view word) const noexcept { return find(word, word.size()); }
    /// The same for the first `size` units of a text: quicker, as it need not be copied. Requires size <= text.size().
    std::size_t find(std::u16string_view text, std::size_t size) const noexcept;
    /// The two columns with a TAB between them; no value for an unknown word.
    std::optional<std::u16string> value(std::u16string_view word) const;
    const PassedOver& passedOver() const noexcept { return passedOver_; }

    /// Adds a word at the end; false, and nothing changed, when it is there. Throws std::invalid_argument for a word
    /// that is empty or too long and for a TAB or LF in any text: they would not come back from the file.
    bool add(std::u16string_view word, std::u16string_view frequency, std::u16string_view partOfSpeech);

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

private:
    /// Where an entry's texts begin in text_. Each ends at the next TAB, LF or the end; the frequency follows the word.
    struct Place {
        std::uint32_t word, partOfSpeech;
    };
    class Reader; // word_dictionary_read.cpp

    std::u16string_view fieldAt(std::size_t begin) const noexcept;
    bool isWordAt(std::size_t begin, std::u16string_view text, std::size_t size) const noexcept;
    void makeRoom(std::size_t words);
    /// Enters a word of text_; false when it is there. Requires makeRoom for one more.
    bool insert(const Place& place, std::size_t size, std::uint64_t hash) {
        const std::u16string_view word(text_.data() + place.word, size);
        const auto same = [&](std::size_t entry) { return isWordAt(places_[entry - 1].word, word, size); };
        if (!slots_.insert(hash, places_.size() + 1, same)) {
            return false;
        }
        places_.push_back(place);
        return true;
    }

    std::u16string text_;
    std::vector<Place> places_;
    WordSlots slots_;
    PassedOver passedOver_;
};

} // namespace kelb::segment
