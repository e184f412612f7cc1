#pragma once

#include "jet/types.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// From the texts of one column to the rows that hold them, without regard to case, for columns without an index of
/// their own. Gives candidates: every row that holds a text is found, but a found row may hold another text by now or
/// be gone, so that the caller reads it and compares. That makes upkeep cheap (nothing is ever removed) and keeps the
/// index right when changes are taken back.
///
/// Entries are chained by bucket, newest first: 12 bytes each, and 4 for the bucket. A text that half of the rows hold
/// costs no more to add than any other.
class HashIndex {
public:
    /// `rows`: how many entries to make room for.
    explicit HashIndex(std::size_t rows);

    void add(std::u16string_view text, jet::RowId row);
    /// One entry has become void: its row was deleted or holds another text.
    void noteVoid() noexcept { ++void_; }
    /// So many entries are void that building it anew pays.
    bool isWorn() const noexcept { return void_ > kMinVoid && void_ > entries_.size() / 2; }

    /// Appends the candidates for a text, in no order and perhaps one twice. Stops and gives false when there are more
    /// than `limit`.
    bool find(std::u16string_view text, std::size_t limit, std::vector<jet::RowId>& rows) const;

    std::size_t entryCount() const noexcept { return entries_.size(); }

private:
    static constexpr std::size_t kMinVoid = 1000;

    struct Entry {
        std::uint32_t hash; ///< 32 bits: a false candidate is rare, and is compared anyway
        std::uint32_t row;  ///< packed
        std::uint32_t next;
    };
    void grow();
    void chain(std::uint32_t entry) noexcept;

    std::vector<std::uint32_t> buckets_; ///< number of the newest entry + 1; 0 = none. A power of two
    std::vector<Entry> entries_;
    std::size_t void_ = 0;
};

} // namespace kelb::ado
