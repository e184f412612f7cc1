#include "jet/table.h"

#include "jet/error.h"

#include "tests/jet/hex_bytes.h"
#include "tests/jet/table_fixture.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelb::jet {
namespace {

using testing::autonumber;
using testing::bytes;
using testing::column;
using testing::hex;
using testing::NewIndexOf;
using testing::TableFixture;
using Kind = Error::Kind;

Value text(const char16_t* value) {
    return std::u16string(value);
}
Value text(std::size_t length, char16_t unit = u'a') {
    return std::u16string(length, unit);
}

/// id, url (unique), refurl (required by its index), content.
Table& pageTable(TableFixture& f) {
    return f.make(u"wxAll",
                  {autonumber(u"id"), column(u"url", ColumnType::Text), column(u"refurl", ColumnType::Text),
                   column(u"content", ColumnType::Memo)},
                  {{u"urlidx", {u"url"}, 0x81}, {u"refidx", {u"refurl"}, 0x88}});
}

template <class Operation>
std::string refusal(Kind kind, Operation operation) {
    try {
        operation();
    } catch (const Error& e) {
        EXPECT_EQ(static_cast<int>(e.kind()), static_cast<int>(kind)) << e.what();
        return e.what();
    }
    ADD_FAILURE() << "nothing refused";
    return "";
}

std::string contents(const Table& table) {
    std::string all;
    Row row;
    for (TableScan scan = table.scan(); scan.next(row);)
        all += std::to_string(row.id().packed()) + ": " + hex(row.bytes()) + "\n";
    return all;
}

Value valueOf(const Table& table, RowId id, const char16_t* name) {
    Row row;
    return table.read(id, row) ? row.value(*table.definition().findColumn(name)) : Value(text(u"no such row"));
}

TEST(Table, EveryTypeKeepsItsBoundaryValues) {
    TableFixture f;
    std::vector<Column> columns = {column(u"yes", ColumnType::YesNo),       column(u"byte", ColumnType::Byte),
                                   column(u"int", ColumnType::Integer),     column(u"long", ColumnType::Long),
                                   column(u"money", ColumnType::Currency),  column(u"single", ColumnType::Single),
                                   column(u"double", ColumnType::Double),   column(u"date", ColumnType::DateTime),
                                   column(u"bin", ColumnType::Binary, 510), column(u"text", ColumnType::Text),
                                   column(u"ole", ColumnType::Ole),         column(u"memo", ColumnType::Memo),
                                   column(u"guid", ColumnType::Guid),       column(u"num", ColumnType::Numeric)};
    Table& table = f.make(u"types", columns);
    using Limits = std::numeric_limits<std::int64_t>;
    const std::vector<std::vector<Value>> rows = {
        {true, std::uint8_t{255}, std::int16_t{32767}, std::int32_t{2147483647}, Currency{Limits::max()},
         std::numeric_limits<float>::max(), std::numeric_limits<double>::max(), OleDate{2958465},
         Binary(510, std::byte{7}), text(255, u'\u7F51'), Binary(4077, std::byte{1}), text(100000, u'\u7F51'),
         Guid{{1, 2, 3}}, Decimal{false, {0, 0, 0x0DE0B6B3, 0xA763FFFF}, 0}},
        {false, std::uint8_t{0}, std::int16_t{-32768}, std::numeric_limits<std::int32_t>::lowest(),
         Currency{Limits::lowest()}, -0.0F, std::numeric_limits<double>::denorm_min(), OleDate{-1.25}, Binary{},
         text(u""), Binary{}, text(u""), Guid{}, Decimal{true, {0, 0, 0, 1}, 0}},
        {false, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}},
        // Inside, a single page, a chain: on both sides of each border.
        {false, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Binary(64), text(62), Null{},
         Null{}},
        {false, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Binary(65), text(63), Null{},
         Null{}},
        {false, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Binary(4076), text(2039),
         Null{}, Null{}},
    };
    std::vector<RowId> ids;
    for (const auto& row : rows)
        ids.push_back(table.insert(row));
    Table& again = f.reopen();
    std::u16string out;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Row row;
        ASSERT_TRUE(again.read(ids[i], row));
        for (std::size_t c = 0; c < columns.size(); ++c)
            EXPECT_EQ(row.value(again.definition().columns[c]), rows[i][c]) << "row " << i << ", column " << c;
        EXPECT_EQ(row.text(again.definition().columns[11], out), !isNull(rows[i][11]));
        EXPECT_EQ(out, isNull(rows[i][11]) ? u"" : std::get<std::u16string>(rows[i][11]));
    }
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, RowsLieAsTheOriginalEngineLaysThem) {
    TableFixture f;
    Table& table =
        f.make(u"t", {autonumber(u"id"), column(u"url", ColumnType::Text), column(u"refurl", ColumnType::Text),
                      column(u"reftxt", ColumnType::Text), column(u"content", ColumnType::Memo)});
    const auto stored = [&](const std::vector<Value>& values) {
        Row row;
        EXPECT_TRUE(table.read(table.insert(values), row));
        return hex(row.bytes());
    };
    EXPECT_EQ(stored({Null{}, text(u"ab"), Null{}, text(u""), text(u"c\u7F51")}),
              hex(bytes("05 00 | 01 00 00 00 | 61 00 62 00 | 04 00 00 80 00 00 00 00 00 00 00 00 63 00 51 7f |"
                        "1a 00 | 0a 00 0a 00 0a 00 06 00 | 04 00 | 1b")));
    EXPECT_EQ(stored({Null{}, Null{}, Null{}, Null{}, text(u"abc")}).substr(18, 50),
              "05 00 00 80 00 00 00 00 00 00 00 00 ff fe 61 62 63")
        << "memos inside are compressed without a flag";
    EXPECT_EQ(stored({Null{}, Null{}, Null{}, Null{}, text(1000)}).substr(18, 11), "d0 07 00 40") << "single: raw";
    EXPECT_EQ(stored({Null{}, Null{}, Null{}, Null{}, text(5000)}).substr(18, 11), "10 27 00 00") << "chain: raw";
    EXPECT_EQ(stored({Null{}, Null{}, Null{}, Null{}, text(u"")}).substr(18, 35),
              "00 00 00 80 00 00 00 00 00 00 00 00");
}

