#include "jobs/article_import.h"

#include "ado/error.h"
#include "jobs/job_error.h"
#include "tests/jobs/article_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using platform::toUtf8;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Texts = std::vector<std::u16string>;

const Settings kSites = {{u"Articles.site1", u"one.example"},
                         {u"Articles.site2", u"two.example"},
                         {u"Articles.site3", u"Three.Example"},
                         {u"Articles.site4", u"http://info."},
                         {u"Articles.site5", u"five.example"}};

class ArticleImport : public ArticleTest {
protected:
    JobSummary import(const Settings& settings = kSites) {
        JobSummary summary(kArticleImportJob);
        ArticleImportOptions options;
        options.source = kSource;
        options.dest = kDest;
        importArticles(options, context(settings), host, summary);
        return summary;
    }
    std::vector<std::string> articles(std::u16string_view fields = u"url") {
        return rows(kDest, u"select " + std::u16string(fields) + u" from wxAll order by id");
    }
    /// A page of the first site.
    static std::u16string page(const std::u16string& title, const std::u16string& body) {
        return u"<td><h1>" + title + u"</h1></td><td id=\"text\">" + body + u"<p align=\"center\" class=\"pageLink\">";
    }
    static std::u16string logged(const std::u16string& title, const std::u16string& body) {
        return title + u"\r\n\r\n" + body;
    }
};

struct SiteCase {
    const char* name;
    const char16_t* url;
    const char16_t *titleStart, *titleEnd, *contentStart, *contentEnd;
};

class ArticleSitesOfTheImport : public ArticleImport, public testing::WithParamInterface<SiteCase> {};

TEST_P(ArticleSitesOfTheImport, HaveMarkersOfTheirOwn) {
    const SiteCase& c = GetParam();
    crawlRows({{c.url, u"<h1>站名</h1>" + std::u16string(c.titleStart) + u"题目一" + c.titleEnd + u"<br>" +
                           c.contentStart + letters(201) + c.contentEnd + u"页脚" + c.titleEnd}});
    // The fifth site's page begins with a heading that its first marker would take; its second one stays in the
    // title.
    Settings settings = kSites;
    settings[u"Articles.row5TitleStart1"] = u"<h1 none>";
    settings[u"Articles.row5TitleStart2"] = u"<h1 class=\"t\">";
    settings[u"Articles.row5TitleStart3"] = u"<h1>";
    settings[u"Articles.row5TitleEnd1"] = u"</h1>";
    import(settings);
    const bool fifth = std::u16string_view(c.contentEnd).find(u"related") != std::u16string_view::npos;
    const std::u16string title = (fifth ? u"<h1 class=\"t\">" : u"") + std::u16string(u"题目一");
    EXPECT_THAT(articles(u"url, sT, sC"), ElementsAre(toUtf8(c.url + (u"|" + title) + u"|" + letters(201))));
}

