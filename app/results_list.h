#pragma once

#include "app/results_model.h"
#include "jobs/result_listing.h"

#include <QTableView>

#include <optional>
#include <vector>

namespace kelb::app {

/// The list of results: lines of one height, of which only those on screen are read.
class ResultsList final : public QTableView {
public:
    explicit ResultsList(ResultsModel& model); ///< which outlives it, or setModel(nullptr)

    /// Hides the columns that the listing's table lacks.
    void fit(const jobs::ResultListing& listing);
    void showOrder(const std::optional<jobs::ResultListing::Order>& order);
    /// What a click on the header of this column sorts by.
    static std::optional<jobs::ResultListing::Column> sortedBy(int column);
    /// The selected lines; of more than `most` only one more than that.
    std::vector<int> chosenLines(std::size_t most) const;

protected:
    void resizeEvent(QResizeEvent* event) override;
};

} // namespace kelb::app
