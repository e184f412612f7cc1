#include "app/reasons_chart.h"

#include "app/summary_text.h"

#include <QtCharts/QBarCategoryAxis>
#include <QtCharts/QBarSet>
#include <QtCharts/QChart>
#include <QtCharts/QHorizontalStackedBarSeries>
#include <QtCharts/QValueAxis>

#include <QEvent>
#include <QMouseEvent>

#include <array>
#include <cmath>
#include <utility>

namespace kelb::app {
namespace {

struct Fate {
    const char* name;
    QRgb colour; ///< tells itself from the others for the colour-blind and on light and dark ground
};
constexpr std::array<Fate, 3> kFates{
    {{texts::kFateSaved, 0xff2e9d57}, {texts::kFateSkipped, 0xffe0a100}, {texts::kFateFailed, 0xffc2443c}}};
constexpr int kLineHeight = 34; ///< pixels at 100 %: more bars make the chart scroll with its tab
constexpr int kFrame = 110;     ///< legend and axis

} // namespace

ReasonsChart::ReasonsChart(Chosen chosen) : QChartView(new QChart), chosen_(std::move(chosen)) {
    chart()->legend()->setAlignment(Qt::AlignBottom);
    chart()->setMargins({});
    setRenderHint(QPainter::Antialiasing);
    setFocusPolicy(Qt::NoFocus); // the box of bars is for the keyboard
    takePalette();
}

void ReasonsChart::show(const std::vector<jobs::RowGroup>& groups) {
    chart()->removeAllSeries();
    for (QAbstractAxis* axis : chart()->axes()) {
        chart()->removeAxis(axis);
        delete axis;
    }
    series_ = nullptr;
    names_ = nullptr;
    bars_ = static_cast<int>(groups.size());
    setMinimumHeight(kFrame + kLineHeight * bars_);
    if (groups.empty()) {
        return; // axes without values are faults to the chart
    }
    std::array<QBarSet*, kFates.size()> sets{};
    for (std::size_t i = 0; i < kFates.size(); ++i) {
        sets[i] = new QBarSet(texts::shown(kFates[i].name));
        sets[i]->setColor(QColor(kFates[i].colour));
        sets[i]->setBorderColor(QColor(kFates[i].colour));
    }
    series_ = new QHorizontalStackedBarSeries;
    names_ = new QBarCategoryAxis;
    for (auto group = groups.rbegin(); group != groups.rend(); ++group) { // the axis goes upwards
        for (std::size_t i = 0; i < sets.size(); ++i) {
            const bool own = static_cast<std::size_t>(group->fate) == i;
            sets[i]->append(own ? static_cast<double>(group->count) : 0);
        }
        names_->append(groupText(*group));
    }
    for (QBarSet* set : sets) {
        series_->append(set);
    }
    chart()->addSeries(series_);
    chart()->addAxis(names_, Qt::AlignLeft);
    series_->attachAxis(names_);
    auto* counts = new QValueAxis;
    counts->setLabelFormat(QStringLiteral("%.0f"));
    chart()->addAxis(counts, Qt::AlignBottom);
    series_->attachAxis(counts);
    counts->setMin(0);
    counts->applyNiceNumbers();
    takePalette();
}

void ReasonsChart::mouseReleaseEvent(QMouseEvent* event) {
    QChartView::mouseReleaseEvent(event);
    if (series_ == nullptr || bars_ == 0) {
        return;
    }
    const QPointF at = chart()->mapToValue(mapToScene(event->pos()), series_);
    const int fromBelow = static_cast<int>(std::lround(at.y()));
    if (fromBelow >= 0 && fromBelow < bars_) {
        chosen_(bars_ - 1 - fromBelow);
    }
}

void ReasonsChart::changeEvent(QEvent* event) {
    QChartView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        takePalette();
    }
}

void ReasonsChart::takePalette() {
    setBackgroundBrush(palette().base());
    chart()->setBackgroundBrush(palette().base());
    chart()->setBackgroundRoundness(0);
    chart()->legend()->setLabelColor(palette().color(QPalette::Text));
    for (QAbstractAxis* axis : chart()->axes()) {
        axis->setLabelsColor(palette().color(QPalette::Text));
        axis->setGridLineColor(palette().color(QPalette::Midlight));
    }
}

} // namespace kelb::app
