#include "app/Form1.h"

#include "app/form_texts.h"
#include "app/job_contexts.h"
#include "app/qt_text.h"
#include "app/reasons_view.h"
#include "app/remembered_fields.h"
#include "app/results_browser.h"
#include "app/run_options_menu.h"
#include "app/source_row_dialog.h"
#include "app/summary_text.h"
#include "app/template_windows.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "app/window_host.h"
#include "jobs/job_error.h"
#include "jobs/run_log.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "ui_Form1.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QScreen>
#include <QShortcut>
#include <QTextBrowser>

#include <algorithm>
#include <exception>

namespace kelb::app {

using jobs::Setting;

Form1::Form1(Parts parts) : parts_(std::move(parts)), ui_(std::make_unique<Ui::Form1>()), status_(new QLabel(this)) {
    ui_->setupUi(this);
    applyTexts(*this);
    status_->setObjectName("LabelStatus");
    status_->setTextFormat(Qt::PlainText);
    statusBar()->addWidget(status_, 1);
    ui_->SSTab1->setTabText(0, texts::shown(texts::kTabJobs));
    ui_->SSTab1->setTabText(1, texts::shown(texts::kTabSpare));
    addTabs();
    ui_->Text1->setHolds(PathField::Holds::Folder);
    ui_->Text2->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    ui_->Splitter->setSizes({600, 560});
    ui_->Splitter->setStretchFactor(1, 1);

    fillFields();
    fields_ = std::make_unique<RememberedFields>(*this, parts_.remembered);
    fields_->restore();
    host_ = std::make_unique<WindowHost>(WindowHost::Widgets{*this, *ui_->Text2, *ui_->Label1, *ui_->ProgressBar,
                                                             *ui_->LabelSpeed, *ui_->Check1, *ui_->Text1, status_},
                                         parts_.dialogs, parts_.platform);
    options_ = new RunOptionsMenu(*this, *ui_->Text2, parts_.dialogs, parts_.remembered,
                                  {.dryRun = false,
                                   .trashFolder = parts_.configuration.text(Setting::SafetyTrash),
                                   .logFile = parts_.configuration.text(Setting::SafetyLogFile)},
                                  [this](const QString& text) { say(text); });
    templates_ = std::make_unique<TemplateWindows>(TemplateWindows::Parts{
        .contexts = parts_.contexts,
        .dialogs = parts_.dialogs,
        .options = [this] { return options_->options(); },
        .jobRuns = [this] { return jobRuns(); },
        .log = [this](const QString& error) { ui_->Text2->add(fromQt(texts::shown(texts::kErrorEntry) + error)); },
        .finished =
            [this] {
                if (closeAsked_) {
                    close();
                }
            }});
    connectFields();
    connectMenus();
    connectJobs();
    showSummary(QString());
    resize(size().boundedTo(screen()->availableSize()));
    say(texts::shown(texts::kReady));
}

/// What stands between the tab of the jobs and the spare one, in this order.
void Form1::addTabs() {
    addTab(*new ResultsBrowser({.contexts = parts_.contexts,
                                .dialogs = parts_.dialogs,
                                .destination = [this] { return fromQt(ui_->Text3->text()); },
                                .source = [this] { return fromQt(ui_->TextSource->text()); },
                                .pages = [this] { return host_->pages(); },
                                .busy = [this] { return busy(); },
                                .dryRun = [this] { return options_->options().dryRun; },
                                .say = [this](const QString& text) { say(text); },
                                .makePageViewer = [this](const std::u16string& page) { return makeViewerOf(page); }}),
           texts::kTabResults);
    reasons_ =
        new ReasonsView([this](const jobs::RowPlace& place, const jobs::VisitedRow& row) { openVisited(place, row); });
    addTab(*reasons_, texts::kTabReasons);
}

/// The tab control owns the tab from now on.
void Form1::addTab(QWidget& tab, const char* title) {
    ui_->SSTab1->insertTab(ui_->SSTab1->indexOf(ui_->TabSpare), &tab, texts::shown(title));
}

Form1::~Form1() {
    templates_.reset();
    delete viewer_;
    delete savedPage_;
    delete jobsPage_;
}

void Form1::say(const QString& text) {
    status_->setText(text);
}

void Form1::fillFields() {
    const jobs::Configuration& configuration = parts_.configuration;
    ui_->Text3->setText(toQt(configuration.text(Setting::PathsWxdb)));
    ui_->Text1->setText(toQt(configuration.text(Setting::CrawlerLanFolder)));
    ui_->Check1->setText(
        u"如果是在%1上采集的内容请勾选："_qs.arg(toQt(configuration.text(Setting::CrawlerMachineName))));
    for (const std::u16string_view channel : platform::split(configuration.text(Setting::SetupChannels), u",")) {
        const QString shown = toQt(platform::trimBlanks(channel));
        ui_->Combo1->addItem(shown);
        ui_->Combo2->addItem(shown);
    }
    ui_->Combo1->setCurrentText(toQt(configuration.text(Setting::ForumImportCid)));
    ui_->Combo2->setCurrentText(toQt(configuration.text(Setting::ForumFillCid)));
}

/// Where a chooser begins: at the field's path on this machine.
QString Form1::startOf(const PathField& field) const {
    try {
        return toQt(parts_.platform.files.nativePath(fromQt(field.text())));
    } catch (const platform::FileError&) { // a drive without a mapping: nowhere in particular
        return {};
    }
}

void Form1::connectFields() {
    const auto chooses = [this](QPushButton& browse, PathField& field, const char* title) {
        connect(&browse, &QPushButton::clicked, this, [this, &field, title] {
            const QString path = parts_.dialogs.openFile(this, texts::shown(title), startOf(field),
                                                         texts::shown(texts::kDatabaseFilter));
            if (!path.isEmpty()) {
                field.setChosen(path);
            }
        });
    };
    chooses(*ui_->BrowseSource, *ui_->TextSource, texts::kChooseSource);
    chooses(*ui_->BrowseDestination, *ui_->Text3, texts::kChooseDestination);
    connect(ui_->BrowseFolder, &QPushButton::clicked, this, [this] {
        const QString folder =
            parts_.dialogs.openFolder(this, texts::shown(texts::kChooseFolder), startOf(*ui_->Text1));
        if (!folder.isEmpty()) {
            ui_->Text1->setChosen(folder);
        }
    });
    connect(ui_->Check1, &QCheckBox::toggled, this, &Form1::Check1_Click);
    Check1_Click();
    // Esc is the stop box's key, but only while there is something to stop: a ticked box would end the next job at
    // once.
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, [this] {
        if (auto* box = jobRuns() ? findChild<QCheckBox*>(QLatin1String(running_->stopBox)) : nullptr) {
            box->setChecked(true);
        }
    });
}

