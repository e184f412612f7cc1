#include "app/progress_meter.h"
#include "app/window_host.h"
#include "tests/app/window_fixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>

namespace kelb::app {
namespace {

/// The host on widgets of its own, under a clock that the test moves.
class WindowHostTest : public testing::Test {
protected:
    StandingClock clock;
    platform::MemoryFileSystem files;
    platform::SystemRandom random;
    platform::Platform platform{files, clock, random, u"C:\\Kelb"};
    AnsweringDialogs dialogs;
    QWidget window;
    LogView log;
    QLabel text, speed;
    QProgressBar bar;
    QCheckBox lanMode;
    QLineEdit lanFolder;
    WindowHost host{{window, log, text, bar, speed, lanMode, lanFolder}, dialogs, platform};
    jobs::RunLog runLog{platform, u""};
};

TEST_F(WindowHostTest, HandlesEventsAtMostEvery20Milliseconds) {
    host.begin(nullptr, runLog);
    int handled = 0;
    const auto post = [&] {
        QMetaObject::invokeMethod(
            &window, [&handled] { ++handled; }, Qt::QueuedConnection);
    };
    post();
    for (int row = 0; row < 10; ++row) { // 10 ms of a job at 1,000 rows a second
        clock.seconds += 0.001;
        host.yield();
    }
    EXPECT_EQ(handled, 0);
    clock.seconds += 0.011;
    host.yield();
    EXPECT_EQ(handled, 1);
    post();
    clock.seconds += 0.015;
    host.yield();
    EXPECT_EQ(handled, 1);
}

TEST_F(WindowHostTest, PaintsProgressAFewTimesASecondAndTheLastOneAlways) {
    host.begin(nullptr, runLog);
    host.showProgress(u"已处理: 1,还剩于: 9", 1, 10);
    clock.seconds += 0.03;
    host.yield();
    EXPECT_EQ(text.text(), "");
    clock.seconds += 0.03;
    host.yield();
    EXPECT_EQ(text.text(), "已处理: 1,还剩于: 9");
    clock.seconds += 1;
    host.showProgress(u"已处理: 10,还剩于: 0", 10, 10);
    host.end();
    EXPECT_EQ(text.text(), "已处理: 10,还剩于: 0");
    EXPECT_EQ(bar.value(), bar.maximum());
    EXPECT_FALSE(speed.text().isEmpty());
    host.begin(nullptr, runLog);
    EXPECT_EQ(text.text() + speed.text(), "");
    EXPECT_EQ(bar.value(), 0);
}

TEST_F(WindowHostTest, ProgressWithoutATotalIsNoDivisionByZero) {
    host.begin(nullptr, runLog);
    host.showProgress(u"id: 1", 5, 0);
    host.end();
    EXPECT_EQ(bar.value(), 0);
}

struct MeterCase {
    const char* name;
    std::vector<std::pair<double, std::size_t>> samples; ///< time, rows done of 1,000
    const char* shown;
};
class Meter : public testing::TestWithParam<MeterCase> {};

TEST_P(Meter, TellsSpeedAndTimeLeft) {
    ProgressMeter meter;
    meter.start(0);
    for (const auto& [time, done] : GetParam().samples) {
        meter.update(done, 1'000, time);
    }
    EXPECT_EQ(meter.shown().toStdString(), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(Runs, Meter,
                         testing::ValuesIn<MeterCase>({
                             {"too_early_to_tell", {{0.1, 50}}, ""},
                             {"steady", {{1, 100}, {2, 200}}, "100 行/秒，剩余 8 秒"},
                             {"slow", {{10, 25}}, "2.5 行/秒，剩余 6 分 30 秒"},
                             {"very_slow", {{100, 10}}, "0.1 行/秒，剩余 2 小时 45 分"},
                             {"nothing_done_has_no_time_left", {{5, 0}}, "0.0 行/秒"},
                             {"the_last_ten_seconds_count", {{1, 500}, {20, 500}, {30, 600}}, "10 行/秒，剩余 40 秒"},
                             {"a_second_walk_starts_anew", {{10, 900}, {11, 0}, {12, 100}}, "100 行/秒，剩余 9 秒"},
                         }),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
} // namespace kelb::app
