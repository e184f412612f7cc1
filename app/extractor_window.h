#pragma once

#include "extract/FrmExtractor.h"
#include "jobs/context.h"

#include <QElapsedTimer>
#include <QTextEdit>
#include <QTimer>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace kelb::app {

class UserDialogs;

/// The window of the template extractor, on the open record sets of the context's `templateWorkflow()`, which it closes
/// with itself. One operation at a time: a button pressed while pages are extracted gives a hint.
class ExtractorWindow final : public QWidget, private extract::ExtractorView {
public:
    struct Parts {
        std::shared_ptr<jobs::Context> context;
        UserDialogs& dialogs;
        bool dryRun = false;
        std::function<bool()> jobRuns;           ///< whether a job of the main window does
        std::function<void(const QString&)> log; ///< takes the text of an error
        std::function<void()> showSetup;
        std::function<void()> finished; ///< after each operation
    };
    explicit ExtractorWindow(Parts parts);
    ~ExtractorWindow() override;

    /// Reads the model page. False, after a message, when it is empty. Throws platform::FileError.
    bool Form_Load();
    bool running() const noexcept { return running_; }
    /// Ticks "中断": the run ends behind the current row.
    void requestStop();

    void Command1_Click(); ///< "连续提取"
    void CmdNxt_Click();   ///< "下一篇"
    void Command5_Click(); ///< "上一篇"
    void Command2_Click(); ///< "打开提取结果"
    void Command4_Click(); ///< opens the set-up dialog
    void Timer1_Timer();

protected:
    /// While pages are extracted: asks to stop, and closes when it has.
    void closeEvent(QCloseEvent* event) override;

private:
    void showModel(const extract::TemplateModel& model) override;
    void showHits(const extract::Alignment& alignment) override;
    void showPath(std::u16string_view path) override;
    void showBody(std::u16string_view body) override;
    void showResult(std::u16string_view text) override;
    void showPhase(std::u16string_view text) override;
    void rowDone(extract::TemplateRow row, std::u16string_view url) override;
    bool interrupted() override;
    bool slow() override;
    void switchTimer(bool on) override;
    void message(std::u16string_view title, std::u16string_view text) override;
    void yield() override;

    QPushButton* button(const char* name, const QString& caption, const char* toolTip,
                        void (ExtractorWindow::*pressed)());
    QCheckBox& box(const char* name, const char* caption, const char* toolTip);
    QTextEdit& text(const char* name, const char* shown);
    QWidget* buttonRow();
    QWidget* resultTab();
    QWidget* modelTab();
    void operate(void (extract::FrmExtractor::*operation)());
    void say(const char* text);
    void showPending();
    void markHits(const extract::Alignment& alignment);

    Parts parts_;
    QTextEdit &body_, &fragments_, &names_, &article_;       ///< `Text1` to `Text4`
    QLineEdit& path_;                                        ///< `Text5`
    QLabel &result_, &phase_, &hint_, &counts_, &hitCounts_; ///< `Label2`, `Label1` and our own
    QCheckBox &interrupt_, &slow_;                           ///< `Check1`, `Check2`
    QTimer timer_;                                           ///< `Timer1`
    std::optional<extract::FrmExtractor> extractor_;
    bool running_ = false;
    bool closeAsked_ = false;
    std::array<std::size_t, 6> rowCounts_{}; ///< by extract::TemplateRow

    /// What the widgets are to show next; painting every page would take most of the time.
    struct Pending {
        std::optional<std::u16string> path, body, result, phase;
        std::optional<extract::Alignment> hits;
    } pending_;
    QElapsedTimer sincePump_, sinceShown_;
};

} // namespace kelb::app
