#include "app/still_page.h"

#include "app/texts.h"

namespace kelb::app {

StillPage::StillPage(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    setOpenExternalLinks(false);
    setUndoRedoEnabled(false);
}

void StillPage::setGround(Ground ground) {
    if (ground == Ground::Desktop) {
        setPalette({}); // the parent's
        return;
    }
    QPalette white = palette();
    white.setColor(QPalette::Base, Qt::white);
    white.setColor(QPalette::Text, Qt::black);
    white.setColor(QPalette::Link, QColor(0, 0, 170));
    setPalette(white);
}

void StillPage::showHtml(const QString& html, Ground ground) {
    setGround(ground);
    if (html.size() <= kMost) {
        setHtml(html);
    } else {
        setHtml(html.left(kMost));
        append(u"<hr>"_qs + texts::shown(texts::kResultsCut).arg(kMost));
        moveCursor(QTextCursor::Start);
    }
}

void StillPage::showText(const QString& text) {
    setGround(Ground::Desktop);
    setPlainText(text.size() <= kMost ? text : text.left(kMost) + u'\n' + texts::shown(texts::kResultsCut).arg(kMost));
}

QVariant StillPage::loadResource(int /*type*/, const QUrl& /*name*/) {
    return QByteArray(); // a null value would make the document look for the file itself
}

} // namespace kelb::app
