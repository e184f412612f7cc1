#include "app/job_panel.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QResizeEvent>

#include <algorithm>

namespace kelb::app {
namespace {

/// In the order of the form.
QList<QGroupBox*> groupsOf(const QWidget& contents) {
    return contents.findChildren<QGroupBox*>(QString(), Qt::FindDirectChildrenOnly);
}

bool isWide(const QGroupBox& group) {
    return group.property("wide").toBool();
}

} // namespace

int JobPanel::twoColumnWidth() const {
    const auto* grid = qobject_cast<QGridLayout*>(widget()->layout());
    int widest = 0;
    for (const QGroupBox* group : groupsOf(*widget())) {
        if (!isWide(*group)) {
            widest = std::max(widest, group->minimumSizeHint().width());
        }
    }
    const QMargins margins = grid->contentsMargins();
    return 2 * widest + grid->horizontalSpacing() + margins.left() + margins.right();
}

void JobPanel::arrange() {
    const int columns = viewport()->width() >= twoColumnWidth() ? 2 : 1;
    if (columns == columns_) {
        return;
    }
    columns_ = columns;
    viewport()->setAutoFillBackground(false); // the tab's own ground shows
    widget()->setAutoFillBackground(false);
    auto* grid = qobject_cast<QGridLayout*>(widget()->layout());
    int row = 0;
    int column = 0;
    for (QGroupBox* group : groupsOf(*widget())) {
        if (auto* line = qobject_cast<QBoxLayout*>(group->layout()); line != nullptr && isWide(*group)) {
            line->setDirection(columns == 1 ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        }
        grid->removeWidget(group);
        if (column > 0 && isWide(*group)) {
            ++row;
            column = 0;
        }
        grid->addWidget(group, row, column, 1, isWide(*group) ? columns : 1);
        column += isWide(*group) ? columns : 1;
        if (column >= columns) {
            ++row;
            column = 0;
        }
    }
    for (int i = 0; i < grid->rowCount(); ++i) {
        grid->setRowStretch(i, 0);
    }
    grid->setRowStretch(row, 1); // what is left over goes below the groups
}

void JobPanel::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    arrange();
}

} // namespace kelb::app
