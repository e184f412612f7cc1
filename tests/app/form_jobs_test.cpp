#include "tests/app/window_fixture.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>

#include <filesystem>

namespace kelb::app {
namespace {

class FormJobs : public WindowFixture {
protected:
    /// Walks rows as jobs do, until it is stopped; the test fails when that never happens.
    static void walkUntilStopped(jobs::JobHost& host, jobs::JobSummary& summary) {
        QElapsedTimer patience;
        patience.start();
        while (!patience.hasExpired(20'000)) {
            host.yield();
            if (host.stopRequested()) {
                summary.stopped = true;
                return;
            }
            ++summary.rows;
            ++summary.saved;
        }
        ADD_FAILURE() << "the stop request never arrived";
    }
    static void soon(const std::function<void()>& act) { QTimer::singleShot(30, act); }
};

TEST_F(FormJobs, TheJobGetsTheFieldsOfTheWindow) {
    JobRequest seen;
    openWindow("Command1", [&](const JobRequest& request, jobs::JobHost&, jobs::JobSummary&) { seen = request; });
    find<QLineEdit>("TextSource").setText("C:\\Comb.mdb");
    find<QLineEdit>("Text3").setText("C:\\out.mdb");
    find<QAction>("ActionDryRun").trigger();
    dialogs.chosen = "/trash";
    find<QAction>("ActionTrash").trigger();
    click("Command1");
    EXPECT_EQ(seen.source, u"C:\\Comb.mdb");
    EXPECT_EQ(seen.destination, u"C:\\out.mdb");
    EXPECT_TRUE(seen.options.dryRun);
    EXPECT_EQ(seen.options.trashFolder, u"/trash");
    EXPECT_TRUE(find<QLabel>("LabelOptions").text().contains("/trash"));
}

TEST_F(FormJobs, NothingChosenLeavesTheTrashOff) {
    openWindow({}, {{u"trash", u"D:\\papierkorb"}});
    EXPECT_TRUE(find<QAction>("ActionTrash").isChecked());
    find<QAction>("ActionTrash").trigger(); // off
    find<QAction>("ActionTrash").trigger(); // on, but the chooser is left without a choice
    EXPECT_FALSE(find<QAction>("ActionTrash").isChecked());
}

TEST_F(FormJobs, ButtonsWithoutAHandlerDoNothing) {
    openWindow({});
    const QString before = statusLine();
    click("Command14");
    click("Command7");
    EXPECT_EQ(statusLine(), before);
    EXPECT_EQ(logText(), u"");
    EXPECT_TRUE(dialogs.messages.empty() && dialogs.errors.empty());
}

TEST_F(FormJobs, TheNewestEntryStandsOnTop) {
    openWindow("Command1", [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        host.log(u"totalRec: 2");
        host.log(u"提取失败! 第1次,");
    });
    click("Command1");
    EXPECT_EQ(logText(), u"提取失败! 第1次,\r\ntotalRec: 2\r\n");
    EXPECT_EQ(find<LogView>("Text2").toPlainText(), "提取失败! 第1次,\ntotalRec: 2\n");
    click("Command1"); // a second run goes on in front
    EXPECT_EQ(find<LogView>("Text2").entryCount(), 4U);
}

TEST_F(FormJobs, TickingTheStopBoxEndsTheRun) {
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary& summary) {
        host.log(u"totalRec: 9");
        walkUntilStopped(host, summary);
    });
    soon([&] { click("ChkStopFor"); });
    click("Command1");
    EXPECT_FALSE(form->jobRuns());
    EXPECT_TRUE(find<QCheckBox>("ChkStopFor").isChecked()) << "the user unticks it, not the program";
    EXPECT_EQ(logText(), u"totalRec: 9\r\n");
    EXPECT_TRUE(find<QLabel>("LabelSummary").text().contains("已按要求停止"));

