#include "platform/path_map.h"
#include "platform/utf8.h"
#include "tests/cli/program_fixture.h"

#include <gmock/gmock.h>

namespace kelb::cli {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

/// The commands that delete, merge and put back, on files of a real disk.
class CleaningCommands : public ProgramTest {
protected:
    CleaningCommands() {
        run({"db", "create", at("Comb.mdb")});
        run({"db", "exec", at("Comb.mdb"),
             "create table bbsforum (id int identity(1,1), url varchar(255), content memo)"});
        std::string lines;
        for (const std::string name : {"1", "2", "3"}) {
            lines += R"({"url": "http://bbs.one/thread-5-1-)" + name + R"(.html", "content": "D:\\Crawl\\)" + name +
                     ".htm\"}\n";
            write("lan/crawl/" + name + ".htm", "<title>same</title>" + name);
        }
        lines += R"({"url": "http://x/", "content": "D:\\none.htm"})";
        run({"db", "import", at("Comb.mdb"), "bbsforum"}, lines);
        write("home/Kelb.ini", "[Dedup]\r\nforumSite1=bbs.one\r\n[Safety]\r\nmaxDeletePercent=25\r\n");
    }
    std::vector<std::string> dedupe(std::vector<std::string> more = {}) {
        std::vector<std::string> words{"dedupe-source", "--source",     at("Comb.mdb"), "--lan-folder",
                                       at("lan"),       "--no-summary", "--quiet"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    /// A table has no order of its own: what comes back stands where there is room.
    /// In the order in which they lie in the file.
    std::string crawlRows() { return run({"db", "export", at("Comb.mdb"), "bbsforum"}).out; }
    std::string pages() {
        std::string all;
        for (const char* name : {"1", "2", "3"}) {
            const std::string file = std::string("lan/crawl/") + name + ".htm";
            all += exists(file) ? read(file) : "gone";
        }
        return all;
    }
};

TEST_F(CleaningCommands, DedupeSourceIntoTheTrashAndBack) {
    const std::string before = crawlRows(), pagesBefore = pages(), database = read("Comb.mdb");
    const Outcome dry = run(dedupe({"--trash", at("trash"), "--dry-run"}));
    EXPECT_EQ(read("Comb.mdb"), database);
    EXPECT_EQ(pages(), pagesBefore);
    EXPECT_FALSE(exists("trash"));
    const Outcome real = run(dedupe({"--trash", at("trash")}));
    EXPECT_EQ(real.status, 0) << real.err;
    EXPECT_EQ(real.out, "共选取记录: 4条!\n"
                        "4 已删除：文件未找到: " +
                            platform::toUtf8(platform::joinPath(platform::fromUtf8(at("lan")), u"none.htm")) +
                            "\n"
                            "2 已删除：重复: http://bbs.one/thread-5-1-2.html\n"
                            "1 已删除：重复: http://bbs.one/thread-5-1-1.html\n"
                            "[网页内容提取] 去除重复的操作已完成！\n");
    EXPECT_EQ(dry.out, real.out);
    EXPECT_EQ(pages(), "gonegone<title>same</title>3");

    const Outcome look = run({"undo", "--trash", at("trash"), "--dry-run", "--quiet", "--no-summary"});
    EXPECT_EQ(pages(), "gonegone<title>same</title>3");
    const Outcome undone = run({"undo", "--trash", at("trash"), "--quiet", "--no-summary"});
    EXPECT_EQ(undone.status, 0) << undone.err;
    EXPECT_THAT(undone.out, EndsWith(": 3 rows and 2 files put back\n"));
    EXPECT_EQ(look.out, undone.out);
    EXPECT_EQ(crawlRows(), before);
    EXPECT_EQ(pages(), pagesBefore);
    EXPECT_EQ(run({"db", "check", at("Comb.mdb")}).status, 0);
    EXPECT_THAT(run({"undo", "--trash", at("trash"), "--quiet"}).out, HasSubstr("\"rows\": 0"));
}

TEST_F(CleaningCommands, TooManyMissingFilesNeedYes) {
    std::filesystem::rename(at("lan"), at("offline"));
    std::filesystem::create_directories(at("lan"));
    const std::string database = read("Comb.mdb");
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--dry-run"}}) {
        const Outcome refused = run(dedupe(options));
        EXPECT_EQ(refused.status, 2);
        EXPECT_THAT(refused.err, HasSubstr("4 of 4 rows have no page file"));
        EXPECT_THAT(refused.err, HasSubstr("--yes"));
    }
    EXPECT_EQ(read("Comb.mdb"), database);
    EXPECT_EQ(run(dedupe({"--yes"})).status, 0);
    EXPECT_EQ(crawlRows(), "");
}

TEST_F(CleaningCommands, UnsetSettingsAreRefused) {
    write("home/Kelb.ini", "");
    for (const auto& [words, setting] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {dedupe(), "[Dedup] forumSite1"},
             {{"fault-merge", "--db", at("Comb.mdb")}, "[Merge] siteFragment"},
             {{"add-fields"}, "[AddFields] siteLabel"},
             {{"undo"}, "--trash"}}) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 2) << words.front();
        EXPECT_THAT(outcome.err, HasSubstr(setting));
    }
}

