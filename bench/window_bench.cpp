// The main window under a job that does nothing but log: how long ENTRIES entries take, each with its progress line and
// a look at the events, until the last one is on screen. Usage: window_bench ENTRIES

#include "app/Form1.h"
#include "app/job_contexts.h"
#include "app/user_dialogs.h"
#include "platform/clock.h"
#include "platform/memory_file_system.h"
#include "platform/random.h"

#include <QApplication>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>

#include <charconv>
#include <cstdio>
#include <cstring>

namespace {

using namespace kelb;

double secondsToLog(std::size_t entries) {
    platform::MemoryFileSystem files;
    platform::SystemClock clock;
    platform::SystemRandom random;
    platform::Platform platform{files, clock, random, u"/bench"};
    const jobs::Configuration configuration;
    app::JobContexts contexts(platform, configuration);
    const QTemporaryDir folder;
    QSettings remembered(folder.filePath("bench.ini"), QSettings::IniFormat);
    const std::unique_ptr<app::UserDialogs> dialogs = app::makeUserDialogs();
    const auto job = [entries](const app::JobRequest&, jobs::JobHost& host, jobs::JobSummary&) {
        for (std::size_t row = 1; row <= entries; ++row) {
            host.showProgress(u"已处理: 1,还剩于: 99999", row, entries);
            host.yield();
            host.log(u"提取失败! 第1次,http://forum.example/thread-1014-1-1.html,|无楼层标志!|楼层<3，为: 0层");
            host.yield();
        }
    };
    app::Form1 form({.platform = platform,
                     .configuration = configuration,
                     .dialogs = *dialogs,
                     .remembered = remembered,
                     .jobs = {{"Command1", "ChkStopFor", "log", job}},
                     .contexts = contexts,
                     .makePageViewer = [] { return std::unique_ptr<QWidget>(); },
                     .about = {}});
    form.show();
    QCoreApplication::processEvents();
    const double begun = clock.steadySeconds();
    form.findChild<QPushButton*>("Command1")->click();
    QCoreApplication::processEvents(); // the last entries are painted
    return clock.steadySeconds() - begun;
}

} // namespace

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    std::size_t entries = 0;
    if (count != 2 ||
        std::from_chars(arguments[1], arguments[1] + std::strlen(arguments[1]), entries).ec != std::errc()) {
        std::fprintf(stderr, "usage: window_bench ENTRIES\n");
        return 2;
    }
    std::printf("%.3f\n", secondsToLog(entries));
    return 0;
}
