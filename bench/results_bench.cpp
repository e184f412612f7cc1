// The tab of results over a long table. Usage: results_bench make FILE ROWS    (a database of articles, wxAll)
//                                               results_bench look FILE
// "look" prints seconds to open the table, milliseconds for the picture of a random place (mean of 200), seconds to
// filter all titles and addresses and the longest time that no event came through meanwhile, in milliseconds.

#include "ado/connection.h"
#include "ado/connection_string.h"
#include "ado/recordset.h"
#include "app/job_contexts.h"
#include "app/results_browser.h"
#include "app/user_dialogs.h"
#include "bench/real_system.h"
#include "jet/database.h"
#include "platform/text.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace kelb;

constexpr int kPlaces = 200;
constexpr std::size_t kBodyCharacters = 400;

void make(const std::u16string& path, long long count) {
    bench::RealSystem machine;
    jet::Database::create(machine.platform, path)->commit();
    ado::Environment environment(machine.platform, {});
    ado::Connection connection(environment);
    connection.Open(ado::jetConnectionString(path));
    connection.Execute(u"create table wxAll (id int identity(1,1) NOT NULL, url varchar(255), recTime datetime, "
                       u"sT varchar(255), sC memo, blnPass YESNO)");
    ado::Recordset rows;
    rows.Open(u"wxAll", connection, ado::CursorType::Keyset, ado::LockType::Optimistic);
    for (long long i = 0; i < count; ++i) {
        rows.AddNew();
        rows.set(u"url", u"http://forum.example/thread-" + platform::number(1'000'000 + i) + u"-1-1.html");
        rows.set(u"sT", u"液晶电视黑屏，背光亮一下就灭 " + platform::number(i));
        rows.set(u"sC", std::u16string(kBodyCharacters, u'修'));
        rows.Update();
        connection.flushIfDue();
    }
    rows.Close();
    connection.Close();
}

double seconds(const QElapsedTimer& timer) {
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

void look(const std::u16string& path) {
    bench::RealSystem machine;
    const jobs::Configuration configuration;
    app::JobContexts contexts(machine.platform, configuration);
    const std::unique_ptr<app::UserDialogs> dialogs = app::makeUserDialogs();
    app::ResultsBrowser browser({.contexts = contexts,
                                 .dialogs = *dialogs,
                                 .destination = [&path] { return path; },
                                 .source = [] { return std::u16string(); },
                                 .pages = [] { return jobs::PageLocation(); },
                                 .busy = [] { return QString(); },
                                 .dryRun = [] { return false; },
                                 .say = [](const QString&) {},
                                 .makePageViewer = [](const std::u16string&) { return std::unique_ptr<QWidget>(); }});
    browser.resize(1'200, 700);
    QElapsedTimer timer;
    timer.start();
    browser.show();
    QCoreApplication::processEvents();
    const double opened = seconds(timer);

    auto& list = *browser.findChild<QTableView*>("ResultsList");
    QRandomGenerator random(1);
    timer.restart();
    for (int i = 0; i < kPlaces; ++i) {
        list.verticalScrollBar()->setValue(random.bounded(list.verticalScrollBar()->maximum() + 1));
        list.viewport()->repaint();
    }
    const double scrolled = seconds(timer);

    browser.findChild<QLineEdit*>("ResultsFilter")->setText("99999");
    const auto& counts = *browser.findChild<QLabel*>("ResultsCounts");
    timer.restart();
    qint64 longest = 0;
    while (counts.text().contains(u'%')) {
        QElapsedTimer turn;
        turn.start();
        QCoreApplication::processEvents();
        longest = std::max(longest, turn.elapsed());
    }
    std::printf("%.3f %.2f %.3f %lld\n", opened, scrolled * 1'000 / kPlaces, seconds(timer),
                static_cast<long long>(longest));
}

} // namespace

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    const QStringList given = QApplication::arguments();
    return bench::runOrExplain("results_bench", [&given] {
        if (given.size() == 4 && given[1] == "make") {
            make(given[2].toStdU16String(), given[3].toLongLong());
            return EXIT_SUCCESS;
        }
        if (given.size() == 3 && given[1] == "look") {
            look(given[2].toStdU16String());
            return EXIT_SUCCESS;
        }
        std::fprintf(stderr, "usage: results_bench make FILE ROWS | look FILE\n");
        return 2;
    });
}
