#include "jobs/forum_import.h"

#include "ado/error.h"
#include "jobs/job_error.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Texts = std::vector<std::u16string>;

class ForumImport : public JobTest {
protected:
    void SetUp() override { files.makeFolders(u"X:\\home\\TestRec"); }

    JobSummary import(const Settings& settings = {{u"Forum.boardName", u"维修论坛"}}) {
        JobSummary summary(kForumImportJob);
        importForumThreads({std::u16string(kSource), std::u16string(kDest)}, context(settings), host, summary);
        return summary;
    }
    std::vector<std::string> articles(std::u16string_view fields = u"url") {
        return rows(kDest, u"select " + std::u16string(fields) + u" from wxAll order by id");
    }
};

TEST_F(ForumImport, MakesOneArticleOfThePagesOfAThread) {
    crawl(u"7-1-1", {u"液晶电视黑屏，背光亮一下就灭", u"先量变压器的次级", u"谢谢楼主", u"第三个变压器短路"});
    crawl(u"7-2-1", {u"换了变压器就好了", u"记得换电容"});
    crawl(u"7-3-1", {u"我的也是这样修好的", u"数据收藏了备用"});
    const JobSummary summary = import();

    // Each of the two tags behind the cell's own leaves a blank.
    const std::string body = "○维修案例:<br>液晶电视黑屏，背光亮一下就灭  "
                             "<br><br>\r\n<br>∑维修经验: <br>①: 先量变压器的次级  "
                             "<br><br>\r\n②: 第三个变压器短路  "
                             "<br><br><br><br>\r\n<br>∑维修经验: <br>①: 换了变压器就好了  "
                             "<br><br>\r\n②: 记得换电容  "
                             "<br><br><br><br>\r\n<br>∑维修经验: <br>①: 我的也是这样修好的  "
                             "<br><br>\r\n②: 数据收藏了备用  ";
    EXPECT_THAT(articles(u"url, cid, sT, sC, sA, recTime"),
                ElementsAre("http://b/thread-7-1-1.html|28|标题7-1-1|" + body + "||2015-12-2 8:30:00"));
    EXPECT_EQ(host.entries, Texts{u"totalRec: 1"});
    EXPECT_EQ(host.boxes, Texts{u"网页内容提取|完成!"});
    EXPECT_EQ(host.progress,
              (Texts{u"已处理: 1,还剩于: 0", u"http://b/thread-7-2-1.html", u"http://b/thread-7-3-1.html", u"1"}));
    EXPECT_EQ(summary.rows, 1U);
    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(summary.note, "");
}

TEST_F(ForumImport, WritesTheBreakBehindAPostInOnePieceOnRequest) {
    crawl(u"7-1-1", {u"先量变压器的次级<br />", u"记得换电容"});
    import({{ u"Forum.mendBreaks", u"1" }}); // else the post ends in "< br />"
    EXPECT_THAT(articles(u"sC"),
                ElementsAre("○维修案例:<br>先量变压器的次级<br>  <br><br>\r\n<br>∑维修经验: <br>①: 记得换电容  "));
}

TEST_F(ForumImport, TakesFirstPagesOfItsChannelInTheOrderOfTheirAddresses) {
    crawl(u"9-1-1", {u"九号帖子的内容在这里", u"回复内容一二三"});
    crawl(u"10-1-1", {u"十号帖子的内容在这里", u"回复内容四五六"});
    crawl(u"11-1-1", {u"别的频道的帖子不取", u"回复内容七八九"}, 27);
    crawl(u"12-2-1", {u"第二页不单独成文", u"回复内容甲乙丙"});
    import();
    EXPECT_THAT(articles(), ElementsAre("http://b/thread-10-1-1.html", "http://b/thread-9-1-1.html"));
    EXPECT_EQ(host.entries, Texts{u"totalRec: 2"});
}

TEST_F(ForumImport, PassesSilentlyOverThreadsThatAreThere) {
    crawl(u"7-1-1?by=o''hara&x", {u"带撇号的地址也要查得到", u"回复内容一二三"});
    execute(kDest, {u"insert into wxAll (url) values ('HTTP://B/thread-7-1-1?by=o''hara&x.html')"});
    const JobSummary summary = import();
    EXPECT_EQ(articles().size(), 1U);
    EXPECT_EQ(host.entries, Texts{u"totalRec: 1"});
    EXPECT_EQ(summary.because(RowFate::Skipped), (Counts{{"alreadyThere", 1}}));
}

