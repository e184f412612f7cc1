#pragma once

#include "jet/data_page.h"
#include "jet/pager.h"
#include "jet/row_record.h"
#include "jet/table_definition.h"
#include "jet/usage_map.h"
#include "jet/value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelb::platform {
class Random;
}

namespace kelb::jet {

/// One record as it lies on its page, columns decoded on demand. Valid while nothing is changed in the database.
/// Every reader throws CorruptFile when the record's own bytes contradict each other.
class Row {
public:
    RowId id() const noexcept { return id_; }
    bool isNull(const Column& column) const;
    /// Yes/no is never Null. Types without a meaning here come as Binary.
    Value value(const Column& column) const;
    /// Text and memo columns: decoded into `out` (replaced; keeps its capacity). False, and `out` empty, for Null.
    bool text(const Column& column, std::u16string& out) const;
    std::span<const std::byte> bytes() const noexcept { return view_.bytes(); }
    const RowView& view() const noexcept { return view_; }
    /// The stored bytes of a column (long values: their field in the record); no value for Null. Requires a column that
    /// is not yes/no.
    std::optional<std::span<const std::byte>> field(const Column& column) const { return view_.field(column); }

private:
    friend class Table;
    friend class TableScan;
    std::uint32_t longValueLength(std::span<const std::byte> field) const;
    std::vector<std::byte> longValueBytes(const Column& column, std::span<const std::byte> field) const;

    Pager* pager_ = nullptr;
    const TableDefinition* definition_ = nullptr;
    RowId id_;
    PageRef page_;
    RowView view_;
};

/// Rows in page order. Void after a change to the table.
class TableScan {
public:
    bool next(Row& row); ///< false at the end. Throws CorruptFile

private:
    friend class Table;
    const class Table* table_ = nullptr;
    PageNumber current_ = kNoPage;
    PageRef page_;
    std::optional<DataPageView> view_;
    std::size_t slot_ = 0;
};

/// A column and the value it gets.
struct Change {
    std::size_t column; ///< index into definition().columns
    Value value;
};

/// One table of an open database; stays valid as long as the database. Every change is one operation: on a throw the
/// table and all its indexes are as before. Relations between tables (referential integrity) are not enforced: they are
/// neither checked nor cascaded, only the indexes that serve them are kept up to date.
class Table {
public:
    struct Environment; ///< what the database lends its tables (table_environment.h)
    struct State;       ///< what a table remembers (table_state.h)

    /// Its columns keep their addresses until a column or index is added or the addition of one is taken back.
    const TableDefinition& definition() const;
    const std::u16string& name() const { return definition().name; }
    std::uint32_t rowCount() const; ///< as the definition page says; scanning is the truth in foreign files
    /// Refuses with the reason why this table cannot be written (unknown column type, read-only dialect, …).
    void requireWritable() const;

    TableScan scan() const;
    /// False when the row was deleted.
    bool read(RowId id, Row& row) const;

    /// `values` in the order of definition().columns; Null takes the next autonumber in autonumber columns and False in
    /// yes/no columns. Conversions and checks as convertValue. Throws Error.
    RowId insert(std::span<const Value> values);
    /// The same; the row gets the address `wanted`, that of an erased one, if it can have it.
    RowId insert(std::span<const Value> values, std::optional<RowId> wanted);
    /// The same; the indexes named in `known` get these keys, which another database of the same sort order has for the
    /// same values: for texts whose keys cannot be made.
    struct KnownKey;
    RowId insert(std::span<const Value> values, std::span<const KnownKey> known);
    /// Takes the pages on which erased rows lay and that have become free since, before long values of rows that are
    /// inserted there take them.
    void reclaimPages(std::span<const RowId> rows);
    /// The row keeps its id. RowDeleted when there is none.
    void update(RowId id, std::span<const Change> changes);
    void erase(RowId id);
    /// Last autonumber given out.
    std::int32_t lastAutonumber() const;

    /// An index whose key is exactly this one column, for look-ups; its position among the physical indexes. No value
    /// when there is none, or none whose keys can be made.
    std::optional<std::size_t> indexOn(const Column& column) const;
    /// Rows whose index key equals the key of `value`, in row order. Equal keys do not mean equal texts (case, trailing
    /// blanks and ignored characters do not count, only 255 units do), and an index may leave out Null: compare the
    /// rows. Requires an index that indexOn() gave. KeyNotPossible as in index_key.h.
    std::vector<RowId> lookUp(std::size_t physicalIndex, const Value& value) const;

    explicit Table(std::unique_ptr<Environment> environment);
    ~Table();
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

private:
    friend class TableScan;
    RowId insert(std::span<const Value> values, std::span<const KnownKey> known, std::optional<RowId> wanted);
    void point(Row& row, RowId id, PageRef page, std::span<const std::byte> bytes) const;
    std::unique_ptr<State> state_;
};

struct Table::KnownKey {
    std::size_t physicalIndex;
    std::vector<std::byte> key;
};

} // namespace kelb::jet
