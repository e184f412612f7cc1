#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::cli {

/// A table for a terminal: a line of names, a rule, the rows; columns are as wide as their longest cell (East Asian
/// characters count two). Line breaks inside a cell are shown as "↵", and a cell is cut at 60 columns.
class TextTable {
public:
    enum class Align { Left, Right };

    void addColumn(std::u16string_view name, Align align = Align::Left);
    void beginRow() { ++rows_; }
    /// The cells of a row in the order of the columns.
    void addCell(std::u16string_view text);
    std::size_t rowCount() const noexcept { return rows_; }
    void write(std::ostream& out) const;

private:
    struct Cell {
        std::string text; ///< UTF-8, cut
        std::size_t columns;
    };
    struct Column {
        Cell name;
        Align align;
        std::size_t columns;
    };
    static Cell makeCell(std::u16string_view text);
    void writeLine(const std::vector<const Cell*>& cells, std::ostream& out) const;

    std::vector<Column> columns_;
    std::vector<Cell> cells_; ///< row by row
    std::size_t rows_ = 0;
};

} // namespace kelb::cli
