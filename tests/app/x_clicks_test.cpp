#include "tests/app/window_fixture.h"

#include <QLabel>
#include <QProcess>

namespace kelb::app {
namespace {

/// The window under a real X server, worked with the pointer and the keyboard of that server.
class XClicks : public WindowFixture {
protected:
    void SetUp() override { ASSERT_EQ(QGuiApplication::platformName(), "xcb") << "to be run under xvfb-run"; }

    static void xdotool(const QStringList& arguments) {
        QProcess process;
        process.start("xdotool", arguments);
        ASSERT_TRUE(process.waitForFinished(10'000)) << process.errorString().toStdString();
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }
    void xClick(const char* name) {
        const auto& widget = find<QWidget>(name);
        // A check box answers on its mark and text, which stand at its left end.
        const QPoint at = widget.mapToGlobal(QPoint(std::min(widget.width() / 2, 30), widget.height() / 2));
        xdotool({"mousemove", QString::number(at.x()), QString::number(at.y()), "click", "1"});
    }
    void showOnScreen() {
        form->move(0, 0);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(form.get()));
        QTest::qWait(200); // the server moves it
    }
};

TEST_F(XClicks, AJobRunsAndIsStoppedWithThePointer) {
    int runs = 0;
    bool stopClicked = false;
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary& summary) {
        ++runs;
        host.log(u"totalRec: 1000000");
        QElapsedTimer patience;
        patience.start();
        while (!host.stopRequested() && !patience.hasExpired(30'000)) {
            host.showProgress(u"已处理: ", summary.rows, 1'000'000);
            host.yield();
            ++summary.rows;
            if (!stopClicked && patience.hasExpired(300)) {
                stopClicked = true;
                xClick("ChkStopFor");
            }
        }
        summary.stopped = host.stopRequested();
    });
    showOnScreen();
    xClick("Command1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return runs == 1 && !form->jobRuns(); }, 40'000));
    EXPECT_TRUE(find<QCheckBox>("ChkStopFor").isChecked());
    EXPECT_TRUE(find<QLabel>("LabelSummary").text().contains("已按要求停止"));
    EXPECT_EQ(logText(), u"totalRec: 1000000\r\n");
}

TEST_F(XClicks, TheWindowAnswersWhileAFastJobLogs) {
    double longest = 0;
    bool ticked = false;
    openWindow("Command1", [&](const JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        QElapsedTimer run;
        run.start();
        double last = clock.steadySeconds();
        for (std::size_t row = 0; !run.hasExpired(2'000); ++row) {
            host.log(u"提取失败! 第1次,http://forum.example/thread-1-1-1.html,|无楼层标志!");
            host.showProgress(u"已处理: 1,还剩于: 1", row, 100'000);
            host.yield();
            longest = std::max(longest, clock.steadySeconds() - last);
            last = clock.steadySeconds();
            if (!ticked && run.hasExpired(500)) {
                ticked = true;
                xClick("Check1");
                last = clock.steadySeconds();
            }
        }
    });
    showOnScreen();
    xClick("Command1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return ticked && !form->jobRuns(); }, 20'000));
    EXPECT_TRUE(find<QCheckBox>("Check1").isChecked()) << "the click was not handled while the job ran";
    EXPECT_LT(longest, 0.5) << "seconds between two looks at the events";
}

TEST_F(XClicks, AltKeysReachTheButtons) {
    int runs = 0;
    openWindow("Command15", [&](const JobRequest&, jobs::JobHost&, jobs::JobSummary&) { ++runs; });
    showOnScreen();
    // No window manager runs here that would give the window the keyboard.
    xdotool({"windowfocus", "--sync", QString::number(form->winId())});
    xdotool({"key", "alt+f"}); // (BBS)Fill Title Content
    EXPECT_TRUE(QTest::qWaitFor([&] { return runs == 1; }, 5'000));
}

} // namespace
} // namespace kelb::app