TEST(Table, RefusalsNameTheirPlaceAndChangeNothing) {
    TableFixture f;
    Table& table = pageTable(f);
    const RowId first = table.insert(std::vector<Value>{Null{}, text(u"http://A"), text(u"r"), text(5000)});
    const RowId second = table.insert(std::vector<Value>{Null{}, text(u"http://b"), text(u"r"), text(5000)});
    const std::string before = contents(table);
    const std::uint32_t pages = f.pager->pageCount();
    const auto insert = [&](Value url, Value ref) {
        table.insert(std::vector<Value>{Null{}, std::move(url), std::move(ref), text(9000)});
    };
    const std::string duplicate = refusal(Kind::DuplicateKey, [&] { insert(text(u"HTTP://a "), text(u"r")); });
    EXPECT_NE(duplicate.find("table wxAll, index urlidx: url = HTTP://a"), std::string::npos) << duplicate;
    const std::string null = refusal(Kind::NullNotAllowed, [&] { insert(text(u"new"), Null{}); });
    EXPECT_NE(null.find("table wxAll, index refidx"), std::string::npos) << null;
    const std::string key = refusal(Kind::KeyNotPossible, [&] { insert(text(u"new"), text(u"\u30AB")); });
    EXPECT_NE(key.find("table wxAll, index refidx, field refurl: "), std::string::npos) << key;
    EXPECT_NE(key.find("deletions still work"), std::string::npos) << key;
    EXPECT_EQ(refusal(Kind::FieldTooSmall, [&] { insert(text(300), text(u"r")); }),
              "the field is too small: table wxAll, field url, 255 characters allowed, 300 given");
    refusal(Kind::DuplicateKey, [&] {
        table.update(second, std::vector<Change>{{1, text(u"http://a")}, {3, text(3)}});
    });
    refusal(Kind::NullNotAllowed, [&] { table.update(second, std::vector<Change>{{0, Null{}}}); });
    refusal(Kind::RowDeleted, [&] { table.update({first.page, 99}, {}); });
    EXPECT_EQ(contents(table), before);
    EXPECT_EQ(f.pager->pageCount(), pages);
    EXPECT_EQ(table.lastAutonumber(), 2);
    EXPECT_EQ(f.faults(), "");

    // Its own key is no duplicate, in other letters neither; a key that cannot be made hinders no other field.
    table.update(first, std::vector<Change>{{1, text(u"HTTP://a")}, {3, text(u"\u30AB")}});
    EXPECT_EQ(valueOf(table, first, u"url"), text(u"HTTP://a"));
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, AnErasedRowCanHaveItsPlaceAgain) {
    TableFixture f;
    Table& table = pageTable(f);
    const auto rowOf = [](int i) {
        return std::vector<Value>{std::int32_t{i}, text(static_cast<std::size_t>(i)), text(u"r"), text(3000)};
    };
    std::vector<RowId> rows;
    for (int i = 1; i <= 120; ++i)
        rows.push_back(table.insert(rowOf(i)));
    ASSERT_NE(rows.front().page, rows[90].page);
    const auto places = [&] {
        std::vector<RowId> ids;
        Row row;
        for (TableScan scan = table.scan(); scan.next(row);)
            ids.push_back(row.id());
        return ids;
    };
    const std::vector<RowId> before = places();
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (i < 80 || i % 3 == 0) // whole pages among them, which go back to the file
            table.erase(rows[i]);
    table.reclaimPages(rows);
    for (std::size_t i = rows.size(); i-- > 0;)
        if (i < 80 || i % 3 == 0) {
            EXPECT_EQ(table.insert(rowOf(static_cast<int>(i) + 1), rows[i]).packed(), rows[i].packed()) << i;
        }
    EXPECT_TRUE(places() == before);
    EXPECT_EQ(f.faults(), "");

    // What cannot be had is passed over: a place that is taken, that the file has not, that is no row's.
    for (const RowId wanted : {rows[5], RowId{PageNumber{99999}, 0}, RowId{PageNumber{1}, 0}, RowId{kNoPage, 3},
                               RowId{table.definition().page, 0}, RowId{rows[5].page, 255}}) {
        const RowId id = table.insert(rowOf(200 + static_cast<int>(wanted.packed() % 7)), wanted);
        EXPECT_NE(id.packed(), wanted.packed());
        table.erase(id);
    }
    EXPECT_TRUE(places() == before);
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, AFailingDiskLeavesTableAndIndexesAsTheyWere) {
    TableFixture f;
    Table& table = pageTable(f);
    for (int i = 0; i < 40; ++i)
        table.insert(std::vector<Value>{Null{}, text(static_cast<std::size_t>(1 + i)), text(u"r"), text(3000)});
    f.reopen();
    f.options.cacheBytes = 0;
    f.reopen();
    const std::string before = contents(*f.table);
    int failures = 0;
    for (bool failed = true; failed;) {
        int left = failures;
        f.files.beforeOperation = [&](std::string_view operation, std::u16string_view path) {
            if (operation == "read" && left-- == 0)
                throw platform::FileError(platform::FileError::Kind::Other, "read", path, 5, "the disk fails");
        };
        failed = false;
        try {
            f.table->insert(std::vector<Value>{Null{}, text(200), text(u"s"), text(9000)});
        } catch (const platform::FileError&) {
            failed = true;
            ++failures;
        }
        f.files.beforeOperation = nullptr;
        if (failed) {
            ASSERT_EQ(contents(*f.table), before);
            ASSERT_EQ(f.faults(), "") << "after failure " << failures;
            f.reopen();
        }
    }
    EXPECT_GT(failures, 2);
    EXPECT_NE(contents(*f.table), before);
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, RecordsThatAreTooLarge) {
    TableFixture f;
    std::vector<Column> columns;
    for (int i = 0; i < 10; ++i)
        columns.push_back(column(u"t" + std::u16string(1, static_cast<char16_t>(u'0' + i)), ColumnType::Text));
    columns.push_back(column(u"m1", ColumnType::Memo));
    columns.push_back(column(u"m2", ColumnType::Memo));
    Table& table = f.make(u"wide", columns);
    std::vector<Value> row(12, Null{});
    for (std::size_t i = 0; i < 7; ++i)
        row[i] = text(255, u'\u7F51');
    // 2 + 7 × 510 + offsets 2 × 14 + mask 2 leave 458 bytes: 388 and a memo of 72 are 2 too many.
    row[7] = text(194, u'\u7F51');
    row[10] = text(30, u'\u7F51');
    const RowId id = table.insert(row);
    Row read;
    ASSERT_TRUE(table.read(id, read));
    EXPECT_EQ(read.bytes().size(), 2U + 7 * 510 + 388 + 12 + 28 + 2);
    EXPECT_EQ(valueOf(table, id, u"m1"), row[10]);
    row[8] = text(30, u'\u7F51');
    const std::string refused = refusal(Kind::RecordTooLarge, [&] { table.insert(row); });
    EXPECT_NE(refused.find("table wide, 4060 bytes allowed"), std::string::npos) << refused;
    // A memo that stays inside moves out when another field needs its room.
    row[7] = Null{};
    row[8] = Null{};
    row[11] = text(3); // compressed inside
    const RowId other = table.insert(row);
    table.update(other, std::vector<Change>{{7, text(200, u'\u7F51')}, {8, text(4, u'\u7F51')}});
    EXPECT_EQ(valueOf(table, other, u"m1"), row[10]);
    EXPECT_EQ(valueOf(table, other, u"m2"), row[11]);
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, Autonumbers) {
    TableFixture f;
    Column guid = column(u"g", ColumnType::Guid);
    guid.flags = 0x42;
    Table& table = f.make(u"t", {autonumber(u"id"), guid}, {{u"pk", {u"id"}, 0x89}});
    const auto insert = [&](Value id) {
        return valueOf(table, table.insert(std::vector<Value>{std::move(id), Null{}}), u"id");
    };
    EXPECT_EQ(insert(Null{}), Value(std::int32_t{1}));
    EXPECT_EQ(insert(std::int32_t{10}), Value(std::int32_t{10}));
    EXPECT_EQ(insert(std::int32_t{5}), Value(std::int32_t{5}));
    EXPECT_EQ(insert(Null{}), Value(std::int32_t{11})) << "the highest counts, given or made";
    EXPECT_EQ(table.lastAutonumber(), 11);
    // A stored number that lags behind the rows, as other writers leave it.
    f.alter([](TableDefinition& definition) { definition.lastAutonumber = 9; });
    EXPECT_EQ(insert(Null{}), Value(std::int32_t{12}));
    EXPECT_EQ(insert(std::int32_t{2147483647}), Value(std::int32_t{2147483647}));
    refusal(Kind::FieldTooSmall, [&] { insert(Null{}); });
    Row row;
    std::set<std::string> guids;
    for (TableScan scan = table.scan(); scan.next(row);)
        guids.insert(hex(*row.field(*table.definition().findColumn(u"g"))));
    EXPECT_EQ(guids.size(), 6U);
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, RequiredColumnsAndYesNo) {
    TableFixture f;
    Column id = column(u"n", ColumnType::Long);
    id.required = true;
    Table& table = f.make(u"t", {id, column(u"flag", ColumnType::YesNo)});
    const std::string refused = refusal(Kind::NullNotAllowed, [&] {
        table.insert(std::vector<Value>{Null{}, Null{}});
    });
    EXPECT_NE(refused.find("table t, field n"), std::string::npos) << refused;
    const RowId row = table.insert(std::vector<Value>{std::int32_t{1}, Null{}});
    EXPECT_EQ(valueOf(table, row, u"flag"), Value(false));
    table.update(row, std::vector<Change>{{1, std::int32_t{-1}}});
    EXPECT_EQ(valueOf(table, row, u"flag"), Value(true));
    table.update(row, std::vector<Change>{{0, std::int32_t{2}}});
    EXPECT_EQ(valueOf(table, row, u"flag"), Value(true)) << "untouched fields stay";
    refusal(Kind::NullNotAllowed, [&] { table.update(row, std::vector<Change>{{0, Null{}}}); });
}

