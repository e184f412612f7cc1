#include "app/Form1.h"
#include "app/results_model.h"
#include "app/still_page.h"
#include "app/texts.h"
#include "tests/app/window_fixture.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QUrl>

namespace kelb::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The tab of results over three articles; the first one's page is there, the second one's row only, the third one came
/// from nowhere.
class ResultsBrowserTest : public jobs::JobTest {
protected:
    ResultsBrowserTest() {
        crawl(u"7-1-1", {u"先量变压器的次级"});
        crawl(u"8-1-1", {});
        article(u"电视黑屏", u"○维修案例:<br>换电容<script>document.write('x')</script>",
                u"http://b/thread-7-1-1.html");
        article(u"洗衣机不脱水", u"第一行\r\n第二行", u"http://b/thread-8-1-1.html");
        article(u"来历不明", u"正文", u"http://nowhere/");
    }
    void article(const std::u16string& title, const std::u16string& body, const std::u16string& url) {
        std::u16string quoted = body;
        for (std::size_t at = 0; (at = quoted.find(u'\'', at)) != quoted.npos; at += 2) {
            quoted.insert(at, 1, u'\'');
        }
        execute(kDest,
                {u"insert into wxAll (sT, sC, url) values ('" + title + u"', '" + quoted + u"', '" + url + u"')"});
    }
    /// Opens the window, and the tab.
    void open() {
        remembered.setValue("fields/TextSource", QString::fromUtf16(kSource.data()));
        remembered.setValue("fields/Text3", QString::fromUtf16(kDest.data()));
        remembered.setValue("fields/Text1", "X:\\lan\\");
        form = std::make_unique<Form1>(
            Form1::Parts{.platform = platform,
                         .configuration = settings,
                         .dialogs = dialogs,
                         .remembered = remembered,
                         .jobs = {{"Command1", "ChkStopFor", "test-job",
                                   [this](const JobRequest&, jobs::JobHost& running, jobs::JobSummary& summary) {
                                       job(running);
                                       summary = visited;
                                   }}},
                         .contexts = contexts,
                         .makePageViewer = [] { return std::unique_ptr<QWidget>(); },
                         .about = {},
                         .makeSavedPageViewer =
                             [this](const std::u16string& page) {
                                 viewed = page;
                                 auto viewer = hasViewer ? std::make_unique<QWidget>() : nullptr;
                                 if (viewer != nullptr) {
                                     viewer->setObjectName("Viewer");
                                 }
                                 return viewer;
                             }});
        form->show();
        form->activateWindow(); // keys of shortcuts go to the active window
        ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
        showTab("TabResults");
    }
    void showTab(const char* name) { find<QTabWidget>("SSTab1").setCurrentWidget(&find<QWidget>(name)); }
    template <typename Widget>
    Widget& find(const char* name) {
        return findIn<Widget>(*form, name);
    }
    QTableView& list() { return find<QTableView>("ResultsList"); }
    std::string cell(int line, int column) {
        return list().model()->index(line, column).data().toString().toStdString();
    }
    std::vector<std::string> titles() {
        std::vector<std::string> all;
        for (int line = 0; line < list().model()->rowCount(); ++line) {
            all.push_back(cell(line, ResultsModel::Title));
        }
        return all;
    }
    void press(QWidget& widget, Qt::Key key) { QTest::keyClick(&widget, key); }
    std::string shown(const char* page) { return find<StillPage>(page).toPlainText().toStdString(); }
    std::string sourcePage() {
        EXPECT_TRUE(QTest::qWaitFor([this] { return !shown("ResultsSourcePage").starts_with("正在查找"); }));
        return shown("ResultsSourcePage");
    }
    QString statusLine() { return find<QLabel>("LabelStatus").text(); }
    std::vector<std::string> marks() { return rows(kDest, u"select sT, blnPass from wxAll"); }
    std::u16string viewed;
    bool hasViewer = true;
    std::function<void(jobs::JobHost&)> job = [](jobs::JobHost&) {};
    jobs::JobSummary visited{"test-job"};

    QTemporaryDir folder;
    QSettings remembered{folder.filePath("remembered.ini"), QSettings::IniFormat};
    AnsweringDialogs dialogs;
    platform::Platform platform = platformOf(files);
    jobs::Configuration settings;
    JobContexts contexts{platform, settings};
    std::unique_ptr<Form1> form;
};

