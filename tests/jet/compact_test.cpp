#include "jet/catalog.h"
#include "jet/index_entries.h"
#include "jet/journal.h"
#include "jet/new_database_file.h"
#include "jet/properties.h"
#include "jet/table_transfer.h"

#include "platform/file_failures.h"

#include "tests/jet/copy_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelb::jet::testing {
namespace {

using ::testing::HasSubstr;

/// 600 rows of every structure, 500 of them deleted again.
const std::string& thinned() {
    static const std::string bytes = [] {
        Patient patient(600);
        patient.change([](Database& database) {
            Table& items = database.table(u"Items");
            std::vector<RowId> rows;
            Row row;
            for (TableScan scan = items.scan(); scan.next(row);)
                rows.push_back(row.id());
            for (std::size_t i = 0; i < rows.size(); ++i)
                if (i % 6 != 0)
                    items.erase(rows[i]);
        });
        return patient.bytes;
    }();
    return bytes;
}

TEST(Compact, KeepsRowsAndIndexesWithoutFreePages) {
    CopyMachine machine(thinned());
    const CopyCounts counts = machine.compact();
    const auto source = machine.open(Pager::Access::Read);
    const auto target = machine.target();
    EXPECT_EQ(sortedContent(*target), sortedContent(*source));
    EXPECT_EQ(faultsOf(*target), "");
    EXPECT_EQ(counts.tables, 1U);
    EXPECT_EQ(counts.rows, target->table(u"Items").rowCount());
    EXPECT_EQ(counts.indexes, 3U);
    EXPECT_EQ(machine.told.left, "");
    EXPECT_TRUE(machine.told.grows);
    EXPECT_EQ(machine.told.done, counts.rows);
    for (std::uint32_t page = 2; page < target->pager().pageCount(); ++page)
        EXPECT_FALSE(target->allocator().isFree(PageNumber{page})) << page;
    EXPECT_LT(2 * target->pager().pageCount(), source->pager().pageCount());
    const TableDefinition &before = source->table(u"Items").definition(), &after = target->table(u"Items").definition();
    EXPECT_EQ(after.lastAutonumber, before.lastAutonumber);
    for (std::size_t i = 0; i < before.logicalIndexes.size(); ++i) {
        const PhysicalIndex& a = before.physicalIndexes[before.logicalIndexes[i].physical];
        const PhysicalIndex& b = after.physicalIndexes[after.logicalIndexes[i].physical];
        EXPECT_EQ(a.flags, b.flags);
        ASSERT_EQ(a.columns.size(), b.columns.size());
        for (std::size_t k = 0; k < a.columns.size(); ++k) {
            EXPECT_EQ(before.columnByNumber(a.columns[k].column)->name,
                      after.columnByNumber(b.columns[k].column)->name);
            EXPECT_EQ(a.columns[k].ascending, b.columns[k].ascending);
        }
    }
}

TEST(Compact, KeepsPropertiesDatesKeysAndTheNextAutonumber) {
    Machine machine;
    {
        const auto database = machine.create();
        NewColumn id{.name = u"id", .type = ColumnType::Long, .autonumber = true};
        NewColumn name{.name = u"name", .characters = 20, .required = true, .compressed = true};
        NewIndex primary{u"pk", {{u"id", true}}};
        primary.primary = true;
        insertRow(database->createTable({u"t", {id, name}, {primary}}), {Null{}, u"only"});
        Table& table = database->table(u"t");
        table.erase(insertRow(table, {Null{}, u"gone"}));
        database->commit();
    }
    machine.clock.time.year = 2026;
    CopyMachine copy(machine.files.readFile(kPath));
    copy.compact();
    const auto target = copy.target(Pager::Access::Write);
    Table& table = target->table(u"t");
    const Column& name = *table.definition().findColumn(u"name");
    EXPECT_TRUE(name.required);
    EXPECT_TRUE(name.compresses());
    EXPECT_EQ(name.length, 40);
    EXPECT_EQ(table.definition().logicalIndexes.at(0).kind, 1) << "the primary key";
    EXPECT_EQ(valueOf(table, insertRow(table, {Null{}, u"new"}), u"id"), Value(std::int32_t{3}));
    EXPECT_NE(refusal([&] { insertRow(table, {std::int32_t{1}, u"twice"}); }, Error::Kind::DuplicateKey), "");
    Table& objects = target->table(u"MSysObjects");
    Row row;
    for (TableScan scan = objects.scan(); scan.next(row);) {
        if (row.value(*objects.definition().findColumn(u"Name")) == Value(u"t")) {
            EXPECT_EQ(row.value(*objects.definition().findColumn(u"DateCreate")),
                      Value(OleDate{platform::toSerial({2015, 12, 2, 8, 30, 0})}));
        }
    }
}

// In the Chinese order no key can be made for Chinese texts: names and indexes take over those of the source.
TEST(Compact, TakesOverKeysThatCannotBeMade) {
    Machine machine;
    {
        const auto made = Database::create(machine.platform, kPath, {{0x0804, 0}, 936});
        Table& table =
            made->createTable({u"t", {newColumn(u"name", ColumnType::Text)}, {{u"byName", {{u"name", true}}}}});
        for (const int last : {0x19, 0x18}) {
            const Table::KnownKey key{
                0, {std::byte{0x7F}, std::byte{0x94}, static_cast<std::byte>(last), std::byte{1}, std::byte{0}}};
            const std::vector<Value> row{last == 0x18 ? u"广" : u"州"};
            table.insert(row, {&key, 1});
        }
        made->commit();
    }
    CopyMachine copy(machine.files.readFile(kPath));
    copy.compact();
    EXPECT_EQ(copy.told.left, "");
    const auto target = copy.target();
    EXPECT_EQ(target->sortOrder(), (SortOrder{0x0804, 0}));
    EXPECT_EQ(target->codePage(), 936);
    const TableDefinition& table = target->table(u"t").definition();
    const PhysicalIndex& index = table.physicalIndexes.at(0);
    auto cursor = IndexTree(target->pager(), target->allocator(), {index.root, index.ownedMap, table.page}).begin();
    for (const char16_t* name : {u"广", u"州"}) {
        ASSERT_TRUE(cursor.valid());
        EXPECT_EQ(valueOf(target->table(u"t"), cursor.row(), u"name"), Value(name))
            << "in the order of the source's keys";
        cursor.next();
    }
    EXPECT_FALSE(cursor.valid());
}

TEST(Compact, RefusesATargetThatIsThereAndADamagedSource) {
    CopyMachine machine(thinned());
    machine.files.writeFile(kTarget, "mine");
    EXPECT_THROW(machine.compact(), platform::FileError);
    EXPECT_EQ(machine.files.readFile(kTarget), "mine");
    machine.files.removeFile(kTarget);

    Patient patient(thinned());
    const TableDefinition items = patient.definition();
    *patient.at(patient.pages(items.ownedMap).front(), 4) = std::byte{99}; // another owner
    CopyMachine damaged(patient.bytes);
    EXPECT_THAT(refusal([&] { damaged.compact(); }, Error::Kind::Corrupt), HasSubstr("kelb db recover"));
    EXPECT_TRUE(damaged.leftNothing());
}

// From the nth operation on everything fails, as after a kill: nothing stands under the wanted name, or all of it.
TEST(Compact, AKillLeavesAllOrNothing) {
    bool finished = false;
    for (std::size_t n = 0; !finished; n += 1 + n / 3) {
        CopyMachine machine(Patient(30).bytes);
        std::size_t operations = 0;
        machine.files.beforeOperation = [&](std::string_view operation, std::u16string_view path) {
            if (operations++ >= n)
                throw platform::systemFailure(operation, path, 5);
        };
        try {
            machine.compact();
            finished = true;
        } catch (const platform::FileError&) { // expected
        }
        machine.files.beforeOperation = {};
        if (!machine.files.fileExists(kTarget)) {
            EXPECT_FALSE(finished);
            machine.compact();
        }
        EXPECT_EQ(faultsOf(*machine.target()), "") << n;
        EXPECT_EQ(machine.target()->table(u"Items").rowCount(), 29U);
    }
}

// ---- Columns of other versions ----

struct ColumnCase {
    const char* name;
    Dialect dialect;
    ColumnType type;
    std::uint8_t extraFlags;
    std::vector<int> stored;
    ColumnType newType;
    std::vector<int> newStored;
    const char* note;
};
class TransferredColumn : public ::testing::TestWithParam<ColumnCase> {};

std::vector<std::byte> bytesOf(const std::vector<int>& numbers) {
    std::vector<std::byte> bytes;
    for (const int number : numbers)
        bytes.push_back(static_cast<std::byte>(number));
    return bytes;
}

TEST_P(TransferredColumn, HasTheSameValueInAccess2000) {
    const ColumnCase& c = GetParam();
    TableDefinition source;
    source.dialect = c.dialect;
    source.codePage = 936;
    Column column;
    column.name = u"x";
    column.type = c.type;
    column.flags = 2;
    column.extraFlags = c.extraFlags;
    column.length = c.type == ColumnType::Text ? 100 : static_cast<std::uint16_t>(fixedSize(c.type));
    source.addColumn(column);
    const TableTransfer transfer(source, SortOrder{}, TableTransfer::Orders::Kept);
    ASSERT_EQ(transfer.columns().size(), 1U);
    EXPECT_EQ(transfer.design().columns[0].type, c.newType);
    EXPECT_THAT(transfer.notes().empty() ? "" : transfer.notes()[0].text, HasSubstr(c.note));

    std::vector<std::byte> record;
    if (c.dialect == Dialect::Jet3) {
        record = bytesOf({1});
        std::ranges::copy(bytesOf(c.stored), std::back_inserter(record));
        std::ranges::copy(bytesOf({static_cast<int>(1 + c.stored.size()), 1, 1, 1}), std::back_inserter(record));
    } else {
        std::vector<StoredField> fields{{true, bytesOf(c.stored)}};
        record = buildRow(source, fields);
    }
    const RowView view(record, source, {});
    const StoredField field =
        transfer.field(transfer.columns()[0], view, [](auto inner) { return std::vector(inner.begin(), inner.end()); });
    EXPECT_EQ(field.bytes, bytesOf(c.newStored));
}

INSTANTIATE_TEST_SUITE_P(
    Types, TransferredColumn,
    ::testing::ValuesIn<ColumnCase>({
        // 网 in code page 936 is CD F8
        {"access97_text",
         Dialect::Jet3,
         ColumnType::Text,
         0,
         {0x61, 0xCD, 0xF8},
         ColumnType::Text,
         {0x61, 0, 0x51, 0x7F},
         ""},
        {"access97_ascii_is_compressed",
         Dialect::Jet3,
         ColumnType::Text,
         0,
         {0x61, 0x62, 0x63},
         ColumnType::Text,
         {0xFF, 0xFE, 0x61, 0x62, 0x63},
         ""},
        {"access97_long", Dialect::Jet3, ColumnType::Long, 0, {1, 2, 0, 0}, ColumnType::Long, {1, 2, 0, 0}, ""},
        {"text_as_it_is_stored",
         Dialect::Jet4,
         ColumnType::Text,
         1,
         {0xFF, 0xFE, 0, 0x51, 0x7F, 0, 0x61},
         ColumnType::Text,
         {0xFF, 0xFE, 0, 0x51, 0x7F, 0, 0x61},
         ""},
        {"big_integer_of_both_words",
         Dialect::Ace,
         ColumnType::BigInteger,
         0,
         {0xFE, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF},
         ColumnType::Numeric,
         {0x80, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0},
         "decimals"},
        {"calculated_is_unwrapped",
         Dialect::Ace,
         ColumnType::Long,
         0xC0,
         {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 7, 0, 0, 0, 9, 9, 9},
         ColumnType::Long,
         {7, 0, 0, 0},
         "expression"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

TEST(TransferredTable, LeavesOutWhatAccess2000HasNotAndIndexesOnIt) {
    TableDefinition source;
    source.dialect = Dialect::Ace;
    for (const auto& [name, type] : {std::pair(u"files", ColumnType::Complex),
                                     {u"odd", static_cast<ColumnType>(0x33)},
                                     {u"n", ColumnType::Long}}) {
        Column column;
        column.name = name;
        column.type = type;
        column.flags = 3;
        column.length = 4;
        source.addColumn(column);
    }
    for (const std::uint16_t number : std::initializer_list<std::uint16_t>{0, 2, 2}) {
        PhysicalIndex index;
        index.columns = {{number, true}};
        LogicalIndex name;
        name.name = std::u16string(1, static_cast<char16_t>(u'a' + source.physicalIndexes.size()));
        name.physical = static_cast<std::uint32_t>(source.physicalIndexes.size());
        name.kind = source.physicalIndexes.size() == 2 ? 2 : 0; // the last one only serves a relationship
        source.physicalIndexes.push_back(index);
        source.addLogicalIndex(name);
    }
    const TableTransfer transfer(source, SortOrder{}, TableTransfer::Orders::Kept);
    ASSERT_EQ(transfer.design().columns.size(), 1U);
    EXPECT_EQ(transfer.design().columns[0].number, 0) << "deleted and left-out fields take no numbers";
    ASSERT_EQ(transfer.indexes().size(), 1U);
    EXPECT_EQ(transfer.indexes()[0].names.at(0).name, u"b");
    EXPECT_EQ(transfer.indexes()[0].physical.columns.at(0).column, 0);
    std::string notes;
    for (const TableTransfer::Note& note : transfer.notes())
        notes += platform::toUtf8(note.name) + " ";
    EXPECT_EQ(notes, "files odd a ");
}

} // namespace
} // namespace kelb::jet::testing
