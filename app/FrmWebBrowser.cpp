#include "app/FrmWebBrowser.h"

#include "app/qt_text.h"
#include "app/texts.h"
#include "app/user_dialogs.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QUrl>
#include <QVariantList>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <exception>

namespace kelb::app {
namespace {

constexpr char16_t kFindings[] = uR"((function () {
    var divs = document.getElementsByTagName("div");
    for (var i = 0; i < divs.length; ++i) {
        if (divs[i].className === "cont-main-info") {
            return [divs.length, divs[i].innerText];
        }
    }
    return [divs.length, ""];
})())";

} // namespace

FrmWebBrowser::FrmWebBrowser(const ViewedPage& viewed, platform::FileSystem& files, UserDialogs& dialogs)
    : page_(viewed.page), files_(files), dialogs_(dialogs), address_(*new QLineEdit(toQt(viewed.address))),
      view_(*new QWebEngineView), status_(*new QLabel) {
    setObjectName("FrmWebBrowser");
    setWindowTitle(texts::shown(texts::kViewerTitle));
    address_.setObjectName("Text1");
    view_.setObjectName("WebBrowser1");
    status_.setObjectName("LabelStatus");
    status_.setTextFormat(Qt::PlainText);
    status_.setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* openPage = new QPushButton(texts::shown(texts::kViewerOpen));
    openPage->setObjectName("Command1");
    openPage->setToolTip(texts::shown(texts::kViewerOpenTip));
    auto* inspect = new QPushButton(texts::shown(texts::kViewerInspect));
    inspect->setObjectName("Command2");
    inspect->setToolTip(texts::shown(texts::kViewerInspectTip));

    auto* layout = new QGridLayout(this);
    layout->addWidget(&address_, 0, 0);
    layout->addWidget(openPage, 0, 1);
    layout->addWidget(inspect, 0, 2);
    layout->addWidget(&view_, 1, 0, 1, 3);
    layout->addWidget(&status_, 2, 0, 1, 3);
    layout->setRowStretch(1, 1);
    resize(1000, 700);

    // Pages of the sites that are crawled seldom declare their encoding.
    view_.settings()->setDefaultTextEncoding("GBK");
    connect(openPage, &QPushButton::clicked, this, &FrmWebBrowser::Command1_Click);
    connect(inspect, &QPushButton::clicked, this, &FrmWebBrowser::Command2_Click);
    connect(&address_, &QLineEdit::returnPressed, this, [this] { open(QUrl::fromUserInput(address_.text())); });
    connect(&view_, &QWebEngineView::loadFinished, this, [this](bool loaded) {
        const QString shown = view_.url().toDisplayString();
        status_.setText(loaded ? shown : texts::shown(texts::kViewerFailed).arg(shown));
    });
    if (viewed.atOnce) {
        QMetaObject::invokeMethod(
            this, [this] { Command1_Click(); }, Qt::QueuedConnection);
    }
}

void FrmWebBrowser::Command1_Click() {
    try {
        if (page_.empty()) {
            dialogs_.message(this, texts::shown(texts::kViewerTitle), texts::shown(texts::kViewerNoPage));
        } else if (!files_.fileExists(page_)) {
            dialogs_.message(this, texts::shown(texts::kViewerTitle),
                             texts::shown(texts::kViewerNotFound).arg(toQt(page_)));
        } else {
            open(QUrl::fromLocalFile(toQt(files_.nativePath(page_))));
        }
    } catch (const platform::FileError& failure) { // a drive or share that no setting maps
        dialogs_.error(this, texts::shown(texts::kViewerTitle), QString::fromUtf8(failure.what()));
    }
}

void FrmWebBrowser::open(const QUrl& url) {
    status_.setText(texts::shown(texts::kViewerLoading));
    view_.load(url);
}

void FrmWebBrowser::Command2_Click() {
    // In a world of its own, where nothing that the page's scripts have redefined is seen.
    view_.page()->runJavaScript(QString::fromUtf16(kFindings), QWebEngineScript::ApplicationWorld,
                                [self = QPointer<FrmWebBrowser>(this)](const QVariant& findings) {
                                    if (self != nullptr) {
                                        self->showFindings(findings);
                                    }
                                });
}

void FrmWebBrowser::showFindings(const QVariant& findings) {
    const QVariantList both = findings.toList();
    dialogs_.message(this, texts::shown(texts::kViewerCount), both.value(0).toString());
    dialogs_.message(this, texts::shown(texts::kViewerBlock), both.value(1).toString());
}

} // namespace kelb::app
