#include "jet/table_definition.h"

#include "jet/error.h"

#include "tests/jet/hex_bytes.h"
#include "tests/jet/table_fixture.h"

#include <gtest/gtest.h>

#include <random>

namespace kelb::jet {
namespace {

using testing::bytes;
using testing::column;
using testing::hex;
using testing::TableFixture;

IndexColumn part(std::uint16_t number) {
    return {number, true};
}
RowId rowId(std::uint32_t page, std::uint8_t slot) {
    return {PageNumber{page}, slot};
}

/// A table of two rows with a unique index on its url.
const char* kPageTable =
    "02 01 8c 0e 00 00 00 00 | 6c 01 00 00 | 59 06 00 00 | 02 00 00 00 | 02 00 00 00 | 01 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00"
    "4e | 05 00 | 04 00 | 05 00 | 01 00 00 00 | 01 00 00 00 | 00 11 00 00 | 01 11 00 00"
    "00 00 00 00 02 00 00 00 00 00 00 00"
    "04 59 06 00 00 00 00 00 00 00 00 09 04 00 00 07 00 00 00 00 00 00 00 04 00"
    "0a 59 06 00 00 01 00 00 00 01 00 09 04 00 00 02 00 00 00 00 00 00 00 fe 01"
    "0a 59 06 00 00 02 00 01 00 02 00 09 04 00 00 02 00 00 00 00 00 00 00 fe 01"
    "0a 59 06 00 00 03 00 02 00 03 00 09 04 00 00 02 00 00 00 00 00 00 00 fe 01"
    "0c 59 06 00 00 04 00 03 00 04 00 09 04 00 00 02 00 00 00 00 00 00 00 00 00"
    "04 00 69 00 64 00 | 06 00 75 00 72 00 6c 00 | 0c 00 72 00 65 00 66 00 75 00 72 00 6c 00"
    "0c 00 72 00 65 00 66 00 74 00 78 00 74 00 | 0e 00 63 00 6f 00 6e 00 74 00 65 00 6e 00 74 00"
    "83 07 00 00 | 01 00 01 | ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00"
    "04 11 00 00 | 12 00 00 00 | 00 00 00 00 | 81 | 00 00 00 00 00"
    "59 06 00 00 | 00 00 00 00 | 00 00 00 00 | 00 | ff ff ff ff | 00 00 00 00 | 04 04 | 00 | 00 00 00 00"
    "0c 00 75 00 72 00 6c 00 69 00 64 00 78 00"
    "04 00 | 02 11 00 00 | 03 11 00 00 | ff ff";

TableDefinition pageTable() {
    TableDefinition table;
    table.rowCount = table.lastAutonumber = 2;
    table.ownedMap = rowId(0x11, 0);
    table.freeMap = rowId(0x11, 1);
    table.addColumn(column(u"id", ColumnType::Long)).flags = 7;
    table.addColumn(column(u"url", ColumnType::Text));
    table.addColumn(column(u"refurl", ColumnType::Text));
    table.addColumn(column(u"reftxt", ColumnType::Text));
    table.addColumn(column(u"content", ColumnType::Memo));
    table.longValueMaps = {{4, rowId(0x11, 2), rowId(0x11, 3)}};
    table.physicalIndexes = {{{part(1)}, rowId(0x11, 4), PageNumber{0x12}, 0x81, 2, 0}};
    LogicalIndex index;
    index.name = u"urlidx";
    table.addLogicalIndex(index);
    return table;
}

/// The access rights' table of a database made by the original engine.
const char* kRightsTable =
    "02 01 a9 0e 00 00 00 00 4f 01 00 00 59 06 00 00 10 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 53 04 00 01 00 04 00 01 00 00 00 01 00 00 00 12 06 00 00 13 06 00 00 00"
    "00 00 00 08 00 00 00 00 00 00 00 04 59 06 00 00 02 00 01 00 00 00 09 04 00 00 13 00 00 00 00 00"
    "04 00 04 00 01 59 06 00 00 03 00 01 00 00 00 09 04 00 00 13 00 00 00 00 00 00 00 01 00 04 59 06"
    "00 00 00 00 00 00 00 00 09 04 00 00 13 00 00 00 00 00 00 00 04 00 09 59 06 00 00 01 00 00 00 00"
    "00 09 04 00 00 32 00 00 00 00 00 00 00 fe 01 06 00 41 00 43 00 4d 00 18 00 46 00 49 00 6e 00 68"
    "00 65 00 72 00 69 00 74 00 61 00 62 00 6c 00 65 00 10 00 4f 00 62 00 6a 00 65 00 63 00 74 00 49"
    "00 64 00 06 00 53 00 49 00 44 00 83 07 00 00 00 00 01 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff"
    "00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 14 06 00 00 09 00 00 00 00 00 00 00 88 00 00 00 00 00 59"
    "06 00 00 00 00 00 00 00 00 00 00 00 ff ff ff ff 00 00 00 00 04 04 00 00 00 00 00 10 00 4f 00 62"
    "00 6a 00 65 00 63 00 74 00 49 00 64 00 ff ff";

TableDefinition rightsTable() {
    TableDefinition table;
    table.tableType = 0x53;
    table.rowCount = 16;
    table.ownedMap = rowId(6, 18);
    table.freeMap = rowId(6, 19);
    const auto add = [&](const char16_t* name, ColumnType type, std::uint8_t flags, std::uint16_t characters) {
        Column added = column(name, type, characters);
        added.flags = flags;
        table.addColumn(added);
    };
    add(u"ObjectId", ColumnType::Long, 0x13, 0);
    add(u"SID", ColumnType::Binary, 0x32, 510);
    add(u"ACM", ColumnType::Long, 0x13, 0);
    add(u"FInheritable", ColumnType::YesNo, 0x13, 0);
    table.physicalIndexes = {{{part(0)}, rowId(6, 20), PageNumber{9}, 0x88, 8, 0}};
    LogicalIndex index;
    index.name = u"ObjectId";
    table.addLogicalIndex(index);
    return table;
}

TEST(TableDefinition, IsBuiltByteForByte) {
    EXPECT_EQ(hex(buildTableDefinition(pageTable())), hex(bytes(kPageTable)));
    EXPECT_EQ(hex(buildTableDefinition(rightsTable())), hex(bytes(kRightsTable)));
}

TEST(TableDefinition, IsReadFromItsPage) {
    TableFixture f;
    const PageNumber page = f.putDefinition(bytes(kPageTable));
    const TableDefinition table = readTableDefinition(*f.pager, page, Dialect::Jet4);
    EXPECT_EQ(hex(buildTableDefinition(table)), hex(bytes(kPageTable)));
    EXPECT_EQ(table.page, page);
    ASSERT_NE(table.findColumn(u"REFURL"), nullptr);
    EXPECT_EQ(table.findColumn(u"REFURL")->number, 2);
    EXPECT_EQ(table.findColumn(u"none"), nullptr);
    EXPECT_TRUE(table.columns[0].isAutonumber());
    EXPECT_TRUE(table.physicalIndexes[0].unique());
    EXPECT_FALSE(table.physicalIndexes[0].required());
    EXPECT_EQ(table.mapsOf(table.columns[4])->free, rowId(0x11, 3));
}

TEST(TableDefinition, BlocksStandByPositionThenNameIndexesByName) {
    TableDefinition table = pageTable();
    table.columns[0].position = 7; // designed in the user interface
    std::swap(table.columns[0], table.columns[4]);
    EXPECT_EQ(table.displayOrder(), (std::vector<std::size_t>{1, 2, 3, 0, 4}));
    Column& added = table.addColumn(column(u"sA", ColumnType::YesNo));
    EXPECT_EQ(added.position, 8);
    EXPECT_EQ(&added, &table.columns.back());
    EXPECT_EQ(added.fixedOffset, 0);
    EXPECT_EQ(table.addColumn(column(u"n", ColumnType::Integer)).fixedOffset, 4);
    EXPECT_EQ(table.fixedBytes(), 6U);
    LogicalIndex index;
    index.name = u"Alpha";
    EXPECT_EQ(table.addLogicalIndex(index).number, 1U);
    EXPECT_EQ(table.logicalIndexes[0].name, u"Alpha");
    table.maxColumns = 255;
    EXPECT_THROW(table.addColumn(column(u"x", ColumnType::Byte)), Error);
}

TEST(TableDefinition, GrowsAndShrinksOverItsChainOfPages) {
    TableFixture f;
    TableDefinition table;
    Pager::Operation operation(*f.pager);
    table.page = f.allocator().allocate().number();
    // Names of changing length, so that every kind of field comes to lie across a page border.
    for (int i = 0; i < 255; ++i) {
        table.addColumn(column(std::u16string(static_cast<std::size_t>(1 + i % 64), u'a') +
                                   std::u16string(1, static_cast<char16_t>(0x4E00 + i)),
                               ColumnType::Text));
        writeTableDefinition(*f.pager, f.allocator(), table);
        ASSERT_EQ(buildTableDefinition(readTableDefinition(*f.pager, table.page, Dialect::Jet4)),
                  buildTableDefinition(table));
    }
    const std::uint32_t pages = f.pager->pageCount();
    EXPECT_GE(buildTableDefinition(table).size(), 4096U + 4 * 4088U);
    const TableDefinition large = table;
    table.columns.resize(2);
    writeTableDefinition(*f.pager, f.allocator(), table);
    EXPECT_EQ(readTableDefinition(*f.pager, table.page, Dialect::Jet4).columns.size(), 2U);
    writeTableDefinition(*f.pager, f.allocator(), large);
    EXPECT_EQ(f.pager->pageCount(), pages) << "pages given back are used again";
    operation.done();
}

TEST(TableDefinition, FreeFieldOfEachPage) {
    TableFixture f;
    Pager::Operation operation(*f.pager);
    TableDefinition table;
    table.page = f.allocator().allocate().number();
    // 63 + 2 bytes, and 25 + 2 + 2 × the name for each column: 27 of them with 61 characters make 4088 bytes.
    for (int i = 0; i < 27; ++i) {
        table.addColumn(column(std::u16string(61, static_cast<char16_t>(u'A' + i)), ColumnType::Byte));
    }
    ASSERT_EQ(buildTableDefinition(table).size(), 4088U);
    const auto freeAndNext = [&](PageNumber page) { return hex(f.pager->read(page).bytes().subspan(2, 6)); };
    writeTableDefinition(*f.pager, f.allocator(), table);
    EXPECT_EQ(freeAndNext(table.page), "00 00 00 00 00 00") << "the last 8 bytes count as used";
    table.columns.back().name.pop_back();
    writeTableDefinition(*f.pager, f.allocator(), table);
    EXPECT_EQ(freeAndNext(table.page), "02 00 00 00 00 00");
    table.columns.back().name += u"12345"; // 4096 bytes fill the page; one more name unit takes another
    writeTableDefinition(*f.pager, f.allocator(), table);
    EXPECT_EQ(freeAndNext(table.page), "00 00 00 00 00 00");
    table.columns.back().name += u"6";
    writeTableDefinition(*f.pager, f.allocator(), table);
    const PageNumber next{load32(f.pager->read(table.page).data() + 4)};
    EXPECT_NE(next, kNoPage);
    EXPECT_EQ(freeAndNext(table.page).substr(0, 5), "00 00");
    EXPECT_EQ(freeAndNext(next), "ee 0f 00 00 00 00") << "4096 - 10 used - 8";
    operation.done();
}

TEST(TableDefinition, Jet3) {
    TableFixture f("", kJet3PageSize);
    const PageNumber page = f.putDefinition(
        bytes("02 01 00 00 00 00 00 00 | 00 00 00 00 | 03 00 00 00 | 09 00 00 00 | 4e | 03 00 | 01 00 | 02 00"
              "01 00 00 00 | 01 00 00 00 | 00 05 00 00 | 01 05 00 00"
              "aa aa aa aa aa aa aa aa"
              "04 | 00 00 | 00 00 | 00 00 | 00 00 | 09 04 | 00 | 00 | 07 | 00 00 | 04 00"
              "0a | 02 00 | 00 00 | 01 00 | 00 00 | 09 04 | 00 | 00 | 02 | 00 00 | 32 00"
              "02 69 64 | 04 cd f8 d2 b3"
              "02 00 01 | 00 00 00 | ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00 ff ff 00"
              "02 05 00 00 | 07 00 00 00 | 81"
              "00 00 00 00 | 00 00 00 00 | 00 | ff ff ff ff | 00 00 00 00 | 04 04 | 01 | 02 70 6b"));
    const TableDefinition table = readTableDefinition(*f.pager, page, Dialect::Jet3, 936);
    EXPECT_EQ(table.rowCount, 3U);
    EXPECT_EQ(table.lastAutonumber, 9U);
    EXPECT_EQ(table.maxColumns, 3);
    EXPECT_EQ(table.ownedMap, rowId(5, 0));
    ASSERT_EQ(table.columns.size(), 2U);
    EXPECT_EQ(table.columns[0].name, u"id");
    EXPECT_TRUE(table.columns[0].isAutonumber());
    EXPECT_EQ(table.columns[1].name, u"\u7F51\u9875");
    EXPECT_EQ(table.columns[1].length, 100) << "50 characters";
    EXPECT_EQ(table.columns[1].number, 2);
    ASSERT_EQ(table.physicalIndexes.size(), 1U);
    ASSERT_EQ(table.physicalIndexes[0].columns.size(), 2U);
    EXPECT_EQ(table.physicalIndexes[0].columns[0].column, 2);
    EXPECT_TRUE(table.physicalIndexes[0].columns[0].ascending);
    EXPECT_FALSE(table.physicalIndexes[0].columns[1].ascending);
    EXPECT_TRUE(table.physicalIndexes[0].unique());
    ASSERT_EQ(table.logicalIndexes.size(), 1U);
    EXPECT_EQ(table.logicalIndexes[0].name, u"pk");
    EXPECT_EQ(table.logicalIndexes[0].kind, 1);
}

TEST(TableDefinition, OfADamagedFileKeepsItsColumnsWithoutIndexes) {
    TableFixture f;
    const PageNumber page = f.putDefinition(bytes(kPageTable));
    Pager::Operation operation(*f.pager);
    store32(f.pager->edit(page).data() + 47, 4000); // logical indexes
    std::string fault;
    const TableDefinition table = readAvailableDefinition(*f.pager, page, Dialect::Jet4, 1252, fault);
    EXPECT_NE(fault, "");
    EXPECT_EQ(table.columns.size(), 5U);
    EXPECT_EQ(table.columns[4].name, u"content");
    EXPECT_TRUE(table.physicalIndexes.empty());
    EXPECT_TRUE(table.longValueMaps.empty());

    store32(f.pager->edit(page).data() + 51, 3); // physical indexes: what is read as columns then are none
    EXPECT_THROW(static_cast<void>(readAvailableDefinition(*f.pager, page, Dialect::Jet4, 1252, fault)), CorruptFile);
}

TEST(TableDefinition, HostileBytesAreReadOrRefused) {
    TableFixture f;
    const auto good = bytes(kPageTable);
    const PageNumber page = f.putDefinition(good);
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::size_t refused = 0;
    for (int round = 0; round < 3000; ++round) {
        auto bad = good;
        for (int flips = 0; flips < 2; ++flips)
            bad[random() % bad.size()] = static_cast<std::byte>(random());
        Pager::Operation operation(*f.pager);
        std::ranges::copy(bad, f.pager->edit(page).data());
        try {
            static_cast<void>(readTableDefinition(*f.pager, page, Dialect::Jet4));
        } catch (const CorruptFile&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 50U);

    Pager::Operation operation(*f.pager);
    PageEdit edit = f.pager->edit(page);
    edit.data()[4] = static_cast<std::byte>(raw(page));
    EXPECT_THROW(static_cast<void>(readTableDefinition(*f.pager, page, Dialect::Jet4)), CorruptFile) << "a circle";
}

} // namespace
} // namespace kelb::jet
