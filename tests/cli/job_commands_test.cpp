#include "tests/cli/program_fixture.h"

#include "tests/platform/text_matchers.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace kelb::cli {
namespace {

using platform::MatchesPattern;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

class JobCommands : public ProgramTest {
protected:
    JobCommands() {
        for (const char* database : {"Comb.mdb", "wxdb.mdb"}) {
            run({"db", "create", at(database)});
        }
        run({"db", "exec", at("Comb.mdb"),
             "create table bbsforum (id int identity(1,1), url varchar(255), content memo, cid int, sT varchar(255), "
             "sC memo)"});
        run({"db", "exec", at("wxdb.mdb"),
             "create table wxAll (id int identity(1,1), url varchar(255), recTime datetime, sT varchar(255), sC memo, "
             "sA memo, cid int)"});
    }

    /// `count` threads with saved pages, from number 101 on.
    void crawl(int count, int cid = 28) {
        std::string lines;
        for (int i = 1; i <= count; ++i) {
            const std::string name = std::to_string(100 + i) + "-1-1";
            lines += R"({"url": "http://b/thread-)" + name + R"(.html", "content": "D:\\Crawl\\)" + name +
                     R"(.htm", "cid": )" + std::to_string(cid) + "}\n";
            write("lan/crawl/" + name + ".htm", page("第" + name + "个帖子的内容"));
        }
        EXPECT_EQ(run({"db", "import", at("Comb.mdb"), "bbsforum"}, lines).status, 0);
    }
    static std::string page(const std::string& post) {
        return "<h1 class=\"ts\"><a href=\"#\">标题</a></h1><div id=\"post_1111\"><td class=\"t_f\">" + post +
               "</td></tr></table></div><div id=\"post_1112\"><td class=\"t_f\">回复内容一二三</td></tr></table>"
               "</div><div id=\"post_new\"></div>";
    }
    std::vector<std::string> importCommand(std::vector<std::string> more = {}) {
        std::vector<std::string> words{"forum-import", "--source", at("Comb.mdb"), "--dest", at("wxdb.mdb")};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    std::string articles() { return run({"db", "query", at("wxdb.mdb"), "select url from wxAll order by id"}).out; }
};

TEST_F(JobCommands, ForumImportPrintsLogBoxAndSummary) {
    crawl(2);
    write("lan/crawl/102-1-1.htm", "no thread");
    const Outcome outcome = run(importCommand({"--lan-folder", at("lan"), "--quiet", "--report", at("run.html")}));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(
        outcome.out,
        MatchesPattern("totalRec: 2\n"
                       "提取失败! 第1次,http://b/thread-102-1-1.html,\\|未找到SM\\|未找到SM1\\|无楼层标志!\\|"
                       "楼层<3，为: 0层\\|split2Floors失败!\n"
                       "\\[网页内容提取\\] 完成!\n"
                       "\\{\"job\": \"forum-import\", \"rows\": 2, \"saved\": 1, \"skipped\": 0, \"failed\": 1, "
                       "\"deletedRows\": 0, \"deletedFiles\": 0, \"overflowFiles\": 0, \"seconds\": [0-9.]+, "
                       "\"failedBecause\": \\{\"noFloors\": 1\\}\\}\n"));
    EXPECT_THAT(read("run.html"), AllOf(HasSubstr("<b>1</b>saved"), HasSubstr("http://b/thread-102-1-1.html")));
    EXPECT_EQ(articles(), "{\"url\": \"http://b/thread-101-1-1.html\"}\n");
}

TEST_F(JobCommands, TheSummaryComesAlsoWhenTheLogCannotBeWritten) {
    crawl(1);
    write("home/Kelb.ini", "[Safety]\r\nlogFile=" + at("nowhere/run.log") + "\r\n");
    const Outcome outcome = run(importCommand({"--lan-folder", at("lan"), "--quiet", "--report", at("run.html")}));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("nowhere/run-"));
    EXPECT_THAT(outcome.out, AllOf(HasSubstr("\"saved\": 1"), EndsWith("}\n")));
    EXPECT_THAT(read("run.html"), HasSubstr("The run ended with an error: "));
}