TEST_F(ForumImport, StoresTheAddressAsTheSourceHasIt) {
    crawl(u"7-1-1?by=o''hara", {u"带撇号的地址照原样保存", u"回复内容一二三"});
    // The file's name came from the statement as well, so it has the apostrophe twice; the row names it once.
    files.renameFile(filePath(u"7-1-1?by=o''hara"), filePath(u"7-1-1?by=o'hara"));
    import();
    EXPECT_THAT(articles(), ElementsAre("http://b/thread-7-1-1?by=o'hara.html"));
}

TEST_F(ForumImport, ImportsNothingWithoutLanMode) {
    crawl(u"7-1-1", {u"没有勾选就没有文件", u"回复内容一二三"});
    host.location.lanMode = false;
    const JobSummary summary = import();
    EXPECT_THAT(articles(), IsEmpty());
    EXPECT_EQ(host.entries, Texts{u"totalRec: 1"});
    EXPECT_EQ(summary.because(RowFate::Skipped), (Counts{{"noPageFile", 1}}));
    EXPECT_EQ(summary.note, "LAN mode is off: nothing can be imported");
}

TEST_F(ForumImport, LogsAFailureWithTheFrontOfItsReason) {
    crawl(u"6-1-1", {});
    crawl(u"7-1-1", {});
    crawl(u"8-1-1", {u"谢谢", u"楼主没有写故障现象", u"请把机型写清楚"});
    saveFile(u"7-1-1", u"<h1 class=\"ts\"><a>有标题没有楼层</a></h1>");
    const JobSummary summary = import();
    EXPECT_EQ(host.entries,
              (Texts{
                  u"totalRec: 3",
                  u"提取失败! 第1次,http://b/thread-7-1-1.html,|无楼层标志!|楼层<3，为: 0层|split2Floors失败!",
                  u"提取失败! 第2次,http://b/thread-8-1-1.html,无有效字符||楼层<3，为: 2层|楼主不合格",
              }));
    EXPECT_EQ(summary.skipped, 1U) << "a row without a file is no failure";
    EXPECT_EQ(summary.because(RowFate::Failed), (Counts{{"noFloors", 1}, {"firstPostRejected", 1}}));
    EXPECT_EQ(summary.rows, 3U);
}

TEST_F(ForumImport, CutsAReasonAtAHundredCharacters) {
    crawl(u"7-1-1", {});
    // One entry of ten units for each rejected reply, on a page whose title is missing.
    std::vector<std::u16string> posts{u"楼主的内容是合格的"};
    for (int i = 0; i < 9; ++i) {
        posts.push_back(i % 2 == 0 ? u"ab" : u"cd");
    }
    std::u16string html = threadPage(u"", posts);
    saveFile(u"7-1-1", html.substr(html.find(u"<div id")));
    import();
    ASSERT_EQ(host.entries.size(), 2U);
    const std::u16string front = u"提取失败! 第1次,http://b/thread-7-1-1.html,";
    EXPECT_EQ(host.entries[1].substr(0, front.size()), front);
    EXPECT_EQ(host.entries[1].size(), front.size() + 100);
}

TEST_F(ForumImport, DeletesTheRowAndThenTheFileOfANoticePage) {
    crawl(u"7-1-1", {});
    saveFile(u"7-1-1", noticePage());
    const JobSummary summary = import();
    EXPECT_THAT(rows(kSource, u"select id from bbsforum"), IsEmpty());
    EXPECT_FALSE(files.fileExists(filePath(u"7-1-1")));
    EXPECT_EQ(host.entries.size(), 2U);
    EXPECT_EQ(summary.because(RowFate::Failed), (Counts{{"noticePage", 1}}));
    EXPECT_EQ(summary.deletedRows, 1U);
    EXPECT_EQ(summary.deletedFiles, 1U);
}

