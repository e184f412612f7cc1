#include "app/reasons_view.h"

#include "app/qt_text.h"
#include "app/reasons_chart.h"
#include "app/summary_text.h"
#include "app/texts.h"
#include "jobs/run_report.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace kelb::app {

/// The remembered rows of one group: name and detail.
class RowsModel final : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    /// `rows` stays as it is until the next call; nullptr: none.
    void show(const std::vector<jobs::VisitedRow>* rows) {
        beginResetModel();
        rows_ = rows;
        endResetModel();
    }
    const jobs::VisitedRow* row(const QModelIndex& index) const {
        return rows_ == nullptr || !index.isValid() ? nullptr : &rows_->at(static_cast<std::size_t>(index.row()));
    }

    int rowCount(const QModelIndex& parent) const override {
        return rows_ == nullptr || parent.isValid() ? 0 : static_cast<int>(rows_->size());
    }
    int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : 2; }
    QVariant data(const QModelIndex& index, int role) const override {
        const jobs::VisitedRow* found = row(index);
        if (found == nullptr || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
            return {};
        }
        return toQt(index.column() == 0 ? found->name : found->detail);
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (role == Qt::DisplayRole && orientation == Qt::Horizontal) {
            return texts::shown(section == 0 ? texts::kRowsName : texts::kRowsDetail);
        }
        return QAbstractTableModel::headerData(section, orientation, role);
    }

private:
    const std::vector<jobs::VisitedRow>* rows_ = nullptr;
};

ReasonsView::ReasonsView(OpenRow openRow)
    : openRow_(std::move(openRow)), summary_(std::string()), text_(new QLabel(texts::shown(texts::kNoRunYet))),
      chart_(new ReasonsChart([this](int bar) { bar_->setCurrentIndex(bar); })), bar_(new QComboBox), more_(new QLabel),
      rows_(new QTableView), model_(new RowsModel(this)) {
    setObjectName("TabReasons");
    text_->setObjectName("ReasonsText");
    text_->setWordWrap(true);
    text_->setTextFormat(Qt::PlainText);
    chart_->setObjectName("ReasonsChart");
    bar_->setObjectName("ReasonsBar");
    rows_->setObjectName("ReasonsRows");
    rows_->setModel(model_);
    rows_->setSelectionBehavior(QAbstractItemView::SelectRows);
    rows_->setSelectionMode(QAbstractItemView::SingleSelection);
    rows_->setTabKeyNavigation(false);
    rows_->setWordWrap(false);
    rows_->horizontalHeader()->setStretchLastSection(true);
    rows_->horizontalHeader()->resizeSection(0, 420);

    auto* scroll = new QScrollArea;
    scroll->setWidget(chart_);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto* caption = new QLabel(texts::shown(texts::kRowsOf));
    caption->setBuddy(bar_);
    auto* line = new QHBoxLayout;
    line->addWidget(caption);
    line->addWidget(bar_, 1);
    line->addWidget(more_);
    auto* below = new QWidget;
    auto* belowLayout = new QVBoxLayout(below);
    belowLayout->setContentsMargins({});
    belowLayout->addLayout(line);
    belowLayout->addWidget(rows_, 1);
    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(scroll);
    splitter->addWidget(below);
    splitter->setSizes({600, 500});
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text_);
    layout->addWidget(splitter, 1);

    connect(bar_, &QComboBox::currentIndexChanged, this, &ReasonsView::showRows);
    connect(rows_, &QTableView::activated, this, [this](const QModelIndex& index) {
        if (const jobs::VisitedRow* row = model_->row(index)) {
            openRow_(summary_.source, *row);
        }
    });
}

ReasonsView::~ReasonsView() = default;

void ReasonsView::show(jobs::JobSummary summary, const QString& text) {
    model_->show(nullptr);
    summary_ = std::move(summary);
    std::stable_sort(summary_.groups.begin(), summary_.groups.end(), jobs::shownBefore);
    text_->setText(text);
    chart_->show(summary_.groups);
    const QSignalBlocker once(bar_);
    bar_->clear();
    for (const jobs::RowGroup& group : bars()) {
        bar_->addItem(groupText(group));
    }
    // What went wrong is what is looked for.
    const auto failed =
        std::ranges::find_if(bars(), [](const jobs::RowGroup& group) { return group.fate == jobs::RowFate::Failed; });
    bar_->setCurrentIndex(failed == bars().end() ? 0 : static_cast<int>(failed - bars().begin()));
    showRows(bar_->currentIndex());
}

void ReasonsView::showRows(int bar) {
    if (bar < 0) {
        model_->show(nullptr);
        more_->clear();
        return;
    }
    const jobs::RowGroup& group = bars()[static_cast<std::size_t>(bar)];
    model_->show(&group.rows);
    const std::size_t more = group.count - group.rows.size();
    more_->setText(more == 0 ? QString() : texts::shown(texts::kRowsMore).arg(group.rows.size()).arg(more));
}

} // namespace kelb::app
