#pragma once

#include <QScrollArea>

namespace kelb::app {

/// The groups of fields and buttons, in two columns where the width allows it and in one where it does not (a small
/// window, a large scaling). Groups with the property `wide` take a row of their own; their buttons stand in a line, or
/// below each other in one column. What does not fit is scrolled to.
class JobPanel final : public QScrollArea {
public:
    explicit JobPanel(QWidget* parent = nullptr) : QScrollArea(parent) {}
    /// The width at which both columns fit.
    int twoColumnWidth() const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void arrange();
    int columns_ = 0; ///< 0 before the first arrangement
};

} // namespace kelb::app
