#include "app/FrmWebBrowser.h"
#include "tests/app/window_fixture.h"

#include <QFile>
#include <QLineEdit>
#include <QWebEngineView>

namespace kelb::app {
namespace {

/// The viewer on real pages in a folder of the test's own. Pages hold bytes of code page 936 and declare nothing.
class PageViewer : public testing::Test {
protected:
    std::u16string put(const char* name, const QByteArray& bytes) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return folder.filePath(name).toStdU16String();
    }
    /// Opens the page with Command1, looks into it with Command2 and gives the texts of the two boxes.
    std::vector<QString> look(const std::u16string& page) {
        FrmWebBrowser viewer({.page = page, .address = u"http://price.example/"}, *files, dialogs);
        viewer.show();
        auto& view = *viewer.findChild<QWebEngineView*>("WebBrowser1");
        bool loaded = false;
        QObject::connect(&view, &QWebEngineView::loadFinished, [&loaded] { loaded = true; });
        QTest::mouseClick(viewer.findChild<QWidget*>("Command1"), Qt::LeftButton);
        EXPECT_TRUE(QTest::qWaitFor([&loaded] { return loaded; }, 60'000));
        QTest::mouseClick(viewer.findChild<QWidget*>("Command2"), Qt::LeftButton);
        EXPECT_TRUE(QTest::qWaitFor([&] { return dialogs.messages.size() == 2; }, 60'000));
        std::vector<QString> texts;
        for (const AnsweringDialogs::Box& box : dialogs.messages) {
            texts.push_back(box.text);
        }
        return texts;
    }

    QTemporaryDir folder;
    std::unique_ptr<platform::FileSystem> files = platform::makeSystemFileSystem({});
    AnsweringDialogs dialogs;
};

TEST_F(PageViewer, CountsDivsAndShowsTheFirstInformationBlock) {
    // Two words in code page 936: D6 D0 CE C4 is the first, B5 E7 CA D3 the second. The class must match whole, and
    // the page's own script must not deceive the look.
    const auto page = put("page.htm", "<html><body><script>document.getElementsByTagName = null;</script>"
                                      "<div>a</div><div class='cont-main-info big'>no</div>"
                                      "<DIV class='cont-main-info'>\xD6\xD0\xCE\xC4<b>\xB5\xE7\xCA\xD3</b></DIV>"
                                      "<div class='cont-main-info'>second</div></body></html>");
    EXPECT_EQ(look(page), (std::vector<QString>{"4", "中文电视"}));
}

TEST_F(PageViewer, ShowsAnEmptyBoxWhereNothingMatches) {
    EXPECT_EQ(look(put("none.htm", "<div>a</div>")), (std::vector<QString>{"1", ""}));
}

TEST_F(PageViewer, TellsWhenThereIsNoPage) {
    for (const std::u16string& page : {std::u16string(), folder.filePath("missing.htm").toStdU16String()}) {
        FrmWebBrowser viewer({.page = page, .address = {}}, *files, dialogs);
        viewer.Command1_Click();
    }
    ASSERT_EQ(dialogs.messages.size(), 2U);
    EXPECT_TRUE(dialogs.messages[0].text.contains("[Viewer]"));
    EXPECT_TRUE(dialogs.messages[1].text.contains("missing.htm"));
    FrmWebBrowser viewer({.page = u"Q:\\unmapped\\page.htm", .address = {}}, *files, dialogs);
    viewer.Command1_Click();
    EXPECT_EQ(dialogs.errors.size() + dialogs.messages.size(), 3U);
}

TEST_F(PageViewer, StartsWithTheConfiguredAddress) {
    FrmWebBrowser viewer({.page = {}, .address = u"http://price.example/"}, *files, dialogs);
    EXPECT_EQ(viewer.findChild<QLineEdit*>("Text1")->text(), "http://price.example/");
}

} // namespace
} // namespace kelb::app
