#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelb::segment {

/// The hash table of a dictionary: finds the entry, counted from 1, of a word by its hash. Asks `same(entry)` whether
/// an entry is the word in question; hardly ever in vain, as a slot holds a part of the hash beside the entry. A slot
/// is four bytes, so that the table of a large dictionary stays in the cache.
class WordSlots {
public:
    /// The word's entry, 0 when it is not there.
    template <typename Same>
    std::size_t find(std::uint64_t hash, Same same) const {
        return slots_.empty() ? 0 : slots_[slotOf(hash, same)] & mask_;
    }
    /// False when the word is there. Requires hasRoomFor(entry).
    template <typename Same>
    bool insert(std::uint64_t hash, std::size_t entry, Same same) {
        const std::size_t at = slotOf(hash, same);
        if (slots_[at] != 0) {
            return false;
        }
        slots_[at] = tagOf(hash) | static_cast<Slot>(entry);
        return true;
    }
    /// Sends for the slot that a word will need.
    void expect(std::uint64_t hash) const { __builtin_prefetch(&slots_[hash & mask_]); }

    bool hasRoomFor(std::size_t words) const noexcept { return words + words / 3 < slots_.size(); }
    /// Forgets all entries; hasRoomFor(words) holds afterwards.
    void reset(std::size_t words) {
        constexpr std::size_t kFewest = 16;
        slots_.assign(std::bit_ceil(std::max(kFewest, words + words / 3 + 1)), 0);
        mask_ = slots_.size() - 1;
    }

private:
    /// The entry in as many low bits as the number of slots has, above them the same bits of the hash's upper half; 0
    /// is free.
    using Slot = std::uint32_t;

    Slot tagOf(std::uint64_t hash) const noexcept { return static_cast<Slot>(hash >> 32U) & ~static_cast<Slot>(mask_); }
    /// The word's slot, or the free one where it belongs.
    template <typename Same>
    std::size_t slotOf(std::uint64_t hash, Same same) const {
        const Slot tag = tagOf(hash);
        const Slot* const slots = slots_.data();
        const std::size_t mask = mask_;
        std::size_t at = hash & mask;
        for (; slots[at] != 0; at = (at + 1) & mask) {
            const std::size_t entry = slots[at] & mask;
            if ((slots[at] ^ entry) == tag && same(entry)) {
                break;
            }
        }
        return at;
    }

    std::vector<Slot> slots_; ///< a power of two, at most three quarters full
    std::size_t mask_ = 0;    ///< their number less one
};

} // namespace kelb::segment
