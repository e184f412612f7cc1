#include "app/results_model.h"

#include "app/qt_text.h"
#include "app/texts.h"
#include "platform/utf8.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <exception>
#include <limits>

namespace kelb::app {
namespace {

using Line = jobs::ResultListing::Line;

QString shownText(const Line& line, int column) {
    switch (column) {
    case ResultsModel::Title:
        return line.title.empty() && line.gone ? texts::shown(texts::kResultsGone) : toQt(line.title).simplified();
    case ResultsModel::Length:
        return line.length ? QString::number(*line.length) : QString();
    case ResultsModel::Time:
        return toQt(line.time);
    case ResultsModel::Url:
        return toQt(line.url);
    default:
        return {};
    }
}

} // namespace

void ResultsModel::show(jobs::ResultListing* listing) {
    beginResetModel();
    listing_ = listing;
    chosen_ = nullptr;
    shown_ = lines();
    endResetModel();
}

void ResultsModel::choose(const std::vector<std::uint32_t>* rows) {
    beginResetModel();
    chosen_ = rows;
    shown_ = lines();
    endResetModel();
}

void ResultsModel::chooseNone() {
    static const std::vector<std::uint32_t> kNone;
    choose(&kNone);
}

void ResultsModel::grow() {
    const int now = lines();
    if (now > shown_) {
        beginInsertRows({}, shown_, now - 1);
        shown_ = now;
        endInsertRows();
    }
}

void ResultsModel::readAgain() {
    if (listing_ != nullptr && shown_ > 0) {
        listing_->forget();
        emit dataChanged(index(0, 0), index(shown_ - 1, kColumns - 1));
    }
}

int ResultsModel::lines() const {
    if (listing_ == nullptr) {
        return 0;
    }
    const std::size_t count = chosen_ != nullptr ? chosen_->size() : listing_->count();
    return static_cast<int>(std::min<std::size_t>(count, std::numeric_limits<int>::max()));
}

std::size_t ResultsModel::rowOf(int line) const {
    const auto at = static_cast<std::size_t>(line);
    return chosen_ != nullptr ? (*chosen_)[at] : at;
}

/// The view paints: what goes wrong here is shown in the line itself.
const Line& ResultsModel::lineAt(int line) const {
    try {
        return listing_->line(rowOf(line));
    } catch (const std::exception& failure) {
        fault_ = Line();
        fault_.gone = true;
        fault_.title = platform::fromUtf8(failure.what());
        return fault_;
    }
}

bool ResultsModel::isThere(int line) const {
    return line >= 0 && line < shown_ && !lineAt(line).gone;
}

bool ResultsModel::passed(int line) const {
    return isThere(line) && lineAt(line).pass.value_or(false);
}

int ResultsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : shown_;
}

int ResultsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QVariant ResultsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= shown_) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return shownText(lineAt(index.row()), index.column());
    case Qt::CheckStateRole:
        if (const Line& line = lineAt(index.row()); index.column() == Pass && line.pass) {
            return *line.pass ? Qt::Checked : Qt::Unchecked;
        }
        return {};
    case Qt::TextAlignmentRole:
        return index.column() == Length ? QVariant(Qt::AlignCenter) : QVariant();
    case Qt::ForegroundRole:
        return lineAt(index.row()).gone ? QVariant(QGuiApplication::palette().color(QPalette::PlaceholderText))
                                        : QVariant();
    default:
        return {};
    }
}

bool ResultsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || index.column() != Pass || !isThere(index.row())) {
        return false;
    }
    tick_(index.row(), value.toInt() == Qt::Checked);
    return true;
}

Qt::ItemFlags ResultsModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags plain = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    return index.column() == Pass ? plain | Qt::ItemIsUserCheckable : plain;
}

QVariant ResultsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < kColumns) {
        return texts::shown(texts::kResultsColumns[section].text);
    }
    return {};
}

} // namespace kelb::app
