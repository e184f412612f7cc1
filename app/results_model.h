#pragma once

#include "jobs/result_listing.h"

#include <QAbstractTableModel>

#include <cstdint>
#include <functional>
#include <vector>

namespace kelb::app {

/// A listing, or those of its rows that a filter has found, for a table view. Only the lines that the view shows are
/// read.
class ResultsModel final : public QAbstractTableModel {
public:
    enum Column { Pass, Title, Length, Time, Url };
    static constexpr int kColumns = 5;

    /// `tick` is told when the user ticks the box of a line or takes its tick away.
    ResultsModel(QObject* parent, std::function<void(int line, bool pass)> tick)
        : QAbstractTableModel(parent), tick_(std::move(tick)) {}

    /// Shows another listing, all of it; nullptr: nothing. It outlives the model, or the next call of this.
    void show(jobs::ResultListing* listing);
    /// Shows these rows only, which may grow; nullptr: all of them.
    void choose(const std::vector<std::uint32_t>* rows);
    /// Shows no row: for the time in which chosen ones become others.
    void chooseNone();
    /// The chosen rows are more now.
    void grow();
    /// What the lines hold is read anew.
    void readAgain();

    /// The listing's row of a line.
    std::size_t rowOf(int line) const;
    /// False, too, when it cannot be read.
    bool isThere(int line) const;
    bool passed(int line) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const jobs::ResultListing::Line& lineAt(int line) const;
    int lines() const;

    std::function<void(int, bool)> tick_;
    jobs::ResultListing* listing_ = nullptr;
    const std::vector<std::uint32_t>* chosen_ = nullptr;
    int shown_ = 0; ///< lines that the view knows of
    mutable jobs::ResultListing::Line fault_;
};

} // namespace kelb::app
