#include "jet/usage_map.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"

#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace kelb::jet {
namespace {

using testing::PagerFixture;

/// A file of a header page, page 1 with the two global maps, and page 2 with one empty table map.
class MapsTest : public ::testing::Test {
protected:
    MapsTest() {
        operation.emplace(*f.pager);
        f.pager->append();
        PageEdit global = f.pager->append();
        DataPageEditor::format(global, 1);
        std::vector<std::byte> row(69, std::byte{0xFF});
        store8(row.data(), 0);
        store32(&row[1], 0);
        store8(&row[5], 0xF8); // pages 0 to 2 are in use
        DataPageEditor(*f.pager, global).add(SlotKind::Row, row);
        DataPageEditor(*f.pager, global).add(SlotKind::Row, std::vector<std::byte>(69));
        PageEdit maps = f.pager->append();
        DataPageEditor::format(maps, 0);
        DataPageEditor(*f.pager, maps).add(SlotKind::Row, std::vector<std::byte>(69));
    }
    ~MapsTest() override { operation.reset(); }

    /// Page numbers up to `count` exist and are in use.
    void grow(std::uint32_t count) {
        while (f.pager->pageCount() < count)
            allocator.allocate();
    }
    std::set<std::uint32_t> members() {
        std::set<std::uint32_t> pages;
        for (auto page = map.next(kNoPage); page; page = map.next(*page))
            pages.insert(raw(*page));
        return pages;
    }
    std::uint8_t formOf(RowId row) {
        const PageRef page = f.pager->read(row.page);
        return load8(DataPageView(*f.pager, page).slot(row.slot).bytes.data());
    }
    std::size_t lengthOf(RowId row) {
        const PageRef page = f.pager->read(row.page);
        return DataPageView(*f.pager, page).slot(row.slot).bytes.size();
    }