INSTANTIATE_TEST_SUITE_P(Sites, ArticleSitesOfTheImport,
                         testing::ValuesIn<SiteCase>({
                             {"own_site", u"http://www.one.example/1.htm", u"<td><h1>", u"</h1></td>",
                              u"<td id=\"text\">", u"<p align=\"center\" class=\"pageLink\">"},
                             {"regional_news", u"http://two.example/1.htm", u"<h1 class=\"aTitle\">", u"</h1>",
                              u"<!--IWMS_AD_END-->", u"<span style=\"color: rgb(255, 0, 255);"},
                             {"news_portal", u"http://WWW.THREE.example/1.htm", u"<div id=\"mainNewsTitles\"><h1>",
                              u"</h1>", u"<div class=\"mainNewsContent\">", u"<div class=\"mainNewsCount\">"},
                             {"information_portal", u"HTTP://info.four/1.htm", u"<h1 class=\"info_title\">", u"</h1>",
                              u"<td class=\"info_content\">", u"<div class=\"content_page\">"},
                             {"electronics_portal", u"http://five.example/1.htm", u"<h1 class=\"t\">", u"</h1>",
                              u"<div class=\"main\" id=\"main_content\">", u"<div class=\"related\">"},
                             {"first_of_two", u"http://one.example/to/five.example", u"<td><h1>", u"</h1></td>",
                              u"<td id=\"text\">", u"<p align=\"center\" class=\"pageLink\">"},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ArticleImport, StoresWhatTheRowHas) {
    crawlRows({{u"http://One.example/a'1", page(u"题目一", letters(201)), 31},
               {u"http://one.example/2", page(u"题目二", letters(202))}});
    const JobSummary summary = import();
    EXPECT_THAT(articles(u"url, cid, sT, sA, recTime"),
                ElementsAre("http://One.example/a'1|31|题目一|NULL|2015-12-2 8:30:00",
                            "http://one.example/2|NULL|题目二|NULL|2015-12-2 8:30:00"));
    EXPECT_EQ(host.entries, (Texts{u"totalRec: 2", logged(u"题目一", letters(201)), logged(u"题目二", letters(202))}));
    EXPECT_EQ(host.progress, (Texts{u"已处理: 1,还剩于: 1", u"已处理: 2,还剩于: 0"}));
    EXPECT_THAT(host.boxes, IsEmpty());
    EXPECT_EQ(summary.rows, 2U);
    EXPECT_EQ(summary.saved, 2U);
}

TEST_F(ArticleImport, LeavesAPageWithoutItsMarkersOutAndSaysWhy) {
    crawlRows({{u"http://one.example/1", page(u"题", letters(201))},
               {u"http://one.example/2", page(u"题目二", letters(200))},
               {u"http://one.example/3", u"<td>"},
               {u"http://one.example/4", std::nullopt},
               {u"http://one.example/5", page(u"题目五", letters(205))}});
    const JobSummary summary = import();
    EXPECT_THAT(articles(), ElementsAre("http://one.example/5"));
    const std::u16string none = u",未找到SM: <td><h1>|未找到SM: <td id=\"text\">";
    EXPECT_EQ(host.entries,
              (Texts{u"totalRec: 5", u"提取失败! 第1次,http://one.example/1,未找到EM: </h1></td>",
                     u"提取失败! 第2次,http://one.example/2,未找到EM: <p align=\"center\" class=\"pageLink\">",
                     // the program's start marker for titles is the site's own, so it is not found either
                     u"提取失败! 第3次,http://one.example/3" + none, u"提取失败! 第4次,http://one.example/4" + none,
                     logged(u"题目五", letters(205))}));
    EXPECT_EQ(summary.because(RowFate::Failed), (Counts{{"noTitle", 1}, {"noBody", 1}, {"noTitleNorBody", 2}}));
    EXPECT_EQ(summary.saved, 1U);
}

TEST_F(ArticleImport, StoresAPageOfNoSiteWithTheTextsOfTheRowBefore) {
    crawlRows({{u"http://none/0", page(u"别的题目", letters(210))},
               {u"http://one.example/1", page(u"It's", u"'" + letters(201))},
               {u"http://none/2", std::nullopt},
               {u"http://none/3", std::nullopt},
               {u"http://one.example/4", page(u"题目四", letters(200))},
               {u"http://none/5", std::nullopt}});
    import();
    const std::string body = toUtf8(letters(201));
    EXPECT_THAT(articles(u"url, sT, sC"),
                ElementsAre("http://none/0||", "http://one.example/1|It''s|''" + body,
                            "http://none/2|It''''s|''''" + body, "http://none/3|It''''''''s|''''''''" + body,
                            "http://none/5|题目四|"))
        << "the page that was left out gave a title and lost the body";
    EXPECT_EQ(host.entries[2], logged(u"It's", u"'" + letters(201))) << "shown before its apostrophes are doubled";
    EXPECT_EQ(host.entries[3], logged(u"It''s", u"''" + letters(201)));
}

TEST_F(ArticleImport, EndsWhenACarriedTextGrowsWithoutBound) {
    execute(kDest, {u"create table long (url varchar(255), cid int, sT memo, sC memo, recTime datetime)"});
    std::vector<Row> many{{u"http://one.example/1", page(u"It's", letters(201))}};
    for (int i = 0; i < 30; ++i) {
        many.push_back({u"http://none/x", std::nullopt});
    }
    crawlRows(many);
    JobSummary summary(kArticleImportJob);
    ArticleImportOptions options;
    options.source = kSource;
    options.dest = kDest;
    options.destTable = u"long";
    try {
        importArticles(options, context(kSites), host, summary);
        FAIL();
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("http://none/x"));
    }
    // The title holds 2^n apostrophes behind row n, and four Mi are too many.
    EXPECT_EQ(summary.saved, 21U);
}

TEST_F(ArticleImport, JoinsAnOpeningBracketWithTheLineBehindIt) {
    crawlRows({{u"http://one.example/1", page(u"题目一", u"<\r\nb><\r\n\r\n" + letters(201))}});
    import();
    EXPECT_THAT(articles(u"sC"), ElementsAre(toUtf8(u"<b><\r\n" + letters(201))));
}

struct LengthCase {
    const char* name;
    std::u16string body;
    std::size_t saved, overflow;
};

class ArticleImportLength : public ArticleImport, public testing::WithParamInterface<LengthCase> {};

TEST_P(ArticleImportLength, DecidesBetweenRowAndFile) {
    crawlRows({{u"http://one.example/1", page(u"题目一", GetParam().body)}});
    const JobSummary summary = import();
    EXPECT_EQ(summary.saved, GetParam().saved);
    EXPECT_EQ(summary.overflowFiles, GetParam().overflow);
    EXPECT_EQ(articles().size(), GetParam().saved);
    if (GetParam().overflow == 1) {
        const std::u16string text = overflowFile(0);
        EXPECT_EQ(text.substr(0, 20), u" 保存了本文件。\r\n" + letters(10));
        EXPECT_EQ(text.size(), 10 + 8000 + 4U);
        EXPECT_TRUE(text.ends_with(u"\r\n\r\n"));
        EXPECT_EQ(summary.because(RowFate::Skipped), (Counts{{"overLong", 1}}));
    }
}

INSTANTIATE_TEST_SUITE_P(Bodies, ArticleImportLength,
                         testing::ValuesIn<LengthCase>({
                             {"of_7999", std::u16string(7999, u'文'), 1, 0},
                             {"of_8000", std::u16string(8000, u'文'), 0, 1},
                             {"of_8000_with_the_second_apostrophe", std::u16string(7998, u'文') + u"'", 0, 1},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ArticleImport, DoesNotAskForTheLengthOfATitle) {
    execute(kDest, {u"create table long (url varchar(255), cid int, sT memo, sC memo, recTime datetime)"});
    crawlRows({{u"http://one.example/1", page(letters(9000), letters(201))}});
    JobSummary summary(kArticleImportJob);
    ArticleImportOptions options;
    options.source = kSource;
    options.dest = kDest;
    options.destTable = u"long";
    importArticles(options, context(kSites), host, summary);
    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(rows(kDest, u"select sT from long").at(0).size(), 9000U * 3);
}

TEST_F(ArticleImport, CutsNothingToFitAColumn) {
    crawlRows({{u"http://one.example/1", page(u"题目一", letters(201))},
               {u"http://one.example/2", page(letters(256), letters(201))}});
    try {
        import();
        FAIL();
    } catch (const ado::Error& error) {
        EXPECT_EQ(error.kind(), ado::Error::Kind::FieldTooSmall);
        EXPECT_THAT(error.what(), HasSubstr("sT"));
    }
    EXPECT_THAT(articles(), ElementsAre("http://one.example/1"));
}

TEST_F(ArticleImport, ReadsAPageFromItsFileOrFromTheRow) {
    const std::u16string path = u"X:\\pages\\" + std::u16string(247, u'p') + u".htm"; // of 260 characters
    const std::u16string longer = u"X:\\pages\\" + std::u16string(248, u'p') + u".htm";
    for (const std::u16string& file : {std::u16string(u"X:\\pages\\1.htm"), path, longer}) {
        files.writeFile(file, platform::encode936(page(u"文件里的题目", letters(201))));
    }
    crawlRows({{u"http://one.example/1", u"X:\\pages\\1.htm"},
               {u"http://one.example/2", u"X:\\pages\\gone.htm"},
               {u"http://one.example/3", path},
               {u"http://one.example/4", longer},
               {u"http://one.example/5", u"X:\\pages\\1.htm\r\n"},
               {u"http://one.example/6", u"<td><h1>不算</h1></td><body>" + page(u"正文里的题目", letters(201))}});
    import();
    EXPECT_THAT(articles(u"url, sT"),
                ElementsAre("http://one.example/1|文件里的题目", "http://one.example/3|文件里的题目",
                            "http://one.example/6|正文里的题目"));
}

TEST_F(ArticleImport, StopsBetweenRows) {
    crawlRows({{u"http://one.example/1", page(u"题目一", letters(201))},
               {u"http://one.example/2", page(u"题目二", letters(201))}});
    host.stopAfter = 1;
    const JobSummary summary = import();
    EXPECT_THAT(articles(), ElementsAre("http://one.example/1"));
    EXPECT_TRUE(summary.stopped);
}

TEST_F(ArticleImport, NeedsOneSiteAtLeast) {
    try {
        import({});
        FAIL();
    } catch (const SettingError& error) {
        EXPECT_THAT(error.what(), HasSubstr("[Articles] site1"));
    }
    crawlRows({{u"http://five.example/1", u"<h1>题目一</h1><div class=\"main\" id=\"main_content\">" + letters(201) +
                                              u"<div class=\"related\">"}});
    Context onlyFifth(platformOf(files), configuration({{u"Articles.site5", u"five.example"}}), {});
    JobSummary summary(kArticleImportJob);
    ArticleImportOptions options;
    options.source = kSource;
    options.dest = kDest;
    importArticles(options, onlyFifth, host, summary);
    EXPECT_THAT(articles(u"sT"), ElementsAre("题目一")) << "a site keeps its row when others are not set";
}

TEST_F(ArticleImport, NamesAllThatIsMissingBeforeItStarts) {
    execute(kDest, {u"create table small (url varchar(255), sT memo)"});
    execute(kSource, {u"create table pages (url varchar(255))"});
    JobSummary summary(kArticleImportJob);
    ArticleImportOptions options;
    options.source = kSource;
    options.sourceTable = u"pages";
    options.dest = kDest;
    options.destTable = u"small";
    try {
        importArticles(options, context(kSites), host, summary);
        FAIL();
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("X:\\Comb.mdb: table pages has no column content"));
        EXPECT_THAT(error.what(), HasSubstr("X:\\wxdb.mdb: table small has no column cid, sC, recTime"));
    }
    EXPECT_THAT(host.entries, IsEmpty());
}

} // namespace
} // namespace kelb::jobs
