#pragma once

#include "ado/sql_binding.h"
#include "jet/table.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelb::ado {

/// Rows being put in order. The keys of a row are decoded once, when it is added; sorting moves numbers only. Null
/// comes first, texts go by their upper-cased units, memos by their first 255 of them; rows with equal keys stay in the
/// order in which they were added. Texts of all rows are in memory until it is destroyed.
class RowOrder {
public:
    /// Columns of the keys are places in the definition's columns.
    RowOrder(std::vector<OrderKey> keys, const jet::TableDefinition& table);

    void add(const jet::Row& row);
    /// Row ids, packed; with `top` only so many of the first.
    std::vector<std::uint32_t> sorted(std::optional<std::size_t> top) const;

private:
    /// A key: bits that order like the value, or a piece of texts_.
    struct Cell {
        std::uint64_t bits;
        std::uint32_t length;
        enum class Kind : std::uint32_t { Null, Number, Text } kind;
    };
    Cell textCell(std::u16string_view text);
    Cell cellOf(const jet::Row& row, const jet::Column& column);
    bool before(std::uint32_t a, std::uint32_t b) const;
    int compare(const Cell& a, const Cell& b) const;

    std::vector<OrderKey> keys_;
    const jet::TableDefinition& table_;
    std::vector<std::uint32_t> rows_;
    std::vector<Cell> cells_; ///< keys_.size() for each row
    std::u16string texts_;
    std::u16string buffer_;
};

} // namespace kelb::ado
