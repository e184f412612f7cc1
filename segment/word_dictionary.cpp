#include "segment/word_dictionary.h"

#include "segment/word_hash.h"

#include <algorithm>
#include <limits>

namespace kelb::segment {

namespace {

void requireHoldable(std::u16string_view text, const char* what) {
    if (text.find_first_of(u"\t\n") != text.npos) {
        throw std::invalid_argument(std::string("a dictionary's ") + what + " may not hold a TAB or a line feed");
    }
}

} // namespace

std::u16string_view WordDictionary::fieldAt(std::size_t begin) const noexcept {
    const std::u16string_view rest = std::u16string_view(text_).substr(begin);
    const auto end = std::ranges::find_if(rest, [](char16_t unit) { return unit == u'\t' || unit == u'\n'; });
    return {rest.begin(), end};
}

WordDictionary::Entry WordDictionary::entry(std::size_t index) const noexcept {
    const Place& place = places_[index];
    const std::u16string_view word = fieldAt(place.word);
    return {word, fieldAt(place.word + word.size() + 1), fieldAt(place.partOfSpeech)};
}

/// Whether the word at `begin` of text_ is the first `size` units of `text`.
bool WordDictionary::isWordAt(std::size_t begin, std::u16string_view text, std::size_t size) const noexcept {
    return text_[begin + size] == u'\t' && std::u16string_view(text_).substr(begin, size) == text.substr(0, size);
}

std::size_t WordDictionary::find(std::u16string_view text, std::size_t size) const noexcept {
    if (size == 0 || size > kLongestWord) {
        return kNone;
    }
    const auto same = [&](std::size_t entry) { return isWordAt(places_[entry - 1].word, text, size); };
    return slots_.find(hashOf(text, size), same) - 1; // kNone for 0
}

std::optional<std::u16string> WordDictionary::value(std::u16string_view word) const {
    const std::size_t index = find(word);
    if (index == kNone) {
        return std::nullopt;
    }
    const Entry found = entry(index);
    return std::u16string(found.frequency).append(u"\t").append(found.partOfSpeech);
}

/// Slots for so many words; what is there is entered anew when they become more.
void WordDictionary::makeRoom(std::size_t words) {
    if (slots_.hasRoomFor(words)) {
        return;
    }
    slots_.reset(std::max(words, places_.size() * 2));
    for (std::size_t index = 0; index < places_.size(); ++index) {
        const std::u16string_view word = fieldAt(places_[index].word);
        slots_.insert(hashOf(word, word.size()), index + 1, [](std::size_t) { return false; });
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
    // A line of its own, also behind a text that did not end in a line end.
    const std::size_t begin = text_.size() + 1;
    const std::size_t behindFrequency = begin + word.size() + 1 + frequency.size();
    if (behindFrequency + partOfSpeech.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("the dictionary is full: its texts take 4 G characters");
    }
    text_.append(u"\n").append(word).append(u"\t").append(frequency).append(u"\t").append(partOfSpeech);
    makeRoom(places_.size() + 1);
    return insert({static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(behindFrequency + 1)}, word.size(),
                  hashOf(word, word.size()));
}

} // namespace kelb::segment
