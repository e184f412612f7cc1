#include "app/template_windows.h"

#include "ado/connection_string.h"
#include "app/FrmStp1.h"
#include "app/extractor_window.h"
#include "app/qt_text.h"
#include "jet/database.h"
#include "platform/code_page.h"
#include "tests/app/window_fixture.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTextEdit>

namespace kelb::app {
namespace {

class TemplateWindowsTest : public WindowFixture {
protected:
    TemplateWindowsTest() {
        execute(u"C:\\d\\Comb.mdb", {u"create table bbsforum (id int identity(1,1) NOT NULL, url varchar(255), "
                                     u"content memo, cid int)"});
        jet::Database::create(platform, u"C:\\d\\Comb2.mdb")->commit();
        files.writeFile(u"C:\\Kelb\\HTMLModel\\HTMLModel.htm", "<body>\r\n<div>a\nb</div></body>");
    }

    void execute(std::u16string_view path, std::initializer_list<std::u16string> statements) {
        if (!files.fileExists(path)) {
            jet::Database::create(platform, path)->commit();
        }
        ado::Environment environment(platform, {});
        ado::Connection connection(environment);
        connection.Open(ado::jetConnectionString(path));
        for (const std::u16string& statement : statements) {
            connection.Execute(statement);
        }
        connection.Close();
    }
    void page(int i, const std::u16string& text) {
        const std::u16string file = u"C:\\pages\\" + toQtNumber(i) + u".htm";
        files.writeFile(file, platform::encode936(u"<title>t</title><body><p>首行" + toQtNumber(i) + u"</p><p>" + text +
                                                  u"</p></body>"));
        execute(u"C:\\d\\Comb.mdb",
                {u"insert into bbsforum (url, content) values ('http://s/" + toQtNumber(i) + u"','" + file + u"')"});
    }
    static std::u16string toQtNumber(int i) { return QString::number(i).toStdU16String(); }

