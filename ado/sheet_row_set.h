#pragma once

#include "ado/read_only_row_set.h"
#include "ado/sheet_cells.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelb::ado {

/// A sheet as a table: its first row names the columns, every other row is a record.
class SheetTable {
public:
    SheetTable(std::u16string_view name, SheetCells cells);

    const std::u16string& name() const noexcept { return name_; }
    /// A column whose name is blank is F and its number, one whose name an earlier column has gets a number behind it;
    /// names are cut at 64 characters. The type is what all values of the column have in common: Long, Double,
    /// DateTime, else Text, or Memo where one is longer than 255 characters.
    const std::vector<FieldInfo>& fields() const noexcept { return fields_; }
    std::size_t rowCount() const noexcept { return cells_.rowCount() == 0 ? 0 : cells_.rowCount() - 1; }
    /// Values as their cells have them, also in a column of texts; but whole numbers of a Double column are Double.
    void readRow(std::size_t row, std::vector<Value>& values) const;

private:
    std::u16string name_;
    SheetCells cells_;
    std::vector<FieldInfo> fields_;
};

/// Rows of a sheet, for reading.
class SheetRowSet final : public ReadOnlyRowSet {
public:
    /// `columns`: for each field the column that it shows. `members`: numbers of rows.
    SheetRowSet(std::shared_ptr<const SheetTable> table, std::vector<FieldInfo> fields,
                std::vector<std::size_t> columns, std::vector<std::size_t> members);

    const std::vector<FieldInfo>& fields() const override { return fields_; }
    std::size_t memberCount() const override { return members_.size(); }
    bool seek(std::size_t member) override;
    Value value(std::size_t field) override { return row_[columns_[field]]; }
    bool text(std::size_t field, std::u16string& out) override;
    void requireUpdatable() const override;

private:
    std::shared_ptr<const SheetTable> table_;
    std::vector<FieldInfo> fields_;
    std::vector<std::size_t> columns_;
    std::vector<std::size_t> members_;
    std::vector<Value> row_; ///< of the current member
};

/// Every change of a workbook ends in this.
[[noreturn]] void throwSheetsAreOnlyRead();

} // namespace kelb::ado