void Form1::connectMenus() {
    connect(ui_->ActionSetup, &QAction::triggered, this, &Form1::showSetup);
    connect(ui_->ActionViewer, &QAction::triggered, this, &Form1::showViewer);
    connect(ui_->ActionQuit, &QAction::triggered, this, &Form1::close);
    connect(ui_->ActionJobs, &QAction::triggered, this, &Form1::showJobsPage);
    connect(ui_->ActionAbout, &QAction::triggered, this,
            [this] { parts_.dialogs.message(this, texts::shown(texts::kAboutTitle), parts_.about); });
}

void Form1::connectJobs() {
    for (const JobButton& job : parts_.jobs) {
        connect(findChild<QPushButton*>(QLatin1String(job.button)), &QPushButton::clicked, this,
                [this, &job] { press(job); });
    }
}

void Form1::Check1_Click() {
    ui_->Text1->setEnabled(ui_->Check1->isChecked());
    ui_->BrowseFolder->setEnabled(ui_->Check1->isChecked() && !jobRuns());
}

/// Why no job can start now; "" when one can.
QString Form1::busy() const {
    if (jobRuns()) {
        return texts::shown(texts::kJobRuns).arg(captionOf(*this, running_->button));
    }
    return templates_->extracts() ? texts::shown(texts::kExtractorRuns) : QString();
}

void Form1::press(const JobButton& job) {
    if (const QString why = busy(); !why.isEmpty()) {
        say(why);
    } else {
        run(job, captionOf(*this, job.button));
    }
}

void Form1::run(const JobButton& job, const QString& caption) {
    running_ = &job;
    showRunning(true);
    showSummary(QString());
    say(texts::shown(texts::kRunning).arg(caption));
    jobs::JobSummary summary(job.job);
    QString error;
    bool refused = false;
    try {
        runJob(job, summary);
    } catch (const jobs::Refused&) { // by the user, who needs no box to be told so
        refused = true;
    } catch (const std::exception& failure) {
        error = QString::fromUtf8(failure.what());
    }
    host_->end();
    running_ = nullptr;
    showRunning(false);
    const QString words = summaryText(summary, jobText(QLatin1String(job.button)));
    showSummary(words);
    if (!error.isEmpty()) {
        say(texts::shown(texts::kFailed).arg(caption));
        parts_.dialogs.error(this, texts::shown(texts::kErrorTitle), error);
    } else if (refused) {
        say(texts::shown(texts::kRefused));
    } else {
        say(texts::shown(summary.stopped && summary.rows == 0 ? texts::kStopIsTicked : texts::kReady));
    }
    reasons_->show(std::move(summary), words);
    if (closeAsked_ || host_->windowClosed()) {
        close();
    }
    if (host_->windowClosed()) {
        QCoreApplication::quit(); // no window is left whose closing would end the program
    }
}

