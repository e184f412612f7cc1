#pragma once

#include <QList>
#include <QString>

class QMainWindow;
class QSettings;

namespace kelb::app {

/// What the main window keeps from one start to the next: paths, channels, its place and the splitter's. Values that
/// equal their default are not kept, so that a changed settings file shows in the fields.
class RememberedFields {
public:
    /// Takes the window's present values as the defaults.
    RememberedFields(QMainWindow& window, QSettings& settings);
    void restore();
    void save();

private:
    QMainWindow& window_;
    QSettings& settings_;
    QList<QString> defaults_; ///< in the order of the table of fields
};

} // namespace kelb::app
