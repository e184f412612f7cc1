#include "app/run_options_menu.h"

#include "app/log_view.h"
#include "app/qt_text.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "platform/utf8.h"

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QMainWindow>
#include <QSaveFile>
#include <QSettings>
#include <QSignalBlocker>
#include <QStatusBar>

namespace kelb::app {
namespace {

constexpr char kTrashKey[] = "options/trashFolder";
constexpr char kLogFileKey[] = "options/logFile";

QAction& actionOf(const QMainWindow& window, const char* name) {
    return *window.findChild<QAction*>(QLatin1String(name));
}

} // namespace

RunOptionsMenu::RunOptionsMenu(QMainWindow& window, LogView& log, UserDialogs& dialogs, QSettings& remembered,
                               const RunOptions& given, std::function<void(const QString&)> say)
    : QObject(&window), window_(window), log_(log), say_(std::move(say)), dialogs_(dialogs), remembered_(remembered),
      given_(given), options_(given), dryRun_(actionOf(window, "ActionDryRun")),
      trash_(actionOf(window, "ActionTrash")), logFile_(actionOf(window, "ActionLogFile")),
      productRows_(actionOf(window, "ActionProductRows")), state_(*new QLabel(&window)) {
    state_.setObjectName("LabelOptions");
    state_.setTextFormat(Qt::PlainText);
    window.statusBar()->addPermanentWidget(&state_);
    options_.trashFolder = fromQt(remembered.value(kTrashKey, toQt(given.trashFolder)).toString());
    options_.logFile = fromQt(remembered.value(kLogFileKey, toQt(given.logFile)).toString());
    showState();

    connect(&dryRun_, &QAction::toggled, this, [this](bool on) {
        options_.dryRun = on;
        showState();
    });
    connect(&productRows_, &QAction::toggled, this, [this](bool on) { options_.productRows = on; });
    connect(&trash_, &QAction::triggered, this, &RunOptionsMenu::chooseTrash);
    connect(&logFile_, &QAction::triggered, this, &RunOptionsMenu::chooseLogFile);
    connect(&actionOf(window, "ActionSaveLog"), &QAction::triggered, this, &RunOptionsMenu::saveLog);
    connect(&actionOf(window, "ActionClearLog"), &QAction::triggered, &log_, &LogView::clearEntries);
}

void RunOptionsMenu::setEnabled(bool enabled) {
    for (QAction* action : {&dryRun_, &trash_, &logFile_, &productRows_}) {
        action->setEnabled(enabled);
    }
}

void RunOptionsMenu::chooseTrash(bool on) {
    const QString folder =
        on ? dialogs_.openFolder(&window_, texts::shown(texts::kChooseTrash), QDir::homePath()) : QString();
    options_.trashFolder = fromQt(QDir::toNativeSeparators(folder));
    remember(kTrashKey, options_.trashFolder, given_.trashFolder);
    showState();
}

void RunOptionsMenu::chooseLogFile(bool on) {
    const QString file = on ? dialogs_.saveFile(&window_, texts::shown(texts::kChooseLogFile), QDir::homePath(),
                                                texts::shown(texts::kTextFilter))
                            : QString();
    options_.logFile = fromQt(QDir::toNativeSeparators(file));
    remember(kLogFileKey, options_.logFile, given_.logFile);
    showState();
}

void RunOptionsMenu::remember(const char* key, const std::u16string& value, const std::u16string& given) {
    if (value == given) {
        remembered_.remove(key);
    } else {
        remembered_.setValue(key, toQt(value));
    }
}

void RunOptionsMenu::saveLog() {
    const QString path = dialogs_.saveFile(&window_, texts::shown(texts::kChooseSaveLog), QDir::homePath(),
                                           texts::shown(texts::kTextFilter));
    if (path.isEmpty()) {
        return;
    }
    const std::string bytes = platform::toUtf8(log_.wholeText());
    QSaveFile file(path);
    const bool saved =
        file.open(QIODevice::WriteOnly) &&
        file.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size()) &&
        file.commit();
    if (saved) {
        say_(texts::shown(texts::kLogSaved).arg(QDir::toNativeSeparators(path)));
    } else {
        dialogs_.error(&window_, texts::shown(texts::kChooseSaveLog),
                       texts::shown(texts::kNotSaved).arg(QDir::toNativeSeparators(path), file.errorString()));
    }
}

void RunOptionsMenu::showState() {
    const QSignalBlocker quiet(dryRun_);
    dryRun_.setChecked(options_.dryRun);
    trash_.setChecked(!options_.trashFolder.empty());
    logFile_.setChecked(!options_.logFile.empty());
    QStringList state;
    if (options_.dryRun) {
        state += texts::shown(texts::kDryRunOn);
    }
    if (!options_.trashFolder.empty()) {
        state += texts::shown(texts::kTrashOn).arg(toQt(options_.trashFolder));
    }
    if (!options_.logFile.empty()) {
        state += texts::shown(texts::kLogFileOn).arg(toQt(options_.logFile));
    }
    state_.setText(state.join(u"  |  "));
}

} // namespace kelb::app
