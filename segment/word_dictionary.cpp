#include "segment/word_dictionary.h"

#include "platform/code_page.h"
#include "platform/utf8.h"
#include "segment/word_hash.h"

#include <algorithm>
#include <limits>

namespace kelb::segment {

namespace {

/// No value for a text that would not come back from its bytes.
std::optional<std::string> exactBytes(std::u16string_view text) {
    std::string bytes = platform::encode936(text);
    return platform::decode936(bytes) == text ? std::optional(std::move(bytes)) : std::nullopt;
}

std::string holdableBytes(std::u16string_view text, const char* what) {
    auto bytes = exactBytes(text);
    if (!bytes || text.find_first_of(u"\t\n") != text.npos) {
        throw std::invalid_argument(std::string("a dictionary's ") + what + " may not hold a TAB, a line feed or a " +
                                    "character that code page 936 lacks: " + platform::toUtf8(text));
    }
    return *std::move(bytes);
}

} // namespace

std::string_view WordDictionary::fieldAt(std::size_t begin) const noexcept {
    const std::string_view rest = std::string_view(bytes_).substr(begin);
    const auto end = std::ranges::find_if(rest, [](char byte) { return byte == '\t' || byte == '\n'; });
    return {rest.begin(), end};
}

WordDictionary::Bytes WordDictionary::bytes(std::size_t index) const noexcept {
    const Place& place = places_[index];
    const std::string_view word = fieldAt(place.word);
    return {word, fieldAt(place.word + word.size() + 1), fieldAt(place.partOfSpeech)};
}

WordDictionary::Entry WordDictionary::entry(std::size_t index) const {
    const Bytes found = bytes(index);
    return {platform::decode936(found.word), platform::decode936(found.frequency),
            platform::decode936(found.partOfSpeech)};
}

std::string WordDictionary::lines() const {
    std::string lines;
    lines.reserve(bytes_.size());
    for (std::size_t index = 0; index < size(); ++index) {
        const Bytes found = bytes(index);
        lines.append(index == 0 ? "" : "\n").append(found.word).append("\t");
        lines.append(found.frequency).append("\t").append(found.partOfSpeech);
    }
    return lines;
}

std::size_t WordDictionary::find(std::u16string_view word) const {
    const auto bytes = word.empty() || word.size() > kLongestWord ? std::nullopt : exactBytes(word);
    return bytes ? findBytes(*bytes) : kNone;
}

std::size_t WordDictionary::findBytes(std::string_view word) const {
    const auto same = [&](std::size_t entry) { return isWordAt(places_[entry - 1].word, word); };
    return slots_.find(hashOf(word, word.size()), same) - 1; // kNone for 0
}

std::optional<std::u16string> WordDictionary::value(std::u16string_view word) const {
    const std::size_t index = find(word);
    if (index == kNone) {
        return std::nullopt;
    }
    const Entry found = entry(index);
    return found.frequency + u'\t' + found.partOfSpeech;
}

/// Slots for so many words; what is there is entered anew when they become more.
void WordDictionary::makeRoom(std::size_t words) {
    if (slots_.hasRoomFor(words)) {
        return;
    }
    slots_.reset(std::max(words, places_.size() * 2));
    for (std::size_t index = 0; index < places_.size(); ++index) {
        const std::string_view word = fieldAt(places_[index].word);
        slots_.insert(hashOf(word, word.size()), index + 1, [](std::size_t) { return false; });
    }
}

bool WordDictionary::add(std::u16string_view word, std::u16string_view frequency, std::u16string_view partOfSpeech) {
    if (word.empty() || word.size() > kLongestWord) {
        throw std::invalid_argument("a dictionary's words have 1 to 7 characters: " + platform::toUtf8(word));
    }
    const std::string wordBytes = holdableBytes(word, "word");
    const std::string frequencyBytes = holdableBytes(frequency, "frequency");
    const std::string partBytes = holdableBytes(partOfSpeech, "part of speech");
    if (findBytes(wordBytes) != kNone) {
        return false;
    }
    // A line of its own, also behind a file that did not end in a line end.
    const std::size_t begin = bytes_.size() + 1;
    const std::size_t partBegin = begin + wordBytes.size() + 1 + frequencyBytes.size() + 1;
    if (partBegin + partBytes.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("the dictionary is full: its file would take 4 GB");
    }
    bytes_.append("\n").append(wordBytes).append("\t").append(frequencyBytes).append("\t").append(partBytes);
    makeRoom(places_.size() + 1);
    return insert({static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(partBegin)}, wordBytes.size(),
                  hashOf(wordBytes, wordBytes.size()));
}

} // namespace kelb::segment
