#include "app/Form1.h"
#include "app/job_buttons.h"
#include "app/job_contexts.h"
#include "tests/app/window_fixture.h"
#include "tests/jobs/article_fixture.h"
#include "tests/jobs/product_fixture.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QLabel>
#include <QLineEdit>

namespace kelb::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The window with the program's own article jobs, on databases in memory.
class FormArticles : public jobs::ArticleTest {
protected:
    FormArticles() {
        form.findChild<QLineEdit*>("TextSource")->setText(QString::fromUtf16(kSource.data()));
        form.findChild<QLineEdit*>("Text3")->setText(QString::fromUtf16(kDest.data()));
    }
    void click(const char* button) { form.findChild<QAbstractButton*>(button)->click(); }
    std::u16string log() const { return form.findChild<LogView*>("Text2")->wholeText(); }

    QTemporaryDir folder;
    QSettings remembered{folder.filePath("remembered.ini"), QSettings::IniFormat};
    AnsweringDialogs dialogs;
    platform::Platform platform = platformOf(files);
    jobs::Configuration settings = configuration({{u"Articles.site1", u"one.example"},
                                                  {u"Articles.siteAPrefix", u"http://a.example/art"},
                                                  {u"Params.portalPath", u"http://p.example"},
                                                  {u"SqlServer.wxDBConnection", std::u16string(kDest)}});
    JobContexts contexts{platform, settings};
    Form1 form{{.platform = platform,
                .configuration = settings,
                .dialogs = dialogs,
                .remembered = remembered,
                .jobs = jobButtons(contexts),
                .contexts = contexts,
                .makePageViewer = [] { return std::unique_ptr<QWidget>(); },
                .about = {}}};
};

TEST_F(FormArticles, Command12ImportsAndLeavesTheLastArticleInTheLog) {
    const auto page = [](const std::u16string& title) {
        return u"<td><h1>" + title + u"</h1></td><td id=\"text\">" + letters(201) +
               u"<p align=\"center\" class=\"pageLink\">";
    };
    crawlRows({{u"http://one.example/1", page(u"题目一")},
               {u"http://one.example/2", page(u"题")},
               {u"http://one.example/3", page(u"题目三")}});
    click("Command12");
    EXPECT_THAT(dialogs.errors, IsEmpty());
    EXPECT_THAT(rows(kDest, u"select url, sT from wxAll"),
                ElementsAre("http://one.example/1|题目一", "http://one.example/3|题目三"));
    EXPECT_EQ(log(), u"题目三\r\n\r\n" + letters(201) + u"\r\n") << "each article takes the place of all that is shown";
    EXPECT_TRUE(form.findChild<QLabel*>("LabelSummary")->text().startsWith("单页文章导入：共 3 行，保存 2"));
}

TEST_F(FormArticles, Command12GoesByTheSetUpDialogOnceItHasOpenedDatabases) {
    execute(u"X:\\other.mdb", {u"create table bbsforum (url varchar(255), content memo)",
                               u"insert into bbsforum (url) values ('http://none/1')"});
    crawlRows({{u"http://none/2", std::nullopt}});
    jobs::TemplateWorkflow& workflow = contexts.program().templateWorkflow();
    workflow.open({.source = u"X:\\other.mdb",
                   .destination = u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + std::u16string(kDest),
                   .destinationTable = u"wxNew"});
    workflow.close();
    click("Command12");
    EXPECT_THAT(dialogs.errors, IsEmpty());
    EXPECT_THAT(rows(kDest, u"select url from wxNew"), ElementsAre("http://none/1"));
    EXPECT_THAT(rows(kDest, u"select url from wxAll"), IsEmpty());
}

TEST_F(FormArticles, Command13MergesIntoTheDatabaseOfTheSettings) {
    execute(kDest, {u"create table wxPrinter (url varchar(255), sT varchar(255), sC memo, sA memo, recTime datetime)"});
    crawlRows({{u"http://a.example/art/n10.htm",
                u"<title>题目</title><div id=\"content\"><div>a</div>正文</div></div><script>"}});
    click("Command13"); // the first run adds the fields that the table lacks
    ASSERT_EQ(dialogs.messages.size(), 1U);
    EXPECT_EQ(dialogs.messages[0].text, "没有Field: pagenum or sT or sC,已创建，请重新开始");
    click("Command13");
    EXPECT_THAT(dialogs.errors, IsEmpty());
    EXPECT_THAT(rows(kDest, u"select url, sT, sC from wxPrinter"),
                ElementsAre("http://a.example/art/n10.htm|题目|</div>正文"));
    EXPECT_TRUE(log().starts_with(u"Count4multiPage: 1,\r\n共有: 1条记录。\r\n"));
}

TEST_F(FormArticles, Command5TakesPagesFromTheSourcesFolderOrItsRows) {
    execute(kDest, {u"create table wxKnowledge (" + jobs::knowledgeFields() + u")"});
    const auto page = [](const std::string& name) {
        return "<title>" + name + "</title><table><th>\xD6\xF7\xCC\xE5\xB2\xCE\xCA\xFD</th>" + std::string(200, ' ');
    };
    files.writeFile(u"X:\\0\\1.htm", page("first"));
    files.writeFile(u"X:\\lan\\crawl\\2.htm", page("second"));
    crawlRows({{u"http://p.example/product/2/param.shtml", u"D:\\crawl\\2.htm"}});
    click("Command5");
    EXPECT_THAT(rows(kDest, u"select TVName from wxKnowledge"), IsEmpty()) << "Check3 is not ticked";
    EXPECT_EQ(files.readFile(u"X:\\CounterResp.txt"), "1,0\r\n");

    files.removeFile(u"X:\\CounterResp.txt");
    click("Check3");
    click("Command5");
    EXPECT_THAT(rows(kDest, u"select url, TVName from wxKnowledge"), ElementsAre("http://none|first"));

    form.findChild<QAction*>("ActionProductRows")->setChecked(true);
    click("Check1");
    form.findChild<QLineEdit*>("Text1")->setText("X:\\lan\\");
    click("Command5");
    EXPECT_THAT(dialogs.errors, IsEmpty());
    EXPECT_THAT(rows(kDest, u"select TVName from wxKnowledge"), ElementsAre("first", "second"));
    ASSERT_EQ(dialogs.messages.size(), 3U);
    EXPECT_EQ(dialogs.messages[0].text, "完成了参数的提取");
}

} // namespace
} // namespace kelb::app