TEST_F(JobCommands, AWrongWordIsToldWithTheCommandThatHelps) {
    EXPECT_EQ(run({"db", "query"}).err, "kelb: FILE is required. See kelb db query --help.\n");
    EXPECT_EQ(run({"undo", "--runs"}).err,
              "kelb: The following argument was not expected: --runs. See kelb undo --help.\n");
    EXPECT_EQ(run({"db", "copy"}).err, "kelb: there is no command copy. See kelb db --help.\n");
    EXPECT_EQ(run({"imprt"}).err, "kelb: there is no command imprt. See kelb --help.\n");
}

TEST_F(JobCommands, ParamImportWalksAFolderAndItsCounterCanBeSeenAndReset) {
    std::string fields = "url varchar(255), TVCode varchar(255), TVName varchar(255)";
    for (int i = 1; i <= 10; ++i) {
        fields += ", param" + std::to_string(i) + " varchar(255)";
    }
    run({"db", "exec", at("wxdb.mdb"), "create table wxKnowledge (" + fields + ")"});
    write("shop/0/1.htm", "<title>Alpha(AB123)x</title><table><th>主体参数</th>" + std::string(200, ' '));
    const std::vector<std::string> words{"param-import", "--folder",     at("shop"),
                                         "--connection", at("wxdb.mdb"), "--quiet"};
    const auto show = [&] { return run({"counter", "show", at("shop")}).out; };
    EXPECT_THAT(show(), HasSubstr("begins with sub-folder 0"));
    Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out,
                MatchesPattern("totalRec: 0\n"
                               "提取到参数，但没有保存\\(保存选项未选择\\)。 sTVName: Alpha, sTVCode1: AB123\n"
                               "无法识别! [-0-9: ]+\n"
                               "\\[网页内容提取\\] 完成了参数的提取\n\\{.*\"unreadFiles\": 0.*\\}\n"));
    EXPECT_THAT(show(), HasSubstr("sub-folder 1 is not there"));
    EXPECT_EQ(run({"counter", "reset", at("shop")}).status, 0);
    EXPECT_EQ(run({"counter", "show", at("shop"), "--json"}).out,
              "{\"counterFile\":true,\"folder\":0,\"file\":0,\"filesInFolder\":1,\"over\":false}\n");

    outcome = run({"param-import", "--folder", at("shop"), "--connection", at("wxdb.mdb"), "--save", "--dry-run"});
    EXPECT_THAT(outcome.out, HasSubstr("提取到参数，已保存。"));
    EXPECT_EQ(read("shop/CounterResp.txt"), "0,0\r\n") << "a dry run leaves the place, too";
    EXPECT_EQ(run({"db", "query", at("wxdb.mdb"), "select * from wxKnowledge"}).out, "");

    write("home/Kelb.ini", "[Params]\r\nportalPath=http://p\r\n");
    run({"db", "import", at("Comb.mdb"), "bbsforum"},
        R"({"url": "http://p/product/1/param.shtml", "content": "D:\\0\\1.htm"})");
    outcome = run({"param-import", "--source", at("Comb.mdb"), "--table", "bbsforum", "--lan-folder", at("shop"),
                   "--save", "--connection", at("wxdb.mdb")});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(run({"db", "query", at("wxdb.mdb"), "select url, TVName from wxKnowledge"}).out,
                HasSubstr("http://p/product/1/param.shtml"));

    EXPECT_EQ(run({"param-import", "--folder", "x", "--source", "y"}).status, 2);
    EXPECT_EQ(run({"param-import"}).status, 2) << "no folder is known";
    EXPECT_EQ(run({"counter", "show", at("nowhere")}).status, 1);
    write("shop/CounterResp.txt", "x");
    EXPECT_EQ(run({"counter", "show", at("shop")}).status, 1);
}

