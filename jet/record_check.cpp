#include "jet/record_check.h"

#include "jet/byte_order.h"
#include "jet/value_codec.h"

#include <algorithm>

namespace kelb::jet {
namespace {

/// Units of a compressed text, no value when its runs break off.
std::optional<std::size_t> compressedUnits(std::span<const std::byte> stored) {
    std::size_t units = 0;
    bool rawRun = false;
    for (std::size_t at = 2; at < stored.size();) {
        if (stored[at] == std::byte{0}) {
            rawRun = !rawRun;
            ++at;
            continue;
        }
        if (rawRun && at + 1 == stored.size())
            return std::nullopt;
        ++units;
        at += rawRun ? 2 : 1;
    }
    return units;
}

/// `bytes`: the record without its null mask.
std::optional<std::string> variablePartFault(const TableDefinition& table, std::span<const std::byte> bytes,
                                             std::size_t fixedEnd) {
    if (bytes.size() < fixedEnd + 4)
        return "it has no room for its variable columns";
    const std::size_t count = load16(bytes.data() + bytes.size() - 2);
    if (count > table.varColumns)
        return "it should have at most " + std::to_string(table.varColumns) + " variable columns, it has " +
               std::to_string(count);
    if (bytes.size() < fixedEnd + 4 + 2 * count)
        return "it has no room for the offsets of " + std::to_string(count) + " variable columns";
    const std::size_t offsets = bytes.size() - 4 - 2 * count; // the end offset first, then in reverse
    std::size_t previous = fixedEnd;
    for (std::size_t i = 0; i <= count; ++i) {
        const std::size_t offset = load16(bytes.data() + bytes.size() - 4 - 2 * i);
        if (offset < previous || offset > offsets)
            return "variable column " + std::to_string(i) + " should begin between bytes " + std::to_string(previous) +
                   " and " + std::to_string(offsets) + ", it begins at " + std::to_string(offset);
        previous = offset;
    }
    return std::nullopt;
}

std::optional<std::string> columnCountFault(const TableDefinition& table, std::size_t columns) {
    if (columns <= table.maxColumns)
        return std::nullopt;
    return "it should have at most " + std::to_string(table.maxColumns) + " columns, it has " + std::to_string(columns);
}

} // namespace

std::optional<std::size_t> textUnits(std::span<const std::byte> stored) {
    if (stored.size() >= 2 && stored[0] == std::byte{0xFF} && stored[1] == std::byte{0xFE})
        return compressedUnits(stored);
    return stored.size() % 2 == 0 ? std::optional(stored.size() / 2) : std::nullopt;
}

std::optional<std::string> recordFault(const TableDefinition& table, std::span<const std::byte> record) {
    const std::size_t countBytes = table.dialect == Dialect::Jet3 ? 1 : 2;
    std::size_t columns = 0;
    if (record.size() >= countBytes)
        columns = countBytes == 1 ? load8(record.data()) : load16(record.data());
    const std::size_t mask = (columns + 7) / 8;
    if (record.size() < countBytes + mask)
        return "its " + std::to_string(record.size()) + " bytes cannot hold its null mask";
    if (auto fault = columnCountFault(table, columns); fault || table.dialect == Dialect::Jet3)
        return fault;
    std::size_t fixedEnd = 2;
    bool hasVariable = false;
    for (const Column& column : table.columns) {
        if (column.number >= columns)
            continue;
        if (!column.isFixed())
            hasVariable = true;
        else if (column.type != ColumnType::YesNo)
            fixedEnd = std::max<std::size_t>(fixedEnd, 2U + column.fixedOffset + column.length);
    }
    const std::size_t end = record.size() - mask;
    if (fixedEnd > end)
        return "its fixed columns end at byte " + std::to_string(fixedEnd) + ", its null mask begins at " +
               std::to_string(end);
    // Rows from before the first variable column have no such part, whatever columns came later.
    return hasVariable ? variablePartFault(table, record.first(end), fixedEnd) : std::nullopt;
}

std::optional<std::string> fieldFault(const TableDefinition& table, const Column& column,
                                      std::span<const std::byte> stored) {
    if (column.type == ColumnType::Text) {
        const std::optional<std::size_t> units =
            table.dialect == Dialect::Jet3 ? std::optional(stored.size()) : textUnits(stored);
        if (!units)
            return "its " + std::to_string(stored.size()) + " bytes are no text";
        if (2 * *units > column.length && !column.isCalculated())
            return "the text should have at most " + std::to_string(column.length / 2) + " characters, it has " +
                   std::to_string(*units);
        return std::nullopt;
    }
    if (!decodeValue(table, column, stored))
        return "its " + std::to_string(stored.size()) + " bytes are too few for its type";
    return std::nullopt;
}

} // namespace kelb::jet
