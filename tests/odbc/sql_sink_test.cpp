#include "store/ClsSQL.h"
#include "tests/odbc/odbc_fixture.h"

namespace kelb::store {
namespace {

class SqlSink : public ado::testing::OdbcFixture {
protected:
    SqlSink() {
        connection->Execute(u"create table qiche (url text, refurl text, content text, recdate timestamp, "
                            u"contentlength int)");
    }
};

TEST_F(SqlSink, KeepsTheLongestVersionOfAPage) {
    ClsSQL sink(*environment, clock, kWxDb);
    ASSERT_TRUE(sink.blnReady());
    EXPECT_EQ(sink.Save2DBStomach(u"http://a/'1'", u"r", u"first", 1000), 1);
    EXPECT_EQ(sink.Save2DBStomach(u"http://a/'1'", u"s", u"second", 1299), 2);
    EXPECT_EQ(rows(u"select * from qiche"), "http://a/'1'|r|first|2015-12-2 8:30:00|1000");
    EXPECT_EQ(sink.Save2DBStomach(u"http://a/'1'", u"s", u"second", 1300), 1);
    EXPECT_EQ(sink.Save2DBStomach(u"http://b/", u"", u"", 0), 1);
    EXPECT_EQ(rows(u"select url, refurl, content, contentlength from qiche order by url"),
              "http://a/'1'|s|second|1300 / http://b/|||0");
}

/// Marks that mean something to drivers, inside the text of the look-up.
TEST_F(SqlSink, FindsAddressesWithEveryMark) {
    ClsSQL sink(*environment, clock, kWxDb);
    for (const std::u16string_view url : {u"http://a/?x=1&y=?", u"http://a/{fn now()}", u"http://a/\\'", u"http://a/\\",
                                          u"http://a/-- x", u"http://a/;%_$1", u"http://a/文章\"𠀀"}) {
        EXPECT_EQ(sink.Save2DBStomach(url, u"", u"x", 1000), 1) << platform::toUtf8(url);
        EXPECT_EQ(sink.Save2DBStomach(url, u"", u"y", 1299), 2) << platform::toUtf8(url);
    }
    EXPECT_EQ(rows(u"select count(*) from qiche"), "7");
}

TEST_F(SqlSink, TakesANullLengthForZeroAndShrinkingForNoGrowth) {
    connection->Execute(u"insert into qiche (url, contentlength) values ('n', null), ('s', 2147483647)");
    ClsSQL sink(*environment, clock, kWxDb);
    EXPECT_EQ(sink.Save2DBStomach(u"n", u"", u"x", 299), 2);
    EXPECT_EQ(sink.Save2DBStomach(u"n", u"", u"x", 300), 1);
    EXPECT_EQ(sink.Save2DBStomach(u"s", u"", u"x", -2147483647), 2);
}

TEST_F(SqlSink, DoesNothingWithoutItsServer) {
    ClsSQL sink(*environment, clock, u"driver={sql server};server=127.0.0.1;port=1;Database=mendDB;");
    EXPECT_FALSE(sink.blnReady());
    EXPECT_EQ(sink.Save2DBStomach(u"http://a/", u"", u"x", 1000), 0);
    EXPECT_NE(platform::toUtf8(sink.errorText()).find("SQLSTATE 08001"), std::string::npos);

    ClsSQL withoutLogin(*environment, clock, u"driver={sql server};server=127.0.0.1;Database=mendDB;");
    EXPECT_TRUE(withoutLogin.blnReady());
    EXPECT_THROW(withoutLogin.Save2DBStomach(u"http://a/", u"", u"x", 1), ado::Error); // no table there
}

} // namespace
} // namespace kelb::store