TEST_F(JobCommands, TheSettingsNameDatabasesAndDrives) {
    crawl(1);
#ifdef _WIN32 // where drives are the system's own
    const std::string disk = at("."), pages = at("lan"), mapping;
#else
    const std::string disk = "q:", pages = "Z:";
    const std::string mapping = "[Drives]\r\nQ=" + at("") + "\r\nZ=" + at("lan") + "\r\n";
#endif
    write("home/Kelb.ini", mapping + "[Setup]\r\nadultFolder=" + disk + "\\\r\n[Paths]\r\nwxdb=" + disk +
                               "\\WXDB.mdb\r\n[Safety]\r\nlogFile=" + disk + "\\kelb.log\r\n");
    const Outcome outcome = run({"forum-import", "--no-summary", "--lan-folder", pages + "\\"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "totalRec: 1\n[网页内容提取] 完成!\n");
    EXPECT_THAT(outcome.err, HasSubstr("1 / 1")) << "progress goes to standard error";
    EXPECT_EQ(articles(), "{\"url\": \"http://b/thread-101-1-1.html\"}\n");
    bool logged = false;
    for (const auto& entry : std::filesystem::directory_iterator(at(""))) {
        logged = logged || entry.path().filename().string().starts_with("kelb-20");
    }
    EXPECT_TRUE(logged);
}

TEST_F(JobCommands, ForumFillFillsItsOwnTable) {
    crawl(1, 40);
    const Outcome outcome = run({"forum-fill", "--source", at("Comb.mdb"), "--lan-folder", at("lan"), "--no-summary"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, EndsWith("完成!\n"));
    EXPECT_EQ(run({"db", "query", at("Comb.mdb"), "select sT from bbsforum"}).out, "{\"sT\": \"标题\"}\n");
}

TEST_F(JobCommands, ADryRunTellsTheSameAndChangesNothing) {
    crawl(3);
    const std::string source = read("Comb.mdb"), dest = read("wxdb.mdb");
    const Outcome dry = run(importCommand({"--lan-folder", at("lan"), "--dry-run", "--no-summary"}));
    EXPECT_EQ(read("Comb.mdb"), source);
    EXPECT_EQ(read("wxdb.mdb"), dest);
    const Outcome real = run(importCommand({"--lan-folder", at("lan"), "--no-summary"}));
    EXPECT_EQ(dry.out, real.out);
    EXPECT_NE(read("wxdb.mdb"), dest);
}

TEST_F(JobCommands, AnErrorIsOneLineBehindTheSummary) {
    run({"db", "exec", at("wxdb.mdb"), "create table other (n integer)"});
    const Outcome outcome = run({"forum-import", "--source", at("wxdb.mdb"), "--dest", at("wxdb.mdb"), "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, MatchesPattern("kelb: .*wxdb.mdb: no table bbsforum.*\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\"job\": \"forum-import\", \"rows\": 0"));
}

TEST_F(JobCommands, AReportTellsTheErrorOrIsRefusedBeforeTheJob) {
    crawl(1);
    const auto reportTo = [&](const std::string& path) {
        return run(
            {"forum-import", "--source", at("wxdb.mdb"), "--dest", at("wxdb.mdb"), "--report", path, "--dry-run"});
    };
    EXPECT_EQ(reportTo(at("run.html")).status, 1);
    EXPECT_THAT(read("run.html"), AllOf(HasSubstr("no table bbsforum"), HasSubstr("Dry run")));
    for (const std::string& path : {at("nowhere/run.html"), at("lan")}) {
        const Outcome outcome = run(importCommand({"--lan-folder", at("lan"), "--report", path}));
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, AllOf(HasSubstr("report"), HasSubstr(path)));
    }
    EXPECT_EQ(articles(), "");
}

TEST_F(JobCommands, AMissingPageFolderIsToldAtOnce) {
    crawl(1);
    const Outcome outcome = run(importCommand({"--lan-folder", at("nowhere"), "--quiet"}));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("no folder " + at("nowhere")), HasSubstr("--lan-folder")));
    EXPECT_THAT(outcome.out, HasSubstr("\"skippedBecause\": {\"noPageFile\": 1}"));
}