TEST_F(ForumImport, LosesTheRowFirstWhenAFileCannotGo) {
    crawl(u"7-1-1", {});
    saveFile(u"7-1-1", noticePage());
    files.beforeOperation = [](std::string_view operation, std::u16string_view path) {
        if (operation == "remove" && path.find(u"7-1-1") != path.npos) {
            throw platform::FileError(platform::FileError::Kind::AccessDenied, "remove", path, 0, "refused");
        }
    };
    EXPECT_THROW(import(), platform::FileError);
    files.beforeOperation = nullptr;
    EXPECT_THAT(rows(kSource, u"select id from bbsforum"), IsEmpty());
    EXPECT_TRUE(files.fileExists(filePath(u"7-1-1")));
}

TEST_F(ForumImport, KnowsNoNoticePageWithoutABoardName) {
    crawl(u"7-1-1", {});
    saveFile(u"7-1-1", u"<title>提示信息 -   -  Powered by Discuz!</title>");
    const JobSummary summary = import({});
    EXPECT_EQ(rows(kSource, u"select id from bbsforum").size(), 1U);
    EXPECT_EQ(summary.failed, 1U);
    EXPECT_EQ(summary.deletedRows, 0U);
}

struct LengthCase {
    std::size_t body;
    std::size_t saved, overflow;
};

class ForumImportLength : public ForumImport, public testing::WithParamInterface<LengthCase> {};

TEST_P(ForumImportLength, GoesToARowBelow12000) {
    const std::u16string head = u"○维修案例:<br>", tail = u"  <br><br>\r\n<br>∑维修经验: <br>①: 收到了你的数据  ";
    const std::u16string post(GetParam().body - head.size() - tail.size(), u'量');
    crawl(u"7-1-1", {post, u"收到了你的数据"});
    const JobSummary summary = import();
    EXPECT_EQ(summary.saved, GetParam().saved);
    EXPECT_EQ(summary.overflowFiles, GetParam().overflow);
    EXPECT_EQ(articles().size(), GetParam().saved);
    const std::u16string store = u"X:\\home\\TestRec\\Store0.txt";
    ASSERT_EQ(files.fileExists(store), GetParam().overflow == 1);
    if (GetParam().overflow == 1) {
        EXPECT_EQ(platform::decode936(files.readFile(store)), u" 保存了本文件。\r\n" + head + post + tail);
        EXPECT_EQ(files.readFile(u"X:\\home\\TestRec\\index.csv"),
                  "\xEF\xBB\xBFname,job,url,title,length,time\r\n"
                  "Store0.txt,forum-import,http://b/thread-7-1-1.html,标题7-1-1,12000,2015-12-02T08:30:00\r\n");
        EXPECT_EQ(summary.because(RowFate::Skipped), (Counts{{"overLong", 1}}));
    }
}

INSTANTIATE_TEST_SUITE_P(Bodies, ForumImportLength, testing::ValuesIn<LengthCase>({{11999, 1, 0}, {12000, 0, 1}}),
                         [](const auto& test) { return std::to_string(test.param.body); });

TEST_F(ForumImport, CutsATitleAt250) {
    crawl(u"7-1-1", {});
    saveFile(u"7-1-1", threadPage(std::u16string(250, u'题') + u"尾", {u"内容内容内容内容", u"回复内容一二三"}));
    import();
    std::string expected;
    for (int i = 0; i < 250; ++i) {
        expected += "题";
    }
    EXPECT_THAT(articles(u"sT"), ElementsAre(expected));
}

struct LaterCase {
    const char* name;
    const char16_t* secondStored; ///< sC of page 2; nullptr: Null
    bool secondFile, thirdFile;
    const char* end; ///< of the body
};

class ForumImportLaterPages : public ForumImport, public testing::WithParamInterface<LaterCase> {};

TEST_P(ForumImportLaterPages, TakesTheStoredTextForAMissingFileAndStopsWithoutEither) {
    const LaterCase& c = GetParam();
    crawl(u"7-1-1", {u"第一页的内容在这里", u"诚信代理光盘"});
    if (c.secondFile) {
        crawl(u"7-2-1", {u"第二页的内容", u"量大从优"});
    } else {
        crawl(u"7-2-1", {});
    }
    if (c.thirdFile) {
        crawl(u"7-3-1", {u"第三页的内容", u"量大从优"});
    } else {
        crawl(u"7-3-1", {});
    }
    if (c.secondStored != nullptr) {
        execute(kSource,
                {u"update bbsforum set sC='" + std::u16string(c.secondStored) + u"' where url like '%7-2-1%'"});
    }
    import();
    EXPECT_THAT(articles(u"sC"), ElementsAre("○维修案例:<br>第一页的内容在这里  " + std::string(c.end)));
}

