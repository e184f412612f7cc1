#include "jobs/dedupe_source.h"

#include "jobs/job_error.h"
#include "jobs/page_files.h"
#include "platform/text.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using Texts = std::vector<std::u16string>;

/// A crawled page; rows get the ids 1, 2, … and are visited from the last one on.
struct Page {
    std::optional<std::u16string> url;
    std::u16string file;                 ///< name; the stored path is D:\crawl\NAME
    std::optional<std::u16string> title; ///< none: there is no such file
};

class DedupeSourceTest : public JobTest {
protected:
    void TearDown() override { files.beforeOperation = nullptr; }

    void add(const std::vector<Page>& pages) {
        for (const Page& page : pages) {
            const std::u16string url = page.url ? u"'" + platform::quoted(*page.url) + u"'" : u"NULL";
            execute(kSource,
                    {u"insert into bbsforum (url, content) values (" + url + u", 'D:\\crawl\\" + page.file + u"')"});
            if (page.title) {
                files.writeFile(u"X:\\lan\\crawl\\" + page.file,
                                platform::encode936(u"<html><title>" + *page.title + u"</title>"));
            }
        }
    }
    static Settings settings(const std::u16string& maxDeletePercent = u"100") {
        return {{u"Dedup.forumSite1", u"bbs.one"},         {u"Dedup.forumSite8", u"bbs.eight"},
                {u"Dedup.articleSite1", u"news.one"},      {u"Dedup.publicForum", u"Public.Forum"},
                {u"Dedup.router", u"http://192.168.1.1/"}, {u"Safety.maxDeletePercent", maxDeletePercent}};
    }
    JobSummary dedupe(const Settings& given = settings()) {
        JobSummary summary(kDedupeSourceJob);
        dedupeSource({std::u16string(kSource)}, context(given), host, summary);
        return summary;
    }
    std::vector<std::string> ids() { return rows(kSource, u"select id from bbsforum order by id"); }
    Texts pageFiles() { return files.folderExists(u"X:\\lan\\crawl") ? files.listFiles(u"X:\\lan\\crawl") : Texts(); }
};

struct DedupeCase {
    const char* name;
    std::vector<Page> pages;
    Texts entries; ///< behind the count line
    std::vector<std::string> keptRows;
    Texts keptFiles;
};

const std::u16string kPage = u"http://bbs.one/thread-5-1-1.html";

class DedupeCases : public DedupeSourceTest, public testing::WithParamInterface<DedupeCase> {};