TEST_F(JobCommands, AMissingSourceIsNamedAsTheWindowDoes) {
    const Outcome outcome = run({"forum-import", "--dest", at("wxdb.mdb")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, testing::StartsWith("kelb: 找不到源数据库: \\Comb.mdb"));
}

TEST_F(JobCommands, CtrlCStopsAfterTheCurrentRow) {
    crawl(400);
    StartedProgram process = start(importCommand({"--lan-folder", at("lan"), "--quiet"}));
    // The count line is printed when the rows begin.
    for (int tries = 0; read("stdout").empty() && tries < 1000; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    process.interrupt();
    const Outcome outcome = finish(std::move(process));
    EXPECT_EQ(outcome.status, 3) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("\"stopped\": true"));
    EXPECT_EQ(run({"db", "check", at("wxdb.mdb")}).status, 0);
}

TEST_F(JobCommands, ArticleImportTakesTablesAndSettings) {
    write("home/Kelb.ini", "[Articles]\r\nsite5=digital.example\r\n");
    run({"db", "exec", at("Comb.mdb"), "create table crawled (url varchar(255), content memo)"});
    run({"db", "exec", at("wxdb.mdb"),
         "create table news (url varchar(255), cid int, sT varchar(255), sC memo, recTime datetime)"});
    const std::string body(201, 'b');
    run({"db", "import", at("Comb.mdb"), "crawled"},
        R"({"url": "http://digital.example/1", "content": "<h1>Title</h1><div class=\"main\" id=\"main_content\">)" +
            body + R"(<div class=\"related\">"})" + "\n");
    const Outcome outcome = run({"article-import", "--source", at("Comb.mdb"), "--source-table", "crawled", "--dest",
                                 at("wxdb.mdb"), "--dest-table", "news", "--no-summary"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    // The entry is the log's own text, line ends of the window included.
    EXPECT_EQ(outcome.out, "totalRec: 1\nTitle\r\n\r\n" + body + "\n");
    EXPECT_EQ(run({"db", "query", at("wxdb.mdb"), "select sT from news"}).out, "{\"sT\": \"Title\"}\n");

    write("home/Kelb.ini", "");
    const Outcome unset = run({"article-import", "--source", at("Comb.mdb"), "--dest", at("wxdb.mdb"), "--quiet"});
    EXPECT_EQ(unset.status, 2);
    EXPECT_THAT(unset.err, HasSubstr("[Articles] site1"));
}

TEST_F(JobCommands, MultipageImportStoresIntoAnAccessFile) {
    write("home/Kelb.ini", "[Articles]\r\nsiteAPrefix=http://a/art\r\n");
    run({"db", "exec", at("wxdb.mdb"),
         "create table wxPrinter (url varchar(255), sT varchar(255), sC memo, sA memo, recTime datetime)"});
    run({"db", "import", at("Comb.mdb"), "bbsforum"},
        R"({"url": "http://a/art/n10.htm", "content": "<title>T</title><div id=\"content\"><div>a</div>b</div></div><script>"})"
        "\n");
    const std::vector<std::string> command{"multipage-import", "--source",     at("Comb.mdb"), "--connection",
                                           at("wxdb.mdb"),     "--no-summary", "--quiet"};
    const Outcome first = run(command);
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_THAT(first.out, HasSubstr("没有Field: pagenum or sT or sC,已创建，请重新开始"));
    const Outcome second = run(command);
    EXPECT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(second.out, "共有: 1条记录。\nCount4multiPage: 1,\n");
    EXPECT_EQ(run({"db", "query", at("wxdb.mdb"), "select sT, sC from wxPrinter"}).out,
              "{\"sT\": \"T\", \"sC\": \"</div>b\"}\n");
    EXPECT_EQ(run({"multipage-import", "--source", at("Comb.mdb")}).status, 2) << "nothing says where to store";
    EXPECT_EQ(run({"multipage-import", "--server", "h", "--connection", "x.mdb"}).status, 2);
}

TEST_F(JobCommands, CallAnswersLines) {
    const Outcome outcome = run({"call"}, "{\"id\": 1, \"op\": \"pubProg.killTagStr\", \"args\": [\"a<b>c\"]}\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\"ac\""));
}

} // namespace
} // namespace kelb::cli