TEST_F(CleaningCommands, DedupeDestPrintsItsLastCount) {
    run({"db", "exec", at("Comb.mdb"), "create table wxGG (url varchar(255), recTime datetime)"});
    run({"db", "import", at("Comb.mdb"), "wxGG"}, "{\"url\": \"a-1\"}\n{\"url\": \"a-2\"}\n{\"url\": \"b-1\"}\n");
    const Outcome outcome = run({"dedupe-dest", "--dest", at("Comb.mdb"), "--quiet", "--no-summary"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "Deleted: 1 All: 3\n[网页内容提取] 输出表的重复问题解决完毕!\n");
}

TEST_F(CleaningCommands, FaultMergeAddFieldsAndExportUsersRun) {
    write("home/Kelb.ini", "[Merge]\r\nsiteFragment=ask.site\r\n");
    const std::string table = "create table wxtcl (id int identity(1,1), url memo, TVCode memo)";
    run({"db", "exec", at("Comb.mdb"), table});
    const Outcome fields = run({"add-fields", "--db", at("Comb.mdb"), "--table", "wxtcl", "--quiet", "--no-summary"});
    EXPECT_EQ(fields.out, "[网页内容提取] ok\n") << fields.err;
    for (int i = 0; i < 2; ++i) {
        run({"db", "exec", at("Comb.mdb"),
             "insert into wxtcl (url, TVCode, sT, sC, blnPass) values ('ask.site', 'L3', 'q', 'a', true)"});
    }
    const Outcome merge = run({"fault-merge", "--db", at("Comb.mdb"), "--quiet"});
    EXPECT_EQ(merge.status, 0) << merge.err;
    EXPECT_THAT(merge.out, testing::StartsWith("[网页内容提取] 没有Field: TVCode,已创建，请重新开始\n"
                                               "[网页内容提取] 0003\n"));
    EXPECT_THAT(merge.out, HasSubstr("\"saved\": 1"));
    EXPECT_EQ(run({"fault-merge", "--db", at("Comb.mdb"), "--table", "", "--no-summary"}).out, "");

    run({"db", "exec", at("Comb.mdb"), "create table DVUser (userName varchar(20))"});
    run({"db", "exec", at("Comb.mdb"), "insert into DVUser values ('修理工')"});
    EXPECT_EQ(run({"export-users", "--db", at("Comb.mdb"), "--quiet", "--no-summary"}).out,
              "[网页内容提取] 共有: 1 条\n");
    EXPECT_TRUE(exists("home/TestRec/Store0.txt"));
}

} // namespace
} // namespace kelb::cli
