#pragma once

#include <QLineEdit>

class QMimeData;

namespace kelb::app {

/// A path that can be typed or dropped from the desktop's file manager: one file, or one folder.
class PathField final : public QLineEdit {
public:
    enum class Holds { File, Folder };
    explicit PathField(QWidget* parent = nullptr);
    void setHolds(Holds holds) { holds_ = holds; }

    /// Puts in a path that came from this machine's file system. A folder gets the separator at its end that jobs
    /// expect: they put the rest of the path straight behind it.
    void setChosen(const QString& path);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QString dropped(const QMimeData& mime) const; ///< "" when it is not what the field holds
    Holds holds_ = Holds::File;
};

} // namespace kelb::app
