#pragma once

#include "jet/pager.h"

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <vector>

namespace kelb::jet {

class PageAllocator;

/// A set of page numbers stored as a row of a map page (a data page with owner 0). Remembers nothing: the pages are the
/// truth, so it is cheap to make and safe after a rollback.
///
/// | inline | | by reference | |
/// |---|---|---|---|
/// | 0 u8 | 0 | 0 u8 | 1 |
/// | 1 u32 | first page of the window, a multiple of 8 | 1 u32 each | bitmap pages, 0 = none |
/// | 5 … | bits, lowest of the first byte first | | |
///
/// A new map has 69 bytes (512 pages inline); other writers make longer ones, so the window follows from the length.
/// Bitmap page: 05 01 00 00, then bits; bit i of bitmap page k is page k × bits per page + i.
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
    /// A member that the file has no page for: the file was cut off. Bits on a bitmap page of which no page is in the
    /// file are not asked, since those of real files may hold anything.
    std::optional<PageNumber> pastEnd() const;

    /// Both change nothing when the bit already stands. Require an operation. `allocator` gives bitmap pages.
    void add(PageNumber page, PageAllocator& allocator);
    void remove(PageNumber page);
    /// The bitmap pages of a map by reference; for checking who owns which page.
    std::vector<PageNumber> bitmapPages() const;

    /// Row bytes of a new, empty map.
    static constexpr std::size_t kNewMapBytes = 69;

private:
    bool addInline(PageNumber page);
    void addByReference(PageNumber page, PageAllocator& allocator);

    Pager& pager_;
    RowId row_;
};

/// Where every Jet 4 file has its map of free pages: page 1, row 0.
inline constexpr RowId kGlobalMap{PageNumber{1}, 0};

/// Gives out and takes back pages by the global free map, in which a bit says *free* and pages past the end of the file
/// are free. By reference, a missing bitmap page says that no page of its range is known to be free.
class PageAllocator {
public:
    explicit PageAllocator(Pager& pager) : pager_(pager) {}
    /// A zeroed page: the lowest free one inside the file, else a new one at the end. Amortised constant time.
    /// Throws Error (FileFull).
    PageEdit allocate();
    /// The page may be given out again. Take it out of its owner's maps first.
    void release(PageNumber page);
    bool isFree(PageNumber page) const;

    /// A page of a free-space map on which a row of `length` bytes gets a slot: the one found last time, else the next
    /// few of the map from its end downwards, taking turns, so that a long map costs no more than a short one. Pages no
    /// longer worth trying leave the map. Requires an operation. CorruptFile when a member is not a page of `owner`.
    std::optional<PageNumber> pageWithRoom(RowId freeMap, std::uint32_t owner, std::size_t length);
    /// A fresh data page of `owner`, in both maps (`freeMap` may have page 0: none), to be tried first next time.
    PageEdit newDataPage(RowId ownedMap, RowId freeMap, std::uint32_t owner);
    /// The same with this page of the file, if it is free.
    bool newDataPageAt(PageNumber page, RowId ownedMap, RowId freeMap, std::uint32_t owner);

private:
    void makeDataPage(PageEdit& page, RowId ownedMap, RowId freeMap, std::uint32_t owner);
    void forgetAfterRollback();
    std::optional<PageNumber> nextFree(std::uint32_t from) const;
    void setFree(PageNumber page, bool free);
    void extendOver(PageNumber page);
    void turnIntoReference();
    PageNumber addBitmapPage(std::size_t word);

    struct Tried {
        PageNumber last = kNoPage;        ///< had room
        std::optional<PageNumber> cursor; ///< the next search goes on below
    };
    Pager& pager_;
    std::uint64_t epoch_ = 0;                        ///< of the pager; the rest is void when that has changed
    std::uint32_t searchFrom_ = 0;                   ///< no free page below
    std::unordered_map<std::uint32_t, Tried> tried_; ///< by packed address of a free-space map
};

/// Places rows of map pages for tables and indexes: `count` new empty maps on `near` while it is a map page with room,
/// else on new map pages. Requires an operation.
std::vector<RowId> createMaps(Pager& pager, PageAllocator& allocator, std::size_t count, PageNumber near);

} // namespace kelb::jet
