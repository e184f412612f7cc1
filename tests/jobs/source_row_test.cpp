#include "jobs/source_row.h"

#include "ado/error.h"
#include "jobs/source_page.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

class SourceRowTest : public JobTest {
protected:
    SourceRowTest() {
        crawl(u"7-1-1", {u"先量电压"});
        crawl(u"8-1-1", {});
        execute(kSource, {u"create table aaa (url varchar(255), refurl varchar(255))",
                          u"insert into aaa values ('http://b/thread-7-1-1.html', 'first by name')",
                          u"insert into aaa values ('http://b/o''k', 'quoted')", u"create table other (word memo)"});
    }
    std::optional<SourceRow> find(const RowName& name) { return SourceRows(context().databases()).find(name); }
    static RowName named(std::u16string url, std::u16string table = {}) {
        return {std::u16string(kSource), std::move(table), std::nullopt, std::move(url)};
    }
};

TEST_F(SourceRowTest, IsFoundByItsAddressWherePagesAreKeptFirst) {
    const auto row = find(named(u"http://b/thread-7-1-1.html"));
    ASSERT_TRUE(row);
    EXPECT_EQ(row->table, u"bbsforum");
    EXPECT_EQ(row->field(u"CONTENT")->text, u"D:\\crawl\\7-1-1.htm");
    EXPECT_TRUE(row->field(u"sT")->null);
    EXPECT_EQ(row->field(u"none"), nullptr);
    EXPECT_EQ(find(named(u"http://b/o'k"))->field(u"refurl")->text, u"quoted");
    EXPECT_EQ(find(named(u"http://b/thread-7-1-1.html", u"aaa"))->field(u"refurl")->text, u"first by name");
}

TEST_F(SourceRowTest, IsFoundByItsNumberWhichMustFitTheAddress) {
    RowName name{std::u16string(kSource), u"bbsforum", 2, {}};
    ASSERT_TRUE(find(name));
    EXPECT_EQ(find(name)->field(u"url")->text, u"http://b/thread-8-1-1.html");
    name.url = u"http://b/thread-7-1-1.html";
    EXPECT_FALSE(find(name));
    EXPECT_FALSE(find(named(u"")));
}

TEST_F(SourceRowTest, ThatIsGoneIsNotFoundAnyMore) {
    SourceRows rows(context().databases());
    EXPECT_TRUE(rows.find(named(u"http://b/thread-8-1-1.html")));
    {
        ado::Connection job(context().databases());
        job.Open(ado::jetConnectionString(kSource));
        job.Execute(u"delete from bbsforum where id=2");
    }
    EXPECT_FALSE(rows.find(named(u"http://b/thread-8-1-1.html")));
    EXPECT_THROW(rows.find(named(u"http://b/x", u"none")), ado::Error);
}

TEST_F(SourceRowTest, LeadsToItsPage) {
    using enum SourcePage::State;
    files.writeFile(u"X:\\own\\a.htm", "<p>own</p>");
    struct Case {
        std::u16string content, lanFolder;
        SourcePage::State state;
        std::u16string_view path, holds;
    };
    const Case cases[] = {
        {u"D:\\crawl\\7-1-1.htm", u"X:\\lan\\", File, u"X:\\lan\\crawl\\7-1-1.htm", u"先量电压"},
        {u" X:\\own\\a.htm ", u"X:\\lan\\", File, u"X:\\own\\a.htm", u"own"},
        {u"D:\\crawl\\8-1-1.htm", u"X:\\lan\\", NoFile, u"X:\\lan\\crawl\\8-1-1.htm\nD:\\crawl\\8-1-1.htm", u""},
        {u"D:\\crawl\\8-1-1.htm", u"", NoFile, u"D:\\crawl\\8-1-1.htm", u""},
        {u"<html>短</html>", u"X:\\lan\\", InRow, u"", u"短"},
        {u"第一行\r\n第二行", u"", InRow, u"", u"第二行"},
        {u"  ", u"X:\\lan\\", None, u"", u""},
    };
    PageFiles pages = context().pageFiles();
    for (const Case& each : cases) {
        const SourcePage page = sourcePage(each.content, {false, each.lanFolder}, pages);
        EXPECT_EQ(page.state, each.state) << platform::toUtf8(each.content);
        EXPECT_EQ(page.path, each.path);
        EXPECT_NE(page.html.find(each.holds), page.html.npos) << platform::toUtf8(each.content);
    }
}

TEST_F(SourceRowTest, APageThatCannotBeReadIsNotOneThatIsGone) {
    files.beforeOperation = [](std::string_view operation, std::u16string_view path) {
        if (operation == "read" && path.ends_with(u"7-1-1.htm")) {
            throw platform::FileError(platform::FileError::Kind::Other, "read", path, 5, "input/output error");
        }
    };
    PageFiles pages = context().pageFiles();
    const SourcePage page = sourcePage(u"D:\\crawl\\7-1-1.htm", {true, u"X:\\lan\\"}, pages);
    files.beforeOperation = nullptr;
    EXPECT_EQ(page.state, SourcePage::State::NoFile);
    EXPECT_THAT(page.why, testing::HasSubstr("input/output error"));
}

} // namespace
} // namespace kelb::jobs
