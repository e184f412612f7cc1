#include "jet/table_definition.h"

#include "jet/byte_order.h"
#include "jet/error.h"
#include "jet/table_definition_layout.h"

#include "platform/letter_case.h"
#include "platform/utf8.h"

#include <algorithm>
#include <numeric>

namespace kelb::jet {

namespace {

/// Order of column blocks: display position, then name.
bool standsBefore(const Column& a, const Column& b) noexcept {
    return a.position != b.position ? a.position < b.position : platform::compareNoCase(a.name, b.name) < 0;
}

} // namespace

std::size_t fixedSize(ColumnType type) noexcept {
    switch (type) {
    case ColumnType::Byte:
        return 1;
    case ColumnType::Integer:
        return 2;
    case ColumnType::Long:
    case ColumnType::Single:
    case ColumnType::Complex:
        return 4;
    case ColumnType::Currency:
    case ColumnType::Double:
    case ColumnType::DateTime:
    case ColumnType::BigInteger:
        return 8;
    case ColumnType::Guid:
        return 16;
    case ColumnType::Numeric:
        return 17;
    case ColumnType::ExtendedDate:
        return 42;
    case ColumnType::YesNo:
    case ColumnType::Binary:
    case ColumnType::Text:
    case ColumnType::Ole:
    case ColumnType::Memo:
    case ColumnType::FixedBinary:
        break;
    }
    return 0;
}

const Column* TableDefinition::findColumn(std::u16string_view columnName) const noexcept {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const Column& column) {
        return platform::equalNoCase(column.name, columnName);
    });
    return found != columns.end() ? &*found : nullptr;
}

const Column* TableDefinition::columnByNumber(std::uint16_t number) const noexcept {
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const Column& column) { return column.number == number; });
    return found != columns.end() ? &*found : nullptr;
}

std::vector<std::size_t> TableDefinition::displayOrder() const {
    std::vector<std::size_t> order(columns.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return columns[a].position < columns[b].position; });
    return order;
}

std::size_t TableDefinition::fixedBytes() const noexcept {
    std::size_t end = 0;
    for (const Column& column : columns) {
        if (column.isFixed() && column.type != ColumnType::YesNo) {
            end = std::max(end, std::size_t{column.fixedOffset} + column.length);
        }
    }
    return end;
}

const ColumnMaps* TableDefinition::mapsOf(const Column& column) const noexcept {
    const auto found = std::find_if(longValueMaps.begin(), longValueMaps.end(),
                                    [&](const ColumnMaps& maps) { return maps.column == column.number; });
    return found != longValueMaps.end() ? &*found : nullptr;
}

Column& TableDefinition::addColumn(Column column) {
    if (maxColumns >= kMaxColumns) {
        throw Error(Error::Kind::TooManyFields,
                    "too many fields: table " + platform::toUtf8(name) + " has had 255, field " +
                        platform::toUtf8(column.name) +
                        " cannot be added (deleted fields count until the database is compacted)");
    }
    column.number = maxColumns++;
    // Not the highest var index in use + 1: old rows still hold the values of deleted columns in their places.
    column.varIndex = varColumns;
    column.fixedOffset = 0;
    if (!column.isFixed()) {
        ++varColumns;
    } else if (column.type != ColumnType::YesNo) {
        column.fixedOffset = static_cast<std::uint16_t>(fixedBytes());
    }
    column.position = 0;
    if (tableType != kSystemTable) {
        for (const Column& other : columns) {
            column.position = std::max<std::uint16_t>(column.position, static_cast<std::uint16_t>(other.position + 1));
        }
    }
    const auto at = std::upper_bound(columns.begin(), columns.end(), column, standsBefore);
    return *columns.insert(at, std::move(column));
}

LogicalIndex& TableDefinition::addLogicalIndex(LogicalIndex index) {
    index.number = 0;
    for (const LogicalIndex& other : logicalIndexes) {
        index.number = std::max(index.number, other.number + 1);
    }
    const auto at = std::upper_bound(
        logicalIndexes.begin(), logicalIndexes.end(), index,
        [](const LogicalIndex& a, const LogicalIndex& b) { return platform::compareNoCase(a.name, b.name) < 0; });
    return *logicalIndexes.insert(at, std::move(index));
}

} // namespace kelb::jet