TEST_P(DedupeCases, RemovesWithAReason) {
    add(GetParam().pages);
    const JobSummary summary = dedupe();
    Texts expected{u"共选取记录: " + platform::fromUtf8(std::to_string(GetParam().pages.size())) + u"条!"};
    expected.insert(expected.end(), GetParam().entries.begin(), GetParam().entries.end());
    EXPECT_THAT(host.entries, ElementsAreArray(expected));
    EXPECT_THAT(ids(), ElementsAreArray(GetParam().keptRows));
    EXPECT_THAT(pageFiles(), ElementsAreArray(GetParam().keptFiles));
    EXPECT_EQ(summary.rows, GetParam().pages.size());
    EXPECT_EQ(summary.deletedRows, GetParam().pages.size() - GetParam().keptRows.size());
    EXPECT_EQ(summary.rows, summary.skipped);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, DedupeCases,
    testing::ValuesIn<DedupeCase>({
        {"equal_titles_keep_the_higher_id",
         {{kPage, u"1", u"题"}, {kPage, u"2", u"题"}, {u"http://bbs.one/thread-5-1-9.html", u"3", u"题"}},
         {u"2 已删除：重复: " + kPage, u"1 已删除：重复: " + kPage},
         {"3"},
         {u"3"}},
        {"pages_of_a_thread_have_keys_of_their_own",
         {{kPage, u"1", u"题"}, {u"http://bbs.one/thread-5-2-1.html", u"2", u"题"}},
         {},
         {"1", "2"},
         {u"1", u"2"}},
        {"no_address", {{std::nullopt, u"1", u"题"}}, {u"1 已删除：IsNull(RS001(\"url\")) = Ttur"}, {}, {}},
        {"no_address_comes_before_no_file",
         {{std::nullopt, u"1", std::nullopt}},
         {u"1 已删除：IsNull(RS001(\"url\")) = Ttur"},
         {},
         {}},
        {"no_file", {{kPage, u"1", std::nullopt}}, {u"1 已删除：文件未找到: X:\\lan\\crawl\\1"}, {}, {}},
        {"no_file_comes_before_an_empty_address",
         {{u"", u"1", std::nullopt}, {u"", u"2", u"题"}},
         {u"2 已删除：URL Field is blank.", u"1 已删除：文件未找到: X:\\lan\\crawl\\1"},
         {},
         {}},
        {"not_a_thread_page",
         {{u"http://bbs.one/forum-5-1.html", u"1", u"题"},
          {u"http://bbs.eight/thread-55-0-1.html", u"2", u"题"},
          {u"http://bbs.one/Thread-5-1-1.html", u"3", u"题"}, // case counts
          {u"http://BBS.one/forum-5-1.html", u"4", u"题"}},   // in the fragment as well: not a forum's
         {u"3 已删除：不符合格式：*thread*-[1-9]-*  Url: http://bbs.one/Thread-5-1-1.html",
          u"2 已删除：不符合格式：*thread*-[1-9]-*  Url: http://bbs.eight/thread-55-0-1.html",
          u"1 已删除：不符合格式：*thread*-[1-9]-*  Url: http://bbs.one/forum-5-1.html"},
         {"4"},
         {u"4"}},
        {"other_sites_compare_whole_addresses",
         {{u"http://news.one/a-1.html", u"1", u"题"},
          {u"http://news.one/a-2.html", u"2", u"题"},
          {u"http://news.one/A-2.html", u"3", u"题"},
          {u"http://news.one/a-2.html", u"4", u"题"},
          {u"http://x/it's", u"5", u"题"},
          {u"http://x/it's", u"6", u"题"}},
         {u"5 已删除：重复: http://x/it's", u"2 已删除：重复: http://news.one/a-2.html"},
         {"1", "3", "4", "6"},
         {u"1", u"3", u"4", u"6"}},
        {"the_routers_page_never_holds_a_key",
         {{u"http://192.168.1.1/login", u"1", u"甲"}, {u"http://192.168.1.1/login", u"2", u"乙"}},
         {u"2 已删除：网络无法访问时，跳转到路由器页面。", u"1 已删除：网络无法访问时，跳转到路由器页面。"},
         {},
         {}},
        {"a_blocked_page_loses_to_the_newer_row",
         {{kPage, u"1", u"x 安全检查! | 百度云加速"}, {kPage, u"2", u"题"}},
         {u"1 已删除：标题不合格: x 安全检查! | 百度云加速"},
         {"2"},
         {u"2"}},
        {"two_blocked_pages_with_other_titles",
         {{kPage, u"1", u"Database Error 1"}, {kPage, u"2", u"503 Service Unavailable"}},
         {u"1 已删除：标题不合格: Database Error 1"},
         {"2"},
         {u"2"}},
        // The loser's row has no file any more and goes in the next run.
        {"a_registered_blocked_page_loses_its_file",
         {{kPage, u"1", u"题"}, {kPage, u"2", u"题"}, {kPage, u"3", u"503 Service Unavailable"}},
         {u"O: kill 503 Service Unavailable\r\nN: 题\r\n\r\n", u"1 已删除：重复: " + kPage},
         {"2", "3"},
         {u"2"}},
        {"two_characters_longer_do_not_win",
         {{kPage, u"1", u"题一二"}, {kPage, u"2", u"题"}},
         {u"O: 题\r\nN: kill 题一二\r\n\r\n", u"1 已删除：重复（标题不同）: " + kPage},
         {"2"},
         {u"2"}},
        {"three_characters_longer_win",
         {{kPage, u"1", u"题一二三"}, {kPage, u"2", u"题"}},
         {u"O: kill 题\r\nN: 题一二三\r\n\r\n"},
         {"1", "2"},
         {u"1"}},
        // The first removal takes the file of both along.
        {"a_file_of_two_rows",
         {{kPage, u"3", u"题四五六"}, {kPage, u"1", u"题"}, {kPage, u"1", u"题"}},
         {u"2 已删除：重复: " + kPage, u"O: kill 题\r\nN: 题四五六\r\n\r\n"},
         {"1", "3"},
         {u"3"}},
        {"a_file_of_two_addresses",
         {{u"http://bbs.one/thread-6-1-1.html", u"1", u"题"}, {u"http://bbs.one/x", u"1", u"题"}},
         {u"2 已删除：不符合格式：*thread*-[1-9]-*  Url: http://bbs.one/x", u"1 已删除：文件未找到: X:\\lan\\crawl\\1"},
         {},
         {}},
    }),
    [](const auto& each) { return std::string(each.param.name); });

TEST_F(DedupeSourceTest, ARowWhoseFileWasLostGoesInTheNextRun) {
    add({{kPage, u"1", u"题一二三"}, {kPage, u"2", u"题"}});
    dedupe();
    host.entries.clear();
    dedupe();
    EXPECT_THAT(host.entries, ElementsAre(u"共选取记录: 2条!", u"2 已删除：文件未找到: X:\\lan\\crawl\\2"));
    EXPECT_THAT(ids(), ElementsAre("1"));
}

