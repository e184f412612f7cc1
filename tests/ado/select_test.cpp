#include "tests/ado/ado_fixture.h"

#include "ado/jet_select.h"
#include "ado/row_search.h"
#include "ado/shared_database.h"
#include "ado/sql_parser.h"

#include <tuple>

namespace kelb::ado::testing {
namespace {

class Select : public AdoFixture {
public:
    Select() {
        execute(
            u"create table bbsforum (id int identity(1,1), url varchar(255), cid int, content memo, blnPass yesno)");
        add(u"http://a/thread-3-1-1.html", u"28", u"三", u"true");
        add(u"http://a/thread-1-1-1.html", u"28", u"null", u"false");
        add(u"http://a/THREAD-2-1-1.html", u"28", u"it''s", u"true");
        add(u"http://a/thread-1-2-1.html", u"40", u"", u"false");
        execute(u"insert into bbsforum (cid) values (28)");
    }
    void add(const std::u16string& url, const std::u16string& cid, const std::u16string& content,
             const std::u16string& pass) {
        const std::u16string text = content == u"null" ? content : u"'" + content + u"'";
        execute(u"insert into bbsforum (url, cid, content, blnPass) values ('" + url + u"', " + cid + u", " + text +
                u", " + pass + u")");
    }
};

struct SelectCase {
    const char16_t* select;
    const char* rows;
};

TEST_F(Select, GivesRows) {
    const SelectCase cases[] = {
        {u"select * from bbsforum where id = 2", "2|http://a/thread-1-1-1.html|28|~|False"},
        {u"select id from bbsforum", "1 / 2 / 3 / 4 / 5"},
        {u"select b.content as c, ID from BBSFORUM b where id=3", "it's|3"},
        {u"select id from bbsforum where (cid=28 and url like '%thread%-1-%') ORDER BY url", "2 / 3 / 1"},
        {u"select id from bbsforum ORDER BY ID DESC", "5 / 4 / 3 / 2 / 1"},
        // Null comes first, the other way round last; rows that are equal stay in page order.
        {u"select id from bbsforum order by url", "5 / 2 / 4 / 3 / 1"},
        {u"select id from bbsforum order by url desc", "1 / 3 / 4 / 2 / 5"},
        {u"select id from bbsforum order by cid desc", "4 / 1 / 2 / 3 / 5"},
        {u"select id from bbsforum order by cid, url desc", "1 / 3 / 2 / 5 / 4"},
        {u"select id from bbsforum order by blnPass, id desc", "3 / 1 / 5 / 4 / 2"},
        {u"select id, url as u from bbsforum where id < 4 order by u", "2|http://a/thread-1-1-1.html / "
                                                                       "3|http://a/THREAD-2-1-1.html / "
                                                                       "1|http://a/thread-3-1-1.html"},
        {u"select top 2 id from bbsforum", "1 / 2"},
        {u"select top 2 id from bbsforum order by cid", "1 / 2"}, // three are equal: exactly two all the same
        {u"select top 9 id from bbsforum order by id desc", "5 / 4 / 3 / 2 / 1"},
        {u"select top 0 id from bbsforum", ""},
        {u"select id from bbsforum where url='HTTP://A/thread-2-1-1.HTML'", "3"},
        {u"select id from bbsforum where url like 'http://a/thread-2-1-1.html'", "3"},
        {u"select id from bbsforum where content='it''s'", "3"},
        {u"select id from bbsforum where content=''", "4"},
        {u"select id from bbsforum where content is null", "2 / 5"},
        {u"select id from bbsforum where content<>''", "1 / 3"},
        {u"select id from bbsforum where url='nosuch'", ""},
        {u"select id from bbsforum where url=null", ""},
        {u"select id from bbsforum where url='http://a/thread-1-2-1.html' or url='http://a/thread-1-1-1.html' ORDER "
         u"BY url",
         "2 / 4"},
        {u"select id from bbsforum where url in ('http://a/thread-1-2-1.html', 'x', null)", "4"},
        {u"select id from bbsforum where url='x' or content='三'", "1"},
        {u"select id from bbsforum where url='x' or cid=40", "4"},
        {u"select id from bbsforum where blnPass=true and content='三' and id<>9 and cid=28", "1"},
        {u"select id from bbsforum where blnPass", "1 / 3"},
        {u"select count(*) as n from bbsforum where cid=28", "4"},
        {u"select count(*) from bbsforum", "5"},
        {u"bbsforum", "1|http://a/thread-3-1-1.html|28|三|True / 2|http://a/thread-1-1-1.html|28|~|False / "
                      "3|http://a/THREAD-2-1-1.html|28|it's|True / 4|http://a/thread-1-2-1.html|40||False / "
                      "5|~|28|~|False"},
    };
    for (int round = 0; round < 2; ++round) { // the second time with an index on url
        for (const SelectCase& c : cases) {
            EXPECT_EQ(rows(c.select), c.rows) << platform::toUtf8(c.select) << " round " << round;
        }
        if (round == 0) {
            execute(u"create index urls on bbsforum (url)");
            execute(u"create index ids on bbsforum (id)");
        }
    }
}

/// An index of the file ignores trailing blanks; the answer must not depend on whether there is one.
TEST_F(Select, TrailingBlanksCountWithAndWithoutAnIndex) {
    execute(u"create table t (a varchar(20), n int)");
    execute(u"insert into t values ('abc', 1)");
    execute(u"insert into t values ('abc ', 2)");
    EXPECT_EQ(rows(u"select n from t where a='ABC'"), "1");
    EXPECT_EQ(rows(u"select n from t where a='abc '"), "2");
    execute(u"create index i on t (a)");
    EXPECT_EQ(rows(u"select n from t where a='ABC'"), "1");
    EXPECT_EQ(rows(u"select n from t where a='abc '"), "2");
}

/// Numbers that an indexed column cannot hold equal nothing; a text without an index key is found by other means.
TEST_F(Select, ValuesBeyondAnIndex) {
    execute(u"create table t (a byte, b varchar(3))");
    execute(u"create index ia on t (a)");
    execute(u"create index ib on t (b)");
    execute(u"insert into t values (5, 'x')");
    EXPECT_EQ(rows(u"select b from t where a=5"), "x");
    EXPECT_EQ(rows(u"select b from t where a=5.0"), "x");
    for (const char16_t* where : {u"a=261", u"a=-251", u"a=5.5", u"a=1e300", u"b='xxxx'", u"b='я'"}) {
        EXPECT_EQ(rows(u"select b from t where " + std::u16string(where)), "") << platform::toUtf8(where);
    }
}

TEST_F(Select, OrdersEveryKind) {
    execute(u"create table k (n int identity, s short, c currency, d double, f real, t datetime, m memo, g guid, "
            u"q decimal(9,2))");
    execute(u"insert into k (s,c,d,f,t,m,g,q) values (-1, -0.5, -1.5, 2.5, #2015-1-1#, 'b', "
            u"'{20000000-0000-0000-0000-000000000000}', 1.5)");
    execute(u"insert into k (s,c,d,f,t,m,g,q) values (1, 0.25, 1e10, -2.5, #1899-1-1#, 'A', "
            u"'{10000000-0000-0000-0000-000000000000}', -1.25)");
    execute(u"insert into k (s,c,d,f,t,m,g,q) values (0, 0.75, 0, 0, #2016-1-1#, 'C', "
            u"'{30000000-0000-0000-0000-000000000000}', 0)");
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"s", "1 / 3 / 2"}, {u"c", "1 / 2 / 3"}, {u"d", "1 / 3 / 2"}, {u"f", "2 / 3 / 1"},
        {u"t", "2 / 1 / 3"}, {u"m", "2 / 1 / 3"}, {u"g", "2 / 1 / 3"}, {u"q", "2 / 3 / 1"},
    };
    for (const auto& [column, expected] : cases) {
        EXPECT_EQ(rows(u"select n from k order by " + std::u16string(column)), expected) << platform::toUtf8(column);
    }
}

