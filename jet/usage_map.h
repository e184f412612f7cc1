#pragma once

#include "jet/pager.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace kelb::jet {

class PageAllocator;

/// A set of page numbers stored as a row of a map page: inline (a window of bits) or by reference (bitmap pages).
/// Remembers nothing: the pages are the truth, so it is cheap to make and safe after a rollback.
class UsageMap {
public:
    /// `row`: where the map lies. Throws CorruptFile when used and nothing sensible is there.
    UsageMap(Pager& pager, RowId row) : pager_(pager), row_(row) {}

    bool contains(PageNumber page) const;
    /// Smallest member > `after` (kNoPage: the first). Members not below the page count are passed over.
    std::optional<PageNumber> next(PageNumber after) const;
    /// Largest member < `before` (no value given: the last of all).
    std::optional<PageNumber> previous(std::optional<PageNumber> before = std::nullopt) const;
    std::size_t count() const;

    /// Both change nothing when the bit already stands. Require an operation. `allocator` gives bitmap pages.
    void add(PageNumber page, PageAllocator& allocator);
    void remove(PageNumber page);

    /// Row bytes of a new, empty map.
    static constexpr std::size_t kNewMapBytes = 69;

private:
    Pager& pager_;
    RowId row_;
};

/// Gives out and takes back pages by the global free map (page 1, slot 0).
class PageAllocator {
public:
    explicit PageAllocator(Pager& pager) : pager_(pager) {}
    /// A zeroed page: the lowest free one inside the file, else a new one at the end. Amortised constant time.
    /// Throws Error (FileFull).
    PageEdit allocate();
    /// The page may be given out again. Take it out of its owner's maps first.
    void release(PageNumber page);
    bool isFree(PageNumber page) const;

private:
    Pager& pager_;
    std::uint32_t searchFrom_ = 0; ///< no free page below; void when epoch_ is not the pager's
    std::uint64_t epoch_ = 0;
};

/// Places rows of map pages for tables and indexes: `count` new empty maps on `near` while it has room, else on new
/// map pages. Requires an operation.
std::vector<RowId> createMaps(Pager& pager, PageAllocator& allocator, std::size_t count, PageNumber near);

} // namespace kelb::jet
