#include "ado/hash_index.h"

#include "platform/letter_case.h"

#include <algorithm>
#include <bit>

namespace kelb::ado {

namespace {

constexpr std::size_t kMinBuckets = 64;

/// FNV-1a over the upper-cased units, its halves folded together.
std::uint32_t hashOf(std::u16string_view text) noexcept {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char16_t unit : text) {
        hash = (hash ^ platform::upper(unit)) * 0x100000001B3U;
    }
    return static_cast<std::uint32_t>(hash ^ hash >> 32U);
}

} // namespace

HashIndex::HashIndex(std::size_t rows) : buckets_(std::bit_ceil(std::max(rows, kMinBuckets))) {
    entries_.reserve(rows);
}

void HashIndex::chain(std::uint32_t entry) noexcept {
    std::uint32_t& newest = buckets_[entries_[entry].hash & (buckets_.size() - 1)];
    entries_[entry].next = newest;
    newest = entry + 1;
}

void HashIndex::grow() {
    buckets_.assign(buckets_.size() * 2, 0);
    for (std::uint32_t entry = 0; entry < entries_.size(); ++entry) {
        chain(entry);
    }
}

void HashIndex::add(std::u16string_view text, jet::RowId row) {
    if (entries_.size() == buckets_.size()) {
        grow();
    }
    entries_.push_back({hashOf(text), row.packed(), 0});
    chain(static_cast<std::uint32_t>(entries_.size() - 1));
}

bool HashIndex::find(std::u16string_view text, std::size_t limit, std::vector<jet::RowId>& rows) const {
    const std::uint32_t hash = hashOf(text);
    std::size_t found = 0;
    for (std::uint32_t at = buckets_[hash & (buckets_.size() - 1)]; at != 0; at = entries_[at - 1].next) {
        const Entry& entry = entries_[at - 1];
        if (entry.hash == hash) {
            if (++found > limit) {
                return false;
            }
            rows.push_back(jet::RowId::unpack(entry.row));
        }
    }
    return true;
}

} // namespace kelb::ado
