#include "app/Form1.h"
#include "app/job_buttons.h"
#include "app/job_contexts.h"
#include "tests/app/window_fixture.h"
#include "tests/jobs/job_fixture.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QLabel>
#include <QLineEdit>

namespace kelb::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The window with the program's own jobs, on databases and pages in memory.
class FormImport : public jobs::JobTest {
protected:
    FormImport() {
        files.makeFolders(u"X:\\home\\TestRec");
        crawl(u"7-1-1", {u"液晶电视黑屏，背光亮一下就灭", u"先量变压器的次级"});
        crawl(u"8-1-1", {u"洗衣机不脱水，电机嗡嗡响", u"换启动电容"}, 40);
        field("TextSource").setText(QString::fromUtf16(kSource.data()));
        field("Text3").setText(QString::fromUtf16(kDest.data()));
        field("Text1").setText("X:\\lan\\");
        form.findChild<QCheckBox*>("Check1")->setChecked(true);
    }
    QLineEdit& field(const char* name) { return *form.findChild<QLineEdit*>(name); }
    void click(const char* button) { form.findChild<QAbstractButton*>(button)->click(); }
    std::vector<std::string> imported() { return rows(kDest, u"select url, sT from wxAll"); }
    QString summary() const { return form.findChild<QLabel*>("LabelSummary")->text(); }

    QTemporaryDir folder;
    QSettings remembered{folder.filePath("remembered.ini"), QSettings::IniFormat};
    AnsweringDialogs dialogs;
    platform::Platform platform = platformOf(files);
    jobs::Configuration settings;
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

TEST_F(FormImport, Command1ImportsThreadsOfTheNamedDatabases) {
    click("Command1");
    EXPECT_THAT(dialogs.errors, IsEmpty());
    EXPECT_THAT(imported(), ElementsAre("http://b/thread-7-1-1.html|标题7-1-1"));
    EXPECT_EQ(form.findChild<LogView*>("Text2")->wholeText(), u"totalRec: 1\r\n");
    ASSERT_EQ(dialogs.messages.size(), 1U);
    EXPECT_EQ(dialogs.messages[0].text, "完成!");
    EXPECT_TRUE(summary().contains("保存 1")) << summary().toStdString();
}

TEST_F(FormImport, WithoutTheSwitchForPagesItImportsNothingAndSaysWhy) {
    form.findChild<QCheckBox*>("Check1")->setChecked(false);
    click("Command1");
    EXPECT_THAT(imported(), IsEmpty());
    EXPECT_TRUE(summary().contains("没有勾选")) << summary().toStdString();
}

TEST_F(FormImport, Command15FillsTheRowsOfItsChannel) {
    click("Command15");
    EXPECT_THAT(dialogs.errors, IsEmpty());
    EXPECT_THAT(rows(kSource, u"select url, sT from bbsforum order by id"),
                ElementsAre("http://b/thread-7-1-1.html|NULL", "http://b/thread-8-1-1.html|标题8-1-1"));
    EXPECT_TRUE(summary().startsWith("论坛填充"));
}

TEST_F(FormImport, ADryRunChangesNothingAndTheNextRunStartsFromTheDisk) {
    auto& dryRun = *form.findChild<QAction*>("ActionDryRun");
    dryRun.trigger();
    for (int run = 0; run < 2; ++run) { // the second one must not see the first one's articles
        click("Command1");
        EXPECT_TRUE(summary().contains("保存 1，") && summary().contains("试运行")) << summary().toStdString();
        EXPECT_THAT(imported(), IsEmpty());
    }
    dryRun.trigger();
    click("Command1");
    EXPECT_THAT(dialogs.errors, IsEmpty()) << dialogs.errors[0].text.toStdString();
    EXPECT_EQ(imported().size(), 1U);
}

TEST_F(FormImport, AMissingFileIsNamedAndTheNextRunTriesAgain) {
    const std::string marks = files.readFile(u"X:\\home\\ADMarks.txt");
    files.removeFile(u"X:\\home\\ADMarks.txt");
    click("Command1");
    ASSERT_EQ(dialogs.errors.size(), 1U);
    EXPECT_TRUE(dialogs.errors[0].text.contains("ADMarks.txt")) << dialogs.errors[0].text.toStdString();
    EXPECT_THAT(imported(), IsEmpty());
    files.writeFile(u"X:\\home\\ADMarks.txt", marks);
    click("Command1");
    EXPECT_EQ(imported().size(), 1U);
}

TEST_F(FormImport, AMissingDatabaseIsNamed) {
    field("TextSource").setText("X:\\none.mdb");
    click("Command1");
    ASSERT_EQ(dialogs.errors.size(), 1U);
    EXPECT_TRUE(dialogs.errors[0].text.contains("none.mdb")) << dialogs.errors[0].text.toStdString();
}

} // namespace
} // namespace kelb::app
