#pragma once

#include "platform/file_system.h"

#include <memory>
#include <string>

class QWidget;

namespace kelb::app {

class UserDialogs;

/// What the page viewer opens: values of [Viewer], or a file named on the command line.
struct ViewedPage {
    std::u16string page;    ///< path of a saved page; "" when none is set
    std::u16string address; ///< in the address box at first
    bool atOnce = false;    ///< the page is opened with the window, not only with its button
};

/// FrmWebBrowser, not yet shown, with nothing opened unless `viewed.atOnce`; nullptr in a program that was built
/// without Qt WebEngine.
[[nodiscard]] std::unique_ptr<QWidget> makePageViewer(const ViewedPage& viewed, platform::FileSystem& files,
                                                      UserDialogs& dialogs);

/// To be called before the application object is made: what a web engine needs of it.
void prepareForPageViewer();

} // namespace kelb::app
