#pragma once

#include "app/Form1.h"
#include "app/job_contexts.h"
#include "app/log_view.h"
#include "app/user_dialogs.h"
#include "platform/clock.h"
#include "platform/memory_file_system.h"
#include "platform/random.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QLabel>
#include <QPalette>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelb::app {

/// Answers boxes and choosers, and remembers what was shown.
class AnsweringDialogs final : public UserDialogs {
public:
    struct Box {
        QString title, text;
    };
    std::vector<Box> messages, errors, questions;
    bool agrees = false;
    QString chosen; ///< what every chooser gives
    std::function<void()> whileShown = [] {};

    void message(QWidget*, const QString& title, const QString& text) override {
        messages.push_back({title, text});
        whileShown();
    }
    void error(QWidget*, const QString& title, const QString& text) override {
        errors.push_back({title, text});
        whileShown();
    }
    bool confirm(QWidget*, const QString& title, const QString& question) override {
        questions.push_back({title, question});
        return agrees;
    }
    QString openFile(QWidget*, const QString&, const QString&, const QString&) override { return chosen; }
    QString saveFile(QWidget*, const QString&, const QString&, const QString&) override { return chosen; }
    QString openFolder(QWidget*, const QString&, const QString&) override { return chosen; }
};

inline double averageLightness(const QImage& picture) {
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            sum += qGray(picture.pixel(x, y));
        }
    }
    return sum / picture.width() / picture.height();
}

/// The desktop's colours are dark while this stands.
class DarkDesktop {
public:
    DarkDesktop() : light_(QApplication::palette()) {
        QApplication::setStyle("Fusion");
        QApplication::setPalette(QPalette(QColor(50, 50, 50), QColor(40, 40, 40)));
    }
    ~DarkDesktop() { QApplication::setPalette(light_); }
    DarkDesktop(const DarkDesktop&) = delete;
    DarkDesktop& operator=(const DarkDesktop&) = delete;

private:
    QPalette light_;
};

/// A clock that stands until it is moved.
class StandingClock final : public platform::Clock {
public:
    platform::DateTime now() const override { return {2015, 12, 2, 8, 30, 0}; }
    double steadySeconds() const override { return seconds; }
    double seconds = 100;
};

/// The widget of that name in a window.
template <typename Widget>
Widget& findIn(const QWidget& window, const char* name) {
    auto* found = window.findChild<Widget*>(QLatin1String(name));
    if (found == nullptr) {
        throw std::runtime_error(std::string("no ") + name);
    }
    return *found;
}

/// The main window with jobs of the test's own, files in memory and settings in a temporary file.
class WindowFixture : public testing::Test {
protected:
    using Job = std::function<void(const JobRequest&, jobs::JobHost&, jobs::JobSummary&)>;

    /// The named values of the settings file; everything else has its default.
    void openWindow(std::vector<JobButton> buttons,
                    const std::vector<std::pair<std::u16string, std::u16string>>& settings = {}) {
        form.reset();
        remembered = std::make_unique<QSettings>(folder.filePath("remembered.ini"), QSettings::IniFormat);
        configuration = jobs::Configuration([&settings](std::u16string_view, std::u16string_view key) {
            const auto found = std::ranges::find_if(settings, [key](const auto& each) { return each.first == key; });
            return found == settings.end() ? std::u16string() : found->second;
        });
        contexts = std::make_unique<JobContexts>(platform, configuration);
        form = std::make_unique<Form1>(Form1::Parts{.platform = platform,
                                                    .configuration = configuration,
                                                    .dialogs = dialogs,
                                                    .remembered = *remembered,
                                                    .jobs = std::move(buttons),
                                                    .contexts = *contexts,
                                                    .makePageViewer = [] { return std::unique_ptr<QWidget>(); },
                                                    .about = "about"});
        form->show();
    }
    void openWindow(const char* button, const Job& job) { openWindow({{button, "ChkStopFor", "test-job", job}}); }

    template <typename Widget>
    Widget& find(const char* name) {
        return findIn<Widget>(*form, name);
    }
    void click(const char* button) {
        auto& widget = find<QAbstractButton>(button);
        // A check box answers on its mark and text, which stand at its left end.
        QTest::mouseClick(&widget, Qt::LeftButton, {}, {std::min(widget.width() / 2, 10), widget.height() / 2});
    }
    QString statusLine() { return find<QLabel>("LabelStatus").text(); }
    std::u16string logText() { return find<LogView>("Text2").wholeText(); }

    QTemporaryDir folder;
    platform::MemoryFileSystem files;
    platform::SystemClock clock;
    platform::SystemRandom random;
    platform::Platform platform{files, clock, random, u"C:\\Kelb"};
    jobs::Configuration configuration;
    AnsweringDialogs dialogs;
    std::unique_ptr<JobContexts> contexts;
    std::unique_ptr<QSettings> remembered;
    std::unique_ptr<Form1> form;
};

} // namespace kelb::app