constexpr const char* kSecond = "<br><br><br><br>\r\n<br>∑维修经验: <br>①: 第二页的内容  ";
constexpr const char* kThird = "<br><br><br><br>\r\n<br>∑维修经验: <br>①: 第三页的内容  ";

INSTANTIATE_TEST_SUITE_P(Pages, ForumImportLaterPages,
                         testing::ValuesIn<LaterCase>({
                             {"third_missing_keeps_second", nullptr, true, false, kSecond},
                             {"second_without_either_ends_the_search", nullptr, false, true, ""},
                             {"second_stored_then_third", u"存好的第二页", false, true,
                              "<br><br>存好的第二页<br><br><br><br>\r\n<br>∑维修经验: <br>①: 第三页的内容  "},
                             {"second_stored_empty_then_third", u"", false, true, kThird},
                         }),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ForumImport, ReplacesEveryPageNumberOfAnAddress) {
    crawl(u"-1-7-1-1", {u"地址里有两处页码的帖子", u"回复内容一二三"});
    crawl(u"-1-7-2-1", {u"只换一处的地址不算", u"回复内容四五六"});
    crawl(u"-2-7-2-1", {u"两处都换的才是第二页", u"回复内容七八九"});
    import();
    const auto bodies = articles(u"sC");
    ASSERT_EQ(bodies.size(), 2U) << "the half-changed address is a first page of its own";
    EXPECT_THAT(bodies[0], HasSubstr("两处都换的才是第二页"));
    EXPECT_THAT(bodies[0], Not(HasSubstr("只换一处的地址不算")));
}

TEST_F(ForumImport, StopsBetweenRows) {
    for (const char16_t* page : {u"11-1-1", u"12-1-1", u"13-1-1"}) {
        crawl(page, {u"帖子内容在这里" + std::u16string(page), u"回复内容一二三"});
    }
    host.stopAfter = 2;
    const JobSummary summary = import();
    EXPECT_THAT(articles(), ElementsAre("http://b/thread-11-1-1.html", "http://b/thread-12-1-1.html"));
    EXPECT_TRUE(summary.stopped);
    EXPECT_EQ(summary.rows, 2U);
    EXPECT_EQ(host.entries, Texts{u"totalRec: 3"});
    EXPECT_EQ(host.boxes, Texts{u"网页内容提取|完成!"});
}

TEST_F(ForumImport, NamesAllThatIsMissingBeforeItStarts) {
    execute(u"X:\\old.mdb",
            {u"create table bbsforum (url varchar(255), boardid varchar(255), content memo, recdate date)"});
    JobSummary summary(kForumImportJob);
    try {
        importForumThreads({u"X:\\old.mdb", u"X:\\old.mdb"}, context(), host, summary);
        FAIL();
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), HasSubstr("X:\\old.mdb: table bbsforum has no column cid, sC"));
        EXPECT_THAT(error.what(), HasSubstr("X:\\old.mdb: no table wxAll"));
    }
    EXPECT_THAT(host.entries, IsEmpty());
}

TEST_F(ForumImport, RefusesASourceThatItMayHaveToChangeAndCannot) {
    crawl(u"17-1-1", {u"只读的源库也能取出内容", u"回复内容一二三"});
    std::string bytes = files.readFile(kSource);
    bytes[0x14] = 2; // a file of Access 2007 is read, not written
    files.writeFile(kSource, bytes);
    EXPECT_THROW(import({{u"Forum.boardName", u"维修论坛"}}), ado::Error);
    EXPECT_THAT(articles(), IsEmpty());
    EXPECT_THAT(host.entries, IsEmpty());
}

TEST_F(ForumImport, ReadsASourceThatItNeverChanges) {
    crawl(u"17-1-1", {u"只读的源库也能取出内容", u"回复内容一二三"});
    std::string bytes = files.readFile(kSource);
    bytes[0x14] = 2;
    files.writeFile(kSource, bytes);
    EXPECT_EQ(import({}).saved, 1U) << "without a board name no page is a notice page, and nothing is deleted";
}

