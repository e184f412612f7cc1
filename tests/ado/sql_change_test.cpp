#include "tests/ado/ado_fixture.h"

#include <tuple>

namespace kelb::ado::testing {
namespace {

class SqlChange : public AdoFixture {
public:
    SqlChange() {
        execute(u"create table t (id int identity(1,1), a varchar(5), n int, f yesno, d datetime, m memo)");
        execute(u"insert into t (a, n) values ('x', 1)");
        execute(u"insert into t (a, n, f) values ('y', 2, true)");
        execute(u"insert into t (n) values (3)");
    }
};

TEST_F(SqlChange, Inserts) {
    EXPECT_EQ(execute(u"insert into t values (10, 'it''s', -5, yes, #2015-12-2 8:30:00#, '网')"), 1U);
    EXPECT_EQ(execute(u"insert into t (m, n) values ('a' & 1 + 1, '7')"), 1U); // counts on behind 10
    EXPECT_EQ(rows(u"select * from t where id > 3"), "10|it's|-5|True|2015-12-2 8:30:00|网 / 11|~|7|False|~|a2");
}

TEST_F(SqlChange, CopiesRows) {
    execute(u"create table s (k int, b varchar(5))");
    EXPECT_EQ(execute(u"insert into s (b, k) select a, n from t where n < 3 order by n desc"), 2U);
    EXPECT_EQ(rows(u"select * from s"), "2|y / 1|x");
    EXPECT_EQ(execute(u"insert into s select n, a from t"), 3U);
    EXPECT_EQ(execute(u"insert into s select * from s"), 5U); // of the rows that were there before
    EXPECT_EQ(rows(u"select count(*) from s"), "10");
}

TEST_F(SqlChange, UpdatesAndDeletes) {
    EXPECT_EQ(execute(u"update t set n = n + 1, a = a & n, f = not f where n < 3"), 2U);
    EXPECT_EQ(rows(u"select id, a, n, f from t"), "1|x1|2|True / 2|y2|3|False / 3|~|3|False");
    EXPECT_EQ(execute(u"update t set a = null, m = '' where a = 'X1'"), 1U);
    EXPECT_EQ(rows(u"select id from t where a is null and m = ''"), "1");
    EXPECT_EQ(execute(u"delete * from t where n = 3"), 2U);
    EXPECT_EQ(rows(u"select id from t"), "1");
    EXPECT_EQ(execute(u"delete from t"), 1U);
    EXPECT_EQ(execute(u"delete from t"), 0U);
    EXPECT_EQ(rows(u"select * from t"), "");
    EXPECT_EQ(faults(), "");
}

TEST_F(SqlChange, DoesAllOrNothing) {
    execute(u"create unique index i on t (n)");
    const std::string before = rows(u"select * from t");
    const std::tuple<const char16_t*, Error::Kind, const char*> cases[] = {
        // The first row would go through.
        {u"update t set a = 'w', n = 9 where n > 1", Error::Kind::DuplicateKey, "table t"},
        {u"update t set a = a & 'abcde' where n < 3", Error::Kind::FieldTooSmall, "field a"},
        {u"update t set n = 100 / (n - 3)", Error::Kind::TypeMismatch, ""},
        {u"insert into t (a, n) values ('abcdef', 9)", Error::Kind::FieldTooSmall, "field a"},
        {u"insert into t (n) values ('abc')", Error::Kind::TypeMismatch, "field n"},
        {u"insert into t (n) select id + 1 from t", Error::Kind::Syntax, ""},
        {u"insert into t (n) select id from t", Error::Kind::DuplicateKey, ""},
        {u"insert into t (n, nosuch) values (1, 2)", Error::Kind::NoSuchColumn, "nosuch"},
        {u"insert into t values (1, 2)", Error::Kind::Syntax, "2 values for 6 columns"},
        {u"insert into t (n) values (n)", Error::Kind::NoSuchColumn, ""},
        {u"update t set nosuch = 1", Error::Kind::NoSuchColumn, "nosuch"},
        {u"delete from nosuch", Error::Kind::NoSuchTable, "nosuch"},
        {u"delete from MSysObjects", Error::Kind::ReadOnly, "belongs to Access"},
    };
    for (const auto& [statement, kind, says] : cases) {
        const auto caught = errorOf([&] { execute(statement); });
        ASSERT_TRUE(caught) << platform::toUtf8(statement);
        EXPECT_EQ(caught->kind, kind) << caught->text;
        EXPECT_NE(caught->text.find(says), std::string::npos) << caught->text;
        EXPECT_EQ(rows(u"select * from t"), before) << platform::toUtf8(statement);
    }
    EXPECT_EQ(faults(), "");
}

TEST_F(SqlChange, TransactionsAreTakenBack) {
    connection->BeginTrans();
    execute(u"insert into t (a, n) values ('new', 4)");
    execute(u"update t set a = 'z' where n = 1");
    execute(u"delete from t where n = 2");
    EXPECT_EQ(rows(u"select id from t where a = 'z'"), "1"); // a hash index made on the way
    EXPECT_EQ(rows(u"select n from t"), "1 / 3 / 4");
    connection->RollbackTrans();
    EXPECT_EQ(rows(u"select n from t"), "1 / 2 / 3");
    EXPECT_EQ(rows(u"select n from t where a = 'y'"), "2");
    EXPECT_EQ(rows(u"select n from t where a = 'z'"), "");
    EXPECT_EQ(errorOf([&] { connection->CommitTrans(); })->kind, Error::Kind::Refused);

    connection->BeginTrans();
    execute(u"delete from t where n = 2");
    connection->CommitTrans();
    EXPECT_EQ(rows(u"select n from t"), "1 / 3");
    connection->BeginTrans();
    execute(u"delete from t");
    start({}); // a connection that goes away with its transaction open
    EXPECT_EQ(rows(u"select n from t"), "1 / 3");
}

} // namespace
} // namespace kelb::ado::testing
