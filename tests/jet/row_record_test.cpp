#include "jet/error.h"
#include "jet/row_record.h"

#include "tests/jet/hex_bytes.h"

#include <gtest/gtest.h>

#include <random>

namespace kelb::jet {
namespace {

using testing::bytes;
using testing::hex;

Column columnOf(const char16_t* name, ColumnType type, std::uint16_t length, bool fixed) {
    Column column;
    column.name = name;
    column.type = type;
    column.length = length;
    column.flags = fixed ? 3 : 2;
    return column;
}

/// id long, url, refurl, reftxt text, content memo.
TableDefinition pageTable() {
    TableDefinition table;
    table.addColumn(columnOf(u"id", ColumnType::Long, 4, true));
    table.addColumn(columnOf(u"url", ColumnType::Text, 510, false));
    table.addColumn(columnOf(u"refurl", ColumnType::Text, 510, false));
    table.addColumn(columnOf(u"reftxt", ColumnType::Text, 510, false));
    table.addColumn(columnOf(u"content", ColumnType::Memo, 0, false));
    return table;
}

/// The system table of access rights: ObjectId, SID binary, ACM, FInheritable yes/no; blocks in the order of names.
TableDefinition rightsTable() {
    TableDefinition table;
    table.tableType = 0x53;
    table.addColumn(columnOf(u"ObjectId", ColumnType::Long, 4, true));
    table.addColumn(columnOf(u"SID", ColumnType::Binary, 510, false));
    table.addColumn(columnOf(u"ACM", ColumnType::Long, 4, true));
    table.addColumn(columnOf(u"FInheritable", ColumnType::YesNo, 1, true));
    return table;
}

std::string fieldOf(const RowView& row, const TableDefinition& table, const char16_t* name) {
    const auto field = row.field(*table.findColumn(name));
    return field ? "[" + hex(*field) + "]" : "Null";
}

TEST(RowRecord, RowWithNullsEmptyTextAndMemo) {
    const TableDefinition table = pageTable();
    std::vector<StoredField> fields(5);
    fields[0] = {true, bytes("01 00 00 00")};
    fields[1] = {true, bytes("61 00 62 00")};
    fields[3] = {true, {}};
    fields[4] = {true, bytes("04 00 00 80 00 00 00 00 00 00 00 00 63 00 51 7f")};
    const auto expected = bytes("05 00 | 01 00 00 00 | 61 00 62 00 | 04 00 00 80 00 00 00 00 00 00 00 00 63 00 51 7f |"
                                "1a 00 | 0a 00 0a 00 0a 00 06 00 | 04 00 | 1b");
    EXPECT_EQ(hex(buildRow(table, fields)), hex(expected));
    EXPECT_EQ(rowSize(table, 4 + 16), expected.size());

    const RowView row(expected, table, {});
    EXPECT_EQ(fieldOf(row, table, u"id"), "[01 00 00 00]");
    EXPECT_EQ(fieldOf(row, table, u"url"), "[61 00 62 00]");
    EXPECT_EQ(fieldOf(row, table, u"refurl"), "Null");
    EXPECT_EQ(fieldOf(row, table, u"reftxt"), "[]");
    EXPECT_EQ(fieldOf(row, table, u"content"), "[04 00 00 80 00 00 00 00 00 00 00 00 63 00 51 7f]");
}

TEST(RowRecord, YesNoIsABitAndHasNoRoom) {
    const TableDefinition table = rightsTable();
    ASSERT_EQ(table.columns[0].name, u"ACM");
    std::vector<StoredField> fields(4);
    fields[0] = {true, bytes("ff fe 0f 00")};
    fields[1] = {true, {}};
    fields[2] = {true, bytes("01 00 00 0f")};
    fields[3] = {true, bytes("65 8b")};
    const char* row = "04 00 01 00 00 0f ff fe 0f 00 65 8b 0c 00 0a 00 01 00 ";
    EXPECT_EQ(hex(buildRow(table, fields)), std::string(row) + "0f");
    fields[1].set = false;
    const auto built = buildRow(table, fields);
    EXPECT_EQ(hex(built), std::string(row) + "07");
    EXPECT_FALSE(RowView(built, table, {}).isSet(*table.findColumn(u"FInheritable")));
}

TEST(RowRecord, ARowOfFewYesNoFieldsHasRoomForAPointer) {
    TableDefinition table;
    table.addColumn(columnOf(u"a", ColumnType::YesNo, 1, true));
    table.addColumn(columnOf(u"b", ColumnType::YesNo, 1, true));
    std::vector<StoredField> fields(2);
    fields[1].set = true;
    const auto row = buildRow(table, fields);
    EXPECT_EQ(hex(row), "02 00 00 02");
    const RowView view(row, table, {});
    EXPECT_FALSE(view.isSet(table.columns[0]));
    EXPECT_TRUE(view.isSet(table.columns[1]));
}

TEST(RowRecord, RowsOlderThanAColumnReadAsNull) {
    TableDefinition table = pageTable();
    table.addColumn(columnOf(u"later", ColumnType::Text, 20, false));
    table.addColumn(columnOf(u"flag", ColumnType::YesNo, 1, true));
    // Mask bits past the row's own count are noise.
    const auto row = bytes("05 00 | 02 00 00 00 | 61 00 | 08 00 | 08 00 08 00 08 00 06 00 | 04 00 | e3");
    const RowView view(row, table, {});
    EXPECT_EQ(fieldOf(view, table, u"url"), "[61 00]");
    EXPECT_EQ(fieldOf(view, table, u"later"), "Null");
    EXPECT_FALSE(view.isSet(*table.findColumn(u"flag")));
    // Written before the first variable column: no variable part at all.
    TableDefinition fixed;
    fixed.addColumn(columnOf(u"id", ColumnType::Long, 4, true));
    fixed.addColumn(columnOf(u"text", ColumnType::Text, 20, false));
    const auto old = bytes("01 00 | 09 00 00 00 | 01");
    EXPECT_EQ(fieldOf(RowView(old, fixed, {}), fixed, u"id"), "[09 00 00 00]");
    EXPECT_EQ(fieldOf(RowView(old, fixed, {}), fixed, u"text"), "Null");
}

TEST(RowRecord, PlacesOfDeletedColumnsStay) {
    TableDefinition table = pageTable();
    table.columns.erase(table.columns.begin() + 2); // refurl: number 2, var index 1
    Column later = columnOf(u"later", ColumnType::Text, 20, false);
    EXPECT_EQ(table.addColumn(later).varIndex, 4);
    EXPECT_EQ(table.columns.back().number, 5);
    std::vector<StoredField> fields(5);
    fields[0] = {true, bytes("01 00 00 00")};
    fields[1] = {true, bytes("61 00")};
    fields[2] = {true, bytes("62 00")};
    fields[4] = {true, bytes("63 00")};
    const auto row = buildRow(table, fields);
    EXPECT_EQ(hex(row), "06 00 01 00 00 00 61 00 62 00 63 00 "
                        "0c 00 0a 00 0a 00 08 00 08 00 06 00 05 00 2b");
    EXPECT_EQ(fieldOf(RowView(row, table, {}), table, u"later"), "[63 00]");
}

TEST(RowRecord, AFixedTypeMayLieInTheVariablePart) {
    TableDefinition table;
    table.addColumn(columnOf(u"key", ColumnType::Guid, 16, false));
    std::vector<StoredField> fields(1);
    fields[0] = {true, bytes("33 22 11 00 55 44 77 66 88 99 aa bb cc dd ee ff")};
    const auto row = buildRow(table, fields);
    EXPECT_EQ(hex(row), "01 00 33 22 11 00 55 44 77 66 88 99 aa bb cc dd ee ff 12 00 02 00 01 00 01");
}

TEST(RowRecord, Jet3Rows) {
    TableDefinition table;
    table.dialect = Dialect::Jet3;
    table.addColumn(columnOf(u"id", ColumnType::Long, 4, true));
    table.addColumn(columnOf(u"a", ColumnType::Text, 510, false));
    table.addColumn(columnOf(u"b", ColumnType::Text, 510, false));
    const auto small = bytes("03 | 07 00 00 00 | 61 62 63 | 78 | 09 08 05 | 02 | 07");
    const RowView row(small, table, {});
    EXPECT_EQ(fieldOf(row, table, u"id"), "[07 00 00 00]");
    EXPECT_EQ(fieldOf(row, table, u"a"), "[61 62 63]");
    EXPECT_EQ(fieldOf(row, table, u"b"), "[78]");

    // 300 bytes: from var 1 on 256 is to be added, says the byte before the count.
    std::vector<std::byte> jump = bytes("03 | 07 00 00 00");
    jump.insert(jump.end(), 300, std::byte{0x61});
    for (const std::byte b : bytes("78 | 32 31 05 | 01 | 02 | 07"))
        jump.push_back(b);
    EXPECT_EQ(RowView(jump, table, {}).field(*table.findColumn(u"a"))->size(), 300U);
    EXPECT_EQ(fieldOf(RowView(jump, table, {}), table, u"b"), "[78]");

    // 258 bytes with all offsets below 256: the place of the jump byte is there, its content means nothing.
    std::vector<std::byte> unused = bytes("03 | 07 00 00 00");
    unused.insert(unused.end(), 240, std::byte{0x61});
    for (const std::byte b : bytes("01 02 03 04 05 06 07 | fc f5 05 | 00 | 02 | 07"))
        unused.push_back(b);
    ASSERT_EQ(unused.size(), 258U);
    EXPECT_EQ(RowView(unused, table, {}).field(*table.findColumn(u"a"))->size(), 240U);
    EXPECT_EQ(fieldOf(RowView(unused, table, {}), table, u"b"), "[01 02 03 04 05 06 07]");
}

TEST(RowRecord, HostileBytesGiveFieldsInsideTheRecordOrCorruptFile) {
    TableDefinition jet4 = pageTable();
    TableDefinition jet3 = jet4;
    jet3.dialect = Dialect::Jet3;
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::size_t refused = 0, read = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::vector<std::byte> good = bytes("05 00 01 00 00 00 61 00 1a 00 08 00 08 00 08 00 06 00 04 00 1b");
        std::vector<std::byte> row(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(random() % good.size()));
        if (round % 2 == 0)
            row = good;
        for (std::size_t flips = random() % 3; flips > 0 && !row.empty(); --flips)
            row[random() % row.size()] = static_cast<std::byte>(random());
        const TableDefinition& table = round % 4 < 2 ? jet4 : jet3;
        try {
            const RowView view(row, table, {u"base.mdb", PageNumber{7}, 100});
            for (const Column& column : table.columns) {
                const auto field = view.field(column);
                ASSERT_TRUE(!field || field->empty() ||
                            (field->data() >= row.data() && field->data() + field->size() <= row.data() + row.size()));
            }
            ++read;
        } catch (const CorruptFile& e) {
            ASSERT_EQ(e.page(), PageNumber{7});
            ASSERT_GE(e.offset(), 100U);
            ASSERT_LE(e.offset(), 100U + row.size());
            ++refused;
        }
    }
    EXPECT_GT(refused, 100U);
    EXPECT_GT(read, 100U);
}

TEST(RowRecord, DefinitionsThatWouldDamageRowsAreRefused) {
    using Spoil = void (*)(TableDefinition&);
    const Spoil spoils[] = {
        [](TableDefinition& t) { t.columns[1].number = 0; },
        [](TableDefinition& t) { t.columns[1].number = 5; },
        [](TableDefinition& t) { t.columns[2].varIndex = 0; },
        [](TableDefinition& t) { t.columns[2].varIndex = 4; },
        [](TableDefinition& t) { t.columns[0].length = 3; },
        [](TableDefinition& t) {
            t.columns[1].flags = 3;
            t.columns[1].type = ColumnType::Integer;
            t.columns[1].length = 2;
            t.columns[1].fixedOffset = 3; // on the last byte of id
        },
    };
    EXPECT_NO_THROW(requireConsistent(pageTable()));
    for (const Spoil spoil : spoils) {
        TableDefinition table = pageTable();
        spoil(table);
        EXPECT_THROW(requireConsistent(table), Error);
    }
}

} // namespace
} // namespace kelb::jet
