#include "app/path_field.h"

#include <QDir>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

namespace kelb::app {

PathField::PathField(QWidget* parent) : QLineEdit(parent) {
    setAcceptDrops(true);
    setClearButtonEnabled(true);
}

void PathField::setChosen(const QString& path) {
    QString native = QDir::toNativeSeparators(path);
    if (holds_ == Holds::Folder && !native.endsWith(QDir::separator())) {
        native += QDir::separator();
    }
    setText(native);
    emit editingFinished();
}

QString PathField::dropped(const QMimeData& mime) const {
    const QList<QUrl> urls = mime.urls();
    if (urls.size() != 1 || !urls.front().isLocalFile()) {
        return {};
    }
    const QFileInfo info(urls.front().toLocalFile());
    const bool fits = holds_ == Holds::Folder ? info.isDir() : info.isFile();
    return fits ? info.absoluteFilePath() : QString();
}

void PathField::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->setAccepted(!dropped(*event->mimeData()).isEmpty());
    } else {
        QLineEdit::dragEnterEvent(event);
    }
}

void PathField::dragMoveEvent(QDragMoveEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->setAccepted(!dropped(*event->mimeData()).isEmpty());
    } else {
        QLineEdit::dragMoveEvent(event);
    }
}

void PathField::dropEvent(QDropEvent* event) {
    if (!event->mimeData()->hasUrls()) {
        QLineEdit::dropEvent(event);
        return;
    }
    const QString path = dropped(*event->mimeData());
    event->setAccepted(!path.isEmpty());
    if (!path.isEmpty()) {
        event->setDropAction(Qt::CopyAction);
        setChosen(path);
    }
}

} // namespace kelb::app
