#include "app/window_host.h"

#include "app/log_view.h"
#include "app/qt_text.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "jobs/page_files.h"
#include "platform/clock.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>

namespace kelb::app {
namespace {

/// Handling events costs little, painting a label 2 ms: at these intervals a job of 10,000 rows a second keeps nearly
/// all of the time and the window still follows the hand.
constexpr double kPumpSeconds = 0.020;
constexpr double kShowSeconds = 0.050;
constexpr int kBarSteps = 1'000;

} // namespace

WindowHost::WindowHost(Widgets widgets, UserDialogs& dialogs, platform::Platform& platform)
    : widgets_(widgets), dialogs_(dialogs), platform_(platform) {
    widgets_.bar.setRange(0, kBarSteps);
}

void WindowHost::begin(const QCheckBox* stopBox, jobs::RunLog& runLog, QAbstractButton* button) {
    runLog_ = &runLog;
    button_ = button;
    stopBox_ = stopBox;
    stopAsked_ = false;
    waited_ = 0;
    text_.clear();
    done_ = total_ = 0;
    const double now = platform_.clock.steadySeconds();
    meter_.start(now);
    widgets_.text.clear();
    widgets_.speed.clear();
    widgets_.bar.setValue(0);
    changed_ = false;
    pumpedAt_ = shownAt_ = now;
}

void WindowHost::end() {
    showEverything();
    stopBox_ = nullptr;
    runLog_ = nullptr;
    button_ = nullptr;
}

void WindowHost::showEverything() {
    showPending(platform_.clock.steadySeconds());
    widgets_.log.flush();
}

bool WindowHost::stopRequested() {
    return stopAsked_ || (stopBox_ != nullptr && stopBox_->isChecked());
}

void WindowHost::log(std::u16string_view entry) {
    widgets_.log.add(entry);
    runLog_->add(entry);
}

void WindowHost::logAlone(std::u16string_view entry) {
    widgets_.log.clearEntries();
    log(entry);
}

void WindowHost::showProgress(std::u16string_view text, std::size_t done, std::size_t total) {
    text_ = text;
    done_ = done;
    total_ = total;
    changed_ = true;
}

void WindowHost::message(std::u16string_view title, std::u16string_view text) {
    showEverything();
    const double begun = platform_.clock.steadySeconds();
    dialogs_.message(&widgets_.window, toQt(title), toQt(text));
    waited_ += platform_.clock.steadySeconds() - begun;
}

bool WindowHost::confirm(std::u16string_view question) {
    showEverything();
    const double begun = platform_.clock.steadySeconds();
    const bool agreed = dialogs_.confirm(&widgets_.window, texts::shown(texts::kConfirmTitle), toQt(question));
    waited_ += platform_.clock.steadySeconds() - begun;
    return agreed;
}

void WindowHost::warning(std::u16string_view text) {
    if (widgets_.status != nullptr) {
        widgets_.status->setText(toQt(text));
        widgets_.status->setToolTip(toQt(text));
    }
    runLog_->add(text);
}

jobs::PageLocation WindowHost::pages() {
    if (const QString typed = widgets_.lanFolder.text(); typed != folderAsTyped_) {
        folderText_ = jobs::lanFolderText(platform_.files, fromQt(typed));
        folderAsTyped_ = typed;
    }
    return {widgets_.lanMode.isChecked(), folderText_};
}

void WindowHost::setCaption(std::u16string_view caption) {
    if (button_ != nullptr) {
        button_->setText(toQt(caption));
    }
}

void WindowHost::closeWindow() {
    windowClosed_ = true;
    widgets_.window.hide();
}

void WindowHost::yield() {
    const double now = platform_.clock.steadySeconds();
    if (now - pumpedAt_ < kPumpSeconds) {
        return;
    }
    if (now - shownAt_ >= kShowSeconds) {
        showPending(now);
    }
    QCoreApplication::processEvents();
    pumpedAt_ = platform_.clock.steadySeconds();
}

void WindowHost::showPending(double now) {
    shownAt_ = now;
    if (!changed_) {
        return;
    }
    changed_ = false;
    meter_.update(done_, total_, now);
    widgets_.text.setText(toQt(text_));
    widgets_.speed.setText(meter_.shown());
    const double part = total_ == 0 ? 0 : static_cast<double>(done_) / static_cast<double>(total_);
    widgets_.bar.setValue(static_cast<int>(part * kBarSteps));
}

} // namespace kelb::app
