#include "app/still_page.h"

#include "app/texts.h"

namespace kelb::app {

StillPage::StillPage(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    setOpenExternalLinks(false);
    setUndoRedoEnabled(false);
}

void StillPage::showHtml(const QString& html) {
    if (html.size() <= kMost) {
        setHtml(html);
    } else {
        setHtml(html.left(kMost));
        append(u"<hr>"_qs + texts::shown(texts::kResultsCut).arg(kMost));
        moveCursor(QTextCursor::Start);
    }
}

void StillPage::showText(const QString& text) {
    setPlainText(text.size() <= kMost ? text : text.left(kMost) + u'\n' + texts::shown(texts::kResultsCut).arg(kMost));
}

QVariant StillPage::loadResource(int /*type*/, const QUrl& /*name*/) {
    return QByteArray(); // a null value would make the document look for the file itself
}

} // namespace kelb::app
