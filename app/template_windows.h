#pragma once

#include "app/job_button.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

namespace kelb::app {

class ExtractorWindow;
class FrmStp1;
class JobContexts;
class UserDialogs;

/// The two windows of the template workflow, of which one is open at a time. Belongs to the main window: its jobs and
/// the extractor never run at once.
class TemplateWindows {
public:
    struct Parts {
        JobContexts& contexts;
        UserDialogs& dialogs;
        std::function<RunOptions()> options; ///< as the menu stands
        std::function<bool()> jobRuns;
        std::function<void(const QString&)> log;
        std::function<void()> finished; ///< after each operation of the extractor
    };
    explicit TemplateWindows(Parts parts);
    ~TemplateWindows(); ///< closes both
    TemplateWindows(const TemplateWindows&) = delete;
    TemplateWindows& operator=(const TemplateWindows&) = delete;

    /// Opens the set-up dialog; an extractor that is open closes first. Not while one extracts.
    void showSetup();
    bool extracts() const;
    void requestStop(); ///< asks the extractor that extracts
    void closeAll();

    FrmStp1* setup() const noexcept;
    ExtractorWindow* extractor() const noexcept;

private:
    Parts parts_;
    QPointer<FrmStp1> setup_;
    QPointer<ExtractorWindow> extractor_;
};

} // namespace kelb::app