TEST_F(ResultsBrowserTest, ShowsAnArticleBesideThePageThatItCameFrom) {
    open();
    EXPECT_EQ(find<QComboBox>("ResultsTables").currentText(), "wxAll");
    EXPECT_THAT(titles(), ElementsAre("电视黑屏", "洗衣机不脱水", "来历不明"));
    EXPECT_EQ(cell(1, ResultsModel::Length), "8");
    EXPECT_EQ(cell(1, ResultsModel::Url), "http://b/thread-8-1-1.html");
    list().setFocus();
    list().selectRow(0);
    EXPECT_THAT(shown("ResultsArticle"), testing::HasSubstr("○维修案例:\n换电容"));
    EXPECT_THAT(shown("ResultsArticle"), testing::Not(testing::HasSubstr("document")));
    EXPECT_THAT(sourcePage(), testing::HasSubstr("先量变压器的次级"));
}

TEST_F(ResultsBrowserTest, ThePageViewerTakesTheRightSideWhileItIsWanted) {
    open();
    list().selectRow(0);
    auto& whole = find<QAbstractButton>("ResultsViewer");
    whole.click(); // without waiting for the page
    EXPECT_EQ(viewed, u"X:\\lan\\crawl\\7-1-1.htm");
    EXPECT_TRUE(find<QWidget>("Viewer").isVisible());
    EXPECT_FALSE(find<QWidget>("ResultsSourcePage").isVisible());
    list().selectRow(1); // its page is gone
    EXPECT_TRUE(find<QWidget>("ResultsSourcePage").isVisible());
    EXPECT_EQ(form->findChild<QWidget*>("Viewer"), nullptr);
    list().selectRow(0);
    EXPECT_TRUE(QTest::qWaitFor([this] { return form->findChild<QWidget*>("Viewer") != nullptr; }));
    whole.click();
    EXPECT_TRUE(find<QWidget>("ResultsSourcePage").isVisible());
    EXPECT_THAT(sourcePage(), testing::HasSubstr("先量变压器的次级"));
    hasViewer = false;
    whole.click();
    EXPECT_FALSE(whole.isChecked());
    EXPECT_TRUE(statusLine().contains("qt6-webengine-dev"));
}

TEST(StillPageTest, FetchesNothing) {
    const QTemporaryDir folder;
    const QString picture = folder.filePath("spy.png");
    ASSERT_TRUE(QImage(8, 8, QImage::Format_RGB32).save(picture));
    StillPage page;
    page.showHtml(u"<img src=\"%1\"><a href=\"%1\">x</a>"_qs.arg(QUrl::fromLocalFile(picture).toString()),
                  StillPage::Ground::White);
    const QVariant loaded = page.document()->resource(QTextDocument::ImageResource, QUrl::fromLocalFile(picture));
    EXPECT_EQ(loaded.toByteArray().size() + loaded.value<QImage>().width(), 0);
    EXPECT_FALSE(page.openLinks() || page.openExternalLinks());
}

TEST_F(ResultsBrowserTest, SaysWhatIsMissingOfASource) {
    open();
    list().selectRow(2);
    EXPECT_THAT(sourcePage(), testing::HasSubstr("来源记录已不存在"));
    list().setFocus();
    press(list(), Qt::Key_Return);
    ASSERT_THAT(dialogs.messages, SizeIs(1));
    EXPECT_TRUE(dialogs.messages[0].text.contains("http://nowhere/"));

    list().selectRow(1);
    EXPECT_THAT(shown("ResultsArticle"), testing::HasSubstr("第一行\n第二行"));
    EXPECT_THAT(sourcePage(), testing::HasSubstr("X:\\lan\\crawl\\8-1-1.htm"));
    find<QAbstractButton>("ResultsSourceRow").click();
    auto& fields = find<QTableWidget>("SourceRowFields");
    EXPECT_EQ(fields.item(2, 1)->text(), "D:\\crawl\\8-1-1.htm");
    find<QDialog>("SourceRow").close();
}

