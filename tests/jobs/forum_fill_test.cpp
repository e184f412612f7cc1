#include "jobs/forum_fill.h"

#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

namespace kelb::jobs {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::u16string>;

class ForumFill : public JobTest {
protected:
    JobSummary fill(const Settings& settings = {{u"Forum.boardName", u"维修论坛"}}) {
        JobSummary summary(kForumFillJob);
        fillForumThreads({std::u16string(kSource)}, context(settings), host, summary);
        return summary;
    }
    std::vector<std::string> filled() { return rows(kSource, u"select sT, sC from bbsforum order by id"); }
};

TEST_F(ForumFill, WritesTitleAndBodyIntoTheRow) {
    crawl(u"7-2-1", {u"电磁炉检锅不加热怎么修", u"先量谐振电容"}, 40);
    crawl(u"8-1-1", {u"别的频道不填写", u"先量谐振电容"}, 28);
    const JobSummary summary = fill();
    EXPECT_THAT(filled(), ElementsAre("标题7-2-1|○维修案例:<br>电磁炉检锅不加热怎么修  "
                                      "<br><br>\r\n<br>∑维修经验: <br>①: 先量谐振电容  ",
                                      "NULL|NULL"));
    EXPECT_EQ(host.entries, (Texts{u"totalRec: 1", u"\r\n○维修案例:<br>: 先量谐振电容  ", u"完成!"}));
    EXPECT_EQ(host.progress, Texts{u"已处理: 1,还剩于: 0"});
    EXPECT_EQ(summary.saved, 1U);
}

TEST_F(ForumFill, StoresAMissingTitleAsAnEmptyText) {
    crawl(u"7-1-1", {}, 40);
    const std::u16string html = threadPage(u"x", {u"没有标题也要填写内容", u"回复内容一二三"});
    saveFile(u"7-1-1", html.substr(html.find(u"<div id")));
    fill();
    EXPECT_THAT(rows(kSource, u"select sT from bbsforum where sT=''"), ElementsAre(""));
}

TEST_F(ForumFill, LogsTheFrontOfAPageWithoutABody) {
    crawl(u"1-1-1", {}, 40); // no file: a page without content
    crawl(u"2-1-1", {}, 40);
    const std::u16string page = u"<html>" + std::u16string(200, u'量');
    saveFile(u"2-1-1", page);
    const JobSummary summary = fill();
    EXPECT_EQ(host.entries, (Texts{u"totalRec: 2", u"提取失败! 第1次,http://b/thread-1-1-1.html,",
                                   u"提取失败! 第2次,http://b/thread-2-1-1.html," + page.substr(0, 100), u"完成!"}));
    EXPECT_EQ(summary.because(RowFate::Failed), (Counts{{"emptyPage", 1}, {"noFloors", 1}}));
}

TEST_F(ForumFill, DeletesNoticePagesWithoutAnEntry) {
    crawl(u"1-1-1", {}, 40);
    crawl(u"2-1-1", {u"第二行照常填写内容", u"回复内容一二三"}, 40);
    saveFile(u"1-1-1", noticePage());
    const JobSummary summary = fill();
    EXPECT_EQ(filled().size(), 1U);
    EXPECT_FALSE(files.fileExists(filePath(u"1-1-1")));
    ASSERT_EQ(host.entries.size(), 3U);
    EXPECT_EQ(summary.deletedRows, 1U);
    EXPECT_EQ(summary.deletedFiles, 1U);
    EXPECT_EQ(summary.saved, 1U);
    EXPECT_EQ(summary.failed, 0U);
}

TEST_F(ForumFill, StopsBeforeTheFirstRow) {
    crawl(u"1-1-1", {u"停止框已经勾选", u"回复内容一二三"}, 40);
    host.stopAfter = 0;
    EXPECT_TRUE(fill().stopped);
    EXPECT_THAT(filled(), ElementsAre("NULL|NULL"));
    EXPECT_EQ(host.entries, (Texts{u"totalRec: 1", u"完成!"}));
}

TEST_F(ForumFill, SaysWhenLanModeIsOff) {
    host.location.lanMode = false;
    EXPECT_EQ(fill().note, "LAN mode is off: nothing can be filled");
}

} // namespace
} // namespace kelb::jobs
