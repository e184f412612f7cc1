#include "jet/database.h"

#include "jet/byte_order.h"
#include "jet/empty_database.h"

#include "tests/jet/database_fixture.h"
#include "tests/platform/text_matchers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace kelb::jet {
namespace {

using ::testing::HasSubstr;
using namespace testing;
using Kind = Error::Kind;
using Access = Pager::Access;

// ---- Tables ----

NewTable articles() {
    NewTable table;
    table.name = u"wxAll";
    table.columns = {{.name = u"id", .type = ColumnType::Long, .autonumber = true},
                     {.name = u"url", .characters = 255, .required = true},
                     {.name = u"content", .type = ColumnType::Memo},
                     {.name = u"cid", .type = ColumnType::Integer},
                     {.name = u"done", .type = ColumnType::YesNo},
                     {.name = u"price", .type = ColumnType::Numeric, .precision = 10, .scale = 2}};
    table.indexes = {{.name = u"pk", .columns = {{u"id"}}, .primary = true},
                     {.name = u"byUrl", .columns = {{u"url"}}, .unique = true},
                     {.name = u"byCid", .columns = {{u"cid", false}, {u"ID"}}, .ignoreNulls = true}};
    return table;
}

TEST(CreateTable, IsThereAfterReopeningWithAllItsParts) {
    Machine machine;
    {
        auto database = machine.create();
        Table& table = database->createTable(articles());
        insertRow(table, {Null{}, u"http://a/1", std::u16string(3000, u'网'), std::int16_t{28}, true});
        database->commit();
    }
    auto database = machine.open();
    Table& table = database->table(u"WXALL");
    const TableDefinition& definition = table.definition();
    ASSERT_EQ(definition.columns.size(), 6U);
    EXPECT_EQ(table.name(), u"wxAll");
    EXPECT_EQ(definition.columns[0].flags, 0x07);
    EXPECT_EQ(definition.columns[1].length, 510);
    EXPECT_TRUE(definition.columns[1].required);
    EXPECT_FALSE(definition.columns[2].required);
    EXPECT_EQ(definition.columns[5].scale, 2);
    ASSERT_EQ(definition.physicalIndexes.size(), 3U);
    EXPECT_EQ(definition.physicalIndexes[0].flags, 0x89);
    EXPECT_EQ(definition.physicalIndexes[1].flags, 0x81);
    EXPECT_EQ(definition.physicalIndexes[2].flags, 0x82);
    EXPECT_FALSE(definition.physicalIndexes[2].columns[0].ascending);
    EXPECT_EQ(definition.logicalIndexes[0].name, u"byCid") << "by name";
    EXPECT_EQ(definition.logicalIndexes[2].kind, 1);

    const auto found = table.lookUp(*table.indexOn(definition.columns[1]), u"HTTP://A/1");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(valueOf(table, found[0], u"content"), Value(std::u16string(3000, u'网')));
    EXPECT_EQ(valueOf(table, found[0], u"id"), Value(std::int32_t{1}));
    EXPECT_THAT(refusal([&] { insertRow(table, {Null{}, Null{}}); }, Kind::NullNotAllowed), HasSubstr("url"));
}

TEST(CreateTable, EntersTheCatalogAndInheritsTheRights) {
    Machine machine;
    auto database = machine.create();
    machine.clock.time = {2016, 1, 2, 12, 0, 0}; // 42371.5
    const auto id = static_cast<std::int32_t>(raw(database->createTable(articles()).definition().page));
    EXPECT_EQ(id, 16);

    Table& objects = database->table(u"MSysObjects");
    const auto found = objects.lookUp(*objects.indexOn(*objects.definition().findColumn(u"Id")), id);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(valueOf(objects, found[0], u"DateCreate"), Value(OleDate{42371.5}));
    EXPECT_EQ(valueOf(objects, found[0], u"ParentId"), Value(std::int32_t{0x0F000001}));
    EXPECT_EQ(valueOf(objects, found[0], u"Owner"), Value(jet::Binary{std::byte{0x64}, std::byte{0x8B}}));

    Table& rights = database->table(u"MSysACEs");
    std::vector<std::string> given;
    Row row;
    for (TableScan scan = rights.scan(); scan.next(row);) {
        const auto value = [&](std::u16string_view column) {
            return row.value(*rights.definition().findColumn(column));
        };
        if (value(u"ObjectId") == Value(id))
            given.push_back(platform::toUtf8(showValue(value(u"ACM")) + u" " + showValue(value(u"SID")) + u" " +
                                             showValue(value(u"FInheritable"))));
    }
    // 0xF00FE to the owner in place of "creator owner", 0xFFEFF to the users.
    const std::string no = platform::toUtf8(showValue(Value(false)));
    const auto bytes = [](unsigned a, unsigned b) {
        return platform::toUtf8(showValue(jet::Binary{static_cast<std::byte>(a), static_cast<std::byte>(b)}));
    };
    EXPECT_EQ(given, (std::vector<std::string>{"983294 " + bytes(0x64, 0x8B) + " " + no,
                                               "1048319 " + bytes(0x65, 0x8B) + " " + no}));
}

struct BadTable {
    const char* name;
    std::function<void(NewTable&)> change; ///< of articles()
    Kind kind;
    const char* text;
};
class RefusedTable : public ::testing::TestWithParam<BadTable> {};

TEST_P(RefusedTable, LeavesNoTrace) {
    Machine machine;
    auto database = machine.create();
    database->createTable({.name = u"Taken", .columns = {{.name = u"a"}}, .indexes = {}});
    database->commit();
    const std::uint32_t pages = database->pager().pageCount();
    NewTable table = articles();
    GetParam().change(table);
    EXPECT_THAT(refusal([&] { database->createTable(table); }, GetParam().kind), HasSubstr(GetParam().text));
    EXPECT_EQ(database->pager().pageCount(), pages);
    EXPECT_FALSE(database->pager().hasChanges());
    EXPECT_FALSE(database->hasTable(u"wxAll"));
    database->createTable(articles());
    EXPECT_TRUE(database->hasTable(u"wxAll"));
}

NewIndex indexOn(std::u16string column) {
    return {.name = u"i", .columns = {{std::move(column)}}};
}

const BadTable kBadTables[] = {
    BadTable{"no_name", [](NewTable& t) { t.name = u""; }, Kind::BadName, "1 to 64"},
    BadTable{"long_name", [](NewTable& t) { t.name = std::u16string(65, u'n'); }, Kind::BadName, "1 to 64"},
    BadTable{"dot", [](NewTable& t) { t.name = u"a.b"; }, Kind::BadName, "character ."},
    BadTable{"leading_blank", [](NewTable& t) { t.name = u" a"; }, Kind::BadName, "blank"},
    BadTable{"control_character", [](NewTable& t) { t.columns[0].name = u"a\tb"; }, Kind::BadName, "control"},
    BadTable{"bracket_in_field", [](NewTable& t) { t.columns[0].name = u"a]"; }, Kind::BadName, "character ]"},
    BadTable{"bracket_in_index", [](NewTable& t) { t.indexes[0].name = u"[a"; }, Kind::BadName, "character ["},
    BadTable{"taken_in_other_case", [](NewTable& t) { t.name = u"TAKEN"; }, Kind::AlreadyExists, "Taken"},
    BadTable{"system_name", [](NewTable& t) { t.name = u"msysobjects"; }, Kind::AlreadyExists, "MSysObjects"},
    BadTable{"field_twice", [](NewTable& t) { t.columns[1].name = u"ID"; }, Kind::AlreadyExists, "twice"},
    BadTable{"no_fields", [](NewTable& t) { t.columns.clear(); }, Kind::BadDefinition, "no fields"},
    BadTable{"two_autonumbers",
             [](NewTable& t) { t.columns.push_back({.name = u"b", .type = ColumnType::Long, .autonumber = true}); },
             Kind::BadDefinition, "autonumber"},
    BadTable{"autonumber_text", [](NewTable& t) { t.columns[1].autonumber = true; }, Kind::BadDefinition,
             "number itself"},
    BadTable{"text_too_long", [](NewTable& t) { t.columns[1].characters = 256; }, Kind::BadDefinition, "MEMO"},
    BadTable{"too_precise", [](NewTable& t) { t.columns[5].precision = 29; }, Kind::BadDefinition, "28 digits"},
    BadTable{"type_of_a_later_access", [](NewTable& t) { t.columns[3].type = ColumnType::BigInteger; },
             Kind::BadDefinition, "Access 2000"},
    BadTable{"too_many_fields",
             [](NewTable& t) {
                 for (char16_t i = 0; i < 250; ++i)
                     t.columns.push_back({.name = u"f" + std::u16string(1, char16_t(0x4E00 + i))});
             },
             Kind::TooManyFields, "255"},
    BadTable{"rows_that_cannot_fit",
             [](NewTable& t) {
                 for (char16_t i = 0; i < 240; ++i)
                     t.columns.push_back(
                         {.name = u"f" + std::u16string(1, char16_t(0x4E00 + i)), .type = ColumnType::Numeric});
             },
             Kind::BadDefinition, "4060"},
    BadTable{"index_without_field", [](NewTable& t) { t.indexes.push_back(indexOn(u"nosuch")); }, Kind::NoSuchColumn,
             "nosuch"},
    BadTable{"index_twice", [](NewTable& t) { t.indexes[1].name = u"PK"; }, Kind::AlreadyExists, "PK"},
    BadTable{"two_primary_keys", [](NewTable& t) { t.indexes[1].primary = true; }, Kind::AlreadyExists, "pk"},
    BadTable{"index_of_nothing", [](NewTable& t) { t.indexes[0].columns.clear(); }, Kind::BadDefinition, "1 to 10"},
    BadTable{"field_twice_in_index",
             [](NewTable& t) {
                 t.indexes[0].columns = {{u"id"}, {u"ID"}};
             },
             Kind::BadDefinition, "twice"},
    BadTable{"index_on_ole",
             [](NewTable& t) {
                 t.columns[2].type = ColumnType::Ole;
                 t.indexes.push_back(indexOn(u"content"));
             },
             Kind::BadDefinition, "cannot be indexed"},
    BadTable{"too_many_indexes",
             [](NewTable& t) {
                 for (char16_t i = 0; i < 30; ++i)
                     t.indexes.push_back({.name = std::u16string(1, char16_t(0x4E00 + i)), .columns = {{u"id"}}});
             },
             Kind::BadDefinition, "32 indexes"},
    BadTable{"name_without_a_key", [](NewTable& t) { t.name = u"カナ"; }, Kind::KeyNotPossible, "MSysObjects"}};

INSTANTIATE_TEST_SUITE_P(Definitions, RefusedTable, ::testing::ValuesIn(kBadTables),
                         [](const auto& table) { return std::string(table.param.name); });

/// Files of Chinese editions have an order whose keys of Chinese names are unknown.
TEST(CreateTable, AChineseNameInAChineseFileIsRefusedBeforeAnythingChanges) {
    Machine machine;
    {
        PagerFixture f;
        Pager& pager = f.open();
        PageAllocator allocator(pager);
        Pager::Operation operation(pager);
        writeEmptyDatabase(pager, allocator, machine.random,
                           {.created = {42000}, .sortOrder = {0x0804, 0}, .codePage = 936});
        operation.done();
        pager.commit();
        machine.files.writeFile(kPath, f.files.readFile(kPath));
    }
    const std::string before = machine.files.readFile(kPath);
    auto database = machine.open();
    EXPECT_EQ(database->sortOrder().lcid, 0x0804);
    EXPECT_EQ(database->codePage(), 936);
    EXPECT_THAT(refusal([&] { database->createTable({.name = u"论坛", .columns = {{.name = u"a"}}, .indexes = {}}); },
                        Kind::KeyNotPossible),
                HasSubstr("MSysObjects"));
    database->commit();
    EXPECT_EQ(machine.files.readFile(kPath), before);

    Table& table = database->createTable(
        {.name = u"bbs", .columns = {{.name = u"标题"}, {.name = u"正文", .type = ColumnType::Memo}}, .indexes = {}});
    EXPECT_EQ(table.definition().columns[0].sortOrder.lcid, 0x0804);
    const RowId row = insertRow(table, {u"广州", u"全文"});
    EXPECT_EQ(valueOf(table, row, u"标题"), Value(u"广州"));
    EXPECT_EQ(faultsOf(*database), "");
}

TEST(DatabaseTables, LinksAndQueriesAreNamedForWhatTheyAre) {
    Machine machine;
    auto database = machine.create();
    Table& objects = database->table(u"MSysObjects");
    const auto add = [&](std::int32_t id, const char16_t* name, std::int16_t type) {
        std::vector<Value> values(objects.definition().columns.size(), Null{});
        const auto set = [&](std::u16string_view column, Value value) {
            values[static_cast<std::size_t>(objects.definition().findColumn(column) -
                                            objects.definition().columns.data())] = std::move(value);
        };
        set(u"Id", id);
        set(u"ParentId", std::int32_t{0x0F000001});
        set(u"Name", name);
        set(u"Type", type);
        set(u"Flags", std::int32_t{0});
        objects.insert(values);
    };
    add(-2147483600, u"linked", 6);
    add(-2147483599, u"chosen", 5);
    database->commit();
    database.reset();
    database = machine.open();
    EXPECT_THAT(refusal([&] { database->table(u"linked"); }, Kind::NoSuchTable), HasSubstr("link to a table"));
    EXPECT_THAT(refusal([&] { database->table(u"CHOSEN"); }, Kind::NoSuchTable), HasSubstr("query"));
    EXPECT_THAT(refusal([&] { database->table(u"absent"); }, Kind::NoSuchTable), HasSubstr("no table absent"));
    EXPECT_FALSE(database->hasTable(u"chosen"));
    EXPECT_THAT(refusal([&] { database->createTable({.name = u"Chosen", .columns = {{.name = u"a"}}, .indexes = {}}); },
                        Kind::AlreadyExists),
                HasSubstr("chosen"));
}

// ---- Changing tables ----

class ChangedTable : public ::testing::Test {
protected:
    ChangedTable() : database(machine.create()), table(database->createTable(articles())) {
        for (int i = 1; i <= 50; ++i)
            rows.push_back(
                insertRow(table, {Null{}, u"u" + platform::fromUtf8(std::to_string(i)),
                                  std::u16string(static_cast<std::size_t>(i) * 40, u'm'), std::int16_t(i % 7)}));
        database->commit();
    }
    void TearDown() override { EXPECT_EQ(faultsOf(*database), ""); }
    void reopen() {
        database->commit();
        database.reset();
        database = machine.open();
    }
    Table& current() { return database->table(u"wxAll"); }

