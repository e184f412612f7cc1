#include "jobs/disposal.h"
#include "jobs/job_summary.h"
#include "jobs/page_files.h"
#include "jobs/row_loop.h"
#include "jobs/row_text.h"
#include "jobs/run_log.h"
#include "jobs/run_report.h"
#include "platform/text.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

#include <limits>

namespace kelb::jobs {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using Texts = std::vector<std::u16string>;

TEST(JobSummary, IsOneLineOfJson) {
    JobSummary summary("forum-import");
    summary.rows = 12;
    summary.saved = 7;
    summary.save(u"http://b/1");
    summary.skip("alreadyThere", u"http://b/2");
    summary.skip("overLong", u"http://b/3");
    summary.skip("alreadyThere", u"http://b/4");
    summary.fail("noticePage", u"http://b/5", u"");
    summary.overflowFiles = 1;
    summary.seconds = 0.12;
    EXPECT_EQ(toJson(summary),
              R"({"job": "forum-import", "rows": 12, "saved": 8, "skipped": 3, "failed": 1, "deletedRows": 0, )"
              R"("deletedFiles": 0, "overflowFiles": 1, "seconds": 0.120, )"
              R"("skippedBecause": {"alreadyThere": 2, "overLong": 1}, "failedBecause": {"noticePage": 1}})");
    summary.replacedCharacters = 2;
    summary.stopped = true;
    summary.dryRun = true;
    summary.note = "why \"nothing\"";
    EXPECT_TRUE(toJson(summary).ends_with(
        R"(, "replacedCharacters": 2, "stopped": true, "dryRun": true, "note": "why \"nothing\""})"));
}

TEST(JobSummary, RemembersTheFrontOfEachGroupAndCountsTheRest) {
    JobSummary summary("forum-import");
    for (std::size_t i = 0; i < JobSummary::kRowsTold + 2; ++i) {
        summary.fail("noTitle", platform::number(static_cast<long long>(i)), std::u16string(300, u'x'));
    }
    summary.skip("noTitle", u"passed over for the same reason");
    ASSERT_EQ(summary.groups.size(), 2U);
    EXPECT_EQ(summary.groups[0].count, JobSummary::kRowsTold + 2);
    ASSERT_EQ(summary.groups[0].rows.size(), JobSummary::kRowsTold);
    EXPECT_EQ(summary.groups[0].rows.back().name, u"4999");
    EXPECT_EQ(summary.groups[0].rows.back().detail.size(), JobSummary::kDetailLength);
    EXPECT_THAT(reportPage(summary, {{2015, 12, 2, 8, 30, 0}}), HasSubstr("and 2 more"));
}

TEST(RunReport, TellsTheFiguresAndTheRowsBehindThemWithoutTheirMarkup) {
    JobSummary summary("forum-import");
    summary.rows = 3;
    summary.source = {u"D:\\crawl\\Comb.mdb", u"bbs<forum>", u"url"};
    summary.save(u"http://b/?a=1&b=2");
    summary.fail("noFloors", u"javascript:alert(1)", u"<script>alert(\"1\")</script>");
    summary.fail("of another version", u"C:\\a\"b.htm", u"");
    summary.note = "why";
    const std::string page = reportPage(summary, {{2015, 12, 2, 8, 30, 0}, "disk <full>"});
    EXPECT_THAT(
        page, AllOf(HasSubstr("2015-12-02T08:30:00"), HasSubstr("bbs&lt;forum&gt; in D:\\crawl\\Comb.mdb"),
                    HasSubstr("href=\"http://b/?a=1&amp;b=2\""), HasSubstr("&lt;script&gt;alert(&quot;1&quot;)"),
                    HasSubstr("no floor of a board on the page"), HasSubstr("rejected: of another version"),
                    HasSubstr("disk &lt;full&gt;"), HasSubstr("<b>2</b>rejected"), HasSubstr("<p class=\"note\">why")));
    EXPECT_THAT(page, Not(AnyOf(HasSubstr("<script"), HasSubstr("href=\"javascript"), HasSubstr("src="))));
    EXPECT_LT(page.find("http://b/?a=1"), page.find("alert(1)")) << "saved rows come first";
}

struct ValueCase {
    const char* name;
    ado::Value value;
    const char* json;
    const char* csv;
};

class RowText : public testing::TestWithParam<ValueCase> {};

TEST_P(RowText, WritesAValue) {
    std::string json, csv;
    appendJson(GetParam().value, json);
    appendCsv(GetParam().value, csv);
    EXPECT_EQ(json, GetParam().json);
    EXPECT_EQ(csv, GetParam().csv);
}

INSTANTIATE_TEST_SUITE_P(
    Values, RowText,
    testing::ValuesIn<ValueCase>({
        {"null", ado::Null{}, "null", ""},
        {"yes", true, "true", "true"},
        {"no", false, "false", "false"},
        {"byte_is_a_number", std::uint8_t{65}, "65", "65"},
        {"long", std::int32_t{-2147483647 - 1}, "-2147483648", "-2147483648"},
        {"double_shortest", 0.1, "0.1", "0.1"},
        {"single_shortest", 0.1F, "0.1", "0.1"},
        {"not_a_number", std::numeric_limits<double>::quiet_NaN(), "\"NaN\"", "NaN"},
        {"currency_as_text", ado::Currency{12345600}, "\"1234.56\"", "1234.56"},
        {"date", ado::OleDate{42340.354166666664}, "\"2015-12-02T08:30:00\"", "2015-12-02T08:30:00"},
        {"binary_one", ado::Binary{std::byte{0xFF}}, "\"/w==\"", "/w=="},
        {"binary_three", ado::Binary{std::byte{'M'}, std::byte{'a'}, std::byte{'n'}}, "\"TWFu\"", "TWFu"},
        {"empty_text_is_not_null", std::u16string(), "\"\"", "\"\""},
        {"escapes", std::u16string(u"a\"b\\c\r\n\t\u0001"), "\"a\\\"b\\\\c\\r\\n\\t\\u0001\"",
         "\"a\"\"b\\c\r\n\t\x01\""},
        {"comma", std::u16string(u"一,二"), "\"一,二\"", "\"一,二\""},
        {"beyond_the_first_plane", std::u16string(u"𠮷"), "\"𠮷\"", "𠮷"},
        {"half_a_pair", std::u16string{u'x', char16_t{0xD842}}, "\"x\\ud842\"", "x\xEF\xBF\xBD"},
    }),
    [](const auto& test) { return std::string(test.param.name); });

class JobParts : public JobTest {
protected:
    void makeRows(int count) {
        for (int i = 0; i < count; ++i) {
            execute(kSource, {u"insert into bbsforum (url) values ('u')"});
        }
    }
    JobSummary walk(RowWalk::CountLine countLine, RowWalk::Stop stop, std::size_t limit) {
        JobSummary summary("job");
        ado::Connection connection(context().databases());
        connection.Open(ado::jetConnectionString(kSource));
        ado::Recordset set;
        set.Open(u"select * from bbsforum", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
        walkRows({.rows = set, .connections = {&connection}, .countLine = countLine, .stop = stop, .limit = limit},
                 host, summary, [this](std::size_t i) { visited.push_back(i); });
        return summary;
    }
    std::vector<std::size_t> visited;
    static constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
};

TEST_F(JobParts, AnEmptySelectionLogsZero) {
    walk(RowWalk::CountLine::TotalRec, RowWalk::Stop::Watched, kAll);
    EXPECT_EQ(host.entries, Texts{u"totalRec: 0"});
    EXPECT_TRUE(visited.empty());
}

TEST_F(JobParts, AStopLeavesTheCurrentRowUntouched) {
    makeRows(3);
    host.stopAfter = 1;
    const JobSummary summary = walk(RowWalk::CountLine::TotalRec, RowWalk::Stop::Watched, kAll);
    EXPECT_EQ(visited, std::vector<std::size_t>{1});
    EXPECT_TRUE(summary.stopped);
    EXPECT_EQ(host.progress, Texts{u"已处理: 1,还剩于: 2"});
}

TEST_F(JobParts, AWalkMayIgnoreTheStopBoxAndHaveALimit) {
    makeRows(3);
    host.stopAfter = 0;
    const JobSummary summary = walk(RowWalk::CountLine::None, RowWalk::Stop::Ignored, 2);
    EXPECT_EQ(visited, (std::vector<std::size_t>{1, 2}));
    EXPECT_FALSE(summary.stopped);
    EXPECT_TRUE(host.entries.empty());
    EXPECT_EQ(host.progress, (Texts{u"已处理: 1,还剩于: 2", u"已处理: 2,还剩于: 1"}));
}

struct TrashCase {
    const char16_t* path;
    const char16_t* lanFolder;
    const char16_t* kept;
};

TEST_F(JobParts, TheTrashKeepsPathsBelowItsOwnFolder) {
    const std::u16string run = u"X:\\trash\\job-20151202-083000\\";
    const auto trash = makeTrash(context().platform(), u"X:\\trash", "job");
    for (const TrashCase& c : std::initializer_list<TrashCase>{
             {u"X:\\lan\\forum\\a.htm", u"x:\\LAN\\", u"forum\\a.htm"},
             {u"D:\\other\\b.htm", u"X:\\lan\\", u"D\\other\\b.htm"},
             {u"\\\\host\\share\\c.htm", u"", u"host\\share\\c.htm"},
             {u"/srv/pages/d.htm", u"", u"srv\\pages\\d.htm"},
             {u"X:\\lan\\..\\..\\e.htm", u"X:\\lan\\", u"e.htm"},
             {u"X:\\lan\\forum\\a.htm", u"X:\\lan\\", u"forum\\a.htm-2"},
         }) {
        files.writeFile(c.path, "page");
        trash->deleteFile(c.path, c.lanFolder);
        EXPECT_TRUE(files.fileExists(run + c.kept)) << platform::toUtf8(c.path);
        EXPECT_FALSE(files.fileExists(c.path)) << platform::toUtf8(c.path);
    }
}

TEST_F(JobParts, EveryRunHasATrashFolderOfItsOwn) {
    files.writeFile(u"X:\\lan\\a.htm", "first");
    makeTrash(context().platform(), u"X:\\trash", "job")->deleteFile(u"X:\\lan\\a.htm", u"X:\\lan\\");
    files.writeFile(u"X:\\lan\\a.htm", "second");
    makeTrash(context().platform(), u"X:\\trash", "job")->deleteFile(u"X:\\lan\\a.htm", u"X:\\lan\\");
    EXPECT_EQ(files.readFile(u"X:\\trash\\job-20151202-083000\\a.htm"), "first");
    EXPECT_EQ(files.readFile(u"X:\\trash\\job-20151202-083000-2\\a.htm"), "second");
}

TEST_F(JobParts, AnExistingLanFolderGetsItsSeparator) {
    files.writeFile(u"X:\\lan\\crawl\\a.htm", "page");
    EXPECT_EQ(lanFolderText(files, u"X:\\lan"), u"X:\\lan\\");
    EXPECT_EQ(lanFolderText(files, u"X:\\lan\\"), u"X:\\lan\\");
    EXPECT_EQ(lanFolderText(files, u"X:\\lan\\crawl\\page-"), u"X:\\lan\\crawl\\page-");
}

TEST_F(JobParts, PagesAreReadInEitherEncoding) {
    PageFiles pages = context().pageFiles();
    files.writeFile(u"X:\\lan\\g.htm", platform::encode936(u"洗衣机"));
    files.writeFile(u"X:\\lan\\u.htm", platform::toUtf8(u"洗衣机"));
    std::u16string page;
    for (const char16_t* stored : {u"D:\\g.htm", u"  D:\\u.htm "}) {
        EXPECT_TRUE(pages.read(PageFiles::path(host.location, stored), page));
        EXPECT_EQ(page, u"洗衣机");
    }
    EXPECT_FALSE(pages.read(PageFiles::path(host.location, u"D:\\none.htm"), page));
    EXPECT_EQ(page, u"");
    EXPECT_EQ(PageFiles::path({false, u"X:\\lan\\"}, u"D:\\g.htm"), u"");
}

TEST_F(JobParts, ARunLogIsAFileOfItsOwnInTheOrderOfTime) {
    RunLog log(context().platform(), u"X:\\logs.d\\kelb.log");
    log.add(u"第一条");
    log.add(u"第二条");
    EXPECT_FALSE(files.fileExists(u"X:\\logs.d\\kelb-20151202-083000.log"));
    log.flush();
    log.addLast(u"出错了");
    EXPECT_EQ(files.readFile(u"X:\\logs.d\\kelb-20151202-083000.log"),
              "2015-12-02T08:30:00 第一条\n2015-12-02T08:30:00 第二条\n2015-12-02T08:30:00 出错了\n");
    RunLog none(context().platform(), u"");
    none.addLast(u"x");
}

} // namespace
} // namespace kelb::jobs
