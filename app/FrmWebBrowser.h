#pragma once

#include "app/page_viewer.h"

#include <QWidget>

class QLabel;
class QLineEdit;
class QUrl;
class QVariant;
class QWebEngineView;

namespace kelb::app {

/// The page viewer: shows a saved page, read in code page 936 unless it declares another, and looks into its document.
class FrmWebBrowser final : public QWidget {
public:
    FrmWebBrowser(const ViewedPage& viewed, platform::FileSystem& files, UserDialogs& dialogs);

    /// Opens the saved page.
    void Command1_Click();
    /// Two boxes: the number of "div" elements, then the text of the first one of class "cont-main-info" (empty when
    /// there is none). The engine answers later, on this thread.
    void Command2_Click();

private:
    void open(const QUrl& url);
    void showFindings(const QVariant& findings);

    std::u16string page_;
    platform::FileSystem& files_;
    UserDialogs& dialogs_;
    QLineEdit& address_;   ///< `Text1`
    QWebEngineView& view_; ///< `WebBrowser1`
    QLabel& status_;
};

} // namespace kelb::app
