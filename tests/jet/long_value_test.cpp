#include "jet/long_value.h"

#include "jet/byte_order.h"
#include "jet/data_page.h"

#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace kelb::jet {
namespace {

using testing::PagerFixture;
using Bytes = std::vector<std::byte>;

/// One long-value column whose maps are rows 0 and 1 of page 2.
class LongValueTest : public ::testing::Test {
protected:
    LongValueTest() {
        operation.emplace(*f.pager);
        f.pager->append();
        PageEdit global = f.pager->append();
        DataPageEditor::format(global, 1);
        Bytes row(69, std::byte{0xFF});
        store8(row.data(), 0);
        store32(&row[1], 0);
        store8(&row[5], 0xFC);
        DataPageEditor(*f.pager, global).add(SlotKind::Row, row);
        createMaps(*f.pager, allocator, 2, kNoPage);
    }
    ~LongValueTest() override { operation.reset(); }

    static Bytes data(std::size_t length, unsigned seed = 1) {
        Bytes bytes(length);
        for (std::size_t i = 0; i < length; ++i)
            bytes[i] = static_cast<std::byte>((i * 31 + seed) % 251);
        return bytes;
    }
    Bytes write(const Bytes& bytes) {
        const auto header = writeLongValue(*f.pager, allocator, maps, bytes);
        return {header.begin(), header.end()};
    }
    Bytes read(const Bytes& field) {
        Bytes bytes;
        readLongValue(*f.pager, field, bytes);
        return bytes;
    }
    void free(const Bytes& field) { freeLongValue(*f.pager, allocator, maps, field); }

    PagerFixture f;
    std::optional<Pager::Operation> operation;
    PageAllocator allocator{f.open()};
    LongValueMaps maps{{PageNumber{2}, 0}, {PageNumber{2}, 1}};
    UsageMap owned{*f.pager, maps.owned}, free_{*f.pager, maps.free};
};

TEST_F(LongValueTest, ASingleValueSharesItsPage) {
    const Bytes first = write(data(238)), second = write(data(100, 2));
    EXPECT_EQ(load32(&first[0]), 0x40000000U | 238);
    EXPECT_EQ(load32(&first[4]), 0x00000300U) << "page 3, row 0";
    EXPECT_EQ(load32(&second[4]), 0x00000301U);
    EXPECT_EQ(load32(&first[8]), 0U);
    EXPECT_EQ(read(first), data(238));
    EXPECT_EQ(read(second), data(100, 2));
    EXPECT_TRUE(owned.contains(PageNumber{3}));
    EXPECT_TRUE(free_.contains(PageNumber{3}));
}

TEST_F(LongValueTest, TheLongestSingleIs4076BytesAndAChainHoldsOneRowAPage) {
    const Bytes single = write(data(4076)), chain = write(data(4077)), longer = write(data(10000));
    EXPECT_EQ(LongValueHeader::parse(single).form, LongValueHeader::Form::Single);
    EXPECT_EQ(LongValueHeader::parse(chain).form, LongValueHeader::Form::Chain);
    for (const Bytes* field : {&single, &chain, &longer})
        EXPECT_EQ(read(*field), data(LongValueHeader::parse(*field).length));

    const LongValueHeader header = LongValueHeader::parse(longer);
    EXPECT_EQ(header.length, 10000U);
    RowId at = header.first;
    std::vector<std::size_t> parts;
    while (at.page != kNoPage) {
        EXPECT_TRUE(owned.contains(at.page));
        EXPECT_FALSE(free_.contains(at.page));
        const PageRef page = f.pager->read(at.page);
        const DataPageView view(*f.pager, page);
        EXPECT_EQ(view.owner(), 0x4C41564CU);
        EXPECT_EQ(view.slotCount(), 1U);
        EXPECT_EQ(view.chainStamp(), parts.empty() ? header.stamp : 0U);
        parts.push_back(view.slot(0).bytes.size() - 4);
        at = RowId::unpack(load32(view.slot(0).bytes.data()));
    }
    EXPECT_EQ(parts, (std::vector<std::size_t>{4072, 4072, 10000 - 2 * 4072}));
    EXPECT_NE(header.stamp, LongValueHeader::parse(chain).stamp);
}

TEST_F(LongValueTest, ReadsWhatTheRealEngineWrote) {
    // Inline, with room left in the field.
    Bytes field(12 + 10, std::byte{'i'});
    store32(&field[0], 0x80000000U | 4);
    EXPECT_EQ(read(field), Bytes(4, std::byte{'i'}));
    store32(&field[0], 0x80000000U);
    EXPECT_EQ(read(field), Bytes{});
    // A single row longer than the value, and a chain with more behind its length.
    Bytes single = write(data(50));
    store32(&single[0], 0x40000000U | 20);
    EXPECT_EQ(read(single), data(20));
    Bytes chain = write(data(9000));
    store32(&chain[0], 4100);
    EXPECT_EQ(read(chain), data(4100));
}

TEST_F(LongValueTest, FreedSpaceIsUsedAgain) {
    const Bytes a = write(data(1000)), b = write(data(1000));
    const Bytes chain = write(data(20000));
    const std::uint32_t pages = f.pager->pageCount();
    free(chain);
    EXPECT_EQ(owned.count(), 1U);
    free(a);
    EXPECT_EQ(owned.count(), 1U) << "the other value is still there";
    EXPECT_EQ(read(b), data(1000));
    const Bytes c = write(data(1500, 3));
    EXPECT_EQ(LongValueHeader::parse(c).first, LongValueHeader::parse(a).first);
    EXPECT_EQ(read(b), data(1000)) << "moved within its page";
    free(b);
    free(c);
    EXPECT_EQ(owned.count(), 0U);
    EXPECT_EQ(free_.count(), 0U);
    write(data(20000));
    write(data(1000));
    EXPECT_EQ(f.pager->pageCount(), pages);
}

TEST_F(LongValueTest, AColumnWithoutFreeMapStillStores) {
    maps.free = {};
    const Bytes a = write(data(500)), b = write(data(500));
    EXPECT_EQ(read(a), data(500));
    free(a);
    free(b);
    EXPECT_EQ(owned.count(), 0U);
}

TEST_F(LongValueTest, AgreesWithAMapUnderRandomChanges) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::map<int, std::pair<Bytes, Bytes>> model; // field, value
    for (int step = 0; step < 1500; ++step) {
        if (random() % 5 < 3 || model.empty()) {
            const std::size_t length = 1 + random() % (random() % 8 == 0 ? 15000 : 1500);
            const Bytes value = data(length, static_cast<unsigned>(step));
            model[step] = {write(value), value};
        } else {
            auto at = model.begin();
            std::advance(at, static_cast<long>(random() % model.size()));
            free(at->second.first);
            model.erase(at);
        }
    }
    for (const auto& [step, stored] : model)
        ASSERT_EQ(read(stored.first), stored.second) << step;
    for (const auto& [step, stored] : model)
        free(stored.first);
    EXPECT_EQ(owned.count(), 0U);
    EXPECT_EQ(free_.count(), 0U);
}