    PagerFixture f;
    std::optional<Pager::Operation> operation;
    static constexpr RowId kMap{PageNumber{2}, 0};
    PageAllocator allocator{f.open()};
    UsageMap map{*f.pager, kMap};
};

TEST_F(MapsTest, HoldsPagesOfItsWindow) {
    grow(512);
    map.add(PageNumber{14}, allocator);
    const PageRef page = f.pager->read(kMap.page);
    const auto bytes = DataPageView(*f.pager, page).slot(0).bytes;
    EXPECT_EQ(load32(&bytes[1]), 0U);
    EXPECT_EQ(load16(&bytes[5]), 0x4000) << "bit 14";
    map.add(PageNumber{511}, allocator);
    map.add(PageNumber{14}, allocator);
    EXPECT_EQ(members(), (std::set<std::uint32_t>{14, 511}));
    EXPECT_EQ(map.count(), 2U);
    EXPECT_EQ(map.previous(), PageNumber{511});
    EXPECT_EQ(map.previous(PageNumber{511}), PageNumber{14});
    EXPECT_EQ(map.previous(PageNumber{14}), std::nullopt);
    map.remove(PageNumber{14});
    map.remove(PageNumber{2000});
    EXPECT_FALSE(map.contains(PageNumber{14}));
    EXPECT_TRUE(map.contains(PageNumber{511}));
    EXPECT_FALSE(map.contains(PageNumber{512}));
}

TEST_F(MapsTest, MovesItsWindowWhileAllMembersFit) {
    grow(3000);
    map.add(PageNumber{2003}, allocator); // empty: the window goes to 2000
    EXPECT_EQ(formOf(kMap), 0);
    map.add(PageNumber{2511}, allocator);
    map.add(PageNumber{2000}, allocator);
    EXPECT_EQ(formOf(kMap), 0);
    EXPECT_EQ(members(), (std::set<std::uint32_t>{2000, 2003, 2511}));
    map.remove(PageNumber{2511});
    map.add(PageNumber{1992}, allocator);
    EXPECT_EQ(formOf(kMap), 0);
    EXPECT_EQ(members(), (std::set<std::uint32_t>{1992, 2000, 2003}));
}

TEST_F(MapsTest, BecomesAReferenceMapWhenTheyDoNot) {
    grow(600);
    map.add(PageNumber{8}, allocator);
    map.add(PageNumber{520}, allocator); // 8 to 520 are 513 pages
    EXPECT_EQ(formOf(kMap), 1);
    EXPECT_EQ(members(), (std::set<std::uint32_t>{8, 520}));
    EXPECT_EQ(map.bitmapPages().size(), 1U);
    EXPECT_FALSE(allocator.isFree(map.bitmapPages()[0]));
    map.remove(PageNumber{8});
    EXPECT_EQ(map.previous(), PageNumber{520});
    EXPECT_EQ(map.next(PageNumber{520}), std::nullopt);
    EXPECT_TRUE(map.contains(PageNumber{520}));
    EXPECT_FALSE(map.contains(PageNumber{40000}));
}

TEST_F(MapsTest, TakesTheWindowFromTheLengthOfTheRow) {
    std::vector<std::byte> longRow(69 + 12);
    ASSERT_TRUE(DataPageEditor(*f.pager, f.pager->edit(kMap.page)).replace(0, SlotKind::Row, longRow));
    grow(609);
    map.add(PageNumber{607}, allocator);
    map.add(PageNumber{0}, allocator);
    EXPECT_EQ(formOf(kMap), 0);
    EXPECT_TRUE(map.contains(PageNumber{607}));
}

TEST_F(MapsTest, AgreesWithASetUnderRandomChanges) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    grow(1500);
    std::set<std::uint32_t> model;
    std::uint32_t range = 200;
    for (int step = 0; step < 3000; ++step) {
        if (step == 1500)
            range = 1500; // from the window to bitmap pages on the way
        const auto page = static_cast<std::uint32_t>(3 + random() % (range - 3));
        if (random() % 3 != 0) {
            map.add(PageNumber{page}, allocator);
            model.insert(page);
        } else {
            map.remove(PageNumber{page});
            model.erase(page);
        }
        const auto probe = static_cast<std::uint32_t>(random() % 1500);
        const auto above = model.upper_bound(probe);
        ASSERT_EQ(map.next(PageNumber{probe}), above == model.end() ? std::nullopt : std::optional(PageNumber{*above}));
        const auto below = model.lower_bound(probe);
        ASSERT_EQ(map.previous(PageNumber{probe}),
                  below == model.begin() ? std::nullopt : std::optional(PageNumber{*std::prev(below)}));
        ASSERT_EQ(map.contains(PageNumber{probe}), model.contains(probe));
    }
    EXPECT_EQ(members(), model);
}

TEST_F(MapsTest, JunkInAMapIsDamageNotACrash) {
    const auto set = [this](std::vector<std::uint8_t> bytes) {
        const auto view = std::as_bytes(std::span(bytes));
        ASSERT_TRUE(DataPageEditor(*f.pager, f.pager->edit(kMap.page))
                        .replace(0, SlotKind::Row, std::vector<std::byte>(view.begin(), view.end())));
    };
    for (const std::vector<std::uint8_t>& bytes : std::vector<std::vector<std::uint8_t>>{
             {}, {0, 0, 0, 0, 0}, {2, 0, 0, 0, 0, 1}, {0, 3, 0, 0, 0, 1}, {0, 0xF8, 0xFF, 0xFF, 0xFF, 1}}) {
        set(bytes);
        EXPECT_THROW(map.next(kNoPage), CorruptFile);
        EXPECT_THROW(map.add(PageNumber{2}, allocator), CorruptFile);
    }
    set({1, 2, 0, 0, 0, 9}); // a data page where a bitmap page is named
    EXPECT_THROW(map.next(kNoPage), CorruptFile);
    set({1, 0xFF, 0xFF, 0xFF, 0xFF, 9}); // past the end: as if not there
    EXPECT_EQ(map.next(kNoPage), std::nullopt);
    EXPECT_THROW(UsageMap(*f.pager, {PageNumber{2}, 200}).contains(PageNumber{1}), CorruptFile);
    EXPECT_THROW(UsageMap(*f.pager, {PageNumber{99}, 0}).contains(PageNumber{1}), CorruptFile);
}

