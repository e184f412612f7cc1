#include "jobs/multipage_import.h"

#include "ado/error.h"
#include "jobs/job_error.h"
#include "tests/jobs/article_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using platform::fromUtf8;
using platform::toUtf8;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Texts = std::vector<std::u16string>;

const Settings kSiteA = {{u"Articles.siteAPrefix", u"http://a.example/art"}};

class MultipageImport : public ArticleTest {
protected:
    void SetUp() override {
        ArticleTest::SetUp();
        execute(kSource, {u"alter table bbsforum add pagenum short", u"alter table bbsforum add blnPass yesno",
                          u"alter table bbsforum add refimgurl varchar(255)"});
        execute(kDest, {u"create table wxPrinter (id int identity(1,1) NOT NULL, url varchar(255), cid int, "
                        u"refimgurl varchar(255), sT varchar(255), sC memo, sA memo, recTime datetime)"});
    }

    JobSummary import(const Settings& settings = kSiteA) {
        JobSummary summary(kMultipageImportJob);
        import(summary, settings);
        return summary;
    }
    void import(JobSummary& summary, const Settings& settings = kSiteA) {
        MultipageImportOptions options;
        options.source = kSource;
        options.sink.connection = kDest;
        importMultipageArticles(options, context(settings), host, summary);
    }
    std::vector<std::string> articles(std::u16string_view fields = u"url") {
        return rows(kDest, u"select " + std::u16string(fields) + u" from wxPrinter order by id");
    }
    std::vector<std::string> sourceRows() {
        return rows(kSource, u"select url, sT, sC, pagenum, blnPass from bbsforum order by id");
    }
    static std::u16string url(const std::u16string& name) { return u"http://a.example/art/" + name + u".htm"; }
    static std::u16string page(const std::u16string& title, const std::u16string& body) {
        return u"<title>" + title + u"</title><div id=\"content\"><div>导航</div>" + body +
               u"<div>页码</div></div><script>";
    }
    /// What the site's markers leave of such a page.
    static std::u16string cut(const std::u16string& body) { return u"</div>" + body + u"<div>页码"; }
};