TEST_F(ForumImport, SaysWhereItLookedForTheSource) {
    JobSummary summary(kForumImportJob);
    try {
        importForumThreads({u"", std::u16string(kDest)}, context({{u"Setup.adultFolder", u"X:\\none"}}), host, summary);
        FAIL();
    } catch (const JobError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith("找不到源数据库: X:\\none\\Comb.mdb"));
    }
}

TEST_F(ForumImport, NeedsAdMarksOnlyForTheFirstPage) {
    crawl(u"7-1-1", {});
    files.removeFile(u"X:\\home\\ADMarks.txt");
    EXPECT_EQ(import().skipped, 1U);
    saveFile(u"7-1-1", threadPage(u"标题", {u"内容内容内容内容", u"回复内容一二三"}));
    EXPECT_THROW(import(), platform::FileError);
}

TEST_F(ForumImport, KeepsTheRowsBeforeAnError) {
    crawl(u"11-1-1", {u"第一个帖子能读出来", u"回复内容一二三"});
    crawl(u"12-1-1", {u"第二个帖子的文件坏了", u"回复内容四五六"});
    files.beforeOperation = [](std::string_view operation, std::u16string_view path) {
        if (operation == "read" && path.find(u"12-1-1") != path.npos) {
            throw platform::FileError(platform::FileError::Kind::Other, "read", path, 5, "bad sector");
        }
    };
    JobSummary summary(kForumImportJob);
    EXPECT_THROW(importForumThreads({std::u16string(kSource), std::u16string(kDest)}, context({}), host, summary),
                 platform::FileError);
    files.beforeOperation = nullptr;
    EXPECT_THAT(articles(), ElementsAre("http://b/thread-11-1-1.html"));
    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(summary.rows, 2U);
}

TEST_F(ForumImport, ChangesNothingInADryRun) {
    crawl(u"7-1-1", {u"试运行什么都不改", u"回复内容一二三"});
    crawl(u"7-1-1", {u"试运行什么都不改", u"回复内容一二三"}); // the second row of one address finds the first
    crawl(u"8-1-1", {});
    saveFile(u"8-1-1", noticePage());
    crawl(u"9-1-1", {std::u16string(12000, u'量'), u"回复内容一二三"});
    const std::string source = files.readFile(kSource), dest = files.readFile(kDest);

    const auto overlay = platform::makeDryRunFileSystem(files);
    Context dry(platformOf(*overlay), configuration({{u"Forum.boardName", u"维修论坛"}}), {.dryRun = true});
    JobSummary summary(kForumImportJob);
    importForumThreads({std::u16string(kSource), std::u16string(kDest)}, dry, host, summary);

    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(summary.deletedRows, 1U);
    EXPECT_EQ(summary.overflowFiles, 1U);
    EXPECT_EQ(summary.because(RowFate::Skipped), (Counts{{"alreadyThere", 1}, {"overLong", 1}}));
    EXPECT_EQ(files.readFile(kSource), source);
    EXPECT_EQ(files.readFile(kDest), dest);
    EXPECT_TRUE(files.fileExists(filePath(u"8-1-1")));
    EXPECT_FALSE(files.fileExists(u"X:\\home\\TestRec\\Store0.txt"));
}

TEST_F(ForumImport, KeepsWhatItDeletesInTheTrash) {
    crawl(u"7-1-1", {});
    saveFile(u"7-1-1", noticePage());
    context({{u"Forum.boardName", u"维修论坛"}, {u"Safety.trash", u"X:\\trash"}});
    import();
    EXPECT_FALSE(files.fileExists(filePath(u"7-1-1")));
    EXPECT_EQ(platform::decode936(files.readFile(u"X:\\trash\\forum-import-20151202-083000\\crawl\\7-1-1.htm")),
              noticePage());
    EXPECT_EQ(files.readFile(u"X:\\trash\\forum-import-20151202-083000\\deleted-rows.jsonl"),
              "{\"id\": 1, \"url\": \"http://b/thread-7-1-1.html\", \"content\": \"D:\\\\crawl\\\\7-1-1.htm\", "
              "\"cid\": 28, \"sT\": null, \"sC\": null}\n");
}

} // namespace
} // namespace kelb::jobs