TEST(Table, ColumnsAddedAndDroppedBetweenRows) {
    TableFixture f;
    Table& table =
        f.make(u"t", {column(u"a", ColumnType::Text), column(u"b", ColumnType::Text), column(u"n", ColumnType::Long)});
    const RowId old = table.insert(std::vector<Value>{text(u"A"), text(u"B"), std::int32_t{1}});
    // b goes; c comes and must not be given b's place, where the old row still has its text.
    f.alter([](TableDefinition& definition) {
        std::erase_if(definition.columns, [](const Column& each) { return each.name == u"b"; });
        definition.addColumn(column(u"c", ColumnType::Text));
        definition.addColumn(column(u"flag", ColumnType::YesNo));
    });
    EXPECT_EQ(valueOf(table, old, u"c"), Value(Null{}));
    EXPECT_EQ(valueOf(table, old, u"flag"), Value(false));
    ASSERT_EQ(table.definition().columns.size(), 4U);
    const RowId fresh = table.insert(std::vector<Value>{text(u"A2"), std::int32_t{2}, text(u"C2"), true});
    table.update(old, std::vector<Change>{{1, std::int32_t{3}}});
    EXPECT_EQ(valueOf(table, old, u"a"), text(u"A"));
    EXPECT_EQ(valueOf(table, old, u"n"), Value(std::int32_t{3}));
    EXPECT_EQ(valueOf(table, old, u"c"), Value(Null{}));
    EXPECT_EQ(valueOf(table, fresh, u"c"), text(u"C2"));
    EXPECT_EQ(valueOf(table, fresh, u"flag"), Value(true));
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, DefinitionKeepsItsColumnsOverAnAbortElsewhere) {
    TableFixture f;
    Table& table = pageTable(f);
    const Column* url = table.definition().findColumn(u"url");
    {
        Pager::Operation aborted(*f.pager);
        f.pager->edit(PageNumber{0});
    }
    table.insert(std::vector<Value>{Null{}, text(u"u"), text(u"r"), Null{}});
    EXPECT_EQ(table.definition().findColumn(u"url"), url);
}