TEST_F(DedupeSourceTest, TellsItsEndAndCountsTheSites) {
    add({{kPage, u"1", u"题"},
         {u"http://news.one/1", u"2", u"题"},
         {u"http://www.PUBLIC.forum/1", u"3", u"题"},
         {u"http://x/1", u"4", u"题"},
         {u"http://x/2", u"5", u"题"}});
    EXPECT_EQ(dedupe().counts, (std::vector<std::pair<std::string, std::size_t>>{
                                   {"forumRows", 1}, {"articleRows", 1}, {"publicForumRows", 1}, {"otherRows", 2}}));
    EXPECT_THAT(host.captions, ElementsAre(u"完成"));
    EXPECT_THAT(host.boxes, ElementsAre(u"网页内容提取|去除重复的操作已完成！"));
    EXPECT_THAT(host.progress, testing::IsSupersetOf({u"已处理: 1,还剩于: 4", u"id: 5", u"id: 1"}));
}

TEST_F(DedupeSourceTest, ShowsEveryFifthRowFromNumber10000On) {
    auto at = platformOf(files);
    ado::Environment environment(at, {});
    ado::Connection connection(environment);
    connection.Open(ado::jetConnectionString(kSource));
    ado::Recordset set;
    set.Open(u"bbsforum", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
    for (int i = 0; i < 10011; ++i) {
        set.AddNew();
        set.Update();
    }
    set.Close();
    connection.Close();
    dedupe();
    const auto isId = [](const std::u16string& text) { return text.starts_with(u"id: "); };
    // Rows 1 to 9999, then rows 10000, 10005 and 10010.
    EXPECT_EQ(std::count_if(host.progress.begin(), host.progress.end(), isId), 9999 + 3);
}

TEST_F(DedupeSourceTest, AStopLeavesTheRestAlone) {
    add({{kPage, u"1", std::nullopt}, {kPage, u"2", std::nullopt}});
    host.stopAfter = 1;
    EXPECT_TRUE(dedupe().stopped);
    EXPECT_THAT(ids(), ElementsAre("1"));
    host.stopAfter = 0; // already while the files are looked for
    EXPECT_TRUE(dedupe().stopped);
    EXPECT_THAT(ids(), ElementsAre("1"));
}

TEST_F(DedupeSourceTest, AsksBeforeItTakesAnOfflineShareForMissingFiles) {
    std::vector<Page> pages(10, {kPage, u"1", u"题"});
    pages[0] = pages[1] = {u"http://x/1", u"none", std::nullopt};
    add(pages);
    const auto bytes = files.readFile(kSource);
    EXPECT_THROW(dedupe(settings(u"19")), Refused);
    EXPECT_EQ(files.readFile(kSource), bytes);
    ASSERT_EQ(host.questions.size(), 1U);
    EXPECT_THAT(platform::toUtf8(host.questions[0]), HasSubstr("10 条记录中有 2 条没有页面文件（超过 19%）"));
    EXPECT_TRUE(host.captions.empty());
    host.agrees = true;
    dedupe();
    EXPECT_EQ(ids().size(), 1U);
}

TEST_F(DedupeSourceTest, AsManyMissingFilesAsAllowedAreNotAskedFor) {
    std::vector<Page> pages(10, {kPage, u"1", u"题"});
    pages[0] = pages[1] = {u"http://x/1", u"none", std::nullopt};
    add(pages);
    dedupe(settings(u"20"));
    EXPECT_TRUE(host.questions.empty());
}

TEST_F(DedupeSourceTest, WithoutALanFolderEveryFileIsMissing) {
    add({{kPage, u"1", u"题"}});
    host.location.lanMode = false;
    try {
        dedupe(settings(u"20"));
        ADD_FAILURE() << "not refused";
    } catch (const Refused& error) {
        EXPECT_THAT(error.what(), HasSubstr("1 of 1 rows"));
        EXPECT_THAT(error.what(), HasSubstr("--lan-folder"));
    }
    EXPECT_THAT(ids(), ElementsAre("1"));
}

TEST_F(DedupeSourceTest, RefusesWithoutASiteBeforeItOpensAnything) {
    bool opened = false;
    files.beforeOperation = [&opened](std::string_view operation, std::u16string_view) {
        opened = opened || operation == "open";
    };
    try {
        dedupe({});
        ADD_FAILURE() << "not refused";
    } catch (const SettingError& error) {
        EXPECT_THAT(error.what(), HasSubstr("[Dedup] forumSite1"));
    }
    EXPECT_FALSE(opened);
}

TEST_F(DedupeSourceTest, MissingColumnsAreNamed) {
    execute(u"X:\\other.mdb", {u"create table bbsforum (url varchar(255))"});
    JobSummary summary(kDedupeSourceJob);
    try {
        dedupeSource({u"X:\\other.mdb"}, context(settings()), host, summary);
        ADD_FAILURE() << "no error";
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("table bbsforum has no column id, content"));
    }
}

