#pragma once

#include "jobs/job_summary.h"

#include <QWidget>

#include <functional>

class QComboBox;
class QLabel;
class QTableView;

namespace kelb::app {

class ReasonsChart;
class RowsModel;

/// The tab "统计": a bar for the rows that the last job saved and one for each reason to pass rows over or to reject
/// them; a bar that is clicked, or chosen in the box below, shows its rows, and a row opens what it stands for.
class ReasonsView final : public QWidget {
public:
    /// Shows where a row is found again; called for a row that is double-clicked or activated by key.
    using OpenRow = std::function<void(const jobs::RowPlace& place, const jobs::VisitedRow& row)>;
    explicit ReasonsView(OpenRow openRow);
    ~ReasonsView() override;

    /// A job has ended. `text`: its summary in words.
    void show(jobs::JobSummary summary, const QString& text);
    /// The bars from top to bottom.
    const std::vector<jobs::RowGroup>& bars() const noexcept { return summary_.groups; }

private:
    void showRows(int bar);

    OpenRow openRow_;
    jobs::JobSummary summary_;
    // Children of the widget.
    QLabel* text_;
    ReasonsChart* chart_;
    QComboBox* bar_;
    QLabel* more_; ///< how many rows the table leaves out
    QTableView* rows_;
    RowsModel* model_;
};

} // namespace kelb::app
