#include "jet/usage_map.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"
#include "jet/map_row.h"

#include <algorithm>
#include <array>

namespace kelb::jet {

bool UsageMap::contains(PageNumber page) const {
    const MapRow map(pager_, row_);
    if (!map.byReference())
        return map.covers(raw(page)) && testBit(map.window(), raw(page) - map.firstPage());
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    const std::optional<PageNumber> bitmap = map.bitmapPage(pager_, raw(page) / perPage);
    return bitmap && testBit(readBitmap(pager_, *bitmap).bits(), raw(page) % perPage);
}

std::optional<PageNumber> UsageMap::next(PageNumber after) const {
    const MapRow map(pager_, row_);
    const std::uint32_t from = raw(after) + 1;
    std::optional<std::uint32_t> found;
    if (!map.byReference()) {
        const std::uint32_t first = map.firstPage();
        if (const auto bit = findBit(map.window(), from > first ? from - first : 0))
            found = first + static_cast<std::uint32_t>(*bit);
    } else {
        const std::size_t perPage = bitsPerBitmapPage(pager_);
        std::size_t start = from % perPage;
        for (std::size_t word = from / perPage; word < map.words() && !found; ++word, start = 0)
            if (const auto bitmap = map.bitmapPage(pager_, word))
                if (const auto bit = findBit(readBitmap(pager_, *bitmap).bits(), start))
                    found = static_cast<std::uint32_t>(word * perPage + *bit);
    }
    if (!found || *found >= pager_.pageCount())
        return std::nullopt;
    return PageNumber{*found};
}

std::optional<PageNumber> UsageMap::previous(std::optional<PageNumber> before) const {
    const MapRow map(pager_, row_);
    const std::uint32_t end = before ? std::min(raw(*before), pager_.pageCount()) : pager_.pageCount();
    if (!map.byReference()) {
        const std::uint32_t first = map.firstPage();
        if (end > first)
            if (const auto bit = findBitBefore(map.window(), end - first))
                return PageNumber{first + static_cast<std::uint32_t>(*bit)};
        return std::nullopt;
    }
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    for (std::size_t word = std::min(map.words(), (end + perPage - 1) / perPage); word-- > 0;)
        if (const auto bitmap = map.bitmapPage(pager_, word))
            if (const auto bit = findBitBefore(readBitmap(pager_, *bitmap).bits(), end - word * perPage))
                return PageNumber{static_cast<std::uint32_t>(word * perPage + *bit)};
    return std::nullopt;
}

std::optional<PageNumber> UsageMap::pastEnd() const {
    const MapRow map(pager_, row_);
    const std::uint32_t end = pager_.pageCount();
    if (!map.byReference()) {
        const std::uint32_t first = map.firstPage();
        const auto bit = findBit(map.window(), end > first ? end - first : 0);
        return bit ? std::optional(PageNumber{first + static_cast<std::uint32_t>(*bit)}) : std::nullopt;
    }
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    const std::size_t word = end / perPage;
    if (end % perPage == 0 || word >= map.words())
        return std::nullopt;
    const auto bitmap = map.bitmapPage(pager_, word);
    if (!bitmap)
        return std::nullopt;
    const auto bit = findBit(readBitmap(pager_, *bitmap).bits(), end % perPage);
    return bit ? std::optional(PageNumber{static_cast<std::uint32_t>(word * perPage + *bit)}) : std::nullopt;
}

std::size_t UsageMap::count() const {
    std::size_t members = 0;
    for (auto page = next(kNoPage); page; page = next(*page))
        ++members;
    return members;
}

std::vector<PageNumber> UsageMap::bitmapPages() const {
    std::vector<PageNumber> pages;
    const MapRow map(pager_, row_);
    for (std::size_t word = 0; map.byReference() && word < map.words(); ++word)
        if (const auto bitmap = map.bitmapPage(pager_, word))
            pages.push_back(*bitmap);
    return pages;
}

void UsageMap::add(PageNumber page, PageAllocator& allocator) {
    if (!MapRow(pager_, row_).byReference()) {
        if (addInline(page))
            return;
        // The window is too small for the lowest and the highest page together.
        std::vector<PageNumber> members;
        for (auto member = next(kNoPage); member; member = next(*member))
            members.push_back(*member);
        MapRowEdit edit(pager_, row_);
        std::fill(edit.bytes().begin(), edit.bytes().end(), std::byte{0});
        store8(edit.bytes().data(), 1);
        for (const PageNumber member : members)
            addByReference(member, allocator);
    }
    addByReference(page, allocator);
}

/// False when the page is outside and the window cannot be moved so that it holds all members.
bool UsageMap::addInline(PageNumber page) {
    MapRowEdit edit(pager_, row_);
    const std::uint32_t number = raw(page);
    const std::span<std::byte> window = edit.bytes().subspan(kWindowOffset);
    const auto pages = static_cast<std::uint32_t>(8 * window.size());
    const std::uint32_t first = load32(&edit.bytes()[1]);
    if (number >= first && number - first < pages) {
        setBit(window, number - first, true);
        return true;
    }
    const auto lowestBit = findBit(window, 0);
    const auto highestBit = findBitBefore(window, pages);
    const std::uint32_t lowest = lowestBit ? std::min(number, first + static_cast<std::uint32_t>(*lowestBit)) : number;
    const std::uint32_t highest =
        highestBit ? std::max(number, first + static_cast<std::uint32_t>(*highestBit)) : number;
    const std::uint32_t newFirst = lowest & ~std::uint32_t{7};
    if (highest - newFirst >= pages)
        return false;
    const std::vector<std::byte> old(window.begin(), window.end());
    std::fill(window.begin(), window.end(), std::byte{0});
    for (auto bit = findBit(old, 0); bit; bit = findBit(old, *bit + 1))
        setBit(window, first + *bit - newFirst, true);
    setBit(window, number - newFirst, true);
    store32(&edit.bytes()[1], newFirst);
    return true;
}

void UsageMap::addByReference(PageNumber page, PageAllocator& allocator) {
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    const std::size_t word = raw(page) / perPage;
    std::optional<PageNumber> bitmap = MapRow(pager_, row_).bitmapPage(pager_, word);
    if (!bitmap) {
        PageEdit fresh = allocator.allocate();
        store16(fresh.data(), kBitmapPageType);
        bitmap = fresh.number();
        MapRowEdit edit(pager_, row_);
        if (1 + 4 * (word + 1) > edit.bytes().size())
            pager_.corrupt(row_.page, 0,
                           "usage map " + std::to_string(row_.slot) + " is too short to name page " +
                               std::to_string(raw(page)));
        store32(&edit.bytes()[1 + 4 * word], raw(*bitmap));
    }
    setBit(editBitmap(pager_, *bitmap).bits(), raw(page) % perPage, true);
}

void UsageMap::remove(PageNumber page) {
    const MapRow map(pager_, row_);
    if (!map.byReference()) {
        if (map.covers(raw(page)))
            setBit(MapRowEdit(pager_, row_).bytes().subspan(kWindowOffset), raw(page) - map.firstPage(), false);
        return;
    }
    const std::size_t perPage = bitsPerBitmapPage(pager_);
    if (const auto bitmap = map.bitmapPage(pager_, raw(page) / perPage))
        setBit(editBitmap(pager_, *bitmap).bits(), raw(page) % perPage, false);
}

std::vector<RowId> createMaps(Pager& pager, PageAllocator& allocator, std::size_t count, PageNumber near) {
    static constexpr std::array<std::byte, UsageMap::kNewMapBytes> kEmptyMap{};
    std::vector<RowId> maps;
    PageNumber page = near;
    if (page != kNoPage && DataPageView(pager, pager.read(page)).owner() != 0)
        page = kNoPage;
    while (maps.size() < count) {
        if (page == kNoPage) {
            PageEdit fresh = allocator.allocate();
            DataPageEditor::format(fresh, 0);
            page = fresh.number();
        }
        DataPageEditor editor(pager, pager.edit(page));
        while (maps.size() < count && editor.hasRoom(kEmptyMap.size()))
            maps.push_back({page, editor.add(SlotKind::Row, kEmptyMap)});
        page = kNoPage;
    }
    return maps;
}

} // namespace kelb::jet