TEST_F(DedupeSourceTest, AFileThatCannotBeReadOrGoEndsTheJobWithItsRowInPlace) {
    add({{kPage, u"1", u"题"}, {kPage, u"2", u"题"}, {u"http://x/", u"3", std::nullopt}});
    for (const std::string_view refused : {"read", "remove"}) {
        files.beforeOperation = [refused](std::string_view operation, std::u16string_view path) {
            if (operation == refused && path == u"X:\\lan\\crawl\\1") {
                throw platform::FileError(platform::FileError::Kind::AccessDenied, operation, path, 13, "denied");
            }
        };
        EXPECT_THROW(dedupe(), platform::FileError);
        files.beforeOperation = nullptr;
        EXPECT_THAT(ids(), ElementsAre("1", "2")) << refused; // what went before stays done
        EXPECT_THAT(pageFiles(), ElementsAre(u"1", u"2"));
    }
}

TEST_F(DedupeSourceTest, ReadsPagesOfOneKeyOnceAndOthersNotAtAll) {
    add({{kPage, u"1", u"题"}, {kPage, u"2", u"题"}, {kPage, u"3", u"题"}, {u"http://x/", u"4", u"题"}});
    std::map<std::u16string, int> reads;
    files.beforeOperation = [&reads](std::string_view operation, std::u16string_view path) {
        if (operation == "read" && path.starts_with(u"X:\\lan\\")) {
            ++reads[std::u16string(path.substr(13))];
        }
    };
    dedupe();
    EXPECT_EQ(reads, (std::map<std::u16string, int>{{u"1", 1}, {u"2", 1}, {u"3", 1}}));
}

TEST_F(DedupeSourceTest, ADryRunTellsTheSameAndChangesNothing) {
    add({{kPage, u"1", u"题"}, {kPage, u"2", u"题"}, {kPage, u"3", u"Database Error"}, {u"http://x/", u"3", u"y"}});
    const std::string database = files.readFile(kSource);
    RecordingHost dryHost;
    JobSummary summary(kDedupeSourceJob);
    {
        const auto overlay = platform::makeDryRunFileSystem(files);
        Context dry(platformOf(*overlay), configuration(settings()), {.dryRun = true, .ignoreLockFile = false});
        dry.setTrashFolder(u"X:\\trash");
        dedupeSource({std::u16string(kSource)}, dry, dryHost, summary);
    }
    EXPECT_EQ(files.readFile(kSource), database);
    EXPECT_THAT(pageFiles(), ElementsAre(u"1", u"2", u"3"));
    EXPECT_FALSE(files.folderExists(u"X:\\trash"));
    EXPECT_EQ(summary.deletedRows, dedupe().deletedRows);
    EXPECT_EQ(dryHost.entries, host.entries);
}

struct TitleCase {
    const char* name;
    std::string page;
    const char16_t* title;
};
class PageTitle : public JobTest, public testing::WithParamInterface<TitleCase> {};

TEST_P(PageTitle, IsReadFromTheFront) {
    files.writeFile(u"X:\\page.htm", GetParam().page);
    EXPECT_EQ(context().pageFiles().title(u"X:\\page.htm"), GetParam().title);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, PageTitle,
    testing::ValuesIn<TitleCase>({
        {"code_page_936", "<TITLE>\xB5\xE7\xCA\xD3</Title>\xD6\xD0", u"电视"},
        {"utf8", "<title>电视</title>", u"电视"},
        {"utf8_with_its_mark", "\xEF\xBB\xBF<title>TV</title>", u"TV"},
        // Two bytes that would be UTF-8, too; what follows tells that the page is not.
        {"the_page_tells_the_encoding_not_the_title", "<title>\xD2\xBB</title>\xD6\xD0\xB9\xFA", u"一"},
        {"behind_a_long_head", std::string(20000, ' ') + "<title>\xB5\xE7</title>", u"电"},
        // The front ends inside the last character of a page in UTF-8.
        {"a_character_across_the_end_of_the_front", "<title>电</title>" + std::string(16384 - 18 - 2, ' ') + "视视视",
         u"电"},
        {"across_the_end_of_the_front", std::string(16384 - 10, ' ') + "<title>abcdef</title>", u"abcdef"},
        {"not_closed", "<title>x", u""},
        {"none", std::string(40000, 'x'), u""},
        {"empty", "", u""},
    }),
    [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace kelb::jobs