    click("Command1"); // with the box still ticked: ends at its first check, and the window says why
    EXPECT_TRUE(find<QLabel>("LabelSummary").text().contains("共 0 行")) << "a row was visited";
    EXPECT_TRUE(statusLine().contains("停止框已勾选"));
}

TEST_F(FormJobs, EachJobHasItsOwnStopBox) {
    openWindow({{"Command5", "Check2", "param-import",
                 [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
                     find<QCheckBox>("ChkStopFor").setChecked(true);
                     EXPECT_FALSE(host.stopRequested());
                     find<QCheckBox>("Check2").setChecked(true);
                     EXPECT_TRUE(host.stopRequested());
                 }},
                {"Command10", "", "fault-merge", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
                     EXPECT_FALSE(host.stopRequested());
                 }}});
    click("Command5");
    click("Command10");
}

TEST_F(FormJobs, EscapeTicksTheStopBoxOfTheRunOnly) {
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary& summary) {
        walkUntilStopped(host, summary);
    });
    ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
    QTest::keyClick(form.get(), Qt::Key_Escape);
    EXPECT_FALSE(find<QCheckBox>("ChkStopFor").isChecked());
    soon([&] { QTest::keyClick(form.get(), Qt::Key_Escape); });
    click("Command1");
    EXPECT_TRUE(find<QCheckBox>("ChkStopFor").isChecked());
}

TEST_F(FormJobs, ASecondButtonIsIgnoredWithAHint) {
    int second = 0;
    QString hint;
    openWindow(
        {{"Command1", "ChkStopFor", "first",
          [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary& summary) { walkUntilStopped(host, summary); }},
         {"Command15", "ChkStopFor", "second",
          [&](const JobRequest&, jobs::JobHost&, jobs::JobSummary&) { ++second; }}});
    soon([&] {
        click("Command15");
        hint = statusLine();
        click("ChkStopFor");
    });
    click("Command1");
    EXPECT_EQ(second, 0);
    EXPECT_TRUE(hint.contains("正在运行")) << hint.toStdString();
}

TEST_F(FormJobs, ClosingStopsTheRunAndThenCloses) {
    bool openWhileRunning = false;
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary& summary) {
        walkUntilStopped(host, summary);
        openWhileRunning = form->isVisible();
    });
    soon([&] { form->close(); });
    click("Command1");
    EXPECT_TRUE(openWhileRunning);
    EXPECT_FALSE(form->isVisible());
    EXPECT_FALSE(find<QCheckBox>("ChkStopFor").isChecked());
}

TEST_F(FormJobs, AnErrorIsToldAndLeavesTheWindowUsable) {
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost&, jobs::JobSummary& summary) {
        summary.rows = 3;
        throw std::runtime_error("table wxAll is missing");
    });
    for (int run = 1; run <= 2; ++run) {
        click("Command1");
        ASSERT_EQ(dialogs.errors.size(), static_cast<std::size_t>(run));
        EXPECT_EQ(dialogs.errors.back().text, "table wxAll is missing");
        EXPECT_FALSE(form->jobRuns());
    }
    EXPECT_EQ(logText(), u"出错: table wxAll is missing\r\n出错: table wxAll is missing\r\n");
    EXPECT_TRUE(find<QLabel>("LabelSummary").text().contains("共 3 行"));
    EXPECT_TRUE(find<QLineEdit>("TextSource").isEnabled());
}

TEST_F(FormJobs, ClosingBehindAnErrorStillCloses) {
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary& summary) {
        walkUntilStopped(host, summary);
        throw std::runtime_error("disk full");
    });
    soon([&] { form->close(); });
    click("Command1");
    EXPECT_EQ(dialogs.errors.size(), 1U);
    EXPECT_FALSE(form->isVisible());
}

TEST_F(FormJobs, ThePageFolderIsReadAsItStands) {
    std::vector<jobs::PageLocation> seen;
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        seen.push_back(host.pages());
        find<QCheckBox>("Check1").setChecked(true);
        find<QLineEdit>("Text1").setText("Z:\\pages");
        seen.push_back(host.pages());
        find<QLineEdit>("Text1").setText("Z:\\new\\");
        seen.push_back(host.pages());
    });
    files.writeFile(u"Z:\\pages\\1.htm", "x");
    click("Command1");
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_FALSE(seen[0].lanMode);
    EXPECT_TRUE(seen[1].lanMode);
    EXPECT_EQ(seen[1].lanFolder, u"Z:\\pages\\"); // the folder exists, so its separator is put behind it
    EXPECT_EQ(seen[2].lanFolder, u"Z:\\new\\");
}

