#include "jet/verification.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"
#include "jet/file_header.h"
#include "jet/map_row.h"

namespace kelb::jet {
namespace {

constexpr PageNumber kGlobalPage{1};
constexpr RowId kPendingMap{kGlobalPage, 1};
constexpr std::uint32_t kGlobalPageOwner = 1;
constexpr std::uint32_t kMapPageOwner = 0;

/// The bits of a map, page by page: `visit(page)` for each bit set. Claims bitmap pages.
template <typename Visit>
void visitMap(Verification& v, RowId row, const std::string& name, const Visit& visit) {
    const MapRow map(v.pager, row);
    if (!map.byReference()) {
        for (auto bit = findBit(map.window(), 0); bit; bit = findBit(map.window(), *bit + 1))
            visit(map.firstPage() + *bit);
        return;
    }
    const std::size_t perPage = bitsPerBitmapPage(v.pager);
    const Owner owner = v.newOwner(name + ": bitmap pages");
    // Words for pages behind the end of the file hold junk in real files.
    for (std::size_t word = 0; word < map.words() && word * perPage < v.pager.pageCount(); ++word) {
        const auto bitmap = map.bitmapPage(v.pager, word);
        if (!bitmap || !v.claim(*bitmap, owner))
            continue;
        v.guarded(*bitmap, name, [&] {
            const BitmapRef page = readBitmap(v.pager, *bitmap);
            for (auto bit = findBit(page.bits(), 0); bit; bit = findBit(page.bits(), *bit + 1))
                visit(word * perPage + *bit);
        });
    }
}

void claimMapPage(Verification& v, PageNumber page) {
    if (v.owns(v.mapPages, page) || page == kGlobalPage)
        return;
    if (v.claim(page, v.mapPages))
        checkDataPage(v, v.pager.read(page), kMapPageOwner, "usage maps");
}

/// In the global map a bit says free; pages past the end of the file are free, too, and so is what lies behind the
/// window of an inline map. What a map by reference does not cover is not free.
void readFreePages(Verification& v) {
    const MapRow map(v.pager, kGlobalMap);
    if (!map.byReference()) {
        for (std::size_t page = map.firstPage() + 8 * map.window().size(); page < v.freePages.size(); ++page)
            v.freePages[page] = true;
    }
    visitMap(v, kGlobalMap, "map of free pages", [&](std::size_t page) {
        if (page < v.freePages.size())
            v.freePages[page] = true;
    });
}

} // namespace

bool checkDataPage(Verification& v, const PageRef& page, std::uint32_t owner, const std::string& name) {
    const std::byte* const data = page.data();
    if (load16(data) != 0x0101)
        return v.error(page.number(), name + ": the page type should be 01 01, a data page"), false;
    if (const std::uint32_t found = load32(data + 4); found != owner)
        return v.error(page.number(), name + ": the owner of the page should be " + std::to_string(owner) + ", it is " +
                                          std::to_string(found)),
               false;
    return v.guarded(page.number(), name, [&] {
        const DataPageView view(v.pager, page);
        if (view.slotCount() > kMaxSlots)
            v.pager.corrupt(page.number(), 12, "a page has at most 255 slots, not " + std::to_string(view.slotCount()));
        if (const std::size_t free = load16(data + 2); free != view.freeBytes())
            v.error(page.number(), name + ": the free bytes should be " + std::to_string(view.freeBytes()) +
                                       ", they are " + std::to_string(free));
    });
}

void checkGlobalMaps(Verification& v) {
    v.claim(PageNumber{0}, v.newOwner("the header"));
    if (!v.claim(kGlobalPage, v.newOwner("the global maps")))
        return;
    v.guarded(PageNumber{0}, "header", [&] {
        const PageRef page = v.pager.read(PageNumber{0});
        if (!readFileHeader(page.bytes().first(kHeaderFront), v.pager.path()).standardMaps)
            v.error(PageNumber{0}, "header: the map of free pages should be on page 1, slot 0");
    });
    v.guarded(kGlobalPage, "map of free pages", [&] {
        if (checkDataPage(v, v.pager.read(kGlobalPage), kGlobalPageOwner, "global maps"))
            readFreePages(v);
    });
    v.releasing = readUsageMap(v, kPendingMap, "map of pages about to become free");
    if (!v.releasing.empty())
        v.warning(kPendingMap, "the map of pages about to become free should be empty, it has " +
                                   std::to_string(v.releasing.size()) + " pages");
}

std::vector<PageNumber> readUsageMap(Verification& v, RowId map, const std::string& name) {
    std::vector<PageNumber> members;
    v.guarded(map.page, name, [&] {
        if (raw(map.page) >= v.pager.pageCount())
            v.pager.corrupt(map.page, 0, "the map should be on a page of the file");
        claimMapPage(v, map.page);
        std::size_t outside = 0;
        visitMap(v, map, name, [&](std::size_t page) {
            if (page < v.pager.pageCount())
                members.push_back(PageNumber{static_cast<std::uint32_t>(page)});
            else
                ++outside;
        });
        if (outside != 0)
            v.error(map, name + ": the map has " + std::to_string(outside) + " pages past the end of the file");
    });
    return members;
}

void checkFreePages(Verification& v) {
    constexpr std::size_t kNamed = 5;
    std::size_t leaks = 0;
    PageNumber first = kNoPage;
    std::string named;
    std::vector<bool> accounted(v.pager.pageCount());
    for (const PageNumber page : v.releasing)
        accounted[raw(page)] = true;
    for (std::uint32_t number = 0; number < v.pager.pageCount(); ++number) {
        const PageNumber page{number};
        if (v.isClaimed(page) && v.freePages[number])
            v.error(page, "the page is in use, but the map of free pages has it as free");
        if (v.isClaimed(page) || v.freePages[number] || accounted[number])
            continue;
        if (leaks++ == 0)
            first = page;
        if (leaks <= kNamed)
            named += (leaks == 1 ? "" : ", ") + std::to_string(number);
    }
    if (leaks != 0)
        v.warning(first, std::to_string(leaks) + " pages are not free, yet nobody uses them: " + named +
                             (leaks > kNamed ? ", …" : ""));
}

} // namespace kelb::jet