void Form1::runJob(const JobButton& job, jobs::JobSummary& summary) {
    const JobRequest request{fromQt(ui_->TextSource->text()), fromQt(ui_->Text3->text()), options_->options(),
                             [box = ui_->Check3] { return box->isChecked(); }};
    jobs::RunLog runLog(parts_.platform, request.options.logFile);
    host_->begin(findChild<QCheckBox*>(QLatin1String(job.stopBox)), runLog,
                 findChild<QPushButton*>(QLatin1String(job.button)));
    summary.dryRun = request.options.dryRun;
    const auto secondsSince = [this](double begun) {
        return parts_.platform.clock.steadySeconds() - begun - host_->waitedSeconds();
    };
    const double start = parts_.platform.clock.steadySeconds();
    try {
        job.run(request, *host_, summary);
    } catch (const jobs::Refused&) {
        summary.seconds = secondsSince(start);
        const std::u16string entry = fromQt(texts::shown(texts::kRefused));
        ui_->Text2->add(entry);
        runLog.addLast(entry);
        throw;
    } catch (const std::exception& failure) {
        summary.seconds = secondsSince(start);
        const std::u16string entry = fromQt(texts::shown(texts::kErrorEntry)) + platform::fromUtf8(failure.what());
        ui_->Text2->add(entry);
        runLog.addLast(entry);
        throw;
    }
    summary.seconds = secondsSince(start);
    runLog.flush();
}

void Form1::showRunning(bool running) {
    // The databases of a run are fixed when it starts; the page folder and its switch are read as they stand.
    ui_->GroupDatabases->setEnabled(!running);
    options_->setEnabled(!running);
    Check1_Click();
}

void Form1::showSummary(const QString& text) {
    ui_->LabelSummary->setText(text);
    ui_->LabelSummary->setVisible(!text.isEmpty());
}

void Form1::showSetup() {
    if (const QString why = busy(); !why.isEmpty()) {
        say(why);
    } else {
        templates_->showSetup();
    }
}

void Form1::showViewer() {
    if (viewer_ == nullptr) {
        viewer_ = parts_.makePageViewer().release();
    }
    if (viewer_ == nullptr) {
        say(texts::shown(texts::kViewerMissing));
        return;
    }
    viewer_->show();
    viewer_->raise();
    viewer_->activateWindow();
}

std::unique_ptr<QWidget> Form1::makeViewerOf(const std::u16string& page) const {
    return parts_.makeSavedPageViewer ? parts_.makeSavedPageViewer(page) : nullptr;
}

/// One page at a time: the viewer is made anew for each.
void Form1::openVisited(const jobs::RowPlace& place, const jobs::VisitedRow& row) {
    if (place.table.empty() && isFile(row.name)) {
        viewPage(row.name);
    } else if (place.field == u"url") {
        jobs::RowName name{.database = place.database, .table = place.table, .id = std::nullopt, .url = row.name};
        bool isNumber = false;
        if (const qlonglong id = toQt(row.name).toLongLong(&isNumber); isNumber) { // a row without an address
            name.id = id;
            name.url.clear();
        }
        showSourceRow(this, parts_.contexts.program(), parts_.dialogs, name);
    } else {
        say(texts::shown(texts::kRowHasNoPlace));
    }
}

bool Form1::isFile(const std::u16string& path) const {
    try {
        return parts_.platform.files.fileExists(path);
    } catch (const platform::FileError&) { // an offline share: nothing that could be opened
        return false;
    }
}

void Form1::viewPage(const std::u16string& page) {
    delete savedPage_;
    savedPage_ = makeViewerOf(page).release();
    if (savedPage_ == nullptr) {
        say(texts::shown(texts::kViewerMissing));
    } else {
        savedPage_->show();
    }
}

void Form1::showJobsPage() {
    if (jobsPage_ == nullptr) {
        jobsPage_ = new QTextBrowser();
        jobsPage_->setObjectName("JobsPage");
        jobsPage_->setWindowTitle(texts::shown(texts::kJobsPageTitle));
        jobsPage_->setHtml(jobsPage(*this));
        jobsPage_->resize(QSize(640, 600).boundedTo(screen()->availableSize()));
    }
    jobsPage_->show();
    jobsPage_->raise();
}

void Form1::closeEvent(QCloseEvent* event) {
    if (jobRuns()) {
        closeAsked_ = true;
        host_->requestStop();
        say(texts::shown(texts::kClosing));
        event->ignore();
        return;
    }
    if (templates_->extracts()) {
        closeAsked_ = true;
        templates_->requestStop();
        say(texts::shown(texts::kClosing));
        event->ignore();
        return;
    }
    templates_->closeAll();
    fields_->save();
    for (QWidget* other : {static_cast<QWidget*>(jobsPage_.data()), viewer_.data(), savedPage_.data()}) {
        if (other != nullptr) {
            other->close();
        }
    }
    QMainWindow::closeEvent(event);
}

} // namespace kelb::app