TEST_F(FormJobs, BoxesAndQuestionsReachTheUserWithTheLogUpToDate) {
    QString logWhenShown;
    bool agreed = false;
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        host.log(u"totalRec: 0");
        host.message(u"网页内容提取", u"完成!");
        agreed = host.confirm(u"删除 90 行？");
    });
    dialogs.whileShown = [&] { logWhenShown = find<LogView>("Text2").toPlainText(); };
    dialogs.agrees = true;
    click("Command1");
    ASSERT_EQ(dialogs.messages.size(), 1U);
    EXPECT_EQ(dialogs.messages[0].text, "完成!");
    EXPECT_EQ(logWhenShown, "totalRec: 0\n");
    EXPECT_EQ(dialogs.questions.at(0).text, "删除 90 行？");
    EXPECT_TRUE(agreed);
}

TEST_F(FormJobs, ProgressAndSummaryStandWhenTheJobHasEnded) {
    openWindow("Command1", [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary& summary) {
        host.showProgress(u"已处理: 3,还剩于: 1", 3, 4);
        summary.rows = 3;
        summary.saved = 1;
        summary.failed = 1;
        summary.skip("alreadyThere", u"");
    });
    click("Command1");
    EXPECT_EQ(find<QLabel>("Label1").text(), "已处理: 3,还剩于: 1");
    EXPECT_EQ(find<QProgressBar>("ProgressBar").value(), 750);
    const QString summary = find<QLabel>("LabelSummary").text();
    EXPECT_TRUE(summary.startsWith("论坛导入：共 3 行，保存 1，跳过 1（已在目的表中 1），失败 1，用时 "))
        << summary.toStdString();
}

TEST_F(FormJobs, TheLogFileHoldsTheRunInTheOrderOfTime) {
    openWindow("Command1", [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        host.log(u"first");
        host.log(u"第二");
        throw std::runtime_error("third");
    });
    dialogs.chosen = "/logs/run.txt";
    find<QAction>("ActionLogFile").trigger();
    click("Command1");
    const std::vector<std::u16string> names = files.listFiles(u"/logs");
    ASSERT_EQ(names.size(), 1U);
    const std::string text = files.readFile(u"/logs/" + names[0]);
    const std::size_t first = text.find("first\n");
    const std::size_t second = text.find("第二\n");
    const std::size_t third = text.find("third\n");
    EXPECT_TRUE(first < second && second < third && third != text.npos) << text;
}

TEST_F(FormJobs, ALogFileThatCannotBeWrittenIsAnErrorOfTheRun) {
    openWindow("Command1", [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) { host.log(u"x"); });
    dialogs.chosen = "/logs/run.txt";
    find<QAction>("ActionLogFile").trigger();
    files.beforeOperation = [](std::string_view operation, std::u16string_view path) {
        if (operation == "write" || operation == "open") {
            throw platform::FileError(platform::FileError::Kind::NoSpace, "write", path, 28, "no space");
        }
    };
    click("Command1");
    EXPECT_EQ(dialogs.errors.size(), 1U);
    EXPECT_FALSE(form->jobRuns());
}

TEST_F(FormJobs, TheLogIsSavedWhole) {
    openWindow("Command1", [](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        for (int i = 0; i < 3'000; ++i) {
            host.log(u"行");
        }
    });
    click("Command1");
    dialogs.chosen = folder.filePath("log.txt");
    find<QAction>("ActionSaveLog").trigger();
    EXPECT_EQ(std::filesystem::file_size(dialogs.chosen.toStdString()), 3'000U * (3 + 2));
    dialogs.chosen = folder.filePath("no/such/folder.txt");
    find<QAction>("ActionSaveLog").trigger();
    EXPECT_EQ(dialogs.errors.size(), 1U);
}

} // namespace
} // namespace kelb::app
