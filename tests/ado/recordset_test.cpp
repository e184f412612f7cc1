#include "ado/jet_fields.h"

#include "tests/ado/ado_fixture.h"

namespace kelb::ado::testing {
namespace {

class Records : public AdoFixture {
public:
    Records() {
        execute(u"create table t (id int identity(1,1), a varchar(5), n int, f yesno, d datetime, m memo)");
        for (const char16_t* a : {u"a", u"b", u"c"}) {
            execute(u"insert into t (a) values ('" + std::u16string(a) + u"')");
        }
    }
    static std::u16string a(Recordset& set) { return set.text(u"a"); }
};

TEST_F(Records, Walks) {
    Recordset set = open(u"select * from t");
    EXPECT_FALSE(set.Bof() || set.Eof());
    EXPECT_EQ(a(set), u"a");
    set.MovePrevious();
    EXPECT_TRUE(set.Bof());
    EXPECT_FALSE(set.Eof());
    EXPECT_EQ(errorOf([&] { set.MovePrevious(); })->kind, Error::Kind::NoCurrentRow);
    EXPECT_EQ(errorOf([&] { a(set); })->kind, Error::Kind::NoCurrentRow);
    set.MoveNext();
    EXPECT_EQ(a(set), u"a");
    set.MoveLast();
    EXPECT_EQ(a(set), u"c");
    set.MoveNext();
    EXPECT_TRUE(set.Eof());
    EXPECT_FALSE(set.Bof());
    EXPECT_EQ(errorOf([&] { set.MoveNext(); })->kind, Error::Kind::NoCurrentRow);
    set.MovePrevious();
    EXPECT_EQ(a(set), u"c");
    set.MoveFirst();
    EXPECT_EQ(a(set), u"a");
}

TEST_F(Records, AnEmptySetIsAtBothEnds) {
    Recordset set = open(u"select * from t where a='zz'");
    EXPECT_TRUE(set.Bof() && set.Eof());
    EXPECT_EQ(set.RecordCount(), 0U);
    set.MoveFirst();
    set.MoveLast();
    EXPECT_TRUE(set.Bof() && set.Eof());
    EXPECT_EQ(errorOf([&] { set.MoveNext(); })->kind, Error::Kind::NoCurrentRow);
    EXPECT_EQ(errorOf([&] { set.value(u"a"); })->kind, Error::Kind::NoCurrentRow);
    EXPECT_EQ(errorOf([&] { set.set(u"a", u"x"); })->kind, Error::Kind::NoCurrentRow);
    set.AddNew();
    set.set(u"a", u"x");
    set.Update();
    EXPECT_FALSE(set.Bof() || set.Eof());
    EXPECT_EQ(set.RecordCount(), 1U);
}

TEST_F(Records, ChangesTogetherAreStoredAllOrNone) {
    Recordset one = open(u"select * from t"), two = open(u"select * from t where a='b'"),
              end = open(u"select * from t");
    const auto change = [&](const char16_t* second) {
        connection->atomically([&] {
            one.set(u"a", u"x");
            one.Update();
            end.AddNew();
            end.set(u"a", u"new");
            end.Update();
            two.set(u"a", second);
            two.Update();
        });
    };
    EXPECT_EQ(errorOf([&] { change(u"too long"); })->kind, Error::Kind::FieldTooSmall);
    EXPECT_EQ(rows(u"select a from t"), "a / b / c");
    EXPECT_EQ(a(one), u"a");
    EXPECT_EQ(a(two), u"b");
    EXPECT_EQ(count(u"select * from t where a='a'"), 1U);
    EXPECT_EQ(count(u"select * from t where a='x'"), 0U);
    change(u"y");
    EXPECT_EQ(rows(u"select a from t"), "x / y / c / new");
    EXPECT_EQ(count(u"select * from t where a='x'"), 1U);
    EXPECT_EQ(faults(), "");
}

TEST_F(Records, NothingReachesTheDiskBetweenChangesThatBelongTogether) {
    Recordset one = open(u"select * from t"), two = open(u"select * from t where a='b'");
    connection->flush();
    std::size_t operations = 0;
    files.beforeOperation = [&](std::string_view, std::u16string_view) { ++operations; };
    connection->atomically([&] {
        for (Recordset* set : {&one, &two}) {
            set->set(u"a", u"x");
            set->Update();
            clock.seconds += 3600; // a commit is long due
        }
        EXPECT_EQ(operations, 0U);
    });
    EXPECT_GT(operations, 0U);
}

TEST_F(Records, HoldsEditsUntilTheyAreSaved) {
    Recordset set = open(u"select * from t"), other = open(u"select * from t");
    set.set(u"a", u"new");
    set.set(u"N", std::int32_t{5});
    set.set(u"n", std::int32_t{6});
    EXPECT_EQ(a(set), u"new");
    EXPECT_EQ(a(other), u"a");
    set.MoveNext(); // saves
    EXPECT_EQ(a(other), u"new");
    EXPECT_EQ(other.value(u"n"), Value(std::int32_t{6}));

    set.set(u"a", u"x");
    set.CancelUpdate();
    EXPECT_EQ(a(set), u"b");
    set.set(u"a", u"y");
    set.AddNew(); // saves the edit
    EXPECT_EQ(rows(u"select a from t"), "new / y / c");
    set.set(u"a", u"four");
    EXPECT_EQ(a(set), u"four");
    EXPECT_EQ(set.value(u"f"), Value(false)); // never Null
    EXPECT_TRUE(set.isNull(u"id"));
    set.CancelUpdate();
    EXPECT_EQ(a(set), u"y"); // the row before is current again
    set.AddNew();
    set.set(u"a", u"five");
    set.AddNew(); // saves the new row
    set.Close();  // drops the second
    EXPECT_EQ(rows(u"select a from t"), "new / y / c / five");
    EXPECT_EQ(set.State(), ObjectState::Closed);
    EXPECT_EQ(errorOf([&] { static_cast<void>(set.Eof()); })->kind, Error::Kind::NoCurrentRow);
    set.Close();
}

TEST_F(Records, TheNewRowIsCurrent) {
    Recordset set = open(u"select * from t");
    set.AddNew();
    set.set(u"a", u"x");
    set.Update();
    EXPECT_EQ(set.value(u"id"), Value(std::int32_t{4}));
    set.set(u"a", u"y");
    set.Update();
    set.Update(); // nothing to do
    EXPECT_EQ(rows(u"select a from t where id=4"), "y");
    set.MovePrevious();
    EXPECT_EQ(a(set), u"c");
    set.MoveLast();
    EXPECT_EQ(a(set), u"y");
    set.AddNew();
    set.Delete(); // only the row that is being made
    EXPECT_EQ(set.RecordCount(), 4U);
    set.AddNew();
    set.set(u"a", u"z");
    set.Update();
    set.Delete();
    EXPECT_EQ(set.RecordCount(), 4U);
    set.MovePrevious();
    EXPECT_EQ(a(set), u"y");
}

struct BadValue {
    const char16_t* field;
    Value value;
    Error::Kind kind;
};

TEST_F(Records, AnErrorDropsTheEdits) {
    const BadValue cases[] = {
        {u"a", std::u16string(u"abcdef"), Error::Kind::FieldTooSmall},
        {u"n", std::u16string(u"five"), Error::Kind::TypeMismatch},
        {u"n", 2.5, Error::Kind::TypeMismatch},
        {u"n", 3e9, Error::Kind::TypeMismatch},
        {u"d", std::u16string(u"soon"), Error::Kind::TypeMismatch},
    };
    Recordset set = open(u"select * from t");
    for (const BadValue& c : cases) {
        for (const bool fresh : {false, true}) {
            if (fresh) {
                set.AddNew();
            }
            set.set(u"m", u"also written");
            set.set(c.field, c.value);
            const auto caught = errorOf([&] { set.Update(); });
            ASSERT_TRUE(caught) << platform::toUtf8(c.field);
            EXPECT_EQ(caught->kind, c.kind) << caught->text;
            EXPECT_NE(caught->text.find("table t"), std::string::npos) << caught->text;
            EXPECT_NE(caught->text.find("field " + platform::toUtf8(c.field)), std::string::npos) << caught->text;
            EXPECT_EQ(a(set), u"a"); // as if nothing had been set
            EXPECT_TRUE(set.isNull(u"m"));
            set.Update();
            EXPECT_EQ(set.RecordCount(), 3U);
        }
    }
    set.set(u"a", u"abcdef");
    EXPECT_TRUE(errorOf([&] { set.MoveNext(); }));
    EXPECT_EQ(a(set), u"a"); // the move did not take place
    set.MoveNext();
    EXPECT_EQ(a(set), u"b");
    EXPECT_EQ(rows(u"select a, m from t"), "a|~ / b|~ / c|~");
    EXPECT_EQ(faults(), "");
}

TEST_F(Records, ConvertsValues) {
    Recordset set = open(u"select * from t");
    set.set(u"a", std::int32_t{28});
    set.set(u"n", u" 40 ");
    set.set(u"f", std::int32_t{7});
    set.set(u"d", u"2015-12-2 8:30:00");
    set.set(u"m", u"");
    set.Update();
    EXPECT_EQ(rows(u"select a, n, f, d, m from t where id=1"), "28|40|True|2015-12-2 8:30:00|");
    EXPECT_EQ(set.text(u"d"), u"2015-12-2 8:30:00");
    std::u16string out = u"left over";
    EXPECT_TRUE(set.text(set.fieldIndex(u"m"), out));
    EXPECT_EQ(out, u"");
    set.MoveNext();
    out = u"left over";
    EXPECT_FALSE(set.text(set.fieldIndex(u"m"), out));
    EXPECT_EQ(out, u"");
    set.set(u"f", Null{});
    set.set(u"a", Null{});
    set.Update();
    EXPECT_EQ(rows(u"select a, f from t where id=2"), "~|False");
}

TEST_F(Records, ReadOnlyIsRefusedAtOnce) {
    Recordset set = open(u"select * from t", LockType::ReadOnly);
    EXPECT_EQ(errorOf([&] { set.AddNew(); })->kind, Error::Kind::ReadOnly);
    EXPECT_EQ(errorOf([&] { set.set(u"a", u"x"); })->kind, Error::Kind::ReadOnly);
    EXPECT_EQ(errorOf([&] { set.Delete(); })->kind, Error::Kind::ReadOnly);
    set.Close();
    Recordset system = open(u"MSysObjects");
    EXPECT_EQ(errorOf([&] { system.Delete(); })->kind, Error::Kind::ReadOnly);
    Recordset number = open(u"select count(*) as n from t");
    EXPECT_EQ(number.value(u"N"), Value(std::int32_t{3}));
    EXPECT_EQ(number.RecordCount(), 1U);
    EXPECT_EQ(errorOf([&] { number.AddNew(); })->kind, Error::Kind::ReadOnly);
}

TEST_F(Records, NamesItsFields) {
    Recordset set = open(u"select a as x, id, [m] from t");
    EXPECT_EQ(set.fieldCount(), 3U);
    EXPECT_EQ(set.field(0).name, u"x");
    EXPECT_EQ(set.field(0).size, 5U);
    EXPECT_TRUE(set.field(1).autonumber);
    EXPECT_EQ(set.field(2).type, FieldType::Memo);
    EXPECT_TRUE(set.hasField(u"X"));
    EXPECT_FALSE(set.hasField(u"a"));
    const auto caught = errorOf([&] { set.fieldIndex(u"nosuch"); });
    EXPECT_EQ(caught->kind, Error::Kind::NoSuchColumn);
    EXPECT_NE(caught->text.find("select a as x"), std::string::npos);
    EXPECT_EQ(errorOf([&] { set.value(3); })->kind, Error::Kind::NoSuchColumn);
    set.set(u"x", u"via x");
    set.Update();
    EXPECT_EQ(rows(u"select a from t where id=1"), "via x");
    EXPECT_EQ(errorOf([&] { set.Open(u"t", *connection); })->kind, Error::Kind::Refused);
}

/// A column's length says two bytes for each character in every dialect, Access 97 too.
TEST(JetFields, TellTheSizeOfATextInCharacters) {
    for (const auto dialect : {jet::Dialect::Jet3, jet::Dialect::Jet4, jet::Dialect::Ace}) {
        jet::TableDefinition table;
        table.dialect = dialect;
        jet::Column column;
        column.type = jet::ColumnType::Text;
        column.length = 100;
        table.columns.push_back(column);
        EXPECT_EQ(fieldsOf(table).at(0).size, 50U);
    }
}

TEST_F(Records, OpensATableByName) {
    execute(u"create table [两 表] (网址 varchar(9))");
    execute(u"insert into [两 表] values ('a')");
    EXPECT_EQ(rows(u"两 表"), "a");
    EXPECT_EQ(rows(u" [两 表] "), "a");
    execute(u"create table selected (x int)");
    EXPECT_EQ(rows(u"selected"), "");
    EXPECT_EQ(errorOf([&] { rows(u"delete from t"); })->kind, Error::Kind::NoSuchTable);
}

} // namespace
} // namespace kelb::ado::testing
