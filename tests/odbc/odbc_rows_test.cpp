#include "tests/odbc/odbc_fixture.h"

namespace kelb::ado::testing {
namespace {

using OdbcRows = OdbcFixture;

std::u16string longText(std::size_t length) {
    std::u16string text;
    for (std::size_t i = 0; i < length; ++i) {
        text += static_cast<char16_t>(u'一' + i % 20'000);
    }
    return text;
}

TEST_F(OdbcRows, BringsEveryKindOfValueThereAndBack) {
    const std::u16string content = longText(200'000);
    const std::u16string title = u"it's \"ä\" \\ ?%_ 维修𠀀";
    Recordset adding = open(u"select * from wxPrinter");
    adding.AddNew();
    adding.set(u"url", u"http://a/?x=1&y='2'");
    adding.set(u"recTime", fromDateTime({2015, 12, 2, 8, 30, 59}));
    adding.set(u"sT", title);
    adding.set(u"sC", content);
    adding.set(u"cid", Value(std::int32_t{-28}));
    adding.set(u"blnPass", Value(true));
    adding.set(u"price", std::u16string(u"-12345678901234.5678"));
    adding.set(u"size", Value(0.1));
    adding.set(u"raw", Value(Binary(70'000, std::byte{0xFE})));
    adding.set(u"big", std::u16string(u"-9223372036854775807"));
    adding.set(u"code", Value(std::int16_t{-3}));
    adding.set(u"day", fromDateTime({1999, 1, 31, 0, 0, 0}));
    adding.Update();
    adding.AddNew(); // all Null but the key
    adding.set(u"url", Value());
    adding.set(u"recTime", Value());
    adding.set(u"sC", Value());
    adding.set(u"cid", Value());
    adding.set(u"blnPass", Value());
    adding.set(u"price", Value());
    adding.set(u"raw", Value());
    adding.Update();
    adding.AddNew(); // an empty text is no Null
    adding.set(u"sT", u"");
    adding.set(u"sC", u"");
    adding.set(u"raw", Value(Binary()));
    adding.Update();

    Recordset read = open(u"select * from wxPrinter order by id", LockType::ReadOnly);
    EXPECT_EQ(read.RecordCount(), 3U);
    EXPECT_EQ(read.text(u"url"), u"http://a/?x=1&y='2'");
    EXPECT_EQ(toDateTime(read.value(u"recTime")), (platform::DateTime{2015, 12, 2, 8, 30, 59}));
    EXPECT_EQ(read.text(u"sT"), title);
    EXPECT_TRUE(read.text(u"sC") == content);
    EXPECT_EQ(read.value(u"cid"), Value(std::int32_t{-28}));
    EXPECT_EQ(read.value(u"blnPass"), Value(true));
    EXPECT_EQ(read.text(u"price"), u"-12345678901234.5678");
    EXPECT_EQ(read.value(u"size"), Value(0.1));
    EXPECT_TRUE(read.value(u"raw") == Value(Binary(70'000, std::byte{0xFE})));
    EXPECT_EQ(read.text(u"big"), u"-9223372036854775807");
    EXPECT_EQ(read.value(u"code"), Value(std::int16_t{-3}));
    EXPECT_EQ(read.text(u"day"), u"1999-1-31 0:00:00");
    read.MoveNext();
    for (std::size_t field = 1; field < read.fieldCount(); ++field) {
        EXPECT_TRUE(isNull(read.value(field))) << field;
    }
    read.MoveNext();
    EXPECT_EQ(read.value(u"sT"), Value(std::u16string()));
    EXPECT_EQ(read.value(u"sC"), Value(std::u16string()));
    EXPECT_EQ(read.value(u"raw"), Value(Binary()));
    read.MoveNext();
    EXPECT_TRUE(read.Eof());
}

/// Each length is one around the end of the pieces in which long texts come.
TEST_F(OdbcRows, JoinsThePiecesOfLongTexts) {
    Recordset adding = open(u"select * from wxPrinter");
    const std::size_t lengths[] = {4000, 4001, 16'382, 16'383, 16'384, 16'385, 32'766, 32'767, 32'768};
    for (const std::size_t length : lengths) {
        adding.AddNew();
        adding.set(u"sC", u"𠀀" + longText(length - 2));
        adding.Update();
    }
    Recordset read = open(u"select sC from wxPrinter order by id");
    for (const std::size_t length : lengths) {
        EXPECT_TRUE(read.text(u"sC") == u"𠀀" + longText(length - 2)) << length;
        read.MoveNext();
    }
}

/// A table of any size is opened for adding rows at once: its rows stay where they are until somebody asks for one.
TEST_F(OdbcRows, OpensForAddingWithoutReadingTheTable) {
    connection->Execute(u"create or replace function touched(i int) returns int language plpgsql as "
                        u"$$ begin raise exception 'the table was read'; end $$");
    connection->Execute(u"create or replace view guarded as select id, url, touched(id) as t from wxPrinter");
    connection->Execute(u"create or replace rule add_row as on insert to guarded do instead "
                        u"insert into wxPrinter (url) values (new.url)");
    connection->Execute(u"insert into wxPrinter (url) values ('before')");
    Recordset adding = open(u"select * from guarded");
    adding.AddNew();
    adding.set(u"url", u"new");
    adding.Update();
    EXPECT_EQ(adding.text(u"url"), u"new"); // the row just added is current
    EXPECT_EQ(rows(u"select url from wxPrinter order by id"), "before / new");
    EXPECT_TRUE(errorOf([&] { adding.MoveFirst(); })) << "the guard does not work";
    adding.Close();
    connection->Execute(u"drop view guarded");
}

TEST_F(OdbcRows, AnAddedRowIsTheLastMember) {
    connection->Execute(u"insert into wxPrinter (url, sT) values ('a', '1'), ('b', '2')");
    Recordset set = open(u"select * from wxPrinter order by url desc");
    const auto add = [&](const char16_t* url) {
        set.AddNew();
        set.set(u"url", url);
        set.Update();
    };
    add(u"z"); // before the rows are fetched: the SELECT gives it, too
    EXPECT_EQ(set.RecordCount(), 3U);
    EXPECT_EQ(set.text(u"url"), u"z");
    EXPECT_EQ(set.value(u"id"), Value(std::int32_t{3}));
    add(u"c"); // and after
    set.MovePrevious();
    EXPECT_EQ(set.text(u"url"), u"z");
    set.MoveFirst();
    EXPECT_EQ(AdoFixture::show(set), "2|b|~|2|~|~|~|~|~|~|~|~|~|~ / 1|a|~|1|~|~|~|~|~|~|~|~|~|~ / "
                                     "3|z|~|~|~|~|~|~|~|~|~|~|~|~ / ~|c|~|~|~|~|~|~|~|~|~|~|~|~");
}

TEST_F(OdbcRows, ChangesAndDeletesByThePrimaryKey) {
    connection->Execute(u"insert into wxPrinter (url, sT) values ('a', 'x'), ('a', 'x'), ('a', 'x')");
    Recordset set = open(u"select * from wxPrinter where url='a' order by id");
    set.MoveNext();
    set.set(u"sT", u"it's");
    set.set(u"cid", Value(std::int32_t{5}));
    set.MoveNext(); // saves
    set.Delete();
    EXPECT_EQ(errorOf([&] { set.text(u"sT"); })->kind, Error::Kind::RowDeleted);
    set.MovePrevious();
    EXPECT_EQ(set.text(u"sT"), u"it's");
    EXPECT_EQ(set.RecordCount(), 2U);
    EXPECT_EQ(rows(u"select id, sT, cid from wxPrinter order by id"), "1|x|~ / 2|it's|5");

    connection->Execute(u"delete from wxPrinter where id=2");
    set.set(u"sT", u"gone");
    EXPECT_EQ(errorOf([&] { set.Update(); })->kind, Error::Kind::RowDeleted);
    EXPECT_EQ(rows(u"select id, sT from wxPrinter"), "1|x");

    set.AddNew(); // the server knows its key, and this set does not
    set.set(u"url", u"new");
    set.Update();
    set.set(u"sT", u"y");
    EXPECT_EQ(errorOf([&] { set.Update(); })->kind, Error::Kind::Refused);
}

TEST_F(OdbcRows, PrefersAUniqueIndexWithoutNullToAllColumns) {
    connection->Execute(u"create table bare (a varchar(20) not null unique, b timestamp, c text unique)");
    connection->Execute(u"insert into bare values ('1', '2015-12-02 08:30:00.123', 'x'), ('2', null, null)");
    Recordset set = open(u"select * from bare order by a");
    connection->Execute(u"update bare set c = c || '!'"); // by somebody else, which a key does not mind
    set.set(u"b", Value());
    set.Update();
    set.MoveNext();
    set.set(u"a", u"3");
    set.Update();
    set.set(u"c", u"y"); // found by its new key
    set.Update();
    EXPECT_EQ(rows(u"select * from bare order by a"), "1|~|x! / 3|~|y");
}

/// Without a key a row is the one that has all of these values, and exactly one row must have them.
TEST_F(OdbcRows, ChangesATableWithoutKeyOnlyWhereOneRowIsMeant) {
    connection->Execute(u"create table bare (a text, b int, d timestamp)");
    connection->Execute(u"insert into bare values ('x', 1, now()), ('x', 1, now()), (null, 2, null)");
    Recordset set = open(u"select * from bare order by b");
    set.set(u"b", Value(std::int32_t{9}));
    const auto caught = errorOf([&] { set.Update(); });
    ASSERT_TRUE(caught);
    EXPECT_EQ(caught->kind, Error::Kind::Refused);
    EXPECT_NE(caught->text.find("primary key"), std::string::npos) << caught->text;
    EXPECT_EQ(errorOf([&] { set.Delete(); })->kind, Error::Kind::Refused);
    EXPECT_EQ(rows(u"select a, b from bare order by b"), "x|1 / x|1 / ~|2");
    set.MoveLast();
    set.set(u"a", u"y");
    set.Update();
    set.Delete();
    EXPECT_EQ(rows(u"select a, b from bare"), "x|1 / x|1");

    connection->BeginTrans(); // the caller's transaction is left to the caller
    set.MoveFirst();
    set.set(u"b", Value(std::int32_t{9}));
    EXPECT_NE(errorOf([&] { set.Update(); })->text.find("roll the transaction back"), std::string::npos);
    connection->RollbackTrans();
    EXPECT_EQ(rows(u"select b from bare"), "1 / 1");
}

TEST_F(OdbcRows, RowsOfSeveralTablesAreOnlyRead) {
    connection->Execute(u"insert into wxPrinter (url) values ('a')");
    Recordset set = open(u"select a.url from wxPrinter a, wxPrinter b");
    EXPECT_EQ(set.text(u"url"), u"a");
    for (const auto& caught :
         {errorOf([&] { set.AddNew(); }), errorOf([&] { set.set(u"url", u"x"); }), errorOf([&] { set.Delete(); })}) {
        ASSERT_TRUE(caught);
        EXPECT_EQ(caught->kind, Error::Kind::ReadOnly);
    }
}

/// A value too long for its column is never cut: the field is named, and nothing is stored.
TEST_F(OdbcRows, NamesTheFieldThatIsTooSmall) {
    Recordset set = open(u"select * from wxPrinter");
    const auto store = [&](const char16_t* field, std::size_t length) {
        return errorOf([&] {
            set.AddNew();
            set.set(u"url", u"u");
            set.set(field, longText(length));
            set.Update();
        });
    };
    EXPECT_FALSE(store(u"sT", 250));
    const auto caught = store(u"sT", 251);
    ASSERT_TRUE(caught);
    EXPECT_EQ(caught->kind, Error::Kind::FieldTooSmall);
    EXPECT_NE(caught->text.find("table wxPrinter, field st, 250 characters allowed, 251 given"), std::string::npos)
        << caught->text;
    EXPECT_NE(caught->text.find("SQLSTATE 22001"), std::string::npos) << caught->text;
    EXPECT_FALSE(store(u"note", 5000)); // a column without limit, which its driver tells as one of 255
    EXPECT_FALSE(store(u"sC", 5000));
    EXPECT_EQ(rows(u"select length(sT), length(note), length(sC) from wxPrinter order by id"),
              "250|~|~ / ~|5000|~ / ~|~|5000");
    set.MoveFirst();
    set.set(u"sT", longText(251));
    EXPECT_EQ(errorOf([&] { set.Update(); })->kind, Error::Kind::FieldTooSmall);
}

TEST_F(OdbcRows, RefusesTheCharacterZeroBeforeItCutsAText) {
    Recordset set = open(u"select * from wxPrinter");
    set.AddNew();
    set.set(u"sC", std::u16string(u"a\0b", 3));
    EXPECT_NE(errorOf([&] { set.Update(); })->text.find("sc"), std::string::npos);
    EXPECT_EQ(errorOf([&] { connection->Execute(std::u16string(u"delete\0 1", 9)); })->kind, Error::Kind::Syntax);
    EXPECT_EQ(rows(u"select * from wxPrinter"), "");
}

/// Half a character is no text in any other encoding; drivers left alone with it lose the one behind it, too.
TEST_F(OdbcRows, HalfACharacterCostsNothingElse) {
    const std::u16string first(1, static_cast<char16_t>(0xD840)), second(1, static_cast<char16_t>(0xDC00));
    Recordset set = open(u"select * from wxPrinter");
    set.AddNew();
    set.set(u"sC", u"a" + first + u"b" + second + u"𠀀" + first);
    set.Update();
    connection->Execute(u"insert into wxPrinter (sC) values ('a" + first + u"b')");
    EXPECT_EQ(rows(u"select sC from wxPrinter order by id"), "a\uFFFDb\uFFFD𠀀\uFFFD / a\uFFFDb");
}

TEST_F(OdbcRows, AFailedRowLeavesTheSetUsable) {
    connection->Execute(u"alter table wxPrinter add constraint one_url unique (url)");
    Recordset set = open(u"select * from wxPrinter");
    const auto add = [&](const char16_t* url) {
        return errorOf([&] {
            set.AddNew();
            set.set(u"url", url);
            set.Update();
        });
    };
    EXPECT_FALSE(add(u"a"));
    EXPECT_EQ(add(u"a")->kind, Error::Kind::DuplicateKey);
    EXPECT_FALSE(add(u"b"));
    EXPECT_EQ(rows(u"select url from wxPrinter order by url"), "a / b");
}

TEST_F(OdbcRows, TransactionsHoldAllOrNothing) {
    connection->BeginTrans();
    EXPECT_EQ(connection->Execute(u"insert into wxPrinter (url) values ('a'), ('b')"), 2U);
    EXPECT_EQ(errorOf([&] { connection->BeginTrans(); })->kind, Error::Kind::Refused);
    EXPECT_EQ(rows(u"select url from wxPrinter"), "");
    connection->CommitTrans();
    connection->BeginTrans();
    connection->Execute(u"delete from wxPrinter");
    connection->RollbackTrans();
    EXPECT_EQ(errorOf([&] { connection->CommitTrans(); })->kind, Error::Kind::Refused);
    connection->BeginTrans();
    connection->Execute(u"delete from wxPrinter");
    connection->Close(); // not committed
    EXPECT_EQ(rows(u"select url from wxPrinter"), "a / b");
}

/// Later rows see what earlier ones would have changed; the server never does.
TEST_F(OdbcRows, ADryRunChangesNothing) {
    connection->Execute(u"insert into wxPrinter (url) values ('a')");
    start({.dryRun = true});
    Recordset set = open(u"select * from wxPrinter");
    set.AddNew();
    set.set(u"url", u"b");
    set.Update();
    set.Close();
    connection->Execute(u"alter table wxPrinter add extra int");
    connection->flush();
    EXPECT_EQ(open(u"select url, extra from wxPrinter").RecordCount(), 2U);
    EXPECT_EQ(errorOf([&] { connection->CommitTrans(); })->kind, Error::Kind::Refused);
    connection->Close();
    EXPECT_EQ(rows(u"select url from wxPrinter"), "a");
    EXPECT_EQ(rows(u"select column_name from information_schema.columns where column_name='extra'"), "");
}

TEST_F(OdbcRows, ListsTables) {
    connection->Execute(u"create table bare (a int)");
    Recordset tables;
    connection->OpenSchema(tables);
    std::string own;
    for (; !tables.Eof(); tables.MoveNext()) {
        const std::u16string name = tables.text(u"TABLE_NAME");
        if (name == u"bare" || name == u"wxprinter") {
            own += platform::toUtf8(name + u"/" + tables.text(u"TABLE_TYPE") + u" ");
        }
    }
    EXPECT_EQ(own, "bare/TABLE wxprinter/TABLE ");
}

} // namespace
} // namespace kelb::ado::testing
