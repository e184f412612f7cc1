#include "jet/data_page.h"

#include "jet/byte_order.h"

#include "tests/jet/pager_fixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

namespace kelb::jet {
namespace {

using testing::PagerFixture;

std::vector<std::byte> row(std::size_t length, int letter) {
    return std::vector<std::byte>(length, static_cast<std::byte>(letter));
}

class DataPageTest : public ::testing::Test {
protected:
    DataPageTest() {
        f.open();
        operation.emplace(*f.pager);
        PageEdit page = f.pager->append();
        DataPageEditor::format(page, 7);
    }
    ~DataPageTest() override { operation.reset(); }
    DataPageEditor editor() { return DataPageEditor(*f.pager, f.pager->edit(PageNumber{0})); }
    DataPageView view() { return DataPageView(*f.pager, f.pager->read(PageNumber{0})); }

    PagerFixture f;
    std::optional<Pager::Operation> operation;
};

/// The catalog page of an empty database starts so: its rows, their places and the free field are known.
TEST_F(DataPageTest, LaysRowsOutAsTheRealEngineDoes) {
    const std::uint16_t starts[] = {0xFB5, 0xF64, 0xF0B, 0xEC0, 0xE6B, 0xE1C, 0xDC7, 0xD66};
    std::size_t end = kPageSize;
    DataPageEditor page = editor();
    for (const std::uint16_t start : starts) {
        page.add(SlotKind::Row, row(end - start, 'r'));
        end = start;
    }
    const PageRef bytes = f.pager->read(PageNumber{0});
    const std::uint8_t expected[] = {0x01, 0x01, 0x48, 0x0D, 7,    0,    0,    0,    0,    0,    0,
                                     0,    0x08, 0x00, 0xB5, 0x0F, 0x64, 0x0F, 0x0B, 0x0F, 0xC0, 0x0E,
                                     0x6B, 0x0E, 0x1C, 0x0E, 0xC7, 0x0D, 0x66, 0x0D, 0,    0};
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(load8(bytes.data() + i), expected[i]) << i;
}

TEST_F(DataPageTest, FillsToTheLastByteAndTo255Rows) {
    DataPageEditor page = editor();
    EXPECT_TRUE(page.hasRoom(4096 - 14 - 2));
    EXPECT_FALSE(page.hasRoom(4096 - 14 - 1));
    for (int i = 0; i < 255; ++i)
        page.add(SlotKind::Row, {});
    EXPECT_FALSE(page.hasRoom(0));
    EXPECT_EQ(page.freeBytes(), 4096U - 14 - 510);
    EXPECT_EQ(load16(f.pager->read(PageNumber{0}).data() + 14), 0x1000) << "an empty first row starts at 4096";
    EXPECT_FALSE(page.allDeleted());
    EXPECT_FALSE(page.replace(9, SlotKind::Row, row(4096 - 14 - 510 + 1, 'x')));
    EXPECT_TRUE(page.replace(9, SlotKind::Row, row(4096 - 14 - 510, 'x')));
    EXPECT_EQ(page.freeBytes(), 0U);
    for (int i = 0; i < 255; ++i)
        page.erase(static_cast<std::uint8_t>(i));
    EXPECT_TRUE(page.allDeleted());
    EXPECT_EQ(page.freeBytes(), 4096U - 14 - 510);
}

TEST_F(DataPageTest, AgreesWithAListUnderRandomChanges) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    struct Expected {
        SlotKind kind;
        std::vector<std::byte> bytes;
    };
    std::vector<Expected> model;
    DataPageEditor page = editor();
    constexpr SlotKind kKinds[] = {SlotKind::Row, SlotKind::Pointer, SlotKind::Target};
    for (int step = 0; step < 2000; ++step) {
        const auto bytes = row(random() % 300, static_cast<int>(1 + random() % 255));
        const SlotKind kind = kKinds[random() % 3];
        const std::size_t slot = model.empty() ? 0 : random() % model.size();
        if (random() % 3 == 0 && page.hasRoom(bytes.size())) {
            ASSERT_EQ(page.add(kind, bytes), model.size());
            model.push_back({kind, bytes});
        } else if (random() % 3 == 0 && !model.empty()) {
            page.erase(static_cast<std::uint8_t>(slot));
            model[slot] = {SlotKind::Deleted, {}};
        } else if (!model.empty()) {
            std::size_t used = 0;
            for (const Expected& e : model)
                used += e.bytes.size();
            const bool fits = used - model[slot].bytes.size() + bytes.size() <= 4096 - 14 - 2 * model.size();
            ASSERT_EQ(page.replace(static_cast<std::uint8_t>(slot), kind, bytes), fits);
            if (fits)
                model[slot] = {kind, bytes};
        }
        const DataPageView seen = view();
        ASSERT_EQ(seen.slotCount(), model.size());
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(seen.slot(i).kind, model[i].kind);
            ASSERT_TRUE(std::ranges::equal(seen.slot(i).bytes, model[i].bytes)) << i;
        }
        const PageRef page0 = f.pager->read(PageNumber{0});
        ASSERT_EQ(load16(page0.data() + 2), seen.freeBytes());
        const std::size_t gap = 14 + 2 * model.size();
        for (std::size_t i = gap; i < gap + seen.freeBytes(); ++i)
            ASSERT_EQ(page0.bytes()[i], std::byte{0}) << "old row bytes left in the gap at " << i;
    }
}

