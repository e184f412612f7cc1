#include "app/Form1.h"
#include "app/job_buttons.h"
#include "app/page_viewer.h"
#include "app/program.h"
#include "app/qt_text.h"
#include "app/texts.h"
#include "app/user_dialogs.h"
#include "jobs/job_error.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QLibraryInfo>
#include <QSettings>
#include <QTimer>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace kelb::app {
namespace {

constexpr int kDone = 0;
constexpr int kCannotStart = 1;
constexpr int kWrongUsage = 2;

void print(std::FILE* stream, const QString& text) {
    std::fprintf(stream, "%s\n", text.toUtf8().constData());
}

/// Without a display Qt ends the program with an abort. While this stands it ends with one line and a status instead.
class DisplayCheck {
public:
    DisplayCheck() { qInstallMessageHandler(handle); }
    ~DisplayCheck() { qInstallMessageHandler(nullptr); }
    DisplayCheck(const DisplayCheck&) = delete;
    DisplayCheck& operator=(const DisplayCheck&) = delete;

private:
    static void handle(QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg) {
            print(stderr, QString::fromUtf8(texts::kNoDisplay)); // no application object yet, so no translation
            std::_Exit(kCannotStart);
        }
        print(stderr, text);
    }
};

/// Ends the program when the window has been painted once.
class QuitAfterPaint final : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, qApp, &QApplication::quit);
        }
        return false;
    }
};

int showMainWindow(Program& program, const StartOptions& options, UserDialogs& dialogs) {
    program.contexts().program().userNames(); // the window does not open without them
    const jobs::Configuration& configuration = program.configuration();
    const ViewedPage viewed{.page = configuration.text(jobs::Setting::ViewerPage),
                            .address = configuration.text(jobs::Setting::ViewerAddress)};
    const QString home = toQt(program.platform().applicationFolder);
    QSettings remembered;
    Form1 form(
        {.platform = program.platform(),
         .configuration = configuration,
         .dialogs = dialogs,
         .remembered = remembered,
         .jobs = jobButtons(program.contexts()),
         .contexts = program.contexts(),
         .makePageViewer = [&] { return makePageViewer(viewed, program.platform().files, dialogs); },
         .about =
             texts::shown(texts::kAbout).arg(QApplication::applicationVersion(), home, toQt(program.settingsFile())),
         .makeSavedPageViewer =
             [&](const std::u16string& page) {
                 return makePageViewer({.page = page, .address = {}, .atOnce = true}, program.platform().files,
                                       dialogs);
             }});
    if (!QFileInfo(home).isWritable()) {
        form.say(texts::shown(texts::kNotWritable).arg(home));
    }
    QuitAfterPaint quit;
    if (options.quitAfterPaint) {
        form.centralWidget()->installEventFilter(&quit);
    }
    form.show();
    return QApplication::exec();
}

int showViewer(Program& program, const StartOptions& options, UserDialogs& dialogs) {
    const std::unique_ptr<QWidget> viewer = makePageViewer(
        {.page = fromQt(options.view), .address = {}, .atOnce = true}, program.platform().files, dialogs);
    if (viewer == nullptr) {
        dialogs.error(nullptr, texts::shown(texts::kCannotStart), texts::shown(texts::kViewerMissing));
        return kCannotStart;
    }
    viewer->show();
    return QApplication::exec();
}

/// Our own texts in the user's language when the application folder has them, Qt's own (buttons of choosers) in ours.
void installTranslations(QTranslator& ours, QTranslator& theirs, const QString& home) {
    if (ours.load(QLocale(), "KelbExtractor", "_", home + "/translations")) {
        QApplication::installTranslator(&ours);
    }
    if (theirs.load("qtbase_zh_CN", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QApplication::installTranslator(&theirs);
    }
}

int runProgram(const StartOptions& options) {
    const std::unique_ptr<UserDialogs> dialogs = makeUserDialogs();
    QTranslator ours;
    QTranslator theirs;
    try {
        Program program(options);
        installTranslations(ours, theirs, toQt(program.platform().applicationFolder));
        return options.view.isEmpty() ? showMainWindow(program, options, *dialogs)
                                      : showViewer(program, options, *dialogs);
    } catch (const platform::FileError& failure) {
        const bool notFound = failure.kind() == platform::FileError::Kind::NotFound;
        dialogs->error(nullptr, texts::shown(notFound ? texts::kFileNotFound : texts::kCannotStart),
                       QString::fromUtf8(failure.what()));
        return kCannotStart;
    } catch (const jobs::SettingError& failure) {
        dialogs->error(nullptr, texts::shown(texts::kCannotStart), QString::fromUtf8(failure.what()));
        return kWrongUsage;
    }
}

} // namespace
} // namespace kelb::app

int main(int count, char** arguments) {
    using namespace kelb::app;
    QStringList given;
    for (int i = 1; i < count; ++i) {
        given += QString::fromLocal8Bit(arguments[i]);
    }
    QString fault;
    const std::optional<StartOptions> options = readStartOptions(given, fault);
    if (!options) {
        print(stderr, texts::shown(texts::kBadArgument).arg(fault));
        return kWrongUsage;
    }
    if (options->help || options->version) {
        print(stdout, options->help ? texts::shown(texts::kUsage) : "KelbExtractor " KELB_VERSION);
        return kDone;
    }
    QApplication::setApplicationName("KelbExtractor");
    QApplication::setOrganizationName("KelbExtractor");
    QApplication::setApplicationVersion(KELB_VERSION);
    prepareForPageViewer();
    std::optional<DisplayCheck> check(std::in_place);
    QApplication application(count, arguments);
    check.reset();
    QApplication::setWindowIcon(QIcon(":/app/icon.png"));
    return runProgram(*options);
}
