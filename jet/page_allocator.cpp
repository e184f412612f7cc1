#include "jet/byte_order.h"
#include "jet/map_row.h"
#include "jet/usage_map.h"

#include <algorithm>
#include <cassert>
#include <vector>

namespace kelb::jet {

namespace {

/// An inline global map grows by this many bytes (32 pages) at a time, as the real engine does it.
constexpr std::size_t kGrowth = 4;
constexpr std::size_t kWorthTrying = 64; ///< free bytes under which a page leaves the free-space map
constexpr int kCandidates = 3;           ///< pages of a free-space map looked at for one row

} // namespace

/// First free page at or behind `from`, those past the end of the file included.
std::optional<PageNumber> PageAllocator::nextFree(std::uint32_t from) const {
    const std::uint32_t end = pager_.pageCount();
    const MapRow map(pager_, kGlobalMap);
    if (!map.byReference()) {
        // Another writer moves the window on: below it every page is taken, behind it every page is free.
        const std::uint32_t first = map.firstPage();
        const std::size_t skip = from > first ? from - first : 0;
        if (const auto bit = findBit(map.window(), skip))
            return PageNumber{first + static_cast<std::uint32_t>(*bit)};
        return PageNumber{first + static_cast<std::uint32_t>(std::max(skip, 8 * map.window().size()))};
    }
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    std::size_t start = from % perPage;
    for (std::size_t word = from / perPage; word * perPage < end; ++word, start = 0)
        if (const auto bitmap = map.bitmapPage(pager_, word))
            if (const auto bit = findBit(readBitmap(pager_, *bitmap).bits(), start))
                return PageNumber{static_cast<std::uint32_t>(word * perPage + *bit)};
    return std::nullopt;
}

bool PageAllocator::isFree(PageNumber page) const {
    return nextFree(raw(page)) == page;
}

void PageAllocator::forgetAfterRollback() {
    if (epoch_ == pager_.epoch())
        return;
    epoch_ = pager_.epoch();
    searchFrom_ = 0;
    tried_.clear();
}

PageEdit PageAllocator::allocate() {
    forgetAfterRollback();
    const std::optional<PageNumber> free = nextFree(searchFrom_);
    PageEdit page = free && raw(*free) < pager_.pageCount() ? pager_.editZeroed(*free) : pager_.append();
    setFree(page.number(), false);
    searchFrom_ = raw(page.number()) + 1;
    return page;
}

void PageAllocator::release(PageNumber page) {
    assert(raw(page) > 1);
    setFree(page, true);
    searchFrom_ = std::min(searchFrom_, raw(page));
}

void PageAllocator::setFree(PageNumber page, bool free) {
    if (!MapRow(pager_, kGlobalMap).byReference())
        extendOver(page);
    const MapRow map(pager_, kGlobalMap);
    if (!map.byReference()) {
        setBit(MapRowEdit(pager_, kGlobalMap).bytes().subspan(kWindowOffset), raw(page) - map.firstPage(), free);
        return;
    }
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    const std::size_t word = raw(page) / perPage;
    const std::optional<PageNumber> known = map.bitmapPage(pager_, word);
    setBit(editBitmap(pager_, known ? *known : addBitmapPage(word)).bits(), raw(page) % perPage, free);
}

std::optional<PageNumber> PageAllocator::pageWithRoom(RowId freeMap, std::uint32_t owner, std::size_t length) {
    forgetAfterRollback();
    Tried& tried = tried_[freeMap.packed()];
    UsageMap map(pager_, freeMap);
    const auto hasRoom = [&](PageNumber number) {
        const PageRef page = pager_.read(number);
        const DataPageView view(pager_, page);
        if (view.owner() != owner)
            pager_.corrupt(number, 4, "a free-space map names this page, but it belongs to another table");
        if (view.freeBytes() < kWorthTrying || view.slotCount() >= kMaxSlots)
            map.remove(number);
        return view.freeBytes() >= length + 2 && view.slotCount() < kMaxSlots;
    };
    if (tried.last != kNoPage && map.contains(tried.last) && hasRoom(tried.last))
        return tried.last;
    for (int i = 0; i < kCandidates; ++i) {
        const bool fromTheEnd = !tried.cursor;
        tried.cursor = map.previous(tried.cursor);
        if (tried.cursor && *tried.cursor != tried.last && hasRoom(*tried.cursor)) {
            tried.last = *tried.cursor;
            return tried.last;
        }
        if (!tried.cursor && fromTheEnd)
            break; // empty
    }
    return std::nullopt;
}

PageEdit PageAllocator::newDataPage(RowId ownedMap, RowId freeMap, std::uint32_t owner) {
    PageEdit page = allocate();
    makeDataPage(page, ownedMap, freeMap, owner);
    return page;
}

bool PageAllocator::newDataPageAt(PageNumber number, RowId ownedMap, RowId freeMap, std::uint32_t owner) {
    forgetAfterRollback();
    if (raw(number) <= 1 || raw(number) >= pager_.pageCount() || !isFree(number))
        return false;
    PageEdit page = pager_.editZeroed(number);
    setFree(number, false);
    makeDataPage(page, ownedMap, freeMap, owner);
    return true;
}

void PageAllocator::makeDataPage(PageEdit& page, RowId ownedMap, RowId freeMap, std::uint32_t owner) {
    DataPageEditor::format(page, owner);
    UsageMap(pager_, ownedMap).add(page.number(), *this);
    if (freeMap.page != kNoPage) {
        UsageMap(pager_, freeMap).add(page.number(), *this);
        tried_[freeMap.packed()].last = page.number();
    }
}

/// Makes the inline map long enough for the page, or turns it into one by reference when page 1 has no room.
void PageAllocator::extendOver(PageNumber page) {
    const MapRow map(pager_, kGlobalMap);
    if (map.covers(raw(page)))
        return;
    const std::uint32_t oldFirst = map.firstPage();
    const std::uint32_t first = std::min(oldFirst, raw(page) & ~std::uint32_t{31});
    const std::size_t lead = (oldFirst - first) / 8;
    std::size_t length = kWindowOffset + lead + map.window().size();
    const std::size_t needed = kWindowOffset + (raw(page) - first) / 8 + 1;
    if (needed > length)
        length += (needed - length + kGrowth - 1) / kGrowth * kGrowth;

    std::vector<std::byte> row(length, std::byte{0xFF});
    store8(row.data(), 0);
    store32(&row[1], first);
    std::fill_n(row.begin() + kWindowOffset, lead, std::byte{0});
    std::copy(map.window().begin(), map.window().end(),
              row.begin() + static_cast<std::ptrdiff_t>(kWindowOffset + lead));
    if (row.size() > kPageSize ||
        !DataPageEditor(pager_, pager_.edit(kGlobalMap.page)).replace(kGlobalMap.slot, SlotKind::Row, row))
        turnIntoReference();
}

void PageAllocator::turnIntoReference() {
    std::vector<std::byte> free; // bit by page, from page 0 on
    {
        const MapRow map(pager_, kGlobalMap);
        free.resize(map.firstPage() / 8);
        free.insert(free.end(), map.window().begin(), map.window().end());
    }
    std::vector<std::byte> row(UsageMap::kNewMapBytes);
    store8(row.data(), 1);
    if (!DataPageEditor(pager_, pager_.edit(kGlobalMap.page)).replace(kGlobalMap.slot, SlotKind::Row, row))
        pager_.corrupt(kGlobalMap.page, 0, "no room for the map of free pages");
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    const std::uint32_t known = std::min(pager_.pageCount(), static_cast<std::uint32_t>(8 * free.size()));
    for (std::size_t word = 0; word * perPage < pager_.pageCount(); ++word) {
        const BitmapEdit bitmap = editBitmap(pager_, addBitmapPage(word));
        for (auto page = findBit(free, word * perPage);
             page && *page < std::min<std::size_t>(known, (word + 1) * perPage); page = findBit(free, *page + 1))
            setBit(bitmap.bits(), *page % perPage, true);
    }
}

/// Every page inside the file counts as taken, those past its end as free.
PageNumber PageAllocator::addBitmapPage(std::size_t word) {
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    const PageEdit page = pager_.append();
    store16(page.data(), kBitmapPageType);
    const BitmapEdit bitmap{page};
    const std::size_t first = word * perPage;
    for (std::size_t bit = pager_.pageCount() > first ? pager_.pageCount() - first : 0; bit < perPage; ++bit)
        setBit(bitmap.bits(), bit, true);
    {
        const MapRowEdit map(pager_, kGlobalMap);
        if (1 + 4 * (word + 1) > map.bytes().size())
            pager_.corrupt(kGlobalMap.page, 0, "the map of free pages is too short");
        store32(&map.bytes()[1 + 4 * word], raw(page.number()));
    }
    const std::size_t own = raw(page.number()) / perPage;
    if (own != word)
        if (const auto other = MapRow(pager_, kGlobalMap).bitmapPage(pager_, own))
            setBit(editBitmap(pager_, *other).bits(), raw(page.number()) % perPage, false);
    return page.number();
}

} // namespace kelb::jet