TEST(Table, MovedRecordsKeepOnePointer) {
    TableFixture f;
    Table& table = f.make(u"t", {column(u"a", ColumnType::Text), column(u"b", ColumnType::Text)});
    const auto rowOf = [](std::size_t a, std::size_t b) { return std::vector<Value>{text(a), text(b)}; };
    const RowId moving = table.insert(rowOf(10, 0));
    std::vector<RowId> others;
    for (int i = 0; i < 20; ++i)
        others.push_back(table.insert(rowOf(100, 0)));
    const std::size_t lengths[] = {250, 255, 20, 240};
    for (const std::size_t length : lengths) {
        table.update(moving, std::vector<Change>{{0, text(length)}, {1, text(length)}});
        for (int i = 0; i < 4; ++i) // fills the target's page, so that the next growth moves it on
            table.insert(rowOf(200, 200));
        EXPECT_EQ(valueOf(table, moving, u"b"), text(length));
        ASSERT_EQ(f.faults(), "") << "length " << length;
    }
    const PageRef page = f.pager->read(moving.page);
    EXPECT_EQ(DataPageView(*f.pager, page).slot(moving.slot).kind, SlotKind::Pointer);
    // With room on its own page again a record that must move comes home.
    for (const RowId other : others)
        if (other.page == moving.page)
            table.erase(other);
    for (int i = 0; i < 12; ++i)
        table.insert(rowOf(255, 255));
    EXPECT_EQ(f.faults(), "");
    table.erase(moving);
    EXPECT_EQ(valueOf(table, moving, u"a"), text(u"no such row"));
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, LookingUpByIndex) {
    TableFixture f;
    Table& table = pageTable(f);
    const TableDefinition& definition = table.definition();
    std::vector<RowId> same;
    for (int i = 0; i < 300; ++i) {
        const RowId id =
            table.insert(std::vector<Value>{Null{}, text(static_cast<std::size_t>(i / 2 + 1), i % 2 == 0 ? u'a' : u'b'),
                                            text(i % 3 == 0 ? u"Same" : u"other"), Null{}});
        if (i % 3 == 0)
            same.push_back(id);
    }
    const auto index = table.indexOn(*definition.findColumn(u"refurl"));
    ASSERT_TRUE(index.has_value());
    EXPECT_EQ(table.lookUp(*index, text(u"SAME")), same);
    EXPECT_EQ(table.lookUp(*index, text(u"none")), std::vector<RowId>{});
    EXPECT_EQ(table.lookUp(*index, text(256)), std::vector<RowId>{}) << "longer than the field";
    EXPECT_EQ(table.indexOn(*definition.findColumn(u"content")), std::nullopt);
    EXPECT_EQ(table.lookUp(*table.indexOn(*definition.findColumn(u"url")), text(7)).size(), 1U);
    EXPECT_EQ(table.definition().physicalIndexes[1].distinctKeys, 0U) << "as of reading";
    f.reopen();
    EXPECT_EQ(f.table->definition().physicalIndexes[0].distinctKeys, 300U);
    EXPECT_EQ(f.table->definition().physicalIndexes[1].distinctKeys, 2U);
}

