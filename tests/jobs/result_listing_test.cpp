#include "jobs/result_listing.h"

#include "ado/error.h"
#include "jobs/job_error.h"
#include "jobs/published_article.h"
#include "jobs/result_filter.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

#include <tuple>

namespace kelb::jobs {
namespace {

using Column = ResultListing::Column;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ResultListingTest : public JobTest {
protected:
    ado::Environment& databases() { return context().databases(); }
    /// Articles "1", "2" … whose bodies are as long as their number.
    void articles(std::size_t count) {
        ado::Environment environment(context().platform(), {});
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(kDest));
        ado::Recordset rows;
        rows.Open(u"wxAll", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
        for (std::size_t i = 1; i <= count; ++i) {
            rows.AddNew();
            rows.set(u"sT", number(i));
            rows.set(u"sC", std::u16string(i, u'文'));
            rows.set(u"url", u"http://b/" + number(i));
            rows.Update();
        }
        rows.Close();
        connection.Close();
    }
    static std::u16string number(std::size_t i) { return platform::fromUtf8(std::to_string(i)); }
    template <class Wrong, class Work>
    static std::string refusal(Work&& work) {
        try {
            work();
        } catch (const Wrong& error) {
            return error.what();
        }
        return "nothing was refused";
    }
};

TEST_F(ResultListingTest, ShowsWhatATableOfArticlesHolds) {
    execute(kDest, {u"insert into wxAll (url, recTime, sT, sC) values ('http://b/1', #2015-12-02 08:30:00#, '黑屏', "
                    u"'换电容<br>好了')",
                    u"insert into wxAll (url) values ('http://b/2')", u"alter table wxAll add blnPass YESNO"});
    ResultListing listing(databases(), kDest, u"wxAll");
    ASSERT_EQ(listing.count(), 2U);
    const ResultListing::Line& first = listing.line(0);
    EXPECT_EQ(first.title, u"黑屏");
    EXPECT_EQ(first.length, 9U);
    EXPECT_EQ(first.url, u"http://b/1");
    EXPECT_EQ(first.time, u"2015-12-2 8:30:00");
    EXPECT_EQ(first.pass, false);
    EXPECT_EQ(listing.line(1).length, std::nullopt);
    EXPECT_EQ((*listing.fields(1))[1].text, u"http://b/2");
    EXPECT_TRUE((*listing.fields(1))[2].null);
}

TEST_F(ResultListingTest, CopesWithTablesThatLackFields) {
    execute(kDest, {u"create table wxKnowledge (TVCode varchar(50), TVName varchar(50), param1 varchar(50))",
                    u"insert into wxKnowledge values ('L32', '晴川液晶电视', '32')",
                    u"create table texts (sC memo, blnPass varchar(5))", u"insert into texts values ('正文', 'no')"});
    ResultListing products(databases(), kDest, u"wxKnowledge");
    EXPECT_EQ(products.line(0).title, u"晴川液晶电视");
    EXPECT_EQ(products.line(0).url, u"");
    EXPECT_EQ(products.line(0).pass, std::nullopt);
    EXPECT_EQ(products.fieldOf(Column::Body), std::nullopt);
    ResultListing texts(databases(), kDest, u"texts");
    EXPECT_EQ(texts.line(0).title, u"");
    EXPECT_EQ(texts.line(0).length, 2U);
    EXPECT_FALSE(texts.hasPass()); // a text is no mark
    EXPECT_THAT(tablesOf(databases(), kDest), ElementsAre(u"texts", u"wxAll", u"wxKnowledge"));
}

TEST_F(ResultListingTest, SaysWhatIsNoTableOfArticles) {
    execute(kDest, {u"create table words (word varchar(50))"});
    EXPECT_THAT(refusal<JobError>([&] { ResultListing(databases(), kDest, u"words"); }),
                testing::AllOf(HasSubstr("words"), HasSubstr("neither a title")));
    EXPECT_THAT(refusal<JobError>([&] { std::ignore = tablesOf(databases(), u"Driver={SQL Server};Server=x"); }),
                HasSubstr("not of a server"));
    EXPECT_THAT(refusal<ado::Error>([&] { ResultListing(databases(), kDest, u"gone"); }), HasSubstr("gone"));
    EXPECT_THAT(refusal<ado::Error>([&] { std::ignore = tablesOf(databases(), u"X:\\none.mdb"); }),
                HasSubstr("none.mdb"));
}

TEST_F(ResultListingTest, LinesFarApartDoNotTakeEachOthersPlace) {
    articles(1'100);
    ResultListing listing(databases(), kDest, u"wxAll");
    for (const std::size_t row : {0U, 511U, 512U, 1'024U, 0U, 1'099U, 512U}) {
        EXPECT_EQ(listing.line(row).title, number(row + 1));
        EXPECT_EQ(listing.line(row).length, row + 1);
    }
}

TEST_F(ResultListingTest, ARowDeletedMeanwhileIsToldAndKeepsItsNumber) {
    articles(3);
    ResultListing listing(databases(), kDest, u"wxAll");
    EXPECT_EQ(listing.line(1).title, u"2");
    const auto place = listing.place(2);
    {
        ado::Connection job(databases());
        job.Open(ado::jetConnectionString(kDest));
        job.Execute(u"delete from wxAll where id=2");
        job.Execute(u"insert into wxAll (sT) values ('new')"); // where the second one was
    }
    listing.forget();
    EXPECT_EQ(listing.count(), 3U);
    EXPECT_TRUE(listing.line(1).gone);
    EXPECT_EQ(listing.fields(1), std::nullopt);
    std::u16string text = u"old";
    EXPECT_FALSE(listing.text(1, Column::Title, text));
    EXPECT_EQ(text, u"");
    EXPECT_EQ(listing.line(2).title, u"3");
    EXPECT_EQ(listing.place(2), place);
    EXPECT_TRUE(listing.line(3).gone);
}

TEST_F(ResultListingTest, MarksAreOnTheDiskAndTheFileIsOthersToReadAgain) {
    articles(3);
    ResultListing listing(databases(), kDest, u"wxAll");
    EXPECT_FALSE(listing.hasPass());
    listing.addPass();
    ASSERT_TRUE(listing.hasPass());
    EXPECT_EQ(listing.line(2).pass, false);
    EXPECT_EQ(listing.setPass(std::vector<std::size_t>{0, 2}, true), 2U);
    EXPECT_EQ(listing.line(2).pass, true);
    EXPECT_THAT(rows(kDest, u"select sT, blnPass from wxAll"), ElementsAre("1|True", "2|False", "3|True"));
    listing.setPass(std::vector<std::size_t>{2}, false);
    EXPECT_THAT(rows(kDest, u"select sT from wxAll where blnPass=true"), ElementsAre("1"));
}

TEST_F(ResultListingTest, MarksPassOverRowsThatAreGone) {
    execute(kDest, {u"alter table wxAll add blnPass YESNO"});
    articles(2);
    ResultListing listing(databases(), kDest, u"wxAll");
    {
        ado::Connection job(databases());
        job.Open(ado::jetConnectionString(kDest));
        EXPECT_EQ(listing.count(), 2U);
        job.Execute(u"delete from wxAll where id=1");
        EXPECT_EQ(listing.setPass(std::vector<std::size_t>{0, 1}, true), 1U);
        job.Execute(u"update wxAll set sT='job' where id=2"); // the job has kept its right to write
    }
    databases().leaveToReaders(kDest);
    EXPECT_THAT(rows(kDest, u"select sT, blnPass from wxAll"), ElementsAre("job|True"));
}

TEST_F(ResultListingTest, PutsRowsInAnOrder) {
    articles(12);
    ResultListing listing(databases(), kDest, u"wxAll", ResultListing::Order{Column::Title, true});
    EXPECT_EQ(listing.line(0).title, u"9");
    EXPECT_EQ(listing.line(11).title, u"1");
}

class ResultFilterTest : public ResultListingTest {
protected:
    static void finish(ResultFilter& filter) {
        while (!filter.finished()) {
            filter.step(7);
        }
    }
};

TEST_F(ResultFilterTest, FindsTitlesAddressesAndIfWantedBodies) {
    execute(kDest, {u"insert into wxAll (sT, sC, url) values ('TCL黑屏', 'x', 'http://b/1')",
                    u"insert into wxAll (sT, sC, url) values ('b', '黑屏', 'http://tcl.example/')",
                    u"insert into wxAll (sC) values ('无Tcl')"});
    ResultListing listing(databases(), kDest, u"wxAll");
    ResultFilter filter(listing);
    filter.look(u"tcl", ResultFilter::Bodies::Passed);
    finish(filter);
    EXPECT_THAT(filter.matches(), ElementsAre(0, 1));
    filter.look(u"tcl", ResultFilter::Bodies::Searched);
    finish(filter);
    EXPECT_THAT(filter.matches(), ElementsAre(0, 1, 2));
    filter.look(u"none", ResultFilter::Bodies::Searched);
    finish(filter);
    EXPECT_THAT(filter.matches(), IsEmpty());
}

/// Whatever is typed after whatever number of steps: the newest text counts, over all rows.
TEST_F(ResultFilterTest, TheNewestTextCountsHoweverFarTheLastOneGot) {
    articles(60);
    ResultListing listing(databases(), kDest, u"wxAll");
    for (std::size_t steps = 0; steps <= 60; steps += 20) {
        ResultFilter filter(listing);
        filter.look(u"b/1", ResultFilter::Bodies::Passed); // 1, 10 to 19
        filter.step(steps);
        EXPECT_EQ(filter.looked(), steps);
        filter.look(u"B/1", ResultFilter::Bodies::Passed);
        filter.step(steps / 2);
        filter.look(u"b/15", ResultFilter::Bodies::Passed);
        filter.step(1);
        finish(filter);
        EXPECT_THAT(filter.matches(), ElementsAre(14)) << steps;
        filter.look(u"/5", ResultFilter::Bodies::Passed); // holds no longer what was looked for before
        finish(filter);
        EXPECT_EQ(filter.matches().size(), 11U) << steps;
        EXPECT_EQ(filter.looked(), 60U);
    }
}

TEST(PublishedBody, IsHtmlWhereItHasATagAndKeepsItsLinesWhereItHasNone) {
    constexpr std::pair<std::u16string_view, std::u16string_view> kCases[] = {
        {u"一<br>\r\n二", u"一<br>\r\n二"},
        {u"一\r\n二\n三", u"一<br>二<br>三"},
        {u"3<5 & 7&nbsp;", u"3&lt;5 & 7&nbsp;"},
        {u"一</P>", u"一</P>"},
        {u"尾<", u"尾&lt;"},
    };
    for (const auto& [body, html] : kCases) {
        EXPECT_EQ(publishedBody(body), html);
    }
}

} // namespace
} // namespace kelb::jobs
