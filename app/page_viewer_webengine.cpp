#include "app/FrmWebBrowser.h"
#include "app/page_viewer.h"

#include <QCoreApplication>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace kelb::app {

std::unique_ptr<QWidget> makePageViewer(const ViewedPage& viewed, platform::FileSystem& files, UserDialogs& dialogs) {
    return std::make_unique<FrmWebBrowser>(viewed, files, dialogs);
}

void prepareForPageViewer() {
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
#ifdef Q_OS_UNIX
    // The engine's sandbox refuses to work for root, and without this the page process ends at once.
    if (geteuid() == 0) {
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    }
#endif
}

} // namespace kelb::app