struct Damage {
    const char* name;
    std::function<void(std::byte*)> change;
    std::size_t offset; ///< that the error names
};
class DamagedDataPage : public DataPageTest, public ::testing::WithParamInterface<Damage> {};

TEST_P(DamagedDataPage, IsRefusedWithItsPlace) {
    editor().add(SlotKind::Row, row(10, 'a'));
    editor().add(SlotKind::Row, row(10, 'b'));
    GetParam().change(f.pager->edit(PageNumber{0}).data());
    try {
        view();
        FAIL();
    } catch (const CorruptFile& error) {
        EXPECT_EQ(error.page(), PageNumber{0});
        EXPECT_EQ(error.offset(), GetParam().offset);
    }
    EXPECT_THROW(editor(), CorruptFile);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, DamagedDataPage,
    ::testing::Values(Damage{"another_page_type", [](std::byte* p) { store8(p, 2); }, 0},
                      Damage{"more_slots_than_fit", [](std::byte* p) { store16(p + 12, 2042); }, 12},
                      Damage{"slots_reach_into_rows", [](std::byte* p) { store16(p + 12, 2037); }, 14},
                      Damage{"row_in_the_header", [](std::byte* p) { store16(p + 16, 12); }, 16},
                      Damage{"rows_out_of_order", [](std::byte* p) { store16(p + 16, 4090); }, 16},
                      Damage{"row_past_the_end", [](std::byte* p) { store16(p + 14, 4097); }, 14}),
    [](const auto& damage) { return std::string(damage.param.name); });

TEST(Jet3DataPage, HasItsSlotsEarlier) {
    PagerFixture f("", kJet3PageSize);
    f.open();
    Pager::Operation operation(*f.pager);
    const PageEdit page = f.pager->append();
    store16(page.data(), 0x0101);
    store32(page.data() + 4, 9);
    store16(page.data() + 8, 2);
    store16(page.data() + 10, 2040);
    store16(page.data() + 12, 0x4000 | 2036);
    store8(page.data() + 2036, 'p');
    const DataPageView view(*f.pager, page);
    EXPECT_EQ(view.owner(), 9U);
    EXPECT_EQ(view.slotCount(), 2U);
    EXPECT_EQ(view.slot(0).bytes.size(), 8U);
    EXPECT_EQ(view.slot(1).kind, SlotKind::Pointer);
    EXPECT_EQ(view.slot(1).bytes.front(), std::byte{'p'});
    EXPECT_EQ(view.freeBytes(), 2036U - 14);
}

} // namespace
} // namespace kelb::jet
