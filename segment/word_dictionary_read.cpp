#include "segment/word_dictionary.h"

#include <algorithm>
#include <bit>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kelb::segment {

namespace {

constexpr bool isMark(char16_t unit) {
    return unit == u'\t' || unit == u'\n';
}

/// Walks the TABs and LFs of a text, sixteen units at a time: they are what a dictionary's lines are made of.
class Marks {
public:
    explicit Marks(std::u16string_view text) : text_(text) {}

    /// Position of the next one; text.size() behind the last.
    std::size_t next() noexcept {
        while (found_ == 0) {
            from_ = to_;
            if (from_ == text_.size()) {
                return from_;
            }
            look();
        }
        const auto bit = static_cast<std::size_t>(std::countr_zero(found_));
        found_ &= found_ - 1;
        return from_ + bit;
    }

private:
    void look() noexcept {
#ifdef __SSE2__
        if (text_.size() - from_ >= 16) {
            const auto marksAt = [this](std::size_t at) {
                const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text_.data() + at));
                return _mm_or_si128(_mm_cmpeq_epi16(units, _mm_set1_epi16(u'\t')),
                                    _mm_cmpeq_epi16(units, _mm_set1_epi16(u'\n')));
            };
            const __m128i both = _mm_packs_epi16(marksAt(from_), marksAt(from_ + 8));
            found_ = static_cast<unsigned>(_mm_movemask_epi8(both));
            to_ = from_ + 16;
            return;
        }
#endif
        found_ = isMark(text_[from_]) ? 1U : 0U;
        to_ = from_ + 1;
    }

    std::u16string_view text_;
    std::size_t from_ = 0; ///< what found_ counts from
    std::size_t to_ = 0;   ///< what was not looked at yet
    unsigned found_ = 0;   ///< one bit a mark that next() has not given
};

} // namespace

/// Fills a dictionary from the text that it already owns.
class WordDictionary::Reader {
public:
    explicit Reader(WordDictionary& dictionary) : into_(dictionary) {}

    void run() {
        const std::u16string_view text = into_.text_;
        const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), u'\n')) + 1;
        into_.slices_.reserve(lines);
        into_.growFor(lines);
        Marks marks(text);
        for (;;) {
            const std::size_t at = marks.next();
            if (at < text.size() && text[at] == u'\t') {
                if (tabs_ < tab_.size()) {
                    tab_[tabs_] = static_cast<std::uint32_t>(at);
                }
                ++tabs_;
                continue;
            }
            ++line_;
            takeLine(static_cast<std::uint32_t>(at));
            if (at == text.size()) {
                return;
            }
            begin_ = static_cast<std::uint32_t>(at) + 1;
            tabs_ = 0;
        }
    }

private:
    void takeLine(std::uint32_t end) {
        const std::uint32_t wordSize = (tabs_ == 0 ? end : tab_[0]) - begin_;
        if (wordSize == 0) {
            return;
        }
        if (wordSize > kLongestWord) {
            ++into_.passedOver_.longWords;
            return;
        }
        if (tabs_ < 2) {
            throw DictionaryError("line " + std::to_string(line_) +
                                  " has a word, but fewer than three fields: write the "
                                  "word, its frequency and its part of speech with a TAB between them");
        }
        const std::uint32_t begin = tab_[1] + 1;
        const std::uint32_t size = (tabs_ == 2 ? end : tab_[2]) - begin;
        if (size != 0) {
            partOfSpeech_ = begin;
            partOfSpeechSize_ = size;
        }
        if (!into_.insert({begin_, wordSize, tab_[1] - tab_[0] - 1, partOfSpeech_, partOfSpeechSize_})) {
            ++into_.passedOver_.duplicates;
        }
    }

    WordDictionary& into_;
    std::size_t line_ = 0;
    std::uint32_t begin_ = 0;                               ///< of the line
    std::array<std::uint32_t, 3> tab_{};                    ///< its first three
    std::size_t tabs_ = 0;                                  ///< all of them
    std::uint32_t partOfSpeech_ = 0, partOfSpeechSize_ = 0; ///< the nearest one before
};

WordDictionary WordDictionary::read(std::u16string text) {
    if (text.size() >= std::numeric_limits<std::uint32_t>::max()) {
        throw DictionaryError("the dictionary is too large: at most 4 G characters");
    }
    WordDictionary dictionary;
    dictionary.text_ = std::move(text);
    Reader(dictionary).run();
    return dictionary;
}

} // namespace kelb::segment