TEST_F(ResultsBrowserTest, FiltersAsOneTypes) {
    open();
    auto& filter = find<QLineEdit>("ResultsFilter");
    QTest::keyClicks(&filter, "thread");
    EXPECT_TRUE(QTest::qWaitFor([this] { return titles().size() == 2; }));
    filter.setText("8-1");
    EXPECT_TRUE(QTest::qWaitFor([this] { return titles().size() == 1; }));
    EXPECT_EQ(cell(0, ResultsModel::Title), "洗衣机不脱水");
    filter.setText("电容");
    QCoreApplication::processEvents();
    EXPECT_THAT(titles(), IsEmpty());
    find<QCheckBox>("ResultsBodies").setChecked(true);
    EXPECT_TRUE(QTest::qWaitFor([this] { return titles().size() == 1; }));
    EXPECT_EQ(cell(0, ResultsModel::Title), "电视黑屏");
    filter.clear();
    EXPECT_THAT(titles(), SizeIs(3));
}

TEST_F(ResultsBrowserTest, MarksWhatIsChosenAndAsksBeforeItAddsTheField) {
    open();
    list().setFocus();
    list().selectRow(1);
    press(list(), Qt::Key_Space);
    ASSERT_THAT(dialogs.questions, SizeIs(1));
    EXPECT_EQ(rows(kDest, u"select * from wxAll")[0].find("False"), std::string::npos) << "added without a yes";
    dialogs.agrees = true;
    press(list(), Qt::Key_Space);
    EXPECT_THAT(marks(), ElementsAre("电视黑屏|False", "洗衣机不脱水|True", "来历不明|False"));
    list().selectAll();
    find<QAbstractButton>("ResultsPass").click();
    EXPECT_THAT(marks(), ElementsAre("电视黑屏|True", "洗衣机不脱水|True", "来历不明|True"));
    list().selectRow(2);
    press(list(), Qt::Key_Space);
    EXPECT_THAT(marks(), ElementsAre("电视黑屏|True", "洗衣机不脱水|True", "来历不明|False"));
    list().model()->setData(list().model()->index(0, ResultsModel::Pass), Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_THAT(marks(), ElementsAre("电视黑屏|False", "洗衣机不脱水|True", "来历不明|False"));
    EXPECT_THAT(dialogs.questions, SizeIs(2));
    EXPECT_THAT(dialogs.errors, IsEmpty());
}

TEST_F(ResultsBrowserTest, MarksNothingWhenNothingIsToBeChanged) {
    execute(kDest, {u"alter table wxAll add blnPass YESNO"});
    open();
    find<QAction>("ActionDryRun").trigger();
    list().selectRow(0);
    find<QAbstractButton>("ResultsPass").click();
    EXPECT_TRUE(statusLine().contains("试运行")) << statusLine().toStdString();
    EXPECT_THAT(marks(), ElementsAre("电视黑屏|False", "洗衣机不脱水|False", "来历不明|False"));
}

TEST_F(ResultsBrowserTest, AJobAndTheTabDoNotHurtEachOther) {
    execute(kDest, {u"alter table wxAll add blnPass YESNO"});
    open();
    job = [this](jobs::JobHost& running) {
        ado::Connection connection(contexts.program().databases());
        connection.mode = ado::Connection::Mode::Write;
        connection.Open(ado::jetConnectionString(kDest));
        showTab("TabResults");
        running.yield();
        list().selectRow(1);
        connection.Execute(u"delete from wxAll where id=1");
        running.yield();
        find<QAbstractButton>("ResultsPass").click(); // waits for the end of the job
        connection.Execute(u"insert into wxAll (sT) values ('新')");
        connection.Close();
    };
    showTab("TabJobs");
    find<QAbstractButton>("Command1").click();
    EXPECT_THAT(dialogs.errors, IsEmpty());
    press(list(), Qt::Key_F5);
    EXPECT_THAT(titles(), testing::UnorderedElementsAre("洗衣机不脱水", "来历不明", "新"));
    showTab("TabJobs");
    EXPECT_THAT(marks(), testing::UnorderedElementsAre("洗衣机不脱水|False", "来历不明|False", "新|False"));
}

TEST_F(ResultsBrowserTest, ADeletedRowIsToldAndAnotherTabLetsTheFileGo) {
    open();
    {
        ado::Connection connection(contexts.program().databases());
        connection.Open(ado::jetConnectionString(kDest));
        connection.Execute(u"delete from wxAll where id=2");
    }
    list().selectRow(1);
    EXPECT_THAT(shown("ResultsArticle"), testing::HasSubstr("已被删除"));
    showTab("TabJobs");
    execute(kDest, {u"insert into wxAll (sT) values ('别的程序')"}); // with an environment of its own
    showTab("TabResults");
    EXPECT_THAT(titles(), testing::UnorderedElementsAre("电视黑屏", "来历不明", "别的程序"));
}

TEST_F(ResultsBrowserTest, TellsWhatCannotBeShown) {
    open();
    auto& path = find<QLineEdit>("ResultsPath");
    path.setText("X:\\none.mdb");
    press(path, Qt::Key_Return);
    EXPECT_TRUE(find<QLabel>("ResultsTrouble").text().contains("none.mdb"));
    EXPECT_THAT(titles(), IsEmpty());
    path.clear();
    press(path, Qt::Key_Return);
    EXPECT_FALSE(find<QLabel>("ResultsTrouble").isVisible());
    EXPECT_THAT(titles(), SizeIs(3));
}

TEST_F(ResultsBrowserTest, FitsASmallScreenAtDoubleSizeAndADarkDesktop) {
    std::optional<DarkDesktop> dark(std::in_place);
    open();
    form->resize(640, 370);
    list().selectRow(1); // its page file is gone, so the right side is not the white of a page
    EXPECT_THAT(sourcePage(), testing::HasSubstr("页面文件已不存在"));
    EXPECT_EQ(form->size(), QSize(640, 370)) << "the window cannot be made this small";
    for (const char* name : {"ResultsPath", "ResultsRefresh", "ResultsFilter", "ResultsCounts", "ResultsPass",
                             "ResultsViewer", "ResultsArticle", "ResultsSourcePage"}) {
        const auto& widget = find<QWidget>(name);
        EXPECT_EQ(widget.visibleRegion().boundingRect(), widget.rect()) << name;
        EXPECT_FALSE(widget.accessibleName().isEmpty() && !widget.inherits("QLabel")) << name;
    }
    const QImage picture = form->grab().toImage();
    form.reset();
    dark.reset();
    EXPECT_LT(averageLightness(picture), 90) << "something keeps a light ground";
}

TEST_F(ResultsBrowserTest, SortsByAClickOnAHeader) {
    open();
    auto& header = *list().horizontalHeader();
    const auto click = [&header] {
        const int x = header.sectionViewportPosition(ResultsModel::Url) + 8;
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, {x, header.height() / 2});
    };
    click();
    EXPECT_THAT(titles(), ElementsAre("电视黑屏", "洗衣机不脱水", "来历不明"));
    click();
    EXPECT_THAT(titles(), ElementsAre("来历不明", "洗衣机不脱水", "电视黑屏"));
}

