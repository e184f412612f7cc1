#include "tests/app/window_fixture.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>

#include <set>

namespace kelb::app {
namespace {

class FormControls : public WindowFixture {};

QString shownCaption(const QWidget& widget) {
    QString text = widget.property("text").toString();
    return text.remove(u'&');
}

struct ControlCase {
    const char* name;
    const char* type; ///< Qt class that it is one of
    const char* caption;
};
constexpr ControlCase kControls[] = {
    {"Label1", "QLabel", ""},
    {"Label2", "QLabel", "Source DB (资料文件夹下的Comb.mdb的路径)"},
    {"Label3", "QLabel", "Destination DB"},
    {"Label4", "QLabel", "提取哪个频道的记录："},
    {"Text1", "QLineEdit", ""},
    {"Text2", "QPlainTextEdit", ""},
    {"Text3", "QLineEdit", "D:\\KelbFolder(Output)\\wxdb.mdb"},
    {"Text4", "QPlainTextEdit", ""},
    {"Text5", "QPlainTextEdit", ""},
    {"Combo1", "QComboBox", ""},
    {"Combo2", "QComboBox", ""},
    {"Check1", "QCheckBox", "如果是在采集机甲上采集的内容请勾选："},
    {"Check2", "QCheckBox", "停止提取"},
    {"Check3", "QCheckBox", "保存提取的TV参数"},
    {"ChkStopFor", "QCheckBox", "停止"},
    {"Command1", "QPushButton", "(BBS)入口1提取内容到wxDB"},
    {"Command15", "QPushButton", "(BBS)Fill Title Content"},
    {"Command12", "QPushButton", "(CMS)入口2(单页)提取内容到wxDB"},
    {"Command13", "QPushButton", "(CMS)入口3(多页)提取内容到wxDB"},
    {"Command11", "QPushButton", "(1) 去除源表重复"},
    {"Command16", "QPushButton", "(2)去除目的表伪重复"},
    {"Command10", "QPushButton", "Cmd二次处理"},
    {"Command5", "QPushButton", "提取家电各型号的参数到wxKnowledge表"},
    {"Command14", "QPushButton", "(Param)提取参数到wxDB"},
    {"Command3", "QPushButton", "提取DVUserName"},
    {"Command4", "QPushButton", "增加字段 blnPass blnPosted"},
    {"Command7", "QPushButton", "ReadExel"},
};

TEST_F(FormControls, HaveTheirNamesAndCaptionsAndStandOnTheTabControl) {
    openWindow({}, {{u"machineName", u"采集机甲"}});
    EXPECT_EQ(form->windowTitle(), "网页内容提取");
    const auto& tabs = find<QTabWidget>("SSTab1");
    for (const ControlCase& expected : kControls) {
        const auto& control = find<QWidget>(expected.name);
        EXPECT_TRUE(control.inherits(expected.type)) << expected.name;
        EXPECT_EQ(shownCaption(control), expected.caption) << expected.name;
        EXPECT_TRUE(tabs.isAncestorOf(&control)) << expected.name;
    }
}

TEST_F(FormControls, StartWithTheirDefaults) {
    openWindow({}, {{u"lanFolder", u"\\\\crawler\\新加卷 (d)\\"}});
    EXPECT_EQ(find<QLineEdit>("TextSource").text(), "");
    EXPECT_EQ(find<QLineEdit>("Text1").text(), "\\\\crawler\\新加卷 (d)\\");
    EXPECT_FALSE(find<QCheckBox>("Check1").isChecked());
    EXPECT_FALSE(find<QLineEdit>("Text1").isEnabled());
    for (const char* combo : {"Combo1", "Combo2"}) {
        EXPECT_GE(find<QComboBox>(combo).findText("28"), 0) << combo;
        EXPECT_GE(find<QComboBox>(combo).findText("40"), 0) << combo;
    }
}

TEST_F(FormControls, Check1SwitchesText1) {
    openWindow({});
    click("Check1");
    EXPECT_TRUE(find<QLineEdit>("Text1").isEnabled());
    click("Check1");
    EXPECT_FALSE(find<QLineEdit>("Text1").isEnabled());
}

TEST_F(FormControls, ExplainThemselvesInOneSentence) {
    openWindow({});
    for (const ControlCase& control : kControls) {
        const auto& widget = find<QWidget>(control.name);
        if (widget.inherits("QLabel")) {
            continue;
        }
        const QString tip = widget.accessibleDescription();
        EXPECT_EQ(tip.count(u'。'), 1) << control.name << ": " << tip.toStdString();
        EXPECT_TRUE(tip.endsWith(u'。')) << control.name;
        EXPECT_FALSE(widget.toolTip().isEmpty()) << control.name;
    }
    for (const QAction* action : form->findChildren<QAction*>(QRegularExpression("^Action"))) {
        EXPECT_FALSE(action->text().isEmpty()) << action->objectName().toStdString();
    }
}

TEST_F(FormControls, EachAltKeyIsGivenOnce) {
    openWindow({});
    std::multiset<QChar> keys;
    const auto note = [&keys](const QString& text) {
        if (const qsizetype at = text.indexOf(u'&'); at >= 0) {
            keys.insert(text[at + 1].toUpper());
        }
    };
    for (const QWidget* widget : form->findChildren<QWidget*>()) {
        note(widget->property("text").toString());
    }
    for (const QAction* menu : form->menuBar()->actions()) {
        note(menu->text());
    }
    EXPECT_GT(keys.size(), 15U);
    EXPECT_EQ(std::set<QChar>(keys.begin(), keys.end()).size(), keys.size());
}

TEST_F(FormControls, TabLeadsThroughFieldsThenJobsThenLog) {
    openWindow({});
    find<QCheckBox>("Check1").setChecked(true); // a field that is off is passed over
    const QStringList expected{
        "TextSource", "BrowseSource", "Text3",    "BrowseDestination", "Combo1",    "Combo2",    "Check1",
        "Text1",      "BrowseFolder", "Command1", "Command15",         "Command12", "Command13", "Command11",
        "Command16",  "Command10",    "Command5", "Command14",         "Check3",    "Check2",    "Command3",
        "Command4",   "Command7",     "Text2",    "ChkStopFor"};
    QStringList found;
    const QWidget* first = &find<QWidget>("TextSource");
    const QWidget* widget = first;
    do {
        if (expected.contains(widget->objectName())) {
            found += widget->objectName();
        }
        widget = widget->nextInFocusChain();
    } while (widget != first);
    EXPECT_EQ(found.join(' ').toStdString(), expected.join(' ').toStdString());
}

struct SizeCase {
    const char* name;
    QSize size;
};
class FormSizes : public WindowFixture, public testing::WithParamInterface<SizeCase> {};

TEST_P(FormSizes, CutNoCaptionAndKeepEverythingInReach) {
    openWindow({}, {{u"machineName", u"采集机甲"}});
    form->resize(GetParam().size);
    QCoreApplication::processEvents();
    EXPECT_EQ(form->size(), GetParam().size) << "the window cannot be made this small";
    for (const ControlCase& control : kControls) {
        const auto& widget = find<QWidget>(control.name);
        if (widget.isVisible() && !shownCaption(widget).isEmpty() && !widget.inherits("QLineEdit")) {
            EXPECT_GE(widget.width(), widget.minimumSizeHint().width()) << control.name;
            EXPECT_GE(widget.height(), widget.minimumSizeHint().height()) << control.name;
        }
    }
    // What a running job is watched and stopped with is always on screen; the rest can be scrolled to.
    for (const char* name : {"Text2", "Label1", "ProgressBar", "ChkStopFor"}) {
        const auto& widget = find<QWidget>(name);
        EXPECT_EQ(widget.visibleRegion().boundingRect(), widget.rect()) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Screens, FormSizes,
                         testing::ValuesIn<SizeCase>({
                             {"small_laptop", {1280, 740}},
                             {"the_same_at_200_percent", {640, 370}},
                         }),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(FormControls, TakeTheColoursOfADarkDesktop) {
    std::optional<DarkDesktop> dark(std::in_place);
    openWindow("Command1",
               [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) { host.log(u"totalRec: 14"); });
    click("Command1");
    const QImage picture = form->grab().toImage();
    form.reset();
    dark.reset();
    EXPECT_LT(averageLightness(picture), 90) << "something keeps a light ground";
}

TEST_F(FormControls, ValuesComeBackAtTheNextStart) {
    openWindow({});
    find<QLineEdit>("TextSource").setText("D:\\采集\\Comb.mdb");
    find<QLineEdit>("Text1").setText("/srv/pages/");
    find<QComboBox>("Combo1").setCurrentText("33");
    find<QCheckBox>("Check1").setChecked(true);
    form->close();

    // The destination was left at its default: a new default in the settings file shows.
    openWindow({}, {{u"wxdb", u"E:\\neu.mdb"}});
    EXPECT_EQ(find<QLineEdit>("TextSource").text(), "D:\\采集\\Comb.mdb");
    EXPECT_EQ(find<QLineEdit>("Text1").text(), "/srv/pages/");
    EXPECT_EQ(find<QComboBox>("Combo1").currentText(), "33");
    EXPECT_EQ(find<QLineEdit>("Text3").text(), "E:\\neu.mdb");
    EXPECT_FALSE(find<QCheckBox>("Check1").isChecked());
}

TEST_F(FormControls, ChoosersFillTheirFields) {
    openWindow({});
    dialogs.chosen = "/data/Comb.mdb";
    click("BrowseSource");
    EXPECT_EQ(find<QLineEdit>("TextSource").text(), "/data/Comb.mdb");
    find<QCheckBox>("Check1").setChecked(true);
    dialogs.chosen = "/data/pages";
    click("BrowseFolder");
    EXPECT_EQ(find<QLineEdit>("Text1").text(), "/data/pages/"); // stored paths are put straight behind it
    dialogs.chosen.clear();
    click("BrowseDestination");
    EXPECT_EQ(find<QLineEdit>("Text3").text(), "D:\\KelbFolder(Output)\\wxdb.mdb");
}

TEST_F(FormControls, TheHelpPageExplainsEveryButton) {
    openWindow({});
    find<QAction>("ActionJobs").trigger();
    QString page;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "JobsPage") {
            page = window->property("plainText").toString();
        }
    }
    for (const ControlCase& control : kControls) {
        if (find<QWidget>(control.name).inherits("QPushButton")) {
            EXPECT_TRUE(page.contains(control.caption)) << control.name;
        }
    }
}

TEST_F(FormControls, WithoutAWebEngineTheViewerSaysWhatIsMissing) {
    openWindow({});
    find<QAction>("ActionViewer").trigger();
    EXPECT_TRUE(statusLine().contains("qt6-webengine-dev")) << statusLine().toStdString();
}

} // namespace
} // namespace kelb::app
