#pragma once

#include "jet/row_record.h"
#include "jet/table_definition.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace kelb::jet {

/// How a table of any dialect becomes one of an Access 2000 database. Bytes that mean the same there are carried over
/// as they are stored: a record never grows by that, whatever program wrote it.
class TableTransfer {
public:
    enum class Form {
        AsStored,
        CodePageText, ///< Access 97
        BigInteger,   ///< Access 2016: becomes a decimal of 19 digits
        ExtendedDate  ///< Access 2019: becomes a date-time, which ends at milliseconds
    };
    struct ColumnPlan {
        const Column* from;
        std::size_t to; ///< index into design().columns
        Form form;
    };
    /// An index of the new table; `names` all refer to it.
    struct IndexPlan {
        PhysicalIndex physical;
        std::vector<LogicalIndex> names;
        std::size_t source; ///< its position among the physical indexes of the source
    };
    /// What does not come out as it was.
    struct Note {
        std::u16string name; ///< of a column or index
        std::string text;
    };

    /// What becomes of the sort orders of the columns of Access 2000 files; others never keep theirs.
    enum class Orders { Kept, Replaced };
    /// `source` outlives it; its column names must be unique. `order`: of the new database. Indexes that only serve a
    /// relationship are left out without a note.
    TableTransfer(const TableDefinition& source, SortOrder order, Orders orders);

    /// Without pages, maps and indexes: for Database::createTable().
    const TableDefinition& design() const noexcept { return design_; }
    std::span<const ColumnPlan> columns() const noexcept { return columns_; }
    std::span<const IndexPlan> indexes() const noexcept { return indexes_; }
    std::span<const Note> notes() const noexcept { return notes_; }
    bool has(std::u16string_view column) const noexcept { return design_.findColumn(column) != nullptr; }

    /// Bytes of a long value by its field in the record.
    using ReadLongValue = std::function<std::vector<std::byte>(std::span<const std::byte> field)>;
    /// The field of one record as the new table stores it; of memo and OLE columns the bytes of the value. Throws
    /// CorruptFile as RowView::field, and what `readLongValue` throws.
    StoredField field(const ColumnPlan& plan, const RowView& record, const ReadLongValue& readLongValue) const;

private:
    void addColumn(const Column& from);
    void placeColumns();
    void addIndexes();
    bool mapColumns(PhysicalIndex& index) const;
    StoredField stored(const ColumnPlan& plan, std::span<const std::byte> bytes) const;

    const TableDefinition& source_;
    SortOrder order_;
    bool keepsOrders_;
    TableDefinition design_;
    std::vector<ColumnPlan> columns_;
    std::vector<IndexPlan> indexes_;
    std::vector<Note> notes_;
};

} // namespace kelb::jet