    Machine machine;
    std::unique_ptr<Database> database;
    Table& table; ///< of the first opening
    std::vector<RowId> rows;
};

TEST_F(ChangedTable, OldRowsReadNullAndNoInAddedColumns) {
    database->addColumn(u"WXALL", {.name = u"flag", .type = ColumnType::YesNo});
    database->addColumn(u"wxAll", {.name = u"text2", .characters = 20});
    database->addColumn(u"wxAll", {.name = u"memo2", .type = ColumnType::Memo});
    database->addColumn(u"wxAll", {.name = u"n2", .type = ColumnType::Double});
    EXPECT_EQ(table.definition().columns.size(), 10U) << "the reference taken before sees them";
    EXPECT_EQ(valueOf(table, rows[3], u"flag"), Value(false));
    EXPECT_EQ(valueOf(table, rows[3], u"memo2"), Value(Null{}));
    const Change changes[] = {{7, u"x"}, {8, std::u16string(5000, u'y')}, {9, 1.5}, {6, true}};
    table.update(rows[3], changes);
    reopen();
    EXPECT_EQ(valueOf(current(), rows[3], u"memo2"), Value(std::u16string(5000, u'y')));
    EXPECT_EQ(valueOf(current(), rows[3], u"flag"), Value(true));
    EXPECT_EQ(valueOf(current(), rows[3], u"url"), Value(u"u4"));
    EXPECT_EQ(valueOf(current(), rows[4], u"text2"), Value(Null{}));
    EXPECT_EQ(valueOf(current(), rows[4], u"content"), Value(std::u16string(200, u'm')));
    EXPECT_EQ(current().rowCount(), 50U);
    EXPECT_EQ(current().lastAutonumber(), 50);
}

TEST_F(ChangedTable, AddedColumnsMayBeRequiredOrNumberThemselves) {
    machine.clock.time = {2016, 1, 2, 12, 0, 0};
    database->addColumn(u"wxAll", {.name = u"must", .characters = 9, .required = true});
    Table& objects = database->table(u"MSysObjects");
    const auto entry = objects.lookUp(*objects.indexOn(*objects.definition().findColumn(u"Id")), std::int32_t{16});
    EXPECT_EQ(valueOf(objects, entry.at(0), u"DateUpdate"), Value(OleDate{42371.5}));
    reopen();
    EXPECT_TRUE(current().definition().findColumn(u"must")->required);
    EXPECT_TRUE(current().definition().findColumn(u"url")->required) << "as before";
    EXPECT_THAT(refusal([&] { insertRow(current(), {Null{}, u"new"}); }, Kind::NullNotAllowed), HasSubstr("must"));

    EXPECT_THAT(
        refusal([&] { database->addColumn(u"wxAll", {.name = u"n", .type = ColumnType::Long, .autonumber = true}); },
                Kind::BadDefinition),
        HasSubstr("autonumber"));
    Table& plain = database->createTable({.name = u"plain", .columns = {{.name = u"a"}}, .indexes = {}});
    const RowId first = insertRow(plain, {u"x"}), second = insertRow(plain, {u"y"});
    database->addColumn(u"plain", {.name = u"n", .type = ColumnType::Long, .autonumber = true});
    EXPECT_EQ(valueOf(plain, first, u"n"), Value(std::int32_t{1}));
    EXPECT_EQ(valueOf(plain, second, u"n"), Value(std::int32_t{2}));
    EXPECT_EQ(valueOf(plain, insertRow(plain, {u"z"}), u"n"), Value(std::int32_t{3}));
}

/// Rows without a variable part are rewritten: other readers look for that part in every row.
TEST_F(ChangedTable, TheFirstVariableColumnRewritesTheRows) {
    Table& fixed = database->createTable(
        {.name = u"fixed", .columns = {{.name = u"a", .type = ColumnType::Long}}, .indexes = {indexOn(u"a")}});
    std::vector<RowId> ids;
    for (std::int32_t i = 0; i < 700; ++i)
        ids.push_back(insertRow(fixed, {i}));
    const auto before = fixed.rowCount();
    database->addColumn(u"fixed", {.name = u"t", .characters = 10});
    Row row;
    ASSERT_TRUE(fixed.read(ids[5], row));
    // Column count 2, the number, end of variable data, start of t, count of variable columns, mask.
    const std::vector<std::uint8_t> expected{2, 0, 5, 0, 0, 0, 6, 0, 6, 0, 1, 0, 1};
    ASSERT_EQ(row.bytes().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(load8(&row.bytes()[i]), expected[i]) << i;
    EXPECT_EQ(fixed.rowCount(), before);
    for (std::int32_t i = 0; i < 700; ++i)
        ASSERT_EQ(valueOf(fixed, ids[static_cast<std::size_t>(i)], u"a"), Value(i));
}

/// Such a page must not stay among those with room, whether an added row or a changed one fills it.
TEST(FullPage, FilledToTheLastByteIsSound) {
    for (std::size_t i = 0; i < 60; ++i) {
        Machine machine;
        const auto database = machine.create();
        Table& table = database->createTable(
            {.name = u"t",
             .columns = {{.name = u"a", .type = ColumnType::Binary}, {.name = u"b", .type = ColumnType::Binary}},
             .indexes = {}});
        for (int rows = 0; rows < 7; ++rows) // of 523 bytes each, which leaves 421 of a page's 4082
            insertRow(table, {Binary(255, std::byte{1}), Binary(255, std::byte{2})});
        const std::size_t added = i % 2 == 0 ? 200 : 100;
        const RowId id = insertRow(table, {Binary(added, std::byte{3}), Binary(193 + i / 2, std::byte{4})});
        const Change changes[] = {{0, Binary(200, std::byte{5})}};
        if (added != 200)
            table.update(id, changes);
        EXPECT_EQ(faultsOf(*database), "") << i;
    }
}

TEST_F(ChangedTable, RefusedAdditionsLeaveTheTableAsItWas) {
    EXPECT_THAT(refusal([&] { database->addColumn(u"wxAll", {.name = u"URL"}); }, Kind::AlreadyExists),
                HasSubstr("URL"));
    EXPECT_THAT(refusal([&] { database->addColumn(u"wxAll", {.name = u"a!"}); }, Kind::BadName), HasSubstr("a!"));
    EXPECT_THAT(refusal([&] { database->addColumn(u"absent", {.name = u"a"}); }, Kind::NoSuchTable),
                HasSubstr("absent"));
    EXPECT_THAT(refusal([&] { database->addColumn(u"MSysACEs", {.name = u"a"}); }, Kind::BadDefinition),
                HasSubstr("MSysACEs"));
    for (char16_t i = 0; i < 249; ++i)
        database->addColumn(u"wxAll", {.name = u"f" + std::u16string(1, char16_t(0x4E00 + i)), .characters = 1});
    EXPECT_THAT(refusal([&] { database->addColumn(u"wxAll", {.name = u"last"}); }, Kind::TooManyFields),
                HasSubstr("last"));
    EXPECT_EQ(table.definition().columns.size(), 255U);
    reopen();
    EXPECT_EQ(current().definition().columns.size(), 255U) << "a definition of several pages";
    EXPECT_EQ(valueOf(current(), rows[49], u"content"), Value(std::u16string(2000, u'm')));
}

TEST_F(ChangedTable, AnIndexOverFilledRowsFindsThemAndStaysRight) {
    database->createIndex(u"wxAll", {.name = u"c2", .columns = {{u"cid"}}});
    const auto index = table.indexOn(*table.definition().findColumn(u"cid"));
    ASSERT_TRUE(index.has_value());
    EXPECT_EQ(table.lookUp(*index, std::int16_t{3}).size(), 7U) << "3, 10, … 45";
    EXPECT_EQ(table.definition().physicalIndexes[*index].distinctKeys, 7U);
    table.erase(rows[2]);
    insertRow(table, {Null{}, u"more", Null{}, std::int16_t{3}});
    reopen();
    EXPECT_EQ(current().lookUp(*index, std::int16_t{3}).size(), 7U);
    EXPECT_EQ(current().lookUp(*index, std::int16_t{99}).size(), 0U);
}

TEST_F(ChangedTable, AnIndexThatTheRowsForbidIsTakenBackWhole) {
    insertRow(table, {Null{}, u"nullcid"});
    database->commit();
    const std::uint32_t pages = database->pager().pageCount();
    EXPECT_THAT(refusal([&] { database->createIndex(u"wxAll", {.name = u"u", .columns = {{u"cid"}}, .unique = true}); },
                        Kind::DuplicateKey),
                HasSubstr("index u: cid = "));
    EXPECT_THAT(
        refusal([&] { database->createIndex(u"wxAll", {.name = u"n", .columns = {{u"cid"}}, .disallowNulls = true}); },
                Kind::NullNotAllowed),
        HasSubstr("index n"));
    insertRow(table, {Null{}, u"kana", u"カナ"});
    EXPECT_THAT(refusal([&] { database->createIndex(u"wxAll", {.name = u"k", .columns = {{u"content"}}}); },
                        Kind::KeyNotPossible),
                HasSubstr("index k"));
    EXPECT_EQ(table.definition().physicalIndexes.size(), 3U);
    EXPECT_EQ(database->pager().pageCount(), pages);
    EXPECT_THAT(refusal([&] { database->createIndex(u"wxAll", {.name = u"BYURL", .columns = {{u"cid"}}}); },
                        Kind::AlreadyExists),
                HasSubstr("BYURL"));
}

TEST_F(ChangedTable, AnIndexWithoutANameGetsOne) {
    database->createIndex(u"wxAll", {.name = u"", .columns = {{u"done"}}});
    const std::string name = platform::toUtf8(table.definition().logicalIndexes[2].name);
    EXPECT_THAT(name, platform::MatchesPattern("Index_[0-9A-F]{8}_[0-9A-F]{4}_[0-9A-F]{4}"));
}

// ---- Transactions and dry runs ----

TEST_F(ChangedTable, ARolledBackTransactionTakesTablesColumnsAndRowsBack) {
    const std::string before = contentOf(*database);
    database->beginTransaction();
    database->createTable({.name = u"temp", .columns = {{.name = u"a"}}, .indexes = {}});
    database->addColumn(u"wxAll", {.name = u"extra"});
    insertRow(table, {Null{}, u"in the transaction"});
    EXPECT_TRUE(database->hasTable(u"temp"));
    database->rollbackTransaction();
    EXPECT_FALSE(database->hasTable(u"temp"));
    EXPECT_EQ(contentOf(*database), before);
    EXPECT_EQ(table.definition().columns.size(), 6U);
    Table& other = database->createTable({.name = u"other", .columns = {{.name = u"b"}}, .indexes = {}});
    insertRow(other, {u"x"});
    EXPECT_EQ(other.name(), u"other") << "on the page that temp had";
    const RowId next = insertRow(table, {Null{}, u"after"});
    EXPECT_EQ(valueOf(table, next, u"id"), Value(std::int32_t{51}));
}

TEST_F(ChangedTable, ADryRunReadsItsChangesBackAndLeavesTheFile) {
    database.reset();
    const std::string before = machine.files.readFile(kPath);
    {
        database = machine.open(Access::Scratch);
        database->createTable({.name = u"temp", .columns = {{.name = u"a"}}, .indexes = {}});
        for (int i = 0; i < 300; ++i)
            insertRow(current(), {Null{}, u"n" + platform::fromUtf8(std::to_string(i)), std::u16string(3000, u'q')});
        current().erase(rows[0]);
        database->commit();
        EXPECT_EQ(current().rowCount(), 349U);
        EXPECT_TRUE(database->hasTable(u"temp"));
        EXPECT_NE(contentOf(*database).find("n299"), std::string::npos);
    }
    database.reset();
    EXPECT_EQ(machine.files.readFile(kPath), before);
    database = machine.open(Access::Read);
}

TEST_F(ChangedTable, DamagedPropertiesAreInTheWayOfWritingOnly) {
    Table& objects = database->table(u"MSysObjects");
    const auto entry = objects.lookUp(*objects.indexOn(*objects.definition().findColumn(u"Id")), std::int32_t{16});
    const Column* properties = objects.definition().findColumn(u"LvProp");
    const auto place = static_cast<std::size_t>(properties - objects.definition().columns.data());
    objects.update(entry.at(0), std::vector<Change>{{place, Binary(8, std::byte{'x'})}});
    database->commit();
    database.reset();
    database = machine.open(Access::Read);
    EXPECT_EQ(valueOf(current(), rows[3], u"url"), Value(u"u4"));
    database.reset();
    database = machine.open(Access::Write);
    EXPECT_THAT(refusal([&] { current().definition(); }, Kind::Corrupt), HasSubstr("properties"));
}

TEST_F(ChangedTable, NothingIsChangedInADatabaseOpenForReading) {
    database.reset();
    database = machine.open(Access::Read);
    EXPECT_THAT(refusal([&] { insertRow(current(), {Null{}, u"x"}); }, Kind::ReadOnly), HasSubstr("base.mdb"));
    EXPECT_THAT(refusal([&] { database->createTable(articles()); }, Kind::ReadOnly), HasSubstr("base.mdb"));
    EXPECT_THAT(refusal([&] { database->addColumn(u"wxAll", {.name = u"x"}); }, Kind::ReadOnly), HasSubstr("base.mdb"));
}

} // namespace
} // namespace kelb::jet
