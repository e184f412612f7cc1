#include "jet/long_field.h"

#include "tests/jet/verify_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelb::jet::testing {
namespace {

using ::testing::HasSubstr;

/// One step past a limit of the format: refused with a reason, and not a byte of the file is another.
struct Limit {
    const char* name;
    void (*act)(Database& database);
    Error::Kind kind;
    const char* told;
};
class PastALimit : public ::testing::TestWithParam<Limit> {};

/// A table of binary columns, which take as many bytes of a record as their values have.
Table& binaries(Database& database, std::u16string name, int count) {
    NewTable table{std::move(name), {}, {}};
    for (int i = 0; i < count; ++i) {
        NewColumn column = newColumn(std::u16string(1, static_cast<char16_t>(u'a' + i)), ColumnType::Binary);
        column.characters = 510;
        table.columns.push_back(column);
    }
    return database.createTable(table);
}
/// 8 columns need 2 + 2 × (8 + 2) + 1 bytes beside their values.
std::vector<Value> recordOf(std::size_t bytes) {
    std::vector<Value> values(8, Binary(504, std::byte{7}));
    values[7] = Binary(bytes - 23 - 7 * 504, std::byte{7});
    return values;
}
Table& keyed(Database& database) {
    return database.table(u"keyed");
}

TEST_P(PastALimit, IsRefusedBeforeAnythingChanges) {
    Machine machine;
    const auto database = machine.create();
    binaries(*database, u"wide", 8);
    binaries(*database, u"keyed", 8);
    NewIndex index{u"all", {}};
    for (const char16_t column : std::u16string_view(u"abcdefgh"))
        index.columns.push_back({std::u16string(1, column), true});
    database->createIndex(u"keyed", index);
    database->commit();
    const std::string before = machine.files.readFile(kPath);
    const std::string message = refusal([&] { GetParam().act(*database); }, GetParam().kind);
    EXPECT_THAT(message, HasSubstr(GetParam().told));
    EXPECT_THAT(message, ::testing::Not(HasSubstr("another kind")));
    database->commit();
    EXPECT_EQ(machine.files.readFile(kPath), before);
    // One step less goes through, and the table goes on working.
    insertRow(database->table(u"wide"), recordOf(4060));
    insertRow(keyed(*database), {Binary(1000 / 2, std::byte{1})});
    EXPECT_EQ(faultsOf(*database), "");
}

INSTANTIATE_TEST_SUITE_P(Limits, PastALimit,
                         ::testing::ValuesIn<Limit>({
                             {"record_of_4061_bytes", [](Database& d) { insertRow(d.table(u"wide"), recordOf(4061)); },
                              Error::Kind::RecordTooLarge, "table wide, 4060 bytes allowed, 4061 needed"},
                             {"update_to_4061_bytes",
                              [](Database& d) {
                                  Table& table = d.table(u"wide");
                                  d.beginTransaction();
                                  const RowId row = insertRow(table, recordOf(4060));
                                  try {
                                      table.update(row, std::vector<Change>{{7, recordOf(4061)[7]}});
                                  } catch (const Error&) {
                                      d.rollbackTransaction();
                                      throw;
                                  }
                              },
                              Error::Kind::RecordTooLarge, "4061 needed"},
                             {"field_that_leaves_no_room_for_a_record",
                              [](Database& d) {
                                  NewTable table{u"fixed", {}, {}};
                                  for (char16_t i = 0; i < 239; ++i)
                                      table.columns.push_back(newColumn(
                                          u"f" + std::u16string(1, char16_t(u'\u4E00' + i)), ColumnType::Numeric));
                                  d.createTable(table);
                              },
                              Error::Kind::BadDefinition, "at most 4060 fit"},
                             {"key_of_more_than_half_a_page",
                              [](Database& d) { insertRow(keyed(d), recordOf(23 + 8 * 504)); },
                              Error::Kind::KeyNotPossible, "too long for an index: table keyed, index all"},
                             {"name_of_65_characters", [](Database& d) { binaries(d, std::u16string(65, u'n'), 1); },
                              Error::Kind::BadName, "1 to 64 characters"},
                             {"index_of_11_fields",
                              [](Database& d) {
                                  NewIndex index{u"x", {}};
                                  index.columns.resize(11, {u"a", true});
                                  d.createIndex(u"wide", index);
                              },
                              Error::Kind::BadDefinition, "1 to 10 fields"},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(PastALimit, AValueOfOneGigabyteIsRefusedByItsLengthAlone) {
    TableDefinition table;
    table.name = u"t";
    Column column;
    column.name = u"big";
    column.type = ColumnType::Ole;
    column.flags = 2;
    table.addColumn(column);
    const std::byte first{};
    for (const auto& [bytes, refused] : {std::pair(std::size_t{kMaxLongValue}, false), {kMaxLongValue + 1U, true}}) {
        LongFields fields(table);
        fields.addStored(0, {&first, bytes}); // nobody may look at its bytes before it is written
        const std::string message = refusal([&] { fields.fit(0); }, Error::Kind::RecordTooLarge);
        EXPECT_EQ(!message.empty(), refused);
        EXPECT_THAT(message, refused ? HasSubstr("table t, field big, 1073741823 bytes allowed") : HasSubstr(""));
    }
}

} // namespace
} // namespace kelb::jet::testing