    void open(const std::vector<JobButton>& buttons = {}) {
        openWindow(buttons, {{u"adultFolder", u"C:\\d"}, {u"timerMs", u"1"}, {u"siteAPrefix", u"http://a"}});
        form->findChild<QAction*>("ActionSetup")->trigger();
    }
    FrmStp1& setup() { return *form->templates().setup(); }
    ExtractorWindow& extractor() { return *form->templates().extractor(); }
    void next() {
        setup().Command1_Click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    template <typename Widget>
    static Widget& in(QWidget& window, const char* name) {
        return *window.findChild<Widget*>(QLatin1String(name));
    }
};

TEST_F(TemplateWindowsTest, ProposesAndHandsOverToTheExtractor) {
    page(1, std::u16string(120, u'文'));
    page(2, u"短");
    open();
    EXPECT_EQ(in<QComboBox>(setup(), "Combo3").currentText(), "C:\\d\\Comb.mdb");
    EXPECT_EQ(in<QComboBox>(setup(), "Combo3").count(), 2);
    EXPECT_EQ(in<QComboBox>(setup(), "Combo5").count(), 2); // site B is not set
    EXPECT_EQ(in<QComboBox>(setup(), "Combo6").itemText(1), "Microsoft SQL");
    EXPECT_EQ(in<QComboBox>(setup(), "Combo1").currentText(),
              "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\d\\Comb2.mdb");
    setup().preview();
    EXPECT_EQ(in<QTableWidget>(setup(), "PreviewRows").rowCount(), 2);
    EXPECT_EQ(in<QTableWidget>(setup(), "PreviewRows").item(1, 1)->text(), "http://s/2");

    in<QComboBox>(setup(), "Combo5").setCurrentIndex(1); // chosen, but the whole table is opened
    next();
    EXPECT_EQ(form->templates().setup(), nullptr);
    EXPECT_TRUE(extractor().isVisible());
    EXPECT_EQ(in<QTextEdit>(extractor(), "Text2").toPlainText(), "\nbody>⏎\ndiv>a⏎b\n/div>\n/body>");
    EXPECT_EQ(in<QTextEdit>(extractor(), "Text3").toPlainText(), "\nbody\ndiv\n/div\n/body");
    in<QPushButton>(extractor(), "CmdNxt").click();
    EXPECT_EQ(in<QLabel>(extractor(), "Label2").text(), "正常提取! 120 http://s/1");
    EXPECT_EQ(in<QLabel>(extractor(), "Label1").text(), "预处理! 0");
    EXPECT_EQ(in<QLineEdit>(extractor(), "Text5").text(), "C:\\pages\\1.htm");
    EXPECT_EQ(in<QTextEdit>(extractor(), "Text1").toPlainText(), QString(120, u'文'));
    EXPECT_TRUE(in<QLabel>(extractor(), "LabelHint").text().contains("105"));
    EXPECT_FALSE(in<QTextEdit>(extractor(), "Text2").extraSelections().isEmpty());
    extractor().Command1_Click();
    EXPECT_EQ(in<QLabel>(extractor(), "Label2").text(), "内容过少! 1 http://s/2");
    ASSERT_EQ(dialogs.messages.size(), 1U);
    EXPECT_EQ(dialogs.messages[0].text, "执行完毕！");
    EXPECT_TRUE(dialogs.errors.empty());
    extractor().close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(contexts->program().templateWorkflow().isOpen());
}

TEST_F(TemplateWindowsTest, WarnsAndStaysOpenWithoutDatabases) {
    files.removeFile(u"C:\\d\\Comb.mdb");
    open();
    ASSERT_EQ(dialogs.messages.size(), 1U);
    EXPECT_EQ(dialogs.messages[0].title, "文件未找到!");
    EXPECT_EQ(dialogs.messages[0].text, "找不到源数据库: C:\\d\\Comb.mdb");
    EXPECT_EQ(in<QComboBox>(setup(), "Combo3").count(), 0);
    next();
    ASSERT_EQ(dialogs.messages.size(), 3U);
    EXPECT_EQ(dialogs.messages[1].text, "请选择一个数据源!");
    EXPECT_EQ(dialogs.messages[2].title, "请指定数据库");
    EXPECT_EQ(dialogs.errors.size(), 1U);
    EXPECT_TRUE(setup().isVisible());
    // A source that opens and a destination that does not: neither stays open.
    execute(u"C:\\other.mdb", {u"create table bbsforum (url varchar(255), content memo)"});
    in<QComboBox>(setup(), "Combo3").setEditText("C:\\other.mdb");
    in<QComboBox>(setup(), "Combo1").setEditText("C:\\none.mdb");
    next();
    EXPECT_EQ(dialogs.errors.size(), 2U);
    EXPECT_FALSE(contexts->program().templateWorkflow().isOpen());
    EXPECT_EQ(form->templates().extractor(), nullptr);
    jet::Database::open(platform, u"C:\\other.mdb", {.access = jet::Pager::Access::Write}); // nobody holds it
}

TEST_F(TemplateWindowsTest, ClosesWithAnEmptyModelAndTellsAMissingOne) {
    files.writeFile(u"C:\\Kelb\\HTMLModel\\HTMLModel.htm", "");
    open();
    next();
    ASSERT_EQ(dialogs.messages.size(), 1U);
    EXPECT_EQ(dialogs.messages[0].text, "模版为空");
    EXPECT_EQ(form->templates().extractor(), nullptr);
    EXPECT_FALSE(contexts->program().templateWorkflow().isOpen());
    files.removeFile(u"C:\\Kelb\\HTMLModel\\HTMLModel.htm");
    open();
    next();
    ASSERT_EQ(dialogs.errors.size(), 1U);
    EXPECT_TRUE(dialogs.errors[0].text.contains("HTMLModel.htm"));
    EXPECT_TRUE(setup().isVisible());
}

TEST_F(TemplateWindowsTest, RunsNothingBesideAnExtraction) {
    page(1, u"短");
    int started = 0;
    open({{"Command1", "ChkStopFor", "job", [&](const JobRequest&, jobs::JobHost&, jobs::JobSummary&) { ++started; }}});
    next();
    bool seen = false;
    dialogs.whileShown = [&] { // the box at the end of the run is still part of it
        seen = true;
        click("Command1");
        form->findChild<QAction*>("ActionSetup")->trigger();
        extractor().CmdNxt_Click();
        extractor().close();
        EXPECT_TRUE(extractor().isVisible());
        form->close();
        EXPECT_TRUE(form->isVisible());
    };
    extractor().Command1_Click();
    EXPECT_TRUE(seen);
    EXPECT_EQ(started, 0);
    EXPECT_FALSE(form->isVisible()); // it closes when the run has ended
}

TEST_F(TemplateWindowsTest, SlowModeRunsUnderItsTimerUntilTheEnd) {
    for (int i = 1; i <= 3; ++i) {
        page(i, std::u16string(120, u'文'));
    }
    open();
    next();
    in<QCheckBox>(extractor(), "Check2").setChecked(true);
    extractor().Command1_Click();
    EXPECT_TRUE(dialogs.messages.empty());
    ASSERT_TRUE(QTest::qWaitFor([this] { return !dialogs.messages.empty(); }));
    EXPECT_EQ(dialogs.messages[0].text, "完成");
    QTest::qWait(20);
    EXPECT_EQ(dialogs.messages.size(), 1U); // the timer is off
}

/// An error ends the run, not the window: the row can be tried again.
TEST_F(TemplateWindowsTest, TellsAnErrorAndStaysUsable) {
    page(1, std::u16string(120, u'文'));
    open();
    next();
    const std::u16string_view file = u"C:\\pages\\1.htm";
    files.beforeOperation = [file](std::string_view operation, std::u16string_view path) {
        if (operation == "read" && path == file) {
            throw platform::FileError(platform::FileError::Kind::Other, "reading", path, 5, "disk error");
        }
    };
    extractor().Command1_Click();
    files.beforeOperation = {};
    ASSERT_EQ(dialogs.errors.size(), 1U);
    EXPECT_TRUE(dialogs.errors[0].text.contains("disk error"));
    EXPECT_NE(logText().find(u"disk error"), std::u16string::npos);
    extractor().CmdNxt_Click();
    EXPECT_EQ(in<QLabel>(extractor(), "Label2").text(), "正常提取! 120 http://s/1");
}

} // namespace
} // namespace kelb::app