TEST_F(MultipageImport, MergesThePagesInTheOrderOfTheirAddresses) {
    std::vector<Row> pages{{url(u"x100"), page(u"题目 'A'", u"第1页"), 35}};
    for (int i = 2; i <= 11; ++i) {
        const std::u16string number = fromUtf8(std::to_string(i));
        pages.push_back({url(u"x100p" + number), page(u"后页", u"第" + number + u"页")});
    }
    crawlRows(pages);
    execute(kSource, {u"update bbsforum set refimgurl='http://a.example/i.jpg', blnPass=true, sT='old', sC='old' "
                      u"where url='http://a.example/art/x100.htm'"});
    const JobSummary summary = import();

    std::u16string body = cut(u"第1页"), observed = body;
    for (const char16_t* number : {u"10", u"11", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9"}) {
        const std::u16string next = cut(u"第" + std::u16string(number) + u"页");
        body += u"<br>" + next;
        observed += u"<br>--------<br>" + next;
    }
    EXPECT_THAT(articles(u"url, cid, refimgurl, sT, sC, sA, recTime"),
                ElementsAre(toUtf8(u"http://a.example/art/x100.htm|35|http://a.example/i.jpg|题目 'A'|" + body +
                                   u"||2015-12-2 8:30:00")));
    EXPECT_EQ(toUtf8(overflowFile(0)), toUtf8(u"多页合并观察 保存了本文件。\r\n+++++++++++\r\n" + url(u"x100") +
                                              u"\r\n" + observed + u"\r\n+++++++++++++"));
    EXPECT_EQ(sourceRows().at(0), "http://a.example/art/x100.htm|||NULL|False") << "cleared, and pagenum left alone";
    EXPECT_EQ(host.entries, (Texts{u"共有: 1条记录。", u"Count4multiPage: 1,"}));
    EXPECT_THAT(host.boxes, IsEmpty());
    EXPECT_EQ(summary.rows, 1U);
    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(summary.overflowFiles, 1U);
}

TEST_F(MultipageImport, KnowsFirstPagesAndTheirFollowersByTheirNames) {
    for (const char16_t* name :
         {u"x1", u"ab12", u"ab12p2", u"ab12p1", u"ab12p99", u"ab12p00", u"ab12p100", u"abp34", u"ap345", u"ab3p"}) {
        crawlRows({{url(name), page(u"题目", name)}});
    }
    crawlRows({{u"http://b.example/art/cd12.htm", page(u"题目", u"别的站")},
               {u"http://a.example/art/ef12.html", page(u"题目", u"别的后缀")},
               {u"http://c.example/http://a.example/art/ab12p3.htm", page(u"题目", u"尾部相同")}});
    import();
    // ap345 has its "p" four characters before the end, ab3p its "p" as the last one; 100 has three digits.
    EXPECT_THAT(articles(u"url, sC"),
                ElementsAre(toUtf8(url(u"ab12") + u"|" + cut(u"ab12") + u"<br>" + cut(u"ab12p2") + u"<br>" +
                                   cut(u"ab12p99") + u"<br>" + cut(u"尾部相同")),
                            toUtf8(url(u"ab12p100") + u"|" + cut(u"ab12p100")),
                            toUtf8(url(u"ap345") + u"|" + cut(u"ap345")), toUtf8(url(u"ab3p") + u"|" + cut(u"ab3p"))));
}

TEST_F(MultipageImport, TakesTheSameTenInEveryRun) {
    std::vector<Row> pages;
    for (int i = 10; i < 35; ++i) {
        pages.push_back({url(u"n" + fromUtf8(std::to_string(i))), page(u"题目", u"正文")});
    }
    crawlRows(pages);
    host.stopAfter = 0; // nobody asks
    const JobSummary summary = import();
    EXPECT_EQ(summary.rows, 10U);
    EXPECT_FALSE(summary.stopped);
    EXPECT_EQ(host.entries, (Texts{u"共有: 25条记录。", u"Count4multiPage: 10,"}));
    const auto first = articles();
    ASSERT_EQ(first.size(), 10U);
    EXPECT_EQ(first.front(), toUtf8(url(u"n10")));
    EXPECT_EQ(first.back(), toUtf8(url(u"n19")));
    import();
    const auto both = articles();
    ASSERT_EQ(both.size(), 20U);
    EXPECT_EQ(std::vector<std::string>(both.begin() + 10, both.end()), first);
}

TEST_F(MultipageImport, OnlyAddsMissingFieldsInItsFirstRun) {
    execute(kSource, {u"create table fresh (id int identity(1,1) NOT NULL, url varchar(255), content memo, sC memo)",
                      u"insert into fresh (url, content) values ('http://a.example/art/n10.htm', 'x')"});
    const auto run = [&] {
        MultipageImportOptions options;
        options.source = kSource;
        options.sourceTable = u"fresh";
        options.sink.connection = kDest;
        JobSummary summary(kMultipageImportJob);
        importMultipageArticles(options, context(kSiteA), host, summary);
        return summary;
    };
    constexpr const char16_t* kText = u"没有Field: pagenum or sT or sC,已创建，请重新开始";
    const JobSummary firstRun = run();
    EXPECT_EQ(host.entries, Texts{kText});
    EXPECT_EQ(host.boxes, Texts{u"网页内容提取|" + std::u16string(kText)});
    EXPECT_EQ(firstRun.rows, 0U);
    EXPECT_NE(firstRun.note, "");
    EXPECT_THAT(rows(kSource, u"select url, pagenum, sT, sC, blnPass from fresh"),
                ElementsAre("http://a.example/art/n10.htm|NULL|NULL|NULL|False"));
    EXPECT_EQ(run().rows, 1U) << "the second run goes on";
}

TEST_F(MultipageImport, TellsAPageWithoutItsMarkersAndKeepsTheCopy) {
    crawlRows({{url(u"n10"), page(u"", u"没有题目")},
               {url(u"n11"), u"<title>没有正文</title>"},
               {url(u"n12"), std::nullopt},
               {url(u"n13"), page(u"题目", u"正文")}});
    const JobSummary summary = import();
    EXPECT_THAT(articles(), ElementsAre(toUtf8(url(u"n13"))));
    const std::u16string noBody = u"未找到开始标志1，或开始标志2，或结束标志";
    EXPECT_EQ(host.entries, (Texts{u"共有: 4条记录。", u"提取失败! 第1次," + url(u"n10") + u",",
                                   u"提取失败! 第2次," + url(u"n11") + u"," + noBody,
                                   u"提取失败! 第3次," + url(u"n12") + u",未找到开始标志，或结束标志|输入为空。",
                                   u"Count4multiPage: 1,"}));
    EXPECT_EQ(summary.failed, 3U);
    EXPECT_EQ(summary.overflowFiles, 4U);
    EXPECT_THAT(toUtf8(overflowFile(2)), HasSubstr(toUtf8(url(u"n12"))));
}

struct LengthCase {
    const char* name;
    std::size_t title, body;
    std::size_t saved;
};

class MultipageImportLength : public MultipageImport, public testing::WithParamInterface<LengthCase> {};

TEST_P(MultipageImportLength, DecidesBetweenRowAndFile) {
    execute(u"X:\\long.mdb", {u"create table wxPrinter (sT memo, sC memo, sA memo, recTime datetime)"});
    const std::u16string title = letters(GetParam().title);
    const std::u16string body = letters(GetParam().body - cut(u"").size());
    crawlRows({{url(u"n10"), page(title, body)}});
    MultipageImportOptions options;
    options.source = kSource;
    options.sink.connection = u"X:\\long.mdb";
    JobSummary summary(kMultipageImportJob);
    importMultipageArticles(options, context(kSiteA), host, summary);
    EXPECT_EQ(summary.saved, GetParam().saved);
    EXPECT_EQ(rows(u"X:\\long.mdb", u"select recTime from wxPrinter").size(), GetParam().saved);
    EXPECT_EQ(summary.overflowFiles, 2 - GetParam().saved) << "the copy to look at is always one";
    if (GetParam().saved == 0) {
        EXPECT_EQ(overflowFile(1), u" 保存了本文件。\r\n文章过长!\r\n" + cut(body) + u"\r\n\r\n" + title);
    }
    EXPECT_EQ(host.entries.back(), u"Count4multiPage: 1,");
}

INSTANTIATE_TEST_SUITE_P(Articles, MultipageImportLength,
                         testing::ValuesIn<LengthCase>({
                             {"both_of_7999", 7999, 7999, 1},
                             {"body_of_8000", 3, 8000, 0},
                             {"title_of_8000", 8000, 100, 0},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(MultipageImport, ReadsPagesFromTheirFiles) {
    files.writeFile(u"X:\\pages\\1.htm", platform::encode936(page(u"文件", u"第1页")));
    files.writeFile(u"X:\\pages\\2.htm", platform::encode936(page(u"文件", u"第2页")));
    crawlRows({{url(u"n10"), u"X:\\pages\\1.htm"}, {url(u"n10p2"), u"X:\\pages\\2.htm"}});
    import();
    EXPECT_THAT(articles(u"sT, sC"), ElementsAre(toUtf8(u"文件|" + cut(u"第1页") + u"<br>" + cut(u"第2页"))));
}

TEST_F(MultipageImport, LeavesTheSourceAsItWasWhenItCannotGoOn) {
    crawlRows({{url(u"n10"), page(u"题目", u"正文")}, {url(u"n11"), page(letters(256), u"题目放不下")}});
    execute(kSource, {u"update bbsforum set sT='old', sC='old', blnPass=true"});
    const auto before = sourceRows();
    JobSummary summary(kMultipageImportJob);
    EXPECT_THROW(import(summary), ado::Error);
    EXPECT_EQ(sourceRows(), before);
    EXPECT_THAT(articles(), ElementsAre(toUtf8(url(u"n10"))));
    EXPECT_EQ(summary.saved, 1U);
}

TEST_F(MultipageImport, NeedsItsSettings) {
    JobSummary summary(kMultipageImportJob);
    for (const Settings& settings : {Settings{}, kSiteA}) {
        Context needy(platformOf(files), configuration(settings), {});
        MultipageImportOptions options;
        options.source = kSource;
        if (settings.empty()) {
            options.sink.connection = kDest;
        }
        EXPECT_THROW(importMultipageArticles(options, needy, host, summary), SettingError);
    }
    EXPECT_THAT(host.entries, IsEmpty());
}

TEST_F(MultipageImport, NamesAllThatIsMissingBeforeItStarts) {
    execute(u"X:\\small.mdb", {u"create table wxPrinter (url varchar(255), sC memo)"});
    execute(kSource, {u"create table bare (url varchar(255))"});
    MultipageImportOptions options;
    options.source = kSource;
    options.sourceTable = u"bare";
    options.sink.connection = u"X:\\small.mdb";
    JobSummary summary(kMultipageImportJob);
    try {
        importMultipageArticles(options, context(kSiteA), host, summary);
        FAIL();
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("X:\\Comb.mdb: table bare has no column content"));
        EXPECT_THAT(error.what(), HasSubstr("X:\\small.mdb: table wxPrinter has no column sT, sA, recTime"));
    }
    EXPECT_THAT(rows(kSource, u"select * from bare"), IsEmpty()) << "no field was added either";
    options.sink.connection = kSource; // holds no such table
    try {
        importMultipageArticles(options, context(kSiteA), host, summary);
        FAIL();
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("no table wxPrinter"));
    }
}

} // namespace
} // namespace kelb::jobs
