#pragma once

#include "segment/word_slots.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::segment {

inline constexpr std::size_t kLongestWord = 7; ///< UTF-16 units; longer words are not held

/// A dictionary file that cannot be understood; what() names the line and what to write there.
class DictionaryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Words in the order in which they came, each with two columns kept as text. Letter case counts.
/// Everything stays in the bytes of the file, code page 936, and is decoded when it is asked for: loading is then
/// reading the file, finding its lines and entering the words into a hash table, and saving gives back the bytes that
/// came.
class WordDictionary {
public:
    struct Entry {
        std::u16string word, frequency, partOfSpeech;
    };
    /// An entry as the file has it. Holds until the next add().
    struct Bytes {
        std::string_view word, frequency, partOfSpeech;
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
    static WordDictionary read(std::string bytes);
    /// The lines to write: all three columns of every entry, no line end behind the last.
    std::string lines() const;

    std::size_t size() const noexcept { return places_.size(); }
    Bytes bytes(std::size_t index) const noexcept; ///< requires index < size()
    Entry entry(std::size_t index) const;          ///< requires index < size()
    /// Place of the word, kNone when it is not there.
    std::size_t find(std::u16string_view word) const;
    /// The two columns with a TAB between them; no value for an unknown word.
    std::optional<std::u16string> value(std::u16string_view word) const;
    const PassedOver& passedOver() const noexcept { return passedOver_; }

    /// Adds a word at the end; false, and nothing changed, when it is there. Throws std::invalid_argument for what
    /// would not come back from the file: a word that is empty or too long, a TAB or LF, a character that code page 936
    /// lacks.
    bool add(std::u16string_view word, std::u16string_view frequency, std::u16string_view partOfSpeech);

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

private:
    /// Where an entry's fields begin in bytes_. Each ends at the next TAB, LF or the end; the frequency follows the
    /// word.
    struct Place {
        std::uint32_t word, partOfSpeech;
    };
    class Reader; // word_dictionary_read.cpp

    std::string_view fieldAt(std::size_t begin) const noexcept;
    /// Whether the word at `begin` of bytes_ is this one.
    bool isWordAt(std::size_t begin, std::string_view word) const noexcept {
        return bytes_[begin + word.size()] == '\t' && std::string_view(bytes_).substr(begin, word.size()) == word;
    }
    std::size_t findBytes(std::string_view word) const;
    void makeRoom(std::size_t words);
    /// Enters a word of bytes_; false when it is there. Requires makeRoom for one more.
    bool insert(const Place& place, std::size_t size, std::uint64_t hash) {
        const std::string_view word(bytes_.data() + place.word, size);
        const auto same = [&](std::size_t entry) { return isWordAt(places_[entry - 1].word, word); };
        if (!slots_.insert(hash, places_.size() + 1, same)) {
            return false;
        }
        places_.push_back(place);
        return true;
    }

    std::string bytes_;
    std::vector<Place> places_;
    WordSlots slots_;
    PassedOver passedOver_;
};

} // namespace kelb::segment
