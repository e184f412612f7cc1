#include "segment/word_dictionary.h"

#include "platform/code_page.h"
#include "segment/word_hash.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <span>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kelb::segment {

namespace {

/// Where the fields of a line end. A field that the line lacks ends where the line does.
struct Line {
    std::size_t begin, end;
    std::size_t wordEnd, frequencyEnd, partOfSpeechEnd;

    bool hasThreeFields() const noexcept { return frequencyEnd != end; }
};

Line scanLine(std::u16string_view text, std::size_t begin) noexcept {
    const std::size_t end = std::min(text.find(u'\n', begin), text.size());
    const auto fieldEnd = [text, end](std::size_t from) {
        return from > end ? end : std::min(text.substr(0, end).find(u'\t', from), end);
    };
    Line line{begin, end, fieldEnd(begin), end, end};
    line.frequencyEnd = fieldEnd(line.wordEnd + 1);
    line.partOfSpeechEnd = fieldEnd(line.frequencyEnd + 1);
    return line;
}

#ifdef __SSE2__
constexpr std::size_t kGlance = 32; ///< units; nearly every line is shorter

/// One bit for each of kGlance units.
struct Glance {
    std::uint32_t tabs, ends;
};

Glance glanceAt(const char16_t* units) noexcept {
    // Narrowed to bytes, TAB and LF stay what they are and nothing else becomes one of them.
    const auto sixteen = [](const char16_t* from) {
        const auto eight = [](const char16_t* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); };
        return _mm_packus_epi16(eight(from), eight(from + 8));
    };
    const __m128i front = sixteen(units);
    const __m128i back = sixteen(units + 16);
    const auto bits = [front, back](char wanted) {
        const __m128i all = _mm_set1_epi8(wanted);
        const auto low = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(front, all)));
        return low | static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(back, all))) << 16U;
    };
    return {bits('\t'), bits('\n')};
}
#endif

/// Takes in most lines at a glance, so that the time does not hang on guessing where each of their fields ends.
Line lineAt(std::u16string_view text, std::size_t begin) noexcept {
#ifdef __SSE2__
    if (text.size() - begin >= kGlance) {
        if (const auto [allTabs, ends] = glanceAt(text.data() + begin); ends != 0) {
            const std::uint32_t end = ends & (0 - ends);
            const auto takeMark = [begin](std::uint32_t marks) {
                return begin + static_cast<std::size_t>(std::countr_zero(marks));
            };
            const std::uint32_t first = allTabs & (end - 1);
            const std::uint32_t second = first & (first - 1);
            const std::uint32_t third = second & (second - 1);
            return {begin, takeMark(end), takeMark(first | end), takeMark(second | end), takeMark(third | end)};
        }
    }
#endif
    return scanLine(text, begin);
}

} // namespace

/// Fills a dictionary. Bytes are decoded some lines at a time and those are read while they are at hand.
class WordDictionary::Reader {
public:
    Reader(WordDictionary& dictionary, std::string_view bytes) : into_(dictionary), bytes_(bytes) {}

    void run() {
        const std::size_t words = likelyWords();
        into_.places_.reserve(words);
        into_.makeRoom(words);
        into_.text_.reserve(bytes_.size());
        std::size_t number = 0;
        std::size_t begin = 0;
        while (!bytes_.empty()) {
            platform::decode936(nextLines(), into_.text_);
            text_ = into_.text_;
            while (begin < text_.size()) {
                const Line line = lineAt(text_, begin);
                take(line, ++number);
                begin = line.end + 1;
            }
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
        const std::string_view front = bytes_.substr(0, kFront);
        const auto lines = static_cast<std::size_t>(std::count(front.begin(), front.end(), '\n')) + 1;
        return lines * (bytes_.size() / kFront + 1) / 10 * 11 + 1;
    }

    /// Whole lines, about a cache full; no character holds the byte of a line end.
    std::string_view nextLines() {
        constexpr std::size_t kAtOnce = 65536;
        std::size_t end = bytes_.size() <= kAtOnce ? bytes_.npos : bytes_.find('\n', kAtOnce);
        end = end == bytes_.npos ? bytes_.size() : end + 1;
        const std::string_view lines = bytes_.substr(0, end);
        bytes_.remove_prefix(end);
        return lines;
    }

    void take(const Line& line, std::size_t number) {
        const std::size_t size = line.wordEnd - line.begin;
        if (size == 0) {
            return;
        }
        if (size > kLongestWord) {
            ++into_.passedOver_.longWords;
            return;
        }
        if (!line.hasThreeFields()) {
            refuse(number);
        }
        const std::size_t field = line.frequencyEnd + 1;
        const bool hasOne = field != line.partOfSpeechEnd;
        partOfSpeech_ = hasOne || partOfSpeech_ == kNone ? field : partOfSpeech_;
        const std::uint64_t hash = hashOf(text_.substr(line.begin), size);
        into_.slots_.expect(hash);
        waiting_[waitingCount_++] = {
            hash, {static_cast<std::uint32_t>(line.begin), static_cast<std::uint32_t>(partOfSpeech_)}, size};
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
    std::string_view bytes_;           ///< what was not decoded yet
    std::u16string_view text_;         ///< what was
    std::size_t partOfSpeech_ = kNone; ///< where the nearest one before begins; an empty one at first
    std::array<Waiting, kMostWaiting> waiting_{};
    std::size_t waitingCount_ = 0;
};

WordDictionary WordDictionary::read(std::string_view bytes) {
    if (bytes.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw DictionaryError("the dictionary is too large: at most 4 GB");
    }
    WordDictionary dictionary;
    Reader(dictionary, bytes).run();
    return dictionary;
}

} // namespace kelb::segment