TEST(Table, UnknownColumnsAreReadAroundAndNotWritten) {
    TableFixture f;
    Table& table = f.make(u"t", {column(u"n", ColumnType::Long), column(u"a", ColumnType::Text)});
    const RowId row = table.insert(std::vector<Value>{std::int32_t{5}, text(u"x")});
    f.alter([](TableDefinition& definition) { definition.columns[1].type = static_cast<ColumnType>(0x77); });
    EXPECT_EQ(valueOf(table, row, u"n"), Value(std::int32_t{5}));
    EXPECT_EQ(valueOf(table, row, u"a"), Value(bytes("78 00")));
    const std::string refused = refusal(Kind::BadDefinition, [&] { table.erase(row); });
    EXPECT_NE(refused.find("table t cannot be written: field a"), std::string::npos) << refused;
}

TEST(Table, KeysInAnUnknownOrderHinderNoDeletion) {
    TableFixture f;
    Table& table =
        f.make(u"t", {column(u"a", ColumnType::Text), column(u"n", ColumnType::Long)}, {{u"ia", {u"a"}, 0x80}});
    std::vector<RowId> rows;
    for (int i = 0; i < 5; ++i)
        rows.push_back(table.insert(std::vector<Value>{text(static_cast<std::size_t>(i) + 1), std::int32_t{i}}));
    f.alter([](TableDefinition& definition) { definition.columns[0].sortOrder = {0x0419, 0}; });
    refusal(Kind::KeyNotPossible, [&] { table.insert(std::vector<Value>{text(u"x"), Null{}}); });
    EXPECT_EQ(table.indexOn(table.definition().columns[0]), std::nullopt);
    table.update(rows[1], std::vector<Change>{{0, text(2)}, {1, std::int32_t{9}}}); // the same text: no key needed
    table.update(rows[2], std::vector<Change>{{0, Null{}}});                        // Null has a key in every order
    table.erase(rows[3]);
    f.alter([](TableDefinition& definition) { definition.columns[0].sortOrder = {}; });
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, KeysThatAnotherWriterMadeDifferentlyHinderNoDeletion) {
    TableFixture f;
    Table& table = f.make(u"t", {column(u"a", ColumnType::Text)}, {{u"ia", {u"a"}, 0x81}});
    const RowId row = table.insert(std::vector<Value>{text(u"\u00DF-a")});
    const PhysicalIndex index = table.definition().physicalIndexes[0];
    IndexTree tree(*f.pager, f.allocator(), {index.root, index.ownedMap, f.definitionPage});
    Pager::Operation operation(*f.pager);
    tree.removeRow(row);
    tree.insert(bytes("7f 6b 6b 4a 01 01 01 01 80 0b 06 82 00"), row); // the hyphen at place 1
    table.update(row, std::vector<Change>{{0, text(u"b")}});
    operation.done();
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, KeysThatDoNotFitAnIndexPage) {
    TableFixture f;
    std::vector<Column> columns;
    NewIndexOf wide{u"wide", {}, 0x80};
    for (const char16_t* name : {u"a", u"b", u"c", u"d"}) {
        columns.push_back(column(name, ColumnType::Text));
        wide.columns.emplace_back(name);
    }
    Table& table = f.make(u"t", columns, {wide});
    const std::vector<Value> row(4, text(255, u'\u7F51'));
    const std::string refused = refusal(Kind::KeyNotPossible, [&] { table.insert(row); });
    EXPECT_NE(refused.find("table t, index wide"), std::string::npos) << refused;
    EXPECT_EQ(f.faults(), "");
}

