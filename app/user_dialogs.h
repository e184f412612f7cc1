#pragma once

#include <QString>

#include <memory>

class QWidget;

namespace kelb::app {

/// What the windows ask of the user in a box of its own. Everything that waits for an answer goes through here, so that
/// a test can answer and a program without a display never waits.
class UserDialogs {
public:
    virtual ~UserDialogs() = default;
    virtual void message(QWidget* parent, const QString& title, const QString& text) = 0;
    virtual void error(QWidget* parent, const QString& title, const QString& text) = 0;
    /// False unless the user says yes.
    [[nodiscard]] virtual bool confirm(QWidget* parent, const QString& title, const QString& question) = 0;
    /// The chosen path, "" when the user gives up. `start`: a path to begin at, may be "".
    [[nodiscard]] virtual QString openFile(QWidget* parent, const QString& title, const QString& start,
                                           const QString& filter) = 0;
    [[nodiscard]] virtual QString saveFile(QWidget* parent, const QString& title, const QString& start,
                                           const QString& filter) = 0;
    [[nodiscard]] virtual QString openFolder(QWidget* parent, const QString& title, const QString& start) = 0;
};

/// Boxes on the screen; without a screen (the offscreen and minimal platforms) boxes are printed as `[TITLE] TEXT`,
/// questions are answered with no and nothing is chosen. Needs the application object.
[[nodiscard]] std::unique_ptr<UserDialogs> makeUserDialogs();

} // namespace kelb::app
