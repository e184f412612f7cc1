#include "segment/word_dictionary.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace kelb::segment {

namespace {

constexpr std::size_t kFewestSlots = 16;

/// Mixes a word of at most kLongestWord units, all of them: two 64-bit words hold it with its length.
std::uint64_t hashOf(std::u16string_view word) noexcept {
    std::array<std::uint64_t, 2> packed{0, std::uint64_t{word.size()} << 56U};
    std::array<char16_t, 8> units{};
    std::copy(word.begin(), word.end(), units.begin());
    std::array<std::uint64_t, 2> raw{};
    std::memcpy(raw.data(), units.data(), sizeof raw);
    packed[0] ^= raw[0];
    packed[1] ^= raw[1];
    std::uint64_t mixed = (packed[0] ^ 0x9E3779B97F4A7C15U) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 32U ^ packed[1]) * 0x94D049BB133111EBU;
    return mixed ^ mixed >> 29U;
}

std::uint32_t tagOf(std::uint64_t hash) noexcept {
    return static_cast<std::uint32_t>(hash >> 32U);
}

void requireHoldable(std::u16string_view text, const char* what) {
    if (text.find_first_of(u"\t\n") != text.npos) {
        throw std::invalid_argument(std::string("a dictionary's ") + what + " may not hold a TAB or a line feed");
    }
}

} // namespace

WordDictionary::Entry WordDictionary::entry(std::size_t index) const noexcept {
    const Slices& at = slices_[index];
    const std::u16string_view text = text_;
    return {text.substr(at.word, at.wordSize), text.substr(at.word + at.wordSize + 1, at.frequencySize),
            text.substr(at.partOfSpeech, at.partOfSpeechSize)};
}

std::size_t WordDictionary::find(std::u16string_view word) const noexcept {
    if (slots_.empty() || word.empty() || word.size() > kLongestWord) {
        return kNone;
    }
    const std::uint64_t hash = hashOf(word);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask; slots_[at].entry != 0; at = (at + 1) & mask) {
        const std::size_t index = slots_[at].entry - 1;
        if (slots_[at].tag == tagOf(hash) && wordOf(slices_[index]) == word) {
            return index;
        }
    }
    return kNone;
}

std::optional<std::u16string> WordDictionary::value(std::u16string_view word) const {
    const std::size_t index = find(word);
    if (index == kNone) {
        return std::nullopt;
    }
    const Entry found = entry(index);
    return std::u16string(found.frequency).append(u"\t").append(found.partOfSpeech);
}

/// False when the word is there. Requires a free slot (growFor) and a word of text_.
bool WordDictionary::insert(const Slices& slices) {
    const std::u16string_view word = wordOf(slices);
    const std::uint64_t hash = hashOf(word);
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    for (; slots_[at].entry != 0; at = (at + 1) & mask) {
        if (slots_[at].tag == tagOf(hash) && wordOf(slices_[slots_[at].entry - 1]) == word) {
            return false;
        }
    }
    slices_.push_back(slices);
    slots_[at] = {tagOf(hash), static_cast<std::uint32_t>(slices_.size())};
    return true;
}

void WordDictionary::growFor(std::size_t words) {
    const std::size_t needed = std::bit_ceil(std::max(kFewestSlots, words + words / 2));
    if (needed <= slots_.size()) {
        return;
    }
    slots_.assign(needed, {});
    const std::size_t mask = needed - 1;
    for (std::size_t index = 0; index < slices_.size(); ++index) {
        const std::uint64_t hash = hashOf(wordOf(slices_[index]));
        std::size_t at = hash & mask;
        while (slots_[at].entry != 0) {
            at = (at + 1) & mask;
        }
        slots_[at] = {tagOf(hash), static_cast<std::uint32_t>(index + 1)};
    }
}

bool WordDictionary::add(std::u16string_view word, std::u16string_view frequency, std::u16string_view partOfSpeech) {
    if (word.empty() || word.size() > kLongestWord) {
        throw std::invalid_argument("a dictionary's words have 1 to 7 characters");
    }
    requireHoldable(word, "word");
    requireHoldable(frequency, "frequency");
    requireHoldable(partOfSpeech, "part of speech");
    if (find(word) != kNone) {
        return false;
    }
    const std::size_t start = text_.size();
    if (start + word.size() + frequency.size() + partOfSpeech.size() + 2 > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("the dictionary is full: its texts take 4 G characters");
    }
    text_.append(word).append(u"\t").append(frequency).append(u"\t").append(partOfSpeech);
    growFor(slices_.size() + 1);
    return insert({static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(word.size()),
                   static_cast<std::uint32_t>(frequency.size()),
                   static_cast<std::uint32_t>(start + word.size() + frequency.size() + 2),
                   static_cast<std::uint32_t>(partOfSpeech.size())});
}

} // namespace kelb::segment