TEST(Table, DamagedRowsAreNamedNotFollowed) {
    TableFixture f;
    Table& table = pageTable(f);
    const RowId row = table.insert(std::vector<Value>{Null{}, text(u"u"), text(u"r"), text(5000)});
    const auto damage = [&](std::size_t fromRowEnd, std::uint8_t value) {
        Pager::Operation operation(*f.pager);
        f.pager->edit(row.page).data()[kPageSize - fromRowEnd] = std::byte{value};
        operation.done();
    };
    // … | content header of 12 bytes | end | 3 offsets | count | mask
    const std::size_t header = 1 + 2 + 6 + 2 + 12;
    Row read;
    std::u16string out;
    const auto readContent = [&] {
        ASSERT_TRUE(table.read(row, read));
        read.text(*table.definition().findColumn(u"content"), out);
    };
    readContent();
    EXPECT_EQ(out.size(), 5000U);
    damage(header - 3, 0x3F);
    refusal(Kind::Corrupt, readContent); // a length of a gigabyte
    damage(header - 3, 0x00);
    damage(header - 5, 0xF0);
    const std::string page = refusal(Kind::Corrupt, readContent); // a pointer past the end of the file
    EXPECT_NE(page.find("base.mdb"), std::string::npos) << page;
    damage(10, 0xFF); // where the variable fields end
    try {
        readContent();
        FAIL();
    } catch (const CorruptFile& e) {
        EXPECT_EQ(e.page(), row.page);
    }
}

} // namespace
} // namespace kelb::jet
