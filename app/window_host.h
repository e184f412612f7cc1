#pragma once

#include "app/progress_meter.h"
#include "jobs/job_host.h"
#include "jobs/run_log.h"
#include "platform/platform.h"

#include <cstddef>
#include <string>
#include <string_view>

#include <QString>

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QWidget;

namespace kelb::app {

class LogView;
class UserDialogs;

/// The main window as a running job sees it. Jobs run on the window's thread; events are handled, and the widgets
/// brought up to date, inside yield() and message() only.
class WindowHost final : public jobs::JobHost {
public:
    /// The widgets that a job reads and writes; they outlive the host.
    struct Widgets {
        QWidget& window; ///< parent of boxes
        LogView& log;
        QLabel& text; ///< `Label1`
        QProgressBar& bar;
        QLabel& speed;
        QCheckBox& lanMode;       ///< `Check1`
        QLineEdit& lanFolder;     ///< `Text1`
        QLabel* status = nullptr; ///< the status line, where warnings go
    };
    WindowHost(Widgets widgets, UserDialogs& dialogs, platform::Platform& platform);

    /// A run begins: the progress of the last one goes. `stopBox` stops this run while it is ticked, may be null; every
    /// entry goes to `runLog`, too; `button` started the run, may be null. They are the run's and stay until end().
    void begin(const QCheckBox* stopBox, jobs::RunLog& runLog, QAbstractButton* button = nullptr);
    /// The run has ended: everything that it told is on screen.
    void end();
    /// How long the run has waited for the user in boxes.
    double waitedSeconds() const noexcept { return waited_; }
    /// A run has closed the window: the program ends with the run.
    bool windowClosed() const noexcept { return windowClosed_; }
    /// Asks the run to stop, whatever its stop box says.
    void requestStop() noexcept { stopAsked_ = true; }

    bool stopRequested() override;
    /// Throws platform::FileError when the log file cannot be written; the entry is on screen then.
    void log(std::u16string_view entry) override;
    void logAlone(std::u16string_view entry) override;
    void showProgress(std::u16string_view text, std::size_t done, std::size_t total) override;
    void message(std::u16string_view title, std::u16string_view text) override;
    bool confirm(std::u16string_view question) override;
    void warning(std::u16string_view text) override; ///< in the status line and the log file
    jobs::PageLocation pages() override;
    void yield() override;
    void setCaption(std::u16string_view caption) override;
    void closeWindow() override;

private:
    void showPending(double now);
    void showEverything();

    Widgets widgets_;
    UserDialogs& dialogs_;
    platform::Platform& platform_;
    const QCheckBox* stopBox_ = nullptr;
    jobs::RunLog* runLog_ = nullptr;
    QAbstractButton* button_ = nullptr;
    bool stopAsked_ = false;
    bool windowClosed_ = false;
    ProgressMeter meter_;
    std::u16string text_;
    std::size_t done_ = 0;
    std::size_t total_ = 0;
    bool changed_ = false;
    double pumpedAt_ = 0;
    double shownAt_ = 0;
    double waited_ = 0;
    QString folderAsTyped_;     ///< `Text1` when it was looked at last …
    std::u16string folderText_; ///< … and what jobs get for it, so that the disk is not asked for every row
};

} // namespace kelb::app
