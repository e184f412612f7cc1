#pragma once

#include "app/job_button.h"
#include "jobs/configuration.h"
#include "platform/platform.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>
#include <vector>

class QLabel;
class QSettings;
class QTextBrowser;

namespace Ui {
class Form1;
}

namespace kelb::app {

class PathField;
class ReasonsView;
class RememberedFields;
class JobContexts;
class RunOptionsMenu;
class TemplateWindows;
class UserDialogs;
class WindowHost;

/// The main window: fields, a button for each job, the log and the stop boxes. A job runs to its end inside the click
/// of its button, one at a time, and gives way to the window's events between rows. No error leaves a click: it ends
/// the job and is told in a box and in the log.
class Form1 final : public QMainWindow {
public:
    /// What the window is made of; everything outlives it.
    struct Parts {
        platform::Platform& platform;
        const jobs::Configuration& configuration;
        UserDialogs& dialogs;
        QSettings& remembered; ///< fields, options and place from the last start
        std::vector<JobButton> jobs;
        JobContexts& contexts; ///< what the template workflow works on
        /// Makes the window of the menu entry; nullptr when the program was built without it.
        std::function<std::unique_ptr<QWidget>()> makePageViewer;
        QString about; ///< text of the about box
        /// Makes the viewer of a page file that a result came from; nullptr when the program was built without it.
        std::function<std::unique_ptr<QWidget>(const std::u16string& page)> makeSavedPageViewer = {};
    };
    explicit Form1(Parts parts);
    ~Form1() override;

    bool jobRuns() const noexcept { return running_ != nullptr; }
    TemplateWindows& templates() noexcept { return *templates_; }
    /// One line for the status bar; stays until the next one.
    void say(const QString& text);

protected:
    /// While a job runs: asks it to stop, and closes when it has.
    void closeEvent(QCloseEvent* event) override;

private:
    void fillFields();
    QString startOf(const PathField& field) const;
    void connectFields();
    void connectMenus();
    void connectJobs();
    void addTabs();
    void addTab(QWidget& tab, const char* title);
    QString busy() const;
    void Check1_Click();
    void press(const JobButton& job);
    void run(const JobButton& job, const QString& caption);
    void runJob(const JobButton& job, jobs::JobSummary& summary);
    void showRunning(bool running);
    void showSummary(const QString& text);
    void showSetup();
    void showViewer();
    std::unique_ptr<QWidget> makeViewerOf(const std::u16string& page) const;
    void viewPage(const std::u16string& page);
    void openVisited(const jobs::RowPlace& place, const jobs::VisitedRow& row);
    bool isFile(const std::u16string& path) const;
    void showJobsPage();

    Parts parts_;
    std::unique_ptr<Ui::Form1> ui_;
    std::unique_ptr<RememberedFields> fields_;
    std::unique_ptr<WindowHost> host_;
    QLabel* status_;                    ///< a child: hints of menu entries cover it and give it back
    RunOptionsMenu* options_ = nullptr; ///< a child of the window
    ReasonsView* reasons_ = nullptr;    ///< a tab
    QPointer<QTextBrowser> jobsPage_;
    QPointer<QWidget> viewer_, savedPage_;
    std::unique_ptr<TemplateWindows> templates_;
    const JobButton* running_ = nullptr;
    bool closeAsked_ = false;
};

} // namespace kelb::app