TEST_F(LongValueTest, DamageIsReportedAndNeverFollowedForEver) {
    const Bytes chain = write(data(12000));
    const PageNumber first = LongValueHeader::parse(chain).first.page;
    const auto pointerOf = [this](PageNumber page) { return DataPageEditor(*f.pager, f.pager->edit(page)).rowData(0); };
    const PageNumber second = RowId::unpack(load32(pointerOf(first))).page;

    const auto readChanged = [&](std::size_t offset, std::uint32_t value) {
        Bytes field = chain;
        store32(&field[offset], value);
        return read(field);
    };
    EXPECT_THROW(readChanged(0, 12001), CorruptFile) << "ends early";
    EXPECT_THROW(readChanged(0, 0x3FFFFFFF), CorruptFile) << "longer than the file";
    EXPECT_THROW(readChanged(0, 0x80000001U), CorruptFile) << "inline without data";
    EXPECT_THROW(readChanged(0, 0x40000000U | 4090), CorruptFile) << "longer than its row";
    EXPECT_THROW(readChanged(4, 0x00FFFF00U), CorruptFile) << "past the end";
    EXPECT_THROW(readChanged(4, 0x00000200U), CorruptFile) << "a page of maps";
    EXPECT_THROW(readChanged(4, RowId{first, 9}.packed()), CorruptFile) << "no such row";
    EXPECT_THROW(read(Bytes(11)), CorruptFile);

    f.pager->edit(PageNumber{2}); // the file must be longer than the value for a circle to matter
    while (f.pager->pageCount() < 60)
        f.pager->append();
    for (const PageNumber back : {first, second}) {
        store32(pointerOf(second), RowId{back, 0}.packed());
        EXPECT_THROW(readChanged(0, 200000), CorruptFile) << "in a circle";
        Pager::Operation inner(*f.pager);
        EXPECT_THROW(free(chain), CorruptFile);
    }
}

TEST_F(LongValueTest, NothingOfAnotherColumnIsFreed) {
    const Bytes single = write(data(100)), chain = write(data(5000));
    const std::vector<RowId> others = createMaps(*f.pager, allocator, 2, PageNumber{2});
    maps = {others[0], others[1]};
    EXPECT_THROW(free(single), CorruptFile);
    EXPECT_THROW(free(chain), CorruptFile);
    EXPECT_EQ(read(single), data(100));
    EXPECT_EQ(read(chain), data(5000));
}

} // namespace
} // namespace kelb::jet