TEST_F(MapsTest, AllocatesTheLowestFreePageAndGivesItZeroed) {
    grow(20);
    PagerFixture::fill(f.pager->edit(PageNumber{7}), 'x');
    allocator.release(PageNumber{12});
    allocator.release(PageNumber{7});
    EXPECT_TRUE(allocator.isFree(PageNumber{7}));
    const PageEdit page = allocator.allocate();
    EXPECT_EQ(page.number(), PageNumber{7});
    EXPECT_EQ(PagerFixture::letterOf(page.bytes()), '0');
    EXPECT_FALSE(allocator.isFree(PageNumber{7}));
    EXPECT_EQ(allocator.allocate().number(), PageNumber{12});
    EXPECT_EQ(allocator.allocate().number(), PageNumber{20});
}

TEST_F(MapsTest, ForgetsWhatItRememberedWhenAnOperationIsUndone) {
    grow(20);
    allocator.release(PageNumber{5});
    {
        Pager::Operation inner(*f.pager);
        EXPECT_EQ(allocator.allocate().number(), PageNumber{5});
    }
    EXPECT_EQ(allocator.allocate().number(), PageNumber{5});
}

TEST_F(MapsTest, TheGlobalMapGrowsByFourBytesAtATime) {
    grow(512);
    EXPECT_EQ(lengthOf(kGlobalMap), 69U);
    grow(513);
    EXPECT_EQ(lengthOf(kGlobalMap), 73U);
    EXPECT_TRUE(allocator.isFree(PageNumber{513}));
    EXPECT_FALSE(allocator.isFree(PageNumber{512}));
    grow(4000);
    EXPECT_EQ(lengthOf(kGlobalMap), 69U + 4 * (3999 / 32 - 511 / 32));
    allocator.release(PageNumber{3000});
    EXPECT_EQ(allocator.allocate().number(), PageNumber{3000});
    EXPECT_EQ(lengthOf({PageNumber{1}, 1}), 69U) << "the other map of page 1 is as it was";
}

TEST_F(MapsTest, PastThePageItTurnsIntoAReferenceMap) {
    grow(31000);
    allocator.release(PageNumber{30000});
    allocator.release(PageNumber{500});
    EXPECT_EQ(formOf(kGlobalMap), 0);
    EXPECT_EQ(allocator.allocate().number(), PageNumber{500});
    EXPECT_EQ(allocator.allocate().number(), PageNumber{30000});
    std::set<std::uint32_t> given;
    while (f.pager->pageCount() < 34000) {
        const std::uint32_t page = raw(allocator.allocate().number());
        EXPECT_TRUE(given.insert(page).second) << "page " << page << " given out twice";
    }
    EXPECT_EQ(formOf(kGlobalMap), 1);
    const std::vector<PageNumber> bitmaps = UsageMap(*f.pager, kGlobalMap).bitmapPages();
    EXPECT_EQ(bitmaps.size(), 2U) << "32,736 pages each";
    for (const PageNumber bitmap : bitmaps) {
        EXPECT_FALSE(given.contains(raw(bitmap)));
        EXPECT_FALSE(allocator.isFree(bitmap));
    }
    for (const std::uint32_t page : {4U, 32735U, 32736U, 33000U}) {
        allocator.release(PageNumber{page});
        EXPECT_TRUE(allocator.isFree(PageNumber{page}));
    }
    for (const std::uint32_t page : {4U, 32735U, 32736U, 33000U})
        EXPECT_EQ(allocator.allocate().number(), PageNumber{page});
    EXPECT_GE(raw(allocator.allocate().number()), 34000U);
}