TEST_F(Select, SaysWhatIsWrong) {
    const std::tuple<const char16_t*, Error::Kind, const char*> cases[] = {
        {u"select * from nosuch", Error::Kind::NoSuchTable, "nosuch"},
        {u"select nosuch from bbsforum", Error::Kind::NoSuchColumn, "table bbsforum has no column \"nosuch\""},
        {u"select * from bbsforum order by lastvisitdate DESC", Error::Kind::NoSuchColumn, "lastvisitdate"},
        {u"select x.* from bbsforum", Error::Kind::NoSuchColumn, "of x"},
        {u"select * from bbsforum where cid='28'", Error::Kind::TypeMismatch, "numbers are written without quotes"},
        {u"select * from bbsforum wher url='x'", Error::Kind::Syntax, "character 29, near \"url='x'\""},
    };
    for (const auto& [select, kind, says] : cases) {
        const auto caught = errorOf([&] { rows(select); });
        ASSERT_TRUE(caught) << platform::toUtf8(select);
        EXPECT_EQ(caught->kind, kind) << caught->text;
        EXPECT_NE(caught->text.find(says), std::string::npos) << caught->text;
        EXPECT_NE(caught->text.find("D:\\KelbFolder\\Comb.mdb"), std::string::npos) << caught->text;
        EXPECT_NE(caught->text.find(platform::toUtf8(select)), std::string::npos) << caught->text;
    }
}

/// What a look-up reads is what makes every import linear or quadratic.
TEST_F(Select, LooksUpInsteadOfScanning) {
    const auto shared = environment->share(path, AccessWish::Read);
    jet::Table& table = shared->table(u"bbsforum");
    const auto candidates = [&](const std::u16string& where) -> std::string {
        SelectStatement select = std::get<SelectStatement>(parseStatement(u"select * from bbsforum where " + where));
        const BoundSelect bound = bindSelect(*shared, select);
        const auto found = candidateRows(*shared, table, *bound.where);
        return found ? std::to_string(found->size()) : "scan";
    };
    EXPECT_EQ(candidates(u"url='HTTP://a/thread-1-1-1.html'"), "1");
    EXPECT_EQ(candidates(u"url like 'http://a/thread-1-1-1.html'"), "1");
    EXPECT_EQ(candidates(u"url in ('http://a/thread-1-1-1.html', 'http://a/thread-1-2-1.html')"), "2");
    EXPECT_EQ(candidates(u"cid=28 and url='x' and blnPass"), "0");
    EXPECT_EQ(candidates(u"url='x' or content='三'"), "1");
    EXPECT_EQ(candidates(u"url='http://a/thread-1-1-1.html' or url='HTTP://A/thread-1-1-1.html'"), "1");
    EXPECT_EQ(candidates(u"url=null"), "0");
    EXPECT_EQ(candidates(u"url='x' or cid=28"), "scan");
    EXPECT_EQ(candidates(u"not url='x'"), "scan");
    EXPECT_EQ(candidates(u"url like 'http%'"), "scan");
    EXPECT_EQ(candidates(u"cid like '28'"), "scan");
    EXPECT_EQ(candidates(u"id=2"), "scan");
    execute(u"create index ids on bbsforum (id)");
    EXPECT_EQ(candidates(u"id=2"), "1");
    EXPECT_EQ(candidates(u"id in (2, 3, 2)"), "2");
}

} // namespace
} // namespace kelb::ado::testing
