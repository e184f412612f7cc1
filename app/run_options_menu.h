#pragma once

#include "app/job_button.h"

#include <QObject>

#include <functional>

class QAction;
class QLabel;
class QMainWindow;
class QSettings;

namespace kelb::app {

class LogView;
class UserDialogs;

/// The menu "选项": dry run, trash folder and log file of the runs to come, where the parameter import finds its pages,
/// and what can be done with the log. What is switched on is shown at the right end of the status line. Trash folder
/// and log file are remembered between starts; a dry run is not: whoever starts the program expects its jobs to work.
class RunOptionsMenu final : public QObject {
public:
    /// `window` holds the actions; `given`: what the settings file says, taken while nothing else was chosen.
    RunOptionsMenu(QMainWindow& window, LogView& log, UserDialogs& dialogs, QSettings& remembered,
                   const RunOptions& given, std::function<void(const QString&)> say);

    const RunOptions& options() const noexcept { return options_; }
    /// Off while a job runs: its options stand.
    void setEnabled(bool enabled);

private:
    void chooseTrash(bool on);
    void chooseLogFile(bool on);
    void remember(const char* key, const std::u16string& value, const std::u16string& given);
    void saveLog();
    void showState();

    QMainWindow& window_;
    LogView& log_;
    std::function<void(const QString&)> say_; ///< one line for the status bar
    UserDialogs& dialogs_;
    QSettings& remembered_;
    RunOptions given_;
    RunOptions options_;
    QAction& dryRun_;
    QAction& trash_;
    QAction& logFile_;
    QAction& productRows_;
    QLabel& state_;
};

} // namespace kelb::app
