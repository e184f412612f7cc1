#include "segment/word_dictionary.h"

#include "segment/word_hash.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <span>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kelb::segment {

namespace {

/// Where the fields of a line end. A field that the line lacks ends where the line does. No character of the code page
/// holds the byte of a TAB or LF.
struct Line {
    std::size_t begin, end;
    std::size_t wordEnd, frequencyEnd, partOfSpeechEnd;

    bool hasThreeFields() const noexcept { return frequencyEnd != end; }
};

Line scanLine(std::string_view text, std::size_t begin) noexcept {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const auto fieldEnd = [text, end](std::size_t from) {
        return from > end ? end : std::min(text.substr(0, end).find('\t', from), end);
    };
    Line line{begin, end, fieldEnd(begin), end, end};
    line.frequencyEnd = fieldEnd(line.wordEnd + 1);
    line.partOfSpeechEnd = fieldEnd(line.frequencyEnd + 1);
    return line;
}

#ifdef __SSE2__
constexpr std::size_t kGlance = 32; ///< bytes; nearly every line is shorter

/// One bit for each of kGlance bytes.
struct Glance {
    std::uint32_t tabs, ends;
};

Glance glanceAt(const char* bytes) noexcept {
    const auto sixteen = [](const char* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); };
    const __m128i front = sixteen(bytes);
    const __m128i back = sixteen(bytes + 16);
    const auto bits = [front, back](char wanted) {
        const __m128i all = _mm_set1_epi8(wanted);
        const auto low = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(front, all)));
        return low | static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(back, all))) << 16U;
    };
    return {bits('\t'), bits('\n')};
}
#endif

/// Takes in most lines at a glance, so that the time does not hang on guessing where each of their fields ends.
Line lineAt(std::string_view text, std::size_t begin) noexcept {
#ifdef __SSE2__
    if (text.size() - begin >= kGlance) {
        if (const auto [tabs, ends] = glanceAt(text.data() + begin); ends != 0) {
            const std::uint32_t end = ends & (0 - ends);
            const std::uint32_t first = tabs & (end - 1);
            const std::uint32_t second = first & (first - 1);
            const std::uint32_t third = second & (second - 1);
            const auto place = [begin](std::uint32_t marks) {
                return begin + static_cast<std::size_t>(std::countr_zero(marks));
            };
            return {begin, place(end), place(first | end), place(second | end), place(third | end)};
        }
    }
#endif
    return scanLine(text, begin);
}

/// Units that the bytes decode to, by the rule of platform::decode936: a lead byte takes the byte behind it along
/// unless that is below 0x40.
std::size_t unitsOf(std::string_view bytes) noexcept {
    const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    std::size_t units = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i, ++units) {
        if (at(i) > 0x80 && at(i) < 0xFF && i + 1 < bytes.size() && at(i + 1) >= 0x40) {
            ++i;
        }
    }
    return units;
}

/// Whether the word has more units than a dictionary holds.
bool isTooLong(std::string_view word) noexcept {
    return word.size() > kLongestWord && (word.size() > 2 * kLongestWord || unitsOf(word) > kLongestWord);
}

} // namespace

/// Fills a dictionary from the bytes that it owns.
class WordDictionary::Reader {
public:
    explicit Reader(WordDictionary& dictionary) : into_(dictionary), text_(dictionary.bytes_) {}

    void run() {
        const std::size_t words = likelyWords();
        into_.places_.reserve(words);
        into_.makeRoom(words);
        std::size_t number = 0;
        for (std::size_t begin = 0; begin < text_.size();) {
            const Line line = lineAt(text_, begin);
            take(line, ++number);
            begin = line.end + 1;
        }
        enterWaiting();
    }

private:
    /// A word whose slot is on its way from memory: many are waited for at once.
    struct Waiting {
        std::uint64_t hash;
        Place place;
        std::size_t size;
    };
    static constexpr std::size_t kMostWaiting = 32;

    /// By the lines of the front, and a tenth more.
    std::size_t likelyWords() const {
        constexpr std::size_t kFront = 16384;
        const std::string_view front = text_.substr(0, kFront);
        const auto lines = static_cast<std::size_t>(std::count(front.begin(), front.end(), '\n')) + 1;
        return lines * (text_.size() / kFront + 1) / 10 * 11 + 1;
    }

    void take(const Line& line, std::size_t number) {
        const std::string_view word = text_.substr(line.begin, line.wordEnd - line.begin);
        if (word.empty()) {
            return;
        }
        if (isTooLong(word)) {
            ++into_.passedOver_.longWords;
            return;
        }
        if (!line.hasThreeFields()) {
            refuse(number);
        }
        const std::size_t field = line.frequencyEnd + 1;
        const bool hasOne = field != line.partOfSpeechEnd;
        partOfSpeech_ = hasOne || partOfSpeech_ == kNone ? field : partOfSpeech_;
        const std::uint64_t hash = hashOf(text_.substr(line.begin), word.size());
        into_.slots_.expect(hash);
        waiting_[waitingCount_++] = {
            hash, {static_cast<std::uint32_t>(line.begin), static_cast<std::uint32_t>(partOfSpeech_)}, word.size()};
        if (waitingCount_ == kMostWaiting) {
            enterWaiting();
        }
    }

    [[noreturn]] static void refuse(std::size_t line) {
        throw DictionaryError("line " + std::to_string(line) +
                              " has a word, but fewer than three fields: write the word, its frequency and its part of "
                              "speech with a TAB between them");
    }

    void enterWaiting() {
        into_.makeRoom(into_.places_.size() + waitingCount_);
        for (const Waiting& word : std::span(waiting_).first(waitingCount_)) {
            if (!into_.insert(word.place, word.size, word.hash)) {
                ++into_.passedOver_.duplicates;
            }
        }
        waitingCount_ = 0;
    }

    WordDictionary& into_;
    std::string_view text_;
    std::size_t partOfSpeech_ = kNone; ///< where the nearest one before begins; an empty one at first
    std::array<Waiting, kMostWaiting> waiting_{};
    std::size_t waitingCount_ = 0;
};

WordDictionary WordDictionary::read(std::string bytes) {
    if (bytes.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw DictionaryError("the dictionary is too large: at most 4 GB");
    }
    WordDictionary dictionary;
    dictionary.bytes_ = std::move(bytes);
    Reader(dictionary).run();
    return dictionary;
}

} // namespace kelb::segment
