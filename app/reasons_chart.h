#pragma once

#include "jobs/job_summary.h"

#include <QtCharts/QChartView>

#include <functional>
#include <vector>

class QBarCategoryAxis;
class QHorizontalStackedBarSeries;

namespace kelb::app {

/// Groups of rows as horizontal bars, the first on top, in the colours of their fates. A click anywhere in the line of
/// a bar chooses it, however short the bar is.
class ReasonsChart final : public QChartView {
public:
    using Chosen = std::function<void(int bar)>;
    explicit ReasonsChart(Chosen chosen);

    void show(const std::vector<jobs::RowGroup>& groups);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void takePalette();

    Chosen chosen_;
    QHorizontalStackedBarSeries* series_ = nullptr; ///< the chart's
    QBarCategoryAxis* names_ = nullptr;             ///< the chart's
    int bars_ = 0;
};

} // namespace kelb::app
