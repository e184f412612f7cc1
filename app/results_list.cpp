#include "app/results_list.h"

#include <QHeaderView>

#include <algorithm>

namespace kelb::app {
namespace {

using Column = jobs::ResultListing::Column;

struct ColumnOf {
    int shown;
    Column listed;
    bool sorts;
};
constexpr ColumnOf kColumns[] = {{ResultsModel::Pass, Column::Pass, false},
                                 {ResultsModel::Title, Column::Title, true},
                                 {ResultsModel::Length, Column::Body, false},
                                 {ResultsModel::Time, Column::Time, true},
                                 {ResultsModel::Url, Column::Url, true}};

} // namespace

ResultsList::ResultsList(ResultsModel& model) {
    setModel(&model);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setMinimumSize(100, 60);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed); // no line is read for its height
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() * 3 / 2);
    QHeaderView& columns = *horizontalHeader();
    columns.setSectionsClickable(true);
    columns.setHighlightSections(false);
    columns.setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    columns.setSectionResizeMode(ResultsModel::Title, QHeaderView::Stretch);
    const int digit = fontMetrics().horizontalAdvance(u'0');
    setColumnWidth(ResultsModel::Pass, 7 * digit);
    setColumnWidth(ResultsModel::Length, 9 * digit);
    setColumnWidth(ResultsModel::Time, 20 * digit);
}

/// The title keeps the room that the others leave; in a narrow window the address gives way first.
void ResultsList::resizeEvent(QResizeEvent* event) {
    setColumnWidth(ResultsModel::Url, std::min(40 * fontMetrics().horizontalAdvance(u'0'), width() * 3 / 10));
    QTableView::resizeEvent(event);
}

void ResultsList::fit(const jobs::ResultListing& listing) {
    for (const ColumnOf& column : kColumns) {
        setColumnHidden(column.shown, column.listed != Column::Title && !listing.fieldOf(column.listed));
    }
}

void ResultsList::showOrder(const std::optional<jobs::ResultListing::Order>& order) {
    const auto* column = std::ranges::find_if(
        kColumns, [&order](const ColumnOf& each) { return order && each.listed == order->column; });
    horizontalHeader()->setSortIndicatorShown(order.has_value());
    if (order) {
        horizontalHeader()->setSortIndicator(column->shown,
                                             order->descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    }
}

std::optional<Column> ResultsList::sortedBy(int column) {
    const auto* found = std::ranges::find(kColumns, column, &ColumnOf::shown);
    return found != std::end(kColumns) && found->sorts ? std::optional(found->listed) : std::nullopt;
}

std::vector<int> ResultsList::chosenLines(std::size_t most) const {
    std::vector<int> lines;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int line = range.top(); line <= range.bottom() && lines.size() <= most; ++line) {
            lines.push_back(line);
        }
    }
    return lines;
}

} // namespace kelb::app