TEST_F(ResultsBrowserTest, ARowBehindABarOpensWhatItStandsFor) {
    open();
    showTab("TabReasons");
    const auto openRow = [&](const jobs::RowPlace& place, const std::u16string& name) {
        visited = jobs::JobSummary("test-job");
        visited.source = place;
        visited.fail("noTitle", name, u"");
        find<QPushButton>("Command1").click();
        auto& rows = find<QTableView>("ReasonsRows");
        emit rows.activated(rows.model()->index(0, 0));
    };
    const jobs::RowPlace table{std::u16string(kSource), u"bbsforum", u"url"};
    openRow(table, u"http://b/thread-7-1-1.html");
    ASSERT_NE(form->findChild<QDialog*>("SourceRow"), nullptr);
    delete form->findChild<QDialog*>("SourceRow");
    openRow(table, u"2"); // by its number, since it had no address
    EXPECT_NE(form->findChild<QDialog*>("SourceRow"), nullptr);
    EXPECT_THAT(dialogs.messages, IsEmpty());
    openRow(table, u"http://gone/");
    ASSERT_THAT(dialogs.messages, SizeIs(1));
    EXPECT_TRUE(dialogs.messages[0].text.contains("http://gone/"));
    openRow({}, filePath(u"7-1-1"));
    EXPECT_EQ(viewed, filePath(u"7-1-1"));
    openRow({}, u"{\"id\": 1}");
    EXPECT_EQ(find<QLabel>("LabelStatus").text(), texts::shown(texts::kRowHasNoPlace));
}

} // namespace
} // namespace kelb::app
