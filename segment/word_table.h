#pragma once

#include "segment/word_dictionary.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace kelb::segment {

/// Words of UTF-16 units with what a segmenter knows of them, in one hash table: a word of at most kLongestWord units
/// and its length fit into 16 bytes, so a look-up compares numbers and touches one place of memory.
class WordTable {
public:
    struct Known {
        std::int32_t cost;
        std::uint32_t partOfSpeech; ///< place in a list
    };

    explicit WordTable(std::size_t words) : slots_(std::bit_ceil(words + words / 2 + 1)), mask_(slots_.size() - 1) {}

    /// The word that is the first `size` units of the text; null when it is not there. Requires
    /// 0 < size <= kLongestWord and size <= text.size().
    const Known* find(std::u16string_view text, std::size_t size) const noexcept {
        const Key key = keyOf(text, size);
        const Slot& slot = slots_[slotOf(key)];
        return slot.key == key ? &slot.known : nullptr;
    }
    /// Requires that no more words come than the constructor was told.
    void insert(std::u16string_view word, Known known) {
        const Key key = keyOf(word, word.size());
        slots_[slotOf(key)] = {key, known};
    }

private:
    static_assert(kLongestWord == 7);
    /// The units, zeros behind them, and the length as the last one, so that no word's key is all zeros.
    using Key = std::array<std::uint64_t, 2>;
    struct Slot {
        Key key{};
        Known known{};
    };

    static Key keyOf(std::u16string_view text, std::size_t size) noexcept {
        std::array<char16_t, kLongestWord + 1> units{};
        std::copy_n(text.begin(), size, units.begin());
        units.back() = static_cast<char16_t>(size);
        Key key;
        std::memcpy(key.data(), units.data(), sizeof key);
        return key;
    }
    /// The key's slot, or the free one where it belongs.
    std::size_t slotOf(const Key& key) const noexcept {
        std::uint64_t hash = key[0] * 0xBF58476D1CE4E5B9U;
        hash = (hash ^ hash >> 32U ^ key[1]) * 0x94D049BB133111EBU;
        std::size_t at = (hash ^ hash >> 29U) & mask_;
        while (slots_[at].key != Key{} && slots_[at].key != key) {
            at = (at + 1) & mask_;
        }
        return at;
    }

    std::vector<Slot> slots_; ///< a power of two, at most two thirds full
    std::size_t mask_;
};

} // namespace kelb::segment