TEST_F(MapsTest, AMissingWordOfAReferenceMapGivesNothingAway) {
    grow(100);
    std::vector<std::byte> row(69);
    store8(row.data(), 1);
    ASSERT_TRUE(DataPageEditor(*f.pager, f.pager->edit(PageNumber{1})).replace(0, SlotKind::Row, row));
    PageAllocator fresh(*f.pager);
    EXPECT_FALSE(fresh.isFree(PageNumber{50}));
    const std::uint32_t next = raw(fresh.allocate().number());
    EXPECT_GE(next, 100U);
    fresh.release(PageNumber{50});
    EXPECT_EQ(fresh.allocate().number(), PageNumber{50});
    EXPECT_FALSE(fresh.isFree(PageNumber{51}));
}

TEST_F(MapsTest, AMovedWindowOfAnotherWriterCountsPagesBelowAsTaken) {
    grow(100);
    std::vector<std::byte> row(69, std::byte{0xFF});
    store8(row.data(), 0);
    store32(&row[1], 64);
    std::fill(row.begin() + 5, row.begin() + 10, std::byte{0}); // 64 to 103 are in use
    ASSERT_TRUE(DataPageEditor(*f.pager, f.pager->edit(PageNumber{1})).replace(0, SlotKind::Row, row));
    PageAllocator fresh(*f.pager);
    EXPECT_FALSE(fresh.isFree(PageNumber{10}));
    EXPECT_EQ(fresh.allocate().number(), PageNumber{100});
    fresh.release(PageNumber{40});
    EXPECT_TRUE(fresh.isFree(PageNumber{40}));
    EXPECT_FALSE(fresh.isFree(PageNumber{39}));
    EXPECT_FALSE(fresh.isFree(PageNumber{63}));
    EXPECT_EQ(fresh.allocate().number(), PageNumber{40});
}

TEST_F(MapsTest, NewMapsFillTheNearPageAndThenAnotherOne) {
    const std::vector<RowId> maps = createMaps(*f.pager, allocator, 60, PageNumber{2});
    ASSERT_EQ(maps.size(), 60U);
    EXPECT_EQ(maps[0], (RowId{PageNumber{2}, 1}));
    EXPECT_EQ(maps[55], (RowId{PageNumber{2}, 56})) << "57 maps fit one page";
    EXPECT_EQ(maps[56], (RowId{PageNumber{3}, 0}));
    UsageMap(*f.pager, maps[59]).add(PageNumber{2}, allocator);
    EXPECT_EQ(UsageMap(*f.pager, maps[58]).count(), 0U);
    EXPECT_EQ(UsageMap(*f.pager, maps[59]).count(), 1U);
    EXPECT_EQ(createMaps(*f.pager, allocator, 1, PageNumber{1})[0].page, PageNumber{4}) << "page 1 is not for tables";
}

TEST_F(MapsTest, SpaceOnOlderPagesIsFoundAgain) {
    const RowId owned = createMaps(*f.pager, allocator, 1, PageNumber{2})[0];
    std::vector<PageNumber> pages;
    for (int i = 0; i < 20; ++i) {
        DataPageEditor page(*f.pager, allocator.newDataPage(owned, kMap, 77));
        page.add(SlotKind::Row, std::vector<std::byte>(i == 5 ? 100 : 3000));
        pages.push_back(page.number());
    }
    int searches = 1;
    while (!allocator.pageWithRoom(kMap, 77, 2000) && searches < 20)
        ++searches;
    EXPECT_EQ(allocator.pageWithRoom(kMap, 77, 2000), pages[5]);
    EXPECT_LE(searches, 7) << "three pages at a time";
    EXPECT_TRUE(allocator.pageWithRoom(kMap, 77, 500).has_value());
    DataPageEditor full(*f.pager, f.pager->edit(pages[19]));
    full.add(SlotKind::Row, std::vector<std::byte>(full.freeBytes() - 2));
    for (int i = 0; i < 20; ++i)
        allocator.pageWithRoom(kMap, 77, 4000);
    EXPECT_FALSE(map.contains(pages[19])) << "a full page leaves the map";
    EXPECT_EQ(map.count(), 19U);
}

} // namespace
} // namespace kelb::jet
